// tarnwickmp4-cli autopicture: the picture values that the automatic picture analysis proposes
// for a video, one "name value" line each.
#include "cli/commands.h"

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <vector>

#include "cli/cli_support.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/path_check.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"

namespace cli {
namespace {

// A job number that only the command line uses: the analysis runs as a job, so that a stop
// reaches its probe and its grabs the way a tab's stop reaches any job.
constexpr int kAutoPictureJob = 9002;
constexpr const char *kAutoPictureUsage = "Usage: tarnwickmp4-cli autopicture VIDEO\n";

// How the analysis job ended.
struct PictureOutcome
{
    bool stopped = false; // Ctrl-C or a termination request
    bool probed = false;  // the probe succeeded and the grabs began
    int probeResult = 0;  // OpenVideoFile's result
    int result = 0;       // the job result
    std::string failure;  // text of the first "Failed" state: a tool that could not start
    std::string reasons;  // ffprobe's error lines when the probe failed
};

// Probes video and analyses it with its grabs in folder, as one job of a headless scene tab
// that Ctrl-C can stop. The four values stand in data afterwards.
PictureOutcome
RunAnalysis(const std::string &video, const std::string &folder, core::CTarnwickData &data)
{
    PictureOutcome outcome;
    data.input_file = video;
    data.output_folder = folder;
    engine::HeadlessHost host;
    engine::CTarnwickProcess engine;
    engine.pData = &data;
    engine.pHostDlg = &host;
    engine::HeadlessTab &tab = host.Tab(0);
    tab.SetOnMessage([&](const engine::JobMessage &msg) {
        if (msg.id == engine::AppMessage::WM_APP_JOB_STATE && msg.wParam == core::kStateFailed &&
            msg.text && outcome.failure.empty()) {
            outcome.failure = *msg.text;
        }
        tab.ClearMessages();
    });
    engine.SetJobFunction(kAutoPictureJob, 0, [&](int) {
        outcome.probeResult = engine.OpenVideoFile(video);
        if (outcome.probeResult != 0) {
            return outcome.probeResult;
        }
        outcome.probed = true;
        return engine.AnalyzeVideoEQParams(video, 10);
    });
    outcome.stopped = !RunJobUntilSignal(engine, host, kAutoPictureJob);
    outcome.result = engine.nProcessExitCode;
    if (!outcome.probed && !outcome.stopped && outcome.failure.empty() &&
        outcome.probeResult != -1) {
        std::string errors; // why ffprobe refused the file
        engine.RunFfprobeJson(video, errors, 0);
        outcome.reasons = FfprobeErrorLines(errors);
    }
    tab.SetOnMessage({});
    return outcome;
}

// Reports an outcome that is not a success on err; returns its exit status, or -1 when the
// analysis succeeded.
int ReportFailure(const std::string &video, const PictureOutcome &outcome, std::ostream &err)
{
    std::string head = "tarnwickmp4-cli autopicture: " + video + ": ";
    if (outcome.stopped) {
        err << head << "stopped\n";
        return kExitStopped;
    }
    if (!outcome.probed && !outcome.failure.empty()) {
        err << head << "the probe could not run: " << outcome.failure << "\n";
        return kExitFailed;
    }
    if (!outcome.probed && outcome.probeResult == -1) {
        err << head << "has no video stream\n";
        return kExitBadInput;
    }
    if (!outcome.probed) {
        err << head << "is not a video file"
            << (outcome.reasons.empty() ? "" : " (" + outcome.reasons + ")") << "\n";
        return kExitBadInput;
    }
    if (outcome.result != 0) {
        std::string reason = outcome.failure.empty()
                                 ? core::StrPrintf("ExitCode(%d)", outcome.result)
                                 : outcome.failure;
        err << head << "a frame grab failed: " << reason << "\n";
        return kExitFailed;
    }
    return -1;
}

} // namespace

int RunAutoPicture(const std::vector<std::string> &args, CliOutput &io)
{
    if (args.size() != 1 || (args[0].size() > 1 && args[0][0] == '-')) {
        io.err << kAutoPictureUsage;
        return kExitBadInput;
    }
    const std::string &video = args[0];
    std::string problem = core::PathProblem(video);
    if (problem.empty()) {
        problem = CheckInputFile(video, "is a folder, not a video file", "is not readable");
    }
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli autopicture: " << video << ": " << problem << "\n";
        return kExitBadInput;
    }
    std::string folder = MakeTemporaryFolder("tarnwickmp4-picture");
    if (folder.empty()) {
        io.err << "tarnwickmp4-cli autopicture: no temporary folder for the frames\n";
        return kExitFailed;
    }
    core::CTarnwickData data;
    PictureOutcome outcome = RunAnalysis(video, folder, data);
    core::DeleteTree(core::SetTrailingSeparator(folder, false));
    int status = ReportFailure(video, outcome, io.err);
    if (status >= 0) {
        return status;
    }
    io.out << "brightness " << data.brightness.strText << "\n"
           << "contrast " << data.contrast.strText << "\n"
           << "saturation " << data.saturation.strText << "\n"
           << "gamma " << data.gamma.strText << "\n";
    return kExitOk;
}

} // namespace cli
