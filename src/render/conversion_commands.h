// The command that brings a merge source to its segment: one picture size and frame rate, and a
// sound track in every segment.
#pragma once

#include <string>

#include "render/trim_commands.h"

namespace render {

// How long the silent track of a source without sound may be: "10:00:00.00" in seconds. The
// conversion's "-shortest" cuts it to the picture's length.
inline constexpr double kSilenceSeconds = 36000.0;

// The second input of a source without sound, a silent stereo track at 44100 Hz:
// "-f lavfi -t 36000.000000 -i anullsrc=channel_layout=stereo:sample_rate=44100 -shortest ".
// Empty when the source has sound.
std::string SilenceArgs(bool bHasAudio);

// The conversion of workFile to target: silence (SilenceArgs) behind the input, pixel format
// yuv420p, the rate and key frames of args, AAC sound, chain (the conforming chain, without a
// final comma) before the time-stamp reset and square pixels. The picture is brought to the
// rate by the fps filter, and with frames above 0 it ends after that many frames: "-r" alone
// makes ffmpeg 5.1 repeat the last frames at a lower rate (a 4 s file of 25 fps gave 98 frames
// at 24 fps, where the row plans 96).
std::string ConvertInputCommand(const EncodeArgs &args,
                                const std::string &workFile,
                                const std::string &silence,
                                const std::string &chain,
                                const std::string &target,
                                int frames = 0);

} // namespace render
