#include "support/scoped_conditions.h"

#include <filesystem>

namespace qm::test {

WorkingDirectory::WorkingDirectory(const std::string& directory)
    : saved_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(directory);
}

WorkingDirectory::~WorkingDirectory() {
  std::error_code ec;
  std::filesystem::current_path(saved_, ec);
}

}  // namespace qm::test
