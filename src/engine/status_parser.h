// Reading the status text of a running tool: frame numbers of ffmpeg's status line and the
// presentation times of the showinfo filter, turned into progress and playback positions.
#pragma once

#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace engine {

// ffmpeg's status line on standard error, such as "frame=   20 fps=0.0 q=-0.0 size= ...".
inline constexpr const char *kProgressPattern = R"(frame=\s*([0-9]+).*?fps=.*?)";
// A line of the showinfo filter: "[Parsed_showinfo_1 @ 0x...] n:  12 pts: ... pts_time:0.48 ...".
inline constexpr const char *kPlaybackPattern =
    R"(\[Parsed_showinfo[^\]]*?\].*?pts_time:([0-9]+\.[0-9]+))";

// The text of a chunk as the readers count it: up to its first zero byte.
std::string ChunkText(const char *chunk, long size);

// The frame that a captured number stands for. Progress: the number itself. Playback: the
// seconds times fps, rounded to nearest, minus startFrame. Empty when the number does not fit
// an int (or a double): such a match is skipped.
std::optional<int>
FrameOfCapture(const std::string &capture, bool bPlayback, double fps, int startFrame);

// Where playback stands after a report of frame with the captured time text, in a playback that
// was asked to start at fromTime seconds, whose first frame at or after it is fromFrame: the
// frame is held below nTotal, and never before the start (the player begins at the key frame before
// it, and shows the frames up to it first). The time text has one form, "%.6f" of the seconds: of
// the captured time, of the start, or at the last frame of its seconds at fps (0 when fps is not
// above 0).
struct PlaybackPosition
{
    int nPreviewFrame = 0;
    std::string strPreviewTime;
};
PlaybackPosition PlaybackPositionOf(int frame,
                                    const std::string &capture,
                                    int nTotal,
                                    double fps,
                                    int fromFrame = 0,
                                    const std::string &fromTime = "0");

// One report: a frame that differs from the one reported before, and the text it came from.
struct StatusMatch
{
    int frame = 0;
    std::string capture;
};

// The matching of one command: its pattern is compiled once, its buffer carries a partial line
// from one chunk to the next. Pure: no tool, no clock, no messages.
class StatusParser
{
public:
    StatusParser(bool bPlayback, double fps, int startFrame);

    // Appends the chunk text to the buffer, then searches it again and again, each time
    // replacing the buffer by the text behind the match. Returns the matches whose frame
    // differs from the last one reported, in order. Afterwards a buffer longer than 8192
    // characters keeps only its last 4096.
    std::vector<StatusMatch> Feed(const std::string &chunkText);

    const std::string &Buffer() const { return m_buffer; }

private:
    std::regex m_pattern;
    bool m_bPlayback;
    double m_fps;
    int m_startFrame;
    int m_last = -1;
    std::string m_buffer;
};

} // namespace engine
