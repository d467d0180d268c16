// Frame times of the working input: the check of the first frames for a constant rate, the full
// read of every frame's time by ffprobe, and the "_pts.csv" file that keeps them.
#include "engine/job_states.h"
#include "engine/tarnwick_process.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "core/app_log.h"
#include "core/file_io.h"
#include "core/language.h"
#include "core/paths.h"
#include "engine/pts_parse.h"
#include "engine/status_parser.h"

namespace engine {
namespace {

// Chunks are read 4095 bytes at a time into a buffer of 4096 and closed with a zero.
constexpr long kChunkRead = 4095;
constexpr long kChunkBuffer = 4096;
// The computed list reports its progress, and looks for a stop, every this many frames.
constexpr int kProgressStep = 100;

// The list of a constant rate: frame i at i / viInput.fps, for frames 0 to viInput.frame_num.
// Fills the bar as it goes. 0; -1 when no time came out; -2 when a stop came first.
int ComputeEvenPtsList(CTarnwickProcess &engine, std::vector<std::string> &lines)
{
    core::CTarnwickData &data = *engine.pData;
    double step = 1.0 / data.viInput.fps;
    int frameNum = data.viInput.frame_num;
    for (int i = 0; i <= frameNum; ++i) {
        lines.push_back(PtsText(i * step));
        data.pts_list.push_back(std::strtod(lines.back().c_str(), nullptr));
        if (i % kProgressStep == 0) {
            engine.SendToTab(AppMessage::WM_APP_PROGRESS, data.viCurrent.frame_num, i);
            if (engine.bCancel != 0) {
                return kJobStopped;
            }
        }
    }
    engine.SendToTab(
        AppMessage::WM_APP_PROGRESS, data.viCurrent.frame_num, data.viCurrent.frame_num);
    return data.pts_list.empty() ? kJobCannotStart : kJobOk;
}

// Writes lines to pts_file, in the output folder, which is made first. The file is replaced
// as a whole or not at all. 0, or -1 when it cannot be written or the list is empty.
int WritePtsFile(const core::CTarnwickData &data, const std::vector<std::string> &lines)
{
    core::CreateFolders(core::SetTrailingSeparator(data.output_folder, false));
    std::string error;
    if (!core::WriteFileAtomically(data.pts_file, PtsFileText(lines), &error)) {
        core::Log("%s(%d) %s\n", "CTarnwickProcess::EnsurePtsList", __LINE__, error.c_str());
        return kJobCannotStart;
    }
    return data.pts_list.empty() ? kJobCannotStart : kJobOk;
}

bool PtsFileExists(const std::string &path)
{
    std::error_code ec;
    return !path.empty() && std::filesystem::exists(path, ec);
}

} // namespace

int CTarnwickProcess::EnsurePtsList(const std::string &path)
{
    core::CTarnwickData &data = *pData;
    size_t wanted = static_cast<size_t>(static_cast<long long>(data.viInput.frame_num) + 1);
    if (PtsFileExists(data.pts_file) && data.pts_list.size() == wanted) {
        ptsSource = PtsSource::Kept;
        return kJobOk;
    }
    ptsSource = PtsSource::None;
    SendStageBegin(engine::kStageFrameRateAnalysis, data.viInput.frame_num);
    data.pts_list.clear();
    std::vector<std::string> lines;
    int result = kJobCannotStart;
    if (!CheckPtsDeltaFromFirstFrames(path)) {
        result = GetPtsListFromFfprobe(path, lines, data.pts_list, true);
        ptsSource = PtsSource::Read;
    }
    if (result == kJobCannotStart) {
        // A constant rate, or ffprobe could not start: the times follow from the rate.
        lines.clear();
        data.pts_list.clear();
        result = ComputeEvenPtsList(*this, lines);
        ptsSource = PtsSource::Computed;
    }
    if (result == kJobOk) {
        result = WritePtsFile(data, lines);
    }
    SendEndState(result);
    return result;
}

bool CTarnwickProcess::CheckPtsDeltaFromFirstFrames(const std::string &path)
{
    std::vector<std::string> texts;
    std::vector<double> values;
    if (GetPtsListFromFfprobe(path, texts, values, false) != 0) {
        return false;
    }
    std::optional<PtsDeltaStats> stats = PtsDeltaStatsOf(values);
    if (!stats) {
        return false;
    }
    bool regular = IsConstantFrameRate(*stats, pData->viInput.fps);
    core::Log("%s(%d) mean=%.6f stddev=%.6f range=%.6f\n",
              "CTarnwickProcess::CheckPtsDeltaFromFirstFrames",
              __LINE__,
              stats->mean,
              stats->stddev,
              stats->range);
    return regular;
}

int CTarnwickProcess::GetPtsListFromFfprobe(const std::string &path,
                                            std::vector<std::string> &texts,
                                            std::vector<double> &values,
                                            bool bAll)
{
    const char *function = "CTarnwickProcess::GetPtsListFromFfprobe";
    std::string command = PtsListCommand(path);
    if (!CommandCarriesPaths(function, __LINE__, command, {path})) {
        return kJobCannotStart;
    }
    ChildProcess child;
    if (StartChildProcess(command, child) != 0) {
        LogCommandResult(function, __LINE__, command, kJobCannotStart);
        return kJobCannotStart;
    }
    int64_t total = pData->viCurrent.frame_num;
    std::function<void(int)> onLine;
    if (bAll) {
        onLine = [this, total](int count) { PostToTab(AppMessage::WM_APP_PROGRESS, total, count); };
    }
    // The check needs the first frames only: it ends the tool once it has more than those,
    // and the tool's end counts as success.
    PtsLineReader reader(bAll ? -1 : kPtsCheckLines);
    char chunk[kChunkBuffer];
    for (;;) {
        long n = child.Read(chunk, kChunkRead);
        if (n <= 0) {
            break;
        }
        chunk[n] = '\0';
        if (reader.Feed(ChunkText(chunk, n), texts, values, onLine)) {
            child.Kill(kJobOk);
        }
        if (bCancel != 0) {
            child.Kill(kJobStopped);
        }
    }
    int exitCode = child.Wait();
    if (bAll && exitCode == kJobOk) {
        if (reader.TakeLastLine(texts, values)) {
            PostToTab(AppMessage::WM_APP_PROGRESS, total, reader.Count() + 1);
        }
        ExtendPtsList(texts, values, pData->viInput.frame_num);
    }
    LogCommandResult(function, __LINE__, command, exitCode);
    return exitCode;
}

} // namespace engine
