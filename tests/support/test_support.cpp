// Test support: temporary folders, running tools and the CLI, and making clips with lavfi.
#include "support/test_support.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char **environ;

namespace testsupport {

TempDir::TempDir()
{
    std::string tmpl = (std::filesystem::temp_directory_path() / "tw_test_XXXXXX").string();
    std::vector<char> buf(tmpl.begin(), tmpl.end());
    buf.push_back('\0');
    if (mkdtemp(buf.data()) == nullptr) {
        ADD_FAILURE() << "mkdtemp failed: " << std::strerror(errno);
    }
    m_path = buf.data();
}

TempDir::~TempDir()
{
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

std::string TempDir::file(const std::string &name) const
{
    return m_path + "/" + name;
}

RunResult RunProgram(const std::vector<std::string> &argv)
{
    RunResult result;
    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) {
        return result;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
    std::vector<char *> args;
    for (const auto &a : argv) {
        args.push_back(const_cast<char *>(a.c_str()));
    }
    args.push_back(nullptr);
    pid_t pid = 0;
    int rc = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);
    if (rc != 0) {
        close(outPipe[0]);
        close(errPipe[0]);
        result.err = std::string("cannot start ") + argv[0] + ": " + std::strerror(rc);
        return result;
    }
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string *sinks[2] = {&result.out, &result.err};
    int open = 2;
    char buf[65536];
    while (open > 0) {
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP | POLLERR))) {
                ssize_t n = read(fds[i].fd, buf, sizeof buf);
                if (n > 0) {
                    sinks[i]->append(buf, static_cast<size_t>(n));
                } else {
                    close(fds[i].fd);
                    fds[i].fd = -1;
                    --open;
                }
            }
        }
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        result.exitCode = 128 + WTERMSIG(status);
    }
    return result;
}

RunResult RunCli(const std::vector<std::string> &args)
{
    std::vector<std::string> argv{TW_CLI_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProgram(argv);
}

void ExpectArgumentProblems(const std::string &command,
                            const std::string &usage,
                            const std::vector<ArgumentCase> &cases)
{
    for (const ArgumentCase &c : cases) {
        SCOPED_TRACE(c.problem);
        RunResult r = RunCli(c.args);
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "tarnwickmp4-cli " + command + ": " + c.problem + "\n" + usage);
    }
}

bool MakeClip(const std::string &path,
              const std::string &lavfi,
              const std::vector<std::string> &outputArgs)
{
    std::vector<std::string> argv{"ffmpeg", "-y", "-loglevel", "error", "-f", "lavfi", "-i", lavfi};
    argv.insert(argv.end(), outputArgs.begin(), outputArgs.end());
    argv.push_back(path);
    RunResult r = RunProgram(argv);
    if (r.exitCode != 0) {
        ADD_FAILURE() << "ffmpeg could not make " << path << " from " << lavfi << ": " << r.err;
        return false;
    }
    return true;
}

bool LoopClip(const std::string &path, const std::string &part, int streamLoop)
{
    RunResult r = RunProgram({"ffmpeg",
                              "-y",
                              "-loglevel",
                              "error",
                              "-stream_loop",
                              std::to_string(streamLoop),
                              "-i",
                              part,
                              "-c",
                              "copy",
                              path});
    if (r.exitCode != 0) {
        ADD_FAILURE() << "ffmpeg could not loop " << part << " into " << path << ": " << r.err;
        return false;
    }
    return true;
}

bool MakeSoundClip(const std::string &path)
{
    return MakeClip(path, "sine=duration=1", {"-c:a", "aac"});
}

std::string FirstLine(const std::string &text)
{
    return text.substr(0, text.find('\n'));
}

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool WriteFile(const std::string &path, const std::string &data)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << data;
    return static_cast<bool>(out);
}

int CountProcessesWith(const std::string &marker)
{
    int count = 0;
    DIR *dir = opendir("/proc");
    if (dir == nullptr) {
        return 0;
    }
    while (dirent *entry = readdir(dir)) {
        if (entry->d_name[0] < '0' || entry->d_name[0] > '9') {
            continue;
        }
        std::string cmdline = ReadFile(std::string("/proc/") + entry->d_name + "/cmdline");
        for (char &c : cmdline) {
            if (c == '\0') {
                c = ' ';
            }
        }
        if (cmdline.find(marker) != std::string::npos) {
            ++count;
        }
    }
    closedir(dir);
    return count;
}

int DecodedFrames(const std::string &path)
{
    RunResult r = RunProgram({"ffprobe",
                              "-v",
                              "error",
                              "-count_frames",
                              "-select_streams",
                              "v:0",
                              "-show_entries",
                              "stream=nb_read_frames",
                              "-of",
                              "csv=p=0",
                              path});
    return r.exitCode == 0 && !r.out.empty() ? std::atoi(r.out.c_str()) : -1;
}

double StreamSeconds(const std::string &path, const std::string &kind)
{
    RunResult r = RunProgram({"ffprobe",
                              "-v",
                              "error",
                              "-select_streams",
                              kind + ":0",
                              "-show_entries",
                              "stream=duration",
                              "-of",
                              "csv=p=0",
                              path});
    return r.exitCode == 0 && !r.out.empty() ? std::atof(r.out.c_str()) : -1.0;
}

std::vector<std::string> FilesMatching(const std::string &folder, const std::string &part)
{
    std::vector<std::string> files;
    std::error_code ec;
    for (const auto &entry : std::filesystem::directory_iterator(folder, ec)) {
        if (entry.path().filename().string().find(part) != std::string::npos) {
            files.push_back(entry.path().string());
        }
    }
    return files;
}

std::string FootageDir()
{
    return TW_FOOTAGE_DIR;
}

} // namespace testsupport
