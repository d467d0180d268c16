// Tests of the filter chain against the real ffmpeg: the final encode, the still picture and the
// scene playback each read their caption file from a folder whose name holds every character
// that the filter graph treats specially, and the caption shows on the picture.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "engine/engine_fixture.h"
#include "render/captions.h"

namespace {

namespace fs = std::filesystem;

// Two seconds of black at 480 by 270 (the font scale is 1 from 270 lines on), tagged as BT.709
// so that the conversion to BT.709 has a colour space to start from.
constexpr const char *kClipSource = "color=c=black:s=480x270:r=25:d=2";

// A folder name with a blank, a colon, a comma, brackets, a semicolon, a single quote and a
// backslash.
constexpr const char *kAwkwardFolder = "out a:b,c[d];e'f\\g";

constexpr const char *kNeutral =
    "lut=y='pow(clip(((val+0.000-128)*1.000+128)/255\\,0\\,1),1/1.000)*255',hue=s=1.000,";

// Pixels of one gray frame brighter than 200, at second `at` of a picture or video file; -1 when
// ffmpeg cannot read it.
int BrightPixels(const std::string &path, const std::string &at)
{
    testsupport::RunResult r = testsupport::RunProgram({"ffmpeg",
                                                        "-v",
                                                        "error",
                                                        "-ss",
                                                        at,
                                                        "-i",
                                                        path,
                                                        "-frames:v",
                                                        "1",
                                                        "-vf",
                                                        "format=gray",
                                                        "-f",
                                                        "rawvideo",
                                                        "-"});
    if (r.exitCode != 0) {
        return -1;
    }
    int count = 0;
    for (char c : r.out) {
        count += static_cast<unsigned char>(c) > 200 ? 1 : 0;
    }
    return count;
}

// A project on the black clip with every picture flag on, a title over the first two seconds
// and its output folder under the awkward name.
struct RenderProject
{
    RenderProject()
    {
        clip = dir.file("clip.mp4");
        EXPECT_TRUE(testsupport::MakeClip(clip,
                                          kClipSource,
                                          {"-c:v",
                                           "libx264",
                                           "-pix_fmt",
                                           "yuv420p",
                                           "-color_primaries",
                                           "bt709",
                                           "-color_trc",
                                           "bt709",
                                           "-colorspace",
                                           "bt709"}));
        folder = dir.file(kAwkwardFolder) + "/";
        fs::create_directories(folder);
        core::CTarnwickData &data = rig.data;
        data.input_file = clip;
        data.output_folder = folder;
        data.output_name = "clip.mp4";
        data.cine_sco = 1;
        data.primaries = 1;
        data.capWatermark.caption.clear();
        data.capTitle.caption = "HELLO";
        data.capTitle.capTime_second = 2.0;
        data.capTitle.font_size = 60;
        data.diff_list.emplace_back(0, 49, clip);
        data.list_idx = 0;
        EXPECT_EQ(rig.engine.OpenVideoFile(clip), 0);
    }

    // The subtitles piece for the case file with this suffix.
    std::string Subtitles(const std::string &suffix) const
    {
        return "subtitles='" + render::EscapeFilterPath(dir.path()) +
               R"(/out a\:b,c[d];e'\\\''f\\g/clip)" + suffix + "'";
    }

    testsupport::TempDir dir;
    std::string clip;
    std::string folder;
    enginetest::EngineRig rig;
};

TEST(VideoFilterFfmpegTest, FinalEncodeBurnsTheCaptionFromAnAwkwardFolder)
{
    RenderProject p;
    p.rig.engine.nProcessID = engine::kJobFinalOutput;
    std::string chain = p.rig.engine.BuildVideoFilter(true, false, false, false, -1);
    EXPECT_EQ(chain,
              std::string(kNeutral) +
                  "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,"
                  "drawbox=y=0:color=black@1.0:width=iw:height=31:t=fill,"
                  "drawbox=y=239:color=black@1.0:width=iw:height=31:t=fill," +
                  p.Subtitles("_all.ass") + ",");
    ASSERT_TRUE(fs::exists(p.folder + "clip_all.ass"));

    std::string output = p.dir.file("final.mp4");
    std::string command = core::StrPrintf(
        "ffmpeg -y -i \"%s\" -vf \"%ssetpts=PTS-STARTPTS\" -c:v libx264 -pix_fmt yuv420p \"%s\"",
        p.clip.c_str(),
        chain.c_str(),
        output.c_str());
    ASSERT_EQ(p.rig.engine.ExecuteCmd(command), 0) << command;

    core::VideoInfo info;
    ASSERT_EQ(p.rig.engine.GetVideoInfoFfprobe(output, info), 0);
    EXPECT_EQ(info.width, 480);
    EXPECT_EQ(info.height, 270);
    EXPECT_EQ(info.frame_num, 50);
    // The clip is black and so are the bars: anything bright is the caption.
    EXPECT_GT(BrightPixels(output, "1"), 100);
}

TEST(VideoFilterFfmpegTest, StillPictureIsThePaddedSquareWithItsCaption)
{
    RenderProject p;
    p.rig.engine.nPreviewFrame = 12;
    std::string chain = p.rig.engine.BuildVideoFilter(true, true, true, false, -1);
    EXPECT_EQ(chain,
              std::string(kNeutral) +
                  "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,"
                  "drawbox=y=0:color=black@1.0:width=iw:height=31:t=fill,"
                  "drawbox=y=239:color=black@1.0:width=iw:height=31:t=fill," +
                  p.Subtitles("_one.ass") +
                  ",scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050");

    std::string still = p.dir.file("still.png");
    std::string command =
        core::StrPrintf("ffmpeg -y -ss 0.480000 -i \"%s\" -frames:v 1 -vf \"%s\" \"%s\"",
                        p.clip.c_str(),
                        chain.c_str(),
                        still.c_str());
    ASSERT_EQ(p.rig.engine.ExecuteCmd(command), 0) << command;

    core::VideoInfo info;
    ASSERT_EQ(p.rig.engine.GetVideoInfoFfprobe(still, info), 0);
    EXPECT_EQ(info.width, 480);
    EXPECT_EQ(info.height, 480);
    EXPECT_GT(BrightPixels(still, "0"), 100);
}

TEST(VideoFilterFfmpegTest, ScenePlaybackChainWithShowinfoRuns)
{
    RenderProject p;
    p.rig.engine.nProcessID = engine::kJobPlayScenes;
    p.rig.data.capTitle.caption.clear();
    p.rig.data.diff_list[0].SetCaption(0, 1, "SCENE");
    std::string chain = p.rig.engine.BuildVideoFilter(true, true, false, false, -1);
    EXPECT_EQ(chain,
              std::string(kNeutral) +
                  "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,"
                  "drawbox=y=0:color=black@1.0:width=iw:height=31:t=fill,"
                  "drawbox=y=239:color=black@1.0:width=iw:height=31:t=fill," +
                  p.Subtitles("_seg.ass") +
                  ",scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050");

    std::string command = core::StrPrintf(
        "ffmpeg -y -i \"%s\" -vf \"%s,showinfo\" -f null -", p.clip.c_str(), chain.c_str());
    std::string output;
    ASSERT_EQ(p.rig.engine.ExecuteCmd(command, &output), 0) << command << "\n" << output;
    EXPECT_NE(output.find("Parsed_showinfo"), std::string::npos);
}

} // namespace
