// The scene workspace model without tools: availability, job messages, value boxes, list commands.
#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "core/language.h"
#include "engine/job_states.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_controls.h"
#include "workspace/tab_scene.h"

using engine::AppMessage;
using testsupport::TabRig;
using workspace::Control;
using workspace::ControlFacts;
using workspace::CTarnwickTabScene;

namespace {

// A tab on its rig, as the host makes it.
struct SceneRig : TabRig
{
    SceneRig()
        : tab(view, loop, host)
    {
        host.SetTabs(&tab, nullptr);
    }
    CTarnwickTabScene tab;
};

// Facts of a project that is ready: input, output and a list.
ControlFacts ReadyFacts()
{
    ControlFacts f;
    f.bInputFile = true;
    f.bOutputFolder = true;
    f.bOutputName = true;
    f.bListEmpty = false;
    f.bInputExists = true;
    f.width = 1920;
    f.height = 1080;
    return f;
}

// A project of 300 frames at 30 fps with the given scenes (first, last).
void FillScenes(core::CTarnwickData &data, const std::vector<std::pair<int, int>> &scenes)
{
    data.input_file = "/nowhere/clip.mp4";
    data.output_folder = "/nowhere/clip.mp4_out/";
    data.output_name = "clip_trim.mp4";
    data.viInput.fps = 30;
    data.viInput.frame_num = 300;
    data.viCurrent = data.viInput;
    for (auto [first, last] : scenes) {
        data.diff_list.emplace_back(first, last, data.output_folder + "seg.mp4");
    }
    data.list_idx = 0;
}

} // namespace

TEST(SceneTab, EmptyProjectLeavesOnlyTheInputControlsCaptionTargetAndList)
{
    SceneRig rig;
    rig.tab.UpdateControls(true);
    const workspace::ControlStates &c = rig.view.controls;
    const std::vector<Control> on = {Control::InputPath,
                                     Control::BrowseInput,
                                     Control::OutputFolder,
                                     Control::BrowseOutputFolder,
                                     Control::OutputName,
                                     Control::ChooseOutputFile,
                                     Control::CaptionTarget,
                                     Control::SceneList};
    for (size_t i = 0; i < workspace::kControlCount; ++i) {
        const Control control = static_cast<Control>(i);
        const bool expected = std::find(on.begin(), on.end(), control) != on.end();
        EXPECT_EQ(c.On(control), expected) << "control " << i;
    }
}

TEST(SceneTab, DuringSceneExtractionStopIsOnAndTheTabSwitchIsOff)
{
    ControlFacts f = ReadyFacts();
    f.bEnable = false;
    f.nProcessID = engine::kJobSceneExtract;
    workspace::ControlStates c = workspace::SceneTabControls(f);
    EXPECT_TRUE(c.On(Control::Stop));
    EXPECT_FALSE(c.bTabSwitch);
    EXPECT_FALSE(c.On(Control::ExtractScenes));
    EXPECT_FALSE(c.On(Control::Threshold));
    EXPECT_FALSE(c.On(Control::Play));
}

TEST(SceneTab, DuringPlaybackStopAndFrameStepsAreOffWhilePositionAndPlayStayOn)
{
    ControlFacts f = ReadyFacts();
    f.nProcessID = engine::kJobPlayInput;
    workspace::ControlStates c = workspace::SceneTabControls(f);
    EXPECT_FALSE(c.On(Control::Stop));
    EXPECT_FALSE(c.On(Control::PreviousFrame));
    EXPECT_FALSE(c.On(Control::NextFrame));
    EXPECT_TRUE(c.On(Control::Position));
    EXPECT_TRUE(c.On(Control::Play));
    EXPECT_TRUE(c.bTabSwitch);
}

TEST(SceneTab, PortraitVideoAtRotationZeroKeepsCinemaScopeOff)
{
    ControlFacts f = ReadyFacts();
    f.width = 1080;
    f.height = 1920;
    EXPECT_FALSE(workspace::SceneTabControls(f).On(Control::CinemaScope));
    f.rotation = -90;
    EXPECT_TRUE(workspace::SceneTabControls(f).On(Control::CinemaScope));
    f.rotation = 180;
    EXPECT_FALSE(workspace::SceneTabControls(f).On(Control::CinemaScope));
}

TEST(SceneTab, StepLabelsFollowTheOutputOnShowAndAutoCaptionsFollowTheCaptions)
{
    ControlFacts f = ReadyFacts();
    EXPECT_EQ(workspace::SceneTabControls(f).nBackStepLabel, 3038);
    EXPECT_EQ(workspace::SceneTabControls(f).nAutoCaptionLabel, 3109);
    f.bOutputOnShow = true;
    f.bAnyCaption = true;
    workspace::ControlStates c = workspace::SceneTabControls(f);
    EXPECT_EQ(c.nBackStepLabel, 3094);
    EXPECT_EQ(c.nForwardStepLabel, 3095);
    EXPECT_EQ(c.nAutoCaptionLabel, 3024);
}

TEST(SceneTab, FailedStateWithATextShowsFailedAndNotTheText)
{
    core::LoadLanguage(core::kLanguageEnglish);
    SceneRig rig;
    rig.tab.OnJobMessage({AppMessage::WM_APP_JOB_STATE, engine::kStateFailed, 0, "ExitCode(1)"});
    EXPECT_EQ(rig.view.panes[workspace::kPaneState], "Failed");
    EXPECT_EQ(rig.view.panes[workspace::kPaneProgress], "");
    // The reason is kept as a value for the views that tell it.
    EXPECT_EQ(rig.tab.LastJob().failure, "ExitCode(1)");
    rig.tab.OnJobMessage({AppMessage::WM_APP_JOB_STATE, 0, 0, "free text"});
    EXPECT_EQ(rig.view.panes[workspace::kPaneProgress], "free text");
}

TEST(SceneTab, ProgressBarOnlyGrowsWithinAJob)
{
    SceneRig rig;
    rig.tab.OnJobMessage({AppMessage::WM_APP_STAGE_BEGIN, 0, 200, "Scene Extraction"});
    rig.tab.OnJobMessage({AppMessage::WM_APP_PROGRESS, 200, 100, std::nullopt});
    rig.tab.OnJobMessage({AppMessage::WM_APP_PROGRESS, 200, 50, std::nullopt});
    EXPECT_EQ(rig.view.progress, 50);
    EXPECT_EQ(rig.view.panes[workspace::kPaneProgress], "50/200 (25.00%)");
    rig.tab.OnJobMessage({AppMessage::WM_APP_PROGRESS, 200, 500, std::nullopt});
    EXPECT_EQ(rig.view.progress, 100);
    EXPECT_EQ(rig.view.panes[workspace::kPaneProgress], "200/200 (100.00%)");
    // A new stage starts the bar again.
    rig.tab.OnJobMessage({AppMessage::WM_APP_STAGE_BEGIN, 0, 10, "Segment Output"});
    EXPECT_EQ(rig.view.progress, 0);
}

TEST(SceneTab, AStageWithoutATotalShowsNoCountOfTheStageBefore)
{
    SceneRig rig;
    rig.tab.OnJobMessage({AppMessage::WM_APP_STAGE_BEGIN, 0, 3, "Precheck"});
    rig.tab.OnJobMessage({AppMessage::WM_APP_PROGRESS, 3, 3, std::nullopt});
    EXPECT_EQ(rig.view.progressDone, 3);
    EXPECT_EQ(rig.view.progressTotal, 3);
    rig.tab.OnJobMessage({AppMessage::WM_APP_STAGE_BEGIN, 0, -1, "Final Merge"});
    EXPECT_EQ(rig.view.progressDone, 0);
    EXPECT_EQ(rig.view.progressTotal, 0);
}

TEST(SceneTab, ConfirmedThresholdShowsTheNormalFormOfTheValue)
{
    SceneRig rig;
    rig.tab.CommitValue(workspace::ValueField::Threshold, "  150.40 ");
    EXPECT_EQ(rig.view.fields.threshold, "150");
    EXPECT_EQ(rig.tab.Data().threshold.dValue, 150.4);
    rig.tab.CommitValue(workspace::ValueField::Threshold, "5000");
    EXPECT_EQ(rig.view.fields.threshold, "1000");
    rig.tab.CommitValue(workspace::ValueField::Gamma, "abc");
    EXPECT_EQ(rig.view.fields.gamma, rig.tab.Data().gamma.strText);
    EXPECT_EQ(rig.tab.Data().gamma.dValue, 0.1);
}

TEST(SceneTab, SpinButtonMovesAValueByItsStepWithinItsBounds)
{
    SceneRig rig;
    rig.tab.SpinValue(workspace::ValueField::Brightness, 1);
    EXPECT_DOUBLE_EQ(rig.tab.Data().brightness.dValue, 0.01);
    rig.tab.CommitValue(workspace::ValueField::Brightness, "1");
    rig.tab.SpinValue(workspace::ValueField::Brightness, 1);
    EXPECT_DOUBLE_EQ(rig.tab.Data().brightness.dValue, 1.0);
}

TEST(SceneTab, TypingTheSameOutputFolderWithOrWithoutTheSlashChangesNothing)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    const int shows = rig.view.fieldShows;
    rig.tab.OutputFolderConfirmed("/nowhere/clip.mp4_out");
    rig.tab.OutputFolderConfirmed("  /nowhere/clip.mp4_out/ ");
    EXPECT_EQ(rig.tab.Data().output_folder, "/nowhere/clip.mp4_out/");
    EXPECT_EQ(rig.view.fieldShows, shows);
    EXPECT_TRUE(rig.view.errors.empty());
}

TEST(SceneTab, FinalOutputPressedWhileTheFinalOutputRunsOnlyStopsIt)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    std::atomic<int> runs{0};
    engine::CTarnwickProcess &engine = rig.tab.Process();
    engine.SetJobFunction(engine::kJobFinalOutput, 0, [&](int) {
        ++runs;
        while (engine.bCancel == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return engine::kJobStopped;
    });
    rig.tab.FinalOutput();
    EXPECT_EQ(rig.tab.RunningJob(), engine::kJobFinalOutput);
    EXPECT_TRUE(rig.view.controls.On(Control::Stop));
    rig.tab.FinalOutput();
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(rig.tab.IsJobRunning());
    EXPECT_EQ(rig.tab.LastJob().nResult, engine::kJobStopped);
    EXPECT_TRUE(rig.tab.LastJob().bFinished);
}

TEST(SceneTab, ProcessFinishedOfARenderJobStopsTheTimerAndOpensTheControls)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    rig.tab.StartElapsedTimer();
    rig.tab.OnJobMessage({AppMessage::WM_APP_PROCESS_FINISHED, engine::kJobSegmentOutput, 0, {}});
    EXPECT_FALSE(rig.tab.TimerRunning());
    EXPECT_FALSE(rig.view.panes[workspace::kPaneElapsed].empty());
    EXPECT_TRUE(rig.view.controls.On(Control::FinalOutput));
}

TEST(SceneTab, BusyListAndTimerArriveAsMessages)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    rig.tab.UpdateControls(true);
    rig.tab.OnJobMessage({AppMessage::WM_APP_LIST_BUSY, 1, 0, {}});
    EXPECT_FALSE(rig.view.controls.On(Control::SceneList));
    rig.tab.OnJobMessage({AppMessage::WM_APP_ELAPSED_TIMER, 1, 0, {}});
    EXPECT_TRUE(rig.tab.TimerRunning());
    rig.tab.OnJobMessage({AppMessage::WM_APP_LIST_BUSY, 0, 0, {}});
    rig.tab.OnJobMessage({AppMessage::WM_APP_ELAPSED_TIMER, 0, 0, {}});
    EXPECT_TRUE(rig.view.controls.On(Control::SceneList));
    EXPECT_FALSE(rig.tab.TimerRunning());
}

TEST(SceneTab, DeletingTheOnlyRowGivesTheDefaultScene)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{40, 200}});
    rig.tab.DeleteRow();
    ASSERT_EQ(rig.view.rows.size(), 1u);
    EXPECT_EQ(rig.view.rows[0].columns[1], "0");
    EXPECT_EQ(rig.view.rows[0].columns[2], "89");
}

TEST(SceneTab, AfterADuplicateTheCurrentRowIsTheLowerOfTheTwo)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}, {120, 199}});
    rig.tab.Data().list_idx = 1;
    rig.tab.DuplicateRow();
    EXPECT_EQ(rig.tab.Data().list_idx, 2);
    ASSERT_EQ(rig.view.rows.size(), 3u);
    EXPECT_EQ(rig.view.selected, 2);
    EXPECT_EQ(rig.view.rows[2].columns[1], "120");
}

TEST(SceneTab, RightClickOnAFrameCellShowsNoMenuAndOnTheCaptionCellItDoes)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}});
    EXPECT_FALSE(rig.tab.ContextMenuAt(0, 2).bShow);
    EXPECT_TRUE(rig.tab.ContextMenuAt(0, 5).bShow);
}

TEST(SceneTab, SplittingAtFrameZeroOfTheSceneGivesAnEarlierPartOfTheFewestFrames)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{30, 149}});
    rig.tab.Process().nPreviewFrame = 0;
    rig.tab.SplitRow();
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_EQ(rig.view.rows[0].columns[1], "30");
    EXPECT_EQ(rig.view.rows[0].columns[3], "30"); // round(30 fps x 1 s)
    EXPECT_EQ(rig.view.rows[1].columns[1], "60");
    EXPECT_EQ(rig.tab.Data().list_idx, 1);
}

TEST(SceneTab, UntickingARowRenumbersTheStartsAndTheSummary)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 99}, {100, 199}, {200, 299}});
    rig.tab.OnJobMessage({AppMessage::WM_APP_SCENES_CHANGED, -1, 0, {}});
    rig.tab.SetRowChecked(1, false);
    EXPECT_EQ(rig.view.rows[1].columns[8], "");
    EXPECT_EQ(rig.view.rows[2].columns[8], "100");
    EXPECT_FALSE(rig.view.rows[1].bChecked);
    EXPECT_EQ(rig.view.inputSummary, "00:00:06.67/00:00:10.00 Frm:200/300 FPS:30.00 W0xH0");
}

TEST(SceneTab, CaptionTargetCyclesSceneTitleWatermark)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}});
    rig.tab.NextCaptionTarget();
    EXPECT_EQ(rig.view.controls.nCaptionTargetLabel, 1103);
    rig.tab.CaptionEndConfirmed("40000");
    EXPECT_EQ(rig.view.fields.captionEnd, "36000.00");
    rig.tab.NextCaptionTarget();
    EXPECT_EQ(rig.view.controls.nCaptionTargetLabel, 1102);
    rig.tab.NextCaptionTarget();
    rig.tab.CaptionStartConfirmed("5");
    EXPECT_EQ(rig.view.fields.captionStart, "2.99");
}

TEST(SceneTab, AutoCaptionsOnACaptionedListAsksFirstThenEmptiesAll)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}, {100, 189}});
    rig.tab.Data().diff_list[1].capParam.caption = "Fox";
    rig.view.answer = false;
    rig.tab.AutoCaptions();
    EXPECT_EQ(rig.view.questions, (std::vector<int>{3125}));
    EXPECT_EQ(rig.tab.Data().diff_list[1].capParam.caption, "Fox");
    rig.view.answer = true;
    rig.tab.AutoCaptions();
    EXPECT_EQ(rig.tab.Data().diff_list[1].capParam.caption, "");
    EXPECT_EQ(rig.tab.Data().capTitle.caption, "");
}

TEST(SceneTab, ResetsAskFirstAndANoChangesNothing)
{
    SceneRig rig;
    rig.tab.CommitValue(workspace::ValueField::Threshold, "300");
    rig.view.answer = false;
    rig.tab.ResetScanSettings();
    EXPECT_EQ(rig.tab.Data().threshold.dValue, 300);
    rig.view.answer = true;
    rig.tab.ResetScanSettings();
    EXPECT_EQ(rig.tab.Data().threshold.dValue, 100);
    EXPECT_EQ(rig.view.questions, (std::vector<int>{3121, 3121}));
}

namespace {

TEST(SceneTab, TheTitleFollowsTheProjectThroughTheView)
{
    core::LoadLanguage(core::kLanguageEnglish);
    testsupport::TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    EXPECT_EQ(rig.view.title, core::LoadStringById(core::kIdsUntitled));
    const std::string path = dir.file("trip.twproj");
    ASSERT_TRUE(rig.tab.SaveProjectAs(path));
    EXPECT_EQ(rig.view.title.rfind("trip.twproj", 0), 0u) << rig.view.title;
    rig.tab.ClearProject(true);
    EXPECT_EQ(rig.view.title, core::LoadStringById(core::kIdsUntitled));
}

} // namespace

namespace {

TEST(SceneTab, EditingAFrameCellMovesTheSceneWithinItsBounds)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}, {150, 239}});
    rig.tab.SelectRow(1, 1);
    ASSERT_TRUE(rig.tab.CellEditOpen());
    rig.tab.OnCellEdited("100");
    EXPECT_FALSE(rig.tab.CellEditOpen());
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_EQ(rig.view.rows[1].columns[1], "100");
    // Below the end of the scene before it, the first frame lands on the lower bound.
    rig.tab.SelectRow(1, 1);
    ASSERT_TRUE(rig.tab.CellEditOpen());
    rig.tab.OnCellEdited("5");
    EXPECT_EQ(rig.view.rows[1].columns[1], "90");
    // Without an open editor an edit changes nothing.
    rig.tab.OnCellEdited("120");
    EXPECT_EQ(rig.view.rows[1].columns[1], "90");
}

TEST(SceneTab, CellEditSentTwiceByEnterAndThenLeavingTheFieldIsTakenOnce)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}, {150, 239}});
    rig.tab.SelectRow(1, 1);
    ASSERT_TRUE(rig.tab.CellEditOpen());
    // Enter sends the text, and leaving the field sends it again: the second is no edit.
    rig.tab.OnCellEdited("100");
    const std::vector<std::string> after = rig.view.rows[1].columns;
    rig.tab.OnCellEdited("100");
    EXPECT_EQ(rig.view.rows[1].columns, after);
    EXPECT_EQ(rig.tab.Data().diff_list[1].framNo_first, 100);
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
}

TEST(SceneTab, PrimariesToggleReachesTheProjectAndTheFields)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}});
    rig.tab.SetPrimaries(true);
    EXPECT_EQ(rig.tab.Data().primaries, 1);
    rig.tab.ShowFields();
    EXPECT_TRUE(rig.view.fields.bPrimaries);
    rig.tab.SetPrimaries(false);
    EXPECT_EQ(rig.tab.Data().primaries, 0);
}

TEST(SceneTab, CaptionTextAndStepsReachTheCurrentScene)
{
    SceneRig rig;
    FillScenes(rig.tab.Data(), {{0, 89}, {90, 179}});
    rig.tab.Data().list_idx = 0;
    rig.tab.CaptionTextConfirmed("Fox {at dusk}");
    EXPECT_EQ(rig.tab.Data().diff_list[0].capParam.caption, "Fox {at dusk}");
    EXPECT_EQ(rig.view.fields.captionText, "Fox {at dusk}");
    const double start = rig.tab.Data().diff_list[0].capParam.capTime_first;
    rig.tab.StepCaptionStart(1);
    EXPECT_GT(rig.tab.Data().diff_list[0].capParam.capTime_first, start);
    EXPECT_EQ(rig.tab.Data().diff_list[1].capParam.caption, "") << "only the current scene";
}

} // namespace
