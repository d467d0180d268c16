// Scene cutting: one scene into its segment (with progress, or quietly on a pool thread), the
// record's correction after a cut, the segment output job and the background check of a scene.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "engine/cut_command.h"
#include "engine/encoder_presets.h"
#include "engine/scene_copy.h"

namespace engine {
namespace {

int FrameCountOf(const core::SceneEntry &scene)
{
    return scene.framNo_second - scene.framNo_first + 1;
}

// The cut of scene from path, written to target (the segment's partial name), with the
// encoder of settings.
std::string CutCommandOf(const core::CTarnwickData &data,
                         const JobSettings &settings,
                         const std::string &path,
                         const core::SceneEntry &scene,
                         const std::string &target)
{
    CutCommandArgs args;
    args.prefix = ToolPrefix(settings.useCuda != 0);
    args.times =
        CutSceneTimes(scene.framNo_first, scene.framNo_second, data.viCurrent.fps, data.pts_list);
    args.sourcePath = path;
    args.encoderText = EncoderText(settings.useCuda, settings.encodePreset);
    args.fps = data.viCurrent.fps;
    args.r_frame_rate = data.viInput.r_frame_rate;
    args.fileName = target;
    return BuildCutCommand(args);
}

// An existing folder is fine; a folder that cannot be made shows as the tool's failure to
// write, which is reported there.
void CreateOutputFolder(const JobSettings &settings)
{
    core::CreateFolders(core::SetTrailingSeparator(settings.outputFolder, false));
}

// A failed or stopped cut leaves no half segment behind, and no old one that it meant to
// replace.
void DeleteSegment(const std::string &fileName)
{
    std::error_code ignored;
    std::filesystem::remove(core::PartialSegmentPath(fileName), ignored);
    std::filesystem::remove(fileName, ignored);
}

// After the tool of a cut has ended with result: on success the partial file becomes the
// segment; otherwise both go. Returns result, or -1 when the rename failed.
int SettleCut(const std::string &fileName, int result)
{
    if (result == kJobOk) {
        std::error_code ec;
        std::filesystem::rename(core::PartialSegmentPath(fileName), fileName, ec);
        if (!ec) {
            return kJobOk;
        }
        core::Log("%s(%d) \"%s\" not renamed: %s\n",
                  "CTarnwickProcess::SettleCut",
                  __LINE__,
                  fileName.c_str(),
                  ec.message().c_str());
        result = kJobCannotStart;
    }
    DeleteSegment(fileName);
    return result;
}

// The frame count probed from a finished segment decides its record. A stop that came while
// the probe ran, or a segment without a single picture, does not: the segment goes and the
// record stays as planned, so that no record ever ends before it begins. Returns 0 when
// nFrames may be recorded, else the cut's result (-2 for the stop, -1 for no picture).
int CheckProbedSegment(const CTarnwickProcess &engine, const std::string &fileName, int nFrames)
{
    if (engine.bCancel != 0) {
        DeleteSegment(fileName);
        return kJobStopped;
    }
    if (nFrames < 1) {
        core::Log("%s(%d) \"%s\" holds no picture: deleted\n",
                  "CTarnwickProcess::CheckProbedSegment",
                  __LINE__,
                  fileName.c_str());
        DeleteSegment(fileName);
        return kJobCannotStart;
    }
    return kJobOk;
}

// "the segment of scene 3" for the scene at list index 2.
std::string SegmentOfScene(int nScene)
{
    return core::StrPrintf("the segment of scene %d,", nScene + 1);
}

// A scene that ends before it begins (a hand-edited project) has nothing to cut: the job's
// failure names it. Returns the reason.
std::string RefuseReversedScene(CTarnwickProcess &engine, int nScene, const core::SceneEntry &scene)
{
    const std::string reason = core::StrPrintf(
        "scene %d ends at frame %d, before it begins at frame %d: correct or delete it",
        nScene + 1,
        scene.framNo_second,
        scene.framNo_first);
    engine.NoteFailure(reason);
    return reason;
}

// "Segment Output (003)" for the scene at list index 2.
std::string SceneStageText(int nScene)
{
    return core::StrPrintf(
        "%s (%03d)", engine::StageName(engine::kStageSegmentOutput).c_str(), nScene + 1);
}

void LogMissingScene(const char *function, int position, int nScene)
{
    core::Log("%s(%d) no scene at nScene(%d)\n", function, position, nScene);
}

// The scene tab's check of one scene on the queue thread: a stale segment is cut again while
// the tab's list is disabled, under job number 1052.
void CheckSceneInBackground(CTarnwickProcess &engine,
                            int nScene,
                            bool bShow,
                            const JobSettings &settings)
{
    std::optional<core::SceneEntry> scene = SceneCopy(*engine.pData, nScene);
    if (!scene) {
        LogMissingScene("CTarnwickProcess::QueueThread", __LINE__, nScene);
        return; // the list changed after the selection
    }
    core::VideoInfo facts;
    if (!engine.SegmentHoldsScene(*scene, facts)) {
        int nFrames = FrameCountOf(*scene);
        if (bShow) {
            engine.PostToTab(AppMessage::WM_APP_ELAPSED_TIMER, 1, 0);
        }
        int nSavedJob = engine.nProcessID.exchange(kJobSegmentOutput);
        engine.PostToTab(AppMessage::WM_APP_LIST_BUSY, 1, 0);
        engine.SendToTab(AppMessage::WM_APP_STAGE_BEGIN, 0, nFrames, SceneStageText(nScene));
        if (engine.CutScene(engine.SourcePath(), nScene, nFrames, 0, false, settings) == kJobOk) {
            engine.SendJobState(engine::kStateDone);
        }
        if (bShow) {
            engine.PostToTab(AppMessage::WM_APP_ELAPSED_TIMER, 0, 0);
        }
        engine.nProcessID = nSavedJob;
        engine.PostToTab(AppMessage::WM_APP_LIST_BUSY, 0, 0);
    }
    if (bShow) {
        // The record again: a cut may have renamed the segment.
        if (std::optional<core::SceneEntry> shown = SceneCopy(*engine.pData, nScene)) {
            engine.ShowFile(shown->fileName, true);
        }
    }
}

// The merge tab's check of a row: the analysis of its source, as job 1052 for the tab's rules.
void AnalyzeRowInBackground(CTarnwickProcess &engine, int nRow)
{
    std::optional<core::SceneEntry> row = SceneCopy(*engine.pData, nRow);
    if (!row || engine.bThreadRunning) {
        return; // a job runs on the project: it analyses the rows itself
    }
    const int previousJob = engine.nProcessID.exchange(kJobSegmentOutput);
    engine.PostToTab(AppMessage::WM_APP_LIST_BUSY, 1, 0);
    {
        std::lock_guard<std::mutex> lock(engine.pData->sceneLock.m);
        engine.pData->input_file =
            row->strOriginalFile.empty() ? row->strWorkFile : row->strOriginalFile;
        engine.pData->viInput = core::VideoInfo{};
    }
    const int result = engine.AnalyzeMergeSource(nRow);
    engine.nProcessID = previousJob;
    engine.PostToTab(AppMessage::WM_APP_LIST_BUSY, 0, 0);
    engine.SendEndState(result);
}

// The queue thread: serves checkQueue until quit is set and nothing waits any more.
void ServeCheckQueue(CTarnwickProcess &engine)
{
    for (;;) {
        std::pair<int, bool> item;
        JobSettings settings;
        {
            std::unique_lock<std::mutex> lock(engine.queueMutex);
            engine.queueCondition.wait(
                lock, [&engine] { return !engine.checkQueue.empty() || engine.quit; });
            if (engine.checkQueue.empty()) {
                engine.running = false;
                return;
            }
            item = engine.checkQueue.front();
            engine.checkQueue.pop_front();
            settings = engine.checkSettings;
        }
        // Tried, never waited for: a check that finds another one running is dropped, and the
        // next selection asks again.
        if (engine.checkMutex.try_lock()) {
            if (engine.bMergeMode == 0) {
                if (engine.nProcessID != kJobSegmentOutput) {
                    CheckSceneInBackground(engine, item.first, item.second, settings);
                }
            } else {
                AnalyzeRowInBackground(engine, item.first);
            }
            engine.checkMutex.unlock();
        }
        bool empty = false;
        {
            std::lock_guard<std::mutex> lock(engine.queueMutex);
            empty = engine.checkQueue.empty();
        }
        if (empty) {
            engine.queueEmpty.notify_all();
        }
    }
}

} // namespace

// A copy of scene nScene, taken under the scene lock; none when the index is out of range.
std::optional<core::SceneEntry> SceneCopy(core::CTarnwickData &data, int nScene)
{
    std::lock_guard<std::mutex> lock(data.sceneLock.m);
    if (nScene < 0 || static_cast<size_t>(nScene) >= data.diff_list.size()) {
        return std::nullopt;
    }
    return data.diff_list[static_cast<size_t>(nScene)];
}

std::optional<core::SceneEntry> CTarnwickProcess::SceneUnderItsSegmentName(int nScene)
{
    std::lock_guard<std::mutex> lock(pData->sceneLock.m);
    if (nScene < 0 || static_cast<size_t>(nScene) >= pData->diff_list.size()) {
        return std::nullopt;
    }
    core::SceneEntry &scene = pData->diff_list[static_cast<size_t>(nScene)];
    const std::string expected = core::SegmentPath(*pData, scene.framNo_first, scene.framNo_second);
    if (FrameCountOf(scene) >= 1 && scene.fileName != expected) {
        // A file under another name may hold other frames, or another scene's: the scene is
        // cut anew under its own name, and that other file is left alone.
        core::Log("%s(%d) nScene(%d): \"%s\" is not named after its frames: \"%s\"\n",
                  "CTarnwickProcess::SceneUnderItsSegmentName",
                  __LINE__,
                  nScene,
                  scene.fileName.c_str(),
                  expected.c_str());
        scene.fileName = expected;
    }
    return scene;
}

int CTarnwickProcess::CutScene(const std::string &path,
                               int nScene,
                               int nTotal,
                               int nBase,
                               bool bReport,
                               const JobSettings &settings)
{
    if (bReport) {
        SendToTab(AppMessage::WM_APP_CURRENT_SCENE, nScene, 0);
    }
    std::optional<core::SceneEntry> scene = SceneUnderItsSegmentName(nScene);
    if (!scene) {
        LogMissingScene("CTarnwickProcess::CutScene", __LINE__, nScene);
        return kJobCannotStart;
    }
    if (FrameCountOf(*scene) < 1) {
        SendJobState(engine::kStateFailed, RefuseReversedScene(*this, nScene, *scene));
        return kJobCannotStart;
    }
    const std::string partial = core::PartialSegmentPath(scene->fileName);
    std::string command = CutCommandOf(*pData, settings, path, *scene, partial);
    if (!CommandCarriesPaths("CTarnwickProcess::CutScene", __LINE__, command, {path, partial})) {
        return kJobCannotStart;
    }
    CreateOutputFolder(settings);
    int result = ExecuteCmdWithProgress(false, command, nTotal, nBase);
    NoteWriteFailure(SegmentOfScene(nScene), scene->fileName, result);
    result = SettleCut(scene->fileName, result);
    if (result != kJobOk) {
        return result;
    }
    int nFrames = GetFrameCount(scene->fileName);
    result = CheckProbedSegment(*this, scene->fileName, nFrames);
    if (result != kJobOk) {
        return result;
    }
    UpdateSceneFile(nScene, nFrames);
    if (bReport) {
        // The record again: the segment may have a new name now.
        if (std::optional<core::SceneEntry> shown = SceneCopy(*pData, nScene)) {
            ShowFile(shown->fileName, true);
        }
    }
    return kJobOk;
}

int CTarnwickProcess::CutSceneQuiet(const std::string &path,
                                    int nScene,
                                    const JobSettings &settings)
{
    std::optional<core::SceneEntry> scene = SceneUnderItsSegmentName(nScene);
    if (!scene) {
        LogMissingScene("CTarnwickProcess::CutSceneQuiet", __LINE__, nScene);
        return kJobCannotStart;
    }
    if (FrameCountOf(*scene) < 1) {
        RefuseReversedScene(*this, nScene, *scene);
        return kJobCannotStart;
    }
    const std::string partial = core::PartialSegmentPath(scene->fileName);
    std::string command = CutCommandOf(*pData, settings, path, *scene, partial);
    if (!CommandCarriesPaths(
            "CTarnwickProcess::CutSceneQuiet", __LINE__, command, {path, partial})) {
        return kJobCannotStart;
    }
    CreateOutputFolder(settings);
    int result = ExecuteCmd(command);
    NoteWriteFailure(SegmentOfScene(nScene), scene->fileName, result);
    result = SettleCut(scene->fileName, result);
    if (result != kJobOk) {
        return result;
    }
    core::VideoInfo info;
    result = GetVideoInfoFfprobe(scene->fileName, info);
    int checked = CheckProbedSegment(*this, scene->fileName, info.frame_num);
    if (checked != kJobOk) {
        return checked;
    }
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        if (static_cast<size_t>(nScene) < pData->diff_list.size()) {
            pData->diff_list[static_cast<size_t>(nScene)].viIn = info;
        }
    }
    UpdateSceneFile(nScene, info.frame_num);
    // The preview follows the cuts as they finish.
    if (std::optional<core::SceneEntry> shown = SceneCopy(*pData, nScene)) {
        SetPreviewImage(shown->fileName, strPreviewTime.get(), true, nScene);
    }
    return result;
}

void CTarnwickProcess::UpdateSceneFile(int nScene, int nFrames)
{
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        if (nScene < 0 || static_cast<size_t>(nScene) >= pData->diff_list.size()) {
            LogMissingScene("CTarnwickProcess::UpdateSceneFile", __LINE__, nScene);
            return;
        }
        if (nFrames < 1) {
            // A record never ends before it begins; the cut that found no picture has
            // removed its segment, so the scene is stale and will be cut again.
            core::Log("%s(%d) nScene(%d), nFrames(%d): record kept\n",
                      "CTarnwickProcess::UpdateSceneFile",
                      __LINE__,
                      nScene,
                      nFrames);
            return;
        }
        core::SceneEntry &scene = pData->diff_list[static_cast<size_t>(nScene)];
        // The encoder has the last word: the record tells the frames the segment really holds.
        scene.framNo_second = scene.framNo_first + nFrames - 1;
        std::string path = core::SegmentPath(*pData, scene.framNo_first, scene.framNo_second);
        if (path != scene.fileName) {
            core::Log("%s(%d) nScene(%d), nFrames(%d): \"%s\" to \"%s\"\n",
                      "CTarnwickProcess::UpdateSceneFile",
                      __LINE__,
                      nScene,
                      nFrames,
                      scene.fileName.c_str(),
                      path.c_str());
            // A failed rename is not looked at: the next check finds the segment stale.
            std::error_code ignored;
            std::filesystem::rename(scene.fileName, path, ignored);
            scene.fileName = path;
        }
    }
    // Posted: a pool thread never waits for the user-interface thread.
    PostToTab(AppMessage::WM_APP_SCENES_CHANGED, nScene, 0);
}

int CTarnwickProcess::CutAllScenes(const std::string &path)
{
    int nScenes = 0;
    int nTotal = 0;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        nScenes = static_cast<int>(pData->diff_list.size());
        for (const core::SceneEntry &scene : pData->diff_list) {
            if (scene.bEnable) {
                nTotal += FrameCountOf(scene);
            }
        }
    }
    SendStageBegin(engine::kStageSegmentOutput, nTotal);
    const JobSettings settings = Settings();
    int nBase = 0;
    for (int i = 0; i < nScenes; ++i) {
        std::optional<core::SceneEntry> scene = SceneCopy(*pData, i);
        if (!scene) {
            break;
        }
        if (!scene->bEnable) {
            continue;
        }
        SendToTab(AppMessage::WM_APP_STAGE_TEXT, 0, 0, SceneStageText(i));
        // Every ticked scene is cut again, with the encoder settings of now; reusing good
        // segments is the final render's business.
        int result = CutScene(path, i, nTotal, nBase, true, settings);
        if (result != kJobOk) {
            return result; // the runner has reported it; finished segments stay
        }
        std::optional<core::SceneEntry> cut = SceneCopy(*pData, i);
        nBase += cut ? FrameCountOf(*cut) : 0;
    }
    SendJobState(engine::kStateDone);
    return kJobOk;
}

int CTarnwickProcess::CutCurrentScene()
{
    int nScene = -1;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        nScene = pData->list_idx;
    }
    std::optional<core::SceneEntry> scene = SceneCopy(*pData, nScene);
    if (!scene) {
        return kJobCannotStart;
    }
    core::VideoInfo facts;
    const bool good = SegmentHoldsScene(*scene, facts);
    int result = facts.frame_num >= 1 ? kJobOk : kJobCannotStart;
    if (!good) {
        int nFrames = FrameCountOf(*scene);
        SendToTab(AppMessage::WM_APP_STAGE_BEGIN, 0, nFrames, SceneStageText(nScene));
        if (CutScene(SourcePath(), nScene, nFrames, 0, false, Settings()) == kJobOk) {
            SendJobState(engine::kStateDone);
        }
    }
    return result;
}

void CTarnwickProcess::EnqueueSceneCheck(int nScene, bool bShow)
{
    if (nScene < 0 || bCancel != 0) {
        return;
    }
    JobSettings settings = SettingsOf(*pData);
    {
        std::lock_guard<std::mutex> lock(queueMutex);
        checkSettings = std::move(settings);
        const std::pair<int, bool> item{nScene, bShow};
        if (std::find(checkQueue.begin(), checkQueue.end(), item) == checkQueue.end()) {
            checkQueue.push_back(item);
        }
    }
    queueCondition.notify_one();
}

void CTarnwickProcess::StartQueueThread(int nMergeMode)
{
    if (queueThread.joinable()) {
        core::Log("%s(%d) the queue thread runs already\n",
                  "CTarnwickProcess::StartQueueThread",
                  __LINE__);
        return;
    }
    bMergeMode = nMergeMode;
    running = true;
    queueThread = std::thread([this] { ServeCheckQueue(*this); });
}

} // namespace engine
