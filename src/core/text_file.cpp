#include "core/text_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace qm {

namespace {

constexpr std::size_t kReadChunk = 1 << 16;

bool WriteFile(const std::string& path, std::string_view bytes, const char* mode) {
  std::FILE* file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return false;
  bool ok = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  ok = std::fflush(file) == 0 && ok;
  ok = std::fclose(file) == 0 && ok;
  return ok;
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
  return WriteFile(path, bytes, "ab");
}

bool WriteWholeFile(const std::string& path, std::string_view bytes) {
  return WriteFile(path, bytes, "wb");
}

std::string ApplicationDirectory() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  std::filesystem::path dir = ec ? std::filesystem::current_path(ec) : exe.parent_path();
  std::string text = dir.string();
  if (text.empty() || text.back() != '/') text += '/';
  return text;
}

}  // namespace qm
