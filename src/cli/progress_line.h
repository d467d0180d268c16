// The progress line of a long job on standard error: stage, percentage, frames done of the
// total and the elapsed time, drawn in place on a terminal and as plain lines elsewhere.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

#include "engine/job_messages.h"

namespace cli {

// "Final Merge   42%  1234/2900  00:00:12": the stage, how much of its total is done (frames,
// or scenes in the precheck; only with a total above 0) and the elapsed time in whole seconds.
std::string ProgressText(const std::string &stage, int done, int total, int elapsedSeconds);

class ProgressLine
{
public:
    // terminal: redraw one line in place (carriage return); otherwise write a plain line at
    // each new stage and at every further tenth of the total.
    ProgressLine(std::ostream &err, bool terminal);

    // Follows the stage and progress messages of a job; the others are ignored.
    void OnMessage(const engine::JobMessage &msg);
    // Ends the line drawn in place, so that what follows starts on a line of its own.
    void Finish();

private:
    void Draw(bool force);

    std::ostream &m_err;
    const bool m_terminal;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_lastDraw{};
    std::string m_stage;
    int m_done = 0;
    int m_total = 0;
    int m_lastTenth = -1;
    size_t m_drawnWidth = 0;
};

} // namespace cli
