// A seeded batch spread over shards (here through GNU parallel, as over several hosts)
// and merged is the file one run writes, byte for byte.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/cli_run.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using test::Cli;

std::vector<std::string> CreateArgs(const std::string& out) {
  return {"create", "--size", "5", "--clues", "level:Hard", "--count", "10", "--seed", "9", "--stamp", "s", "--out", out};
}

TEST(Shards, FourShardsThroughParallelMergeIntoTheSingleRun) {
  if (std::system("command -v parallel >/dev/null 2>&1") != 0) GTEST_SKIP() << "GNU parallel is not installed";
  test::TempDir dir;
  ASSERT_EQ(Cli(CreateArgs(dir.File("single.fut"))).code, 0);

  const std::string command = "cd " + dir.Path() + " && parallel --will-cite --halt now,fail=1 " +
                              std::string(QUILLMERE_CLI) +
                              " create --size 5 --clues level:Hard --count 10 --seed 9 --stamp s --jobs 1"
                              " --shard {}/4 --out shard{}.fut ::: 1 2 3 4 >/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  const test::CliRun merged = Cli({"merge", dir.File("merged.fut"), dir.File("shard1.fut"), dir.File("shard2.fut"),
                                   dir.File("shard3.fut"), dir.File("shard4.fut"), "--json"});
  ASSERT_EQ(merged.code, 0) << merged.err;
  EXPECT_EQ(merged.Json()["records"], 10);
  EXPECT_EQ(test::ReadBytes(dir.File("merged.fut")), test::ReadBytes(dir.File("single.fut")));
  // Shard 3 of 4 holds puzzles 3 and 7 under those numbers.
  EXPECT_EQ(Cli({"show", dir.File("shard3.fut"), "-n", "2", "--json"}).Json()["number"], 7);

  // Shards in the wrong order or from another request do not fit.
  EXPECT_EQ(Cli({"merge", dir.File("bad.fut"), dir.File("shard4.fut"), dir.File("shard1.fut")}).code, 1);
  EXPECT_EQ(Cli({"merge", dir.File("bad.fut"), dir.File("missing.fut")}).code, 1);
  for (const char* shard : {"0/4", "5/4", "1/0", "x", "2/3/4"}) {
    std::vector<std::string> args = CreateArgs(dir.File("x.fut"));
    args.insert(args.end(), {"--shard", shard});
    EXPECT_EQ(Cli(args).code, 2) << shard;
  }
}

}  // namespace
}  // namespace qm::cli
