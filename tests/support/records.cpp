#include "support/records.h"

namespace qm::test {

std::vector<std::string> SmallRecord(const std::string& header, const std::string& comment,
                                     const std::string& sizeLine, char clue) {
  return {header, comment, sizeLine, std::string(1, clue) + "....|", ".....|", ".....|", ".....|", ".....|"};
}

std::vector<std::string> Records(const std::vector<std::vector<std::string>>& records) {
  std::vector<std::string> lines;
  for (const auto& record : records) lines.insert(lines.end(), record.begin(), record.end());
  return lines;
}

}  // namespace qm::test
