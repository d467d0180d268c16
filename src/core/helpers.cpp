// Common helpers: time-code text, frame-rate snapping, parameter text, paths and files.
#include "core/helpers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <system_error>
#include <thread>

namespace core {

namespace fs = std::filesystem;

namespace {

struct RateCandidate
{
    int num;
    int den;
};

// Standard rates in order of preference on a tie. 24/1 and 48/1 are absent on purpose:
// such rates are kept as measured.
constexpr RateCandidate kRateCandidates[] = {
    {120000, 1001},
    {60000, 1001},
    {48000, 1001},
    {30000, 1001},
    {24000, 1001},
    {120, 1},
    {100, 1},
    {60, 1},
    {50, 1},
    {30, 1},
    {25, 1},
    {15, 1},
    {12, 1},
    {10, 1},
    {8, 1},
    {6, 1},
    {1, 1},
};

constexpr double kSnapTolerance = 0.005;

} // namespace

double RoundAsPrinted(const char *format, double value)
{
    return std::strtod(StrPrintf(format, value).c_str(), nullptr);
}

std::string StrPrintf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text;
    if (n > 0) {
        text.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(text.data(), text.size(), format, args);
        text.resize(static_cast<size_t>(n));
    }
    va_end(args);
    return text;
}

void UpdateParamText(ParamRange &param)
{
    if (param.nType == 1) {
        param.strText = StrPrintf("%d", static_cast<int>(param.dValue));
        return;
    }
    double value = RoundAsPrinted("%.2f", param.dValue);
    if (value == 0.0) {
        value = 0.0; // drops the sign of -0.00
    }
    std::string text = StrPrintf("%.2f", value);
    for (;;) {
        size_t dot = text.find('.');
        if (text.empty() || text.back() != '0' || dot == std::string::npos ||
            text.size() - dot < 3) {
            break;
        }
        text.pop_back();
    }
    if (!text.empty() && text.back() == '.') {
        text += "0";
    }
    param.strText = text;
}

void SnapFrameRate(VideoInfo &info, bool adjustFrames)
{
    const RateCandidate *best = nullptr;
    double bestDiff = 0.0;
    for (const RateCandidate &candidate : kRateCandidates) {
        double diff = std::fabs(static_cast<double>(candidate.num) / candidate.den - info.fps);
        if (diff < kSnapTolerance && (best == nullptr || diff < bestDiff)) {
            best = &candidate;
            bestDiff = diff;
        }
    }
    if (best == nullptr) {
        return;
    }
    info.r_frame_rate = StrPrintf("%d/%d", best->num, best->den);
    info.fps = static_cast<double>(best->num) / best->den;
    if (adjustFrames) {
        // Dividing and multiplying by the same rate only removes floating-point noise.
        double f = std::round(info.frame_num / info.fps * info.fps);
        if (f >= 1 && f != info.frame_num) {
            info.frame_num = static_cast<int>(f);
        }
    }
}

int GetThreadCount(bool forced)
{
    return GetThreadCountFor(forced, std::thread::hardware_concurrency());
}

int GetThreadCountFor(bool forced, unsigned hardwareThreads)
{
    if (forced) {
        return 4;
    }
    if (hardwareThreads < 5) {
        return 2;
    }
    if (hardwareThreads < 9) {
        return 4;
    }
    return std::min(6, static_cast<int>(hardwareThreads * 0.75));
}

namespace {

// The program's locale with the narrow cache filled once (thread-safe static initialisation),
// before the first pattern is compiled: from then on the compilers only read it.
const std::locale &FilledLocale()
{
    static const std::locale locale = [] {
        std::locale current;
        const auto &ctype = std::use_facet<std::ctype<char>>(current);
        for (int c = 0; c < 256; ++c) {
            ctype.narrow(static_cast<char>(c), '\0');
        }
        return current;
    }();
    return locale;
}

} // namespace

std::regex CompilePattern(const char *pattern, std::regex::flag_type flags)
{
    std::regex compiled;
    compiled.imbue(FilledLocale());
    compiled.assign(pattern, flags);
    return compiled;
}

std::string StripFadeTag(const std::string &text)
{
    static const std::regex kFadeTag = CompilePattern(R"(\{\\fad\(\d+,\d+\)\})");
    return std::regex_replace(text, kFadeTag, "{}");
}

} // namespace core
