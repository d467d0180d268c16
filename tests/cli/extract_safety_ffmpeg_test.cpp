// Tests of what the command line guarantees under hostile use: paths that would inject tool
// options, two jobs on one project or folder, an output folder that cannot be made, a stop or a
// kill at any moment, and a truncated recording.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"
#include "engine/headless_host.h"
#include "engine/tarnwick_process.h"
#include "support/cli_signal.h"
#include "support/motion_clips.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

using testsupport::DecodedFrames;
using testsupport::MakeLongClip;
using testsupport::RunCli;
using testsupport::TempDir;

// 15 seconds of 160x120 at 25 fps: a box moves for 1.5 seconds of every 3, so that scenes close
// and are cut every few seconds.
constexpr const char *kBurstSource =
    "color=c=0x404040:s=160x120:r=25:d=15[bg];color=c=0xA0A0A0:s=32x32:r=25:d=15[box];"
    "[bg][box]overlay=x='if(lt(mod(t,3),1.5),60*mod(t,3),0)':y=44:eval=frame";

std::string MakeBurstClip(const TempDir &dir)
{
    std::string clip = dir.file("bursts.mp4");
    EXPECT_TRUE(testsupport::MakeClip(clip, kBurstSource));
    return clip;
}

// The tool's own report files in the working folder.
std::set<std::string> ReportFiles()
{
    std::set<std::string> files;
    for (const std::string &file : testsupport::FilesMatching(".", ".log")) {
        if (fs::path(file).filename().string().rfind("ff", 0) == 0) {
            files.insert(file);
        }
    }
    return files;
}

bool IsOneLine(const std::string &text)
{
    return !text.empty() && text.find('\n') == text.size() - 1;
}

// Every scene of a saved project begins before it ends, and its segment either holds exactly
// its frames or does not exist.
void ExpectProjectTrue(const std::string &projectFile)
{
    core::CTarnwickData project;
    std::string error;
    ASSERT_TRUE(project.LoadProjectFile(projectFile, &error)) << error;
    for (const core::SceneEntry &scene : project.diff_list) {
        SCOPED_TRACE(scene.fileName);
        EXPECT_LE(scene.framNo_first, scene.framNo_second);
        if (fs::exists(scene.fileName)) {
            EXPECT_EQ(DecodedFrames(scene.fileName), scene.framNo_second - scene.framNo_first + 1);
        }
    }
}

TEST(CliHardening, PathWithAQuoteIsRefusedBeforeAnyToolRuns)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    std::string hostile = dir.file("box.mp4\" -report \"-hide_banner");
    fs::copy_file(clip, hostile);
    const std::set<std::string> reportsBefore = ReportFiles();
    const std::string problem = "the path contains a double quote, which a tool's command line "
                                "cannot carry; rename it or its folder\n";
    for (const std::string command : {"scan", "extract", "probe"}) {
        SCOPED_TRACE(command);
        testsupport::RunResult r = RunCli({command, hostile});
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "tarnwickmp4-cli " + command + ": " + hostile + ": " + problem);
    }
    testsupport::RunResult r =
        RunCli({"extract", clip, "--output-folder", dir.file("o\" -report \"x")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli extract: --output-folder " + dir.file("o\" -report \"x") + ": " +
                  problem);
    r = RunCli({"scan", dir.file("line\nbreak.mp4")});
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(IsOneLine(r.err)) << r.err;
    EXPECT_EQ(ReportFiles(), reportsBefore) << "a tool ran with -report";
    EXPECT_FALSE(fs::exists(hostile + ".twproj"));
    EXPECT_FALSE(fs::exists(hostile + "_out"));
}

TEST(CliHardening, OutputFolderThatCannotBeMadeFailsWithTheFolderAndTheReason)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    ASSERT_TRUE(testsupport::WriteFile(dir.file("plain"), "a file, not a folder"));
    testsupport::RunResult r = RunCli({"extract", clip, "--output-folder", dir.file("plain/x")});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_EQ(r.err,
              "tarnwickmp4-cli extract: cannot create the output folder " + dir.file("plain/x") +
                  ": Not a directory\n");
    EXPECT_FALSE(fs::exists(clip + ".twproj")) << "no project points at segments never written";
}

// Starts extract on the long clip and waits until its first cut has begun.
struct RunningExtract
{
    RunningExtract(const TempDir &dir, const std::string &clip, const std::string &folder)
    {
        thread = std::thread([this, clip, folder] {
            result = RunCli({"extract", clip, "--output-folder", folder});
        });
        while (testsupport::FilesMatching(folder, ".mp4").empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        (void)dir;
    }
    ~RunningExtract()
    {
        if (thread.joinable()) {
            thread.join();
        }
    }
    std::thread thread;
    testsupport::RunResult result;
};

TEST(CliHardening, SecondJobOnTheSameProjectIsRefusedAndWritesNothing)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    std::string folder = dir.file("out");
    RunningExtract first(dir, clip, folder);
    testsupport::RunResult second = RunCli({"extract", clip, "--output-folder", dir.file("o2")});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.err.rfind("tarnwickmp4-cli extract: the project " + clip +
                                   ".twproj is in use by another job (process ",
                               0),
              0u)
        << second.err;
    EXPECT_NE(second.err.find(": extract " + clip + ")\n"), std::string::npos) << second.err;
    EXPECT_TRUE(IsOneLine(second.err));
    EXPECT_TRUE(testsupport::FilesMatching(dir.file("o2"), ".mp4").empty());
    first.thread.join();
    EXPECT_EQ(first.result.exitCode, 0) << first.result.err;
    ExpectProjectTrue(clip + ".twproj");
    EXPECT_FALSE(fs::exists(clip + ".twproj.lock"));
}

TEST(CliHardening, SecondJobIntoTheSameOutputFolderIsRefused)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    std::string other = dir.file("other.mp4");
    fs::copy_file(clip, other);
    std::string folder = dir.file("out");
    RunningExtract first(dir, clip, folder);
    testsupport::RunResult second = RunCli({"extract", other, "--output-folder", folder});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.err.rfind("tarnwickmp4-cli extract: the output folder " + folder +
                                   "/ is in use by another job (process ",
                               0),
              0u)
        << second.err;
    first.thread.join();
    EXPECT_EQ(first.result.exitCode, 0) << first.result.err;
    EXPECT_TRUE(testsupport::FilesMatching(folder, "other_seg_").empty())
        << "the refused job cut nothing";
    EXPECT_FALSE(fs::exists(other + ".twproj"));
    ExpectProjectTrue(clip + ".twproj");
}

TEST(CliHardening, CtrlCDuringTheScanSaysHowFarItCameAndNeverNoMotion)
{
    TempDir dir;
    std::string clip = MakeLongClip(dir);
    std::string scanMarker = "-i " + clip + " -vf scale=40:30";
    testsupport::SignalledRun run = testsupport::SignalCliWhenReady(
        {"scan", clip}, SIGINT, [&] { return testsupport::CountProcessesWith(scanMarker) != 0; });
    ASSERT_FALSE(run.endedEarly);
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_EQ(run.out.find("No motion"), std::string::npos) << run.out;
    const std::string head = "tarnwickmp4-cli scan: " + clip + ": stopped ";
    EXPECT_EQ(run.err.rfind(head, 0), 0u) << run.err;
    EXPECT_NE(run.err.find(" of 22500 frames ("), std::string::npos) << run.err;
    EXPECT_TRUE(IsOneLine(run.err)) << run.err;
}

TEST(CliHardening, StopsAtRandomMomentsNeverRecordAWrongScene)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> delayMs(50, 1500);
    for (int run = 0; run < 30; ++run) {
        SCOPED_TRACE("run " + std::to_string(run));
        fs::remove(clip + ".twproj");
        const auto stopAt =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(delayMs(random));
        testsupport::SignalledRun r = testsupport::SignalCliWhenReady(
            {"extract", clip}, SIGINT, [&] { return std::chrono::steady_clock::now() >= stopAt; });
        EXPECT_TRUE(r.exitCode == 0 || r.exitCode == 130 || r.exitCode == 1) << r.err;
        if (fs::exists(clip + ".twproj")) {
            ExpectProjectTrue(clip + ".twproj");
        }
        EXPECT_TRUE(testsupport::FilesMatching(clip + "_out", ".partial.").empty());
    }
}

TEST(CliHardening, KillDuringCuttingLeavesNoBrokenFileUnderAFinalName)
{
    TempDir dir;
    std::string clip = MakeLongClip(dir);
    std::string folder = clip + "_out";
    testsupport::SignalledRun run =
        testsupport::SignalCliWhenReady({"extract", clip}, SIGKILL, [&] {
            return !testsupport::FilesMatching(folder, ".partial.mp4").empty();
        });
    ASSERT_FALSE(run.endedEarly);
    EXPECT_EQ(run.exitCode, 128 + SIGKILL);
    for (int i = 0; i < 100 && testsupport::CountProcessesWith(dir.path()) != 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(testsupport::CountProcessesWith(dir.path()), 0) << "a tool outlived the kill";
    for (const std::string &file : testsupport::FilesMatching(folder, "_seg_")) {
        if (file.find(".partial.") == std::string::npos) {
            SCOPED_TRACE(file);
            EXPECT_GT(DecodedFrames(file), 0);
        }
    }
}

TEST(CliHardening, NextJobAfterAKillTakesOverTheLocksAndRemovesPartialFiles)
{
    TempDir dir;
    std::string clip = MakeBurstClip(dir);
    std::string folder = clip + "_out";
    fs::create_directories(folder);
    // What a killed extraction leaves: its lock files and a half segment.
    ASSERT_TRUE(testsupport::WriteFile(clip + ".twproj.lock", "process 1: extract"));
    ASSERT_TRUE(testsupport::WriteFile(folder + "/.tarnwickmp4.lock", "process 1: extract"));
    ASSERT_TRUE(testsupport::WriteFile(folder + "/bursts_seg_10_40.partial.mp4", "half"));
    testsupport::RunResult r = RunCli({"extract", clip});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(testsupport::FilesMatching(folder, ".partial.").empty());
    EXPECT_FALSE(testsupport::FilesMatching(folder, "_seg_").empty());
    EXPECT_FALSE(fs::exists(clip + ".twproj.lock"));
    EXPECT_FALSE(fs::exists(folder + "/.tarnwickmp4.lock"));
    ExpectProjectTrue(clip + ".twproj");
}

// The first 946634 bytes of a real recording: the rest of the file, and its index, are gone.
std::string TruncatedRecording(const TempDir &dir)
{
    std::string bytes = testsupport::ReadFile(testsupport::FootageDir() + "/vtest_480x360.avi");
    std::string path = dir.file("t.avi");
    EXPECT_TRUE(testsupport::WriteFile(path, bytes.substr(0, 946634)));
    return path;
}

TEST(CliHardening, TruncatedRecordingScanAndExtractAgreeAndSayItIsTruncated)
{
    TempDir dir;
    std::string video = TruncatedRecording(dir);
    // Both read the working MP4 that the opening makes of the readable part: 249 frames, of
    // the 795 that the recording's header announces.
    const std::string truncated = ": only 249 of 795 frames could be read; the file looks "
                                  "truncated\n";
    testsupport::RunResult scan = RunCli({"scan", video, "--json"});
    EXPECT_EQ(scan.exitCode, 0);
    EXPECT_EQ(scan.err, "tarnwickmp4-cli scan: " + video + truncated);
    testsupport::RunResult extract = RunCli({"extract", video});
    EXPECT_EQ(extract.err.rfind("tarnwickmp4-cli extract: " + video + truncated, 0), 0u)
        << extract.err;
    core::CTarnwickData project;
    ASSERT_TRUE(project.LoadProjectFile(video + ".twproj"));
    ASSERT_EQ(project.diff_list.size(), 1u);
    EXPECT_NE(scan.out.find("\"first\": 0,\n            \"last\": 248"), std::string::npos)
        << scan.out;
    EXPECT_EQ(project.diff_list[0].framNo_first, 0);
    EXPECT_EQ(project.diff_list[0].framNo_second, 248);
    // A segment that could not be cut is a failure the user hears of, with the folder and why.
    if (!fs::exists(project.diff_list[0].fileName)) {
        EXPECT_EQ(extract.exitCode, 1);
        EXPECT_NE(extract.err.find("1 of 1 segments could not be written to " + video + "_out/"),
                  std::string::npos)
            << extract.err;
    } else {
        EXPECT_EQ(extract.exitCode, 0);
    }
    ExpectProjectTrue(video + ".twproj");
}

} // namespace
