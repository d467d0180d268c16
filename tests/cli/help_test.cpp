// Tests of the command line's help: the list of commands, and each command's own page with its
// options and an example, which never starts the command's work.
#include <string>
#include <vector>

#include <gtest/gtest.h>

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

} // namespace
