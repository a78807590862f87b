// Plain file access for the workbench's text files: lines end in CR LF when written;
// a line read ends at LF, and a CR just before the LF is dropped.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qm {

// The length of a regular file, or nothing when it is missing or cannot be measured
// (a directory, for instance).
std::optional<std::uintmax_t> FileLength(const std::string& path);

// Reads a file line by line, read-only. A file that cannot be opened (missing, a
// directory, a FIFO or device, no permission) reads as empty with IsOpen() false.
class LineReader {
 public:
  explicit LineReader(const std::string& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool IsOpen() const { return file_ != nullptr; }
  // The next line into `line`; false at the end of the file or on a read error.
  bool ReadLine(std::string& line);
  // The same, as a view of a line kept inside the reader until the next read.
  bool Next(std::string_view& line) {
    if (!ReadLine(current_)) return false;
    line = current_;
    return true;
  }
  // True once a read failed for another reason than the end of the file.
  bool Failed() const { return failed_; }

 private:
  bool Refill();

  std::FILE* file_ = nullptr;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool eof_ = false;
  bool failed_ = false;
  std::string current_;
};

// Collects lines and writes them with CR LF endings.
class TextBuilder {
 public:
  TextBuilder& Line(std::string_view text);
  const std::string& Text() const { return text_; }
  // Hands the text over without a copy (a collection can be hundreds of megabytes).
  std::string Release() { return std::move(text_); }
  void Reserve(std::size_t bytes) { text_.reserve(bytes); }

 private:
  std::string text_;
};

// Appends bytes to a regular file, creating it when missing, and syncs them, holding
// the file's lock (file_lock.h). A file whose last byte is not a line break gets CR LF
// first, so the bytes begin a line of their own. False on any failure, and then the file
// is cut back to the length it had under the lock (a new file is removed): the bytes go
// in whole or not at all.
bool AppendToFile(const std::string& path, std::string_view bytes);
// Replaces a regular file's content with bytes, synced. False on any failure.
bool WriteWholeFile(const std::string& path, std::string_view bytes);
// True for an existing regular file (not a folder, FIFO or device).
bool IsRegularFile(const std::string& path);

// The application directory, with a trailing "/": the running program's folder, or,
// when the program is installed (its folder holds no data beside ../share/quillmere),
// the user's own folder (XDG data home)/Quillmere, filled from there with what it lacks.
std::string ApplicationDirectory();
std::string ApplicationDirectoryFor(const std::filesystem::path& programDirectory);

}  // namespace qm
