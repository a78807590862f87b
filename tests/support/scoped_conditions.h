// Conditions a test sets up for the length of a scope.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <filesystem>

namespace qm::test {

// A full disk: files of this process cannot grow past `bytes` (writes beyond fail with
// EFBIG instead of raising SIGXFSZ).
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = saved_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &saved_); }

 private:
  rlimit saved_{};
};

// Another current directory (the delete command's temporary file lies there).
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::filesystem::path& directory) { std::filesystem::current_path(directory); }
  ~WorkingDirectory() { std::filesystem::current_path(saved_); }

 private:
  std::filesystem::path saved_ = std::filesystem::current_path();
};

}  // namespace qm::test
