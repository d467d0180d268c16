// Paths that a tool's command text can carry: the check every path gets where it enters.
#pragma once

#include <string>

namespace core {

// True when text is well-formed UTF-8 (no overlong forms, no surrogates, nothing above
// U+10FFFF).
bool IsValidUtf8(const std::string &text);

// Why path cannot be passed to a tool inside double quotes of a command text, as a phrase that
// follows the path in a message: "contains a double quote", "contains a line break", "contains a
// control character", "is not valid UTF-8", "ends with a backslash" (it would swallow the closing
// quote); "is empty". Empty when the path can be carried.
std::string PathProblem(const std::string &path);

// Longest file name, in bytes and without its extension, that a video or a film may have: the
// names made from it (a segment "_seg_<first>_<last>.partial.mp4", the project's ".twproj.lock")
// must stay within the 255 bytes a file name may have. A Japanese character takes 3 bytes.
inline constexpr size_t kMaxStemBytes = 200;

// True when the last part of path, without its extension, is longer than kMaxStemBytes.
bool StemTooLong(const std::string &path);

} // namespace core
