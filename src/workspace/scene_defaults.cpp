// The scene list's default content: one scene over the first seconds of the input.
#include "workspace/scene_defaults.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "core/helpers.h"
#include "core/project_names.h"

namespace workspace {

void MakeDefaultScene(core::CTarnwickData &data)
{
    data.viCurrent = data.viInput;
    std::lock_guard lock(data.sceneLock.m);
    data.diff_list.clear();
    const int frames = data.viInput.frame_num;
    if (frames <= 0) {
        return;
    }
    const double fps = data.viInput.fps;
    const int sceneFrames =
        std::min(static_cast<int>(std::ceil(fps * kDefaultSceneSeconds)), frames);
    const int last = sceneFrames - 1;
    core::SceneEntry entry(0, last, core::SegmentPath(data, 0, last));
    const double seconds = fps > 0 ? sceneFrames / fps : 0.0;
    entry.SetCaption(0.0, seconds, core::StrPrintf("Scene%03d", 1));
    data.diff_list.push_back(entry);
    data.list_idx = 0;
}

} // namespace workspace
