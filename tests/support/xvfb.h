// A virtual X display for the tests that open a player window: Xvfb as a child of the test.
#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

namespace testsupport {

// Starts "Xvfb :N -screen 0 640x480x24" on a free display number and points DISPLAY at it for
// the life of the object; then stops it and puts DISPLAY back. Fails the current test when the
// server does not come up.
class XvfbDisplay
{
public:
    XvfbDisplay();
    ~XvfbDisplay();
    XvfbDisplay(const XvfbDisplay &) = delete;
    XvfbDisplay &operator=(const XvfbDisplay &) = delete;

    // The server is up and DISPLAY names it.
    bool Ready() const { return m_ready; }
    // ":N"
    const std::string &Name() const { return m_name; }

private:
    pid_t m_pid = -1;
    bool m_ready = false;
    std::string m_name;
    std::optional<std::string> m_savedDisplay;
};

} // namespace testsupport
