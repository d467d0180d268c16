// Video filter chains: the project's picture chain, the conforming chain of merge inputs and the
// deinterlacing prefix of the input normalisation.
#include "render/video_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/helpers.h"
#include "render/captions.h"

namespace render {
namespace {

// The preview pane is a square of this many pixels per side.
constexpr int kPreviewSquare = 480;

// The integer part of value; 0 for a value that no int can hold (a zero size or denominator).
int IntegerPart(double value)
{
    if (!std::isfinite(value) || std::fabs(value) >= std::numeric_limits<int>::max()) {
        return 0;
    }
    return static_cast<int>(value);
}

// Brightness is a fraction of the full range; gamma is applied as the exponent 1/gamma.
std::string CorrectionPieces(const core::PictureValues &picture)
{
    return core::StrPrintf(
        "lut=y='pow(clip(((val+%.3f-128)*%.3f+128)/255\\,0\\,1),1/%.3f)*255',hue=s=%.3f,",
        picture.brightness * 255.0,
        picture.contrast,
        picture.gamma,
        picture.saturation);
}

// Black bars painted over the picture (the frame size stays) so that what is left has the
// shape of 2.35:1: at the top and bottom of a landscape picture, at the sides of a portrait
// one. A picture wider than that gets a bar of zero or less, written as it comes out.
std::string BarPieces(double w, double h, double dw)
{
    int nShort = IntegerPart(std::min(h, dw));
    int nLong = IntegerPart(std::max(h, dw));
    int bar = CinemaBar(nShort, nLong);
    if (h > w) {
        return core::StrPrintf("drawbox=y=0:color=black@1.0:width=%d:height=ih:t=fill,"
                               "drawbox=x=%d:color=black@1.0:width=%d:height=ih:t=fill,",
                               bar,
                               nShort - bar,
                               bar);
    }
    return core::StrPrintf("drawbox=y=0:color=black@1.0:width=iw:height=%d:t=fill,"
                           "drawbox=y=%d:color=black@1.0:width=iw:height=%d:t=fill,",
                           bar,
                           nShort - bar,
                           bar);
}

// Square pixels, scaled into the preview square and centred on the pane's own grey, so that
// the padded frame melts into the pane.
std::string PadPieces(double w, double h, double dw, double sar)
{
    const int W = kPreviewSquare;
    const int H = kPreviewSquare;
    double k = std::min(H / h, W / dw);
    int sw = IntegerPart(k * dw);
    int sh = IntegerPart(k * h);
    int px = (W - sw) / 2;
    int py = (H - sh) / 2;
    if (h > w && sh == H) {
        px += 2; // portrait pictures that fill the height sit two pixels further right
    }
    return core::StrPrintf("scale=iw*%f:ih,setsar=1,scale=%d:%d,pad=%d:%d:%d:%d:color=#505050",
                           sar,
                           sw,
                           sh,
                           W,
                           H,
                           px,
                           py);
}

} // namespace

SourceSize SourceSizeOf(const core::VideoInfo &info, bool bRotated)
{
    if (bRotated) {
        return SourceSize{info.height, info.width};
    }
    return SourceSize{info.width, info.height};
}

std::string BuildVideoFilterText(const core::CTarnwickData &data,
                                 const VideoFilterFlags &flags,
                                 const std::string &captionFilter)
{
    return BuildVideoFilterText(data.viCurrent, data.Picture(), flags, captionFilter);
}

std::string BuildVideoFilterText(const core::VideoInfo &vi,
                                 const core::PictureValues &picture,
                                 const VideoFilterFlags &flags,
                                 const std::string &captionFilter)
{
    SourceSize size = SourceSizeOf(vi, flags.bRotated);
    double w = size.w;
    double h = size.h;
    double sar = static_cast<double>(vi.sar_num) / vi.sar_den;
    // The display width; portrait and landscape are told apart by w, not by dw.
    double dw = w * sar;

    std::string chain;
    if (flags.bVf) {
        chain += CorrectionPieces(picture);
        if (picture.primaries != 0) {
            chain += "zscale=range=full:primaries=bt709:transfer=bt709:matrix=bt709,";
        }
        if (picture.cine_sco != 0) {
            chain += BarPieces(w, h, dw);
        }
        if (!captionFilter.empty()) {
            chain += captionFilter + ",";
        }
    }
    if (flags.bPad) {
        chain += PadPieces(w, h, dw, sar);
    }
    return chain;
}

std::string ConformingChain(int tw, int th)
{
    return core::StrPrintf("scale=iw*sar:ih,setsar=1,scale=%d:%d:force_original_aspect_ratio="
                           "decrease,pad=%d:%d:(ow-iw)/2:(oh-ih)/2",
                           tw,
                           th,
                           tw,
                           th);
}

std::string DeinterlacePrefix(bool bDeinterlace)
{
    return bDeinterlace ? "yadif=1," : "";
}

} // namespace render
