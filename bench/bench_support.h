// What the benchmarks share: a tab of a headless host whose loop forgets every message, the
// clock, and the peak memory of the process.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include <sys/resource.h>

#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"

namespace bench {

using Clock = std::chrono::steady_clock;

inline double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

inline long PeakMemoryKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// The scene tab (nMergeMode 0) or the merge tab (1) of a headless host with its engine and
// project.
class BenchSession
{
public:
    // With stages, the time at which each stage of a job begins is printed.
    explicit BenchSession(bool stages, int nMergeMode = 0)
    {
        m_engine.pData = &data;
        m_engine.pHostDlg = &m_host;
        m_engine.InstallRenderJobs();
        m_engine.bMergeMode = nMergeMode;
        m_host.SetActiveTab(nMergeMode);
        engine::HeadlessTab &tab = m_host.Tab(nMergeMode);
        tab.SetOnMessage([&tab, this, stages](const engine::JobMessage &msg) {
            tab.ClearMessages();
            const bool stage = msg.id == engine::AppMessage::WM_APP_STAGE_BEGIN ||
                               msg.id == engine::AppMessage::WM_APP_STAGE_TEXT ||
                               msg.id == engine::AppMessage::WM_APP_JOB_STATE;
            if (stages && stage) {
                std::printf("    %7.3f s  %s %lld\n",
                            SecondsSince(m_jobStart),
                            msg.text.value_or("state").c_str(),
                            static_cast<long long>(msg.id == engine::AppMessage::WM_APP_JOB_STATE
                                                       ? msg.wParam
                                                       : msg.lParam));
            }
        });
    }

    engine::CTarnwickProcess &Engine() { return m_engine; }

    // Seconds of job nJob; its result in *pResult.
    double TimeJob(int nJob, int *pResult)
    {
        Clock::time_point start = Clock::now();
        m_jobStart = start;
        m_engine.StartThread(nJob);
        m_host.Loop().RunUntil([this] { return !m_engine.bThreadRunning; });
        *pResult = m_engine.nProcessExitCode;
        return SecondsSince(start);
    }

    // Seconds of command run to its end; its result in *pResult.
    double TimeCommand(const std::string &command, int *pResult)
    {
        Clock::time_point start = Clock::now();
        *pResult = m_engine.ExecuteCmd(command);
        return SecondsSince(start);
    }

    core::CTarnwickData data;

private:
    engine::HeadlessHost m_host; // before the engine: it outlives the engine
    engine::CTarnwickProcess m_engine;
    Clock::time_point m_jobStart = Clock::now();
};

} // namespace bench
