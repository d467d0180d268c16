// tarnwickmp4-cli play: plays a video in ffplay (job 1027) with a live position line; Ctrl-C
// stops the player and prints the position reached, which --from takes up again.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include <unistd.h>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"
#include "render/preview_commands.h"

namespace cli {
namespace {

constexpr const char *kPlayUsage =
    "Usage: tarnwickmp4-cli play VIDEO [--from SECONDS] [--volume N]   (N from 0 to 100)\n";
constexpr const char *kNotReadable = "is not a readable file";

struct PlayArgs
{
    std::string video;
    std::string from; // seconds as text, handed to the player unchanged; empty: the start
    int volume = -1;  // 0 to 100; -1: the project's default
};

std::optional<PlayArgs> ParsePlayArgs(const std::vector<std::string> &args)
{
    static const std::regex seconds("[0-9]{1,9}(\\.[0-9]{1,9})?");
    static const std::regex volume("[0-9]{1,3}");
    PlayArgs parsed;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        const bool hasValue = i + 1 < args.size();
        if (arg == "--from" && hasValue && std::regex_match(args[i + 1], seconds)) {
            parsed.from = args[++i];
        } else if (arg == "--volume" && hasValue && std::regex_match(args[i + 1], volume) &&
                   std::stoi(args[i + 1]) <= 100) {
            parsed.volume = std::stoi(args[++i]);
        } else if (parsed.video.empty() && !arg.empty() && arg[0] != '-') {
            parsed.video = arg;
        } else {
            return std::nullopt;
        }
    }
    if (parsed.video.empty()) {
        return std::nullopt;
    }
    return parsed;
}

// The position line on standard error: drawn in place on a terminal, otherwise one line for
// every new second.
class PositionLine
{
public:
    PositionLine(std::ostream &err, const core::CTarnwickData &data)
        : m_err(err)
        , m_data(data)
        , m_terminal(isatty(STDERR_FILENO) != 0)
    {
    }

    void Show(int frame, int total)
    {
        const int last = std::max(0, total - 1);
        const std::string text = "Position " + m_data.FrameToTimeCode(std::min(frame, total)) +
                                 "/" + m_data.FrameToTimeCode(total) +
                                 core::StrPrintf(" Frm:%d/%d", std::min(frame, last), last);
        if (m_terminal) {
            m_err << "\r" << text << "   " << std::flush;
            m_drawn = true;
            return;
        }
        const double fps = m_data.viCurrent.fps;
        const int second = fps > 0 ? static_cast<int>(frame / fps) : 0;
        if (second != m_second || frame >= last) {
            m_second = second;
            m_err << text << "\n";
        }
    }

    void Finish()
    {
        if (m_drawn) {
            m_err << "\n";
            m_drawn = false;
        }
    }

private:
    std::ostream &m_err;
    const core::CTarnwickData &m_data;
    const bool m_terminal;
    bool m_drawn = false;
    int m_second = -1;
};

} // namespace

int RunPlay(const std::vector<std::string> &args, CliOutput &io)
{
    std::optional<PlayArgs> parsed = ParsePlayArgs(args);
    if (!parsed) {
        io.err << kPlayUsage;
        return kExitBadInput;
    }
    const std::string head = "tarnwickmp4-cli play: ";
    std::string problem = CheckInputFile(parsed->video, kNotReadable, kNotReadable);
    if (!problem.empty()) {
        io.err << head << PrintablePath(parsed->video) << ": " << problem << "\n";
        return kExitBadInput;
    }
    const char *display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        io.err << head << "no X display to play on: DISPLAY is not set\n";
        return kExitFailed;
    }
    core::CTarnwickData data;
    data.input_file = std::filesystem::absolute(parsed->video).string();
    if (parsed->volume >= 0) {
        data.play_vol = parsed->volume;
    }
    engine::HeadlessHost host; // before the engine: it outlives the engine
    engine::CTarnwickProcess engine;
    engine.pData = &data;
    engine.pHostDlg = &host;
    if (engine.OpenVideoFile(data.input_file) != engine::kJobOk) {
        io.err << head << data.input_file << ": is not a video that ffprobe can read\n";
        return kExitBadInput;
    }
    if (!parsed->from.empty()) {
        // A repeat of the same playback job resumes at the stored position.
        engine.nPlayJob = engine::kJobPlayInput;
        engine.nPreviewFrame =
            static_cast<int>(std::lround(std::stod(parsed->from) * data.viCurrent.fps));
        engine.strPreviewTime = parsed->from;
    }
    const bool bRestart = render::IsPlaybackRestart(
        engine.strPreviewTime.get(), engine.nPreviewFrame, data.viCurrent.frame_num);
    io.err << head << data.input_file << " from "
           << (bRestart ? std::string("0.000000") : parsed->from) << " seconds\n";
    PositionLine line(io.err, data);
    std::string failure;
    host.Tab(0).SetOnMessage([&](const engine::JobMessage &msg) {
        if (msg.id == engine::AppMessage::WM_APP_POSITION) {
            line.Show(static_cast<int>(msg.wParam), static_cast<int>(msg.lParam));
        } else if (msg.id == engine::AppMessage::WM_APP_JOB_STATE &&
                   msg.wParam == core::kStateFailed && msg.text && failure.empty()) {
            failure = *msg.text;
        }
    });
    const bool finished = RunJobUntilSignal(engine, host, engine::kJobPlayInput);
    line.Finish();
    const int result = engine.nProcessExitCode;
    if (finished && result != engine::kJobOk) {
        io.err << head << data.input_file << ": the player failed: "
               << (failure.empty() ? core::StrPrintf("ExitCode(%d)", result) : failure) << "\n";
        return kExitFailed;
    }
    io.out << engine.strPreviewTime.get() << "\n";
    return finished ? kExitOk : kExitStopped;
}

} // namespace cli
