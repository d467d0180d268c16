// tarnwickmp4-cli analyze: the analysis of a newly opened video (job 1101): whether the file is
// used as it is or which working MP4 was made, the frame times, the default cross-fade and the
// working input's stream facts.
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/helpers.h"

namespace cli {
namespace {

const char *PtsSourceName(workspace::TimesOrigin source)
{
    switch (source) {
    case workspace::TimesOrigin::Kept:
        return "kept";
    case workspace::TimesOrigin::Computed:
        return "computed";
    case workspace::TimesOrigin::Read:
        return "read";
    default:
        return "none";
    }
}

const char *PtsSourceText(workspace::TimesOrigin source)
{
    switch (source) {
    case workspace::TimesOrigin::Kept:
        return "kept as they were";
    case workspace::TimesOrigin::Computed:
        return "computed from the constant frame rate";
    case workspace::TimesOrigin::Read:
        return "read frame by frame (the frame rate is not constant)";
    default:
        return "not made";
    }
}

nlohmann::ordered_json StreamJson(const core::VideoInfo &info)
{
    nlohmann::ordered_json stream;
    stream["width"] = info.width;
    stream["height"] = info.height;
    stream["r_frame_rate"] = info.r_frame_rate;
    stream["fps"] = info.fps;
    stream["frames"] = info.frame_num;
    stream["field_order"] = info.field_order;
    stream["rotation"] = info.rotation;
    stream["audio"] = info.bHasAudio;
    return stream;
}

void PrintAnalysisJson(const std::string &video,
                       const AnalysisOutcome &analysis,
                       ScanSession &session,
                       std::ostream &out)
{
    const core::CTarnwickData &data = session.data;
    nlohmann::ordered_json root;
    root["file"] = video;
    root["used_as_is"] = data.input_mp4_file.empty();
    root["working_file"] = data.input_mp4_file.empty()
                               ? nlohmann::ordered_json()
                               : nlohmann::ordered_json(data.input_mp4_file);
    root["working_file_made"] = analysis.workingMade;
    root["pts_file"] = data.pts_file;
    root["pts_source"] = PtsSourceName(session.Tab().LastAnalysis().times);
    root["transition_seconds"] = data.dTransitionSec;
    root["source"] = StreamJson(data.viSource);
    root["input"] = StreamJson(data.viInput);
    out << root.dump(4) << "\n";
}

void PrintAnalysisText(const std::string &video,
                       const AnalysisOutcome &analysis,
                       ScanSession &session,
                       std::ostream &out)
{
    const core::CTarnwickData &data = session.data;
    const core::VideoInfo &in = data.viInput;
    out << "File: " << video << "\n";
    if (data.input_mp4_file.empty()) {
        out << "Input: used as it is (a progressive MP4)\n";
    } else {
        out << "Working MP4: " << data.input_mp4_file
            << (analysis.workingMade ? " (made now)" : " (already there)") << "\n";
    }
    out << "Frame times: " << data.pts_file << " ("
        << PtsSourceText(session.Tab().LastAnalysis().times) << ")\n"
        << "Cross-fade: " << core::StrPrintf("%.2f", data.dTransitionSec) << " s\n"
        << "Stream: " << in.width << "x" << in.height << ", " << in.r_frame_rate << " ("
        << core::StrPrintf("%.3f", in.fps) << " fps), " << in.frame_num << " frames, "
        << (in.field_order.empty() ? "unknown field order" : in.field_order) << ", "
        << (in.bHasAudio ? "with sound" : "without sound") << "\n";
}

} // namespace

int RunAnalyze(const std::vector<std::string> &args, CliOutput &io)
{
    ScanArgs parsed;
    int status = ParseAndCheck(args, ScanKind::Analyze, parsed, io);
    if (status >= 0) {
        return status;
    }
    ScanSession session;
    ApplyNames(session.Tab(), parsed.options);
    session.PlanNames(parsed.video);
    if (parsed.options.preset) {
        session.Tab().SetEncodePreset(*parsed.options.preset);
    }
    if (parsed.options.cuda) {
        session.Tab().SetUseCuda(true);
    }
    if (!session.Lock("tarnwickmp4-cli analyze: ", "analyze " + parsed.video, io.err)) {
        return kExitFailed;
    }
    AnalysisOutcome analysis = session.OpenVideo(parsed.video);
    status = ReportAnalysisFailure("analyze", parsed.video, analysis, session, io.err);
    if (status >= 0) {
        return status;
    }
    if (parsed.json) {
        PrintAnalysisJson(parsed.video, analysis, session, io.out);
    } else {
        PrintAnalysisText(parsed.video, analysis, session, io.out);
    }
    return kExitOk;
}

} // namespace cli
