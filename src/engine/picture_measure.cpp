// Automatic picture values: grab names and commands, the OpenCV measures of the grabbed frames
// and the decision maths from means to the four picture values.
#include "engine/picture_measure.h"

#include <algorithm>
#include <cmath>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "core/helpers.h"
#include "core/paths.h"

namespace engine {
namespace {

constexpr const char *kGrabTail = "_frame_%03d.jpg";
constexpr const char *kGrabNumber = "%03d";
constexpr const char *kGrabName = "frame_%03d.jpg";
constexpr const char *kGrabWildcard = "frame_*.jpg";

// text with the last occurrence of what replaced by with; unchanged when what does not occur.
std::string ReplaceLast(const std::string &text, const std::string &what, const std::string &with)
{
    size_t at = text.rfind(what);
    if (at == std::string::npos) {
        return text;
    }
    return text.substr(0, at) + with + text.substr(at + what.size());
}

double Clamp(double x, double low, double high)
{
    if (x < low) {
        return low;
    }
    if (x > high) {
        return high;
    }
    return x;
}

// Counts the hues below kHueBins of an 8-bit plane.
void CountHues(const cv::Mat &hue, std::array<int64_t, kHueBins> &hist)
{
    for (int row = 0; row < hue.rows; ++row) {
        const uchar *p = hue.ptr<uchar>(row);
        for (int col = 0; col < hue.cols; ++col) {
            if (p[col] < kHueBins) {
                ++hist[p[col]];
            }
        }
    }
}

} // namespace

#if defined(__SANITIZE_THREAD__)
// The first cv::imread or cv::imwrite registers OpenCV's codecs, GDAL's among them, and GDAL's
// own start-up takes two of its mutexes in both orders on one thread. ThreadSanitizer reports that
// as a possible deadlock inside libgdal; nothing of ours is involved, so that report is left out.
extern "C" const char *__tsan_default_suppressions()
{
    return "deadlock:libgdal.so\n";
}
#endif

std::string FrameGrabPattern(const std::string &output_folder, const std::string &input_file)
{
    std::string name = core::FileNamePart(input_file);
    std::string replaced = core::ReplaceExtension(name, kGrabTail);
    if (replaced == name) {
        replaced = name + kGrabTail; // no extension to replace
    }
    return output_folder + replaced;
}

std::string FrameGrabFile(const std::string &pattern, int number)
{
    return ReplaceLast(pattern, kGrabNumber, core::StrPrintf("%03d", number));
}

std::string FrameGrabGlob(const std::string &pattern)
{
    return ReplaceLast(pattern, kGrabName, kGrabWildcard);
}

int FrameGrabStep(int frame_num)
{
    return frame_num / kPictureSamples;
}

std::string FrameGrabTime(int index, int step, double fps)
{
    double seconds = fps > 0.0 ? (index * step) / fps : 0.0;
    return core::StrPrintf("%.6f", seconds);
}

std::string FrameGrabCommand(const std::string &prefix,
                             const std::string &time,
                             const std::string &path,
                             const std::string &file)
{
    // The seek stands before the input: ffmpeg jumps to the key frame before the time and
    // decodes only from there.
    return prefix +
           core::StrPrintf(
               "-ss %s -i \"%s\" -frames:v 1 \"%s\"", time.c_str(), path.c_str(), file.c_str());
}

void AddPictureMeasures(const cv::Mat &bgr, PictureSums &sums)
{
    if (bgr.empty() || bgr.type() != CV_8UC3) {
        return;
    }
    cv::Mat yuv;
    cv::Mat hsv;
    cv::cvtColor(bgr, yuv, cv::COLOR_BGR2YUV);
    cv::cvtColor(bgr, hsv, cv::COLOR_BGR2HSV);
    std::vector<cv::Mat> yuvPlanes;
    std::vector<cv::Mat> hsvPlanes;
    cv::split(yuv, yuvPlanes);
    cv::split(hsv, hsvPlanes);
    cv::Scalar meanY;
    cv::Scalar sdY;
    cv::meanStdDev(yuvPlanes[0], meanY, sdY);
    sums.Y += meanY[0];
    sums.sdY += sdY[0];
    sums.S += cv::mean(hsvPlanes[1])[0];
    sums.U += cv::mean(yuvPlanes[1])[0];
    sums.V += cv::mean(yuvPlanes[2])[0];
    CountHues(hsvPlanes[0], sums.hist);
    ++sums.n;
}

void MeasurePictureFiles(const std::vector<std::string> &files, PictureSums &sums)
{
    for (const std::string &file : files) {
        cv::Mat picture = cv::imread(file, cv::IMREAD_COLOR);
        if (!picture.empty()) {
            AddPictureMeasures(picture, sums);
        }
    }
}

std::vector<std::string> GlobPictureFiles(const std::string &globPattern)
{
    std::vector<cv::String> found;
    try {
        cv::glob(globPattern, found, false);
    } catch (const cv::Exception &) {
        return {}; // the folder cannot be opened: no files
    }
    return std::vector<std::string>(found.begin(), found.end());
}

int HuePeak(const std::array<int64_t, kHueBins> &hist)
{
    // max_element keeps the first of equal largest entries.
    return static_cast<int>(std::max_element(hist.begin(), hist.end()) - hist.begin());
}

PictureMeans AveragePictureSums(const PictureSums &sums)
{
    PictureMeans means;
    means.Y = sums.Y / sums.n;
    means.sdY = sums.sdY / sums.n;
    means.U = sums.U / sums.n;
    means.V = sums.V / sums.n;
    means.S = sums.S / sums.n;
    means.peak = HuePeak(sums.hist);
    return means;
}

ColourCast FindColourCast(int peak, double U, double V)
{
    ColourCast cast;
    cast.bRed = (peak <= 15 || peak >= 165) && V > 140;
    cast.bBlue = peak >= 100 && peak <= 140 && U > 140;
    cast.bGreen = peak >= 50 && peak <= 90 && U - V < -10;
    return cast;
}

PictureValues PictureValuesFor(const PictureMeans &means, const ColourCast &cast)
{
    // Targets: a mean light of 128, a spread of 52 around it and a saturation mean of 128; a
    // colour cast takes a fifth of the saturation back.
    PictureValues values;
    values.brightness = Clamp((128.0 - means.Y) / 255.0, -1.0, 1.0);
    values.contrast = Clamp(std::pow(52.0 / std::max(1.0, means.sdY), 0.5), 0.5, 2.0);
    double saturation = Clamp((128.0 - means.S) * 0.00390625 + 1.0, 0.5, 2.0);
    if (cast.Any()) {
        saturation *= 0.8;
    }
    values.saturation = Clamp(saturation, 0.0, 2.0);
    values.gamma = Clamp(std::pow(128.0 / std::max(1.0, means.Y), 0.7), 0.7, 2.0);
    return values;
}

double FinishTwoDecimals(double value)
{
    return static_cast<double>(static_cast<long long>(100.0 * value + 0.5)) * 0.01;
}

void StorePictureValue(core::ParamRange &param, double value)
{
    double bounded = std::min(FinishTwoDecimals(value), param.dMax);
    if (bounded < param.dMin) {
        bounded = param.dMin;
    }
    param.dValue = bounded;
    core::UpdateParamText(param);
}

void StorePictureValues(const PictureValues &values, core::CTarnwickData &data)
{
    StorePictureValue(data.brightness, values.brightness);
    StorePictureValue(data.contrast, values.contrast);
    StorePictureValue(data.saturation, values.saturation);
    StorePictureValue(data.gamma, values.gamma);
}

} // namespace engine
