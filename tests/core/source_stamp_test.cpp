// Tests of the record of which source a working file was made from.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/source_stamp.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

TEST(SourceStamp, FileIsTrustedOnlyForTheSourceItsRecordNames)
{
    testsupport::TempDir dir;
    fs::create_directories(dir.file("A"));
    fs::create_directories(dir.file("B"));
    const std::string a = dir.file("A/cam.avi");
    const std::string b = dir.file("B/cam.avi");
    ASSERT_TRUE(testsupport::WriteFile(a, "first video"));
    ASSERT_TRUE(testsupport::WriteFile(b, "other video"));
    const std::string working = dir.file("cam_input_ch.mp4");
    ASSERT_TRUE(testsupport::WriteFile(working, "made from A"));
    EXPECT_FALSE(core::MadeFromSource(working, a)); // no record: not trusted
    ASSERT_TRUE(core::WriteSourceStamp(working, a));
    EXPECT_EQ(core::SourceStampPath(working), dir.file(".cam_input_ch.source"));
    EXPECT_TRUE(core::MadeFromSource(working, a));
    EXPECT_FALSE(core::MadeFromSource(working, b));
    const std::string link = dir.file("link.avi");
    fs::create_symlink(a, link);
    EXPECT_TRUE(core::MadeFromSource(working, link));
    core::RemoveSourceStamp(working);
    EXPECT_FALSE(core::MadeFromSource(working, a));
}

TEST(SourceStamp, SourceChangedOrGoneOrFileGoneIsNotTrusted)
{
    testsupport::TempDir dir;
    const std::string source = dir.file("cam.avi");
    const std::string working = dir.file("cam_input_ch.mp4");
    ASSERT_TRUE(testsupport::WriteFile(source, "recording"));
    ASSERT_TRUE(testsupport::WriteFile(working, "converted"));
    ASSERT_TRUE(core::WriteSourceStamp(working, source));
    ASSERT_TRUE(testsupport::WriteFile(source, "a longer recording"));
    EXPECT_FALSE(core::MadeFromSource(working, source));
    ASSERT_TRUE(core::WriteSourceStamp(working, source));
    // Same size, another modification time.
    fs::last_write_time(source, fs::last_write_time(source) - std::chrono::hours(1));
    EXPECT_FALSE(core::MadeFromSource(working, source));
    ASSERT_TRUE(core::WriteSourceStamp(working, source));
    fs::remove(working);
    EXPECT_FALSE(core::MadeFromSource(working, source));
    EXPECT_FALSE(core::WriteSourceStamp(working, dir.file("gone.avi")));
}

} // namespace
