// Run from the build tree the programs' folder holds the data; installed, each user
// works in a folder of their own, filled once from the shipped files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/text_file.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;

TEST(ApplicationDirectory, BuildTreeOrTheUsersOwnFolderFilledFromTheShippedFiles) {
  test::TempDir root;
  const fs::path tree = fs::path(root.Path()) / "tree" / "bin";
  fs::create_directories(tree);
  test::WriteBytes((tree / "puzzles.fut").string(), "#1\r\n");
  EXPECT_EQ(ApplicationDirectoryFor(tree), tree.string() + "/");

  const fs::path usr = fs::path(root.Path()) / "usr";
  fs::create_directories(usr / "bin");
  fs::create_directories(usr / "share" / "quillmere");
  test::WriteBytes((usr / "share" / "quillmere" / "puzzles.fut").string(), "shipped");
  test::WriteBytes((usr / "share" / "quillmere" / "all.col").string(), "schemes");
  const fs::path data = fs::path(root.Path()) / "data";
  fs::create_directories(data / "Quillmere");
  test::WriteBytes((data / "Quillmere" / "puzzles.fut").string(), "mine");  // the user's own stays
  const char* saved = std::getenv("XDG_DATA_HOME");
  const std::string before = saved != nullptr ? saved : "";
  setenv("XDG_DATA_HOME", data.c_str(), 1);
  EXPECT_EQ(ApplicationDirectoryFor(usr / "bin"), (data / "Quillmere").string() + "/");
  EXPECT_EQ(test::ReadBytes((data / "Quillmere" / "puzzles.fut").string()), "mine");
  EXPECT_EQ(test::ReadBytes((data / "Quillmere" / "all.col").string()), "schemes");
  if (saved != nullptr) {
    setenv("XDG_DATA_HOME", before.c_str(), 1);
  } else {
    unsetenv("XDG_DATA_HOME");
  }
}

}  // namespace
}  // namespace qm
