// tarnwickmp4-cli merge: the merge workspace's jobs on the command line: every file analysed,
// converted to one picture size and frame rate (with a silent track where it has no sound), and
// all joined into one film, end to end or cross-faded (job 1057 of the merge tab).
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/job_guard.h"
#include "cli/progress_line.h"
#include "cli/scan_session.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/merge_formats.h"
#include "core/paths.h"

namespace cli {
namespace {

constexpr const char *kHead = "tarnwickmp4-cli merge: ";

struct MergeArgs
{
    int nSizeIndex = -1;
    int nRateIndex = -1;
    bool transition = false;
    bool json = false;
    std::string outputFolder;
    std::string outputName;
    std::vector<std::string> files;
};

// The row of the size table written "WxH"; -1 when none.
int SizeIndexOf(const std::string &text)
{
    for (int i = 0; i < core::kMergeSizeCount; ++i) {
        if (text ==
            core::StrPrintf("%dx%d", core::kMergeSizes[i].width, core::kMergeSizes[i].height)) {
            return i;
        }
    }
    return -1;
}

// The row of the rate table written "N/D" (or "N" for N/1); -1 when none.
int RateIndexOf(const std::string &text)
{
    for (int i = 0; i < core::kMergeRateCount; ++i) {
        const std::string rate = core::MergeRateText(core::kMergeRates[i]);
        if (text == rate ||
            (core::kMergeRates[i].den == 1 && text == rate.substr(0, rate.find('/')))) {
            return i;
        }
    }
    return -1;
}

std::string SizeList()
{
    std::string list;
    for (const core::MergeSize &size : core::kMergeSizes) {
        list += (list.empty() ? "" : ", ") + core::StrPrintf("%dx%d", size.width, size.height);
    }
    return list;
}

std::string RateList()
{
    std::string list;
    for (const core::MergeRate &rate : core::kMergeRates) {
        list += (list.empty() ? "" : ", ") + core::MergeRateText(rate);
    }
    return list;
}

// Parses the arguments. Returns what is wrong with them, or an empty text.
std::string ParseMergeArgs(const std::vector<std::string> &args, MergeArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        const bool takesValue = arg == "--size" || arg == "--rate" || arg == "--output-folder" ||
                                arg == "-o" || arg == "--output-name";
        if (takesValue && (i + 1 >= args.size() || args[i + 1].empty())) {
            return NeedsValue(arg);
        }
        if (arg == "--size") {
            parsed.nSizeIndex = SizeIndexOf(args[++i]);
            if (parsed.nSizeIndex < 0) {
                return "--size " + args[i] + ": one of " + SizeList() + " is wanted";
            }
        } else if (arg == "--rate") {
            parsed.nRateIndex = RateIndexOf(args[++i]);
            if (parsed.nRateIndex < 0) {
                return "--rate " + args[i] + ": one of " + RateList() + " is wanted";
            }
        } else if (arg == "--output-folder") {
            parsed.outputFolder = args[++i];
        } else if (arg == "-o" || arg == "--output-name") {
            parsed.outputName = args[++i];
        } else if (arg == "--transition") {
            parsed.transition = true;
        } else if (arg == "--json") {
            parsed.json = true;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return UnexpectedArgument(arg);
        } else if (!arg.empty()) {
            parsed.files.push_back(arg);
        }
    }
    return parsed.nSizeIndex < 0       ? MissingArgument("--size WxH")
           : parsed.nRateIndex < 0     ? MissingArgument("--rate N/D")
           : parsed.outputName.empty() ? MissingArgument("-o NAME")
           : parsed.files.empty()      ? MissingArgument("FILE")
                                       : "";
}

// Every file must be readable, and two different files must not share a segment name. The
// problem as a message line; empty when all can be tried.
std::string CheckFiles(const std::vector<std::string> &files, const core::CTarnwickData &data)
{
    std::map<std::string, std::string> segments; // segment name to its source
    for (size_t i = 0; i < data.diff_list.size(); ++i) {
        const std::string &file = files[i];
        std::string problem =
            CheckInputFile(file, "is a folder, not a video file", "is not readable");
        if (problem.empty()) {
            problem = NameRoomProblem(file);
        }
        if (!problem.empty()) {
            return PrintablePath(file) + ": " + problem;
        }
        const core::SceneEntry &row = data.diff_list[i];
        auto [at, added] = segments.emplace(row.fileName, row.strWorkFile);
        if (!added && at->second != row.strWorkFile) {
            return PrintablePath(file) + " and " + PrintablePath(at->second) +
                   " have the same file name, and their segments would share one name; rename "
                   "one of them";
        }
    }
    return "";
}

// The merge tab's project for the arguments: one ticked row per file, its segment named after
// the file, the size and the rate.
void PrepareMergeProject(core::CTarnwickData &data, const MergeArgs &args)
{
    data.ResetProject(false);
    std::error_code ec;
    const std::string first = std::filesystem::absolute(args.files.front(), ec).string();
    std::string folder = args.outputFolder;
    if (folder.empty()) {
        folder = (std::filesystem::path(first).parent_path() /
                  (core::ReplaceExtension(args.outputName, "") + "_out"))
                     .string();
    }
    data.output_folder =
        core::SetTrailingSeparator(std::filesystem::absolute(folder, ec).string(), true);
    data.output_name = args.outputName;
    data.transition = args.transition ? 1 : 0;
    const core::MergeSize size = core::MergeSizeAt(args.nSizeIndex);
    const double fps = core::MergeRateFps(core::MergeRateAt(args.nRateIndex));
    for (const std::string &file : args.files) {
        core::SceneEntry row;
        row.strWorkFile = std::filesystem::absolute(file, ec).string();
        row.fileName = data.output_folder +
                       core::ReplaceExtension(core::FileNamePart(row.strWorkFile), "_seg_") +
                       core::StrPrintf("%dx%d_%.02f.mp4", size.width, size.height, fps);
        data.diff_list.push_back(row);
    }
}

// The source of the first row that the analysis could not finish; empty when all were.
std::string FirstUnanalysed(const core::CTarnwickData &data)
{
    std::lock_guard<std::mutex> lock(data.sceneLock.m);
    for (const core::SceneEntry &row : data.diff_list) {
        if (!row.bAnalyzed) {
            return row.strOriginalFile.empty() ? row.strWorkFile : row.strOriginalFile;
        }
    }
    return "";
}

} // namespace

int RunMerge(const std::vector<std::string> &args, CliOutput &io)
{
    MergeArgs parsed;
    std::string problem = ParseMergeArgs(args, parsed);
    if (!problem.empty()) {
        return ArgumentProblem(io, "merge", problem);
    }
    problem = CheckOutputOptions(parsed.outputFolder, parsed.outputName);
    if (!problem.empty()) {
        io.err << kHead << problem << "\n";
        return kExitBadInput;
    }
    core::CTarnwickData planned;
    PrepareMergeProject(planned, parsed);
    problem = CheckFiles(parsed.files, planned);
    if (problem.empty() && !UnusablePath(planned.GetOutputPath()).empty()) {
        problem =
            PrintablePath(planned.GetOutputPath()) + ": " + UnusablePath(planned.GetOutputPath());
    }
    if (!problem.empty()) {
        io.err << kHead << problem << "\n";
        return kExitBadInput;
    }
    JobGuard guard(kHead); // released after the session has ended
    if (!guard.Take(planned, "merge " + parsed.outputName, io.err)) {
        return kExitFailed;
    }
    // The merge tab as a window's user fills it: the choices, the folder and name, the files.
    ScanSession session;
    workspace::CTarnwickTabMerge &tab = session.MergeTab();
    session.Bench().SetActiveTab(1);
    tab.Init();
    tab.SetSizeIndex(parsed.nSizeIndex);
    tab.SetRateIndex(parsed.nRateIndex);
    tab.SetTransition(parsed.transition);
    tab.OutputFolderConfirmed(planned.output_folder);
    tab.OutputNameConfirmed(parsed.outputName);
    std::vector<std::string> files;
    for (const core::SceneEntry &row : planned.diff_list) {
        files.push_back(row.strWorkFile);
    }
    tab.DropFiles(files);
    const core::CTarnwickData &data = std::as_const(tab).Data();
    if (session.StopRequested()) {
        // A stop kills the probe of the drop too; the file it was reading is not to blame.
        io.err << kHead << "stopped before the merge began\n";
        return kExitStopped;
    }
    // The tab leaves out what its probe refuses: name the first such file.
    for (size_t i = 0; i < files.size(); ++i) {
        if (i >= data.diff_list.size() || data.diff_list[i].strWorkFile != files[i]) {
            const std::string reason = session.ProbeErrors(files[i]);
            io.err << kHead << PrintablePath(parsed.files[i]) << ": could not be read as a video"
                   << (reason.empty() ? "" : " (" + reason + ")") << "\n";
            return kExitBadInput;
        }
    }
    ProgressLine progress(io.err, isatty(STDERR_FILENO) != 0);
    const JobOutcome outcome = session.RunJob(
        tab, [&tab] { tab.Merge(); }, &progress);
    const int result = outcome.result;
    if (outcome.stopped || result == -2) {
        io.err << kHead << "stopped; the finished segments in " << data.output_folder
               << " are kept for the next merge\n";
        return kExitStopped;
    }
    if (result != 0) {
        const std::string reason =
            outcome.failure.empty() ? core::StrPrintf("ExitCode(%d)", result) : outcome.failure;
        const std::string unanalysed = FirstUnanalysed(data);
        if (!unanalysed.empty()) {
            io.err << kHead << PrintablePath(unanalysed) << ": could not be read as a video ("
                   << reason << ")\n";
            return kExitBadInput;
        }
        io.err << kHead << "the merge failed: " << reason << "\n";
        return kExitFailed;
    }
    if (parsed.json) {
        const core::MergeSize size = core::MergeSizeAt(parsed.nSizeIndex);
        const core::MergeRate rate = core::MergeRateAt(parsed.nRateIndex);
        nlohmann::ordered_json root;
        root["film"] = data.GetOutputPath();
        root["files"] = parsed.files.size();
        root["size"] = core::StrPrintf("%dx%d", size.width, size.height);
        root["rate"] = core::StrPrintf("%d/%d", rate.num, rate.den);
        root["transition"] = parsed.transition;
        io.out << root.dump(4) << "\n";
        return kExitOk;
    }
    io.out << data.GetOutputPath() << "\n";
    return kExitOk;
}

} // namespace cli
