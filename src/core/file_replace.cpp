#include "core/file_replace.h"

#include <sys/stat.h>
#include <unistd.h>

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
  if (exists && !fs::is_regular_file(status)) return write(target);
  // Replacing needs only the directory's permission; a file we may not write stays.
  if (exists && access(path.c_str(), W_OK) != 0) return false;

  fs::path directory = path.parent_path();
  if (directory.empty()) directory = ".";
  std::string scratch = (directory / ("." + path.filename().string() + ".XXXXXX")).string();
  const int fd = mkstemp(scratch.data());
  // No scratch file possible (the directory is not writable, the name too long): the
  // target itself is the only place left to write.
  if (fd < 0) return write(target);
  close(fd);

  const fs::perms permissions = exists ? status.permissions() : NewFilePermissions();
  bool ok = write(scratch);
  if (ok) {
    fs::permissions(scratch, permissions, ec);
    ok = std::rename(scratch.c_str(), path.c_str()) == 0;
  }
  if (!ok) fs::remove(scratch, ec);
  return ok;
}

bool ReplaceFileWith(const std::string& target, std::string_view bytes) {
  return ReplaceFile(target, [bytes](const std::string& path) { return WriteWholeFile(path, bytes); });
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  bytes.clear();
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
