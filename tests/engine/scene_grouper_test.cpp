// Tests of the scene grouping: bridging, cutting, dropping, the close of the last scene, the
// scene limit and a frame-by-frame trace.
#include "engine/scene_grouper.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using engine::SceneGrouper;
using Scenes = std::vector<std::pair<int, int>>;

// A grouping that records what it emits, with the scene index seen during each emission.
struct Recorder
{
    Recorder(int validFrames, int cutFrames)
        : grouper(validFrames, cutFrames, [this](int first, int last) {
            indices.push_back(grouper.SceneCount());
            scenes.emplace_back(first, last);
        })
    {
    }

    // Steps `frames` frames of one kind, continuing the frame numbers.
    void Feed(int frames, bool active)
    {
        for (int i = 0; i < frames; ++i) {
            grouper.Step(next++, active);
        }
    }

    SceneGrouper grouper;
    Scenes scenes;
    std::vector<int> indices;
    int next = 0;
};

void ExpectState(const SceneGrouper &g, bool inRun, int runStart, int activeRun, int stillRun)
{
    EXPECT_EQ(g.InRun(), inRun);
    EXPECT_EQ(g.RunStart(), runStart);
    EXPECT_EQ(g.ActiveRun(), activeRun);
    EXPECT_EQ(g.StillRun(), stillRun);
}

TEST(SceneGrouper, StartsCollectingAtFrameZero)
{
    Recorder r(30, 30);
    ExpectState(r.grouper, true, 0, 0, 0);
    EXPECT_EQ(r.grouper.SceneCount(), 0);
    EXPECT_FALSE(r.grouper.LimitReached());
}

TEST(SceneGrouper, FramesForRoundsHalvesAwayFromZero)
{
    EXPECT_EQ(SceneGrouper::FramesFor(30.0, 1.0), 30);
    EXPECT_EQ(SceneGrouper::FramesFor(29.97, 1.0), 30);
    EXPECT_EQ(SceneGrouper::FramesFor(25.0, 0.5), 13); // 12.5
    EXPECT_EQ(SceneGrouper::FramesFor(30.0, 0.0), 0);
    EXPECT_EQ(SceneGrouper::FramesFor(0.0, 1.0), 0);
}

TEST(SceneGrouper, ZeroUnitsMakeEveryRunAScene)
{
    const int valid = SceneGrouper::FramesFor(0.0, 1.0);
    const int cut = SceneGrouper::FramesFor(0.0, 1.0);
    ASSERT_EQ(valid, 0);
    ASSERT_EQ(cut, 0);
    Recorder r(valid, cut);
    r.Feed(1, true);  // 0
    r.Feed(1, false); // 1: ends the run at once
    r.Feed(2, true);  // 2, 3
    r.Feed(2, false); // 4, 5
    r.Feed(1, true);  // 6
    r.grouper.Close(7);
    const Scenes expected = {{0, 0}, {2, 3}, {6, 6}};
    EXPECT_EQ(r.scenes, expected);
    EXPECT_EQ(r.grouper.SceneCount(), 3);
}

TEST(SceneGrouper, OnlyStillAfterFirstFrameDropsRun)
{
    Recorder r(30, 30);
    r.Feed(1, true);
    r.Feed(299, false);
    r.grouper.Close(300);
    EXPECT_TRUE(r.scenes.empty());
    EXPECT_EQ(r.grouper.SceneCount(), 0);
    // Dropped at frame 31; the pause keeps counting from 30 + 1 dropped frame.
    ExpectState(r.grouper, false, 31, 0, 300);
}

TEST(SceneGrouper, ActiveToLastFrameIsOneScene)
{
    Recorder r(30, 30);
    r.Feed(200, true);
    EXPECT_TRUE(r.scenes.empty());
    r.grouper.Close(200);
    const Scenes expected = {{0, 199}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, PauseBelowCutIsBridged)
{
    Recorder r(30, 30);
    r.Feed(50, true);  // 0..49
    r.Feed(29, false); // 50..78
    r.Feed(21, true);  // 79..99
    ExpectState(r.grouper, true, 0, 100, 0);
    r.Feed(100, false); // 100..199
    r.grouper.Close(200);
    const Scenes expected = {{0, 99}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, PauseOfExactlyCutNeitherBridgesNorCuts)
{
    Recorder r(30, 30);
    r.Feed(50, true);  // 0..49
    r.Feed(30, false); // 50..79
    r.Feed(20, true);  // 80..99
    EXPECT_TRUE(r.scenes.empty());
    ExpectState(r.grouper, true, 0, 70, 0);
    r.Feed(31, false); // 100..130: ends at 130
    const Scenes expected = {{0, 99}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, CloseAfterUnbridgedPauseShortensScene)
{
    Recorder r(30, 30);
    r.Feed(50, true);  // 0..49
    r.Feed(30, false); // 50..79
    r.Feed(20, true);  // 80..99, to the end of the film
    r.grouper.Close(100);
    const Scenes expected = {{0, 69}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, PauseAboveCutCuts)
{
    Recorder r(30, 30);
    r.Feed(50, true);  // 0..49
    r.Feed(31, false); // 50..80: ends at 80
    const Scenes first = {{0, 49}};
    EXPECT_EQ(r.scenes, first);
    ExpectState(r.grouper, false, 80, 0, 31);
    r.Feed(50, true); // 81..130
    ExpectState(r.grouper, true, 81, 50, 0);
    r.grouper.Close(131);
    const Scenes expected = {{0, 49}, {81, 130}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, RunBelowValidIsDropped)
{
    Recorder r(30, 10);
    r.Feed(29, true);  // 0..28
    r.Feed(11, false); // 29..39: ends at 39
    EXPECT_TRUE(r.scenes.empty());
    ExpectState(r.grouper, false, 39, 0, 10 + 29 + 1);
    r.Feed(60, false);
    r.grouper.Close(100);
    EXPECT_TRUE(r.scenes.empty());
}

TEST(SceneGrouper, RunBelowValidAtEndIsDropped)
{
    Recorder r(30, 10);
    r.Feed(29, true);
    r.grouper.Close(29);
    EXPECT_TRUE(r.scenes.empty());
}

TEST(SceneGrouper, RunOfValidIsKept)
{
    Recorder r(30, 10);
    r.Feed(30, true);  // 0..29
    r.Feed(11, false); // 30..40: ends at 40
    const Scenes expected = {{0, 29}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, BridgedPausesCountTowardsMinimum)
{
    Recorder r(30, 30);
    r.Feed(29, true);  // 0..28
    r.Feed(10, false); // 29..38
    r.Feed(1, true);   // 39
    ExpectState(r.grouper, true, 0, 40, 0);
    r.Feed(31, false); // 40..70: ends at 70
    const Scenes expected = {{0, 39}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, StillTailShorterThanCutClosesAtLastActiveFrame)
{
    Recorder r(30, 30);
    r.Feed(100, true); // 0..99
    r.Feed(20, false); // 100..119
    EXPECT_TRUE(r.scenes.empty());
    r.grouper.Close(120);
    const Scenes expected = {{0, 99}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, CloseIsCappedByFrameCount)
{
    // A frame count below the frames stepped caps the end of the last scene.
    Recorder r(1, 30);
    r.Feed(50, true);
    r.grouper.Close(40);
    const Scenes expected = {{0, 39}};
    EXPECT_EQ(r.scenes, expected);
}

TEST(SceneGrouper, CallbackSeesIndexOfNewScene)
{
    Recorder r(1, 0);
    for (int i = 0; i < 3; ++i) {
        r.Feed(1, true);
        r.Feed(1, false);
    }
    const std::vector<int> expected = {0, 1, 2};
    EXPECT_EQ(r.indices, expected);
    EXPECT_EQ(r.grouper.SceneCount(), 3);
}

TEST(SceneGrouper, LimitAfter999Scenes)
{
    Recorder r(1, 0);
    EXPECT_EQ(SceneGrouper::kMaxScenes, 999);
    for (int k = 0; k < 998; ++k) {
        r.Feed(1, true);
        r.Feed(1, false);
    }
    EXPECT_EQ(r.grouper.SceneCount(), 998);
    EXPECT_FALSE(r.grouper.LimitReached());
    r.Feed(1, true);
    EXPECT_FALSE(r.grouper.LimitReached());
    r.Feed(1, false);
    EXPECT_EQ(r.grouper.SceneCount(), 999);
    EXPECT_TRUE(r.grouper.LimitReached());
    ASSERT_EQ(r.scenes.size(), 999u);
    EXPECT_EQ(r.scenes.back(), std::make_pair(1996, 1996));
}

TEST(SceneGrouper, WorkedTraceFrameByFrame)
{
    // 30 fps, both units one second.
    const int valid = SceneGrouper::FramesFor(30.0, 1.0);
    const int cut = SceneGrouper::FramesFor(30.0, 1.0);
    ASSERT_EQ(valid, 30);
    ASSERT_EQ(cut, 30);
    Recorder r(valid, cut);
    auto active = [](int n) { return n == 0 || (n >= 100 && n <= 199) || (n >= 211 && n <= 300); };
    const int frameNum = 400;
    for (int n = 0; n < frameNum; ++n) {
        SCOPED_TRACE(n);
        r.grouper.Step(n, active(n));
        const SceneGrouper &g = r.grouper;
        if (n == 0) {
            ExpectState(g, true, 0, 1, 0);
        } else if (n <= 30) {
            ExpectState(g, true, 0, 1, n); // frame 30: nStillRun 30
        } else if (n == 31) {
            ExpectState(g, false, 31, 0, 32); // dropped: 30 + 1 + 1
        } else if (n <= 99) {
            ExpectState(g, false, 31, 0, n + 1);
        } else if (n <= 199) {
            ExpectState(g, true, 100, n - 99, 0); // 100: no bridge, 1; 199: 100
        } else if (n <= 210) {
            ExpectState(g, true, 100, 100, n - 199); // 210: nStillRun 11
        } else if (n <= 300) {
            ExpectState(g, true, 100, n - 99, 0); // 211: bridge 111, then 112; 300: 201
        } else if (n <= 330) {
            ExpectState(g, true, 100, 201, n - 300); // 330: nStillRun 30
        } else if (n == 331) {
            ExpectState(g, false, 331, 0, 31);
        } else {
            ExpectState(g, false, 331, 0, n - 300);
        }
        if (n < 331) {
            EXPECT_TRUE(r.scenes.empty());
        } else {
            const Scenes expected = {{100, 300}};
            EXPECT_EQ(r.scenes, expected);
        }
    }
    r.grouper.Close(frameNum);
    const Scenes expected = {{100, 300}};
    EXPECT_EQ(r.scenes, expected);
    EXPECT_EQ(r.grouper.SceneCount(), 1);
}

} // namespace
