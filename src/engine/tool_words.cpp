// The reason a tool gives for its failure, picked from what it wrote.
#include "engine/tool_words.h"

#include <regex>
#include <vector>

#include "core/helpers.h"

namespace engine {
namespace {

std::vector<std::string> LinesOf(const std::string &text)
{
    std::vector<std::string> lines;
    std::string line;
    for (char c : text) {
        if (c == '\n' || c == '\r') {
            if (!line.empty()) {
                lines.push_back(line);
            }
            line.clear();
        } else {
            line += c;
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

// "[mp4 @ 0x55d0c0] " and trailing spaces or dashes away.
std::string Trimmed(const std::string &line)
{
    static const std::regex kContext = core::CompilePattern(R"(^\[[^\]]*@ 0x[0-9a-fA-F]+\] )");
    std::string text = std::regex_replace(line, kContext, "");
    while (!text.empty() && (text.back() == ' ' || text.back() == '-')) {
        text.pop_back();
    }
    return text;
}

} // namespace

std::string ToolWords(const std::string &output)
{
    // strerror's texts: ": No space left on device", ": Permission denied", ...
    static const std::regex kSystemError = core::CompilePattern(R"(: [A-Z][a-z]+( [a-z]+)*$)");
    static const std::regex kTrouble =
        core::CompilePattern(R"((error|fail|could not|cannot|invalid|unable|no such))",
                             std::regex::ECMAScript | std::regex::icase);
    std::string systemError;
    std::string trouble;
    for (const std::string &line : LinesOf(output)) {
        if (line[0] == ' ' || line[0] == '\t') {
            continue; // the facts of the streams and their metadata
        }
        const std::string text = Trimmed(line);
        if (text.empty() || text == "Conversion failed!" || text.rfind("frame=", 0) == 0 ||
            text.rfind("size=", 0) == 0) {
            continue;
        }
        if (std::regex_search(text, kSystemError)) {
            systemError = text;
        } else if (std::regex_search(text, kTrouble)) {
            trouble = text;
        }
    }
    return systemError.empty() ? trouble : systemError;
}

} // namespace engine
