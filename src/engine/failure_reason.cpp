// The reason of a job's failure for the user: the tool's own words, kept per thread by the
// runner, and the job's first failure with the file or scene it concerns.
#include "engine/tarnwick_process.h"

#include <mutex>
#include <string>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/paths.h"

namespace engine {
namespace {

// The words of the last failed tool of each thread: pool threads fail side by side.
thread_local std::string t_lastToolWords;

} // namespace

void SetLastToolWords(const std::string &words)
{
    t_lastToolWords = words;
}

std::string CTarnwickProcess::LastToolWords()
{
    return t_lastToolWords;
}

void CTarnwickProcess::NoteFailure(const std::string &reason)
{
    std::lock_guard<std::mutex> lock(failureMutex);
    if (strFailureReason.empty()) {
        strFailureReason = reason;
        core::Log("%s(%d) %s\n", "CTarnwickProcess::NoteFailure", __LINE__, reason.c_str());
    }
}

std::string CTarnwickProcess::FailureReason() const
{
    std::lock_guard<std::mutex> lock(failureMutex);
    return strFailureReason;
}

void CTarnwickProcess::NoteWriteFailure(const std::string &what,
                                        const std::string &file,
                                        int result)
{
    if (result == kJobOk || result == kJobStopped) {
        return;
    }
    std::string words = LastToolWords();
    if (words.empty()) {
        words = result == kJobCannotStart
                    ? "the tool could not run"
                    : core::StrPrintf("ffmpeg ended with exit code %d", result);
    } else {
        words = "ffmpeg: " + words;
    }
    const std::string folder = file.substr(0, file.find_last_of('/') + 1);
    NoteFailure(what + " " + core::FileNamePart(file) + " could not be written to " + folder +
                ": " + words);
}

} // namespace engine
