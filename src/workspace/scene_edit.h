// One edit of a project's scene list as a command names it: tick, untick, split, delete,
// duplicate, move, a scene's caption, the title or the watermark. The list commands and the
// caption editing of the scene tab do the work, so the edit does what the tab would do.
#pragma once

#include <string>
#include <vector>

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

// Applies edits to data in the order given. Every edit is checked and made on a copy first; only
// when all of them can be made does data take the result, and then the segment files that the
// list named before and names no more (a split or deleted scene) are deleted; the next render
// cuts what is missing. Deleting the only scene leaves the default scene. Returns an empty text,
// or why the first edit that cannot be made cannot ("scene 7 does not exist: the project has 3
// scenes"), with data and files unchanged then.
std::string ApplySceneEdits(core::CTarnwickData &data, const std::vector<SceneEdit> &edits);

// One edit alone: ApplySceneEdits with edit.
std::string ApplySceneEdit(core::CTarnwickData &data, const SceneEdit &edit);

} // namespace workspace
