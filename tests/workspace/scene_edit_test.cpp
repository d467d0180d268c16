// Tests of the scene edits as the list commands make them: where a split can begin its later
// part and that it begins exactly there, and edits made all together before the segments they
// made stale are deleted.
#include "workspace/scene_edit.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"
#include "workspace/scene_list.h"

using core::CTarnwickData;
using core::SceneEntry;
using testsupport::TempDir;
using workspace::ListKind;
using workspace::SceneEdit;

namespace {

namespace fs = std::filesystem;

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

std::vector<std::string> FileNames(const CTarnwickData &data)
{
    std::vector<std::string> names;
    for (const SceneEntry &entry : data.diff_list) {
        names.push_back(entry.fileName);
    }
    return names;
}

// Three scenes of 100 frames whose segments exist in dir, as a scan leaves them.
CTarnwickData ScenesOnDisk(const TempDir &dir)
{
    CTarnwickData data = Project();
    data.input_file = dir.file("trip.mov");
    data.output_folder = dir.path() + "/";
    for (int first : {0, 200, 400}) {
        const std::string file = dir.file("trip_seg_" + std::to_string(first) + "_" +
                                          std::to_string(first + 99) + ".mp4");
        EXPECT_TRUE(testsupport::WriteFile(file, "segment"));
        data.diff_list.emplace_back(first, first + 99, file);
    }
    data.list_idx = 0;
    return data;
}

SceneEdit Edit(SceneEdit::Kind kind, int scene, int value = 0)
{
    SceneEdit edit;
    edit.kind = kind;
    edit.nScene = scene;
    edit.nValue = value;
    return edit;
}

} // namespace

TEST(SceneListSplit, RangeKeepsTheMinimumOnEachSide)
{
    CTarnwickData data = Project();
    AddScene(data, 100, 399);
    const std::optional<workspace::SplitFrames> range = workspace::SplitRange(data, 0);
    ASSERT_TRUE(range.has_value());
    EXPECT_EQ(range->nFirst, 130); // 100 + 30
    EXPECT_EQ(range->nLast, 370);  // 399 - 30 + 1
    EXPECT_FALSE(workspace::SplitRange(data, 1).has_value());
}

TEST(SceneListSplit, AtAFrameTheLaterPartBeginsExactlyThere)
{
    for (int frame : {130, 131, 250, 370}) {
        SCOPED_TRACE(frame);
        CTarnwickData data = Project();
        AddScene(data, 100, 399);
        data.list_idx = 0;
        ASSERT_TRUE(workspace::SplitRowAt(data, 0, frame).bChanged);
        ASSERT_EQ(data.diff_list.size(), 2u);
        EXPECT_EQ(data.diff_list[0].framNo_first, 100);
        EXPECT_EQ(data.diff_list[0].framNo_second, frame - 1);
        EXPECT_EQ(data.diff_list[1].framNo_first, frame);
        EXPECT_EQ(data.diff_list[1].framNo_second, 399);
    }
}

TEST(SceneListSplit, AtAFrameOutsideTheRangeChangesNothing)
{
    for (int frame : {100, 101, 129, 371, 399, 400, -1}) {
        SCOPED_TRACE(frame);
        CTarnwickData data = Project();
        AddScene(data, 100, 399);
        data.list_idx = 0;
        const workspace::ListChange change = workspace::SplitRowAt(data, 0, frame);
        EXPECT_FALSE(change.bChanged);
        EXPECT_TRUE(change.filesToDelete.empty());
        EXPECT_EQ(FileNames(data), (std::vector<std::string>{"/seg/100_399.mp4"}));
        EXPECT_EQ(data.list_idx, 0);
    }
}

TEST(SceneListSplit, PreviewPositionAndFrameMeanTheSameSplit)
{
    // The context menu's split at preview offset p is the split at frame first + p, held
    // inside the range.
    for (int offset : {0, 29, 30, 75, 270, 271, 299, 5000}) {
        SCOPED_TRACE(offset);
        CTarnwickData byPosition = Project();
        AddScene(byPosition, 100, 399);
        CTarnwickData byFrame = byPosition;
        ASSERT_TRUE(workspace::SplitRow(byPosition, 0, offset).bChanged);
        ASSERT_TRUE(workspace::SplitRowAt(byFrame, 0, std::clamp(100 + offset, 130, 370)).bChanged);
        EXPECT_EQ(FileNames(byPosition), FileNames(byFrame));
    }
}

TEST(SceneListSplit, WithoutAFrameRateEachPartStillKeepsAFrame)
{
    CTarnwickData data = Project();
    data.viCurrent.fps = 0; // no minimum can be computed
    AddScene(data, 10, 10);
    AddScene(data, 20, 21);
    EXPECT_FALSE(workspace::CanSplit(data, 0));
    EXPECT_FALSE(workspace::SplitRow(data, 0, 0).bChanged);
    ASSERT_TRUE(workspace::SplitRow(data, 1, 0).bChanged);
    EXPECT_EQ(data.diff_list[1].framNo_first, 20);
    EXPECT_EQ(data.diff_list[1].framNo_second, 20);
    EXPECT_EQ(data.diff_list[2].framNo_first, 21);
}

TEST(SceneListSplit, ReversedSceneCannotBeSplit)
{
    CTarnwickData data = Project();
    AddScene(data, 300, 100);
    EXPECT_FALSE(workspace::CanSplit(data, 0));
    EXPECT_FALSE(workspace::SplitRowAt(data, 0, 200).bChanged);
}

TEST(SceneListSplit, SegmentThatADuplicateStillNamesIsKept)
{
    CTarnwickData data = Project();
    AddScene(data, 100, 399);
    ASSERT_TRUE(workspace::DuplicateRow(data, 0).bChanged);
    const workspace::ListChange change = workspace::SplitRowAt(data, 1, 200);
    ASSERT_TRUE(change.bChanged);
    EXPECT_TRUE(change.filesToDelete.empty());
    EXPECT_EQ(data.diff_list[0].fileName, "/seg/100_399.mp4");
}

TEST(SceneListDelete, SegmentThatADuplicateStillNamesIsKept)
{
    CTarnwickData data = ThreeScenes();
    ASSERT_TRUE(workspace::DuplicateRow(data, 1).bChanged);
    workspace::ListChange change = workspace::DeleteRow(data, 2, ListKind::Scene);
    ASSERT_TRUE(change.bChanged);
    EXPECT_TRUE(change.filesToDelete.empty());
    change = workspace::DeleteRow(data, 1, ListKind::Scene);
    EXPECT_EQ(change.filesToDelete, (std::vector<std::string>{"/seg/200_299.mp4"}));
}

TEST(SceneEdits, RefusedEditLeavesTheListAndEverySegmentAsTheyWere)
{
    // A good split followed by an edit that cannot be made, in either order.
    using Kind = SceneEdit::Kind;
    const std::vector<std::vector<SceneEdit>> cases = {
        {Edit(Kind::Split, 1, 50), Edit(Kind::Delete, 9)},
        {Edit(Kind::Delete, 2), Edit(Kind::Split, 1, 10)},
        {Edit(Kind::Delete, 1), Edit(Kind::Delete, 1), Edit(Kind::Delete, 1), Edit(Kind::Tick, 2)},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        TempDir dir;
        CTarnwickData data = ScenesOnDisk(dir);
        const std::vector<std::string> before = FileNames(data);
        EXPECT_FALSE(workspace::ApplySceneEdits(data, cases[i]).empty());
        EXPECT_EQ(FileNames(data), before);
        EXPECT_EQ(data.list_idx, 0);
        for (const std::string &file : before) {
            EXPECT_TRUE(fs::exists(file)) << file;
        }
    }
}

TEST(SceneEdits, MadeTogetherTheyDeleteOnlyWhatNoSceneNamesAnyMore)
{
    using Kind = SceneEdit::Kind;
    TempDir dir;
    CTarnwickData data = ScenesOnDisk(dir);
    const std::vector<std::string> before = FileNames(data);
    // Scene 1 duplicated and its copy deleted: its segment is still named. Scene 3 (now 4)
    // split: its segment names frames no scene holds any more.
    ASSERT_EQ(
        workspace::ApplySceneEdits(
            data, {Edit(Kind::Duplicate, 1), Edit(Kind::Delete, 2), Edit(Kind::Split, 3, 450)}),
        "");
    EXPECT_EQ(FileNames(data),
              (std::vector<std::string>{before[0],
                                        before[1],
                                        dir.file("trip_seg_400_449.mp4"),
                                        dir.file("trip_seg_450_499.mp4")}));
    EXPECT_TRUE(fs::exists(before[0]));
    EXPECT_TRUE(fs::exists(before[1]));
    EXPECT_FALSE(fs::exists(before[2]));
}

TEST(SceneEdits, SplitOutsideItsRangeNamesTheFramesThatCanBeHonoured)
{
    TempDir dir;
    CTarnwickData data = ScenesOnDisk(dir);
    EXPECT_EQ(workspace::ApplySceneEdit(data, Edit(SceneEdit::Kind::Split, 2, 201)),
              "scene 2 holds frames 200 to 299: the later part must begin at frame 230 to 270, "
              "so that each part keeps at least 30 frames");
    data.diff_list[1].framNo_second = 259; // 60 frames: one place only
    EXPECT_EQ(workspace::ApplySceneEdit(data, Edit(SceneEdit::Kind::Split, 2, 229)),
              "scene 2 holds frames 200 to 259: the later part must begin at frame 230, so that "
              "each part keeps at least 30 frames");
    EXPECT_EQ(workspace::ApplySceneEdit(data, Edit(SceneEdit::Kind::Split, 2, 230)), "");
    EXPECT_EQ(data.diff_list[2].framNo_first, 230);
}
