// Stream probing: ffprobe's facts of a file into the project's records, and the counting pass
// for containers that state no frame count.
#include "engine/tarnwick_process.h"

#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "core/app_log.h"
#include "core/helpers.h"
#include "engine/probe_cache.h"
#include "engine/probe_json.h"
#include "engine/scan_command.h"

namespace engine {

int CTarnwickProcess::GetVideoInfoFfprobe(const std::string &path, core::VideoInfo &info)
{
    info = core::VideoInfo{};
    std::string command = core::StrPrintf(
        "ffprobe -v quiet -print_format json -show_format -show_streams \"%s\"", path.c_str());
    if (!CommandCarriesPaths("CTarnwickProcess::GetVideoInfoFfprobe", __LINE__, command, {path})) {
        return 1;
    }
    // The same unchanged file is not probed twice: its facts are kept from the first probe.
    std::string text;
    if (std::optional<std::string> kept = CachedProbeText(path)) {
        text = std::move(*kept);
    } else {
        if (ExecuteCmd(command, &text) != 0) {
            return 1; // also a stop: -2 does not pass through here
        }
        KeepProbeText(path, text);
    }
    if (!ProbeVideoJson(text, path, info)) {
        return -1;
    }
    core::Log("%s(%d) filename:\"%s\", r_frame_rate:\"%s\", width:%d, height:%d, "
              "frame_rate:%.6f, nb_frames:%d, rotation:%d, start_frame:%d, field_order:%s\n",
              "CTarnwickProcess::GetVideoInfoFfprobe",
              __LINE__,
              path.c_str(),
              info.r_frame_rate.c_str(),
              info.width,
              info.height,
              info.fps,
              info.frame_num,
              info.rotation,
              info.start_frame,
              info.field_order.c_str());
    return 0;
}

bool CTarnwickProcess::ProbeVideoJson(const std::string &text,
                                      const std::string &path,
                                      core::VideoInfo &info)
{
    ProbeContext context;
    if (pData != nullptr) {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        context.input_file = pData->input_file;
        context.inputFrameNum = pData->viInput.frame_num;
    }
    context.countFrames = [this](const std::string &p, const core::VideoInfo &i) {
        return GetNbFrame(p, i);
    };
    return ProbeVideoText(text, path, context, info);
}

int CTarnwickProcess::GetNbFrame(const std::string &path, const core::VideoInfo &info)
{
    // A hundredth of the size per side: only the number of frames matters.
    int w = static_cast<int>(std::lround(info.width * 0.01));
    int h = static_cast<int>(std::lround(info.height * 0.01));
    bool bUseCuda = pData != nullptr && pData->bUseCuda != 0;
    // The same gray frame stream as the scan reads, only smaller.
    std::string command = ScanCommand(bUseCuda, path, w, h);
    if (!CommandCarriesPaths("CTarnwickProcess::GetNbFrame", __LINE__, command, {path})) {
        return 0;
    }
    ChildProcess child;
    if (StartChildProcess(command, child) != 0) {
        LogCommandResult("CTarnwickProcess::GetNbFrame", __LINE__, command, kJobCannotStart);
        return 0;
    }
    hProcess = child.Pid();
    long frameSize = static_cast<long>(w) * h;
    int count = 0;
    if (frameSize <= 0) {
        child.Kill(kJobCannotStart);
    } else {
        std::vector<char> frame(static_cast<size_t>(frameSize));
        for (;;) {
            long got = 0;
            while (got < frameSize) {
                long n =
                    child.Read(frame.data() + got, static_cast<unsigned long>(frameSize - got));
                if (n <= 0) {
                    break;
                }
                got += n;
            }
            if (got < frameSize) {
                break; // an incomplete last frame is not counted
            }
            ++count;
            if (bCancel != 0) {
                child.Kill(kJobStopped);
            }
        }
    }
    child.Wait();
    hProcess = 0;
    return count;
}

int CTarnwickProcess::OpenVideoFile(const std::string &path)
{
    core::VideoInfo info;
    int result = GetVideoInfoFfprobe(path, info);
    if (result != 0) {
        return result;
    }
    {
        // The tab reads the facts while a worker or helper opens a file.
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->viCurrent = info;
        if (path == pData->input_file || path == pData->input_mp4_file) {
            pData->viInput = info;
        }
        if (path == pData->input_file) {
            pData->viSource = info;
        }
    }
    strPreviewFile = path;
    return 0;
}

int CTarnwickProcess::ReloadVideoInfo(const std::string &path, bool bQuiet)
{
    int result = OpenVideoFile(path);
    if (result != 0) {
        return result;
    }
    int frameNum = pData->viCurrent.frame_num;
    if (!bQuiet) {
        SendToTab(AppMessage::WM_APP_INPUT_INFO, 0, frameNum);
    }
    int position = nPreviewFrame < 1 ? 0 : nPreviewFrame + 1;
    SendToTab(AppMessage::WM_APP_POSITION, std::min(frameNum, position), frameNum);
    return 0;
}

int CTarnwickProcess::GetFrameCount(const std::string &path)
{
    core::VideoInfo info;
    GetVideoInfoFfprobe(path, info);
    return info.frame_num;
}

int CTarnwickProcess::RunFfprobeJson(const std::string &path, std::string &text, int mode)
{
    const char *format = nullptr;
    switch (mode) {
    case 1:
    case 2:
        format = "ffprobe -v quiet -print_format json -show_format -show_streams \"%s\"";
        break;
    case 3:
        format = "ffprobe -v quiet -print_format json -show_format \"%s\"";
        break;
    case 4:
        format = "ffprobe -v quiet -print_format json -select_streams v -show_streams \"%s\"";
        break;
    case 5:
        format = "ffprobe -v quiet -print_format json -select_streams a -show_streams \"%s\"";
        break;
    default:
        format = "ffprobe -v error -show_streams -select_streams v:0 -print_format json \"%s\"";
        break;
    }
    text.clear();
    std::string command = core::StrPrintf(format, path.c_str());
    if (!CommandCarriesPaths("CTarnwickProcess::RunFfprobeJson", __LINE__, command, {path})) {
        return 1;
    }
    return ExecuteCmd(command, &text) == 0 ? 0 : 1;
}

} // namespace engine
