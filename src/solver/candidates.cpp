#include "solver/candidates.h"

#include "core/text_rules.h"

namespace qm {

namespace {

// The numeric value of one character: its digit, 0 for anything else.
int DigitValue(char c) { return c >= '0' && c <= '9' ? c - '0' : 0; }

bool Holds(const PuzzleModel& model, int k, char sign) {
  return k >= 0 && model.PosText[k].size() == 1 && model.PosText[k][0] == sign;
}

std::string Without(std::string_view text, char c) {
  std::string out;
  for (char t : text) {
    if (t != c) out += t;
  }
  return out;
}

// The four sign slots around a cell, with the cell across each, and what the slot's
// sign means for this cell.
struct Side {
  int slot;
  int across;
  char greaterSign;  // the sign that makes this cell the greater one
  char smallerSign;  // the sign that makes this cell the smaller one
};

std::array<Side, 4> SidesOf(const PuzzleModel& model, int cell) {
  auto across = [&](int slot, const PerPosition<int>& step) { return slot < 0 ? -1 : step[slot]; };
  return {{{model.LeftOf[cell], across(model.LeftOf[cell], model.LeftOf), '<', '>'},
           {model.RightOf[cell], across(model.RightOf[cell], model.RightOf), '>', '<'},
           {model.UpOf[cell], across(model.UpOf[cell], model.UpOf), '^', 'v'},
           {model.DownOf[cell], across(model.DownOf[cell], model.DownOf), 'v', '^'}}};
}

}  // namespace

void PrepareCandidates(PuzzleModel& model) {
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      std::string& text = model.PosText[model.PositionOf[row][col]];
      if (Trim(text).empty()) text = model.AllDigits;
    }
  }
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const int k = model.PositionOf[row][col];
      std::string& smaller = model.SmallerList[k];
      smaller.clear();
      for (const Side& side : SidesOf(model, k)) {
        if (!Holds(model, side.slot, side.greaterSign)) continue;
        // The position as three digits ("012"); positions stay below 1000.
        const char entry[3] = {static_cast<char>('0' + side.across / 100), static_cast<char>('0' + side.across / 10 % 10),
                               static_cast<char>('0' + side.across % 10)};
        smaller.append(entry, 3);
      }
    }
  }
}

std::string MaxBelow(std::string_view a, std::string_view b) {
  int m = 0;
  for (char c : b) m = std::max(m, DigitValue(c));
  std::string out;
  for (char d : a) {
    if (DigitValue(d) < m) out += d;
  }
  return out;
}

std::string MinAbove(std::string_view a, std::string_view b) {
  int m = 99;
  for (char c : b) m = std::min(m, DigitValue(c));
  std::string out;
  for (char d : a) {
    if (DigitValue(d) > m) out += d;
  }
  return out;
}

std::string StripDigits(std::string_view a, std::string_view s) {
  std::string out;
  for (char d : a) {
    if (s.find(d) == std::string_view::npos) out += d;
  }
  return out;
}

std::string SaveCandidates(const PuzzleModel& model) {
  std::string snapshot;
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      snapshot += model.PosText[model.PositionOf[row][col]];
      snapshot += ',';
    }
  }
  return snapshot;
}

void RestoreCandidates(PuzzleModel& model, std::string_view snapshot) {
  const int l = model.LayoutExtent;
  std::size_t start = 0;
  for (int row = 1; row <= l; row += 2) {
    for (int col = 1; col <= l; col += 2) {
      const std::size_t comma = snapshot.find(',', start);
      if (comma == std::string_view::npos) return;  // a short snapshot restores what it has
      model.PosText[model.PositionOf[row][col]] = snapshot.substr(start, comma - start);
      start = comma + 1;
    }
  }
}

CellLook CellTextLook(std::string_view text) {
  const std::string_view t = Trim(text);
  constexpr int kDigitPoints = 13;
  constexpr int kCandidatePoints = 6;
  if (t.empty()) return {};
  if (t.size() == 1) return {std::string(t), true, kDigitPoints};
  if (t.size() <= 5) return {std::string(t), false, kCandidatePoints};
  return {std::string(t.substr(0, 5)) + "\n" + std::string(t.substr(5)), false, kCandidatePoints};
}

std::string CellCandidates(const PuzzleModel& model, int cell) {
  std::string s = model.PosText[cell].empty() ? model.AllDigits : model.PosText[cell];
  const int row = model.RowOf[cell];
  const int col = model.ColOf[cell];
  for (int i = 1; i <= model.LayoutExtent; ++i) {
    for (int k : {model.PositionOf[row][i], model.PositionOf[i][col]}) {
      const std::string& t = model.PosText[k];
      if (t.size() == 1) s = Without(s, t[0]);
    }
  }
  const std::string n(1, static_cast<char>('0' + model.GridSize));
  for (const Side& side : SidesOf(model, cell)) {
    if (side.slot < 0) continue;
    // An empty neighbour is still open to every digit.
    const std::string& across = model.PosText[side.across];
    const std::string_view other = across.empty() ? std::string_view(model.AllDigits) : across;
    if (Holds(model, side.slot, side.greaterSign)) {
      s = MinAbove(Without(s, '1'), other);
    } else if (Holds(model, side.slot, side.smallerSign)) {
      s = MaxBelow(Without(s, n[0]), other);
    }
  }
  return s;
}

std::string SignEntryError(const PuzzleModel& model, int p, char sign) {
  const bool vertical = KindOf(model, p) == PositionKind::VerticalSign;
  const int before = vertical ? model.UpOf[p] : model.LeftOf[p];
  const int after = vertical ? model.DownOf[p] : model.RightOf[p];
  const int a = before < 0 ? 0 : IntegerValue(model.PosText[before]);
  const int b = after < 0 ? 0 : IntegerValue(model.PosText[after]);
  const int n = model.GridSize;
  // Both directions share the extreme-digit tests, and ">" reports "< error" as well.
  const bool extremesFine = a != n && b != 1;
  // "<" and "^" want the digit before at most the one after; ">" and "v" the other way.
  const bool ascending = sign == '<' || sign == '^';
  const bool known = ascending || sign == '>' || sign == 'v';
  const int low = ascending ? a : b;
  const int high = ascending ? b : a;
  const bool accepted = known && extremesFine && (low == 0 || low <= high);
  const std::string error = sign == '^' ? "^ error" : sign == 'v' ? "v error" : "< error";
  return accepted ? std::string() : error;
}

std::string CheckCellEntry(const PuzzleModel& model, int cell) {
  const std::string candidates = CellCandidates(model, cell);
  const std::string& own = model.PosText[cell];
  if (own.size() != 1 || DigitValue(own[0]) == 0) return "Valid candidates are: " + candidates;
  const int v = DigitValue(own[0]);
  const int n = model.GridSize;

  for (const Side& side : SidesOf(model, cell)) {
    if (side.slot < 0 || model.PosText[side.slot].size() != 1) continue;
    const std::string& other = model.PosText[side.across];
    if (other.size() != 1 || DigitValue(other[0]) == 0) continue;
    const int w = DigitValue(other[0]);
    const char sign = model.PosText[side.slot][0];
    if ((sign == side.greaterSign && v <= w) || (sign == side.smallerSign && v >= w)) {
      return std::string(1, sign) + " error";
    }
  }
  for (const Side& side : SidesOf(model, cell)) {
    if (v == 1 && Holds(model, side.slot, side.greaterSign)) return "1 placement error";
    if (v == n && Holds(model, side.slot, side.smallerSign)) return std::to_string(n) + " placement error";
  }
  const int row = model.RowOf[cell];
  const int col = model.ColOf[cell];
  for (int i = 1; i <= model.LayoutExtent; i += 2) {
    const int k = model.PositionOf[row][i];
    if (k != cell && model.PosText[k] == own) return "Duplicate in row";
  }
  for (int i = 1; i <= model.LayoutExtent; i += 2) {
    const int k = model.PositionOf[i][col];
    if (k != cell && model.PosText[k] == own) return "Duplicate in col";
  }
  return "Valid candidates are: " + candidates;
}

}  // namespace qm
