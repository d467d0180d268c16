// tarnwickmp4-cli scan: the scenes that scene extraction (job 1053) finds in a video on a
// headless scene tab, printed as a table or as JSON. The video is opened as extract opens it
// (a working MP4 when it needs one, its frame times), but into a temporary folder that goes
// again, so nothing is written beside the video and both commands list the same scenes.
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/file_io.h"
#include "core/paths.h"

namespace cli {
namespace {

int ScanInFolder(const ScanArgs &parsed, const std::string &folder, CliOutput &io)
{
    ScanSession session;
    workspace::CTarnwickTabScene &tab = session.Tab();
    // The working file and frame times go there too.
    tab.PresetOutputNames(folder, session.data.output_name);
    AnalysisOutcome analysis = session.OpenVideoToExtract(parsed.video);
    int status = ReportAnalysisFailure("scan", parsed.video, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    ApplyValues(tab, parsed.options);
    tab.SetCutWhileScanning(false);
    JobOutcome outcome = session.RunJob([&tab] { tab.ExtractScenes(); });
    ReportScanExtent("scan", parsed.video, outcome, io.err);
    status = ReportFailure("scan", parsed.video, outcome, session, io.err);
    if (status >= 0) {
        return status;
    }
    if (parsed.json) {
        io.out << ScenesJson(parsed.video, session.data, outcome.defaultScene, false).dump(4)
               << "\n";
        return kExitOk;
    }
    PrintSummary(parsed.video, session.data, io.out);
    PrintTable(session.data, false, io.out);
    PrintDefaultNote(outcome, session.data, io.out);
    return kExitOk;
}

} // namespace

int RunScan(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, ScanKind::Scan, parsed, io);
    if (status >= 0) {
        return status;
    }
    const std::string folder = MakeTemporaryFolder("tarnwickmp4-scan");
    if (folder.empty()) {
        io.err << "tarnwickmp4-cli scan: no temporary folder for the working files\n";
        return kExitFailed;
    }
    // The session has ended, and with it every thread that writes into the folder.
    status = ScanInFolder(parsed, folder, io);
    core::DeleteTree(core::SetTrailingSeparator(folder, false));
    return status;
}

} // namespace cli
