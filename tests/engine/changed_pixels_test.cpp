// Tests of the changed-pixel measure: the pixel and block rules, the previous-frame state, the
// scan's numbers, and agreement of the scalar, SSE2 and AVX2 counts.
#include <climits>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "engine/changed_pixels.h"
#include "engine/scene_grouper.h"

namespace {

using engine::CountChangedAvx2;
using engine::CountChangedBest;
using engine::CountChangedPixels;
using engine::CountChangedScalar;
using engine::CountChangedSse2;
using engine::HasAvx2;
using engine::PixelLimit;
using engine::ScanDimension;

using Frame = std::vector<uint8_t>;

// Every implementation's count for one pair; AVX2 only where the processor has it.
std::vector<int> AllCounts(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    std::vector<int> counts = {CountChangedScalar(a, b, n, limit),
                               CountChangedSse2(a, b, n, limit),
                               CountChangedBest(a, b, n, limit)};
    if (HasAvx2()) {
        counts.push_back(CountChangedAvx2(a, b, n, limit));
    }
    return counts;
}

// Asserts that every implementation gives expected.
void ExpectAllCounts(const Frame &a, const Frame &b, int limit, int expected)
{
    const int n = static_cast<int>(a.size());
    for (int count : AllCounts(a.data(), b.data(), n, limit)) {
        EXPECT_EQ(count, expected);
    }
}

TEST(ChangedPixels, BlackToWhiteIsStill)
{
    const int w = 240;
    const int h = 135;
    const Frame black(w * h, 0);
    const Frame white(w * h, 255);
    EXPECT_EQ(CountChangedPixels(black.data(), w, h, 0, 156), 156);
    EXPECT_EQ(CountChangedPixels(white.data(), w, h, 1, 156), 0);
    EXPECT_EQ(CountChangedPixels(black.data(), w, h, 2, 156), 0);
    ExpectAllCounts(black, white, INT_MAX, 0);
    ExpectAllCounts(white, black, INT_MAX, 0);
}

TEST(ChangedPixels, HalfScaleCounts)
{
    const int w = 240;
    const int h = 135;
    const Frame black(w * h, 0);
    const Frame gray(w * h, 127);
    // 32400 bytes: 1012 whole blocks, the last 16 bytes are not compared.
    const int compared = 1012 * 32;
    EXPECT_EQ(CountChangedPixels(black.data(), w, h, 0, INT_MAX), INT_MAX);
    EXPECT_EQ(CountChangedPixels(gray.data(), w, h, 1, INT_MAX), compared);
    EXPECT_EQ(CountChangedPixels(black.data(), w, h, 2, INT_MAX), compared);
    ExpectAllCounts(black, gray, INT_MAX, compared);
}

TEST(ChangedPixels, ThirtyDoesNotCountThirtyOneDoes)
{
    const Frame base(64, 100);
    const Frame plus30(64, 130);
    const Frame minus30(64, 70);
    const Frame plus31(64, 131);
    const Frame minus31(64, 69);
    EXPECT_EQ(CountChangedPixels(base.data(), 8, 8, 0, 1000), 1000);
    EXPECT_EQ(CountChangedPixels(plus30.data(), 8, 8, 1, 1000), 0);
    EXPECT_EQ(CountChangedPixels(base.data(), 8, 8, 2, 1000), 0);
    EXPECT_EQ(CountChangedPixels(plus31.data(), 8, 8, 3, 1000), 64);
    EXPECT_EQ(CountChangedPixels(base.data(), 8, 8, 4, 1000), 64);
    ExpectAllCounts(base, plus30, 1000, 0);
    ExpectAllCounts(base, minus30, 1000, 0);
    ExpectAllCounts(base, plus31, 1000, 64);
    ExpectAllCounts(base, minus31, 1000, 64);
}

TEST(ChangedPixels, TailOf241x135IsNeverCompared)
{
    const int w = 241;
    const int h = 135;
    const int n = w * h;
    ASSERT_EQ(n, 32535);
    ASSERT_EQ(n % 32, 23);
    const int firstTail = n - 23;
    const Frame base(n, 10);
    Frame tailChanged = base;
    for (int i = firstTail; i < n; ++i) {
        tailChanged[i] = 100;
    }
    Frame lastBlockChanged = base;
    lastBlockChanged[firstTail - 1] = 100;

    EXPECT_EQ(CountChangedPixels(base.data(), w, h, 0, INT_MAX), INT_MAX);
    EXPECT_EQ(CountChangedPixels(tailChanged.data(), w, h, 1, INT_MAX), 0);
    EXPECT_EQ(CountChangedPixels(base.data(), w, h, 2, INT_MAX), 0);
    EXPECT_EQ(CountChangedPixels(lastBlockChanged.data(), w, h, 3, INT_MAX), 1);
    ExpectAllCounts(base, tailChanged, INT_MAX, 0);
    ExpectAllCounts(base, lastBlockChanged, INT_MAX, 1);
}

TEST(ChangedPixels, TinyPictureIsAlwaysStill)
{
    // 5 x 6 = 30 bytes: no whole block, so nothing is ever compared.
    const Frame black(30, 0);
    const Frame gray(30, 80);
    EXPECT_EQ(CountChangedPixels(black.data(), 5, 6, 0, 1), 1);
    EXPECT_EQ(CountChangedPixels(gray.data(), 5, 6, 1, 1), 0);
    EXPECT_EQ(CountChangedPixels(black.data(), 5, 6, 2, 1), 0);
    EXPECT_EQ(CountChangedPixels(gray.data(), 5, 6, 3, 1), 0);
    ExpectAllCounts(black, gray, INT_MAX, 0);
    const Frame black31(31, 0);
    const Frame gray31(31, 80);
    ExpectAllCounts(black31, gray31, INT_MAX, 0);
}

TEST(ChangedPixels, FirstFrameIsActiveEvenAfterSameSizeScan)
{
    const Frame black(64, 0);
    const Frame gray(64, 80);
    // A first scan leaves a 64-byte frame behind.
    EXPECT_EQ(CountChangedPixels(black.data(), 8, 8, 0, 7), 7);
    EXPECT_EQ(CountChangedPixels(black.data(), 8, 8, 1, 7), 0);
    // The next scan starts again at index 0 with a frame of the same size: no comparison.
    EXPECT_EQ(CountChangedPixels(black.data(), 8, 8, 0, 7), 7);
    EXPECT_EQ(CountChangedPixels(gray.data(), 8, 8, 0, 7), 7);
    // The first frame became the reference.
    EXPECT_EQ(CountChangedPixels(gray.data(), 8, 8, 1, 7), 0);
}

TEST(ChangedPixels, SizeChangeRestartsComparison)
{
    const Frame small(64, 0);
    const Frame large(96, 80);
    EXPECT_EQ(CountChangedPixels(small.data(), 8, 8, 0, 5), 5);
    EXPECT_EQ(CountChangedPixels(large.data(), 8, 12, 1, 5), 5);
    EXPECT_EQ(CountChangedPixels(large.data(), 8, 12, 2, 5), 0);
    EXPECT_EQ(CountChangedPixels(small.data(), 8, 8, 3, 5), 5);
    EXPECT_EQ(CountChangedPixels(small.data(), 8, 8, 4, 100), 0);
}

TEST(ChangedPixels, ThresholdZeroMakesEveryFrameActive)
{
    const int w = ScanDimension(1920);
    const int h = ScanDimension(1080);
    const int limit = PixelLimit(w * h, 0);
    EXPECT_EQ(limit, 0);
    const Frame black(w * h, 0);
    std::vector<std::pair<int, int>> scenes;
    engine::SceneGrouper collecting(
        30, 30, [&](int first, int last) { scenes.emplace_back(first, last); });
    const int frames = 100;
    for (int n = 0; n < frames; ++n) {
        const int count = CountChangedPixels(black.data(), w, h, n, limit);
        EXPECT_GE(count, limit);
        collecting.Step(n, count >= limit);
    }
    collecting.Close(frames);
    const std::vector<std::pair<int, int>> expected = {{0, frames - 1}};
    EXPECT_EQ(scenes, expected);
}

TEST(ChangedPixels, Threshold1000AtFullHd)
{
    EXPECT_EQ(ScanDimension(1920), 240);
    EXPECT_EQ(ScanDimension(1080), 135);
    const int nPixels = ScanDimension(1920) * ScanDimension(1080);
    EXPECT_EQ(nPixels, 32400);
    const int limit = PixelLimit(nPixels, 100000);
    EXPECT_EQ(limit, 1563);

    const Frame black(nPixels, 0);
    Frame below = black;
    for (int i = 0; i < 1562; ++i) {
        below[i * 20] = 60;
    }
    Frame at = below;
    at[1562 * 20] = 60;
    EXPECT_EQ(CountChangedPixels(black.data(), 240, 135, 0, limit), limit);
    EXPECT_EQ(CountChangedPixels(below.data(), 240, 135, 1, limit), 1562); // still
    EXPECT_EQ(CountChangedPixels(black.data(), 240, 135, 0, limit), limit);
    EXPECT_EQ(CountChangedPixels(at.data(), 240, 135, 1, limit), 1563); // active
}

TEST(ChangedPixels, DefaultThresholdAtFullHd)
{
    EXPECT_EQ(PixelLimit(32400, 10000), 156);
}

TEST(ChangedPixels, ScanDimensionRoundsHalvesAwayFromZero)
{
    EXPECT_EQ(ScanDimension(4), 1);      // 0.5
    EXPECT_EQ(ScanDimension(12), 2);     // 1.5
    EXPECT_EQ(ScanDimension(1084), 136); // 135.5
    EXPECT_EQ(ScanDimension(1930), 241); // 241.25
    EXPECT_EQ(ScanDimension(3), 0);      // 0.375
    EXPECT_EQ(ScanDimension(0), 0);
}

TEST(ChangedPixels, PixelLimitComputesInDoubles)
{
    // 32400 x 100000 does not fit in 32 bits; 1562.5 rounds up.
    EXPECT_EQ(PixelLimit(32400, 100000), 1563);
    EXPECT_EQ(PixelLimit(30, 10000), 0); // 0.1447
    EXPECT_EQ(PixelLimit(2073600, 1), 1);
    EXPECT_EQ(PixelLimit(4147200, 1), 2);
    EXPECT_EQ(PixelLimit(1036800, 1), 1); // 0.5
}

TEST(ChangedPixels, EarlyStopAfterBlock)
{
    const int n = 32 * 100;
    const Frame black(n, 0);
    const Frame gray(n, 50);
    // Every pixel counts: the count grows by 32 per block and stops at the first block end at
    // or above the limit.
    ExpectAllCounts(black, gray, 100, 128);
    ExpectAllCounts(black, gray, 128, 128);
    ExpectAllCounts(black, gray, 129, 160);
    ExpectAllCounts(black, gray, 0, 32);
    ExpectAllCounts(black, gray, INT_MAX, n);
    for (int limit = 1; limit <= n; limit += 7) {
        for (int count : AllCounts(black.data(), gray.data(), n, limit)) {
            EXPECT_GE(count, limit);
            EXPECT_LT(count, limit + 32);
            if (limit < n - 32) {
                EXPECT_LT(count, n);
            }
        }
    }
    EXPECT_EQ(CountChangedPixels(black.data(), 32, 100, 0, 100), 100);
    EXPECT_EQ(CountChangedPixels(gray.data(), 32, 100, 1, 100), 128);
    // The whole frame was kept despite the early stop.
    EXPECT_EQ(CountChangedPixels(gray.data(), 32, 100, 2, 100), 0);
}

TEST(ChangedPixels, ImplementationsAgreeOnRandomFrames)
{
    std::mt19937 random(20240611u);
    // Frames sit at odd offsets inside larger buffers, so unaligned loads are exercised.
    std::vector<uint8_t> bufferA(4200);
    std::vector<uint8_t> bufferB(4200);
    for (int pair = 0; pair < 10000; ++pair) {
        SCOPED_TRACE(pair);
        const int n =
            (pair % 10 == 0) ? static_cast<int>(random() % 40) : static_cast<int>(random() % 4097);
        const int offsetA = static_cast<int>(random() % 64);
        const int offsetB = static_cast<int>(random() % 64);
        uint8_t *a = bufferA.data() + offsetA;
        uint8_t *b = bufferB.data() + offsetB;
        const int style = static_cast<int>(random() % 3);
        for (int i = 0; i < n; ++i) {
            a[i] = static_cast<uint8_t>(random());
            if (style == 0) {
                b[i] = static_cast<uint8_t>(random());
            } else {
                // Mostly small changes around the 30/31 edge, some large ones.
                const int spread = style == 1 ? 40 : 140;
                const int delta = static_cast<int>(random() % (2 * spread + 1)) - spread;
                b[i] = static_cast<uint8_t>(a[i] + delta);
            }
        }
        int limit = 0;
        switch (random() % 5) {
        case 0:
            limit = 0;
            break;
        case 1:
            limit = static_cast<int>(random() % 64);
            break;
        case 2:
            limit = n + 1 + static_cast<int>(random() % 100);
            break;
        case 3:
            limit = INT_MAX;
            break;
        default:
            limit = static_cast<int>(random() % (n + 1));
            break;
        }
        const int expected = CountChangedScalar(a, b, n, limit);
        ASSERT_EQ(CountChangedSse2(a, b, n, limit), expected);
        ASSERT_EQ(CountChangedBest(a, b, n, limit), expected);
        if (HasAvx2()) {
            ASSERT_EQ(CountChangedAvx2(a, b, n, limit), expected);
        }
    }
}

TEST(ChangedPixels, ImplementationsAgreeOnCraftedDifferences)
{
    struct Case
    {
        int delta;
        int counts;
    };
    const Case cases[] = {{30, 0}, {31, 1}, {127, 1}, {128, 0}, {255, 0}};
    const int n = 3 * 32 + 5;
    for (const Case &c : cases) {
        for (int position = 0; position < 32; ++position) {
            for (int direction = 0; direction < 2; ++direction) {
                SCOPED_TRACE(testing::Message() << "delta " << c.delta << " position " << position
                                                << " direction " << direction);
                Frame low(n, 0);
                Frame high(n, 0);
                // A change in the middle block, the other blocks equal.
                high[32 + position] = static_cast<uint8_t>(c.delta);
                const Frame &a = direction == 0 ? high : low;
                const Frame &b = direction == 0 ? low : high;
                ExpectAllCounts(a, b, INT_MAX, c.counts);
                // Every position of every block changed at once.
                Frame all(n, 0);
                for (int i = 0; i < n; ++i) {
                    all[i] = static_cast<uint8_t>(c.delta);
                }
                const Frame zeros(n, 0);
                ExpectAllCounts(direction == 0 ? all : zeros,
                                direction == 0 ? zeros : all,
                                INT_MAX,
                                c.counts * 3 * 32);
            }
        }
    }
    // The same differences away from 0: 100 and 100 + delta where it fits.
    for (const Case &c : cases) {
        if (100 + c.delta > 255) {
            continue;
        }
        Frame base(64, 100);
        Frame moved = base;
        moved[17] = static_cast<uint8_t>(100 + c.delta);
        ExpectAllCounts(base, moved, INT_MAX, c.counts);
        ExpectAllCounts(moved, base, INT_MAX, c.counts);
    }
}

TEST(ChangedPixels, BestMatchesProcessor)
{
    const Frame black(64, 0);
    const Frame gray(64, 50);
    EXPECT_EQ(CountChangedBest(black.data(), gray.data(), 64, INT_MAX), 64);
    EXPECT_EQ(CountChangedBest(black.data(), gray.data(), 64, INT_MAX),
              HasAvx2() ? CountChangedAvx2(black.data(), gray.data(), 64, INT_MAX)
                        : CountChangedSse2(black.data(), gray.data(), 64, INT_MAX));
}

} // namespace
