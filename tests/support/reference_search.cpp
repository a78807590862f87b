#include "support/reference_search.h"

#include <array>
#include <bit>
#include <cstdint>

namespace qm {

namespace {

using Mask = std::uint16_t;  // bit d set: digit d still possible
constexpr int kMaxCells = kMaxGridSize * kMaxGridSize;

struct Relation {
  int greater;
  int smaller;
};

struct Search {
  int n = 0;
  int limit = 1;
  long budget = 0;
  std::vector<Relation> relations;
  SolutionCount result;
  std::array<Mask, kMaxCells> firstSolution{};

  Mask Full() const { return static_cast<Mask>(((1u << n) - 1u) << 1); }

  // Narrows the domains until nothing changes; false on a contradiction.
  bool Propagate(std::array<Mask, kMaxCells>& dom) const {
    bool changed = true;
    while (changed) {
      changed = false;
      for (int line = 0; line < 2 * n; ++line) {
        const bool column = line >= n;
        const int index = column ? line - n : line;
        auto cell = [&](int i) { return column ? i * n + index : index * n + i; };
        Mask fixed = 0;
        Mask seen = 0;
        Mask seenTwice = 0;
        for (int i = 0; i < n; ++i) {
          const Mask m = dom[static_cast<std::size_t>(cell(i))];
          if (m == 0) return false;
          if (std::has_single_bit(m)) {
            if ((fixed & m) != 0) return false;
            fixed |= m;
          }
          seenTwice |= seen & m;
          seen |= m;
        }
        if (seen != Full()) return false;  // some digit has no place left
        const Mask hiddenSingles = static_cast<Mask>(seen & ~seenTwice & ~fixed);
        for (int i = 0; i < n; ++i) {
          Mask& m = dom[static_cast<std::size_t>(cell(i))];
          Mask next = std::has_single_bit(m) ? m : static_cast<Mask>(m & ~fixed);
          if ((next & hiddenSingles) != 0) next &= hiddenSingles;
          if (next == 0) return false;
          if (next != m) {
            m = next;
            changed = true;
          }
        }
      }
      for (const Relation& r : relations) {
        Mask& g = dom[static_cast<std::size_t>(r.greater)];
        Mask& s = dom[static_cast<std::size_t>(r.smaller)];
        const int lowest = std::countr_zero(s);
        const int highest = 15 - std::countl_zero(g);
        const Mask above = static_cast<Mask>(~((2u << lowest) - 1u));
        const Mask below = static_cast<Mask>((1u << highest) - 1u);
        const Mask ng = g & above;
        const Mask ns = s & below;
        if (ng == 0 || ns == 0) return false;
        if (ng != g || ns != s) {
          g = ng;
          s = ns;
          changed = true;
        }
      }
    }
    return true;
  }

  void Run(std::array<Mask, kMaxCells> dom) {
    if (!result.complete) return;
    if (++result.nodes > budget) {
      result.complete = false;
      return;
    }
    if (!Propagate(dom)) return;
    int best = -1;
    int bestCount = 99;
    for (int c = 0; c < n * n; ++c) {
      const int count = std::popcount(dom[static_cast<std::size_t>(c)]);
      if (count > 1 && count < bestCount) {
        best = c;
        bestCount = count;
      }
    }
    if (best < 0) {
      if (result.count == 0) firstSolution = dom;
      if (++result.count >= limit) result.complete = false;
      return;
    }
    Mask options = dom[static_cast<std::size_t>(best)];
    while (options != 0 && result.complete) {
      const Mask pick = static_cast<Mask>(options & -options);
      options = static_cast<Mask>(options & ~pick);
      auto next = dom;
      next[static_cast<std::size_t>(best)] = pick;
      Run(next);
    }
  }
};

}  // namespace

SolutionCount ReferenceCountSolutions(const PuzzleModel& model, int limit, long nodeBudget) {
  Search search;
  search.n = model.GridSize;
  search.limit = limit < 1 ? 1 : limit;
  search.budget = nodeBudget;
  const int n = search.n;
  auto cellIndex = [&](int k) { return (model.RowOf[k] - 1) / 2 * n + (model.ColOf[k] - 1) / 2; };

  std::array<Mask, kMaxCells> dom{};
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const std::string& text = model.PosText[CellPosition(model, i, j)];
      Mask m = 0;
      bool anyDigit = false;
      for (char c : text) {
        if (c < '0' || c > '9') continue;
        anyDigit = true;
        if (c >= '1' && c - '0' <= n) m |= static_cast<Mask>(1u << (c - '0'));
      }
      // A digit outside 1..N leaves the cell no choice; text without digits none.
      if (!anyDigit) m = search.Full();
      dom[static_cast<std::size_t>((i - 1) * n + (j - 1))] = m;
    }
  }
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& t = model.PosText[k];
    const PositionKind kind = KindOf(model, k);
    if (t.size() != 1 || (kind != PositionKind::HorizontalSign && kind != PositionKind::VerticalSign)) continue;
    const bool horizontal = kind == PositionKind::HorizontalSign;
    const int before = cellIndex(horizontal ? model.LeftOf[k] : model.UpOf[k]);
    const int after = cellIndex(horizontal ? model.RightOf[k] : model.DownOf[k]);
    if (t == "<" || t == "^") search.relations.push_back({after, before});
    if (t == ">" || t == "v") search.relations.push_back({before, after});
  }

  search.Run(dom);
  SolutionCount result = search.result;
  if (result.count > 0) {
    result.first.resize(static_cast<std::size_t>(model.LastPosition) + 1);
    for (int k = 0; k <= model.LastPosition; ++k) {
      const PositionKind kind = KindOf(model, k);
      if (kind == PositionKind::Cell) {
        const Mask m = search.firstSolution[static_cast<std::size_t>(cellIndex(k))];
        result.first[static_cast<std::size_t>(k)] = std::string(1, static_cast<char>('0' + std::countr_zero(m)));
      } else if (kind != PositionKind::Corner) {
        result.first[static_cast<std::size_t>(k)] = model.PosText[k];
      }
    }
  }
  return result;
}

}  // namespace qm
