// Any bytes as a collection file: counting, reading records (one at a time and in one
// pass), the rule checks on what was read, the ladder, the exact search, sorting and
// merging must answer without a crash, hang or sanitizer report.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "collections/merge_shards.h"
#include "collections/sort_file.h"
#include "core/collection_file.h"
#include "core/rule_checks.h"
#include "core/text_file.h"
#include "reasoning/ladder.h"
#include "solver/solution_search.h"

namespace {

// In memory where the machine has it: every sort syncs its output to the disk.
std::string ScratchPath(const char* what) {
  const std::string folder = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return folder + "/quillmere-fuzz-" + std::to_string(::getpid()) + "-" + what + ".fut";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string input = ScratchPath("in");
  static const std::string sorted = ScratchPath("sorted");
  if (!qm::WriteWholeFile(input, std::string_view(reinterpret_cast<const char*>(data), size))) return 0;

  const int count = qm::CountPuzzles(input);
  qm::PuzzleModel model;
  for (const int n : {1, 2, count, count + 1}) {
    if (qm::LoadPuzzle(model, input, n).notFound) continue;
    qm::CheckExtremes(model);
    qm::CheckGrid(model);
    // The ladder's grid and its first step from whatever the record held.
    const qm::reasoning::Grid grid = qm::reasoning::GridFromModel(model);
    qm::reasoning::Step step;
    if (!qm::reasoning::IsBroken(grid)) qm::reasoning::TryTechnique(grid, "Naked single", step);
  }
  // The whole ladder and the exact search on the first records of one pass, each bounded
  // so that a hard grid cannot make the run hang.
  qm::RecordStream stream(input);
  qm::ReadResult read;
  for (int records = 0; records < 3 && stream.Next(model, true, read); ++records) {
    if (read.notFound) continue;
    qm::reasoning::ExplainOptions explain;
    explain.maxSteps = 200;
    qm::reasoning::ExplainModel(model, explain);
    qm::SearchOptions search;
    search.limit = 2;
    search.timeLimitSeconds = 0.2;
    qm::CountSolutions(model, search);
  }
  // The input as two shards of one run: merged, or refused as shards that do not fit.
  static const std::string merged = ScratchPath("merged");
  qm::MergeShards({input, input}, merged);
  const int by = size > 0 ? data[0] % 4 : 0;
  const int order = size > 1 ? data[1] % 3 : 0;
  qm::SortCollection(model, qm::QuietRun(), {input, sorted, by, order, size > 2 && data[2] % 2 == 0, "7", {}});
  return 0;
}
