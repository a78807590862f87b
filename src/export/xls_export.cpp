#include "export/xls_export.h"

#include "core/text_rules.h"
#include "export/excel_file.h"

namespace qm {

namespace {

constexpr double kMarginInches = 1.5;
constexpr int kFontHeight = 10;
constexpr int kLastColumn = 32;
constexpr int kColumnWidth = 3;
constexpr std::uint8_t kHeadingAlignment = ExcelFile::kAlignLeft;
constexpr std::uint8_t kBoxAlignment = ExcelFile::kAlignCentre | ExcelFile::kBorderLeft | ExcelFile::kBorderRight |
                                       ExcelFile::kBorderTop | ExcelFile::kBorderBottom;

// The shown text as the text drawing prints it: clues and signs only, " " for the rest.
std::string PuzzleCellText(const PuzzleModel& model, int k) {
  const std::string& t = model.PosText[k];
  if ((model.GivenValue[k] < 1 && NumericValue(t) > 0) || t.empty()) return " ";
  return t;
}

void WriteHeading(ExcelFile& sheet, int row, const std::string& heading, const std::string& description) {
  sheet.WriteValue(ExcelFile::kTextCell, ExcelFile::kFont1, kHeadingAlignment, 0, row, 2, heading);
  sheet.WriteValue(ExcelFile::kTextCell, ExcelFile::kFont1, kHeadingAlignment, 0, row + 1, 2, description);
}

void WriteGrid(ExcelFile& sheet, const PuzzleModel& model, int firstRow, bool solution) {
  for (int r = 1; r <= model.LayoutExtent; ++r) {
    for (int c = 1; c <= model.LayoutExtent; ++c) {
      const int k = model.PositionOf[r][c];
      // The solution is written as stored: an unknown value stays ".".
      const std::string text = solution ? model.SolutionText[k] : PuzzleCellText(model, k);
      sheet.WriteValue(ExcelFile::kTextCell, ExcelFile::kFont0, kBoxAlignment, 0, firstRow + r - 1, c + 1, text);
    }
  }
}

}  // namespace

bool WriteXlsFile(const PuzzleModel& model, const std::string& description, int number, const std::string& path) {
  ExcelFile sheet;
  if (sheet.CreateFile(path) != ExcelFile::kOk) return false;
  sheet.PrintGridLines(false);
  for (const int margin : {ExcelFile::kTopMargin, ExcelFile::kLeftMargin, ExcelFile::kRightMargin,
                           ExcelFile::kBottomMargin}) {
    sheet.SetMargin(margin, kMarginInches);
  }
  sheet.SetFont("Arial", kFontHeight, 0);
  sheet.SetFont("Arial", kFontHeight, ExcelFile::kBold);
  sheet.SetColumnWidth(1, kLastColumn, kColumnWidth);

  const int n = model.GridSize;
  WriteHeading(sheet, 1, "Puzzle#" + std::to_string(number), description);
  WriteGrid(sheet, model, 3, false);
  WriteHeading(sheet, 2 * n + 3, "Solution#" + std::to_string(number), description);
  WriteGrid(sheet, model, 2 * n + 5, true);
  return sheet.CloseFile() == ExcelFile::kOk;
}

}  // namespace qm
