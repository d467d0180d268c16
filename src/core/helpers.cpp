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

// Formats with printf's conversion and reads the text back: rounds the way the text shows it.
double RoundTrip(const char *format, double value)
{
    return std::strtod(StrPrintf(format, value).c_str(), nullptr);
}

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

// Matches a file name against a pattern in which "*" stands for any run of characters.
bool MatchesPattern(const std::string &name, const std::string &pattern)
{
    size_t n = 0;
    size_t p = 0;
    size_t starPos = std::string::npos;
    size_t starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            starPos = p++;
            starName = n;
        } else if (p < pattern.size() && pattern[p] == name[n]) {
            ++p;
            ++n;
        } else if (starPos != std::string::npos) {
            p = starPos + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

} // namespace

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

std::string SecondsToTimeCode(double seconds, bool shortForm)
{
    double x = RoundTrip("%.02f", seconds);
    int h = static_cast<int>(x / 3600);
    int m = static_cast<int>(std::fmod(x, 3600) / 60);
    int s = static_cast<int>(std::fmod(x, 60));
    int c = static_cast<int>(std::round((x - std::trunc(x)) * 100));
    if (shortForm) {
        // Narrow displays keep one hour digit; ten hours and more lose their tens.
        return StrPrintf("%01d:%02d:%02d.%02d", h % 10, m, s, c);
    }
    return StrPrintf("%02d:%02d:%02d.%02d", h, m, s, c);
}

std::string SecondsToText(double seconds, const char *format)
{
    return StrPrintf(format, seconds);
}

double ParseTimeCode(const std::string &text)
{
    int hours = 0;
    int minutes = 0;
    int secs = 0;
    int hundredths = 0;
    std::sscanf(text.c_str(), "%d:%d:%d.%d", &hours, &minutes, &secs, &hundredths);
    // The last field counts as hundredths whatever its number of digits.
    return (static_cast<double>(hours) * 60 + minutes) * 60 + secs + hundredths / 100.0;
}

void UpdateParamText(ParamRange &param)
{
    if (param.nType == 1) {
        param.strText = StrPrintf("%d", static_cast<int>(param.dValue));
        return;
    }
    double value = RoundTrip("%.2f", param.dValue);
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

std::string ReplaceExtension(const std::string &path, const std::string &newTail)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return path;
    }
    return path.substr(0, dot) + newTail;
}

std::string SetTrailingSeparator(const std::string &path, bool wanted)
{
    if (path.empty()) {
        return path;
    }
    if (wanted) {
        return path.back() == '/' ? path : path + "/";
    }
    return path.back() == '/' ? path.substr(0, path.size() - 1) : path;
}

bool IsMp4File(const std::string &path)
{
    size_t dot = path.rfind('.');
    if (dot == std::string::npos) {
        return false;
    }
    std::string tail = path.substr(dot);
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char ch) {
        return static_cast<char>(std::tolower(ch));
    });
    return tail == ".mp4";
}

std::string FileNamePart(const std::string &path)
{
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void DeleteByPattern(const std::string &pattern)
{
    size_t slash = pattern.rfind('/');
    std::string folder = slash == std::string::npos ? "." : pattern.substr(0, slash + 1);
    std::string namePattern = slash == std::string::npos ? pattern : pattern.substr(slash + 1);
    if (namePattern.empty()) {
        return;
    }
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        return;
    }
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec) {
            return;
        }
        std::error_code statusError;
        if (it->is_directory(statusError)) {
            continue;
        }
        if (MatchesPattern(it->path().filename().string(), namePattern)) {
            std::error_code removeError;
            fs::remove(it->path(), removeError);
        }
    }
}

bool DeleteTree(const std::string &folder)
{
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    if (ec) {
        return true;
    }
    for (; it != fs::directory_iterator(); it.increment(ec)) {
        if (ec) {
            break;
        }
        std::error_code statusError;
        // A link to a folder is removed as a link; its target is left alone.
        if (it->is_directory(statusError) && !it->is_symlink(statusError)) {
            DeleteTree(it->path().string());
        } else {
            std::error_code removeError;
            fs::remove(it->path(), removeError);
        }
    }
    std::error_code removeError;
    return fs::remove(folder, removeError) && !removeError;
}

bool CreateFolders(const std::string &folder)
{
    if (folder.empty()) {
        return false;
    }
    std::error_code ec;
    fs::create_directories(folder, ec);
    std::error_code statusError;
    return fs::is_directory(folder, statusError);
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

std::regex CompilePattern(const char *pattern)
{
    std::regex compiled;
    compiled.imbue(FilledLocale());
    compiled.assign(pattern, std::regex::ECMAScript);
    return compiled;
}

std::string StripFadeTag(const std::string &text)
{
    static const std::regex kFadeTag = CompilePattern(R"(\{\\fad\(\d+,\d+\)\})");
    return std::regex_replace(text, kFadeTag, "{}");
}

} // namespace core
