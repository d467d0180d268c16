// Tests of BuildMergeGraph: the whole graph text for one, two and three inputs, cross-faded or
// concatenated, with and without audio.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "render/merge_graph.h"

namespace {

using render::BuildMergeGraph;
using render::MergeStep;

const std::string kRate = "30000/1001";

// The input chains of the three-input example, with audio.
const std::string kThreeChainsWithAudio =
    "[0:v]fps=30000/1001,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
    "[v0_pre]fps=30000/1001[v0];[0:a]apad,atrim=duration=2.000000,asetpts=PTS-STARTPTS[a0];"
    "[1:v]fps=30000/1001,trim=duration=3.000000,setpts=PTS-STARTPTS[v1_pre];"
    "[v1_pre]fps=30000/1001[v1];[1:a]apad,atrim=duration=3.000000,asetpts=PTS-STARTPTS[a1];"
    "[2:v]fps=30000/1001,trim=duration=4.000000,setpts=PTS-STARTPTS[v2_pre];"
    "[v2_pre]fps=30000/1001[v2];[2:a]apad,atrim=duration=4.000000,asetpts=PTS-STARTPTS[a2];";

const std::string kFirstChainWithAudio =
    "[0:v]fps=30000/1001,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
    "[v0_pre]fps=30000/1001[v0];[0:a]apad,atrim=duration=2.000000,asetpts=PTS-STARTPTS[a0];";

std::vector<MergeStep> ThreeSteps()
{
    return {{"/v/a.mp4", 2.0}, {"/v/b.mp4", 3.0}, {"/v/c.mp4", 4.0}};
}

TEST(MergeGraphTest, ThreeInputsCrossFadeWithAudio)
{
    EXPECT_EQ(BuildMergeGraph(0.5, ThreeSteps(), kRate, true),
              kThreeChainsWithAudio + "[v0][v1]xfade=transition=fade:duration=0.500000:offset=1."
                                      "500000,setpts=N/(30000/1001)/TB[vf1];"
                                      "[a0][a1]acrossfade=d=0.500,aresample=async=1[af1];"
                                      "[vf1][v2]xfade=transition=fade:duration=0.500000:offset=4."
                                      "000000,setpts=N/(30000/1001)/TB[vid];"
                                      "[af1][a2]acrossfade=d=0.500,aresample=async=1[aud];"
                                      "[vid]format=yuv420p[vid];[aud]aresample=async=1[aud];");
}

TEST(MergeGraphTest, ThreeInputsWithoutFadeConcatenate)
{
    EXPECT_EQ(BuildMergeGraph(0.0, ThreeSteps(), kRate, true),
              kThreeChainsWithAudio +
                  "[v0][v1][v2]concat=n=3:v=1:a=0[vid];[a0][a1][a2]concat=n=3:v=0:a=1[aud];"
                  "[vid]format=yuv420p[vid];[aud]aresample=async=1[aud];");
}

TEST(MergeGraphTest, OneInputAloneEndsBehindItsChain)
{
    EXPECT_EQ(BuildMergeGraph(0.0, {{"/v/a.mp4", 2.0}}, kRate, true),
              kFirstChainWithAudio + "[v0]format=yuv420p[vid];[a0]aresample=async=1[aud];");
}

TEST(MergeGraphTest, EmptyListGivesEmptyText)
{
    EXPECT_EQ(BuildMergeGraph(0.5, {}, kRate, true), "");
    EXPECT_EQ(BuildMergeGraph(0.0, {}, kRate, false), "");
}

TEST(MergeGraphTest, InputShorterThanTheFadeIsFoundInAnyPlace)
{
    using render::InputShorterThanFade;
    const std::vector<MergeStep> steps = {
        {"/v/a.mp4", 0.2, 1}, {"/v/b.mp4", 0.5, 2}, {"/v/c.mp4", 0.4, 5}, {"/v/d.mp4", 0.0, 6}};
    // The first counts as every other; one exactly as long as the fade is long enough.
    EXPECT_EQ(InputShorterThanFade(0.5, steps), 0);
    EXPECT_EQ(InputShorterThanFade(0.5, {steps[1], steps[0]}), 1);
    EXPECT_EQ(InputShorterThanFade(0.5, {steps[1], steps[2], steps[0]}), 1);
    EXPECT_EQ(InputShorterThanFade(0.4, {steps[1], steps[2]}), -1);
    EXPECT_EQ(InputShorterThanFade(0.4, {steps[2], steps[1]}), -1);
    EXPECT_EQ(InputShorterThanFade(0.4, {steps[1], steps[2], steps[3]}), 2);
    // Without a fade every length goes, and a list of one has nothing to fade into.
    EXPECT_EQ(InputShorterThanFade(0.0, steps), -1);
    EXPECT_EQ(InputShorterThanFade(render::kNoFadeLimit, steps), -1);
    EXPECT_EQ(InputShorterThanFade(9.0, {steps[0]}), -1);
    EXPECT_EQ(InputShorterThanFade(9.0, {}), -1);
    // 12 frames at 25 fps against the fade made of them, in either place.
    EXPECT_EQ(InputShorterThanFade(0.48, {steps[1], {"/v/e.mp4", 12 / 25.0, 2}}), -1);
    EXPECT_EQ(InputShorterThanFade(0.48, {{"/v/e.mp4", 12 / 25.0, 1}, steps[1]}), -1);
}

TEST(MergeGraphTest, OneInputWithFadeHasNoFadeAndNoConcat)
{
    EXPECT_EQ(BuildMergeGraph(0.5, {{"/v/a.mp4", 2.0}}, kRate, true),
              kFirstChainWithAudio + "[v0]format=yuv420p[vid];[a0]aresample=async=1[aud];");
}

TEST(MergeGraphTest, TwoInputsCrossFadeWriteTheResultLabelsDirectly)
{
    EXPECT_EQ(
        BuildMergeGraph(0.5, {{"/v/a.mp4", 2.0}, {"/v/b.mp4", 3.0}}, "25/1", true),
        "[0:v]fps=25/1,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
        "[v0_pre]fps=25/1[v0];[0:a]apad,atrim=duration=2.000000,asetpts=PTS-STARTPTS[a0];"
        "[1:v]fps=25/1,trim=duration=3.000000,setpts=PTS-STARTPTS[v1_pre];"
        "[v1_pre]fps=25/1[v1];[1:a]apad,atrim=duration=3.000000,asetpts=PTS-STARTPTS[a1];"
        "[v0][v1]xfade=transition=fade:duration=0.500000:offset=1.500000,setpts=N/(25/1)/TB[vid];"
        "[a0][a1]acrossfade=d=0.500,aresample=async=1[aud];"
        "[vid]format=yuv420p[vid];[aud]aresample=async=1[aud];");
}

TEST(MergeGraphTest, WithoutAudioNoAudioChainFadeOrLabel)
{
    const std::string videoChains =
        "[0:v]fps=30000/1001,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
        "[v0_pre]fps=30000/1001[v0];"
        "[1:v]fps=30000/1001,trim=duration=3.000000,setpts=PTS-STARTPTS[v1_pre];"
        "[v1_pre]fps=30000/1001[v1];"
        "[2:v]fps=30000/1001,trim=duration=4.000000,setpts=PTS-STARTPTS[v2_pre];"
        "[v2_pre]fps=30000/1001[v2];";
    EXPECT_EQ(BuildMergeGraph(0.5, ThreeSteps(), kRate, false),
              videoChains + "[v0][v1]xfade=transition=fade:duration=0.500000:offset=1.500000,"
                            "setpts=N/(30000/1001)/TB[vf1];"
                            "[vf1][v2]xfade=transition=fade:duration=0.500000:offset=4.000000,"
                            "setpts=N/(30000/1001)/TB[vid];"
                            "[vid]format=yuv420p[vid];");
    EXPECT_EQ(BuildMergeGraph(0.0, ThreeSteps(), kRate, false),
              videoChains + "[v0][v1][v2]concat=n=3:v=1:a=0[vid];[vid]format=yuv420p[vid];");
    EXPECT_EQ(BuildMergeGraph(0.5, {{"/v/a.mp4", 2.0}}, kRate, false),
              "[0:v]fps=30000/1001,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
              "[v0_pre]fps=30000/1001[v0];[v0]format=yuv420p[vid];");
}

TEST(MergeGraphTest, FadeOfOneMicrosecondCountsAsNoTransition)
{
    EXPECT_EQ(BuildMergeGraph(0.000001, ThreeSteps(), kRate, true),
              BuildMergeGraph(0.0, ThreeSteps(), kRate, true));
    EXPECT_EQ(BuildMergeGraph(0.000001, ThreeSteps(), kRate, true),
              kThreeChainsWithAudio +
                  "[v0][v1][v2]concat=n=3:v=1:a=0[vid];[a0][a1][a2]concat=n=3:v=0:a=1[aud];"
                  "[vid]format=yuv420p[vid];[aud]aresample=async=1[aud];");
}

TEST(MergeGraphTest, FadeJustAboveTheLimitCrossFades)
{
    EXPECT_EQ(
        BuildMergeGraph(0.0000011, {{"/v/a.mp4", 2.0}, {"/v/b.mp4", 3.0}}, "25/1", false),
        "[0:v]fps=25/1,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
        "[v0_pre]fps=25/1[v0];"
        "[1:v]fps=25/1,trim=duration=3.000000,setpts=PTS-STARTPTS[v1_pre];"
        "[v1_pre]fps=25/1[v1];"
        "[v0][v1]xfade=transition=fade:duration=0.000001:offset=1.999999,setpts=N/(25/1)/TB[vid];"
        "[vid]format=yuv420p[vid];");
}

TEST(MergeGraphTest, InputNumbersRestartAtZeroInEveryGraph)
{
    // The second batch of a long film is a graph of its own: its inputs are again 0 and 1.
    std::vector<MergeStep> secondBatch = {{"/v/d.mp4", 1.5}, {"/v/e.mp4", 2.25}};
    EXPECT_EQ(BuildMergeGraph(0.0, secondBatch, "25/1", false),
              "[0:v]fps=25/1,trim=duration=1.500000,setpts=PTS-STARTPTS[v0_pre];"
              "[v0_pre]fps=25/1[v0];"
              "[1:v]fps=25/1,trim=duration=2.250000,setpts=PTS-STARTPTS[v1_pre];"
              "[v1_pre]fps=25/1[v1];"
              "[v0][v1]concat=n=2:v=1:a=0[vid];[vid]format=yuv420p[vid];");
}

TEST(MergeGraphTest, OffsetsFollowEachInputsLength)
{
    // offset: 1.2 - 0.4, then + 0.7 - 0.4, then + 2.0 - 0.4; a fade longer than an input is
    // written as it comes.
    std::vector<MergeStep> steps = {{"a", 1.2}, {"b", 0.7}, {"c", 2.0}, {"d", 0.3}};
    EXPECT_EQ(BuildMergeGraph(0.4, steps, "24000/1001", false),
              "[0:v]fps=24000/1001,trim=duration=1.200000,setpts=PTS-STARTPTS[v0_pre];"
              "[v0_pre]fps=24000/1001[v0];"
              "[1:v]fps=24000/1001,trim=duration=0.700000,setpts=PTS-STARTPTS[v1_pre];"
              "[v1_pre]fps=24000/1001[v1];"
              "[2:v]fps=24000/1001,trim=duration=2.000000,setpts=PTS-STARTPTS[v2_pre];"
              "[v2_pre]fps=24000/1001[v2];"
              "[3:v]fps=24000/1001,trim=duration=0.300000,setpts=PTS-STARTPTS[v3_pre];"
              "[v3_pre]fps=24000/1001[v3];"
              "[v0][v1]xfade=transition=fade:duration=0.400000:offset=0.800000,setpts=N/(24000/"
              "1001)/TB[vf1];"
              "[vf1][v2]xfade=transition=fade:duration=0.400000:offset=1.100000,setpts=N/(24000/"
              "1001)/TB[vf2];"
              "[vf2][v3]xfade=transition=fade:duration=0.400000:offset=2.700000,setpts=N/(24000/"
              "1001)/TB[vid];"
              "[vid]format=yuv420p[vid];");
}

TEST(MergeGraphTest, TextHasNoSpacesOrQuotesAndEndsInSemicolon)
{
    for (double fade : {0.0, 0.5}) {
        for (bool audio : {false, true}) {
            std::string graph = BuildMergeGraph(fade, ThreeSteps(), kRate, audio);
            SCOPED_TRACE(graph);
            EXPECT_EQ(graph.find_first_of(" \"'"), std::string::npos);
            ASSERT_FALSE(graph.empty());
            EXPECT_EQ(graph.back(), ';');
        }
    }
}

TEST(MergeGraphTest, FilterComplexTextDropsOnlyTheFinalSemicolon)
{
    EXPECT_EQ(render::FilterComplexText(BuildMergeGraph(0.0, {{"/v/a.mp4", 2.0}}, "25/1", false)),
              "[0:v]fps=25/1,trim=duration=2.000000,setpts=PTS-STARTPTS[v0_pre];"
              "[v0_pre]fps=25/1[v0];[v0]format=yuv420p[vid]");
    EXPECT_EQ(render::FilterComplexText("[a]null[b]"), "[a]null[b]");
    EXPECT_EQ(render::FilterComplexText(""), "");
}

} // namespace
