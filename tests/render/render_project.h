// A project of the final render on a generated clip, for the render tests against the real
// tools.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/helpers.h"
#include "core/project_names.h"
#include "engine/engine_fixture.h"
#include "engine/tarnwick_process.h"
#include "support/test_support.h"

namespace rendertest {

using testsupport::TempDir;

inline constexpr double kFps = 25.0;
// One frame, and a little for the decimal seconds that ffprobe prints.
inline constexpr double kOneFrame = 1 / kFps + 1e-6;

// A project on a generated 160x120 clip at 25 fps, with or without sound, with scenes of the
// given frame ranges, output "<clip>_trim.mp4" in dir/<folder>.
struct RenderProject
{
    explicit RenderProject(int seconds,
                           bool sound = true,
                           const std::string &name = "clip.mp4",
                           const std::string &folder = "out")
    {
        clip = dir.file(name);
        std::string video = core::StrPrintf("testsrc2=size=160x120:rate=25:duration=%d", seconds);
        std::vector<std::string> args = {"ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", video};
        if (sound) {
            args.insert(
                args.end(),
                {"-f", "lavfi", "-i", core::StrPrintf("sine=frequency=440:duration=%d", seconds)});
        }
        args.insert(args.end(), {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", clip});
        EXPECT_EQ(testsupport::RunProgram(args).exitCode, 0);
        core::DeriveProjectNames(rig.data, clip);
        rig.data.output_folder = dir.file(folder) + "/";
        rig.data.pts_file.clear();
        rig.data.bUseCuda = 0;
        rig.data.nEncodePreset = 1;
        EXPECT_EQ(rig.engine.OpenVideoFile(clip), 0);
    }

    void AddScene(int first, int last, bool bEnable = true)
    {
        std::lock_guard<std::mutex> lock(rig.data.sceneLock.m);
        rig.data.diff_list.emplace_back(first, last, core::SegmentPath(rig.data, first, last));
        rig.data.diff_list.back().bEnable = bEnable;
    }

    int Render()
    {
        rig.Scene().ClearMessages();
        EXPECT_EQ(rig.engine.StartThread(engine::kJobFinalOutput), 1);
        rig.WaitForJob();
        return rig.engine.nProcessExitCode;
    }

    std::string Output() const { return rig.data.GetOutputPath(); }

    TempDir dir;
    std::string clip;
    enginetest::EngineRig rig;
};

} // namespace rendertest
