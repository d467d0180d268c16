// The -filter_complex graph that joins one batch of files into one film, end to end or
// cross-faded.
#pragma once

#include <string>
#include <vector>

namespace render {

// One input of a merge graph, in play order.
struct MergeStep
{
    std::string path;      // the file; the caller's -i argument, not part of the graph text
    double duration = 0.0; // seconds of this input that are kept
    int row = 0;           // its list number from 1, for messages; 0 for a merge's own file
};

// Fades of this length or shorter count as no transition.
inline constexpr double kNoFadeLimit = 0.000001;

// The graph text for steps, input n of the graph being the n-th -i of the caller's command
// (counted from 0 in every graph). Each input is brought to rate (a fraction such as
// "30000/1001") and cut to its duration; with several inputs they are cross-faded by fade
// seconds (when above kNoFadeLimit) or concatenated. bAudio says whether every input has an
// audio stream; one flag stands for all. The results are the labels [vid] and, with bAudio,
// [aud], which the caller maps. The text ends in ";", holds no spaces and no quotes, and is
// empty for no steps. Lengths are not looked at here: see InputShorterThanFade. Pure.
std::string BuildMergeGraph(double fade,
                            const std::vector<MergeStep> &steps,
                            const std::string &rate,
                            bool bAudio);

// The first input that lasts less than fade, as an index into steps; -1 when every input is long
// enough, when there is no fade (fade not above kNoFadeLimit) and when there is nothing to fade
// into (fewer than two steps). The first input counts as every other: the ffmpeg 5.1 of Debian
// 12 waits for ever in a cross-fade whose second input ends before the fade does, and a first
// input shorter than the fade gives a negative offset, with which it writes a film without
// sound. So such a list must not reach the tool. Pure.
int InputShorterThanFade(double fade, const std::vector<MergeStep> &steps);

// graph as the value of ffmpeg's -filter_complex: without its final ";". The graph parser of
// the ffmpeg 5.1 that Debian 12 ships reads a filter with an empty name behind a final ";" and
// fails with "No such filter: ''". Any other text comes back unchanged. Pure.
std::string FilterComplexText(const std::string &graph);

} // namespace render
