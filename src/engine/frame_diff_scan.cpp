// The frame-difference scan (job 1053 on the scene tab): ffmpeg's small gray frames, the count of
// changed pixels per frame, the grouping into scenes, their cuts in a pool while the scan reads
// on, and the thread that opens the last scene when the scan has ended.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/project_names.h"
#include "engine/changed_pixels.h"
#include "engine/job_pool.h"
#include "engine/scan_command.h"
#include "engine/scene_grouper.h"

namespace engine {
namespace {

// The values of one scan, taken from the project when it starts.
struct ScanSetup
{
    int w = 0;           // scan picture width: an eighth of the video's
    int h = 0;           // scan picture height
    int nPixels = 0;     // bytes per frame in the pipe
    int nPixelLimit = 0; // changed pixels that make a frame active
    int frameNum = 0;    // frames announced by the probe; later ones are only drained
    double fps = 0.0;
};

ScanSetup MakeSetup(const core::CTarnwickData &data, int nThreshold)
{
    ScanSetup setup;
    setup.w = ScanDimension(data.viCurrent.width);
    setup.h = ScanDimension(data.viCurrent.height);
    setup.nPixels = setup.w * setup.h;
    setup.nPixelLimit = PixelLimit(setup.nPixels, nThreshold);
    setup.frameNum = data.viCurrent.frame_num;
    setup.fps = data.viCurrent.fps;
    return setup;
}

// Puts the scenes of one scan into diff_list and, when cutting, hands each to the pool. Owned
// by the scan's thread; the pool threads touch only their own scene and their own result slot.
class SceneSink
{
public:
    SceneSink(CTarnwickProcess &engine, const std::string &path, double fps, bool bCut)
        : m_engine(engine)
        , m_path(path)
        , m_settings(engine.Settings())
        , m_stem(core::SegmentStem(*engine.pData)) // from input_file, also for a working MP4
        , m_fps(fps)
        , m_bCut(bCut)
        , m_results(SceneGrouper::kMaxScenes, 0)
        , m_pool(m_settings.useCuda != 0)
    {
    }

    // One scene of the grouping. Waits while the pool is full, so the reading stands still and
    // the tool waits at the full pipe.
    void Emit(int first, int last)
    {
        const int k = m_emitted++;
        if (k >= SceneGrouper::kMaxScenes) {
            return; // the tool is being stopped; "Scene%03d" never needs a fourth digit
        }
        core::SceneEntry entry(first, last, m_stem + core::StrPrintf("%d_%d.mp4", first, last));
        double seconds = m_fps > 0 ? (last - first + 1) / m_fps : 0.0;
        entry.SetCaption(0.0, seconds, core::StrPrintf("Scene%03d", k + 1));
        int index = 0; // k itself, since the list was empty when the scan began
        {
            std::lock_guard<std::mutex> lock(m_engine.pData->sceneLock.m);
            index = static_cast<int>(m_engine.pData->diff_list.size());
            m_engine.pData->diff_list.push_back(std::move(entry));
            m_engine.pData->list_idx = index;
        }
        if (m_bCut) {
            m_pool.Run([this, k, index] {
                m_results[k] = m_engine.CutSceneQuiet(m_path, index, m_settings);
            });
        }
        m_engine.PostToTab(AppMessage::WM_APP_SCENES_CHANGED, index, 0);
    }

    // Waits until every cut has ended, and leaves their results in the engine's cutResults. A
    // failed cut does not fail the scan: the final output finds and recuts such a scene itself.
    void WaitForCuts()
    {
        m_pool.WaitAll();
        const int cuts = m_bCut ? std::min(m_emitted, SceneGrouper::kMaxScenes) : 0;
        m_engine.cutResults.assign(m_results.begin(), m_results.begin() + cuts);
    }

private:
    CTarnwickProcess &m_engine;
    const std::string m_path;     // source of the cuts
    const JobSettings m_settings; // the job's copy: the encoder and folder of the cuts
    const std::string m_stem;     // front of every segment name, made once per scan
    const double m_fps;
    const bool m_bCut;
    int m_emitted = 0;
    std::vector<int> m_results; // one slot per possible scene, written by the pool threads
    JobPool m_pool;             // declared last: it waits for its threads before m_results goes
};

// Reads the rest of a frame of which got bytes have arrived. False when the frame stays
// incomplete: the pipe ended or failed.
bool CompleteFrame(ChildProcess &child, uint8_t *frame, long got, long size)
{
    while (got < size) {
        long n = child.Read(frame + got, static_cast<unsigned long>(size - got));
        if (n <= 0) {
            return false;
        }
        got += n;
    }
    return true;
}

// The frame loop: reads the pipe until it runs dry. Frames behind the announced count are
// drained and not looked at; a stop or the scene limit kills the tool, and the frames that are
// still in the pipe are worked on. Returns the number of frames compared.
int ReadFrames(CTarnwickProcess &engine,
               ChildProcess &child,
               const ScanSetup &setup,
               SceneGrouper &grouper)
{
    // One buffer for all frames, each read straight into it: nothing is allocated per frame.
    std::vector<uint8_t> frame(static_cast<size_t>(std::max(setup.nPixels, 1)), 0);
    const long size = setup.nPixels;
    int n = 0;
    for (;;) {
        if (n >= setup.frameNum) {
            // The tool delivers more than it announced: let it finish, also through a stop.
            child.SetStopFlag(nullptr, 0);
        }
        long got = child.Read(frame.data(), static_cast<unsigned long>(size));
        if (got <= 0) {
            break;
        }
        if (n >= setup.frameNum) {
            continue;
        }
        engine.PostToTab(AppMessage::WM_APP_PROGRESS, setup.frameNum, n + 1);
        if (!CompleteFrame(child, frame.data(), got, size)) {
            break; // a partial last frame is ignored
        }
        int count = CountChangedPixels(frame.data(), setup.w, setup.h, n, setup.nPixelLimit);
        grouper.Step(n, count >= setup.nPixelLimit);
        ++n;
        if (engine.bCancel != 0 || grouper.LimitReached()) {
            child.Kill(kJobStopped); // read on until the pipe is dry
        }
    }
    return n;
}

// The default-scene routine of the current tab, and the notice of the list it leaves.
void LeaveDefaultScene(CTarnwickProcess &engine)
{
    if (EngineTab *tab = engine.CurrentTab()) {
        tab->MakeDefaultScene();
    }
    int index = 0;
    {
        std::lock_guard<std::mutex> lock(engine.pData->sceneLock.m);
        index = engine.pData->list_idx;
    }
    engine.PostToTab(AppMessage::WM_APP_SCENES_CHANGED, index, 0);
}

// Body of the after-scan thread: makes the last scene's segment the preview file, so that the
// picture pane shows it when the scan has ended.
void OpenLastScene(CTarnwickProcess &engine)
{
    std::string file;
    {
        std::lock_guard<std::mutex> lock(engine.pData->sceneLock.m);
        if (engine.pData->diff_list.empty()) {
            return;
        }
        file = engine.pData->diff_list.back().fileName;
    }
    if (engine.bThreadRunning && IsPlaybackJobNumber(engine.nProcessID)) {
        return;
    }
    if (file != engine.strPreviewFile.get()) {
        {
            std::lock_guard<std::mutex> lock(engine.pData->sceneLock.m);
            engine.pData->viCurrent = engine.pData->viInput;
        }
        engine.nPlayJob = kJobPlayScenes;
        engine.nPreviewFrame = 0;
        engine.strPreviewTime = "0";
        // OpenVideoFile and the position at its start, without a new input summary.
        if (engine.ReloadVideoInfo(file, true) != kJobOk) {
            return;
        }
    }
    engine.SetPreviewImage(file, engine.strPreviewTime.get(), true, -1);
}

} // namespace

int CTarnwickProcess::ProcessDiffFrame(const std::string &path, int nThreshold)
{
    core::Log("%s(%d) input_file(%s), threshold(%d)\n",
              "CTarnwickProcess::ProcessDiffFrame",
              __LINE__,
              path.c_str(),
              nThreshold);
    SendStageBegin(engine::kStageSceneExtract, pData->viInput.frame_num);
    int result = ReloadVideoInfo(path, false);
    if (result != kJobOk) {
        return result;
    }
    // The picture pane shows the video while the scan runs. A scan that only finds scenes
    // writes nothing, so it asks for no still either.
    if (bCutScenes) {
        SetPreviewImage(path, strPreviewTime.get(), false, -1);
    }
    result = ExecuteCmdLoadVideo(path, nThreshold);
    if (DiffListEmpty()) {
        LeaveDefaultScene(*this);
    }
    SendEndState(result);
    return result;
}

int CTarnwickProcess::ExecuteCmdLoadVideo(const std::string &path, int nThreshold)
{
    const char *function = "CTarnwickProcess::ExecuteCmdLoadVideo";
    cutResults.clear();
    bScanTooSmall = false;
    SendStageBegin(engine::kStageSceneExtract, pData->viInput.frame_num);
    const ScanSetup setup = MakeSetup(*pData, nThreshold);
    const std::string command = ScanCommand(pData->bUseCuda != 0, path, setup.w, setup.h);
    if (!CommandCarriesPaths(function, __LINE__, command, {path})) {
        return kJobCannotStart;
    }
    ChildProcess child;
    int exitCode = StartChildProcess(command, child);
    if (exitCode != 0) {
        LogCommandResult(function, __LINE__, command, exitCode);
        return exitCode;
    }
    hProcess = child.Pid();
    bScanTooSmall = setup.nPixels == 0;
    if (setup.nPixels == 0) {
        child.Kill(kJobCannotStart); // the first read then yields nothing
    }
    const bool bCut = bCutScenes;
    {
        SceneSink sink(*this, path, setup.fps, bCut);
        const JobSettings settings = Settings();
        SceneGrouper grouper(SceneGrouper::FramesFor(setup.fps, settings.validMinUnit),
                             SceneGrouper::FramesFor(setup.fps, settings.cutMinUnit),
                             [&sink](int first, int last) { sink.Emit(first, last); });
        nScanFrames = 0;
        nScanFrames = ReadFrames(*this, child, setup, grouper);
        exitCode = child.Wait();
        if (exitCode == 0 && nScanFrames < setup.frameNum) {
            core::Log("%s(%d) only %d of %d frames could be read; the file looks truncated\n",
                      function,
                      __LINE__,
                      nScanFrames.load(),
                      setup.frameNum);
        }
        if (exitCode == 0) {
            grouper.Close(setup.frameNum); // a failed or stopped scan drops its open run
        }
        SendJobState(engine::kStateWaiting);
        sink.WaitForCuts();
    }
    if (DiffListEmpty()) {
        LeaveDefaultScene(*this);
    }
    if (nProcessID != kJobExtractAndOutput && bCut) {
        JoinAfterScanThread(); // one left by a scan that did not run as a job of its own
        bAfterScanRunning = true;
        afterScanThread = std::thread([this] {
            OpenLastScene(*this);
            bAfterScanRunning = false;
        });
    }
    hProcess = 0;
    LogCommandResult(function, __LINE__, command, exitCode);
    return exitCode;
}

void CTarnwickProcess::JoinAfterScanThread()
{
    if (!afterScanThread.joinable()) {
        return;
    }
    WaitPumping(bAfterScanRunning);
    afterScanThread.join();
}

} // namespace engine
