// The analysis of the merge tab's rows: each source's facts, its working MP4 when needed, and
// the facts that its segment will have at the chosen rate and size.
#include <cmath>
#include <filesystem>
#include <system_error>

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"
#include "core/merge_formats.h"
#include "core/source_stamp.h"
#include "engine/input_analysis.h"
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

namespace engine {
namespace {

bool Exists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

// The facts a row's segment is to have: the chosen rate and size, and the source's length in
// frames of that rate.
core::VideoInfo
TargetFacts(const core::VideoInfo &in, const core::MergeRate &rate, const core::MergeSize &size)
{
    core::VideoInfo out = in;
    out.r_frame_rate = core::MergeRateText(rate);
    out.fps = core::MergeRateFps(rate);
    const double seconds = in.fps > 0.0 ? in.frame_num / in.fps : 0.0;
    out.frame_num = static_cast<int>(std::floor(seconds * rate.num / rate.den));
    out.width = size.width;
    out.height = size.height;
    return out;
}

} // namespace

int CTarnwickProcess::ProcessAnalysis()
{
    core::Log("%s(%d)\n", "CTarnwickProcess::ProcessAnalysis", __LINE__);
    size_t n = 0;
    int todo = 0;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        n = pData->diff_list.size();
        for (const core::SceneEntry &row : pData->diff_list) {
            todo += row.bAnalyzed ? 0 : 1;
        }
    }
    if (todo == 0) {
        return kJobOk;
    }
    SendStageBegin(engine::kStageVideoAnalysis, todo);
    int result = kJobOk;
    int done = 0;
    for (size_t i = 0; i < n && result == kJobOk; ++i) {
        std::string file;
        {
            std::lock_guard<std::mutex> lock(pData->sceneLock.m);
            const core::SceneEntry &row = pData->diff_list[i];
            if (row.bAnalyzed) {
                continue;
            }
            file = row.strOriginalFile.empty() ? row.strWorkFile : row.strOriginalFile;
            pData->input_file = file;
            pData->viInput = core::VideoInfo{};
        }
        result = AnalyzeMergeSource(static_cast<int>(i));
        if (result == kJobOk) {
            PostToTab(AppMessage::WM_APP_PROGRESS, static_cast<int64_t>(n), ++done);
        }
    }
    if (result != kJobOk && bCancel != 0) {
        // A probe that a stop killed reports a failure of its own: the file is not to blame.
        result = kJobStopped;
    }
    SendEndState(result);
    return result;
}

int CTarnwickProcess::AnalyzeMergeSource(int nRow)
{
    const std::string input = pData->InputFile();
    int r = OpenVideoFile(input);
    if (r != kJobOk) {
        return r;
    }
    const int frames = pData->viCurrent.frame_num;
    const int position = nPreviewFrame < 1 ? 0 : nPreviewFrame + 1;
    SendToTab(AppMessage::WM_APP_POSITION, std::min(frames, position), frames);
    core::SnapFrameRate(pData->viCurrent, true);
    std::string src;
    r = PrepareWorkingFile(src);
    if (r != kJobOk) {
        return r;
    }
    const std::string working = pData->input_mp4_file;
    if (!working.empty()) {
        r = ReloadVideoInfo(working, bMergeMode == 1);
        if (r != kJobOk) {
            return r;
        }
    }
    const core::MergeRate rate = core::MergeRateAt(nRateIndex);
    const core::MergeSize size = core::MergeSizeAt(nSizeIndex);
    std::string segment;
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->input_mp4_file.clear();
        pData->list_idx = nRow;
        core::SceneEntry &row = pData->diff_list[static_cast<size_t>(nRow)];
        if (!working.empty()) {
            row.strOriginalFile = input;
            pData->input_file = working;
        }
        row.bAnalyzed = true;
        row.strWorkFile = src;
        row.viIn = pData->viCurrent;
        row.viOut = TargetFacts(pData->viCurrent, rate, size);
        row.framNo_first = 0;
        row.framNo_second = row.viOut.frame_num - 1;
        segment = row.fileName;
    }
    if (core::MadeFromSource(segment, src)) {
        // A segment that cannot be read is made anew by the conversion: it does not fail the
        // analysis of its source.
        core::VideoInfo facts;
        if (GetVideoInfoFfprobe(segment, facts) == kJobOk &&
            facts.r_frame_rate == core::MergeRateText(rate) && facts.width == size.width &&
            facts.height == size.height) {
            // A finished segment with the wanted properties counts with its real frames.
            std::lock_guard<std::mutex> lock(pData->sceneLock.m);
            pData->diff_list[static_cast<size_t>(nRow)].viOut = facts;
        }
    }
    PostToTab(AppMessage::WM_APP_SCENES_CHANGED, nRow, 0);
    {
        std::lock_guard<std::mutex> lock(pData->sceneLock.m);
        pData->dTransitionSec =
            MergeTransitionSeconds(pData->viCurrent.fps, core::MergeRateFps(rate));
    }
    if (EngineTab *tab = CurrentTab()) {
        tab->OnInputAnalysed(true); // the host's refresh of the tab, keeping the selection
    }
    const std::string output = pData->GetOutputPath();
    const std::string file = Exists(output) ? output : src;
    PreviewAnalysedFile(file);
    return kJobOk;
}

} // namespace engine
