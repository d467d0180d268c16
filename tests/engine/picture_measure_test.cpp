// Tests of the automatic picture maths: grab names, times and commands, the measures of
// synthetic pictures, the colour cast bands, the clamps and the two-decimal finish.
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include "core/tarnwick_data.h"
#include "engine/picture_measure.h"
#include "support/test_support.h"

namespace {

using namespace engine;

// A picture of one BGR colour.
cv::Mat Plain(int b, int g, int r)
{
    return cv::Mat(120, 160, CV_8UC3, cv::Scalar(b, g, r));
}

PictureMeans MeansOf(const cv::Mat &picture)
{
    PictureSums sums;
    AddPictureMeasures(picture, sums);
    EXPECT_EQ(sums.n, 1);
    return AveragePictureSums(sums);
}

// The four values of a fresh project after storing values, as their texts.
std::vector<std::string> StoredTexts(const PictureValues &values)
{
    core::CTarnwickData data;
    StorePictureValues(values, data);
    return {data.brightness.strText,
            data.contrast.strText,
            data.saturation.strText,
            data.gamma.strText};
}

TEST(PictureMeasureTest, GrabFilesAreNamedAfterTheInput)
{
    std::string pattern = FrameGrabPattern("/out/", "/videos/trip.mts");
    EXPECT_EQ(pattern, "/out/trip_frame_%03d.jpg");
    EXPECT_EQ(FrameGrabFile(pattern, 1), "/out/trip_frame_001.jpg");
    EXPECT_EQ(FrameGrabFile(pattern, 10), "/out/trip_frame_010.jpg");
    EXPECT_EQ(FrameGrabGlob(pattern), "/out/trip_frame_*.jpg");
}

TEST(PictureMeasureTest, NameWithoutExtensionGetsTheTailAppended)
{
    EXPECT_EQ(FrameGrabPattern("/videos/", "/videos/trip"), "/videos/trip_frame_%03d.jpg");
}

TEST(PictureMeasureTest, PercentInTheNameIsTakenAsItStands)
{
    std::string pattern = FrameGrabPattern("/out/a%d/", "/videos/100%s.v2.mp4");
    EXPECT_EQ(pattern, "/out/a%d/100%s.v2_frame_%03d.jpg");
    EXPECT_EQ(FrameGrabFile(pattern, 7), "/out/a%d/100%s.v2_frame_007.jpg");
    EXPECT_EQ(FrameGrabGlob(pattern), "/out/a%d/100%s.v2_frame_*.jpg");
}

TEST(PictureMeasureTest, GrabsSpreadFromTheFirstFrameToNineTenths)
{
    int step = FrameGrabStep(250);
    EXPECT_EQ(step, 25);
    EXPECT_EQ(FrameGrabTime(0, step, 25.0), "0.000000");
    EXPECT_EQ(FrameGrabTime(1, step, 25.0), "1.000000");
    EXPECT_EQ(FrameGrabTime(9, step, 25.0), "9.000000");
    EXPECT_EQ(FrameGrabTime(3, 100, 30000.0 / 1001), "10.010000");
}

TEST(PictureMeasureTest, NineFrameVideoGrabsTheFirstFrameTenTimes)
{
    int step = FrameGrabStep(9);
    EXPECT_EQ(step, 0);
    for (int i = 0; i < kPictureSamples; ++i) {
        EXPECT_EQ(FrameGrabTime(i, step, 25.0), "0.000000");
    }
}

TEST(PictureMeasureTest, NoFrameRateSeeksEveryGrabToZero)
{
    for (int i = 0; i < kPictureSamples; ++i) {
        EXPECT_EQ(FrameGrabTime(i, 25, 0.0), "0.000000");
    }
}

TEST(PictureMeasureTest, GrabCommandSeeksBeforeTheInputAndWritesOneFrame)
{
    EXPECT_EQ(FrameGrabCommand(
                  "ffmpeg -y ", "1.000000", "/videos/my trip.mts", "/out/my trip_frame_002.jpg"),
              "ffmpeg -y -ss 1.000000 -i \"/videos/my trip.mts\" -frames:v 1 "
              "\"/out/my trip_frame_002.jpg\"");
    EXPECT_EQ(FrameGrabCommand("ffmpeg -y -hwaccel cuda ", "0.000000", "/v/a.mp4", "/o/a.jpg"),
              "ffmpeg -y -hwaccel cuda -ss 0.000000 -i \"/v/a.mp4\" -frames:v 1 \"/o/a.jpg\"");
}

TEST(PictureMeasureTest, UniformGrayGivesNeutralValuesAndFullContrast)
{
    PictureMeans means = MeansOf(Plain(128, 128, 128));
    EXPECT_DOUBLE_EQ(means.Y, 128.0);
    EXPECT_DOUBLE_EQ(means.sdY, 0.0);
    EXPECT_DOUBLE_EQ(means.U, 128.0);
    EXPECT_DOUBLE_EQ(means.V, 128.0);
    EXPECT_DOUBLE_EQ(means.S, 0.0);
    ColourCast cast = FindColourCast(means.peak, means.U, means.V);
    EXPECT_FALSE(cast.Any());
    PictureValues values = PictureValuesFor(means, cast);
    EXPECT_DOUBLE_EQ(values.brightness, 0.0);
    EXPECT_DOUBLE_EQ(values.gamma, 1.0);
    EXPECT_DOUBLE_EQ(values.contrast, 2.0); // 52 / 1 to the power 0.5, about 7.2, clamped
    EXPECT_DOUBLE_EQ(values.saturation, 1.5);
    EXPECT_EQ(StoredTexts(values), (std::vector<std::string>{"0.0", "2.0", "1.5", "1.0"}));
}

TEST(PictureMeasureTest, DarkVideoRaisesBrightnessAndClampsGamma)
{
    PictureMeans means = MeansOf(Plain(32, 32, 32));
    EXPECT_DOUBLE_EQ(means.Y, 32.0);
    PictureValues values = PictureValuesFor(means, FindColourCast(means.peak, means.U, means.V));
    EXPECT_DOUBLE_EQ(values.gamma, 2.0); // (128 / 32) to the power 0.7 is 2.64
    core::CTarnwickData data;
    StorePictureValues(values, data);
    EXPECT_DOUBLE_EQ(data.brightness.dValue, 38 * 0.01);
    EXPECT_EQ(data.brightness.strText, "0.38");
    EXPECT_DOUBLE_EQ(data.gamma.dValue, 2.0);
}

TEST(PictureMeasureTest, SharpVideoLowersContrast)
{
    // Half the picture at 24, half at 232: mean 128, standard deviation 104.
    cv::Mat picture = Plain(24, 24, 24);
    picture.colRange(80, 160).setTo(cv::Scalar(232, 232, 232));
    PictureMeans means = MeansOf(picture);
    EXPECT_DOUBLE_EQ(means.Y, 128.0);
    EXPECT_DOUBLE_EQ(means.sdY, 104.0);
    PictureValues values = PictureValuesFor(means, ColourCast{});
    core::CTarnwickData data;
    StorePictureValues(values, data);
    EXPECT_DOUBLE_EQ(data.contrast.dValue, 71 * 0.01);
    EXPECT_EQ(data.contrast.strText, "0.71");
}

TEST(PictureMeasureTest, HighSaturationWithoutCastLowersSaturation)
{
    // Yellow (hue 30) with S 200: outside every cast band.
    PictureMeans means = MeansOf(Plain(55, 255, 255));
    EXPECT_DOUBLE_EQ(means.S, 200.0);
    EXPECT_EQ(means.peak, 30);
    ColourCast cast = FindColourCast(means.peak, means.U, means.V);
    EXPECT_FALSE(cast.Any());
    PictureValues values = PictureValuesFor(means, cast);
    EXPECT_DOUBLE_EQ(values.saturation, 0.71875);
    core::CTarnwickData data;
    StorePictureValues(values, data);
    EXPECT_DOUBLE_EQ(data.saturation.dValue, 72 * 0.01);
    EXPECT_EQ(data.saturation.strText, "0.72");
}

TEST(PictureMeasureTest, HighSaturationWithCastTakesAFifthBack)
{
    PictureMeans means;
    means.Y = 128.0;
    means.S = 200.0;
    ColourCast cast;
    cast.bBlue = true;
    PictureValues values = PictureValuesFor(means, cast);
    EXPECT_DOUBLE_EQ(values.saturation, 0.575);
    core::CTarnwickData data;
    StorePictureValues(values, data);
    EXPECT_DOUBLE_EQ(data.saturation.dValue, 58 * 0.01);
    EXPECT_EQ(data.saturation.strText, "0.58");
}

TEST(PictureMeasureTest, RedBandEndsBetweenHue15And16AndStartsAt165)
{
    EXPECT_TRUE(FindColourCast(0, 128.0, 141.0).bRed);
    EXPECT_TRUE(FindColourCast(15, 128.0, 141.0).bRed);
    EXPECT_FALSE(FindColourCast(16, 128.0, 141.0).bRed);
    EXPECT_FALSE(FindColourCast(164, 128.0, 141.0).bRed);
    EXPECT_TRUE(FindColourCast(165, 128.0, 141.0).bRed);
    EXPECT_TRUE(FindColourCast(179, 128.0, 141.0).bRed);
    EXPECT_FALSE(FindColourCast(15, 128.0, 140.0).bRed); // V must be above 140
}

TEST(PictureMeasureTest, BlueAndGreenBandsNeedTheirChroma)
{
    EXPECT_TRUE(FindColourCast(100, 141.0, 128.0).bBlue);
    EXPECT_TRUE(FindColourCast(140, 141.0, 128.0).bBlue);
    EXPECT_FALSE(FindColourCast(99, 141.0, 128.0).bBlue);
    EXPECT_FALSE(FindColourCast(141, 141.0, 128.0).bBlue);
    EXPECT_FALSE(FindColourCast(120, 140.0, 128.0).bBlue);
    EXPECT_TRUE(FindColourCast(50, 100.0, 110.5).bGreen);
    EXPECT_TRUE(FindColourCast(90, 100.0, 110.5).bGreen);
    EXPECT_FALSE(FindColourCast(91, 100.0, 110.5).bGreen);
    EXPECT_FALSE(FindColourCast(70, 100.0, 110.0).bGreen); // U - V must be below -10
}

TEST(PictureMeasureTest, CastFromAStronglyRedPicture)
{
    PictureMeans means = MeansOf(Plain(0, 0, 255));
    EXPECT_EQ(means.peak, 0);
    EXPECT_GT(means.V, 140.0);
    ColourCast cast = FindColourCast(means.peak, means.U, means.V);
    EXPECT_TRUE(cast.bRed);
    EXPECT_FALSE(cast.bBlue);
    EXPECT_FALSE(cast.bGreen);
    // S 255: raw 0.50390625 stays above the clamp's 0.5, and the cast takes it to 0.403125.
    EXPECT_EQ(StoredTexts(PictureValuesFor(means, cast))[2], "0.4");
    EXPECT_EQ(StoredTexts(PictureValuesFor(means, ColourCast{}))[2], "0.5");
}

TEST(PictureMeasureTest, HueTieTakesTheLowerHue)
{
    std::array<int64_t, kHueBins> hist{};
    hist[40] = 7;
    hist[20] = 7;
    hist[100] = 6;
    EXPECT_EQ(HuePeak(hist), 20);
    // Half the picture green (hue 60), half blue (hue 120): the same count, green wins.
    cv::Mat picture = Plain(0, 255, 0);
    picture.colRange(80, 160).setTo(cv::Scalar(255, 0, 0));
    EXPECT_EQ(MeansOf(picture).peak, 60);
}

TEST(PictureMeasureTest, HistogramSumsOverFrames)
{
    PictureSums sums;
    AddPictureMeasures(Plain(0, 255, 0), sums);
    AddPictureMeasures(Plain(255, 0, 0), sums);
    AddPictureMeasures(Plain(255, 0, 0), sums);
    EXPECT_EQ(sums.n, 3);
    EXPECT_EQ(sums.hist[60], 160 * 120);
    EXPECT_EQ(sums.hist[120], 2 * 160 * 120);
    EXPECT_EQ(AveragePictureSums(sums).peak, 120);
}

TEST(PictureMeasureTest, FinishCutsTowardsZero)
{
    EXPECT_DOUBLE_EQ(FinishTwoDecimals(-0.254), -24 * 0.01);
    EXPECT_DOUBLE_EQ(FinishTwoDecimals(0.71875), 72 * 0.01);
    EXPECT_DOUBLE_EQ(FinishTwoDecimals(0.71875 * 0.8), 58 * 0.01);
    EXPECT_DOUBLE_EQ(FinishTwoDecimals(96.0 / 255), 38 * 0.01);
    EXPECT_DOUBLE_EQ(FinishTwoDecimals(-0.004), 0.0);
}

TEST(PictureMeasureTest, FieldBoundsApplyAfterTheFinish)
{
    core::CTarnwickData data;
    StorePictureValue(data.contrast, 2.5); // above the field's 2
    EXPECT_DOUBLE_EQ(data.contrast.dValue, 2.0);
    StorePictureValue(data.gamma, 0.01); // below the field's 0.1
    EXPECT_DOUBLE_EQ(data.gamma.dValue, 0.1);
    EXPECT_EQ(data.gamma.strText, "0.1");
    StorePictureValue(data.saturation, 2.0); // the user may go to 3, the analysis to 2
    EXPECT_DOUBLE_EQ(data.saturation.dValue, 2.0);
}

TEST(PictureMeasureTest, OtherPicturesAreNotMeasured)
{
    PictureSums sums;
    AddPictureMeasures(cv::Mat(), sums);
    AddPictureMeasures(cv::Mat(10, 10, CV_8UC1, cv::Scalar(128)), sums);
    EXPECT_EQ(sums.n, 0);
}

TEST(PictureMeasureTest, UnreadableFilesAreSkipped)
{
    testsupport::TempDir dir;
    ASSERT_TRUE(testsupport::WriteFile(dir.file("a_frame_001.jpg"), "not a picture"));
    ASSERT_TRUE(cv::imwrite(dir.file("a_frame_002.jpg"), Plain(128, 128, 128)));
    PictureSums sums;
    MeasurePictureFiles(
        {dir.file("a_frame_001.jpg"), dir.file("a_frame_002.jpg"), dir.file("a_frame_003.jpg")},
        sums);
    EXPECT_EQ(sums.n, 1);
}

TEST(PictureMeasureTest, GlobListsMatchingFilesInOrder)
{
    testsupport::TempDir dir;
    for (const char *name : {"a_frame_010.jpg", "a_frame_002.jpg", "b_frame_001.jpg", "a.jpg"}) {
        ASSERT_TRUE(testsupport::WriteFile(dir.file(name), "x"));
    }
    EXPECT_EQ(GlobPictureFiles(dir.file("a_frame_*.jpg")),
              (std::vector<std::string>{dir.file("a_frame_002.jpg"), dir.file("a_frame_010.jpg")}));
    EXPECT_EQ(GlobPictureFiles(dir.file("missing/a_frame_*.jpg")), std::vector<std::string>{});
}

} // namespace
