// Writes the ladder's benchmark sets as collection files, so that the benchmark, the
// tests and `quillmere-cli explain` all read the same puzzles:
//   hardNxN.fut      the generator's puzzles with every clue the search lets go taken away
//   hardestNxN.fut   the same with every sign it lets go taken away too, in random order
// Usage: make_hard_sets OUT_DIR [hard|hardest] [size] [count] [seed]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "core/collection_file.h"
#include "core/puzzle_model.h"
#include "generator/create_puzzle.h"
#include "solver/solution_search.h"

namespace {

bool Unique(const qm::PuzzleModel& model) { return qm::CountSolutions(model, 2).count == 1; }

qm::PuzzleModel Created(qm::PuzzleModel& model, qm::Generator& generator, int size) {
  do {
    qm::SetSize(model, size);
  } while (qm::CreatePuzzle(model, qm::QuietRun(), generator) != 99);
  return model;
}

// Every clue, in position order, that the puzzle stays unique without.
void DropClues(qm::PuzzleModel& hard) {
  for (int k = 0; k <= hard.LastPosition; ++k) {
    if (!qm::IsCell(hard, k) || hard.PosText[k].empty()) continue;
    const std::string clue = hard.PosText[k];
    hard.PosText[k].clear();
    if (!Unique(hard)) hard.PosText[k] = clue;
  }
}

// Every clue and sign, in random order, that the puzzle stays unique without.
void DropCluesAndSigns(qm::PuzzleModel& hard, std::mt19937& random) {
  std::vector<int> given;
  for (int k = 0; k <= hard.LastPosition; ++k) {
    if (!hard.PosText[k].empty() && qm::KindOf(hard, k) != qm::PositionKind::Corner) given.push_back(k);
  }
  std::shuffle(given.begin(), given.end(), random);
  for (const int k : given) {
    const std::string text = hard.PosText[k];
    hard.PosText[k].clear();
    if (!Unique(hard)) hard.PosText[k] = text;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: make_hard_sets OUT_DIR [hard|hardest] [size] [count] [seed]\n");
    return 2;
  }
  const std::string dir = argv[1];
  const std::string kind = argc > 2 ? argv[2] : "hard";
  const int size = argc > 3 ? std::atoi(argv[3]) : 9;
  const int count = argc > 4 ? std::atoi(argv[4]) : 1000;
  const auto seed = static_cast<std::uint64_t>(argc > 5 ? std::atoll(argv[5]) : 31);
  const std::string path = dir + "/" + kind + std::to_string(size) + "x" + std::to_string(size) + ".fut";
  std::filesystem::remove(path);
  qm::PuzzleModel model;
  qm::SeedRandom(model, seed);
  std::mt19937 random(static_cast<std::uint32_t>(seed));
  qm::Generator generator;
  generator.ClueSpec = qm::kCluesByLevel;
  generator.RequestedLevel = 1;
  for (int i = 1; i <= count; ++i) {
    qm::PuzzleModel hard = Created(model, generator, size);
    if (kind == "hardest") {
      DropCluesAndSigns(hard, random);
    } else {
      DropClues(hard);
    }
    if (!qm::AppendPuzzle(hard, "", i, path)) {
      std::fprintf(stderr, "cannot write %s\n", path.c_str());
      return 1;
    }
  }
  return 0;
}
