// Dispatch of tarnwickmp4-cli: the command table, usage text and --version.
#include "cli/commands.h"

#include <cstring>
#include <iostream>

#include "core/version.h"

namespace cli {
namespace {

struct CommandEntry
{
    const char *name;
    CommandFn fn;
    const char *usage;
};

// One row per command; each command lives in its own cmd_*.cpp.
const CommandEntry kCommands[] = {
    {"--version", RunVersion, "--version"},
    {"project", RunProjectCommand, "project check FILE [--write OUT]"},
    {"probe", RunProbe, "probe FILE [--kind N]"},
    {"scan", RunScan, "scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--json]"},
    {"extract",
     RunExtract,
     "extract VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--output-folder DIR]"},
    {"render", RunRender, "render PROJECT [--output-folder DIR] [--output-name NAME]"},
    {"run",
     RunRun,
     "run VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--transition] [--output-folder "
     "DIR] [--output-name NAME] [--title TEXT] [--auto-picture]"},
    {"autopicture", RunAutoPicture, "autopicture VIDEO"},
    {"still", RunStill, "still VIDEO [--at SECONDS] [--scene N] [--project PROJECT]"},
    {"play", RunPlay, "play VIDEO [--from SECONDS] [--volume N]"},
};

void PrintUsage(std::ostream &os)
{
    os << "Usage: tarnwickmp4-cli COMMAND [ARGS]\nCommands:\n";
    for (const auto &c : kCommands) {
        os << "  tarnwickmp4-cli " << c.usage << "\n";
    }
}

} // namespace

int RunVersion(const std::vector<std::string> &, CliOutput &io)
{
    io.out << core::kProductName << " " << core::kProductVersion << "\n";
    return kExitOk;
}

int RunCommandLine(int argc, char **argv)
{
    CliOutput io{std::cout, std::cerr};
    if (argc < 2) {
        PrintUsage(io.err);
        return kExitBadInput;
    }
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        PrintUsage(io.out);
        return kExitOk;
    }
    for (const auto &c : kCommands) {
        if (std::strcmp(argv[1], c.name) == 0) {
            std::vector<std::string> args(argv + 2, argv + argc);
            return c.fn(args, io);
        }
    }
    io.err << "tarnwickmp4-cli: unknown command \"" << argv[1] << "\"\n";
    PrintUsage(io.err);
    return kExitBadInput;
}

} // namespace cli
