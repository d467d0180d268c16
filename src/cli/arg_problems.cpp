// What a command says about arguments it cannot take.
#include "cli/arg_problems.h"

#include <cstdlib>
#include <regex>

#include "cli/cli_support.h"

namespace cli {

std::string UnexpectedArgument(const std::string &arg)
{
    if (arg.size() > 1 && arg[0] == '-') {
        return "unknown option " + PrintablePath(arg);
    }
    return "unexpected argument \"" + PrintablePath(arg) + "\"";
}

std::string NeedsValue(const std::string &option)
{
    return option + " needs a value";
}

std::string MissingArgument(const char *what)
{
    return std::string(what) + " is missing";
}

bool ParseWholeNumber(const std::string &text, long lo, long hi, int &value)
{
    const size_t digits = !text.empty() && text[0] == '-' ? 1 : 0;
    if (text.size() <= digits || text.size() > digits + 9 ||
        text.find_first_not_of("0123456789", digits) != std::string::npos) {
        return false;
    }
    const long number = std::strtol(text.c_str(), nullptr, 10);
    if (number < lo || number > hi) {
        return false;
    }
    value = static_cast<int>(number);
    return true;
}

std::string NotWholeNumber(const std::string &option, const std::string &text, long lo, long hi)
{
    return option + ": \"" + PrintablePath(text) + "\" is not a whole number from " +
           std::to_string(lo) + " to " + std::to_string(hi);
}

bool IsSecondsText(const std::string &text)
{
    static const std::regex seconds("[0-9]{1,9}(\\.[0-9]{1,9})?");
    return std::regex_match(text, seconds);
}

std::string NotSeconds(const std::string &option, const std::string &text)
{
    return option + ": \"" + PrintablePath(text) +
           "\" is not a time in seconds from 0 (such as 12.5)";
}

} // namespace cli
