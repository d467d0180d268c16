// Tests of the scene list and merge list data: start frames, row texts, cell edits, row commands.
#include "workspace/scene_list.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "workspace/scene_defaults.h"

using core::CTarnwickData;
using core::SceneEntry;
using workspace::ListKind;
using workspace::PointerZone;

namespace {

// A project at 30 fps with a minimum scene of one second (m = 30) over 1000 input frames.
CTarnwickData Project()
{
    CTarnwickData data;
    data.input_file = "/videos/trip.mov";
    data.output_folder = "/videos/trip.mov_out/";
    data.viInput.frame_num = 1000;
    data.viInput.fps = 30;
    data.viCurrent = data.viInput;
    data.valid_min_unit.dValue = 1.0;
    return data;
}

// Adds a scene of frames first..last named after its range.
void AddScene(CTarnwickData &data, int first, int last)
{
    const std::string name = "/seg/" + std::to_string(first) + "_" + std::to_string(last) + ".mp4";
    data.diff_list.emplace_back(first, last, name);
}

// The project with rows 0..99, 200..299, 400..499 and the middle one current.
CTarnwickData ThreeScenes()
{
    CTarnwickData data = Project();
    AddScene(data, 0, 99);
    AddScene(data, 200, 299);
    AddScene(data, 400, 499);
    data.list_idx = 1;
    return data;
}

// A merge row of an analysed file with outFrames output frames.
SceneEntry MergeRow(const std::string &file, int outFrames)
{
    SceneEntry entry;
    entry.fileName = file;
    entry.bAnalyzed = true;
    entry.viIn.width = 1920;
    entry.viIn.height = 1080;
    entry.viIn.fps = 29.97;
    entry.viIn.frame_num = outFrames + 5;
    entry.viOut.frame_num = outFrames;
    return entry;
}

std::vector<std::string> FileNames(const CTarnwickData &data)
{
    std::vector<std::string> names;
    for (const SceneEntry &entry : data.diff_list) {
        names.push_back(entry.fileName);
    }
    return names;
}

} // namespace

TEST(SceneListStartFrames, TransitionTakesHalfOnFirstRowAndFullInside)
{
    CTarnwickData data = Project();
    data.transition = 1;
    data.dTransitionSec = 0.5;
    AddScene(data, 0, 99);
    AddScene(data, 100, 199);
    const workspace::StartFrames two = workspace::ComputeStartFrames(data, ListKind::Scene);
    // 100 less half a fade, round(7.5) = 8.
    EXPECT_EQ(two.tickedStarts, (std::vector<int>{0, 92}));
    ASSERT_EQ(two.rowStart.size(), 2u);
    EXPECT_EQ(two.rowStart[1], 92);

    AddScene(data, 200, 299);
    const workspace::StartFrames three = workspace::ComputeStartFrames(data, ListKind::Scene);
    // The middle row gives up a full fade, round(15) = 15.
    EXPECT_EQ(three.tickedStarts, (std::vector<int>{0, 92, 177}));
}

TEST(SceneListStartFrames, WithoutTransitionRowsFollowEachOther)
{
    CTarnwickData data = ThreeScenes();
    const workspace::StartFrames starts = workspace::ComputeStartFrames(data, ListKind::Scene);
    EXPECT_EQ(starts.tickedStarts, (std::vector<int>{0, 100, 200}));
}

TEST(SceneListStartFrames, UntickingMiddleRowEmptiesItsStartAndMovesNextUp)
{
    CTarnwickData data = ThreeScenes();
    ASSERT_TRUE(workspace::SetChecked(data, 1, false));
    const workspace::StartFrames starts = workspace::ComputeStartFrames(data, ListKind::Scene);
    EXPECT_EQ(starts.tickedStarts, (std::vector<int>{0, 100}));
    EXPECT_FALSE(starts.rowStart[1].has_value());
    EXPECT_EQ(starts.rowStart[2], 100);

    const workspace::SceneRowText row = workspace::SceneRowTexts(data, 1, starts.rowStart[1]);
    EXPECT_EQ(row.columns[8], "");
    EXPECT_EQ(row.columns[9], "");
    const workspace::SceneRowText next = workspace::SceneRowTexts(data, 2, starts.rowStart[2]);
    EXPECT_EQ(next.columns[8], "100");
    EXPECT_EQ(next.columns[9], "00:00:03.33");
}

TEST(SceneListStartFrames, UntickedFirstRowLeavesFullReductionOnFirstTicked)
{
    CTarnwickData data = ThreeScenes();
    data.transition = 1;
    data.diff_list[0].bEnable = false;
    const workspace::StartFrames starts = workspace::ComputeStartFrames(data, ListKind::Scene);
    // Row 2 is not the first row of the list: 100 - 15, not 100 - 8.
    EXPECT_EQ(starts.tickedStarts, (std::vector<int>{0, 85}));
}

TEST(MergeListStartFrames, UseOutputFramesAndSkipUnanalysedRows)
{
    std::vector<SceneEntry> rows = {MergeRow("/a.mp4", 300), MergeRow("/b.mp4", 200)};
    rows.push_back(MergeRow("/c.mp4", 100));
    rows[1].bAnalyzed = false;
    const workspace::StartFrames starts =
        workspace::ComputeStartFrames(rows, ListKind::Merge, 30.0, true, 0.5);
    EXPECT_EQ(starts.tickedStarts, (std::vector<int>{0, 292}));
    EXPECT_FALSE(starts.rowStart[1].has_value());
}

TEST(MergeListStartFrames, UntickedFirstRowLeavesFullReductionOnFirstTicked)
{
    std::vector<SceneEntry> rows = {MergeRow("/a.mp4", 300), MergeRow("/b.mp4", 200)};
    rows.push_back(MergeRow("/c.mp4", 100));
    rows[0].bEnable = false;
    const workspace::StartFrames starts =
        workspace::ComputeStartFrames(rows, ListKind::Merge, 30.0, true, 0.5);
    EXPECT_EQ(starts.tickedStarts, (std::vector<int>{0, 185}));
}

TEST(SceneRowTexts, ShowsTheTenColumns)
{
    CTarnwickData data = ThreeScenes();
    data.diff_list[1].SetCaption(0.5, 2.25, "Cat");
    const workspace::SceneRowText row = workspace::SceneRowTexts(data, 1, 100);
    const std::array<std::string, 10> expected = {
        "002", "200", "299", "100", "00:00:03.33", "Cat", "0.50", "2.25", "100", "00:00:03.33"};
    EXPECT_EQ(row.columns, expected);
    EXPECT_TRUE(row.bChecked);
    EXPECT_FALSE(row.textColour.has_value());
    EXPECT_FALSE(row.backColour.has_value());
}

TEST(SceneRowTexts, UntickedRowIsGreyWithoutStart)
{
    CTarnwickData data = ThreeScenes();
    data.diff_list[0].bEnable = false;
    const workspace::SceneRowText row = workspace::SceneRowTexts(data, 0, 0);
    EXPECT_FALSE(row.bChecked);
    EXPECT_EQ(row.textColour, 0x808080u);
    EXPECT_EQ(row.backColour, 0xDCDCDCu);
    EXPECT_EQ(row.columns[8], "");
    EXPECT_EQ(row.columns[9], "");
}

TEST(MergeRowTexts, AnalysedRowShowsItsFacts)
{
    CTarnwickData data = Project();
    data.diff_list.push_back(MergeRow("/videos/cat one.mp4", 300));
    const workspace::MergeRowText row = workspace::MergeRowTexts(data, 0, 0);
    const std::array<std::string, 9> expected = {"001",
                                                 "cat one.mp4",
                                                 "1920 x 1080",
                                                 "29.97",
                                                 "305",
                                                 "300",
                                                 "00:00:10.00",
                                                 "0",
                                                 "00:00:00.00"};
    EXPECT_EQ(row.columns, expected);
}

TEST(MergeRowTexts, UnanalysedRowShowsTheGivenWord)
{
    CTarnwickData data = Project();
    data.diff_list.push_back(MergeRow("/videos/a.mp4", 300));
    data.diff_list[0].bAnalyzed = false;
    const workspace::MergeRowText ticked = workspace::MergeRowTexts(data, 0, std::nullopt, "Wait");
    for (int column = 2; column <= 8; ++column) {
        EXPECT_EQ(ticked.columns[column], "Wait") << column;
    }
    EXPECT_FALSE(ticked.bKeepStartColumns);
    EXPECT_EQ(workspace::MergeRowTexts(data, 0, std::nullopt).columns[2], "Unanalyzed");

    data.diff_list[0].bEnable = false;
    const workspace::MergeRowText unticked = workspace::MergeRowTexts(data, 0, std::nullopt);
    EXPECT_TRUE(unticked.bKeepStartColumns);
    EXPECT_EQ(unticked.textColour, 0x808080u);
}

TEST(CellEditBounds, MiddleRowIsBoundByItsNeighbours)
{
    const CTarnwickData data = ThreeScenes();
    const auto first = workspace::CellEditBounds(data, 1, 1);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->nLower, 100);
    EXPECT_EQ(first->nUpper, 270); // 299 - 30 + 1
    EXPECT_EQ(first->nStart, 200);
    const auto last = workspace::CellEditBounds(data, 1, 2);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->nLower, 229); // 200 - 1 + 30
    EXPECT_EQ(last->nUpper, 399);
    EXPECT_EQ(last->nStart, 299);
    const auto count = workspace::CellEditBounds(data, 1, 3);
    ASSERT_TRUE(count);
    EXPECT_EQ(count->nLower, 30);
    EXPECT_EQ(count->nUpper, 200);
    EXPECT_EQ(count->nStart, 100);
}

TEST(CellEditBounds, ListEndsUseZeroAndTheInputLength)
{
    const CTarnwickData data = ThreeScenes();
    EXPECT_EQ(workspace::CellEditBounds(data, 0, 1)->nLower, 0);
    EXPECT_EQ(workspace::CellEditBounds(data, 2, 2)->nUpper, 999);
    EXPECT_EQ(workspace::CellEditBounds(data, 2, 3)->nUpper, 600);
    EXPECT_FALSE(workspace::CellEditBounds(data, 1, 4));
    EXPECT_FALSE(workspace::CellEditBounds(data, 3, 1));
}

TEST(CellEditBounds, CrossingBoundsClampLowerFirstThenUpper)
{
    CTarnwickData data = Project();
    AddScene(data, 10, 19); // 10 frames, shorter than m = 30
    const auto first = workspace::CellEditBounds(data, 0, 1);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->nLower, 0);
    EXPECT_EQ(first->nUpper, -10);
    EXPECT_EQ(first->nStart, -10);
}

TEST(ApplyCellEdit, TextThatIsNotANumberGoesToTheLowerBound)
{
    CTarnwickData data = ThreeScenes();
    const workspace::CellEditResult result = workspace::ApplyCellEdit(data, 1, 1, "abc");
    EXPECT_TRUE(result.bChanged);
    EXPECT_EQ(result.nSceneToCheck, 1);
    EXPECT_EQ(data.diff_list[1].framNo_first, 100);
}

TEST(ApplyCellEdit, LengthColumnSetsLastFromFirst)
{
    CTarnwickData data = ThreeScenes();
    EXPECT_TRUE(workspace::ApplyCellEdit(data, 1, 3, " 50 ").bChanged);
    EXPECT_EQ(data.diff_list[1].framNo_first, 200);
    EXPECT_EQ(data.diff_list[1].framNo_second, 249);
}

TEST(ApplyCellEdit, ValueAboveUpperBoundIsClamped)
{
    CTarnwickData data = ThreeScenes();
    EXPECT_TRUE(workspace::ApplyCellEdit(data, 1, 2, "5000").bChanged);
    EXPECT_EQ(data.diff_list[1].framNo_second, 399);
}

TEST(ApplyCellEdit, UnchangedTextDoesNothing)
{
    CTarnwickData data = ThreeScenes();
    const workspace::CellEditResult result = workspace::ApplyCellEdit(data, 1, 1, "  200\t");
    EXPECT_FALSE(result.bChanged);
    EXPECT_EQ(result.nSceneToCheck, -1);
    EXPECT_EQ(data.diff_list[1].framNo_first, 200);
}

TEST(ApplyCellEdit, ShortenedSceneClampsCaptionTimesEachOnItsOwn)
{
    CTarnwickData data = ThreeScenes();
    data.diff_list[1].SetCaption(2.5, 3.0, "Cat"); // scene of 100 frames: 3.33 s
    ASSERT_TRUE(workspace::ApplyCellEdit(data, 1, 3, "60").bChanged);
    // D = 2.00: start to 1.99, length to 2.00; their sum beyond the end is left alone.
    EXPECT_NEAR(data.diff_list[1].capParam.capTime_first, 1.99, 1e-9);
    EXPECT_NEAR(data.diff_list[1].capParam.capTime_second, 2.0, 1e-9);
}

TEST(SceneListSplit, GreyedBelowTwiceTheMinimum)
{
    CTarnwickData data = Project();
    AddScene(data, 0, 58);   // 59 frames = 2m - 1
    AddScene(data, 59, 118); // 60 frames = 2m
    EXPECT_FALSE(workspace::CanSplit(data, 0));
    EXPECT_TRUE(workspace::CanSplit(data, 1));
    EXPECT_FALSE(workspace::ContextMenuAt(data, ListKind::Scene, 0, 5, false).bSplitEnabled);
    EXPECT_TRUE(workspace::ContextMenuAt(data, ListKind::Scene, 1, 5, false).bSplitEnabled);
    EXPECT_FALSE(workspace::SplitRow(data, 0, 10).bChanged);
    EXPECT_EQ(data.diff_list.size(), 2u);
}

TEST(SceneListSplit, PositionAtFrameZeroGivesEarlierPartOfMinimumLength)
{
    CTarnwickData data = Project();
    AddScene(data, 100, 399);
    data.list_idx = 0;
    const std::string oldFile = data.diff_list[0].fileName;
    const workspace::ListChange change = workspace::SplitRow(data, 0, 0);
    ASSERT_TRUE(change.bChanged);
    ASSERT_EQ(data.diff_list.size(), 2u);
    EXPECT_EQ(data.diff_list[0].framNo_first, 100);
    EXPECT_EQ(data.diff_list[0].framNo_second, 129);
    EXPECT_EQ(data.diff_list[1].framNo_first, 130);
    EXPECT_EQ(data.diff_list[1].framNo_second, 399);
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{"/videos/trip.mov_out/trip_seg_100_129.mp4",
                                        "/videos/trip.mov_out/trip_seg_130_399.mp4"}));
    EXPECT_EQ(change.filesToDelete, (std::vector<std::string>{oldFile}));
    EXPECT_EQ(change.scenesToCheck, (std::vector<int>{0, 1}));
    EXPECT_EQ(data.list_idx, 1);
}

TEST(SceneListSplit, LaterPartKeepsAtLeastTheMinimum)
{
    CTarnwickData data = Project();
    AddScene(data, 0, 299);
    data.list_idx = 0;
    ASSERT_TRUE(workspace::SplitRow(data, 0, 290).bChanged);
    EXPECT_EQ(data.diff_list[0].framNo_second, 269);
    EXPECT_EQ(data.diff_list[1].framNo_first, 270); // 299 - 30 + 1
}

TEST(SceneListSplit, CaptionTimesFollowTheParts)
{
    CTarnwickData data = Project();
    AddScene(data, 0, 299); // 10 s
    data.diff_list[0].SetCaption(1.0, 10.0, "Cat");
    data.diff_list[0].capParam.font_size = 40;
    data.diff_list[0].bEnable = false;
    data.list_idx = 0;
    ASSERT_TRUE(workspace::SplitRow(data, 0, 90).bChanged);
    const core::CapParam &earlier = data.diff_list[0].capParam;
    const core::CapParam &later = data.diff_list[1].capParam;
    EXPECT_EQ(later.caption, "Cat");
    EXPECT_DOUBLE_EQ(later.capTime_first, 1.0);
    EXPECT_DOUBLE_EQ(later.capTime_second, 7.0); // 210 frames
    EXPECT_EQ(later.font_size, 40);
    EXPECT_EQ(earlier.caption, "Cat");
    EXPECT_DOUBLE_EQ(earlier.capTime_first, 0.0);
    EXPECT_DOUBLE_EQ(earlier.capTime_second, 3.0); // old end 10 less 7
    EXPECT_EQ(earlier.font_size, 24);              // default caption settings
    EXPECT_TRUE(data.diff_list[0].bEnable);
    EXPECT_TRUE(data.diff_list[0].bAnalyzed);
}

TEST(SceneListDelete, OnlyRowGivesTheDefaultSceneNotAnEmptyList)
{
    CTarnwickData data = Project();
    AddScene(data, 500, 599);
    data.list_idx = 0;
    const workspace::ListChange change = workspace::DeleteRow(data, 0, ListKind::Scene);
    EXPECT_TRUE(change.bResetScenes);
    EXPECT_TRUE(change.filesToDelete.empty());
    ASSERT_EQ(data.diff_list.size(), 1u);
    workspace::MakeDefaultScene(data); // what the caller does with bResetScenes
    ASSERT_EQ(data.diff_list.size(), 1u);
    EXPECT_EQ(data.diff_list[0].framNo_first, 0);
    EXPECT_EQ(data.diff_list[0].framNo_second, 89);
}

TEST(SceneListDelete, LastRowClampsTheCurrentRowAndDeletesTheFile)
{
    CTarnwickData data = ThreeScenes();
    data.list_idx = 2;
    const workspace::ListChange change = workspace::DeleteRow(data, 2, ListKind::Scene);
    EXPECT_TRUE(change.bChanged);
    EXPECT_FALSE(change.bResetScenes);
    EXPECT_EQ(data.diff_list.size(), 2u);
    EXPECT_EQ(data.list_idx, 1);
    EXPECT_EQ(change.filesToDelete, (std::vector<std::string>{"/seg/400_499.mp4"}));
    EXPECT_EQ(change.scenesToCheck, (std::vector<int>{1}));
    EXPECT_EQ(change.nDeletedFrames, 100);
}

TEST(MergeListDelete, KeepsTheFileAndChecksNothing)
{
    CTarnwickData data = Project();
    data.diff_list = {MergeRow("/a.mp4", 300), MergeRow("/b.mp4", 200)};
    data.list_idx = 0;
    const workspace::ListChange change = workspace::DeleteRow(data, 0, ListKind::Merge);
    EXPECT_TRUE(change.bChanged);
    EXPECT_TRUE(change.filesToDelete.empty());
    EXPECT_TRUE(change.scenesToCheck.empty());
    EXPECT_EQ(change.nDeletedFrames, 300);
    EXPECT_EQ(FileNames(data), (std::vector<std::string>{"/b.mp4"}));
    EXPECT_EQ(data.list_idx, 0);
}

TEST(SceneListDuplicate, CurrentRowIsTheLowerOfTheTwo)
{
    CTarnwickData data = ThreeScenes();
    ASSERT_TRUE(workspace::DuplicateRow(data, 1).bChanged);
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{
                  "/seg/0_99.mp4", "/seg/200_299.mp4", "/seg/200_299.mp4", "/seg/400_499.mp4"}));
    EXPECT_EQ(data.list_idx, 2);
}

TEST(SceneListCheck, StoresTheStateAndReportsOnlyChanges)
{
    CTarnwickData data = ThreeScenes();
    EXPECT_FALSE(workspace::SetChecked(data, 0, true));
    EXPECT_TRUE(workspace::SetChecked(data, 0, false));
    EXPECT_FALSE(data.diff_list[0].bEnable);
    EXPECT_FALSE(workspace::SetChecked(data, 5, false));
}

TEST(SceneListMove, RowMovesAndOthersShift)
{
    CTarnwickData data = ThreeScenes();
    AddScene(data, 600, 699);
    data.list_idx = 1;
    ASSERT_TRUE(workspace::MoveRow(data, 0, 2));
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{
                  "/seg/200_299.mp4", "/seg/400_499.mp4", "/seg/0_99.mp4", "/seg/600_699.mp4"}));
    EXPECT_EQ(data.list_idx, 0); // still the scene 200..299
    EXPECT_FALSE(workspace::MoveRow(data, 1, 1));
}

TEST(SceneListMove, TargetBeyondTheEndGoesToTheLastRow)
{
    CTarnwickData data = ThreeScenes();
    data.list_idx = 0;
    ASSERT_TRUE(workspace::MoveRow(data, 0, 99));
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{"/seg/200_299.mp4", "/seg/400_499.mp4", "/seg/0_99.mp4"}));
    EXPECT_EQ(data.list_idx, 2);
}

TEST(ListRowDrag, FastMoveSwapsOnlyTheTwoRows)
{
    CTarnwickData data = Project();
    for (int i = 0; i < 6; ++i) {
        AddScene(data, i * 100, i * 100 + 99);
    }
    EXPECT_EQ(workspace::DragToRow(data, 0, 4), 4);
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{"/seg/400_499.mp4",
                                        "/seg/100_199.mp4",
                                        "/seg/200_299.mp4",
                                        "/seg/300_399.mp4",
                                        "/seg/0_99.mp4",
                                        "/seg/500_599.mp4"}));
    EXPECT_EQ(data.list_idx, 4);
}

TEST(ListRowDrag, DropOnTheSameRowChangesNothing)
{
    CTarnwickData data = ThreeScenes();
    const std::vector<std::string> before = FileNames(data);
    EXPECT_EQ(workspace::DragToRow(data, 2, 2), 2);
    EXPECT_EQ(workspace::DragToRow(data, 2, -1), 2);
    EXPECT_EQ(FileNames(data), before);
    EXPECT_EQ(data.list_idx, 1);
}

TEST(ListRowDrag, BelowTheLastVisibleRowScrollsAndStopsAtTheLastRow)
{
    CTarnwickData data = Project();
    for (int i = 0; i < 10; ++i) {
        AddScene(data, i * 10, i * 10 + 9);
    }
    int top = 0;
    int drag = 0;
    for (int step = 0; step < 12; ++step) {
        top = workspace::DragScrollTopRow(top, 4, 10, PointerZone::Below);
        const int target = workspace::DragTargetRow(-1, top, 4, 10, PointerZone::Below);
        if (step == 0) {
            EXPECT_EQ(target, 4); // one line down: rows 1 to 4 visible
        }
        drag = workspace::DragToRow(data, drag, target);
    }
    EXPECT_EQ(top, 6);
    EXPECT_EQ(drag, 9);
    EXPECT_EQ(data.diff_list[9].fileName, "/seg/0_9.mp4");
}

TEST(ListRowDrag, TargetFromTheHitTest)
{
    EXPECT_EQ(workspace::DragTargetRow(3, 0, 4, 10, PointerZone::Inside), 3);
    EXPECT_EQ(workspace::DragTargetRow(-1, 2, 4, 10, PointerZone::Inside), -1);
    EXPECT_EQ(workspace::DragTargetRow(-1, 2, 4, 10, PointerZone::Above), 2);
    EXPECT_EQ(workspace::DragTargetRow(-1, 0, 4, 3, PointerZone::Below), 2);
    EXPECT_EQ(workspace::DragScrollTopRow(0, 4, 10, PointerZone::Above), 0);
    EXPECT_EQ(workspace::DragScrollTopRow(3, 4, 10, PointerZone::Above), 2);
}

TEST(SceneListContextMenu, NoneOverFrameNumberCellsButOverTheCaptionCell)
{
    const CTarnwickData data = ThreeScenes();
    for (int column = 1; column <= 3; ++column) {
        EXPECT_FALSE(workspace::ContextMenuAt(data, ListKind::Scene, 1, column, false).bShow);
    }
    const workspace::ContextMenu menu =
        workspace::ContextMenuAt(data, ListKind::Scene, 1, 5, false);
    EXPECT_TRUE(menu.bShow);
    EXPECT_TRUE(menu.bHasSplit);
    EXPECT_TRUE(menu.bSplitEnabled);
    EXPECT_TRUE(menu.bHasDelete);
    EXPECT_TRUE(menu.bHasDuplicate);
}

TEST(SceneListContextMenu, NoneDuringARenderJobOrOffTheRows)
{
    const CTarnwickData data = ThreeScenes();
    EXPECT_FALSE(workspace::ContextMenuAt(data, ListKind::Scene, 1, 5, true).bShow);
    EXPECT_FALSE(workspace::ContextMenuAt(data, ListKind::Scene, -1, 5, false).bShow);
    EXPECT_FALSE(workspace::ContextMenuAt(data, ListKind::Scene, 3, 5, false).bShow);
}

TEST(MergeListContextMenu, AnyColumnWithoutSplit)
{
    CTarnwickData data = Project();
    data.diff_list = {MergeRow("/a.mp4", 300)};
    const workspace::ContextMenu menu =
        workspace::ContextMenuAt(data, ListKind::Merge, 0, 2, false);
    EXPECT_TRUE(menu.bShow);
    EXPECT_FALSE(menu.bHasSplit);
    EXPECT_TRUE(menu.bHasDelete);
    EXPECT_TRUE(menu.bHasDuplicate);
}
