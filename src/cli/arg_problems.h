// What a command says about arguments it cannot take: the problem in one phrase, so that the
// user sees which argument is wrong and what is wanted, before the usage line.
#pragma once

#include <string>

namespace cli {

// "unknown option --fast" for something that looks like an option (a leading "-" and more),
// else "unexpected argument \"b.mp4\"".
std::string UnexpectedArgument(const std::string &arg);

// "--at needs a value".
std::string NeedsValue(const std::string &option);

// "VIDEO is missing": what names the argument as the usage line does.
std::string MissingArgument(const char *what);

// The whole text is a whole number from lo to hi (decimal digits, an optional "-").
bool ParseWholeNumber(const std::string &text, long lo, long hi, int &value);

// "--kind: \"9\" is not a whole number from 1 to 5".
std::string NotWholeNumber(const std::string &option, const std::string &text, long lo, long hi);

// Seconds as plain decimal text that a tool takes unchanged: up to nine digits with an
// optional fraction of up to nine ("12", "12.5").
bool IsSecondsText(const std::string &text);

// "--at: \"-5\" is not a time in seconds from 0 (such as 12.5)".
std::string NotSeconds(const std::string &option, const std::string &text);

} // namespace cli
