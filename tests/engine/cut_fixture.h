// Shared pieces of the scene-cutting tests: a project on a generated clip, and frame counts.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "engine/engine_fixture.h"
#include "support/test_support.h"

namespace cuttest {

using testsupport::DecodedFrames;

using core::SceneEntry;
using enginetest::EngineRig;

// 100 frames of 160x120 at 25 fps.
inline const char *kClipSource = "testsrc2=size=160x120:rate=25:duration=4";

inline int FramesOf(const SceneEntry &scene)
{
    return scene.framNo_second - scene.framNo_first + 1;
}

// A project on a generated clip whose name holds a blank, with an output folder that does not
// exist yet.
struct CutProject
{
    CutProject()
    {
        clip = dir.file("my clip.mp4");
        EXPECT_TRUE(testsupport::MakeClip(clip, kClipSource));
        rig.data.input_file = clip;
        rig.data.output_folder = dir.file("seg out") + "/";
        rig.data.bUseCuda = 0;
        rig.data.nEncodePreset = 1;
        EXPECT_EQ(rig.engine.OpenVideoFile(clip), 0);
    }

    int AddScene(int first, int last, bool bEnable = true)
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.diff_list.emplace_back(first, last, core::SegmentPath(rig.data, first, last));
        rig.data.diff_list.back().bEnable = bEnable;
        return static_cast<int>(rig.data.diff_list.size()) - 1;
    }

    SceneEntry Scene(int nScene)
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        return rig.data.diff_list.at(static_cast<size_t>(nScene));
    }

    void SetListIndex(int nScene)
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.list_idx = nScene;
    }

    testsupport::TempDir dir;
    std::string clip;
    EngineRig rig;
};

} // namespace cuttest
