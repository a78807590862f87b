#include "core/puzzle_model.h"

#include <chrono>
#include <stdexcept>

#include "core/text_file.h"

namespace qm {

PuzzleModel::PuzzleModel()
    : Random(static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
             reinterpret_cast<std::uintptr_t>(this)) {
  SetSize(*this, kStartGridSize);
}

void SeedRandom(PuzzleModel& model, std::uint64_t seed) { model.Random.seed(seed); }

double RandomUniform(PuzzleModel& model) {
  // 53 random bits: the same sequence from the same seed on every platform.
  return static_cast<double>(model.Random() >> 11) * 0x1.0p-53;
}

void SetSize(PuzzleModel& model, int n) {
  if (n < kMinGridSize || n > kMaxGridSize) {
    throw std::out_of_range("grid size " + std::to_string(n) + " is outside 3..9");
  }
  const int l = 2 * n - 1;
  model.GridSize = n;
  model.LayoutExtent = l;
  model.LastPosition = l * l - 1;
  model.AllDigits.clear();
  for (int d = 1; d <= n; ++d) model.AllDigits += static_cast<char>('0' + d);

  int k = -1;
  for (int row = 1; row <= l; ++row) {
    for (int col = 1; col <= l; ++col) {
      ++k;
      model.PositionOf[row][col] = k;
      model.RowOf[k] = row;
      model.ColOf[k] = col;
    }
  }
  for (k = 0; k <= model.LastPosition; ++k) {
    model.LeftOf[k] = model.RightOf[k] = model.UpOf[k] = model.DownOf[k] = -1;
  }
  for (int row = 1; row <= l; ++row) {
    for (int col = 1; col <= l; ++col) {
      k = model.PositionOf[row][col];
      if (col > 1) model.LeftOf[k] = model.PositionOf[row][col - 1];
      if (col < l) model.RightOf[k] = model.PositionOf[row][col + 1];
      if (row > 1) model.UpOf[k] = model.PositionOf[row - 1][col];
      if (row < l) model.DownOf[k] = model.PositionOf[row + 1][col];
    }
  }

  for (k = 0; k < kPositionCount; ++k) {
    model.PosText[k].clear();
    model.SmallerList[k].clear();
    model.GivenValue[k] = 0;
  }
}

void ClearPositions(PuzzleModel& model) {
  for (int k = 0; k <= model.LastPosition; ++k) {
    model.PosText[k].clear();
    model.SmallerList[k].clear();
    model.GivenValue[k] = 0;
  }
}

PositionKind KindOf(const PuzzleModel& model, int k) {
  const bool oddRow = model.RowOf[k] % 2 == 1;
  const bool oddCol = model.ColOf[k] % 2 == 1;
  if (oddRow && oddCol) return PositionKind::Cell;
  if (oddRow) return PositionKind::HorizontalSign;
  if (oddCol) return PositionKind::VerticalSign;
  return PositionKind::Corner;
}

std::string ApplicationDirectoryOf(const PuzzleModel& model) {
  return model.AppDir.empty() ? ApplicationDirectory() : model.AppDir;
}

}  // namespace qm
