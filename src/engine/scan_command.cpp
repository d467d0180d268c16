// The command text of the frame-difference scan, and the smallest picture it can compare.

#include "engine/scan_command.h"

#include "core/helpers.h"
#include "engine/changed_pixels.h"
#include "engine/encoder_presets.h"

namespace engine {

std::string ScanCommand(bool bUseCuda, const std::string &path, int w, int h)
{
    // 1 MiB blocks keep the pipe full with few writes; the pipe itself holds 4 MiB.
    return ToolPrefix(bUseCuda) +
           core::StrPrintf("-loglevel quiet -blocksize 1048576 -i \"%s\" -vf \"scale=%d:%d\" -f "
                           "rawvideo -pix_fmt gray -",
                           path.c_str(),
                           w,
                           h);
}

bool ScanPictureTooSmall(int width, int height)
{
    return ScanDimension(width) * ScanDimension(height) <= 0;
}

} // namespace engine
