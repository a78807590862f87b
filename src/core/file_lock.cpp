#include "core/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <random>
#include <thread>

namespace qm {

namespace fs = std::filesystem;

namespace {

constexpr int kDefaultTimeoutSeconds = 20;
constexpr std::string_view kLockSuffix = ".quillmere-lock";

// The lock files this process holds, with how many FileLocks hold each.
std::mutex& RegistryMutex() {
  static std::mutex mutex;
  return mutex;
}
std::map<std::string, int>& Registry() {
  static std::map<std::string, int> held;
  return held;
}

bool SameInode(int fd, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
         opened.st_ino == named.st_ino;
}

}  // namespace

std::string LockFileFor(const std::string& path) {
  std::error_code ec;
  fs::path target = path;
  if (fs::is_symlink(fs::symlink_status(target, ec))) {
    fs::path resolved = fs::weakly_canonical(target, ec);
    if (!ec) target = std::move(resolved);
  }
  fs::path directory = target.parent_path();
  const std::string name = "." + target.filename().string() + std::string(kLockSuffix);
  return directory.empty() ? name : (directory / name).string();
}

int LockTimeoutSeconds() {
  const char* text = std::getenv("QUILLMERE_LOCK_TIMEOUT");
  if (text == nullptr || *text == 0) return kDefaultTimeoutSeconds;
  char* end = nullptr;
  const long seconds = std::strtol(text, &end, 10);
  if (*end != 0 || seconds < 0 || seconds > 24 * 3600) return kDefaultTimeoutSeconds;
  return static_cast<int>(seconds);
}

std::string LockTimeoutMessage(const std::string& path) {
  return "Another command is still writing to " + path + " (waited " + std::to_string(LockTimeoutSeconds()) +
         " seconds): nothing was changed, try again when it has finished";
}

FileLock::FileLock(const std::string& path, const Waiting& waiting) : lockPath_(LockFileFor(path)) {
  {
    const std::lock_guard guard(RegistryMutex());
    auto found = Registry().find(lockPath_);
    if (found != Registry().end()) {
      ++found->second;
      held_ = true;
      owner_ = true;
      return;
    }
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(LockTimeoutSeconds());
  std::minstd_rand jitter(static_cast<unsigned>(::getpid()));
  for (int round = 0;; ++round) {
    const int fd = ::open(lockPath_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (fd < 0) {
      // A read-only folder or one that takes no new files: nothing there can be
      // replaced, and an append needs no lock file to fail or succeed whole.
      if (errno == EINTR) continue;
      held_ = true;
      break;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
      // The last holder removes the lock file as it lets go: a lock on a file that is
      // gone guards nothing, so take the one now at the path.
      if (SameInode(fd, lockPath_)) {
        fd_ = fd;
        held_ = true;
        break;
      }
      ::close(fd);
      continue;
    }
    const int error = errno;
    ::close(fd);
    if (error != EWOULDBLOCK && error != EINTR) {
      held_ = true;  // a file system without locks: go on as before locking existed
      break;
    }
    if (std::chrono::steady_clock::now() >= deadline) return;
    if (!waited_) {
      waited_ = true;
      if (waiting) waiting();
    }
    // Short naps first (appends take milliseconds), longer ones when the wait goes on.
    const int nap = round < 50 ? 1 + static_cast<int>(jitter() % 5) : 10 + static_cast<int>(jitter() % 40);
    std::this_thread::sleep_for(std::chrono::milliseconds(nap));
  }
  owner_ = true;
  const std::lock_guard guard(RegistryMutex());
  Registry()[lockPath_] = 1;
}

FileLock::~FileLock() {
  if (!owner_) return;
  {
    const std::lock_guard guard(RegistryMutex());
    auto found = Registry().find(lockPath_);
    if (found != Registry().end() && --found->second > 0) return;
    if (found != Registry().end()) Registry().erase(found);
  }
  if (fd_ < 0) return;
  // Removed while still held, so no one can take a lock on it in between; a file of
  // that name with content is not ours and stays.
  struct stat info {};
  if (::fstat(fd_, &info) == 0 && info.st_size == 0 && SameInode(fd_, lockPath_)) ::unlink(lockPath_.c_str());
  ::close(fd_);
}

}  // namespace qm
