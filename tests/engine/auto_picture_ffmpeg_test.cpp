// Tests of AnalyzeVideoEQParams with the real ffmpeg: values and cast flags of generated gray,
// dark and tinted clips, the ten grabs and their files, and failing or stopped grabs.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "core/helpers.h"
#include "core/tarnwick_data.h"
#include "engine/picture_measure.h"
#include "engine/tarnwick_process.h"
#include "engine_fixture.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;
using testsupport::TempDir;

constexpr const char *kFunction = "CTarnwickProcess::AnalyzeVideoEQParams";

// An engine without a host on a project for clip, with output folder dir and the clip's facts
// in viInput and viCurrent.
struct PictureRig
{
    PictureRig(const std::string &clip, const std::string &folder)
    {
        data.bUseCuda = 0;
        data.input_file = clip;
        data.output_folder = folder + "/";
        engine.pData = &data;
        if (fs::exists(clip)) {
            EXPECT_EQ(engine.OpenVideoFile(clip), 0);
        }
    }

    int Analyze() { return engine.AnalyzeVideoEQParams(data.input_file, 10); }

    // brightness, contrast, saturation, gamma as their texts.
    std::vector<std::string> Texts() const
    {
        return {data.brightness.strText,
                data.contrast.strText,
                data.saturation.strText,
                data.gamma.strText};
    }

    core::CTarnwickData data;
    engine::CTarnwickProcess engine;
};

// Names of the files in folder.
std::vector<std::string> FilesIn(const std::string &folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

// A clip of 2 seconds at 25 fps in dir/name from a lavfi source, through filters when given.
std::string MakeClip(const TempDir &dir,
                     const std::string &name,
                     const std::string &source,
                     const std::string &filters = "")
{
    std::string clip = dir.file(name);
    std::string options = "size=160x120:rate=25:duration=2";
    bool hasOptions = source.find('=') != std::string::npos;
    EXPECT_TRUE(testsupport::MakeClip(clip,
                                      source + (hasOptions ? ":" : "=") + options +
                                          (filters.empty() ? "" : "," + filters)));
    return clip;
}

// The measures that the analysis logged, read back: Y, sdY, U, V, S, peak and the three flags.
struct LoggedMeasures
{
    engine::PictureMeans means;
    engine::ColourCast cast;
    bool found = false;
};

LoggedMeasures ReadMeasures(enginetest::LogCapture &log)
{
    LoggedMeasures logged;
    for (const std::string &line : log.Lines(kFunction)) {
        int n = 0;
        int red = 0;
        int blue = 0;
        int green = 0;
        engine::PictureMeans &m = logged.means;
        if (std::sscanf(line.c_str(),
                        "CTarnwickProcess::AnalyzeVideoEQParams(%*d) n(%d) Y(%lf) sdY(%lf) U(%lf) "
                        "V(%lf) S(%lf) peak(%d) red(%d) blue(%d) green(%d)",
                        &n,
                        &m.Y,
                        &m.sdY,
                        &m.U,
                        &m.V,
                        &m.S,
                        &m.peak,
                        &red,
                        &blue,
                        &green) == 10) {
            logged.cast.bRed = red != 0;
            logged.cast.bBlue = blue != 0;
            logged.cast.bGreen = green != 0;
            logged.found = true;
        }
    }
    return logged;
}

TEST(AutoPictureFfmpegTest, UniformGrayClipGivesNeutralValuesAndFullContrast)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "gray.mp4", "color=c=gray");
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.Analyze(), 0);
    EXPECT_DOUBLE_EQ(rig.data.brightness.dValue, 0.0);
    EXPECT_DOUBLE_EQ(rig.data.contrast.dValue, 2.0);
    EXPECT_DOUBLE_EQ(rig.data.gamma.dValue, 1.0);
    EXPECT_DOUBLE_EQ(rig.data.saturation.dValue, 1.5); // S 0
    EXPECT_EQ(rig.Texts(), (std::vector<std::string>{"0.0", "2.0", "1.5", "1.0"}));
    EXPECT_NEAR(rig.data.dMeanU, 0.0, 1.0);
    EXPECT_NEAR(rig.data.dMeanV, 0.0, 1.0);
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"gray.mp4"}); // grabs deleted
}

TEST(AutoPictureFfmpegTest, DarkClipRaisesBrightnessAndClampsGamma)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "dark.mp4", "color=c=0x202020");
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.Analyze(), 0);
    EXPECT_DOUBLE_EQ(rig.data.brightness.dValue, 38 * 0.01); // Y 32
    EXPECT_DOUBLE_EQ(rig.data.gamma.dValue, 2.0);            // 2.64 clamped
    EXPECT_DOUBLE_EQ(rig.data.contrast.dValue, 2.0);
    EXPECT_EQ(rig.Texts(), (std::vector<std::string>{"0.38", "2.0", "1.5", "2.0"}));
}

TEST(AutoPictureFfmpegTest, StrongRedCastTakesAFifthOfTheSaturation)
{
    TempDir dir;
    // The test pattern with green and blue mostly taken out: a red picture.
    std::string clip =
        MakeClip(dir, "red.mp4", "testsrc2", "colorchannelmixer=rr=1:gg=0.2:bb=0.2:rg=0.1:rb=0.1");
    enginetest::LogCapture log;
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.Analyze(), 0);
    LoggedMeasures logged = ReadMeasures(log);
    ASSERT_TRUE(logged.found);
    EXPECT_TRUE(logged.cast.bRed);
    EXPECT_FALSE(logged.cast.bBlue);
    EXPECT_FALSE(logged.cast.bGreen);
    EXPECT_TRUE(logged.means.peak <= 15 || logged.means.peak >= 165) << logged.means.peak;
    EXPECT_GT(logged.means.V, 140.0);
    // The saturation is that of the measured S, clamped, times 0.8, finished.
    double raw = std::min(2.0, std::max(0.5, (128.0 - logged.means.S) / 256 + 1));
    EXPECT_NEAR(rig.data.saturation.dValue, engine::FinishTwoDecimals(raw * 0.8), 0.011);
    EXPECT_LT(rig.data.saturation.dValue, engine::FinishTwoDecimals(raw) - 0.05);
    EXPECT_NEAR(rig.data.dMeanV, logged.means.V - 128.0, 0.001);
    EXPECT_NEAR(rig.data.dMeanU, logged.means.U - 128.0, 0.001);
}

TEST(AutoPictureFfmpegTest, TenGrabsSpreadOverTheVideo)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "trip.mp4", "testsrc2"); // 50 frames: step 5
    enginetest::LogCapture log;
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.Analyze(), 0);
    std::vector<std::string> commands = log.LinesWithoutPositions("CTarnwickProcess::ExecuteCmd");
    std::vector<std::string> grabs;
    for (const std::string &line : commands) {
        if (line.find("-frames:v 1") != std::string::npos) {
            grabs.push_back(line);
        }
    }
    std::sort(grabs.begin(), grabs.end()); // the pool finishes them in any order
    std::vector<std::string> expected;
    for (int i = 0; i < 10; ++i) {
        expected.push_back(core::StrPrintf("CTarnwickProcess::ExecuteCmd(N) ffmpeg -y -ss %.6f -i "
                                           "\"%s\" -frames:v 1 \"%s/trip_frame_%03d.jpg\"",
                                           i * 5 / 25.0,
                                           clip.c_str(),
                                           dir.path().c_str(),
                                           i + 1));
    }
    EXPECT_EQ(grabs, expected);
}

TEST(AutoPictureFfmpegTest, NineFrameVideoGrabsTheFirstFrameTenTimes)
{
    TempDir dir;
    std::string clip = dir.file("short.mp4");
    ASSERT_TRUE(testsupport::MakeClip(clip, "testsrc2=size=160x120:rate=25:duration=0.36"));
    enginetest::LogCapture log;
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.data.viInput.frame_num, 9);
    ASSERT_EQ(rig.Analyze(), 0);
    int firstFrameGrabs = 0;
    for (const std::string &line : log.Lines("CTarnwickProcess::ExecuteCmd")) {
        if (line.find("-frames:v 1") != std::string::npos) {
            EXPECT_NE(line.find("ffmpeg -y -ss 0.000000 -i "), std::string::npos) << line;
            ++firstFrameGrabs;
        }
    }
    EXPECT_EQ(firstFrameGrabs, 10);
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"short.mp4"});
}

TEST(AutoPictureFfmpegTest, StaleFrameAndFailingFirstGrabMeasureNothing)
{
    TempDir dir;
    std::string stale = dir.file("trip_frame_003.jpg");
    ASSERT_TRUE(cv::imwrite(stale, cv::Mat(120, 160, CV_8UC3, cv::Scalar(255, 255, 255))));
    PictureRig rig(dir.file("trip.mts"), dir.path()); // no such video: every grab fails
    core::CTarnwickData before = rig.data;
    int result = rig.Analyze();
    EXPECT_NE(result, 0);
    EXPECT_NE(result, -1); // the tool ran and failed
    EXPECT_EQ(rig.Texts(),
              (std::vector<std::string>{before.brightness.strText,
                                        before.contrast.strText,
                                        before.saturation.strText,
                                        before.gamma.strText}));
    EXPECT_TRUE(fs::exists(stale));
}

TEST(AutoPictureFfmpegTest, StaleFrameOfAnEarlierRunIsMeasuredAndDeleted)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "gray.mp4", "color=c=gray");
    // A white frame left behind joins the ten gray ones: the mean light rises above 128.
    ASSERT_TRUE(cv::imwrite(dir.file("gray_frame_011.jpg"),
                            cv::Mat(120, 160, CV_8UC3, cv::Scalar(255, 255, 255))));
    PictureRig rig(clip, dir.path());
    ASSERT_EQ(rig.Analyze(), 0);
    EXPECT_LT(rig.data.brightness.dValue, 0.0);
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"gray.mp4"});
}

TEST(AutoPictureFfmpegTest, MissingOutputFolderFailsWithTheToolsCode)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "gray.mp4", "color=c=gray");
    PictureRig rig(clip, dir.file("missing"));
    int result = rig.Analyze();
    EXPECT_NE(result, 0);
    EXPECT_NE(result, -1);
    EXPECT_EQ(rig.data.brightness.strText, "0.0");
    EXPECT_EQ(rig.data.contrast.strText, "1.0"); // unchanged, not 2
    EXPECT_FALSE(fs::exists(dir.file("missing")));
}

TEST(AutoPictureFfmpegTest, StopBeforeTheGrabsGivesStoppedAndChangesNothing)
{
    TempDir dir;
    std::string clip = MakeClip(dir, "gray.mp4", "color=c=gray");
    PictureRig rig(clip, dir.path());
    rig.engine.bCancel = 1;
    EXPECT_EQ(rig.Analyze(), engine::kJobStopped);
    EXPECT_EQ(rig.data.contrast.strText, "1.0");
    EXPECT_EQ(FilesIn(dir.path()), std::vector<std::string>{"gray.mp4"}); // no tool ran
}

} // namespace
