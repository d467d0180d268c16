// The scene workspace's opening for an extraction that follows at once, and the refusal of a
// picture too small to scan, with the real tools.
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "core/helpers.h"
#include "core/language.h"
#include "core/project_names.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_scene.h"

using testsupport::TempDir;
using workspace::CTarnwickTabScene;

namespace {

namespace fs = std::filesystem;

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

std::string Clip(const TempDir &dir, const std::string &name, const std::string &size)
{
    const std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::MakeClip(path, "testsrc2=s=" + size + ":r=25:d=2"));
    return path;
}

// A gray picture of any size, odd and 1 pixel ones included (in an MKV, lossless).
std::string GrayClip(const TempDir &dir, int width, int height)
{
    const std::string path = dir.file("tiny.mkv");
    EXPECT_TRUE(testsupport::MakeClip(
        path,
        core::StrPrintf("testsrc2=s=64x64:r=25:d=1,scale=%d:%d,format=gray", width, height),
        {"-c:v", "ffv1"}));
    return path;
}

// The segment files in the project's output folder.
int SegmentFiles(const core::CTarnwickData &data)
{
    const std::string stem = fs::path(core::SegmentStem(data)).filename().string();
    int count = 0;
    std::error_code ec;
    for (const fs::directory_entry &entry : fs::directory_iterator(data.output_folder, ec)) {
        const std::string name = entry.path().filename().string();
        count += name.rfind(stem, 0) == 0 && entry.path().extension() == ".mp4" ? 1 : 0;
    }
    return count;
}

bool Exists(const std::string &path)
{
    std::error_code ec;
    return fs::exists(path, ec);
}

} // namespace

TEST(SceneTabOpenToExtract, CutsNoSceneWhereAPlainOpeningCutsTheDefaultScene)
{
    TempDir dir;
    SceneRig plain;
    ASSERT_EQ(plain.tab.OpenVideo(Clip(dir, "plain.mp4", "320x240")), 0);
    EXPECT_EQ(SegmentFiles(plain.tab.Data()), 1); // the default scene's segment

    SceneRig toExtract;
    ASSERT_EQ(toExtract.tab.OpenVideoToExtract(Clip(dir, "scan.mp4", "320x240")), 0);
    EXPECT_EQ(SegmentFiles(toExtract.tab.Data()), 0);
    // The list is what an opening leaves, so that a stop before the extraction keeps a scene.
    ASSERT_EQ(toExtract.view.rows.size(), 1u);
    EXPECT_FALSE(toExtract.tab.Process().bOpenForExtraction);
    // The extraction that follows runs as after any opening.
    toExtract.tab.ExtractScenes();
    testsupport::WaitForJob(toExtract.loop, toExtract.tab);
    EXPECT_EQ(toExtract.tab.LastJob().nResult, 0);
    EXPECT_GE(SegmentFiles(toExtract.tab.Data()), 1);
}

TEST(SceneTabOpenToExtract, PictureTooSmallToScanIsRefusedBeforeAnythingIsWritten)
{
    for (const auto &[width, height] : {std::pair{2, 2}, std::pair{1, 1}, std::pair{3, 40}}) {
        const std::string size = core::StrPrintf("%dx%d", width, height);
        SCOPED_TRACE(size);
        TempDir dir;
        SceneRig rig;
        const std::string clip = GrayClip(dir, width, height);
        EXPECT_EQ(rig.tab.OpenVideoToExtract(clip), -1);
        EXPECT_TRUE(rig.tab.LastAnalysis().bPictureTooSmall);
        ASSERT_EQ(rig.view.errors.size(), 1u);
        EXPECT_EQ(rig.view.errors[0],
                  clip +
                      ": the picture is too small to scan for motion; scene extraction needs a "
                      "picture of at least 4 by 4 pixels. (" +
                      size + ")");
        EXPECT_TRUE(rig.tab.Data().input_file.empty());
        EXPECT_FALSE(Exists(clip + "_out"));
        EXPECT_FALSE(Exists(clip + ".twproj"));
        EXPECT_FALSE(rig.tab.Process().bOpenForExtraction);
    }
}

TEST(SceneTabOpenToExtract, SmallestPictureThatCanBeScannedOpens)
{
    TempDir dir;
    SceneRig rig;
    ASSERT_EQ(rig.tab.OpenVideoToExtract(Clip(dir, "small.mp4", "4x4")), 0);
    EXPECT_FALSE(rig.tab.LastAnalysis().bPictureTooSmall);
    EXPECT_TRUE(rig.view.errors.empty());
}

TEST(SceneTabJobs, ExtractionOfAPictureTooSmallToScanIsRefusedAndKeepsTheList)
{
    TempDir dir;
    SceneRig rig;
    const std::string clip = Clip(dir, "tiny.mp4", "2x2");
    ASSERT_EQ(rig.tab.OpenVideo(clip), 0); // to be looked at and played, it opens
    ASSERT_EQ(rig.view.rows.size(), 1u);
    const std::string segment = rig.tab.Data().diff_list[0].fileName;
    const bool segmentThere = Exists(segment);
    for (bool andOutput : {false, true}) {
        SCOPED_TRACE(andOutput);
        rig.view.errors.clear();
        if (andOutput) {
            rig.tab.ExtractAndOutput();
        } else {
            rig.tab.ExtractScenes();
        }
        EXPECT_FALSE(rig.tab.IsJobRunning());
        EXPECT_TRUE(rig.tab.LastJob().bFinished);
        EXPECT_TRUE(rig.tab.LastJob().bPictureTooSmall);
        EXPECT_EQ(rig.tab.LastJob().nResult, -1);
        ASSERT_EQ(rig.view.errors.size(), 1u);
        EXPECT_NE(rig.view.errors[0].find("too small to scan"), std::string::npos);
        ASSERT_EQ(rig.view.rows.size(), 1u);
        EXPECT_EQ(Exists(segment), segmentThere);
        EXPECT_FALSE(Exists(rig.tab.Data().GetOutputPath()));
    }
}
