// The command users start, tarnwickmp4-cli: holds Ctrl-C and termination requests from its first
// instant and starts the program proper beside it, which takes them up once it can act on them.
//
// The program proper loads the picture libraries and what they depend on before its first
// instruction (some 70 ms), and a signal then would be lost (a shell starts a background job with
// SIGINT ignored) or would end it without a word. This one loads only the C library. It blocks
// both signals: a blocked signal stays pending, even one that is ignored, across exec, until
// the program proper has installed its handling and unblocks them.
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace {

// The program proper's name, in the folder of this executable.
constexpr const char kProgram[] = "tarnwickmp4-cli-main";

} // namespace

int main(int, char **argv)
{
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    sigprocmask(SIG_BLOCK, &stops, nullptr);

    char path[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    const char *slash = n > 0 ? static_cast<const char *>(memrchr(path, '/', n)) : nullptr;
    if (slash == nullptr || static_cast<size_t>(slash + 1 - path) + sizeof kProgram > sizeof path) {
        std::fprintf(stderr, "tarnwickmp4-cli: cannot find its own folder\n");
        return 1;
    }
    std::memcpy(path + (slash + 1 - path), kProgram, sizeof kProgram);
    execv(path, argv);
    std::fprintf(stderr, "tarnwickmp4-cli: cannot start %s: %s\n", path, std::strerror(errno));
    return 1;
}
