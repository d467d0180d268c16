// The job table: which function runs which job number on which tab, and the two jobs that are
// made of other jobs (extraction with final output, conversion with merge).
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include "core/app_log.h"
#include "core/helpers.h"
#include "core/language.h"

namespace engine {
namespace {

// Numbers that name a job of their own. Any other number without a row is playback.
bool NamesOwnJob(int nJob)
{
    return nJob == kJobFinalOutput || nJob == kJobPlayScenes || nJob == kJobSegmentOutput ||
           nJob == kJobSceneExtract || nJob == kJobExtractAndOutput || nJob == kJobInputAnalysis;
}

int ModeIndex(int nMergeMode)
{
    return nMergeMode == 0 ? 0 : 1;
}

} // namespace

// The rows that the engine itself provides: playback, the scan, the analysis, the cutting and
// the two jobs made of others. The final output and the merge tab's conversions come from the
// render library (InstallRenderJobs).
void CTarnwickProcess::InstallJobTable()
{
    // Playback is the same on both tabs; any number without a job of its own plays too.
    for (int mode = 0; mode < 2; ++mode) {
        SetJobFunction(kJobPlayInput, mode, [this](int nJob) { return RunPlaybackBranch(nJob); });
        SetJobFunction(kJobPlayOutput, mode, [this](int nJob) { return RunPlaybackBranch(nJob); });
        SetJobFunction(kJobPlayScenes, mode, [this](int nJob) { return PlayScenes(nJob); });
        SetPlaybackFunction(mode, [this](int nJob) { return RunPlaybackBranch(nJob); });
    }
    SetJobFunction(kJobSceneExtract, 0, [this](int) {
        return ProcessDiffFrame(SourcePath(), ThresholdArgument());
    });
    SetJobFunction(kJobSceneExtract, 1, [this](int) { return ProcessAnalysis(); });
    SetJobFunction(kJobExtractAndOutput, 0, [this](int nJob) { return ProcessDiffTrim(nJob); });
    SetJobFunction(kJobExtractAndOutput, 1, [this](int nJob) { return ProcessConvMerge(nJob); });
    // Segment output: a source that cannot be opened ends the job with 0; only the cutting's
    // result counts.
    SetJobFunction(kJobSegmentOutput, 0, [this](int) {
        std::string path = SourcePath();
        return ReloadVideoInfo(path, false) == kJobOk ? CutAllScenes(path) : kJobOk;
    });
}

std::string CTarnwickProcess::PictureChain(
    CTarnwickProcess &engine, bool bVf, bool bPad, bool bPreview, bool bRotated, int nScene)
{
    return m_pictureChain ? m_pictureChain(engine, bVf, bPad, bPreview, bRotated, nScene) : "null";
}

void CTarnwickProcess::SetJobFunction(int nJob, int nMergeMode, JobFunction fn)
{
    m_jobTable[{ModeIndex(nMergeMode), nJob}] = std::move(fn);
}

void CTarnwickProcess::SetPlaybackFunction(int nMergeMode, JobFunction fn)
{
    m_playback[ModeIndex(nMergeMode)] = std::move(fn);
}

int CTarnwickProcess::RunJobRow(int nJob, bool bPlaybackBranch)
{
    int mode = ModeIndex(bMergeMode);
    auto row = m_jobTable.find({mode, nJob});
    if (row != m_jobTable.end() && row->second) {
        if (IsPlaybackJobNumber(nJob)) {
            nPlayJob = nJob;
        }
        return row->second(nJob);
    }
    if (bPlaybackBranch && !NamesOwnJob(nJob) && m_playback[mode]) {
        nPlayJob = nJob;
        return m_playback[mode](nJob);
    }
    core::Log("%s(%d) no function for nJob(%d), bMergeMode(%d)\n",
              "CTarnwickProcess::RunJobRow",
              __LINE__,
              nJob,
              mode);
    SendJobState(engine::kStateFailed, core::StrPrintf("Job(%d) is not available", nJob));
    return kJobCannotStart;
}

int CTarnwickProcess::ProcessDiffTrim(int /*nJob*/)
{
    core::Log("%s(%d) input_file(%s), threshold(%d), output_file(%s)\n",
              "CTarnwickProcess::ProcessDiffTrim",
              __LINE__,
              SourcePath().c_str(),
              ThresholdArgument(),
              OutputPath().c_str());
    int result = RunJobRow(kJobSceneExtract, false);
    if (result == kJobOk && !DiffListEmpty()) {
        result = RunJobRow(kJobFinalOutput, false);
    }
    return result;
}

int CTarnwickProcess::ProcessConvMerge(int /*nJob*/)
{
    core::Log("%s(%d) output_file(%s)\n",
              "CTarnwickProcess::ProcessConvMerge",
              __LINE__,
              OutputPath().c_str());
    int result = RunJobRow(kJobSegmentOutput, false);
    if (result == kJobOk && !DiffListEmpty()) {
        result = RunJobRow(kJobFinalOutput, false);
    }
    return result;
}

bool CTarnwickProcess::DiffListEmpty() const
{
    std::lock_guard<std::mutex> lock(pData->sceneLock.m);
    return pData->diff_list.empty();
}

} // namespace engine
