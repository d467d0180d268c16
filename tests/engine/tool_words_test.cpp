// Tests of the reason picked from what a failed tool wrote.
#include "engine/tool_words.h"

#include <gtest/gtest.h>

namespace {

using engine::ToolWords;

TEST(ToolWords, FullDiskGivesTheSystemErrorLineNotTheEncodersLastWords)
{
    const std::string output =
        "Press [q] to stop, [?] for help\n"
        "Could not write header for output file #0 (incorrect codec parameters ?): No space left "
        "on device\n"
        "Error initializing output stream 0:0 -- \n"
        "[aac @ 0x560b24bb4f80] Qavg: 102.946\n"
        "[aac @ 0x560b24bb4f80] 2 frames left in the queue on closing\n"
        "Conversion failed!\n";
    EXPECT_EQ(ToolWords(output),
              "Could not write header for output file #0 (incorrect codec parameters ?): No "
              "space left on device");
}

TEST(ToolWords, FileThatCannotBeOpenedIsNamedWithItsReason)
{
    const std::string output = "  Metadata:\n"
                               "    title           : Garden\n"
                               "    handler_name    : SoundHandler\n"
                               "/x/out/a_trim.partial.mp4: Is a directory\n";
    EXPECT_EQ(ToolWords(output), "/x/out/a_trim.partial.mp4: Is a directory");
    EXPECT_EQ(ToolWords("[mp4 @ 0x55d0c0a1] /x/a.mp4: Permission denied\r\n"),
              "/x/a.mp4: Permission denied");
}

TEST(ToolWords, WithoutASystemErrorTheLastLineOfTroubleCounts)
{
    const std::string output = "frame=   10 fps=0.0 q=2.0 size=  1kB time=00:00:00.40\r"
                               "Error while opening encoder for output stream #0:0\n"
                               "Conversion failed!\n";
    EXPECT_EQ(ToolWords(output), "Error while opening encoder for output stream #0:0");
}

TEST(ToolWords, OutputWithoutTroubleGivesNothing)
{
    EXPECT_EQ(ToolWords(""), "");
    EXPECT_EQ(ToolWords("frame=  46 fps=0.0 q=2.0 Lsize=  25kB\nConversion failed!\n"), "");
    EXPECT_EQ(ToolWords("    title           : Garden\n"), "");
}

} // namespace
