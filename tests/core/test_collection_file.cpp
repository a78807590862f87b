#include "commands/record_commands.h"
#include "core/collection_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "commands/headless_port.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::CrLf;
using test::ReadBytes;
using test::SampleRecord;
using test::WriteBytes;

std::vector<std::string> Record(const std::string& header, const std::string& comment,
                                const std::string& sizeLine, std::vector<std::string> rows) {
  rows.insert(rows.begin(), {header, comment, sizeLine});
  return rows;
}

std::vector<std::string> Join(std::vector<std::vector<std::string>> records) {
  std::vector<std::string> lines;
  for (auto& r : records) lines.insert(lines.end(), r.begin(), r.end());
  return lines;
}

class CollectionFile : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& bytes) {
    const std::string path = dir.File(name);
    WriteBytes(path, bytes);
    return path;
  }
  ReadResult Read(const std::string& path, int n) { return ReadPuzzle(model, port, path, n); }

  test::TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(CollectionFile, CountsOnlyRecordLinesWithAPositiveNumber) {
  const std::string path = Write("c.fut", CrLf({"#1", "#0", "#", "#a", "#12 extra", "#-3", "#0.5", "x#4", "#7"}));
  EXPECT_EQ(CountPuzzles(path), 4);  // #1, #12 extra, #0.5, #7
  EXPECT_EQ(CountPuzzles(dir.File("missing.fut")), 0);
  EXPECT_EQ(CountPuzzles(Write("empty.fut", "")), 0);
  EXPECT_EQ(CountPuzzles(dir.Path()), 0);
}

TEST_F(CollectionFile, FindRecordCountsEveryHashLine) {
  const std::string path = Write("f.fut", CrLf({"junk", "#0", "a", "#", "#2.5", "#x"}));
  const struct {
    int index;
    int number;
    bool notFound;
  } cases[] = {{-5, 0, false}, {0, 0, false}, {1, 0, false}, {2, 2, false}, {3, 0, false}, {4, 0, true}};
  for (const auto& c : cases) {
    LineReader file(path);
    const RecordLocation where = FindRecord(file, c.index);
    EXPECT_EQ(where.notFound, c.notFound) << c.index;
    EXPECT_EQ(where.number, c.number) << c.index;
  }
}

TEST_F(CollectionFile, ReadsTheWorkedExample) {
  const auto first = Record("#1", "First", "3 0 0", {".....", ".....", ".....", ".....", "....."});
  const std::string path = Write("w.fut", CrLf(Join({first, first, SampleRecord()})));
  port.onMessage = [](const std::string& m) { FAIL() << "unexpected message " << m; };
  const ReadResult result = Read(path, 3);
  ASSERT_FALSE(result.notFound);
  EXPECT_EQ(result.title, "#3 Sample");
  EXPECT_EQ(model.GridSize, 4);
  EXPECT_EQ(model.ConstraintCount, 4);
  EXPECT_EQ(model.ClueCount, 3);
  EXPECT_EQ(model.RecordNumber, 3);
  EXPECT_EQ(model.CurrentPuzzle, 3);
  EXPECT_EQ(model.CurrentFile, path);
  EXPECT_EQ(model.PuzzleCount, 3);
  EXPECT_EQ(model.Comment, "Sample");
  EXPECT_FALSE(port.Busy());

  EXPECT_EQ(model.PosText[CellPosition(model, 1, 3)], "3");
  EXPECT_EQ(model.GivenValue[CellPosition(model, 1, 3)], 3);
  EXPECT_EQ(model.GivenValue[CellPosition(model, 3, 1)], 4);
  EXPECT_EQ(model.GivenValue[CellPosition(model, 4, 4)], 1);
  EXPECT_EQ(model.PosText[model.PositionOf[1][2]], "<");
  EXPECT_EQ(model.PosText[model.PositionOf[2][7]], "v");
  EXPECT_EQ(model.PosText[model.PositionOf[3][4]], ">");
  EXPECT_EQ(model.PosText[model.PositionOf[6][3]], "^");
  int nonEmpty = 0;
  for (int k = 0; k <= model.LastPosition; ++k) nonEmpty += model.PosText[k].empty() ? 0 : 1;
  EXPECT_EQ(nonEmpty, 7);
  EXPECT_EQ(model.SolutionText[model.PositionOf[1][1]], "1");
  EXPECT_EQ(model.SolutionText[model.PositionOf[1][2]], "<");
  EXPECT_EQ(model.SolutionText[model.PositionOf[1][4]], ".");
  EXPECT_EQ(model.SolutionText[model.PositionOf[7][7]], "1");
}

TEST_F(CollectionFile, SizeLineForms) {
  const std::vector<std::string> rows3 = {"1....", ".....", ".....", ".....", "....2"};
  const struct {
    const char* sizeLine;
    int n, signs, clues;
  } cases[] = {
      {"3 4 9", 3, 4, 9},      // clues read, even when wrong
      {"3 4", 3, 4, 2},        // clues counted
      {"3  4", 3, 0, 4},       // two blanks: an empty signs field
      {"3 4 9 x", 3, 4, 2},    // a fourth field: clues counted
      {"3 4 -1", 3, 4, 2},     // -1 means "count them"
      {"37 2 1", 3, 2, 1},     // N from the first character only
      {" 7 ", 5, 7, 2},        // older one-field form: 5x5
      {"", 5, 0, 2},
  };
  for (const auto& c : cases) {
    const std::string path = Write("s.fut", CrLf(Record("#1", "c", c.sizeLine, rows3)));
    ASSERT_FALSE(Read(path, 1).notFound) << c.sizeLine;
    EXPECT_EQ(model.GridSize, c.n) << c.sizeLine;
    EXPECT_EQ(model.ConstraintCount, c.signs) << c.sizeLine;
    EXPECT_EQ(model.ClueCount, c.clues) << c.sizeLine;
  }
}

TEST_F(CollectionFile, SizeOutsideThreeToNineIsAReadError) {
  for (const char* sizeLine : {"2 0 0", "10 0 0", "x 1 1", " 4 4 3", "0 0"}) {
    model.PosText[0] = "stale";
    const std::string path = Write("bad.fut", CrLf(Record("#1", "c", sizeLine, {"1......"})));
    const ReadResult result = Read(path, 1);
    EXPECT_TRUE(result.notFound) << sizeLine;
    EXPECT_EQ(result.title, "");
    EXPECT_EQ(model.PosText[0], "") << sizeLine;
    EXPECT_EQ(model.PuzzleCount, 1);
  }
  EXPECT_EQ(ReadErrorMessage(2, "/x/p.fut"), "Error reading puzzle# 2 in file:\r\n/x/p.fut");
}

TEST_F(CollectionFile, PuzzleCharacters) {
  const std::string path =
      Write("p.fut", CrLf(Record("#4", "chars", "3 0", {"1V?x0", ".....|", "..^", ".....|12345", "3.2..|V"})));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.PosText[1], "v");
  EXPECT_EQ(model.PosText[2], "");  // "?" reads as empty
  EXPECT_EQ(model.PosText[3], "x");
  EXPECT_EQ(model.GivenValue[3], 0);
  EXPECT_EQ(model.PosText[4], "0");
  EXPECT_EQ(model.PosText[12], "^");
  EXPECT_EQ(model.PosText[20], "3");
  EXPECT_EQ(model.GivenValue[22], 2);
  EXPECT_EQ(model.ClueCount, 3);          // 1, 3 and 2
  EXPECT_EQ(model.SolutionText[0], "");   // no "|" part: no stored solution
  EXPECT_EQ(model.SolutionText[5], "");   // "|" and nothing after it
  EXPECT_EQ(model.SolutionText[15], "1");
  EXPECT_EQ(model.SolutionText[20], "v");  // "V" read as "v"
  EXPECT_EQ(model.SolutionText[21], "");
}

TEST_F(CollectionFile, CommaInTheCommentSpoilsTheRecord) {
  // The text after the comma is read as the size line.
  std::string path = Write("k.fut", CrLf(Record("#1", "Hello, world", "4 4 3", {".<..3..", "......v"})));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.Comment, "Hello");
  EXPECT_EQ(model.GridSize, 5);
  EXPECT_EQ(model.ConstraintCount, 0);
  EXPECT_EQ(model.PosText[0], "4");  // the real size line became grid row 1

  path = Write("k2.fut", CrLf(Record("#1", "Hi,3 2 0", "1<...", {"v....", ".....", ".....", "....."})));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.GridSize, 3);
  EXPECT_EQ(model.PosText[0], "1");
  EXPECT_EQ(model.PosText[5], "v");

  path = Write("k3.fut", CrLf(Record("#1", "  \"Quoted, kept\"  ", "3 0 0", {"1...."})));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.Comment, "Quoted, kept");
  EXPECT_EQ(model.PosText[0], "1");
}

TEST_F(CollectionFile, TruncatedAndMissingRecords) {
  std::string path = Write("t.fut", CrLf({"#1", "cut", "4 0 0", "1......", "......."}));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.PosText[0], "1");
  EXPECT_EQ(model.PosText[model.PositionOf[7][1]], "");
  EXPECT_EQ(model.ClueCount, 0);  // read from the size line

  path = Write("t2.fut", "#1\r\ncomment only");
  EXPECT_TRUE(Read(path, 1).notFound);
  path = Write("t3.fut", "#1");
  EXPECT_TRUE(Read(path, 1).notFound);
  path = Write("t4.fut", CrLf({"no records", "here"}));
  EXPECT_TRUE(Read(path, 1).notFound);
  EXPECT_TRUE(Read(dir.File("missing.fut"), 1).notFound);
  EXPECT_TRUE(Read(dir.Path(), 1).notFound);
  EXPECT_TRUE(Read(Write("e.fut", ""), 1).notFound);
  EXPECT_FALSE(port.Busy());
}

TEST_F(CollectionFile, RecordZeroIsReachableButNotCounted) {
  const auto r0 = Record("#0", "zero", "3 0 0", {"1...."});
  const auto r1 = Record("#1", "one", "3 0 0", {"2...."});
  const std::string path = Write("z.fut", CrLf(Join({r0, r1})));
  ASSERT_FALSE(Read(path, 2).notFound);
  EXPECT_EQ(model.PuzzleCount, 1);
  EXPECT_EQ(model.PosText[0], "2");
  const ReadResult first = Read(path, 0);  // 0 or less reads the first record
  EXPECT_EQ(first.title, "#0 zero");
  EXPECT_EQ(model.CurrentPuzzle, 0);
  EXPECT_TRUE(Read(path, 3).notFound);
}

TEST_F(CollectionFile, MinusOneOnlyClearsTheGrid) {
  const std::string path = Write("m.fut", CrLf(SampleRecord()));
  ASSERT_FALSE(Read(path, 1).notFound);
  model.UndoList.push_back("0001");
  const ReadResult result = Read(path, -1);
  EXPECT_FALSE(result.notFound);
  for (int k = 0; k <= model.LastPosition; ++k) ASSERT_EQ(model.PosText[k], "");
  EXPECT_EQ(model.CurrentPuzzle, 1);
  EXPECT_EQ(model.UndoList.size(), 1u);
}

TEST_F(CollectionFile, LineEndingsDoNotMatter) {
  std::string lf;
  for (const auto& line : SampleRecord()) lf += line + "\n";
  const std::string crlfPath = Write("crlf.fut", CrLf(SampleRecord()));
  const std::string lfPath = Write("lf.fut", lf);
  ASSERT_FALSE(Read(crlfPath, 1).notFound);
  const auto crlfTexts = model.PosText;
  const auto crlfSolution = model.SolutionText;
  ASSERT_FALSE(Read(lfPath, 1).notFound);
  EXPECT_EQ(model.PosText, crlfTexts);
  EXPECT_EQ(model.SolutionText, crlfSolution);
  EXPECT_EQ(model.Comment, "Sample");
}

TEST_F(CollectionFile, JunkNeverCrashesAndIsNeverWritten) {
  std::mt19937 random(20261121);
  std::vector<std::string> files;
  for (int i = 0; i < 40; ++i) {
    std::string bytes;
    const int length = static_cast<int>(random() % 4000);
    for (int b = 0; b < length; ++b) {
      // Mostly the file's own alphabet, so that records and size lines do turn up.
      const char alphabet[] = "#0123456789 .?<>^vV|,\"\r\n\0\xff";
      bytes += random() % 4 == 0 ? static_cast<char>(random()) : alphabet[random() % (sizeof alphabet - 1)];
    }
    files.push_back(Write("junk" + std::to_string(i) + ".fut", bytes));
  }
  files.push_back(Write("long.fut", "#1\r\n" + std::string(1 << 20, 'x') + "\r\n9 1 1\r\n" + std::string(1 << 20, '1')));
  files.push_back(Write("huge.fut", "#99999999999999999999999\r\nc\r\n3 0 0\r\n"));
  for (const auto& path : files) {
    const std::string before = ReadBytes(path);
    const auto stamp = std::filesystem::last_write_time(path);
    for (int n : {1, 2, 5, -1, 0}) {
      const ReadResult result = Read(path, n);
      if (!result.notFound) {
        ASSERT_GE(model.GridSize, 3);
        ASSERT_LE(model.GridSize, 9);
      }
    }
    EXPECT_EQ(ReadBytes(path), before);
    EXPECT_EQ(std::filesystem::last_write_time(path), stamp);
  }
}

// One pass over the file reads every record exactly as a load of that ordinal does,
// also where records are cut short, run into the next one or carry odd numbers.
TEST_F(CollectionFile, AStreamReadsEachRecordAsALoadDoes) {
  std::mt19937 random(7);
  std::vector<std::string> files = {std::string(QUILLMERE_APP_DIR) + "puzzles.fut",
                                    Write("odd.fut", CrLf(Join({Record("#0", "zero", "3 0 0", {"1...."}),
                                                                Record("#-5", "minus", "4 0 0", {"1......|1"}),
                                                                {"#"},
                                                                Record("#2", "a, 3 0 1", "1....", {"....."}),
                                                                Record("#3", "#comment", "12 0 0", {}),
                                                                SampleRecord()})))};
  for (int i = 0; i < 20; ++i) {
    std::string bytes;
    for (int b = static_cast<int>(random() % 3000); b > 0; --b) {
      const char alphabet[] = "#0123456789 .<>^v|,\r\n";
      bytes += alphabet[random() % (sizeof alphabet - 1)];
    }
    files.push_back(Write("junk" + std::to_string(i) + ".fut", bytes));
  }
  for (const std::string& path : files) {
    RecordStream stream(path);
    PuzzleModel streamed;
    ReadResult result;
    int n = 0;
    while (stream.Next(streamed, true, result)) {
      ++n;
      ASSERT_EQ(stream.Ordinal(), n);
      PuzzleModel loaded;
      const ReadResult expected = LoadPuzzle(loaded, path, n);
      ASSERT_EQ(result.notFound, expected.notFound) << path << " #" << n;
      EXPECT_EQ(result.title, expected.title) << path << " #" << n;
      if (expected.notFound) continue;
      ASSERT_EQ(streamed.GridSize, loaded.GridSize);
      for (int k = 0; k <= loaded.LastPosition; ++k) {
        ASSERT_EQ(streamed.PosText[k], loaded.PosText[k]) << path << " #" << n << " position " << k;
        ASSERT_EQ(streamed.GivenValue[k], loaded.GivenValue[k]) << path << " #" << n << " position " << k;
        ASSERT_EQ(streamed.SolutionText[k], loaded.SolutionText[k]) << path << " #" << n << " position " << k;
      }
      EXPECT_EQ(streamed.ClueCount, loaded.ClueCount);
      EXPECT_EQ(streamed.ConstraintCount, loaded.ConstraintCount);
    }
    EXPECT_EQ(n, CountRecords(path)) << path;
    PuzzleModel past;
    EXPECT_TRUE(LoadPuzzle(past, path, n + 1).notFound) << path;
  }
}

TEST_F(CollectionFile, WritingTheWorkedExampleGivesItsRecordBack) {
  const std::string source = Write("src.fut", CrLf(SampleRecord()));
  ASSERT_FALSE(Read(source, 1).notFound);
  const std::string target = dir.File("out.fut");
  ASSERT_TRUE(WritePuzzle(model, port, model.Comment, 3, target));
  EXPECT_EQ(ReadBytes(target), CrLf(SampleRecord()));

  const auto texts = model.PosText;
  const auto given = model.GivenValue;
  const auto solution = model.SolutionText;
  ASSERT_TRUE(WritePuzzle(model, port, "Second", 4, target));
  ASSERT_FALSE(Read(target, 2).notFound);
  EXPECT_EQ(model.PosText, texts);
  EXPECT_EQ(model.GivenValue, given);
  EXPECT_EQ(model.SolutionText, solution);
  EXPECT_EQ(model.Comment, "Second");
  EXPECT_EQ(model.PuzzleCount, 2);
}

TEST_F(CollectionFile, WriteRulesForUserDigitsCandidatesAndSolutions) {
  SetSize(model, 3);
  model.PosText[0] = "2";
  model.GivenValue[0] = 2;   // clue
  model.PosText[2] = "3";    // user digit
  model.PosText[4] = "123";  // candidates
  model.PosText[10] = "1";
  model.GivenValue[10] = -1;  // written as "."
  model.PosText[1] = "<>";    // found inside "<>^v": counted as a sign
  model.PosText[5] = "^";
  model.SolutionText[0] = "2";
  model.SolutionText[1] = "<<";
  const std::string path = dir.File("rules.fut");
  ASSERT_TRUE(WritePuzzle(model, port, "rules", 9, path));
  EXPECT_EQ(ReadBytes(path), CrLf({"#9", "rules", "3 2 4", "2??.?|2?...", "^....|.....", ".....|.....",
                                   ".....|.....", ".....|....."}));
  ASSERT_FALSE(Read(path, 1).notFound);
  EXPECT_EQ(model.PosText[2], "");  // a user digit does not come back
  EXPECT_EQ(model.PosText[4], "");
}

TEST_F(CollectionFile, WriteFailureShowsTheMessageAndLeavesTheModel) {
  const std::string path = dir.File("no/such/dir/x.fut");
  EXPECT_FALSE(WritePuzzle(model, port, "c", 3, path));
  ASSERT_EQ(port.messages.size(), 1u);
  EXPECT_EQ(port.messages[0], "Error writing puzzle# 3 to file: " + path);
}

TEST_F(CollectionFile, WithSolutionsKeepsTheOlderFiveByFiveFormat) {
  const std::string source = Write("src.fut", CrLf(SampleRecord()));
  ASSERT_FALSE(Read(source, 1).notFound);
  model.SolutionList = {std::string(49, 'a'), std::string(49, 'b')};
  const std::string path = dir.File("sol.fut");
  ASSERT_TRUE(WritePuzzleWithSolutions(model, port, "Sols", 7, path));
  const std::string text = ReadBytes(path);
  const std::string start = "#7\r\nSols\r\n 4 \r\n.<..3..|aaaaaaa\r\n......v|aaaaaaa\r\n";
  EXPECT_EQ(text.substr(0, start.size()), start);
  EXPECT_EQ(CountPuzzles(path), 2);
  ASSERT_FALSE(Read(path, 2).notFound);
  EXPECT_EQ(model.GridSize, 5);  // no N on the size line
  EXPECT_EQ(model.ConstraintCount, 4);
  EXPECT_EQ(model.RecordNumber, 8);

  SetSize(model, 6);
  model.SolutionList = {std::string(121, '1'), std::string(121, '2')};
  const std::string big = dir.File("big.fut");
  EXPECT_FALSE(WritePuzzleWithSolutions(model, port, "Big", 1, big));
  EXPECT_EQ(port.messages.back(), "Error writing puzzle to file: " + big);
  std::vector<std::string> expected = {"#1", "Big", " 0 "};
  for (int row = 1; row <= 9; ++row) expected.push_back("...........|11111111111");
  EXPECT_EQ(ReadBytes(big), CrLf(expected));
}

}  // namespace
}  // namespace qm
