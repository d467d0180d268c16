// Time codes: seconds as the lists and readouts show them, and back.
#pragma once

#include <string>

namespace core {

// "%02d:%02d:%02d.%02d" of seconds rounded to hundredths; shortForm keeps one hour digit.
std::string SecondsToTimeCode(double seconds, bool shortForm);
// Seconds formatted with a printf format holding one floating conversion.
std::string SecondsToText(double seconds, const char *format);
// Reads "%d:%d:%d.%d" (hours, minutes, seconds, hundredths) into seconds.
double ParseTimeCode(const std::string &text);

} // namespace core
