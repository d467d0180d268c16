// The host model's menu commands: projects, information, settings switches, presets,
// language, help and about.
#include <filesystem>
#include <fstream>
#include <system_error>

#include "core/helpers.h"
#include "core/language.h"
#include "core/version.h"
#include "engine/tarnwick_process.h"
#include "workspace/host_model.h"

namespace workspace {
namespace {

bool PathExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

std::string ExecutableFolder()
{
    std::error_code ec;
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string(".") : exe.parent_path().string();
}

// Title string id of an information kind.
int InformationTitleId(int nKind)
{
    switch (nKind) {
    case 3:
        return 3106;
    case 4:
        return 3107;
    case 5:
        return 3108;
    default:
        return 3093;
    }
}

// Commands that start work or change the project: not inside a wait.
bool IsWorkCommand(int nCommand)
{
    switch (nCommand) {
    case kCmdNewProject:
    case kCmdOpenProject:
    case kCmdSaveProject:
    case kCmdSaveProjectAs:
    case kCmdHardwareAcceleration:
    case kCmdPreset0:
    case kCmdPreset1:
    case kCmdPreset2:
        return true;
    default:
        return nCommand >= kCmdRecentFirst && nCommand <= kCmdRecentLast;
    }
}

// The text of a manual, its lines joined by "\n"; empty when it cannot be read.
std::string ReadManual(const std::string &path)
{
    std::ifstream in(path);
    std::string text;
    std::string line;
    bool first = true;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        text += (first ? "" : "\n") + line;
        first = false;
    }
    return text;
}

} // namespace

HostResult HostModel::Command(int nCommand)
{
    if (m_bShutDown || !m_bStarted) {
        return HostResult::Refused;
    }
    if (nCommand == kCmdExit) {
        return RequestExit();
    }
    if (InWait() && IsWorkCommand(nCommand)) {
        return HostResult::Busy;
    }
    if (!Menu().Enabled(nCommand)) {
        return HostResult::Refused;
    }
    if (nCommand >= kCmdRecentFirst && nCommand <= kCmdRecentLast) {
        return OpenRecent(nCommand - kCmdRecentFirst);
    }
    switch (nCommand) {
    case kCmdNewProject:
        return NewProject();
    case kCmdOpenProject:
        return OpenProject();
    case kCmdSaveProject:
        return SaveProject();
    case kCmdSaveProjectAs:
        return SaveProjectAs();
    case kCmdStreamInfo:
        return ShowInformation(2);
    case kCmdFormatInfo:
        return ShowInformation(3);
    case kCmdVideoInfo:
        return ShowInformation(4);
    case kCmdAudioInfo:
        return ShowInformation(5);
    case kCmdHardwareAcceleration:
        return ToggleHardwareAcceleration();
    case kCmdSaveAutomatically:
        return ToggleSaveAutomatically();
    case kCmdReopenLast:
        return ToggleReopenLast();
    case kCmdPreset0:
    case kCmdPreset1:
    case kCmdPreset2:
        return SetEncodePreset(nCommand - kCmdPreset0);
    case kCmdJapanese:
        return SetLanguage(core::kLanguageJapanese);
    case kCmdEnglish:
        return SetLanguage(core::kLanguageEnglish);
    case kCmdHelp:
        return Help();
    case kCmdAbout:
        return About();
    default:
        return HostResult::Refused;
    }
}

HostResult HostModel::NewProject()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (Busy()) {
        return HostResult::Refused;
    }
    if (m_nCurrentTab == 1) {
        Merge().NewProject();
    } else {
        Scene().ClearProject(true);
        m_sceneView.SetTitle(Scene().Data().BuildTitle());
    }
    PublishMenu();
    return HostResult::Done;
}

HostResult HostModel::OpenProject()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (Busy()) {
        return HostResult::Refused;
    }
    Scene().StopProcess();
    FileChoice choice;
    choice.kind = FileChoice::Kind::OpenProject;
    choice.nTitleId = 3098;
    choice.filter = kProjectFilter;
    choice.defaultExt = "twproj";
    choice.initialPath = Scene().Data().project_file;
    choice.bMustExist = true;
    std::optional<std::string> path = m_sceneView.ChooseFile(choice);
    if (!path) {
        return HostResult::Declined;
    }
    return OpenProjectFile(*path);
}

HostResult HostModel::OpenProjectFile(const std::string &path)
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (Busy()) {
        return HostResult::Refused;
    }
    const int r = Scene().OpenProject(path, false);
    PublishMenu();
    return r == 0 ? HostResult::Done : HostResult::Failed;
}

HostResult HostModel::SaveProject()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (!Menu().Enabled(kCmdSaveProject)) {
        return HostResult::Refused;
    }
    Scene().SaveProject(true);
    return HostResult::Done;
}

HostResult HostModel::SaveProjectAs()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (!Menu().Enabled(kCmdSaveProjectAs)) {
        return HostResult::Refused;
    }
    Scene().SaveProjectAsDialog();
    return HostResult::Done;
}

HostResult HostModel::ShowInformation(int nKind)
{
    if (m_bShutDown || nKind < 1 || nKind > 5) {
        return HostResult::Refused;
    }
    InformationRequest request;
    request.nKind = nKind;
    request.nTab = m_nCurrentTab;
    request.nTitleId = InformationTitleId(nKind);
    request.title = core::LoadStringById(request.nTitleId);
    request.chooserTitle = core::StrPrintf(
        "%s \"%s\"", core::LoadStringById(kIdsChooseFileFor).c_str(), request.title.c_str());
    request.startFile = Tab(m_nCurrentTab).Process().strPreviewFile.get();
    // Kind 1 shows the file on show when there is one; the others always ask.
    request.bAskFile = nKind != 1 || request.startFile.empty();
    request.filter = kVideoFilter;
    request.defaultExt = "mp4";
    m_view.ShowInformation(request);
    return HostResult::Done;
}

InformationResult HostModel::RunInformation(const InformationRequest &request,
                                            const std::string &file)
{
    InformationResult result;
    result.file = file;
    result.nResult = engine::kJobCannotStart;
    CTarnwickTab &tab = Tab(request.nTab == 1 ? 1 : 0);
    if (m_bShutDown || InWait() || tab.IsJobRunning() || !PathExists(file)) {
        return result;
    }
    tab.StartProbe(file, request.nKind);
    m_bench->WaitForJob(tab, [] { return false; });
    result.nResult = tab.LastProbe().nResult;
    result.bOk = result.nResult == engine::kJobOk;
    if (result.bOk) {
        result.text = tab.LastProbe().text;
    }
    return result;
}

HostResult HostModel::ToggleHardwareAcceleration()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (!m_bCudaDevice || Busy()) {
        return HostResult::Refused;
    }
    Scene().Data().bUseCuda = Scene().Data().bUseCuda != 0 ? 0 : 1;
    Merge().Data().bUseCuda = Scene().Data().bUseCuda;
    return Reload();
}

HostResult HostModel::SetEncodePreset(int nPreset)
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (nPreset < 0 || nPreset > 2 || Busy()) {
        return HostResult::Refused;
    }
    Scene().Data().nEncodePreset = nPreset;
    Merge().Data().nEncodePreset = nPreset;
    return Reload();
}

HostResult HostModel::Reload()
{
    // The encoder settings decide what the probes and working files are: the project is read
    // and analysed again. Without a project file there is nothing to read again.
    const std::string project = Scene().Data().project_file;
    if (PathExists(project)) {
        Scene().OpenProject(project, true);
    }
    for (int nTab = 0; nTab < 2; ++nTab) {
        Tab(nTab).ShowFields();
        Tab(nTab).UpdateControls(true);
    }
    SaveSettings();
    PublishMenu();
    return HostResult::Done;
}

HostResult HostModel::ToggleSaveAutomatically()
{
    return ToggleSwitch(&core::CTarnwickData::bAutoSave);
}

HostResult HostModel::ToggleReopenLast()
{
    return ToggleSwitch(&core::CTarnwickData::bReopenLast);
}

HostResult HostModel::ToggleSwitch(int core::CTarnwickData::*field)
{
    // A switch of the settings menu: flipped on the scene tab, copied to the merge tab, saved.
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    Scene().Data().*field = Scene().Data().*field != 0 ? 0 : 1;
    Merge().Data().*field = Scene().Data().*field;
    SaveSettings();
    PublishMenu();
    return HostResult::Done;
}

HostResult HostModel::SetLanguage(const std::string &tag)
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    std::string error;
    const bool bLoaded = core::LoadLanguageFrom(tag, StringTableFolders(), &error);
    if (!bLoaded) {
        m_view.ShowMessage(error);
    }
    m_view.Relabel(Texts());
    ApplyLanguageToTabs();
    SaveSettings();
    PublishMenu();
    return bLoaded ? HostResult::Done : HostResult::Failed;
}

void HostModel::ApplyLanguageToTabs()
{
    Scene().ApplyLanguage();
    Merge().ApplyLanguage();
    // The title of a project not saved yet is a text of the table.
    m_sceneView.SetTitle(Scene().Data().BuildTitle());
}

HostResult HostModel::Help()
{
    if (m_bShutDown || m_bHelpOpen) {
        return HostResult::Refused;
    }
    m_bHelpOpen = true;
    m_view.ShowHelp(HelpFor(m_nCurrentTab));
    return HostResult::Done;
}

HelpContent HostModel::HelpFor(int nTab) const
{
    HelpContent help;
    help.nTab = nTab == 1 ? 1 : 0;
    help.title = core::LoadStringById(kIdsHelpTitle);
    std::vector<std::string> folders = m_options.manualFolders;
    if (folders.empty()) {
        const std::filesystem::path exe = ExecutableFolder();
        folders = {(exe / "doc").string(),
                   (exe / ".." / "share" / "tarnwickmp4" / "doc").lexically_normal().string()};
    }
    const std::string name = core::ManualFileName(help.nTab);
    for (const std::string &folder : folders) {
        const std::string path = (std::filesystem::path(folder) / name).string();
        if (PathExists(path)) {
            help.file = path;
            help.text = ReadManual(path);
            break;
        }
    }
    return help;
}

void HostModel::HelpClosed()
{
    m_bHelpOpen = false;
}

HostResult HostModel::About()
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    AboutContent about;
    about.title = core::LoadStringById(kIdsAboutTitle);
    about.version = core::LoadStringById(kIdsAboutVersion) + core::kProductVersion;
    about.copyright = core::LoadStringById(kIdsAboutCopyright);
    m_view.ShowAbout(about);
    return HostResult::Done;
}

} // namespace workspace
