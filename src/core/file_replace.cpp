#include "core/file_replace.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "core/file_lock.h"
#include "core/text_file.h"

namespace qm {

namespace fs = std::filesystem;

namespace {

// The permissions a newly created file gets (mkstemp makes its file private).
fs::perms NewFilePermissions() {
  const mode_t mask = umask(0);
  umask(mask);
  return static_cast<fs::perms>(0666 & ~mask);
}

// Scratch files are named ".quillmere-scratch.PID.XXXXXX": nothing a user or another
// program makes looks like that. Earlier versions named them ".NAME.qmtmpXXXXXX".
constexpr std::string_view kScratchPrefix = ".quillmere-scratch.";
constexpr std::string_view kOlderScratchMark = ".qmtmp";
constexpr std::size_t kRandomPart = 6;
// A scratch file untouched this long may be left over from a killed command; it is
// removed only when no running command holds it as well.
constexpr auto kStaleAfter = std::chrono::minutes(10);

bool SyncFile(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool ok = ::fsync(fd) == 0;
  ::close(fd);
  return ok;
}

bool IsRandomPart(std::string_view text) {
  return text.size() == kRandomPart && std::all_of(text.begin(), text.end(), [](char c) {
           return std::isalnum(static_cast<unsigned char>(c)) != 0;
         });
}

bool ProcessGone(pid_t pid) { return pid > 0 && ::kill(pid, 0) != 0 && errno == ESRCH; }

// The scratch file's process id, 0 for the older names (which carry none), -1 when the
// name is not one of ours.
long ScratchOwner(std::string_view name) {
  if (name.size() > kRandomPart && IsRandomPart(name.substr(name.size() - kRandomPart))) {
    const std::string_view head = name.substr(0, name.size() - kRandomPart);
    if (head.starts_with(kScratchPrefix) && head.ends_with(".")) {
      const std::string_view digits = head.substr(kScratchPrefix.size(), head.size() - kScratchPrefix.size() - 1);
      long pid = 0;
      const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
      if (error == std::errc{} && end == digits.data() + digits.size() && pid > 0) return pid;
      return -1;
    }
    if (name.size() > 1 + kOlderScratchMark.size() + kRandomPart && name[0] == '.' && head.ends_with(kOlderScratchMark)) {
      return 0;
    }
  }
  return -1;
}

// True when a running command holds the scratch file (it keeps a lock on it from its
// making to its rename).
bool HeldByRunningCommand(const fs::path& file) {
  const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return true;
  const bool held = ::flock(fd, LOCK_EX | LOCK_NB) != 0;
  ::close(fd);  // the trial lock goes with it
  return held;
}

void RemoveStaleScratchFiles(const fs::path& directory) {
  std::error_code ec;
  const auto staleBefore = fs::file_time_type::clock::now() - kStaleAfter;
  for (fs::directory_iterator it(directory, ec), end; !ec && it != end; it.increment(ec)) {
    const long owner = ScratchOwner(it->path().filename().string());
    std::error_code entryError;
    if (owner < 0 || !it->is_regular_file(entryError) || it->is_symlink(entryError)) continue;
    const auto written = it->last_write_time(entryError);
    if (entryError || written >= staleBefore) continue;
    if (owner > 0 && !ProcessGone(static_cast<pid_t>(owner))) continue;
    if (HeldByRunningCommand(it->path())) continue;
    fs::remove(it->path(), entryError);
  }
}

}  // namespace

bool ReplaceFile(const std::string& target, const FileWriter& write) {
  std::error_code ec;
  fs::path path = target;
  // Replace what a link points at, not the link itself.
  if (fs::is_symlink(fs::symlink_status(path, ec))) {
    fs::path resolved = fs::weakly_canonical(path, ec);
    if (!ec) path = std::move(resolved);
  }
  // One writer at a time; a command that read the file first holds this lock already.
  const FileLock lock(path.string());
  if (!lock.Held()) return false;
  struct stat old {};
  const bool exists = ::stat(path.c_str(), &old) == 0;
  // A folder, FIFO or device is no file of ours: writing into a FIFO would wait forever.
  if (exists && !S_ISREG(old.st_mode)) return false;
  // Replacing needs only the directory's permission; a file we may not write stays.
  if (exists && access(path.c_str(), W_OK) != 0) return false;

  fs::path directory = path.parent_path();
  if (directory.empty()) directory = ".";
  RemoveStaleScratchFiles(directory);
  std::string scratch =
      (directory / (std::string(kScratchPrefix) + std::to_string(::getpid()) + "." + std::string(kRandomPart, 'X')))
          .string();
  const int fd = mkstemp(scratch.data());
  // No scratch file possible (a full disk, a folder that takes no new files): refuse.
  // Writing the target in place instead could leave it half old, half new.
  if (fd < 0) return false;
  // Held until the rename: the clean-up of another command leaves the file alone.
  ::flock(fd, LOCK_EX | LOCK_NB);

  bool ok = write(scratch) && ::fsync(fd) == 0;
  if (ok && exists) {
    // The file keeps its owner and group where we may give them (root replacing a
    // user's file), then its mode (set last: a change of owner clears set-id bits).
    if (::fchown(fd, old.st_uid, old.st_gid) != 0) {
      [[maybe_unused]] const int ignored = ::fchown(fd, static_cast<uid_t>(-1), old.st_gid);
    }
    ok = ::fchmod(fd, old.st_mode & 07777) == 0;
  } else if (ok) {
    ok = ::fchmod(fd, static_cast<mode_t>(NewFilePermissions())) == 0;
  }
  if (ok) ok = std::rename(scratch.c_str(), path.c_str()) == 0;
  if (!ok) fs::remove(scratch, ec);
  ::close(fd);
  // The rename itself reaches the disk only with the folder.
  if (ok) SyncFile(directory.string());
  return ok;
}

bool ReplaceFileWith(const std::string& target, std::string_view bytes) {
  return ReplaceFile(target, [bytes](const std::string& path) { return WriteWholeFile(path, bytes); });
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  bytes.clear();
  if (!IsRegularFile(path)) return false;  // a FIFO would wait, /dev/zero never end
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char chunk[1 << 16];
  std::size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.append(chunk, got);
  const bool ok = std::ferror(file) == 0;  // a directory opens but fails to read
  std::fclose(file);
  return ok;
}

bool CopyFileSafely(const std::string& source, const std::string& target) {
  std::string bytes;
  {
    // No append to the source is half done while it is read. Let go before the target
    // is locked: two copies in opposite directions must not wait on each other.
    const FileLock lock(source);
    if (!lock.Held() || !ReadWholeFile(source, bytes)) return false;
  }
  return ReplaceFileWith(target, bytes);
}

}  // namespace qm
