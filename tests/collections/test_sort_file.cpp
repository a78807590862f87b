#include "collections/sort_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/headless_port.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::CrLf;
using test::ReadBytes;
using test::Records;
using test::SmallRecord;
using Strings = std::vector<std::string>;

class SortFile : public ::testing::Test {
 protected:
  void SetUp() override {
    source = dir.File("in.fut");
    output = dir.File("out.fut");
    // #9 and #10 tie on every key but the number; #4 is an older record (signs only).
    // Headers compare as single bytes: "B" < "a" < "\xE9" (e acute).
    sourceBytes = CrLf(Records({SmallRecord("#9", "a", "3 12 1"), SmallRecord("#10", "a", "3 12 1"),
                                SmallRecord("#4", "\xE9", " 7 "), SmallRecord("#2", "B", "4 3 2")}));
    test::WriteBytes(source, sourceBytes);
  }
  SortOutcome Sort(int by, int order, bool resequence = false, const std::string& start = "") {
    return SortPuzzleFile(model, port, {source, output, by, order, resequence, start, {}});
  }
  // The "#" lines of the output, in order.
  Strings Headers() const {
    Strings headers;
    std::string bytes = ReadBytes(output);
    for (std::size_t at = 0; (at = bytes.find('#', at)) != std::string::npos; ++at) {
      headers.push_back(bytes.substr(at, bytes.find('\r', at) - at));
    }
    return headers;
  }

  test::TempDir dir;
  std::string source;
  std::string output;
  std::string sourceBytes;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(SortFile, OrdersByEachCriterionWithTiesByTheRecordLine) {
  const struct {
    int by;
    int order;
    Strings headers;
  } cases[] = {
      {kSortByHeader, kSortAscending, {"#2", "#10", "#9", "#4"}},
      {kSortByHeader, kSortDescending, {"#4", "#9", "#10", "#2"}},
      {kSortBySigns, kSortAscending, {"#2", "#4", "#10", "#9"}},
      {kSortByNumber, kSortAscending, {"#2", "#4", "#9", "#10"}},
      {kSortByNumber, kSortDescending, {"#10", "#9", "#4", "#2"}},
      {kSortBySize, kSortAscending, {"#10", "#9", "#2", "#4"}},
      {kSortBySize, kSortRandom, {"#10", "#9", "#2", "#4"}},  // only the number key is shuffled
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Sort(c.by, c.order).result, CommandResult::Done);
    EXPECT_EQ(Headers(), c.headers) << c.by << " " << c.order;
  }
  EXPECT_EQ(port.messages.back(), " 4 puzzles sorted to file:\r\n" + output);
  EXPECT_EQ(ReadBytes(source), sourceBytes);
  EXPECT_FALSE(port.Busy());
}

TEST_F(SortFile, KeepsRecordsWholeAndGivesOlderOnesTheirSize) {
  std::vector<int> progress;
  SortRequest request{source, output, kSortByNumber, kSortAscending, false, "", {}};
  request.progress = [&progress](int count) { progress.push_back(count); };
  ASSERT_EQ(SortPuzzleFile(model, port, request).count, 4);
  EXPECT_EQ(progress, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(ReadBytes(output),
            CrLf(Records({SmallRecord("#2", "B", "4 3 2"), SmallRecord("#4", "\xE9", "5 7"),
                          SmallRecord("#9", "a", "3 12 1"), SmallRecord("#10", "a", "3 12 1")})));
}

TEST_F(SortFile, ResequencesFromStartAndAlwaysForARandomOrder) {
  Sort(kSortByNumber, kSortAscending, true, "5");
  EXPECT_EQ(Headers(), Strings({"#5", "#6", "#7", "#8"}));
  Sort(kSortByNumber, kSortAscending, true, "0");
  EXPECT_EQ(Headers(), Strings({"#1", "#2", "#3", "#4"}));

  auto shuffled = [this](std::uint64_t seed) {
    SeedRandom(model, seed);
    Sort(kSortByNumber, kSortRandom, false, "");
    EXPECT_EQ(Headers(), Strings({"#1", "#2", "#3", "#4"}));
    return ReadBytes(output);
  };
  const std::string first = shuffled(11);
  EXPECT_EQ(shuffled(11), first);
  bool anyOther = false;
  for (std::uint64_t seed = 1; seed < 10 && !anyOther; ++seed) anyOther = shuffled(seed) != first;
  EXPECT_TRUE(anyOther);
}

TEST_F(SortFile, RefusesBadRequestsWithoutTouchingEitherFile) {
  test::WriteBytes(dir.File("empty.fut"), "no records\r\n");
  test::WriteBytes(output, "keep");
  const struct {
    std::string source;
    std::string output;
    std::string message;
  } cases[] = {
      {source, "  ", "Specify output file name"},
      {dir.File("missing.fut"), output, "Input file does not exist"},
      {dir.Path(), output, "Input file does not exist"},
      {source, dir.File("IN.FUT"), "Input and output files cannot be same"},
      {source, dir.Path() + "/./in.fut", "Input and output files cannot be same"},
      {dir.File("empty.fut"), output, "There are no puzzles in this file"},
      {source, "/dev/full", "Unable to sort file:\r\n/dev/full"},
  };
  for (const auto& c : cases) {
    port.messages.clear();
    EXPECT_EQ(SortPuzzleFile(model, port, {c.source, c.output, 0, 0, false, "", {}}).result, CommandResult::Failed);
    EXPECT_EQ(port.messages, Strings({c.message}));
  }
  {
    test::FileSizeLimit full(100);
    EXPECT_EQ(Sort(kSortByHeader, kSortAscending).result, CommandResult::Failed);
  }
  EXPECT_EQ(port.messages.back(), "Unable to sort file:\r\n" + output);
  EXPECT_EQ(ReadBytes(output), "keep");
  EXPECT_EQ(ReadBytes(source), sourceBytes);
  EXPECT_FALSE(std::filesystem::exists(dir.File("IN.FUT")));
}

}  // namespace
}  // namespace qm
