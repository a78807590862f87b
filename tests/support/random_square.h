// A random Latin square (rows, columns and digits of the cyclic square permuted), row
// major, digits 1..n: the solution behind random test grids and benchmark inputs.
#pragma once

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace qm::test {

inline std::vector<int> RandomSquare(int n, std::mt19937& random) {
  std::vector<int> rows(static_cast<std::size_t>(n));
  std::iota(rows.begin(), rows.end(), 0);
  std::vector<int> cols = rows;
  std::vector<int> digits(rows.size());
  std::iota(digits.begin(), digits.end(), 1);
  std::shuffle(rows.begin(), rows.end(), random);
  std::shuffle(cols.begin(), cols.end(), random);
  std::shuffle(digits.begin(), digits.end(), random);
  std::vector<int> square(static_cast<std::size_t>(n * n));
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      square[static_cast<std::size_t>(i * n + j)] =
          digits[static_cast<std::size_t>((rows[static_cast<std::size_t>(i)] + cols[static_cast<std::size_t>(j)]) % n)];
    }
  }
  return square;
}

}  // namespace qm::test
