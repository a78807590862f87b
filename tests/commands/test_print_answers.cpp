// Printed books take their puzzles from one pass over the file, and every puzzle comes
// with its one answer: stored, or found by the search.
#include "commands/print_answers.h"

#include <gtest/gtest.h>

#include "core/collection_file.h"
#include "support/records.h"
#include "support/test_files.h"

namespace qm {
namespace {

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

std::vector<std::string> CellTexts(const PuzzleModel& model, const PerPosition<std::string>& texts) {
  std::vector<std::string> cells;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (IsCell(model, k)) cells.push_back(texts[static_cast<std::size_t>(k)]);
  }
  return cells;
}

TEST(PrintRange, OnePassReadsWhatLoadPuzzleReadsAndNamesTheFirstBadRecord) {
  const int count = CountPuzzles(kCollection);
  ASSERT_GT(count, 20);
  std::vector<int> seen;
  const int unread = ReadPuzzleRange(kCollection, 7, count, [&](PuzzleModel& model, int n) {
    PuzzleModel alone;
    LoadPuzzle(alone, kCollection, n);
    EXPECT_EQ(model.Comment, alone.Comment) << n;
    EXPECT_EQ(model.PosText, alone.PosText) << n;
    EXPECT_EQ(model.SolutionText, alone.SolutionText) << n;
    EXPECT_EQ(model.RecordNumber, alone.RecordNumber) << n;
    EXPECT_EQ(model.PuzzleCount, count);
    seen.push_back(n);
    return true;
  });
  EXPECT_EQ(unread, 0);
  ASSERT_EQ(seen.size(), static_cast<std::size_t>(count - 6));
  EXPECT_EQ(seen.front(), 7);

  // Stopping early, and a range past the end names the first ordinal missing.
  seen.clear();
  EXPECT_EQ(ReadPuzzleRange(kCollection, 1, 5, [&](PuzzleModel&, int n) {
              seen.push_back(n);
              return n < 3;
            }),
            0);
  EXPECT_EQ(seen, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(ReadPuzzleRange(kCollection, count - 1, count + 3, [](PuzzleModel&, int) { return true; }), count + 1);

  // A record whose size is out of range stops the pass at its ordinal.
  test::TempDir dir;
  const std::string file = dir.Path() + "/bad.fut";
  test::WriteBytes(file, test::CrLf(test::Records({test::SmallRecord("#1", "a"), test::SmallRecord("#2", "b", "12 0 1"),
                                                   test::SmallRecord("#3", "c")})));
  EXPECT_EQ(ReadPuzzleRange(file, 1, 3, [](PuzzleModel&, int) { return true; }), 2);
}

TEST(PrintAnswers, TheSearchFillsAMissingSolutionAndRefusesPuzzlesWithoutExactlyOne) {
  PuzzleModel model;
  ASSERT_FALSE(LoadPuzzle(model, kCollection, 3).notFound);
  const std::vector<std::string> stored = CellTexts(model, model.SolutionText);
  EXPECT_EQ(CompleteSolution(model, 3), "");  // a whole stored solution is kept
  EXPECT_EQ(CellTexts(model, model.SolutionText), stored);

  // Without its solution, and with a wrong digit of the player's in an open cell: the
  // search answers from the clues and signs alone.
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!IsCell(model, k)) continue;
    model.SolutionText[static_cast<std::size_t>(k)].clear();
    if (model.GivenValue[static_cast<std::size_t>(k)] == 0) model.PosText[static_cast<std::size_t>(k)] = "1";
  }
  EXPECT_EQ(CompleteSolution(model, 3), "");
  EXPECT_EQ(CellTexts(model, model.SolutionText), stored);

  // A 3x3 with one clue has several solutions; two equal clues in a row have none.
  PuzzleModel open;
  SetSize(open, 3);
  open.PosText[static_cast<std::size_t>(open.PositionOf[1][1])] = "1";
  open.GivenValue[static_cast<std::size_t>(open.PositionOf[1][1])] = 1;
  EXPECT_EQ(CompleteSolution(open, 12), "Puzzle 12 cannot be printed: it has more than one solution");
  open.PosText[static_cast<std::size_t>(open.PositionOf[1][3])] = "1";
  open.GivenValue[static_cast<std::size_t>(open.PositionOf[1][3])] = 1;
  EXPECT_EQ(CompleteSolution(open, 13), "Puzzle 13 cannot be printed: it has no solution");
  EXPECT_EQ(CellTexts(open, open.SolutionText), std::vector<std::string>(9, ""));
}

}  // namespace
}  // namespace qm
