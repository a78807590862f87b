#include "support/cli_run.h"

#include <sstream>

#include "cli/commands.h"

namespace qm::test {

CliRun Cli(std::vector<std::string> args) {
  args.insert(args.begin(), "quillmere-cli");
  std::vector<const char*> argv;
  for (const auto& a : args) argv.push_back(a.c_str());
  std::ostringstream out;
  std::ostringstream err;
  CliRun run;
  run.code = cli::RunCli(static_cast<int>(argv.size()), argv.data(), out, err);
  run.out = out.str();
  run.err = err.str();
  return run;
}

}  // namespace qm::test
