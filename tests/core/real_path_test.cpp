// Tests of paths reached through symbolic links: the real path, and files written through a
// link to the file it names.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/file_io.h"
#include "core/paths.h"
#include "core/tarnwick_data.h"
#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;
using testsupport::ReadFile;
using testsupport::TempDir;

TEST(RealPath, ResolvesLinksInTheFoldersAndInTheLastPart)
{
    TempDir dir;
    const std::string root = core::RealPath(dir.path());
    fs::create_directories(dir.file("real/sub"));
    ASSERT_TRUE(testsupport::WriteFile(dir.file("real/sub/a.twproj"), "{}"));
    fs::create_directory_symlink("real/sub", dir.file("folder_link"));
    fs::create_symlink("folder_link/a.twproj", dir.file("file_link"));
    fs::create_symlink("file_link", dir.file("link_to_link"));

    EXPECT_EQ(core::RealPath(dir.file("folder_link/a.twproj")), root + "/real/sub/a.twproj");
    EXPECT_EQ(core::RealPath(dir.file("link_to_link")), root + "/real/sub/a.twproj");
    EXPECT_EQ(core::RealPath(dir.file("folder_link") + "/"), root + "/real/sub");
    EXPECT_EQ(core::RealPath(dir.file("folder_link/../x")), root + "/real/x");
    // What does not exist yet is kept as named, also behind a link.
    EXPECT_EQ(core::RealPath(dir.file("folder_link/new/b.mp4")), root + "/real/sub/new/b.mp4");
    fs::create_symlink("real/later.twproj", dir.file("dangling"));
    EXPECT_EQ(core::RealPath(dir.file("dangling")), root + "/real/later.twproj");
    EXPECT_EQ(core::RealPath(""), "");
}

TEST(WriteFileAtomically, WritesThroughALinkToTheFileItNames)
{
    TempDir dir;
    fs::create_directory(dir.file("real"));
    fs::create_directory(dir.file("links"));
    ASSERT_TRUE(testsupport::WriteFile(dir.file("real/p.twproj"), "old"));
    chmod(dir.file("real/p.twproj").c_str(), 0640);
    fs::create_symlink("../real/p.twproj", dir.file("links/p.twproj"));

    std::string error;
    ASSERT_TRUE(core::WriteFileAtomically(dir.file("links/p.twproj"), "new", &error)) << error;
    EXPECT_TRUE(fs::is_symlink(dir.file("links/p.twproj")));
    EXPECT_EQ(ReadFile(dir.file("real/p.twproj")), "new");
    EXPECT_EQ(fs::status(dir.file("real/p.twproj")).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    // No temporary file is left in either folder.
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.file("links")), {}), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.file("real")), {}), 1);

    // A link to a file not made yet makes that file.
    fs::create_symlink("../real/later.csv", dir.file("links/later.csv"));
    ASSERT_TRUE(core::WriteFileAtomically(dir.file("links/later.csv"), "1\n", &error)) << error;
    EXPECT_TRUE(fs::is_symlink(dir.file("links/later.csv")));
    EXPECT_EQ(ReadFile(dir.file("real/later.csv")), "1\n");
}

TEST(ProjectFile, SavedThroughALinkReplacesTheRealProjectAndKeepsTheLink)
{
    TempDir dir;
    core::CTarnwickData data;
    data.input_file = dir.file("clip.mp4");
    ASSERT_TRUE(data.SaveProjectFile(dir.file("clip.mp4.twproj")));
    fs::create_symlink("clip.mp4.twproj", dir.file("link.twproj"));

    data.output_name = "other.mp4";
    ASSERT_TRUE(data.SaveProjectFile(dir.file("link.twproj")));
    EXPECT_TRUE(fs::is_symlink(dir.file("link.twproj")));
    core::CTarnwickData read;
    ASSERT_TRUE(read.LoadProjectFile(dir.file("clip.mp4.twproj")));
    EXPECT_EQ(read.output_name, "other.mp4");
}

} // namespace
