// Tests of the command-text splitter: the Windows C runtime's quoting rule, case by case.
#include "engine/child_process.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Args = std::vector<std::string>;

struct SplitCase
{
    const char *text;
    Args args;
};

TEST(SplitCommandText, FollowsTheWindowsRuntimeRule)
{
    const SplitCase cases[] = {
        {"", {}},
        {"   \t ", {}},
        {"ffmpeg", {"ffmpeg"}},
        {"ffmpeg -y -i a.mp4", {"ffmpeg", "-y", "-i", "a.mp4"}},
        {"ffmpeg  \t -y   out", {"ffmpeg", "-y", "out"}},
        {"  ffprobe -v quiet", {"ffprobe", "-v", "quiet"}},
        {"ffmpeg -i \"clip dir/a b.mp4\"", {"ffmpeg", "-i", "clip dir/a b.mp4"}},
        {"ffmpeg -vf \"scale=2:1\" -", {"ffmpeg", "-vf", "scale=2:1", "-"}},
        {"tool a\"b c\"d", {"tool", "ab cd"}},
        {"tool \"\"", {"tool", ""}},
        {"tool \"\" x", {"tool", "", "x"}},
        {"tool \"unterminated arg", {"tool", "unterminated arg"}},
        // Backslashes not before a quote stand for themselves.
        {"tool a\\b c\\\\d", {"tool", "a\\b", "c\\\\d"}},
        {"tool C:\\dir\\", {"tool", "C:\\dir\\"}},
        // 2n backslashes before a quote: n backslashes, the quote groups.
        {"tool \"a\\\\\" b", {"tool", "a\\", "b"}},
        {"tool a\\\\\\\\\"b c\"", {"tool", "a\\\\b c"}},
        // 2n+1 backslashes before a quote: n backslashes and a literal quote.
        {"tool a\\\"b", {"tool", "a\"b"}},
        {"tool a\\\\\\\"b", {"tool", "a\\\"b"}},
        {"tool \"a\\\" b\"", {"tool", "a\" b"}},
        // A pair of quotes inside quotes: one literal quote, still inside.
        {"tool \"a\"\"b c\"", {"tool", "a\"b c"}},
        {"tool \"\"\"\"", {"tool", "\""}},
        // The program name: quotes group, backslashes are plain.
        {"\"my tools\\ff mpeg\" -y", {"my tools\\ff mpeg", "-y"}},
        {"dir\\\"x y\" z", {"dir\\x y", "z"}},
        // Multi-byte text passes unchanged.
        {"ffprobe \"clip dir/ビデオ 1.mp4\"", {"ffprobe", "clip dir/ビデオ 1.mp4"}},
        {"ffmpeg -af \"volume=0.050000\" -vf \"a,showinfo\"",
         {"ffmpeg", "-af", "volume=0.050000", "-vf", "a,showinfo"}},
    };
    for (const SplitCase &c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(engine::SplitCommandText(c.text), c.args);
    }
}

TEST(PathNotCarried, PathsThatStayOneArgumentPass)
{
    const std::string path = "/tmp/a b/$(x);'c'\\d.mp4";
    const std::string command = "ffprobe -v quiet \"" + path + "\"";
    EXPECT_EQ(engine::PathNotCarried(command, {path}), std::nullopt);
}

TEST(PathNotCarried, QuoteInAPathWouldBecomeExtraArguments)
{
    const std::string path = "box.mp4\" -report \"-hide_banner";
    const std::string command = "ffprobe -v quiet \"" + path + "\"";
    // This is what the tool would get: options of the path's own making.
    EXPECT_EQ(
        engine::SplitCommandText(command),
        (std::vector<std::string>{"ffprobe", "-v", "quiet", "box.mp4", "-report", "-hide_banner"}));
    EXPECT_EQ(engine::PathNotCarried(command, {path}), path);
}

TEST(PathNotCarried, TrailingBackslashWouldSwallowTheClosingQuote)
{
    const std::string path = "/tmp/name\\";
    const std::string command = "ffmpeg -i \"" + path + "\" -y \"/tmp/out.mp4\"";
    EXPECT_EQ(engine::PathNotCarried(command, {path, "/tmp/out.mp4"}), path);
    // The swallowed quote takes the next path with it.
    EXPECT_EQ(engine::PathNotCarried(command, {"/tmp/out.mp4"}), "/tmp/out.mp4");
}

TEST(PathNotCarried, PathMissingFromTheCommandIsReported)
{
    EXPECT_EQ(engine::PathNotCarried("ffmpeg -i \"/a.mp4\"", {"/a.mp4", "/b.mp4"}), "/b.mp4");
}

TEST(PathNotCarried, LineBreakIsRefusedEvenThoughItSplitsIntact)
{
    const std::string path = "/tmp/a\nb.mp4";
    EXPECT_EQ(engine::PathNotCarried("ffprobe \"" + path + "\"", {path}), path);
}

} // namespace
