// Tests of the cut command builder: the times of a cut from frame numbers or the frame-time
// list, and the whole command text.
#include "engine/cut_command.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "core/tarnwick_data.h"

namespace {

using engine::BuildCutCommand;
using engine::CutCommandArgs;
using engine::CutSceneTimes;
using engine::CutTimes;

// Frame times of a stream that starts late and has one frame shown longer than the others, so
// that times from the list never agree with times from frame numbers.
std::vector<double> IrregularTimes(size_t count)
{
    std::vector<double> times;
    for (size_t i = 0; i < count; ++i) {
        times.push_back(10.0 + static_cast<double>(i) * 0.04 + (i >= 8 ? 0.01 : 0.0));
    }
    return times;
}

std::string Joined(const CutTimes &times)
{
    return times.start + " " + times.duration;
}

TEST(CutSceneTimes, FollowFromFrameNumbersWithoutAList)
{
    // trip.mov, frames 120 to 479 at 30 fps: 4 s to 16 s.
    EXPECT_EQ(Joined(CutSceneTimes(120, 479, 30.0, {})), "4.000000 12.000000");
    EXPECT_EQ(Joined(CutSceneTimes(0, 0, 29.97, {})), "0.000000 0.033367");
}

TEST(CutSceneTimes, OneFrameSceneTakesItsTimesFromTheList)
{
    EXPECT_EQ(Joined(CutSceneTimes(7, 7, 25.0, IrregularTimes(9))), "10.280000 0.050000");
    EXPECT_EQ(Joined(CutSceneTimes(7, 7, 25.0, {})), "0.280000 0.040000");
}

TEST(CutSceneTimes, ZeroFpsWithoutAListGivesZeroTimes)
{
    EXPECT_EQ(Joined(CutSceneTimes(120, 479, 0.0, {})), "0.000000 0.000000");
    EXPECT_EQ(Joined(CutSceneTimes(120, 479, -1.0, {})), "0.000000 0.000000");
}

TEST(CutSceneTimes, LastSceneWithAListOfExactlyItsEndPlusOneUsesFrameNumbers)
{
    // Frames 40 to 49 of a 50-frame file: the list has no entry for frame 50.
    EXPECT_EQ(Joined(CutSceneTimes(40, 49, 25.0, IrregularTimes(50))), "1.600000 0.400000");
    // One entry more and the list wins.
    EXPECT_EQ(Joined(CutSceneTimes(40, 49, 25.0, IrregularTimes(51))), "11.610000 0.400000");
}

TEST(CutSceneTimes, ListWinsOverFpsEvenAtZeroFps)
{
    EXPECT_EQ(Joined(CutSceneTimes(2, 9, 0.0, IrregularTimes(20))), "10.080000 0.330000");
}

TEST(CutSceneTimes, BrokenFrameNumbersNeverReadOutsideTheList)
{
    EXPECT_EQ(Joined(CutSceneTimes(-5, 3, 25.0, IrregularTimes(20))), "-0.200000 0.360000");
    EXPECT_EQ(Joined(CutSceneTimes(30, 3, 25.0, IrregularTimes(20))), "1.200000 -1.040000");
}

CutCommandArgs TripArgs()
{
    CutCommandArgs args;
    args.prefix = "ffmpeg -y ";
    args.times = CutSceneTimes(120, 479, 30.0, {});
    args.sourcePath = "/videos/trip.mov";
    args.encoderText = "mpeg4 -qscale:v 4";
    args.fps = 30.0;
    args.r_frame_rate = "30/1";
    args.fileName = "/videos/trip.mov_out/trip_seg_120_479.mp4";
    return args;
}

TEST(BuildCutCommand, SoftwareCommandIsTheWholeText)
{
    EXPECT_EQ(BuildCutCommand(TripArgs()),
              "ffmpeg -y -ss 4.000000 -i \"/videos/trip.mov\" -t 12.000000 -c:v mpeg4 "
              "-qscale:v 4 -g 30 -keyint_min 1 -r 30/1 -c:a aac -b:a 192k -vf "
              "\"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -movflags +faststart "
              "\"/videos/trip.mov_out/trip_seg_120_479.mp4\"");
}

TEST(BuildCutCommand, CudaPrefixAndNtscRate)
{
    CutCommandArgs args = TripArgs();
    args.prefix = "ffmpeg -y -hwaccel cuda ";
    args.encoderText = "h264_nvenc -preset p1 -qp 23";
    args.fps = 29.97;
    args.r_frame_rate = "30000/1001";
    args.times = CutSceneTimes(0, 29, 29.97, {});
    EXPECT_EQ(BuildCutCommand(args),
              "ffmpeg -y -hwaccel cuda -ss 0.000000 -i \"/videos/trip.mov\" -t 1.001001 -c:v "
              "h264_nvenc -preset p1 -qp 23 -g 30 -keyint_min 1 -r 30000/1001 -c:a aac -b:a "
              "192k -vf \"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -movflags "
              "+faststart \"/videos/trip.mov_out/trip_seg_120_479.mp4\"");
}

TEST(BuildCutCommand, PathsWithSpacesStayInsideTheirQuotes)
{
    CutCommandArgs args = TripArgs();
    args.sourcePath = "/home/me/My Videos/summer trip.mov";
    args.fileName = "/home/me/My Videos/summer trip.mov_out/summer trip_seg_120_479.mp4";
    EXPECT_EQ(BuildCutCommand(args),
              "ffmpeg -y -ss 4.000000 -i \"/home/me/My Videos/summer trip.mov\" -t 12.000000 "
              "-c:v mpeg4 -qscale:v 4 -g 30 -keyint_min 1 -r 30/1 -c:a aac -b:a 192k -vf "
              "\"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -movflags +faststart "
              "\"/home/me/My Videos/summer trip.mov_out/summer trip_seg_120_479.mp4\"");
}

TEST(BuildCutCommand, OneFrameSceneNamesTheSameFrameTwice)
{
    core::CTarnwickData data;
    data.input_file = "/v/clip.mp4";
    data.output_folder = "/v/clip.mp4_out/";
    CutCommandArgs args = TripArgs();
    args.sourcePath = data.input_file;
    args.times = CutSceneTimes(7, 7, 25.0, IrregularTimes(9));
    args.encoderText = "mpeg4 -qscale:v 1";
    args.fps = 25.0;
    args.r_frame_rate = "25/1";
    args.fileName = core::SegmentPath(data, 7, 7);
    EXPECT_EQ(BuildCutCommand(args),
              "ffmpeg -y -ss 10.280000 -i \"/v/clip.mp4\" -t 0.050000 -c:v mpeg4 -qscale:v 1 "
              "-g 25 -keyint_min 1 -r 25/1 -c:a aac -b:a 192k -vf \"setpts=PTS-STARTPTS\" -af "
              "\"asetpts=PTS-STARTPTS\" -movflags +faststart \"/v/clip.mp4_out/clip_seg_7_7.mp4\"");
}

TEST(BuildCutCommand, ZeroFpsGivesZeroTimesAndGopZero)
{
    CutCommandArgs args = TripArgs();
    args.fps = 0.0;
    args.times = CutSceneTimes(120, 479, 0.0, {});
    EXPECT_EQ(BuildCutCommand(args),
              "ffmpeg -y -ss 0.000000 -i \"/videos/trip.mov\" -t 0.000000 -c:v mpeg4 "
              "-qscale:v 4 -g 0 -keyint_min 1 -r 30/1 -c:a aac -b:a 192k -vf "
              "\"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -movflags +faststart "
              "\"/videos/trip.mov_out/trip_seg_120_479.mp4\"");
}

} // namespace
