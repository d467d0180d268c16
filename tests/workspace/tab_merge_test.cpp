// The merge workspace model: names, choices, list commands and drops.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/language.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/tab_merge.h"

using testsupport::TempDir;
using workspace::CTarnwickTabMerge;

namespace {

struct MergeRig : testsupport::TabRig
{
    MergeRig()
        : tab(view, loop, host)
    {
        host.SetTabs(nullptr, &tab);
        host.SetActiveTab(1);
        tab.Init();
    }
    CTarnwickTabMerge tab;
};

std::string Clip(const TempDir &dir, const std::string &name)
{
    const std::string path = dir.file(name);
    testsupport::MakeClip(path, "testsrc2=size=160x120:rate=25:duration=1");
    return path;
}

} // namespace

TEST(MergeTab, ADroppedPathNoToolCanTakeIsToldAndLeftOut)
{
    core::LoadLanguage(core::kLanguageEnglish);
    TempDir dir;
    MergeRig rig;
    const std::string a = Clip(dir, "a.mp4");
    const std::string quoted = dir.file("b\"c.mp4");
    std::filesystem::copy_file(a, quoted);
    rig.tab.DropFiles({quoted, a});
    ASSERT_EQ(rig.view.errors.size(), 1u);
    EXPECT_EQ(rig.view.errors[0].rfind(quoted + ": the name holds a double quote", 0), 0u);
    ASSERT_EQ(rig.view.rows.size(), 1u);
    EXPECT_EQ(rig.tab.Data().diff_list[0].strWorkFile, a);
    rig.tab.OutputNameConfirmed(std::string(201, 'n') + ".mp4");
    ASSERT_EQ(rig.view.errors.size(), 2u);
    EXPECT_NE(rig.view.errors[1].find("the file name is too long"), std::string::npos);
    EXPECT_EQ(rig.tab.Data().output_name, "a_conv_1920x1080_59.94.mp4");
}

TEST(MergeTab, FirstDropIntoAnEmptyTabMakesTheDefaultFolderAndName)
{
    TempDir dir;
    MergeRig rig;
    const std::string a = Clip(dir, "a.mp4");
    rig.tab.DropFiles({a});
    EXPECT_EQ(rig.tab.Data().output_folder, dir.path() + "/conv_out/");
    EXPECT_EQ(rig.tab.Data().output_name, "a_conv_1920x1080_59.94.mp4");
    ASSERT_EQ(rig.view.rows.size(), 1u);
    EXPECT_EQ(rig.view.rows[0].columns[2], "Unanalyzed");
    EXPECT_EQ(rig.tab.Data().diff_list[0].fileName,
              dir.path() + "/conv_out/a_seg_1920x1080_59.94.mp4");
}

TEST(MergeTab, ChangingTheRateLaterDoesNotRename)
{
    TempDir dir;
    MergeRig rig;
    rig.tab.DropFiles({Clip(dir, "a.mp4")});
    rig.tab.SetRateIndex(5);
    EXPECT_EQ(rig.tab.Data().output_name, "a_conv_1920x1080_59.94.mp4");
    EXPECT_EQ(rig.tab.Data().diff_list[0].fileName,
              dir.path() + "/conv_out/a_seg_1920x1080_59.94.mp4");
    rig.tab.DropFiles({Clip(dir, "b.mp4")});
    EXPECT_EQ(rig.tab.Data().diff_list[1].fileName,
              dir.path() + "/conv_out/b_seg_1920x1080_29.97.mp4");
}

TEST(MergeTab, FilesOfTheSameNameFromTwoFoldersKeepSegmentsOfTheirOwn)
{
    TempDir dir;
    MergeRig rig;
    std::filesystem::create_directories(dir.file("A"));
    std::filesystem::create_directories(dir.file("B"));
    const std::string a = Clip(dir, "A/cam.mp4");
    const std::string b = Clip(dir, "B/cam.mp4");
    rig.tab.DropFiles({a, b, a});
    ASSERT_EQ(rig.tab.Data().diff_list.size(), 3u);
    const std::string folder = rig.tab.Data().output_folder;
    EXPECT_EQ(rig.tab.Data().diff_list[0].fileName, folder + "cam_seg_1920x1080_59.94.mp4");
    EXPECT_EQ(rig.tab.Data().diff_list[1].fileName, folder + "cam_seg_1920x1080_59.94_2.mp4");
    // The same file again shares its own segment.
    EXPECT_EQ(rig.tab.Data().diff_list[2].fileName, folder + "cam_seg_1920x1080_59.94.mp4");
}

TEST(MergeTab, AFileThatTheProbeRefusesLeavesNoRow)
{
    TempDir dir;
    MergeRig rig;
    const std::string text = dir.file("notes.txt");
    ASSERT_TRUE(testsupport::WriteFile(text, "not a video"));
    rig.tab.DropFiles({text, Clip(dir, "a.mp4")});
    ASSERT_EQ(rig.tab.Data().diff_list.size(), 1u);
    EXPECT_EQ(rig.tab.Data().diff_list[0].strWorkFile, dir.file("a.mp4"));
}

TEST(MergeTab, AfterAResetOfTheSettingsBothListsShowIndexThree)
{
    MergeRig rig;
    rig.tab.SetSizeIndex(0);
    rig.tab.SetRateIndex(7);
    rig.tab.ResetSettings();
    EXPECT_EQ(rig.view.fields.nSizeIndex, 3);
    EXPECT_EQ(rig.view.fields.nRateIndex, 3);
    EXPECT_EQ(rig.tab.Process().nSizeIndex, 3);
}

TEST(MergeTab, DeletingTheLastRowEmptiesTheListAndRemovesTheTargetsSegments)
{
    TempDir dir;
    MergeRig rig;
    rig.tab.DropFiles({Clip(dir, "a.mp4")});
    std::filesystem::create_directories(rig.tab.Data().output_folder);
    const std::string segment = rig.tab.Data().diff_list[0].fileName;
    const std::string other = rig.tab.Data().output_folder + "a_seg_1280x720_59.94.mp4";
    ASSERT_TRUE(testsupport::WriteFile(segment, "x"));
    ASSERT_TRUE(testsupport::WriteFile(other, "x"));
    rig.tab.DeleteRow();
    EXPECT_TRUE(rig.tab.Data().diff_list.empty());
    EXPECT_TRUE(rig.view.rows.empty());
    EXPECT_FALSE(std::filesystem::exists(segment));
    EXPECT_TRUE(std::filesystem::exists(other)); // other targets' segments stay
}

TEST(MergeTab, AFastDragFromRowOneToRowFiveSwapsOnlyThoseTwo)
{
    TempDir dir;
    MergeRig rig;
    const std::string clip = Clip(dir, "a.mp4");
    std::vector<std::string> files;
    for (int i = 1; i <= 6; ++i) {
        const std::string copy = dir.file("f" + std::to_string(i) + ".mp4");
        std::filesystem::copy_file(clip, copy);
        files.push_back(copy);
    }
    rig.tab.DropFiles(files);
    rig.tab.BeginDrag(0);
    rig.tab.DragOver(4, 0, 10, workspace::PointerZone::Inside);
    rig.tab.EndDrag();
    std::vector<std::string> order;
    for (const core::SceneEntry &entry : rig.tab.Data().diff_list) {
        order.push_back(std::filesystem::path(entry.strWorkFile).filename().string());
    }
    EXPECT_EQ(
        order,
        (std::vector<std::string>{"f5.mp4", "f2.mp4", "f3.mp4", "f4.mp4", "f1.mp4", "f6.mp4"}));
    EXPECT_EQ(rig.tab.DragRow(), -1);
}

TEST(MergeTab, AnalysisJobFillsTheRowsThroughItsMessages)
{
    TempDir dir;
    MergeRig rig;
    rig.tab.DropFiles({Clip(dir, "a.mp4"), Clip(dir, "b.mp4")});
    rig.tab.Analysis();
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(rig.tab.LastJob().nResult, 0);
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_EQ(rig.view.rows[0].columns[2], "160 x 120");
    EXPECT_EQ(rig.view.rows[1].columns[7], rig.view.rows[0].columns[5]);
}

TEST(MergeTab, AfterEachRowsAnalysisTheListIsRebuiltWithTheSelectionKept)
{
    TempDir dir;
    MergeRig rig;
    rig.tab.DropFiles({Clip(dir, "a.mp4"), Clip(dir, "b.mp4")});
    const int shows = rig.view.listShows;
    rig.tab.Analysis();
    testsupport::WaitForJob(rig.loop, rig.tab);
    ASSERT_EQ(rig.tab.LastJob().nResult, 0);
    // Each analysed row hands the list back to the tab, which rebuilds it whole.
    EXPECT_GE(rig.view.listShows, shows + 2);
    EXPECT_EQ(rig.tab.Data().list_idx, 1) << "the last analysed row stays selected";
    EXPECT_EQ(rig.view.rows.size(), 2u);
}

namespace {

// Two rows as a drop leaves them, without tools.
void FillRows(core::CTarnwickData &data, const std::string &folder)
{
    data.output_folder = folder + "/conv_out/";
    data.output_name = "a_conv_1920x1080_59.94.mp4";
    for (const char *name : {"a", "b"}) {
        core::SceneEntry row;
        row.strWorkFile = folder + "/" + name + ".mp4";
        row.fileName = data.output_folder + name + "_seg_1920x1080_59.94.mp4";
        data.diff_list.push_back(row);
    }
    data.list_idx = 1;
}

TEST(MergeTab, ResetListAsksFirstAndThenEmptiesTheListAndDeletesTheSegments)
{
    TempDir dir;
    MergeRig rig;
    FillRows(rig.tab.Data(), dir.path());
    std::filesystem::create_directories(rig.tab.Data().output_folder);
    const std::string segment = rig.tab.Data().diff_list[0].fileName;
    ASSERT_TRUE(testsupport::WriteFile(segment, "x"));
    rig.view.answer = false;
    rig.tab.ResetList();
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u) << "a No changes nothing";
    EXPECT_TRUE(std::filesystem::exists(segment));
    rig.view.answer = true;
    rig.tab.ResetList();
    EXPECT_TRUE(rig.tab.Data().diff_list.empty());
    EXPECT_EQ(rig.tab.Data().list_idx, -1);
    EXPECT_TRUE(rig.view.rows.empty());
    EXPECT_FALSE(std::filesystem::exists(segment));
    EXPECT_EQ(rig.view.questions.size(), 2u);
}

TEST(MergeTab, NewProjectEmptiesTheListAndForgetsTheFolderAndName)
{
    TempDir dir;
    MergeRig rig;
    FillRows(rig.tab.Data(), dir.path());
    rig.tab.NewProject();
    EXPECT_TRUE(rig.tab.Data().diff_list.empty());
    EXPECT_TRUE(rig.view.rows.empty());
    EXPECT_EQ(rig.tab.Data().output_folder, "");
    EXPECT_EQ(rig.tab.Data().output_name, "");
    EXPECT_EQ(rig.view.picture, "");
}

} // namespace

namespace {

TEST(MergeTab, ConvertAndMergeDeletesOldSegmentsFirstAndJoinsTheFiles)
{
    TempDir dir;
    MergeRig rig;
    rig.tab.SetSizeIndex(8); // 352 x 288
    rig.tab.DropFiles({Clip(dir, "a.mp4"), Clip(dir, "b.mp4")});
    const std::string stale = rig.tab.Data().output_folder + "old_seg_352x288_59.94.mp4";
    std::filesystem::create_directories(rig.tab.Data().output_folder);
    ASSERT_TRUE(testsupport::WriteFile(stale, "x"));
    rig.tab.ConvertAndMerge();
    testsupport::WaitForJob(rig.loop, rig.tab);
    EXPECT_EQ(rig.tab.LastJob().nResult, 0) << rig.tab.LastJob().failure;
    EXPECT_FALSE(std::filesystem::exists(stale)) << "the target's segments go first";
    EXPECT_TRUE(std::filesystem::is_regular_file(rig.tab.Data().GetOutputPath()));
    for (const core::SceneEntry &row : rig.tab.Data().diff_list) {
        EXPECT_TRUE(std::filesystem::is_regular_file(row.fileName)) << row.fileName;
    }
}

} // namespace
