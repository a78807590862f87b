// The technique ladder on the benchmark sets of bench/data (written by make_hard_sets):
// the generator's puzzles with every clue the search lets go taken away (hardNxN), the
// same with every sign it lets go taken away too (hardestNxN), and those of them that
// need the top rung (master9x9). Reports the processor time of one explain (median, p99,
// worst, and per step), how many the ladder finished, and how many needed each rung.
// Processor time, not wall time: the machines it runs on are shared.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "core/collection_file.h"
#include "core/puzzle_model.h"
#include "reasoning/ladder.h"

namespace {

const char* const kSets[] = {"hard9x9", "hard7x7", "hardest5x5", "hardest6x6", "hardest7x7",
                             "hardest8x8", "hardest9x9", "master9x9"};

double CpuMicros() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e6 + static_cast<double>(t.tv_nsec) / 1e3;
}

std::vector<qm::reasoning::Grid> Load(const std::string& name) {
  const std::string file = std::string(QUILLMERE_BENCH_DATA) + name + ".fut";
  std::vector<qm::reasoning::Grid> grids;
  // One pass over the file: loading each puzzle by its number reads the file again.
  qm::RecordStream stream(file);
  qm::PuzzleModel model;
  qm::ReadResult read;
  while (stream.Next(model, true, read)) {
    if (!read.notFound) grids.push_back(qm::reasoning::GridFromModel(model));
  }
  return grids;
}

void BM_Explain(benchmark::State& state) {
  const std::string name = kSets[state.range(0)];
  const std::vector<qm::reasoning::Grid> grids = Load(name);
  if (grids.empty()) {
    state.SkipWithError("no puzzles: run make_hard_sets");
    return;
  }
  std::vector<double> micros(grids.size());
  double steps = 0;
  int solved = 0;
  std::vector<int> byGrade(qm::reasoning::kTopRung + 1);
  for (auto _ : state) {
    solved = 0;
    steps = 0;
    std::fill(byGrade.begin(), byGrade.end(), 0);
    for (std::size_t i = 0; i < grids.size(); ++i) {
      const double start = CpuMicros();
      const qm::reasoning::Explanation result = qm::reasoning::Explain(grids[i]);
      micros[i] = CpuMicros() - start;
      steps += static_cast<double>(result.steps.size());
      solved += result.solved ? 1 : 0;
      ++byGrade[static_cast<std::size_t>(result.grade.level)];
    }
  }
  const std::size_t slowest = static_cast<std::size_t>(std::max_element(micros.begin(), micros.end()) - micros.begin());
  {
    const qm::reasoning::Explanation result = qm::reasoning::Explain(grids[slowest]);
    std::map<std::string, int> uses;
    for (const auto& step : result.steps) ++uses[step.technique];
    std::fprintf(stderr, "%s slowest (#%zu): %.0f us, %zu steps:", name.c_str(), slowest + 1, micros[slowest],
                 result.steps.size());
    for (const auto& [technique, times] : uses) std::fprintf(stderr, " %s=%d", technique.c_str(), times);
    std::fprintf(stderr, "\n%s grades:", name.c_str());
    for (int level = 1; level <= qm::reasoning::kTopRung; ++level) {
      if (byGrade[static_cast<std::size_t>(level)] > 0) {
        std::fprintf(stderr, " %s=%d", qm::reasoning::RungName(level).c_str(), byGrade[static_cast<std::size_t>(level)]);
      }
    }
    std::fprintf(stderr, "\n");
  }
  std::vector<double> sorted = micros;
  std::sort(sorted.begin(), sorted.end());
  double total = 0;
  for (const double m : micros) total += m;
  state.SetLabel(name);
  state.counters["puzzles"] = static_cast<double>(grids.size());
  state.counters["median_us"] = sorted[sorted.size() / 2];
  state.counters["p99_us"] = sorted[sorted.size() * 99 / 100];
  state.counters["worst_us"] = sorted.back();
  state.counters["us_per_step"] = total / steps;
  state.counters["solved"] = solved;
  state.counters["needs_search"] = byGrade[qm::reasoning::kNeedsSearch];
}
BENCHMARK(BM_Explain)->DenseRange(0, std::size(kSets) - 1)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
