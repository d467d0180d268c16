// tarnwickmp4-cli still: one still picture of a video through the preview thread, as the picture
// pane gets it; prints the JPEG's path.
#include <cmath>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/job_guard.h"
#include "cli/scan_session.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"

namespace cli {
namespace {

constexpr const char *kNotReadable = "is not a readable file";

struct StillArgs
{
    std::string video;
    std::string at = "0"; // seconds as text, handed to the tool as given
    int scene = 0;        // from 1; 0: none
    std::string project;  // empty: a new project for VIDEO
};

// Returns what is wrong with the arguments, or an empty text.
std::string ParseStillArgs(const std::vector<std::string> &args, StillArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--at" || arg == "--scene" || arg == "--project") {
            if (i + 1 >= args.size() || args[i + 1].empty()) {
                return NeedsValue(arg);
            }
            const std::string &value = args[++i];
            if (arg == "--at") {
                if (!IsSecondsText(value)) {
                    return NotSeconds(arg, value);
                }
                parsed.at = value;
            } else if (arg == "--scene") {
                if (!ParseWholeNumber(value, 1, 999999, parsed.scene)) {
                    return NotWholeNumber(arg, value, 1, 999999);
                }
            } else {
                parsed.project = value;
            }
        } else if (parsed.video.empty() && !arg.empty() && arg[0] != '-') {
            parsed.video = arg;
        } else {
            return UnexpectedArgument(arg);
        }
    }
    if (parsed.video.empty()) {
        return MissingArgument("VIDEO");
    }
    return parsed.scene != 0 && parsed.project.empty() ? "--scene needs --project PROJECT" : "";
}

// The project the still is made in: the given one, or a new one for the video. Empty when it
// is fine, else the message line.
std::string PrepareStillProject(core::CTarnwickData &data, const StillArgs &args)
{
    if (args.project.empty()) {
        core::DeriveProjectNames(data, std::filesystem::absolute(args.video).string());
        return "";
    }
    std::string problem = UnusablePath(args.project);
    if (!problem.empty()) {
        return PrintablePath(args.project) + ": " + problem;
    }
    std::string error;
    if (!data.LoadProjectFile(std::filesystem::absolute(args.project).string(), &error)) {
        return error;
    }
    if (args.scene > static_cast<int>(data.diff_list.size())) {
        return args.project + ": there is no scene " + std::to_string(args.scene) + "; it has " +
               std::to_string(data.diff_list.size());
    }
    problem = UnusablePath(data.output_folder);
    if (data.output_folder.empty() || !problem.empty()) {
        return args.project + ": its output folder " + PrintablePath(data.output_folder) + ": " +
               (problem.empty() ? std::string("is not set") : problem);
    }
    return "";
}

} // namespace

int RunStill(const std::vector<std::string> &args, CliOutput &io)
{
    StillArgs parsed;
    const std::string error = ParseStillArgs(args, parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, "still", error);
    }
    const std::string head = "tarnwickmp4-cli still: ";
    const std::string video = std::filesystem::absolute(parsed.video).string();
    std::string problem = CheckInputFile(parsed.video, kNotReadable, kNotReadable);
    if (!problem.empty()) {
        io.err << head << PrintablePath(parsed.video) << ": " << problem << "\n";
        return kExitBadInput;
    }
    core::CTarnwickData planned;
    problem = PrepareStillProject(planned, parsed);
    if (!problem.empty()) {
        io.err << head << problem << "\n";
        return kExitBadInput;
    }
    // The still and its caption file go into the output folder: a job that holds it, or the
    // project, refuses the still as it refuses any other command. Released after the session.
    JobGuard guard(head);
    if (!guard.Take(planned, "still " + parsed.video, io.err)) {
        return kExitFailed;
    }
    ScanSession session;
    workspace::CTarnwickTabScene &tab = session.Tab();
    if (parsed.project.empty()) {
        // A new project for the video names the folder the still goes to.
        tab.PlanProjectNames(video, true);
    } else if (tab.OpenProject(std::filesystem::absolute(parsed.project).string(), true) != 0 &&
               session.data.diff_list.empty()) {
        io.err << head << parsed.project << ": the project could not be opened\n";
        return kExitBadInput;
    }
    const int before = session.View().PictureCount();
    if (!tab.ShowStill(video, parsed.at, !parsed.project.empty(), parsed.scene - 1)) {
        io.err << head << video << ": is not a video that ffprobe can read\n";
        return kExitBadInput;
    }
    session.Bench().RunUntil([&] {
        return (!tab.StillPending() && session.View().PictureCount() > before) ||
               session.StopRequested();
    });
    if (session.StopRequested()) {
        tab.RequestStop(); // the tool of the still is killed
        session.Bench().RunUntil([&tab] { return !tab.StillPending(); });
        io.err << head << video << ": stopped\n";
        return kExitStopped;
    }
    const std::string still = session.View().Picture();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(still, ec)) {
        io.err << head << video << ": no still could be made at " << parsed.at
               << " seconds (see the log for the tool's result)\n";
        return kExitFailed;
    }
    io.out << still << "\n";
    return kExitOk;
}

} // namespace cli
