// The shown grid read as digit sets and sign relations, the way the exact search and the
// technique ladder both take it: cells row-major from 0.
#pragma once

#include <string>

#include "core/puzzle_model.h"
#include "solver/digit_masks.h"

namespace qm {

// The digits a cell's text allows: its digits 1..n (none when it only holds digits
// outside 1..n), or every digit when the text has no digit at all.
inline masks::DigitMask CellMask(const std::string& text, int n) {
  masks::DigitMask m = 0;
  bool anyDigit = false;
  for (char c : text) {
    if (c < '0' || c > '9') continue;
    anyDigit = true;
    if (c >= '1' && c - '0' <= n) m |= masks::Bit(c - '0');
  }
  return anyDigit ? m : masks::Full(n);
}

// The cell (row-major from 0) at layout position k.
inline int CellIndex(const PuzzleModel& model, int k) {
  return (model.RowOf[k] - 1) / 2 * model.GridSize + (model.ColOf[k] - 1) / 2;
}

// Calls f(greater, smaller) for every sign in the grid's sign slots.
template <class F>
void ForEachSign(const PuzzleModel& model, F&& f) {
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& t = model.PosText[k];
    const PositionKind kind = KindOf(model, k);
    if (t.size() != 1 || (kind != PositionKind::HorizontalSign && kind != PositionKind::VerticalSign)) continue;
    const bool horizontal = kind == PositionKind::HorizontalSign;
    const int before = CellIndex(model, horizontal ? model.LeftOf[k] : model.UpOf[k]);
    const int after = CellIndex(model, horizontal ? model.RightOf[k] : model.DownOf[k]);
    if (t == "<" || t == "^") f(after, before);
    if (t == ">" || t == "v") f(before, after);
  }
}

}  // namespace qm
