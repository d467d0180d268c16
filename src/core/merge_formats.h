// The frame rates and picture sizes that the merge workspace can bring its films to.
#pragma once

#include <string>

namespace core {

struct MergeRate
{
    int num;
    int den;
};

struct MergeSize
{
    int width;
    int height;
};

inline constexpr MergeRate kMergeRates[] = {{120, 1},
                                            {120000, 1001},
                                            {60, 1},
                                            {60000, 1001},
                                            {30, 1},
                                            {30000, 1001},
                                            {24, 1},
                                            {24000, 1001},
                                            {15, 1},
                                            {10, 1}};
inline constexpr MergeSize kMergeSizes[] = {{4096, 2160},
                                            {3840, 2160},
                                            {2560, 1440},
                                            {1920, 1080},
                                            {1280, 720},
                                            {854, 480},
                                            {720, 576},
                                            {720, 480},
                                            {352, 288}};
inline constexpr int kMergeRateCount = sizeof(kMergeRates) / sizeof(kMergeRates[0]);
inline constexpr int kMergeSizeCount = sizeof(kMergeSizes) / sizeof(kMergeSizes[0]);

// The row of an index, an index outside the table taken as the nearest row.
MergeRate MergeRateAt(int index);
MergeSize MergeSizeAt(int index);

// "%d/%d" of the rate, and the rate as a double.
std::string MergeRateText(const MergeRate &rate);
double MergeRateFps(const MergeRate &rate);

} // namespace core
