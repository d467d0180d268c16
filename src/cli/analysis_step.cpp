// Opening a video or project on the command line's scene tab (the analysis, job 1101, which
// runs on the calling thread while it serves the tab's messages; Ctrl-C stops it), the
// automatic picture, and what is said when they fail.
#include <filesystem>
#include <ostream>
#include <system_error>

#include "cli/cli_support.h"
#include "cli/scan_session.h"
#include "core/helpers.h"
#include "core/project_names.h"

namespace cli {
namespace {

// The result of a stopped job or analysis.
constexpr int kResultStopped = -2;

} // namespace

AnalysisOutcome ScanSession::Open(const std::function<int()> &open)
{
    AnalysisOutcome outcome;
    // A stop reaches the analysis' tools through the tab; the analysis serves the tab's
    // messages meanwhile.
    outcome.result = StopRequested() ? -2 : open();
    outcome.stopped = StopRequested();
    const workspace::AnalysisReport &analysis = Tab().LastAnalysis();
    outcome.probed = analysis.bProbed;
    outcome.workingMade = analysis.bWorkingFileMade;
    outcome.failure = Tab().LastJob().failure;
    outcome.tooSmall = analysis.bPictureTooSmall;
    outcome.width = analysis.nWidth;
    outcome.height = analysis.nHeight;
    return outcome;
}

AnalysisOutcome ScanSession::OpenVideo(const std::string &video)
{
    std::error_code ec;
    const std::string path = std::filesystem::absolute(video, ec).string();
    return Open([this, &path] { return Tab().OpenVideo(path); });
}

AnalysisOutcome ScanSession::OpenVideoToExtract(const std::string &video)
{
    std::error_code ec;
    const std::string path = std::filesystem::absolute(video, ec).string();
    return Open([this, &path] { return Tab().OpenVideoToExtract(path); });
}

AnalysisOutcome ScanSession::OpenProject(const std::string &project)
{
    std::error_code ec;
    const std::string path = std::filesystem::absolute(project, ec).string();
    return Open([this, &path] { return Tab().OpenProject(path, true); });
}

AnalysisOutcome ScanSession::ChangeOutputNames(const std::string &folder, const std::string &name)
{
    return Open([this, &folder, &name] { return Tab().ChangeOutputNames(folder, name); });
}

bool ScanSession::OpenProjectList(const std::string &project,
                                  const std::string &head,
                                  std::ostream &err)
{
    std::error_code ec;
    const std::string path = std::filesystem::absolute(project, ec).string();
    if (Tab().OpenProjectList(path) == 0) {
        return true;
    }
    err << head << Tab().LastProjectRead().error << "\n";
    return false;
}

int ScanSession::MeasurePicture(const std::string &command,
                                const std::string &video,
                                std::ostream &err)
{
    if (!StopRequested()) {
        Tab().AutoPicture();
    }
    const bool finished = m_bench.WaitForHelpers(Tab(), [this] { return StopRequested(); });
    const int result = Tab().LastAutoPictureResult();
    const std::string head = "tarnwickmp4-cli " + command + ": " + video + ": ";
    if (!finished || result == kResultStopped) {
        err << head << "stopped while the picture was measured\n";
        return kExitStopped;
    }
    if (result != 0) {
        err << head
            << "the picture could not be measured: " << core::StrPrintf("ExitCode(%d)", result)
            << "\n";
        return kExitFailed;
    }
    return -1;
}

void ScanSession::PlanNames(const std::string &video)
{
    std::error_code ec;
    Tab().PlanProjectNames(std::filesystem::absolute(video, ec).string(), false);
}

bool ScanSession::Lock(const std::string &head, const std::string &owner, std::ostream &err)
{
    m_guard = std::make_unique<JobGuard>(head);
    return m_guard->Take(data, owner, err);
}

int OpenForJob(ScanKind kind, const ScanArgs &parsed, ScanSession &session, CliOutput &io)
{
    const std::string command = CommandName(kind);
    const std::string head = "tarnwickmp4-cli " + command + ": ";
    workspace::CTarnwickTabScene &tab = session.Tab();
    const core::CTarnwickData &data = session.data;
    tab.SetAutoSave(true); // the tab saves the project as it goes, as the window's does
    ApplyNames(tab, parsed.options);
    session.PlanNames(parsed.video);
    if (kind == ScanKind::Run) {
        std::string problem = UnusablePath(data.GetOutputPath());
        if (!problem.empty()) {
            io.err << head << PrintablePath(data.GetOutputPath()) << ": " << problem << "\n";
            return kExitBadInput;
        }
    }
    if (!session.Lock(head, command + " " + parsed.video, io.err)) {
        return kExitFailed;
    }
    AnalysisOutcome analysis = session.OpenVideoToExtract(parsed.video);
    int status = ReportAnalysisFailure(command.c_str(), parsed.video, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    ApplyValues(tab, parsed.options);
    if (parsed.options.autoPicture) {
        status = session.MeasurePicture(command, parsed.video, io.err);
        if (status >= 0) {
            return status;
        }
        io.out << "Picture: brightness " << data.brightness.strText << ", contrast "
               << data.contrast.strText << ", saturation " << data.saturation.strText << ", gamma "
               << data.gamma.strText << "\n";
    }
    return -1;
}

int ReportAnalysisFailure(const char *command,
                          const std::string &video,
                          const AnalysisOutcome &analysis,
                          ScanSession &session,
                          std::ostream &err)
{
    if (analysis.result == 0 && !analysis.stopped) {
        return -1;
    }
    const std::string head = std::string("tarnwickmp4-cli ") + command + ": " + video + ": ";
    if (analysis.stopped || analysis.result == kResultStopped) {
        err << head << "stopped while the video was analysed\n";
        return kExitStopped;
    }
    if (analysis.tooSmall) {
        return ReportTooSmall(head, analysis.width, analysis.height, err);
    }
    if (!analysis.probed) {
        // What the scan's own report says of a file that cannot be probed.
        JobOutcome probe;
        probe.result = analysis.result;
        probe.failure = analysis.failure;
        return ReportFailure(command, video, probe, session, err);
    }
    const std::string reason = analysis.failure.empty()
                                   ? core::StrPrintf("ExitCode(%d)", analysis.result)
                                   : analysis.failure;
    if (session.data.input_mp4_file.empty() && session.Tab().LastAnalysis().bNeedsWorkingFile) {
        err << head << "the working MP4 could not be made in " << session.data.output_folder << ": "
            << reason << "\n";
    } else {
        err << head << "the frame times could not be read: " << reason << "\n";
    }
    return kExitFailed;
}

} // namespace cli
