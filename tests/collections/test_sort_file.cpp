#include "commands/sort_commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "commands/headless_port.h"
#include "core/text_rules.h"
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

// The first way of sorting, kept as the reference: every line held, keys joined with
// the whole record and compared as strings.
std::string ReferenceSort(const std::string& bytes, const SortRequest& request, PuzzleModel& model) {
  Strings lines;
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t newline = bytes.find('\n', at);
    std::string line = bytes.substr(at, newline == std::string::npos ? std::string::npos : newline - at);
    if (newline != std::string::npos && !line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
    at = newline == std::string::npos ? bytes.size() : newline + 1;
  }
  auto isRecord = [](const std::string& line) { return !line.empty() && line[0] == '#'; };
  std::vector<std::pair<std::string, Strings>> entries;
  for (std::size_t i = 0; i < lines.size();) {
    if (!isRecord(lines[i])) {
      ++i;
      continue;
    }
    Strings record{lines[i++]};
    for (int j = 0; j < 2 && i < lines.size(); ++j) record.push_back(lines[i++]);
    while (i < lines.size() && !isRecord(lines[i])) record.push_back(lines[i++]);
    int n = 5;
    double signs = 0;
    if (record.size() > 2) {
      std::string& size = record[2];
      const std::string_view trimmed = Trim(size);
      if (trimmed.find(' ') != std::string_view::npos) {
        n = IntegerValue(std::string_view(size).substr(0, 1));
        signs = NumericValue(size.size() > 2 ? std::string_view(size).substr(2) : std::string_view());
      } else {
        signs = NumericValue(size);
        size = "5 " + std::string(trimmed);
      }
    }
    std::string key = request.Option1 == kSortByHeader ? (record.size() > 1 ? record[1] : "")
                      : request.Option1 == kSortBySigns ? ZeroPadded(RoundHalfEven(signs), 2)
                      : request.Option1 == kSortByNumber
                          ? (request.Option2 == kSortRandom
                                 ? ZeroPadded(static_cast<long long>(RandomUniform(model) * 99999) - 1, 5)
                                 : ZeroPadded(IntegerValue(std::string_view(record[0]).substr(1)), 5))
                          : ZeroPadded(n, 1);
    for (const std::string& line : record) key += "\r" + line;
    entries.emplace_back(key, record);
  }
  std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  if (request.Option2 == kSortDescending) std::reverse(entries.begin(), entries.end());
  const bool renumber = request.resequence || (request.Option1 == kSortByNumber && request.Option2 == kSortRandom);
  long long number = std::max(1, IntegerValue(request.start));
  std::string out;
  for (auto& [key, record] : entries) {
    if (renumber) record[0] = "#" + std::to_string(number++);
    for (const std::string& line : record) out += line + "\r\n";
  }
  return out;
}

TEST(SortFileAgreement, TheSameBytesAsTheFirstWayOnOddFiles) {
  std::mt19937 random(8);
  test::TempDir dir;
  const std::string in = dir.File("in.fut");
  const std::string out = dir.File("out.fut");
  const Strings comments = {"a", "a", "B", "#hash", "", "\xE9", "a\rb", "ab", "a\tb"};
  const Strings sizes = {"4 3 2", "4 3 2", " 7 ", "9 40 1", "5 12", "3 1 0"};
  for (int trial = 0; trial < 300; ++trial) {
    std::string bytes = random() % 4 == 0 ? "preamble line\r\n" : "";
    const int records = 1 + static_cast<int>(random() % 12);
    for (int r = 0; r < records; ++r) {
      const std::string eol = random() % 5 == 0 ? "\n" : "\r\n";
      bytes += "#" + std::to_string(1 + random() % 120) + eol + comments[random() % comments.size()] + eol +
               sizes[random() % sizes.size()] + eol;
      for (int g = static_cast<int>(random() % 4); g > 0; --g) bytes += std::string(1 + random() % 5, ".<1"[random() % 3]) + eol;
    }
    if (random() % 3 == 0 && bytes.size() > 2) bytes.resize(bytes.size() - 2);  // no final line break
    test::WriteBytes(in, bytes);
    const SortRequest request{in, out, static_cast<int>(random() % 4), static_cast<int>(random() % 3),
                              random() % 2 == 0, std::to_string(random() % 50), {}};
    PuzzleModel model;
    PuzzleModel referenceModel;
    SeedRandom(model, static_cast<std::uint64_t>(trial));
    SeedRandom(referenceModel, static_cast<std::uint64_t>(trial));
    HeadlessPort port;
    SortPuzzleFile(model, port, request);
    ASSERT_EQ(ReadBytes(out), ReferenceSort(bytes, request, referenceModel)) << "trial " << trial;
  }
}

}  // namespace
}  // namespace qm
