// What the render jobs of both tabs share inside the engine: a row read under the scene lock,
// the precheck's hand-over to the merge, and the settling of a pool's results.
#pragma once

#include <optional>
#include <vector>

#include "core/tarnwick_data.h"
#include "render/merge_graph.h"

namespace engine {

// A copy of row nScene of diff_list, taken under the scene lock; none when the index is out
// of range.
std::optional<core::SceneEntry> SceneCopy(core::CTarnwickData &data, int nScene);

// What the precheck of a render hands to the merge.
struct TrimPrecheck
{
    std::vector<render::MergeStep> inputs; // per enabled row: its file and planned length
    int nTotal = 0;                        // frames of the enabled rows
    int nCount = 0;                        // rows probed (not skipped by a stop or a repeat)
};

} // namespace engine
