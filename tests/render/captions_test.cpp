// Tests of the caption builders: the cinema bar, style lines, the dialogue lines of the three
// cases, the whole ASS text, the file's place and the escaped subtitles filter text.
#include "render/captions.h"

#include <string>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"

namespace {

using core::CTarnwickData;
using core::SceneEntry;
using render::BuildCaptionEvents;
using render::BuildCaptionText;
using render::CaptionRequest;

constexpr const char *kStylesFormatLine =
    "Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, "
    "BackColour, Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, "
    "BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\r\n";

constexpr const char *kEventsHeader = "\r\n[Events]\r\nFormat: Layer, Start, End, Style, Name, "
                                      "MarginL, MarginR, MarginV, Effect, Text\r\n";

// The file's header as it stands for a PlayResX by PlayResY picture.
std::string Header(const std::string &resX, const std::string &resY)
{
    return "[Script Info]\r\nTitle: Sample Subtitle\r\nScriptType: v4.00+\r\nCollisions: "
           "Normal\r\nPlayResX: " +
           resX + "\r\nPlayResY: " + resY + "\r\nTimer: 100.0000\r\n\r\n[V4+ Styles]\r\n" +
           kStylesFormatLine;
}

// A new project at 25 fps on a 1920 by 1080 recording, its scenes given as frame ranges, the
// watermark switched off (its text emptied) unless a test wants it.
CTarnwickData Project(std::initializer_list<std::pair<int, int>> scenes)
{
    CTarnwickData data;
    data.viCurrent.fps = 25.0;
    data.viCurrent.width = 1920;
    data.viCurrent.height = 1080;
    data.viCurrent.frame_num = 900;
    data.capWatermark.caption.clear();
    for (const auto &[first, last] : scenes) {
        data.diff_list.emplace_back(first, last, "");
    }
    return data;
}

CaptionRequest WholeFilm()
{
    CaptionRequest request;
    request.bAll = true;
    return request;
}

CaptionRequest OneScene(int nScene, int nPreviewFrame)
{
    CaptionRequest request;
    request.nScene = nScene;
    request.nPreviewFrame = nPreviewFrame;
    return request;
}

CaptionRequest OneFrame(int nScene, int nPreviewFrame)
{
    CaptionRequest request = OneScene(nScene, nPreviewFrame);
    request.bPreview = true;
    return request;
}

TEST(CinemaBarTest, FullHdLandscapeGives132)
{
    // 1920 / 2.35 * 0.125 = 102.1, nearest 102, target 816, (1080 - 816) / 2.
    EXPECT_EQ(render::CinemaBar(1080, 1920), 132);
}

TEST(CinemaBarTest, PictureWiderThanTheMaskGivesANegativeBar)
{
    EXPECT_EQ(render::CinemaBar(800, 1920), -8);
}

TEST(CinemaBarTest, RoundsTheTargetToTheGridOfEight)
{
    // 960 / 2.35 * 0.125 = 51.06: target 408. 1280 / 2.35 * 0.125 = 68.09: target 544.
    EXPECT_EQ(render::CinemaBar(576, 960), 84);
    EXPECT_EQ(render::CinemaBar(720, 1280), 88);
    // An odd difference is halved toward zero.
    EXPECT_EQ(render::CinemaBar(577, 960), 84);
    EXPECT_EQ(render::CinemaBar(407, 960), 0);
}

TEST(MakeStyleLineTest, DefaultTitleOnFullHdHasSize128AndMargin2)
{
    EXPECT_EQ(render::MakeStyleLine("Title", 4, 132, core::DefaultTitle()),
              "Style: Title,Yu Gothic UI,128,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,"
              "100,100,0,0,1,2,0,5,64,64,2,128\n");
}

TEST(MakeStyleLineTest, FontLargerThanTheBarHasNoVerticalMargin)
{
    EXPECT_EQ(render::MakeStyleLine("Watermark", 4, 132, core::DefaultWatermark()),
              "Style: Watermark,Impact,148,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,"
              "100,100,0,0,1,0,0,5,74,74,0,0\n");
}

TEST(MakeStyleLineTest, WritesEveryStyleFieldAsItStands)
{
    core::CapParam cap;
    cap.font_name = "DejaVu Sans";
    cap.font_size = 11;
    cap.color = 0x00FF8000;
    cap.bold = 1;
    cap.italic = -1;
    cap.underline = 1;
    cap.strike_uut = -1;
    cap.outline = 3;
    cap.cap_pos_type = 9;
    cap.encoding = 1;
    // Size 33, side margins 16, vertical margin (100 - 33) / 2 = 33.
    EXPECT_EQ(render::MakeStyleLine("Scene012", 3, 100, cap),
              "Style: Scene012,DejaVu Sans,33,&H00FF8000,&H000000FF,&H00000000,&H64000000,1,-1,1,"
              "-1,100,100,0,0,1,3,0,9,16,16,33,1\n");
}

TEST(CaptionEventsTest, NoCaptionInForceGivesNoEventsAndNoText)
{
    CTarnwickData data = Project({{0, 99}, {200, 299}});
    data.capTitle.caption = "switched off";
    data.capTitle.cap_pos_type = 0;
    data.diff_list[0].capParam.cap_pos_type = 0;
    data.diff_list[0].capParam.caption = "off as well";
    for (const CaptionRequest &request : {WholeFilm(), OneScene(0, 0), OneFrame(0, 0)}) {
        EXPECT_EQ(BuildCaptionEvents(data, request), "");
        EXPECT_EQ(BuildCaptionText(data, request, 1920, 1080), "");
    }
}

TEST(CaptionTextTest, FullHdHeaderStyleLinesAndEvents)
{
    CTarnwickData data = Project({{0, 899}});
    data.capWatermark = core::DefaultWatermark();
    data.capTitle.caption = "{\\fad(500,500)}clip";
    std::string expected =
        Header("1920", "1080") +
        "Style: Watermark,Impact,148,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,100,"
        "0,0,1,0,0,5,74,74,0,0\r\n"
        "Style: Title,Yu Gothic UI,128,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,100,"
        "100,0,0,1,2,0,5,64,64,2,128\r\n" +
        kEventsHeader +
        "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,{\\fad(500,500)}clip\r\n"
        "Dialogue: 2,00:00:00.00,00:00:36.04,Watermark,,0,0,0,,TarnwickMP4\\NBrindlemoor.\r\n";
    EXPECT_EQ(BuildCaptionText(data, WholeFilm(), 1920, 1080), expected);
}

TEST(CaptionTextTest, SampleAspectRatioWidensPlayResX)
{
    // 720 by 576 at 4:3: PlayResX 960, short side 576, nScale 2, bar 84.
    CTarnwickData data = Project({{0, 99}});
    data.viCurrent.sar_num = 4;
    data.viCurrent.sar_den = 3;
    data.capTitle.caption = "pal";
    std::string expected =
        Header("960", "576") +
        "Style: Watermark,Impact,74,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,100,"
        "0,0,1,0,0,5,37,37,5,0\r\n"
        "Style: Title,Yu Gothic UI,64,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,100,"
        "100,0,0,1,2,0,5,32,32,10,128\r\n" +
        kEventsHeader + "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,pal\r\n";
    EXPECT_EQ(BuildCaptionText(data, WholeFilm(), 720, 576), expected);
}

TEST(CaptionTextTest, BelowTwoHundredSeventyLinesTheFontScaleIsThatOfTwoHundredSeventy)
{
    // 320 by 240: nScale 1 (not 0), bar (240 - 136) / 2 = 52; title and watermark keep sizes of
    // their own, and with them their margins.
    CTarnwickData data = Project({{0, 99}});
    data.capTitle.caption = "small";
    std::string expected =
        Header("320", "240") +
        "Style: Watermark,Impact,37,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,100,"
        "0,0,1,0,0,5,18,18,7,0\r\n"
        "Style: Title,Yu Gothic UI,32,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,100,"
        "100,0,0,1,2,0,5,16,16,10,128\r\n" +
        kEventsHeader + "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,small\r\n";
    EXPECT_EQ(BuildCaptionText(data, WholeFilm(), 320, 240), expected);
    // A picture of 2 lines as well.
    EXPECT_NE(BuildCaptionText(data, WholeFilm(), 2, 2).find("Style: Title,Yu Gothic UI,32,"),
              std::string::npos);
}

TEST(CaptionTextTest, LineEndInACaptionBecomesAnAssLineBreakOnItsDialogueLine)
{
    CTarnwickData data = Project({{0, 99}});
    data.capTitle.caption = "first\nsecond\r\nthird\rfourth";
    std::string text = BuildCaptionText(data, WholeFilm(), 1920, 1080);
    std::string expected =
        Header("1920", "1080") +
        "Style: Watermark,Impact,148,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,100,"
        "0,0,1,0,0,5,74,74,0,0\r\n"
        "Style: Title,Yu Gothic UI,128,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,100,"
        "100,0,0,1,2,0,5,64,64,2,128\r\n" +
        kEventsHeader +
        "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,first\\Nsecond\\Nthird\\Nfourth\r\n";
    EXPECT_EQ(text, expected);
}

TEST(CaptionEventsTest, BracesAndBackslashesOfEveryCaptionAreShownAsTyped)
{
    CTarnwickData data = Project({{0, 99}});
    data.viCurrent.frame_num = 100;
    data.capTitle.caption = "{Fox} at dusk";
    data.capWatermark.caption = "{\\fs200}big";
    data.diff_list[0].SetCaption(0, 2, "C:\\new\\hut \\{x\\}");
    const std::string joiner = "\xE2\x81\xA0";
    const std::string scene = "C:\\" + joiner + "new\\" + joiner + "hut \\\\{x\\\\}";
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,\\{Fox\\} at dusk\n"
              "Dialogue: 2,00:00:00.00,00:00:04.04,Watermark,,0,0,0,,\\{\\fs200\\}big\n"
              "Dialogue: 0,00:00:00.00,00:00:02.04,Scene001,,0,0,0,," +
                  scene + "\n");
    // The one-scene and one-frame cases write the same texts.
    const std::string one = BuildCaptionEvents(data, OneScene(0, 0));
    EXPECT_NE(one.find(",Scene001,,0,0,0,," + scene + "\n"), std::string::npos) << one;
    EXPECT_NE(one.find(",Title,,0,0,0,,\\{Fox\\} at dusk\n"), std::string::npos) << one;
    const std::string still = BuildCaptionEvents(data, OneFrame(0, 0));
    EXPECT_NE(still.find(",Watermark,,0,0,0,,\\{\\fs200\\}big\n"), std::string::npos) << still;
}

TEST(CaptionEventsTest, OnlyTheLeadingFadeOfADefaultTitleStaysAnEffect)
{
    EXPECT_EQ(render::AssCaptionText("{\\fad(500,500)}clip {\\fad(1,2)}", true),
              "{\\fad(500,500)}clip \\{\\fad(1,2)\\}");
    EXPECT_EQ(render::AssCaptionText("{\\fad(500,500)}clip", false), "clip");
    EXPECT_EQ(render::AssCaptionText("x{\\fad(500,500)}", true), "x\\{\\fad(500,500)\\}");
    EXPECT_EQ(render::EscapeAssText("TarnwickMP4\\NBrindlemoor."), "TarnwickMP4\\NBrindlemoor.");
}

TEST(CaptionTextTest, WholeFilmWritesStylesOfEnabledScenesInForceOnly)
{
    CTarnwickData data = Project({{0, 99}, {100, 199}, {200, 299}, {300, 399}});
    data.diff_list[0].SetCaption(0, 1, "one");
    data.diff_list[1].SetCaption(0, 1, "disabled");
    data.diff_list[1].bEnable = false;
    data.diff_list[3].SetCaption(0, 1, "four");
    data.diff_list[3].capParam.font_size = 10;
    std::string expected =
        Header("1920", "1080") +
        "Style: Watermark,Impact,148,&HC0FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,100,"
        "0,0,1,0,0,5,74,74,0,0\r\n"
        "Style: Title,Yu Gothic UI,128,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,-1,0,0,0,100,"
        "100,0,0,1,2,0,5,64,64,2,128\r\n"
        "Style: Scene001,Yu Gothic UI,96,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,"
        "100,0,0,1,2,0,2,48,48,18,128\r\n"
        "Style: Scene004,Yu Gothic UI,40,&H00FFFFFF,&H000000FF,&H00000000,&H64000000,0,0,0,0,100,"
        "100,0,0,1,2,0,2,20,20,46,128\r\n" +
        kEventsHeader + "Dialogue: 0,00:00:00.00,00:00:01.04,Scene001,,0,0,0,,one\r\n" +
        "Dialogue: 0,00:00:08.00,00:00:09.04,Scene004,,0,0,0,,four\r\n";
    EXPECT_EQ(BuildCaptionText(data, WholeFilm(), 1920, 1080), expected);
}

TEST(CaptionEventsTest, WatermarkOfTenHoursEndsWithTheFilm)
{
    // 900 frames: nLast 901, the end of the film.
    CTarnwickData data = Project({{0, 899}});
    data.capWatermark = core::DefaultWatermark();
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 2,00:00:00.00,00:00:36.04,Watermark,,0,0,0,,TarnwickMP4\\NBrindlemoor.\n");
}

TEST(CaptionEventsTest, TitleEndIsWorkedOutLocallyAndTheProjectKeepsItsDuration)
{
    // Start 1 s, duration 3 s: the end is 4 s, and 4 s again on the next render.
    CTarnwickData data = Project({{0, 899}});
    data.capTitle.caption = "title";
    data.capTitle.capTime_first = 1.0;
    std::string expected = "Dialogue: 1,00:00:01.00,00:00:04.00,Title,,0,0,0,,title\n";
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()), expected);
    EXPECT_EQ(data.capTitle.capTime_second, 3.0);
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()), expected);
}

TEST(CaptionEventsTest, TitleEndsTwoFramesBeforeTheFilm)
{
    // 50 frames: nLast 51, so the end frame is at most 49 (1.96 s).
    CTarnwickData data = Project({{0, 49}});
    data.capTitle.caption = "title";
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 1,00:00:00.00,00:00:01.96,Title,,0,0,0,,title\n");
}

TEST(CaptionEventsTest, TransitionWithTwoScenesTakesHalfAFadeAtTheInnerEndsOnly)
{
    // 25 fps, fade 0.5 s: nFull 13, nHalf 6; two scenes of 100 frames make a film of 187.
    CTarnwickData data = Project({{0, 99}, {200, 299}});
    data.diff_list[0].SetCaption(0, 2, "First");
    data.diff_list[1].SetCaption(2, 1, "Last");

    // Without fades: frames 0 to 51 and 150 to 176.
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 0,00:00:00.00,00:00:02.04,Scene001,,0,0,0,,First\n"
              "Dialogue: 0,00:00:06.00,00:00:07.04,Scene002,,0,0,0,,Last\n");

    // The first caption loses nHalf at its end (45 instead of 51); the last one starts nHalf
    // earlier in its scene, which itself starts at 94 = 100 - nHalf.
    data.transition = 1;
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 0,00:00:00.00,00:00:01.80,Scene001,,0,0,0,,First\n"
              "Dialogue: 0,00:00:05.52,00:00:06.80,Scene002,,0,0,0,,Last\n");
}

TEST(CaptionEventsTest, DisabledLastEntryMakesTheLastEnabledSceneAMiddleOne)
{
    CTarnwickData data = Project({{0, 99}, {200, 299}, {400, 499}});
    data.diff_list[1].SetCaption(2, 1, "Middle");
    data.diff_list[2].bEnable = false;
    data.transition = 1;
    // Entry 1 is not the list's last: it loses nHalf at both ends and ends by FrameToTimeCode.
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 0,00:00:05.52,00:00:06.56,Scene002,,0,0,0,,Middle\n");
}

TEST(CaptionEventsTest, SceneCaptionIsCutAtTheEndOfItsScene)
{
    // The first caption asks for 10 s but its scene ends at frame 50, where the next scene's
    // caption starts.
    CTarnwickData data = Project({{0, 49}, {100, 199}});
    data.diff_list[0].SetCaption(0, 10, "long");
    data.diff_list[1].SetCaption(0, 1, "next");
    EXPECT_EQ(BuildCaptionEvents(data, WholeFilm()),
              "Dialogue: 0,00:00:00.00,00:00:02.00,Scene001,,0,0,0,,long\n"
              "Dialogue: 0,00:00:02.00,00:00:03.04,Scene002,,0,0,0,,next\n");
}

TEST(CaptionEventsTest, MergeTabWritesNoWatermark)
{
    CTarnwickData data = Project({{0, 899}});
    data.capWatermark = core::DefaultWatermark();
    data.capTitle.caption = "joined";
    CaptionRequest request = WholeFilm();
    request.bMergeMode = true;
    EXPECT_EQ(BuildCaptionEvents(data, request),
              "Dialogue: 1,00:00:00.00,00:00:03.00,Title,,0,0,0,,joined\n");
    request = OneScene(0, 0);
    request.bMergeMode = true;
    EXPECT_EQ(BuildCaptionEvents(data, request),
              "Dialogue: 1,00:00:00.00,00:00:03.04,Title,,0,0,0,,joined\n");
}

TEST(CaptionEventsTest, OneSceneCaseShiftsTitleAndWatermarkByTheScenesBefore)
{
    // Scene 2 plays as a segment of 100 frames; 100 frames of the film lie before it.
    CTarnwickData data = Project({{0, 99}, {200, 299}});
    data.viCurrent.frame_num = 100;
    data.capWatermark = core::DefaultWatermark();
    data.capTitle.caption = "Title text";
    data.capTitle.capTime_second = 5.0;
    data.diff_list[1].SetCaption(1, 2, "Hello");
    data.list_idx = 1;
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(-1, 0)),
              "Dialogue: 0,00:00:01.00,00:00:03.04,Scene002,,0,0,0,,Hello\n"
              "Dialogue: 1,00:00:00.00,00:00:01.04,Title,,0,0,0,,Title text\n"
              "Dialogue: 2,00:00:00.00,00:00:04.04,Watermark,,0,0,0,,TarnwickMP4\\NBrindlemoor.\n");
}

TEST(CaptionEventsTest, OneSceneCaseCountsTheTransitionWhateverTheSceneCount)
{
    // Only entry 0 is in the film, yet the scene before loses nHalf: nBase 94.
    CTarnwickData data = Project({{0, 99}, {200, 299}});
    data.viCurrent.frame_num = 100;
    data.diff_list[1].bEnable = false;
    data.transition = 1;
    data.capTitle.caption = "Title text";
    data.capTitle.capTime_second = 5.0;
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(1, 0)),
              "Dialogue: 1,00:00:00.00,00:00:01.28,Title,,0,0,0,,Title text\n");
}

TEST(CaptionEventsTest, OneSceneCaseLeavesOutATitleOverBeforeTheScene)
{
    CTarnwickData data = Project({{0, 99}, {200, 299}});
    data.viCurrent.frame_num = 100;
    data.capTitle.caption = "Title text"; // frames 0 to 75 of the film
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(1, 0)), "");
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(0, 75)),
              "Dialogue: 1,00:00:00.00,00:00:03.04,Title,,0,0,0,,Title text\n");
}

TEST(CaptionEventsTest, StillFrameCaptionsCoverTheFirstSecondWithoutFade)
{
    CTarnwickData data = Project({{0, 99}});
    data.viCurrent.frame_num = 100;
    data.capWatermark = core::DefaultWatermark();
    data.capTitle.caption = "{\\fad(500,500)}clip";
    data.diff_list[0].SetCaption(1, 2, "{\\fad(300,200)}Hi"); // frames 25 to 75
    data.list_idx = 0;
    EXPECT_EQ(BuildCaptionEvents(data, OneFrame(-1, 30)),
              "Dialogue: 0,00:00:00.00,00:00:01.00,Scene001,,0,0,0,,Hi\n"
              "Dialogue: 1,00:00:00.00,00:00:01.00,Title,,0,0,0,,clip\n"
              "Dialogue: 2,00:00:00.00,00:00:01.00,Watermark,,0,0,0,,TarnwickMP4\\NBrindlemoor.\n");
}

TEST(CaptionEventsTest, StillFrameOutsideACaptionShowsNone)
{
    CTarnwickData data = Project({{0, 99}});
    data.viCurrent.frame_num = 100;
    data.capTitle.caption = "clip";           // frames 0 to 75
    data.diff_list[0].SetCaption(1, 2, "Hi"); // frames 25 to 75
    EXPECT_EQ(BuildCaptionEvents(data, OneFrame(0, 10)),
              "Dialogue: 1,00:00:00.00,00:00:01.00,Title,,0,0,0,,clip\n");
    EXPECT_EQ(BuildCaptionEvents(data, OneFrame(0, 80)), "");
    // A position past the last frame counts as the last frame.
    data.diff_list[0].SetCaption(1, 2.96, "Hi"); // to frame 99
    EXPECT_EQ(BuildCaptionEvents(data, OneFrame(0, 150)),
              "Dialogue: 0,00:00:00.00,00:00:01.00,Scene001,,0,0,0,,Hi\n");
}

TEST(CaptionEventsTest, SceneOutsideTheListHasNoCaption)
{
    CTarnwickData data = Project({{0, 99}});
    data.diff_list[0].SetCaption(0, 2, "Hi");
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(-1, 0)), ""); // list_idx -1
    EXPECT_EQ(BuildCaptionEvents(data, OneScene(5, 0)), "");
}

TEST(CaptionFilePathTest, CaseChoosesTheSuffix)
{
    CTarnwickData data;
    data.input_file = "/videos/garden cam.mov";
    data.output_folder = "/videos/garden cam_out/";
    data.output_name = "garden cam.mp4";
    CaptionRequest request = WholeFilm();
    EXPECT_EQ(render::CaptionFilePath(data, request), "/videos/garden cam_out/garden cam_all.ass");
    request.bPreview = true;
    EXPECT_EQ(render::CaptionFilePath(data, request), "/videos/garden cam_out/garden cam_one.ass");
    EXPECT_EQ(render::CaptionFilePath(data, OneScene(0, 0)),
              "/videos/garden cam_out/garden cam_seg.ass");
}

TEST(CaptionFilePathTest, MergeTabNamesTheFileAfterTheOutput)
{
    CTarnwickData data;
    data.input_file = "/videos/a.mov";
    data.output_folder = "/films/";
    data.output_name = "joined.v2.mp4";
    CaptionRequest request = WholeFilm();
    request.bMergeMode = true;
    EXPECT_EQ(render::CaptionFilePath(data, request), "/films/joined.v2_all.ass");
}

TEST(SubtitlesFilterTest, DriveFolderAndPreviewFile)
{
    CTarnwickData data;
    data.output_folder = "D:/out/";
    data.input_file = "/videos/a.mov";
    std::string path = render::CaptionFilePath(data, OneFrame(0, 0));
    EXPECT_EQ(render::SubtitlesFilter(path), "subtitles='D\\:/out/a_one.ass'");
}

TEST(SubtitlesFilterTest, EscapesColonBackslashAndQuoteAndKeepsTheRestQuoted)
{
    EXPECT_EQ(render::SubtitlesFilter("/tmp/a b:c,d[e];f'g\\h/x_all.ass"),
              R"(subtitles='/tmp/a b\:c,d[e];f'\\\''g\\h/x_all.ass')");
}

TEST(SubtitlesFilterTest, PlainPathStaysAsItIs)
{
    EXPECT_EQ(render::EscapeFilterPath("/home/user/videos/out/clip_seg.ass"),
              "/home/user/videos/out/clip_seg.ass");
}

} // namespace
