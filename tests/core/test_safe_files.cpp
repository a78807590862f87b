// No write may cost a collection: a folder that takes no new files, a full disk, a
// killed writer, a FIFO or a device. And every odd input gets a clear answer.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "commands/record_commands.h"
#include "commands/settings_commands.h"
#include "core/collection_file.h"
#include "core/file_replace.h"
#include "commands/headless_port.h"
#include "core/text_file.h"
#include "settings/config_file.h"
#include "support/cli_run.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;
using test::Cli;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

// A folder whose files can be rewritten but where no new file can be made: a tiny
// tmpfs with every inode in use when we may mount one, else a folder without write
// permission (which root would ignore).
class NoNewFilesFolder {
 public:
  NoNewFilesFolder() {
    path_ = dir_.Path() + "/full";
    fs::create_directory(path_);
    if (::geteuid() == 0) {
      if (::mount("tmpfs", path_.c_str(), "tmpfs", 0, "size=4m,nr_inodes=8") != 0) return;
      mounted_ = true;
    }
    ready_ = true;
  }
  ~NoNewFilesFolder() {
    if (mounted_) ::umount2(path_.c_str(), MNT_DETACH);
  }
  // Places the file, then closes the folder to new ones.
  void Seal(const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [name, bytes] : files) test::WriteBytes(path_ + "/" + name, bytes);
    if (mounted_) {
      for (int i = 0; ::access(path_.c_str(), F_OK) == 0; ++i) {
        const std::string filler = path_ + "/.filler" + std::to_string(i);
        if (std::FILE* f = std::fopen(filler.c_str(), "w")) {
          std::fclose(f);
        } else {
          break;
        }
      }
    } else {
      fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_exec);
    }
  }
  bool Ready() const { return ready_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  test::TempDir dir_;
  std::string path_;
  bool mounted_ = false;
  bool ready_ = false;
};

std::string Collection() { return test::ReadBytes(kCollection); }

TEST(SafeFiles, NoCommandRewritesAFileInPlaceWhenNoNewFileCanBeMade) {
  NoNewFilesFolder folder;
  if (!folder.Ready()) GTEST_SKIP() << "cannot make a folder that refuses new files here";
  const std::string old = Collection();
  const std::string settings = "stamp\r\ndefault.col\r\n 0\r\npuzzles.fut\r\n4000\r\n";
  folder.Seal({{"sorted.fut", old}, {"copy.fut", old}, {"current.fut", old}, {"Quillmere.cfg", settings}});

  EXPECT_FALSE(ReplaceFileWith(folder.File("sorted.fut"), "new"));
  EXPECT_EQ(Cli({"sort", kCollection, folder.File("sorted.fut"), "--by", "signs", "--order", "descending"}).code, 1);
  EXPECT_EQ(Cli({"copy", test::TempDir().File("x"), folder.File("copy.fut")}).code, 1);
  EXPECT_EQ(Cli({"copy", kCollection, folder.File("copy.fut")}).code, 1);
  test::TempDir elsewhere;
  {
    test::WorkingDirectory cwd(elsewhere.Path());
    const test::CliRun removed = Cli({"delete", folder.File("current.fut"), "-n", "2"});
    EXPECT_EQ(removed.code, 1) << removed.out;
  }
  PuzzleModel model;
  HeadlessPort port;
  model.AppDir = folder.File("");
  WriteSettings(model, port, 0);
  EXPECT_EQ(port.messages.size(), 1u);
  EXPECT_EQ(test::ReadBytes(folder.File("Quillmere.cfg")), settings);
  for (const char* name : {"sorted.fut", "copy.fut", "current.fut"}) {
    EXPECT_EQ(test::ReadBytes(folder.File(name)), old) << name;
  }
}

TEST(SafeFiles, AnAppendGoesInWholeOrNotAtAll) {
  test::TempDir dir;
  const std::string file = dir.File("book.fut");
  PuzzleModel model;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(model, port, kCollection, 60).notFound);
  ASSERT_TRUE(WritePuzzle(model, port, "first", 1, file));
  const std::string before = test::ReadBytes(file);
  {
    test::FileSizeLimit full(before.size() + 40);  // room for a part of the record only
    EXPECT_FALSE(WritePuzzle(model, port, "second", 2, file));
  }
  EXPECT_EQ(test::ReadBytes(file), before);
  // The next append reads back whole: nothing cut is left to glue it to.
  ASSERT_TRUE(WritePuzzle(model, port, "third", 2, file));
  EXPECT_EQ(CountPuzzles(file), 2);
  ASSERT_FALSE(ReadPuzzle(model, port, file, 2).notFound);
  EXPECT_EQ(model.Comment, "third");

  // A new file that could not be written whole is not left behind.
  const std::string fresh = dir.File("fresh.fut");
  {
    test::FileSizeLimit full(10);
    EXPECT_FALSE(WritePuzzle(model, port, "x", 1, fresh));
  }
  EXPECT_FALSE(fs::exists(fresh));

  // The command line tells the same story.
  {
    test::FileSizeLimit full(before.size() + 40);
    EXPECT_EQ(Cli({"append", kCollection, "-n", "5", file}).code, 1);
  }
  EXPECT_EQ(CountPuzzles(file), 2);
}

TEST(SafeFiles, AKilledWriterLeavesTheOldFileOrTheNewOne) {
  test::TempDir dir;
  const std::string target = dir.File("big.fut");
  const std::string a(3 << 20, 'a');
  const std::string b(3 << 20, 'b');
  test::WriteBytes(target, a);
  std::mt19937 random(3);
  for (int round = 0; round < 12; ++round) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      for (;;) {
        ReplaceFileWith(target, b);
        ReplaceFileWith(target, a);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(2000 + random() % 40000));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    const std::string now = test::ReadBytes(target);
    ASSERT_TRUE(now == a || now == b) << "round " << round << ": " << now.size() << " bytes";
  }
}

TEST(SafeFiles, OnlyRegularFilesAreReadOrWritten) {
  test::TempDir dir;
  const std::string fifo = dir.File("pipe.fut");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  PuzzleModel model;
  HeadlessPort port;
  for (const std::string& path : {fifo, std::string("/dev/zero"), dir.Path()}) {
    EXPECT_EQ(CountPuzzles(path), 0) << path;
    EXPECT_TRUE(ReadPuzzle(model, port, path, 1).notFound) << path;
    EXPECT_FALSE(ReplaceFileWith(path, "x")) << path;
    EXPECT_FALSE(AppendToFile(path, "x")) << path;
    std::string bytes;
    EXPECT_FALSE(ReadWholeFile(path, bytes)) << path;
  }
  EXPECT_EQ(Cli({"show", fifo}).code, 1);
  EXPECT_EQ(Cli({"sort", fifo, dir.File("out.fut"), "--by", "size", "--order", "ascending"}).code, 1);
  EXPECT_EQ(Cli({"append", kCollection, fifo}).code, 1);
  EXPECT_EQ(Cli({"export", "txt", kCollection, "-o", fifo}).code, 1);
}

TEST(SafeFiles, StaleScratchFilesOfOursGoAndNothingElse) {
  test::TempDir dir;
  const auto hourAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
  const auto hourAhead = fs::file_time_type::clock::now() + std::chrono::hours(1);
  // Our names only: ".quillmere-scratch.PID.XXXXXX" of a process that is gone, and the
  // older ".NAME.qmtmpXXXXXX". Names that merely look like scratch files (rsync's
  // temporaries, a user's ".notes.txt.backup") are never ours.
  const std::vector<std::string> stale = {".book.fut.qmtmpAb12Cd", ".quillmere-scratch.999999999.Ab12Cd"};
  const std::vector<std::string> kept = {".book.fut.qmtmpNew123", "keep.fut.a1b2c3",   ".bashrc.abcdef",
                                         ".book.fut.Xy12Zq",      ".notes.txt.a1b2c3", ".notes.txt.backup",
                                         ".x.fut.Xy12Ab",         ".quillmere-scratch.12x.Ab12Cd",
                                         ".quillmere-scratch.999999999.Ab12Cd.bak"};
  for (const std::string& name : stale) {
    test::WriteBytes(dir.File(name), "x");
    fs::last_write_time(dir.File(name), hourAgo);
  }
  for (const std::string& name : kept) {
    test::WriteBytes(dir.File(name), "x");
    fs::last_write_time(dir.File(name), name.find("New") != std::string::npos ? hourAhead : hourAgo);
  }
  ASSERT_TRUE(ReplaceFileWith(dir.File("book.fut"), "#1\r\n"));
  for (const std::string& name : stale) EXPECT_FALSE(fs::exists(dir.File(name))) << name;
  for (const std::string& name : kept) EXPECT_TRUE(fs::exists(dir.File(name))) << name;
}

TEST(SafeFiles, ScratchFilesOfRunningCommandsStay) {
  test::TempDir dir;
  const auto hourAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
  // A command still writing (however long it has taken) keeps its scratch file while a
  // second command replaces another file of the same folder.
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t writer = ::fork();
  ASSERT_GE(writer, 0);
  if (writer == 0) {
    const bool ok = ReplaceFile(dir.File("slow.fut"), [&](const std::string& scratch) {
      if (!WriteWholeFile(scratch, "slow")) return false;
      fs::last_write_time(scratch, hourAgo);
      const char go = 'g';
      if (::write(ready[1], &go, 1) != 1) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      return true;
    });
    ::_exit(ok ? 0 : 1);
  }
  char go = 0;
  ASSERT_EQ(::read(ready[0], &go, 1), 1);
  ::close(ready[0]);
  ::close(ready[1]);

  // And one whose process is gone, but which another process holds locked.
  const std::string held = dir.File(".quillmere-scratch.999999998.Zz99Yy");
  test::WriteBytes(held, "x");
  fs::last_write_time(held, hourAgo);
  int locked[2];
  ASSERT_EQ(::pipe(locked), 0);
  const pid_t holder = ::fork();
  ASSERT_GE(holder, 0);
  if (holder == 0) {
    const int fd = ::open(held.c_str(), O_RDONLY);
    const char ok = fd >= 0 && ::flock(fd, LOCK_EX) == 0 ? 'y' : 'n';
    if (::write(locked[1], &ok, 1) != 1) ::_exit(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    ::_exit(0);
  }
  char ok = 0;
  ASSERT_EQ(::read(locked[0], &ok, 1), 1);
  ASSERT_EQ(ok, 'y');
  ::close(locked[0]);
  ::close(locked[1]);

  ASSERT_TRUE(ReplaceFileWith(dir.File("other.fut"), "other"));
  EXPECT_TRUE(fs::exists(held));
  int status = 0;
  ::waitpid(writer, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the running command lost its scratch file";
  EXPECT_EQ(test::ReadBytes(dir.File("slow.fut")), "slow");
  ::waitpid(holder, nullptr, 0);
  ASSERT_TRUE(ReplaceFileWith(dir.File("other.fut"), "again"));
  EXPECT_FALSE(fs::exists(held));  // let go, and its process long gone
}

TEST(SafeFiles, AnAppendBeginsOnALineOfItsOwn) {
  test::TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(model, port, kCollection, 2).notFound);
  const std::string comment = model.Comment;
  // The last line without a line break (an editor's doing), and a tail of NUL bytes
  // that a crash of another program left: the bytes stay, the new record reads back.
  const std::string cut = test::CrLf(test::SampleRecord());
  for (const std::string& old : {cut.substr(0, cut.size() - 2), cut + std::string(5, '\0')}) {
    const std::string file = dir.File("tail.fut");
    test::WriteBytes(file, old);
    ASSERT_TRUE(WritePuzzle(model, port, comment, 2, file));
    EXPECT_EQ(test::ReadBytes(file).substr(0, old.size()), old);
    EXPECT_EQ(CountPuzzles(file), 2);
    PuzzleModel back;
    ASSERT_FALSE(ReadPuzzle(back, port, file, 2).notFound);
    EXPECT_EQ(back.Comment, comment);
    EXPECT_EQ(back.PosText, model.PosText);
    ASSERT_FALSE(ReadPuzzle(back, port, file, 1).notFound);
    EXPECT_EQ(back.Comment, "Sample");
  }
  // The command line's append and create go the same way.
  const std::string file = dir.File("cli.fut");
  test::WriteBytes(file, cut.substr(0, cut.size() - 2));
  ASSERT_EQ(Cli({"append", kCollection, "-n", "2", file}).code, 0);
  ASSERT_EQ(Cli({"create", "--size", "4", "--out", file, "--seed", "5"}).code, 0);
  EXPECT_EQ(CountPuzzles(file), 3);
  EXPECT_EQ(Cli({"show", file, "-n", "3"}).code, 0);
}

TEST(SafeFiles, AFailedAppendNeverCostsAnotherWritersRecords) {
  test::TempDir dir;
  const std::string file = dir.File("shared.fut");
  PuzzleModel model;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(model, port, kCollection, 60).notFound);
  ASSERT_TRUE(WritePuzzle(model, port, "first", 1, file));
  constexpr int kOthers = 60;
  const pid_t other = ::fork();
  ASSERT_GE(other, 0);
  if (other == 0) {
    HeadlessPort quiet;
    for (int i = 0; i < kOthers; ++i) {
      if (!WritePuzzle(model, quiet, "other " + std::to_string(i), i + 2, file)) ::_exit(1);
    }
    ::_exit(0);
  }
  {
    // This writer's disk is full: each of its appends fails and is cut back, to the
    // length it saw under the lock, never past the other writer's records.
    test::FileSizeLimit full(test::ReadBytes(file).size() + 40);
    for (int i = 0; i < 200; ++i) EXPECT_FALSE(WritePuzzle(model, port, "mine", 99, file));
  }
  int status = 0;
  ::waitpid(other, &status, 0);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  const std::string bytes = test::ReadBytes(file);
  EXPECT_EQ(bytes.find('\0'), std::string::npos);
  EXPECT_EQ(CountPuzzles(file), kOthers + 1);
  for (int i = 0; i < kOthers; ++i) {
    EXPECT_NE(bytes.find("other " + std::to_string(i) + "\r\n"), std::string::npos) << i;
  }
}

TEST(SafeFiles, AReplacedFileKeepsItsOwnerGroupAndMode) {
  test::TempDir dir;
  const std::string file = dir.File("c.fut");
  fs::copy_file(kCollection, file);
  ::chmod(file.c_str(), 0640);
  const bool root = ::geteuid() == 0;
  if (root) {
    ASSERT_EQ(::chown(file.c_str(), 65534, 65534), 0);
  }
  const test::WorkingDirectory cwd(dir.Path());
  ASSERT_EQ(Cli({"delete", file, "-n", "3"}).code, 0);
  ASSERT_TRUE(ReplaceFileWith(file, test::ReadBytes(file) + "\r\n"));
  struct stat info {};
  ASSERT_EQ(::stat(file.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 07777, 0640u);
  if (root) {
    EXPECT_EQ(info.st_uid, 65534u);
    EXPECT_EQ(info.st_gid, 65534u);
  }
  EXPECT_EQ(CountPuzzles(file), CountPuzzles(kCollection) - 1);
}

TEST(SafeFiles, NumbersTheCommandLineCannotTakeAreUsageErrors) {
  test::TempDir dir;
  const std::string dest = dir.File("dest.fut");
  for (const char* n : {"0", "-1", "-2147483648", "99999999999", "two"}) {
    EXPECT_EQ(Cli({"show", kCollection, "-n", n}).code, 2) << n;
    EXPECT_EQ(Cli({"append", kCollection, "-n", n, dest}).code, 2) << n;
    EXPECT_EQ(Cli({"delete", dest, "-n", n}).code, 2) << n;
  }
  EXPECT_FALSE(fs::exists(dest));
  const std::string sorted = dir.File("sorted.fut");
  EXPECT_EQ(Cli({"sort", kCollection, sorted, "--by", "size", "--order", "ascending", "--resequence", "2147483600"})
                .code,
            2);
  EXPECT_EQ(Cli({"sort", kCollection, sorted, "--by", "size", "--order", "random", "--seed", "-1"}).code, 2);
  EXPECT_FALSE(fs::exists(sorted));
  ASSERT_EQ(Cli({"sort", kCollection, sorted, "--by", "size", "--order", "ascending", "--resequence", "2147483587"})
                .code,
            0);
  PuzzleModel model;
  HeadlessPort port;
  ASSERT_FALSE(ReadPuzzle(model, port, sorted, 61).notFound);
  EXPECT_EQ(model.RecordNumber, 2147483647);

  const test::CliRun hash = Cli({"create", "--title", "#1 favourite", "--out", dest});
  EXPECT_EQ(hash.code, 2);
  EXPECT_NE(hash.err.find("\"#\""), std::string::npos) << hash.err;
  EXPECT_FALSE(fs::exists(dest));
}

TEST(SafeFiles, FailuresSayWhichFileWasToBlame) {
  test::TempDir dir;
  const std::string missing = dir.File("missing.fut");
  const test::CliRun backup = Cli({"backup", missing});
  EXPECT_EQ(backup.code, 1);
  EXPECT_NE(backup.err.find("Error backing to file:"), std::string::npos);
  EXPECT_NE(backup.err.find("The source file cannot be read: " + missing), std::string::npos) << backup.err;
  const test::CliRun copy = Cli({"copy", missing, dir.File("copy.fut"), "--json"});
  EXPECT_EQ(copy.code, 1);
  EXPECT_EQ(copy.Json()["note"], "The source file cannot be read: " + missing);
  EXPECT_EQ(Cli({"sort", missing, dir.File("s.fut"), "--by", "size", "--order", "ascending", "--json"}).Json()["note"],
            "The source file cannot be read: " + missing);

  // The 9x9 puzzles of the default collection have no HTML template.
  const test::CliRun html = Cli({"export", "html", kCollection, "-n", "60", "-o", dir.File("p.htm"), "--json"});
  EXPECT_EQ(html.code, 1);
  EXPECT_EQ(html.Json()["error"], "Error writing to file: " + dir.File("p.htm"));
  EXPECT_NE(html.Json()["note"].get<std::string>().find("no HTML template for a 9x9 puzzle"), std::string::npos);
}

}  // namespace
}  // namespace qm
