// Encoder presets and intermediates: the settled pieces every ffmpeg command is built from.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace engine {

// Encoder text behind "-c:v ", by row (0 software, 1 hardware: bUseCuda) and column
// (nEncodePreset 0 best picture .. 2 smallest file).
inline constexpr const char *encoderPresets[2][3] = {
    {"mpeg4 -qscale:v 1", "mpeg4 -qscale:v 4", "mpeg4 -qscale:v 7"},
    {"h264_nvenc -preset p1 -qp 18",
     "h264_nvenc -preset p1 -qp 23",
     "h264_nvenc -preset p1 -qp 28"},
};

// Tail that names the working MP4 of an input, indexed as encoderPresets. It names encoder and
// quality, so working files of other settings are never mistaken for the wanted one.
inline constexpr const char *intermediateNames[2][3] = {
    {"_input_ch.mp4", "_input_cs.mp4", "_input_cl.mp4"},
    {"_input_gh.mp4", "_input_gs.mp4", "_input_gl.mp4"},
};

// The table entries for the two switches; a preset outside 0..2 is taken as the nearest one.
std::string EncoderText(int bUseCuda, int nEncodePreset);
std::string IntermediateName(int bUseCuda, int nEncodePreset);

// "ffmpeg -y " or, with bUseCuda, "ffmpeg -y -hwaccel cuda ": the start of every ffmpeg command.
std::string ToolPrefix(bool bUseCuda);

// "-g %d -keyint_min 1" with fps rounded to the nearest integer: a key frame about every
// second, and an early key frame is never refused.
std::string KeyFrameArgs(double fps);

// "-r %s" with a rate fraction such as "30000/1001".
std::string RateArgs(const std::string &r_frame_rate);

// The working MP4 of the project's input under its current switches: output_folder followed
// by the file name of input_file with its extension replaced by IntermediateName.
std::string WorkingFilePath(const core::CTarnwickData &data);
// The same under given switches.
std::string WorkingFilePath(const core::CTarnwickData &data, int bUseCuda, int nEncodePreset);

} // namespace engine
