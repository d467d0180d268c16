// Tests of what a cut leaves behind when it is stopped, killed, refused or finds no picture: the
// partial name of a segment in the making, the clean-up of partial files at the next job, the
// record that stays as planned, and paths that no command can carry.
#include "engine/tarnwick_process.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "engine/cut_fixture.h"
#include "engine/encoder_presets.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using cuttest::CutProject;
using cuttest::DecodedFrames;
using cuttest::FramesOf;
using engine::AppMessage;
using enginetest::States;

// The first half of a real recording with sound: its index is gone, and ffmpeg cannot seek in it.
std::string TruncatedRecording(const testsupport::TempDir &dir)
{
    std::string bytes = testsupport::ReadFile(testsupport::FootageDir() + "/vtest_480x360.avi");
    EXPECT_GT(bytes.size(), 946634u);
    std::string path = dir.file("truncated.avi");
    EXPECT_TRUE(testsupport::WriteFile(path, bytes.substr(0, 946634)));
    return path;
}

TEST(CutSafety, SegmentIsWrittenUnderItsPartialNameAndRenamedOnSuccess)
{
    enginetest::LogCapture log;
    CutProject p;
    int n = p.AddScene(10, 29);
    const std::string fileName = p.Scene(n).fileName;
    ASSERT_EQ(p.rig.engine.CutSceneQuiet(p.clip, n, p.rig.engine.Settings()), 0);
    const std::string partial = core::PartialSegmentPath(fileName);
    EXPECT_EQ(partial, p.rig.data.output_folder + "my clip_seg_10_29.partial.mp4");
    bool cutToPartial = false;
    for (const std::string &line : log.Lines("CTarnwickProcess::ExecuteCmd")) {
        cutToPartial = cutToPartial || line.find("\"" + partial + "\"") != std::string::npos;
    }
    EXPECT_TRUE(cutToPartial) << "the cut's command names the partial file as its output";
    EXPECT_FALSE(fs::exists(partial));
    EXPECT_EQ(DecodedFrames(fileName), 20);
}

TEST(CutSafety, PartialFilesOfAKilledRunAreDeletedAtTheNextJob)
{
    CutProject p;
    fs::create_directories(p.rig.data.output_folder);
    const std::string leftover = core::SegmentStem(p.rig.data) + "5_9.partial.mp4";
    const std::string foreign = p.rig.data.output_folder + "other_seg_5_9.partial.mp4";
    const std::string segment = core::SegmentPath(p.rig.data, 5, 9);
    // Conversions to a working file under two of the six encoder settings.
    const std::string conversion =
        core::PartialSegmentPath(engine::WorkingFilePath(p.rig.data, 0, 1));
    const std::string cudaConversion =
        core::PartialSegmentPath(engine::WorkingFilePath(p.rig.data, 1, 2));
    const std::string foreignConversion = p.rig.data.output_folder + "other_input_cs.partial.mp4";
    for (const std::string &file :
         {leftover, foreign, segment, conversion, cudaConversion, foreignConversion}) {
        ASSERT_TRUE(testsupport::WriteFile(file, "half"));
    }
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSegmentOutput), 1);
    p.rig.WaitForJob();
    EXPECT_FALSE(fs::exists(leftover));
    EXPECT_FALSE(fs::exists(conversion));
    EXPECT_FALSE(fs::exists(cudaConversion));
    EXPECT_TRUE(fs::exists(foreign)) << "another project's file is left alone";
    EXPECT_TRUE(fs::exists(foreignConversion)) << "another input's conversion is left alone";
    EXPECT_TRUE(fs::exists(segment)) << "a finished segment is no leftover";
}

TEST(CutSafety, CutThatHoldsNoPictureKeepsTheRecordAndLeavesNoFile)
{
    CutProject p;
    const std::string source = TruncatedRecording(p.dir);
    ASSERT_EQ(p.rig.engine.OpenVideoFile(source), 0);
    int n = p.AddScene(0, 250);
    const std::string fileName = p.Scene(n).fileName;
    EXPECT_EQ(p.rig.engine.CutSceneQuiet(source, n, p.rig.engine.Settings()), -1);
    EXPECT_FALSE(fs::exists(fileName));
    EXPECT_FALSE(fs::exists(core::PartialSegmentPath(fileName)));
    core::SceneEntry scene = p.Scene(n);
    EXPECT_EQ(scene.framNo_first, 0);
    EXPECT_EQ(scene.framNo_second, 250);
    EXPECT_EQ(scene.fileName, fileName);
}

TEST(CutSafety, ZeroFramesNeverMakeARecordEndBeforeItBegins)
{
    CutProject p;
    int n = p.AddScene(1050, 1099);
    const std::string fileName = p.Scene(n).fileName;
    p.rig.engine.UpdateSceneFile(n, 0);
    EXPECT_EQ(p.Scene(n).framNo_second, 1099);
    EXPECT_EQ(p.Scene(n).fileName, fileName);
}

// A stand-in for ffprobe that never answers, first on PATH: a stop during the probe of a
// finished segment can then be made to happen every time.
void PutSilentProbeFirstOnPath(const testsupport::TempDir &dir)
{
    const std::string probe = dir.file("bin/ffprobe");
    fs::create_directories(dir.file("bin"));
    ASSERT_TRUE(testsupport::WriteFile(probe, "#!/bin/sh\nexec sleep 600.9161\n"));
    fs::permissions(probe, fs::perms::owner_all);
    setenv("PATH", (dir.file("bin") + ":" + std::getenv("PATH")).c_str(), 1);
}

TEST(CutSafety, StopWhileAFinishedSegmentIsProbedKeepsTheRecordAndDeletesTheSegment)
{
    CutProject p;
    int n = p.AddScene(10, 59);
    const std::string fileName = p.Scene(n).fileName;
    PutSilentProbeFirstOnPath(p.dir);
    int result = 0;
    const engine::JobSettings settings = p.rig.engine.Settings();
    std::thread cut([&] { result = p.rig.engine.CutSceneQuiet(p.clip, n, settings); });
    // The segment has its final name once the cut succeeded; its probe hangs.
    while (!fs::exists(fileName) || testsupport::CountProcessesWith("sleep 600.9161") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    p.rig.engine.bCancel = 1;
    cut.join();
    EXPECT_EQ(result, -2);
    EXPECT_FALSE(fs::exists(fileName));
    EXPECT_EQ(p.Scene(n).framNo_second, 59);
    EXPECT_EQ(p.Scene(n).fileName, fileName);
    EXPECT_EQ(testsupport::CountProcessesWith("sleep 600.9161"), 0);
}

TEST(CutSafety, OutputFolderWithAQuoteIsRefusedBeforeAnyToolRuns)
{
    CutProject p;
    p.rig.data.output_folder = p.dir.file("out\" -report \"x") + "/";
    int n = p.AddScene(10, 29);
    EXPECT_EQ(p.rig.engine.CutSceneQuiet(p.clip, n, p.rig.engine.Settings()), -1);
    p.rig.host.Loop().PumpMessages();
    const std::string partial = core::PartialSegmentPath(p.Scene(n).fileName);
    EXPECT_EQ(States(p.rig.Scene()),
              (std::vector<std::string>{"3:The path cannot be passed to the tool: " + partial +
                                        " contains a double quote"}));
    EXPECT_FALSE(fs::exists(p.dir.file("out\" -report \"x")));
    EXPECT_EQ(FramesOf(p.Scene(n)), 20);
}

} // namespace
