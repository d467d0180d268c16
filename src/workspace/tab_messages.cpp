// What the two workspaces do with the job messages: status bar, progress, the position
// readout, the finished job's report.
#include "workspace/tab_base.h"
#include "workspace/tab_link.h"

#include <algorithm>
#include <cmath>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/paths.h"
#include "engine/job_states.h"

namespace workspace {

using engine::AppMessage;
using engine::JobMessage;

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
        // The engine's reason names the file and gives the tool's words, where the state's
        // text has only an exit code.
        if (const std::string reason = m_Process.FailureReason(); !reason.empty()) {
            m_report.failure = reason;
        }
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
        // A stage without a total shows no count, rather than the stage's before it.
        m_view.SetProgressCount(0, static_cast<int>(std::max<int64_t>(msg.lParam, 0)));
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
