// Caption texts as the user typed them, escaped for the Dialogue lines of an ASS file.
#include "render/captions.h"

#include <regex>

#include "core/helpers.h"

namespace render {
namespace {

// U+2060 WORD JOINER in UTF-8: no width, no break, and no meaning to libass.
constexpr const char *kWordJoiner = "\xE2\x81\xA0";

// The length of the fade block "{\fad(a,b)}" that the program puts in front of a default
// title; 0 when text does not begin with one.
size_t LeadingFadeLength(const std::string &text)
{
    static const std::regex kLeadingFade = core::CompilePattern(R"(^\{\\fad\(\d+,\d+\)\})");
    std::smatch match;
    if (!std::regex_search(text, match, kLeadingFade)) {
        return 0;
    }
    return static_cast<size_t>(match.length(0));
}

} // namespace

std::string EscapeAssText(const std::string &text)
{
    std::string escaped;
    escaped.reserve(text.size() + 8);
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        switch (c) {
        case '\r':
            escaped += "\\N";
            i += next == '\n' ? 1 : 0; // "\r\n" is one line end
            break;
        case '\n':
            escaped += "\\N";
            break;
        case '{':
        case '}':
            escaped += '\\';
            escaped += c;
            break;
        case '\\':
            escaped += c;
            // libass reads "\n" and "\h" as a space and a hard space; a word joiner between
            // shows them as typed. "\N" stays the line break, as a line end becomes.
            if (next == 'n' || next == 'h') {
                escaped += kWordJoiner;
            }
            break;
        default:
            escaped += c;
            break;
        }
    }
    return escaped;
}

std::string AssCaptionText(const std::string &caption, bool bKeepFade)
{
    const size_t fade = LeadingFadeLength(caption);
    return (bKeepFade ? caption.substr(0, fade) : std::string()) +
           EscapeAssText(caption.substr(fade));
}

} // namespace render
