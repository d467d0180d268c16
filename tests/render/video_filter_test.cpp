// Tests of the video filter chain builders: the project's picture chain with every flag, the
// cinema bars and the preview fit, the conforming chain and the deinterlacing prefix.
#include "render/video_filter.h"

#include <string>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/tarnwick_data.h"

namespace {

using core::CTarnwickData;
using render::BuildVideoFilterText;
using render::VideoFilterFlags;

// The correction pieces for neutral picture settings.
constexpr const char *kNeutral =
    "lut=y='pow(clip(((val+0.000-128)*1.000+128)/255\\,0\\,1),1/1.000)*255',hue=s=1.000,";

CTarnwickData Picture(int width, int height, int sarNum = 1, int sarDen = 1)
{
    CTarnwickData data;
    data.viCurrent.width = width;
    data.viCurrent.height = height;
    data.viCurrent.sar_num = sarNum;
    data.viCurrent.sar_den = sarDen;
    data.viCurrent.fps = 25.0;
    return data;
}

VideoFilterFlags Flags(bool bVf, bool bPad, bool bRotated = false)
{
    VideoFilterFlags flags;
    flags.bVf = bVf;
    flags.bPad = bPad;
    flags.bRotated = bRotated;
    return flags;
}

// The chain as the final encode puts it on its command line.
std::string FinalEncodeArgument(const std::string &chain)
{
    return core::StrPrintf("-vf \"%ssetpts=PTS-STARTPTS\"", chain.c_str());
}

TEST(VideoFilterTest, NeutralSettingsStillGiveLutAndHue)
{
    CTarnwickData data = Picture(1920, 1080);
    EXPECT_EQ(FinalEncodeArgument(BuildVideoFilterText(data, Flags(true, false), "")),
              "-vf \"lut=y='pow(clip(((val+0.000-128)*1.000+128)/255\\,0\\,1),1/1.000)*255',"
              "hue=s=1.000,setpts=PTS-STARTPTS\"");
}

TEST(VideoFilterTest, NoVfNoPadIsEmptyAndLeavesTheCallersFilter)
{
    CTarnwickData data = Picture(1920, 1080);
    data.cine_sco = 1;
    data.primaries = 1;
    std::string chain = BuildVideoFilterText(data, Flags(false, false), "subtitles='x.ass'");
    EXPECT_EQ(chain, "");
    EXPECT_EQ(FinalEncodeArgument(chain), "-vf \"setpts=PTS-STARTPTS\"");
}

TEST(VideoFilterTest, CorrectionValuesInArgumentOrder)
{
    CTarnwickData data = Picture(1920, 1080);
    data.brightness.dValue = 0.1; // 25.5 levels
    data.contrast.dValue = 1.25;
    data.gamma.dValue = 0.8;
    data.saturation.dValue = 1.5;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), ""),
              "lut=y='pow(clip(((val+25.500-128)*1.250+128)/255\\,0\\,1),1/0.800)*255',"
              "hue=s=1.500,");
    data.brightness.dValue = -1.0;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), ""),
              "lut=y='pow(clip(((val+-255.000-128)*1.250+128)/255\\,0\\,1),1/0.800)*255',"
              "hue=s=1.500,");
}

TEST(VideoFilterTest, PrimariesFollowTheCorrection)
{
    CTarnwickData data = Picture(1920, 1080);
    data.primaries = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), ""),
              std::string(kNeutral) +
                  "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,");
}

TEST(VideoFilterTest, FullHdCinemaBarsInThePreview)
{
    CTarnwickData data = Picture(1920, 1080);
    data.cine_sco = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, true), ""),
              "lut=y='pow(clip(((val+0.000-128)*1.000+128)/255\\,0\\,1),1/1.000)*255',hue=s=1.000,"
              "drawbox=y=0:color=black@1.0:width=iw:height=132:t=fill,"
              "drawbox=y=948:color=black@1.0:width=iw:height=132:t=fill,"
              "scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050");
}

TEST(VideoFilterTest, PictureWiderThanTheMaskGetsNegativeBars)
{
    // 1920 by 800: target 816, bar -8.
    CTarnwickData data = Picture(1920, 800);
    data.cine_sco = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), ""),
              std::string(kNeutral) + "drawbox=y=0:color=black@1.0:width=iw:height=-8:t=fill,"
                                      "drawbox=y=808:color=black@1.0:width=iw:height=-8:t=fill,");
}

TEST(VideoFilterTest, PortraitGetsSideBarsAndTheTwoPixelShift)
{
    // 1080 by 1920: short 1080, long 1920, bar 132; in the preview k 0.25, 270 by 480, px 105+2.
    CTarnwickData data = Picture(1080, 1920);
    data.cine_sco = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, true), ""),
              std::string(kNeutral) +
                  "drawbox=y=0:color=black@1.0:width=132:height=ih:t=fill,"
                  "drawbox=x=948:color=black@1.0:width=132:height=ih:t=fill,"
                  "scale=iw*1.000000:ih,setsar=1,scale=270:480,pad=480:480:107:0:color=#505050");
}

TEST(VideoFilterTest, PalFourToThreeFitsThePreviewSquare)
{
    // dw 960, k 0.5: 480 by 288, centred at y 96.
    CTarnwickData data = Picture(720, 576, 4, 3);
    EXPECT_EQ(BuildVideoFilterText(data, Flags(false, true), ""),
              "scale=iw*1.333333:ih,setsar=1,scale=480:288,pad=480:480:0:96:color=#505050");
}

TEST(VideoFilterTest, PalFourToThreeBarsUseTheDisplayWidth)
{
    // short = min(576, 960), long 960: target 408, bar 84; landscape by w 720 < h? no.
    CTarnwickData data = Picture(720, 576, 4, 3);
    data.cine_sco = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), ""),
              std::string(kNeutral) + "drawbox=y=0:color=black@1.0:width=iw:height=84:t=fill,"
                                      "drawbox=y=492:color=black@1.0:width=iw:height=84:t=fill,");
}

TEST(VideoFilterTest, PortraitIsToldByStoredWidthNotDisplayWidth)
{
    // 960 by 1000 at 2:1 shows 1920 wide, yet h > w makes it a portrait: side bars, and the
    // fit is by the display width (k 0.25: 480 by 250).
    CTarnwickData data = Picture(960, 1000, 2, 1);
    data.cine_sco = 1;
    // short = min(1000, 1920) = 1000, long 1920: bar (1000 - 816) / 2 = 92.
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, true), ""),
              std::string(kNeutral) +
                  "drawbox=y=0:color=black@1.0:width=92:height=ih:t=fill,"
                  "drawbox=x=908:color=black@1.0:width=92:height=ih:t=fill,"
                  "scale=iw*2.000000:ih,setsar=1,scale=480:250,pad=480:480:0:115:color=#505050");
}

TEST(VideoFilterTest, RotatedRecordingIsFittedAsPortrait)
{
    // Stored 1920 by 1080 with rotation 90: w 1080, h 1920 before anything else.
    CTarnwickData data = Picture(1920, 1080);
    data.viCurrent.rotation = 90;
    data.cine_sco = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, true, true), ""),
              std::string(kNeutral) +
                  "drawbox=y=0:color=black@1.0:width=132:height=ih:t=fill,"
                  "drawbox=x=948:color=black@1.0:width=132:height=ih:t=fill,"
                  "scale=iw*1.000000:ih,setsar=1,scale=270:480,pad=480:480:107:0:color=#505050");
    render::SourceSize size = render::SourceSizeOf(data.viCurrent, true);
    EXPECT_EQ(size.w, 1080);
    EXPECT_EQ(size.h, 1920);
}

TEST(VideoFilterTest, CaptionStandsAfterTheBars)
{
    CTarnwickData data = Picture(1920, 1080);
    data.cine_sco = 1;
    data.primaries = 1;
    EXPECT_EQ(BuildVideoFilterText(data, Flags(true, false), "subtitles='/out/a_all.ass'"),
              std::string(kNeutral) +
                  "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,"
                  "drawbox=y=0:color=black@1.0:width=iw:height=132:t=fill,"
                  "drawbox=y=948:color=black@1.0:width=iw:height=132:t=fill,"
                  "subtitles='/out/a_all.ass',");
}

TEST(VideoFilterTest, PlaybackOfTheInputIsTheFitAlone)
{
    CTarnwickData data = Picture(1920, 1080);
    data.cine_sco = 1;
    std::string chain = BuildVideoFilterText(data, Flags(false, true), "subtitles='x.ass'");
    EXPECT_EQ(core::StrPrintf("-vf \"%s,showinfo\"", chain.c_str()),
              "-vf \"scale=iw*1.000000:ih,setsar=1,scale=480:270,pad=480:480:0:105:color=#505050,"
              "showinfo\"");
}

TEST(ConformingChainTest, SquaresFitsAndCentres)
{
    EXPECT_EQ(render::ConformingChain(1280, 720),
              "scale=iw*sar:ih,setsar=1,scale=1280:720:force_original_aspect_ratio=decrease,"
              "pad=1280:720:(ow-iw)/2:(oh-ih)/2");
}

TEST(DeinterlacePrefixTest, DoublesTheFieldRateInFrontOfSetpts)
{
    EXPECT_EQ(render::DeinterlacePrefix(true) + "setpts=PTS-STARTPTS",
              "yadif=1,setpts=PTS-STARTPTS");
    EXPECT_EQ(render::DeinterlacePrefix(false) + "setpts=PTS-STARTPTS", "setpts=PTS-STARTPTS");
}

} // namespace

namespace {

TEST(VideoFilterTest, CopiedPictureValuesGiveTheChainOfThoseValues)
{
    core::PictureValues picture;
    picture.brightness = 0.1;
    picture.contrast = 1.2;
    picture.saturation = 0.8;
    picture.gamma = 2.0;
    picture.primaries = 1;
    core::VideoInfo vi = Picture(1920, 1080).viCurrent;
    EXPECT_EQ(BuildVideoFilterText(vi, picture, Flags(true, false), ""),
              "lut=y='pow(clip(((val+25.500-128)*1.200+128)/255\\,0\\,1),1/2.000)*255',"
              "hue=s=0.800,zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,");
}

} // namespace
