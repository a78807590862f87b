#include "solver/techniques.h"

#include <algorithm>
#include <string>

#include "core/text_rules.h"
#include "solver/candidates.h"

namespace qm {

namespace {

// The cells of one row (or column) in visiting order: left to right, top to bottom.
struct Line {
  std::array<int, kMaxGridSize> cells{};
  int size = 0;
  int index = 0;  // layout row or column: 1, 3, 5, ...
  bool column = false;
};

template <class Visit>
void ForEachLine(const PuzzleModel& model, Visit&& visit) {
  const int l = model.LayoutExtent;
  for (bool column : {false, true}) {
    for (int index = 1; index <= l; index += 2) {
      Line line;
      line.index = index;
      line.column = column;
      for (int other = 1; other <= l; other += 2) {
        line.cells[line.size++] = column ? model.PositionOf[other][index] : model.PositionOf[index][other];
      }
      visit(line);
    }
  }
}

SolveStep LineStep(std::string text, int target, const Line& line, std::string explanation) {
  return {std::move(explanation), target, -1, std::move(text), line.column ? -1 : line.index,
          line.column ? line.index : -1};
}

// Replaces the text of k when it differs: one change, explained first in step mode.
// `explain` builds the step from the new text only when it is needed.
template <class Explain>
bool Replace(PuzzleModel& model, RunHooks& run, int k, std::string text, Explain&& explain) {
  if (model.PosText[k] == text) return false;
  ++model.ChangeCount;
  if (run.Explaining()) run.ShowStep(explain(text));
  model.PosText[k] = std::move(text);
  return true;
}

std::string Without(const std::string& text, char c) {
  std::string out;
  for (char t : text) {
    if (t != c) out += t;
  }
  return out;
}

// The cells named by a smaller-neighbour list, three digits each.
template <class Visit>
void ForEachSmaller(const std::string& list, Visit&& visit) {
  for (std::size_t i = 0; i + 3 <= list.size(); i += 3) {
    const int k = (list[i] - '0') * 100 + (list[i + 1] - '0') * 10 + (list[i + 2] - '0');
    if (k >= 0 && k < kPositionCount) visit(k);
  }
}

template <class Visit>
void ForEachCell(const PuzzleModel& model, Visit&& visit) {
  for (int row = 1; row <= model.LayoutExtent; row += 2) {
    for (int col = 1; col <= model.LayoutExtent; col += 2) visit(model.PositionOf[row][col]);
  }
}

// Two, three or four cells of a line holding the same `size` candidates: those digits
// leave every other cell of the line. Only the set that sorts first is looked at.
void NakedSet(PuzzleModel& model, RunHooks& run, std::size_t size, bool rowWordingForColumns) {
  ForEachLine(model, [&](const Line& line) {
    std::array<std::string, kMaxGridSize> list;
    std::size_t count = 0;
    for (int i = 0; i < line.size; ++i) {
      const std::string& text = model.PosText[line.cells[i]];
      if (text.size() == size) list[count++] = text;
    }
    if (count < size) return;
    std::sort(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(count));
    const std::string set = list[0];
    for (std::size_t i = 1; i < size; ++i) {
      if (list[i] != set) return;
    }
    if (count > size && list[size] == set) return;
    const bool rowWording = !line.column || rowWordingForColumns;
    for (int i = 0; i < line.size; ++i) {
      const int k = line.cells[i];
      if (model.PosText[k] == set) continue;
      Replace(model, run, k, StripDigits(model.PosText[k], set), [&](const std::string& text) {
        return LineStep(text, k, line,
                        std::string(rowWording ? "Row" : "Col") + Str(line.index) + " has exactly " +
                            std::to_string(size) + " incidents of candidate " + set + ", remove from cell");
      });
    }
  });
}

}  // namespace

std::string StepStatusText(const SolveStep& step) { return step.line + ", new candidate: " + step.text; }

void RemoveSingles(PuzzleModel& model, RunHooks& run) {
  bool fixedAny = true;
  while (fixedAny) {
    fixedAny = false;
    ForEachLine(model, [&](const Line& line) {
      // The fixed digits are gathered before the line is narrowed: a cell fixed now is
      // used in the next pass.
      std::string singles;
      for (int i = 0; i < line.size; ++i) {
        const std::string& text = model.PosText[line.cells[i]];
        if (text.size() == 1) singles += text;
      }
      for (int i = 0; i < line.size; ++i) {
        const int k = line.cells[i];
        if (model.PosText[k].size() <= 1) continue;
        const bool changed = Replace(model, run, k, StripDigits(model.PosText[k], singles), [&](const std::string& text) {
          return LineStep(text, k, line,
                          "Remove single values " + singles + (line.column ? " from col" : " from row") +
                              Str(line.index));
        });
        if (changed && model.PosText[k].size() == 1) fixedAny = true;
      }
    });
  }
}

void OrderPropagate(PuzzleModel& model, RunHooks&) {
  const char n = static_cast<char>('0' + model.GridSize);
  ForEachCell(model, [&](int n1) {
    ForEachSmaller(model.SmallerList[n1], [&](int n2) {
      std::string c2 = Without(model.PosText[n2], n);
      std::string c1 = Without(model.PosText[n1], '1');
      c2 = MaxBelow(c2, c1);
      c1 = MinAbove(c1, c2);
      if (c1 != model.PosText[n1]) {
        model.PosText[n1] = std::move(c1);
        ++model.ChangeCount;
      }
      if (c2 != model.PosText[n2]) {
        model.PosText[n2] = std::move(c2);
        ++model.ChangeCount;
      }
    });
  });
}

void OrderPropagateExplained(PuzzleModel& model, RunHooks& run) {
  const char n = static_cast<char>('0' + model.GridSize);
  const std::string discardN = "N1>N2, discard" + Str(model.GridSize) + " from N2";
  ForEachCell(model, [&](int n1) {
    ForEachSmaller(model.SmallerList[n1], [&](int n2) {
      auto step = [](const char* line, int target, int second) {
        return [=](const std::string& text) { return SolveStep{line, target, second, text, -1, -1}; };
      };
      Replace(model, run, n2, Without(model.PosText[n2], n), step(discardN.c_str(), n2, n1));
      Replace(model, run, n1, Without(model.PosText[n1], '1'), step("N1>N2, discard 1 from N1", n1, n2));
      Replace(model, run, n2, MaxBelow(model.PosText[n2], model.PosText[n1]),
              step("N1>N2, discard all digits in N2 >= max(N1)", n2, n1));
      Replace(model, run, n1, MinAbove(model.PosText[n1], model.PosText[n2]),
              step("N1>N2, discard all digits in N1 <= min(N2)", n1, n2));
    });
  });
}

void HiddenSingle(PuzzleModel& model, RunHooks& run) {
  const int n = model.GridSize;
  ForEachLine(model, [&](const Line& line) {
    std::array<int, 10> counts{};
    for (int i = 0; i < line.size; ++i) {
      for (char c : model.PosText[line.cells[i]]) {
        if (c >= '1' && c <= '9') ++counts[static_cast<std::size_t>(c - '0')];
      }
    }
    for (int d = 1; d <= n; ++d) {
      if (counts[static_cast<std::size_t>(d)] != 1) continue;
      const char digit = static_cast<char>('0' + d);
      for (int i = 0; i < line.size; ++i) {
        const int k = line.cells[i];
        const std::string& text = model.PosText[k];
        if ((text.size() == 1 && text[0] == digit) || text.find(digit) == std::string::npos) continue;
        // The step shows the digit with its leading blank; the cell stores the bare digit.
        Replace(model, run, k, std::string(1, digit), [&](const std::string&) {
          return LineStep(Str(d), k, line,
                          "Cell has unique candidate" + Str(d) + (line.column ? " in col" : " in row") +
                              Str(line.index));
        });
      }
    }
  });
}

void NakedPair(PuzzleModel& model, RunHooks& run) { NakedSet(model, run, 2, false); }
void NakedTriple(PuzzleModel& model, RunHooks& run) { NakedSet(model, run, 3, true); }
void NakedQuad(PuzzleModel& model, RunHooks& run) { NakedSet(model, run, 4, true); }

}  // namespace qm
