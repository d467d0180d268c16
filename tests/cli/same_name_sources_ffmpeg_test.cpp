// Tests of videos of the same name from different folders, worked on in one output folder: each
// command reads its own video, never a working MP4 or converted segment made from the other.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::RunCli;
using testsupport::TempDir;

// A/NAME and B/NAME, 2 and 3 seconds at 25 fps.
struct TwinClips
{
    explicit TwinClips(const TempDir &dir, const std::string &name)
        : a(dir.file("A/" + name))
        , b(dir.file("B/" + name))
    {
        fs::create_directories(dir.file("A"));
        fs::create_directories(dir.file("B"));
        EXPECT_TRUE(testsupport::MakeClip(
            a, "color=c=gray:s=160x120:r=25:d=2", {"-c:v", "mpeg4", "-q:v", "3"}));
        EXPECT_TRUE(testsupport::MakeClip(
            b, "testsrc2=s=160x120:r=25:d=3", {"-c:v", "mpeg4", "-q:v", "3"}));
    }
    std::string a;
    std::string b;
};

TEST(CliSameNameSources, ExtractOfTheSecondVideoListsItsOwnScenes)
{
    TempDir dir;
    TwinClips clips(dir, "cam.avi");
    const std::string folder = dir.file("out");
    for (const std::string &clip : {clips.a, clips.b, clips.a}) {
        SCOPED_TRACE(clip);
        testsupport::RunResult r = RunCli({"extract", clip, "--output-folder", folder, "--json"});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        const nlohmann::json root = nlohmann::json::parse(r.out);
        // The conversion to a constant rate may add a frame or two.
        const int frames = root["frames"];
        if (clip == clips.b) {
            EXPECT_GE(frames, 75);
        } else {
            EXPECT_LE(frames, 52);
        }
        for (const nlohmann::json &scene : root["scenes"]) {
            EXPECT_LT(scene["last"].get<int>(), frames);
        }
    }
}

TEST(CliSameNameSources, MergeConvertsAFileOfTheSameNameAnew)
{
    TempDir dir;
    TwinClips clips(dir, "cam.mp4");
    const std::string folder = dir.file("out");
    const std::vector<std::string> common = {
        "merge", "--size", "352x288", "--rate", "30/1", "--output-folder", folder};
    for (const std::string &clip : {clips.a, clips.b, clips.a}) {
        SCOPED_TRACE(clip);
        std::vector<std::string> args = common;
        args.insert(args.end(), {"-o", "film.mp4", clip});
        testsupport::RunResult r = RunCli(args);
        ASSERT_EQ(r.exitCode, 0) << r.err;
        // 2 or 3 seconds at 30 fps, give or take the frames a change of rate may add.
        const int frames = testsupport::DecodedFrames(folder + "/film.mp4");
        if (clip == clips.b) {
            EXPECT_GT(frames, 80);
        } else {
            EXPECT_LT(frames, 70);
        }
    }
}

} // namespace
