// Scan benchmark: the command "tarnwickmp4-cli scan" as a user runs it (opening included: probe,
// working files, frame times, still) and the frame-difference scan alone (ExecuteCmdLoadVideo,
// counting and grouping, no cutting), each against ffmpeg's own decoding with the scan's command
// writing to /dev/null, and the peak memory of this process after a short and a long clip.
//
// Usage: tw_scan_bench [VIDEO] [--reps N]
// Without VIDEO a 1920x1080 H.264 clip of 60 seconds is made once into the build's bench-data
// folder and reused by later runs.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <sstream>
#include <string>

#include <sys/resource.h>

#include "cli/commands.h"
#include "core/helpers.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "engine/changed_pixels.h"
#include "engine/headless_host.h"
#include "engine/scan_command.h"
#include "engine/tarnwick_process.h"

namespace {

// A job number of the benchmark only.
constexpr int kScanJob = 9101;
constexpr const char *kLongClipName = "scan_1920x1080_60s.mp4";
constexpr double kShortSeconds = 5.0;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// User and system time of all threads of this process so far.
double CpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

long PeakMemoryKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss; // KiB on Linux
}

// An engine without cutting on a headless scene tab whose loop drains and forgets every message,
// as the command line's loop does.
class ScanBench
{
public:
    ScanBench()
    {
        m_engine.pData = &m_data;
        m_engine.pHostDlg = &m_host;
        m_engine.bCutScenes = false;
        m_host.Tab(0).SetOnMessage(
            [this](const engine::JobMessage &) { m_host.Tab(0).ClearMessages(); });
    }

    engine::CTarnwickProcess &Engine() { return m_engine; }

    // Makes clip the project's input and probes it; false when the probe fails.
    bool Open(const std::string &clip)
    {
        m_data.ResetProject(false);
        core::DeriveProjectNames(m_data, clip);
        if (m_engine.GetVideoInfoFfprobe(clip, m_data.viCurrent) != 0) {
            return false;
        }
        m_data.viInput = m_data.viCurrent;
        return true;
    }
    const core::VideoInfo &Info() const { return m_data.viCurrent; }

    // (b): seconds of ExecuteCmdLoadVideo on the open clip, run as a job; result in *pResult,
    // this process's own processor time during it in *pCpu.
    double TimeScan(const std::string &clip, int *pResult, size_t *pScenes, double *pCpu)
    {
        const double cpuStart = CpuSeconds();
        {
            std::lock_guard<std::mutex> lock(m_data.sceneLock.m);
            m_data.diff_list.clear();
        }
        double seconds = 0.0;
        m_engine.SetJobFunction(kScanJob, 0, [this, clip, &seconds](int) {
            Clock::time_point start = Clock::now();
            int result = m_engine.ExecuteCmdLoadVideo(clip, m_engine.ThresholdArgument());
            seconds = SecondsSince(start);
            return result;
        });
        m_engine.StartThread(kScanJob);
        m_host.Loop().RunUntil([this] { return !m_engine.bThreadRunning; });
        *pResult = m_engine.nProcessExitCode;
        *pCpu = CpuSeconds() - cpuStart;
        std::lock_guard<std::mutex> lock(m_data.sceneLock.m);
        *pScenes = m_data.diff_list.size();
        return seconds;
    }

    // (c): seconds of the scan command as a user runs it, from its arguments to its table.
    double TimeCommand(const std::string &clip, int *pResult)
    {
        std::ostringstream out;
        std::ostringstream err;
        cli::CliOutput io{out, err};
        Clock::time_point start = Clock::now();
        *pResult = cli::RunScan({clip}, io);
        const double seconds = SecondsSince(start);
        if (*pResult != 0) {
            std::fprintf(stderr, "tw_scan_bench: %s", err.str().c_str());
        }
        return seconds;
    }

    // (a): seconds of the scan's own command writing its frames to /dev/null.
    double TimeDecode(const std::string &clip, int *pResult)
    {
        std::string command = engine::ScanCommand(
            false, clip, engine::ScanDimension(Info().width), engine::ScanDimension(Info().height));
        command.replace(command.size() - 1, 1, "/dev/null");
        Clock::time_point start = Clock::now();
        *pResult = m_engine.ExecuteCmd(command);
        return SecondsSince(start);
    }

private:
    core::CTarnwickData m_data;
    engine::HeadlessHost m_host; // before the engine: it outlives the engine
    engine::CTarnwickProcess m_engine;
};

// Runs a tool command to its end through the engine's runner; false on failure.
bool RunTool(engine::CTarnwickProcess &engine, const std::string &command)
{
    int result = engine.ExecuteCmd(command);
    if (result != 0) {
        std::fprintf(stderr, "tw_scan_bench: failed (%d): %s\n", result, command.c_str());
    }
    return result == 0;
}

// The 60-second full-HD clip of the cache, made when missing. Empty on failure.
std::string CachedLongClip(engine::CTarnwickProcess &engine)
{
    std::string dir = TW_BENCH_DATA_DIR;
    std::string clip = dir + "/" + kLongClipName;
    if (std::filesystem::exists(clip)) {
        return clip;
    }
    std::filesystem::create_directories(dir);
    std::string partial = dir + "/partial_" + kLongClipName;
    std::printf("making %s (once) ...\n", clip.c_str());
    std::fflush(stdout);
    if (!RunTool(engine,
                 core::StrPrintf("ffmpeg -y -loglevel error -f lavfi -i "
                                 "\"testsrc2=size=1920x1080:rate=30:duration=60\" -c:v libx264 "
                                 "-preset veryfast -pix_fmt yuv420p \"%s\"",
                                 partial.c_str()))) {
        return "";
    }
    std::filesystem::rename(partial, clip);
    return clip;
}

struct Measure
{
    double decode = 1e30;  // best seconds of (a)
    double scan = 1e30;    // best seconds of (b)
    double command = 1e30; // best seconds of (c)
    double cpu = 0.0;      // this process's processor seconds in the best (b)
    size_t scenes = 0;
};

// Alternates (a) and (b) reps times and keeps the best of each; false when a run fails.
bool MeasureClip(ScanBench &bench, const std::string &clip, int reps, Measure &m)
{
    for (int i = 0; i < reps; ++i) {
        int result = 0;
        m.decode = std::min(m.decode, bench.TimeDecode(clip, &result));
        if (result != 0) {
            std::fprintf(
                stderr, "tw_scan_bench: the decode of %s failed (%d)\n", clip.c_str(), result);
            return false;
        }
        double cpu = 0.0;
        double seconds = bench.TimeScan(clip, &result, &m.scenes, &cpu);
        if (seconds < m.scan) {
            m.scan = seconds;
            m.cpu = cpu;
        }
        if (result != 0) {
            std::fprintf(
                stderr, "tw_scan_bench: the scan of %s failed (%d)\n", clip.c_str(), result);
            return false;
        }
        m.command = std::min(m.command, bench.TimeCommand(clip, &result));
        if (result != 0) {
            std::fprintf(stderr,
                         "tw_scan_bench: the scan command on %s failed (%d)\n",
                         clip.c_str(),
                         result);
            return false;
        }
    }
    return true;
}

int Run(const std::string &given, int reps)
{
    ScanBench bench;
    std::string longClip = given.empty() ? CachedLongClip(bench.Engine()) : given;
    std::string shortClip = std::string(TW_BENCH_DATA_DIR) + "/short_clip.mp4";
    std::filesystem::create_directories(TW_BENCH_DATA_DIR);
    if (longClip.empty() ||
        !RunTool(bench.Engine(),
                 core::StrPrintf("ffmpeg -y -loglevel error -i \"%s\" -t %.6f -an -c copy \"%s\"",
                                 longClip.c_str(),
                                 kShortSeconds,
                                 shortClip.c_str()))) {
        return 1;
    }
    // The short clip first: the peak memory after it is the baseline for the long one.
    Measure shortMeasure;
    if (!bench.Open(shortClip) || !MeasureClip(bench, shortClip, 1, shortMeasure)) {
        return 1;
    }
    const int shortFrames = bench.Info().frame_num;
    const long shortPeak = PeakMemoryKiB();

    Measure m;
    if (!bench.Open(longClip) || !MeasureClip(bench, longClip, reps, m)) {
        return 1;
    }
    const core::VideoInfo info = bench.Info();
    const long longPeak = PeakMemoryKiB();
    std::printf("clip: %s\n      %dx%d, %d frames at %.3f fps, scan picture %dx%d\n",
                longClip.c_str(),
                info.width,
                info.height,
                info.frame_num,
                info.fps,
                engine::ScanDimension(info.width),
                engine::ScanDimension(info.height));
    std::printf("(a) ffmpeg alone, frames to /dev/null:  %8.3f s  %8.1f frames/s\n",
                m.decode,
                info.frame_num / m.decode);
    std::printf("(b) ExecuteCmdLoadVideo (no cutting):   %8.3f s  %8.1f frames/s  (%zu scenes)\n",
                m.scan,
                info.frame_num / m.scan,
                m.scenes);
    std::printf("    of which this process's own processor time: %.3f s (%.1f us a frame)\n",
                m.cpu,
                m.cpu * 1e6 / std::max(1, info.frame_num));
    std::printf("(c) tarnwickmp4-cli scan, opening included: %8.3f s  %8.1f frames/s\n",
                m.command,
                info.frame_num / m.command);
    std::printf(
        "ratio b/a: %.3f (the scan alone), best of %d runs each\n", m.scan / m.decode, reps);
    std::printf("ratio c/a: %.3f (the command as a user runs it; target at most 1.05)\n",
                m.command / m.decode);
    std::printf("peak memory of this process (ru_maxrss): %ld KiB after the short clip "
                "(%d frames), %ld KiB after the long clip (%d frames)\n",
                shortPeak,
                shortFrames,
                longPeak,
                info.frame_num);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    std::string given;
    int reps = 2;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--reps" && i + 1 < argc) {
            reps = std::max(1, std::atoi(argv[++i]));
        } else if (given.empty() && !arg.empty() && arg[0] != '-') {
            given = arg;
        } else {
            std::fprintf(stderr, "Usage: tw_scan_bench [VIDEO] [--reps N]\n");
            return 2;
        }
    }
    return Run(given, reps);
}
