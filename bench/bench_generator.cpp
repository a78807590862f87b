// Creation throughput: puzzles per second on one core by size and level, and a batch
// on one worker against two.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "commands/headless_port.h"
#include "commands/run_control.h"
#include "core/puzzle_model.h"
#include "commands/batch_creation.h"
#include "generator/create_puzzle.h"

namespace {

// Args: grid size, level code.
void BM_Create(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  qm::PuzzleModel model;
  qm::SeedRandom(model, 2026);
  qm::Generator generator;
  generator.ClueSpec = qm::kCluesByLevel;
  generator.RequestedLevel = static_cast<int>(state.range(1));
  for (auto _ : state) {
    // As batch creation does: 100 failed attempts only mean trying again.
    do {
      qm::SetSize(model, n);
    } while (qm::CreatePuzzle(model, qm::QuietRun(), generator) != 99);
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(std::to_string(n) + "x" + std::to_string(n) + " " +
                 std::string(qm::LevelNames[static_cast<std::size_t>(generator.RequestedLevel)]));
}
BENCHMARK(BM_Create)->ArgsProduct({{5, 7, 9}, {1, 2, 3, 4}})->Unit(benchmark::kMillisecond);

// A batch of 9x9 Hard puzzles appended to a file; Arg: worker threads.
void BM_CreateBatch9x9Hard(benchmark::State& state) {
  constexpr int kPuzzles = 48;
  const std::string path =
      (std::filesystem::temp_directory_path() / ("quillmere-bench-" + std::to_string(::getpid()) + ".fut")).string();
  qm::CreationSettings settings;
  settings.count = kPuzzles;
  settings.gridSize = 9;
  settings.clueSpec = qm::kCluesByLevel;
  settings.level = 2;
  settings.displayOne = false;
  settings.outputFile = path;
  qm::BatchOptions options;
  options.stamp = "2026-01-01 00:00:00";
  options.jobs = static_cast<int>(state.range(0));
  for (auto _ : state) {
    qm::PuzzleModel model;
    qm::HeadlessPort port;
    qm::RunControl run(model, port);
    qm::Generator generator;
    qm::SeedRandom(model, 7);
    if (qm::CreatePuzzles(model, run, generator, settings, options).added != kPuzzles) {
      state.SkipWithError("batch incomplete");
    }
    std::remove(path.c_str());
  }
  state.SetItemsProcessed(state.iterations() * kPuzzles);
}
BENCHMARK(BM_CreateBatch9x9Hard)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
