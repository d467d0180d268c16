// Tests of what the commands say about arguments they cannot take: the phrases themselves, and
// for every command the problem named on the first line and its usage line on the second, with
// nothing run and nothing printed on standard output.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/arg_problems.h"
#include "support/test_support.h"

namespace {

using testsupport::RunCli;
using testsupport::RunResult;

TEST(CliArgProblems, UnexpectedArgumentTellsAnOptionFromAFile)
{
    EXPECT_EQ(cli::UnexpectedArgument("--fast"), "unknown option --fast");
    EXPECT_EQ(cli::UnexpectedArgument("-x"), "unknown option -x");
    EXPECT_EQ(cli::UnexpectedArgument("b.mp4"), "unexpected argument \"b.mp4\"");
    EXPECT_EQ(cli::UnexpectedArgument("-"), "unexpected argument \"-\"");
    EXPECT_EQ(cli::UnexpectedArgument(""), "unexpected argument \"\"");
    // A control character would break the message line.
    EXPECT_EQ(cli::UnexpectedArgument("a\nb"), "unexpected argument \"a?b\"");
}

TEST(CliArgProblems, WholeNumbersAreDigitsWithinTheirBounds)
{
    int value = 7;
    EXPECT_TRUE(cli::ParseWholeNumber("0", 0, 100, value));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(cli::ParseWholeNumber("100", 0, 100, value));
    EXPECT_EQ(value, 100);
    EXPECT_TRUE(cli::ParseWholeNumber("-3", -5, 5, value));
    EXPECT_EQ(value, -3);
    value = 7;
    for (const char *text : {"",
                             "-",
                             "+1",
                             "1x",
                             "1.0",
                             "1e2",
                             " 1",
                             "101",
                             "-1",
                             "0x10",
                             "9999999999",
                             "99999999999999999999"}) {
        EXPECT_FALSE(cli::ParseWholeNumber(text, 0, 100, value)) << text;
        EXPECT_EQ(value, 7) << text;
    }
    EXPECT_EQ(cli::NotWholeNumber("--volume", "500", 0, 100),
              "--volume: \"500\" is not a whole number from 0 to 100");
}

TEST(CliArgProblems, SecondsAreDecimalTextFromZero)
{
    for (const char *text : {"0", "12", "12.5", "999999999.123456789"}) {
        EXPECT_TRUE(cli::IsSecondsText(text)) << text;
    }
    for (const char *text : {"", "-1", "1e9", "12.", ".5", "1,5", "1234567890", "inf"}) {
        EXPECT_FALSE(cli::IsSecondsText(text)) << text;
    }
    EXPECT_EQ(cli::NotSeconds("--at", "-5"),
              "--at: \"-5\" is not a time in seconds from 0 (such as 12.5)");
}

struct Case
{
    std::vector<std::string> args;
    std::string firstLine;  // the whole first line of standard error
    std::string usageStart; // how the second line begins
};

void ExpectNamedWithUsage(const std::vector<Case> &cases)
{
    for (const Case &c : cases) {
        SCOPED_TRACE(c.firstLine);
        RunResult r = RunCli(c.args);
        EXPECT_EQ(r.exitCode, 2);
        EXPECT_EQ(r.out, "");
        const size_t end = r.err.find('\n');
        ASSERT_NE(end, std::string::npos) << r.err;
        EXPECT_EQ(r.err.substr(0, end), c.firstLine);
        const std::string usage = r.err.substr(end + 1);
        EXPECT_EQ(usage.rfind(c.usageStart, 0), 0u) << usage;
        // The usage is the last line.
        EXPECT_EQ(usage.find('\n'), usage.size() - 1) << usage;
    }
}

TEST(CliArgProblems, StillAndPlayNameTheWrongTimeVolumeOrScene)
{
    const std::string still = "Usage: tarnwickmp4-cli still VIDEO [--at SECONDS]";
    const std::string play = "Usage: tarnwickmp4-cli play VIDEO [--from SECONDS]";
    ExpectNamedWithUsage({
        {{"still"}, "tarnwickmp4-cli still: VIDEO is missing", still},
        {{"still", "a.mp4", "--at", "-5"},
         "tarnwickmp4-cli still: --at: \"-5\" is not a time in seconds from 0 (such as 12.5)",
         still},
        {{"still", "a.mp4", "--at", "1e9"},
         "tarnwickmp4-cli still: --at: \"1e9\" is not a time in seconds from 0 (such as 12.5)",
         still},
        {{"still", "a.mp4", "--at"}, "tarnwickmp4-cli still: --at needs a value", still},
        {{"still", "a.mp4", "--scene", "0", "--project", "p.twproj"},
         "tarnwickmp4-cli still: --scene: \"0\" is not a whole number from 1 to 999999",
         still},
        {{"still", "a.mp4", "--scene", "2"},
         "tarnwickmp4-cli still: --scene needs --project PROJECT",
         still},
        {{"still", "a.mp4", "b.mp4"},
         "tarnwickmp4-cli still: unexpected argument \"b.mp4\"",
         still},
        {{"play", "a.mp4", "--volume", "500"},
         "tarnwickmp4-cli play: --volume: \"500\" is not a whole number from 0 to 100",
         play},
        {{"play", "a.mp4", "--from", "1:30"},
         "tarnwickmp4-cli play: --from: \"1:30\" is not a time in seconds from 0 (such as 12.5)",
         play},
        {{"play", "--from"}, "tarnwickmp4-cli play: --from needs a value", play},
        {{"play", "a.mp4", "--loop"}, "tarnwickmp4-cli play: unknown option --loop", play},
    });
}

TEST(CliArgProblems, EditNamesTheEditThatCannotBeRead)
{
    const std::string edit = "Usage: tarnwickmp4-cli edit PROJECT [--tick N]";
    ExpectNamedWithUsage({
        {{"edit"}, "tarnwickmp4-cli edit: PROJECT is missing", edit},
        {{"edit", "p.twproj", "--tick", "99999999999999"},
         "tarnwickmp4-cli edit: --tick: \"99999999999999\" is not a scene number",
         edit},
        {{"edit", "p.twproj", "--untick", "1x"},
         "tarnwickmp4-cli edit: --untick: \"1x\" is not a scene number",
         edit},
        {{"edit", "p.twproj", "--split", "1"}, "tarnwickmp4-cli edit: --split needs N AT", edit},
        {{"edit", "p.twproj", "--split", "1", "half"},
         "tarnwickmp4-cli edit: --split: \"half\" is not a frame number",
         edit},
        {{"edit", "p.twproj", "--move", "1", "x"},
         "tarnwickmp4-cli edit: --move: \"x\" is not a position in the list",
         edit},
        {{"edit", "p.twproj", "--caption", "1"},
         "tarnwickmp4-cli edit: --caption needs N TEXT",
         edit},
        {{"edit", "p.twproj", "--title"}, "tarnwickmp4-cli edit: --title needs TEXT", edit},
        {{"edit", "p.twproj", "--rename", "2"},
         "tarnwickmp4-cli edit: unknown option --rename",
         edit},
        {{"edit", "p.twproj", "q.twproj"},
         "tarnwickmp4-cli edit: unexpected argument \"q.twproj\"",
         edit},
    });
}

TEST(CliArgProblems, ScenesRenderSegmentsAndMergeNameWhatIsWrong)
{
    const std::string scenes = "Usage: tarnwickmp4-cli scenes PROJECT [--json]";
    const std::string render = "Usage: tarnwickmp4-cli render PROJECT [--threshold N]";
    const std::string segments = "Usage: tarnwickmp4-cli segments PROJECT [--threshold N]";
    const std::string merge = "Usage: tarnwickmp4-cli merge --size WxH --rate N/D";
    const std::string analyze = "Usage: tarnwickmp4-cli analyze VIDEO";
    ExpectNamedWithUsage({
        {{"scenes"}, "tarnwickmp4-cli scenes: PROJECT is missing", scenes},
        {{"scenes", "p.twproj", "--csv"}, "tarnwickmp4-cli scenes: unknown option --csv", scenes},
        {{"render", "p.twproj", "--fast"}, "tarnwickmp4-cli render: unknown option --fast", render},
        {{"render", "p.twproj", "--title"},
         "tarnwickmp4-cli render: --title needs a value",
         render},
        {{"segments", "p.twproj", "--output-name"},
         "tarnwickmp4-cli segments: --output-name needs a value",
         segments},
        {{"analyze", "a.mp4", "--threshold", "80"},
         "tarnwickmp4-cli analyze: --threshold does not apply to analyze",
         analyze},
        {{"merge"}, "tarnwickmp4-cli merge: --size WxH is missing", merge},
        {{"merge", "--size", "1280x720", "-o", "x.mp4", "a.mp4"},
         "tarnwickmp4-cli merge: --rate N/D is missing",
         merge},
        {{"merge", "--size", "1280x720", "--rate", "30", "a.mp4"},
         "tarnwickmp4-cli merge: -o NAME is missing",
         merge},
        {{"merge", "--size", "1280x720", "--rate", "30", "-o", "x.mp4"},
         "tarnwickmp4-cli merge: FILE is missing",
         merge},
        {{"merge", "--size"}, "tarnwickmp4-cli merge: --size needs a value", merge},
        {{"merge", "--size", "1280x720", "--rate", "30", "-o", "x.mp4", "--fade", "a.mp4"},
         "tarnwickmp4-cli merge: unknown option --fade",
         merge},
    });
}

} // namespace
