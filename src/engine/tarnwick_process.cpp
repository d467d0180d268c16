// The job dispatcher: starting a job on the worker thread, its end, the stop, and the reports
// to the current tab.
#include "engine/tarnwick_process.h"

#include <chrono>
#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "engine/encoder_presets.h"
#include "engine/job_states.h"

namespace engine {

std::atomic<bool> bCancelling{false};

bool IsRenderJobNumber(int nJob)
{
    return nJob == kJobFinalOutput || nJob == kJobSegmentOutput || nJob == kJobSceneExtract ||
           nJob == kJobExtractAndOutput || nJob == kJobInputAnalysis;
}

bool IsPlaybackJobNumber(int nJob)
{
    return nJob == kJobPlayInput || nJob == kJobPlayOutput || nJob == kJobPlayScenes;
}

CTarnwickProcess::CTarnwickProcess()
{
    InstallJobTable();
}

CTarnwickProcess::~CTarnwickProcess()
{
    EndThreads();
}

void CTarnwickProcess::EndThreads()
{
    if (workerThread.joinable()) {
        if (workerThread.get_id() == std::this_thread::get_id()) {
            core::Log("%s(%d) destroyed on its own job thread\n",
                      "CTarnwickProcess::~CTarnwickProcess",
                      __LINE__);
            std::terminate();
        }
        workerThread.join();
    }
    JoinAfterScanThread();
    if (queueThread.joinable()) {
        {
            // Checks still waiting are of no use any more; a check that runs is stopped, and
            // it may be sending to the tab while we wait.
            std::lock_guard<std::mutex> lock(queueMutex);
            checkQueue.clear();
            quit = true;
        }
        bCancel = 1;
        queueCondition.notify_all();
        WaitPumping(running);
        queueThread.join();
    }
    EndPreviewThread(); // a check may have asked for a still
}

void CTarnwickProcess::WaitPumping(const std::atomic<bool> &busy)
{
    while (busy) {
        if (EngineTab *tab = CurrentTab()) {
            tab->Sink().PumpMessages();
        }
        if (busy) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
}

int CTarnwickProcess::StartThread(int nJob)
{
    if (bThreadRunning) {
        return 0;
    }
    if (workerThread.joinable()) {
        workerThread.join(); // it has finished or is about to: bThreadRunning is clear
    }
    JoinAfterScanThread(); // it works on the project that the new job is about to use
    nProcessID = nJob;
    if ((nPlayJob != 0 && nPlayJob != nJob) || IsRenderJobNumber(nJob)) {
        nPreviewFrame = 0;
        strPreviewTime = "0";
    }
    if (pData != nullptr) {
        jobSettings = SettingsOf(*pData); // read here, on the thread that owns the project
    }
    bThreadRunning.exchange(true); // before the thread exists: a tab that looks sees the job
    workerThread = std::thread([this, nJob] { RunJob(nJob); });
    return 1;
}

void CTarnwickProcess::DeletePartialSegments()
{
    if (bMergeMode != 0 || pData == nullptr || pData->input_file.empty()) {
        return;
    }
    // A background cut that runs now owns its partial file.
    if (!checkMutex.try_lock()) {
        return;
    }
    core::DeleteByPattern(core::PartialSegmentPattern(*pData));
    std::error_code ignored;
    const std::string output = pData->GetOutputPath();
    if (!output.empty()) {
        std::filesystem::remove(core::PartialSegmentPath(output), ignored);
    }
    // A working file in the making, under any of the encoder settings.
    for (int cuda = 0; cuda < 2; ++cuda) {
        for (int preset = 0; preset < 3; ++preset) {
            std::filesystem::remove(core::PartialSegmentPath(WorkingFilePath(*pData, cuda, preset)),
                                    ignored);
        }
    }
    checkMutex.unlock();
}

void CTarnwickProcess::RunJob(int nJob)
{
    if (IsRenderJobNumber(nJob)) {
        DeletePartialSegments(); // what a killed run of the program left
    }
    nProcessExitCode = kJobOk;
    {
        std::lock_guard<std::mutex> lock(failureMutex);
        strFailureReason.clear(); // the reason of an earlier job's failure
    }
    nProcessExitCode = RunJobRow(nJob, true);
    jobSettings = std::nullopt;
    nProcessID = 0;
    SendToTab(AppMessage::WM_APP_PROCESS_FINISHED, nJob, nProcessExitCode);
    bThreadRunning.exchange(false);
}

void CTarnwickProcess::CancelProcess()
{
    if (!bThreadRunning || bCancelling || bSelectingScene) {
        return;
    }
    std::string what = core::StrPrintf(
        "nProcessID(%d), hProcess(%d)", nProcessID.load(), static_cast<int>(hProcess.load()));
    core::Log("%s(%d) Start %s, bThreadRunning(%d)\n",
              "CTarnwickProcess::CancelProcess",
              __LINE__,
              what.c_str(),
              bThreadRunning ? 1 : 0);
    if (bCancelling.exchange(true)) {
        return; // another stop began meanwhile
    }
    while (bThreadRunning) {
        EngineTab *tab = CurrentTab();
        if (bCancel == 0) {
            // The picture is taken before the player dies, and only once.
            if (IsPlaybackJobNumber(nProcessID) && tab != nullptr) {
                tab->CaptureFfplayWindow();
                PostToTab(AppMessage::WM_APP_PREVIEW_REPAINT, 0, 0);
            }
            bCancel = 1;
        }
        // The job may be waiting in a blocking send: keep the messages flowing.
        if (tab != nullptr) {
            tab->Sink().PumpMessages();
        }
        if (!bThreadRunning) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    core::Log("%s(%d) End %s, bThreadRunning(%d)\n",
              "CTarnwickProcess::CancelProcess",
              __LINE__,
              what.c_str(),
              bThreadRunning ? 1 : 0);
    bCancel = 0;
    bCancelling = false;
}

bool CTarnwickProcess::IsRenderJob() const
{
    return IsRenderJobNumber(nProcessID);
}

void CTarnwickProcess::LogCommandResult(const char *function,
                                        int position,
                                        const std::string &command,
                                        int exitCode)
{
    if (exitCode == kJobOk) {
        core::Log("%s(%d) %s\n", function, position, command.c_str());
    } else if (exitCode == kJobStopped) {
        core::Log("%s(%d) [CANCEL] %s\n", function, position, command.c_str());
    } else {
        core::Log("%s(%d) [NG:%d] %s\n", function, position, exitCode, command.c_str());
    }
}

EngineTab *CTarnwickProcess::CurrentTab() const
{
    return pHostDlg != nullptr ? pHostDlg->CurrentTab() : nullptr;
}

void CTarnwickProcess::SendToTab(AppMessage id,
                                 int64_t wParam,
                                 int64_t lParam,
                                 std::optional<std::string> text)
{
    if (EngineTab *tab = CurrentTab()) {
        tab->Sink().Send(JobMessage{id, wParam, lParam, std::move(text)});
    }
}

void CTarnwickProcess::PostToTab(AppMessage id, int64_t wParam, int64_t lParam)
{
    if (EngineTab *tab = CurrentTab()) {
        tab->Sink().Post(JobMessage{id, wParam, lParam, std::nullopt});
    }
}

void CTarnwickProcess::SendJobState(int nState, std::optional<std::string> text)
{
    SendToTab(AppMessage::WM_APP_JOB_STATE, nState, 0, std::move(text));
}

void CTarnwickProcess::SendStageBegin(int nStage, int nTotal)
{
    SendToTab(AppMessage::WM_APP_STAGE_BEGIN, 0, nTotal, engine::StageName(nStage));
}

int CTarnwickProcess::SettlePartialFile(int result,
                                        const std::string &partial,
                                        const std::string &target)
{
    std::error_code ec;
    if (result == kJobOk) {
        std::filesystem::rename(partial, target, ec);
        if (ec) {
            SendJobState(engine::kStateFailed, target + ": " + ec.message());
            result = kJobCannotStart;
        }
    }
    if (result != kJobOk) {
        std::filesystem::remove(partial, ec);
    }
    return result;
}

void CTarnwickProcess::SendEndState(int result)
{
    if (result == kJobOk) {
        SendJobState(engine::kStateDone);
    } else if (result == kJobStopped) {
        SendJobState(engine::kStateStopped);
    } else {
        SendJobState(engine::kStateFailed, core::StrPrintf("ExitCode(%d)", result));
    }
}

std::string CTarnwickProcess::SourcePath() const
{
    return pData->PlayableInput();
}

std::string CTarnwickProcess::OutputPath() const
{
    return pData->GetOutputPath();
}

int CTarnwickProcess::ThresholdArgument() const
{
    return static_cast<int>(Settings().threshold) * 100;
}

JobSettings SettingsOf(const core::CTarnwickData &data)
{
    JobSettings settings;
    settings.threshold = data.threshold.dValue;
    settings.validMinUnit = data.valid_min_unit.dValue;
    settings.cutMinUnit = data.cut_min_unit.dValue;
    settings.transition = data.transition;
    settings.picture = data.Picture();
    settings.encodePreset = data.nEncodePreset;
    settings.useCuda = data.bUseCuda;
    settings.outputFolder = data.output_folder;
    return settings;
}

JobSettings CTarnwickProcess::Settings() const
{
    if (std::optional<JobSettings> settings = jobSettings.get()) {
        return *settings;
    }
    return SettingsOf(*pData);
}

} // namespace engine
