// tarnwickmp4-cli probe: the stream facts of a file as JSON, or ffprobe's own JSON by kind.
#include "cli/commands.h"

#include <ostream>

#include <nlohmann/json.hpp>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/scan_session.h"
#include "core/tarnwick_data.h"

namespace cli {
namespace {

// What the probe says of a folder and of a file it may not read alike.
constexpr const char *kNotReadable = "is not a readable file";

struct ProbeArgs
{
    std::string file;
    int kind = 0; // 0: the stream facts; 1 to 5: ffprobe's text
};

// Returns what is wrong with the arguments, or an empty text.
std::string ParseProbeArgs(const std::vector<std::string> &args, ProbeArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--kind") {
            if (parsed.kind != 0) {
                return "--kind is given twice";
            }
            if (i + 1 >= args.size()) {
                return NeedsValue(arg);
            }
            if (!ParseWholeNumber(args[i + 1], 1, 5, parsed.kind)) {
                return NotWholeNumber(arg, args[i + 1], 1, 5);
            }
            ++i;
        } else if (parsed.file.empty() && !arg.empty() && !(arg.size() > 1 && arg[0] == '-')) {
            parsed.file = arg;
        } else {
            return UnexpectedArgument(arg);
        }
    }
    return parsed.file.empty() ? MissingArgument("FILE") : "";
}

std::string FactsJson(const core::VideoInfo &info)
{
    nlohmann::ordered_json j;
    j["r_frame_rate"] = info.r_frame_rate;
    j["fps"] = info.fps;
    j["frame_num"] = info.frame_num;
    j["width"] = info.width;
    j["height"] = info.height;
    j["rotation"] = info.rotation;
    j["start_frame"] = info.start_frame;
    j["field_order"] = info.field_order;
    j["sar_num"] = info.sar_num;
    j["sar_den"] = info.sar_den;
    j["has_audio"] = info.bHasAudio;
    return j.dump(4);
}

} // namespace

int RunProbe(const std::vector<std::string> &args, CliOutput &io)
{
    ProbeArgs parsed;
    const std::string error = ParseProbeArgs(args, parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, "probe", error);
    }
    const std::string &file = parsed.file;
    std::string problem = UnusablePath(file);
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli probe: " << PrintablePath(file) << ": " << problem << "\n";
        return kExitBadInput;
    }
    problem = CheckInputFile(file, kNotReadable, kNotReadable);
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli probe: " << file << ": " << problem << "\n";
        return kExitFailed;
    }
    // The probe runs as a job of the scene tab, so that Ctrl-C reaches the tool.
    ScanSession session;
    workspace::CTarnwickTabScene &tab = session.Tab();
    const int kind = parsed.kind;
    const JobOutcome outcome = session.RunJob([&] { tab.StartProbe(file, kind); });
    if (outcome.stopped) {
        io.err << "tarnwickmp4-cli probe: " << file << ": stopped\n";
        return kExitStopped;
    }
    const workspace::ProbeReport &probe = tab.LastProbe();
    const int result = outcome.result;
    if (result == 0) {
        io.out << (kind != 0 ? probe.text : FactsJson(probe.info) + "\n");
        return kExitOk;
    }
    if (result == -1 && kind == 0) {
        io.err << "tarnwickmp4-cli probe: " << file << ": has no video stream\n";
        return kExitFailed;
    }
    std::string reason = outcome.failure;
    if (reason.empty()) {
        reason = FfprobeErrorLines(tab.ProbeText(file));
    }
    io.err << "tarnwickmp4-cli probe: " << file << ": probe failed"
           << (reason.empty() ? "" : ": " + reason) << "\n";
    return kExitFailed;
}

} // namespace cli
