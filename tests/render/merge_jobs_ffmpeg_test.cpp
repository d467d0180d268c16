// Tests of the merge tab's jobs with the real tools: sources of other sizes, rates and without
// sound converted to one format, segments reused, the film joined with and without cross-fades,
// a single row, the same source twice, and segments longer than planned.
#include "engine/tarnwick_process.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/merge_formats.h"
#include "core/paths.h"
#include "engine/engine_fixture.h"
#include "render/trim_commands.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using engine::AppMessage;
using enginetest::EngineRig;
using enginetest::LogCapture;
using enginetest::States;
using testsupport::StreamSeconds;
using testsupport::TempDir;

// A source clip: seconds of testsrc2 at size and rate, with a sine tone when sound is set (of
// soundSeconds when above 0, else as long as the picture).
std::string MakeSource(const TempDir &dir,
                       const std::string &name,
                       const std::string &size,
                       const std::string &rate,
                       double seconds,
                       bool sound,
                       double soundSeconds = 0.0)
{
    const std::string path = dir.file(name);
    std::vector<std::string> args = {
        "ffmpeg",
        "-v",
        "error",
        "-y",
        "-f",
        "lavfi",
        "-i",
        core::StrPrintf(
            "testsrc2=size=%s:rate=%s:duration=%g", size.c_str(), rate.c_str(), seconds)};
    if (sound) {
        args.insert(args.end(),
                    {"-f",
                     "lavfi",
                     "-i",
                     core::StrPrintf("sine=frequency=440:duration=%g",
                                     soundSeconds > 0 ? soundSeconds : seconds)});
    }
    args.insert(args.end(), {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", path});
    EXPECT_EQ(testsupport::RunProgram(args).exitCode, 0);
    return path;
}

// The merge tab's engine and project: rows of sources, segments named as the tab names them.
struct MergeProject
{
    MergeProject()
    {
        rig.engine.bMergeMode = 1;
        rig.engine.nRateIndex = 4; // 30/1
        rig.engine.nSizeIndex = 8; // 352x288
        rig.data.output_folder = dir.file("out") + "/";
        rig.data.output_name = "film.mp4";
        rig.data.bUseCuda = 0;
        rig.data.nEncodePreset = 1;
    }
    void Add(const std::string &source)
    {
        core::SceneEntry row;
        row.strWorkFile = source;
        row.fileName = rig.data.output_folder +
                       core::ReplaceExtension(core::FileNamePart(source), "_seg_") +
                       core::StrPrintf("352x288_%.02f.mp4", Fps());
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.diff_list.push_back(row);
    }
    double Fps() const { return core::MergeRateFps(core::MergeRateAt(rig.engine.nRateIndex)); }
    int Run(int nJob)
    {
        rig.Scene().ClearMessages();
        EXPECT_EQ(rig.engine.StartThread(nJob), 1);
        rig.WaitForJob();
        return rig.engine.nProcessExitCode;
    }
    std::string Output() const { return rig.data.GetOutputPath(); }
    // Conversions that ran, from the log: the commands that write a segment.
    std::vector<std::string> Conversions()
    {
        std::vector<std::string> found;
        for (const std::string &line : log.Lines("CTarnwickProcess::Execute")) {
            if (line.find("anullsrc") != std::string::npos ||
                line.find("-pix_fmt yuv420p") != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }
    std::vector<std::string> CommandsWith(const std::string &part)
    {
        std::vector<std::string> found;
        for (const std::string &line : log.Lines("CTarnwickProcess::")) {
            if (line.find(part) != std::string::npos) {
                found.push_back(line);
            }
        }
        return found;
    }

    LogCapture log;
    TempDir dir;
    EngineRig rig;
};

std::string Probe(const std::string &path, const std::string &entries)
{
    testsupport::RunResult r = testsupport::RunProgram({"ffprobe",
                                                        "-v",
                                                        "error",
                                                        "-select_streams",
                                                        "v:0",
                                                        "-show_entries",
                                                        entries,
                                                        "-of",
                                                        "default=nw=1:nk=1",
                                                        path});
    return r.out;
}

size_t Count(const std::string &text, const std::string &part)
{
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++n;
    }
    return n;
}

TEST(ConvertInput, SourceWithoutSoundGetsASilentTrackOfThePicturesLength)
{
    MergeProject p;
    p.Add(MakeSource(p.dir, "quiet.mp4", "160x120", "25", 2, false));
    ASSERT_EQ(p.Run(engine::kJobSegmentOutput), 0);
    const core::SceneEntry row = p.rig.data.diff_list[0];
    ASSERT_EQ(p.Conversions().size(), 1u);
    EXPECT_NE(
        p.Conversions()[0].find("-f lavfi -t 36000.000000 -i "
                                "anullsrc=channel_layout=stereo:sample_rate=44100 -shortest "),
        std::string::npos);
    EXPECT_TRUE(row.viOut.bHasAudio);
    const double audio = StreamSeconds(row.fileName, "a");
    const double video = StreamSeconds(row.fileName, "v");
    EXPECT_NEAR(audio, video, 0.1);
    testsupport::RunResult channels = testsupport::RunProgram({"ffprobe",
                                                               "-v",
                                                               "error",
                                                               "-select_streams",
                                                               "a:0",
                                                               "-show_entries",
                                                               "stream=channels,sample_rate",
                                                               "-of",
                                                               "default=nw=1:nk=1",
                                                               row.fileName});
    EXPECT_EQ(channels.out, "44100\n2\n");
}

TEST(ConvertInput, SegmentOfASilentSourceIsGoodForTheNextRun)
{
    MergeProject p;
    p.Add(MakeSource(p.dir, "quiet.mp4", "160x120", "25", 2, false));
    ASSERT_EQ(p.Run(engine::kJobSegmentOutput), 0);
    ASSERT_EQ(p.Conversions().size(), 1u);
    ASSERT_EQ(p.Run(engine::kJobSegmentOutput), 0);
    EXPECT_EQ(p.Conversions().size(), 1u); // nothing converted the second time
}

TEST(ConvertInput, RateIndexFiveWritesTheNtscRateAndTheGraphCarriesIt)
{
    MergeProject p;
    p.rig.engine.nRateIndex = 5;
    p.rig.data.transition = 1;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 2, true));
    p.Add(MakeSource(p.dir, "b.mp4", "160x120", "25", 2, true));
    ASSERT_EQ(p.Run(engine::kJobFinalOutput), 0);
    const std::vector<std::string> conversions = p.Conversions();
    ASSERT_EQ(conversions.size(), 2u);
    EXPECT_NE(conversions[0].find("-g 30 -keyint_min 1 -r 30000/1001 "), std::string::npos);
    const std::vector<std::string> graphs = p.CommandsWith("-filter_complex");
    ASSERT_EQ(graphs.size(), 1u);
    // Every input is brought to the chosen rate.
    EXPECT_GE(Count(graphs[0], "fps=30000/1001"), 2u);
    EXPECT_EQ(Count(graphs[0], "fps="), Count(graphs[0], "fps=30000/1001"));
    EXPECT_EQ(Probe(p.Output(), "stream=r_frame_rate"), "30000/1001\n");
}

TEST(ConvertAllInputs, SegmentOtherThanPlannedUpdatesTheRowAndFillsTheBar)
{
    MergeProject p;
    // 301 frames at 30 a second; the row plans one more than the source holds.
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "30", 301.0 / 30, true));
    {
        std::lock_guard<std::mutex> lock(p.rig.data.sceneLock.m);
        core::SceneEntry &row = p.rig.data.diff_list[0];
        row.bAnalyzed = true;
        row.viIn.bHasAudio = true;
        row.viOut.frame_num = 302; // the plan
    }
    ASSERT_EQ(p.Run(engine::kJobSegmentOutput), 0);
    EXPECT_EQ(p.rig.data.diff_list[0].viOut.frame_num, 301);
    std::vector<std::pair<int64_t, int64_t>> changed =
        enginetest::Words(p.rig.Scene(), AppMessage::WM_APP_SCENES_CHANGED);
    ASSERT_FALSE(changed.empty());
    EXPECT_EQ(changed.back().first, 0);
    std::vector<std::pair<int64_t, int64_t>> progress =
        enginetest::Words(p.rig.Scene(), AppMessage::WM_APP_PROGRESS);
    ASSERT_GE(progress.size(), 2u);
    EXPECT_EQ(progress.back().first, 301);
    EXPECT_EQ(progress.back().second, 301);
    EXPECT_EQ(progress[progress.size() - 2].second, 301);
    EXPECT_EQ(States(p.rig.Scene()).back(), "4:");
}

TEST(ProcessConv, SingleRowWithTransitionEncodesItsSegmentWithoutAMergeFile)
{
    MergeProject p;
    p.rig.data.transition = 1;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 2, true));
    ASSERT_EQ(p.Run(engine::kJobFinalOutput), 0);
    EXPECT_TRUE(p.CommandsWith("_merged").empty());
    EXPECT_TRUE(p.CommandsWith("-filter_complex").empty());
    const std::string segment = p.rig.data.diff_list[0].fileName;
    EXPECT_EQ(p.CommandsWith("-i \"" + segment + "\"").size(), 1u); // the final encode
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 2.0, 0.05);
    EXPECT_TRUE(fs::exists(segment));
}

TEST(ProcessConv, SameSourceTwiceIsConvertedOnceAndJoinedTwice)
{
    MergeProject p;
    const std::string source = MakeSource(p.dir, "a.mp4", "160x120", "25", 2, true);
    p.Add(source);
    p.Add(source);
    ASSERT_EQ(p.Run(engine::kJobFinalOutput), 0);
    EXPECT_EQ(p.Conversions().size(), 1u);
    const std::vector<std::string> graphs = p.CommandsWith("-filter_complex");
    ASSERT_EQ(graphs.size(), 1u);
    EXPECT_EQ(Count(graphs[0], "-i \"" + p.rig.data.diff_list[0].fileName + "\""), 2u);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 4.0, 0.05);
}

TEST(ProcessConvMerge, ThreeSourcesOfOtherSizesAndRatesBecomeOneFilmWithSoundThroughout)
{
    MergeProject p;
    p.Add(MakeSource(p.dir, "a.mp4", "320x240", "25", 2, true));
    p.Add(MakeSource(p.dir, "b.mp4", "160x90", "15", 2, false));
    p.Add(MakeSource(p.dir, "c.mp4", "200x200", "30000/1001", 2, true));
    ASSERT_EQ(p.Run(engine::kJobExtractAndOutput), 0);
    EXPECT_EQ(p.Conversions().size(), 3u);
    const std::string film = p.Output();
    EXPECT_EQ(Probe(film, "stream=width,height,r_frame_rate"), "352\n288\n30/1\n");
    const double video = StreamSeconds(film, "v");
    EXPECT_NEAR(video, 6.0, 0.1);
    EXPECT_NEAR(StreamSeconds(film, "a"), video, 0.1);
    EXPECT_NEAR(testsupport::DecodedFrames(film), 180, 1);
    // A second run converts nothing.
    ASSERT_EQ(p.Run(engine::kJobExtractAndOutput), 0);
    EXPECT_EQ(p.Conversions().size(), 3u);
}

TEST(ProcessConv, CrossFadesShortenTheFilmByOneFadePerJoin)
{
    MergeProject p;
    p.rig.data.transition = 1;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "30", 2, true));
    p.Add(MakeSource(p.dir, "b.mp4", "160x120", "30", 2, true));
    p.Add(MakeSource(p.dir, "c.mp4", "160x120", "30", 2, true));
    ASSERT_EQ(p.Run(engine::kJobFinalOutput), 0);
    const double fade = p.rig.data.dTransitionSec;
    EXPECT_GT(fade, 0.3);
    EXPECT_NEAR(StreamSeconds(p.Output(), "v"), 6.0 - 2 * fade, 0.1);
}

// A source of one frame at 25 fps gives one frame at 30: a cross-fade into it would never end
// in ffmpeg, so the job names it and ends before the merge.
TEST(ProcessConv, SourceShorterThanTheCrossFadeEndsTheJobNamingIt)
{
    MergeProject p;
    p.rig.data.transition = 1;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 2, true));
    p.Add(MakeSource(p.dir, "b.mp4", "160x120", "25", 0.04, true));
    EXPECT_EQ(p.Run(engine::kJobExtractAndOutput), engine::kJobCannotStart);
    const std::string last = States(p.rig.Scene()).back();
    EXPECT_EQ(last.rfind("3:file 2 of the list lasts 0.03 s, less than the cross-fade of ", 0), 0u)
        << last;
    EXPECT_FALSE(fs::exists(p.Output()));
}

TEST(ConvertAllInputs, FailingSourceEndsTheJobAndKeepsEarlierSegments)
{
    MergeProject p;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 1, true));
    const std::string broken = p.dir.file("b.mp4");
    ASSERT_TRUE(testsupport::WriteFile(broken, "not a video"));
    p.Add(broken);
    EXPECT_NE(p.Run(engine::kJobSegmentOutput), 0);
    EXPECT_TRUE(p.Conversions().empty()); // the analysis failed first: nothing converted
    EXPECT_TRUE(p.rig.data.diff_list[0].bAnalyzed);
    EXPECT_FALSE(p.rig.data.diff_list[1].bAnalyzed);
}

TEST(ProcessConv, StopDuringTheConversionsLeavesNoPartialSegment)
{
    MergeProject p;
    p.Add(MakeSource(p.dir, "a.mp4", "320x240", "30", 20, true));
    ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSegmentOutput), 1);
    // Stopped once the conversion has shown progress.
    p.rig.host.Loop().RunUntil([&p] {
        std::vector<std::pair<int64_t, int64_t>> progress =
            enginetest::Words(p.rig.Scene(), AppMessage::WM_APP_PROGRESS);
        return !p.rig.engine.bThreadRunning || (!progress.empty() && progress.back().second > 30);
    });
    p.rig.engine.CancelProcess();
    EXPECT_EQ(p.rig.engine.nProcessExitCode, engine::kJobStopped);
    EXPECT_TRUE(testsupport::FilesMatching(p.dir.file("out"), "partial").empty());
    EXPECT_FALSE(fs::exists(p.rig.data.diff_list[0].fileName));
}

// Frames of the film and seconds of its sound against the frames the job planned at fps.
void ExpectFilmOfFrames(const std::string &film, int frames, double fps)
{
    EXPECT_EQ(testsupport::DecodedFrames(film), frames);
    EXPECT_NEAR(StreamSeconds(film, "v"), frames / fps, 0.001);
    // AAC ends on a block of 1024 samples: the sound ends within a frame of the picture.
    EXPECT_NEAR(StreamSeconds(film, "a"), frames / fps, 1 / fps);
}

// A 4 s source of 25 fps plans 96 frames at 24 fps; "-r" alone repeated frames up to 98.
TEST(ConvertInput, SourceOfAnotherRateBecomesTheFramesItsRowPlans)
{
    MergeProject p;
    p.rig.engine.nRateIndex = 6; // 24/1
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 4, true));
    ASSERT_EQ(p.Run(engine::kJobSegmentOutput), 0);
    EXPECT_EQ(testsupport::DecodedFrames(p.rig.data.diff_list[0].fileName), 96);
    EXPECT_EQ(p.rig.data.diff_list[0].viOut.frame_num, 96);
    ASSERT_EQ(p.Run(engine::kJobFinalOutput), 0);
    ExpectFilmOfFrames(p.Output(), 96, 24.0);
}

// Cross-fades at another rate than the sources', one source's sound ending early: the film
// holds the frames the job plans (nFinal), and the sound lasts as long.
TEST(ProcessConv, CrossFadedFilmAtAnotherRateEndsAtThePlannedFramesWithItsSound)
{
    for (const int rateIndex : {6, 5}) { // 24/1 and 30000/1001
        MergeProject p;
        p.rig.engine.nRateIndex = rateIndex;
        p.rig.data.transition = 1;
        p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 2.08, true));
        p.Add(MakeSource(p.dir, "b.mp4", "160x120", "25", 1.96, true, 1.5));
        p.Add(MakeSource(p.dir, "c.mp4", "160x120", "25", 2.0, true));
        ASSERT_EQ(p.Run(engine::kJobExtractAndOutput), 0);
        int nTotal = 0;
        for (const core::SceneEntry &row : p.rig.data.diff_list) {
            nTotal += row.viOut.frame_num;
        }
        const double fade = p.rig.data.dTransitionSec;
        ASSERT_GT(fade, 0.3);
        SCOPED_TRACE(core::StrPrintf("rate %d, %d frames, fade %.2f", rateIndex, nTotal, fade));
        ExpectFilmOfFrames(p.Output(), render::FadedFrameCount(nTotal, p.Fps(), 3, fade), p.Fps());
    }
}

// The first source shorter than the cross-fade is refused as a later one is, naming it: the
// tool would be given a negative offset and write a film without sound.
TEST(ProcessConv, FirstSourceShorterThanTheCrossFadeEndsTheJobNamingIt)
{
    MergeProject p;
    p.rig.data.transition = 1;
    p.Add(MakeSource(p.dir, "a.mp4", "160x120", "25", 0.2, true));
    p.Add(MakeSource(p.dir, "b.mp4", "160x120", "25", 2, true));
    EXPECT_EQ(p.Run(engine::kJobExtractAndOutput), engine::kJobCannotStart);
    const std::string last = States(p.rig.Scene()).back();
    EXPECT_EQ(last.rfind("3:file 1 of the list lasts 0.20 s, less than the cross-fade of ", 0), 0u)
        << last;
    EXPECT_TRUE(p.CommandsWith("-filter_complex").empty());
    EXPECT_FALSE(fs::exists(p.Output()));
}

// A source without a frame count in its header is counted by decoding: a stop during that count,
// or during its conversion to a working file, ends the analysis as stopped, not as failed.
TEST(ProcessAnalysis, StopWhileASourceIsReadEndsStoppedWithoutBlamingIt)
{
    TempDir clips;
    const std::string part = MakeSource(clips, "part.mkv", "320x240", "25", 10, true);
    const std::string source = clips.file("long.mkv");
    ASSERT_TRUE(testsupport::LoopClip(source, part, 30));
    for (int moment = 0; moment < 2; ++moment) {
        MergeProject p;
        p.Add(source);
        ASSERT_EQ(p.rig.engine.StartThread(engine::kJobSceneExtract), 1);
        // Moment 0: the first tool on the source (its count); 1: its working file is written.
        p.rig.host.Loop().RunUntil([&] {
            return !p.rig.engine.bThreadRunning ||
                   (moment == 0
                        ? testsupport::CountProcessesWith(source) > 0
                        : !testsupport::FilesMatching(p.dir.file("out"), "partial").empty());
        });
        ASSERT_TRUE(p.rig.engine.bThreadRunning) << moment;
        p.rig.engine.CancelProcess();
        EXPECT_EQ(p.rig.engine.nProcessExitCode, engine::kJobStopped) << moment;
        EXPECT_EQ(States(p.rig.Scene()).back(), "5:") << moment;
        EXPECT_FALSE(p.rig.data.diff_list[0].bAnalyzed);
    }
}

} // namespace
