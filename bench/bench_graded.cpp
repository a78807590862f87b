// Creation by grade: puzzles per second on one core by size, grade and symmetry, with
// the tries each puzzle took (the share of tries that land in range is 1 / tries).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "generator/graded_creation.h"
#include "reasoning/ladder.h"

namespace {

// Args: grid size, grade (a ladder rung), symmetry (0 none, 1 half-turn, 2 mirror).
void BM_CreateGraded(benchmark::State& state) {
  qm::GradedOptions options;
  options.size = static_cast<int>(state.range(0));
  options.minGrade = options.maxGrade = static_cast<int>(state.range(1));
  options.symmetry = static_cast<qm::GradedSymmetry>(state.range(2));
  std::uint64_t seed = 1;
  long tries = 0;
  long made = 0;
  double clues = 0;
  double signs = 0;
  for (auto _ : state) {
    const qm::GradedResult result = qm::CreateGraded(options, seed++);
    tries += result.tries;
    if (result.made) {
      ++made;
      clues += result.puzzle.ClueCount();
      signs += result.puzzle.SignCount();
    }
  }
  state.SetItemsProcessed(made);
  state.counters["tries"] = made > 0 ? static_cast<double>(tries) / static_cast<double>(made) : 0;
  state.counters["clues"] = made > 0 ? clues / static_cast<double>(made) : 0;
  state.counters["signs"] = made > 0 ? signs / static_cast<double>(made) : 0;
  static const char* const kSymmetry[] = {"", " half-turn", " mirror"};
  state.SetLabel(std::to_string(options.size) + "x" + std::to_string(options.size) + " " +
                 qm::reasoning::RungName(options.minGrade) + kSymmetry[state.range(2)]);
}
BENCHMARK(BM_CreateGraded)
    ->ArgsProduct({{9}, benchmark::CreateDenseRange(qm::reasoning::kSingles, qm::reasoning::kContradiction, 1), {0}})
    ->ArgsProduct({{7}, benchmark::CreateDenseRange(qm::reasoning::kSingles, qm::reasoning::kContradiction, 1), {0}})
    ->ArgsProduct({{9}, {qm::reasoning::kSignBounds, qm::reasoning::kSubsets, qm::reasoning::kForcing, qm::reasoning::kContradiction}, {1, 2}})
    ->ArgsProduct({{7}, {qm::reasoning::kForcing}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();

}  // namespace
