#include "core/rule_checks.h"

#include <array>

#include "core/text_rules.h"

namespace qm {

namespace {

bool Holds(const PuzzleModel& model, int k, char sign) {
  return k >= 0 && model.PosText[k].size() == 1 && model.PosText[k][0] == sign;
}

std::string CellName(int k) { return "Cell " + ZeroPadded(k, 3); }

// Repeated digits among the single-digit cells of one row (or column, when `byColumn`).
// `line` is the layout index of the row or column.
std::string RepeatedDigit(const PuzzleModel& model, int line, bool byColumn) {
  std::array<int, 10> counts{};
  for (int other = 1; other <= model.LayoutExtent; other += 2) {
    const int k = byColumn ? model.PositionOf[other][line] : model.PositionOf[line][other];
    const std::string& t = model.PosText[k];
    if (t.size() == 1 && t[0] >= '0' && t[0] <= '9') ++counts[static_cast<std::size_t>(t[0] - '0')];
  }
  for (int d = 1; d <= model.GridSize; ++d) {
    const int count = counts[static_cast<std::size_t>(d)];
    if (count > 1) {
      return std::string(byColumn ? "Col  " : "Row  ") + ZeroPadded(line, 3) + " has digit" +
             std::to_string(d) + Str(count) + " times";
    }
  }
  return {};
}

}  // namespace

CheckResult CheckExtremes(const PuzzleModel& model) {
  const std::string d = std::to_string(model.GridSize);
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& t = model.PosText[k];
    std::string message;
    if (t == "1") {
      if (Holds(model, model.LeftOf[k], '<')) message = "<1 error";
      else if (Holds(model, model.UpOf[k], '^')) message = "^1 error";
      else if (Holds(model, model.RightOf[k], '>')) message = "1> error";
      else if (Holds(model, model.DownOf[k], 'v')) message = "1v error";
    } else if (t == d) {
      if (Holds(model, model.LeftOf[k], '>')) message = ">" + d + " error";
      else if (Holds(model, model.UpOf[k], 'v')) message = "v" + d + " error";
      else if (Holds(model, model.RightOf[k], '<')) message = d + "< error";
      else if (Holds(model, model.DownOf[k], '^')) message = d + "^ error";
    }
    if (!message.empty()) return {message, k};
  }
  return {"", kSolved};
}

CheckResult CheckGrid(const PuzzleModel& model) {
  const int l = model.LayoutExtent;
  const int n = model.GridSize;

  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const int k = model.PositionOf[row][col];
      if (model.PosText[k].empty()) return {CellName(k) + " is empty", kBroken};
    }
  }

  // Only the first 77 characters of a list are examined: at most 26 entries.
  constexpr std::size_t kListLimit = 77;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const int k = model.PositionOf[row][col];
      const std::string& t = model.PosText[k];
      if (t.empty()) return {CellName(k) + " has no value", kBroken};
      if (t.size() != 1) continue;
      const double v = NumericValue(t);
      const std::string& smaller = model.SmallerList[k];
      for (std::size_t i = 0; i < kListLimit && i < smaller.size(); i += 3) {
        const int j = IntegerValue(std::string_view(smaller).substr(i, 3));
        if (j < 0 || j >= kPositionCount) continue;
        const double w = NumericValue(model.PosText[j]);
        if (w < n + 1 && v <= w) return {CellName(k) + " does not meet > rule", kBroken};
      }
    }
  }

  for (int row = 1; row <= l; row += 2) {
    std::string message = RepeatedDigit(model, row, false);
    if (!message.empty()) return {message, kBroken};
  }
  for (int col = 1; col <= l; col += 2) {
    std::string message = RepeatedDigit(model, col, true);
    if (!message.empty()) return {message, kBroken};
  }

  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      if (model.PosText[model.PositionOf[row][col]].size() != 1) return {"", kStalled};
    }
  }
  return {"", kSolved};
}

VerifyOutcome VerifyGrid(const PuzzleModel& model) {
  const CheckResult extremes = CheckExtremes(model);
  if (extremes.result != kSolved) return {extremes.message, extremes.result};
  const CheckResult grid = CheckGrid(model);
  return {std::string(grid.result == kSolved ? kVerifiedSolved : kVerifiedUnfinished), -1};
}

}  // namespace qm
