// The analysis of a newly opened input (job 1101): facts, the working MP4 when needed, the time
// list, the default cross-fade, the check of the current scene and a still.
#include <filesystem>
#include <system_error>
#include <thread>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/source_stamp.h"
#include "engine/encoder_presets.h"
#include "engine/input_analysis.h"
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

namespace engine {
namespace {

bool FileExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

} // namespace

int CTarnwickProcess::AnalyzeInputFile(bool bProjectLoad, int nScene)
{
    if (bThreadRunning) {
        return kJobCannotStart;
    }
    core::Log("%s(%d) input_file(%s), bProjectLoad(%d), nScene(%d)\n",
              "CTarnwickProcess::AnalyzeInputFile",
              __LINE__,
              pData->input_file.c_str(),
              bProjectLoad ? 1 : 0,
              nScene);
    bCancel = 0; // a stop of an earlier job does not reach this one
    const int previousJob = nProcessID.exchange(kJobInputAnalysis);
    SendStageBegin(engine::kStageFileAnalysis, -1);
    bThreadRunning = true;
    int result = kJobCannotStart;
    // The thread ends by clearing bThreadRunning; it is joined once the pump has seen that.
    std::thread analysis([this, bProjectLoad, &result] {
        int r = RunInputAnalysis(bProjectLoad);
        if (r == kJobOk) {
            SendJobState(engine::kStateDone);
        } else if (r == kJobStopped) {
            SendJobState(engine::kStateStopped);
        } else {
            SendJobState(engine::kStateFailed);
        }
        result = r;
        bThreadRunning = false;
    });
    WaitPumping(bThreadRunning);
    analysis.join();
    nProcessID = previousJob;
    return result;
}

int CTarnwickProcess::PrepareWorkingFile(std::string &src)
{
    const std::string input = pData->InputFile();
    const std::string fieldOrder = pData->viInput.field_order;
    std::string working;
    if (!UsedAsItIs(input, fieldOrder)) {
        // A working file found under its name is used again only when it was made from this
        // very file: another video of the same name may have left its own there.
        working = WorkingFilePath(*pData);
        if (!core::MadeFromSource(working, input)) {
            int r = ConvertToMp4(input, working, NeedsDeinterlace(fieldOrder));
            if (r != kJobOk) {
                return r;
            }
        }
    }
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->input_mp4_file = working;
    }
    src = working.empty() ? input : working;
    return kJobOk;
}

void CTarnwickProcess::PreviewAnalysedFile(const std::string &file)
{
    if (IsPlaybackJobNumber(nProcessID)) {
        return;
    }
    if (file != strPreviewFile.get()) {
        nPreviewFrame = 0;
        strPreviewTime = "0";
        if (ReloadVideoInfo(file, false) != kJobOk) {
            return; // no still, and not the analysis' result either
        }
    }
    SetPreviewImage(file, strPreviewTime.get(), false, -1);
}

int CTarnwickProcess::RunInputAnalysis(bool bProjectLoad)
{
    int r = ReloadVideoInfo(pData->input_file, false);
    if (r != kJobOk) {
        return r;
    }
    core::SnapFrameRate(pData->viCurrent, true);
    std::string src;
    r = PrepareWorkingFile(src);
    if (r != kJobOk) {
        return r;
    }
    if (!pData->input_mp4_file.empty()) {
        r = ReloadVideoInfo(pData->input_mp4_file, false);
        if (r != kJobOk) {
            return r;
        }
    }
    r = EnsurePtsList(src);
    if (r != kJobOk) {
        return r;
    }
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->dTransitionSec = TransitionSeconds(pData->viCurrent.fps);
    }
    if (EngineTab *tab = CurrentTab()) {
        tab->OnInputAnalysed(bProjectLoad);
    }
    // The tab refreshes its controls from the project when the job's end state arrives. An
    // opening that a scene extraction follows cuts nothing: the extraction empties the list.
    if (!bOpenForExtraction) {
        CutCurrentScene();
    }
    std::string file = src;
    const std::string output = pData->GetOutputPath();
    if (bProjectLoad && FileExists(output)) {
        file = output;
    }
    PreviewAnalysedFile(file);
    return kJobOk;
}

} // namespace engine
