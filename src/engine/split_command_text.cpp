// The command-text splitter: one command text into the argument vector of the tool.
#include "engine/child_process.h"

#include <algorithm>

#include "core/path_check.h"

namespace engine {
namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

// The program name: double quotes group and are removed, backslashes are plain characters
// (a path holds no double quote), and a blank outside quotes ends it.
size_t TakeProgramName(const std::string &text, size_t pos, std::string &name)
{
    bool inQuotes = false;
    while (pos < text.size() && (inQuotes || !IsBlank(text[pos]))) {
        if (text[pos] == '"') {
            inQuotes = !inQuotes;
        } else {
            name += text[pos];
        }
        ++pos;
    }
    return pos;
}

// One further argument, starting at a character that is not blank.
size_t TakeArgument(const std::string &text, size_t pos, std::string &arg)
{
    bool inQuotes = false;
    for (;;) {
        size_t slashes = 0;
        while (pos < text.size() && text[pos] == '\\') {
            ++slashes;
            ++pos;
        }
        bool copyChar = true;
        if (pos < text.size() && text[pos] == '"') {
            if (slashes % 2 == 0) {
                if (inQuotes && pos + 1 < text.size() && text[pos + 1] == '"') {
                    ++pos; // "" inside quotes: one literal quote, still inside
                } else {
                    copyChar = false;
                    inQuotes = !inQuotes;
                }
            }
            slashes /= 2;
        }
        arg.append(slashes, '\\');
        if (pos >= text.size() || (!inQuotes && IsBlank(text[pos]))) {
            return pos;
        }
        if (copyChar) {
            arg += text[pos];
        }
        ++pos;
    }
}

size_t SkipBlanks(const std::string &text, size_t pos)
{
    while (pos < text.size() && IsBlank(text[pos])) {
        ++pos;
    }
    return pos;
}

} // namespace

std::vector<std::string> SplitCommandText(const std::string &commandText)
{
    std::vector<std::string> args;
    size_t pos = SkipBlanks(commandText, 0);
    if (pos >= commandText.size()) {
        return args;
    }
    std::string name;
    pos = TakeProgramName(commandText, pos, name);
    args.push_back(name);
    for (;;) {
        pos = SkipBlanks(commandText, pos);
        if (pos >= commandText.size()) {
            return args;
        }
        std::string arg;
        pos = TakeArgument(commandText, pos, arg);
        args.push_back(arg);
    }
}

std::optional<std::string> PathNotCarried(const std::string &commandText,
                                          const std::vector<std::string> &paths)
{
    const std::vector<std::string> args = SplitCommandText(commandText);
    for (const std::string &path : paths) {
        if (!core::PathProblem(path).empty() ||
            std::find(args.begin(), args.end(), path) == args.end()) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace engine
