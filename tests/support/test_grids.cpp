#include "support/test_grids.h"

namespace qm::test {

PuzzleModel Grid(const std::vector<std::string>& rows) {
  PuzzleModel m;
  SetSize(m, static_cast<int>(rows.size() + 1) / 2);
  for (int row = 1; row <= m.LayoutExtent; ++row) {
    for (int col = 1; col <= m.LayoutExtent; ++col) {
      const char c = rows[static_cast<std::size_t>(row - 1)][static_cast<std::size_t>(col - 1)];
      if (c != '.') m.PosText[m.PositionOf[row][col]] = std::string(1, c);
    }
  }
  return m;
}

void SetCells(PuzzleModel& model, const std::vector<std::string>& texts) {
  std::size_t i = 0;
  for (int row = 1; row <= model.LayoutExtent; row += 2) {
    for (int col = 1; col <= model.LayoutExtent && i < texts.size(); col += 2, ++i) {
      model.PosText[model.PositionOf[row][col]] = texts[i] == "." ? "" : texts[i];
    }
  }
}

}  // namespace qm::test
