#include "solver/solution_search.h"

#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>
#include <vector>

#include "solver/digit_masks.h"
#include "solver/grid_masks.h"
#include "solver/line_matching.h"

namespace qm {

namespace {

using masks::DigitMask;
using std::size_t;
constexpr int kMaxCells = kMaxGridSize * kMaxGridSize;
constexpr int kMaxLines = 2 * kMaxGridSize;
constexpr int kMaxRelations = 2 * kMaxGridSize * (kMaxGridSize - 1);  // one per pair of neighbours
using Domains = std::array<DigitMask, kMaxCells>;
using LineCells = std::array<std::uint8_t, kMaxGridSize>;
using Word = std::uint64_t;

struct Relation {
  std::uint8_t greater;
  std::uint8_t smaller;
};

// A decision on the path to a node: the cell took the digit, or was denied it.
struct Decision {
  std::uint8_t cell;
  std::uint8_t digit;
  bool took;
};

// The reasoning still to do at a node. `passes` holds one bit per line and kind of pass
// (and per digit for the digit pass); `signs` one bit per sign relation.
struct Work {
  static constexpr int kSingles = 0;  // bits 0..17: the quick pass over a line
  static constexpr int kLine = 18;    // bits 18..35: the full pass over a line
  static constexpr int kDigit = 36;   // bits 36..44: the pass over one digit's places
  std::uint64_t passes = 0;
  std::array<Word, (kMaxRelations + 63) / 64> signs{};

  void AddSign(int r) { signs[static_cast<size_t>(r >> 6)] |= Word{1} << (r & 63); }
  // Removes and returns the lowest sign, or -1 when none is left.
  int TakeSign() {
    for (size_t w = 0; w < signs.size(); ++w) {
      if (signs[w] != 0) {
        const int r = std::countr_zero(signs[w]);
        signs[w] &= signs[w] - 1;
        return static_cast<int>(w) * 64 + r;
      }
    }
    return -1;
  }
};

// The full pass over a line whose cells the signs order among themselves (directly or
// through cells elsewhere): keeps exactly the candidates some arrangement of the line
// uses that has distinct digits and respects that order. Digits are handed out from
// the smallest up; the cells holding the first k digits form a set that contains each
// of its cells' smaller cells, and the sets reachable from both ends carry every
// arrangement. The sets of the line's open cells are bits of a word array, so one step
// moves all of them at once.
class OrderedLine {
 public:
  // `below[i]`: the line positions that must hold a smaller digit than position i.
  static int Filter(LineMasks& m, int n, const std::array<std::uint16_t, kMaxGridSize>& below) {
    // Fixed cells sit out: signs keep the open cells' bounds clear of them.
    std::array<int, kMaxGridSize> position{};  // open cell -> line position
    std::array<int, kMaxGridSize> open{};      // line position -> open cell, or -1
    int u = 0;
    DigitMask fixedDigits = 0;
    for (int i = 0; i < n; ++i) {
      const DigitMask v = m[static_cast<size_t>(i)];
      if (masks::IsSingle(v)) {
        if ((fixedDigits & v) != 0) return -1;
        fixedDigits |= v;
        open[static_cast<size_t>(i)] = -1;
      } else {
        open[static_cast<size_t>(i)] = u;
        position[static_cast<size_t>(u++)] = i;
      }
    }
    if (u == 0) return 0;
    std::array<int, kMaxGridSize> digitAt{};      // the k-th smallest digit left
    std::array<int, kMaxGridSize + 1> rankOf{};   // and back
    int digits = 0;
    masks::ForEachDigit(static_cast<DigitMask>(masks::Full(n) & ~fixedDigits), [&](int d) {
      rankOf[static_cast<size_t>(d)] = digits;
      digitAt[static_cast<size_t>(digits++)] = d;
    });
    if (digits != u) return -1;
    std::array<unsigned, kMaxGridSize> smaller{};  // per open cell, its smaller open cells
    std::array<unsigned, kMaxGridSize> takers{};   // per digit rank, the open cells that can take it
    bool ordered = false;  // whether some order among the open cells is not already in their bounds
    for (int c = 0; c < u; ++c) {
      const int i = position[static_cast<size_t>(c)];
      const DigitMask v = static_cast<DigitMask>(m[static_cast<size_t>(i)] & ~fixedDigits);
      for (unsigned q = below[static_cast<size_t>(i)]; q != 0; q &= q - 1) {
        const int p = std::countr_zero(q);
        const int j = open[static_cast<size_t>(p)];
        if (j < 0) continue;
        smaller[static_cast<size_t>(c)] |= 1u << j;
        ordered = ordered || masks::Highest(m[static_cast<size_t>(p)]) >= masks::Lowest(v);
      }
      masks::ForEachDigit(v, [&](int d) { takers[static_cast<size_t>(rankOf[static_cast<size_t>(d)])] |= 1u << c; });
    }
    // Without such an order, any arrangement of distinct digits respects it.
    if (!ordered) return KeepMatched(m, n);
    std::array<DigitMask, kMaxGridSize> keep{};
    bool possible;
    switch (u <= 6 ? 1 : 1 << (u - 6)) {
      case 1: possible = Arrange<1>(u, smaller, takers, digitAt, keep); break;
      case 2: possible = Arrange<2>(u, smaller, takers, digitAt, keep); break;
      case 4: possible = Arrange<4>(u, smaller, takers, digitAt, keep); break;
      default: possible = Arrange<8>(u, smaller, takers, digitAt, keep); break;
    }
    if (!possible) return -1;
    int changed = 0;
    for (int c = 0; c < u; ++c) {
      const int i = position[static_cast<size_t>(c)];
      if (keep[static_cast<size_t>(c)] != m[static_cast<size_t>(i)]) {
        m[static_cast<size_t>(i)] = keep[static_cast<size_t>(c)];
        changed |= 1 << i;
      }
    }
    return changed;
  }

 private:
  template <int W>
  using Sets = std::array<Word, W>;

  // The sets of u open cells take W words. Fills `keep` with the digits each open cell
  // takes in some arrangement; false when there is none.
  template <int W>
  static bool Arrange(int u, const std::array<unsigned, kMaxGridSize>& smaller, const std::array<unsigned, kMaxGridSize>& takers,
                      const std::array<int, kMaxGridSize>& digitAt, std::array<DigitMask, kMaxGridSize>& keep) {
    const Word inRange = u >= 6 ? ~Word{0} : (Word{1} << (1 << u)) - 1;
    // step[c]: the sets that lack open cell c but hold all its smaller open cells.
    std::array<Sets<W>, kMaxGridSize> step;
    for (int c = 0; c < u; ++c) {
      for (int w = 0; w < W; ++w) {
        Word s = ~Holding(c, w) & inRange;
        for (unsigned q = smaller[static_cast<size_t>(c)]; q != 0; q &= q - 1) s &= Holding(std::countr_zero(q), w);
        step[static_cast<size_t>(c)][static_cast<size_t>(w)] = s;
      }
    }
    // reached[k]: the sets that can hold the k smallest digits left.
    std::array<Sets<W>, kMaxGridSize + 1> reached;
    reached[0].fill(0);
    reached[0][0] = 1;
    for (int k = 0; k < u; ++k) {
      const Sets<W>& from = reached[static_cast<size_t>(k)];
      Sets<W>& to = reached[static_cast<size_t>(k) + 1];
      to.fill(0);
      for (unsigned q = takers[static_cast<size_t>(k)]; q != 0; q &= q - 1) {
        const int c = std::countr_zero(q);
        const Sets<W>& s = step[static_cast<size_t>(c)];
        if (c < 6) {
          const int shift = 1 << c;
          for (int w = 0; w < W; ++w) to[static_cast<size_t>(w)] |= (from[static_cast<size_t>(w)] & s[static_cast<size_t>(w)]) << shift;
        } else {
          const int shift = 1 << (c - 6);
          for (int w = 0; w + shift < W; ++w) to[static_cast<size_t>(w + shift)] |= from[static_cast<size_t>(w)] & s[static_cast<size_t>(w)];
        }
      }
    }
    const int all = (1 << u) - 1;
    if ((reached[static_cast<size_t>(u)][static_cast<size_t>(all >> 6)] >> (all & 63) & 1) == 0) return false;
    // Back from the full set: a set reached from the start that can still be completed
    // gives each cell that can join it next the next digit.
    Sets<W> completes{};
    completes[static_cast<size_t>(all >> 6)] = Word{1} << (all & 63);
    for (int k = u - 1; k >= 0; --k) {
      Sets<W> before{};
      const Sets<W>& from = reached[static_cast<size_t>(k)];
      for (unsigned q = takers[static_cast<size_t>(k)]; q != 0; q &= q - 1) {
        const int c = std::countr_zero(q);
        const Sets<W>& s = step[static_cast<size_t>(c)];
        Word any = 0;
        if (c < 6) {
          const int shift = 1 << c;
          for (int w = 0; w < W; ++w) {
            const Word x = from[static_cast<size_t>(w)] & s[static_cast<size_t>(w)] & (completes[static_cast<size_t>(w)] >> shift);
            before[static_cast<size_t>(w)] |= x;
            any |= x;
          }
        } else {
          const int shift = 1 << (c - 6);
          for (int w = 0; w + shift < W; ++w) {
            const Word x = from[static_cast<size_t>(w)] & s[static_cast<size_t>(w)] & completes[static_cast<size_t>(w + shift)];
            before[static_cast<size_t>(w)] |= x;
            any |= x;
          }
        }
        if (any != 0) keep[static_cast<size_t>(c)] |= masks::Bit(digitAt[static_cast<size_t>(k)]);
      }
      completes = before;
    }
    return true;
  }

  // Word w of the sets that hold open cell j (set S is bit S % 64 of word S / 64).
  static Word Holding(int j, int w) {
    static constexpr std::array<Word, 6> kLow = {0xAAAAAAAAAAAAAAAAull, 0xCCCCCCCCCCCCCCCCull, 0xF0F0F0F0F0F0F0F0ull,
                                                 0xFF00FF00FF00FF00ull, 0xFFFF0000FFFF0000ull, 0xFFFFFFFF00000000ull};
    if (j < 6) return kLow[static_cast<size_t>(j)];
    return (w >> (j - 6) & 1) != 0 ? ~Word{0} : Word{0};
  }
};

// Depth-first search with propagation at every node. Clue-less grids of signs alone are
// where a plain search explodes: sign bounds squeeze cells into digit ranges, and only
// reasoning about whole lines sees that too many cells share too few digits.
//
// Most grids are settled by the quick reasoning (signs, singles) within a few dozen
// nodes. The long ones get the full reasoning: every line keeps only the candidates
// some arrangement of it uses (respecting the order the signs put on its cells), every
// digit keeps only the places some arrangement of it over the grid uses, and until a
// first solution is found the search starts over now and then: the weights learnt so
// far choose better first cells, and what the abandoned runs proved impossible is kept
// as "never these decisions together". Heavy tails (a few grids taking a hundred times
// the usual) come from early choices that lead nowhere; starting over cuts them off.
class Search {
 public:
  Search(int n, const SearchOptions& options, const SearchTuning& tuning)
      : n_(n), options_(options), tuning_(tuning), started_(std::chrono::steady_clock::now()) {
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        line_[static_cast<size_t>(i)][static_cast<size_t>(j)] = static_cast<std::uint8_t>(i * n + j);
        line_[static_cast<size_t>(n + i)][static_cast<size_t>(j)] = static_cast<std::uint8_t>(j * n + i);
        rowOf_[static_cast<size_t>(i * n + j)] = static_cast<std::uint8_t>(i);
        columnOf_[static_cast<size_t>(i * n + j)] = static_cast<std::uint8_t>(n + j);
      }
    }
  }

  void AddRelation(int greater, int smaller) {
    if (relations_ >= kMaxRelations) return;  // a grid has no more sign slots than that
    relation_[static_cast<size_t>(relations_++)] = {static_cast<std::uint8_t>(greater), static_cast<std::uint8_t>(smaller)};
  }

  void Run(const Domains& given) {
    IndexRelations();
    strong_ = tuning_.strongAfterNodes <= 0;
    if (strong_) PrepareStrong();
    // The first run ends where the full reasoning starts; the later ones at budgets of
    // `restartNodes` times 1, 1, 2, 1, 1, 2, 4, 1, ... (short runs often, long ones now
    // and then), until a solution is found and the run goes on to the end.
    const long long unit = tuning_.restartNodes < 1 ? 1 : tuning_.restartNodes;
    int strongRuns = 0;
    cutoff_ = strong_ ? unit * Luby(strongRuns++) : tuning_.strongAfterNodes;
    for (;;) {
      Domains root = given;
      for (const auto& [cell, digit] : units_) root[cell] = static_cast<DigitMask>(root[cell] & ~masks::Bit(digit));
      runNodes_ = 0;
      restarting_ = false;
      ++run_;
      Visit(root, RootWork());
      if (!restarting_) return;
      if (!strong_) {
        strong_ = true;
        PrepareStrong();
      }
      cutoff_ = unit * Luby(strongRuns++);
    }
  }

  SolutionCount& result() { return result_; }
  const Domains& first() const { return first_; }

 private:
  static constexpr long long kNoCutoff = std::numeric_limits<long long>::max();
  // Decisions kept in learnt combinations; what is not kept is only searched again.
  static constexpr size_t kMaxLearnt = 20000;

  // The i-th term (from 0) of 1, 1, 2, 1, 1, 2, 4, 1, 1, 2, 1, 1, 2, 4, 8, ...
  static long long Luby(int i) {
    long long size = 1;
    int power = 0;
    while (size < i + 1) {
      ++power;
      size = 2 * size + 1;
    }
    while (size - 1 != i) {
      size = (size - 1) >> 1;
      --power;
      i = static_cast<int>(i % size);
    }
    return 1LL << power;
  }

  void IndexRelations() {
    firstRelation_.fill(0);
    for (int r = 0; r < relations_; ++r) {
      const Relation rel = relation_[static_cast<size_t>(r)];
      ++firstRelation_[static_cast<size_t>(rel.greater) + 1];
      ++firstRelation_[static_cast<size_t>(rel.smaller) + 1];
    }
    for (size_t c = 0; c < kMaxCells; ++c) firstRelation_[c + 1] += firstRelation_[c];
    auto fill = firstRelation_;
    for (int r = 0; r < relations_; ++r) {
      const Relation rel = relation_[static_cast<size_t>(r)];
      for (const std::uint8_t cell : {rel.greater, rel.smaller}) {
        relationsOfCell_[static_cast<size_t>(fill[cell]++)] = static_cast<std::uint8_t>(r);
      }
    }
  }

  // The order the signs put on each line's cells, through any chain of signs: a cell
  // greater than another by way of cells elsewhere is greater all the same.
  void PrepareStrong() {
    using CellSet = std::array<Word, 2>;
    const int cells = n_ * n_;
    std::array<CellSet, kMaxCells> below{};
    auto has = [](const CellSet& s, int c) { return (s[static_cast<size_t>(c >> 6)] >> (c & 63) & 1) != 0; };
    // Kahn's order from the greatest cells down, walked back up: each cell's set is
    // complete before a greater one takes it over. A cycle of signs leaves cells out of
    // the order, and then the plain closure does it.
    std::array<int, kMaxCells> greaterCount{};
    for (int r = 0; r < relations_; ++r) ++greaterCount[relation_[static_cast<size_t>(r)].smaller];
    std::array<int, kMaxCells> order{};
    int done = 0;
    for (int c = 0; c < cells; ++c) {
      if (greaterCount[static_cast<size_t>(c)] == 0) order[static_cast<size_t>(done++)] = c;
    }
    // A cell enters once every cell above it has.
    for (int k = 0; k < done; ++k) {
      const int c = order[static_cast<size_t>(k)];
      for (int i = firstRelation_[static_cast<size_t>(c)]; i < firstRelation_[static_cast<size_t>(c) + 1]; ++i) {
        const Relation rel = relation_[relationsOfCell_[static_cast<size_t>(i)]];
        if (rel.greater == c && --greaterCount[rel.smaller] == 0) order[static_cast<size_t>(done++)] = rel.smaller;
      }
    }
    for (int r = 0; r < relations_; ++r) {
      const Relation rel = relation_[static_cast<size_t>(r)];
      below[rel.greater][static_cast<size_t>(rel.smaller >> 6)] |= Word{1} << (rel.smaller & 63);
    }
    if (done == cells) {
      for (int k = cells - 1; k >= 0; --k) {
        const int c = order[static_cast<size_t>(k)];
        for (int i = firstRelation_[static_cast<size_t>(c)]; i < firstRelation_[static_cast<size_t>(c) + 1]; ++i) {
          const Relation rel = relation_[relationsOfCell_[static_cast<size_t>(i)]];
          if (rel.greater != c) continue;
          below[static_cast<size_t>(c)][0] |= below[rel.smaller][0];
          below[static_cast<size_t>(c)][1] |= below[rel.smaller][1];
        }
      }
    } else {
      for (int k = 0; k < cells; ++k) {
        const CellSet via = below[static_cast<size_t>(k)];
        for (int i = 0; i < cells; ++i) {
          CellSet& s = below[static_cast<size_t>(i)];
          if (has(s, k)) {
            s[0] |= via[0];
            s[1] |= via[1];
          }
        }
      }
    }
    orderedLines_ = 0;
    for (int l = 0; l < 2 * n_; ++l) {
      auto& pred = lineBelow_[static_cast<size_t>(l)];
      const auto& cellsOf = line_[static_cast<size_t>(l)];
      for (int i = 0; i < n_; ++i) {
        std::uint16_t p = 0;
        for (int j = 0; j < n_; ++j) {
          if (has(below[cellsOf[static_cast<size_t>(i)]], cellsOf[static_cast<size_t>(j)])) p = static_cast<std::uint16_t>(p | 1u << j);
        }
        pred[static_cast<size_t>(i)] = p;
        if (p != 0) orderedLines_ |= 1u << l;
      }
    }
  }

  Work RootWork() const {
    Work work;
    const std::uint64_t lines = (std::uint64_t{1} << (2 * n_)) - 1u;
    work.passes = lines << Work::kSingles;
    if (strong_) work.passes |= lines << Work::kLine | ((std::uint64_t{1} << n_) - 1u) << Work::kDigit;
    for (int r = 0; r < relations_; ++r) work.AddSign(r);
    return work;
  }

  void Visit(Domains dom, Work work) {
    if (stopped_ || Interrupted()) return;
    ++result_.nodes;
    if (++runNodes_ > cutoff_) {
      Restart();
      return;
    }
    if (!strong_ && result_.nodes > tuning_.strongAfterNodes) {
      // A run that found a solution goes on to the end; it goes on with full reasoning.
      strong_ = true;
      PrepareStrong();
    }
    if (!Propagate(dom, work)) {
      // The cell decided last is tried first again: the search settles what just
      // failed before it wanders off.
      if (strong_ && !path_.empty()) conflict_ = path_.back().cell;
      return;
    }
    const int cell = Choose(dom);
    if (cell < 0) {
      Found(dom);
      return;
    }
    // Two ways: a digit of the cell, or not that digit; the second is a new node, so
    // the weights learnt under the first can choose another cell there. The digit is
    // the least, except that runs after the first take the greatest for about half the
    // cells, so that they do not all go down the same way.
    const size_t c = static_cast<size_t>(cell);
    DigitMask pick = masks::LowestBit(dom[c]);
    if (run_ > 1 && (static_cast<std::uint64_t>(run_ * 131 + cell) * 0x9E3779B97F4A7C15ull >> 40 & 1) != 0) {
      pick = masks::Bit(masks::Highest(dom[c]));
    }
    const std::uint8_t digit = static_cast<std::uint8_t>(masks::Lowest(pick));
    Domains next = dom;
    next[c] = pick;
    path_.push_back({static_cast<std::uint8_t>(cell), digit, true});
    Visit(next, ChangedWork(cell, static_cast<DigitMask>(dom[c] & ~pick)));
    path_.pop_back();
    if (stopped_ || restarting_) return;
    dom[c] = static_cast<DigitMask>(dom[c] & ~pick);
    path_.push_back({static_cast<std::uint8_t>(cell), digit, false});
    Visit(dom, ChangedWork(cell, pick));
    path_.pop_back();
  }

  void Found(const Domains& dom) {
    if (result_.count == 0) first_ = dom;
    cutoff_ = kNoCutoff;
    if (++result_.count >= Limit()) Stop();
  }

  // Abandons the run. Every branch it closed holds no solution (runs only restart
  // before the first one is found): each decision "not d" on the path closed the branch
  // of the decisions "took" before it together with "took d", and that is recorded.
  void Restart() {
    restarting_ = true;
    std::vector<std::pair<std::uint8_t, std::uint8_t>> took;
    for (const Decision& d : path_) {
      if (d.took) {
        took.push_back({d.cell, d.digit});
        continue;
      }
      if (took.empty()) {
        units_.push_back({d.cell, d.digit});
        continue;
      }
      if (nogoods_.size() + took.size() >= kMaxLearnt) continue;  // each is checked at every node
      nogoodStart_.push_back(static_cast<int>(nogoods_.size()));
      nogoods_.insert(nogoods_.end(), took.begin(), took.end());
      nogoods_.push_back({d.cell, d.digit});
    }
  }

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

  // The cell that failed last while it still has a choice, or else the cell with the
  // least candidates per weight of the constraints on it (lines and signs that failed
  // before weigh more); -1 when every cell is fixed. The first found wins ties, so the
  // order depends on nothing but the grid.
  int Choose(const Domains& dom) {
    if (conflict_ >= 0) {
      if (masks::Count(dom[static_cast<size_t>(conflict_)]) >= 2) return conflict_;
      conflict_ = -1;
    }
    std::array<std::uint32_t, kMaxCells> weight{};
    for (int c = 0; c < n_ * n_; ++c) {
      weight[static_cast<size_t>(c)] =
          2 + lineWeight_[rowOf_[static_cast<size_t>(c)]] + lineWeight_[columnOf_[static_cast<size_t>(c)]];
    }
    for (int r = 0; r < relations_; ++r) {
      const Relation rel = relation_[static_cast<size_t>(r)];
      if (masks::IsSingle(dom[rel.greater]) || masks::IsSingle(dom[rel.smaller])) continue;
      const std::uint32_t w = 1 + relationWeight_[static_cast<size_t>(r)];
      weight[rel.greater] += w;
      weight[rel.smaller] += w;
    }
    int best = -1;
    std::uint64_t bestCount = 0;
    std::uint64_t bestWeight = 1;
    for (int c = 0; c < n_ * n_; ++c) {
      const int count = masks::Count(dom[static_cast<size_t>(c)]);
      if (count < 2) continue;
      const std::uint64_t w = weight[static_cast<size_t>(c)];
      // count / w < bestCount / bestWeight, without division.
      if (best < 0 || static_cast<std::uint64_t>(count) * bestWeight < bestCount * w) {
        best = c;
        bestCount = static_cast<std::uint64_t>(count);
        bestWeight = w;
      }
    }
    return best;
  }

  // What to look at again after `cell` lost the digits `removed`.
  Work ChangedWork(int cell, DigitMask removed) const {
    Work work;
    Changed(cell, removed, work);
    return work;
  }

  void Changed(int cell, DigitMask removed, Work& work) const {
    const std::uint64_t lines =
        (std::uint64_t{1} << rowOf_[static_cast<size_t>(cell)]) | (std::uint64_t{1} << columnOf_[static_cast<size_t>(cell)]);
    work.passes |= lines << Work::kSingles;
    if (strong_) work.passes |= lines << Work::kLine | static_cast<std::uint64_t>(removed >> 1) << Work::kDigit;
    for (int i = firstRelation_[static_cast<size_t>(cell)]; i < firstRelation_[static_cast<size_t>(cell) + 1]; ++i) {
      work.AddSign(relationsOfCell_[static_cast<size_t>(i)]);
    }
  }

  // Constraints that fail often are the ones to settle first: the branching prefers
  // cells under heavily weighted lines and signs.
  static bool Failed(std::uint32_t& weight) {
    ++weight;
    return false;
  }

  // Narrows the domains until nothing changes; false on a contradiction. Only the lines
  // and signs of cells that changed are looked at again, the cheap reasoning first, so
  // that a costly pass sees a line once after a cascade of singles rather than at
  // every step.
  bool Propagate(Domains& dom, Work& work) {
    for (;;) {
      for (int r = work.TakeSign(); r >= 0; r = work.TakeSign()) {
        const Relation rel = relation_[static_cast<size_t>(r)];
        DigitMask& g = dom[rel.greater];
        DigitMask& s = dom[rel.smaller];
        if (g == 0 || s == 0) return Failed(relationWeight_[static_cast<size_t>(r)]);
        const DigitMask ng = g & masks::Above(masks::Lowest(s));
        const DigitMask ns = s & masks::Below(masks::Highest(g));
        if (ng == 0 || ns == 0) return Failed(relationWeight_[static_cast<size_t>(r)]);
        if (ng != g) {
          const DigitMask removed = static_cast<DigitMask>(g & ~ng);
          g = ng;
          Changed(rel.greater, removed, work);
        }
        if (ns != s) {
          const DigitMask removed = static_cast<DigitMask>(s & ~ns);
          s = ns;
          Changed(rel.smaller, removed, work);
        }
      }
      if (work.passes == 0) {
        const int learnt = ApplyNogoods(dom, work);
        if (learnt < 0) return false;
        if (learnt == 0) return true;
        continue;
      }
      const int bit = std::countr_zero(work.passes);
      work.passes &= work.passes - 1;
      if (bit >= Work::kDigit) {
        if (!DigitPass(dom, bit - Work::kDigit + 1, work)) return false;
        continue;
      }
      const bool full = bit >= Work::kLine;
      const int l = full ? bit - Work::kLine : bit;
      const LineCells& cells = line_[static_cast<size_t>(l)];
      // Filled one by one, not copied whole: a block read of fresh narrow writes stalls.
      LineMasks m{};
      LineMasks before{};
      for (int i = 0; i < n_; ++i) {
        const DigitMask v = dom[cells[static_cast<size_t>(i)]];
        m[static_cast<size_t>(i)] = v;
        before[static_cast<size_t>(i)] = v;
      }
      int changed;
      if (!full) {
        changed = Singles(m);
      } else if ((orderedLines_ >> l & 1u) != 0) {
        changed = OrderedLine::Filter(m, n_, lineBelow_[static_cast<size_t>(l)]);
      } else {
        changed = KeepMatched(m, n_);
      }
      if (changed < 0) return Failed(lineWeight_[static_cast<size_t>(l)]);
      for (int i = 0; i < n_; ++i) {
        if ((changed >> i & 1) == 0) continue;
        dom[cells[static_cast<size_t>(i)]] = m[static_cast<size_t>(i)];
        Changed(cells[static_cast<size_t>(i)],
                static_cast<DigitMask>(before[static_cast<size_t>(i)] & ~m[static_cast<size_t>(i)]), work);
      }
      // The full pass leaves its own line settled, singles included.
      if (full) work.passes &= ~(std::uint64_t{1} << bit | std::uint64_t{1} << l);
    }
  }

  // Fixed digits leave the line's other cells, and a digit with one place left goes
  // there. Returns the changed cells as the full passes do.
  int Singles(LineMasks& m) const {
    DigitMask fixed = 0;
    DigitMask seen = 0;
    DigitMask twice = 0;
    for (int i = 0; i < n_; ++i) {
      const DigitMask v = m[static_cast<size_t>(i)];
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
      DigitMask& v = m[static_cast<size_t>(i)];
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

  // A digit takes one place in every row, each in another column: it keeps only the
  // places some such arrangement uses. The rows and columns lines see cannot tell.
  bool DigitPass(Domains& dom, int digit, Work& work) {
    LineMasks columns{};  // per row, the columns (as bits 1..n) where the digit may go
    LineMasks before{};
    for (int r = 0; r < n_; ++r) {
      DigitMask cols = 0;
      for (int c = 0; c < n_; ++c) {
        if ((dom[static_cast<size_t>(r * n_ + c)] >> digit & 1) != 0) cols |= masks::Bit(c + 1);
      }
      columns[static_cast<size_t>(r)] = cols;
      before[static_cast<size_t>(r)] = cols;
    }
    const int changed = KeepMatched(columns, n_);
    if (changed < 0) return false;
    for (int r = 0; r < n_; ++r) {
      if ((changed >> r & 1) == 0) continue;
      masks::ForEachDigit(static_cast<DigitMask>(before[static_cast<size_t>(r)] & ~columns[static_cast<size_t>(r)]),
                          [&](int column) {
                            const int cell = r * n_ + column - 1;
                            dom[static_cast<size_t>(cell)] = static_cast<DigitMask>(dom[static_cast<size_t>(cell)] & ~masks::Bit(digit));
                            Changed(cell, masks::Bit(digit), work);
                          });
    }
    work.passes &= ~(std::uint64_t{1} << (Work::kDigit + digit - 1));
    return true;
  }

  // Each recorded combination of decisions may not all hold: with all but one holding,
  // the last is denied. Returns -1 when one holds entirely, 1 when a digit was taken
  // away, 0 when nothing changed.
  int ApplyNogoods(Domains& dom, Work& work) const {
    int result = 0;
    const int count = static_cast<int>(nogoodStart_.size());
    for (int g = 0; g < count; ++g) {
      const size_t begin = static_cast<size_t>(nogoodStart_[static_cast<size_t>(g)]);
      const size_t end = g + 1 < count ? static_cast<size_t>(nogoodStart_[static_cast<size_t>(g) + 1]) : nogoods_.size();
      int openCell = -1;
      int openDigit = 0;
      bool settled = false;  // some decision can no longer hold, or two are still open
      for (size_t i = begin; i < end && !settled; ++i) {
        const auto [cell, digit] = nogoods_[i];
        const DigitMask v = dom[cell];
        if ((v >> digit & 1) == 0) {
          settled = true;
        } else if (v != masks::Bit(digit)) {
          settled = openCell >= 0;
          openCell = cell;
          openDigit = digit;
        }
      }
      if (settled) continue;
      if (openCell < 0) return -1;
      dom[static_cast<size_t>(openCell)] = static_cast<DigitMask>(dom[static_cast<size_t>(openCell)] & ~masks::Bit(openDigit));
      Changed(openCell, masks::Bit(openDigit), work);
      result = 1;
    }
    return result;
  }

  int n_;
  SearchOptions options_;
  SearchTuning tuning_;
  std::chrono::steady_clock::time_point started_;
  std::array<LineCells, kMaxLines> line_{};
  std::array<std::uint8_t, kMaxCells> rowOf_{};     // each cell's row line
  std::array<std::uint8_t, kMaxCells> columnOf_{};  // and column line
  std::array<Relation, kMaxRelations> relation_{};
  std::array<std::uint32_t, kMaxRelations> relationWeight_{};
  std::array<std::uint32_t, kMaxLines> lineWeight_{};
  // The signs on each cell: relationsOfCell_[firstRelation_[c] .. firstRelation_[c + 1]).
  std::array<int, kMaxCells + 1> firstRelation_{};
  std::array<std::uint8_t, kMaxRelations * 2> relationsOfCell_{};
  int relations_ = 0;
  // The full reasoning: per line and position, the positions that must be smaller.
  bool strong_ = false;
  std::array<std::array<std::uint16_t, kMaxGridSize>, kMaxLines> lineBelow_{};
  std::uint32_t orderedLines_ = 0;
  // Restarts and what they learnt: digits no solution gives a cell, and combinations
  // of cell digits no solution has (nogoods_[nogoodStart_[g] ..] for combination g).
  int run_ = 0;
  long long cutoff_ = kNoCutoff;
  long long runNodes_ = 0;
  int conflict_ = -1;  // the cell whose decision failed last
  bool restarting_ = false;
  std::vector<Decision> path_;
  std::vector<std::pair<std::uint8_t, std::uint8_t>> units_;
  std::vector<std::pair<std::uint8_t, std::uint8_t>> nogoods_;
  std::vector<int> nogoodStart_;
  bool stopped_ = false;
  SolutionCount result_;
  Domains first_{};
};

}  // namespace

SolutionCount CountSolutions(const PuzzleModel& model, const SearchOptions& options, const SearchTuning& tuning) {
  const int n = model.GridSize;
  Search search(n, options, tuning);
  Domains dom{};
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      dom[static_cast<size_t>((i - 1) * n + (j - 1))] = CellMask(model.PosText[CellPosition(model, i, j)], n);
    }
  }
  ForEachSign(model, [&](int greater, int smaller) { search.AddRelation(greater, smaller); });

  search.Run(dom);
  SolutionCount result = search.result();
  if (result.count > 0) {
    result.first.resize(static_cast<size_t>(model.LastPosition) + 1);
    for (int k = 0; k <= model.LastPosition; ++k) {
      const PositionKind kind = KindOf(model, k);
      if (kind == PositionKind::Cell) {
        const DigitMask m = search.first()[static_cast<size_t>(CellIndex(model, k))];
        result.first[static_cast<size_t>(k)] = std::string(1, static_cast<char>('0' + masks::Lowest(m)));
      } else if (kind != PositionKind::Corner) {
        result.first[static_cast<size_t>(k)] = model.PosText[k];
      }
    }
  }
  return result;
}

SolutionCount CountSolutions(int n, std::span<const DigitMask> cells, std::span<const std::pair<int, int>> signs,
                             const SearchOptions& options, const SearchTuning& tuning) {
  Search search(n, options, tuning);
  Domains dom{};
  for (size_t c = 0; c < cells.size() && c < dom.size(); ++c) dom[c] = cells[c];
  for (const auto& [greater, smaller] : signs) search.AddRelation(greater, smaller);
  search.Run(dom);
  return search.result();
}

SolutionCount CountSolutions(int n, std::span<const DigitMask> cells, std::span<const std::pair<int, int>> signs,
                             const SearchOptions& options, std::span<DigitMask> first) {
  Search search(n, options, SearchTuning{});
  Domains dom{};
  for (size_t c = 0; c < cells.size() && c < dom.size(); ++c) dom[c] = cells[c];
  for (const auto& [greater, smaller] : signs) search.AddRelation(greater, smaller);
  search.Run(dom);
  if (search.result().count > 0) {
    for (size_t c = 0; c < first.size() && c < dom.size(); ++c) first[c] = search.first()[c];
  }
  return search.result();
}

}  // namespace qm
