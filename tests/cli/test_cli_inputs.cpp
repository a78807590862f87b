// Input the commands cannot take is refused with a clear message and exit 2 before
// anything is done; files that are no collection are named as such.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "core/collection_file.h"
#include "support/cli_run.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

namespace fs = std::filesystem;
using test::Cli;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

TEST(CliInputs, NumbersOutOfReachAreUsageErrors) {
  test::TempDir dir;
  const std::string out = dir.File("out.fut");
  const struct {
    std::vector<std::string> args;
    const char* says;
  } cases[] = {
      {{"create", "--size", "3", "--shard", "1/4294967297", "--out", out}, "must be I/N"},
      {{"create", "--size", "3", "--shard", "one/two", "--out", out}, "must be I/N"},
      {{"create", "--size", "3", "--shard", "3/2", "--out", out}, "must be I/N"},
      {{"create", "--size", "3", "--count", "2147483648", "--out", out}, "--count"},
      {{"create", "--size", "3", "--seed", "18446744073709551616", "--out", out}, "0..18446744073709551615"},
      {{"create", "--size", "3", "--seed", "99999999999999999999999", "--out", out}, "a seed must be"},
      {{"sort", kCollection, out, "--by", "size", "--order", "random", "--seed", "18446744073709551616"}, "seed"},
      {{"solutions", kCollection, "--time-limit", "nan"}, "got nan"},
      {{"solutions", kCollection, "--time-limit", "inf"}, "got inf"},
      {{"solutions", kCollection, "--time-limit", "-1"}, "got -1"},
      {{"grade", kCollection, "--range", "1-2147483648"}, "--range"},
  };
  for (const auto& c : cases) {
    const test::CliRun run = Cli(c.args);
    EXPECT_EQ(run.code, 2) << c.args[0] << " " << c.args[c.args.size() - 2];
    EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("Unexpected failure"), std::string::npos) << run.err;
  }
  EXPECT_FALSE(fs::exists(out));

  // Record numbers past the top of int: refused before a puzzle is made.
  test::WriteBytes(out, test::CrLf(test::SmallRecord("#1", "one")));
  const test::CliRun wide = Cli({"create", "--size", "3", "--count", "2147483647", "--out", out});
  EXPECT_EQ(wide.code, 2);
  EXPECT_NE(wide.err.find("record numbers up to 2147483648 would not fit"), std::string::npos) << wide.err;
  EXPECT_EQ(CountPuzzles(out), 1);
  // A shard numbers as one run: its last number is the request's count, which fits.
  const test::CliRun last =
      Cli({"create", "--size", "3", "--count", "2147483647", "--shard", "2147483647/2147483647", "--out", out,
           "--seed", "1", "--json"});
  ASSERT_EQ(last.code, 0) << last.err;
  EXPECT_EQ(last.Json()["puzzles"][0]["number"], 2147483647);
  // The largest seed is a seed like any other.
  EXPECT_EQ(Cli({"create", "--size", "3", "--display", "--seed", "18446744073709551615"}).code, 0);
}

TEST(CliInputs, WhatIsNoCollectionIsNamedSo) {
  test::TempDir dir;
  const std::string fifo = dir.File("pipe.fut");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const struct {
    std::string file;
    const char* why;
  } cases[] = {{dir.File("missing.fut"), "(it does not exist)"},
               {dir.Path(), "(it is a folder)"},
               {fifo, "(it is not a regular file)"},
               {"/dev/zero", "(it is not a regular file)"}};
  for (const auto& c : cases) {
    const test::CliRun grade = Cli({"grade", c.file});
    EXPECT_EQ(grade.code, 1) << c.file;
    EXPECT_EQ(grade.err, "Cannot read collection file: " + c.file + " " + c.why + "\n");
    const test::CliRun count = Cli({"count", c.file, "--json"});
    if (c.file.ends_with("missing.fut")) {
      EXPECT_EQ(count.code, 0);  // a missing file holds no puzzles
      EXPECT_EQ(count.Json()["count"], 0);
    } else {
      EXPECT_EQ(count.code, 1) << c.file;
      EXPECT_EQ(count.Json()["error"], "Cannot read collection file: " + c.file + " " + c.why);
    }
  }
}

TEST(CliInputs, GradeRangesAreCheckedAgainstTheFile) {
  test::TempDir dir;
  const std::string one = dir.File("one.fut");
  test::WriteBytes(one, test::CrLf(test::SampleRecord()));
  // Far past the end: the list stops at the first ordinal that is not there.
  for (const std::string range : {"1-2147483647", "1-1000000", "1-2"}) {
    const test::CliRun run = Cli({"grade", one, "--range", range, "--json"});
    ASSERT_EQ(run.code, 0) << range << run.err;
    const auto puzzles = run.Json()["puzzles"];
    ASSERT_EQ(puzzles.size(), 2u) << range;
    EXPECT_EQ(puzzles[0]["ordinal"], 1);
    EXPECT_EQ(puzzles[1]["ordinal"], 2);
    EXPECT_TRUE(puzzles[1].contains("error"));
  }
  const auto past = Cli({"grade", one, "--range", "5-2000000000", "--json"}).Json()["puzzles"];
  ASSERT_EQ(past.size(), 1u);
  EXPECT_EQ(past[0]["ordinal"], 5);
  EXPECT_EQ(Cli({"grade", dir.File("empty.fut"), "--json"}).code, 1);
  test::WriteBytes(dir.File("empty.fut"), "");
  EXPECT_EQ(Cli({"grade", dir.File("empty.fut"), "--json"}).Json()["puzzles"].size(), 0u);
}

TEST(CliInputs, RecordsNumberedZeroOrBelowAreRecordsEverywhere) {
  test::TempDir dir;
  const std::string file = dir.File("z.fut");
  test::WriteBytes(file, test::CrLf(test::Records({test::SmallRecord("#1", "one"), test::SmallRecord("#0", "zero"),
                                                   test::SmallRecord("#-5", "minus"), test::SmallRecord("#2", "two")})));
  const test::CliRun count = Cli({"count", file, "--json"});
  EXPECT_EQ(count.Json()["count"], 2);  // the window's count of numbered records
  EXPECT_EQ(count.Json()["records"], 4);
  EXPECT_NE(Cli({"count", file}).out.find("4 records in all: 2 are numbered 0 or below"), std::string::npos);

  const test::CliRun show = Cli({"show", file, "-n", "4"});
  ASSERT_EQ(show.code, 0);
  EXPECT_EQ(show.out.substr(0, show.out.find('\n')), "Puzzle 4 of 4 in " + file);
  const auto graded = Cli({"grade", file, "--json"}).Json()["puzzles"];
  ASSERT_EQ(graded.size(), 4u);
  EXPECT_FALSE(graded[3].contains("error"));

  const test::WorkingDirectory cwd(dir.Path());
  ASSERT_EQ(Cli({"delete", file, "-n", "3"}).code, 0);
  EXPECT_EQ(CountRecords(file), 3);
  EXPECT_EQ(Cli({"show", file, "-n", "3", "--json"}).Json()["comment"], "two");
}

TEST(CliInputs, ACreateCutShortByAFullDiskSaysWhatItKept) {
  test::TempDir dir;
  const std::string out = dir.File("full.fut");
  test::CliRun run;
  {
    test::FileSizeLimit full(900);  // room for a few 3x3 records only
    run = Cli({"create", "--size", "3", "--count", "50", "--seed", "3", "--out", out, "--json"});
  }
  ASSERT_EQ(run.code, 1);
  const int kept = run.Json()["added"];
  EXPECT_GT(kept, 0);
  EXPECT_EQ(CountPuzzles(out), kept);
  EXPECT_EQ(run.Json()["note"], std::to_string(kept) + " puzzles made before the failure were kept in " + out);
  {
    test::FileSizeLimit full(test::ReadBytes(out).size() + 10);
    run = Cli({"create", "--size", "3", "--count", "5", "--seed", "4", "--out", out});
  }
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("0 puzzles made before the failure were kept in " + out), std::string::npos) << run.err;
}

}  // namespace
}  // namespace qm
