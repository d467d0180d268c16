// Tests of the kept ffprobe texts: used again only for the file exactly as it was probed.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "engine/probe_cache.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

TEST(ProbeCache, TextIsKeptForTheUnchangedFileOnly)
{
    testsupport::TempDir dir;
    const std::string file = dir.file("clip.mp4");
    EXPECT_FALSE(engine::CachedProbeText(file).has_value()); // no file
    ASSERT_TRUE(testsupport::WriteFile(file, "first"));
    EXPECT_FALSE(engine::CachedProbeText(file).has_value()); // never probed
    engine::KeepProbeText(file, "{\"first\": 1}");
    ASSERT_TRUE(engine::CachedProbeText(file).has_value());
    EXPECT_EQ(*engine::CachedProbeText(file), "{\"first\": 1}");
    // Rewritten under its name (a new segment renamed over it): probed again.
    const std::string other = dir.file("other.mp4");
    ASSERT_TRUE(testsupport::WriteFile(other, "second"));
    fs::rename(other, file);
    EXPECT_FALSE(engine::CachedProbeText(file).has_value());
    engine::KeepProbeText(file, "{\"second\": 2}");
    EXPECT_EQ(*engine::CachedProbeText(file), "{\"second\": 2}");
    // Grown in place: probed again.
    ASSERT_TRUE(testsupport::WriteFile(file, "second, and more"));
    EXPECT_FALSE(engine::CachedProbeText(file).has_value());
    fs::remove(file);
    EXPECT_FALSE(engine::CachedProbeText(file).has_value());
}

TEST(ProbeCache, FolderIsNeverKept)
{
    testsupport::TempDir dir;
    engine::KeepProbeText(dir.path(), "{}");
    EXPECT_FALSE(engine::CachedProbeText(dir.path()).has_value());
}

} // namespace
