// Shared pieces of the engine tests: an engine wired to a headless host, and a log capture.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/app_log.h"
#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"
#include "support/test_support.h"

namespace enginetest {

// An engine with every job (the render library's rows too), its project and a host whose
// loop belongs to the test's thread.
struct EngineRig
{
    EngineRig()
    {
        engine.pData = &data;
        engine.pHostDlg = &host;
        engine.InstallRenderJobs();
    }
    ~EngineRig()
    {
        engine.CancelProcess();
        WaitForJob();
    }

    // Pumps messages until the running job has ended.
    void WaitForJob()
    {
        host.Loop().RunUntil([this] { return !engine.bThreadRunning; });
    }
    engine::HeadlessTab &Scene() { return host.Tab(0); }

    core::CTarnwickData data;
    engine::HeadlessHost host;
    engine::CTarnwickProcess engine;
};

// Messages of one kind, as (wParam, lParam) pairs.
inline std::vector<std::pair<int64_t, int64_t>> Words(const engine::HeadlessTab &tab,
                                                      engine::AppMessage id)
{
    std::vector<std::pair<int64_t, int64_t>> result;
    for (const engine::JobMessage &msg : tab.MessagesOf(id)) {
        result.emplace_back(msg.wParam, msg.lParam);
    }
    return result;
}

// The job states a tab received, as "state:text" ("state:" when without text).
inline std::vector<std::string> States(const engine::HeadlessTab &tab)
{
    std::vector<std::string> result;
    for (const engine::JobMessage &msg : tab.MessagesOf(engine::AppMessage::WM_APP_JOB_STATE)) {
        result.push_back(std::to_string(msg.wParam) + ":" + msg.text.value_or(""));
    }
    return result;
}

// Collects what core::Log writes while it lives, in a log file of its own.
class LogCapture
{
public:
    LogCapture()
    {
        std::string config = m_dir.file("AppLog.INI");
        testsupport::WriteFile(config, "LOG_FILE_PATH," + m_dir.file("test.log") + "\n");
        m_log = std::make_unique<core::CAppLog>(config);
        core::CAppLog::Install(m_log.get());
    }
    ~LogCapture() { core::CAppLog::Uninstall(m_log.get()); }

    // The messages logged so far that begin with prefix (such as "CTarnwickProcess::"), each
    // without the time, process and product in front of it.
    std::vector<std::string> Lines(const std::string &prefix)
    {
        m_log->Flush();
        std::string text = testsupport::ReadFile(m_dir.file("test.log"));
        std::vector<std::string> lines;
        size_t start = 0;
        while (start < text.size()) {
            size_t end = text.find('\n', start);
            std::string line = text.substr(start, end == std::string::npos ? end : end - start);
            size_t at = line.find(prefix);
            if (at != std::string::npos) {
                lines.push_back(line.substr(at));
            }
            start = end == std::string::npos ? text.size() : end + 1;
        }
        return lines;
    }

    // The same with the position number "(123)" behind the function name replaced by "(N)".
    std::vector<std::string> LinesWithoutPositions(const std::string &prefix)
    {
        std::vector<std::string> lines = Lines(prefix);
        for (std::string &line : lines) {
            size_t open = line.find('(');
            size_t close = line.find(')', open);
            if (open != std::string::npos && close != std::string::npos) {
                line.replace(open, close - open + 1, "(N)");
            }
        }
        return lines;
    }

private:
    testsupport::TempDir m_dir;
    std::unique_ptr<core::CAppLog> m_log;
};

} // namespace enginetest
