// tarnwickmp4-cli render and run: the finished film of a saved project (job 1006), and of a new
// project for a video in one go (job 1057: scan, cuts, render), with a progress line.
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/job_guard.h"
#include "cli/progress_line.h"
#include "cli/scan_session.h"
#include "core/helpers.h"
#include "core/project_names.h"

namespace cli {
namespace {

constexpr const char *kRenderUsage =
    "Usage: tarnwickmp4-cli render PROJECT [--output-folder DIR] [--output-name NAME]\n";

struct RenderArgs
{
    std::string project;
    std::string outputFolder; // empty: the project's
    std::string outputName;   // empty: the project's
};

bool ParseRenderArgs(const std::vector<std::string> &args, RenderArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        std::string *text = arg == "--output-folder" ? &parsed.outputFolder
                            : arg == "--output-name" ? &parsed.outputName
                                                     : nullptr;
        if (text != nullptr) {
            if (i + 1 >= args.size() || args[i + 1].empty()) {
                return false;
            }
            *text = args[++i];
        } else if (arg.size() > 1 && arg[0] == '-') {
            return false;
        } else if (parsed.project.empty() && !arg.empty()) {
            parsed.project = arg;
        } else {
            return false;
        }
    }
    return !parsed.project.empty();
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

// Why a loaded project cannot be rendered, as a message line; empty when it can.
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
    if (TickedScenes(data) == 0) {
        return project + ": no scene is ticked, so there is nothing to render; tick at least "
                         "one scene";
    }
    problem = UnusablePath(data.GetOutputPath());
    if (!problem.empty()) {
        return project + ": the output " + PrintablePath(data.GetOutputPath()) + ": " + problem;
    }
    return "";
}

// Runs nJob with a progress line on err and reports how it ended. The exit status, or -1 on
// success.
int RunWithProgress(const char *command,
                    const std::string &subject,
                    ScanSession &session,
                    int nJob,
                    JobOutcome &outcome,
                    std::ostream &err)
{
    ProgressLine progress(err, isatty(STDERR_FILENO) != 0);
    outcome = session.RunJob(
        nJob, true, [&progress](const engine::JobMessage &msg) { progress.OnMessage(msg); });
    progress.Finish();
    const std::string head = std::string("tarnwickmp4-cli ") + command + ": " + subject + ": ";
    if (outcome.stopped) {
        err << head << "stopped; the finished segments are kept for the next render\n";
        return kExitStopped;
    }
    if (outcome.result != engine::kJobOk) {
        std::string reason = outcome.failure.empty()
                                 ? core::StrPrintf("ExitCode(%d)", outcome.result)
                                 : outcome.failure;
        err << head << "the render failed: " << reason << "\n";
        return kExitFailed;
    }
    return -1;
}

// A job number that only the command line uses: the automatic picture values of run
// --auto-picture, measured before the scan, so that a stop reaches their grabs.
constexpr int kAutoPictureJob = 9003;

// Measures the picture values of the project's video into the project. The exit status, or -1
// when they were measured.
int MeasurePicture(ScanSession &session, const std::string &video, std::ostream &err)
{
    engine::CTarnwickProcess &engine = session.Engine();
    engine.SetJobFunction(kAutoPictureJob, 0, [&engine](int) {
        const std::string source = engine.SourcePath();
        int result = engine.OpenVideoFile(source);
        return result != engine::kJobOk ? result : engine.AnalyzeVideoEQParams(source, 10);
    });
    JobOutcome outcome = session.RunJob(kAutoPictureJob, false, {});
    const std::string head = "tarnwickmp4-cli run: " + video + ": ";
    if (outcome.stopped) {
        err << head << "stopped while the picture was measured\n";
        return kExitStopped;
    }
    if (outcome.result != engine::kJobOk) {
        err << head << "the picture could not be measured: "
            << (outcome.failure.empty() ? core::StrPrintf("ExitCode(%d)", outcome.result)
                                        : outcome.failure)
            << "\n";
        return kExitFailed;
    }
    return -1;
}

} // namespace

int RunRender(const std::vector<std::string> &args, CliOutput &io)
{
    RenderArgs parsed;
    if (!ParseRenderArgs(args, parsed)) {
        io.err << kRenderUsage;
        return kExitBadInput;
    }
    const std::string head = "tarnwickmp4-cli render: ";
    std::string problem = UnusablePath(parsed.project);
    if (problem.empty()) {
        problem = CheckOutputOptions(parsed.outputFolder, parsed.outputName);
    } else {
        problem = PrintablePath(parsed.project) + ": " + problem;
    }
    if (!problem.empty()) {
        io.err << head << problem << "\n";
        return kExitBadInput;
    }
    ScanSession session;
    core::CTarnwickData &data = session.data;
    std::string error;
    if (!data.LoadProjectFile(std::filesystem::absolute(parsed.project).string(), &error)) {
        io.err << head << error << "\n";
        return kExitBadInput;
    }
    if (!parsed.outputFolder.empty()) {
        data.output_folder = core::SetTrailingSeparator(
            std::filesystem::absolute(parsed.outputFolder).string(), true);
    }
    if (!parsed.outputName.empty()) {
        data.output_name = parsed.outputName;
    }
    problem = RenderProblem(data, parsed.project);
    if (!problem.empty()) {
        io.err << head << problem << "\n";
        return kExitBadInput;
    }
    JobGuard guard(head);
    if (!guard.Take(data, "render " + parsed.project, io.err)) {
        return kExitFailed;
    }
    ProgressLine progress(io.err, isatty(STDERR_FILENO) != 0);
    AnalysisOutcome analysis = session.Analyze(
        true, [&progress](const engine::JobMessage &msg) { progress.OnMessage(msg); });
    progress.Finish();
    int status = ReportAnalysisFailure("render", data.input_file, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    JobOutcome outcome;
    status = RunWithProgress(
        "render", parsed.project, session, engine::kJobFinalOutput, outcome, io.err);
    // Recut scenes have new records: the project keeps them, as the tab saves after a job.
    if (!data.SaveProjectFile(data.project_file, &error)) {
        io.err << head << error << "\n";
        return status >= 0 ? status : kExitFailed;
    }
    if (status >= 0) {
        return status;
    }
    io.out << data.GetOutputPath() << "\n";
    return kExitOk;
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
    core::CTarnwickData &data = session.data;
    PrepareProject(data, parsed);
    std::string problem = UnusablePath(data.GetOutputPath());
    if (!problem.empty()) {
        io.err << head << PrintablePath(data.GetOutputPath()) << ": " << problem << "\n";
        return kExitBadInput;
    }
    JobGuard guard(head);
    if (!guard.Take(data, "run " + parsed.video, io.err)) {
        return kExitFailed;
    }
    core::DeleteByPattern(core::SegmentPattern(data)); // the segments of an earlier extraction
    AnalysisOutcome analysis = session.Analyze(false);
    status = ReportAnalysisFailure("run", parsed.video, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    if (parsed.autoPicture) {
        status = MeasurePicture(session, parsed.video, io.err);
        if (status >= 0) {
            return status;
        }
        io.out << "Picture: brightness " << data.brightness.strText << ", contrast "
               << data.contrast.strText << ", saturation " << data.saturation.strText << ", gamma "
               << data.gamma.strText << "\n";
    }
    JobOutcome outcome;
    status = RunWithProgress(
        "run", parsed.video, session, engine::kJobExtractAndOutput, outcome, io.err);
    ReportScanExtent("run", parsed.video, outcome, io.err);
    if (outcome.scanned) {
        PrintSummary(parsed.video, data, io.out);
        PrintTable(data, true, io.out);
        PrintDefaultNote(outcome, data, io.out);
        std::string error;
        if (!data.SaveProjectFile(data.project_file, &error)) {
            io.err << head << error << "\n";
            return status >= 0 ? status : kExitFailed;
        }
        io.out << "Project: " << data.project_file << "\n";
    }
    if (status >= 0) {
        return status;
    }
    io.out << "Film: " << data.GetOutputPath() << "\n";
    return kExitOk;
}

} // namespace cli
