// A row of the scene list read under the scene lock, for the jobs that cut and join scenes
// while the list may change.
#pragma once

#include <optional>

#include "core/tarnwick_data.h"

namespace engine {

// A copy of row nScene of diff_list, taken under the scene lock; none when the index is out
// of range.
std::optional<core::SceneEntry> SceneCopy(core::CTarnwickData &data, int nScene);

} // namespace engine
