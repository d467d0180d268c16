// The "project" command: opens a project file on the scene tab, reports its main facts and can
// write it anew.
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/tarnwick_data.h"

namespace cli {
namespace {

struct CheckArgs
{
    std::string file;
    std::string writePath; // empty: nothing is written
};

// The arguments behind "check". Returns what is wrong with them, or an empty text.
std::string ParseCheckArgs(const std::vector<std::string> &args, CheckArgs &parsed)
{
    bool optionsEnded = false;
    bool haveFile = false;
    bool haveWrite = false;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (!optionsEnded && arg == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && arg == "--write") {
            if (haveWrite) {
                return "--write is given twice";
            }
            if (i + 1 >= args.size() || args[i + 1].empty()) {
                return NeedsValue(arg);
            }
            parsed.writePath = args[++i];
            haveWrite = true;
        } else if ((!optionsEnded && arg.size() > 1 && arg[0] == '-') || haveFile || arg.empty()) {
            return UnexpectedArgument(arg);
        } else {
            parsed.file = arg;
            haveFile = true;
        }
    }
    return haveFile ? "" : MissingArgument("FILE");
}

void PrintFacts(const core::CTarnwickData &data, std::ostream &out)
{
    out << "input_file: " << data.input_file << "\n";
    out << "output_folder: " << data.output_folder << "\n";
    out << "output_name: " << data.output_name << "\n";
    out << "scenes: " << data.diff_list.size() << "\n";
    out << "threshold: " << data.threshold.strText << "\n";
    out << "valid_min_unit: " << data.valid_min_unit.strText << "\n";
    out << "cut_min_unit: " << data.cut_min_unit.strText << "\n";
}

} // namespace

int RunProjectCommand(const std::vector<std::string> &args, CliOutput &io)
{
    if (args.empty()) {
        return ArgumentProblem(io, "project", "the command word \"check\" is missing");
    }
    if (args[0] != "check") {
        return ArgumentProblem(io,
                               "project",
                               "\"" + PrintablePath(args[0]) + "\" is not a project command; " +
                                   "\"check\" is the one there is");
    }
    CheckArgs parsed;
    const std::string error = ParseCheckArgs(args, parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, "project", error);
    }
    for (const std::string &path : {parsed.file, parsed.writePath}) {
        std::string problem = path.empty() ? "" : UnusablePath(path);
        if (!problem.empty()) {
            io.err << "tarnwickmp4-cli: " << PrintablePath(path) << ": " << problem << "\n";
            return kExitBadInput;
        }
    }
    ScanSession session;
    workspace::CTarnwickTabScene &tab = session.Tab();
    if (!session.OpenProjectList(parsed.file, "tarnwickmp4-cli: ", io.err)) {
        return kExitBadInput;
    }
    const std::vector<std::string> warnings = tab.LastProjectRead().warnings;
    PrintFacts(session.data, io.out);
    // The path as the user gave it, on one line.
    std::string file = parsed.file;
    std::replace_if(
        file.begin(), file.end(), [](char c) { return c >= 0 && c < 0x20; }, ' ');
    for (const std::string &warning : warnings) {
        io.err << "tarnwickmp4-cli: " << file << ": warning: " << warning << "\n";
    }
    if (!parsed.writePath.empty() && !tab.SaveProjectAs(parsed.writePath)) {
        io.err << "tarnwickmp4-cli: " << tab.LastSaveError() << "\n";
        return kExitFailed;
    }
    return warnings.empty() ? kExitOk : kExitWarnings;
}

} // namespace cli
