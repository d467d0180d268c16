// The scene workspace's project commands without tools: opening a project's list without its
// video, the list edits by scene number, the project choosers, the typed input path, and the
// caption font and position.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/language.h"
#include "core/tarnwick_data.h"
#include "support/recording_view.h"
#include "support/test_support.h"
#include "workspace/scene_edit.h"
#include "workspace/tab_scene.h"

using testsupport::ReadFile;
using testsupport::TabRig;
using testsupport::TempDir;
using workspace::CTarnwickTabScene;
using workspace::FileChoice;
using workspace::SceneEdit;

namespace {

struct SceneRig : TabRig
{
    SceneRig()
        : tab(view, loop, host)
    {
        core::LoadLanguage(core::kLanguageEnglish);
        host.SetTabs(&tab, nullptr);
    }
    CTarnwickTabScene tab;
};

// A saved project of a 300-frame video at 30 fps that is not there, with two scenes.
std::string SaveProjectOfAGoneVideo(const TempDir &dir, const std::string &name)
{
    core::CTarnwickData data;
    data.input_file = dir.file("gone.mp4");
    data.output_folder = dir.file("gone.mp4_out") + "/";
    data.output_name = "gone_trim.mp4";
    data.viInput.fps = 30;
    data.viInput.frame_num = 300;
    data.diff_list.emplace_back(0, 89, data.output_folder + "a.mp4");
    data.diff_list.emplace_back(150, 239, data.output_folder + "b.mp4");
    const std::string path = dir.file(name);
    EXPECT_TRUE(data.SaveProjectFile(path));
    return path;
}

bool Mentions(const std::vector<std::string> &texts, const std::string &part)
{
    for (const std::string &text : texts) {
        if (text.find(part) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(SceneTabProjectList, OpensTheListOfAProjectWhoseVideoIsGoneWithLengthsAtTheInputRate)
{
    TempDir dir;
    const std::string path = SaveProjectOfAGoneVideo(dir, "trip.twproj");
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(path), 0);
    EXPECT_TRUE(rig.tab.LastProjectRead().bRead);
    EXPECT_TRUE(rig.view.errors.empty()) << rig.view.errors.front();
    EXPECT_EQ(rig.tab.Data().project_file, path);
    EXPECT_EQ(rig.tab.Data().viCurrent.fps, 30);
    EXPECT_FALSE(rig.tab.IsJobRunning()) << "no analysis of the video";
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_EQ(rig.view.rows[1].columns[1], "150");
    EXPECT_EQ(rig.view.rows[1].columns[2], "239");
}

TEST(SceneTabProjectList, UnreadableFileKeepsTheOpenProjectAndNamesTheFile)
{
    TempDir dir;
    const std::string good = SaveProjectOfAGoneVideo(dir, "good.twproj");
    const std::string bad = dir.file("bad.twproj");
    ASSERT_TRUE(testsupport::WriteFile(bad, "{ this is not a project"));
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(good), 0);
    EXPECT_EQ(rig.tab.OpenProjectList(bad), -1);
    EXPECT_FALSE(rig.tab.LastProjectRead().bRead);
    EXPECT_NE(rig.tab.LastProjectRead().error.find(bad), std::string::npos);
    EXPECT_TRUE(Mentions(rig.view.errors, bad));
    EXPECT_EQ(rig.tab.Data().project_file, good);
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
}

TEST(SceneTabProjectList, ValuesThatCannotBeRightAreReportedAsWarnings)
{
    TempDir dir;
    const std::string path = dir.file("warned.twproj");
    ASSERT_TRUE(testsupport::WriteFile(
        path, R"({"input_file": "/v/a.mov", "fps": 25, "threshold": 5000})"));
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(path), 0);
    EXPECT_EQ(rig.tab.LastProjectRead().warnings,
              std::vector<std::string>{"threshold: 5000 is outside 0 to 1000; read as 1000"});
    EXPECT_EQ(rig.tab.Data().threshold.dValue, 1000.0);
}

TEST(SceneTabEdit, UntickByNumberShowsTheRowUnticked)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    SceneEdit edit;
    edit.kind = SceneEdit::Kind::Untick;
    edit.nScene = 2;
    EXPECT_EQ(rig.tab.ApplyEdit(edit), "");
    EXPECT_FALSE(rig.tab.Data().diff_list[1].bEnable);
    ASSERT_EQ(rig.view.rows.size(), 2u);
    EXPECT_FALSE(rig.view.rows[1].bChecked);
    EXPECT_TRUE(rig.view.rows[0].bChecked);
}

TEST(SceneTabEdit, SceneBeyondTheListIsRefusedAndChangesNothing)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    const int shows = rig.view.listShows;
    SceneEdit edit;
    edit.kind = SceneEdit::Kind::Delete;
    edit.nScene = 5;
    const std::string problem = rig.tab.ApplyEdit(edit);
    EXPECT_NE(problem.find("scene 5"), std::string::npos) << problem;
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
    EXPECT_EQ(rig.view.listShows, shows);
}

TEST(SceneTabEdit, TitleEditReachesTheCaptionFields)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    SceneEdit edit;
    edit.kind = SceneEdit::Kind::Title;
    edit.text = "Night {one}";
    EXPECT_EQ(rig.tab.ApplyEdit(edit), "");
    EXPECT_EQ(rig.tab.Data().capTitle.caption, "Night {one}");
}

TEST(SceneTabChoosers, OpenProjectChooserAsksForAnExistingProjectAndOpensIt)
{
    TempDir dir;
    const std::string path = SaveProjectOfAGoneVideo(dir, "trip.twproj");
    SceneRig rig;
    rig.tab.Init();
    rig.view.files.push_back(path);
    rig.tab.OpenProjectDialog();
    ASSERT_EQ(rig.view.fileChoices.size(), 1u);
    EXPECT_EQ(rig.view.fileChoices[0].kind, FileChoice::Kind::OpenProject);
    EXPECT_TRUE(rig.view.fileChoices[0].bMustExist);
    EXPECT_EQ(rig.view.fileChoices[0].defaultExt, "twproj");
    EXPECT_EQ(rig.tab.Data().project_file, path);
    // The video is gone: the list is kept and the user is told which file is missing.
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
    EXPECT_TRUE(Mentions(rig.view.errors, dir.file("gone.mp4")));
}

TEST(SceneTabChoosers, CancelledOpenProjectChooserChangesNothing)
{
    TempDir dir;
    const std::string path = SaveProjectOfAGoneVideo(dir, "trip.twproj");
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(path), 0);
    rig.tab.OpenProjectDialog();
    EXPECT_EQ(rig.view.fileChoices.size(), 1u);
    EXPECT_EQ(rig.tab.Data().project_file, path);
    EXPECT_TRUE(rig.view.errors.empty());
}

TEST(SceneTabChoosers, SaveAsChooserAsksBeforeOverwritingAndWritesTheChosenFile)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    const std::string copy = dir.file("copy.twproj");
    rig.view.files.push_back(copy);
    rig.tab.SaveProjectAsDialog();
    ASSERT_EQ(rig.view.fileChoices.size(), 1u);
    EXPECT_EQ(rig.view.fileChoices[0].kind, FileChoice::Kind::SaveProject);
    EXPECT_TRUE(rig.view.fileChoices[0].bAskOverwrite);
    EXPECT_FALSE(ReadFile(copy).empty());
    EXPECT_EQ(rig.tab.Data().project_file, copy);
    EXPECT_EQ(rig.view.title.rfind("copy.twproj", 0), 0u) << rig.view.title;
    // Cancelled: nothing is written.
    rig.tab.SaveProjectAsDialog();
    EXPECT_EQ(rig.tab.Data().project_file, copy);
}

TEST(SceneTabInputPath, BlankTextDoesNothingAndAMissingFileIsNamedTrimmed)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    rig.tab.InputPathConfirmed("   ");
    EXPECT_TRUE(rig.view.errors.empty());
    const std::string missing = dir.file("missing clip.mp4");
    rig.tab.InputPathConfirmed("  " + missing + "  ");
    ASSERT_EQ(rig.view.errors.size(), 1u);
    EXPECT_NE(rig.view.errors[0].find(missing + ": the file does not exist"), std::string::npos)
        << rig.view.errors[0];
    // The workspace stays as it was.
    EXPECT_EQ(rig.tab.Data().input_file, dir.file("gone.mp4"));
    EXPECT_EQ(rig.tab.Data().diff_list.size(), 2u);
}

TEST(SceneTabCaptionStyle, ChosenFontAndPositionReachTheCurrentScenesCaption)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    rig.tab.Data().list_idx = 1;
    rig.tab.CaptionTextConfirmed("Heron");
    workspace::FontChoice font;
    font.face = "DejaVu Serif";
    font.height = -48;
    font.weight = 700;
    font.bItalic = true;
    font.colour = 0x00FF00;
    rig.tab.ChooseFont(font);
    const core::CapParam &cap = rig.tab.Data().diff_list[1].capParam;
    EXPECT_EQ(cap.font_name, "DejaVu Serif");
    EXPECT_EQ(cap.font_size, 48);
    EXPECT_NE(cap.bold, 0);
    EXPECT_NE(cap.italic, 0);
    EXPECT_EQ(cap.color, 0x00FF00u);
    EXPECT_EQ(rig.tab.FontDialogSeed().face, "DejaVu Serif");
    rig.tab.CaptionPositionChanged(3);
    EXPECT_EQ(rig.tab.Data().diff_list[1].capParam.cap_pos_type, 3);
    // A row the position list does not have changes nothing.
    rig.tab.CaptionPositionChanged(99);
    EXPECT_EQ(rig.tab.Data().diff_list[1].capParam.cap_pos_type, 3);
    EXPECT_EQ(rig.tab.Data().diff_list[0].capParam.font_name, core::CapParam().font_name)
        << "only the current scene";
}

} // namespace

namespace {

TEST(SceneTabOutputNames, FolderAndNameTogetherMoveThePathsAndSaveTheProjectOnce)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    const std::string path = SaveProjectOfAGoneVideo(dir, "trip.twproj");
    ASSERT_EQ(rig.tab.OpenProjectList(path), 0);
    rig.tab.Data().bAutoSave = 1;
    EXPECT_EQ(rig.tab.ChangeOutputNames("  ", " "), 0) << "empty texts keep both";
    const std::string folder = dir.file("night");
    // The video is gone, so the opening after the save reports it; the project is saved first.
    rig.tab.ChangeOutputNames(folder, "night.mp4");
    core::CTarnwickData saved;
    ASSERT_TRUE(saved.LoadProjectFile(path));
    EXPECT_EQ(saved.output_folder, folder + "/");
    EXPECT_EQ(saved.output_name, "night.mp4");
    ASSERT_EQ(saved.diff_list.size(), 2u);
    EXPECT_EQ(saved.diff_list[0].fileName, folder + "/a.mp4");
    EXPECT_EQ(rig.tab.Data().output_folder, folder + "/");
}

TEST(SceneTabOutputNames, FolderThatCannotBeMadeChangesNothingAndIsNamed)
{
    TempDir dir;
    SceneRig rig;
    rig.tab.Init();
    ASSERT_EQ(rig.tab.OpenProjectList(SaveProjectOfAGoneVideo(dir, "trip.twproj")), 0);
    ASSERT_TRUE(testsupport::WriteFile(dir.file("plain"), "x"));
    const std::string folder = dir.file("plain/sub");
    EXPECT_EQ(rig.tab.ChangeOutputNames(folder, "night.mp4"), -1);
    EXPECT_TRUE(Mentions(rig.view.errors, folder));
    EXPECT_EQ(rig.tab.Data().output_folder, dir.file("gone.mp4_out") + "/");
    EXPECT_EQ(rig.tab.Data().output_name, "gone_trim.mp4");
}

} // namespace

namespace {

// A project of ten 10-frame scenes whose segments are named after their first frames.
void FillTenScenes(core::CTarnwickData &data)
{
    data.input_file = "/nowhere/clip.mp4";
    data.output_folder = "/nowhere/out/";
    data.output_name = "clip_trim.mp4";
    data.viInput.fps = 30;
    data.viInput.frame_num = 300;
    data.viCurrent = data.viInput;
    for (int i = 0; i < 10; ++i) {
        data.diff_list.emplace_back(i * 10, i * 10 + 9, "/seg/" + std::to_string(i * 10) + ".mp4");
    }
    data.list_idx = 0;
}

TEST(SceneTabDrag, HeldBelowTheListTheRowScrollsDownAndStopsAtTheLastRow)
{
    SceneRig rig;
    FillTenScenes(rig.tab.Data());
    rig.tab.BeginDrag(0);
    int top = 0;
    std::vector<int> tops;
    for (int step = 0; step < 12; ++step) {
        top = rig.tab.DragOver(-1, top, 4, workspace::PointerZone::Below);
        tops.push_back(top);
    }
    rig.tab.EndDrag();
    EXPECT_EQ(tops.front(), 1) << "one line down at a time";
    EXPECT_EQ(top, 6) << "the last page shows rows 7 to 10";
    EXPECT_EQ(rig.tab.Data().diff_list[9].fileName, "/seg/0.mp4");
    EXPECT_EQ(rig.tab.Data().list_idx, 9);
    EXPECT_EQ(rig.view.selected, 9);
}

TEST(SceneTabDrag, PointerInsideTheListOverNoRowMovesNothing)
{
    SceneRig rig;
    FillTenScenes(rig.tab.Data());
    rig.tab.BeginDrag(2);
    EXPECT_EQ(rig.tab.DragOver(-1, 3, 4, workspace::PointerZone::Inside), 3);
    rig.tab.EndDrag();
    EXPECT_EQ(rig.tab.Data().diff_list[2].fileName, "/seg/20.mp4");
    // Without a drag the pointer changes nothing either.
    EXPECT_EQ(rig.tab.DragOver(5, 3, 4, workspace::PointerZone::Below), 3);
    EXPECT_EQ(rig.tab.Data().diff_list[5].fileName, "/seg/50.mp4");
}

} // namespace
