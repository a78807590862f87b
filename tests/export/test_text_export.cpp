#include "export/text_export.h"

#include <gtest/gtest.h>

#include "core/collection_file.h"
#include "commands/headless_port.h"
#include "support/test_files.h"

namespace qm {
namespace {

using Strings = std::vector<std::string>;

Strings SplitCrLf(const std::string& text) {
  Strings lines;
  std::size_t from = 0;
  for (std::size_t at; (at = text.find("\r\n", from)) != std::string::npos; from = at + 2) {
    lines.push_back(text.substr(from, at - from));
  }
  EXPECT_EQ(from, text.size()) << "the last line is not ended by CR LF";
  return lines;
}

TEST(TextExport, DrawsTheWholeFile) {
  PuzzleModel model;
  SetSize(model, 3);
  model.SolutionText.fill(".");  // as loaded: "." wherever nothing is known
  // A clue, a sign, an entered digit, a candidate list and a vertical sign; in the
  // solution a two-character text and a missing one.
  const struct {
    int k;
    const char* shown;
    int given;
    const char* solution;
  } positions[] = {{0, "2", 2, "2"}, {1, "<", 0, "<"}, {2, "3", 0, "3"},   {4, "13", 0, "1"},
                   {7, "^", 0, "^"}, {12, "", 0, "12"}, {14, "", 0, ""}};
  for (const auto& p : positions) {
    model.PosText[p.k] = p.shown;
    model.GivenValue[p.k] = p.given;
    model.SolutionText[p.k] = p.solution;
  }
  const std::string border = "   +---+   +---+   +---+";
  const std::string empty = "   |   |   |   |   |   |";
  const std::string sign = "             ^";
  const Strings expected = {
      "   Puzzle#12", "   Caf\xE9", border, "   | 2 | < |   |   |   |", border, sign, border, empty, border, "  ",
      border, empty, border, "", "", "   Solution#12", "   Caf\xE9", border, "   | 2 | < | 3 |   | 1 |", border,
      sign, border, "   |   |   | 12 |  |  |", border, "  ", border, empty, border, "",
      "   Quillmere Puzzle Solution and Creation"};
  const Strings lines = SplitCrLf(TextDrawing(model, "Caf\xE9", 12));
  ASSERT_EQ(lines.size(), expected.size() + 1);  // and the promotional footer
  EXPECT_EQ(Strings(lines.begin(), lines.end() - 1), expected);
}

TEST(TextExport, RowsOfEverySizeLineUpWithTheBorder) {
  EXPECT_EQ(BorderLine(2) + BorderLine(10), "");
  for (int n = 3; n <= 9; ++n) {
    PuzzleModel model;
    SetSize(model, n);
    const int l = model.LayoutExtent;
    for (int c = 1; c <= l; ++c) model.SolutionText[model.PositionOf[1][c]] = c % 2 == 1 ? "7" : ">";
    model.SolutionText[model.PositionOf[2][l]] = "v";
    // Rows start one column left of the border: row column c stands below border column c-1.
    const std::string row = GridRowLine(model, 1, true).substr(1);
    const std::string border = BorderLine(n);
    ASSERT_EQ(row.size(), border.size()) << n;
    for (std::size_t i = 0; i < row.size(); ++i) {
      EXPECT_EQ(row[i], border[i] == '+' ? '|' : i % 8 == 2 ? '7' : i % 8 == 6 ? '>' : ' ') << n << ":" << i;
    }
    EXPECT_EQ(GridRowLine(model, 2, true).substr(1), std::string(4 * l - 2, ' ') + "v") << n;
    EXPECT_EQ(GridRowLine(model, 2, false), "") << n;
  }
  // The canvas is 240 columns wide: a long text is cut there.
  PuzzleModel model;
  SetSize(model, 9);
  model.SolutionText[model.PositionOf[1][17]] = std::string(300, 'x');
  EXPECT_EQ(GridRowLine(model, 1, true).substr(67), std::string(240 - 67, 'x'));
}

}  // namespace
}  // namespace qm
