// Frame times as text: the ffprobe command that lists them, the reading of its lines, the
// regularity test of the first frames and the text of the "_pts.csv" file. All pure.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace engine {

// How many lines the regularity check reads before it ends the tool: it goes on until it has
// more than this many.
inline constexpr int kPtsCheckLines = 100;

// "ffprobe -v error -select_streams v:0 -show_entries frame=pts_time -of csv=p=0 \"<path>\"":
// the presentation time of every frame of the first video stream, one per line.
std::string PtsListCommand(const std::string &path);

// A time in seconds as the list holds it: "%.6f".
std::string PtsText(double seconds);

// The lines of ffprobe's frame-time list as they arrive in chunks. Each complete line is
// trimmed of blanks, commas, carriage returns and line feeds at both ends; empty lines are
// skipped. The first line taken while texts is empty sets the origin; every line gives
// PtsText(value - origin) to texts and that text's value to values.
class PtsLineReader
{
public:
    // lineLimit: once more than this many lines were taken, the rest of the chunk stays
    // pending and Feed says so. Negative: no limit.
    explicit PtsLineReader(int lineLimit);

    // Appends chunk and takes its complete lines. onLine, when set, gets the number of lines
    // taken so far after each line. True when the limit was passed in this chunk.
    bool Feed(const std::string &chunk,
              std::vector<std::string> &texts,
              std::vector<double> &values,
              const std::function<void(int count)> &onLine = {});

    // Takes what is still pending as a last line, as it stands (not trimmed). False, and
    // nothing taken, when nothing is pending.
    bool TakeLastLine(std::vector<std::string> &texts, std::vector<double> &values);

    const std::string &Pending() const { return m_pending; }
    int Count() const { return m_count; }

private:
    void Take(double value, std::vector<std::string> &texts, std::vector<double> &values);

    int m_lineLimit;
    std::string m_pending;
    double m_first = 0.0;
    int m_count = 0;
};

// A list that ends early is extended to frameNum + 1 entries when it has frameNum or fewer:
// each new entry is PtsText(the entry before + the second value, the first delta). A list of
// fewer than two values knows no delta and stays as it is.
void ExtendPtsList(std::vector<std::string> &texts, std::vector<double> &values, int frameNum);

// The spacing of neighbouring frame times: mean, population standard deviation and range
// (largest minus smallest) of the deltas.
struct PtsDeltaStats
{
    double mean = 0.0;
    double stddev = 0.0;
    double range = 0.0;
};

// The statistics of times; none with fewer than 3 times.
std::optional<PtsDeltaStats> PtsDeltaStatsOf(const std::vector<double> &times);

// A constant frame rate: stddev and range below 0.00001 and the mean within 0.0001 of
// 1 / fps, all strictly. A rate of 0 never passes.
bool IsConstantFrameRate(const PtsDeltaStats &stats, double fps);

// The "_pts.csv" text: every line followed by a line end.
std::string PtsFileText(const std::vector<std::string> &lines);

} // namespace engine
