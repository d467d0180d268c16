// tarnwickmp4-cli render, segments and run: the finished film of a saved project (job 1006),
// its segments alone (job 1052), and a new project for a video in one go (job 1057: scan,
// cuts, render), each as the scene tab runs it, with a progress line.
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/progress_line.h"
#include "cli/scan_session.h"
#include "core/helpers.h"

namespace cli {
namespace {

// What render and segments take: the project and the values to change in it first.
struct RenderArgs
{
    std::string project;
    ProjectOptions options;
    bool json = false;
};

// The arguments of render or segments. Returns what is wrong with them, or an empty text.
std::string
ParseRenderArgs(const std::vector<std::string> &args, const char *command, RenderArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        std::string error;
        switch (ParseProjectOption(args, i, kAllProjectOptions, parsed.options, error)) {
        case OptionParse::Taken:
            continue;
        case OptionParse::Wrong:
            return error;
        case OptionParse::NotMine:
            break;
        }
        if (arg == "--json") {
            parsed.json = true;
        } else if (arg.size() > 1 && arg[0] == '-') {
            return OptionNotTaken(arg, command);
        } else if (parsed.project.empty() && !arg.empty()) {
            parsed.project = arg;
        } else {
            return UnexpectedArgument(arg);
        }
    }
    return parsed.project.empty() ? MissingArgument("PROJECT") : "";
}

// Enabled scenes of the project.
int TickedScenes(const core::CTarnwickData &data)
{
    int ticked = 0;
    for (const core::SceneEntry &scene : data.diff_list) {
        ticked += scene.bEnable ? 1 : 0;
    }
    return ticked;
}

// Why a project as it will be rendered cannot be, as a message line; empty when it can.
std::string RenderProblem(const core::CTarnwickData &data, const std::string &project)
{
    // The given video: the analysis opens it again, and makes the working MP4 anew if that is
    // gone.
    const std::string &source = data.input_file;
    if (source.empty()) {
        return project + ": the project names no video";
    }
    std::string problem = UnusablePath(source);
    if (!problem.empty()) {
        return project + ": its video " + PrintablePath(source) + ": " + problem;
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(source, ec)) {
        return project + ": its video " + source +
               " does not exist any more; put it back or extract again";
    }
    // A list without scenes (a job killed before its scan found one) is given the default
    // scene by the opening, as a new project is.
    if (!data.diff_list.empty() && TickedScenes(data) == 0) {
        return project + ": no scene is ticked, so there is nothing to render; tick at least "
                         "one scene";
    }
    problem = UnusablePath(data.GetOutputPath());
    if (!problem.empty()) {
        return project + ": the output " + PrintablePath(data.GetOutputPath()) + ": " + problem;
    }
    return "";
}

// Says how a job of the render family ended; the exit status, or -1 on success.
int ReportJob(const std::string &command,
              const std::string &subject,
              const JobOutcome &outcome,
              std::ostream &err)
{
    const std::string head = "tarnwickmp4-cli " + command + ": " + subject + ": ";
    if (outcome.stopped || outcome.result == -2) {
        err << head << "stopped; the finished segments are kept for the next render\n";
        return kExitStopped;
    }
    if (outcome.result != 0) {
        std::string reason = outcome.failure.empty()
                                 ? core::StrPrintf("ExitCode(%d)", outcome.result)
                                 : outcome.failure;
        err << head << (command == "segments" ? "the cut failed: " : "the render failed: ")
            << reason << "\n";
        return kExitFailed;
    }
    return -1;
}

// Saves what the job left in the project (recut scenes have new records); false with a line
// on err when the file cannot be written.
bool SaveAfterJob(const std::string &head, workspace::CTarnwickTabScene &tab, std::ostream &err)
{
    if (!tab.SaveProject(true)) {
        err << head << tab.LastSaveError() << "\n";
        return false;
    }
    return true;
}

// render and segments: the saved project opened on the scene tab, the options applied through
// its commands, then the job that start begins.
int RunProjectJob(const std::string &command,
                  const std::vector<std::string> &args,
                  CliOutput &io,
                  void (workspace::CTarnwickTabScene::*start)())
{
    const std::string head = "tarnwickmp4-cli " + command + ": ";
    RenderArgs parsed;
    const std::string error = ParseRenderArgs(args, command.c_str(), parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, command.c_str(), error);
    }
    std::string problem = UnusablePath(parsed.project);
    if (problem.empty()) {
        problem = CheckOutputOptions(parsed.options.outputFolder, parsed.options.outputName);
    } else {
        problem = PrintablePath(parsed.project) + ": " + problem;
    }
    if (!problem.empty()) {
        io.err << head << problem << "\n";
        return kExitBadInput;
    }
    // The project as it will be, read first: what cannot be rendered is said before anything
    // runs or is locked.
    ScanSession session;
    workspace::CTarnwickTabScene &tab = session.Tab();
    const std::string project = std::filesystem::absolute(parsed.project).string();
    if (!session.OpenProjectList(project, head, io.err)) {
        return kExitBadInput;
    }
    const std::string savedFolder = session.data.output_folder;
    const std::string savedName = session.data.output_name;
    ApplyNames(tab, parsed.options);
    const std::string folder = session.data.output_folder;
    const std::string name = session.data.output_name;
    problem = RenderProblem(session.data, parsed.project);
    if (!problem.empty()) {
        io.err << head << problem << "\n";
        return kExitBadInput;
    }
    if (!session.Lock(head, command + " " + parsed.project, io.err)) {
        return kExitFailed;
    }
    tab.SetAutoSave(true); // the tab saves the project as it goes, as the window's does
    ProgressLine progress(io.err, isatty(STDERR_FILENO) != 0);
    session.View().Follow(&progress);
    AnalysisOutcome analysis;
    if (folder != savedFolder || name != savedName) {
        // Other names: the tab's folder and name boxes, the paths following the folder, with
        // the project saved and opened once.
        tab.PresetOutputNames(savedFolder, savedName);
        analysis = session.ChangeOutputNames(folder, name);
    } else {
        analysis = session.OpenProject(project);
    }
    session.View().Follow(nullptr);
    progress.Finish();
    int status =
        ReportAnalysisFailure(command.c_str(), session.data.input_file, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    ApplyNames(tab, parsed.options);
    ApplyValues(tab, parsed.options);
    if (parsed.options.autoPicture) {
        status = session.MeasurePicture(command, parsed.project, io.err);
        if (status >= 0) {
            return status;
        }
    }
    JobOutcome outcome = session.RunJob([&tab, start] { (tab.*start)(); }, &progress);
    status = ReportJob(command, parsed.project, outcome, io.err);
    if (!SaveAfterJob(head, tab, io.err)) {
        return status >= 0 ? status : kExitFailed;
    }
    if (status >= 0) {
        return status;
    }
    const core::CTarnwickData &data = session.data;
    if (command == "segments") {
        PrintTable(data, true, io.out);
        return kExitOk;
    }
    if (parsed.json) {
        nlohmann::ordered_json root;
        root["project"] = data.project_file;
        root["film"] = data.GetOutputPath();
        root["scenes"] = TickedScenes(data);
        root["transition"] = data.transition != 0;
        io.out << root.dump(4) << "\n";
        return kExitOk;
    }
    io.out << data.GetOutputPath() << "\n";
    return kExitOk;
}

} // namespace

int RunRender(const std::vector<std::string> &args, CliOutput &io)
{
    return RunProjectJob("render", args, io, &workspace::CTarnwickTabScene::FinalOutput);
}

int RunSegments(const std::vector<std::string> &args, CliOutput &io)
{
    return RunProjectJob("segments", args, io, &workspace::CTarnwickTabScene::SegmentOutput);
}

int RunRun(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, ScanKind::Run, parsed, io);
    if (status >= 0) {
        return status;
    }
    const std::string head = "tarnwickmp4-cli run: ";
    ScanSession session;
    const core::CTarnwickData &data = session.data;
    status = OpenForJob(ScanKind::Run, parsed, session, io);
    if (status == kExitStopped) {
        KeepStoppedOpening(parsed, session);
    }
    if (status >= 0) {
        return status;
    }
    workspace::CTarnwickTabScene &tab = session.Tab();
    ProgressLine progress(io.err, isatty(STDERR_FILENO) != 0);
    JobOutcome outcome = session.RunJob([&tab] { tab.ExtractAndOutput(); }, &progress);
    status = ReportJob("run", parsed.video, outcome, io.err);
    ReportScanExtent("run", parsed.video, outcome, io.err);
    if (!outcome.scanned) {
        return status >= 0 ? status : kExitOk;
    }
    if (!parsed.json) {
        PrintSummary(parsed.video, data, io.out);
        PrintTable(data, true, io.out);
        PrintDefaultNote(outcome, data, io.out);
    }
    const bool saved = SaveAfterJob(head, session.Tab(), io.err);
    if (parsed.json) {
        nlohmann::ordered_json root = ScenesJson(parsed.video, data, outcome.defaultScene, true);
        root["project"] = saved ? nlohmann::ordered_json(data.project_file) : nullptr;
        root["film"] = saved && status < 0 ? nlohmann::ordered_json(data.GetOutputPath()) : nullptr;
        io.out << root.dump(4) << "\n";
        return status >= 0 ? status : saved ? kExitOk : kExitFailed;
    }
    if (!saved) {
        return status >= 0 ? status : kExitFailed;
    }
    io.out << "Project: " << data.project_file << "\n";
    if (status >= 0) {
        return status;
    }
    io.out << "Film: " << data.GetOutputPath() << "\n";
    return kExitOk;
}

} // namespace cli
