#include "export/text_export.h"

#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

// Grid rows start one column left of every other line, so that each "|" of a row
// stands below a "+" of the border.
constexpr std::string_view kRowMargin = "  ";
constexpr std::string_view kLineMargin = "   ";
// The row is drawn on a fixed canvas: pieces that would run past it are cut off.
constexpr std::size_t kCanvasWidth = 240;

std::string MarginLine(std::string_view text) { return std::string(kLineMargin) + std::string(text); }

void AppendSection(TextBuilder& out, const PuzzleModel& model, const std::string& heading,
                   const std::string& description, bool solution) {
  const std::string border = MarginLine(BorderLine(model.GridSize));
  out.Line(MarginLine(heading));
  out.Line(MarginLine(description));
  out.Line(border);
  for (int r = 1; r <= model.LayoutExtent; ++r) {
    out.Line(std::string(kRowMargin) + GridRowLine(model, r, solution));
    out.Line(border);
  }
}

}  // namespace

std::string BorderLine(int n) {
  if (n < kMinGridSize || n > kMaxGridSize) return {};
  std::string line = "+---+";
  for (int i = 1; i < n; ++i) line += "   +---+";
  return line;
}

std::string GridRowLine(const PuzzleModel& model, int r, bool solution) {
  const bool cellRow = r % 2 == 1;
  std::string line(kCanvasWidth, ' ');
  line[1] = cellRow ? '|' : ' ';
  for (int c = 1; c <= model.LayoutExtent; ++c) {
    const int k = model.PositionOf[r][c];
    std::string t;
    if (solution) {
      t = model.SolutionText[k];
      if (t == ".") t = " ";
    } else {
      t = model.PosText[k];
      // Only clues and signs are printed: entered digits and candidates would give
      // the answer away.
      if (model.GivenValue[k] < 1 && NumericValue(t) > 0) t = " ";
      if (t.empty()) t = " ";
    }
    const std::string piece = t + (cellRow ? " |" : " ");
    const std::size_t from = static_cast<std::size_t>(4 * c - 1);
    for (std::size_t i = 0; i < piece.size() && from + i < kCanvasWidth; ++i) line[from + i] = piece[i];
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

std::string TextDrawing(const PuzzleModel& model, const std::string& description, int number) {
  TextBuilder out;
  AppendSection(out, model, "Puzzle#" + std::to_string(number), description, false);
  out.Line("").Line("");
  AppendSection(out, model, "Solution#" + std::to_string(number), description, true);
  out.Line("");
  out.Line(MarginLine("Quillmere Puzzle Solution and Creation"));
  out.Line(MarginLine("Get the latest Quillmere from www.quillmere.example/download"));
  return out.Text();
}

}  // namespace qm
