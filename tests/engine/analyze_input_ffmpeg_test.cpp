// Tests of the analysis of a newly opened input with the real tools: which inputs get a working
// MP4, what the project holds afterwards, the stages it reports, and a second opening that
// trusts the working file.
#include <algorithm>
#include <filesystem>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "core/source_stamp.h"
#include "engine/encoder_presets.h"
#include "engine_fixture.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using Texts = std::vector<std::string>;

// The stage names a tab received, in order.
Texts Stages(const engine::HeadlessTab &tab)
{
    Texts names;
    for (const engine::JobMessage &msg : tab.MessagesOf(AppMessage::WM_APP_STAGE_BEGIN)) {
        names.push_back(msg.text.value_or(""));
    }
    return names;
}

// A new project for clip, named as opening it names one, then the analysis of the opening.
int Open(EngineRig &rig, const std::string &clip)
{
    rig.data.ResetProject(false);
    core::DeriveProjectNames(rig.data, clip);
    return rig.engine.AnalyzeInputFile(false, -1);
}

TEST(AnalyzeInputFile, ProgressiveMp4WithCapitalsIsUsedAsItIs)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("GARDEN.MP4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_TRUE(rig.data.input_mp4_file.empty());
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Frame Rate Analysis"}));
    EXPECT_EQ(rig.data.viSource.frame_num, 50);
    EXPECT_EQ(rig.data.viInput.frame_num, 50);
    EXPECT_EQ(rig.data.pts_list.size(), 51u);
    EXPECT_TRUE(fs::exists(rig.data.pts_file));
    EXPECT_DOUBLE_EQ(rig.data.dTransitionSec, 0.48);
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
    EXPECT_EQ(rig.engine.nProcessID, 0);
}

TEST(AnalyzeInputFile, MovGetsAWorkingMp4ThatLaterWorkReads)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=30:duration=2"));
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    const std::string working = clip + "_out/phone_input_ch.mp4";
    EXPECT_EQ(rig.data.input_mp4_file, working);
    EXPECT_TRUE(fs::exists(working));
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Change MP4", "Frame Rate Analysis"}));
    EXPECT_EQ(rig.engine.strPreviewFile.get(), working);
    EXPECT_EQ(rig.data.viInput.frame_num, 60);
    // 30 fps: round(15) = 15, made even 14, 14 / 30 = 0.4667.
    EXPECT_DOUBLE_EQ(rig.data.dTransitionSec, 0.47);
    EXPECT_EQ(States(rig.Scene()).back(), "4:");
}

TEST(AnalyzeInputFile, SecondOpeningWithTheWorkingFileInPlaceConvertsNothing)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    {
        EngineRig first;
        ASSERT_EQ(Open(first, clip), 0);
    }
    const std::string working = clip + "_out/phone_input_ch.mp4";
    const auto written = fs::last_write_time(working);
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_EQ(rig.data.input_mp4_file, working);
    EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Frame Rate Analysis"}));
    EXPECT_EQ(fs::last_write_time(working), written);
}

TEST(AnalyzeInputFile, UnreadableInputFailsWithoutChangingTheProject)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("broken.mov");
    ASSERT_TRUE(testsupport::WriteFile(clip, "not a video at all"));
    EngineRig rig;
    EXPECT_NE(Open(rig, clip), 0);
    EXPECT_TRUE(rig.data.input_mp4_file.empty());
    EXPECT_FALSE(fs::exists(clip + "_out/broken_input_ch.mp4"));
    EXPECT_EQ(States(rig.Scene()).back(), "3:");
    EXPECT_EQ(rig.engine.nProcessID, 0);
}

// Opens clip with its working files in folder (shared by videos of the same name).
int OpenInto(EngineRig &rig, const std::string &clip, const std::string &folder)
{
    rig.data.ResetProject(false);
    rig.data.output_folder = folder + "/";
    core::DeriveProjectNames(rig.data, clip);
    return rig.engine.AnalyzeInputFile(false, -1);
}

bool Converted(EngineRig &rig)
{
    const Texts stages = Stages(rig.Scene());
    return std::find(stages.begin(), stages.end(), "Change MP4") != stages.end();
}

TEST(AnalyzeInputFile, WorkingFileOfAnotherVideoOfTheSameNameIsKeptBesideItsOwn)
{
    testsupport::TempDir dir;
    fs::create_directories(dir.file("A"));
    fs::create_directories(dir.file("B"));
    const std::string a = dir.file("A/cam.mov");
    const std::string b = dir.file("B/cam.mov");
    ASSERT_TRUE(testsupport::MakeClip(a, "testsrc2=size=160x120:rate=25:duration=2"));
    ASSERT_TRUE(testsupport::MakeClip(b, "testsrc2=size=160x120:rate=25:duration=3"));
    const std::string folder = dir.file("out");
    const std::string workingA = folder + "/cam_input_ch.mp4";
    const std::string workingB = folder + "/cam_input_ch_2.mp4";
    // Each video gets its own working file, made once and then used again, in either order.
    struct Opening
    {
        std::string clip;
        int frames;
        std::string working;
        bool bConverted;
    };
    const std::vector<Opening> openings = {{a, 50, workingA, true},
                                           {b, 75, workingB, true},
                                           {a, 50, workingA, false},
                                           {b, 75, workingB, false}};
    for (const Opening &opening : openings) {
        SCOPED_TRACE(opening.clip);
        EngineRig rig;
        ASSERT_EQ(OpenInto(rig, opening.clip, folder), 0);
        EXPECT_EQ(Converted(rig), opening.bConverted);
        EXPECT_EQ(rig.data.input_mp4_file, opening.working);
        EXPECT_EQ(rig.data.viInput.frame_num, opening.frames);
        EXPECT_EQ(rig.data.pts_list.size(), static_cast<size_t>(opening.frames) + 1);
        EXPECT_TRUE(core::MadeFromSource(opening.working, opening.clip));
    }
    // A gone, its file is made anew for the next video of that name.
    fs::remove(a);
    fs::rename(b, a);
    EngineRig moved;
    ASSERT_EQ(OpenInto(moved, a, folder), 0);
    EXPECT_TRUE(Converted(moved));
    EXPECT_EQ(moved.data.input_mp4_file, workingA);
    EXPECT_EQ(moved.data.viInput.frame_num, 75);
}

TEST(AnalyzeInputFile, WorkingFileWithoutARecordOfItsSourceIsMadeAnew)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    {
        EngineRig first;
        ASSERT_EQ(Open(first, clip), 0);
    }
    const std::string working = clip + "_out/phone_input_ch.mp4";
    ASSERT_TRUE(fs::exists(core::SourceStampPath(working)));
    fs::remove(core::SourceStampPath(working)); // as one made before records were kept
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_TRUE(Converted(rig));
    EXPECT_TRUE(core::MadeFromSource(working, clip));
}

TEST(AnalyzeInputFile, SourceChangedSinceItsWorkingFileWasMadeIsConvertedAgain)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("phone.mov");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    {
        EngineRig first;
        ASSERT_EQ(Open(first, clip), 0);
    }
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=3"));
    EngineRig rig;
    ASSERT_EQ(Open(rig, clip), 0);
    EXPECT_TRUE(Converted(rig));
    EXPECT_EQ(rig.data.viInput.frame_num, 75);
}

// Opens clip again with the current scene in the list, as loading its project does.
int OpenWithScene(EngineRig &rig, const std::string &clip, bool bForExtraction)
{
    rig.data.ResetProject(false);
    core::DeriveProjectNames(rig.data, clip);
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.diff_list.emplace_back(0, 49, core::SegmentPath(rig.data, 0, 49));
        rig.data.list_idx = 0;
    }
    rig.engine.bOpenForExtraction = bForExtraction;
    const int r = rig.engine.AnalyzeInputFile(true, 0);
    rig.engine.bOpenForExtraction = false;
    return r;
}

TEST(AnalyzeInputFile, OpeningThatAnExtractionFollowsCutsNoScene)
{
    testsupport::TempDir dir;
    const std::string clip = dir.file("garden.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=2"));
    {
        EngineRig rig;
        ASSERT_EQ(OpenWithScene(rig, clip, true), 0);
        EXPECT_FALSE(fs::exists(rig.data.diff_list[0].fileName));
        EXPECT_EQ(Stages(rig.Scene()), (Texts{"File Analysis", "Frame Rate Analysis"}));
    }
    EngineRig rig;
    ASSERT_EQ(OpenWithScene(rig, clip, false), 0);
    EXPECT_TRUE(fs::exists(rig.data.diff_list[0].fileName)); // a plain opening cuts it
}

} // namespace
