// The decisions of opening an input: whether a video is used as it is or converted into a
// working MP4 (deinterlaced on the way unless known to be progressive), the command of that
// conversion, and the default length of a cross-fade.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace engine {

// True unless field_order is "progressive": an empty (unknown) field order counts as
// interlaced.
bool NeedsDeinterlace(const std::string &field_order);

// A video is used as it is only if it is a progressive MP4 (extension in any case).
bool UsedAsItIs(const std::string &path, const std::string &field_order);

// The default cross-fade: about half a second as a whole even number of frames, rounded to
// hundredths. round(fps x 0.5) made even, divided by fps; 0 when fps is not above 0.
double TransitionSeconds(double fps);

// The cross-fade of a merge row: the frame count comes from the source's fps, the seconds from
// the target's fps, or from the source's when the target's is not above 0.
double MergeTransitionSeconds(double sourceFps, double targetFps);

// The working MP4's command: prefix is ToolPrefix's text, encoder the preset's encoder text,
// fps the source's rate (rounded for the key frame distance), rate its fraction text.
std::string ConvertToMp4Command(const std::string &prefix,
                                const std::string &source,
                                const std::string &encoder,
                                double fps,
                                const std::string &rate,
                                bool bDeinterlace,
                                const std::string &target);

} // namespace engine
