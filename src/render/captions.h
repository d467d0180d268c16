// Captions burnt in by the subtitles filter: ASS style and dialogue lines, the whole ASS text,
// where its file goes and the filter text that reads it.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace render {

// Which captions a file is made for, and the engine state that decides it.
struct CaptionRequest
{
    bool bAll = false;       // the whole film (job 1006 or 1057); ignored with bPreview
    bool bPreview = false;   // one still frame at nPreviewFrame
    int nScene = -1;         // scene of the one-scene and one-frame cases; negative: list_idx
    bool bMergeMode = false; // merge tab: the watermark never shows
    int nPreviewFrame = 0;   // frame at which preview and playback stand, within the scene
};

// The three kinds of caption file, by the request's case.
inline constexpr const char *kCaptionSuffixAll = "_all.ass";
inline constexpr const char *kCaptionSuffixScene = "_seg.ass";
inline constexpr const char *kCaptionSuffixFrame = "_one.ass";

// Height of the black bar on each side of the short extent that masks a frame to 2.35:1: the
// long extent divided by 2.35, put on a grid of 8 pixels (nearest, halves away from zero),
// taken from the short extent and halved toward zero. Zero or negative for a frame that is
// already as wide as 2.35:1.
int CinemaBar(int nShort, int nLong);

// A caption's text for the Text field of a Dialogue line, shown as typed: a line end (LF, CR
// or CR LF) becomes "\N", a brace is escaped ("\{", "\}") so that nothing is read as an
// override block, and a backslash before "n" or "h" is kept from libass by a word joiner. "\N"
// stays a line break, as in the default watermark.
std::string EscapeAssText(const std::string &text);

// EscapeAssText of caption, except for the fade block "{\fad(a,b)}" that a default title begins
// with: kept as an effect with bKeepFade, left out without (a still, which a fade would dim).
std::string AssCaptionText(const std::string &caption, bool bKeepFade);

// One "Style: ..." line ending in "\n". The font size is font_size * nScale; the side margins
// are half of it, the vertical margin half of what the bar leaves of it (never below 0).
std::string
MakeStyleLine(const std::string &name, int nScale, int nBar, const core::CapParam &capParam);

// The Dialogue lines of the request's case, each ending in "\n"; empty when no caption is in
// force there (a caption is in force when its text is not empty and cap_pos_type is not 0).
// Times are frames of the film after cross-fades at viCurrent.fps. The title's end is worked
// out here and nothing of data changes.
std::string BuildCaptionEvents(const core::CTarnwickData &data, const CaptionRequest &request);

// The whole ASS file for a frame of w by h (w before the sample aspect ratio is applied), with
// "\r\n" line ends; empty when BuildCaptionEvents is. Font sizes scale with the short side in
// steps of 270 lines, a picture of fewer lines taking the scale of 270.
std::string
BuildCaptionText(const core::CTarnwickData &data, const CaptionRequest &request, int w, int h);

// output_folder + the name of the case's file: output_name (merge tab) or the file name of
// input_file, its extension replaced by the case's suffix.
std::string CaptionFilePath(const core::CTarnwickData &data, const CaptionRequest &request);

// path as the value of a filter option inside single quotes of a filter graph.
std::string EscapeFilterPath(const std::string &path);

// "subtitles='<escaped path>'".
std::string SubtitlesFilter(const std::string &path);

} // namespace render
