// Automatic picture values: names and commands of the frame grabs, the measures of the grabbed
// frames, and the brightness, contrast, saturation and gamma derived from them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "core/tarnwick_data.h"

namespace engine {

// Frames grabbed from a video, spread evenly from its first frame to nine tenths into it.
inline constexpr int kPictureSamples = 10;
// Hue in OpenCV's 8-bit HSV runs from 0 to 179.
inline constexpr int kHueBins = 180;

// ---- Frame grabs (pure) ----

// The name pattern of the grab files: output_folder followed by the file name of input_file
// with its extension replaced by "_frame_%03d.jpg" (trip.mts gives trip_frame_%03d.jpg). A name
// without an extension gets the tail appended, so that no grab can take the input's own name.
std::string FrameGrabPattern(const std::string &output_folder, const std::string &input_file);
// The grab file number (1 to 10) of pattern: its last "%03d" replaced by the number with three
// digits. The rest of the pattern is taken as it stands, "%" included.
std::string FrameGrabFile(const std::string &pattern, int number);
// The pattern with its last "frame_%03d.jpg" replaced by "frame_*.jpg": every grab file of the
// input, also those of an earlier run.
std::string FrameGrabGlob(const std::string &pattern);
// Frames between two grabs: frame_num / 10, an integer division (0 below ten frames).
int FrameGrabStep(int frame_num);
// Seek time of grab index (0 to 9): "%.6f" of index * step / fps, or of 0 when fps is not
// above 0.
std::string FrameGrabTime(int index, int step, double fps);
// prefix (ToolPrefix) followed by "-ss <time> -i \"<path>\" -frames:v 1 \"<file>\"".
std::string FrameGrabCommand(const std::string &prefix,
                             const std::string &time,
                             const std::string &path,
                             const std::string &file);

// ---- Measures ----

// Sums over the frames measured so far.
struct PictureSums
{
    double Y = 0.0;                       // means of the Y plane (BGR to YUV)
    double sdY = 0.0;                     // standard deviations of the Y plane
    double U = 0.0;                       // means of the U plane
    double V = 0.0;                       // means of the V plane
    double S = 0.0;                       // means of the S plane (BGR to HSV)
    std::array<int64_t, kHueBins> hist{}; // pixels per hue, 0 to 179, over all frames
    int n = 0;                            // frames measured
};

// Adds one 8-bit three-channel BGR picture to sums. A picture of another kind is not added.
void AddPictureMeasures(const cv::Mat &bgr, PictureSums &sums);
// Reads each file in colour (cv::imread) and adds it; a file that cannot be read is skipped.
void MeasurePictureFiles(const std::vector<std::string> &files, PictureSums &sums);
// The plain files that match globPattern ("*" in its file name) in its folder, sorted; empty
// when the folder cannot be listed.
std::vector<std::string> GlobPictureFiles(const std::string &globPattern);

// The means over the frames measured (pure).
struct PictureMeans
{
    double Y = 0.0;
    double sdY = 0.0;
    double U = 0.0;
    double V = 0.0;
    double S = 0.0;
    int peak = 0; // the hue with the most pixels; the lowest one in a tie
};

// The hue with the most pixels, the lowest one in a tie (pure).
int HuePeak(const std::array<int64_t, kHueBins> &hist);
// The five sums divided by n and the hue peak; sums.n must be above 0 (pure).
PictureMeans AveragePictureSums(const PictureSums &sums);

// A dominant colour, from the hue peak and the chroma means (pure).
struct ColourCast
{
    bool bRed = false;   // peak at most 15 or at least 165, and V above 140
    bool bBlue = false;  // peak from 100 to 140, and U above 140
    bool bGreen = false; // peak from 50 to 90, and U - V below -10
    bool Any() const { return bRed || bBlue || bGreen; }
};
ColourCast FindColourCast(int peak, double U, double V);

// The four values before their finish (pure): brightness (128 - Y) / 255 within -1..1;
// contrast (52 / max(1, sdY))^0.5 within 0.5..2; saturation (128 - S) / 256 + 1 within 0.5..2,
// then times 0.8 with a colour cast, then within 0..2; gamma (128 / max(1, Y))^0.7 within
// 0.7..2.
struct PictureValues
{
    double brightness = 0.0;
    double contrast = 0.0;
    double saturation = 0.0;
    double gamma = 0.0;
};
PictureValues PictureValuesFor(const PictureMeans &means, const ColourCast &cast);

// Two decimals: the integer part of 100 * value + 0.5, times 0.01. The integer part cuts
// towards zero, so -0.254 gives -0.24 (pure).
double FinishTwoDecimals(double value);
// Finishes value to two decimals, bounds it by param's dMax, then its dMin, stores it and
// rebuilds the text.
void StorePictureValue(core::ParamRange &param, double value);
// StorePictureValue for brightness, contrast, saturation and gamma of data, in that order.
void StorePictureValues(const PictureValues &values, core::CTarnwickData &data);

} // namespace engine
