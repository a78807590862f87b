// grade over a 100,000-record collection on one core: the file is read once, in one
// pass, and the memory stays that of a batch of records (peak RSS as a counter).
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "cli/commands.h"
#include "core/text_file.h"

namespace {

constexpr int kRecords = 100000;

// The shipped collection's records (3x3 to 9x9) over and over, renumbered.
std::string HundredThousand() {
  static const std::string path = [] {
    const auto file = std::filesystem::temp_directory_path() / "quillmere-bench-grade-100000.fut";
    qm::LineReader shipped(std::string(QUILLMERE_APP_DIR) + "puzzles.fut");
    std::vector<std::string> records;
    std::string line;
    while (shipped.ReadLine(line)) {
      if (!line.empty() && line[0] == '#') {
        records.emplace_back();
        continue;
      }
      if (!records.empty()) records.back() += line + "\r\n";
    }
    std::string text;
    for (int i = 0; i < kRecords; ++i) {
      text += "#" + std::to_string(i + 1) + "\r\n" + records[static_cast<std::size_t>(i) % records.size()];
    }
    qm::WriteWholeFile(file.string(), text);
    return file.string();
  }();
  return path;
}

void BM_Grade100000OneCore(benchmark::State& state) {
  const std::string path = HundredThousand();
  for (auto _ : state) {
    std::ostringstream out;
    std::ostringstream err;
    const char* argv[] = {"quillmere-cli", "grade", path.c_str(), "--jobs", "1"};
    if (qm::cli::RunCli(5, argv, out, err) != 0) state.SkipWithError("grade failed");
    benchmark::DoNotOptimize(out.str().size());
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_rss_mb"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
  state.SetLabel(std::to_string(std::filesystem::file_size(path) >> 20) + " MiB file");
}
BENCHMARK(BM_Grade100000OneCore)->Unit(benchmark::kSecond)->Iterations(1);

}  // namespace
