// The exact search on the inputs that used to make it hang: clue-less 9x9 grids with
// random sign patterns of every density, consistent and not, and the generator's unique
// 9x9 puzzles with their clues taken away. Reports the median, p99 and worst time of a
// single CountSolutions(2), and prints the slowest input so it can be kept as a test.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include "generator/create_puzzle.h"
#include "solver/solution_search.h"
#include "support/random_square.h"

namespace {


// Input i: density i / count, signs read off a random square for even i (consistent)
// and of random direction for odd i (inconsistent once dense).
qm::PuzzleModel SignPattern(int i, int count, std::mt19937& random) {
  qm::PuzzleModel m;
  qm::SetSize(m, 9);
  const std::vector<int> square = qm::test::RandomSquare(9, random);
  const double density = static_cast<double>(i) / count;
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  auto value = [&](int k) { return square[static_cast<std::size_t>((m.RowOf[k] - 1) / 2 * 9 + (m.ColOf[k] - 1) / 2)]; };
  for (int k = 0; k <= m.LastPosition; ++k) {
    const qm::PositionKind kind = qm::KindOf(m, k);
    if (kind != qm::PositionKind::HorizontalSign && kind != qm::PositionKind::VerticalSign) continue;
    if (unit(random) >= density) continue;
    const bool horizontal = kind == qm::PositionKind::HorizontalSign;
    const int a = value(horizontal ? m.LeftOf[k] : m.UpOf[k]);
    const int b = value(horizontal ? m.RightOf[k] : m.DownOf[k]);
    const bool increasing = i % 2 == 0 ? a < b : random() % 2 == 0;
    m.PosText[k] = horizontal ? (increasing ? "<" : ">") : (increasing ? "^" : "v");
  }
  return m;
}

std::string Rows(const qm::PuzzleModel& m) {
  std::string out;
  for (int r = 1; r <= m.LayoutExtent; ++r) {
    out += "\"";
    for (int c = 1; c <= m.LayoutExtent; ++c) {
      const std::string& t = m.PosText[m.PositionOf[r][c]];
      out += t.size() == 1 ? t : ".";
    }
    out += r < m.LayoutExtent ? "\", " : "\"";
  }
  return out;
}

// Times are wall-clock, as a user waits; on a shared machine the processor time (cpu_)
// shows what the search itself spent.
void Report(benchmark::State& state, const std::vector<double>& micros, const std::vector<double>& cpuMicros,
            const std::vector<qm::PuzzleModel>& inputs, const char* what) {
  std::vector<std::size_t> order(micros.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return micros[a] < micros[b]; });
  auto at = [&](double q) { return micros[order[static_cast<std::size_t>(q * static_cast<double>(order.size() - 1))]]; };
  state.counters["median_us"] = at(0.5);
  state.counters["p99_us"] = at(0.99);
  state.counters["worst_us"] = micros[order.back()];
  state.counters["worst_cpu_us"] = *std::max_element(cpuMicros.begin(), cpuMicros.end());
  const qm::PuzzleModel& slowest = inputs[order.back()];
  const qm::SolutionCount count = qm::CountSolutions(slowest, 2);
  std::fprintf(stderr, "slowest %s (%.0f us, %lld nodes, %d solutions): {{%s}, %d},\n", what, micros[order.back()],
               count.nodes, count.count, Rows(slowest).c_str(), count.count);
}

void TimeEach(benchmark::State& state, const std::vector<qm::PuzzleModel>& inputs, const char* what) {
  std::vector<double> micros(inputs.size());
  std::vector<double> cpuMicros(inputs.size());
  std::vector<long long> nodes(inputs.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const std::clock_t cpuStart = std::clock();
      const auto start = std::chrono::steady_clock::now();
      nodes[i] = qm::CountSolutions(inputs[i], 2).nodes;
      micros[i] = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
      cpuMicros[i] = 1e6 * static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    }
  }
  std::sort(nodes.begin(), nodes.end());
  state.counters["median_nodes"] = static_cast<double>(nodes[nodes.size() / 2]);
  state.counters["worst_nodes"] = static_cast<double>(nodes.back());
  Report(state, micros, cpuMicros, inputs, what);
  state.SetItemsProcessed(state.iterations() * static_cast<long>(inputs.size()));
}

std::vector<qm::PuzzleModel> SignPatterns(int count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<qm::PuzzleModel> inputs;
  inputs.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) inputs.push_back(SignPattern(i, count, random));
  return inputs;
}

void BM_SearchSignPatterns9x9(benchmark::State& state) {
  TimeEach(state, SignPatterns(6000, 11), "sign pattern");
}
BENCHMARK(BM_SearchSignPatterns9x9)->Iterations(1)->Unit(benchmark::kMillisecond);

// A larger sweep, where the rare slow patterns show up: its slowest are the ones to keep
// as regression cases.
void BM_SearchSignPatternSweep9x9(benchmark::State& state) {
  TimeEach(state, SignPatterns(50000, 7), "sign pattern of the sweep");
}
BENCHMARK(BM_SearchSignPatternSweep9x9)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_SearchGeneratedWithoutClues9x9(benchmark::State& state) {
  constexpr int kInputs = 300;
  qm::PuzzleModel model;
  qm::SeedRandom(model, 2026);
  qm::Generator generator;
  generator.ClueSpec = qm::kCluesByLevel;
  std::vector<qm::PuzzleModel> inputs;
  for (int i = 0; i < kInputs; ++i) {
    generator.RequestedLevel = 1 + i % 4;
    do {
      qm::SetSize(model, 9);
    } while (qm::CreatePuzzle(model, qm::QuietRun(), generator) != 99);
    qm::PuzzleModel bare = model;
    for (int k = 0; k <= bare.LastPosition; ++k) {
      if (qm::IsCell(bare, k)) bare.PosText[k].clear();
    }
    inputs.push_back(bare);
  }
  TimeEach(state, inputs, "generated puzzle without clues");
}
BENCHMARK(BM_SearchGeneratedWithoutClues9x9)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
