// Common helpers: time-code text, frame-rate snapping, parameter text, paths and files.
#pragma once

#include <locale>
#include <regex>
#include <string>

#include "core/tarnwick_data.h"

namespace core {

// printf into a std::string.
std::string StrPrintf(const char *format, ...) __attribute__((format(printf, 1, 2)));

// "%02d:%02d:%02d.%02d" of seconds rounded to hundredths; shortForm keeps one hour digit.
std::string SecondsToTimeCode(double seconds, bool shortForm);
// Seconds formatted with a printf format holding one floating conversion.
std::string SecondsToText(double seconds, const char *format);
// Reads "%d:%d:%d.%d" (hours, minutes, seconds, hundredths) into seconds.
double ParseTimeCode(const std::string &text);

// Rebuilds strText from dValue.
void UpdateParamText(ParamRange &param);
// Replaces a measured rate by the nearest standard rate closer than 0.005.
void SnapFrameRate(VideoInfo &info, bool adjustFrames);
// Limit of tools running side by side; forced (bUseCuda) gives 4.
int GetThreadCount(bool forced);
// The same for a given hardware concurrency.
int GetThreadCountFor(bool forced, unsigned hardwareThreads);

// Text before the last "." followed by newTail; a path without "." comes back unchanged.
std::string ReplaceExtension(const std::string &path, const std::string &newTail);
// wanted: append "/" unless the path already ends in one; otherwise remove one trailing "/".
std::string SetTrailingSeparator(const std::string &path, bool wanted);
// The text from the last "." equals ".mp4", ignoring case.
bool IsMp4File(const std::string &path);
// The file-name part of a path (behind the last "/").
std::string FileNamePart(const std::string &path);
// Deletes every plain file matching a pattern with "*" in its file name; errors ignored.
void DeleteByPattern(const std::string &pattern);
// Deletes a folder with everything in it; the result is that of removing the folder.
// A folder that cannot be listed gives true with nothing done.
bool DeleteTree(const std::string &folder);
// Creates a folder and its parents; an existing folder is fine. False on failure.
bool CreateFolders(const std::string &folder);
// Replaces every "{\fad(a,b)}" by "{}".
std::string StripFadeTag(const std::string &text);

// A pattern compiled with a locale whose character cache is filled. libstdc++'s
// ctype<char>::narrow fills a cache entry the first time it meets a character, and the pattern
// compiler calls it, so two threads compiling at once would both write that cache. Every
// pattern that a worker, pool or preview thread may compile goes through here.
std::regex CompilePattern(const char *pattern);

} // namespace core
