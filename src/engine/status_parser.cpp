// Reading the status text of a running tool: the pattern search over the carried buffer.
#include "engine/status_parser.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>

#include "core/helpers.h"

namespace engine {
namespace {

constexpr size_t kBufferLimit = 8192;
constexpr size_t kBufferKeep = 4096;

std::regex CompilePattern(bool bPlayback)
{
    return core::CompilePattern(bPlayback ? kPlaybackPattern : kProgressPattern);
}

// The seconds of a time text; 0 when it does not begin with a number.
double SecondsOf(const std::string &text)
{
    double seconds = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return seconds;
}

} // namespace

std::string ChunkText(const char *chunk, long size)
{
    if (size <= 0) {
        return {};
    }
    return std::string(chunk, strnlen(chunk, static_cast<size_t>(size)));
}

std::optional<int>
FrameOfCapture(const std::string &capture, bool bPlayback, double fps, int startFrame)
{
    const char *first = capture.data();
    const char *last = first + capture.size();
    if (!bPlayback) {
        int value = 0;
        auto [ptr, ec] = std::from_chars(first, last, value);
        if (ec != std::errc() || ptr == first) {
            return std::nullopt;
        }
        return value;
    }
    double seconds = 0.0;
    auto [ptr, ec] = std::from_chars(first, last, seconds);
    if (ec != std::errc() || ptr == first) {
        return std::nullopt;
    }
    double frame = std::round(seconds * fps) - static_cast<double>(startFrame);
    if (!(frame >= static_cast<double>(INT_MIN) && frame <= static_cast<double>(INT_MAX))) {
        return std::nullopt;
    }
    return static_cast<int>(frame);
}

PlaybackPosition PlaybackPositionOf(int frame,
                                    const std::string &capture,
                                    int nTotal,
                                    double fps,
                                    int fromFrame,
                                    const std::string &fromTime)
{
    // The tool prints "%.6g", which also gives "1e+06"; the position takes the form of every
    // other time on a command line.
    const bool beforeStart = frame < fromFrame;
    PlaybackPosition pos;
    pos.nPreviewFrame = std::min(std::max(frame, fromFrame), nTotal - 1);
    double seconds = SecondsOf(beforeStart ? fromTime : capture);
    if (pos.nPreviewFrame >= nTotal - 1) {
        seconds = fps > 0.0 ? pos.nPreviewFrame / fps : 0.0;
    }
    pos.strPreviewTime = core::StrPrintf("%.6f", seconds);
    return pos;
}

StatusParser::StatusParser(bool bPlayback, double fps, int startFrame)
    : m_pattern(CompilePattern(bPlayback))
    , m_bPlayback(bPlayback)
    , m_fps(fps)
    , m_startFrame(startFrame)
{
}

std::vector<StatusMatch> StatusParser::Feed(const std::string &chunkText)
{
    std::vector<StatusMatch> reports;
    m_buffer += chunkText;
    std::smatch match;
    while (std::regex_search(m_buffer, match, m_pattern)) {
        std::string capture = match[1].str();
        std::optional<int> frame = FrameOfCapture(capture, m_bPlayback, m_fps, m_startFrame);
        if (frame && *frame != m_last) {
            m_last = *frame;
            reports.push_back(StatusMatch{*frame, capture});
        }
        m_buffer = match.suffix().str();
    }
    if (m_buffer.size() > kBufferLimit) {
        m_buffer.erase(0, m_buffer.size() - kBufferKeep);
    }
    return reports;
}

} // namespace engine
