// The command text of the frame-difference scan: the video as small gray frames on stdout, and
// whether a picture is large enough to be scanned at all.
#pragma once

#include <string>

namespace engine {

// The scan's ffmpeg command for path at w x h: the tool prefix (ToolPrefix(bUseCuda)), then
// "-loglevel quiet -blocksize 1048576 -i \"<path>\" -vf \"scale=<w>:<h>\" -f rawvideo
// -pix_fmt gray -". The frames leave through standard output, one byte of luma per pixel.
// The tool must stay silent: its standard error shares the pipe, and one line there would
// shift every frame behind it. Pure.
std::string ScanCommand(bool bUseCuda, const std::string &path, int w, int h);

// A picture of width x height leaves no pixel to compare at the scan's eighth of the size per
// side (ScanDimension 0 for a side under 4 pixels): such a video cannot be scanned. Pure.
bool ScanPictureTooSmall(int width, int height);

} // namespace engine
