// Tests of caption editing: targets, time bounds, spin steps, font, reset and automatic captions.
#include "workspace/caption_edit.h"

#include <gtest/gtest.h>

using core::CTarnwickData;
using workspace::AutoCaptionOutcome;
using workspace::CaptionEditor;

namespace {

// Two scenes at 30 fps: 90 frames (3.00 s) and 60 frames (2.00 s); the first is current.
CTarnwickData Project()
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.viCurrent.fps = 30;
    data.diff_list.emplace_back(0, 89, "/seg/0_89.mp4");
    data.diff_list.emplace_back(100, 159, "/seg/100_159.mp4");
    data.list_idx = 0;
    data.capTitle = core::DefaultTitle();
    data.capWatermark = core::DefaultWatermark();
    return data;
}

CaptionEditor EditorOn(const CTarnwickData &data, int target)
{
    CaptionEditor editor;
    editor.m_nCaptionTarget = target;
    editor.LoadCaptionFields(data);
    return editor;
}

} // namespace

TEST(CaptionTarget, SceneTargetIsTheCaptionOfTheCurrentRow)
{
    CTarnwickData data = Project();
    data.diff_list[1].SetCaption(0.5, 1.0, "Dog");
    data.list_idx = 1;
    const CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    ASSERT_TRUE(editor.GetCaptionTarget(data));
    EXPECT_EQ(editor.GetCaptionTarget(data)->caption, "Dog");
    EXPECT_EQ(editor.m_strCaptionText, "Dog");
    EXPECT_EQ(editor.m_strCaptionStart, "0.50");
    EXPECT_EQ(editor.m_strCaptionEnd, "1.00");
}

TEST(CaptionTarget, ButtonCyclesSceneTitleWatermark)
{
    const CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_EQ(editor.TargetLabelId(), 3018);
    editor.NextTarget(data);
    EXPECT_EQ(editor.TargetLabelId(), 1103);
    EXPECT_EQ(editor.m_Caption.font_size, 32); // the title's
    editor.NextTarget(data);
    EXPECT_EQ(editor.TargetLabelId(), 1102);
    EXPECT_EQ(editor.m_strCaptionText, "TarnwickMP4\\NBrindlemoor.");
    editor.NextTarget(data);
    EXPECT_EQ(editor.m_nCaptionTarget, workspace::kTargetScene);
}

TEST(CaptionTarget, TitleTargetStaysAcrossRowChanges)
{
    CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetTitle);
    data.list_idx = 1;
    editor.LoadCaptionFields(data);
    EXPECT_EQ(editor.m_strCaptionEnd, "3.00");
    EXPECT_EQ(editor.m_Caption.bold, -1);
}

TEST(CaptionTarget, EmptyListShowsDefaultsAndCommandsDoNothing)
{
    CTarnwickData data = Project();
    data.diff_list.clear();
    data.list_idx = -1;
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_FALSE(editor.GetCaptionTarget(data));
    EXPECT_EQ(editor.m_strCaptionText, "");
    EXPECT_EQ(editor.m_strCaptionStart, "0.00");
    EXPECT_EQ(editor.m_strCaptionEnd, "0.00");
    EXPECT_EQ(editor.m_Caption.cap_pos_type, 2);
    EXPECT_EQ(editor.m_Caption.font_name, "Yu Gothic UI");
    EXPECT_FALSE(editor.SetText(data, "Cat"));
    EXPECT_FALSE(editor.SetStartTime(data, "1"));
    EXPECT_FALSE(editor.SetEndTime(data, "1"));
    EXPECT_FALSE(editor.StepEnd(data, 1));
    EXPECT_FALSE(editor.SetPosition(data, 4));
    EXPECT_FALSE(editor.ResetCaptions(data));
    EXPECT_EQ(editor.AutoCaptions(data, true), AutoCaptionOutcome::Nothing);
}

TEST(CaptionText, TrimmedAndOnlyWhenDifferent)
{
    CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.SetText(data, "  Cat \n"));
    EXPECT_EQ(data.diff_list[0].capParam.caption, "Cat");
    EXPECT_EQ(editor.m_strCaptionText, "Cat");
    EXPECT_FALSE(editor.SetText(data, "Cat"));
}

TEST(CaptionTimes, NinetyFramesAtThirtyAcceptStartUpTo299AndEndUpTo300)
{
    CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.SetEndTime(data, "5"));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 3.0);
    EXPECT_TRUE(editor.SetStartTime(data, "5"));
    EXPECT_NEAR(data.diff_list[0].capParam.capTime_first, 2.99, 1e-9);
    EXPECT_EQ(editor.m_strCaptionStart, "2.99");
    // The length no longer fits behind the start and is cut to what is left.
    EXPECT_EQ(editor.m_strCaptionEnd, "0.01");
}

TEST(CaptionTimes, StartOf250OnALengthOf300LeavesALengthOf050)
{
    CTarnwickData data = Project();
    data.diff_list[0].SetCaption(0.0, 3.0, "Cat");
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.SetStartTime(data, "2.50"));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_first, 2.5);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 0.5);
    EXPECT_EQ(editor.m_strCaptionEnd, "0.50");
}

TEST(CaptionTimes, LongerEndPullsTheStartBack)
{
    CTarnwickData data = Project();
    data.diff_list[0].SetCaption(2.0, 1.0, "Cat");
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.SetEndTime(data, "2.5"));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 2.5);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_first, 0.5);
}

TEST(CaptionTimes, TitleAndWatermarkAcceptUpTo36000)
{
    CTarnwickData data = Project();
    CaptionEditor title = EditorOn(data, workspace::kTargetTitle);
    EXPECT_TRUE(title.SetEndTime(data, "36000"));
    EXPECT_DOUBLE_EQ(data.capTitle.capTime_second, 36000.0);
    CaptionEditor watermark = EditorOn(data, workspace::kTargetWatermark);
    EXPECT_FALSE(watermark.SetEndTime(data, "50000")); // already at 36000
    EXPECT_DOUBLE_EQ(data.capWatermark.capTime_second, 36000.0);
    EXPECT_TRUE(watermark.SetStartTime(data, "40000"));
    EXPECT_EQ(watermark.m_strCaptionStart, "35999.99");
}

TEST(CaptionTimes, UnchangedOrUnreadableText)
{
    CTarnwickData data = Project();
    data.diff_list[0].SetCaption(1.0, 1.0, "Cat");
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_FALSE(editor.SetStartTime(data, " 1.00 "));
    EXPECT_FALSE(editor.SetStartTime(data, "1.0")); // the same value in another form
    EXPECT_TRUE(editor.SetStartTime(data, "soon"));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_first, 0.0);
    EXPECT_TRUE(editor.SetEndTime(data, "never"));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 0.01);
}

TEST(CaptionSpin, StepsByOneHundredthWithinTheScene)
{
    CTarnwickData data = Project();
    data.diff_list[0].SetCaption(0.0, 3.0, "Cat");
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_FALSE(editor.StepEnd(data, 1));
    EXPECT_FALSE(editor.StepStart(data, -1));
    EXPECT_TRUE(editor.StepStart(data, 1));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_first, 0.01);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 2.99);
    EXPECT_TRUE(editor.StepEnd(data, -1));
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 2.98);
}

TEST(CaptionPosition, CopiesTheWholeCaptionIntoTheTarget)
{
    CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetWatermark);
    EXPECT_TRUE(editor.SetPosition(data, 9));
    EXPECT_EQ(data.capWatermark.cap_pos_type, 9);
    EXPECT_EQ(data.capWatermark.font_name, "Impact");
    EXPECT_FALSE(editor.SetPosition(data, 10));
}

TEST(CaptionFont, SeedAndResultFollowTheChooser)
{
    CTarnwickData data = Project();
    CaptionEditor editor = EditorOn(data, workspace::kTargetTitle);
    const workspace::FontChoice seed = editor.FontDialogSeed();
    EXPECT_EQ(seed.face, "Yu Gothic UI");
    EXPECT_EQ(seed.height, -32);
    EXPECT_EQ(seed.weight, 700);
    EXPECT_EQ(seed.charSet, 128);
    workspace::FontChoice chosen = seed;
    chosen.face = "Noto Sans";
    chosen.height = -40;
    chosen.weight = 400;
    chosen.bItalic = true;
    chosen.colour = 0x00FF00;
    EXPECT_TRUE(editor.SetFont(data, chosen));
    EXPECT_EQ(data.capTitle.font_name, "Noto Sans");
    EXPECT_EQ(data.capTitle.font_size, 40);
    EXPECT_EQ(data.capTitle.bold, 0);
    EXPECT_EQ(data.capTitle.italic, -1);
    EXPECT_EQ(data.capTitle.underline, 0);
    EXPECT_EQ(data.capTitle.color, 0x00FF00u);
}

TEST(CaptionReset, EverythingBackToTheDefaults)
{
    CTarnwickData data = Project();
    data.diff_list[1].SetCaption(0.5, 1.0, "Dog");
    data.diff_list[1].capParam.font_size = 50;
    data.capTitle.caption = "Trip";
    data.capWatermark.caption.clear();
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.ResetCaptions(data));
    EXPECT_EQ(data.diff_list[1].capParam.caption, "");
    EXPECT_EQ(data.diff_list[1].capParam.font_size, 24);
    EXPECT_DOUBLE_EQ(data.diff_list[1].capParam.capTime_second, 0.0);
    EXPECT_EQ(data.capTitle.caption, "");
    EXPECT_EQ(data.capWatermark.caption, "TarnwickMP4\\NBrindlemoor.");
}

TEST(AutoCaptions, FillsWhenNoSceneHasACaption)
{
    CTarnwickData data = Project();
    data.capWatermark.caption.clear();
    EXPECT_EQ(workspace::AutoCaptionLabelId(data), 3109);
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_EQ(editor.AutoCaptions(data, false), AutoCaptionOutcome::Filled);
    EXPECT_EQ(data.diff_list[0].capParam.caption, "Scene001");
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 3.0);
    EXPECT_EQ(data.diff_list[1].capParam.caption, "Scene002");
    EXPECT_DOUBLE_EQ(data.diff_list[1].capParam.capTime_second, 2.0);
    EXPECT_EQ(data.capWatermark.caption, "TarnwickMP4\\NBrindlemoor.");
    EXPECT_EQ(data.capTitle.caption, "{\\fad(500,500)}trip.mov");
    EXPECT_EQ(editor.m_strCaptionText, "Scene001");
    EXPECT_EQ(workspace::AutoCaptionLabelId(data), 3024);
}

TEST(AutoCaptions, OneCaptionedSceneAsksFirstThenEmptiesAll)
{
    CTarnwickData data = Project();
    data.diff_list[1].SetCaption(0.5, 1.0, "Dog");
    data.capTitle.caption = "Trip";
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_EQ(editor.AutoCaptions(data, false), AutoCaptionOutcome::NeedsConfirmation);
    EXPECT_EQ(data.diff_list[1].capParam.caption, "Dog");
    EXPECT_EQ(editor.AutoCaptions(data, true), AutoCaptionOutcome::Emptied);
    EXPECT_EQ(data.diff_list[0].capParam.caption, "");
    EXPECT_EQ(data.diff_list[1].capParam.caption, "");
    EXPECT_DOUBLE_EQ(data.diff_list[1].capParam.capTime_second, 1.0); // times stay
    EXPECT_EQ(data.capTitle.caption, "");
    EXPECT_EQ(data.capWatermark.caption, "");
}

TEST(CaptionClamp, ShortenedSceneClampsEachTimeWithoutComparingThem)
{
    CTarnwickData data = Project();
    data.diff_list[0].SetCaption(2.5, 2.8, "Cat");
    data.diff_list[0].framNo_second = 59; // 60 frames: 2.00 s
    CaptionEditor editor = EditorOn(data, workspace::kTargetScene);
    EXPECT_TRUE(editor.ClampCaptionToScene(data, 0));
    EXPECT_EQ(editor.m_strCaptionStart, "1.99");
    EXPECT_EQ(editor.m_strCaptionEnd, "2.00");
    EXPECT_NEAR(data.diff_list[0].capParam.capTime_first, 1.99, 1e-9);
    EXPECT_DOUBLE_EQ(data.diff_list[0].capParam.capTime_second, 2.0);
}

TEST(CaptionClamp, CaptionThatFitsStaysAndZeroLengthRises)
{
    core::CapParam cap;
    cap.capTime_first = 0.5;
    cap.capTime_second = 1.0;
    EXPECT_FALSE(workspace::ClampCaptionTimes(cap, 3.0));
    cap.capTime_second = 0.0;
    EXPECT_TRUE(workspace::ClampCaptionTimes(cap, 3.0));
    EXPECT_DOUBLE_EQ(cap.capTime_second, 0.01);
}
