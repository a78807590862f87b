// The technique ladder: each rung on a grid built for it, every step against the true
// solution on random unique puzzles, and the ladder against the six techniques.
#include "reasoning/ladder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>

#include "core/collection_file.h"
#include "generator/create_puzzle.h"
#include "solver/solution_search.h"
#include "support/random_square.h"
#include "support/test_grids.h"

namespace qm::reasoning {
namespace {

DigitMask MaskOf(const std::string& digits) {
  DigitMask m = 0;
  for (char c : digits) m |= masks::Bit(c - '0');
  return m;
}

// The grid of layout rows (digits, signs, "." for empty) with some cells' candidates
// given as lists, row-major.
Grid Built(const std::vector<std::string>& rows, const std::vector<std::string>& cells = {}) {
  PuzzleModel model = test::Grid(rows);
  if (!cells.empty()) test::SetCells(model, cells);
  return GridFromModel(model);
}

bool Removes(const Step& step, int cell, const std::string& digits) {
  return std::any_of(step.removed.begin(), step.removed.end(),
                     [&](const auto& r) { return r.first == cell && r.second == MaskOf(digits); });
}

TEST(Ladder, SinglesPlaceADigitAndClearItsLines) {
  Step step;
  // Row 1 holds 1, 2 and 3: its last cell can only be 4.
  ASSERT_TRUE(NextStep(Built({"1.2.3..", ".......", ".......", ".......", ".......", ".......", "......."}), step));
  EXPECT_EQ(step.technique, "Naked single");
  EXPECT_EQ(step.level, kSingles);
  EXPECT_EQ(step.placed, (std::vector<std::pair<int, int>>{{3, 4}}));
  EXPECT_TRUE(Removes(step, 7, "4"));  // row 2, column 4
  EXPECT_EQ(step.text, "Row 1, column 4 can only be 4: place it, and 4 leaves the rest of its row and column.");

  // 1 stands in columns 1, 2 and 3 below row 1: in row 1 it fits only in column 4.
  ASSERT_TRUE(NextStep(Built({".......", ".......", "1......", ".......", "..1....", ".......", "....1.."}), step));
  EXPECT_EQ(step.technique, "Hidden single");
  EXPECT_EQ(step.placed, (std::vector<std::pair<int, int>>{{3, 1}}));
  EXPECT_EQ(step.text, "In row 1, 1 fits only in column 4: place it at row 1, column 4.");
}

TEST(Ladder, SignsBoundTheirCells) {
  Step step;
  // Greater than the 3 to its left: only 4 is left for row 1, column 2.
  ASSERT_TRUE(TryTechnique(Built({"3<.....", ".......", ".......", ".......", ".......", ".......", "......."}),
                           "Sign beside a digit", step));
  EXPECT_EQ(step.level, kSignDigit);
  EXPECT_TRUE(Removes(step, 1, "12"));
  EXPECT_EQ(step.text, "Row 1, column 2 must be greater than the 3 to its left: it cannot be 1 or 2.");

  // Three cells rising to the right: the top is at least 3, the bottom at most 2.
  const Grid chain = Built({".<.<...", ".......", ".......", ".......", ".......", ".......", "......."});
  ASSERT_TRUE(NextStep(chain, step));
  EXPECT_EQ(step.technique, "Sign chain");
  EXPECT_EQ(step.level, kSignBounds);
  EXPECT_TRUE(Removes(step, 2, "12"));
  EXPECT_NE(step.text.find("top of a chain of 3 cells"), std::string::npos) << step.text;

  // Row 1, column 1 holds 2 or 3 and is greater than its neighbour: that one is at most 2.
  ASSERT_TRUE(TryTechnique(Built({".>.....", ".......", ".......", ".......", ".......", ".......", "......."},
                                 {"23", "", "", "", "", "", "", "", "", "", "", "", "", "", "", ""}),
                           "Sign bounds", step));
  EXPECT_TRUE(Removes(step, 1, "34"));
  EXPECT_EQ(step.text,
            "Row 1, column 2 is less than row 1, column 1, which is at most 3, so it cannot be 3 or 4.");
}

// The sentences of the sign rungs, word for word: chains both ways, both sides of one
// sign, a digit above, and a list of several digits.
TEST(Ladder, SignSentencesReadInFull) {
  Step step;
  Grid chain = Built({".<.<...", ".......", ".......", ".......", ".......", ".......", "......."});
  ASSERT_TRUE(NextStep(chain, step));
  EXPECT_EQ(step.text,
            "Row 1, column 3 is the top of a chain of 3 cells (row 1, column 3 > row 1, column 2 > row 1, "
            "column 1), so it is at least 3: it cannot be 1 or 2.");
  EXPECT_EQ(step.cells, (std::vector<int>{2, 1, 0}));
  Apply(chain, step);
  ASSERT_TRUE(NextStep(chain, step));
  EXPECT_EQ(step.text,
            "Row 1, column 1 is the bottom of a chain of 3 cells (row 1, column 1 < row 1, column 2 < row 1, "
            "column 3), so it is at most 2: it cannot be 3 or 4.");

  ASSERT_TRUE(TryTechnique(Built({".>.....", ".......", ".......", ".......", ".......", ".......", "......."},
                                 {"123", "234", "", "", "", "", "", "", "", "", "", "", "", "", "", ""}),
                           "Sign bounds", step));
  EXPECT_EQ(step.text,
            "Row 1, column 1 is greater than row 1, column 2, which is at least 2, so it cannot be 1 or 2; "
            "row 1, column 2 is less than row 1, column 1, which is at most 3, so it cannot be 3 or 4.");
  EXPECT_EQ(step.removed, (std::vector<std::pair<int, DigitMask>>{{0, MaskOf("12")}, {1, MaskOf("34")}}));

  ASSERT_TRUE(TryTechnique(Built({"2......", "^......", ".......", ".......", ".......", ".......", "......."}),
                           "Sign beside a digit", step));
  EXPECT_EQ(step.text, "Row 2, column 1 must be greater than the 2 above it: it cannot be 1.");
  // Not on its own at the grid's edge: a 9x9 puts a three-digit list in one sentence.
  ASSERT_TRUE(TryTechnique(Built({"4<...............", ".................", ".................",
                                  ".................", ".................", ".................",
                                  ".................", ".................", ".................",
                                  ".................", ".................", ".................",
                                  ".................", ".................", ".................",
                                  ".................", "................."}),
                           "Sign beside a digit", step));
  EXPECT_EQ(step.text, "Row 1, column 2 must be greater than the 4 to its left: it cannot be 1, 2 or 3.");
  EXPECT_EQ(CellName(9, 80), "row 9, column 9");
  EXPECT_EQ(CellName(9, 9), "row 2, column 1");
}

// After each step only the lines and signs beside the cells it changed are looked at
// again: a sign left without room must still end the explanation at once.
TEST(Ladder, AStepThatBreaksASignEndsTheExplanation) {
  // Row 1, column 1 can only be 3 ("33" is not a placed digit); placing it leaves 1 and 2
  // on either side of a ">" that needs the greater on the left.
  const Grid grid = Built({"...>...", ".......", ".......", ".......", ".......", ".......", "......."},
                          {"33", "13", "23", "", "", "", "", "", "", "", "", "", "", "", "", ""});
  ASSERT_FALSE(IsBroken(grid));
  const Explanation result = Explain(grid);
  ASSERT_EQ(result.steps.size(), 1u);
  EXPECT_EQ(result.steps[0].technique, "Naked single");
  EXPECT_TRUE(result.broken);
  EXPECT_FALSE(result.solved);
  EXPECT_EQ(result.grade.level, kNeedsSearch);
}

TEST(Ladder, SubsetsNakedAndHiddenOfEverySize) {
  const std::vector<std::string> empty4(7, ".......");
  const std::vector<std::string> empty5(9, ".........");
  Step step;
  std::vector<std::string> cells(16, "");
  cells[0] = cells[1] = "12";
  ASSERT_TRUE(TryTechnique(Built(empty4, cells), "Naked pair", step));
  EXPECT_TRUE(Removes(step, 2, "12"));
  EXPECT_TRUE(Removes(step, 3, "12"));
  EXPECT_EQ(step.text,
            "In row 1, columns 1 and 2 can only hold 1 and 2 between them: no other cell of row 1 can hold either.");

  // 4 and 5 fit only in the first two cells of row 1.
  cells.assign(25, "");
  cells[2] = cells[3] = cells[4] = "123";
  const Grid hidden = Built(empty5, cells);
  EXPECT_FALSE(TryTechnique(hidden, "Naked pair", step));
  ASSERT_TRUE(TryTechnique(hidden, "Hidden pair", step));
  EXPECT_TRUE(Removes(step, 0, "123"));
  EXPECT_EQ(step.text, "In row 1, 4 and 5 fit only in columns 1 and 2: those cells hold nothing else.");
  ASSERT_TRUE(TryTechnique(hidden, "Naked triple", step));
  EXPECT_TRUE(Removes(step, 0, "123"));

  // Columns: three cells of column 1 share 1, 2 and 3.
  cells.assign(25, "");
  cells[0] = "12";
  cells[5] = "13";
  cells[10] = "23";
  ASSERT_TRUE(TryTechnique(Built(empty5, cells), "Naked triple", step));
  EXPECT_TRUE(Removes(step, 15, "123"));
  EXPECT_NE(step.text.find("In column 1, rows 1, 2 and 3"), std::string::npos) << step.text;
}

TEST(Ladder, FishTakeADigitFromCrossingLines) {
  Grid grid;
  grid.n = 4;
  grid.cand.fill(masks::Full(4));
  // In rows 1 and 3, 1 fits only in columns 1 and 3.
  for (int c : {1, 3, 9, 11}) grid.cand[static_cast<std::size_t>(c)] = MaskOf("234");
  Step step;
  ASSERT_TRUE(TryTechnique(grid, "X-wing", step));
  EXPECT_EQ(step.level, kFish);
  for (int c : {4, 6, 12, 14}) EXPECT_TRUE(Removes(step, c, "1")) << c;
  EXPECT_EQ(step.removed.size(), 4u);
  EXPECT_EQ(step.text,
            "In rows 1 and 3, 1 fits only in columns 1 and 3: each of those columns gets its 1 there, so 1 leaves "
            "the rest of columns 1 and 3.");
  EXPECT_FALSE(TryTechnique(grid, "Swordfish", step));
}


// Whether some subset (naked or hidden, k cells or digits of a line) or fish (k lines of
// one digit) strikes a digit on g, by trying every choice of k: the rungs' own definitions,
// with none of the shortcuts the ladder takes to rule lines out.
bool SomeSubsetStrikes(const Grid& g, int k, bool hidden) {
  const int n = g.n;
  for (int l = 0; l < 2 * n; ++l) {
    std::vector<int> cells;
    std::vector<int> open;
    DigitMask placed = 0;
    for (int i = 0; i < n; ++i) {
      const int c = l < n ? l * n + i : i * n + (l - n);
      cells.push_back(c);
      if (g.placed[static_cast<std::size_t>(c)]) {
        placed |= g.cand[static_cast<std::size_t>(c)];
      } else {
        open.push_back(c);
      }
    }
    if (static_cast<int>(open.size()) <= k) continue;
    // Items: open cells (naked) or unplaced digits (hidden), each with what it covers.
    std::vector<unsigned> items;
    std::vector<unsigned> keys;
    if (hidden) {
      for (int d = 1; d <= n; ++d) {
        if ((placed & masks::Bit(d)) != 0) continue;
        unsigned at = 0;
        for (int i = 0; i < n; ++i) at |= (g.cand[static_cast<std::size_t>(cells[static_cast<std::size_t>(i)])] & masks::Bit(d)) != 0 ? 1u << i : 0u;
        items.push_back(at);
        keys.push_back(masks::Bit(d));
      }
    } else {
      for (const int c : open) items.push_back(g.cand[static_cast<std::size_t>(c)]);
    }
    for (unsigned set = 0; set < 1u << items.size(); ++set) {
      if (std::popcount(set) != k) continue;
      unsigned cover = 0;
      DigitMask chosen = 0;
      for (std::size_t i = 0; i < items.size(); ++i) {
        if ((set >> i & 1u) == 0) continue;
        cover |= items[i];
        if (hidden) chosen |= static_cast<DigitMask>(keys[i]);
      }
      if (std::popcount(cover) != k) continue;
      for (std::size_t i = 0; i < (hidden ? cells.size() : open.size()); ++i) {
        const DigitMask m = g.cand[static_cast<std::size_t>(hidden ? cells[i] : open[i])];
        if (hidden ? (cover >> i & 1u) != 0 && (m & ~chosen) != 0 : (set >> i & 1u) == 0 && (m & cover) != 0) return true;
      }
    }
  }
  return false;
}

bool SomeFishStrikes(const Grid& g, int k) {
  const int n = g.n;
  for (int d = 1; d <= n; ++d) {
    for (const bool byRows : {true, false}) {
      auto cell = [&](int b, int i) { return static_cast<std::size_t>(byRows ? b * n + i : i * n + b); };
      std::vector<unsigned> spots(static_cast<std::size_t>(n));
      std::vector<bool> base(static_cast<std::size_t>(n));
      for (int b = 0; b < n; ++b) {
        bool placedHere = false;
        for (int i = 0; i < n; ++i) {
          if ((g.cand[cell(b, i)] & masks::Bit(d)) != 0) spots[static_cast<std::size_t>(b)] |= 1u << i;
          placedHere = placedHere || (g.placed[cell(b, i)] && g.cand[cell(b, i)] == masks::Bit(d));
        }
        const int places = std::popcount(spots[static_cast<std::size_t>(b)]);
        base[static_cast<std::size_t>(b)] = !placedHere && places >= 2 && places <= k;
      }
      for (unsigned set = 0; set < 1u << n; ++set) {
        if (std::popcount(set) != k) continue;
        unsigned cover = 0;
        bool ok = true;
        for (int b = 0; b < n; ++b) {
          if ((set >> b & 1u) == 0) continue;
          ok = ok && base[static_cast<std::size_t>(b)];
          cover |= spots[static_cast<std::size_t>(b)];
        }
        if (!ok || std::popcount(cover) != k) continue;
        for (int b = 0; b < n; ++b) {
          for (int i = 0; i < n; ++i) {
            if ((set >> b & 1u) == 0 && (cover >> i & 1u) != 0 && !g.placed[cell(b, i)] &&
                (g.cand[cell(b, i)] & masks::Bit(d)) != 0) {
              return true;
            }
          }
        }
      }
    }
  }
  return false;
}

// Random grids of candidates around a square, some cells placed, most grids with the
// placed digits cleared from their lines: every subset and fish rung finds a step exactly
// where trying every choice finds one. The rungs pass lines over when they can tell at
// once that nothing there strikes; this holds them to what they would find by looking.
TEST(Ladder, SubsetsAndFishAreFoundWhereverTheyStrike) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> unit(0, 1);
  std::array<int, 8> found{};
  for (int round = 0; round < 1500; ++round) {
    const int n = 4 + round % 6;
    const std::vector<int> square = test::RandomSquare(n, random);
    const double extra = 0.15 + 0.5 * unit(random);
    const double placedShare = 0.3 * unit(random);
    const bool settled = unit(random) < 0.85;
    Grid g;
    g.n = n;
    for (int c = 0; c < n * n; ++c) {
      const auto ci = static_cast<std::size_t>(c);
      g.cand[ci] = masks::Bit(square[ci]);
      g.placed[ci] = unit(random) < placedShare;
      if (g.placed[ci]) continue;
      for (int d = 1; d <= n; ++d) g.cand[ci] |= unit(random) < extra ? masks::Bit(d) : DigitMask{0};
    }
    for (int c = 0; c < n * n && settled; ++c) {
      if (!g.placed[static_cast<std::size_t>(c)]) continue;
      for (int i = 0; i < n; ++i) {
        for (const int peer : {c / n * n + i, i * n + c % n}) {
          if (peer != c && !g.placed[static_cast<std::size_t>(peer)]) {
            g.cand[static_cast<std::size_t>(peer)] &= static_cast<DigitMask>(~g.cand[static_cast<std::size_t>(c)]);
          }
        }
      }
    }
    const std::pair<const char*, bool> rungs[] = {
        {"Naked pair", SomeSubsetStrikes(g, 2, false)},  {"Hidden pair", SomeSubsetStrikes(g, 2, true)},
        {"Naked triple", SomeSubsetStrikes(g, 3, false)}, {"Hidden triple", SomeSubsetStrikes(g, 3, true)},
        {"Naked quad", SomeSubsetStrikes(g, 4, false)},  {"Hidden quad", SomeSubsetStrikes(g, 4, true)},
        {"X-wing", SomeFishStrikes(g, 2)},               {"Swordfish", SomeFishStrikes(g, 3)}};
    for (std::size_t r = 0; r < std::size(rungs); ++r) {
      Step step;
      ASSERT_EQ(TryTechnique(g, rungs[r].first, step), rungs[r].second)
          << rungs[r].first << ", round " << round << ", size " << n << (settled ? "" : ", not settled");
      found[r] += rungs[r].second ? 1 : 0;
    }
  }
  // Each rung had steps to find, and grids where it had none.
  for (const int count : found) {
    EXPECT_GT(count, 20);
    EXPECT_LT(count, 1480);
  }
}

// A unique puzzle of random clues and signs read off a random square, or nothing.
bool RandomUniquePuzzle(std::mt19937& random, int n, PuzzleModel& m, std::vector<int>& square) {
  SetSize(m, n);
  square = test::RandomSquare(n, random);
  std::uniform_real_distribution<double> unit(0, 1);
  const double signs = 0.3 + 0.6 * unit(random);
  const double clues = 0.25 * unit(random);
  auto value = [&](int k) { return square[static_cast<std::size_t>((m.RowOf[k] - 1) / 2 * n + (m.ColOf[k] - 1) / 2)]; };
  for (int k = 0; k <= m.LastPosition; ++k) {
    const PositionKind kind = KindOf(m, k);
    if (kind == PositionKind::Cell && unit(random) < clues) m.PosText[k] = std::to_string(value(k));
    if ((kind == PositionKind::HorizontalSign || kind == PositionKind::VerticalSign) && unit(random) < signs) {
      const bool horizontal = kind == PositionKind::HorizontalSign;
      const bool rising = value(horizontal ? m.LeftOf[k] : m.UpOf[k]) < value(horizontal ? m.RightOf[k] : m.DownOf[k]);
      m.PosText[k] = horizontal ? (rising ? "<" : ">") : (rising ? "^" : "v");
    }
  }
  return CountSolutions(m, 2).count == 1;
}

TEST(Ladder, EveryStepKeepsTheTrueSolution) {
  std::mt19937 random(99);
  int puzzles = 0;
  int finished = 0;
  std::array<int, kTopRung + 1> rungsSeen{};
  while (puzzles < 1200) {
    const int n = 4 + static_cast<int>(random() % 4) + (puzzles % 10 == 0 ? 2 : 0);
    PuzzleModel m;
    std::vector<int> square;
    if (!RandomUniquePuzzle(random, n, m, square)) continue;
    ++puzzles;
    const Explanation result = Explain(GridFromModel(m));
    ASSERT_FALSE(result.broken) << "puzzle " << puzzles;
    for (const Step& step : result.steps) {
      ++rungsSeen[static_cast<std::size_t>(step.level)];
      for (const auto& [cell, digit] : step.placed) {
        ASSERT_EQ(digit, square[static_cast<std::size_t>(cell)]) << step.technique << ": " << step.text;
      }
      for (const auto& [cell, digits] : step.removed) {
        ASSERT_EQ(digits & masks::Bit(square[static_cast<std::size_t>(cell)]), 0)
            << step.technique << ": " << step.text;
      }
    }
    finished += result.solved ? 1 : 0;
  }
  EXPECT_GE(finished, puzzles * 99 / 100);
  for (int rung : {kSingles, kSignDigit, kSignBounds, kSubsets}) EXPECT_GT(rungsSeen[static_cast<std::size_t>(rung)], 0);
}

// Explain remembers where assumptions led from one step to the next; each step must be
// the one the ladder finds on that grid afresh, sentence and all.
void ExpectSameStepsAfresh(const Grid& start, const std::string& what) {
  const Explanation result = Explain(start);
  Grid grid = start;
  for (std::size_t i = 0; i < result.steps.size(); ++i) {
    const Step& remembered = result.steps[i];
    Step afresh;
    ASSERT_TRUE(NextStep(grid, afresh)) << what << " step " << i;
    ASSERT_EQ(afresh.technique, remembered.technique) << what << " step " << i;
    ASSERT_EQ(afresh.text, remembered.text) << what << " step " << i;
    ASSERT_EQ(afresh.placed, remembered.placed) << what << " step " << i;
    ASSERT_EQ(afresh.removed, remembered.removed) << what << " step " << i;
    Apply(grid, afresh);
  }
}

TEST(Ladder, RememberingChangesNoStep) {
  // A hard 9x9 that needs contradictions followed through rungs 1 to 5.
  const Grid hard = Built({".............<...", "........^.v......", "4....>.>.<...<...", "............v....",
                           ".....<.......<.<.", ".................", "9..........<.....", "..^...^...v......",
                           ".>..3......>...<.", "..^.........v.v..", ".>.>..8..........", "....v.^..........",
                           "...........>.....", "v.......^.......v", ".>.>.....<.......", "............v...^",
                           ".......>5..<.>..."});
  const Explanation result = Explain(hard);
  EXPECT_TRUE(result.solved);
  EXPECT_EQ(result.grade.level, kContradiction);
  ExpectSameStepsAfresh(hard, "hard 9x9");

  // Random puzzles with few clues: forcing chains and contradictions on smaller grids.
  std::mt19937 random(7);
  std::array<int, kTopRung + 1> rungsSeen{};
  for (int puzzles = 0; puzzles < 60;) {
    PuzzleModel m;
    std::vector<int> square;
    if (!RandomUniquePuzzle(random, 5 + puzzles % 3, m, square)) continue;
    ++puzzles;
    const Grid start = GridFromModel(m);
    ++rungsSeen[static_cast<std::size_t>(Explain(start).grade.level)];
    ExpectSameStepsAfresh(start, "puzzle " + std::to_string(puzzles));
  }
  EXPECT_GT(rungsSeen[kForcing] + rungsSeen[kContradiction], 0);
}

TEST(Ladder, FinishesWhatTheSixTechniquesFinishAndGrades) {
  const std::string collection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  PuzzleModel model;
  const int count = CountPuzzles(collection);
  ASSERT_GT(count, 50);
  for (int i = 1; i <= count; ++i) {
    ASSERT_FALSE(LoadPuzzle(model, collection, i).notFound);
    const Explanation result = ExplainModel(model);
    EXPECT_TRUE(result.solved) << "puzzle " << i;
    EXPECT_GE(result.grade.level, kSingles);
    EXPECT_LE(result.grade.level, kSubsets);  // the six techniques reach no further
    EXPECT_EQ(result.grade.name, RungName(result.grade.level));
  }

  // Created puzzles of every size and level: all finished by the ladder too.
  PuzzleModel made;
  SeedRandom(made, 5);
  Generator generator;
  generator.ClueSpec = kCluesByLevel;
  for (int i = 0; i < 24; ++i) {
    generator.RequestedLevel = 1 + i % 4;
    do {
      SetSize(made, 3 + i % 5);
    } while (CreatePuzzle(made, QuietRun(), generator) != 99);
    EXPECT_TRUE(ExplainModel(made).solved) << i;
  }

  // A grid with two solutions stalls; the search finishes it and says so in the grade.
  PuzzleModel open;
  SetSize(open, 4);
  const Explanation stalled = ExplainModel(open);
  EXPECT_TRUE(stalled.needsSearch);
  EXPECT_EQ(stalled.grade.level, kNeedsSearch);
  EXPECT_EQ(stalled.grade.name, "Needs search");
  for (int c = 0; c < 16; ++c) EXPECT_TRUE(masks::IsSingle(stalled.final.cand[static_cast<std::size_t>(c)]));
}

// The search's solution of a unique puzzle, cell by cell from 0.
std::vector<int> SolutionOf(const PuzzleModel& m) {
  const SolutionCount found = CountSolutions(m, 2);
  EXPECT_EQ(found.count, 1);
  std::vector<int> square;
  for (int c = 0; c < m.GridSize * m.GridSize; ++c) {
    square.push_back(found.first[static_cast<std::size_t>(CellPosition(m, c / m.GridSize + 1, c % m.GridSize + 1))][0] - '0');
  }
  return square;
}

void ExpectStepsKeep(const Explanation& result, const std::vector<int>& square, const std::string& what) {
  for (const Step& step : result.steps) {
    for (const auto& [cell, digit] : step.placed) {
      ASSERT_EQ(digit, square[static_cast<std::size_t>(cell)]) << what << ": " << step.text;
    }
    for (const auto& [cell, digits] : step.removed) {
      ASSERT_EQ(digits & masks::Bit(square[static_cast<std::size_t>(cell)]), 0) << what << ": " << step.text;
    }
  }
}

TEST(Ladder, RungsClimbInOrderAndEndWithTheSearch) {
  const std::vector<std::string> names = {"Solved", "Gentle", "Easy",   "Moderate", "Tough",
                                          "Hard",   "Fiendish", "Expert", "Master",  "Needs search"};
  ASSERT_EQ(static_cast<int>(names.size()), kTopRung + 1);
  for (int rung = 0; rung <= kTopRung; ++rung) EXPECT_EQ(RungName(rung), names[static_cast<std::size_t>(rung)]);
  EXPECT_EQ(kMaster, kContradiction + 1);
  EXPECT_EQ(kNeedsSearch, kTopRung);
  for (int rung = 1; rung < kTopRung; ++rung) EXPECT_LT(RungWeight(rung), RungWeight(rung + 1)) << rung;
}

// Puzzles stripped of every clue and sign the search lets go, which rungs 1 to 7 leave
// unfinished: the nested contradictions finish them, each step true, and only once the
// rungs below have nothing to say.
TEST(Ladder, MasterFinishesWhatContradictionsLeave) {
  const std::string file = std::string(QUILLMERE_BENCH_DATA) + "master9x9.fut";
  ASSERT_GE(CountPuzzles(file), 18);
  PuzzleModel m;
  for (const int i : {17, 18}) {  // the quickest two of the set
    ASSERT_FALSE(LoadPuzzle(m, file, i).notFound);
    const std::vector<int> square = SolutionOf(m);
    ExplainOptions options;
    options.keepGrids = true;
    const Grid start = GridFromModel(m);
    const Explanation result = Explain(start, options);
    EXPECT_TRUE(result.solved) << i;
    EXPECT_EQ(result.grade.level, kMaster);
    EXPECT_EQ(result.grade.name, "Master");
    ExpectStepsKeep(result, square, "puzzle " + std::to_string(i));
    int masters = 0;
    for (std::size_t s = 0; s < result.steps.size(); ++s) {
      const Step& step = result.steps[s];
      if (step.level != kMaster) continue;
      ++masters;
      if (masters == 1) {
        const Grid& before = s == 0 ? start : result.after[s - 1];
        Step lower;
        EXPECT_FALSE(TryTechnique(before, "Deep contradiction", lower)) << lower.text;
        EXPECT_FALSE(TryTechnique(before, "Forcing chain", lower)) << lower.text;
      }
      // One digit struck from the assumed cell, told in one sentence.
      ASSERT_EQ(step.removed.size(), 1u);
      const auto [cell, digits] = step.removed[0];
      ASSERT_TRUE(masks::IsSingle(digits));
      const std::string digit = std::to_string(masks::Lowest(digits));
      EXPECT_EQ(step.cells[0], cell);
      const std::string opening = "If " + CellName(9, cell) + " were " + digit +
                                  ", then, with every rung up to contradictions followed inside that assumption, ";
      EXPECT_EQ(step.text.rfind(opening, 0), 0u) << step.text;
      EXPECT_TRUE(step.text.ends_with(": so it is not " + digit + ".")) << step.text;
      EXPECT_EQ(std::count(step.text.begin(), step.text.end(), '.'), 1) << step.text;  // "…" is not a full stop
    }
    EXPECT_GT(masters, 0) << i;
  }
}

// Within one explanation the nested rung remembers the grid's solution and where every
// assumption led; each of its steps must still be the one it finds on that grid afresh.
TEST(Ladder, MasterStepsAreTheSameAfresh) {
  const std::string file = std::string(QUILLMERE_BENCH_DATA) + "master9x9.fut";
  PuzzleModel m;
  ASSERT_FALSE(LoadPuzzle(m, file, 17).notFound);
  ExplainOptions options;
  options.keepGrids = true;
  const Grid start = GridFromModel(m);
  const Explanation result = Explain(start, options);
  ASSERT_TRUE(result.solved);
  int masters = 0;
  for (std::size_t s = 0; s < result.steps.size() && masters < 3; ++s) {
    if (result.steps[s].level != kMaster) continue;
    ++masters;
    Step afresh;
    ASSERT_TRUE(NextStep(s == 0 ? start : result.after[s - 1], afresh)) << s;
    EXPECT_EQ(afresh.text, result.steps[s].text) << s;
    EXPECT_EQ(afresh.removed, result.steps[s].removed) << s;
  }
  EXPECT_GT(masters, 0);
}

// Whether c = d breaks the grid under rungs 1 to 5, each looked for afresh on the whole
// grid: none of the memory the ladder keeps between assumptions and steps.
bool BreaksUnderRungsOneToFive(const Grid& g, int c, int d) {
  static const char* const kRungs[] = {"Naked single", "Hidden single", "Sign beside a digit", "Sign chain",
                                       "Sign bounds",  "Naked pair",    "Hidden pair",         "Naked triple",
                                       "Hidden triple", "Naked quad",   "Hidden quad",         "X-wing",
                                       "Swordfish"};
  Grid trial = g;
  trial.cand[static_cast<std::size_t>(c)] = masks::Bit(d);
  for (;;) {
    if (IsBroken(trial)) return true;
    if (IsSolved(trial)) return false;
    Step step;
    const auto found = std::find_if(std::begin(kRungs), std::end(kRungs),
                                    [&](const char* rung) { return TryTechnique(trial, rung, step); });
    if (found == std::end(kRungs)) return false;
    Apply(trial, step);
  }
}

// The deep contradiction refutes the first assumption, cells with fewest candidates
// first, that rungs 1 to 5 break; the ladder skips most of that work by what it learnt
// on the grid and on the grids before, and must still land on the same one.
TEST(Ladder, DeepContradictionRefutesTheFirstAssumptionThatBreaks) {
  // Puzzle 5 needs pairs and fish inside assumptions that held on the grids before.
  const std::string file = std::string(QUILLMERE_BENCH_DATA) + "hardest9x9.fut";
  int checked = 0;
  for (const int i : {1, 5}) {
    PuzzleModel m;
    ASSERT_FALSE(LoadPuzzle(m, file, i).notFound);
    ExplainOptions options;
    options.keepGrids = true;
    const Grid start = GridFromModel(m);
    const Explanation result = Explain(start, options);
    for (std::size_t s = 0; s < result.steps.size(); ++s) {
      const Grid& before = s == 0 ? start : result.after[s - 1];
      Step quick;
      if (result.steps[s].level != kContradiction || TryTechnique(before, "Contradiction", quick)) continue;
      ++checked;
      std::vector<int> order;
      for (int c = 0; c < before.n * before.n; ++c) {
        if (!before.placed[static_cast<std::size_t>(c)]) order.push_back(c);
      }
      std::stable_sort(order.begin(), order.end(), [&](int x, int y) {
        return masks::Count(before.cand[static_cast<std::size_t>(x)]) < masks::Count(before.cand[static_cast<std::size_t>(y)]);
      });
      std::pair<int, DigitMask> first{-1, 0};
      for (std::size_t k = 0; k < order.size() && first.first < 0; ++k) {
        masks::ForEachDigit(before.cand[static_cast<std::size_t>(order[k])], [&](int d) {
          if (first.first < 0 && BreaksUnderRungsOneToFive(before, order[k], d)) first = {order[k], masks::Bit(d)};
        });
      }
      ASSERT_EQ(result.steps[s].removed.size(), 1u) << "puzzle " << i << " step " << s;
      EXPECT_EQ(result.steps[s].removed[0], first) << "puzzle " << i << " step " << s << ": " << result.steps[s].text;
    }
  }
  EXPECT_GT(checked, 4);
}

// Random puzzles made as hard as the search allows, every size: every step of every rung
// keeps the true solution, and the ladder finishes them all.
TEST(Ladder, StrippedPuzzlesKeepTheTrueSolution) {
  std::mt19937 random(2026);
  std::array<int, kTopRung + 1> grades{};
  for (int puzzles = 0; puzzles < 60;) {
    const int n = 4 + puzzles % 3;
    PuzzleModel m;
    std::vector<int> square;
    if (!RandomUniquePuzzle(random, n, m, square)) continue;
    ++puzzles;
    std::vector<int> given;
    for (int k = 0; k <= m.LastPosition; ++k) {
      if (!m.PosText[k].empty() && KindOf(m, k) != PositionKind::Corner) given.push_back(k);
    }
    std::shuffle(given.begin(), given.end(), random);
    for (const int k : given) {
      const std::string text = m.PosText[k];
      m.PosText[k].clear();
      if (CountSolutions(m, 2).count != 1) m.PosText[k] = text;
    }
    const Explanation result = Explain(GridFromModel(m));
    EXPECT_TRUE(result.solved) << "puzzle " << puzzles;
    ExpectStepsKeep(result, square, "puzzle " + std::to_string(puzzles));
    ++grades[static_cast<std::size_t>(result.grade.level)];
  }
  EXPECT_GT(grades[kContradiction], 0);
}

}  // namespace
}  // namespace qm::reasoning
