// The progress line of a long job on standard error: stage, percentage, frames done of the
// total and the elapsed time, drawn in place on a terminal and as plain lines elsewhere.
#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

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

    // What the tab's status bar shows: a stage's name, and how much of its total is done.
    void OnStage(const std::string &stage);
    void OnCount(int done, int total);
    // Shows a stage that reported no count, and ends the line drawn in place, so that what
    // follows starts on a line of its own.
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
    bool m_stageShown = true;
    size_t m_drawnWidth = 0;
};

} // namespace cli
