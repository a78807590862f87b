// Scratch files for tests: a private temporary directory and whole-file helpers.
#pragma once

#include <string>
#include <vector>

namespace qm::test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

void WriteBytes(const std::string& path, const std::string& bytes);
std::string ReadBytes(const std::string& path);
// The lines joined with CR LF, each line ended.
std::string CrLf(const std::vector<std::string>& lines);

// The worked example record of the file format, as its lines.
std::vector<std::string> SampleRecord();

}  // namespace qm::test
