// The processor time of one explain per puzzle of collection files, read once each:
// median, p99, worst and per step, quicker to run while tuning than the benchmark.
// Usage: explain_times [-r ROUNDS] [-v] FILE...
// Each puzzle's time is its best of ROUNDS; -v lists the puzzles above 1 ms.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "core/collection_file.h"
#include "core/puzzle_model.h"
#include "reasoning/ladder.h"

namespace {

double CpuMicros() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e6 + static_cast<double>(t.tv_nsec) / 1e3;
}

}  // namespace

int main(int argc, char** argv) {
  int rounds = 1;
  int first = 1;
  bool verbose = false;
  for (; first < argc && argv[first][0] == '-'; ++first) {
    if (std::string(argv[first]) == "-v") {
      verbose = true;
    } else if (std::string(argv[first]) == "-r" && first + 1 < argc) {
      rounds = std::max(1, std::atoi(argv[++first]));
    }
  }
  for (int f = first; f < argc; ++f) {
    std::vector<qm::reasoning::Grid> grids;
    qm::RecordStream stream(argv[f]);
    qm::PuzzleModel model;
    qm::ReadResult read;
    while (stream.Next(model, true, read)) {
      if (!read.notFound) grids.push_back(qm::reasoning::GridFromModel(model));
    }
    if (grids.empty()) {
      std::printf("%s: no puzzles\n", argv[f]);
      continue;
    }
    std::vector<double> micros(grids.size(), 1e300);
    double steps = 0;
    int solved = 0;
    for (int round = 0; round < rounds; ++round) {
      steps = 0;
      solved = 0;
      for (std::size_t i = 0; i < grids.size(); ++i) {
        const double start = CpuMicros();
        const qm::reasoning::Explanation result = qm::reasoning::Explain(grids[i]);
        micros[i] = std::min(micros[i], CpuMicros() - start);
        if (verbose && round + 1 == rounds && micros[i] > 1000) {
          std::printf("  #%zu %.0f us, %zu steps, grade %d\n", i + 1, micros[i], result.steps.size(), result.grade.level);
        }
        steps += static_cast<double>(result.steps.size());
        solved += result.solved ? 1 : 0;
      }
    }
    std::vector<double> sorted = micros;
    std::sort(sorted.begin(), sorted.end());
    double total = 0;
    for (const double m : micros) total += m;
    const auto slowest = std::max_element(micros.begin(), micros.end()) - micros.begin();
    std::printf("%-28s n=%4zu median %8.1f us  p99 %8.1f us  worst %8.1f us (#%td)  %.2f us/step  solved %d\n",
                argv[f], grids.size(), sorted[sorted.size() / 2], sorted[sorted.size() * 99 / 100], sorted.back(),
                slowest + 1, total / steps, solved);
  }
  return 0;
}
