// The progress line of a long job on standard error: stage, percentage, frames done of the
// total and the elapsed time, drawn in place on a terminal and as plain lines elsewhere.
#include "cli/progress_line.h"

#include <algorithm>
#include <ostream>

#include "core/helpers.h"

namespace cli {
namespace {

// A terminal line is redrawn at most this often; the tool reports every frame.
constexpr auto kRedrawEvery = std::chrono::milliseconds(100);

} // namespace

std::string ProgressText(const std::string &stage, int done, int total, int elapsedSeconds)
{
    std::string text = stage;
    if (total > 0) {
        const int clamped = std::clamp(done, 0, total);
        const int percent = static_cast<int>(100LL * clamped / total);
        text += core::StrPrintf("  %3d%%  %d/%d", percent, clamped, total);
    }
    const int s = std::max(elapsedSeconds, 0);
    return text + core::StrPrintf("  %02d:%02d:%02d", s / 3600, s / 60 % 60, s % 60);
}

ProgressLine::ProgressLine(std::ostream &err, bool terminal)
    : m_err(err)
    , m_terminal(terminal)
{
}

void ProgressLine::OnStage(const std::string &stage)
{
    if (!m_stageShown) {
        Draw(true);
    }
    // A new name within a stage keeps its count; a new stage's count follows at once.
    m_stage = stage;
    m_lastTenth = -1;
    m_stageShown = false;
}

void ProgressLine::OnCount(int done, int total)
{
    m_done = done;
    m_total = total;
    Draw(!m_stageShown);
    m_stageShown = true;
}

void ProgressLine::Draw(bool force)
{
    const auto now = std::chrono::steady_clock::now();
    const int elapsed =
        static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(now - m_start).count());
    const std::string text = ProgressText(m_stage, m_done, m_total, elapsed);
    if (m_terminal) {
        if (!force && now - m_lastDraw < kRedrawEvery) {
            return;
        }
        m_lastDraw = now;
        // Blanks over what is left of a longer line drawn before.
        std::string padding(m_drawnWidth > text.size() ? m_drawnWidth - text.size() : 0, ' ');
        m_err << "\r" << text << padding << std::flush;
        m_drawnWidth = text.size();
        return;
    }
    const int tenth =
        m_total > 0 ? static_cast<int>(10LL * std::clamp(m_done, 0, m_total) / m_total) : 0;
    if (!force && tenth == m_lastTenth) {
        return;
    }
    m_lastTenth = tenth;
    m_err << text << "\n" << std::flush;
}

void ProgressLine::Finish()
{
    if (!m_stageShown && !m_stage.empty()) {
        Draw(true);
        m_stageShown = true;
    }
    if (m_terminal && m_drawnWidth > 0) {
        m_err << "\n" << std::flush;
        m_drawnWidth = 0;
    }
}

} // namespace cli
