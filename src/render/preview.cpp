// Still pictures: the one-slot request, the preview thread that turns it into a JPEG with
// ffmpeg, and bringing a file on show as a still.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/helpers.h"
#include "render/preview_commands.h"

namespace engine {

void CTarnwickProcess::SetPreviewImage(const std::string &strFile,
                                       const std::string &strTime,
                                       bool bVf,
                                       int nScene)
{
    PreviewRequest request{CurrentTab(), nScene, bVf, strTime, strFile};
    std::lock_guard<std::mutex> lock(previewMutex);
    // A request that no thread has taken yet is dropped: only the latest position counts.
    previewRequest = std::move(request);
    if (!bPreviewRunning) {
        bPreviewRunning = true;
        // The last preview thread cleared the flag under this mutex; all it still does is end.
        if (previewThread.joinable()) {
            previewThread.join();
        }
        previewThread = std::thread([this] { RunPreviewThread(); });
    }
}

void CTarnwickProcess::RunPreviewThread()
{
    for (;;) {
        PreviewRequest request;
        {
            std::lock_guard<std::mutex> lock(previewMutex);
            if (!previewRequest) {
                bPreviewRunning = false;
                return;
            }
            request = std::move(*previewRequest);
            previewRequest.reset();
        }
        MakePreviewImage(request);
    }
}

std::string CTarnwickProcess::PreviewImagePath() const
{
    return render::PreviewImagePath(
        pData->output_folder, pData->input_file, pData->output_name, bMergeMode != 0);
}

void CTarnwickProcess::MakePreviewImage(const PreviewRequest &request)
{
    const char *function = "CTarnwickProcess::SetPreviewImage";
    const std::string still = PreviewImagePath();
    std::error_code ignored;
    std::filesystem::remove(still, ignored);
    if (pData->output_folder.empty() || request.strFile.empty()) {
        // Nothing to show, or no folder of its own: a still would land wherever the program
        // was started.
        core::Log("%s(%d) no still of \"%s\" in \"%s\"\n",
                  function,
                  __LINE__,
                  request.strFile.c_str(),
                  pData->output_folder.c_str());
    } else {
        core::CreateFolders(core::SetTrailingSeparator(pData->output_folder, false));
        const int rotation = pData->viCurrent.rotation;
        const bool bRotated = rotation == 90 || rotation == -90;
        const std::string chain =
            BuildVideoFilter(request.bVf, true, true, bRotated, request.nScene);
        const std::string command =
            render::BuildStillCommand(pData->bUseCuda != 0,
                                      render::PreviewTimeText(request.strTime),
                                      request.strFile,
                                      chain,
                                      still);
        if (CommandCarriesPaths(function, __LINE__, command, {request.strFile, still})) {
            int result = ExecuteCmd(command);
            if (result != kJobOk) {
                LogCommandResult(function, __LINE__, command, result);
            }
        }
    }
    // Sent in every case: a failed still shows as an empty grey pane.
    if (request.hTarget != nullptr) {
        request.hTarget->Sink().Send(JobMessage{AppMessage::WM_APP_PREVIEW_IMAGE, 0, 0, still});
    }
}

CTarnwickProcess::PreviewThreadEnd::~PreviewThreadEnd()
{
    {
        std::lock_guard<std::mutex> lock(engine.previewMutex);
        engine.previewRequest.reset();
    }
    engine.WaitPumping(engine.bPreviewRunning);
    std::lock_guard<std::mutex> lock(engine.previewMutex);
    if (engine.previewThread.joinable()) {
        engine.previewThread.join();
    }
}

int CTarnwickProcess::ShowFile(const std::string &path, bool bScene)
{
    if (bThreadRunning && IsPlaybackJobNumber(nProcessID)) {
        return kJobOk;
    }
    if (path != strPreviewFile.get()) {
        if (bScene) {
            pData->viCurrent = pData->viInput;
            nPlayJob = kJobPlayScenes;
        }
        nPreviewFrame = 0;
        strPreviewTime = "0";
        int result = ReloadVideoInfo(path, bScene);
        if (result != kJobOk) {
            return result;
        }
    }
    SetPreviewImage(path, strPreviewTime.get(), bScene, -1);
    return kJobOk;
}

} // namespace engine
