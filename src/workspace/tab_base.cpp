// What the two workspaces share: status bar, progress, elapsed time, jobs, helpers, files.
#include "workspace/tab_base.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/path_check.h"
#include "core/paths.h"
#include "core/time_codes.h"
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"
#include "workspace/scene_defaults.h"
#include "workspace/tab_files.h"
#include "workspace/tab_link.h"
#include "workspace/tab_scene.h"

namespace workspace {

using engine::AppMessage;
using engine::JobMessage;

TabLink::TabLink(CTarnwickTab &tab, engine::MessageLoop &loop)
    : endpoint(loop, [&tab](const JobMessage &msg) { tab.OnJobMessage(msg); })
    , m_tab(tab)
{
}

engine::ScreenPoint TabLink::PreviewPaneOrigin() const
{
    return engine::ScreenPoint{m_tab.PreviewPaneLeft(), m_tab.PreviewPaneTop()};
}

engine::EngineTab *TabHost::CurrentTab()
{
    engine::EngineTab *scene = m_scene;
    engine::EngineTab *merge = m_merge;
    engine::EngineTab *front = m_activeTab == 0 ? scene : merge;
    return front != nullptr ? front : (scene != nullptr ? scene : merge);
}

void TabHost::SetTabs(CTarnwickTab *pScene, CTarnwickTab *pMerge)
{
    m_scene = pScene != nullptr ? &pScene->Link() : nullptr;
    m_merge = pMerge != nullptr ? &pMerge->Link() : nullptr;
}

std::string ElapsedText(double seconds)
{
    return core::SecondsToTimeCode(seconds, false);
}

CTarnwickTab::CTarnwickTab(TabView &view,
                           engine::MessageLoop &loop,
                           engine::EngineHost &host,
                           int nMergeMode)
    : m_view(view)
    , m_pProcess(std::make_unique<engine::CTarnwickProcess>())
    , m_Process(*m_pProcess)
    , m_link(std::make_unique<TabLink>(*this, loop))
{
    m_Process.pData = &m_Data;
    m_Process.pHostDlg = &host;
    m_Process.InstallRenderJobs();
    m_Process.bMergeMode = nMergeMode;
}

CTarnwickTab::~CTarnwickTab()
{
    m_Process.CancelProcess();
    JoinHelpers();
    m_Process.EndThreads();
}

void CTarnwickTab::MakeDefaultScene()
{
    m_bDefaultSceneMade = true;
    workspace::MakeDefaultScene(m_Data);
}

bool CTarnwickTab::IsJobRunning() const
{
    return m_Process.bThreadRunning;
}

int CTarnwickTab::RunningJob() const
{
    return m_Process.nProcessID;
}

bool CTarnwickTab::StillPending() const
{
    return m_Process.bPreviewRunning;
}

engine::LoopEndpoint &CTarnwickTab::Endpoint()
{
    return m_link->endpoint;
}

void CTarnwickTab::SetPreviewPaneOrigin(int left, int top)
{
    m_paneLeft = left;
    m_paneTop = top;
}

void CTarnwickTab::SetPane(int nPane, const std::string &text)
{
    if (nPane < 0 || nPane > 3) {
        return;
    }
    m_panes[nPane] = text;
    m_view.SetStatusPane(nPane, text);
}

void CTarnwickTab::ResetStatusBar()
{
    SetPane(kPaneStage, engine::StageName(engine::kStageNone));
    SetPane(kPaneState, engine::StateName(engine::kStateNone));
    SetPane(kPaneElapsed, "");
    SetPane(kPaneProgress, "");
    m_nProgress = 0;
    m_view.SetProgress(0);
    m_view.SetPositionBar(0);
}

void CTarnwickTab::ApplyPercent(double percent)
{
    // The bar only grows within a job.
    if (std::floor(percent) > std::floor(m_dMaxPercent)) {
        m_dMaxPercent = std::min(percent, 100.0);
        m_nProgress = static_cast<int>(m_dMaxPercent);
        m_view.SetProgress(m_nProgress);
    }
}

void CTarnwickTab::StartElapsedTimer()
{
    if (m_bTimerRunning) {
        return;
    }
    SetPane(kPaneElapsed, "");
    m_start = std::chrono::steady_clock::now();
    m_bTimerRunning = true;
}

void CTarnwickTab::OnTimerTick()
{
    if (!m_bTimerRunning) {
        return;
    }
    std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    SetPane(kPaneElapsed, ElapsedText(elapsed.count()));
}

void CTarnwickTab::StopElapsedTimer()
{
    if (!m_bTimerRunning) {
        return;
    }
    OnTimerTick();
    m_bTimerRunning = false;
}

void CTarnwickTab::UpdateControls(bool bEnable)
{
    m_controls = ComputeControls(bEnable);
    m_view.SetControls(m_controls);
}

void CTarnwickTab::DisableAllControls()
{
    ControlStates states = m_controls;
    states.enabled.fill(false);
    states.Set(Control::Stop, true);
    states.bTabSwitch = false;
    m_controls = states;
    m_view.SetControls(m_controls);
}

void CTarnwickTab::FillList(int nSelect)
{
    m_view.ShowList(ListRows(), nSelect);
}

void CTarnwickTab::Renumber()
{
    std::vector<ListRow> rows = ListRows();
    for (size_t i = 0; i < rows.size(); ++i) {
        m_view.ShowRow(static_cast<int>(i), rows[i]);
    }
}

int CTarnwickTab::RowCount() const
{
    std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
    return static_cast<int>(m_Data.diff_list.size());
}

void CTarnwickTab::BeginDrag(int nRow)
{
    if (nRow < 0 || nRow >= RowCount() || m_Process.IsRenderJob()) {
        return;
    }
    m_nDragRow = nRow;
    SelectRow(nRow, 0);
}

int CTarnwickTab::DragOver(int nHitRow, int nTopRow, int nRowsPerPage, PointerZone zone)
{
    if (m_nDragRow < 0) {
        return nTopRow;
    }
    const int rows = RowCount();
    const int top = DragScrollTopRow(nTopRow, nRowsPerPage, rows, zone);
    const int target = DragTargetRow(nHitRow, top, nRowsPerPage, rows, zone);
    const int after = DragToRow(m_Data, m_nDragRow, target);
    if (after == m_nDragRow) {
        return top;
    }
    Renumber(); // both rows and every start behind them
    m_nDragRow = after;
    m_view.SelectListRow(after);
    SelectRow(after, 0);
    return top;
}

ControlFacts CTarnwickTab::CommonFacts(bool bEnable) const
{
    ControlFacts f;
    f.bEnable = bEnable;
    f.nProcessID = m_Process.nProcessID;
    const std::string input = m_Data.InputFile();
    f.bInputFile = !input.empty();
    f.bOutputFolder = !m_Data.output_folder.empty();
    f.bOutputName = !m_Data.output_name.empty();
    f.bListEmpty = RowCount() == 0;
    f.bInputExists = Exists(input);
    f.bOutputExists = Exists(m_Data.GetOutputPath());
    f.bFolderExists = IsFolder(m_Data.output_folder);
    f.bOutputOnShow =
        !m_Data.GetOutputPath().empty() && m_Process.strPreviewFile.get() == m_Data.GetOutputPath();
    return f;
}

void CTarnwickTab::StartProcess(int nJob)
{
    if (m_bStartGuard) {
        core::Log("%s(%d) bProcessing(%d)\n", "CTarnwickTab::StartProcess", __LINE__, 1);
        return;
    }
    m_bStartGuard = true;
    core::Log("%s(%d) nProcessID(%d)\n", "CTarnwickTab::StartProcess", __LINE__, nJob);
    m_report = JobReport{};
    m_report.nJob = nJob;
    m_bDefaultSceneMade = false;
    if (engine::IsRenderJobNumber(nJob)) {
        OnRenderJobStart();
        StartElapsedTimer();
    } else {
        SetPane(kPaneElapsed, "");
    }
    if (m_Process.StartThread(nJob) == 0) {
        m_report.bFinished = true;
        m_report.nResult = engine::kJobCannotStart;
    }
    UpdateControls(false);
    m_bStartGuard = false;
}

void CTarnwickTab::StopProcess()
{
    if (!m_Process.bThreadRunning) {
        return;
    }
    ControlStates states = m_controls;
    states.Set(Control::Stop, false);
    m_controls = states;
    m_view.SetControls(m_controls);
    m_bStopping = true;
    m_Process.CancelProcess();
    m_bStopping = false;
}

void CTarnwickTab::StartProbe(const std::string &file, int nKind)
{
    m_probe = ProbeReport{};
    m_Process.SetJobFunction(kJobProbe, m_Process.bMergeMode, [this, file, nKind](int) {
        // Written by the job's thread only; read after its end.
        m_probe.nResult = nKind != 0 ? m_Process.RunFfprobeJson(file, m_probe.text, nKind)
                                     : m_Process.GetVideoInfoFfprobe(file, m_probe.info);
        return m_probe.nResult;
    });
    StartProcess(kJobProbe);
}

bool CTarnwickTab::ShowStill(const std::string &file,
                             const std::string &seconds,
                             bool bProject,
                             int nScene)
{
    if (m_Process.OpenVideoFile(file) != engine::kJobOk) {
        return false;
    }
    // The caption of a still is the one in force at its frame.
    const double at = std::strtod(seconds.c_str(), nullptr);
    m_Process.nPreviewFrame = static_cast<int>(std::lround(at * m_Data.CurrentVideo().fps));
    m_Process.strPreviewTime = seconds;
    m_Process.SetPreviewImage(file, seconds, bProject, nScene);
    return true;
}

std::string CTarnwickTab::ProbeText(const std::string &file)
{
    std::string text;
    m_Process.RunFfprobeJson(file, text, 0);
    return text;
}

void CTarnwickTab::RequestStop()
{
    m_Process.bCancel = 1;
}

void CTarnwickTab::RunHelper(std::function<void()> work)
{
    std::lock_guard<std::mutex> lock(m_helperMutex);
    ++m_helpersRunning;
    m_helpers.emplace_back([this, work = std::move(work)] {
        work();
        --m_helpersRunning;
    });
}

void CTarnwickTab::JoinHelpers()
{
    // A helper may be sending a message that only this thread serves.
    while (m_helpersRunning > 0) {
        Endpoint().PumpMessages();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::vector<std::thread> helpers;
    {
        std::lock_guard<std::mutex> lock(m_helperMutex);
        helpers.swap(m_helpers);
    }
    for (std::thread &t : helpers) {
        t.join();
    }
}

void ReplaceFolderText(std::string &text,
                       const std::string &oldFolder,
                       const std::string &newFolder)
{
    if (oldFolder.empty()) {
        return;
    }
    for (size_t at = text.find(oldFolder); at != std::string::npos;
         at = text.find(oldFolder, at + newFolder.size())) {
        text.replace(at, oldFolder.size(), newFolder);
    }
}

bool CTarnwickTab::MoveOutputFolder(const std::string &oldGiven,
                                    const std::string &newGiven,
                                    bool bWorkingFile)
{
    const std::string oldFolder = oldGiven; // copies: the caller may pass output_folder
    if (RefusePath(newGiven, false)) {
        ShowFields();
        return false;
    }
    if (!core::CreateFolders(newGiven)) {
        ReportProblem(kIdsFolderNotMade, newGiven, std::strerror(errno));
        ShowFields();
        return false;
    }
    // The folder's real path, also when it is reached through a symbolic link.
    const std::string newFolder = core::SetTrailingSeparator(core::RealPath(newGiven), true);
    if (bWorkingFile) {
        ReplaceFolderText(m_Data.input_mp4_file, oldFolder, newFolder);
    }
    ReplaceFolderText(m_Data.pts_file, oldFolder, newFolder);
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        for (core::SceneEntry &entry : m_Data.diff_list) {
            ReplaceFolderText(entry.fileName, oldFolder, newFolder);
        }
        // A background cut names its renamed segment from the folder, under the same lock.
        m_Data.output_folder = newFolder;
    }
    return true;
}

void CTarnwickTab::ShowWholeFile(int nButtonJob, const std::string &file)
{
    const int running = m_Process.nProcessID;
    if (engine::IsPlaybackJobNumber(running)) {
        StopProcess();
    }
    if (running != nButtonJob) {
        RunHelper([this, file] { m_Process.ShowFile(file, false); });
    }
    UpdateControls(true);
}

bool CTarnwickTab::RefusePath(const std::string &path, bool bName)
{
    if (!core::PathProblem(path).empty()) {
        ReportProblem(kIdsPathUnusable, path);
        return true;
    }
    if (bName && core::StemTooLong(path)) {
        ReportProblem(kIdsNameTooLong, path);
        return true;
    }
    return false;
}

bool CTarnwickTab::RefuseFilmName(const std::string &name)
{
    if (RefusePath(name, true)) {
        return true;
    }
    if (!core::IsMp4File(name)) {
        ReportProblem(kIdsFilmNotMp4, name);
        return true;
    }
    return false;
}

void CTarnwickTab::ReportProblem(int nId, const std::string &file, const std::string &reason)
{
    std::string text = core::StrPrintf(core::LoadStringById(nId).c_str(), file.c_str());
    if (!reason.empty()) {
        text += " (" + reason + ")";
    }
    m_view.ShowError(text);
}

} // namespace workspace
