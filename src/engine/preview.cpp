// Still pictures: the one-slot request, the preview thread that turns it into a JPEG with
// ffmpeg, and bringing a file on show as a still.
#include "engine/tarnwick_process.h"

#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/paths.h"
#include "engine/preview_commands.h"

namespace engine {
namespace {

// The still's chain, built by an engine of its own over the request's copy of the project:
// the caption file it writes and everything it reads belong to the preview thread alone.
std::string StillChain(CTarnwickProcess &owner, const PreviewRequest &request)
{
    core::CTarnwickData project = *request.project;
    const int rotation = project.viCurrent.rotation;
    CTarnwickProcess scratch;
    scratch.pData = &project;
    scratch.nProcessID = request.nJob;
    scratch.nPreviewFrame = request.nPreviewFrame;
    scratch.bMergeMode = request.bMergeMode;
    return owner.PictureChain(
        scratch, request.bVf, true, true, rotation == 90 || rotation == -90, request.nScene);
}

} // namespace

void CTarnwickProcess::SetPreviewImage(const std::string &strFile,
                                       const std::string &strTime,
                                       bool bVf,
                                       int nScene)
{
    PreviewRequest request;
    request.hTarget = CurrentTab();
    request.nScene = nScene;
    request.bVf = bVf;
    request.strTime = strTime;
    request.strFile = strFile;
    auto project = std::make_shared<core::CTarnwickData>();
    {
        // Pool threads may be correcting their entries of the list meanwhile.
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        *project = *pData;
    }
    request.project = std::move(project);
    request.nJob = nProcessID;
    request.nPreviewFrame = nPreviewFrame;
    request.bMergeMode = bMergeMode;
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
    return engine::PreviewImagePath(
        pData->output_folder, pData->input_file, pData->output_name, bMergeMode != 0);
}

void CTarnwickProcess::MakePreviewImage(const PreviewRequest &request)
{
    const char *function = "CTarnwickProcess::SetPreviewImage";
    const core::CTarnwickData &project = *request.project;
    const std::string still = engine::PreviewImagePath(
        project.output_folder, project.input_file, project.output_name, bMergeMode != 0);
    std::error_code ignored;
    std::filesystem::remove(still, ignored);
    if (project.output_folder.empty() || request.strFile.empty()) {
        // Nothing to show, or no folder of its own: a still would land wherever the program
        // was started.
        core::Log("%s(%d) no still of \"%s\" in \"%s\"\n",
                  function,
                  __LINE__,
                  request.strFile.c_str(),
                  project.output_folder.c_str());
    } else {
        core::CreateFolders(core::SetTrailingSeparator(project.output_folder, false));
        const std::string command = BuildStillCommand(project.bUseCuda != 0,
                                                      PreviewTimeText(request.strTime),
                                                      request.strFile,
                                                      StillChain(*this, request),
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
    engine.EndPreviewThread();
}

void CTarnwickProcess::EndPreviewThread()
{
    {
        std::lock_guard<std::mutex> lock(previewMutex);
        previewRequest.reset();
    }
    WaitPumping(bPreviewRunning);
    std::lock_guard<std::mutex> lock(previewMutex);
    if (previewThread.joinable()) {
        previewThread.join();
    }
}

int CTarnwickProcess::ShowFile(const std::string &path, bool bScene)
{
    if (bThreadRunning && IsPlaybackJobNumber(nProcessID)) {
        return kJobOk;
    }
    if (path != strPreviewFile.get()) {
        if (bScene) {
            std::lock_guard<std::mutex> lock(pData->sceneLock.m);
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
