// Reading from a large collection: the last record of a 10,000-record file, which costs
// one pass over the file to count the records and one to find the record.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/collection_file.h"
#include "core/text_file.h"

namespace {

constexpr int kRecords = 10000;

std::string BigCollection() {
  static const std::string path = [] {
    const auto file = std::filesystem::temp_directory_path() / "quillmere-bench-10000.fut";
    std::string text;
    const char* rows[] = {".>..1....|4>3.5.2.1", ".........|.........", "....1.5..|2.4.1.5.3",
                          ".........|.........", "...<.....|3.1<2.4.5", "....^....|....^....",
                          "...<.>...|5.2<3>1.4", "....^....|....^....", ".........|1.5.4.3.2"};
    for (int i = 1; i <= kRecords; ++i) {
      text += "#" + std::to_string(i) + "\r\nAuto (Hard) 11-21-2026 10:00:00\r\n5 6 2\r\n";
      for (const char* row : rows) text += std::string(row) + "\r\n";
    }
    qm::WriteWholeFile(file.string(), text);
    return file.string();
  }();
  return path;
}

void BM_ReadLastOf10000(benchmark::State& state) {
  const std::string path = BigCollection();
  qm::PuzzleModel model;
  for (auto _ : state) {
    const qm::ReadResult result = qm::LoadPuzzle(model, path, kRecords);
    if (result.notFound) state.SkipWithError("record not found");
    benchmark::DoNotOptimize(model.PosText[0]);
  }
  state.SetLabel(std::to_string(std::filesystem::file_size(path) / 1024) + " KiB file");
}
BENCHMARK(BM_ReadLastOf10000)->Unit(benchmark::kMillisecond);

void BM_CountPuzzles10000(benchmark::State& state) {
  const std::string path = BigCollection();
  for (auto _ : state) benchmark::DoNotOptimize(qm::CountPuzzles(path));
}
BENCHMARK(BM_CountPuzzles10000)->Unit(benchmark::kMillisecond);

}  // namespace
