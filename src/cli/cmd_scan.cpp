// tarnwickmp4-cli scan: the scenes that scene extraction (job 1053) finds in a video on a
// headless scene tab, printed as a table or as JSON; nothing is written.
#include "cli/commands.h"
#include "cli/scan_session.h"

namespace cli {

int RunScan(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, ScanKind::Scan, parsed, io);
    if (status >= 0) {
        return status;
    }
    ScanSession session;
    PrepareProject(session.data, parsed);
    JobOutcome outcome = session.RunSceneExtract(false);
    ReportScanExtent("scan", parsed.video, outcome, io.err);
    status = ReportFailure("scan", parsed.video, outcome, session, io.err);
    if (status >= 0) {
        return status;
    }
    if (parsed.json) {
        PrintJson(parsed.video, session.data, io.out);
        return kExitOk;
    }
    PrintSummary(parsed.video, session.data, io.out);
    PrintTable(session.data, false, io.out);
    PrintDefaultNote(outcome, session.data, io.out);
    return kExitOk;
}

} // namespace cli
