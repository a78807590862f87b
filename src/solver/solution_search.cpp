#include "solver/solution_search.h"

#include <array>
#include <bit>
#include <chrono>
#include <cstdint>

#include "solver/digit_masks.h"
#include "solver/grid_masks.h"

namespace qm {

namespace {

using masks::DigitMask;
constexpr int kMaxCells = kMaxGridSize * kMaxGridSize;
constexpr int kMaxLines = 2 * kMaxGridSize;
constexpr int kMaxRelations = 4 * kMaxCells;
using Domains = std::array<DigitMask, kMaxCells>;

struct Relation {
  std::uint8_t greater;
  std::uint8_t smaller;
};

// Depth-first search with full propagation at every node: each line keeps only the
// candidates some arrangement of distinct digits can use (which covers singles, hidden
// singles and every naked or hidden subset), and each sign keeps its cells' bounds
// apart, to a fixed point. Clue-less grids of signs alone are where a plain search
// explodes: sign bounds squeeze cells into digit ranges, and only the line reasoning
// sees that too many cells share too few digits.
class Search {
 public:
  // Dirty lines: bits 0..17 for the quick singles pass, bits 32..49 for the full pass.
  using LineSet = std::uint64_t;
  static constexpr int kFullPass = 32;

  // Sign relations waiting to be looked at again, one bit each.
  struct RelationSet {
    std::array<std::uint64_t, (kMaxRelations + 63) / 64> bits{};
    void Add(int r) { bits[static_cast<std::size_t>(r >> 6)] |= std::uint64_t{1} << (r & 63); }
    void AddCell(const Search& search, int cell) {
      for (int i = search.firstRelation_[static_cast<std::size_t>(cell)];
           i < search.firstRelation_[static_cast<std::size_t>(cell) + 1]; ++i) {
        Add(search.relationsOfCell_[static_cast<std::size_t>(i)]);
      }
    }
    // Removes and returns the lowest, or -1 when empty.
    int Take() {
      for (std::size_t w = 0; w < bits.size(); ++w) {
        if (bits[w] != 0) {
          const int r = std::countr_zero(bits[w]);
          bits[w] &= bits[w] - 1;
          return static_cast<int>(w) * 64 + r;
        }
      }
      return -1;
    }
  };

  // Constraints that fail often are the ones to settle first: the branching prefers
  // cells under heavily weighted lines and signs.
  static bool Failed(std::uint32_t& weight) {
    ++weight;
    return false;
  }

  Search(int n, const SearchOptions& options)
      : n_(n), options_(options), started_(std::chrono::steady_clock::now()) {
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        line_[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = static_cast<std::uint8_t>(i * n + j);
        line_[static_cast<std::size_t>(n + i)][static_cast<std::size_t>(j)] = static_cast<std::uint8_t>(j * n + i);
      }
    }
  }

  void AddRelation(int greater, int smaller) {
    relation_[static_cast<std::size_t>(relations_++)] = {static_cast<std::uint8_t>(greater),
                                                         static_cast<std::uint8_t>(smaller)};
  }

  // The root: every line and sign to look at.
  void Run(const Domains& dom) {
    firstRelation_.fill(0);
    for (int r = 0; r < relations_; ++r) {
      ++firstRelation_[static_cast<std::size_t>(relation_[static_cast<std::size_t>(r)].greater) + 1];
      ++firstRelation_[static_cast<std::size_t>(relation_[static_cast<std::size_t>(r)].smaller) + 1];
    }
    for (int c = 0; c < kMaxCells; ++c) firstRelation_[static_cast<std::size_t>(c) + 1] += firstRelation_[static_cast<std::size_t>(c)];
    auto fill = firstRelation_;
    for (int r = 0; r < relations_; ++r) {
      for (const std::uint8_t cell : {relation_[static_cast<std::size_t>(r)].greater, relation_[static_cast<std::size_t>(r)].smaller}) {
        relationsOfCell_[static_cast<std::size_t>(fill[cell]++)] = static_cast<std::uint8_t>(r);
      }
    }
    RelationSet signs;
    for (int r = 0; r < relations_; ++r) signs.Add(r);
    const LineSet all = (LineSet{1} << (2 * n_)) - 1u;
    Run(dom, all | all << kFullPass, signs);
  }

  void Run(Domains dom, LineSet dirty, const RelationSet& signs) {
    if (stopped_ || Interrupted()) return;
    ++result_.nodes;
    if (!Propagate(dom, dirty, signs)) return;
    const Choice choice = Choose(dom);
    if (choice.count == 0) {
      if (result_.count == 0) first_ = dom;
      if (++result_.count >= Limit()) Stop();
      return;
    }
    // Two ways: the cell's least digit, or not that digit; the second is a new node, so
    // the weights learnt under the first can choose another cell there.
    const std::size_t cell = static_cast<std::size_t>(choice.cell);
    const DigitMask pick = masks::LowestBit(dom[cell]);
    Domains next = dom;
    next[cell] = pick;
    Branch(next, choice.cell);
    if (stopped_) return;
    dom[cell] = static_cast<DigitMask>(dom[cell] & ~pick);
    Branch(dom, choice.cell);
  }

  SolutionCount& result() { return result_; }
  const Domains& first() const { return first_; }

 private:
  void Branch(const Domains& next, int cell) {
    LineSet dirty = 0;
    RelationSet signs;
    Changed(cell, dirty, signs);
    Run(next, dirty, signs);
  }

  static constexpr long long kFullPassAfterNodes = 64;

  struct Choice {
    int count = 0;  // candidates of the cell to branch on; 0 when the grid is solved
    int cell = -1;
  };

  int Limit() const { return options_.limit < 1 ? 1 : options_.limit; }

  void Stop() {
    stopped_ = true;
    result_.complete = false;
  }

  bool Interrupted() {
    if (options_.cancel != nullptr && options_.cancel->load(std::memory_order_relaxed)) {
      result_.cancelled = true;
      Stop();
      return true;
    }
    // The clock is read every 64 nodes: cheap, and well within any useful time limit.
    if (options_.timeLimitSeconds > 0 && (result_.nodes & 63) == 0) {
      const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - started_;
      if (spent.count() > options_.timeLimitSeconds) {
        result_.timedOut = true;
        Stop();
        return true;
      }
    }
    return false;
  }

  // The cell with the least candidates per weight of the constraints on it (lines and
  // signs that failed before weigh more); the first found wins ties, so the order
  // depends on nothing but the grid.
  Choice Choose(const Domains& dom) const {
    std::array<std::uint32_t, kMaxCells> weight{};
    for (int c = 0; c < n_ * n_; ++c) {
      weight[static_cast<std::size_t>(c)] = 2 + lineWeight_[static_cast<std::size_t>(c / n_)] +
                                            lineWeight_[static_cast<std::size_t>(n_ + c % n_)];
    }
    for (int r = 0; r < relations_; ++r) {
      const Relation rel = relation_[static_cast<std::size_t>(r)];
      if (masks::IsSingle(dom[rel.greater]) || masks::IsSingle(dom[rel.smaller])) continue;
      const std::uint32_t w = 1 + relationWeight_[static_cast<std::size_t>(r)];
      weight[rel.greater] += w;
      weight[rel.smaller] += w;
    }
    Choice best;
    std::uint64_t bestCount = 0;
    std::uint64_t bestWeight = 1;
    for (int c = 0; c < n_ * n_; ++c) {
      const int count = masks::Count(dom[static_cast<std::size_t>(c)]);
      if (count < 2) continue;
      const std::uint64_t w = weight[static_cast<std::size_t>(c)];
      // count / w < bestCount / bestWeight, without division.
      if (best.cell < 0 || static_cast<std::uint64_t>(count) * bestWeight < bestCount * w) {
        best.cell = c;
        best.count = count;
        bestCount = static_cast<std::uint64_t>(count);
        bestWeight = w;
      }
    }
    if (best.cell < 0) return Choice{};
    return best;
  }

  std::uint32_t LinesOf(int cell) const {
    return (1u << (cell / n_)) | (1u << (n_ + cell % n_));
  }

  void Changed(int cell, LineSet& dirty, RelationSet& signs) const {
    const LineSet lines = LinesOf(cell);
    dirty |= lines | lines << kFullPass;
    signs.AddCell(*this, cell);
  }

  // Narrows the domains until nothing changes; false on a contradiction. Only the lines
  // and signs of cells that changed are looked at again.
  // Cheap reasoning runs to its fixed point before the full line reasoning, so that the
  // costly pass sees each line once after a cascade of singles rather than at every step.
  bool Propagate(Domains& dom, LineSet dirty, RelationSet signs) {
    for (;;) {
      for (int r = signs.Take(); r >= 0; r = signs.Take()) {
        const Relation rel = relation_[static_cast<std::size_t>(r)];
        DigitMask& g = dom[rel.greater];
        DigitMask& s = dom[rel.smaller];
        if (g == 0 || s == 0) return Failed(relationWeight_[static_cast<std::size_t>(r)]);
        const DigitMask ng = g & masks::Above(masks::Lowest(s));
        const DigitMask ns = s & masks::Below(masks::Highest(g));
        if (ng == 0 || ns == 0) return Failed(relationWeight_[static_cast<std::size_t>(r)]);
        if (ng != g) {
          g = ng;
          Changed(rel.greater, dirty, signs);
        }
        if (ns != s) {
          s = ns;
          Changed(rel.smaller, dirty, signs);
        }
      }
      if (dirty == 0) return true;
      const int bit = std::countr_zero(dirty);
      dirty &= dirty - 1;
      const bool full = bit >= kFullPass;
      const int l = full ? bit - kFullPass : bit;
      const auto& cells = line_[static_cast<std::size_t>(l)];
      // Most searches end within a few dozen nodes, where the full pass costs more than
      // it saves; the long ones need it.
      if (full && result_.nodes < kFullPassAfterNodes) continue;
      const int changed = full ? PropagateLine(dom, cells) : Singles(dom, cells);
      if (changed < 0) return Failed(lineWeight_[static_cast<std::size_t>(l)]);
      for (int i = 0; i < n_; ++i) {
        if ((changed >> i & 1) != 0) Changed(cells[static_cast<std::size_t>(i)], dirty, signs);
      }
      // The full pass leaves its own line settled.
      if (full) dirty &= ~(LineSet{1} << bit);
    }
  }

  // Fixed digits leave the line's other cells, and a digit with one place left goes
  // there. Returns the changed cells as PropagateLine does.
  int Singles(Domains& dom, const std::array<std::uint8_t, kMaxGridSize>& cells) const {
    DigitMask fixed = 0;
    DigitMask seen = 0;
    DigitMask twice = 0;
    for (int i = 0; i < n_; ++i) {
      const DigitMask v = dom[cells[static_cast<std::size_t>(i)]];
      if (masks::IsSingle(v)) {
        if ((fixed & v) != 0) return -1;
        fixed |= v;
      }
      twice |= seen & v;
      seen |= v;
    }
    if (seen != masks::Full(n_)) return -1;
    const DigitMask hidden = static_cast<DigitMask>(seen & ~twice & ~fixed);
    int changed = 0;
    for (int i = 0; i < n_; ++i) {
      DigitMask& v = dom[cells[static_cast<std::size_t>(i)]];
      if (masks::IsSingle(v)) continue;
      DigitMask next = static_cast<DigitMask>(v & ~fixed);
      const DigitMask only = static_cast<DigitMask>(next & hidden);
      if (only != 0) {
        if (!masks::IsSingle(only)) return -1;  // two digits that each need this cell
        next = only;
      }
      if (next == 0) return -1;
      if (next != v) {
        v = next;
        changed |= 1 << i;
      }
    }
    return changed;
  }

  // Keeps exactly the candidates that some complete assignment of the line's cells to
  // distinct digits uses (a perfect matching through that pair). With one matching in
  // hand, a cell may also take the digit matched to a cell it can displace in a cycle:
  // cell c may take match(c') when c can take it and c' can reach back to c.
  // Returns the cells that changed (bit i for the line's cell i), or -1 when no
  // arrangement is left.
  int PropagateLine(Domains& dom, const std::array<std::uint8_t, kMaxGridSize>& cells) const {
    std::array<DigitMask, kMaxGridSize> m{};
    for (int i = 0; i < n_; ++i) m[static_cast<std::size_t>(i)] = dom[cells[static_cast<std::size_t>(i)]];
    std::array<int, kMaxGridSize + 1> cellOf{};  // digit -> matched cell, or -1
    std::array<int, kMaxGridSize> digitOf{};      // cell -> matched digit
    cellOf.fill(-1);
    // Most cells find a free digit at once; only the rest need augmenting paths.
    DigitMask used = 0;
    std::uint16_t unmatched = 0;
    for (int i = 0; i < n_; ++i) {
      const DigitMask free = static_cast<DigitMask>(m[static_cast<std::size_t>(i)] & ~used);
      if (free == 0) {
        unmatched = static_cast<std::uint16_t>(unmatched | (1u << i));
        continue;
      }
      const int d = masks::Lowest(free);
      used |= masks::Bit(d);
      cellOf[static_cast<std::size_t>(d)] = i;
      digitOf[static_cast<std::size_t>(i)] = d;
    }
    for (; unmatched != 0; unmatched = static_cast<std::uint16_t>(unmatched & (unmatched - 1))) {
      DigitMask visited = 0;
      if (!Augment(m, std::countr_zero(unmatched), visited, cellOf, digitOf)) return -1;
    }
    // reach[i]: the cells whose matched digit cell i can take, closed transitively.
    std::array<std::uint16_t, kMaxGridSize> reach{};
    for (int i = 0; i < n_; ++i) {
      std::uint16_t r = 0;
      masks::ForEachDigit(m[static_cast<std::size_t>(i)], [&](int d) {
        r = static_cast<std::uint16_t>(r | (1u << cellOf[static_cast<std::size_t>(d)]));
      });
      reach[static_cast<std::size_t>(i)] = r;
    }
    for (int k = 0; k < n_; ++k) {
      const std::uint16_t via = reach[static_cast<std::size_t>(k)];
      for (int i = 0; i < n_; ++i) {
        if ((reach[static_cast<std::size_t>(i)] >> k & 1u) != 0) reach[static_cast<std::size_t>(i)] |= via;
      }
    }
    // backTo[i]: the digits whose cells can reach cell i again.
    std::array<DigitMask, kMaxGridSize> backTo{};
    for (int d = 1; d <= n_; ++d) {
      const std::uint16_t r = reach[static_cast<std::size_t>(cellOf[static_cast<std::size_t>(d)])];
      for (int i = 0; i < n_; ++i) {
        if ((r >> i & 1u) != 0) backTo[static_cast<std::size_t>(i)] |= masks::Bit(d);
      }
    }
    int changed = 0;
    for (int i = 0; i < n_; ++i) {
      const DigitMask v = m[static_cast<std::size_t>(i)];
      const DigitMask keep =
          static_cast<DigitMask>(v & (backTo[static_cast<std::size_t>(i)] | masks::Bit(digitOf[static_cast<std::size_t>(i)])));
      if (keep != v) {
        dom[cells[static_cast<std::size_t>(i)]] = keep;
        changed |= 1 << i;
      }
    }
    return changed;
  }

  // Finds a digit for cell i, moving earlier cells to other digits where needed.
  bool Augment(const std::array<DigitMask, kMaxGridSize>& m, int i, DigitMask& visited,
               std::array<int, kMaxGridSize + 1>& cellOf, std::array<int, kMaxGridSize>& digitOf) const {
    DigitMask options = static_cast<DigitMask>(m[static_cast<std::size_t>(i)] & ~visited);
    while (options != 0) {
      const int d = masks::Lowest(options);
      options = static_cast<DigitMask>(options & (options - 1));
      visited |= masks::Bit(d);
      int& holder = cellOf[static_cast<std::size_t>(d)];
      if (holder < 0 || Augment(m, holder, visited, cellOf, digitOf)) {
        holder = i;
        digitOf[static_cast<std::size_t>(i)] = d;
        return true;
      }
    }
    return false;
  }

  int n_;
  SearchOptions options_;
  std::chrono::steady_clock::time_point started_;
  std::array<std::array<std::uint8_t, kMaxGridSize>, kMaxLines> line_{};
  std::array<Relation, kMaxRelations> relation_{};
  std::array<std::uint32_t, kMaxRelations> relationWeight_{};
  std::array<std::uint32_t, kMaxLines> lineWeight_{};
  // The signs on each cell: relationsOfCell_[firstRelation_[c] .. firstRelation_[c + 1]).
  std::array<int, kMaxCells + 1> firstRelation_{};
  std::array<std::uint8_t, kMaxRelations * 2> relationsOfCell_{};
  int relations_ = 0;
  bool stopped_ = false;
  SolutionCount result_;
  Domains first_{};
};

}  // namespace

SolutionCount CountSolutions(const PuzzleModel& model, const SearchOptions& options) {
  const int n = model.GridSize;
  Search search(n, options);
  Domains dom{};
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      dom[static_cast<std::size_t>((i - 1) * n + (j - 1))] = CellMask(model.PosText[CellPosition(model, i, j)], n);
    }
  }
  ForEachSign(model, [&](int greater, int smaller) { search.AddRelation(greater, smaller); });

  search.Run(dom);
  SolutionCount result = search.result();
  if (result.count > 0) {
    result.first.resize(static_cast<std::size_t>(model.LastPosition) + 1);
    for (int k = 0; k <= model.LastPosition; ++k) {
      const PositionKind kind = KindOf(model, k);
      if (kind == PositionKind::Cell) {
        const DigitMask m = search.first()[static_cast<std::size_t>(CellIndex(model, k))];
        result.first[static_cast<std::size_t>(k)] = std::string(1, static_cast<char>('0' + masks::Lowest(m)));
      } else if (kind != PositionKind::Corner) {
        result.first[static_cast<std::size_t>(k)] = model.PosText[k];
      }
    }
  }
  return result;
}

}  // namespace qm
