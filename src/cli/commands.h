// The commands of tarnwickmp4-cli and the table that dispatches to them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace cli {

// Exit statuses of the command line.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;    // the work failed (a tool, a probe)
inline constexpr int kExitBadInput = 2;  // the arguments or an input file are wrong
inline constexpr int kExitStopped = 130; // stopped by Ctrl-C

// Where a command prints: results to out, messages for the user to err.
struct CliOutput
{
    std::ostream &out;
    std::ostream &err;
};

// A command receives the arguments behind its name.
using CommandFn = int (*)(const std::vector<std::string> &args, CliOutput &io);

int RunVersion(const std::vector<std::string> &args, CliOutput &io);
// project check FILE [--write OUT]: reads a project file and reports what it holds.
int RunProjectCommand(const std::vector<std::string> &args, CliOutput &io);
// probe FILE [--kind N]: the stream facts of FILE as one JSON object, or with --kind N (1 to 5)
// ffprobe's JSON text of that kind. Ctrl-C stops it (exit 130).
int RunProbe(const std::vector<std::string> &args, CliOutput &io);

// Parses argv and runs the named command; prints usage for unknown ones.
int RunCommandLine(int argc, char **argv);

} // namespace cli
