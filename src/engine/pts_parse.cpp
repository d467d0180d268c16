// Frame times as text: the ffprobe command, the reading of its lines, the regularity test and
// the file text.
#include "engine/pts_parse.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/helpers.h"

namespace engine {
namespace {

constexpr const char *kTrimmed = " ,\r\n";

// A line of the list as a number; text that is no number counts as 0, as strtod gives it.
double ValueOf(const std::string &text)
{
    return std::strtod(text.c_str(), nullptr);
}

} // namespace

std::string PtsListCommand(const std::string &path)
{
    return core::StrPrintf(
        "ffprobe -v error -select_streams v:0 -show_entries frame=pts_time -of csv=p=0 \"%s\"",
        path.c_str());
}

std::string PtsText(double seconds)
{
    return core::StrPrintf("%.6f", seconds);
}

PtsLineReader::PtsLineReader(int lineLimit)
    : m_lineLimit(lineLimit)
{
}

bool PtsLineReader::Feed(const std::string &chunk,
                         std::vector<std::string> &texts,
                         std::vector<double> &values,
                         const std::function<void(int count)> &onLine)
{
    m_pending += chunk;
    size_t start = 0;
    bool limitPassed = false;
    for (size_t end = m_pending.find('\n'); end != std::string::npos;
         end = m_pending.find('\n', start)) {
        std::string line = m_pending.substr(start, end - start);
        start = end + 1;
        size_t first = line.find_first_not_of(kTrimmed);
        if (first == std::string::npos) {
            continue;
        }
        line = line.substr(first, line.find_last_not_of(kTrimmed) - first + 1);
        if (texts.empty()) {
            m_first = ValueOf(line);
        }
        Take(ValueOf(line), texts, values);
        if (onLine) {
            onLine(m_count);
        }
        if (m_lineLimit >= 0 && m_count > m_lineLimit) {
            limitPassed = true;
            break;
        }
    }
    m_pending.erase(0, start);
    return limitPassed;
}

bool PtsLineReader::TakeLastLine(std::vector<std::string> &texts, std::vector<double> &values)
{
    if (m_pending.empty()) {
        return false;
    }
    std::string line = m_pending;
    m_pending.clear();
    texts.push_back(PtsText(ValueOf(line) - m_first));
    values.push_back(ValueOf(texts.back()));
    return true;
}

void PtsLineReader::Take(double value, std::vector<std::string> &texts, std::vector<double> &values)
{
    texts.push_back(PtsText(value - m_first));
    values.push_back(ValueOf(texts.back()));
    ++m_count;
}

void ExtendPtsList(std::vector<std::string> &texts, std::vector<double> &values, int frameNum)
{
    if (values.size() < 2 || static_cast<long long>(values.size()) > frameNum) {
        return;
    }
    double step = values[1];
    while (static_cast<long long>(values.size()) < static_cast<long long>(frameNum) + 1) {
        texts.push_back(PtsText(values.back() + step));
        values.push_back(ValueOf(texts.back()));
    }
}

std::optional<PtsDeltaStats> PtsDeltaStatsOf(const std::vector<double> &times)
{
    if (times.size() < 3) {
        return std::nullopt;
    }
    std::vector<double> deltas;
    deltas.reserve(times.size() - 1);
    for (size_t i = 0; i + 1 < times.size(); ++i) {
        deltas.push_back(times[i + 1] - times[i]);
    }
    double m = static_cast<double>(deltas.size());
    PtsDeltaStats stats;
    double sum = 0.0;
    for (double d : deltas) {
        sum += d;
    }
    stats.mean = sum / m;
    double squares = 0.0;
    for (double d : deltas) {
        squares += (d - stats.mean) * (d - stats.mean);
    }
    stats.stddev = std::sqrt(squares / m);
    auto [smallest, largest] = std::minmax_element(deltas.begin(), deltas.end());
    stats.range = *largest - *smallest;
    return stats;
}

bool IsConstantFrameRate(const PtsDeltaStats &stats, double fps)
{
    double expected = 1.0 / fps;
    return stats.stddev < 0.00001 && stats.range < 0.00001 &&
           std::fabs(stats.mean - expected) < 0.0001;
}

std::string PtsFileText(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += line;
        text += '\n';
    }
    return text;
}

} // namespace engine
