// The scene scan of the command line: its arguments, one headless scene tab that runs job 1053,
// how a run ended, and the reports of scan and extract.
#include "cli/scan_session.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/path_check.h"
#include "core/project_names.h"
#include "core/time_codes.h"

namespace cli {
namespace {

// The arguments of a scan command. Returns what is wrong with them, or an empty text.
std::string ParseScanArgs(const std::vector<std::string> &args, ScanKind kind, ScanArgs &parsed)
{
    const unsigned groups = OptionGroups(kind);
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        std::string error;
        switch (ParseProjectOption(args, i, groups, parsed.options, error)) {
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
            return OptionNotTaken(arg, CommandName(kind));
        } else if (parsed.video.empty() && !arg.empty()) {
            parsed.video = arg;
        } else {
            return UnexpectedArgument(arg);
        }
    }
    return parsed.video.empty() ? MissingArgument("VIDEO") : "";
}

// Seconds of a frame number at fps; 0 when fps is not above 0.
double FrameSeconds(int frame, double fps)
{
    return fps > 0 ? frame / fps : 0.0;
}

} // namespace

const char *CommandName(ScanKind kind)
{
    switch (kind) {
    case ScanKind::Scan:
        return "scan";
    case ScanKind::Extract:
        return "extract";
    case ScanKind::Run:
        return "run";
    default:
        return "analyze";
    }
}

unsigned OptionGroups(ScanKind kind)
{
    switch (kind) {
    case ScanKind::Scan:
        return kScanOptions;
    case ScanKind::Analyze:
        return kFolderOption | kEncodeOptions;
    case ScanKind::Extract:
        return kScanOptions | kFolderOption | kPictureOptions | kEncodeOptions;
    default:
        return kAllProjectOptions;
    }
}

ScanSession::ScanSession()
    : m_bench(m_view, m_mergeView)
    , data(std::as_const(m_bench.Scene()).Data())
{
    m_stop = std::make_unique<SignalStop>([this] {
        Tab().RequestStop();
        MergeTab().RequestStop();
        m_bench.Wake();
    });
    Tab().Init();
}

JobOutcome ScanSession::RunJob(const std::function<void()> &start, ProgressLine *progress)
{
    return RunJob(Tab(), start, progress);
}

JobOutcome ScanSession::RunJob(workspace::CTarnwickTab &tab,
                               const std::function<void()> &start,
                               ProgressLine *progress)
{
    JobOutcome outcome;
    m_view.Follow(progress);
    m_mergeView.Follow(progress);
    if (!StopRequested()) {
        start();
    }
    outcome.stopped = !m_bench.WaitForJob(tab, [this] { return StopRequested(); });
    m_view.Follow(nullptr);
    m_mergeView.Follow(nullptr);
    if (progress != nullptr) {
        progress->Finish();
    }
    const workspace::JobReport &report = tab.LastJob();
    outcome.result = report.nResult;
    outcome.scanned = report.nStages >= 2;
    outcome.failure = report.failure;
    outcome.defaultScene = report.bDefaultScene;
    outcome.tooSmall = report.bPictureTooSmall;
    outcome.framesScanned = report.nFramesScanned;
    outcome.framesAnnounced = data.viInput.frame_num;
    outcome.framesSource =
        data.viSource.frame_num > 0 ? data.viSource.frame_num : data.viInput.frame_num;
    outcome.converted = !data.input_mp4_file.empty();
    outcome.cutResults = report.cutResults;
    return outcome;
}

std::string ScanSession::ProbeErrors(const std::string &file)
{
    return FfprobeErrorLines(Tab().ProbeText(file), [&file](std::string &line) {
        size_t close = line.find("] ");
        if (line[0] == '[' && close != std::string::npos) {
            line.erase(0, close + 2);
        }
        if (line.compare(0, file.size() + 2, file + ": ") == 0) {
            line.erase(0, file.size() + 2);
        }
    });
}

int ReportTooSmall(const std::string &head, int width, int height, std::ostream &err)
{
    err << head << "the picture is too small to scan (" << width << "x" << height << ")\n";
    return kExitBadInput;
}

int ReportFailure(const char *command,
                  const std::string &video,
                  const JobOutcome &outcome,
                  ScanSession &session,
                  std::ostream &err)
{
    std::string head = std::string("tarnwickmp4-cli ") + command + ": " + video + ": ";
    if (outcome.stopped) {
        return kExitStopped; // ReportScanExtent says how far it came
    }
    if (outcome.result == 0) {
        return -1;
    }
    if (outcome.tooSmall) {
        const core::VideoInfo &info = session.data.viInput;
        return ReportTooSmall(head, info.width, info.height, err);
    }
    if (!outcome.failure.empty() && !outcome.scanned) {
        err << head << "the probe could not run: " << outcome.failure << "\n";
        return kExitFailed;
    }
    if (!outcome.scanned && outcome.result == -1) {
        err << head << "has no video stream\n";
        return kExitBadInput;
    }
    if (!outcome.scanned) {
        std::string reason = session.ProbeErrors(video);
        err << head << "is not a video file" << (reason.empty() ? "" : " (" + reason + ")") << "\n";
        return kExitBadInput;
    }
    std::string reason =
        outcome.failure.empty() ? core::StrPrintf("ExitCode(%d)", outcome.result) : outcome.failure;
    err << head << "the scan failed: " << reason << "\n";
    return kExitFailed;
}

void ReportScanExtent(const char *command,
                      const std::string &video,
                      const JobOutcome &outcome,
                      std::ostream &err)
{
    std::string head = std::string("tarnwickmp4-cli ") + command + ": " + video + ": ";
    if (outcome.stopped) {
        if (!outcome.scanned) {
            err << head << "stopped before the scan began\n";
            return;
        }
        int percent =
            outcome.framesAnnounced > 0
                ? static_cast<int>(100.0 * outcome.framesScanned / outcome.framesAnnounced)
                : 0;
        err << head << "stopped after scanning " << outcome.framesScanned << " of "
            << outcome.framesAnnounced << " frames (" << percent << "%)\n";
        return;
    }
    if (LooksTruncated(outcome)) {
        err << head << "only " << outcome.framesScanned << " of " << outcome.framesSource
            << " frames could be read; the file looks truncated\n";
    }
}

int ConversionTolerance(const JobOutcome &outcome)
{
    return outcome.converted ? std::max(2, outcome.framesSource / 100) : 0;
}

bool LooksTruncated(const JobOutcome &outcome)
{
    return !outcome.stopped && outcome.result == 0 &&
           outcome.framesScanned < outcome.framesSource - ConversionTolerance(outcome);
}

nlohmann::ordered_json ScenesJson(const std::string &video,
                                  const core::CTarnwickData &data,
                                  bool defaultScene,
                                  bool segments)
{
    const double fps = data.viInput.fps;
    nlohmann::ordered_json root;
    root["file"] = video;
    root["fps"] = fps;
    root["frames"] = data.viInput.frame_num;
    root["default_scene"] = defaultScene;
    root["scenes"] = nlohmann::ordered_json::array();
    for (const core::SceneEntry &scene : data.diff_list) {
        nlohmann::ordered_json item;
        item["first"] = scene.framNo_first;
        item["last"] = scene.framNo_second;
        item["start"] = FrameSeconds(scene.framNo_first, fps);
        item["end"] = FrameSeconds(scene.framNo_second + 1, fps);
        if (segments) {
            std::error_code ec;
            item["segment"] = scene.fileName;
            item["written"] = std::filesystem::is_regular_file(scene.fileName, ec);
        }
        root["scenes"].push_back(item);
    }
    return root;
}

void PrintTable(const core::CTarnwickData &data, bool files, std::ostream &out)
{
    const double fps = data.viInput.fps;
    out << "Scene   First    Last  Start        End          Length" << (files ? "       File" : "")
        << "\n";
    int number = 0;
    for (const core::SceneEntry &scene : data.diff_list) {
        double start = FrameSeconds(scene.framNo_first, fps);
        double end = FrameSeconds(scene.framNo_second + 1, fps);
        out << std::setw(5) << ++number << std::setw(8) << scene.framNo_first << std::setw(8)
            << scene.framNo_second << "  " << core::SecondsToTimeCode(start, false) << "  "
            << core::SecondsToTimeCode(end, false) << "  "
            << core::SecondsToTimeCode(end - start, false);
        if (files) {
            std::error_code ec;
            bool written = std::filesystem::is_regular_file(scene.fileName, ec);
            out << "  " << scene.fileName << (written ? "" : " (not written)");
        }
        out << "\n";
    }
}

void PrintSummary(const std::string &video, const core::CTarnwickData &data, std::ostream &out)
{
    out << "File: " << video << "\n"
        << "Frames: " << data.viInput.frame_num << " at "
        << core::StrPrintf("%.3f", data.viInput.fps) << " fps\n";
}

void PrintDefaultNote(const JobOutcome &outcome, const core::CTarnwickData &data, std::ostream &out)
{
    if (!outcome.defaultScene) {
        return;
    }
    if (outcome.stopped || outcome.result != 0) {
        // Nothing can be said of motion in the part that was not scanned.
        out << "No scene was found before the scan ended early: the scene above is the default "
               "scene.\n";
        return;
    }
    out << (data.diff_list.empty() ? "No motion found, and the video has no frames for a default "
                                     "scene.\n"
                                   : "No motion found: the scene above is the default scene.\n");
}

int ParseAndCheck(const std::vector<std::string> &args,
                  ScanKind kind,
                  ScanArgs &parsed,
                  CliOutput &io)
{
    const char *command = CommandName(kind);
    const std::string error = ParseScanArgs(args, kind, parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, command, error);
    }
    std::string problem =
        CheckInputFile(parsed.video, "is a folder, not a video file", "is not readable");
    if (problem.empty()) {
        problem = NameRoomProblem(parsed.video);
    }
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << PrintablePath(parsed.video) << ": "
               << problem << "\n";
        return kExitBadInput;
    }
    problem = CheckOutputOptions(parsed.options.outputFolder, parsed.options.outputName);
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << problem << "\n";
        return kExitBadInput;
    }
    return -1;
}

} // namespace cli
