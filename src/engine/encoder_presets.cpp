// Encoder presets and intermediates: table look-up, tool prefix, key-frame and rate arguments.
#include "engine/encoder_presets.h"

#include <algorithm>
#include <cmath>

#include "core/helpers.h"
#include "core/paths.h"

namespace engine {
namespace {

int Row(int bUseCuda)
{
    return bUseCuda != 0 ? 1 : 0;
}

int Column(int nEncodePreset)
{
    return std::clamp(nEncodePreset, 0, 2);
}

} // namespace

std::string EncoderText(int bUseCuda, int nEncodePreset)
{
    return encoderPresets[Row(bUseCuda)][Column(nEncodePreset)];
}

std::string IntermediateName(int bUseCuda, int nEncodePreset)
{
    return intermediateNames[Row(bUseCuda)][Column(nEncodePreset)];
}

std::string ToolPrefix(bool bUseCuda)
{
    return bUseCuda ? "ffmpeg -y -hwaccel cuda " : "ffmpeg -y ";
}

std::string KeyFrameArgs(double fps)
{
    return core::StrPrintf("-g %d -keyint_min 1", static_cast<int>(std::lround(fps)));
}

std::string RateArgs(const std::string &r_frame_rate)
{
    return core::StrPrintf("-r %s", r_frame_rate.c_str());
}

std::string WorkingFilePath(const core::CTarnwickData &data)
{
    return WorkingFilePath(data, data.bUseCuda, data.nEncodePreset);
}

std::string WorkingFilePath(const core::CTarnwickData &data, int bUseCuda, int nEncodePreset)
{
    std::string renamed =
        core::ReplaceExtension(data.input_file, IntermediateName(bUseCuda, nEncodePreset));
    return core::StrPrintf("%s%s", data.output_folder.c_str(), core::FileNamePart(renamed).c_str());
}

} // namespace engine
