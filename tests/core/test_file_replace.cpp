#include "core/file_replace.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;

TEST(FileReplace, AFailedWriteLeavesTheOldFileAndNoScratch) {
  test::TempDir dir;
  const std::string target = dir.File("c.fut");
  test::WriteBytes(target, "old");
  fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  {
    test::FileSizeLimit full(4);
    EXPECT_FALSE(ReplaceFileWith(target, "much longer than four bytes"));
  }
  EXPECT_EQ(test::ReadBytes(target), "old");
  EXPECT_FALSE(ReplaceFile(target, [](const std::string&) { return false; }));
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.Path()), fs::directory_iterator()), 1);

  ASSERT_TRUE(ReplaceFileWith(target, "new"));
  EXPECT_EQ(test::ReadBytes(target), "new");
  EXPECT_EQ(fs::status(target).permissions(),
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(FileReplace, WritesThroughLinksAndDevices) {
  test::TempDir dir;
  const std::string real = dir.File("real.fut");
  test::WriteBytes(real, "old");
  fs::create_symlink(real, dir.File("link.fut"));
  ASSERT_TRUE(ReplaceFileWith(dir.File("link.fut"), "new"));
  EXPECT_TRUE(fs::is_symlink(dir.File("link.fut")));
  EXPECT_EQ(test::ReadBytes(real), "new");

  EXPECT_FALSE(ReplaceFileWith("/dev/full", "x"));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_FALSE(ReplaceFileWith(dir.Path(), "x"));
  EXPECT_FALSE(ReplaceFileWith(dir.File("no/such/dir.fut"), "x"));
}

TEST(FileReplace, CopiesSafely) {
  test::TempDir dir;
  const std::string source = dir.File("a.fut");
  test::WriteBytes(source, "records");
  std::string bytes;
  EXPECT_FALSE(ReadWholeFile(dir.Path(), bytes));
  EXPECT_TRUE(CopyFileSafely(source, source));
  EXPECT_EQ(test::ReadBytes(source), "records");
  EXPECT_TRUE(CopyFileSafely(source, dir.File("b.fut")));
  EXPECT_EQ(test::ReadBytes(dir.File("b.fut")), "records");
  EXPECT_FALSE(CopyFileSafely(dir.File("missing.fut"), dir.File("b.fut")));
  EXPECT_EQ(test::ReadBytes(dir.File("b.fut")), "records");
}

}  // namespace
}  // namespace qm
