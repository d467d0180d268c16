// Tests of the command line's help: the list of commands, and each command's own page with its
// options and an example, which never starts the command's work.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/job_lock.h"
#include "core/project_names.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

using testsupport::RunCli;

const std::vector<std::string> kCommands = {"project",
                                            "probe",
                                            "scan",
                                            "extract",
                                            "render",
                                            "run",
                                            "autopicture",
                                            "still",
                                            "play",
                                            "analyze",
                                            "merge",
                                            "scenes",
                                            "edit"};

TEST(CliHelp, ListsEveryCommand)
{
    testsupport::RunResult r = RunCli({"--help"});
    EXPECT_EQ(r.exitCode, 0);
    for (const std::string &name : kCommands) {
        EXPECT_NE(r.out.find("  tarnwickmp4-cli " + name + " "), std::string::npos) << name;
    }
    EXPECT_NE(r.out.find("COMMAND --help"), std::string::npos);
}

TEST(CliHelp, EveryCommandHasAPageWithAnExample)
{
    for (const std::string &name : kCommands) {
        testsupport::RunResult r = RunCli({name, "--help"});
        EXPECT_EQ(r.exitCode, 0) << name;
        EXPECT_EQ(r.out.rfind("Usage: tarnwickmp4-cli " + name + " ", 0), 0u) << r.out;
        EXPECT_NE(r.out.find("\nExample:\n  tarnwickmp4-cli " + name + " "), std::string::npos)
            << r.out;
        EXPECT_TRUE(r.err.empty()) << name << ": " << r.err;
    }
}

TEST(CliHelp, PageNamesTheCommandsOptions)
{
    testsupport::RunResult r = RunCli({"run", "--help"});
    for (const char *option : {"--threshold",
                               "--valid-min",
                               "--cut-min",
                               "--transition",
                               "--output-folder",
                               "--output-name",
                               "--title",
                               "--auto-picture"}) {
        EXPECT_NE(r.out.find(std::string("  ") + option), std::string::npos) << option;
    }
}

TEST(CliHelp, HelpAmongOtherArgumentsDoesNoWork)
{
    testsupport::TempDir dir;
    const std::string video = dir.file("missing.mp4");
    testsupport::RunResult r = RunCli({"extract", video, "-h"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out.rfind("Usage: tarnwickmp4-cli extract ", 0), 0u);
    EXPECT_TRUE(r.err.empty()) << r.err;
}

// A saved project of two scenes for clip.mp4 in dir (the video need not exist for edit).
std::string SaveTwoSceneProject(const testsupport::TempDir &dir)
{
    core::CTarnwickData data;
    core::DeriveProjectNames(data, dir.file("clip.mp4"));
    data.viInput.fps = 25;
    data.viInput.frame_num = 300;
    data.diff_list.emplace_back(25, 74, core::SegmentPath(data, 25, 74));
    data.diff_list.emplace_back(150, 199, core::SegmentPath(data, 150, 199));
    EXPECT_TRUE(data.SaveProjectFile(data.project_file));
    return data.project_file;
}

TEST(CliHelp, TextOfAnOptionThatLooksLikeHelpIsThatText)
{
    testsupport::TempDir dir;
    const std::string project = SaveTwoSceneProject(dir);
    const std::vector<std::vector<std::string>> edits = {
        {"--caption", "1", "--help"}, {"--title", "-h"}, {"--watermark", "--help"}};
    for (const std::vector<std::string> &edit : edits) {
        std::vector<std::string> args{"edit", project};
        args.insert(args.end(), edit.begin(), edit.end());
        testsupport::RunResult r = RunCli(args);
        EXPECT_EQ(r.exitCode, 0) << edit[0] << ": " << r.err;
        EXPECT_EQ(r.out.find("Usage:"), std::string::npos) << r.out;
        core::CTarnwickData saved;
        ASSERT_TRUE(saved.LoadProjectFile(project));
        const std::string text = edit[0] == "--caption" ? saved.diff_list[0].capParam.caption
                                 : edit[0] == "--title" ? saved.capTitle.caption
                                                        : saved.capWatermark.caption;
        EXPECT_EQ(text, edit.back()) << edit[0];
    }
    // A project option's text: the title, the folder, the film's name.
    for (const std::vector<std::string> &args : std::vector<std::vector<std::string>>{
             {"render", dir.file("gone.twproj"), "--title", "-h"},
             {"run", dir.file("gone.mp4"), "--title", "--help"},
             {"still", dir.file("gone.mp4"), "--project", "-h"},
             {"segments", dir.file("gone.twproj"), "--output-folder", "-h"}}) {
        testsupport::RunResult r = RunCli(args);
        EXPECT_EQ(r.exitCode, 2) << args[0] << ": " << r.out;
        EXPECT_EQ(r.out, "") << args[0];
    }
    // After "--" project check reads files.
    testsupport::RunResult r = RunCli({"project", "check", "--", "-h"});
    EXPECT_EQ(r.exitCode, 2) << r.out;
    EXPECT_EQ(r.out, "");
}

TEST(CliLinks, EditThroughALinkChangesTheRealProjectAndKeepsTheLink)
{
    testsupport::TempDir dir;
    const std::string project = SaveTwoSceneProject(dir);
    std::filesystem::create_directory(dir.file("links"));
    const std::string link = dir.file("links/mine.twproj");
    std::filesystem::create_symlink(project, link);

    testsupport::RunResult r = RunCli({"edit", link, "--untick", "2"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    core::CTarnwickData saved;
    ASSERT_TRUE(saved.LoadProjectFile(project));
    EXPECT_EQ(saved.diff_list[1].bEnable, 0);

    // A job on the real path holds the project: the edit through the link is refused, and the
    // other way round.
    core::JobLock held;
    std::string problem;
    ASSERT_TRUE(held.TryAcquire(core::ProjectLockPath(project), "render clip.mp4", &problem));
    r = RunCli({"edit", link, "--tick", "2"});
    EXPECT_EQ(r.exitCode, 1) << r.err;
    EXPECT_NE(r.err.find("is in use by another job"), std::string::npos) << r.err;
    held.Release();
    ASSERT_TRUE(held.TryAcquire(core::ProjectLockPath(link), "render mine.twproj", &problem));
    r = RunCli({"edit", project, "--tick", "2"});
    EXPECT_EQ(r.exitCode, 1) << r.err;
    ASSERT_TRUE(saved.LoadProjectFile(project));
    EXPECT_EQ(saved.diff_list[1].bEnable, 0);
}

TEST(CliNames, FilmNameThatIsNotAnMp4IsRefusedBeforeAnythingRuns)
{
    testsupport::TempDir dir;
    const std::string project = SaveTwoSceneProject(dir);
    const std::string before = testsupport::ReadFile(project);
    // The names are checked before any tool looks at the video.
    ASSERT_TRUE(testsupport::WriteFile(dir.file("clip.mp4"), "not read"));
    const std::vector<std::vector<std::string>> cases = {
        {"render", project, "--output-name", "film.txt"},
        {"segments", project, "--output-name", "film"},
        {"run", dir.file("clip.mp4"), "--output-name", "film.mp4.txt"},
        {"merge", "--size", "352x288", "--rate", "10", "-o", "film.mov", dir.file("clip.mp4")}};
    const std::vector<std::string> suggested = {"film.mp4", "film.mp4", "film.mp4.mp4", "film.mp4"};
    for (size_t i = 0; i < cases.size(); ++i) {
        testsupport::RunResult r = RunCli(cases[i]);
        EXPECT_EQ(r.exitCode, 2) << cases[i][0];
        const std::string name = cases[i][cases[i][0] == "merge" ? 6 : 3];
        EXPECT_EQ(r.err,
                  "tarnwickmp4-cli " + cases[i][0] + ": --output-name " + name +
                      ": the film is an MP4 file, so its name must end in .mp4 (such as " +
                      suggested[i] + ")\n");
    }
    EXPECT_EQ(testsupport::ReadFile(project), before);
    // Any case of the extension is an MP4 name.
    testsupport::RunResult r = RunCli({"render", project, "--output-name", "FILM.MP4"});
    EXPECT_EQ(r.err.find("must end in .mp4"), std::string::npos) << r.err;
}

} // namespace
