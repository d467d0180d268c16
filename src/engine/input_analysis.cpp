// The decisions of opening an input and the working MP4's command.
#include "engine/input_analysis.h"

#include <cmath>

#include "core/paths.h"
#include "engine/encoder_presets.h"

namespace engine {
namespace {

// Even frame count of about half a second: round(fps x 0.5), less one if odd.
long HalfSecondFrames(double fps)
{
    long nf = std::lround(fps * 0.5);
    return nf - nf % 2;
}

double Hundredths(double seconds)
{
    return static_cast<double>(static_cast<long>(100.0 * seconds + 0.5)) * 0.01;
}

} // namespace

bool NeedsDeinterlace(const std::string &field_order)
{
    return field_order != "progressive";
}

bool UsedAsItIs(const std::string &path, const std::string &field_order)
{
    return !NeedsDeinterlace(field_order) && core::IsMp4File(path);
}

double TransitionSeconds(double fps)
{
    if (!(fps > 0.0)) {
        return 0.0;
    }
    return Hundredths(static_cast<double>(HalfSecondFrames(fps)) / fps);
}

double MergeTransitionSeconds(double sourceFps, double targetFps)
{
    const long nf = sourceFps > 0.0 ? HalfSecondFrames(sourceFps) : 0;
    const double fps = targetFps > 0.0 ? targetFps : sourceFps;
    if (!(fps > 0.0)) {
        return 0.0;
    }
    return Hundredths(static_cast<double>(nf) / fps);
}

std::string ConvertToMp4Command(const std::string &prefix,
                                const std::string &source,
                                const std::string &encoder,
                                double fps,
                                const std::string &rate,
                                bool bDeinterlace,
                                const std::string &target)
{
    return prefix + "-i \"" + source + "\" -c:v " + encoder + " " + KeyFrameArgs(fps) + " " +
           RateArgs(rate) + " -c:a aac -b:a 192k -vf \"" + (bDeinterlace ? "yadif=1," : "") +
           "setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" -movflags +faststart \"" + target +
           "\"";
}

} // namespace engine
