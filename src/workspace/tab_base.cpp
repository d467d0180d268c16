// What the two workspaces share: job messages, status bar, progress, elapsed time, jobs.
#include "workspace/tab_base.h"
#include "engine/job_states.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "workspace/scene_defaults.h"
#include "workspace/tab_scene.h"

namespace workspace {

using engine::AppMessage;
using engine::JobMessage;

engine::EngineTab *TabHost::CurrentTab()
{
    engine::EngineTab *scene = m_scene;
    engine::EngineTab *merge = m_merge;
    engine::EngineTab *front = m_activeTab == 0 ? scene : merge;
    return front != nullptr ? front : (scene != nullptr ? scene : merge);
}

void TabHost::SetTabs(engine::EngineTab *pScene, engine::EngineTab *pMerge)
{
    m_scene = pScene;
    m_merge = pMerge;
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
    , m_endpoint(loop, [this](const JobMessage &msg) { OnJobMessage(msg); })
{
    m_Process.pData = &m_Data;
    m_Process.pHostDlg = &host;
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

engine::ScreenPoint CTarnwickTab::PreviewPaneOrigin() const
{
    return engine::ScreenPoint{m_paneLeft, m_paneTop};
}

void CTarnwickTab::SetPreviewPaneOrigin(engine::ScreenPoint origin)
{
    m_paneLeft = origin.left;
    m_paneTop = origin.top;
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
    m_Process.nPreviewFrame = static_cast<int>(std::lround(at * m_Data.viCurrent.fps));
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
        m_endpoint.PumpMessages();
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
    const std::string newFolder = newGiven;
    if (!core::CreateFolders(newFolder)) {
        ReportProblem(kIdsFolderNotMade, newFolder, std::strerror(errno));
        ShowFields();
        return false;
    }
    if (bWorkingFile) {
        ReplaceFolderText(m_Data.input_mp4_file, oldFolder, newFolder);
    }
    ReplaceFolderText(m_Data.pts_file, oldFolder, newFolder);
    {
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        for (core::SceneEntry &entry : m_Data.diff_list) {
            ReplaceFolderText(entry.fileName, oldFolder, newFolder);
        }
    }
    m_Data.output_folder = newFolder;
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

void CTarnwickTab::ReportProblem(int nId, const std::string &file, const std::string &reason)
{
    std::string text = core::StrPrintf(core::LoadStringById(nId).c_str(), file.c_str());
    if (!reason.empty()) {
        text += " (" + reason + ")";
    }
    m_view.ShowError(text);
}

void CTarnwickTab::UpdatePositionReadout(int nFrame, int nCount, int nSceneFirst)
{
    const bool bAtEnd = nFrame >= 1 && nFrame >= nCount - 1;
    const bool bRunning = m_Process.nProcessID != 0;
    core::VideoInfo vi;
    {
        // A worker or helper may be opening another file.
        std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
        vi = m_Data.viCurrent;
    }
    const double fps = vi.fps;
    if (!bRunning && !m_bSeeking && !m_bPositionDrag) {
        const int total = vi.frame_num;
        m_view.SetPositionBar(total > 0 ? (bAtEnd ? nCount : nFrame) * 1000 / total : 0);
    } else if (bRunning) {
        nCount = std::max(nCount, 0);
        nFrame = std::min(nFrame, nCount);
        if (!m_bSeeking && !m_bPositionDrag) {
            m_view.SetPositionBar(
                nCount > 0 ? static_cast<int>((bAtEnd ? nCount : nFrame) * 1000.0 / nCount) : 0);
        }
    }
    auto seconds = [fps](int frame) { return fps > 0 ? frame / fps : 0.0; };
    std::string text;
    if (nCount > 0) {
        std::string offset;
        if (nSceneFirst != 0) {
            const int last = std::max(0, nSceneFirst + nCount - 1);
            offset =
                core::StrPrintf(" Offset Frm:%d/%d", std::min(nFrame + nSceneFirst, last), last);
        }
        text = core::StrPrintf("%s/%s Frm:%d/%d%s",
                               ElapsedText(seconds(bAtEnd ? nCount : nFrame)).c_str(),
                               ElapsedText(seconds(nCount)).c_str(),
                               nFrame,
                               std::max(0, nCount - 1),
                               offset.c_str());
    }
    if (!m_bSeeking) {
        m_view.SetPositionText(text);
    }
    if (nFrame < 1) {
        const std::string file = m_Process.strPreviewFile.get();
        std::string summary;
        if (!file.empty()) {
            std::string rotation = vi.rotation != 0 ? core::StrPrintf(" Rot:%d", vi.rotation) : "";
            summary = core::StrPrintf("%s Frm:%d FPS:%.2f W%dxH%d%s %s",
                                      ElapsedText(seconds(nCount)).c_str(),
                                      nCount,
                                      vi.fps,
                                      vi.width,
                                      vi.height,
                                      rotation.c_str(),
                                      core::FileNamePart(file).c_str());
        }
        m_view.SetFileSummary(summary);
    }
}

void CTarnwickTab::OnJobMessage(const JobMessage &msg)
{
    const bool bRender = m_Process.IsRenderJob();
    const bool bPlaying = engine::IsPlaybackJobNumber(m_Process.nProcessID);
    switch (msg.id) {
    case AppMessage::WM_APP_SCENES_CHANGED:
        OnScenesChanged(msg);
        break;
    case AppMessage::WM_APP_PROCESS_FINISHED: {
        const int nJob = static_cast<int>(msg.wParam);
        core::Log("%s(%d) nProcessID(%d) nProcessExitCode(%d)\n",
                  "CTarnwickTab::OnProcessFinished",
                  __LINE__,
                  nJob,
                  static_cast<int>(msg.lParam));
        m_report.nJob = nJob;
        m_report.nResult = static_cast<int>(msg.lParam);
        m_report.bFinished = true;
        m_report.bDefaultScene = m_bDefaultSceneMade;
        if (nJob == engine::kJobSceneExtract || nJob == engine::kJobExtractAndOutput) {
            m_report.nFramesScanned = m_Process.nScanFrames;
            m_report.bPictureTooSmall = m_Process.bScanTooSmall;
            m_report.cutResults = m_Process.cutResults;
        }
        if (engine::IsRenderJobNumber(nJob)) {
            StopElapsedTimer();
            OnRenderJobEnd();
        }
        UpdateControls(true);
        break;
    }
    case AppMessage::WM_APP_INPUT_INFO:
        RefreshInputSummary();
        break;
    case AppMessage::WM_APP_POSITION: {
        const bool bWithOffset = m_Process.nProcessID == engine::kJobPlayScenes;
        UpdatePositionReadout(static_cast<int>(msg.wParam),
                              static_cast<int>(msg.lParam),
                              bWithOffset ? SceneOffset() : 0);
        break;
    }
    case AppMessage::WM_APP_PREVIEW_IMAGE:
        m_view.ShowPicture(msg.text.value_or(""));
        break;
    case AppMessage::WM_APP_CURRENT_SCENE:
        if (msg.lParam == 0) {
            {
                std::lock_guard<std::mutex> lock(m_Data.sceneLock.m);
                m_Data.list_idx = static_cast<int>(msg.wParam);
            }
            FillList(static_cast<int>(msg.wParam));
        }
        break;
    case AppMessage::WM_APP_STAGE_BEGIN: {
        ++m_report.nStages;
        m_dMaxPercent = 0;
        const std::string stage = msg.text.value_or("");
        if (!stage.empty()) {
            SetPane(kPaneStage, stage);
            m_nProgress = 0;
            m_view.SetProgress(0);
            if (bPlaying && !m_bPositionDrag) {
                m_view.SetPositionBar(0);
            }
            if (!bRender) {
                SetPane(kPaneProgress, "");
            }
        }
        SetPane(kPaneState,
                engine::StateName(bPlaying ? engine::kStatePlaying : engine::kStateProcessing));
        if (msg.lParam < 0) {
            SetPane(kPaneProgress, "");
        } else if (bRender) {
            SetPane(kPaneProgress,
                    core::StrPrintf("%d/%d (%.2f%%)", 0, static_cast<int>(msg.lParam), 0.0));
        } else {
            SetPane(kPaneElapsed, "");
        }
        if (msg.lParam >= 0) {
            m_view.SetProgressCount(0, static_cast<int>(msg.lParam));
        }
        break;
    }
    case AppMessage::WM_APP_PROGRESS: {
        const int64_t total = msg.wParam;
        if (total < 0) {
            break;
        }
        const int64_t done = std::min(total, msg.lParam);
        const double percent = total == 0 ? 0.0 : done * 100.0 / total;
        if (!bPlaying) {
            ApplyPercent(percent);
        }
        SetPane(kPaneProgress,
                core::StrPrintf(
                    "%d/%d (%.2f%%)", static_cast<int>(done), static_cast<int>(total), percent));
        m_view.SetProgressCount(static_cast<int>(done), static_cast<int>(total));
        break;
    }
    case AppMessage::WM_APP_JOB_STATE: {
        const int nState = static_cast<int>(msg.wParam);
        m_report.nLastState = nState;
        if (nState == engine::kStateFailed && msg.text && m_report.failure.empty()) {
            m_report.failure = *msg.text;
        }
        const std::string name = engine::StateName(nState);
        if (!name.empty()) {
            SetPane(kPaneState, name);
        } else if (msg.text && !msg.text->empty()) {
            SetPane(kPaneProgress, *msg.text);
        }
        break;
    }
    case AppMessage::WM_APP_STAGE_TEXT:
        if (msg.text && !msg.text->empty()) {
            SetPane(kPaneStage, *msg.text);
        }
        break;
    case AppMessage::WM_APP_ANALYSIS_BUSY:
        if (msg.wParam == 0) {
            m_bWaitCursor = 1;
            m_view.SetBusyCursor(true);
            DisableAllControls();
        } else {
            ShowFields();
            UpdateControls(true);
            m_bWaitCursor = 0;
            m_view.SetBusyCursor(false);
        }
        break;
    case AppMessage::WM_APP_LIST_BUSY: {
        ControlStates states = m_controls;
        states.Set(Control::SceneList, msg.wParam == 0);
        m_controls = states;
        m_view.SetControls(m_controls);
        break;
    }
    case AppMessage::WM_APP_ELAPSED_TIMER:
        if (msg.wParam != 0) {
            StartElapsedTimer();
        } else {
            StopElapsedTimer();
        }
        break;
    case AppMessage::WM_APP_PREVIEW_REPAINT:
    case AppMessage::WM_APP_PLAYER_READY:
        break;
    }
}

} // namespace workspace
