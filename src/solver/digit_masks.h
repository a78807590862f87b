// Digit sets as bit masks: bit d set means digit d (1..9) is still possible. Shared by
// the quiet mask sweeps and the exact search, so both read the same way.
#pragma once

#include <bit>
#include <cstdint>

namespace qm::masks {

using DigitMask = std::uint16_t;

constexpr DigitMask Bit(int d) { return static_cast<DigitMask>(1u << d); }
// Digits 1..n.
constexpr DigitMask Full(int n) { return static_cast<DigitMask>(((1u << n) - 1u) << 1); }
// Digits lo..hi (empty when hi < lo).
constexpr DigitMask Range(int lo, int hi) {
  return hi < lo ? DigitMask{0} : static_cast<DigitMask>(((1u << (hi - lo + 1)) - 1u) << lo);
}
// Digits greater than d, and smaller than d.
constexpr DigitMask Above(int d) { return static_cast<DigitMask>(~((2u << d) - 1u)); }
constexpr DigitMask Below(int d) { return static_cast<DigitMask>((1u << d) - 1u); }

// A table, not std::popcount: without -mpopcnt that is a library call per count.
inline constexpr auto kCountTable = [] {
  struct Table {
    std::uint8_t count[512];
  } table{};
  for (int i = 0; i < 512; ++i) table.count[i] = static_cast<std::uint8_t>(std::popcount(static_cast<unsigned>(i)));
  return table;
}();
// Bits 1..9 only, as digit sets hold.
constexpr int Count(DigitMask m) { return kCountTable.count[(m >> 1) & 511]; }
// Not std::has_single_bit either: it counts bits.
constexpr bool IsSingle(DigitMask m) { return m != 0 && (m & (m - 1)) == 0; }
// The least and the greatest digit of a non-empty set.
constexpr int Lowest(DigitMask m) { return std::countr_zero(m); }
constexpr int Highest(DigitMask m) { return 15 - std::countl_zero(m); }
constexpr DigitMask LowestBit(DigitMask m) { return static_cast<DigitMask>(m & -m); }

// Calls f(d) for every digit of the set, smallest first.
template <class F>
constexpr void ForEachDigit(DigitMask m, F&& f) {
  while (m != 0) {
    f(Lowest(m));
    m = static_cast<DigitMask>(m & (m - 1));
  }
}

}  // namespace qm::masks
