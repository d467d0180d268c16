// The host as a model: start-up, settings, recent list, tab switch, close question, shutdown.
#include "workspace/host_model.h"

#include <cctype>
#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/language.h"
#include "engine/tarnwick_process.h"

namespace workspace {
namespace {

bool PathExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

// A project file by its name: the extension ".twproj" in any case.
bool IsProjectPath(const std::string &path)
{
    const std::string ext = std::filesystem::path(path).extension().string();
    if (ext.size() != 7) {
        return false;
    }
    std::string lower;
    for (const char c : ext) {
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return lower == ".twproj";
}

} // namespace

CommandLine ParseCommandLine(const std::vector<std::string> &args)
{
    CommandLine line;
    for (const std::string &arg : args) {
        if (arg.empty() || arg[0] == '-' || !line.project.empty()) {
            line.passedOn.push_back(arg);
        } else {
            line.project = arg;
        }
    }
    return line;
}

HostModel::HostModel(HostView &view,
                     TabView &sceneView,
                     TabView &mergeView,
                     SettingsStore &store,
                     HostOptions options)
    : m_view(view)
    , m_sceneView(sceneView)
    , m_store(store)
    , m_options(std::move(options))
    , m_recent(store)
    , m_bench(std::make_unique<TabBench>(sceneView, mergeView))
{
    m_bCudaDevice = m_options.cudaDevice ? *m_options.cudaDevice : core::HasCuda();
}

HostModel::~HostModel()
{
    if (m_bStarted) {
        Shutdown();
    }
}

std::vector<std::string> HostModel::StringTableFolders() const
{
    return m_options.stringTableFolders.empty() ? core::StringTableFolders()
                                                : m_options.stringTableFolders;
}

StartReport HostModel::Start(const CommandLine &commandLine)
{
    StartReport report;
    if (std::optional<core::AppSettingsRecord> record = ReadSettingsRecord(m_store)) {
        Scene().Data().ApplySettings(*record);
        Merge().Data().ApplySettings(*record);
        report.bSettingsRead = true;
        report.language = record->language;
    }
    m_recent.Read();
    if (report.language.empty()) {
        report.language =
            !m_options.systemLanguage.empty() ? m_options.systemLanguage : core::kLanguageEnglish;
    }
    std::string error;
    report.bLanguageLoaded = core::LoadLanguageFrom(report.language, StringTableFolders(), &error);
    if (!report.bLanguageLoaded) {
        m_view.ShowMessage(error);
    }
    Scene().SetOpenNotice([this](const std::string &project) { OnProjectOpened(project); });
    Scene().Init();
    Merge().Init();
    m_bStarted = true;
    m_view.Relabel(Texts());
    m_view.ShowTab(m_nCurrentTab);
    // The command line's project wins; the remembered one is there only when reopening the
    // last project is on. A path that does not exist is passed over without a word.
    const std::string path =
        !commandLine.project.empty() ? commandLine.project : Scene().Data().project_file;
    if (PathExists(path) && !IsProjectPath(path)) {
        report.project = path;
        Scene().DropFiles({path});
    } else if (PathExists(path)) {
        // Not the same-path shortcut of an open: the project is read for real.
        Scene().Data().project_file.clear();
        report.project = path;
        report.nOpenResult = Scene().OpenProject(path, false);
    }
    m_sceneView.SetTitle(Scene().Data().BuildTitle());
    PublishRecent();
    PublishMenu();
    return report;
}

void HostModel::SaveSettings()
{
    const std::vector<std::string> before = m_recent.Entries();
    core::AppSettingsRecord record;
    Scene().Data().CaptureSettings(record, m_recent);
    if (!WriteSettingsRecord(m_store, record)) {
        core::Log(
            "%s(%d) the settings could not be written\n", "HostModel::SaveSettings", __LINE__);
    }
    if (m_recent.Entries() != before) {
        PublishRecent();
    }
}

void HostModel::Shutdown()
{
    if (m_bShutDown) {
        return;
    }
    m_bShutDown = true;
    for (int nTab = 0; nTab < 2; ++nTab) {
        CTarnwickTab &tab = Tab(nTab);
        tab.StopProcess();
        if (tab.HelpersRunning()) {
            tab.RequestStop();
            tab.JoinHelpers();
        }
    }
    SaveSettings();
    m_recent.WriteOut();
    core::Log("%s(%d) ExitCode(0x%08x)\n", "HostModel::Shutdown", __LINE__, 0);
}

HostResult HostModel::RequestExit()
{
    if (m_bShutDown) {
        return HostResult::Done;
    }
    if (!m_view.AskYesNo(kIdsExitQuestion)) {
        return HostResult::Declined;
    }
    Shutdown();
    m_view.CloseWindow();
    return HostResult::Done;
}

void HostModel::OnProjectOpened(const std::string &projectFile)
{
    m_recent.Add(projectFile);
    m_recent.WriteOut();
    SaveSettings();
    PublishRecent();
    PublishMenu();
}

HostResult HostModel::OpenRecent(int nIndex)
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    const std::vector<std::string> entries = m_recent.Entries();
    if (nIndex < 0 || nIndex >= static_cast<int>(entries.size()) || Busy()) {
        return HostResult::Refused;
    }
    const std::string entry = entries[static_cast<size_t>(nIndex)];
    if (!PathExists(entry)) {
        // A project that has gone leaves the list without a word.
        m_recent.RemoveEntry(static_cast<size_t>(nIndex));
        m_recent.WriteOut();
        PublishRecent();
        PublishMenu();
        return HostResult::Failed;
    }
    return OpenProjectFile(entry);
}

CTarnwickTab &HostModel::Tab(int nTab)
{
    if (nTab == 0) {
        return Scene();
    }
    return Merge();
}

bool HostModel::Busy() const
{
    return engine::IsRenderJobNumber(m_bench->Scene().RunningJob()) ||
           engine::IsRenderJobNumber(m_bench->Merge().RunningJob());
}

HostResult HostModel::SwitchTab(int nTab)
{
    if (m_bShutDown || nTab < 0 || nTab > 1) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (nTab == m_nCurrentTab) {
        return HostResult::Done;
    }
    if (Busy()) {
        return HostResult::Refused;
    }
    // A job of the tab being left (a playback, a probe) ends: its reports would go to the
    // other tab.
    Tab(m_nCurrentTab).StopProcess();
    m_nCurrentTab = nTab;
    m_bench->SetActiveTab(nTab);
    m_view.ShowTab(nTab);
    PublishMenu();
    return HostResult::Done;
}

HostResult HostModel::StopJob()
{
    CTarnwickTab &tab = Tab(m_nCurrentTab);
    if (!tab.IsJobRunning()) {
        return HostResult::Refused;
    }
    tab.StopProcess();
    return HostResult::Done;
}

HostResult HostModel::DropFiles(const std::vector<std::string> &paths)
{
    if (m_bShutDown) {
        return HostResult::Refused;
    }
    if (InWait()) {
        return HostResult::Busy;
    }
    if (m_nCurrentTab == 0) {
        Scene().DropFiles(paths);
    } else {
        Merge().DropFiles(paths);
    }
    return HostResult::Done;
}

MenuStates HostModel::Menu() const
{
    const core::CTarnwickData &data = m_bench->Scene().Data();
    MenuFacts facts;
    facts.bBusy = Busy();
    facts.bSceneInput = !data.InputFile().empty();
    facts.bCudaDevice = m_bCudaDevice;
    facts.bUseCuda = data.bUseCuda != 0;
    facts.bAutoSave = data.bAutoSave != 0;
    facts.bReopenLast = data.bReopenLast != 0;
    facts.nEncodePreset = data.nEncodePreset;
    facts.bJapanese = core::IsJapanese();
    facts.recent = m_recent.Entries();
    facts.nCurrentTab = m_nCurrentTab;
    return ComputeMenuStates(facts);
}

void HostModel::PublishMenu()
{
    m_view.SetMenuStates(Menu());
}

void HostModel::PublishRecent()
{
    m_view.RecentFilesChanged(Menu().recent);
}

void HostModel::SetMainWindowRect(const core::WindowRect &rect)
{
    Scene().Data().rcMainWindow = rect;
    Merge().Data().rcMainWindow = rect;
}

core::WindowRect HostModel::InitialWindowRect(const core::WindowRect &defaultRect) const
{
    const core::WindowRect stored = m_bench->Scene().Data().rcMainWindow;
    if (stored.right <= stored.left || stored.bottom <= stored.top) {
        return defaultRect;
    }
    // Only the position is kept: the window has the size of its design.
    core::WindowRect rect;
    rect.left = stored.left;
    rect.top = stored.top;
    rect.right = stored.left + (defaultRect.right - defaultRect.left);
    rect.bottom = stored.top + (defaultRect.bottom - defaultRect.top);
    return rect;
}

} // namespace workspace
