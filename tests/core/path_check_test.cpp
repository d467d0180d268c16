// Tests of the path check that every path gets where it enters.
#include "core/path_check.h"

#include <gtest/gtest.h>

namespace {

TEST(PathCheckTest, PlainPathsPass)
{
    EXPECT_EQ(core::PathProblem("/tmp/box.mp4"), "");
    EXPECT_EQ(core::PathProblem("/tmp/a b/$(rm -rf x);'`.mp4"), "");
    EXPECT_EQ(core::PathProblem("/tmp/back\\slash/inside.mp4"), "");
    EXPECT_EQ(core::PathProblem("/tmp/\xE6\x98\xA0\xE5\x83\x8F.mp4"), ""); // Japanese name
}

TEST(PathCheckTest, DoubleQuoteIsRefused)
{
    EXPECT_EQ(core::PathProblem("box.mp4\" -report \"-hide_banner"), "contains a double quote");
}

TEST(PathCheckTest, LineBreaksAreRefused)
{
    EXPECT_EQ(core::PathProblem("a\nb.mp4"), "contains a line break");
    EXPECT_EQ(core::PathProblem("a\rb.mp4"), "contains a line break");
}

TEST(PathCheckTest, OtherControlCharactersAreRefused)
{
    EXPECT_EQ(core::PathProblem("a\tb.mp4"), "contains a control character");
    EXPECT_EQ(core::PathProblem(std::string("a\0b", 3)), "contains a control character");
}

TEST(PathCheckTest, InvalidUtf8IsRefused)
{
    EXPECT_EQ(core::PathProblem("a\xFF.mp4"), "is not valid UTF-8");
    EXPECT_EQ(core::PathProblem("a\xC0\xAF.mp4"), "is not valid UTF-8");     // overlong "/"
    EXPECT_EQ(core::PathProblem("a\xED\xA0\x80.mp4"), "is not valid UTF-8"); // surrogate
    EXPECT_EQ(core::PathProblem("a\xE6\x98"), "is not valid UTF-8");         // cut short
}

TEST(PathCheckTest, TrailingBackslashIsRefused)
{
    EXPECT_EQ(core::PathProblem("/tmp/name\\"), "ends with a backslash");
}

TEST(PathCheckTest, EmptyPathIsRefused)
{
    EXPECT_EQ(core::PathProblem(""), "is empty");
}

TEST(PathCheckTest, Utf8Validation)
{
    EXPECT_TRUE(core::IsValidUtf8(""));
    EXPECT_TRUE(core::IsValidUtf8("\xF0\x9F\x8E\xA5"));
    EXPECT_FALSE(core::IsValidUtf8("\xF4\x90\x80\x80")); // above U+10FFFF
    EXPECT_FALSE(core::IsValidUtf8("\x80"));
}

} // namespace

TEST(PathCheckTest, StemLongerThanTheLimitIsTooLong)
{
    const std::string stem200(200, 'v');
    EXPECT_FALSE(core::StemTooLong("/videos/" + stem200 + ".mp4"));
    EXPECT_TRUE(core::StemTooLong("/videos/" + stem200 + "v.mp4"));
    // The extension does not count, the folders do not either.
    EXPECT_FALSE(core::StemTooLong(std::string(300, 'd') + "/" + stem200 + ".extension"));
    EXPECT_TRUE(core::StemTooLong(stem200 + "v"));
    // Bytes, not characters: 67 Japanese characters are 201 bytes.
    std::string japanese;
    for (int i = 0; i < 66; ++i) {
        japanese += "\xE5\x8B\x95"; // 動
    }
    EXPECT_FALSE(core::StemTooLong("/v/" + japanese + ".mp4"));
    EXPECT_TRUE(core::StemTooLong("/v/" + japanese + "\xE5\x8B\x95.mp4"));
    // A name that begins with its only point has no extension.
    EXPECT_TRUE(core::StemTooLong("/v/." + stem200));
}
