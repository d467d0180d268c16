// One edit of a project's scene list as a command names it: tick, untick, split, delete,
// duplicate, move, a scene's caption, the title or the watermark. The list commands and the
// caption editing of the scene tab do the work, so the edit does what the tab would do.
#pragma once

#include <string>

#include "core/tarnwick_data.h"

namespace workspace {

struct SceneEdit
{
    enum class Kind { Tick, Untick, Split, Delete, Duplicate, Move, Caption, Title, Watermark };
    Kind kind = Kind::Tick;
    int nScene = 0;   // the scene's number in the list, from 1 (not for title and watermark)
    int nValue = 0;   // Split: the frame at which the later part begins; Move: the new number
    std::string text; // Caption, Title, Watermark
};

// Applies edit to data. Segment files that the edit makes stale (a split or deleted scene) are
// deleted; the next render cuts what is missing. Deleting the only scene leaves the default
// scene. Returns an empty text, or why the edit cannot be made ("scene 7 does not exist: the
// project has 3 scenes"), with data unchanged then.
std::string ApplySceneEdit(core::CTarnwickData &data, const SceneEdit &edit);

} // namespace workspace
