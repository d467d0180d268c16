// tarnwickmp4-cli autopicture: the picture values that the automatic picture analysis proposes
// for a video, one "name value" line each.
#include "cli/commands.h"

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <vector>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/scan_session.h"
#include "core/language.h"
#include "core/path_check.h"
#include "core/paths.h"

namespace cli {
namespace {

// Opens video on the scene tab with its working files in folder and runs the tab's automatic
// picture; the exit status, or -1 when the four values stand in the tab's project.
int Measure(ScanSession &session,
            const std::string &video,
            const std::string &folder,
            std::ostream &err)
{
    session.Tab().PresetOutputNames(folder, session.data.output_name);
    AnalysisOutcome analysis = session.OpenVideo(video);
    int status = ReportAnalysisFailure("autopicture", video, analysis, session, err);
    if (status >= 0) {
        return status;
    }
    return session.MeasurePicture("autopicture", video, err);
}

} // namespace

int RunAutoPicture(const std::vector<std::string> &args, CliOutput &io)
{
    if (args.empty()) {
        return ArgumentProblem(io, "autopicture", MissingArgument("VIDEO"));
    }
    for (size_t i = 0; i < args.size(); ++i) {
        if (i > 0 || (args[i].size() > 1 && args[i][0] == '-')) {
            return ArgumentProblem(io, "autopicture", UnexpectedArgument(args[i]));
        }
    }
    const std::string &video = args[0];
    std::string problem = core::PathProblem(video);
    if (problem.empty()) {
        problem = CheckInputFile(video, "is a folder, not a video file", "is not readable");
    }
    if (!problem.empty()) {
        io.err << "tarnwickmp4-cli autopicture: " << video << ": " << problem << "\n";
        return kExitBadInput;
    }
    std::string folder = MakeTemporaryFolder("tarnwickmp4-picture");
    if (folder.empty()) {
        io.err << "tarnwickmp4-cli autopicture: no temporary folder for the frames\n";
        return kExitFailed;
    }
    int status = -1;
    std::string brightness, contrast, saturation, gamma;
    {
        // The session ends before its folder goes: its threads write there.
        ScanSession session;
        status = Measure(session, video, folder, io.err);
        const core::CTarnwickData &data = session.data;
        brightness = data.brightness.strText;
        contrast = data.contrast.strText;
        saturation = data.saturation.strText;
        gamma = data.gamma.strText;
    }
    core::DeleteTree(core::SetTrailingSeparator(folder, false));
    if (status >= 0) {
        return status;
    }
    io.out << "brightness " << brightness << "\n"
           << "contrast " << contrast << "\n"
           << "saturation " << saturation << "\n"
           << "gamma " << gamma << "\n";
    return kExitOk;
}

} // namespace cli
