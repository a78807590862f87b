// Every step, sentence and grade the ladder gives on every puzzle of collection files,
// one line a step, in-process: run it from two builds and compare the outputs to see
// whether a change moved any step (scripts/ladder-steps does the same through
// `quillmere-cli explain --json`, one process a puzzle, for a few files).
// A step that strikes or places against the search's solution is marked "WRONG".
// Usage: ladder_steps FILE...
#include <cstdio>
#include <string>

#include "core/collection_file.h"
#include "core/puzzle_model.h"
#include "reasoning/ladder.h"
#include "solver/solution_search.h"

int main(int argc, char** argv) {
  qm::PuzzleModel model;
  for (int f = 1; f < argc; ++f) {
    const std::string file = argv[f];
    const int count = qm::CountPuzzles(file);
    for (int i = 1; i <= count; ++i) {
      if (qm::LoadPuzzle(model, file, i).notFound) {
        std::printf("%s %d unreadable\n", file.c_str(), i);
        continue;
      }
      const qm::reasoning::Explanation result = qm::reasoning::ExplainModel(model);
      std::printf("%s %d grade %d %s %g solved %d needs_search %d broken %d\n", file.c_str(), i, result.grade.level,
                  result.grade.name.c_str(), result.grade.score, result.solved, result.needsSearch, result.broken);
      const qm::SolutionCount solution = qm::CountSolutions(model, 2);
      auto truth = [&](int c) {
        const int k = qm::CellPosition(model, c / model.GridSize + 1, c % model.GridSize + 1);
        return solution.first[static_cast<std::size_t>(k)][0] - '0';
      };
      for (const qm::reasoning::Step& step : result.steps) {
        bool wrong = false;
        for (const auto& [c, d] : step.placed) wrong = wrong || (solution.count == 1 && d != truth(c));
        for (const auto& [c, m] : step.removed) wrong = wrong || (solution.count == 1 && (m >> truth(c) & 1) != 0);
        std::printf("  %s%s|%d|%s|", wrong ? "WRONG " : "", step.technique.c_str(), step.level, step.text.c_str());
        for (const int c : step.cells) std::printf("%d ", c);
        std::printf("|");
        for (const auto& [c, d] : step.placed) std::printf("%d=%d ", c, d);
        std::printf("|");
        for (const auto& [c, m] : step.removed) std::printf("%d-%d ", c, static_cast<int>(m));
        std::printf("\n");
      }
      std::string positions;
      qm::PuzzleModel end = model;
      qm::reasoning::StoreGrid(result.final, end);
      for (int k = 0; k <= end.LastPosition; ++k) positions += end.PosText[k] + ",";
      std::printf("  end %s\n", positions.c_str());
    }
  }
  return 0;
}
