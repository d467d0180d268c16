// The host model without a window: start-up, settings, recent list, menu, language, help and
// the close question, through recording views.
#include <gtest/gtest.h>

#include <algorithm>

#include "core/language.h"
#include "support/host_rig.h"
#include "workspace/settings_store.h"

namespace {

using testsupport::HostRig;
using workspace::HostResult;

core::AppSettingsRecord ReadBack(const HostRig &rig)
{
    std::optional<core::AppSettingsRecord> record = workspace::ReadSettingsRecord(rig.Store());
    EXPECT_TRUE(record.has_value()) << "no settings record was written";
    return record.value_or(core::AppSettingsRecord{});
}

std::string LabelOf(const workspace::TabTexts &texts, workspace::Control control)
{
    for (const auto &[c, text] : texts.labels) {
        if (c == control) {
            return text;
        }
    }
    return "<none>";
}

TEST(SettingsStore, AFileKeepsBytesAndTextsForTheNextProgram)
{
    testsupport::TempDir dir;
    const std::vector<uint8_t> bytes = {0, 1, 2, 0xFF, 0, 'a'};
    {
        workspace::FileSettingsStore store(dir.file("s.json"));
        EXPECT_FALSE(store.ReadBytes("App Settings", "All Data").has_value());
        EXPECT_TRUE(store.WriteBytes("App Settings", "All Data", bytes));
        EXPECT_TRUE(store.WriteText("Recent Files", "File1", "/x/日本.twproj"));
    }
    workspace::FileSettingsStore again(dir.file("s.json"));
    EXPECT_EQ(again.ReadBytes("App Settings", "All Data"), bytes);
    EXPECT_EQ(again.ReadText("Recent Files", "File1"), "/x/日本.twproj");
    EXPECT_FALSE(again.ReadText("App Settings", "All Data").has_value()) << "bytes are no text";
    EXPECT_TRUE(again.RemoveEntry("Recent Files", "File1"));
    EXPECT_FALSE(workspace::FileSettingsStore(dir.file("s.json"))
                     .ReadText("Recent Files", "File1")
                     .has_value());
}

TEST(SettingsStore, ADamagedFileReadsAsAnEmptyStore)
{
    testsupport::TempDir dir;
    ASSERT_TRUE(testsupport::WriteFile(dir.file("s.json"), "{\"App Settings\": [1, 2"));
    workspace::FileSettingsStore store(dir.file("s.json"));
    EXPECT_FALSE(workspace::ReadSettingsRecord(store).has_value());
}

TEST(SettingsStore, TheRecentListKeepsFiveProjectsMostRecentFirst)
{
    testsupport::TempDir dir;
    workspace::FileSettingsStore store(dir.file("s.json"));
    workspace::RecentFiles recent(store);
    for (int i = 1; i <= 7; ++i) {
        recent.Add("/p/" + std::to_string(i));
    }
    recent.Add("/p/5");
    recent.WriteOut();
    const std::vector<std::string> expected = {"/p/5", "/p/7", "/p/6", "/p/4", "/p/3"};
    EXPECT_EQ(recent.Entries(), expected);
    workspace::RecentFiles read(store);
    EXPECT_EQ(read.Entries(), expected);
    EXPECT_EQ(store.ReadText("Recent Files", "File1"), "/p/5");
    EXPECT_FALSE(store.ReadText("Recent Files", "File6").has_value());
}

TEST(HostModel, TwoFileNamesOnTheCommandLineTheFirstIsTheProject)
{
    const workspace::CommandLine line =
        workspace::ParseCommandLine({"-style", "/a/first.twproj", "/b/second.twproj", "-x"});
    EXPECT_EQ(line.project, "/a/first.twproj");
    const std::vector<std::string> passedOn = {"-style", "/b/second.twproj", "-x"};
    EXPECT_EQ(line.passedOn, passedOn);
}

TEST(HostModel, StartAppliesTheSettingsRecordToBothTabs)
{
    HostRig rig;
    core::AppSettingsRecord record;
    record.language = "ja-JP";
    record.bAutoSave = 1;
    record.nEncodePreset = 2;
    record.bUseCuda = 1; // kept even without a device
    rig.WriteRecord(record);
    workspace::HostModel &host = rig.Make();
    const workspace::StartReport report = host.Start({});
    EXPECT_TRUE(report.bSettingsRead);
    EXPECT_TRUE(report.bLanguageLoaded);
    EXPECT_EQ(report.language, "ja-JP");
    for (workspace::CTarnwickTab *tab : {&host.Tab(0), &host.Tab(1)}) {
        EXPECT_EQ(tab->Data().bAutoSave, 1);
        EXPECT_EQ(tab->Data().nEncodePreset, 2);
        EXPECT_EQ(tab->Data().bUseCuda, 1);
    }
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdJapanese));
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdPreset2));
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdHardwareAcceleration));
    EXPECT_FALSE(rig.view.menu.Enabled(workspace::kCmdHardwareAcceleration)) << "no device";
    ASSERT_FALSE(rig.view.relabels.empty());
    EXPECT_EQ(rig.view.relabels.back().sceneTabButton, "シーン編集");
}

TEST(HostModel, SystemLocaleDeDeUsesEnglishTextsKeepsTheTagAndChecksEnglish)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make(rig.Options("de-DE"));
    const workspace::StartReport report = host.Start({});
    EXPECT_FALSE(report.bSettingsRead);
    EXPECT_TRUE(report.bLanguageLoaded);
    EXPECT_EQ(core::GetLanguage(), "de-DE");
    EXPECT_NE(core::LoadedStringTablePath().find("TarnwickMP4Res_ENG.json"), std::string::npos);
    EXPECT_EQ(rig.view.relabels.back().sceneTabButton, "Scene Edit");
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdEnglish));
    EXPECT_FALSE(rig.view.menu.Checked(workspace::kCmdJapanese));
    host.Shutdown();
    EXPECT_EQ(ReadBack(rig).language, "de-DE");
}

TEST(HostModel, NoSystemLanguageFallsBackToEnglish)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make(rig.Options(""));
    EXPECT_EQ(host.Start({}).language, "en-US");
    EXPECT_EQ(core::GetLanguage(), "en-US");
}

TEST(HostModel, AMissingStringTableIsSaidAndTheStartGoesOn)
{
    HostRig rig;
    workspace::HostOptions options = rig.Options("ja-JP");
    options.stringTableFolders = {rig.dir.file("nowhere")};
    workspace::HostModel &host = rig.Make(options);
    const workspace::StartReport report = host.Start({});
    EXPECT_FALSE(report.bLanguageLoaded);
    ASSERT_EQ(rig.view.messages.size(), 1u);
    EXPECT_EQ(rig.view.messages[0].rfind(core::MessageText3073(), 0), 0u);
    EXPECT_EQ(core::GetLanguage(), "ja-JP") << "the tag is kept";
}

TEST(HostModel, AMissingCommandLinePathIsIgnoredWithoutAMessage)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    const workspace::StartReport report =
        host.Start(workspace::ParseCommandLine({rig.dir.file("gone.twproj")}));
    EXPECT_TRUE(report.project.empty());
    EXPECT_TRUE(rig.view.messages.empty());
    EXPECT_TRUE(rig.sceneView.errors.empty());
    EXPECT_TRUE(host.Scene().Data().project_file.empty());
}

TEST(HostModel, WithReopenLastOffNoProjectOpensAtStartWhateverTheRecentListHolds)
{
    HostRig rig;
    const std::string project = rig.dir.file("last.twproj");
    ASSERT_TRUE(testsupport::WriteFile(project, "{}"));
    core::AppSettingsRecord record;
    record.bReopenLast = 0;
    record.lastProject = project;
    rig.WriteRecord(record);
    rig.WriteRecent({project});
    workspace::HostModel &host = rig.Make();
    const workspace::StartReport report = host.Start({});
    EXPECT_TRUE(report.project.empty());
    EXPECT_TRUE(host.Scene().Data().project_file.empty());
    EXPECT_EQ(host.RecentProjects(), std::vector<std::string>{project});
}

TEST(HostModel, WithReopenLastOffTheRecordStillCarriesTheLastPath)
{
    HostRig rig;
    const std::string project = rig.dir.file("last.twproj");
    ASSERT_TRUE(testsupport::WriteFile(project, "{}"));
    core::AppSettingsRecord record;
    record.lastProject = project;
    rig.WriteRecord(record);
    rig.WriteRecent({project});
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_TRUE(host.Scene().Data().project_file.empty()) << "ApplySettings took the path";
    host.Shutdown();
    EXPECT_EQ(ReadBack(rig).lastProject, project);
}

TEST(HostModel, AnEmptyProjectAtExitDropsAGoneFirstRecentEntry)
{
    HostRig rig;
    const std::string kept = rig.dir.file("kept.twproj");
    ASSERT_TRUE(testsupport::WriteFile(kept, "{}"));
    rig.WriteRecent({rig.dir.file("gone.twproj"), kept});
    workspace::HostModel &host = rig.Make();
    host.Start({});
    host.Shutdown();
    EXPECT_EQ(host.RecentProjects(), std::vector<std::string>{kept});
    EXPECT_EQ(ReadBack(rig).lastProject, "");
    workspace::FileSettingsStore written = rig.Store();
    EXPECT_EQ(workspace::RecentFiles(written).Entries(), std::vector<std::string>{kept});
}

TEST(HostModel, ARecentEntryWhoseFileHasGoneDisappearsWhenChosenWithoutAMessage)
{
    HostRig rig;
    const std::string kept = rig.dir.file("kept.twproj");
    ASSERT_TRUE(testsupport::WriteFile(kept, "{}"));
    rig.WriteRecent({rig.dir.file("gone.twproj"), kept});
    workspace::HostModel &host = rig.Make();
    host.Start({});
    ASSERT_EQ(rig.view.menu.recent.size(), 2u);
    EXPECT_EQ(host.Command(workspace::kCmdRecentFirst), HostResult::Failed);
    EXPECT_TRUE(rig.view.messages.empty());
    EXPECT_TRUE(rig.sceneView.errors.empty());
    ASSERT_EQ(rig.view.recent.size(), 1u);
    EXPECT_EQ(rig.view.recent[0].path, kept);
    EXPECT_EQ(rig.view.recent[0].nCommand, workspace::kCmdRecentFirst);
    EXPECT_EQ(rig.view.menu.recent.size(), 1u);
    EXPECT_EQ(rig.Store().ReadText("Recent Files", "File1"), kept) << "written at once";
    EXPECT_FALSE(rig.Store().ReadText("Recent Files", "File2").has_value());
}

TEST(HostModel, EveryExitAsksAndOnlyYesCloses)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    rig.view.answer = false;
    EXPECT_EQ(host.Command(workspace::kCmdExit), HostResult::Declined);
    EXPECT_EQ(host.RequestExit(), HostResult::Declined);
    EXPECT_EQ(rig.view.questions, (std::vector<int>{3126, 3126}));
    EXPECT_EQ(rig.view.closes, 0);
    EXPECT_FALSE(host.IsShutDown());
    EXPECT_FALSE(workspace::ReadSettingsRecord(rig.Store()).has_value()) << "nothing written";
    rig.view.answer = true;
    EXPECT_EQ(host.RequestExit(), HostResult::Done);
    EXPECT_EQ(rig.view.closes, 1);
    EXPECT_TRUE(host.IsShutDown());
    EXPECT_TRUE(workspace::ReadSettingsRecord(rig.Store()).has_value());
    // A second close of the window after the shutdown asks nothing.
    EXPECT_EQ(host.RequestExit(), HostResult::Done);
    EXPECT_EQ(rig.view.questions.size(), 3u);
    EXPECT_EQ(host.Command(workspace::kCmdHelp), HostResult::Refused);
}

TEST(HostModel, TheHelpCommandWhileTheHelpViewerIsOpenDoesNothing)
{
    HostRig rig;
    std::filesystem::create_directories(rig.dir.file("doc"));
    ASSERT_TRUE(testsupport::WriteFile(rig.dir.file("doc/manual_en.txt"), "Scenes\r\nline 2\n"));
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.Command(workspace::kCmdHelp), HostResult::Done);
    EXPECT_EQ(host.Command(workspace::kCmdHelp), HostResult::Refused);
    ASSERT_EQ(rig.view.helps.size(), 1u);
    EXPECT_EQ(rig.view.helps[0].text, "Scenes\nline 2");
    EXPECT_EQ(rig.view.helps[0].title, "TarnwickMP4 Help");
    host.HelpClosed();
    EXPECT_EQ(host.Help(), HostResult::Done);
    EXPECT_EQ(rig.view.helps.size(), 2u);
}

TEST(HostModel, HelpShowsTheManualOfTheTabInFrontInTheLanguageAndAMissingOneEmpty)
{
    HostRig rig;
    std::filesystem::create_directories(rig.dir.file("doc"));
    ASSERT_TRUE(testsupport::WriteFile(rig.dir.file("doc/manual2_ja.txt"), "結合"));
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.SwitchTab(1), HostResult::Done);
    EXPECT_EQ(rig.view.shownTab, 1);
    EXPECT_EQ(host.Help(), HostResult::Done); // English: manual2_en.txt is missing
    EXPECT_EQ(rig.view.helps.back().text, "");
    EXPECT_EQ(rig.view.helps.back().file, "");
    host.HelpClosed();
    EXPECT_EQ(host.Command(workspace::kCmdJapanese), HostResult::Done);
    EXPECT_EQ(host.Help(), HostResult::Done);
    EXPECT_EQ(rig.view.helps.back().text, "結合");
    EXPECT_EQ(rig.view.helps.back().title, "TarnwickMP4 ヘルプ");
}

TEST(HostModel, TheMenuStatesFollowTheRules)
{
    HostRig rig;
    workspace::HostOptions options = rig.Options();
    options.cudaDevice = true;
    workspace::HostModel &host = rig.Make(options);
    host.Start({});
    const workspace::MenuStates &menu = rig.view.menu;
    ASSERT_EQ(menu.items.size(), std::size(workspace::kMenuCommands));
    for (int nCommand : {workspace::kCmdNewProject,
                         workspace::kCmdOpenProject,
                         workspace::kCmdStreamInfo,
                         workspace::kCmdAudioInfo,
                         workspace::kCmdHardwareAcceleration,
                         workspace::kCmdSaveAutomatically,
                         workspace::kCmdReopenLast,
                         workspace::kCmdPreset1,
                         workspace::kCmdJapanese,
                         workspace::kCmdEnglish,
                         workspace::kCmdHelp,
                         workspace::kCmdAbout,
                         workspace::kCmdExit}) {
        EXPECT_TRUE(menu.Enabled(nCommand)) << nCommand;
    }
    // Saving needs a video.
    EXPECT_FALSE(menu.Enabled(workspace::kCmdSaveProject));
    EXPECT_FALSE(menu.Enabled(workspace::kCmdSaveProjectAs));
    EXPECT_EQ(host.Command(workspace::kCmdSaveProject), HostResult::Refused);
    EXPECT_TRUE(menu.Checked(workspace::kCmdPreset0));
    EXPECT_FALSE(menu.Checked(workspace::kCmdSaveAutomatically));
    EXPECT_TRUE(menu.bTabButtons);
    EXPECT_EQ(host.Command(12345), HostResult::Refused);
}

TEST(HostModel, TheTwoSwitchesAreCopiedToTheMergeTabAndSavedAtOnce)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.Command(workspace::kCmdSaveAutomatically), HostResult::Done);
    EXPECT_EQ(host.Command(workspace::kCmdReopenLast), HostResult::Done);
    EXPECT_EQ(host.Merge().Data().bAutoSave, 1);
    EXPECT_EQ(host.Merge().Data().bReopenLast, 1);
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdSaveAutomatically));
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdReopenLast));
    const core::AppSettingsRecord record = ReadBack(rig);
    EXPECT_EQ(record.bAutoSave, 1);
    EXPECT_EQ(record.bReopenLast, 1);
    EXPECT_EQ(host.Command(workspace::kCmdSaveAutomatically), HostResult::Done);
    EXPECT_EQ(ReadBack(rig).bAutoSave, 0);
}

TEST(HostModel, AnEncoderPresetIsSetOnBothTabsCheckedAndSaved)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.Command(workspace::kCmdPreset2), HostResult::Done);
    EXPECT_EQ(host.Scene().Data().nEncodePreset, 2);
    EXPECT_EQ(host.Merge().Data().nEncodePreset, 2);
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdPreset2));
    EXPECT_FALSE(rig.view.menu.Checked(workspace::kCmdPreset0));
    EXPECT_EQ(ReadBack(rig).nEncodePreset, 2);
    EXPECT_TRUE(rig.sceneView.errors.empty()) << "no project: nothing to open again";
}

TEST(HostModel, HardwareAccelerationNeedsADevice)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.Command(workspace::kCmdHardwareAcceleration), HostResult::Refused);
    EXPECT_EQ(host.Scene().Data().bUseCuda, 0);
    workspace::HostOptions options = rig.Options();
    options.cudaDevice = true;
    workspace::HostModel &withDevice = rig.Make(options);
    withDevice.Start({});
    EXPECT_EQ(withDevice.Command(workspace::kCmdHardwareAcceleration), HostResult::Done);
    EXPECT_EQ(withDevice.Scene().Data().bUseCuda, 1);
    EXPECT_EQ(withDevice.Merge().Data().bUseCuda, 1);
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdHardwareAcceleration));
    EXPECT_EQ(ReadBack(rig).bUseCuda, 1);
}

TEST(HostModel, TheLanguageCommandRelabelsEverythingAndIsKept)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    const size_t before = rig.view.relabels.size();
    EXPECT_EQ(host.Command(workspace::kCmdJapanese), HostResult::Done);
    ASSERT_EQ(rig.view.relabels.size(), before + 1);
    const workspace::HostTexts &texts = rig.view.relabels.back();
    EXPECT_TRUE(texts.bJapanese);
    EXPECT_EQ(texts.sceneTabButton, "シーン編集");
    EXPECT_EQ(texts.mergeTabButton, "ファイル結合");
    EXPECT_EQ(LabelOf(texts.scene, workspace::Control::ExtractScenes), "シーン抽出");
    EXPECT_EQ(LabelOf(texts.merge, workspace::Control::ExtractAndOutput), "変換して結合");
    ASSERT_EQ(texts.scene.columnHeads.size(), 10u);
    ASSERT_EQ(texts.merge.columnHeads.size(), 9u);
    ASSERT_EQ(texts.scene.captionPositions.size(), 10u);
    EXPECT_EQ(texts.merge.sizeChoices[3], "1920 x 1080");
    EXPECT_EQ(texts.merge.rateChoices[3], "59.94");
    ASSERT_FALSE(texts.menu.empty());
    EXPECT_NE(texts.menu[2].text.find("設定"), std::string::npos) << "the settings menu";
    EXPECT_TRUE(rig.view.menu.Checked(workspace::kCmdJapanese));
    EXPECT_FALSE(rig.view.menu.Checked(workspace::kCmdEnglish));
    EXPECT_EQ(ReadBack(rig).language, "ja-JP");
    EXPECT_EQ(rig.sceneView.title.find("無題"), 0u) << rig.sceneView.title;
    // Every label has a text in both languages.
    for (const auto &[control, text] : texts.scene.labels) {
        EXPECT_FALSE(text.empty()) << static_cast<int>(control);
    }
    EXPECT_EQ(host.Command(workspace::kCmdEnglish), HostResult::Done);
    EXPECT_EQ(LabelOf(rig.view.relabels.back().scene, workspace::Control::ExtractScenes),
              "Extract Scenes");
    EXPECT_EQ(ReadBack(rig).language, "en-US");
}

TEST(HostModel, TheInformationCommandsOpenTheirKindWithItsTitle)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    const std::vector<std::pair<int, int>> kinds = {{workspace::kCmdStreamInfo, 3093},
                                                    {workspace::kCmdFormatInfo, 3106},
                                                    {workspace::kCmdVideoInfo, 3107},
                                                    {workspace::kCmdAudioInfo, 3108}};
    for (const auto &[nCommand, nTitle] : kinds) {
        EXPECT_EQ(host.Command(nCommand), HostResult::Done);
    }
    ASSERT_EQ(rig.view.informations.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        const workspace::InformationRequest &r = rig.view.informations[i];
        EXPECT_EQ(r.nKind, static_cast<int>(i) + 2);
        EXPECT_EQ(r.nTitleId, kinds[i].second);
        EXPECT_TRUE(r.bAskFile);
        EXPECT_EQ(r.defaultExt, "mp4");
    }
    EXPECT_EQ(rig.view.informations[0].chooserTitle,
              "Choose a file for \"Stream and Format Information\"");
    EXPECT_EQ(rig.view.informations[2].title, "Video Stream Information");
    // Kind 1 asks only when no file is on show.
    EXPECT_EQ(host.ShowInformation(1), HostResult::Done);
    EXPECT_TRUE(rig.view.informations.back().bAskFile);
}

TEST(HostModel, AboutShowsTheVersionAndCopyright)
{
    HostRig rig;
    workspace::HostModel &host = rig.Make();
    host.Start({});
    EXPECT_EQ(host.Command(workspace::kCmdAbout), HostResult::Done);
    ASSERT_EQ(rig.view.abouts.size(), 1u);
    EXPECT_EQ(rig.view.abouts[0].title, "About TarnwickMP4");
    EXPECT_EQ(rig.view.abouts[0].version.rfind("TarnwickMP4 Version ", 0), 0u);
    EXPECT_GT(rig.view.abouts[0].version.size(), std::string("TarnwickMP4 Version ").size());
    EXPECT_EQ(rig.view.abouts[0].copyright, "Copyright (C) Brindlemoor");
}

TEST(HostModel, TheWindowPositionOfTheLastRunIsRestoredEvenIfTheSizeDiffers)
{
    HostRig rig;
    core::AppSettingsRecord record;
    record.rcMainWindow = core::WindowRect{100, 50, 900, 650};
    rig.WriteRecord(record);
    workspace::HostModel &host = rig.Make();
    host.Start({});
    const core::WindowRect rect = host.InitialWindowRect(core::WindowRect{0, 0, 1024, 768});
    EXPECT_EQ(rect.left, 100);
    EXPECT_EQ(rect.top, 50);
    EXPECT_EQ(rect.right, 1124);
    EXPECT_EQ(rect.bottom, 818);
    host.SetMainWindowRect(core::WindowRect{30, 40, 1054, 808});
    EXPECT_EQ(host.RequestExit(), HostResult::Done);
    EXPECT_EQ(ReadBack(rig).rcMainWindow.left, 30);
    EXPECT_EQ(ReadBack(rig).rcMainWindow.top, 40);
    // Without a remembered rectangle the window opens where the design puts it.
    HostRig fresh;
    workspace::HostModel &first = fresh.Make();
    first.Start({});
    const core::WindowRect design{10, 20, 1034, 788};
    const core::WindowRect placed = first.InitialWindowRect(design);
    EXPECT_EQ(placed.left, 10);
    EXPECT_EQ(placed.bottom, 788);
}

TEST(HostModel, TheRecentMenuShortensLongPaths)
{
    EXPECT_EQ(workspace::AbbreviatePath("/short/a.twproj", 30), "/short/a.twproj");
    EXPECT_EQ(workspace::AbbreviatePath("/home/someone/videos/2024/cam/a.twproj", 30),
              "/home/.../a.twproj");
    EXPECT_EQ(workspace::AbbreviatePath("/x/" + std::string(40, 'n'), 30), std::string(30, 'n'));
}

} // namespace
