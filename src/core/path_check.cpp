// Paths that a tool's command text can carry: the check every path gets where it enters.
#include "core/path_check.h"

#include <cstdint>

namespace core {
namespace {

// Length of the UTF-8 sequence that starts at text[pos], 0 when it is malformed there.
size_t SequenceLength(const std::string &text, size_t pos)
{
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(pos);
    size_t length = 0;
    uint32_t code = 0;
    if (lead < 0x80) {
        return 1;
    } else if ((lead & 0xE0) == 0xC0) {
        length = 2;
        code = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        code = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        code = lead & 0x07;
    } else {
        return 0;
    }
    if (pos + length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if ((byte(pos + i) & 0xC0) != 0x80) {
            return 0;
        }
        code = (code << 6) | (byte(pos + i) & 0x3F);
    }
    static const uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return 0;
    }
    return length;
}

} // namespace

bool IsValidUtf8(const std::string &text)
{
    size_t pos = 0;
    while (pos < text.size()) {
        size_t length = SequenceLength(text, pos);
        if (length == 0) {
            return false;
        }
        pos += length;
    }
    return true;
}

bool StemTooLong(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.rfind('.');
    const size_t stem = dot == std::string::npos || dot == 0 ? name.size() : dot;
    return stem > kMaxStemBytes;
}

std::string PathProblem(const std::string &path)
{
    if (path.empty()) {
        return "is empty";
    }
    for (char c : path) {
        if (c == '"') {
            return "contains a double quote";
        }
        if (c == '\n' || c == '\r') {
            return "contains a line break";
        }
        if (c >= 0 && c < 0x20) {
            return "contains a control character";
        }
    }
    if (!IsValidUtf8(path)) {
        return "is not valid UTF-8";
    }
    if (path.back() == '\\') {
        return "ends with a backslash";
    }
    return "";
}

} // namespace core
