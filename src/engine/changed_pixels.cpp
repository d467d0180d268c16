// Changed-pixel measure of the scene scan: block counts (scalar, SSE2, AVX2), run-time choice of
// the vector code, and the comparison of each frame with the one before.
#include "engine/changed_pixels.h"

#include <cmath>
#include <cstring>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define TW_X86 1
#else
#define TW_X86 0
#endif

namespace engine {

namespace detail {

using CountFn = int (*)(const uint8_t *, const uint8_t *, int, int);

// The pixel rule on one byte pair: |a - b| as a signed byte above 30. A jump of 128 or more reads
// as negative and is deliberately not a change.
inline int PixelChanged(uint8_t a, uint8_t b)
{
    const uint8_t d = a > b ? static_cast<uint8_t>(a - b) : static_cast<uint8_t>(b - a);
    return static_cast<int8_t>(d) > kChangedPixelDelta ? 1 : 0;
}

CountFn ChooseCount()
{
    return HasAvx2() ? &CountChangedAvx2 : &CountChangedSse2;
}

} // namespace detail

int CountChangedScalar(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    int count = 0;
    if (n < kChangedBlockBytes) {
        return 0;
    }
    for (int off = 0; off <= n - kChangedBlockBytes; off += kChangedBlockBytes) {
        for (int i = 0; i < kChangedBlockBytes; ++i) {
            count += detail::PixelChanged(a[off + i], b[off + i]);
        }
        if (count >= limit) {
            break;
        }
    }
    return count;
}

#if TW_X86 && defined(__SSE2__)

int CountChangedSse2(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    int count = 0;
    if (n < kChangedBlockBytes) {
        return 0;
    }
    const __m128i thirty = _mm_set1_epi8(static_cast<char>(kChangedPixelDelta));
    for (int off = 0; off <= n - kChangedBlockBytes; off += kChangedBlockBytes) {
        const __m128i a0 = _mm_loadu_si128(reinterpret_cast<const __m128i *>(a + off));
        const __m128i b0 = _mm_loadu_si128(reinterpret_cast<const __m128i *>(b + off));
        const __m128i a1 = _mm_loadu_si128(reinterpret_cast<const __m128i *>(a + off + 16));
        const __m128i b1 = _mm_loadu_si128(reinterpret_cast<const __m128i *>(b + off + 16));
        const __m128i d0 = _mm_subs_epu8(_mm_max_epu8(a0, b0), _mm_min_epu8(a0, b0));
        const __m128i d1 = _mm_subs_epu8(_mm_max_epu8(a1, b1), _mm_min_epu8(a1, b1));
        // Signed compare: differences of 128 and more are negative here and drop out.
        const unsigned mask0 = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(d0, thirty)));
        const unsigned mask1 = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(d1, thirty)));
        count += __builtin_popcount(mask0 | (mask1 << 16));
        if (count >= limit) {
            break;
        }
    }
    return count;
}

#else

int CountChangedSse2(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    return CountChangedScalar(a, b, n, limit);
}

#endif

#if TW_X86

__attribute__((target("avx2,popcnt"))) int
CountChangedAvx2(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    int count = 0;
    if (n < kChangedBlockBytes) {
        return 0;
    }
    const __m256i thirty = _mm256_set1_epi8(static_cast<char>(kChangedPixelDelta));
    for (int off = 0; off <= n - kChangedBlockBytes; off += kChangedBlockBytes) {
        const __m256i va = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(a + off));
        const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(b + off));
        const __m256i d = _mm256_subs_epu8(_mm256_max_epu8(va, vb), _mm256_min_epu8(va, vb));
        // Signed compare: differences of 128 and more are negative here and drop out.
        const unsigned mask =
            static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpgt_epi8(d, thirty)));
        count += __builtin_popcount(mask);
        if (count >= limit) {
            break;
        }
    }
    return count;
}

bool HasAvx2()
{
    static const bool has = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
    }();
    return has;
}

#else

int CountChangedAvx2(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    return CountChangedScalar(a, b, n, limit);
}

bool HasAvx2()
{
    return false;
}

#endif

int CountChangedBest(const uint8_t *a, const uint8_t *b, int n, int limit)
{
    static const detail::CountFn count = detail::ChooseCount();
    return count(a, b, n, limit);
}

int CountChangedPixels(const uint8_t *frame, int w, int h, int nIndex, int nPixelLimit)
{
    // The last frame seen, kept across frames and scans; see the declaration for the threading.
    static std::vector<uint8_t> previous;
    static const uint8_t *pPrevious = nullptr;

    const int n = (w > 0 && h > 0) ? w * h : 0;
    const size_t bytes = static_cast<size_t>(n);
    const uint8_t *prev = nullptr;
    if (previous.size() == bytes) {
        prev = pPrevious;
    } else {
        previous.resize(bytes);
    }

    int count = nPixelLimit;
    if (nIndex != 0 && prev != nullptr) {
        count = CountChangedBest(frame, prev, n, nPixelLimit);
    }
    // The whole frame becomes the reference, also after an early stop.
    if (bytes > 0) {
        std::memcpy(previous.data(), frame, bytes);
    }
    pPrevious = previous.data();
    return count;
}

int ScanDimension(int size)
{
    return static_cast<int>(std::lround(size * 0.125));
}

int PixelLimit(int nPixels, int nThreshold)
{
    return static_cast<int>(
        std::lround(static_cast<double>(nPixels) * static_cast<double>(nThreshold) / 2073600.0));
}

} // namespace engine
