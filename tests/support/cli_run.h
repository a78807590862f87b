// Runs quillmere-cli in-process and keeps what it printed.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace qm::test {

struct CliRun {
  int code = 0;
  std::string out;
  std::string err;
  nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

// The arguments after the program name.
CliRun Cli(std::vector<std::string> args);

}  // namespace qm::test
