// The "project" command: opens a project file on the scene tab, reports its main facts and can
// write it anew.
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/tarnwick_data.h"

namespace cli {
namespace {

constexpr char kProjectUsage[] = "Usage: tarnwickmp4-cli project check FILE [--write OUT]\n";

struct CheckArgs
{
    std::string file;
    std::string writePath; // empty: nothing is written
};

// False on a missing FILE, a second FILE, an unknown option or "--write" without its value.
bool ParseCheckArgs(const std::vector<std::string> &args, CheckArgs &parsed)
{
    bool optionsEnded = false;
    bool haveFile = false;
    bool haveWrite = false;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (!optionsEnded && arg == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && arg == "--write") {
            if (haveWrite || i + 1 >= args.size() || args[i + 1].empty()) {
                return false;
            }
            parsed.writePath = args[++i];
            haveWrite = true;
        } else if (!optionsEnded && arg.size() > 1 && arg[0] == '-') {
            return false;
        } else {
            if (haveFile || arg.empty()) {
                return false;
            }
            parsed.file = arg;
            haveFile = true;
        }
    }
    return haveFile;
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
    CheckArgs parsed;
    if (args.empty() || args[0] != "check" || !ParseCheckArgs(args, parsed)) {
        io.err << kProjectUsage;
        return kExitBadInput;
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
