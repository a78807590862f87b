// A small writer of one-sheet BIFF2 worksheets: one stream of little-endian records
// (type, body length, body) with no container around it. It knows nothing of puzzles.
//
// Texts are written one byte per character, so they are passed as Windows-1252 bytes.
// Every operation reports through its status and never throws: 0 when the record was
// written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <variant>

namespace qm {

// What a cell holds as handed to WriteValue: a number or a text.
using ExcelValue = std::variant<double, std::string>;

class ExcelFile {
 public:
  using Status = std::int16_t;
  static constexpr Status kOk = 0;
  static constexpr Status kNotOpen = 1;      // no file is open
  static constexpr Status kWriteFailed = 2;  // the file could not be created or written
  static constexpr Status kBadValue = 3;     // an argument does not fit its record field

  // WriteValue kinds.
  static constexpr int kIntegerCell = 0;
  static constexpr int kNumberCell = 1;
  static constexpr int kTextCell = 2;

  // Margin codes, which are the margin records' types.
  static constexpr int kLeftMargin = 38;
  static constexpr int kRightMargin = 39;
  static constexpr int kTopMargin = 40;
  static constexpr int kBottomMargin = 41;

  // Attribute byte 2: the font index in the two top bits.
  static constexpr std::uint8_t kFont0 = 0;
  static constexpr std::uint8_t kFont1 = 64;
  // Attribute byte 3: alignment in the low three bits, then borders and shading.
  static constexpr std::uint8_t kAlignLeft = 1;
  static constexpr std::uint8_t kAlignCentre = 2;
  static constexpr std::uint8_t kBorderLeft = 8;
  static constexpr std::uint8_t kBorderRight = 16;
  static constexpr std::uint8_t kBorderTop = 32;
  static constexpr std::uint8_t kBorderBottom = 64;
  static constexpr std::uint8_t kShaded = 128;

  // Font style byte, summed.
  static constexpr int kBold = 1;
  static constexpr int kItalic = 2;
  static constexpr int kUnderline = 4;
  static constexpr int kStrikeOut = 8;

  ExcelFile() = default;
  // Closes a file still open, ending it with the end-of-file record.
  ~ExcelFile();
  ExcelFile(const ExcelFile&) = delete;
  ExcelFile& operator=(const ExcelFile&) = delete;

  // Deletes an existing regular file of that name, opens the file and writes the
  // start-of-file record (version 2, sheet type 10).
  Status CreateFile(const std::string& fileName);
  // Writes the end-of-file record and closes the file.
  Status CloseFile();
  // One cell. Row and column are 1-based; a value above 32767 has 65536 taken off
  // before it is narrowed to 16 bits, and 1 is then subtracted, so large values come
  // out negative. The protection, font and alignment bytes become attribute bytes 1, 2
  // and 3. Kind 0 writes a 16-bit integer, 1 a double, 2 a text of at most 255
  // characters; any other kind writes nothing.
  Status WriteValue(int kind, std::uint8_t font, std::uint8_t alignment, std::uint8_t protection,
                    std::int32_t row, std::int32_t column, const ExcelValue& value);
  // A margin record (code 38..41) holding the margin in inches.
  Status SetMargin(int marginCode, double inches);
  // Columns first..last (1-based) `width` characters wide.
  Status SetColumnWidth(int firstColumn, int lastColumn, int width);
  // A font record; the height in points, the style a sum of kBold, kItalic, ...
  Status SetFont(const std::string& fontName, int height, int style);
  // The page header, footer and file password belong to the writer's interface; the
  // export uses none of them.
  Status SetHeader(const std::string& text);
  Status SetFooter(const std::string& text);
  // The password record holds the text as given: it protects nothing.
  Status SetFilePassword(const std::string& text);

  // Settable properties: setting one writes its record (flag 1 for true, else 0).
  Status PrintGridLines(bool print);
  bool PrintGridLines() const { return printGridLines_; }
  Status ProtectSpreadsheet(bool protect);
  bool ProtectSpreadsheet() const { return protectSpreadsheet_; }

  // The number of the open output file; 0 when none is open.
  std::int16_t FileNumber() const { return fileNumber_; }

 private:
  Status WriteRecord(std::uint16_t type, const std::string& body);
  Status WriteTextRecord(std::uint16_t type, const std::string& text);

  std::FILE* file_ = nullptr;
  std::int16_t fileNumber_ = 0;
  bool printGridLines_ = false;
  bool protectSpreadsheet_ = false;
};

}  // namespace qm
