// Playback: the input or output in ffplay (jobs 1027, 1028), the scenes one after another (job
// 1029), and the player loop that follows the position from the player's showinfo lines.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "engine/preview_commands.h"

namespace engine {
namespace {

// The start of a playback from the beginning.
std::string StartText()
{
    return core::StrPrintf("%.6f", 0.0);
}

} // namespace

int CTarnwickProcess::RunPlaybackBranch(int nJob)
{
    nPlayJob = nJob;
    const std::string file = nJob == kJobPlayOutput ? OutputPath() : SourcePath();
    int result = PlayVideo(file, nJob);
    if (result != kJobStopped) {
        SetPreviewImage(file, strPreviewTime.get(), false, -1);
    }
    return result;
}

int CTarnwickProcess::PlayScenes(int /*nJob*/)
{
    nPlayJob = kJobPlayScenes;
    int n = 0;
    int i = -1;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        n = static_cast<int>(pData->diff_list.size());
        i = pData->list_idx;
    }
    // The last scene played to its end: with play_loop the next one starts.
    i = FirstSceneToPlay(i, n, pData->play_loop != 0, nPreviewFrame, pData->viCurrent.frame_num);
    int result = kJobOk;
    std::string file;
    while (i < n) {
        bSelectingScene = true; // a stop now would be lost in the tab's change of row
        SendToTab(AppMessage::WM_APP_CURRENT_SCENE, i, 0);
        bSelectingScene = false;
        {
            std::lock_guard<std::mutex> lock(pData->sceneLock.m);
            file = i >= 0 && i < static_cast<int>(pData->diff_list.size())
                       ? pData->diff_list[static_cast<size_t>(i)].fileName
                       : std::string();
        }
        result = PlayVideoScene(file);
        ++i;
        if (pData->play_scene_loop == 0 || result != kJobOk) {
            break;
        }
    }
    if (result != kJobStopped) {
        SetPreviewImage(file, strPreviewTime.get(), true, -1);
    }
    return result;
}

int CTarnwickProcess::PlayVideo(const std::string &strFile, int nJob)
{
    core::Log("%s(%d) input_file(%s), nID(%d)\n",
              "CTarnwickProcess::PlayVideo",
              __LINE__,
              strFile.c_str(),
              nJob);
    const bool bRestart =
        IsPlaybackRestart(strPreviewTime.get(), nPreviewFrame, pData->viCurrent.frame_num);
    if (bRestart) {
        int result = ReloadVideoInfo(strFile, false);
        if (result != kJobOk) {
            return result;
        }
    }
    const int nStage = !bRestart               ? engine::kStageNone
                       : nJob == kJobPlayInput ? engine::kStageInputPreview
                                               : engine::kStageOutputPreview;
    SendStageBegin(nStage, -1);
    const int nFrames = pData->viCurrent.frame_num;
    if (bRestart) {
        SendToTab(AppMessage::WM_APP_POSITION, 0, nFrames);
    }
    // The length is the whole file's, also from a later start: the player stops at the end.
    return RunPlayerLoop(strFile, false, bRestart ? StartText() : strPreviewTime.get(), nFrames, 0);
}

int CTarnwickProcess::PlayVideoScene(const std::string &strFile)
{
    core::Log("%s(%d) Start input_file(%s), bVf(%d)\n",
              "CTarnwickProcess::PlayVideoScene",
              __LINE__,
              strFile.c_str(),
              1);
    std::error_code ec;
    const bool bRestart =
        !std::filesystem::exists(strFile, ec) ||
        IsPlaybackRestart(strPreviewTime.get(), nPreviewFrame, pData->viCurrent.frame_num);
    // The merge tab has viCurrent set already; a scene that cannot be opened is not an error.
    if (bMergeMode == 0 && bRestart && ReloadVideoInfo(strFile, true) != kJobOk) {
        return kJobOk;
    }
    int nFrames = 0;
    int nBase = 0;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        const int idx = pData->list_idx;
        if (idx < 0 || idx >= static_cast<int>(pData->diff_list.size())) {
            return kJobOk;
        }
        const core::SceneEntry &row = pData->diff_list[static_cast<size_t>(idx)];
        if (bMergeMode == 0) {
            nFrames = row.framNo_second - row.framNo_first + 1;
            nBase = row.framNo_first;
        } else {
            nFrames = row.viOut.frame_num;
        }
    }
    if (bRestart) {
        SendToTab(AppMessage::WM_APP_POSITION, 0, nFrames);
    }
    SendStageBegin(bRestart ? engine::kStageScenePreview : engine::kStageNone, -1);
    return RunPlayerLoop(
        strFile, true, bRestart ? StartText() : strPreviewTime.get(), nFrames, nBase);
}

int CTarnwickProcess::RunPlayerLoop(
    const std::string &file, bool bVf, std::string ss, int nFrames, int nBase)
{
    const char *function = "CTarnwickProcess::RunPlayerLoop";
    EngineTab *tab = CurrentTab();
    const ScreenPoint pane = tab != nullptr ? tab->PreviewPaneOrigin() : ScreenPoint{};
    const std::string t = pData->FrameToText(nFrames, pData->viCurrent.fps, "%.6f");
    for (;;) {
        PlayerArgs args;
        args.left = pane.left;
        args.top = pane.top;
        args.ss = ss;
        args.file = file;
        args.t = t;
        {
            // The volume may change while the player runs (the tab restarts it then).
            std::lock_guard<std::mutex> lock(pData->sceneLock.m);
            args.play_vol = pData->play_vol;
        }
        args.chain = PictureChain(*this, bVf, true, false, false, -1);
        const std::string command = BuildPlayerCommand(args);
        if (!CommandCarriesPaths(function, __LINE__, command, {file})) {
            return kJobCannotStart;
        }
        // The position never goes back before the start asked for.
        // The first frame at or after it: a frame that begins before it is before it.
        nPlayFromFrame = static_cast<int>(
            std::ceil(std::strtod(ss.c_str(), nullptr) * pData->viCurrent.fps - 1e-6));
        strPlayFrom = ss;
        int result = ExecuteCmdWithProgress(true, command, nFrames, nBase);
        if (pData->play_loop == 0 || result != kJobOk) {
            return result;
        }
        ss = NextLoopStart(strPreviewTime.get(), nPreviewFrame, pData->viCurrent.frame_num);
    }
}

} // namespace engine
