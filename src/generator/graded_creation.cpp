#include "generator/graded_creation.h"

#include <algorithm>
#include <array>
#include <optional>
#include <bitset>
#include <random>
#include <tuple>
#include <utility>

#include "reasoning/ladder.h"
#include "solver/digit_masks.h"
#include "solver/solution_search.h"

namespace qm {

namespace {

using masks::DigitMask;
constexpr int kCells = kMaxGridSize * kMaxGridSize;
// Givens by index: the clue of cell c is c, the sign right of c is n*n + c, the sign
// below c is 2*n*n + c (for 9x9 the last ones lie within 3 * 81).
constexpr int kItems = 3 * kCells;
using Items = std::bitset<kItems>;

// Second solutions met while removing givens, each as the set of givens it breaks. Such a
// solution refutes removing any givens that cover what it breaks among those still
// standing, so a removal it answers needs no search.
class Refutations {
 public:
  bool Refutes(const Items& standing) const {
    for (const Items& broken : broken_) {
      if ((broken & standing).none()) return true;
    }
    return false;
  }
  void Add(const Items& broken) { broken_.push_back(broken); }

 private:
  std::vector<Items> broken_;
};

// Draws that come out the same on every standard library: the stream decides the puzzle.
class Draws {
 public:
  explicit Draws(std::uint64_t seed) : engine_(seed) {}
  int Below(int m) { return static_cast<int>(((engine_() >> 32) * static_cast<std::uint64_t>(m)) >> 32); }
  template <class T>
  void Shuffle(std::vector<T>& list) {
    for (std::size_t i = list.size(); i > 1; --i) std::swap(list[i - 1], list[static_cast<std::size_t>(Below(static_cast<int>(i)))]);
  }

 private:
  std::mt19937_64 engine_;
};

// A random Latin square, filled cell by cell with the digits in random order; a fill that
// wanders too long starts over.
std::array<int, kCells> RandomSquare(int n, Draws& draws) {
  std::array<int, kCells> square{};
  for (;;) {
    std::array<DigitMask, kMaxGridSize> rows{};
    std::array<DigitMask, kMaxGridSize> columns{};
    long budget = 4000;
    auto fill = [&](auto&& self, int cell) -> bool {
      if (cell == n * n) return true;
      if (--budget < 0) return false;
      const auto r = static_cast<std::size_t>(cell / n);
      const auto c = static_cast<std::size_t>(cell % n);
      std::array<int, kMaxGridSize> digits{};
      int count = 0;
      masks::ForEachDigit(static_cast<DigitMask>(masks::Full(n) & ~rows[r] & ~columns[c]),
                          [&](int d) { digits[static_cast<std::size_t>(count++)] = d; });
      for (int i = count; i > 1; --i) std::swap(digits[static_cast<std::size_t>(i - 1)], digits[static_cast<std::size_t>(draws.Below(i))]);
      for (int i = 0; i < count; ++i) {
        const int d = digits[static_cast<std::size_t>(i)];
        square[static_cast<std::size_t>(cell)] = d;
        rows[r] |= masks::Bit(d);
        columns[c] |= masks::Bit(d);
        if (self(self, cell + 1)) return true;
        rows[r] &= static_cast<DigitMask>(~masks::Bit(d));
        columns[c] &= static_cast<DigitMask>(~masks::Bit(d));
        if (budget < 0) return false;
      }
      return false;
    };
    if (fill(fill, 0)) return square;
  }
}

// One try's puzzle: the solution and which givens stand.
class Givens {
 public:
  Givens(int n, const std::array<int, kCells>& solution) : n_(n), nn_(n * n), solution_(solution) {}

  int n() const { return n_; }
  int Solution(int cell) const { return solution_[static_cast<std::size_t>(cell)]; }
  bool On(int item) const { return on_[static_cast<std::size_t>(item)]; }
  void Set(int item, bool on) { on_[static_cast<std::size_t>(item)] = on; }
  const Items& Standing() const { return on_; }
  bool operator==(const Givens& other) const { return on_ == other.on_; }

  bool IsClue(int item) const { return item < nn_; }
  bool Exists(int item) const {
    if (item < nn_) return true;
    const int cell = item % nn_;
    return item < 2 * nn_ ? cell % n_ < n_ - 1 : cell / n_ < n_ - 1;
  }
  // The two cells of a sign, greater first.
  std::pair<int, int> SignCells(int item) const {
    const int cell = item % nn_;
    const int other = item < 2 * nn_ ? cell + 1 : cell + n_;
    return Solution(cell) > Solution(other) ? std::pair{cell, other} : std::pair{other, cell};
  }
  int Count(bool clues) const {
    int count = 0;
    for (int item = clues ? 0 : nn_; item < (clues ? nn_ : 3 * nn_); ++item) count += On(item) && Exists(item) ? 1 : 0;
    return count;
  }

  // Is there a solution that breaks one of `broken` (given or not) while every other
  // standing given holds? Asked of a unique puzzle with `broken` just removed, a yes
  // means the removal let a second solution in.
  bool SolutionBreaking(int item, Refutations* refutations = nullptr) const {
    // Fixed room rather than a vector: this runs tens of thousands of times a second.
    std::array<DigitMask, kCells> cells{};
    std::array<std::pair<int, int>, 2 * kCells> signList{};
    std::size_t count = 0;
    for (int c = 0; c < nn_; ++c) {
      cells[static_cast<std::size_t>(c)] = On(c) ? masks::Bit(Solution(c)) : masks::Full(n_);
    }
    for (int s = nn_; s < 3 * nn_; ++s) {
      if (On(s) && Exists(s)) signList[count++] = SignCells(s);
    }
    if (IsClue(item)) {
      cells[static_cast<std::size_t>(item)] = static_cast<DigitMask>(masks::Full(n_) & ~masks::Bit(Solution(item)));
    } else {
      const auto [greater, smaller] = SignCells(item);
      signList[count++] = {smaller, greater};
    }
    const auto signs = std::span<const std::pair<int, int>>(signList.data(), count);
    SearchOptions options;
    options.limit = 1;
    const auto span = std::span<const DigitMask>(cells.data(), static_cast<std::size_t>(nn_));
    if (refutations == nullptr) return CountSolutions(n_, span, signs, options).count > 0;
    std::array<DigitMask, kCells> other{};
    if (CountSolutions(n_, span, signs, options, std::span<DigitMask>(other.data(), static_cast<std::size_t>(nn_))).count == 0) {
      return false;
    }
    refutations->Add(Breaks(other));
    return true;
  }

  // The givens (standing or not) a grid of single digits breaks.
  Items Breaks(const std::array<DigitMask, kCells>& other) const {
    Items broken;
    auto digit = [&](int cell) { return masks::Lowest(other[static_cast<std::size_t>(cell)]); };
    for (int c = 0; c < nn_; ++c) {
      if (digit(c) != Solution(c)) broken.set(static_cast<std::size_t>(c));
    }
    for (int s = nn_; s < 3 * nn_; ++s) {
      if (!Exists(s)) continue;
      const auto [greater, smaller] = SignCells(s);
      if (digit(greater) < digit(smaller)) broken.set(static_cast<std::size_t>(s));
    }
    return broken;
  }

  bool Unique() const {
    std::array<DigitMask, kCells> cells{};
    std::vector<std::pair<int, int>> signs;
    for (int c = 0; c < nn_; ++c) {
      cells[static_cast<std::size_t>(c)] = On(c) ? masks::Bit(Solution(c)) : masks::Full(n_);
    }
    for (int s = nn_; s < 3 * nn_; ++s) {
      if (On(s) && Exists(s)) signs.push_back(SignCells(s));
    }
    SearchOptions options;
    options.limit = 2;
    return CountSolutions(n_, std::span<const DigitMask>(cells.data(), static_cast<std::size_t>(nn_)), signs, options)
               .count == 1;
  }

  // Removes the orbit from a unique puzzle when it stays unique; otherwise leaves it.
  // Second solutions found go into `refutations`, which also answers first when it can.
  bool TryRemove(const std::vector<int>& orbit, Refutations* refutations = nullptr) {
    for (const int item : orbit) Set(item, false);
    if (refutations != nullptr && refutations->Refutes(on_)) {
      for (const int item : orbit) Set(item, true);
      return false;
    }
    // A second solution breaks the first given of the orbit, or keeps it and breaks
    // the second.
    bool second = false;
    for (std::size_t i = 0; i < orbit.size() && !second; ++i) {
      second = SolutionBreaking(orbit[i], refutations);
      Set(orbit[i], true);  // later ones may assume it holds
    }
    for (const int item : orbit) Set(item, second);
    if (second) return false;
    for (const int item : orbit) Set(item, false);
    return true;
  }

  std::pair<int, double> Grade() const {
    const reasoning::Explanation explained = reasoning::Explain(Grid());
    return {explained.grade.level, explained.grade.score};
  }

  // Whether the ladder solves the puzzle without a rung above `top`: it stops at the
  // first harder step instead of working on through the hard part.
  bool GradeAtMost(int top) const {
    reasoning::ExplainOptions options;
    options.stopAbove = top;
    return reasoning::Explain(Grid(), options).solved;
  }

  reasoning::Grid Grid() const {
    reasoning::Grid grid;
    grid.n = n_;
    for (int c = 0; c < nn_; ++c) {
      grid.cand[static_cast<std::size_t>(c)] = On(c) ? masks::Bit(Solution(c)) : masks::Full(n_);
      grid.placed[static_cast<std::size_t>(c)] = On(c);
    }
    for (int c = 0; c < nn_; ++c) {
      if (!On(c)) continue;
      for (int i = 0; i < n_; ++i) {
        for (const int peer : {c / n_ * n_ + i, i * n_ + c % n_}) {
          if (!On(peer)) grid.cand[static_cast<std::size_t>(peer)] &= static_cast<DigitMask>(~masks::Bit(Solution(c)));
        }
      }
    }
    // Signs in the order the layout lists them, as the grade of a saved puzzle reads them:
    // a row's signs, then those below it.
    for (int r = 0; r < n_; ++r) {
      for (const int first : {nn_, 2 * nn_}) {
        for (int s = first + r * n_; s < first + (r + 1) * n_; ++s) {
          if (On(s) && Exists(s)) {
            const auto [greater, smaller] = SignCells(s);
            grid.AddSign(greater, smaller);
          }
        }
      }
    }
    return grid;
  }

  GradedPuzzle Puzzle() const {
    GradedPuzzle puzzle;
    puzzle.n = n_;
    const auto cells = static_cast<std::size_t>(nn_);
    puzzle.solution.assign(solution_.begin(), solution_.begin() + nn_);
    puzzle.clues.assign(cells, 0);
    puzzle.right.assign(cells, 0);
    puzzle.below.assign(cells, 0);
    for (int c = 0; c < nn_; ++c) {
      const auto i = static_cast<std::size_t>(c);
      if (On(c)) puzzle.clues[i] = Solution(c);
      if (Exists(nn_ + c) && On(nn_ + c)) puzzle.right[i] = Solution(c) < Solution(c + 1) ? '<' : '>';
      if (Exists(2 * nn_ + c) && On(2 * nn_ + c)) puzzle.below[i] = Solution(c) < Solution(c + n_) ? '^' : 'v';
    }
    return puzzle;
  }

 private:
  int n_;
  int nn_;
  std::array<int, kCells> solution_;
  Items on_;
};

// The given a symmetric pattern pairs with `item`.
int Partner(int n, int item, GradedSymmetry symmetry) {
  if (symmetry == GradedSymmetry::None) return item;
  const int nn = n * n;
  const int kind = item / nn;
  const int r = item % nn / n;
  const int c = item % n;
  const bool rotate = symmetry == GradedSymmetry::Rotate;
  int r2 = rotate ? n - 1 - r : r;
  int c2 = n - 1 - c;
  if (kind == 1) c2 -= 1;             // a sign right of a cell pairs with the one right of the partner's left neighbour
  if (kind == 2 && rotate) r2 -= 1;   // a sign below pairs with the one below the cell above the partner
  return kind * nn + r2 * n + c2;
}

// Removable givens grouped by symmetry, each group once.
std::vector<std::vector<int>> Orbits(const Givens& givens, GradedSymmetry symmetry, bool clues, bool signs) {
  const int n = givens.n();
  std::vector<std::vector<int>> orbits;
  for (int item = 0; item < 3 * n * n; ++item) {
    if (!givens.Exists(item) || (givens.IsClue(item) ? !clues : !signs)) continue;
    const int partner = Partner(n, item, symmetry);
    if (partner < item) continue;
    orbits.push_back(partner == item ? std::vector<int>{item} : std::vector<int>{item, partner});
  }
  return orbits;
}

bool FixesClues(const GradedClueRule& rule) {
  return rule.kind == GradedClueRule::Kind::None || rule.kind == GradedClueRule::Kind::Fixed ||
         rule.kind == GradedClueRule::Kind::Exactly;
}

bool SymmetricCellExists(int n, GradedSymmetry symmetry) { return symmetry == GradedSymmetry::None || n % 2 == 1; }

std::string SymmetryName(GradedSymmetry symmetry) {
  return symmetry == GradedSymmetry::Rotate ? "half-turn" : "mirror";
}

// Places the clues a fixing rule asks for; false when the try cannot honour it.
bool PlaceFixedClues(Givens& givens, std::array<int, kCells>& solution, const GradedOptions& options, Draws& draws) {
  const int n = givens.n();
  const GradedClueRule& rule = options.clues;
  if (rule.kind == GradedClueRule::Kind::Fixed) {
    // A cell of its own partner holds the one clue; the digits are relabelled to put D there.
    std::vector<int> cells;
    for (int c = 0; c < n * n; ++c) {
      if (Partner(n, c, options.symmetry) == c) cells.push_back(c);
    }
    if (cells.empty()) return false;
    const int cell = cells[static_cast<std::size_t>(draws.Below(static_cast<int>(cells.size())))];
    const int from = solution[static_cast<std::size_t>(cell)];
    for (int c = 0; c < n * n; ++c) {
      int& d = solution[static_cast<std::size_t>(c)];
      d = d == from ? rule.value : d == rule.value ? from : d;
    }
    givens = Givens(n, solution);
    givens.Set(cell, true);
  } else if (rule.kind == GradedClueRule::Kind::Exactly) {
    std::vector<std::vector<int>> orbits = Orbits(givens, options.symmetry, true, false);
    draws.Shuffle(orbits);
    // Pairs first while they fit; a cell of its own partner takes an odd last clue.
    std::stable_sort(orbits.begin(), orbits.end(), [](const auto& a, const auto& b) { return a.size() > b.size(); });
    int left = rule.value;
    for (const auto& orbit : orbits) {
      if (static_cast<int>(orbit.size()) > left) continue;
      for (const int item : orbit) givens.Set(item, true);
      left -= static_cast<int>(orbit.size());
    }
    if (left != 0) return false;
  }
  for (int item = n * n; item < 3 * n * n; ++item) givens.Set(item, givens.Exists(item));
  return true;
}

class Maker {
 public:
  Maker(const GradedOptions& options, std::uint64_t seed, const std::atomic<bool>* cancel)
      : options_(options), draws_(seed), cancel_(cancel) {}

  GradedResult Run() {
    GradedResult result;
    result.reason = GradedConflict(options_);
    if (!result.reason.empty()) return result;
    const int tries = options_.maxTries > 0 ? options_.maxTries : DefaultGradedTries(options_.size);
    const bool walk = options_.minimal && options_.minGrade >= reasoning::kSubsets;
    while (result.tries < tries) {
      if (Cancelled()) {
        result.cancelled = true;
        result.reason = "cancelled";
        return result;
      }
      ++result.tries;
      if (walk ? Walk(result) : Try(result)) {
        result.made = true;
        result.gradeName = reasoning::RungName(result.grade);
        return result;
      }
    }
    if (Cancelled()) {
      result.cancelled = true;
      result.reason = "cancelled";
      return result;
    }
    result.tries = tries;
    result.reason = "no puzzle graded " + RangeText() + " came in " + std::to_string(tries) + " tries";
    return result;
  }

 private:
  bool Cancelled() const { return cancel_ != nullptr && cancel_->load(std::memory_order_relaxed); }

  std::string RangeText() const {
    if (options_.minGrade == options_.maxGrade) return reasoning::RungName(options_.minGrade);
    return reasoning::RungName(options_.minGrade) + " to " + reasoning::RungName(options_.maxGrade);
  }

  bool InRange(int grade) const { return grade >= options_.minGrade && grade <= options_.maxGrade; }
  bool FloorApplies() const { return options_.maxGrade < reasoning::kSubsets; }
  bool MinimalApplies(int grade) const { return options_.minimal && grade >= reasoning::kSubsets; }

  // A try's start: a random solution with every given the reduction may take away, or
  // nothing when the clue rule cannot be met on it.
  std::optional<Givens> Start() {
    const int n = options_.size;
    std::array<int, kCells> solution = RandomSquare(n, draws_);
    Givens givens(n, solution);
    if (!FixesClues(options_.clues)) {
      // Everything given: the reduction decides what stays.
      for (int item = 0; item < 3 * n * n; ++item) givens.Set(item, givens.Exists(item));
    } else if (!PlaceFixedClues(givens, solution, options_, draws_) || !givens.Unique()) {
      return std::nullopt;
    }
    return givens;
  }

  bool Try(GradedResult& result) {
    const int n = options_.size;
    std::optional<Givens> started = Start();
    if (!started) return false;
    Givens givens = *started;
    const bool freeClues = !FixesClues(options_.clues);
    const int slots = 2 * n * (n - 1);
    const int floor = FloorApplies() ? (slots * options_.minSignsPercent + 99) / 100 : 0;

    std::vector<std::vector<int>> orbits = Orbits(givens, options_.symmetry, freeClues, true);
    draws_.Shuffle(orbits);
    Refutations refutations;
    const Givens start = givens;
    std::vector<std::size_t> removed;  // orbits removed, in order
    int signs = givens.Count(false);
    for (std::size_t o = 0; o < orbits.size(); ++o) {
      if (Cancelled()) return false;
      const auto& orbit = orbits[o];
      const int signsGone = givens.IsClue(orbit.front()) ? 0 : static_cast<int>(orbit.size());
      if (signs - signsGone < floor) continue;
      if (givens.TryRemove(orbit, &refutations)) {
        removed.push_back(o);
        signs -= signsGone;
      }
    }
    auto [grade, score] = givens.Grade();
    if (grade > options_.maxGrade) {
      // Too hard: go back to the last removal the range allowed, found by halving on the
      // assumption that removing givens never makes a puzzle easier, and carry on from
      // there with the grade checked at every removal.
      std::size_t good = 0;
      std::size_t bad = removed.size();
      auto replay = [&](std::size_t count) {
        Givens g = start;
        for (std::size_t i = 0; i < count; ++i) {
          for (const int item : orbits[removed[i]]) g.Set(item, false);
        }
        return g;
      };
      while (bad - good > 1) {
        const std::size_t mid = (good + bad) / 2;
        if (replay(mid).GradeAtMost(options_.maxGrade)) {
          good = mid;
        } else {
          bad = mid;
        }
      }
      const Givens edge = replay(good);
      if (!edge.GradeAtMost(options_.maxGrade)) return false;
      // From there, a few orders: a minimal puzzle in range is rare, and the edge found
      // costs more than another order from it.
      const std::size_t tooFar = good < removed.size() ? removed[good] : orbits.size();
      std::vector<std::size_t> order(orbits.size());
      for (std::size_t o = 0; o < order.size(); ++o) order[o] = o;
      constexpr int kOrders = 2;
      for (int round = 0; round < kOrders; ++round) {
        if (round > 0) draws_.Shuffle(order);
        givens = edge;
        signs = givens.Count(false);
        for (const std::size_t o : order) {
          if (Cancelled()) return false;
          const auto& orbit = orbits[o];
          if (o == tooFar || !givens.On(orbit.front())) continue;
          const int signsGone = givens.IsClue(orbit.front()) ? 0 : static_cast<int>(orbit.size());
          if (signs - signsGone < floor) continue;
          Givens trial = givens;
          if (!trial.TryRemove(orbit, &refutations) || !trial.GradeAtMost(options_.maxGrade)) continue;
          givens = trial;
          signs -= signsGone;
        }
        if (MinimalApplies(options_.minGrade) && !Minimal(givens, orbits, refutations)) continue;
        std::tie(grade, score) = givens.Grade();
        if (!InRange(grade) || (MinimalApplies(grade) && !Minimal(givens, orbits, refutations))) continue;
        return Accept(givens, grade, score, slots, signs, result);
      }
      return false;
    }
    return Accept(givens, grade, score, slots, signs, result);
  }

  // No orbit of givens can go.
  static bool Minimal(const Givens& givens, const std::vector<std::vector<int>>& orbits, Refutations& refutations) {
    for (const auto& orbit : orbits) {
      if (!givens.On(orbit.front())) continue;
      Givens trial = givens;
      if (trial.TryRemove(orbit, &refutations)) return false;
    }
    return true;
  }

  // Where every puzzle must be minimal: the plain reduction gives a minimal puzzle, and
  // minimal puzzles mostly grade harder than the middle rungs. A near miss is changed
  // rather than thrown away: one given goes back (where the ladder got stuck, when it
  // is too hard) and whatever that makes redundant goes, which is again minimal. After a
  // number of such changes without landing, the try ends and the next starts afresh.
  bool Walk(GradedResult& result) {
    const int n = options_.size;
    std::optional<Givens> started = Start();
    if (!started) return false;
    Givens givens = *started;
    const bool freeClues = !FixesClues(options_.clues);
    std::vector<std::vector<int>> orbits = Orbits(givens, options_.symmetry, freeClues, true);
    draws_.Shuffle(orbits);
    Refutations refutations;
    for (const auto& orbit : orbits) {
      if (Cancelled()) return false;
      givens.TryRemove(orbit, &refutations);
    }
    const int slots = 2 * n * (n - 1);
    std::vector<std::size_t> order(orbits.size());
    for (std::size_t o = 0; o < order.size(); ++o) order[o] = o;
    Givens kept = givens;
    reasoning::Grid keptStuck;
    bool keptStopped = false;
    double keptValue = -1;
    int stale = 0;  // changes undone in a row
    for (int step = 0; step < kWalkSteps; ++step) {
      if (Cancelled()) return false;
      reasoning::ExplainOptions explain;
      explain.stopAbove = options_.maxGrade;
      reasoning::Explanation explained = reasoning::Explain(givens.Grid(), explain);
      if (explained.solved && Accept(givens, explained.grade.level, explained.grade.score, slots, givens.Count(false), result)) {
        return true;
      }
      // A change that leaves the puzzle further off is undone: too hard, the ladder got
      // stuck earlier; too easy, it graded lower, or it overshot from too hard (the range
      // is narrow, and it is nearer from above).
      const double value = explained.stopped ? Progress(explained.final) : explained.grade.level * 1000.0 + explained.grade.score;
      if (step > 0 && (explained.stopped == keptStopped ? value < keptValue : keptStopped)) {
        if (++stale >= (keptStopped ? kStaleSteps : kStaleEasySteps)) return false;
        givens = kept;
        explained.final = keptStuck;
        explained.stopped = keptStopped;
      } else {
        stale = 0;
        kept = givens;
        keptStuck = explained.final;
        keptStopped = explained.stopped;
        keptValue = value;
      }
      // The given to put back: too hard, a clue or sign on cells the ladder left open;
      // too easy, a sign, which says less than a clue, and clues go first after it.
      const bool easier = explained.stopped;
      std::vector<std::size_t> back;
      for (std::size_t o = 0; o < orbits.size(); ++o) {
        const int item = orbits[o].front();
        if (givens.On(item)) continue;
        if (easier ? !OnOpenCells(givens, explained.final, item) : givens.IsClue(item) && freeClues) continue;
        back.push_back(o);
      }
      // One that makes some other given redundant: otherwise it goes again at once and
      // the puzzle is the same.
      draws_.Shuffle(back);
      bool changed = false;
      for (std::size_t b = 0; b < back.size() && !changed; ++b) {
        if (Cancelled()) return false;
        const std::size_t added = back[b];
        for (const int item : orbits[added]) givens.Set(item, true);
        draws_.Shuffle(order);
        if (!easier) std::partition(order.begin(), order.end(), [&](std::size_t o) { return givens.IsClue(orbits[o].front()); });
        for (const std::size_t o : order) {
          if (o != added && givens.On(orbits[o].front())) changed = givens.TryRemove(orbits[o], &refutations) || changed;
        }
        if (changed) {
          givens.TryRemove(orbits[added], &refutations);
        } else {
          for (const int item : orbits[added]) givens.Set(item, false);
        }
      }
      if (!changed) return false;
    }
    return false;
  }

  // How far the ladder got: the candidates it struck.
  static int Progress(const reasoning::Grid& grid) {
    int struck = 0;
    for (int c = 0; c < grid.n * grid.n; ++c) struck += grid.n - masks::Count(grid.cand[static_cast<std::size_t>(c)]);
    return struck;
  }

  // Whether a clue lies on a cell not placed in `grid`, or a sign between two such.
  static bool OnOpenCells(const Givens& givens, const reasoning::Grid& grid, int item) {
    auto open = [&](int cell) { return !grid.placed[static_cast<std::size_t>(cell)]; };
    if (givens.IsClue(item)) return open(item);
    const auto [greater, smaller] = givens.SignCells(item);
    return open(greater) && open(smaller);
  }

  bool Accept(const Givens& givens, int grade, double score, int slots, int signs, GradedResult& result) const {
    if (!InRange(grade)) return false;
    if (grade < reasoning::kSubsets && signs * 100 < slots * options_.minSignsPercent) return false;
    if (options_.clues.kind == GradedClueRule::Kind::Upto && givens.Count(true) > options_.clues.value) return false;
    result.puzzle = givens.Puzzle();
    result.grade = grade;
    result.score = score;
    return true;
  }

  // Measured on 7x7 and 9x9 Hard and Fiendish: longer or shorter walks made fewer
  // puzzles a second.
  static constexpr int kWalkSteps = 40;
  // Changes undone in a row before a walk gives up: from too easy it seldom comes back,
  // and giving up sooner keeps an unreachable range cheap.
  static constexpr int kStaleSteps = 16;
  static constexpr int kStaleEasySteps = 2;

  const GradedOptions& options_;
  Draws draws_;
  const std::atomic<bool>* cancel_;
};

}  // namespace

int GradedPuzzle::ClueCount() const {
  return static_cast<int>(std::count_if(clues.begin(), clues.end(), [](int d) { return d != 0; }));
}

int GradedPuzzle::SignCount() const {
  return static_cast<int>(std::count_if(right.begin(), right.end(), [](char s) { return s != 0; }) +
                          std::count_if(below.begin(), below.end(), [](char s) { return s != 0; }));
}

int DefaultGradedTries(int n) { return n <= 5 ? 4000 : 1000; }

std::string GradedConflict(const GradedOptions& options) {
  const int n = options.size;
  if (n < kMinGridSize || n > kMaxGridSize) return "the grid size must be 3..9";
  if (options.minGrade < reasoning::kSingles || options.maxGrade > reasoning::kTopRung ||
      options.minGrade > options.maxGrade) {
    return "the grade range is empty";
  }
  if (options.minSignsPercent < 0 || options.minSignsPercent > 100) return "the share of signs must be 0..100 %";
  const GradedClueRule& rule = options.clues;
  using Kind = GradedClueRule::Kind;
  if (rule.kind == Kind::None && options.maxGrade < reasoning::kSignBounds) {
    return "a puzzle without clues starts from its signs alone, so it grades " +
           reasoning::RungName(reasoning::kSignBounds) + " or harder";
  }
  if (rule.kind == Kind::Fixed && (rule.value < 1 || rule.value > n)) return "the fixed clue must be a digit 1.." + std::to_string(n);
  if (rule.kind == Kind::Fixed && !SymmetricCellExists(n, options.symmetry)) {
    return "a single clue cannot sit " + SymmetryName(options.symmetry) + "-symmetrically on an even grid";
  }
  if (rule.kind == Kind::Exactly && (rule.value < 0 || rule.value > n * n)) return "the clue count does not fit the grid";
  if (rule.kind == Kind::Exactly && rule.value % 2 == 1 && !SymmetricCellExists(n, options.symmetry)) {
    return "an odd number of clues cannot lie " + SymmetryName(options.symmetry) + "-symmetrically on an even grid";
  }
  if (rule.kind == Kind::Upto && rule.value < 0) return "the clue count does not fit the grid";
  return "";
}

GradedResult CreateGraded(const GradedOptions& options, std::uint64_t seed, const std::atomic<bool>* cancel) {
  return Maker(options, seed, cancel).Run();
}

void LoadGraded(PuzzleModel& model, const GradedPuzzle& puzzle) {
  const int n = puzzle.n;
  SetSize(model, n);
  for (int k = 0; k <= model.LastPosition; ++k) model.SolutionText[k].clear();
  for (int c = 0; c < n * n; ++c) {
    const auto i = static_cast<std::size_t>(c);
    const int k = CellPosition(model, c / n + 1, c % n + 1);
    const std::string digit(1, static_cast<char>('0' + puzzle.solution[i]));
    model.SolutionText[k] = digit;
    if (puzzle.clues[i] != 0) {
      model.PosText[k] = digit;
      model.GivenValue[k] = puzzle.clues[i];
    }
    if (c % n < n - 1) {
      model.SolutionText[model.RightOf[k]] = puzzle.solution[i] < puzzle.solution[i + 1] ? "<" : ">";
      if (puzzle.right[i] != 0) model.PosText[model.RightOf[k]] = std::string(1, puzzle.right[i]);
    }
    if (c / n < n - 1) {
      const auto lower = static_cast<std::size_t>(c + n);
      model.SolutionText[model.DownOf[k]] = puzzle.solution[i] < puzzle.solution[lower] ? "^" : "v";
      if (puzzle.below[i] != 0) model.PosText[model.DownOf[k]] = std::string(1, puzzle.below[i]);
    }
  }
  model.ClueCount = puzzle.ClueCount();
  model.ConstraintCount = puzzle.SignCount();
}

std::string CanonicalPuzzleKey(const GradedPuzzle& puzzle) {
  const int n = puzzle.n;
  const int nn = n * n;
  std::string best;
  for (int transform = 0; transform < 16; ++transform) {
    const bool transpose = (transform & 4) != 0;
    const bool flipRows = (transform & 1) != 0;
    const bool flipColumns = (transform & 2) != 0;
    const bool reverse = (transform & 8) != 0;
    auto map = [&](int cell) {
      int r = cell / n;
      int c = cell % n;
      if (transpose) std::swap(r, c);
      if (flipRows) r = n - 1 - r;
      if (flipColumns) c = n - 1 - c;
      return r * n + c;
    };
    // Clues, then per cell the relation to its right and lower neighbour: 'g' when the
    // cell is the greater, 's' when the smaller.
    std::string key(static_cast<std::size_t>(3 * nn), '.');
    auto relate = [&](int greater, int smaller) {
      if (reverse) std::swap(greater, smaller);
      const int a = map(greater);
      const int b = map(smaller);
      const int first = std::min(a, b);
      const int slot = std::max(a, b) - first == 1 ? nn + first : 2 * nn + first;
      key[static_cast<std::size_t>(slot)] = first == a ? 'g' : 's';
    };
    for (int c = 0; c < nn; ++c) {
      const auto i = static_cast<std::size_t>(c);
      if (puzzle.clues[i] != 0) {
        key[static_cast<std::size_t>(map(c))] = static_cast<char>('0' + (reverse ? n + 1 - puzzle.clues[i] : puzzle.clues[i]));
      }
      if (puzzle.right[i] != 0) puzzle.right[i] == '>' ? relate(c, c + 1) : relate(c + 1, c);
      if (puzzle.below[i] != 0) puzzle.below[i] == 'v' ? relate(c, c + n) : relate(c + n, c);
    }
    if (best.empty() || key < best) best = std::move(key);
  }
  return best;
}

namespace {

Givens GivensOf(const GradedPuzzle& puzzle) {
  std::array<int, kCells> solution{};
  std::copy(puzzle.solution.begin(), puzzle.solution.end(), solution.begin());
  Givens givens(puzzle.n, solution);
  const int nn = puzzle.n * puzzle.n;
  for (int c = 0; c < nn; ++c) {
    const auto i = static_cast<std::size_t>(c);
    givens.Set(c, puzzle.clues[i] != 0);
    givens.Set(nn + c, puzzle.right[i] != 0);
    givens.Set(2 * nn + c, puzzle.below[i] != 0);
  }
  return givens;
}

}  // namespace

bool HasOneSolution(const GradedPuzzle& puzzle) { return GivensOf(puzzle).Unique(); }

bool IsMinimalPuzzle(const GradedPuzzle& puzzle) {
  const Givens givens = GivensOf(puzzle);
  for (int item = 0; item < 3 * puzzle.n * puzzle.n; ++item) {
    if (!givens.Exists(item) || !givens.On(item)) continue;
    Givens trial = givens;
    trial.Set(item, false);
    if (trial.Unique()) return false;
  }
  return true;
}

std::pair<int, double> GradePuzzle(const GradedPuzzle& puzzle) { return GivensOf(puzzle).Grade(); }

}  // namespace qm
