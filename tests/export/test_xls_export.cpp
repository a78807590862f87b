#include <gtest/gtest.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "core/text_rules.h"
#include "export/excel_file.h"
#include "export/xls_export.h"
#include "support/test_files.h"

namespace qm {
namespace {

using Status = ExcelFile::Status;

std::string Bytes(std::initializer_list<int> values) {
  std::string bytes;
  for (int v : values) bytes += static_cast<char>(v);
  return bytes;
}

const std::string kBof = Bytes({0x09, 0, 4, 0, 2, 0, 0x0A, 0});
const std::string kEof = Bytes({0x0A, 0, 0, 0});
const std::string kOneAndAHalf = Bytes({0, 0, 0, 0, 0, 0, 0xF8, 0x3F});

// A text cell record as the format table gives it: 0-based row and column.
std::string TextCell(int row, int col, int font, int alignment, const std::string& text) {
  return Bytes({4, 0, static_cast<int>(8 + text.size()), 0, row & 0xFF, row >> 8, col, 0, 0, font, alignment,
                static_cast<int>(text.size())}) +
         text;
}

// The records the export does not use; the export's own are checked through its file.
TEST(ExcelFile, WritesEveryOtherRecordAndRefusesWhatDoesNotFit) {
  test::TempDir dir;
  const std::string path = dir.File("s.xls");
  test::WriteBytes(path, "an older file, deleted first");
  {
    ExcelFile sheet;
    ASSERT_EQ(sheet.CreateFile(path), 0);
    const Status written[] = {sheet.WriteValue(0, 64, 1, 0, 1, 2, 7.0), sheet.WriteValue(1, 0, 2, 0, 3, 4, 1.5),
                              // Above 32767: 65536 off, then 1 off, written as a negative 16-bit value.
                              sheet.WriteValue(2, 0, 122, 1, 40000, 0, std::string("ab")), sheet.SetHeader("H"),
                              sheet.SetFooter(""), sheet.SetFilePassword("pw"), sheet.ProtectSpreadsheet(true)};
    for (Status status : written) EXPECT_EQ(status, 0);
    const Status refused[] = {sheet.WriteValue(3, 0, 0, 0, 1, 1, 1.0), sheet.WriteValue(2, 0, 0, 0, 1, 1, std::string(256, 'x')),
                              sheet.WriteValue(2, 0, 0, 0, 32768, 1, std::string("x")), sheet.SetMargin(37, 1.0)};
    for (Status status : refused) EXPECT_EQ(status, ExcelFile::kBadValue);
  }  // the destructor closes the file
  EXPECT_EQ(test::ReadBytes(path), kBof + Bytes({2, 0, 9, 0, 0, 0, 1, 0, 0, 64, 1, 7, 0}) +
                                       Bytes({3, 0, 15, 0, 2, 0, 3, 0, 0, 0, 2}) + kOneAndAHalf +
                                       Bytes({4, 0, 10, 0, 0x3F, 0x9C, 0xFF, 0xFF, 1, 0, 122, 2, 'a', 'b'}) +
                                       Bytes({0x14, 0, 2, 0, 1, 'H', 0x15, 0, 1, 0, 0, 0x2F, 0, 2, 0, 'p', 'w'}) +
                                       Bytes({0x12, 0, 2, 0, 1, 0}) + kEof);
  ExcelFile sheet;
  EXPECT_EQ(sheet.WriteValue(2, 0, 0, 0, 1, 1, std::string("x")), ExcelFile::kNotOpen);
  EXPECT_EQ(sheet.CreateFile("/dev/full"), ExcelFile::kWriteFailed);
  EXPECT_EQ(sheet.CloseFile() + sheet.FileNumber(), ExcelFile::kWriteFailed);
}

// A clue, a sign, an entered digit, a vertical sign and a candidate list.
PuzzleModel SmallPuzzle(int n) {
  PuzzleModel model;
  SetSize(model, n);
  model.SolutionText.fill(".");
  const int l = model.LayoutExtent;
  for (const auto& [k, text] : std::initializer_list<std::pair<int, const char*>>{{0, "1"}, {1, "<"}, {2, "2"}, {l, "v"},
                                                                                  {l * (l - 1), "23"}}) {
    model.PosText[k] = text;
  }
  model.GivenValue[0] = 1;
  for (int c = 1; c <= l; c += 2) model.SolutionText[model.PositionOf[1][c]] = std::to_string((c + 1) / 2);
  return model;
}

std::string ExpectedCell(const PuzzleModel& model, int k, bool solution) {
  if (solution) return model.SolutionText[k];
  return k == 0 || k == 1 || k == model.LayoutExtent ? model.PosText[k] : " ";
}

TEST(XlsExport, FileIsByteExactToTheRecordList) {
  test::TempDir dir;
  const PuzzleModel model = SmallPuzzle(3);
  ASSERT_TRUE(WriteXlsFile(model, "Caf\xE9", 7, dir.File("p.xls")));
  std::string expected = kBof + Bytes({0x2B, 0, 2, 0, 0, 0});
  for (int margin : {40, 38, 39, 41}) expected += Bytes({margin, 0, 8, 0}) + kOneAndAHalf;
  expected += Bytes({0x31, 0, 10, 0, 200, 0, 0, 0, 5}) + "Arial" + Bytes({0x31, 0, 10, 0, 200, 0, 1, 0, 5}) + "Arial";
  expected += Bytes({0x24, 0, 4, 0, 0, 31, 0, 3});
  expected += TextCell(0, 1, 64, 1, "Puzzle#7") + TextCell(1, 1, 64, 1, "Caf\xE9");
  for (int k = 0; k < 25; ++k) expected += TextCell(2 + k / 5, 1 + k % 5, 0, 122, ExpectedCell(model, k, false));
  expected += TextCell(8, 1, 64, 1, "Solution#7") + TextCell(9, 1, 64, 1, "Caf\xE9");
  for (int k = 0; k < 25; ++k) expected += TextCell(10 + k / 5, 1 + k % 5, 0, 122, ExpectedCell(model, k, true));
  EXPECT_EQ(test::ReadBytes(dir.File("p.xls")), expected + kEof);
}

// An independent reader: xlrd refuses the sheet type 10 of the first record, so it
// reads a copy whose bytes 6-7 say 16 (a worksheet); every other byte is ours.
nlohmann::json CellsByXlrd(const std::string& path) {
  std::string bytes = test::ReadBytes(path);
  bytes[6] = 0x10;
  test::WriteBytes(path + ".16", bytes);
  const std::string script =
      "import sys, json, xlrd\n"
      "book = xlrd.open_workbook(sys.argv[1], encoding_override='cp1252', logfile=open('/dev/null', 'w'))\n"
      "s = book.sheet_by_index(0)\n"
      "print(json.dumps([[r, c, s.cell_value(r, c)] for r in range(s.nrows) for c in range(s.ncols)"
      " if s.cell_type(r, c) != xlrd.XL_CELL_EMPTY]))\n";
  test::WriteBytes(path + ".py", script);
  std::FILE* pipe = popen(("/usr/bin/python3 " + path + ".py " + path + ".16").c_str(), "r");
  std::string out;
  char chunk[4096];
  for (std::size_t got; (got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;) out.append(chunk, got);
  EXPECT_EQ(pclose(pipe), 0) << out;
  return nlohmann::json::parse(out, nullptr, false);
}

TEST(XlsExport, OpensInXlrdWithEveryCellInPlace) {
  test::TempDir dir;
  for (int n = 3; n <= 9; ++n) {
    const PuzzleModel model = SmallPuzzle(n);
    const std::string path = dir.File("p" + std::to_string(n) + ".xls");
    ASSERT_TRUE(WriteXlsFile(model, "Caf\xE9", n, path));
    nlohmann::json expected = {{0, 1, "Puzzle#" + std::to_string(n)}, {1, 1, "Caf\u00E9"}};
    const int l = model.LayoutExtent;
    for (int k = 0; k < l * l; ++k) expected.push_back({2 + k / l, 1 + k % l, ExpectedCell(model, k, false)});
    expected.push_back({2 * n + 2, 1, "Solution#" + std::to_string(n)});
    expected.push_back({2 * n + 3, 1, "Caf\u00E9"});
    for (int k = 0; k < l * l; ++k) expected.push_back({2 * n + 4 + k / l, 1 + k % l, ExpectedCell(model, k, true)});
    EXPECT_EQ(CellsByXlrd(path), expected) << n;
  }
}

}  // namespace
}  // namespace qm
