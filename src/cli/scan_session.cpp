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

#include <nlohmann/json.hpp>

#include "cli/cli_support.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/path_check.h"
#include "core/project_names.h"
#include "workspace/scene_defaults.h"

namespace cli {
namespace {

constexpr const char *kScanUsage =
    "Usage: tarnwickmp4-cli scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--json]\n";
constexpr const char *kExtractUsage =
    "Usage: tarnwickmp4-cli extract VIDEO [--threshold N] [--valid-min S] [--cut-min S] "
    "[--output-folder DIR]\n";
constexpr const char *kAnalyzeUsage =
    "Usage: tarnwickmp4-cli analyze VIDEO [--output-folder DIR] [--preset 0|1|2] [--json]\n";
constexpr const char *kRunUsage =
    "Usage: tarnwickmp4-cli run VIDEO [--threshold N] [--valid-min S] [--cut-min S] "
    "[--transition] [--output-folder DIR] [--output-name NAME] [--title TEXT] [--auto-picture]\n";

// The whole text is a finite number.
bool ParseNumber(const std::string &text, double &value)
{
    if (text.empty()) {
        return false;
    }
    char *end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    return *end == '\0' && errno == 0 && std::isfinite(value);
}

// The arguments of a scan command. Returns an error line for a bad value, or an empty text
// with usage set when the usage should be shown.
std::string
ParseScanArgs(const std::vector<std::string> &args, ScanKind kind, ScanArgs &parsed, bool &usage)
{
    usage = false;
    const bool writes = kind != ScanKind::Scan;
    const bool run = kind == ScanKind::Run;
    const bool analyze = kind == ScanKind::Analyze;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        std::optional<double> *number = analyze                ? nullptr
                                        : arg == "--threshold" ? &parsed.threshold
                                        : arg == "--valid-min" ? &parsed.validMin
                                        : arg == "--cut-min"   ? &parsed.cutMin
                                                               : nullptr;
        if (analyze && arg == "--preset") {
            number = &parsed.preset;
        }
        std::string *text = writes && arg == "--output-folder" ? &parsed.outputFolder
                            : run && arg == "--output-name"    ? &parsed.outputName
                            : run && arg == "--title"          ? &parsed.title
                                                               : nullptr;
        if (number != nullptr || text != nullptr) {
            if (i + 1 >= args.size() || (text != nullptr && args[i + 1].empty())) {
                usage = true;
                return "";
            }
            const std::string &value = args[++i];
            double number_value = 0;
            if (text != nullptr) {
                *text = value;
            } else if (ParseNumber(value, number_value)) {
                *number = number_value;
            } else {
                return arg + ": \"" + value + "\" is not a number";
            }
        } else if ((kind == ScanKind::Scan || analyze) && arg == "--json") {
            parsed.json = true;
        } else if (run && arg == "--transition") {
            parsed.transition = true;
        } else if (run && arg == "--auto-picture") {
            parsed.autoPicture = true;
        } else if (arg.size() > 1 && arg[0] == '-' && arg != "-") {
            usage = true;
            return "";
        } else if (parsed.video.empty() && !arg.empty()) {
            parsed.video = arg;
        } else {
            usage = true;
            return "";
        }
    }
    usage = parsed.video.empty();
    return "";
}

// A value of the command line into its project field, clamped to the field's bounds as the
// project file reads it, with its text rebuilt.
void SetParam(core::ParamRange &param, const std::optional<double> &value)
{
    if (value) {
        param.dValue = std::clamp(*value, param.dMin, param.dMax);
        core::UpdateParamText(param);
    }
}

// The lines of ffprobe's error output for file, joined with "; ", each without the tool's
// "[demuxer @ address] " and without the file name in front.
std::string ProbeErrors(engine::CTarnwickProcess &engine, const std::string &file)
{
    std::string text;
    engine.RunFfprobeJson(file, text, 0);
    return FfprobeErrorLines(text, [&file](std::string &line) {
        size_t close = line.find("] ");
        if (line[0] == '[' && close != std::string::npos) {
            line.erase(0, close + 2);
        }
        if (line.compare(0, file.size() + 2, file + ": ") == 0) {
            line.erase(0, file.size() + 2);
        }
    });
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

ScanSession::ScanSession()
{
    m_engine.pData = &data;
    m_engine.pHostDlg = &m_host;
    m_engine.bMergeMode = 0;
    m_host.Tab(0).SetDefaultSceneRoutine([this] { workspace::MakeDefaultScene(data); });
}

JobOutcome ScanSession::RunSceneExtract(bool bCutScenes)
{
    return RunJob(engine::kJobSceneExtract, bCutScenes, {});
}

JobOutcome ScanSession::RunJob(int nJob,
                               bool bCutScenes,
                               const std::function<void(const engine::JobMessage &)> &observer)
{
    JobOutcome outcome;
    engine::HeadlessTab &tab = m_host.Tab(0);
    int stages = 0;
    tab.SetOnMessage([&](const engine::JobMessage &msg) {
        if (observer) {
            observer(msg);
        }
        if (msg.id == engine::AppMessage::WM_APP_STAGE_BEGIN) {
            ++stages;
        } else if (msg.id == engine::AppMessage::WM_APP_JOB_STATE &&
                   msg.wParam == core::kStateFailed && msg.text && outcome.failure.empty()) {
            outcome.failure = *msg.text; // the first says why; the job's own follows
        }
        tab.ClearMessages(); // one message a frame: keep nothing
    });
    m_engine.bCutScenes = bCutScenes;
    m_engine.nScanFrames = 0;
    outcome.stopped = !RunJobUntilSignal(m_engine, m_host, nJob);
    m_engine.JoinAfterScanThread();
    outcome.result = m_engine.nProcessExitCode;
    outcome.scanned = stages >= 2;
    outcome.defaultScene = tab.DefaultSceneCalls() > 0;
    outcome.framesScanned = m_engine.nScanFrames;
    outcome.framesAnnounced = data.viInput.frame_num;
    outcome.framesSource =
        data.viSource.frame_num > 0 ? data.viSource.frame_num : data.viInput.frame_num;
    outcome.converted = !data.input_mp4_file.empty();
    tab.SetOnMessage({});
    return outcome;
}

void PrepareProject(core::CTarnwickData &data, const ScanArgs &args)
{
    data.ResetProject(false);
    SetParam(data.threshold, args.threshold);
    SetParam(data.valid_min_unit, args.validMin);
    SetParam(data.cut_min_unit, args.cutMin);
    std::error_code ec;
    if (!args.outputFolder.empty()) {
        std::string folder = std::filesystem::absolute(args.outputFolder, ec).string();
        data.output_folder = core::SetTrailingSeparator(folder, true);
    }
    data.output_name = args.outputName;
    data.capTitle.caption = args.title;
    data.transition = args.transition ? 1 : 0;
    if (args.preset) {
        data.nEncodePreset = static_cast<int>(*args.preset);
    }
    // What is still empty gets its name from the video.
    core::DeriveProjectNames(data, std::filesystem::absolute(args.video, ec).string());
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
    if (!outcome.failure.empty() && !outcome.scanned) {
        err << head << "the probe could not run: " << outcome.failure << "\n";
        return kExitFailed;
    }
    if (!outcome.scanned && outcome.result == -1) {
        err << head << "has no video stream\n";
        return kExitBadInput;
    }
    if (!outcome.scanned) {
        std::string reason = ProbeErrors(session.Engine(), video);
        err << head << "is not a video file" << (reason.empty() ? "" : " (" + reason + ")") << "\n";
        return kExitBadInput;
    }
    if (outcome.result == -1 && outcome.failure == "ExitCode(-1)") {
        const core::VideoInfo &info = session.data.viInput;
        err << head << "the picture is too small to scan (" << info.width << "x" << info.height
            << ")\n";
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
    return !outcome.stopped && outcome.result == engine::kJobOk &&
           outcome.framesScanned < outcome.framesSource - ConversionTolerance(outcome);
}

void PrintJson(const std::string &video,
               const core::CTarnwickData &data,
               bool defaultScene,
               std::ostream &out)
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
        root["scenes"].push_back(item);
    }
    out << root.dump(4) << "\n";
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
    if (outcome.stopped || outcome.result != engine::kJobOk) {
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
    bool usage = false;
    std::string error = ParseScanArgs(args, kind, parsed, usage);
    if (usage) {
        io.err << (kind == ScanKind::Scan      ? kScanUsage
                   : kind == ScanKind::Extract ? kExtractUsage
                   : kind == ScanKind::Run     ? kRunUsage
                                               : kAnalyzeUsage);
        return kExitBadInput;
    }
    if (error.empty() && parsed.preset &&
        (*parsed.preset != 0 && *parsed.preset != 1 && *parsed.preset != 2)) {
        error = "--preset: 0 (best picture), 1 or 2 (smallest file) is wanted";
    }
    if (!error.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << error << "\n";
        return kExitBadInput;
    }
    std::string problem =
        CheckInputFile(parsed.video, "is a folder, not a video file", "is not readable");
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << PrintablePath(parsed.video) << ": "
               << problem << "\n";
        return kExitBadInput;
    }
    problem = CheckOutputOptions(parsed.outputFolder, parsed.outputName);
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << problem << "\n";
        return kExitBadInput;
    }
    return -1;
}

} // namespace cli
