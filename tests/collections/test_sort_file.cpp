#include "collections/sort_file.h"

#include <gtest/gtest.h>

#include "core/headless_port.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::ReadBytes;
using test::SmallRecord;
using Strings = std::vector<std::string>;

class SortFile : public ::testing::Test {
 protected:
  void SetUp() override {
    // #9 and #10 tie on every key but the number; #4 is an older record (signs only).
    // Headers compare as single bytes: "B" < "a" < "\xE9" (e acute).
    source = test::CrLf(test::Records({SmallRecord("#9", "a", "3 12 1"), SmallRecord("#10", "a", "3 12 1"),
                                       SmallRecord("#4", "\xE9", " 7 "), SmallRecord("#2", "B", "4 3 2")}));
    test::WriteBytes(in, source);
  }
  // Sorts and returns the "#" lines of the output.
  Strings Sort(int by, int order, bool resequence = false, const std::string& start = "") {
    EXPECT_EQ(SortPuzzleFile(model, port, {in, out, by, order, resequence, start, {}}).count, 4);
    Strings headers;
    const std::string bytes = ReadBytes(out);
    for (std::size_t at = 0; (at = bytes.find('#', at)) != std::string::npos; ++at) {
      headers.push_back(bytes.substr(at, bytes.find('\r', at) - at));
    }
    return headers;
  }

  test::TempDir dir;
  std::string in = dir.File("in.fut");
  std::string out = dir.File("out.fut");
  std::string source;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(SortFile, OrdersByEachCriterionWithTiesByTheRecordLine) {
  EXPECT_EQ(Sort(kSortByHeader, kSortAscending), Strings({"#2", "#10", "#9", "#4"}));
  EXPECT_EQ(Sort(kSortByHeader, kSortDescending), Strings({"#4", "#9", "#10", "#2"}));
  EXPECT_EQ(Sort(kSortBySigns, kSortAscending), Strings({"#2", "#4", "#10", "#9"}));
  EXPECT_EQ(Sort(kSortByNumber, kSortDescending), Strings({"#10", "#9", "#4", "#2"}));
  EXPECT_EQ(Sort(kSortByHeader, kSortAscending, true, "5"), Strings({"#5", "#6", "#7", "#8"}));
  EXPECT_EQ(Sort(kSortBySize, kSortRandom), Strings({"#10", "#9", "#2", "#4"}));  // only numbers shuffle
  EXPECT_EQ(Sort(kSortByNumber, kSortAscending, true, "0"), Strings({"#1", "#2", "#3", "#4"}));
  EXPECT_EQ(ReadBytes(out), test::CrLf(test::Records({SmallRecord("#1", "B", "4 3 2"), SmallRecord("#2", "\xE9", "5 7"),
                                                      SmallRecord("#3", "a", "3 12 1"),
                                                      SmallRecord("#4", "a", "3 12 1")})));
  EXPECT_EQ(port.messages.back(), " 4 puzzles sorted to file:\r\n" + out);
  EXPECT_EQ(ReadBytes(in), source);

  SeedRandom(model, 11);
  EXPECT_EQ(Sort(kSortByNumber, kSortRandom), Strings({"#1", "#2", "#3", "#4"}));  // always renumbered
  const std::string shuffled = ReadBytes(out);
  SeedRandom(model, 11);
  Sort(kSortByNumber, kSortRandom);
  EXPECT_EQ(ReadBytes(out), shuffled);
}

TEST_F(SortFile, RefusesBadRequestsWithoutTouchingEitherFile) {
  test::WriteBytes(dir.File("empty.fut"), "no records\r\n");
  test::WriteBytes(out, "keep");
  const struct {
    std::string in;
    std::string out;
    std::string message;
  } cases[] = {{in, "  ", "Specify output file name"},
               {dir.File("missing.fut"), out, "Input file does not exist"},
               {in, dir.File("IN.FUT"), "Input and output files cannot be same"},
               {in, dir.Path() + "/./in.fut", "Input and output files cannot be same"},
               {dir.File("empty.fut"), out, "There are no puzzles in this file"},
               {in, "/dev/full", "Unable to sort file:\r\n/dev/full"}};
  for (const auto& c : cases) {
    EXPECT_EQ(SortPuzzleFile(model, port, {c.in, c.out, 0, 0, false, "", {}}).result, CommandResult::Failed);
    EXPECT_EQ(port.messages.back(), c.message);
  }
  {
    test::FileSizeLimit full(100);
    EXPECT_EQ(SortPuzzleFile(model, port, {in, out, 0, 0, false, "", {}}).result, CommandResult::Failed);
  }
  EXPECT_EQ(port.messages.back(), "Unable to sort file:\r\n" + out);
  EXPECT_EQ(ReadBytes(out), "keep");
  EXPECT_EQ(ReadBytes(in), source);
  EXPECT_FALSE(port.Busy());
}

}  // namespace
}  // namespace qm
