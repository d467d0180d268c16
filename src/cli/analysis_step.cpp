// The analysis of a newly opened video on the command line's scene tab (job 1101): it runs on
// the calling thread, which pumps the tab's messages, and Ctrl-C stops it; and what is said
// when it fails.
#include <filesystem>
#include <ostream>
#include <system_error>

#include "cli/scan_session.h"
#include "cli/signal_stop.h"
#include "core/helpers.h"
#include "core/language.h"
#include "engine/encoder_presets.h"
#include "engine/input_analysis.h"

namespace cli {

AnalysisOutcome
ScanSession::Analyze(bool bProjectLoad,
                     const std::function<void(const engine::JobMessage &)> &observer)
{
    AnalysisOutcome outcome;
    engine::HeadlessTab &tab = m_host.Tab(0);
    tab.SetOnMessage([&](const engine::JobMessage &msg) {
        if (observer) {
            observer(msg);
        }
        if (msg.id == engine::AppMessage::WM_APP_JOB_STATE && msg.wParam == core::kStateFailed &&
            msg.text && outcome.failure.empty()) {
            outcome.failure = *msg.text;
        }
        tab.ClearMessages();
    });
    std::error_code ec;
    const std::string working = engine::WorkingFilePath(data);
    const bool workingThere = std::filesystem::exists(working, ec);
    {
        // A stop reaches the analysis' tools through bCancel; the pump keeps the thread's
        // messages flowing meanwhile.
        SignalStop stop([this] { m_engine.bCancel = 1; });
        outcome.result = m_engine.AnalyzeInputFile(bProjectLoad, data.list_idx);
        outcome.stopped = stop.StopRequested();
    }
    outcome.probed = data.viSource.width > 0;
    outcome.workingMade =
        !workingThere && data.input_mp4_file == working && std::filesystem::exists(working, ec);
    tab.SetOnMessage({});
    return outcome;
}

int ReportAnalysisFailure(const char *command,
                          const std::string &video,
                          const AnalysisOutcome &analysis,
                          ScanSession &session,
                          std::ostream &err)
{
    if (analysis.result == engine::kJobOk && !analysis.stopped) {
        return -1;
    }
    const std::string head = std::string("tarnwickmp4-cli ") + command + ": " + video + ": ";
    if (analysis.stopped || analysis.result == engine::kJobStopped) {
        err << head << "stopped while the video was analysed\n";
        return kExitStopped;
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
    if (session.data.input_mp4_file.empty() &&
        !engine::UsedAsItIs(session.data.input_file, session.data.viInput.field_order)) {
        err << head << "the working MP4 could not be made in " << session.data.output_folder << ": "
            << reason << "\n";
    } else {
        err << head << "the frame times could not be read: " << reason << "\n";
    }
    return kExitFailed;
}

} // namespace cli
