// A virtual X display for the tests that open a player window.
#include "support/xvfb.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char **environ;

namespace testsupport {
namespace {

// A display number whose socket and lock file are both absent.
bool DisplayFree(int number)
{
    std::error_code ec;
    const std::string n = std::to_string(number);
    return !std::filesystem::exists("/tmp/.X11-unix/X" + n, ec) &&
           !std::filesystem::exists("/tmp/.X" + n + "-lock", ec);
}

pid_t StartServer(const std::string &name)
{
    std::vector<std::string> args = {
        "Xvfb", name, "-screen", "0", "640x480x24", "-nolisten", "tcp"};
    std::vector<char *> argv;
    for (std::string &arg : args) {
        argv.push_back(arg.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    int rc = posix_spawnp(&pid, "Xvfb", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0 ? pid : -1;
}

} // namespace

XvfbDisplay::XvfbDisplay()
{
    int number = 100 + static_cast<int>(getpid() % 800);
    for (int tries = 0; tries < 800 && !DisplayFree(number); ++tries) {
        number = 100 + (number - 99) % 800;
    }
    m_name = ":" + std::to_string(number);
    m_pid = StartServer(m_name);
    if (m_pid <= 0) {
        ADD_FAILURE() << "Xvfb could not be started";
        return;
    }
    const std::string socket = "/tmp/.X11-unix/X" + std::to_string(number);
    for (int i = 0; i < 500; ++i) {
        std::error_code ec;
        if (std::filesystem::exists(socket, ec)) {
            m_ready = true;
            break;
        }
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_pid = -1;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (!m_ready) {
        ADD_FAILURE() << "Xvfb " << m_name << " did not come up";
        return;
    }
    if (const char *old = std::getenv("DISPLAY")) {
        m_savedDisplay = old;
    }
    setenv("DISPLAY", m_name.c_str(), 1);
}

XvfbDisplay::~XvfbDisplay()
{
    if (m_ready) {
        if (m_savedDisplay) {
            setenv("DISPLAY", m_savedDisplay->c_str(), 1);
        } else {
            unsetenv("DISPLAY");
        }
    }
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        int status = 0;
        while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
}

} // namespace testsupport
