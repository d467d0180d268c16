// The -filter_complex graph that joins one batch of files: input chains, then cross-fades or
// concat, then the output format.
#include "render/merge_graph.h"

#include <cstddef>

#include "core/helpers.h"

namespace render {
namespace {

std::string VideoLabel(size_t n)
{
    return core::StrPrintf("v%zu", n);
}

std::string AudioLabel(size_t n)
{
    return core::StrPrintf("a%zu", n);
}

// Each input gets its rate before and after the trim, so that the cut falls on the target
// rate's frames and the result holds only that rate; its times then start at zero. Its sound is
// padded with silence before the cut, so that a file whose sound ends before its picture still
// gives sound of the picture's length and the files after it stay in step.
void AppendInputChains(std::string &graph,
                       const std::vector<MergeStep> &steps,
                       const std::string &rate,
                       bool bAudio)
{
    for (size_t n = 0; n < steps.size(); ++n) {
        std::string v = VideoLabel(n);
        graph += core::StrPrintf(
            "[%zu:v]fps=%s,trim=duration=%.6f,setpts=PTS-STARTPTS[%s_pre];[%s_pre]fps=%s[%s];",
            n,
            rate.c_str(),
            steps[n].duration,
            v.c_str(),
            v.c_str(),
            rate.c_str(),
            v.c_str());
        if (bAudio) {
            graph += core::StrPrintf("[%zu:a]apad,atrim=duration=%.6f,asetpts=PTS-STARTPTS[%s];",
                                     n,
                                     steps[n].duration,
                                     AudioLabel(n).c_str());
        }
    }
}

// Fades chained from the left: each step fades the film so far into the next input. offset is
// where the next fade starts in the result; every join shortens the result by fade. The xfade of
// ffmpeg 5.1 leaves a gap of one frame in the times behind a fade when its first input ends
// before the fade's last frame (which the trim makes the rule), and an encoder at a constant rate
// fills that gap with a copy: the film would gain a frame per join. Every fade's frames are
// therefore numbered anew at the rate.
void AppendCrossFades(std::string &graph,
                      double fade,
                      const std::vector<MergeStep> &steps,
                      const std::string &rate,
                      bool bAudio)
{
    std::string video = VideoLabel(0);
    std::string audio = AudioLabel(0);
    double offset = steps[0].duration - fade;
    for (size_t i = 1; i < steps.size(); ++i) {
        bool last = i + 1 == steps.size();
        std::string videoResult = last ? "vid" : core::StrPrintf("vf%zu", i);
        std::string audioResult = last ? "aud" : core::StrPrintf("af%zu", i);
        graph += core::StrPrintf(
            "[%s][%s]xfade=transition=fade:duration=%.6f:offset=%.6f,setpts=N/(%s)/TB[%s];",
            video.c_str(),
            VideoLabel(i).c_str(),
            fade,
            offset,
            rate.c_str(),
            videoResult.c_str());
        if (bAudio) {
            // The audio fade is written with three decimals, the video fade with six.
            graph += core::StrPrintf("[%s][%s]acrossfade=d=%.3f,aresample=async=1[%s];",
                                     audio.c_str(),
                                     AudioLabel(i).c_str(),
                                     fade,
                                     audioResult.c_str());
        }
        video = videoResult;
        audio = audioResult;
        offset += steps[i].duration - fade;
    }
}

// Video and audio are joined by two separate concat filters.
void AppendConcat(std::string &graph, size_t count, bool bAudio)
{
    std::string videoInputs;
    std::string audioInputs;
    for (size_t n = 0; n < count; ++n) {
        videoInputs += core::StrPrintf("[%s]", VideoLabel(n).c_str());
        audioInputs += core::StrPrintf("[%s]", AudioLabel(n).c_str());
    }
    graph += core::StrPrintf("%sconcat=n=%zu:v=1:a=0[vid];", videoInputs.c_str(), count);
    if (bAudio) {
        graph += core::StrPrintf("%sconcat=n=%zu:v=0:a=1[aud];", audioInputs.c_str(), count);
    }
}

} // namespace

int InputShorterThanFade(double fade, const std::vector<MergeStep> &steps)
{
    if (fade <= kNoFadeLimit || steps.size() < 2) {
        return -1;
    }
    for (size_t i = 0; i < steps.size(); ++i) {
        // Durations and the fade both come from frames at the rate: a hair's difference is the
        // same length.
        if (steps[i].duration + 0.000001 < fade) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

std::string BuildMergeGraph(double fade,
                            const std::vector<MergeStep> &steps,
                            const std::string &rate,
                            bool bAudio)
{
    std::string graph;
    if (steps.empty()) {
        return graph;
    }
    AppendInputChains(graph, steps, rate, bAudio);
    if (steps.size() == 1) {
        // One input needs no join, whatever fade says.
        graph += core::StrPrintf("[%s]format=yuv420p[vid];", VideoLabel(0).c_str());
        if (bAudio) {
            graph += core::StrPrintf("[%s]aresample=async=1[aud];", AudioLabel(0).c_str());
        }
        return graph;
    }
    if (fade > kNoFadeLimit) {
        AppendCrossFades(graph, fade, steps, rate, bAudio);
    } else {
        AppendConcat(graph, steps.size(), bAudio);
    }
    // The result label is input and output of the same filter: the caller maps it by that name.
    graph += "[vid]format=yuv420p[vid];";
    if (bAudio) {
        graph += "[aud]aresample=async=1[aud];";
    }
    return graph;
}

std::string FilterComplexText(const std::string &graph)
{
    if (!graph.empty() && graph.back() == ';') {
        return graph.substr(0, graph.size() - 1);
    }
    return graph;
}

} // namespace render
