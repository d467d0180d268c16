// Captions burnt in by the subtitles filter: ASS style and dialogue lines, the whole ASS text,
// where its file goes and the filter text that reads it.
#include "render/captions.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/helpers.h"
#include "core/paths.h"
#include "core/time_codes.h"

namespace render {
namespace {

using core::CapParam;
using core::CTarnwickData;
using core::SceneEntry;

constexpr const char *kHeaderFormat =
    "[Script Info]\nTitle: Sample Subtitle\nScriptType: v4.00+\nCollisions: Normal\n"
    "PlayResX: %d\nPlayResY: %d\nTimer: 100.0000\n\n[V4+ Styles]\n"
    "Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, "
    "BackColour, Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, "
    "BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\n";

constexpr const char *kStyleFormat =
    "Style: %s,%s,%d,&H%s,&H000000FF,&H00000000,&H64000000,%d,%d,%d,%d,100,100,0,0,1,%d,0,%d,%d,"
    "%d,%d,%d\n";

constexpr const char *kEventsHeader = "\n[Events]\nFormat: Layer, Start, End, Style, Name, "
                                      "MarginL, MarginR, MarginV, Effect, Text\n";

constexpr const char *kDialogueFormat = "Dialogue: %d,%s,%s,%s,,0,0,0,,%s\n";

// Scene captions lie under the title, the title under the watermark.
constexpr int kLayerScene = 0;
constexpr int kLayerTitle = 1;
constexpr int kLayerWatermark = 2;

// Font sizes are given for a picture of 270 lines and scale in whole steps.
constexpr int kLinesPerScaleStep = 270;

bool InForce(const CapParam &cap)
{
    return !cap.caption.empty() && cap.cap_pos_type != 0;
}

int FrameCount(const SceneEntry &entry)
{
    return entry.framNo_second - entry.framNo_first + 1;
}

// The nearest frame to a time, halves away from zero.
int FrameAt(double seconds, double fps)
{
    return static_cast<int>(std::lround(seconds * fps));
}

// The integer part of value; 0 for a value that no int can hold (a zero denominator).
int IntegerPart(double value)
{
    if (!std::isfinite(value) || std::fabs(value) >= std::numeric_limits<int>::max()) {
        return 0;
    }
    return static_cast<int>(value);
}

// The Dialogue line of a caption as the user typed it (see AssCaptionText).
std::string Dialogue(int layer,
                     const std::string &start,
                     const std::string &end,
                     const std::string &style,
                     const std::string &caption,
                     bool bStill = false)
{
    return core::StrPrintf(kDialogueFormat,
                           layer,
                           start.c_str(),
                           end.c_str(),
                           style.c_str(),
                           AssCaptionText(caption, !bStill).c_str());
}

// "Scene001" for the entry at list index 0.
std::string SceneStyleName(int nIndex)
{
    return core::StrPrintf("Scene%03d", nIndex + 1);
}

std::string TimeCode(double seconds)
{
    return core::SecondsToTimeCode(seconds, false);
}

// The watermark as this request sees it: the merge tab never shows one.
CapParam WatermarkOf(const CTarnwickData &data, const CaptionRequest &request)
{
    CapParam cap = data.capWatermark;
    if (request.bMergeMode) {
        cap.caption.clear();
    }
    return cap;
}

bool IsWholeFilm(const CaptionRequest &request)
{
    return request.bAll && !request.bPreview;
}

int SceneIndexOf(const CTarnwickData &data, const CaptionRequest &request)
{
    return request.nScene >= 0 ? request.nScene : data.list_idx;
}

const SceneEntry *EntryAt(const CTarnwickData &data, int nIndex)
{
    if (nIndex < 0 || static_cast<size_t>(nIndex) >= data.diff_list.size()) {
        return nullptr;
    }
    return &data.diff_list[static_cast<size_t>(nIndex)];
}

// Frames of one cross-fade and of half of one.
struct FadeFrames
{
    int nFull = 0;
    int nHalf = 0;
};

FadeFrames FadeOf(const CTarnwickData &data)
{
    double fps = data.viCurrent.fps;
    return FadeFrames{FrameAt(data.dTransitionSec, fps), FrameAt(data.dTransitionSec * 0.5, fps)};
}

// What the cross-fades take from entry j of n: half a fade at either end of the list, a whole
// one between. The position counts in the whole list, disabled entries included.
int FadeLoss(int j, int n, const FadeFrames &fade)
{
    return (j == 0 || j == n - 1) ? fade.nHalf : fade.nFull;
}

// The length of the finished film in frames.
struct FilmFrames
{
    bool bFade = false;
    FadeFrames fade;
    int nTotal = 0;
    int nLast = 1;
};

FilmFrames FilmOf(const CTarnwickData &data)
{
    double fps = data.viCurrent.fps;
    int nScenes = 0;
    int nTotal = 0;
    for (const SceneEntry &entry : data.diff_list) {
        if (entry.bEnable) {
            ++nScenes;
            nTotal += FrameCount(entry);
        }
    }
    FilmFrames film;
    film.bFade = data.transition != 0 && nScenes >= 2;
    film.fade = FadeOf(data);
    if (film.bFade) {
        double d = fps > 0 ? nTotal / fps : 0.0;
        if (d > 0) {
            d -= (nScenes - 1) * data.dTransitionSec;
        }
        nTotal = IntegerPart(std::floor(fps * d));
    }
    film.nTotal = nTotal;
    film.nLast = nTotal + 1;
    return film;
}

// The title ends two frames before the film at the latest.
std::string FilmTitleEvent(const CTarnwickData &data, const FilmFrames &film)
{
    const CapParam &cap = data.capTitle;
    if (!InForce(cap)) {
        return {};
    }
    double fps = data.viCurrent.fps;
    int nEnd = std::min(FrameAt(cap.capTime_first + cap.capTime_second, fps), film.nLast - 2);
    double t = fps > 0 ? nEnd / fps : 0.0;
    // The end stays local: the project's capTime_second remains a duration for the next render.
    double endSeconds = std::trunc(100 * t + 0.5) * 0.01;
    return Dialogue(
        kLayerTitle, TimeCode(cap.capTime_first), TimeCode(endSeconds), "Title", cap.caption);
}

std::string
FilmWatermarkEvent(const CTarnwickData &data, const CapParam &cap, const FilmFrames &film)
{
    if (!InForce(cap)) {
        return {};
    }
    double fps = data.viCurrent.fps;
    int nEnd = std::min(FrameAt(cap.capTime_first + cap.capTime_second, fps), film.nLast);
    return Dialogue(kLayerWatermark,
                    TimeCode(cap.capTime_first),
                    data.FrameToTimeCodeAt(nEnd, 0),
                    "Watermark",
                    cap.caption);
}

// Each scene caption stays inside the part of its scene that no cross-fade covers, and starts
// no earlier than the previous scene's caption span ends (captioned or not).
std::string FilmSceneEvents(const CTarnwickData &data, const FilmFrames &film)
{
    double fps = data.viCurrent.fps;
    int n = static_cast<int>(data.diff_list.size());
    int nPos = 0;
    int nPrevEnd = 0;
    std::string text;
    for (int j = 0; j < n; ++j) {
        const SceneEntry &entry = data.diff_list[static_cast<size_t>(j)];
        if (!entry.bEnable) {
            continue;
        }
        bool bFirst = j == 0;
        bool bLast = j == n - 1;
        const CapParam &cap = entry.capParam;
        int nLen = FrameCount(entry) - (film.bFade ? FadeLoss(j, n, film.fade) : 0);
        int nIn = FrameAt(cap.capTime_first, fps);
        int nOut = FrameAt(cap.capTime_first + cap.capTime_second, fps);
        int nLimit = bLast ? film.nLast : nPos - 1 + nLen;
        if (film.bFade) {
            nIn -= bFirst ? 0 : film.fade.nHalf;
            nOut -= bLast ? 0 : film.fade.nHalf;
        }
        int a = std::max({nIn + nPos, nPos, nPrevEnd});
        int b = std::min(nOut + nPos, nLimit);
        if (film.nLast < b + 1) {
            b = film.nTotal;
        }
        int nEndFrame = b + 1;
        if (InForce(cap)) {
            std::string end =
                bLast ? data.FrameToTimeCodeAt(nEndFrame, 0) : data.FrameToTimeCode(nEndFrame);
            text +=
                Dialogue(kLayerScene, data.FrameToTimeCode(a), end, SceneStyleName(j), cap.caption);
        }
        nPos += nLen;
        nPrevEnd = nEndFrame;
    }
    return text;
}

std::string WholeFilmEvents(const CTarnwickData &data, const CaptionRequest &request)
{
    FilmFrames film = FilmOf(data);
    return FilmTitleEvent(data, film) + FilmWatermarkEvent(data, WatermarkOf(data, request), film) +
           FilmSceneEvents(data, film);
}

// A still frame is the only frame of its run, at time 0: its events cover the first second,
// without a fade that would dim it.
std::string StillEvent(int layer, const std::string &style, const std::string &caption)
{
    return Dialogue(layer, TimeCode(0.0), TimeCode(1.0), style, caption, true);
}

std::string SceneCaptionEvent(const CTarnwickData &data, const CaptionRequest &request, int nIdx)
{
    const SceneEntry *entry = EntryAt(data, nIdx);
    if (entry == nullptr || !InForce(entry->capParam)) {
        return {};
    }
    const CapParam &cap = entry->capParam;
    double fps = data.viCurrent.fps;
    int f0 = FrameAt(cap.capTime_first, fps);
    int f1 = FrameAt(cap.capTime_first + cap.capTime_second, fps);
    if (!request.bPreview) {
        return Dialogue(kLayerScene,
                        data.FrameToTimeCodeAt(f0, 0),
                        data.FrameToTimeCodeAt(f1 + 1, 0),
                        SceneStyleName(nIdx),
                        cap.caption);
    }
    int cur = request.nPreviewFrame;
    if (cur < f0 || std::min(cur, data.viCurrent.frame_num - 1) > f1) {
        return {};
    }
    return StillEvent(kLayerScene, SceneStyleName(nIdx), cap.caption);
}

// The frames of the film before entry nIdx. Here the cross-fade counts whenever transition is
// set, whatever the number of scenes.
int FramesBefore(const CTarnwickData &data, int nIdx)
{
    FadeFrames fade = FadeOf(data);
    int n = static_cast<int>(data.diff_list.size());
    int nBase = 0;
    for (int j = 0; j < std::min(nIdx, n); ++j) {
        const SceneEntry &entry = data.diff_list[static_cast<size_t>(j)];
        if (entry.bEnable) {
            nBase += FrameCount(entry) - (data.transition != 0 ? FadeLoss(j, n, fade) : 0);
        }
    }
    return nBase;
}

// A title or watermark seen from one scene that starts nBase frames into the film.
std::string SpanEvent(const CTarnwickData &data,
                      const CaptionRequest &request,
                      const CapParam &cap,
                      int layer,
                      const std::string &style,
                      int nBase)
{
    if (!InForce(cap)) {
        return {};
    }
    double fps = data.viCurrent.fps;
    int frames = data.viCurrent.frame_num;
    int t0 = FrameAt(cap.capTime_first, fps);
    int t1 = FrameAt(cap.capTime_first + cap.capTime_second, fps);
    int g = request.nPreviewFrame + nBase;
    int gEnd = frames + nBase;
    if (g < t0 || std::min(g, gEnd - 1) > t1) {
        return {};
    }
    if (request.bPreview) {
        return StillEvent(layer, style, cap.caption);
    }
    return Dialogue(layer,
                    data.FrameToTimeCodeAt(std::max(t0 - nBase, 0), 0),
                    data.FrameToTimeCodeAt(std::min(t1 - nBase, frames) + 1, 0),
                    style,
                    cap.caption);
}

std::string OneSceneEvents(const CTarnwickData &data, const CaptionRequest &request)
{
    int nIdx = SceneIndexOf(data, request);
    int nBase = FramesBefore(data, nIdx);
    return SceneCaptionEvent(data, request, nIdx) +
           SpanEvent(data, request, data.capTitle, kLayerTitle, "Title", nBase) +
           SpanEvent(
               data, request, WatermarkOf(data, request), kLayerWatermark, "Watermark", nBase);
}

// Watermark and title always have their style; a scene only when its caption is in force.
std::string
StyleLines(const CTarnwickData &data, const CaptionRequest &request, int nScale, int nBar)
{
    std::string text = MakeStyleLine("Watermark", nScale, nBar, data.capWatermark) +
                       MakeStyleLine("Title", nScale, nBar, data.capTitle);
    if (IsWholeFilm(request)) {
        for (size_t j = 0; j < data.diff_list.size(); ++j) {
            const SceneEntry &entry = data.diff_list[j];
            if (entry.bEnable && InForce(entry.capParam)) {
                text += MakeStyleLine(
                    SceneStyleName(static_cast<int>(j)), nScale, nBar, entry.capParam);
            }
        }
        return text;
    }
    int nIdx = SceneIndexOf(data, request);
    const SceneEntry *entry = EntryAt(data, nIdx);
    if (entry != nullptr && InForce(entry->capParam)) {
        text += MakeStyleLine(SceneStyleName(nIdx), nScale, nBar, entry->capParam);
    }
    return text;
}

std::string WithCrLf(const std::string &text)
{
    std::string result;
    result.reserve(text.size() + text.size() / 16);
    for (char c : text) {
        if (c == '\n') {
            result += '\r';
        }
        result += c;
    }
    return result;
}

} // namespace

int CinemaBar(int nShort, int nLong)
{
    // The extent of a 2.35:1 picture along the short side, on a grid of 8 pixels.
    int target = 8 * static_cast<int>(std::lround(nLong / 2.35 * 0.125));
    return (nShort - target) / 2;
}

std::string
MakeStyleLine(const std::string &name, int nScale, int nBar, const core::CapParam &capParam)
{
    int nSize = capParam.font_size * nScale;
    int nMarginSide = nSize / 2;
    int nMarginV = std::max((nBar - nSize) / 2, 0);
    return core::StrPrintf(kStyleFormat,
                           name.c_str(),
                           capParam.font_name.c_str(),
                           nSize,
                           core::StrPrintf("%08X", capParam.color).c_str(),
                           capParam.bold,
                           capParam.italic,
                           capParam.underline,
                           capParam.strike_uut,
                           capParam.outline,
                           capParam.cap_pos_type,
                           nMarginSide,
                           nMarginSide,
                           nMarginV,
                           capParam.encoding);
}

std::string BuildCaptionEvents(const core::CTarnwickData &data, const CaptionRequest &request)
{
    return IsWholeFilm(request) ? WholeFilmEvents(data, request) : OneSceneEvents(data, request);
}

std::string
BuildCaptionText(const core::CTarnwickData &data, const CaptionRequest &request, int w, int h)
{
    std::string events = BuildCaptionEvents(data, request);
    if (events.empty()) {
        return {};
    }
    const core::VideoInfo &vi = data.viCurrent;
    int nResX = IntegerPart(static_cast<double>(vi.sar_num) / vi.sar_den * w);
    int nResY = h;
    int nShort = std::min(nResX, nResY);
    int nLong = std::max(nResX, nResY);
    int nBar = CinemaBar(nShort, nLong);
    // At least the scale of a 270-line picture: a smaller picture still shows its captions,
    // and title and watermark keep their places instead of collapsing into one point.
    int nScale = std::max(nShort / kLinesPerScaleStep, 1);
    std::string text = core::StrPrintf(kHeaderFormat, nResX, nResY) +
                       StyleLines(data, request, nScale, nBar) + kEventsHeader + events;
    // Caption texts hold no line end of their own any more: each stays on its Dialogue line.
    return WithCrLf(text);
}

std::string CaptionFilePath(const core::CTarnwickData &data, const CaptionRequest &request)
{
    const char *suffix = kCaptionSuffixScene;
    if (request.bPreview) {
        suffix = kCaptionSuffixFrame;
    } else if (request.bAll) {
        suffix = kCaptionSuffixAll;
    }
    std::string name = request.bMergeMode ? data.output_name : core::FileNamePart(data.input_file);
    return data.output_folder + core::ReplaceExtension(name, suffix);
}

std::string EscapeFilterPath(const std::string &path)
{
    // Two parsers read the text. The filter graph takes what stands between single quotes as it
    // is (commas, semicolons and brackets included) and drops the quotes; the filter's option
    // parser then reads "\:" as a colon (a bare one would end the option) and "\\" as a
    // backslash, which is an ordinary character of a file name here. A single quote cannot
    // stand inside the quotes: they are closed, "\\\'" gives the option parser "\'", which it
    // reads as the quote, and they are opened again.
    std::string escaped;
    escaped.reserve(path.size() + 8);
    for (char c : path) {
        switch (c) {
        case '\\':
            escaped += "\\\\";
            break;
        case ':':
            escaped += "\\:";
            break;
        case '\'':
            escaped += "'\\\\\\''";
            break;
        default:
            escaped += c;
            break;
        }
    }
    return escaped;
}

std::string SubtitlesFilter(const std::string &path)
{
    return "subtitles='" + EscapeFilterPath(path) + "'";
}

} // namespace render
