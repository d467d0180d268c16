// What the render jobs of both tabs share inside the engine: the precheck's hand-over to the
// merge and the settling of a pool's results.
#pragma once

#include <optional>
#include <vector>

#include "core/tarnwick_data.h"
#include "engine/scene_copy.h"
#include "render/merge_graph.h"

namespace engine {

// What the precheck of a render hands to the merge.
struct TrimPrecheck
{
    std::vector<render::MergeStep> inputs; // per enabled row: its file and planned length
    int nTotal = 0;                        // frames of the enabled rows
    int nCount = 0;                        // rows probed (not skipped by a stop or a repeat)
};

} // namespace engine
