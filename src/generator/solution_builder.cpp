#include "generator/solution_builder.h"

#include <algorithm>

#include "core/text_rules.h"

namespace qm {

namespace {

// Exchanges the cells of two layout lines (rows when `rows`, else columns).
void ExchangeLines(PuzzleModel& model, int first, int second, bool rows) {
  if (first == second) return;
  for (int other = 1; other <= model.LayoutExtent; other += 2) {
    const int a = rows ? model.PositionOf[first][other] : model.PositionOf[other][first];
    const int b = rows ? model.PositionOf[second][other] : model.PositionOf[other][second];
    std::swap(model.PosText[a], model.PosText[b]);
  }
}

int CellDigit(const PuzzleModel& model, int k) { return IntegerValue(model.PosText[k]); }

void QueueSign(PuzzleModel& model, SignQueue& queue, int slot, char sign) {
  model.PosText[slot] = std::string(1, sign);
  // The key is not clamped: r < 1 keeps it below 98.
  const int key = static_cast<int>(RandomUniform(model) * 98);
  queue.push_back(ZeroPadded(key, 2) + ZeroPadded(slot, 3) + sign);
}

}  // namespace

int RandomDraw(PuzzleModel& model, int m) {
  const int draw = static_cast<int>(RandomUniform(model) * m) + 1;
  return std::min(draw, m);
}

void SwapRandomRow(PuzzleModel& model) {
  ExchangeLines(model, 1, 2 * RandomDraw(model, model.GridSize) - 1, true);
}

void SwapRandomColumn(PuzzleModel& model) {
  ExchangeLines(model, 1, 2 * RandomDraw(model, model.GridSize) - 1, false);
}

int QueuedPosition(std::string_view entry) { return IntegerValue(entry.substr(2, 3)); }

void BuildSolution(PuzzleModel& model, SignQueue& queue) {
  const int n = model.GridSize;
  const int l = model.LayoutExtent;
  for (int k = 0; k <= model.LastPosition; ++k) {
    model.PosText[k].clear();
    model.GivenValue[k] = 0;
  }

  const std::string_view seed = SeedSquares[static_cast<std::size_t>(n - kMinGridSize)];
  std::size_t next = 0;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) model.PosText[model.PositionOf[row][col]] = seed.substr(next++, 1);
  }

  for (int pass = 1; pass <= 2 * n; ++pass) {
    SwapRandomRow(model);
    SwapRandomColumn(model);
  }

  queue.clear();
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const int k = model.PositionOf[row][col];
      const int a = CellDigit(model, k);
      if (const int slot = model.RightOf[k]; slot != -1) {
        QueueSign(model, queue, slot, CellDigit(model, model.RightOf[slot]) > a ? '<' : '>');
      }
      if (const int slot = model.UpOf[k]; slot != -1) {
        QueueSign(model, queue, slot, CellDigit(model, model.UpOf[slot]) <= a ? '^' : 'v');
      }
    }
  }
  // Sorting the whole queue once gives the order that inserting each entry in place gives.
  std::sort(queue.begin(), queue.end());
}

}  // namespace qm
