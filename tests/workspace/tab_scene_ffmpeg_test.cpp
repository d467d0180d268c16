// The scene workspace model with the real tools: opening videos and projects, names, jobs.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/language.h"
#include "support/motion_clips.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_scene.h"

using testsupport::TempDir;
using workspace::CTarnwickTabScene;

namespace {

struct SceneRig : testsupport::TabRig
{
    SceneRig()
        : tab(view, loop, host)
    {
        host.SetTabs(&tab, nullptr);
        core::LoadLanguage(core::kLanguageEnglish);
        tab.Init();
        tab.Data().bAutoSave = 1;
    }
    CTarnwickTabScene tab;
};

// A short clip without motion.
std::string StillClip(const TempDir &dir, const std::string &name)
{
    const std::string path = dir.file(name);
    testsupport::MakeClip(path,
                          "color=c=gray:s=160x120:r=25:d=2",
                          {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-f", "mp4"});
    return path;
}

bool Exists(const std::string &path)
{
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

} // namespace

TEST(SceneTabOpen, OpeningTheVideoThatIsOpenAlreadyDoesNothing)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "still.mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    EXPECT_EQ(rig.view.fields.inputPath, clip);
    ASSERT_EQ(rig.view.rows.size(), 1u); // the default scene
    const int shows = rig.view.fieldShows;
    const int lists = rig.view.listShows;
    EXPECT_EQ(rig.tab.OpenVideo(clip), 0);
    EXPECT_EQ(rig.view.fieldShows, shows);
    EXPECT_EQ(rig.view.listShows, lists);
}

TEST(SceneTabOpen, AVideoWithoutAPointInItsNameGetsItsWholeNameAsOutputName)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "recording");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    EXPECT_EQ(rig.tab.Data().output_name, "recording");
    EXPECT_EQ(rig.tab.Data().output_folder, clip + "_out/");
    EXPECT_EQ(rig.tab.Data().project_file, clip + ".twproj");
}

TEST(SceneTabOpen, TwoBrowsedVideosShareOneProjectFileWhileADropGivesItsOwn)
{
    TempDir dir;
    SceneRig rig;
    const std::string first = StillClip(dir, "first.mp4");
    const std::string second = StillClip(dir, "second.mp4");
    rig.view.files = {first, second};
    rig.tab.BrowseInput();
    rig.tab.BrowseInput();
    EXPECT_EQ(rig.tab.Data().input_file, second);
    EXPECT_EQ(rig.tab.Data().project_file, first + ".twproj");
    EXPECT_EQ(rig.tab.Data().output_folder, first + "_out/");

    SceneRig dropRig;
    dropRig.tab.DropFiles({first});
    dropRig.tab.DropFiles({second});
    EXPECT_EQ(dropRig.tab.Data().project_file, second + ".twproj");
}

TEST(SceneTabOpen, APathNoToolCanTakeOrATooLongNameIsToldAndChangesNothing)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "clip.mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    const std::string project = rig.tab.Data().project_file;
    const std::string quoted = dir.file("a\"b.mp4");
    const std::string longName = dir.file(std::string(201, 'v') + ".mp4");
    for (const std::string &copy : {quoted, longName}) {
        std::filesystem::copy_file(clip, copy);
    }
    EXPECT_EQ(rig.tab.OpenVideo(quoted), -1);
    EXPECT_EQ(rig.tab.OpenVideo(longName), -1);
    rig.tab.OutputNameConfirmed("film\"1.mp4");
    rig.tab.OutputFolderConfirmed(dir.file("out\nput"));
    ASSERT_EQ(rig.view.errors.size(), 4u);
    const std::string unusable = ": the name holds a double quote, a line break or another "
                                 "character that cannot be handed to the video tools. Rename the "
                                 "file or its folder.";
    EXPECT_EQ(rig.view.errors[0], quoted + unusable);
    EXPECT_EQ(rig.view.errors[1],
              longName + ": the file name is too long for the files made from it. Shorten it to "
                         "200 bytes or fewer without the extension (a Japanese character takes "
                         "3).");
    EXPECT_EQ(rig.view.errors[2], "film\"1.mp4" + unusable);
    EXPECT_EQ(rig.view.errors[3], dir.file("out\nput/") + unusable);
    EXPECT_EQ(rig.tab.Data().input_file, clip);
    EXPECT_EQ(rig.tab.Data().project_file, project);
    EXPECT_EQ(rig.tab.Data().output_name, "clip_trim.mp4");
    EXPECT_EQ(rig.tab.Data().output_folder, clip + "_out/");
    EXPECT_FALSE(Exists(dir.file("out\nput")));
}

TEST(SceneTabOpen, ANameOfTheLongestLengthOpensAndItsFilesAreMade)
{
    TempDir dir;
    SceneRig rig;
    const std::string stem(200, 'v');
    const std::string clip = StillClip(dir, stem + ".mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    EXPECT_TRUE(rig.view.errors.empty());
    EXPECT_TRUE(Exists(clip + ".twproj"));
    EXPECT_TRUE(Exists(rig.tab.Data().pts_file));
    EXPECT_EQ(rig.tab.Data().output_name, stem + "_trim.mp4");
}

TEST(SceneTabOpen, AMissingFileAFolderAndANonVideoAreToldAndChangeNothing)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "clip.mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    const std::string text = dir.file("notes.txt");
    ASSERT_TRUE(testsupport::WriteFile(text, "not a video"));
    EXPECT_EQ(rig.tab.OpenVideo(dir.file("gone.mp4")), -1);
    EXPECT_NE(rig.tab.OpenVideo(text), 0);
    EXPECT_EQ(rig.tab.OpenVideo(dir.path()), -1);
    ASSERT_EQ(rig.view.errors.size(), 3u);
    EXPECT_EQ(rig.view.errors[0],
              dir.file("gone.mp4") + ": the file does not exist. Check its name and folder.");
    EXPECT_EQ(rig.view.errors[1],
              text + ": this is not a video file that can be read. Choose a video file.");
    EXPECT_NE(rig.view.errors[2].find("is a folder"), std::string::npos);
    EXPECT_EQ(rig.tab.Data().input_file, clip);
    EXPECT_EQ(rig.view.rows.size(), 1u);
}

TEST(SceneTabOpen, AProjectWhoseVideoIsGoneIsLoadedWithItsListAndTold)
{
    TempDir dir;
    const std::string clip = StillClip(dir, "clip.mp4");
    {
        SceneRig rig;
        ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    }
    ASSERT_TRUE(Exists(clip + ".twproj"));
    std::filesystem::remove(clip);
    SceneRig rig;
    EXPECT_NE(rig.tab.OpenProject(clip + ".twproj", false), 0);
    ASSERT_EQ(rig.view.errors.size(), 1u);
    EXPECT_EQ(rig.view.errors[0].rfind(clip + ": the project's video cannot be read", 0), 0u);
    EXPECT_EQ(rig.view.rows.size(), 1u);
    EXPECT_EQ(rig.tab.Data().input_file, clip);
}

TEST(SceneTabOpen, AnUnreadableProjectLeavesTheOpenProjectAsItWas)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "clip.mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    const std::string broken = dir.file("broken.twproj");
    ASSERT_TRUE(testsupport::WriteFile(broken, "{ not json"));
    EXPECT_EQ(rig.tab.OpenProject(broken, false), -1);
    EXPECT_EQ(rig.tab.Data().input_file, clip);
    ASSERT_EQ(rig.view.errors.size(), 1u);
    EXPECT_EQ(rig.view.errors[0].rfind(broken + ": the project file cannot be read", 0), 0u);
}

TEST(SceneTabOpen, ChangingTheOutputNameKeepsTheSegmentsAndReloadsTheProject)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = StillClip(dir, "clip.mp4");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    const std::vector<std::string> before =
        testsupport::FilesMatching(rig.tab.Data().output_folder, "_seg_");
    ASSERT_FALSE(before.empty());
    rig.tab.OutputNameConfirmed("film.mp4");
    EXPECT_TRUE(rig.view.errors.empty());
    EXPECT_EQ(rig.tab.Data().output_name, "film.mp4");
    EXPECT_EQ(testsupport::FilesMatching(rig.tab.Data().output_folder, "_seg_"), before);
    EXPECT_EQ(rig.tab.LastJob().nJob, engine::kJobInputAnalysis); // the reload analysed again
    EXPECT_NE(testsupport::ReadFile(clip + ".twproj").find("film.mp4"), std::string::npos);
}

TEST(SceneTabJobs, ExtractionFillsTheListFromTheJobsMessages)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = testsupport::MakeMotionClip(dir);
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
    rig.tab.ExtractScenes();
    EXPECT_TRUE(rig.view.controls.On(workspace::Control::Stop));
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(rig.tab.LastJob().nResult, 0);
    EXPECT_FALSE(rig.tab.LastJob().bDefaultScene);
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_EQ(rig.view.panes[workspace::kPaneState], "Done");
    EXPECT_EQ(rig.view.progress, 100);
    EXPECT_TRUE(rig.view.controls.On(workspace::Control::FinalOutput));
    EXPECT_FALSE(rig.tab.TimerRunning());
}

TEST(SceneTabJobs, AStillVideoEndsWithTheDefaultSceneAsATypedResult)
{
    TempDir dir;
    SceneRig rig;
    ASSERT_EQ(rig.tab.OpenVideo(StillClip(dir, "still.mp4")), 0);
    rig.tab.ExtractScenes();
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(rig.tab.LastJob().nResult, 0);
    EXPECT_TRUE(rig.tab.LastJob().bDefaultScene);
    EXPECT_EQ(rig.view.rows.size(), 1u);
}

TEST(SceneTabJobs, ClosingTheTabWhileAJobRunsStopsItAndLeavesNoTool)
{
    TempDir dir;
    const std::string clip = testsupport::MakeLongClip(dir);
    {
        SceneRig rig;
        ASSERT_EQ(rig.tab.OpenVideo(clip), 0);
        rig.tab.ExtractScenes();
        rig.loop.RunUntil([&] { return rig.tab.LastJob().nStages >= 1; });
    }
    EXPECT_EQ(testsupport::CountProcessesWith(clip), 0);
}
