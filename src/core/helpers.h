// Common helpers: printf into strings, parameter text, frame-rate snapping, tool counts,
// patterns.
#pragma once

#include <locale>
#include <regex>
#include <string>

#include "core/tarnwick_data.h"

namespace core {

// printf into a std::string.
std::string StrPrintf(const char *format, ...) __attribute__((format(printf, 1, 2)));
// Formats value with printf's format (one floating conversion) and reads the text back: the
// value rounded the way the text shows it.
double RoundAsPrinted(const char *format, double value);

// Rebuilds strText from dValue.
void UpdateParamText(ParamRange &param);
// Replaces a measured rate by the nearest standard rate closer than 0.005.
void SnapFrameRate(VideoInfo &info, bool adjustFrames);
// Limit of tools running side by side; forced (bUseCuda) gives 4.
int GetThreadCount(bool forced);
// The same for a given hardware concurrency.
int GetThreadCountFor(bool forced, unsigned hardwareThreads);

// Replaces every "{\fad(a,b)}" by "{}".
std::string StripFadeTag(const std::string &text);

// A pattern compiled with a locale whose character cache is filled. libstdc++'s
// ctype<char>::narrow fills a cache entry the first time it meets a character, and the pattern
// compiler calls it, so two threads compiling at once would both write that cache. Every
// pattern that a worker, pool or preview thread may compile goes through here.
std::regex CompilePattern(const char *pattern,
                          std::regex::flag_type flags = std::regex::ECMAScript);

} // namespace core
