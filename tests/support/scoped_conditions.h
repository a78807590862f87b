// Conditions a test sets up for the length of a scope.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <string>

namespace qm::test {

// A full disk: files of this process cannot grow past `bytes` (writes beyond fail with
// EFBIG instead of raising SIGXFSZ).
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = saved_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, previousHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit saved_{};
  void (*previousHandler_)(int) = SIG_DFL;
};

// Another current directory (the delete command's temporary file lies there).
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::string& directory);
  ~WorkingDirectory();
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
  std::string saved_;
};

}  // namespace qm::test
