// The technique ladder on hard 9x9 puzzles: the generator's puzzles with every clue the
// search says can go taken away (unique, few clues, many signs). Reports the time of one
// explain (median, p99, worst), how many the ladder finished and how many needed each
// rung.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include "generator/create_puzzle.h"
#include "reasoning/ladder.h"
#include "solver/solution_search.h"

namespace {

std::vector<qm::PuzzleModel> HardPuzzles(int count) {
  std::vector<qm::PuzzleModel> puzzles;
  qm::PuzzleModel model;
  qm::SeedRandom(model, 31);
  qm::Generator generator;
  generator.ClueSpec = qm::kCluesByLevel;
  generator.RequestedLevel = 1;
  while (static_cast<int>(puzzles.size()) < count) {
    do {
      qm::SetSize(model, 9);
    } while (qm::CreatePuzzle(model, qm::QuietRun(), generator) != 99);
    qm::PuzzleModel hard = model;
    for (int k = 0; k <= hard.LastPosition; ++k) {
      if (!qm::IsCell(hard, k) || hard.PosText[k].empty()) continue;
      const std::string clue = hard.PosText[k];
      hard.PosText[k].clear();
      if (qm::CountSolutions(hard, 2).count != 1) hard.PosText[k] = clue;
    }
    puzzles.push_back(hard);
  }
  return puzzles;
}

void BM_ExplainHard9x9(benchmark::State& state) {
  const std::vector<qm::PuzzleModel> puzzles = HardPuzzles(static_cast<int>(state.range(0)));
  std::vector<double> micros(puzzles.size());
  int solved = 0;
  std::vector<int> byGrade(qm::reasoning::kTopRung + 1);
  for (auto _ : state) {
    solved = 0;
    std::fill(byGrade.begin(), byGrade.end(), 0);
    for (std::size_t i = 0; i < puzzles.size(); ++i) {
      const auto start = std::chrono::steady_clock::now();
      const qm::reasoning::Explanation result = qm::reasoning::Explain(qm::reasoning::GridFromModel(puzzles[i]));
      micros[i] = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
      solved += result.solved ? 1 : 0;
      ++byGrade[static_cast<std::size_t>(result.grade.level)];
    }
  }
  const std::size_t slowest = static_cast<std::size_t>(std::max_element(micros.begin(), micros.end()) - micros.begin());
  {
    const qm::reasoning::Explanation result = qm::reasoning::Explain(qm::reasoning::GridFromModel(puzzles[slowest]));
    std::map<std::string, int> uses;
    for (const auto& step : result.steps) ++uses[step.technique];
    std::fprintf(stderr, "slowest: %.0f us, %zu steps:", micros[slowest], result.steps.size());
    for (const auto& [name, times] : uses) std::fprintf(stderr, " %s=%d", name.c_str(), times);
    std::fprintf(stderr, "\n");
  }
  std::vector<double> sorted = micros;
  std::sort(sorted.begin(), sorted.end());
  state.counters["median_us"] = sorted[sorted.size() / 2];
  state.counters["p99_us"] = sorted[sorted.size() * 99 / 100];
  state.counters["worst_us"] = sorted.back();
  state.counters["solved"] = solved;
  for (int level = 1; level <= qm::reasoning::kTopRung; ++level) {
    std::fprintf(stderr, "grade %d %s: %d\n", level, qm::reasoning::RungName(level).c_str(),
                 byGrade[static_cast<std::size_t>(level)]);
  }
}
BENCHMARK(BM_ExplainHard9x9)->Arg(1000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
