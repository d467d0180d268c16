// Changed-pixel measure of the scene scan: block counts (scalar, SSE2, AVX2) and the per-frame
// comparison against the previous frame.
#pragma once

#include <cstdint>

namespace engine {

// Bytes compared as one unit; a frame's last (n mod kChangedBlockBytes) bytes are never compared.
inline constexpr int kChangedBlockBytes = 32;
// A byte difference counts when, read as a signed byte, it is above this value: 31..127 count,
// 0..30 and 128..255 do not.
inline constexpr int kChangedPixelDelta = 30;

// Counts the changed pixels between a and b, each n bytes, block by block: blocks of 32 bytes at
// offsets 0, 32, ..., n - 32; after each whole block the count stops when it has reached limit,
// so a stopped result lies in [limit, limit + 31]. n below 32 gives 0. Pure; the implementations
// below give identical results for every input.
int CountChangedScalar(const uint8_t *a, const uint8_t *b, int n, int limit);
// The same with 16-byte vectors, two per block. On targets without SSE2 it is the scalar code.
int CountChangedSse2(const uint8_t *a, const uint8_t *b, int n, int limit);
// The same with one 32-byte vector per block. Call only when HasAvx2() is true.
int CountChangedAvx2(const uint8_t *a, const uint8_t *b, int n, int limit);
// True when this processor runs CountChangedAvx2.
bool HasAvx2();
// The fastest of the three for this processor, chosen on the first call. Thread-safe.
int CountChangedBest(const uint8_t *a, const uint8_t *b, int n, int limit);

// Compares a frame of w x h gray bytes with the frame seen before it and returns the count of
// changed pixels (CountChangedBest with nPixelLimit as the limit). Returns nPixelLimit without
// comparing when nIndex is 0 or the previous frame had another size, so the first frame of every
// scan counts as active. Always keeps a copy of the whole frame as the next previous frame.
// The previous frame lives in function-local statics for the life of the program, shared by all
// callers and unlocked: call from one scan thread at a time (scans follow each other, never
// overlap).
int CountChangedPixels(const uint8_t *frame, int w, int h, int nIndex, int nPixelLimit);

// Side of the scan picture for a side of the video: size x 0.125, halves rounded away from zero.
int ScanDimension(int size);
// Changed pixels that make a frame of nPixels active, for a threshold meant as changed pixels in a
// 1920 x 1080 frame: nPixels x nThreshold / 2073600, rounded half away from zero, in doubles.
int PixelLimit(int nPixels, int nThreshold);

} // namespace engine
