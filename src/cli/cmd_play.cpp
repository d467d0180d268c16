// tarnwickmp4-cli play: plays a video in ffplay (job 1027) with a live position line; Ctrl-C
// stops the player and prints the position reached, which --from takes up again.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "cli/arg_problems.h"
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "cli/scan_session.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"

namespace cli {
namespace {

constexpr const char *kNotReadable = "is not a readable file";

struct PlayArgs
{
    std::string video;
    std::string from; // seconds as text, handed to the player unchanged; empty: the start
    int volume = -1;  // 0 to 100; -1: the project's default
};

// Returns what is wrong with the arguments, or an empty text.
std::string ParsePlayArgs(const std::vector<std::string> &args, PlayArgs &parsed)
{
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--from" || arg == "--volume") {
            if (i + 1 >= args.size()) {
                return NeedsValue(arg);
            }
            const std::string &value = args[++i];
            if (arg == "--from") {
                if (!IsSecondsText(value)) {
                    return NotSeconds(arg, value);
                }
                parsed.from = value;
            } else if (!ParseWholeNumber(value, 0, 100, parsed.volume)) {
                return NotWholeNumber(arg, value, 0, 100);
            }
        } else if (parsed.video.empty() && !arg.empty() && arg[0] != '-') {
            parsed.video = arg;
        } else {
            return UnexpectedArgument(arg);
        }
    }
    return parsed.video.empty() ? MissingArgument("VIDEO") : "";
}

// The position line on standard error: the tab's position readout, drawn in place on a
// terminal, otherwise a line whenever the whole second changes, and the last one at the end.
class PositionLine
{
public:
    explicit PositionLine(std::ostream &err)
        : m_err(err)
        , m_terminal(isatty(STDERR_FILENO) != 0)
    {
    }

    void Show(const std::string &readout)
    {
        m_last = "Position " + readout;
        if (m_terminal) {
            m_err << "\r" << m_last << "   " << std::flush;
            m_drawn = true;
            return;
        }
        // The readout begins with the time of the position, to the hundredth.
        const std::string second = readout.substr(0, readout.find('.'));
        if (second != m_second) {
            m_second = second;
            Print();
        }
    }

    void Finish()
    {
        if (m_drawn) {
            m_err << "\n";
            m_drawn = false;
        } else if (!m_last.empty() && m_last != m_printed) {
            Print();
        }
    }

private:
    void Print()
    {
        m_err << m_last << "\n";
        m_printed = m_last;
    }

    std::ostream &m_err;
    const bool m_terminal;
    bool m_drawn = false;
    std::string m_second;
    std::string m_last;
    std::string m_printed;
};

// Opens video on the scene tab (its working files in folder) and presses its play button.
int Play(ScanSession &session,
         const std::string &video,
         const std::string &folder,
         const PlayArgs &args,
         CliOutput &io)
{
    const std::string head = "tarnwickmp4-cli play: ";
    workspace::CTarnwickTabScene &tab = session.Tab();
    tab.PresetOutputNames(folder, session.data.output_name);
    AnalysisOutcome analysis = session.OpenVideo(video);
    if (analysis.stopped) {
        io.err << head << video << ": stopped\n";
        return kExitStopped;
    }
    if (analysis.result != 0) {
        io.err << head << video << ": is not a video that ffprobe can read\n";
        return kExitBadInput;
    }
    if (args.volume >= 0) {
        tab.SetVolume(args.volume);
    }
    io.err << head << video << " from " << tab.PlayStart(args.from) << " seconds\n";
    PositionLine line(io.err);
    session.View().FollowPosition([&line](const std::string &text) { line.Show(text); });
    const JobOutcome outcome = session.RunJob([&] { tab.PlayInput(args.from); });
    session.View().FollowPosition({});
    line.Finish();
    if (!outcome.stopped && outcome.result != 0) {
        io.err << head << video << ": the player failed: "
               << (outcome.failure.empty() ? core::StrPrintf("ExitCode(%d)", outcome.result)
                                           : outcome.failure)
               << "\n";
        return kExitFailed;
    }
    // One form, whether the player reported its position, reached the end or was stopped before
    // its first picture.
    io.out << core::StrPrintf("%.6f", std::strtod(tab.PlayPosition().c_str(), nullptr)) << "\n";
    return outcome.stopped ? kExitStopped : kExitOk;
}

} // namespace

int RunPlay(const std::vector<std::string> &args, CliOutput &io)
{
    PlayArgs parsed;
    const std::string error = ParsePlayArgs(args, parsed);
    if (!error.empty()) {
        return ArgumentProblem(io, "play", error);
    }
    const std::string head = "tarnwickmp4-cli play: ";
    std::string problem = CheckInputFile(parsed.video, kNotReadable, kNotReadable);
    if (!problem.empty()) {
        io.err << head << PrintablePath(parsed.video) << ": " << problem << "\n";
        return kExitBadInput;
    }
    const char *display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        io.err << head << "no X display to play on: DISPLAY is not set\n";
        return kExitFailed;
    }
    const std::string video = std::filesystem::absolute(parsed.video).string();
    const std::string folder = MakeTemporaryFolder("tarnwickmp4-play");
    if (folder.empty()) {
        io.err << head << "no temporary folder for the working files\n";
        return kExitFailed;
    }
    int status = kExitOk;
    {
        // The session ends before its folder goes: its threads write there.
        ScanSession session;
        status = Play(session, video, folder, parsed, io);
    }
    core::DeleteTree(core::SetTrailingSeparator(folder, false));
    return status;
}

} // namespace cli
