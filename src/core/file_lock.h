// One writer at a time per collection (and per settings file): an advisory lock
// (flock) on a lock file beside the file, ".NAME.quillmere-lock". Every command that
// reads a file and then rewrites or appends to it holds the lock from the read to the
// rename or the last byte appended, so two commands - two windows, a window and a
// script - cannot lose each other's records. The lock file exists only while a command
// holds it. Network file systems may not honour the lock.
#pragma once

#include <functional>
#include <string>

namespace qm {

// The lock file that guards `path`: ".NAME.quillmere-lock" in the same folder, for the
// file a link points at.
std::string LockFileFor(const std::string& path);

// How long a writer waits for another one before it gives up: 20 seconds, or the whole
// seconds in QUILLMERE_LOCK_TIMEOUT.
int LockTimeoutSeconds();

// "Another command is writing NAME: gave up waiting after N seconds".
std::string LockTimeoutMessage(const std::string& path);

// Holds the lock of a file for its lifetime. Within one process the lock is taken once
// per file: a command that holds it can call helpers that lock the same file again.
class FileLock {
 public:
  // Called once when the lock is not free at once, before the wait begins.
  using Waiting = std::function<void()>;

  // Waits for the lock up to LockTimeoutSeconds(). A folder where no lock file can be
  // made (read-only) goes unlocked: nothing there can be replaced either.
  explicit FileLock(const std::string& path, const Waiting& waiting = {});
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // False when another command held the lock for the whole timeout.
  bool Held() const { return held_; }
  // True when the lock was not free at once.
  bool Waited() const { return waited_; }

 private:
  std::string lockPath_;
  int fd_ = -1;
  bool held_ = false;
  bool waited_ = false;
  bool owner_ = false;  // false when this process held the lock already
};

}  // namespace qm
