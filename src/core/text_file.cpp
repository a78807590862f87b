#include "core/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/file_lock.h"

namespace qm {

namespace {

constexpr std::size_t kReadChunk = 1 << 16;

// Writes all bytes through fd, then forces them to the disk: a write is only done once
// the data would survive a crash.
bool WriteAllAndSync(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t wrote = ::write(fd, bytes.data(), bytes.size());
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(wrote));
  }
  return ::fsync(fd) == 0;
}

// Only regular files (or new ones) are written: a FIFO would block the command and a
// device is no collection. O_NONBLOCK makes opening a FIFO fail instead of wait.
int OpenRegularForWriting(const std::string& path, int flags) {
  const int fd = ::open(path.c_str(), flags | O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
  if (fd < 0) return -1;
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

std::optional<std::uintmax_t> FileLength(const std::string& path) {
  std::error_code ec;
  const auto status = std::filesystem::status(path, ec);
  if (ec || !std::filesystem::is_regular_file(status)) return std::nullopt;
  const auto size = std::filesystem::file_size(path, ec);
  if (ec) return std::nullopt;
  return size;
}

LineReader::LineReader(const std::string& path) {
  // Never open a FIFO or a device: the one would wait for a writer, the other (such as
  // /dev/zero) never ends.
  if (!IsRegularFile(path)) return;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return;
  struct stat info {};
  if (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode)) {
    std::fclose(file);
    return;
  }
  file_ = file;
  buffer_.resize(kReadChunk);
}

LineReader::~LineReader() {
  if (file_ != nullptr) std::fclose(file_);
}

bool LineReader::Refill() {
  if (eof_ || file_ == nullptr) return false;
  const std::size_t got = std::fread(buffer_.data(), 1, buffer_.size(), file_);
  begin_ = 0;
  end_ = got;
  if (got == 0) {
    eof_ = true;
    if (std::ferror(file_)) failed_ = true;
    return false;
  }
  return true;
}

bool LineReader::ReadLine(std::string& line) {
  line.clear();
  bool any = false;
  for (;;) {
    if (begin_ == end_ && !Refill()) break;
    any = true;
    const char* start = buffer_.data() + begin_;
    const auto* newline = static_cast<const char*>(std::memchr(start, '\n', end_ - begin_));
    if (newline != nullptr) {
      line.append(start, newline);
      begin_ += static_cast<std::size_t>(newline - start) + 1;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return true;
    }
    line.append(start, end_ - begin_);
    begin_ = end_;
  }
  return any;  // a last line without LF is still a line
}

TextBuilder& TextBuilder::Line(std::string_view text) {
  text_.append(text);
  text_.append("\r\n");
  return *this;
}

bool AppendToFile(const std::string& path, std::string_view bytes) {
  // Under the lock the length measured below is the file's true end: no other writer
  // can grow it before a failed append is cut back to it.
  const FileLock lock(path);
  if (!lock.Held()) return false;
  const bool existed = IsRegularFile(path);
  const int fd = OpenRegularForWriting(path, O_APPEND);
  if (fd < 0) return false;
  struct stat info {};
  const bool measured = ::fstat(fd, &info) == 0;
  // A file whose last line has no line break (an editor, an earlier failure, a tail of
  // NUL bytes after a crash) would glue the new record line to it: begin a new line.
  // Bytes already there are kept as they are.
  std::string joined;
  if (measured && info.st_size > 0) {
    const int reader = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char last = '\n';
    if (reader >= 0) {
      if (::pread(reader, &last, 1, info.st_size - 1) != 1) last = '\n';
      ::close(reader);
    }
    if (last != '\n') {
      joined.reserve(bytes.size() + 2);
      joined.append("\r\n").append(bytes);
      bytes = joined;
    }
  }
  bool ok = measured && WriteAllAndSync(fd, bytes);
  // The record goes in whole or not at all: a cut record would glue itself to the next.
  if (!ok && measured && ::ftruncate(fd, info.st_size) == 0) ::fsync(fd);
  ok = ::close(fd) == 0 && ok;
  if (!ok && !existed) ::unlink(path.c_str());
  return ok;
}

bool WriteWholeFile(const std::string& path, std::string_view bytes) {
  const int fd = OpenRegularForWriting(path, O_TRUNC);
  if (fd < 0) return false;
  const bool ok = WriteAllAndSync(fd, bytes);
  return ::close(fd) == 0 && ok;
}

bool IsRegularFile(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

namespace {

std::string WithSlash(std::string text) {
  if (text.empty() || text.back() != '/') text += '/';
  return text;
}

// Installed, the program's folder holds no data: the shipped files are in
// ../share/quillmere, read-only. Each user then works in a folder of their own, filled
// from there with whatever it lacks, where settings and collections can be written.
std::string UserDataDirectory(const std::filesystem::path& shipped) {
  namespace fs = std::filesystem;
  const char* xdg = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  fs::path base;
  if (xdg != nullptr && *xdg == '/') {
    base = xdg;
  } else if (home != nullptr && *home != 0) {
    base = fs::path(home) / ".local" / "share";
  } else {
    return {};
  }
  const fs::path mine = base / "Quillmere";
  std::error_code ec;
  fs::create_directories(mine, ec);
  if (ec) return {};
  for (fs::directory_iterator it(shipped, ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code copyError;
    if (it->is_regular_file(copyError) && !fs::exists(mine / it->path().filename(), copyError)) {
      fs::copy_file(it->path(), mine / it->path().filename(), copyError);
    }
  }
  return mine.string();
}

}  // namespace

std::string ApplicationDirectory() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  return ApplicationDirectoryFor(ec ? std::filesystem::current_path(ec) : exe.parent_path());
}

std::string ApplicationDirectoryFor(const std::filesystem::path& dir) {
  namespace fs = std::filesystem;
  std::error_code ec;
  const fs::path shipped = dir.parent_path() / "share" / "quillmere";
  if (!fs::exists(dir / "puzzles.fut", ec) && fs::is_directory(shipped, ec)) {
    const std::string mine = UserDataDirectory(shipped);
    if (!mine.empty()) return WithSlash(mine);
  }
  return WithSlash(dir.string());
}

}  // namespace qm
