// A puzzle book as quillmere-cli makes it: 200 9x9 puzzles four a page, captioned with
// their grades, then their answers twelve a page, read from the collection and written
// as a PDF (the offscreen Qt start-up included, as a script pays it); and ten times as
// many, which take ten times as long.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
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

// The 200 puzzles `times` times over.
std::string Repeated(int times) {
  if (times == 1) return BookCollection();
  const auto file = std::filesystem::temp_directory_path() / ("quillmere-bench-book-x" + std::to_string(times) + ".fut");
  std::ifstream in(BookCollection(), std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  for (int i = 0; i < times; ++i) out << bytes.str();
  return file.string();
}

void BM_Book200WithAnswers(benchmark::State& state) {
  const std::string collection = Repeated(static_cast<int>(state.range(0)) / kPuzzles);
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
BENCHMARK(BM_Book200WithAnswers)->Unit(benchmark::kMillisecond)->Arg(kPuzzles)->Arg(10 * kPuzzles)->Iterations(3);

}  // namespace
