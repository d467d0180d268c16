// The command that cuts one scene of the input into its segment: cut times and command text.
#include "engine/cut_command.h"

#include <cmath>

#include "core/helpers.h"

namespace engine {
namespace {

// Seconds on a command line always carry six decimals.
std::string CommandSeconds(double seconds)
{
    return core::StrPrintf("%.6f", seconds);
}

} // namespace

CutTimes
CutSceneTimes(int framNo_first, int framNo_second, double fps, const std::vector<double> &pts_list)
{
    double start = 0.0;
    double end = 0.0;
    if (fps > 0.0) {
        start = framNo_first / fps;
        end = (framNo_second + 1) / fps;
    }
    double duration = end - start;
    // The list needs the frame after the scene: its time is where the cut ends. Without it
    // (the last scene of the file) the frame-number times stand.
    // (Entries that do not exist, for broken frame numbers, are never read.)
    size_t entries = pts_list.size();
    if (framNo_first >= 0 && framNo_second >= -1 &&
        entries > static_cast<size_t>(framNo_second + 1) &&
        entries > static_cast<size_t>(framNo_first)) {
        start = pts_list[static_cast<size_t>(framNo_first)];
        duration = pts_list[static_cast<size_t>(framNo_second) + 1] - start;
    }
    return CutTimes{CommandSeconds(start), CommandSeconds(duration)};
}

std::string BuildCutCommand(const CutCommandArgs &args)
{
    // "-g" of about one second and "-keyint_min 1": the segment starts on a key frame and may
    // have one wherever the encoder wants. setpts/asetpts make its times start at zero.
    return args.prefix +
           core::StrPrintf("-ss %s -i \"%s\" -t %s -c:v %s -g %d -keyint_min 1 -r %s -c:a aac "
                           "-b:a 192k -vf \"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" "
                           "-movflags +faststart \"%s\"",
                           args.times.start.c_str(),
                           args.sourcePath.c_str(),
                           args.times.duration.c_str(),
                           args.encoderText.c_str(),
                           static_cast<int>(std::lround(args.fps)),
                           args.r_frame_rate.c_str(),
                           args.fileName.c_str());
}

} // namespace engine
