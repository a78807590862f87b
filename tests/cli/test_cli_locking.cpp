// Many commands on one collection at once: appends racing deletes and sorts lose no
// record that was reported written, and no one sees a torn record.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "commands/headless_port.h"
#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "support/cli_run.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

constexpr int kWriters = 4;
constexpr int kAppends = 100;
constexpr int kVictims = 30;  // records the deleting process removes, one at a time
constexpr int kSorts = 10;

void AppendLine(const std::string& path, const std::string& line) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  const std::string text = line + "\n";
  if (fd >= 0 && ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) ::_exit(3);
  ::close(fd);
}

std::set<std::string> Lines(const std::string& path) {
  std::set<std::string> lines;
  LineReader file(path);
  std::string line;
  while (file.ReadLine(line)) lines.insert(line);
  return lines;
}

// Every record of the file read whole: comment -> how often. False at a torn record
// (one that cannot be read, or whose grid differs from the puzzle every record holds).
bool ReadAll(const std::string& path, const PuzzleModel& puzzle, std::map<std::string, int>& comments) {
  RecordStream stream(path);
  PuzzleModel model;
  ReadResult result;
  while (stream.Next(model, true, result)) {
    if (result.notFound || model.PosText != puzzle.PosText || model.SolutionText != puzzle.SolutionText) return false;
    ++comments[model.Comment];
  }
  return !stream.Failed();
}

template <class Work>
pid_t Spawn(Work work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  return child;
}

// A folder in memory where the machine has one: the race is the same, the syncs free.
class MemoryDir {
 public:
  MemoryDir() {
    std::string pattern = (::access("/dev/shm", W_OK) == 0 ? std::string("/dev/shm") : fs::temp_directory_path().string()) +
                          "/quillmere-race-XXXXXX";
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~MemoryDir() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
  }
  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

TEST(CliLocking, AppendsRacingDeletesAndSortsLoseNothingAcknowledged) {
  const MemoryDir dir;
  ASSERT_FALSE(dir.Path().empty());
  const test::WorkingDirectory cwd(dir.Path());  // the delete command's copy lies here
  const std::string dest = dir.File("shared.fut");
  PuzzleModel puzzle;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(puzzle, port, kCollection, 1).notFound);
  for (int v = 1; v <= kVictims; ++v) ASSERT_TRUE(AppendPuzzle(puzzle, "victim " + std::to_string(v), v, dest));
  for (int w = 0; w < kWriters; ++w) {
    const std::string source = dir.File("source" + std::to_string(w) + ".fut");
    for (int i = 1; i <= kAppends; ++i) {
      ASSERT_TRUE(AppendPuzzle(puzzle, "w" + std::to_string(w) + " " + std::to_string(i), i, source));
    }
  }

  std::vector<pid_t> children;
  for (int w = 0; w < kWriters; ++w) {
    children.push_back(Spawn([&, w] {
      const std::string source = dir.File("source" + std::to_string(w) + ".fut");
      for (int i = 1; i <= kAppends; ++i) {
        if (test::Cli({"append", source, "-n", std::to_string(i), dest}).code == 0) {
          AppendLine(dir.File("acked"), "w" + std::to_string(w) + " " + std::to_string(i));
        }
      }
      return 0;
    }));
  }
  // Record 1 is always a victim while any is left: appends go to the end.
  children.push_back(Spawn([&] {
    for (int v = 1; v <= kVictims; ++v) {
      if (test::Cli({"delete", dest, "-n", "1"}).code == 0) AppendLine(dir.File("deleted"), std::to_string(v));
    }
    return 0;
  }));
  children.push_back(Spawn([&] {
    std::map<std::string, int> comments;
    for (int s = 0; s < kSorts; ++s) {
      const std::string sorted = dir.File("sorted.fut");
      if (test::Cli({"sort", dest, sorted, "--by", "header", "--order", "ascending"}).code != 0) return 1;
      comments.clear();
      if (!ReadAll(sorted, puzzle, comments)) return 2;
      for (const auto& [comment, times] : comments) {
        if (times != 1) return 3;
      }
    }
    return 0;
  }));
  for (const pid_t child : children) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a racing command saw a torn file: " << status;
  }

  const std::set<std::string> acked = Lines(dir.File("acked"));
  const std::size_t deleted = Lines(dir.File("deleted")).size();
  EXPECT_GT(acked.size(), 0u);
  std::map<std::string, int> comments;
  ASSERT_TRUE(ReadAll(dest, puzzle, comments)) << "a torn record";
  for (const std::string& comment : acked) EXPECT_EQ(comments[comment], 1) << comment;
  int victims = 0;
  for (const auto& [comment, times] : comments) {
    if (comment.starts_with("victim")) victims += times;
  }
  EXPECT_EQ(victims, kVictims - static_cast<int>(deleted));
  EXPECT_EQ(CountRecords(dest), static_cast<int>(acked.size()) + victims);
}

}  // namespace
}  // namespace qm
