// The final render of the scene tab (job 1006, and the second half of job 1057): the precheck
// that reuses good segments and recuts stale ones side by side, the merge through the concat
// demuxer or merge graphs in levels, and the final encode with picture chain and captions.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/app_log.h"
#include "core/file_io.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "engine/encoder_presets.h"
#include "engine/job_pool.h"
#include "render/job_internals.h"
#include "render/merge_graph.h"
#include "render/trim_commands.h"

namespace engine {
namespace {

constexpr const char *kTrim = "CTarnwickProcess::ProcessTrim";

int FramesOf(const core::SceneEntry &scene)
{
    return scene.framNo_second - scene.framNo_first + 1;
}

} // namespace

int CTarnwickProcess::ProcessTrim(const std::string &input, const std::string &output)
{
    core::Log(
        "%s(%d) input_file(%s), output_file(%s)\n", kTrim, __LINE__, input.c_str(), output.c_str());
    const render::TrimNames names{
        pData->output_folder, core::ReplaceExtension(core::FileNamePart(pData->input_file), "")};
    int nScenes = 0;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        nScenes = static_cast<int>(pData->diff_list.size());
    }
    SendStageBegin(engine::kStagePrecheck, nScenes);
    core::DeleteByPattern(names.MergeMask()); // leftovers of a broken run
    int result = ReloadVideoInfo(input, false);
    if (result != kJobOk) {
        return bCancel != 0 ? kJobStopped : result; // a probe that a stop ended says 1
    }
    SetPreviewImage(input, strPreviewTime.get(), false, -1);
    core::CreateFolders(core::SetTrailingSeparator(pData->output_folder, false));
    TrimPrecheck checked;
    result = PrecheckSegments(input, nScenes, checked);
    if (result != kJobOk) {
        return result;
    }
    std::string merged;
    int nFinal = 0;
    result = MergeSegments(names, checked, merged, nFinal);
    if (result != kJobOk) {
        core::DeleteByPattern(names.MergeMask());
        return result;
    }
    const render::EncodeArgs args{ToolPrefix(pData->bUseCuda != 0),
                                  EncoderText(pData->bUseCuda, pData->nEncodePreset),
                                  pData->viCurrent.fps,
                                  pData->viInput.r_frame_rate};
    return EncodeFinal(names, args, merged, nFinal, output);
}

int CTarnwickProcess::PrecheckSegments(const std::string &input, int nScenes, TrimPrecheck &checked)
{
    std::vector<int> results(static_cast<size_t>(nScenes), kJobOk); // one slot per queued cut
    std::atomic<int> nDone{0};
    int nQueued = 0;
    const JobSettings settings = Settings();
    {
        JobPool pool(settings.useCuda != 0);
        for (int i = 0; i < nScenes; ++i) {
            std::optional<core::SceneEntry> named = SceneUnderItsSegmentName(i);
            if (!named) {
                break;
            }
            const core::SceneEntry &scene = *named;
            if (!scene.bEnable) {
                continue;
            }
            const double fps = pData->viCurrent.fps;
            checked.nTotal += FramesOf(scene);
            // Listed before any recut: a cut that changes the length renames the file, and the
            // merge then finds the old name missing rather than a wrong length.
            checked.inputs.push_back(
                {scene.fileName, fps > 0 ? FramesOf(scene) / fps : 0.0, i + 1});
            if (bCancel != 0) {
                continue;
            }
            core::VideoInfo info;
            const bool good = SegmentHoldsScene(scene, info);
            {
                std::lock_guard<std::mutex> lock(pData->sceneLock.m);
                if (static_cast<size_t>(checked.nCount) < pData->diff_list.size()) {
                    pData->diff_list[static_cast<size_t>(checked.nCount)].viIn = info;
                }
            }
            if (good) {
                PostToTab(AppMessage::WM_APP_PROGRESS, nScenes, ++nDone);
            } else {
                const int slot = nQueued++;
                pool.Run([this, &results, &nDone, &settings, input, i, slot, nScenes] {
                    PostToTab(AppMessage::WM_APP_PROGRESS, nScenes, nDone + 1);
                    results[static_cast<size_t>(slot)] = CutSceneQuiet(input, i, settings);
                    ++nDone;
                });
            }
            ++checked.nCount;
        }
        SendJobState(engine::kStateWaiting);
        pool.WaitAll();
    }
    results.resize(static_cast<size_t>(nQueued));
    return SettlePoolResults(kTrim, results);
}

int CTarnwickProcess::SettlePoolResults(const char *function, const std::vector<int> &results)
{
    for (const int result : results) {
        if (result == kJobOk) {
            continue;
        }
        if (result == kJobStopped) {
            SendJobState(engine::kStateStopped);
        } else {
            SendJobState(engine::kStateFailed, core::StrPrintf("ExitCode(%d)", result));
        }
        LogCommandResult(function, __LINE__, "precheck", result);
        return result;
    }
    return kJobOk;
}

int CTarnwickProcess::MergeSegments(const render::TrimNames &names,
                                    const TrimPrecheck &checked,
                                    std::string &merged,
                                    int &nFinal)
{
    SendStageBegin(engine::kStageFinalMerge, -1);
    std::string first;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        first = pData->diff_list.empty() ? std::string() : pData->diff_list.front().fileName;
    }
    // viCurrent then holds the facts of a segment: its size, rate and whether it has sound.
    int result = OpenVideoFile(first);
    if (result != kJobOk) {
        return bCancel != 0 ? kJobStopped : result;
    }
    const render::EncodeArgs args{ToolPrefix(pData->bUseCuda != 0),
                                  EncoderText(pData->bUseCuda, pData->nEncodePreset),
                                  pData->viCurrent.fps,
                                  pData->viInput.r_frame_rate};
    SendToTab(AppMessage::WM_APP_STAGE_TEXT, 0, 0, engine::StageName(engine::kStageSceneMerge));
    if (Settings().transition == 0 || checked.nCount < 2) {
        nFinal = checked.nTotal;
        merged = names.Merged();
        return MergeByConcat(names, args, merged, checked.nTotal);
    }
    const double fade = pData->dTransitionSec;
    nFinal = render::FadedFrameCount(checked.nTotal, args.fps, checked.nCount, fade);
    return MergeByGraphs(names, args, checked.inputs, {fade, pData->viInput.r_frame_rate}, merged);
}

int CTarnwickProcess::MergeByConcat(const render::TrimNames &names,
                                    const render::EncodeArgs &args,
                                    const std::string &merged,
                                    int nTotal)
{
    PostToTab(AppMessage::WM_APP_PROGRESS, nTotal, 0);
    std::vector<std::string> files;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        for (const core::SceneEntry &scene : pData->diff_list) {
            if (scene.bEnable) {
                files.push_back(scene.fileName); // the names after all cuts
            }
        }
    }
    // A list that cannot be written makes the tool fail below, and that is reported.
    core::WriteFileAtomically(names.FileList(), render::ConcatListText(files));
    const std::string command = render::ConcatMergeCommand(args, names.FileList(), merged);
    if (!CommandCarriesPaths(kTrim, __LINE__, command, {names.FileList(), merged})) {
        return kJobCannotStart;
    }
    const int result = ExecuteCmdWithProgress(false, command, nTotal, 0);
    NoteWriteFailure("the joined scenes", merged, result);
    return result;
}

int CTarnwickProcess::MergeByGraphs(const render::TrimNames &names,
                                    const render::EncodeArgs &args,
                                    const std::vector<render::MergeStep> &inputs,
                                    const GraphForm &form,
                                    std::string &merged)
{
    const double fade = form.fade;
    const int tooShort = render::InputShorterThanFade(fade, inputs);
    if (tooShort >= 0) {
        const render::MergeStep &step = inputs[static_cast<size_t>(tooShort)];
        const std::string reason =
            core::StrPrintf(bMergeMode != 0 ? "file %d of the list lasts %.2f s, less than the "
                                              "cross-fade of %.2f s: leave it out or join "
                                              "without cross-fades"
                                            : "scene %d lasts %.2f s, less than the cross-fade "
                                              "of %.2f s: lengthen it, untick it or join "
                                              "without cross-fades",
                            step.row,
                            step.duration,
                            fade);
        core::Log("%s(%d) %s\n", "CTarnwickProcess::MergeByGraphs", __LINE__, reason.c_str());
        NoteFailure(reason);
        SendJobState(engine::kStateFailed, reason);
        return kJobCannotStart;
    }
    const bool bAudio = pData->viCurrent.bHasAudio;
    std::vector<double> durations;
    for (const render::MergeStep &step : inputs) {
        durations.push_back(step.duration);
    }
    const render::MergePlan plan =
        render::PlanMerge(durations,
                          render::MergeBatchSize(pData->viCurrent.width, pData->viCurrent.height),
                          fade,
                          args.fps);
    PostToTab(AppMessage::WM_APP_PROGRESS, plan.nPlanned, 0);
    std::vector<render::MergeStep> list = inputs;
    int fileNumber = 0;
    for (const std::vector<render::MergeGroup> &level : plan.levels) {
        std::vector<render::MergeStep> next;
        for (const render::MergeGroup &group : level) {
            std::vector<render::MergeStep> steps(list.begin() + group.first,
                                                 list.begin() + group.first + group.count);
            ++fileNumber;
            const std::string name =
                group.count < list.size() ? names.MergedPart(fileNumber) : names.Merged();
            std::vector<std::string> paths;
            for (const render::MergeStep &step : steps) {
                paths.push_back(step.path);
            }
            const std::string command = render::GraphMergeCommand(
                args,
                paths,
                render::FilterComplexText(render::BuildMergeGraph(fade, steps, form.rate, bAudio)),
                bAudio,
                name);
            paths.push_back(name);
            if (!CommandCarriesPaths(kTrim, __LINE__, command, paths)) {
                return kJobCannotStart;
            }
            int result = ExecuteCmdWithProgress(false, command, plan.nPlanned, group.progressBase);
            NoteWriteFailure("the joined scenes", name, result);
            if (result != kJobOk) {
                return result;
            }
            next.push_back({name, group.duration});
        }
        list = std::move(next);
    }
    merged = list.empty() ? names.Merged() : list.front().path;
    return kJobOk;
}

int CTarnwickProcess::EncodeFinal(const render::TrimNames &names,
                                  const render::EncodeArgs &args,
                                  const std::string &merged,
                                  int nFinal,
                                  const std::string &output)
{
    const std::string chain = BuildVideoFilter(true, false, false, false, -1);
    // Written under a partial name and renamed when whole, so that a kill never leaves a
    // broken film under the name the user asked for, and a stopped or failed encode leaves the
    // previous film as it was: only a finished one replaces it.
    const std::string partial = core::PartialSegmentPath(output);
    // The film ends at the length the job planned, whatever a merge step gave in excess.
    const std::string command = render::FinalEncodeCommand(args, merged, chain, partial, nFinal);
    int result = kJobCannotStart;
    if (CommandCarriesPaths(kTrim, __LINE__, command, {merged, partial})) {
        SendStageBegin(engine::kStageFinalMerge, nFinal);
        result = ExecuteCmdWithProgress(false, command, nFinal, 0);
        NoteWriteFailure("the film", output, result);
    }
    core::DeleteByPattern(names.MergeMask());
    result = SettlePartialFile(result, partial, output);
    if (result != kJobOk) {
        return result;
    }
    SendJobState(engine::kStateDone);
    nPlayJob = kJobPlayOutput; // the play button now means the output
    if (output != strPreviewFile.get()) {
        nPreviewFrame = 0;
        strPreviewTime = "0";
        result = ReloadVideoInfo(output, false);
        if (result != kJobOk) {
            return result;
        }
    }
    SetPreviewImage(output, strPreviewTime.get(), false, -1);
    return kJobOk;
}

} // namespace engine
