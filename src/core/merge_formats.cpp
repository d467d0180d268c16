// The merge workspace's rate and size tables: rows by index and the rate's text and value.
#include "core/merge_formats.h"

#include <algorithm>

#include "core/helpers.h"

namespace core {

MergeRate MergeRateAt(int index)
{
    return kMergeRates[std::clamp(index, 0, kMergeRateCount - 1)];
}

MergeSize MergeSizeAt(int index)
{
    return kMergeSizes[std::clamp(index, 0, kMergeSizeCount - 1)];
}

std::string MergeRateText(const MergeRate &rate)
{
    return StrPrintf("%d/%d", rate.num, rate.den);
}

double MergeRateFps(const MergeRate &rate)
{
    return static_cast<double>(rate.num) / static_cast<double>(rate.den);
}

} // namespace core
