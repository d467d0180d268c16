// tarnwickmp4-cli scan and extract: the scene scan (job 1053) of a video on a headless scene
// tab, printed as a table or as JSON, and the extraction of its segments into a new project.
#include "cli/commands.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <optional>
#include <ostream>

#include <nlohmann/json.hpp>

#include "cli/cli_support.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"
#include "workspace/scene_defaults.h"

namespace cli {
namespace {

constexpr const char *kScanUsage =
    "Usage: tarnwickmp4-cli scan VIDEO [--threshold N] [--valid-min S] [--cut-min S] [--json]\n";
constexpr const char *kExtractUsage =
    "Usage: tarnwickmp4-cli extract VIDEO [--threshold N] [--valid-min S] [--cut-min S] "
    "[--output-folder DIR]\n";

struct ScanArgs
{
    std::string video;
    std::optional<double> threshold; // changed pixels per full-HD frame, 0 to 1000
    std::optional<double> validMin;  // seconds of activity a scene needs, 1 to 10
    std::optional<double> cutMin;    // seconds of stillness that end a scene, 1 to 10
    bool json = false;               // scan only
    std::string outputFolder;        // extract only; empty: VIDEO + "_out/"
};

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

// The arguments of scan (extract false) or extract. Returns an error line for a bad value, or
// an empty text with usage set when the usage should be shown.
std::string
ParseScanArgs(const std::vector<std::string> &args, bool extract, ScanArgs &parsed, bool &usage)
{
    usage = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        std::optional<double> *number = arg == "--threshold"   ? &parsed.threshold
                                        : arg == "--valid-min" ? &parsed.validMin
                                        : arg == "--cut-min"   ? &parsed.cutMin
                                                               : nullptr;
        if (number != nullptr || (extract && arg == "--output-folder")) {
            if (i + 1 >= args.size()) {
                usage = true;
                return "";
            }
            const std::string &text = args[++i];
            double value = 0;
            if (number == nullptr) {
                if (text.empty()) {
                    usage = true;
                    return "";
                }
                parsed.outputFolder = text;
            } else if (ParseNumber(text, value)) {
                *number = value;
            } else {
                return arg + ": \"" + text + "\" is not a number";
            }
        } else if (!extract && arg == "--json") {
            parsed.json = true;
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

// How a run of job 1053 ended.
struct JobOutcome
{
    int result = 0;       // the job result
    bool stopped = false; // Ctrl-C or a termination request
    bool scanned = false; // the probe succeeded and the scan's tool was started
    std::string failure;  // text of the first "Failed" state, such as a start failure
    bool defaultScene = false;
};

// One scene tab of a headless host with its engine and project.
class ScanSession
{
public:
    ScanSession()
    {
        m_engine.pData = &data;
        m_engine.pHostDlg = &m_host;
        m_engine.bMergeMode = 0;
        m_host.Tab(0).SetDefaultSceneRoutine([this] { workspace::MakeDefaultScene(data); });
    }

    engine::CTarnwickProcess &Engine() { return m_engine; }

    // Runs job 1053 until it ends or a signal stops it, and waits for what follows the scan.
    JobOutcome RunSceneExtract(bool bCutScenes)
    {
        JobOutcome outcome;
        engine::HeadlessTab &tab = m_host.Tab(0);
        int stages = 0;
        tab.SetOnMessage([&](const engine::JobMessage &msg) {
            if (msg.id == engine::AppMessage::WM_APP_STAGE_BEGIN) {
                ++stages;
            } else if (msg.id == engine::AppMessage::WM_APP_JOB_STATE &&
                       msg.wParam == core::kStateFailed && msg.text && outcome.failure.empty()) {
                outcome.failure = *msg.text; // the first says why; the job's own follows
            }
            tab.ClearMessages(); // one message a frame: keep nothing
        });
        m_engine.bCutScenes = bCutScenes;
        outcome.stopped = !RunJobUntilSignal(m_engine, m_host, engine::kJobSceneExtract);
        m_engine.JoinAfterScanThread();
        outcome.result = m_engine.nProcessExitCode;
        outcome.scanned = stages >= 2;
        outcome.defaultScene = tab.DefaultSceneCalls() > 0;
        tab.SetOnMessage({});
        return outcome;
    }

    core::CTarnwickData data;

private:
    engine::HeadlessHost m_host; // before the engine: it outlives the engine
    engine::CTarnwickProcess m_engine;
};

// A new project for video as opening it makes one, with the options of the command line.
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
    core::DeriveProjectNames(data, std::filesystem::absolute(args.video, ec).string());
}

// Reports an outcome that is not a success on err; returns its exit status, or -1 when the
// scan succeeded.
int ReportFailure(const char *command,
                  const std::string &video,
                  const JobOutcome &outcome,
                  ScanSession &session,
                  std::ostream &err)
{
    std::string head = std::string("tarnwickmp4-cli ") + command + ": " + video + ": ";
    if (outcome.stopped) {
        err << head << "stopped\n";
        return kExitStopped;
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

// Seconds of a frame number at fps; 0 when fps is not above 0.
double FrameSeconds(int frame, double fps)
{
    return fps > 0 ? frame / fps : 0.0;
}

void PrintJson(const std::string &video, const core::CTarnwickData &data, std::ostream &out)
{
    const double fps = data.viInput.fps;
    nlohmann::ordered_json root;
    root["file"] = video;
    root["fps"] = fps;
    root["frames"] = data.viInput.frame_num;
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

// One row per scene: number, frames, time codes and length; with files, the segment file.
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

// Says when the list is what the scan leaves without a result.
void PrintDefaultNote(const JobOutcome &outcome, const core::CTarnwickData &data, std::ostream &out)
{
    if (!outcome.defaultScene) {
        return;
    }
    out << (data.diff_list.empty() ? "No motion found, and the video has no frames for a default "
                                     "scene.\n"
                                   : "No motion found: the scene above is the default scene.\n");
}

// Parses the arguments of scan or extract and checks VIDEO; returns an exit status, or -1 when
// the command can go on.
int ParseAndCheck(const std::vector<std::string> &args,
                  bool extract,
                  ScanArgs &parsed,
                  CliOutput &io)
{
    const char *command = extract ? "extract" : "scan";
    bool usage = false;
    std::string error = ParseScanArgs(args, extract, parsed, usage);
    if (usage) {
        io.err << (extract ? kExtractUsage : kScanUsage);
        return kExitBadInput;
    }
    if (!error.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << error << "\n";
        return kExitBadInput;
    }
    std::string problem =
        CheckInputFile(parsed.video, "is a folder, not a video file", "is not readable");
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli " << command << ": " << parsed.video << ": " << problem << "\n";
        return kExitBadInput;
    }
    return -1;
}

} // namespace

int RunScan(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, false, parsed, io);
    if (status >= 0) {
        return status;
    }
    ScanSession session;
    PrepareProject(session.data, parsed);
    JobOutcome outcome = session.RunSceneExtract(false);
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

int RunExtract(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, true, parsed, io);
    if (status >= 0) {
        return status;
    }
    ScanSession session;
    core::CTarnwickData &data = session.data;
    PrepareProject(data, parsed);
    core::DeleteByPattern(core::SegmentPattern(data)); // the segments of an earlier extraction
    JobOutcome outcome = session.RunSceneExtract(true);
    status = ReportFailure("extract", parsed.video, outcome, session, io.err);
    if (!outcome.scanned) {
        return status;
    }
    // As the tab does after every scan: what was found, also before a stop, is kept.
    PrintSummary(parsed.video, data, io.out);
    PrintTable(data, true, io.out);
    PrintDefaultNote(outcome, data, io.out);
    std::string error;
    if (!data.SaveProjectFile(data.project_file, &error)) {
        io.err << "tarnwickmp4-cli extract: " << error << "\n";
        return status >= 0 ? status : kExitFailed;
    }
    io.out << "Project: " << data.project_file << "\n";
    return status >= 0 ? status : kExitOk;
}

} // namespace cli
