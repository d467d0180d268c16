// The scene list's default content: one scene over the first seconds of the input.
#pragma once

#include "core/tarnwick_data.h"

namespace workspace {

// Length of the default scene in seconds.
inline constexpr double kDefaultSceneSeconds = 3.0;

// Replaces diff_list by one scene from frame 0 over at most three seconds of the working
// input, captioned "Scene001", and makes it the current row. viCurrent takes viInput first.
// An input without frames leaves the list empty. Takes data.sceneLock itself.
void MakeDefaultScene(core::CTarnwickData &data);

} // namespace workspace
