// Time codes: seconds as the lists and readouts show them, and back.
#include "core/time_codes.h"

#include <cmath>
#include <cstdio>

#include "core/helpers.h"

namespace core {

std::string SecondsToTimeCode(double seconds, bool shortForm)
{
    double x = RoundAsPrinted("%.02f", seconds);
    int h = static_cast<int>(x / 3600);
    int m = static_cast<int>(std::fmod(x, 3600) / 60);
    int s = static_cast<int>(std::fmod(x, 60));
    int c = static_cast<int>(std::round((x - std::trunc(x)) * 100));
    if (shortForm) {
        // Narrow displays keep one hour digit; ten hours and more lose their tens.
        return StrPrintf("%01d:%02d:%02d.%02d", h % 10, m, s, c);
    }
    return StrPrintf("%02d:%02d:%02d.%02d", h, m, s, c);
}

std::string SecondsToText(double seconds, const char *format)
{
    return StrPrintf(format, seconds);
}

double ParseTimeCode(const std::string &text)
{
    int hours = 0;
    int minutes = 0;
    int secs = 0;
    int hundredths = 0;
    std::sscanf(text.c_str(), "%d:%d:%d.%d", &hours, &minutes, &secs, &hundredths);
    // The last field counts as hundredths whatever its number of digits.
    return (static_cast<double>(hours) * 60 + minutes) * 60 + secs + hundredths / 100.0;
}

} // namespace core
