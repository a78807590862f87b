#include "support/test_files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace qm::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "quillmere-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(path_, ec);
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string CrLf(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += line + "\r\n";
  return text;
}

std::vector<std::string> SampleRecord() {
  return {"#3",
          "Sample",
          "4 4 3",
          ".<..3..|1<2.3.4",
          "......v|......v",
          "...>...|3.4>1.2",
          ".......|.......",
          "4......|4.1.2.3",
          "..^....|..^....",
          "......1|2.3.4.1"};
}

}  // namespace qm::test
