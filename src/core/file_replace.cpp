#include "core/file_replace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

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

// Scratch files carry this mark between the target's name and six random characters.
constexpr std::string_view kScratchMark = ".qmtmp";

// When this process started: scratch files older than that belong to no running command
// of ours (a command that was killed left them).
const fs::file_time_type kProcessStart = fs::file_time_type::clock::now();

bool SyncFile(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool ok = ::fsync(fd) == 0;
  ::close(fd);
  return ok;
}

// Ours: "." + name + ".qmtmp" + six characters, or the older ".name.ext.XXXXXX" that
// sorting and deleting left beside collection files.
bool IsOurScratchName(const std::string& name) {
  if (name.size() < 9 || name[0] != '.') return false;
  const std::string_view tail = std::string_view(name).substr(name.size() - 6);
  if (!std::all_of(tail.begin(), tail.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; })) {
    return false;
  }
  const std::string_view head = std::string_view(name).substr(0, name.size() - 6);
  if (head.ends_with(kScratchMark)) return true;
  for (const std::string_view old : {".fut.", ".txt.", ".dat."}) {
    if (head.ends_with(old) && head.size() > old.size() + 1) return true;
  }
  return false;
}

void RemoveStaleScratchFiles(const fs::path& directory) {
  std::error_code ec;
  for (fs::directory_iterator it(directory, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (!IsOurScratchName(name) || !it->is_regular_file(ec)) continue;
    if (it->last_write_time(ec) < kProcessStart && !ec) fs::remove(it->path(), ec);
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
  const fs::file_status status = fs::status(path, ec);
  const bool exists = fs::exists(status);
  // A folder, FIFO or device is no file of ours: writing into a FIFO would wait forever.
  if (exists && !fs::is_regular_file(status)) return false;
  // Replacing needs only the directory's permission; a file we may not write stays.
  if (exists && access(path.c_str(), W_OK) != 0) return false;

  fs::path directory = path.parent_path();
  if (directory.empty()) directory = ".";
  RemoveStaleScratchFiles(directory);
  std::string scratch = (directory / ("." + path.filename().string() + std::string(kScratchMark) + "XXXXXX")).string();
  const int fd = mkstemp(scratch.data());
  // No scratch file possible (a full disk, a folder that takes no new files): refuse.
  // Writing the target in place instead could leave it half old, half new.
  if (fd < 0) return false;
  close(fd);

  const fs::perms permissions = exists ? status.permissions() : NewFilePermissions();
  bool ok = write(scratch) && SyncFile(scratch);
  if (ok) {
    fs::permissions(scratch, permissions, ec);
    ok = std::rename(scratch.c_str(), path.c_str()) == 0;
  }
  if (!ok) fs::remove(scratch, ec);
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
  return ReadWholeFile(source, bytes) && ReplaceFileWith(target, bytes);
}

}  // namespace qm
