// Tests of reading ffprobe's JSON: rate choice and snapping, frame counts, start frame,
// rotation, field order, aspect, audio, and texts that are not what they should be.
#include "engine/probe_json.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using core::VideoInfo;
using engine::ProbeContext;
using engine::ProbeVideoText;

// A probe text with one video stream made of the given members, and optionally an audio stream.
std::string Probe(const std::string &videoMembers, bool withAudio = false)
{
    std::string text = R"({"streams": [{"index": 0, "codec_type": "video", "width": 1920, )"
                       R"("height": 1080)";
    if (!videoMembers.empty()) {
        text += ", " + videoMembers;
    }
    text += "}";
    if (withAudio) {
        text += R"(, {"index": 1, "codec_type": "audio"})";
    }
    return text + R"(], "format": {"filename": "x.mp4"}})";
}

const std::string kFrames = R"("nb_frames": "300")";

VideoInfo
Read(const std::string &text, const std::string &path = "/v/other.mp4", ProbeContext context = {})
{
    VideoInfo info;
    EXPECT_TRUE(ProbeVideoText(text, path, context, info)) << text;
    return info;
}

TEST(ProbeVideoJson, ZeroOverZeroAverageFallsBackToTheStreamRate)
{
    VideoInfo info = Read(Probe(R"("avg_frame_rate": "0/0", "r_frame_rate": "25/1", )" + kFrames));
    EXPECT_EQ(info.r_frame_rate, "25/1");
    EXPECT_DOUBLE_EQ(info.fps, 25.0);
}

TEST(ProbeVideoJson, PlausibleAverageIsAcceptedWithoutSecondTry)
{
    VideoInfo info = Read(Probe(R"("avg_frame_rate": "30/1", "r_frame_rate": "60/1", )" + kFrames));
    EXPECT_EQ(info.r_frame_rate, "30/1");
    EXPECT_DOUBLE_EQ(info.fps, 30.0);
}

TEST(ProbeVideoJson, TimeBaseAsAverageIsRefusedAndTheStreamRateUsedWhateverItSays)
{
    VideoInfo info =
        Read(Probe(R"("avg_frame_rate": "1000/1", "r_frame_rate": "90000/1", )" + kFrames));
    EXPECT_EQ(info.r_frame_rate, "90000/1");
    EXPECT_DOUBLE_EQ(info.fps, 90000.0);
}

TEST(ProbeVideoJson, AverageOf120IsRefusedByTheLimit)
{
    VideoInfo info =
        Read(Probe(R"("avg_frame_rate": "120/1", "r_frame_rate": "60/1", )" + kFrames));
    EXPECT_EQ(info.r_frame_rate, "60/1");
    EXPECT_DOUBLE_EQ(info.fps, 60.0);
}

TEST(ProbeVideoJson, NearStandardRatesSnapAndOthersStay)
{
    VideoInfo ntsc = Read(Probe(R"("avg_frame_rate": "2997/100", )" + kFrames));
    EXPECT_EQ(ntsc.r_frame_rate, "30000/1001");
    EXPECT_DOUBLE_EQ(ntsc.fps, 30000.0 / 1001.0);
    VideoInfo film = Read(Probe(R"("avg_frame_rate": "24/1", )" + kFrames));
    EXPECT_EQ(film.r_frame_rate, "24/1");
    EXPECT_DOUBLE_EQ(film.fps, 24.0);
}

TEST(ProbeVideoJson, SnapsWithinFiveThousandthsOnly)
{
    VideoInfo near = Read(Probe(R"("avg_frame_rate": "30004/1000", )" + kFrames));
    EXPECT_EQ(near.r_frame_rate, "30/1");
    EXPECT_DOUBLE_EQ(near.fps, 30.0);
    VideoInfo far = Read(Probe(R"("avg_frame_rate": "30006/1000", )" + kFrames));
    EXPECT_EQ(far.r_frame_rate, "30006/1000");
    EXPECT_DOUBLE_EQ(far.fps, 30.006);
}

TEST(ProbeVideoJson, StartTimeBecomesFramesRoundedHalfUpThenTruncated)
{
    EXPECT_EQ(Read(Probe(R"("avg_frame_rate": "30/1", "start_time": "0.500000", )" + kFrames))
                  .start_frame,
              15);
    EXPECT_EQ(Read(Probe(R"("avg_frame_rate": "30/1", "start_time": "-0.500000", )" + kFrames))
                  .start_frame,
              -14);
    EXPECT_EQ(
        Read(Probe(R"("avg_frame_rate": "30/1", "start_time": "N/A", )" + kFrames)).start_frame, 0);
    EXPECT_EQ(Read(Probe(R"("avg_frame_rate": "30/1", )" + kFrames)).start_frame, 0);
}

TEST(ProbeVideoJson, DisplayMatrixRotationIsRead)
{
    VideoInfo info = Read(Probe(R"("avg_frame_rate": "30/1", )" + kFrames +
                                R"(, "side_data_list": [{"side_data_type": "CPB properties"},
                                   {"side_data_type": "Display Matrix", "rotation": -90},
                                   {"rotation": 180}])"));
    EXPECT_EQ(info.rotation, -90);
}

TEST(ProbeVideoJson, UnknownFieldOrderStaysEmpty)
{
    EXPECT_EQ(Read(Probe(R"("field_order": "unknown", )" + kFrames)).field_order, "");
    EXPECT_EQ(Read(Probe(R"("field_order": "N/A", )" + kFrames)).field_order, "");
    EXPECT_EQ(Read(Probe(kFrames)).field_order, "");
    EXPECT_EQ(Read(Probe(R"("field_order": "tt", )" + kFrames)).field_order, "tt");
}

TEST(ProbeVideoJson, UnknownAspectZeroToOneIsStoredAsGiven)
{
    VideoInfo info = Read(Probe(R"("sample_aspect_ratio": "0:1", )" + kFrames));
    EXPECT_EQ(info.sar_num, 0);
    EXPECT_EQ(info.sar_den, 1);
    VideoInfo wide = Read(Probe(R"("sample_aspect_ratio": "4:3", )" + kFrames));
    EXPECT_EQ(wide.sar_num, 4);
    EXPECT_EQ(wide.sar_den, 3);
    VideoInfo none = Read(Probe(kFrames));
    EXPECT_EQ(none.sar_num, 1);
    EXPECT_EQ(none.sar_den, 1);
    VideoInfo junk = Read(Probe(R"("sample_aspect_ratio": "x:3", )" + kFrames));
    EXPECT_EQ(junk.sar_num, 1);
    EXPECT_EQ(junk.sar_den, 1);
}

TEST(ProbeVideoJson, ReadsAWholeRecord)
{
    VideoInfo info = Read(Probe(R"("avg_frame_rate": "25/1", "r_frame_rate": "50/1",
        "nb_frames": "250", "start_time": "0.080000", "field_order": "progressive",
        "sample_aspect_ratio": "1:1")",
                                true));
    EXPECT_EQ(info.r_frame_rate, "25/1");
    EXPECT_DOUBLE_EQ(info.fps, 25.0);
    EXPECT_EQ(info.frame_num, 250);
    EXPECT_EQ(info.width, 1920);
    EXPECT_EQ(info.height, 1080);
    EXPECT_EQ(info.rotation, 0);
    EXPECT_EQ(info.start_frame, 2);
    EXPECT_EQ(info.field_order, "progressive");
    EXPECT_EQ(info.sar_num, 1);
    EXPECT_EQ(info.sar_den, 1);
    EXPECT_TRUE(info.bHasAudio);
}

TEST(ProbeVideoJson, MissingSizeGivesMinusOne)
{
    VideoInfo info;
    ASSERT_TRUE(ProbeVideoText(
        R"({"streams": [{"codec_type": "video", "nb_frames": "1"}]})", "/v/a.mp4", {}, info));
    EXPECT_EQ(info.width, -1);
    EXPECT_EQ(info.height, -1);
    EXPECT_EQ(info.r_frame_rate, "0/1");
    EXPECT_DOUBLE_EQ(info.fps, 0.0);
    EXPECT_FALSE(info.bHasAudio);
}

TEST(ProbeVideoJson, FrameCountNotAvailableStaysZeroWithoutCounting)
{
    int counted = 0;
    ProbeContext context;
    context.countFrames = [&counted](const std::string &, const VideoInfo &) {
        ++counted;
        return 99;
    };
    VideoInfo info = Read(Probe(R"("nb_frames": "N/A")"), "/v/a.mp4", context);
    EXPECT_EQ(info.frame_num, 0);
    EXPECT_EQ(counted, 0);
}

TEST(ProbeVideoJson, MissingFrameCountIsCountedWithTheSizeKnown)
{
    int countedWidth = 0;
    ProbeContext context;
    context.countFrames = [&countedWidth](const std::string &path, const VideoInfo &info) {
        countedWidth = info.width;
        return path == "/v/a.mkv" ? 123 : 0;
    };
    VideoInfo info = Read(Probe(R"("avg_frame_rate": "25/1")"), "/v/a.mkv", context);
    EXPECT_EQ(info.frame_num, 123);
    EXPECT_EQ(countedWidth, 1920);
}

TEST(ProbeVideoJson, InputFileReusesItsKnownFrameCount)
{
    int counted = 0;
    ProbeContext context;
    context.input_file = "/v/in.mkv";
    context.inputFrameNum = 777;
    context.countFrames = [&counted](const std::string &, const VideoInfo &) {
        ++counted;
        return 5;
    };
    EXPECT_EQ(Read(Probe(R"("avg_frame_rate": "25/1")"), "/v/in.mkv", context).frame_num, 777);
    EXPECT_EQ(counted, 0);
    context.inputFrameNum = 0; // not known yet: counted
    EXPECT_EQ(Read(Probe(R"("avg_frame_rate": "25/1")"), "/v/in.mkv", context).frame_num, 5);
    EXPECT_EQ(counted, 1);
}

TEST(ProbeVideoJson, FrameCountAsNumberTextOrOtherType)
{
    EXPECT_EQ(Read(Probe(R"("nb_frames": 412)")).frame_num, 412);
    EXPECT_EQ(Read(Probe(R"("nb_frames": " 42 frames")")).frame_num, 42);
    EXPECT_EQ(Read(Probe(R"("nb_frames": true)")).frame_num, 0);
    EXPECT_EQ(Read(Probe(R"("nb_frames": "many")")).frame_num, 0);
    EXPECT_EQ(Read(Probe(R"("nb_frames": "99999999999")")).frame_num, 0);
}

TEST(ProbeVideoJson, FrameCountIsAdjustedToTheSnappedRateExceptForTheInput)
{
    // adjustFrames only removes floating-point noise: the count stays whole.
    VideoInfo other = Read(Probe(R"("avg_frame_rate": "2997/100", "nb_frames": "300")"));
    EXPECT_EQ(other.frame_num, 300);
    ProbeContext context;
    context.input_file = "/v/in.mp4";
    VideoInfo input =
        Read(Probe(R"("avg_frame_rate": "2997/100", "nb_frames": "300")"), "/v/in.mp4", context);
    EXPECT_EQ(input.frame_num, 300);
    EXPECT_EQ(input.r_frame_rate, "30000/1001");
}

TEST(ProbeVideoJson, FirstVideoStreamCountsAndAudioAnywhere)
{
    std::string text = R"({"streams": [
        {"codec_type": "audio"},
        {"codec_type": "video", "width": 640, "height": 480, "nb_frames": "10"},
        {"codec_type": "video", "width": 320, "height": 240, "nb_frames": "20"}]})";
    VideoInfo info = Read(text);
    EXPECT_EQ(info.width, 640);
    EXPECT_EQ(info.frame_num, 10);
    EXPECT_TRUE(info.bHasAudio);
}

TEST(ProbeVideoJson, TextsWithoutAVideoStreamAreRefused)
{
    const char *texts[] = {
        "",
        "not json at all",
        "{\n\n}",
        "[1, 2]",
        R"("streams")",
        R"({"format": {}})",
        R"({"streams": {"codec_type": "video"}})",
        R"({"streams": []})",
        R"({"streams": [{"codec_type": "audio"}, 5, "video"]})",
        R"({"streams": [{"codec_type": 1}]})",
        R"({"streams": [{"codec_type": "video", "width": 1)",
    };
    for (const char *text : texts) {
        SCOPED_TRACE(text);
        VideoInfo info;
        info.width = 12345;
        EXPECT_FALSE(ProbeVideoText(text, "/v/a.mp4", {}, info));
        EXPECT_EQ(info.width, 12345); // untouched
    }
}

TEST(ProbeVideoJson, KeysOfAnotherTypeCountAsMissing)
{
    VideoInfo info = Read(R"({"streams": [{"codec_type": "video", "width": "wide", "height": 2.5,
        "avg_frame_rate": 25, "r_frame_rate": "30/1", "nb_frames": "9",
        "start_time": 1, "field_order": 3, "sample_aspect_ratio": [1, 2],
        "side_data_list": {"rotation": 90}}]})");
    EXPECT_EQ(info.width, -1);
    EXPECT_EQ(info.height, 2);
    // The average counts as missing: its default "0/1" has a usable denominator and is kept.
    EXPECT_EQ(info.r_frame_rate, "0/1");
    EXPECT_DOUBLE_EQ(info.fps, 0.0);
    EXPECT_EQ(info.start_frame, 0);
    EXPECT_EQ(info.field_order, "");
    EXPECT_EQ(info.sar_num, 1);
    EXPECT_EQ(info.rotation, 0);
}

TEST(ParseIntPrefix, ReadsLikeStoiWithoutThrowing)
{
    EXPECT_EQ(engine::ParseIntPrefix("42"), 42);
    EXPECT_EQ(engine::ParseIntPrefix("  -7xyz"), -7);
    EXPECT_EQ(engine::ParseIntPrefix("+8"), 8);
    EXPECT_EQ(engine::ParseIntPrefix("2147483647"), 2147483647);
    EXPECT_EQ(engine::ParseIntPrefix("2147483648"), std::nullopt);
    EXPECT_EQ(engine::ParseIntPrefix("N/A"), std::nullopt);
    EXPECT_EQ(engine::ParseIntPrefix(""), std::nullopt);
    EXPECT_EQ(engine::ParseIntPrefix("+-1"), std::nullopt);
}

TEST(ParseDoublePrefix, ReadsLikeStodWithoutThrowing)
{
    EXPECT_EQ(engine::ParseDoublePrefix("0.500000"), 0.5);
    EXPECT_EQ(engine::ParseDoublePrefix(" -1.25s"), -1.25);
    EXPECT_EQ(engine::ParseDoublePrefix("1e999"), std::nullopt);
    EXPECT_EQ(engine::ParseDoublePrefix("N/A"), std::nullopt);
}

} // namespace
