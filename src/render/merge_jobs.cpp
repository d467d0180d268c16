// The jobs of the merge tab: each source converted to a segment of the chosen size and rate
// (job 1052), and the finished film of the converted rows (job 1006): segments checked and
// converted again side by side, joined by merge graphs, encoded once more.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "core/app_log.h"
#include "core/file_io.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/merge_formats.h"
#include "core/paths.h"
#include "core/project_names.h"
#include "core/source_stamp.h"
#include "engine/encoder_presets.h"
#include "engine/job_pool.h"
#include "render/conversion_commands.h"
#include "render/job_internals.h"
#include "render/video_filter.h"

namespace engine {
namespace {

constexpr const char *kConvertInput = "CTarnwickProcess::ConvertInput";
constexpr const char *kConv = "CTarnwickProcess::ProcessConv";

void DeleteQuietly(const std::string &path)
{
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

// The chosen target of the merge tab.
struct MergeTarget
{
    core::MergeSize size;
    double fps = 0.0;
    std::string rate; // "%d/%d"
};

MergeTarget TargetOf(int nRateIndex, int nSizeIndex)
{
    const core::MergeRate rate = core::MergeRateAt(nRateIndex);
    return {core::MergeSizeAt(nSizeIndex), core::MergeRateFps(rate), core::MergeRateText(rate)};
}

// Frames that the ticked rows' segments have or are planned to have.
int TickedFrames(core::CTarnwickData &data)
{
    std::lock_guard<std::mutex> lock(data.sceneLock.m);
    int total = 0;
    for (const core::SceneEntry &row : data.diff_list) {
        total += row.bEnable ? row.viOut.frame_num : 0;
    }
    return total;
}

} // namespace

int CTarnwickProcess::ConvertInput(int nRow, int nTotal, int nBase, bool bReport)
{
    if (bReport) {
        SendToTab(AppMessage::WM_APP_CURRENT_SCENE, nRow, 0);
    }
    std::optional<core::SceneEntry> row = SceneCopy(*pData, nRow);
    if (!row) {
        return kJobCannotStart;
    }
    const MergeTarget target = TargetOf(nRateIndex, nSizeIndex);
    const int nFrames = row->viOut.frame_num;
    // A segment of the same name made from another source is not this row's.
    if (core::MadeFromSource(row->fileName, row->strWorkFile)) {
        core::VideoInfo facts;
        if (GetVideoInfoFfprobe(row->fileName, facts) == kJobOk && facts.frame_num == nFrames &&
            facts.r_frame_rate == target.rate && facts.width == target.size.width &&
            facts.height == target.size.height) {
            return kJobOk; // the segment is up to date
        }
    }
    const render::EncodeArgs args{ToolPrefix(pData->bUseCuda != 0),
                                  EncoderText(pData->bUseCuda, pData->nEncodePreset),
                                  target.fps,
                                  target.rate};
    // Written under a partial name, so that a kill never leaves half a segment that a later
    // run would take for good.
    const std::string partial = core::PartialSegmentPath(row->fileName);
    core::RemoveSourceStamp(row->fileName);
    const std::string command =
        render::ConvertInputCommand(args,
                                    row->strWorkFile,
                                    render::SilenceArgs(row->viIn.bHasAudio),
                                    render::ConformingChain(target.size.width, target.size.height),
                                    partial,
                                    nFrames);
    core::CreateFolders(core::SetTrailingSeparator(pData->output_folder, false));
    int result = kJobCannotStart;
    if (CommandCarriesPaths(kConvertInput, __LINE__, command, {row->strWorkFile, partial})) {
        result =
            bReport ? ExecuteCmdWithProgress(false, command, nTotal, nBase) : ExecuteCmd(command);
    }
    result = SettlePartialFile(result, partial, row->fileName);
    if (result != kJobOk) {
        DeleteQuietly(row->fileName);
        return result;
    }
    core::WriteSourceStamp(row->fileName, row->strWorkFile);
    core::VideoInfo out;
    const int probe = GetVideoInfoFfprobe(row->fileName, out);
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        if (static_cast<size_t>(nRow) < pData->diff_list.size()) {
            pData->diff_list[static_cast<size_t>(nRow)].viOut = out;
        }
    }
    if (out.frame_num != nFrames) {
        PostToTab(AppMessage::WM_APP_SCENES_CHANGED, nRow, 0);
    }
    if (bReport) {
        ShowFile(row->fileName, true);
    }
    return probe;
}

int CTarnwickProcess::ConvertAllInputs()
{
    int result = ProcessAnalysis();
    if (result != kJobOk) {
        return result;
    }
    const MergeTarget target = TargetOf(nRateIndex, nSizeIndex);
    const int nTotal = TickedFrames(*pData);
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->viCurrent.fps = target.fps;
    }
    SendStageBegin(engine::kStageSegmentOutput, nTotal);
    int base = 0;
    for (int i = 0; result == kJobOk; ++i) {
        std::optional<core::SceneEntry> row = SceneCopy(*pData, i);
        if (!row) {
            break;
        }
        if (!row->bEnable) {
            continue;
        }
        SendToTab(AppMessage::WM_APP_STAGE_TEXT,
                  0,
                  0,
                  core::StrPrintf(
                      "%s (%03d)", engine::StageName(engine::kStageSegmentOutput).c_str(), i + 1));
        result = ConvertInput(i, nTotal, base, true);
        if (std::optional<core::SceneEntry> converted = SceneCopy(*pData, i)) {
            base += converted->viOut.frame_num; // as it stands after the conversion
        }
    }
    if (result != kJobOk) {
        return result;
    }
    const int nSum = TickedFrames(*pData);
    if (nSum != nTotal) {
        // The segments came out with other lengths than planned: the bar ends full all the same.
        PostToTab(AppMessage::WM_APP_PROGRESS, nSum, nSum);
        PostToTab(AppMessage::WM_APP_PROGRESS, nSum, nSum);
    }
    SendJobState(engine::kStateDone);
    return kJobOk;
}

int CTarnwickProcess::ProcessConv(const std::string &output)
{
    core::Log("%s(%d) output_file(%s)\n", kConv, __LINE__, output.c_str());
    const render::TrimNames names{pData->output_folder,
                                  core::ReplaceExtension(pData->output_name, "")};
    int nScenes = 0;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        nScenes = static_cast<int>(pData->diff_list.size());
    }
    SendStageBegin(engine::kStagePrecheck, nScenes);
    core::DeleteByPattern(names.MergeMask()); // leftovers of a broken run
    int result = ProcessAnalysis();
    if (result != kJobOk) {
        return result;
    }
    core::CreateFolders(core::SetTrailingSeparator(pData->output_folder, false));
    const MergeTarget target = TargetOf(nRateIndex, nSizeIndex);
    const double fps = target.fps > 0 ? target.fps : pData->viCurrent.fps;
    TrimPrecheck checked;
    result = PrecheckConversions(nScenes, fps, checked);
    if (result != kJobOk) {
        return result;
    }
    SendStageBegin(engine::kStageFinalMerge, -1);
    std::string first;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        first = pData->diff_list.empty() ? std::string() : pData->diff_list.front().fileName;
    }
    // viCurrent then holds the facts of a converted segment, at the chosen rate.
    result = OpenVideoFile(first);
    if (result != kJobOk) {
        return result;
    }
    const std::string prefix = ToolPrefix(pData->bUseCuda != 0);
    const std::string encoder = EncoderText(pData->bUseCuda, pData->nEncodePreset);
    const render::EncodeArgs mergeArgs{
        prefix, encoder, pData->viCurrent.fps, pData->viCurrent.r_frame_rate};
    SendToTab(AppMessage::WM_APP_STAGE_TEXT, 0, 0, engine::StageName(engine::kStageSceneMerge));
    // Without the transition the graph joins end to end, through the concat filter.
    const double fade =
        Settings().transition != 0 && checked.nCount >= 2 ? pData->dTransitionSec : 0.0;
    const int nFinal = render::FadedFrameCount(checked.nTotal, fps, checked.nCount, fade);
    std::string merged;
    result = MergeByGraphs(names, mergeArgs, checked.inputs, {fade, target.rate}, merged);
    if (result != kJobOk) {
        core::DeleteByPattern(names.MergeMask());
        return result;
    }
    return EncodeFinal(names, {prefix, encoder, target.fps, target.rate}, merged, nFinal, output);
}

int CTarnwickProcess::PrecheckConversions(int nScenes, double fps, TrimPrecheck &checked)
{
    std::vector<int> results;
    results.reserve(static_cast<size_t>(nScenes)); // pool tasks hold their slots' addresses
    std::atomic<int> nDone{0};
    std::set<std::string> seen;
    {
        JobPool pool(pData->bUseCuda != 0);
        for (int i = 0; i < nScenes; ++i) {
            std::optional<core::SceneEntry> row = SceneCopy(*pData, i);
            if (!row) {
                break;
            }
            if (!row->bEnable) {
                continue;
            }
            const int frames = row->viOut.frame_num;
            checked.nTotal += frames;
            checked.inputs.push_back({row->fileName, fps > 0 ? frames / fps : 0.0, i + 1});
            if (!seen.insert(row->fileName).second) {
                // The same file again: converted or checked once in this run already.
                PostToTab(AppMessage::WM_APP_PROGRESS, nScenes, ++nDone);
                continue;
            }
            if (bCancel != 0) {
                continue;
            }
            const int count = GetFrameCount(row->fileName);
            if (count >= 1 && count == frames &&
                core::MadeFromSource(row->fileName, row->strWorkFile)) {
                PostToTab(AppMessage::WM_APP_PROGRESS, nScenes, ++nDone);
            } else {
                results.push_back(kJobOk);
                int *slot = &results.back();
                pool.Run([this, slot, &nDone, i, nScenes] {
                    *slot = ConvertInput(i, 0, 0, false);
                    PostToTab(AppMessage::WM_APP_PROGRESS, nScenes, ++nDone);
                });
            }
            ++checked.nCount;
        }
        SendJobState(engine::kStateWaiting);
        pool.WaitAll();
    }
    return SettlePoolResults(kConv, results);
}

} // namespace engine
