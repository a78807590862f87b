// Small collection records for the tests of the commands over collection files.
#pragma once

#include <string>
#include <vector>

namespace qm::test {

// A 3x3 record: the "#" line, the comment, the size line and five grid lines whose
// first cell holds `clue` (and whose stored solution is empty).
std::vector<std::string> SmallRecord(const std::string& header, const std::string& comment,
                                     const std::string& sizeLine = "3 0 1", char clue = '1');

// The lines of the records one after another.
std::vector<std::string> Records(const std::vector<std::vector<std::string>>& records);

}  // namespace qm::test
