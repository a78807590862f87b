// A puzzle book as quillmere-cli makes it: 200 9x9 puzzles four a page, then their
// answers twelve a page, read from the collection and written as a PDF (the offscreen
// Qt start-up included, as a script pays it).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "cli/commands.h"

namespace {

constexpr int kPuzzles = 200;

int Run(const std::vector<std::string>& args) {
  std::vector<const char*> argv{"quillmere-cli"};
  for (const std::string& arg : args) argv.push_back(arg.c_str());
  std::ostringstream out;
  std::ostringstream err;
  return qm::cli::RunCli(static_cast<int>(argv.size()), argv.data(), out, err);
}

// Made once per run with a fixed seed, so every run draws the same puzzles.
std::string BookCollection() {
  static const std::string path = [] {
    const auto file = std::filesystem::temp_directory_path() / "quillmere-bench-book.fut";
    std::filesystem::remove(file);
    Run({"create", "--size", "9", "--count", std::to_string(kPuzzles), "--seed", "11", "--out", file.string()});
    return file.string();
  }();
  return path;
}

void BM_Book200WithAnswers(benchmark::State& state) {
  const std::string collection = BookCollection();
  const std::string pdf = (std::filesystem::temp_directory_path() / "quillmere-bench-book.pdf").string();
  for (auto _ : state) {
    if (Run({"book", collection, "--per-page", "4", "--answers-per-page", "12", "-o", pdf}) != 0) {
      state.SkipWithError("book failed");
      break;
    }
  }
  if (std::filesystem::exists(pdf)) {
    state.counters["pdf_KiB"] = static_cast<double>(std::filesystem::file_size(pdf)) / 1024.0;
  }
}
BENCHMARK(BM_Book200WithAnswers)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
