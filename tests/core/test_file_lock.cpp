// One writer at a time: a second command waits for the first, says so in the status
// line, and gives up clearly when the first holds on too long.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "commands/collection_commands.h"
#include "commands/headless_port.h"
#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "core/file_lock.h"
#include "core/file_replace.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

// Another process that holds the lock of `path` from construction on: for `hold`, or
// (with no time given) until it is destroyed.
class LockedElsewhere {
 public:
  explicit LockedElsewhere(const std::string& path, std::chrono::milliseconds hold = {}) {
    int ready[2];
    if (::pipe(ready) != 0 || ::pipe(release_) != 0) return;
    child_ = ::fork();
    if (child_ == 0) {
      ::close(ready[0]);
      ::close(release_[1]);
      {
        const FileLock lock(path);  // let go (and its file removed) before the exit
        const char held = lock.Held() ? 'y' : 'n';
        if (::write(ready[1], &held, 1) != 1) ::_exit(1);
        char end = 0;
        if (hold.count() > 0) {
          std::this_thread::sleep_for(hold);
        } else if (::read(release_[0], &end, 1) < 0) {
          ::_exit(1);
        }
      }
      ::_exit(0);
    }
    ::close(ready[1]);
    ::close(release_[0]);
    char held = 'n';
    held_ = ::read(ready[0], &held, 1) == 1 && held == 'y';
    ::close(ready[0]);
  }
  ~LockedElsewhere() {
    ::close(release_[1]);
    if (child_ > 0) ::waitpid(child_, nullptr, 0);
  }
  bool Held() const { return held_; }

 private:
  pid_t child_ = -1;
  int release_[2] = {-1, -1};
  bool held_ = false;
};

struct ProgramRun {
  int code = -1;
  std::string err;
};

// The real program, in a process of its own, with a lock timeout of `timeout` seconds.
ProgramRun RunProgram(const std::vector<std::string>& args, const char* timeout) {
  test::TempDir dir;
  const std::string errFile = dir.File("err");
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("QUILLMERE_LOCK_TIMEOUT", timeout, 1);
    if (std::freopen(errFile.c_str(), "w", stderr) == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) {
      ::_exit(99);
    }
    std::vector<char*> argv{const_cast<char*>(QUILLMERE_CLI)};
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execv(QUILLMERE_CLI, argv.data());
    ::_exit(98);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, test::ReadBytes(errFile)};
}

TEST(FileLock, ASecondWriterGivesUpClearlyAndChangesNothing) {
  test::TempDir dir;
  const std::string file = dir.File("c.fut");
  fs::copy_file(kCollection, file);
  const std::string before = test::ReadBytes(file);
  {
    const LockedElsewhere holder(file);
    ASSERT_TRUE(holder.Held());
    EXPECT_TRUE(fs::exists(LockFileFor(file)));
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"append", kCollection, "-n", "3", file}, {"delete", file, "-n", "2"}, {"backup", file}}) {
      const ProgramRun run = RunProgram(args, "1");
      EXPECT_EQ(run.code, 1) << args[0];
      EXPECT_NE(run.err.find("Another command is still writing to " + file + " (waited 1 seconds)"),
                std::string::npos)
          << args[0] << ": " << run.err;
    }
    EXPECT_EQ(test::ReadBytes(file), before);
    // Readers are not held up.
    EXPECT_EQ(RunProgram({"count", file}, "1").code, 0);
  }
  // Once the holder is gone the lock file is too, and the same command goes through.
  EXPECT_FALSE(fs::exists(LockFileFor(file)));
  EXPECT_EQ(RunProgram({"append", kCollection, "-n", "3", file}, "1").code, 0);
  EXPECT_EQ(CountPuzzles(file), CountPuzzles(kCollection) + 1);
  EXPECT_FALSE(fs::exists(LockFileFor(file)));
}

TEST(FileLock, AWindowCommandWaitsWithAMessageInTheStatusLine) {
  test::TempDir dir;
  const std::string file = dir.File("c.fut");
  fs::copy_file(kCollection, file);
  const test::WorkingDirectory cwd(dir.Path());  // where the delete command's copy goes
  PuzzleModel model;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(model, port, file, 2).notFound);
  const std::string second = model.Comment;
  {
    const LockedElsewhere holder(file, std::chrono::milliseconds(300));
    ASSERT_TRUE(holder.Held());
    EXPECT_EQ(mnudelete(model, port, "2"), CommandResult::Done);
  }
  ASSERT_GE(port.statusLines.size(), 2u);
  EXPECT_NE(std::find(port.statusLines.begin(), port.statusLines.end(),
                      "Waiting for another command to finish with " + file + " ..."),
            port.statusLines.end());
  EXPECT_EQ(port.statusLines.back(), "");  // the note goes once the wait is over
  EXPECT_FALSE(port.Busy());
  EXPECT_EQ(CountPuzzles(file), CountPuzzles(kCollection) - 1);
  ASSERT_FALSE(ReadPuzzle(model, port, file, 2).notFound);
  EXPECT_NE(model.Comment, second);
}

TEST(FileLock, TheLockFileNamesTheTargetOfALink) {
  test::TempDir dir;
  const std::string file = dir.File("real.fut");
  test::WriteBytes(file, "");
  fs::create_symlink(file, dir.File("link.fut"));
  EXPECT_EQ(LockFileFor(file), dir.File(".real.fut.quillmere-lock"));
  EXPECT_EQ(LockFileFor(dir.File("link.fut")), LockFileFor(file));
  EXPECT_EQ(LockFileFor("plain.fut"), ".plain.fut.quillmere-lock");
  // A user's file of that name that holds something is never removed.
  test::WriteBytes(LockFileFor(file), "mine");
  { const FileLock lock(file); }
  EXPECT_EQ(test::ReadBytes(LockFileFor(file)), "mine");
}

}  // namespace
}  // namespace qm
