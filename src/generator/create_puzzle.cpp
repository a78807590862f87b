#include "generator/create_puzzle.h"

#include <algorithm>
#include <climits>

#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"

namespace qm {

namespace {

constexpr int kMaxAttempts = 100;


bool IsSign(const std::string& text) {
  return text.size() == 1 && (text[0] == '<' || text[0] == '>' || text[0] == '^' || text[0] == 'v');
}

// Blanks the cells that are not clues, and those that hold candidate lists.
void BlankNonClueCells(PuzzleModel& model) {
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const int k = model.PositionOf[row][col];
      if (model.GivenValue[k] == 0 || model.PosText[k].size() > 1) model.PosText[k].clear();
    }
  }
}

bool LogicSolves(PuzzleModel& model, RunHooks& run) {
  PrepareCandidates(model);
  return SolveByLogic(model, run).status == kSolved;
}

void MakeClue(PuzzleModel& model, int k) { model.GivenValue[k] = IntegerValue(model.PosText[k]); }

// How many clues a counted rule asks for; -1 for the rules that place none by count.
int CountedClues(PuzzleModel& model, const Generator& generator, int n) {
  const int spec = generator.ClueSpec;
  if (spec == kNoClues || spec > kFixedClueBase) return -1;
  if (spec == kRandomClues) return CluesForLevel(model, n, kRandomClues);
  if (spec == kCluesByLevel) return CluesForLevel(model, n, generator.RequestedLevel);
  if (spec > 0) return spec;  // 1..98 and 100: exactly that many
  // Up to M clues, but never below the VeryHard count.
  const long long upTo = -static_cast<long long>(spec);
  const int count = RandomDraw(model, static_cast<int>(std::min<long long>(upTo, INT_MAX)));
  return std::max(count, CluesForLevel(model, n, kVeryHard));
}

// Chooses the clues by ClueSpec on the built solution; returns the recorded count.
int ChooseClues(PuzzleModel& model, Generator& generator) {
  const int n = model.GridSize;
  if (generator.ClueSpec > kFixedClueBase) {
    // The one cell of a random row that holds the digit (none when the digit is past N).
    const int row = 2 * RandomDraw(model, n) - 1;
    const std::string digit = std::to_string(generator.ClueSpec - kFixedClueBase);
    for (int col = 1; col <= model.LayoutExtent; col += 2) {
      const int k = model.PositionOf[row][col];
      if (model.PosText[k] == digit) MakeClue(model, k);
    }
    return 0;
  }
  const int wanted = CountedClues(model, generator, n);
  if (wanted < 0) return 0;
  ShuffleCellOrder(model, generator);
  // A count past the grid (a fixed-clue field of 0 asks for 100) makes every cell a clue.
  const int count = std::min(wanted, n * n);
  for (int i = 0; i < count; ++i) MakeClue(model, CellOfCode(model, generator.CellOrder[static_cast<std::size_t>(i)]));
  return count;
}

int CountSigns(const PuzzleModel& model) {
  int signs = 0;
  for (int k = 0; k <= model.LastPosition; ++k) signs += IsSign(model.PosText[k]) ? 1 : 0;
  return signs;
}

int Cancelled(PuzzleModel& model, RunHooks& run, Generator& generator) {
  model.SolverBusy = false;
  run.BlankDisplay();
  generator.GenerationResult = -1;
  return generator.GenerationResult;
}

}  // namespace

int ClueSpecOf(const ClueRule& rule) {
  switch (rule.kind) {
    case ClueRule::Kind::None:
      return kNoClues;
    case ClueRule::Kind::Fixed:
      return kFixedClueBase + rule.value;
    case ClueRule::Kind::Exactly:
      return rule.value;
    case ClueRule::Kind::Upto:
      return -rule.value;
    case ClueRule::Kind::ByLevel:
      return kCluesByLevel;
    case ClueRule::Kind::Random:
      break;
  }
  return kRandomClues;
}

int CluesForLevel(PuzzleModel& model, int n, int level) {
  // The 4x4 and 5x5 counts sit one and two below the straight line.
  const int correction = n == 4 ? 1 : n == 5 ? 2 : 0;
  if (n == 3) return 0;
  if (n < 6 && level == kVeryHard) return 0;
  if (level >= 1) return (n - 3) * level - correction;
  if (level == kRandomClues) {
    const int span = 3 * (n - 3) + 1;
    return (n - 3) + RandomDraw(model, span) - 1 - correction;
  }
  return 0;
}

int LevelForClues(PuzzleModel& model, int n, int clues) {
  if (clues == 0) return n == 3 ? 2 : kVeryHard;
  for (int level = kVeryEasy; level >= kVeryHard; --level) {
    if (clues >= CluesForLevel(model, n, level)) return level;
  }
  return kVeryHard;  // a fixed count below the VeryHard minimum
}

void SetUpCellOrder(Generator& generator, int n) {
  if (generator.CellOrderSize == n) return;
  generator.CellOrder.clear();
  for (int column = 1; column <= n; ++column) {
    for (int row = 1; row <= n; ++row) generator.CellOrder.push_back(10 * column + row);
  }
  generator.CellOrderSize = n;
}

int CellOfCode(const PuzzleModel& model, int code) {
  return model.PositionOf[2 * (code % 10) - 1][2 * (code / 10) - 1];
}

void ShuffleCellOrder(PuzzleModel& model, Generator& generator) {
  std::vector<int>& order = generator.CellOrder;
  for (int i = static_cast<int>(order.size()); i >= 2; --i) {
    const int j = RandomDraw(model, i - 1);
    std::swap(order[static_cast<std::size_t>(i - 1)], order[static_cast<std::size_t>(j - 1)]);
  }
}

bool ReduceSigns(PuzzleModel& model, RunHooks& run, const SignQueue& queue,
                 PerPosition<std::string> snapshot) {
  for (const std::string& entry : queue) {
    run.Yield();
    if (run.Cancelled()) return false;
    BlankNonClueCells(model);
    const int slot = QueuedPosition(entry);
    std::string sign = std::move(model.PosText[slot]);
    model.PosText[slot].clear();
    if (LogicSolves(model, run)) {
      snapshot = model.PosText;  // the solved cells come along
    } else {
      model.PosText[slot] = std::move(sign);
    }
  }
  model.PosText = std::move(snapshot);
  return true;
}

int CreatePuzzle(PuzzleModel& model, RunHooks& run, Generator& generator) {
  run.ClearCancel();
  SetUpCellOrder(generator, model.GridSize);
  PerPosition<std::string> solved;
  for (int attempt = 1;; ++attempt) {
    if (attempt > kMaxAttempts) {
      generator.GenerationResult = -1;
      return generator.GenerationResult;
    }
    if (run.Cancelled()) return Cancelled(model, run, generator);
    run.Yield();
    BuildSolution(model, generator.Queue);
    generator.ClueCount = ChooseClues(model, generator);
    BlankNonClueCells(model);
    const bool solves = LogicSolves(model, run);
    run.Yield();
    if (solves) {
      // Reduction starts from the solved grid, so the solution store is complete even
      // when no sign can go.
      solved = model.PosText;
      BlankNonClueCells(model);
      run.GridChanged();
      break;
    }
  }

  if (!ReduceSigns(model, run, generator.Queue, std::move(solved)) || run.Cancelled()) {
    return Cancelled(model, run, generator);
  }
  generator.SignCount = CountSigns(model);
  generator.GenerationResult = kSolved;
  generator.LevelCode = LevelForClues(model, model.GridSize, generator.ClueCount);
  model.SolutionText = model.PosText;
  BlankNonClueCells(model);
  model.ConstraintCount = generator.SignCount;
  model.ClueCount = generator.ClueCount;
  run.GridChanged();
  return generator.GenerationResult;
}

}  // namespace qm
