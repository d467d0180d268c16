// Tests of stream probing against the real ffprobe and ffmpeg: facts of generated clips, the
// counting pass for containers without a frame count, the project's records, the messages of a
// reload, the fixed ffprobe modes, failures and the stop of a long count.
#include "engine/tarnwick_process.h"

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "engine_fixture.h"

namespace {

using core::VideoInfo;
using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::States;
using enginetest::Words;

const char *kSource = "testsrc2=size=320x240:rate=25:duration=2";

std::string MakeTestClip(const testsupport::TempDir &dir,
                         const std::string &name,
                         const std::vector<std::string> &outputArgs = {
                             "-c:v", "libx264", "-pix_fmt", "yuv420p"})
{
    std::string path = dir.file(name);
    EXPECT_TRUE(testsupport::MakeClip(path, kSource, outputArgs));
    return path;
}

TEST(StreamProbe, ReadsTheFactsOfAnMp4Clip)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.r_frame_rate, "25/1");
    EXPECT_DOUBLE_EQ(info.fps, 25.0);
    EXPECT_EQ(info.frame_num, 50);
    EXPECT_EQ(info.width, 320);
    EXPECT_EQ(info.height, 240);
    EXPECT_EQ(info.rotation, 0);
    EXPECT_EQ(info.start_frame, 0);
    EXPECT_EQ(info.field_order, "progressive");
    EXPECT_EQ(info.sar_num, 1);
    EXPECT_EQ(info.sar_den, 1);
    EXPECT_FALSE(info.bHasAudio);
}

TEST(StreamProbe, MkvClipWithoutFrameCountIsCounted)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mkv");
    EngineRig rig;
    std::string text;
    ASSERT_EQ(rig.engine.RunFfprobeJson(clip, text, 4), 0);
    ASSERT_EQ(text.find("nb_frames"), std::string::npos) << "the container states a count";
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.frame_num, 50);
    EXPECT_EQ(rig.engine.hProcess, 0);
}

TEST(StreamProbe, TransportStreamClipIsCounted)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.ts", {"-c:v", "mpeg2video", "-f", "mpegts"});
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.frame_num, 50);
    EXPECT_EQ(info.r_frame_rate, "25/1");
    EXPECT_GT(info.start_frame, 0); // transport streams start late
}

TEST(StreamProbe, InputFileReusesItsFrameCountInsteadOfCounting)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "in.mkv");
    EngineRig rig;
    rig.data.input_file = clip;
    rig.data.viInput.frame_num = 77;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.frame_num, 77);
}

TEST(StreamProbe, RotatedClipGivesMinusNinety)
{
    testsupport::TempDir dir;
    std::string upright = MakeTestClip(dir, "upright.mp4");
    // The rotate tag takes effect when the stream is copied; 270 is stored as -90.
    std::string clip = dir.file("r.mp4");
    ASSERT_EQ(testsupport::RunProgram({"ffmpeg",
                                       "-y",
                                       "-loglevel",
                                       "error",
                                       "-i",
                                       upright,
                                       "-c",
                                       "copy",
                                       "-metadata:s:v:0",
                                       "rotate=270",
                                       clip})
                  .exitCode,
              0);
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.rotation, -90);
}

TEST(StreamProbe, ClipWithSoundHasAudio)
{
    testsupport::TempDir dir;
    std::string path = dir.file("av.mp4");
    ASSERT_EQ(testsupport::RunProgram({"ffmpeg",
                                       "-y",
                                       "-loglevel",
                                       "error",
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       kSource,
                                       "-f",
                                       "lavfi",
                                       "-i",
                                       "sine=duration=2",
                                       "-c:v",
                                       "libx264",
                                       "-c:a",
                                       "aac",
                                       path})
                  .exitCode,
              0);
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(path, info), 0);
    EXPECT_TRUE(info.bHasAudio);
}

TEST(StreamProbe, AudioOnlyFileHasNoVideoStream)
{
    testsupport::TempDir dir;
    std::string path = dir.file("sound.m4a");
    ASSERT_TRUE(testsupport::MakeSoundClip(path));
    EngineRig rig;
    VideoInfo info;
    EXPECT_EQ(rig.engine.GetVideoInfoFfprobe(path, info), -1);
    EXPECT_EQ(rig.engine.OpenVideoFile(path), -1);
    EXPECT_EQ(rig.data.viCurrent.width, 0); // records unchanged
}

TEST(StreamProbe, FileThatIsNoVideoFailsWithOne)
{
    testsupport::TempDir dir;
    std::string path = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(path, "hello"));
    EngineRig rig;
    VideoInfo info;
    info.width = 5;
    EXPECT_EQ(rig.engine.GetVideoInfoFfprobe(path, info), 1);
    EXPECT_EQ(info.width, 0); // reset first
    EXPECT_EQ(rig.engine.GetFrameCount(path), 0);
}

TEST(StreamProbe, MissingFfprobeGivesOneAndTheStartFailure)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    std::string oldPath = std::getenv("PATH");
    setenv("PATH", dir.path().c_str(), 1);
    EngineRig rig;
    VideoInfo info;
    int result = rig.engine.GetVideoInfoFfprobe(clip, info);
    setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(States(rig.Scene()),
              (std::vector<std::string>{"3:CreateProcess failed with error 2"}));
}

TEST(StreamProbe, OpenVideoFileFillsTheRecordsThePathBelongsTo)
{
    testsupport::TempDir dir;
    std::string input = MakeTestClip(dir, "in.mp4");
    std::string work = MakeTestClip(dir, "in_input_cs.mp4", {"-c:v", "mpeg4", "-s", "160x120"});
    std::string other = MakeTestClip(dir, "other.mp4", {"-c:v", "mpeg4", "-s", "64x48"});
    EngineRig rig;
    rig.data.input_file = input;

    ASSERT_EQ(rig.engine.OpenVideoFile(input), 0);
    EXPECT_EQ(rig.engine.strPreviewFile.get(), input);
    EXPECT_EQ(rig.data.viCurrent.width, 320);
    EXPECT_EQ(rig.data.viInput.width, 320);
    EXPECT_EQ(rig.data.viSource.width, 320);

    rig.data.input_mp4_file = work;
    ASSERT_EQ(rig.engine.OpenVideoFile(work), 0);
    EXPECT_EQ(rig.data.viCurrent.width, 160);
    EXPECT_EQ(rig.data.viInput.width, 160);
    EXPECT_EQ(rig.data.viSource.width, 320);

    ASSERT_EQ(rig.engine.OpenVideoFile(other), 0);
    EXPECT_EQ(rig.engine.strPreviewFile.get(), other);
    EXPECT_EQ(rig.data.viCurrent.width, 64);
    EXPECT_EQ(rig.data.viInput.width, 160);
    EXPECT_EQ(rig.data.viSource.width, 320);
}

TEST(StreamProbe, ReloadReportsTheFactsAndThePosition)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    EngineRig rig;
    rig.engine.nPreviewFrame = 10;
    ASSERT_EQ(rig.engine.ReloadVideoInfo(clip, false), 0);
    rig.engine.nPreviewFrame = 0;
    ASSERT_EQ(rig.engine.ReloadVideoInfo(clip, true), 0);
    rig.engine.nPreviewFrame = 70;
    ASSERT_EQ(rig.engine.ReloadVideoInfo(clip, true), 0);
    using Words2 = std::vector<std::pair<int64_t, int64_t>>;
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_INPUT_INFO), (Words2{{0, 50}}));
    EXPECT_EQ(Words(rig.Scene(), AppMessage::WM_APP_POSITION),
              (Words2{{11, 50}, {0, 50}, {50, 50}}));
}

TEST(StreamProbe, FailedReloadSendsNothing)
{
    EngineRig rig;
    testsupport::TempDir dir;
    std::string path = dir.file("text.mp4");
    ASSERT_TRUE(testsupport::WriteFile(path, "hello"));
    EXPECT_EQ(rig.engine.ReloadVideoInfo(path, false), 1);
    EXPECT_TRUE(rig.Scene().Messages().empty());
}

TEST(StreamProbe, GetFrameCountReadsTheCount)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    EngineRig rig;
    EXPECT_EQ(rig.engine.GetFrameCount(clip), 50);
    EXPECT_EQ(rig.engine.GetFrameCount(dir.file("missing.mp4")), 0);
}

TEST(StreamProbe, FfprobeModesRunTheirFixedCommands)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    enginetest::LogCapture log;
    EngineRig rig;
    std::string text;
    for (int mode : {1, 2, 3, 4, 5, 0}) {
        EXPECT_EQ(rig.engine.RunFfprobeJson(clip, text, mode), 0) << mode;
    }
    std::string q = "\"" + clip + "\"";
    EXPECT_EQ(
        log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd"),
        (std::vector<std::string>{
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v quiet -print_format json -show_format "
            "-show_streams " +
                q,
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v quiet -print_format json -show_format "
            "-show_streams " +
                q,
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v quiet -print_format json -show_format " + q,
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v quiet -print_format json -select_streams v "
            "-show_streams " +
                q,
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v quiet -print_format json -select_streams a "
            "-show_streams " +
                q,
            "CTarnwickProcess::ExecuteCmd(N) ffprobe -v error -show_streams -select_streams v:0 "
            "-print_format json " +
                q,
        }));
    ASSERT_EQ(rig.engine.RunFfprobeJson(clip, text, 3), 0);
    nlohmann::json format = nlohmann::json::parse(text);
    EXPECT_TRUE(format.contains("format"));
    EXPECT_FALSE(format.contains("streams"));
    EXPECT_EQ(rig.engine.RunFfprobeJson(dir.file("missing.mp4"), text, 1), 1);
}

TEST(StreamProbe, ProbeLogsTheFactsItRead)
{
    testsupport::TempDir dir;
    std::string clip = MakeTestClip(dir, "a.mp4");
    enginetest::LogCapture log;
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(
        log.LinesWithoutPositions("CTarnwickProcess::GetVideoInfoFfprobe"),
        (std::vector<std::string>{"CTarnwickProcess::GetVideoInfoFfprobe(N) filename:\"" + clip +
                                  "\", r_frame_rate:\"25/1\", width:320, height:240, "
                                  "frame_rate:25.000000, nb_frames:50, rotation:0, "
                                  "start_frame:0, field_order:progressive"}));
}

TEST(StreamProbe, PathWithSpacesAndNonAsciiIsProbed)
{
    testsupport::TempDir dir;
    ASSERT_EQ(mkdir(dir.file("clip dir").c_str(), 0755), 0);
    std::string clip = MakeTestClip(dir, "clip dir/ビデオ 1.mkv");
    EngineRig rig;
    VideoInfo info;
    ASSERT_EQ(rig.engine.GetVideoInfoFfprobe(clip, info), 0);
    EXPECT_EQ(info.width, 320);
    EXPECT_EQ(info.frame_num, 50); // counted through the same path
}

TEST(StreamProbe, StopEndsALongCountWithTheCountSoFar)
{
    testsupport::TempDir dir;
    std::string shortClip = MakeTestClip(dir, "short.mkv");
    std::string longClip = dir.file("long.mkv");
    ASSERT_TRUE(testsupport::LoopClip(longClip, shortClip, 400));
    EngineRig rig;
    VideoInfo info;
    int result = 99;
    rig.engine.SetJobFunction(9004, 0, [&](int) {
        result = rig.engine.GetVideoInfoFfprobe(longClip, info);
        return result;
    });
    ASSERT_EQ(rig.engine.StartThread(9004), 1);
    std::string counter = "-i " + longClip + " -vf";
    rig.host.Loop().RunUntil(
        [&] { return testsupport::CountProcessesWith(counter) > 0 || !rig.engine.bThreadRunning; });
    rig.engine.CancelProcess();
    EXPECT_EQ(testsupport::CountProcessesWith(counter), 0);
    EXPECT_EQ(result, 0); // the count so far stands
    EXPECT_LT(info.frame_num, 401 * 50);
}

} // namespace
