#include "solver/line_matching.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qm {

namespace {

using masks::DigitMask;
using std::size_t;

// Finds a digit for cell i, moving earlier cells to other digits where needed.
bool Augment(const LineMasks& m, int i, DigitMask& visited, std::array<int, kMaxGridSize + 1>& cellOf,
             std::array<int, kMaxGridSize>& digitOf) {
  DigitMask options = static_cast<DigitMask>(m[static_cast<size_t>(i)] & ~visited);
  while (options != 0) {
    const int d = masks::Lowest(options);
    options = static_cast<DigitMask>(options & (options - 1));
    visited |= masks::Bit(d);
    int& holder = cellOf[static_cast<size_t>(d)];
    if (holder < 0 || Augment(m, holder, visited, cellOf, digitOf)) {
      holder = i;
      digitOf[static_cast<size_t>(i)] = d;
      return true;
    }
  }
  return false;
}

// Digit bits 1..9 spread to one four-bit counter each, so that adding cells counts, for
// every digit at once, the cells where it may go.
constexpr auto kSpread = [] {
  std::array<std::uint64_t, 512> spread{};
  for (unsigned v = 0; v < 512; ++v) {
    for (unsigned d = 0; d < 9; ++d) spread[v] |= static_cast<std::uint64_t>(v >> d & 1u) << (4 * d);
  }
  return spread;
}();

constexpr int Nibble(std::uint64_t counters, int i) { return static_cast<int>(counters >> (4 * i) & 15u); }

// KeepMatched without asking counting first.
int KeepMatchedByMatching(LineMasks& m, int n) {
  std::array<int, kMaxGridSize + 1> cellOf{};  // digit -> matched cell, or -1
  std::array<int, kMaxGridSize> digitOf{};     // cell -> matched digit
  cellOf.fill(-1);
  // Most cells find a free digit at once; only the rest need augmenting paths.
  DigitMask used = 0;
  unsigned unmatched = 0;
  for (int i = 0; i < n; ++i) {
    const DigitMask free = static_cast<DigitMask>(m[static_cast<size_t>(i)] & ~used);
    if (free == 0) {
      unmatched |= 1u << i;
      continue;
    }
    const int d = masks::Lowest(free);
    used |= masks::Bit(d);
    cellOf[static_cast<size_t>(d)] = i;
    digitOf[static_cast<size_t>(i)] = d;
  }
  for (; unmatched != 0; unmatched &= unmatched - 1) {
    DigitMask visited = 0;
    if (!Augment(m, std::countr_zero(unmatched), visited, cellOf, digitOf)) return -1;
  }
  // Cell i may take the digit of each cell in next[i], which must then move; a pair is in
  // some assignment exactly when that move lies on a cycle, so when both cells are in one
  // strongly connected part. Each part is what its first cell reaches and is reached by.
  std::array<unsigned, kMaxGridSize> next{};
  std::array<unsigned, kMaxGridSize> back{};
  for (int i = 0; i < n; ++i) {
    masks::ForEachDigit(m[static_cast<size_t>(i)], [&](int d) {
      const int j = cellOf[static_cast<size_t>(d)];
      next[static_cast<size_t>(i)] |= 1u << j;
      back[static_cast<size_t>(j)] |= 1u << i;
    });
  }
  auto closure = [](const std::array<unsigned, kMaxGridSize>& step, unsigned from, unsigned within) {
    unsigned all = from;
    for (unsigned frontier = from; frontier != 0;) {
      unsigned reached = 0;
      for (; frontier != 0; frontier &= frontier - 1) reached |= step[static_cast<size_t>(std::countr_zero(frontier))];
      frontier = reached & within & ~all;
      all |= frontier;
    }
    return all;
  };
  int changed = 0;
  for (unsigned left = (1u << n) - 1u; left != 0;) {
    const unsigned start = left & (0u - left);
    const unsigned part = closure(next, start, left) & closure(back, start, left);
    left &= ~part;
    DigitMask digits = 0;
    for (unsigned bits = part; bits != 0; bits &= bits - 1) digits |= masks::Bit(digitOf[static_cast<size_t>(std::countr_zero(bits))]);
    for (unsigned bits = part; bits != 0; bits &= bits - 1) {
      const int i = std::countr_zero(bits);
      DigitMask& v = m[static_cast<size_t>(i)];
      if ((v & ~digits) != 0) {
        v = static_cast<DigitMask>(v & digits);
        changed |= 1 << i;
      }
    }
  }
  return changed;
}

}  // namespace

bool MatchedByCounting(const LineMasks& m, int n) {
  // A cell with one digit no other cell may take stands apart. Among the other k cells, j
  // of them confined to j digits need j cells with at most j candidates, and leave k - j
  // digits to the other k - j cells, each digit in at most k - j of them. Where no j
  // allows both, any j cells may take more than j digits, and then every candidate lies
  // in some assignment (Hall). Most settled lines pass here, in a fraction of the time.
  DigitMask all = 0;
  DigitMask twice = 0;
  DigitMask singles = 0;
  int k = 0;
  std::uint64_t cellsWith = 0;  // counter c: cells with c candidates
  std::uint64_t places = 0;     // counter d - 1: the cells where digit d may go
  for (int i = 0; i < n; ++i) {
    const DigitMask v = m[static_cast<size_t>(i)];
    twice |= static_cast<DigitMask>(all & v);
    all |= v;
    if (masks::IsSingle(v)) {
      singles |= v;
      continue;
    }
    ++k;
    cellsWith += std::uint64_t{1} << (4 * masks::Count(v));
    places += kSpread[static_cast<size_t>(v >> 1 & 511u)];
  }
  if (all != masks::Full(n) || (singles & twice) != 0 || (cellsWith & 15u) != 0) return false;
  std::uint64_t digitsWith = 0;  // counter p: digits with p places
  masks::ForEachDigit(static_cast<DigitMask>(all & ~singles),
                      [&](int d) { digitsWith += std::uint64_t{1} << (4 * Nibble(places, d - 1)); });
  // Counter i of the product is the sum of counters 0..i; no sum passes nine.
  constexpr std::uint64_t kSums = 0x1111111111111111ull;
  const std::uint64_t cellsWithin = cellsWith * kSums;
  const std::uint64_t digitsWithin = digitsWith * kSums;
  for (int j = 2; j < k; ++j) {
    if (Nibble(cellsWithin, j) >= j && Nibble(digitsWithin, k - j) >= k - j) return false;
  }
  return true;
}

int KeepMatched(LineMasks& m, int n) { return MatchedByCounting(m, n) ? 0 : KeepMatchedByMatching(m, n); }

bool AllMatched(const LineMasks& m, int n) {
  if (MatchedByCounting(m, n)) return true;
  LineMasks kept = m;
  return KeepMatchedByMatching(kept, n) == 0;
}

}  // namespace qm
