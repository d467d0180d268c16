// The pure pieces of the final render: file names of the merge, the plan of merge levels, the
// concat list, and the command texts of the merge and the final encode.
#include "render/trim_commands.h"

#include <algorithm>
#include <cmath>

#include "core/helpers.h"

namespace render {
namespace {

// The MP4 muxer of ffmpeg 5.1 cannot hold PCM audio ("codec not currently supported in
// container"), so the merge files, which keep their ".mp4" names, are QuickTime files: the same
// structure, and PCM is allowed there. Only the final encode writes a real MP4.
constexpr const char *kIntermediateFormat = "-f mov ";

// "-c:v %s -g %d -keyint_min 1 -r %s": the encoder, a key frame about once a second, the rate.
std::string VideoArgs(const EncodeArgs &args)
{
    return core::StrPrintf("-c:v %s -g %d -keyint_min 1 -r %s",
                           args.encoderText.c_str(),
                           static_cast<int>(std::lround(args.fps)),
                           args.r_frame_rate.c_str());
}

} // namespace

std::string TrimNames::MergedPart(int number) const
{
    return core::StrPrintf("%s%s_merged_%d.mp4", folder.c_str(), base.c_str(), number);
}

int MergeBatchSize(int width, int height)
{
    const double pixels = static_cast<double>(height) * width;
    if (!(pixels > 0)) {
        return 25;
    }
    // About 84 million pixels in one graph.
    return static_cast<int>(std::min(25.0, std::round(8388608.0 / pixels * 10.0)));
}

MergePlan PlanMerge(const std::vector<double> &durations, int nBatch, double fade, double fps)
{
    MergePlan plan;
    const size_t batch = static_cast<size_t>(std::max(nBatch, 1));
    std::vector<double> work = durations;
    int running = 0;
    while (work.size() > 1) {
        std::vector<MergeGroup> level;
        std::vector<double> next;
        for (size_t first = 0; first < work.size(); first += batch) {
            MergeGroup group;
            group.first = first;
            group.count = std::min(batch, work.size() - first);
            group.progressBase = running;
            double sum = 0.0;
            for (size_t i = first; i < first + group.count; ++i) {
                sum += work[i];
            }
            group.duration = sum - static_cast<double>(group.count - 1) * fade;
            running += static_cast<int>(std::lround(group.duration * fps));
            level.push_back(group);
            next.push_back(group.duration);
        }
        plan.levels.push_back(std::move(level));
        work = std::move(next);
    }
    plan.nPlanned = running;
    return plan;
}

int FadedFrameCount(int nTotal, double fps, int nCount, double fade)
{
    const double seconds = fps > 0 ? nTotal / fps : 0.0;
    // (57 / 25 - 2 x 0.48) x 25 is 32.99999999999999 in doubles, and must give 33.
    return static_cast<int>(std::floor((seconds - (nCount - 1) * fade) * fps + 0.000001));
}

std::string ConcatListText(const std::vector<std::string> &files)
{
    std::string text;
    for (const std::string &file : files) {
        std::string quoted;
        for (char c : file) {
            quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        text += "file '" + quoted + "'\n";
    }
    return text;
}

std::string
ConcatMergeCommand(const EncodeArgs &args, const std::string &listFile, const std::string &merged)
{
    // PCM audio in the intermediate: AAC is written once, by the final encode.
    return args.prefix + "-f concat -safe 0 -i \"" + listFile + "\" " + VideoArgs(args) +
           " -c:a pcm_s16le -vf \"setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS\" "
           "-movflags +faststart " +
           kIntermediateFormat + "\"" + merged + "\"";
}

std::string GraphMergeCommand(const EncodeArgs &args,
                              const std::vector<std::string> &inputs,
                              const std::string &graph,
                              bool bAudio,
                              const std::string &name)
{
    std::string inputArgs;
    for (const std::string &input : inputs) {
        inputArgs += "-i \"" + input + "\" ";
    }
    return args.prefix + inputArgs + "-filter_complex \"" + graph + "\" -map \"[vid]\" " +
           (bAudio ? "-map \"[aud]\" " : "") + VideoArgs(args) +
           " -c:a pcm_s16le -movflags +faststart " + kIntermediateFormat + "\"" + name + "\"";
}

std::string FinalEncodeCommand(const EncodeArgs &args,
                               const std::string &merged,
                               const std::string &chain,
                               const std::string &output,
                               int frames)
{
    std::string pictureEnd;
    std::string soundEnd;
    if (frames > 0 && args.fps > 0) {
        // A frame more than planned is cut; sound that ends early is made up with silence.
        pictureEnd = core::StrPrintf("trim=end_frame=%d,", frames);
        soundEnd = core::StrPrintf(",apad,atrim=duration=%.6f", frames / args.fps);
    }
    return args.prefix + "-i \"" + merged + "\" " + VideoArgs(args) + " -c:a aac -b:a 192k -vf \"" +
           chain + pictureEnd + "setpts=PTS-STARTPTS\" -af \"asetpts=PTS-STARTPTS" + soundEnd +
           "\" -movflags +faststart \"" + output + "\"";
}

} // namespace render
