// The one current puzzle: an N x N inequality puzzle kept as a (2N-1) x (2N-1) layout in
// which cells and the sign slots between them share one position index k.
//
// Layout rows and columns run 1..L (L = 2N-1); k = (row-1)*L + (col-1). Odd row and odd
// column is a cell, odd row and even column a horizontal sign slot, even row and odd
// column a vertical sign slot, even/even a corner that stays empty.
//
// The model is plain data: parallel per-position arrays passed by reference to free
// functions. Texts are kept in the files' single-byte code page (Windows-1252).
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qm {

inline constexpr int kPositionCount = 291;  // 17 * 17 = 289 for N = 9, plus two spare
inline constexpr int kLayoutTableSize = 18;  // row and column 0 are never used
inline constexpr int kMinGridSize = 3;
inline constexpr int kMaxGridSize = 9;
inline constexpr int kStartGridSize = 4;

// The yes/no values shared by confirmations and switches.
inline constexpr int kYes = 1;
inline constexpr int kNo = 0;

enum class PositionKind { Corner = 0, Cell = 1, HorizontalSign = 2, VerticalSign = 3 };

template <class T>
using PerPosition = std::array<T, kPositionCount>;

struct PuzzleModel {
  PuzzleModel();

  // Layout, rebuilt by SetSize for every new N.
  int GridSize = kStartGridSize;
  int LayoutExtent = 2 * kStartGridSize - 1;
  int LastPosition = LayoutExtent * LayoutExtent - 1;
  std::string AllDigits;  // "1234" for N = 4: the full candidate set of an empty cell
  std::array<std::array<int, kLayoutTableSize>, kLayoutTableSize> PositionOf{};
  PerPosition<int> RowOf{};
  PerPosition<int> ColOf{};
  PerPosition<int> LeftOf{};   // -1 at the border
  PerPosition<int> RightOf{};
  PerPosition<int> UpOf{};
  PerPosition<int> DownOf{};

  // What each position shows: "" (empty), a digit, a candidate list in the order the
  // solver produced it, or a sign character. The window draws exactly this.
  PerPosition<std::string> PosText;
  PerPosition<int> GivenValue{};  // clue digit of a given cell, else 0
  PerPosition<std::string> SolutionText;  // stored solution character, "" when none
  // For a cell: the positions ("000" each, concatenated) of the neighbours that must
  // hold a smaller digit. Built from the signs by the solver; emptied on every load.
  PerPosition<std::string> SmallerList;

  // Puzzle-level values.
  int ConstraintCount = 10;  // number of signs ("No of Constraints")
  int ClueCount = 0;         // number of clues; -1 while a load counts them
  std::string Comment;       // the puzzle's one-line description
  int RecordNumber = 0;      // the number after "#" in the puzzle's record
  std::int16_t Modified = 0;

  // Collection state.
  std::string AppDir;       // directory of the program, ending in "/"
  std::string CurrentFile;  // path of the current collection file
  int CurrentPuzzle = 0;    // 1-based ordinal of the loaded puzzle
  int PuzzleCount = 0;      // puzzles counted in CurrentFile

  // Solutions to append with the puzzle (one string of L*L layout characters each).
  std::vector<std::string> SolutionList;
  // Undo history, newest first: "000"-style position followed by the previous text.
  std::vector<std::string> UndoList;
  bool SolverBusy = false;

  // Solver state, shared by the techniques and the driver.
  int ChangeCount = 0;         // candidate strings replaced in the current sweep
  int PacingInterval = 4000;   // milliseconds between paced steps, 10..20000
  std::string SavedCandidates;  // snapshot taken before an auto-solve
  std::string ViewSnapshot;     // the texts put back when the shown solution is hidden
  bool SolutionShown = false;

  // Settings kept between runs.
  std::string SchemeFile = "default.col";  // colour scheme in use
  int CellColouring = kNo;                 // cells drawn in a colour of their own

  // This puzzle's own random generator (creation, random navigation, random sorting),
  // seeded from the clock; SeedRandom makes a run reproducible.
  std::mt19937_64 Random;
};

// Sets N (3..9), recomputes L, LastPosition, AllDigits and the geometry tables, and
// clears all 291 positions. Throws std::out_of_range for any other N.
void SetSize(PuzzleModel& model, int n);

// Empties PosText and SmallerList and zeroes GivenValue of positions 0..LastPosition.
void ClearPositions(PuzzleModel& model);

PositionKind KindOf(const PuzzleModel& model, int k);
inline bool IsCell(const PuzzleModel& model, int k) { return KindOf(model, k) == PositionKind::Cell; }
inline bool IsSignSlot(const PuzzleModel& model, int k) {
  const PositionKind kind = KindOf(model, k);
  return kind == PositionKind::HorizontalSign || kind == PositionKind::VerticalSign;
}

void SeedRandom(PuzzleModel& model, std::uint64_t seed);
// A uniform random number in [0, 1) from the model's generator.
double RandomUniform(PuzzleModel& model);

// The model's AppDir, or the program's directory when the model was made without one:
// where the choosers start and the shipped files are looked for.
std::string ApplicationDirectoryOf(const PuzzleModel& model);

// Position of puzzle cell (i, j), 1-based cell coordinates.
inline int CellPosition(const PuzzleModel& model, int i, int j) {
  return model.PositionOf[2 * i - 1][2 * j - 1];
}

}  // namespace qm
