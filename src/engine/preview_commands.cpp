// The pure pieces of stills and playback: paths, command texts and the position rules.
#include "engine/preview_commands.h"

#include "core/helpers.h"
#include "core/paths.h"

namespace engine {

std::string PreviewImagePath(const std::string &outputFolder,
                             const std::string &inputFile,
                             const std::string &outputName,
                             bool bMergeMode)
{
    const std::string name = bMergeMode ? outputName : core::FileNamePart(inputFile);
    return outputFolder + core::ReplaceExtension(name, "_preview.jpg");
}

std::string PreviewTimeText(const std::string &strTime)
{
    return strTime.empty() ? core::StrPrintf("%.6f", 0.0) : strTime;
}

std::string BuildStillCommand(bool bUseCuda,
                              const std::string &timeText,
                              const std::string &file,
                              const std::string &chain,
                              const std::string &stillPath)
{
    std::string command = bUseCuda ? "ffmpeg -y -hwaccel cuda " : "ffmpeg -y ";
    command += core::StrPrintf("-ss %s -i \"%s\" -frames:v 1 -vf \"%s\" \"%s\"",
                               timeText.c_str(),
                               file.c_str(),
                               chain.c_str(),
                               stillPath.c_str());
    return command;
}

std::string BuildPlayerCommand(const PlayerArgs &args)
{
    return core::StrPrintf("ffplay -window_title \"TWREVIEW\" -noborder -autoexit -left %d -top "
                           "%d -ss %s -i \"%s\" -t %s -af \"volume=%.6f\" -vf \"%s,showinfo\"",
                           args.left,
                           args.top,
                           args.ss.c_str(),
                           args.file.c_str(),
                           args.t.c_str(),
                           args.play_vol / 100.0,
                           args.chain.c_str());
}

bool IsPlaybackRestart(const std::string &strPreviewTime, int nPreviewFrame, int frame_num)
{
    return strPreviewTime == "0" || nPreviewFrame >= frame_num - 1;
}

std::string NextLoopStart(const std::string &strPreviewTime, int nPreviewFrame, int frame_num)
{
    return nPreviewFrame < frame_num - 1 ? strPreviewTime : core::StrPrintf("%.6f", 0.0);
}

int FirstSceneToPlay(int list_idx, int n, bool play_loop, int nPreviewFrame, int frame_num)
{
    if (play_loop && nPreviewFrame >= frame_num - 1 && list_idx < n - 1) {
        return list_idx + 1;
    }
    return list_idx;
}

} // namespace engine
