// Video filter chains: the project's picture chain, the conforming chain of merge inputs and the
// deinterlacing prefix of the input normalisation.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace render {

// The frame size a chain works with: the stored size, width and height swapped for a
// recording turned by 90 degrees.
struct SourceSize
{
    int w = 0;
    int h = 0;
};

SourceSize SourceSizeOf(const core::VideoInfo &info, bool bRotated);

// What the chain is built for.
struct VideoFilterFlags
{
    bool bVf = false;      // picture correction, bars and captions
    bool bPad = false;     // end with the fit into the 480 by 480 preview square
    bool bRotated = false; // swap width and height before any computation
};

// The -vf chain from the project's picture settings and viCurrent. With bVf: the lut and hue
// pieces (always, even for neutral values), zscale with primaries, the two drawbox bars with
// cine_sco, then captionFilter when it is not empty. Each piece ends in ",", so without bPad
// the text is empty or ends in a comma and the caller's next filter follows directly; with
// bPad it ends with the scale and pad into the square, without a comma. captionFilter is not
// read without bVf. Nothing is guarded: a zero sar_den, height or display width gives what the
// arithmetic gives.
std::string BuildVideoFilterText(const core::CTarnwickData &data,
                                 const VideoFilterFlags &flags,
                                 const std::string &captionFilter);
// The same from the picture values a job copied at its start and the facts of the picture.
std::string BuildVideoFilterText(const core::VideoInfo &vi,
                                 const core::PictureValues &picture,
                                 const VideoFilterFlags &flags,
                                 const std::string &captionFilter);

// The chain that brings a merge input to tw by th: square pixels first, then fitted without
// distortion and centred on black.
std::string ConformingChain(int tw, int th);

// "yadif=1," (one frame per field) when bDeinterlace is set, otherwise empty; it goes in front
// of "setpts=PTS-STARTPTS".
std::string DeinterlacePrefix(bool bDeinterlace);

} // namespace render
