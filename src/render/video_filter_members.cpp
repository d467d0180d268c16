// The engine's filter chain and caption file: the project's picture chain for a job or a still
// picture, and the ASS file that its subtitles piece reads.
#include "engine/tarnwick_process.h"

#include <mutex>

#include "core/app_log.h"
#include "core/file_io.h"
#include "render/captions.h"
#include "render/video_filter.h"

namespace engine {

std::string
CTarnwickProcess::BuildVideoFilter(bool bVf, bool bPad, bool bPreview, bool bRotated, int nScene)
{
    render::VideoFilterFlags flags;
    flags.bVf = bVf;
    flags.bPad = bPad;
    flags.bRotated = bRotated;
    std::string captionFilter;
    if (bVf) {
        int nJob = nProcessID;
        bool bAll = nJob == kJobFinalOutput || nJob == kJobExtractAndOutput;
        render::SourceSize size = render::SourceSizeOf(pData->viCurrent, bRotated);
        captionFilter = BuildCaptionFilter(bAll, size.w, size.h, bPreview, nScene);
    }
    return render::BuildVideoFilterText(pData->viCurrent, Settings().picture, flags, captionFilter);
}

std::string CTarnwickProcess::BuildCaptionFilter(bool bAll, int w, int h, bool bPreview, int nScene)
{
    render::CaptionRequest request;
    request.bAll = bAll;
    request.bPreview = bPreview;
    request.nScene = nScene;
    request.bMergeMode = bMergeMode != 0;
    request.nPreviewFrame = nPreviewFrame;
    if (request.bMergeMode) {
        pData->capWatermark.caption.clear(); // the merge tab never writes a watermark
    }
    std::string text;
    {
        // Pool threads may be correcting their entries of the list meanwhile.
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        text = render::BuildCaptionText(*pData, request, w, h);
    }
    if (text.empty()) {
        return {};
    }
    // Text is UTF-8 throughout, so the file's bytes are the text as it stands, without a mark.
    std::string path = render::CaptionFilePath(*pData, request);
    std::string error;
    if (!core::WriteFileAtomically(path, text, &error)) {
        // The tool reports the missing file, or shows no caption.
        core::Log("%s(%d) %s\n", "CTarnwickProcess::BuildCaptionFilter", __LINE__, error.c_str());
    }
    return render::SubtitlesFilter(path);
}

} // namespace engine
