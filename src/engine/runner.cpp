// The child-process runner: starting a tool, reading its output, progress and playback
// position from its status text, the stop, and the report of its exit code.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <optional>
#include <string>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/path_check.h"
#include "engine/status_parser.h"
#include "engine/tool_words.h"

namespace engine {
namespace {

// Chunks are read 4095 bytes at a time into a buffer of 4096 and closed with a zero.
constexpr long kChunkRead = 4095;
constexpr long kChunkBuffer = 4096;
// The collected text of ExecuteCmd without a caller's string stays bounded.
constexpr size_t kTextLimit = 8192;
constexpr size_t kTextKeep = 4096;

// The player's window must be an X11 window, so that the tab can find and embed it.
std::vector<std::string> ToolEnvironment(const std::string &command)
{
    std::vector<std::string> args = SplitCommandText(command);
    if (!args.empty() && args[0] == "ffplay") {
        return {"SDL_VIDEODRIVER=x11"};
    }
    return {};
}

// Reads child's output until its pipe ends and hands each chunk to onText as text. Once a stop
// is asked for (bCancel), the child is killed and what it still wrote is read on to the end.
void ReadUntilPipeEnds(ChildProcess &child,
                       const std::atomic<int> &bCancel,
                       const std::function<void(const std::string &)> &onText)
{
    char chunk[kChunkBuffer];
    for (;;) {
        long n = child.Read(chunk, kChunkRead);
        if (n <= 0) {
            break;
        }
        chunk[n] = '\0';
        onText(ChunkText(chunk, n));
        if (bCancel != 0) {
            child.Kill(kJobStopped);
        }
    }
}

} // namespace

int CTarnwickProcess::StartChildProcess(const std::string &command, ChildProcess &child)
{
    child.SetExtraEnvironment(ToolEnvironment(command));
    // A stop reaches the tool even while it writes nothing.
    child.SetStopFlag(&bCancel, kJobStopped);
    if (child.Start(command) == 0) {
        return 0;
    }
    unsigned long error = static_cast<unsigned long>(errno);
    SendJobState(engine::kStateFailed,
                 core::StrPrintf("CreateProcess failed with error %lu", error));
    return kJobCannotStart;
}

bool CTarnwickProcess::CommandCarriesPaths(const char *function,
                                           int position,
                                           const std::string &command,
                                           const std::vector<std::string> &paths)
{
    std::optional<std::string> bad = PathNotCarried(command, paths);
    if (!bad) {
        return true;
    }
    std::string problem = core::PathProblem(*bad);
    if (problem.empty()) {
        problem = "does not stay one argument of the command";
    }
    LogCommandResult(function, position, command, kJobCannotStart);
    SendJobState(engine::kStateFailed,
                 core::StrPrintf("The path cannot be passed to the tool: %s %s",
                                 bad->c_str(),
                                 problem.c_str()));
    return false;
}

int CTarnwickProcess::ExecuteCmd(const std::string &command, std::string *pOutput)
{
    SetLastToolWords("");
    ChildProcess child;
    int result = StartChildProcess(command, child);
    if (result != 0) {
        LogCommandResult("CTarnwickProcess::ExecuteCmd", __LINE__, command, result);
        return result;
    }
    std::string local;
    std::string &text = pOutput != nullptr ? *pOutput : local;
    ReadUntilPipeEnds(child, bCancel, [&](const std::string &chunkText) {
        text += chunkText;
        if (pOutput == nullptr && local.size() > kTextLimit) {
            local.erase(0, local.size() - kTextKeep);
        }
    });
    int exitCode = child.Wait();
    SetLastToolWords(exitCode != kJobOk && exitCode != kJobStopped ? ToolWords(text) : "");
    LogCommandResult("CTarnwickProcess::ExecuteCmd", __LINE__, command, exitCode);
    return exitCode;
}

int CTarnwickProcess::ExecuteCmdWithProgress(bool bPlayback,
                                             const std::string &command,
                                             int nTotal,
                                             int nBase,
                                             const std::string & /*unused*/)
{
    const char *function = "CTarnwickProcess::ExecuteCmdWithProgress";
    SetLastToolWords("");
    if (nTotal < 1) {
        SendJobState(engine::kStateFailed, core::StrPrintf("TotalFrame(%d)", nTotal));
        core::Log("%s(%d) [NG:%d] %s\n", function, __LINE__, kJobCannotStart, command.c_str());
        return kJobCannotStart;
    }
    ChildProcess child;
    int result = StartChildProcess(command, child);
    if (result != 0) {
        LogCommandResult(function, __LINE__, command, result);
        return result;
    }
    hProcess = child.Pid();
    if (bPlayback) {
        PostToTab(AppMessage::WM_APP_PLAYER_READY, 0, 0);
    }
    double fps = pData != nullptr ? pData->viCurrent.fps : 0.0;
    int startFrame = pData != nullptr ? pData->viCurrent.start_frame : 0;
    StatusParser parser(bPlayback, fps, startFrame);
    std::string tail; // the tool's last words, for the reason of a failure
    ReadUntilPipeEnds(child, bCancel, [&](const std::string &chunkText) {
        for (const StatusMatch &match : parser.Feed(chunkText)) {
            ReportStatus(bPlayback, match, nTotal, nBase, fps);
        }
        tail += chunkText;
        if (tail.size() > kTextLimit) {
            tail.erase(0, tail.size() - kTextKeep);
        }
    });
    int exitCode = child.Wait();
    SetLastToolWords(exitCode != kJobOk && exitCode != kJobStopped ? ToolWords(tail) : "");
    hProcess = 0;
    ReportStepEnd(bPlayback, exitCode);
    LogCommandResult(function, __LINE__, command, exitCode);
    return exitCode;
}

void CTarnwickProcess::ReportStatus(
    bool bPlayback, const StatusMatch &match, int nTotal, int nBase, double fps)
{
    if (!bPlayback) {
        PostToTab(AppMessage::WM_APP_PROGRESS, nTotal, match.frame + nBase);
        return;
    }
    PlaybackPosition pos =
        PlaybackPositionOf(match.frame, match.capture, nTotal, fps, nPlayFromFrame, strPlayFrom);
    nPreviewFrame = pos.nPreviewFrame;
    strPreviewTime = pos.strPreviewTime;
    EngineTab *tab = CurrentTab();
    if (tab != nullptr && !tab->IsPositionDrag()) {
        PostToTab(AppMessage::WM_APP_POSITION, std::max(match.frame, nPlayFromFrame), nTotal);
    }
}

void CTarnwickProcess::ReportStepEnd(bool bPlayback, int exitCode)
{
    if (bPlayback) {
        PostToTab(AppMessage::WM_APP_PREVIEW_REPAINT, 1, 0);
    }
    // A normal end of playback also reads "Stopped": the player stopped, nothing went wrong.
    if (exitCode == kJobStopped || (exitCode == kJobOk && bPlayback)) {
        SendJobState(engine::kStateStopped);
    } else if (exitCode != kJobOk) {
        SendJobState(engine::kStateFailed, core::StrPrintf("ExitCode(%d)", exitCode));
    }
}

} // namespace engine
