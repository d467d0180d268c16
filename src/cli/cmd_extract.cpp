// tarnwickmp4-cli extract: a new project for a video, its scenes found and cut into segments
// while the scan runs, the project saved; the project and the output folder locked meanwhile.
#include <filesystem>
#include <mutex>
#include <ostream>
#include <string>
#include <system_error>

#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/helpers.h"

namespace cli {
namespace {

constexpr const char *kHead = "tarnwickmp4-cli extract: ";

// Why the cut of a scene left no segment, from its result.
std::string CutFailure(int result)
{
    if (result == -1) {
        return "the cut held no picture, or its file could not be written";
    }
    return core::StrPrintf("ffmpeg ended with exit code %d", result);
}

// After a scan that was not stopped: every scene must have its segment. Says on err how many
// could not be written, where and why; true when all are there.
bool AllSegmentsWritten(const core::CTarnwickData &data,
                        const std::vector<int> &cutResults,
                        bool truncated,
                        std::ostream &err)
{
    int missing = 0;
    std::string reason;
    for (size_t i = 0; i < data.diff_list.size(); ++i) {
        std::error_code ec;
        if (std::filesystem::is_regular_file(data.diff_list[i].fileName, ec)) {
            continue;
        }
        ++missing;
        if (reason.empty() && i < cutResults.size() && cutResults[i] != 0) {
            reason = CutFailure(cutResults[i]);
        }
    }
    if (missing == 0) {
        return true;
    }
    err << kHead << missing << " of " << data.diff_list.size()
        << " segments could not be written to " << data.output_folder << ": "
        << (reason.empty() ? "the segment files are missing" : reason)
        << (truncated ? " (the recording looks damaged, and ffmpeg may not seek in it)" : "")
        << "\n";
    return false;
}

} // namespace

void KeepStoppedOpening(const ScanArgs &parsed, ScanSession &session)
{
    const core::CTarnwickData &data = session.data;
    if (data.input_file.empty()) {
        return; // stopped before the open replaced anything
    }
    workspace::CTarnwickTabScene &tab = session.Tab();
    ApplyValues(tab, parsed.options);
    bool empty = false;
    {
        std::lock_guard<std::mutex> lock(data.sceneLock.m);
        empty = data.diff_list.empty();
    }
    if (empty) {
        tab.MakeDefaultScene(); // over the facts read so far; the next opening keeps it
    }
    tab.SaveProject(false);
}

int RunExtract(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, ScanKind::Extract, parsed, io);
    if (status >= 0) {
        return status;
    }
    ScanSession session;
    const core::CTarnwickData &data = session.data;
    status = OpenForJob(ScanKind::Extract, parsed, session, io);
    if (status == kExitStopped) {
        KeepStoppedOpening(parsed, session);
    }
    if (status >= 0) {
        return status;
    }
    workspace::CTarnwickTabScene &tab = session.Tab();
    JobOutcome outcome = session.RunJob([&tab] { tab.ExtractScenes(); });
    ReportScanExtent("extract", parsed.video, outcome, io.err);
    status = ReportFailure("extract", parsed.video, outcome, session, io.err);
    if (!outcome.scanned) {
        return status;
    }
    // As the tab does after every scan: what was found, also before a stop, is kept.
    if (!parsed.json) {
        PrintSummary(parsed.video, data, io.out);
        PrintTable(data, true, io.out);
        PrintDefaultNote(outcome, data, io.out);
    }
    if (status < 0 && !outcome.defaultScene &&
        !AllSegmentsWritten(data, outcome.cutResults, LooksTruncated(outcome), io.err)) {
        status = kExitFailed;
    }
    const bool saved = session.Tab().SaveProject(true);
    if (!saved) {
        io.err << kHead << session.Tab().LastSaveError() << "\n";
    }
    if (parsed.json) {
        nlohmann::ordered_json root = ScenesJson(parsed.video, data, outcome.defaultScene, true);
        root["project"] = saved ? nlohmann::ordered_json(data.project_file) : nullptr;
        io.out << root.dump(4) << "\n";
    } else if (saved) {
        io.out << "Project: " << data.project_file << "\n";
    }
    if (!saved) {
        return status >= 0 ? status : kExitFailed;
    }
    return status >= 0 ? status : kExitOk;
}

} // namespace cli
