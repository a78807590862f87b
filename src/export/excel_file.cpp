#include "export/excel_file.h"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>

#include "core/text_rules.h"

namespace qm {

namespace {

constexpr std::uint16_t kBofRecord = 0x0009;
constexpr std::uint16_t kEofRecord = 0x000A;
constexpr std::uint16_t kIntegerRecord = 0x0002;
constexpr std::uint16_t kNumberRecord = 0x0003;
constexpr std::uint16_t kTextRecord = 0x0004;
constexpr std::uint16_t kColumnWidthRecord = 0x0024;
constexpr std::uint16_t kFontRecord = 0x0031;
constexpr std::uint16_t kHeaderRecord = 0x0014;
constexpr std::uint16_t kFooterRecord = 0x0015;
constexpr std::uint16_t kPasswordRecord = 0x002F;
constexpr std::uint16_t kPrintGridLinesRecord = 0x002B;
constexpr std::uint16_t kProtectRecord = 0x0012;
constexpr std::uint16_t kBiffVersion = 2;
constexpr std::uint16_t kSheetType = 10;
constexpr std::size_t kMaxShortText = 255;

void Put8(std::string& body, unsigned value) { body += static_cast<char>(value & 0xFF); }

void Put16(std::string& body, unsigned value) {
  Put8(body, value);
  Put8(body, value >> 8);
}

void PutDouble(std::string& body, double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  for (int i = 0; i < 8; ++i) Put8(body, static_cast<unsigned>(bits >> (8 * i)));
}

bool FitsInt16(long long value) {
  return value >= std::numeric_limits<std::int16_t>::min() && value <= std::numeric_limits<std::int16_t>::max();
}

// The narrowing rule for 1-based rows and columns: above 32767 take 65536 off, narrow
// to 16 bits, then subtract 1. A step that overflows 16 bits is a failure.
std::optional<std::int16_t> CellIndex(std::int32_t oneBased) {
  const long long narrowed = oneBased > 32767 ? oneBased - 65536LL : oneBased;
  if (!FitsInt16(narrowed) || !FitsInt16(narrowed - 1)) return std::nullopt;
  return static_cast<std::int16_t>(narrowed - 1);
}

double NumberOf(const ExcelValue& value) {
  if (const double* number = std::get_if<double>(&value)) return *number;
  return NumericValue(std::get<std::string>(value));
}

std::string TextOf(const ExcelValue& value) {
  if (const std::string* text = std::get_if<std::string>(&value)) return *text;
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, std::get<double>(value));
  return std::string(buffer, result.ptr);
}

// A text record body: a one-byte count and the characters.
bool PutShortText(std::string& body, const std::string& text) {
  if (text.size() > kMaxShortText) return false;
  Put8(body, static_cast<unsigned>(text.size()));
  body += text;
  return true;
}

}  // namespace

ExcelFile::~ExcelFile() {
  if (fileNumber_ > 0) CloseFile();
}

ExcelFile::Status ExcelFile::WriteRecord(std::uint16_t type, const std::string& body) {
  if (file_ == nullptr) return kNotOpen;
  if (body.size() > std::numeric_limits<std::uint16_t>::max()) return kBadValue;
  std::string record;
  Put16(record, type);
  Put16(record, static_cast<unsigned>(body.size()));
  record += body;
  if (std::fwrite(record.data(), 1, record.size(), file_) != record.size()) {
    std::clearerr(file_);
    return kWriteFailed;
  }
  return kOk;
}

ExcelFile::Status ExcelFile::CreateFile(const std::string& fileName) {
  if (file_ != nullptr) CloseFile();
  std::error_code ec;
  const auto status = std::filesystem::symlink_status(fileName, ec);
  // Only a file is deleted: a device such as /dev/full is written as it is.
  if (std::filesystem::is_regular_file(status) || std::filesystem::is_symlink(status)) {
    std::filesystem::remove(fileName, ec);
  }
  file_ = std::fopen(fileName.c_str(), "wb");
  if (file_ == nullptr) return kWriteFailed;
  // Unbuffered, so that each record's status says whether that record was written.
  std::setvbuf(file_, nullptr, _IONBF, 0);
  const int number = fileno(file_);
  fileNumber_ = static_cast<std::int16_t>(number > 0 && number <= 32767 ? number : 1);
  std::string body;
  Put16(body, kBiffVersion);
  Put16(body, kSheetType);
  return WriteRecord(kBofRecord, body);
}

ExcelFile::Status ExcelFile::CloseFile() {
  if (file_ == nullptr) return kNotOpen;
  Status status = WriteRecord(kEofRecord, {});
  if (std::fclose(file_) != 0 && status == kOk) status = kWriteFailed;
  file_ = nullptr;
  fileNumber_ = 0;
  return status;
}

ExcelFile::Status ExcelFile::WriteValue(int kind, std::uint8_t font, std::uint8_t alignment,
                                        std::uint8_t protection, std::int32_t row, std::int32_t column,
                                        const ExcelValue& value) {
  if (file_ == nullptr) return kNotOpen;
  const auto rowIndex = CellIndex(row);
  const auto columnIndex = CellIndex(column);
  if (!rowIndex || !columnIndex) return kBadValue;
  std::string body;
  Put16(body, static_cast<std::uint16_t>(*rowIndex));
  Put16(body, static_cast<std::uint16_t>(*columnIndex));
  Put8(body, protection);
  Put8(body, font);
  Put8(body, alignment);
  switch (kind) {
    case kIntegerCell: {
      const int integer = RoundHalfEven(NumberOf(value));
      if (!FitsInt16(integer)) return kBadValue;
      Put16(body, static_cast<std::uint16_t>(integer));
      return WriteRecord(kIntegerRecord, body);
    }
    case kNumberCell:
      PutDouble(body, NumberOf(value));
      return WriteRecord(kNumberRecord, body);
    case kTextCell:
      if (!PutShortText(body, TextOf(value))) return kBadValue;
      return WriteRecord(kTextRecord, body);
    default:
      return kBadValue;
  }
}

ExcelFile::Status ExcelFile::SetMargin(int marginCode, double inches) {
  if (marginCode < kLeftMargin || marginCode > kBottomMargin) return kBadValue;
  std::string body;
  PutDouble(body, inches);
  return WriteRecord(static_cast<std::uint16_t>(marginCode), body);
}

ExcelFile::Status ExcelFile::SetColumnWidth(int firstColumn, int lastColumn, int width) {
  if (firstColumn < 1 || firstColumn > 256 || lastColumn < 1 || lastColumn > 256 || width < 0 || width > 255) {
    return kBadValue;
  }
  std::string body;
  Put8(body, static_cast<unsigned>(firstColumn - 1));
  Put8(body, static_cast<unsigned>(lastColumn - 1));
  Put16(body, static_cast<unsigned>(width * 256));
  return WriteRecord(kColumnWidthRecord, body);
}

ExcelFile::Status ExcelFile::SetFont(const std::string& fontName, int height, int style) {
  if (height < 0 || height * 20 > 65535 || style < 0 || style > 255) return kBadValue;
  std::string body;
  Put16(body, static_cast<unsigned>(height * 20));
  Put8(body, static_cast<unsigned>(style));
  Put8(body, 0);
  if (!PutShortText(body, fontName)) return kBadValue;
  return WriteRecord(kFontRecord, body);
}

ExcelFile::Status ExcelFile::WriteTextRecord(std::uint16_t type, const std::string& text) {
  std::string body;
  if (!PutShortText(body, text)) return kBadValue;
  return WriteRecord(type, body);
}

ExcelFile::Status ExcelFile::SetHeader(const std::string& text) { return WriteTextRecord(kHeaderRecord, text); }

ExcelFile::Status ExcelFile::SetFooter(const std::string& text) { return WriteTextRecord(kFooterRecord, text); }

ExcelFile::Status ExcelFile::SetFilePassword(const std::string& text) { return WriteRecord(kPasswordRecord, text); }

ExcelFile::Status ExcelFile::PrintGridLines(bool print) {
  printGridLines_ = print;
  std::string body;
  Put16(body, print ? 1 : 0);
  return WriteRecord(kPrintGridLinesRecord, body);
}

ExcelFile::Status ExcelFile::ProtectSpreadsheet(bool protect) {
  protectSpreadsheet_ = protect;
  std::string body;
  Put16(body, protect ? 1 : 0);
  return WriteRecord(kProtectRecord, body);
}

}  // namespace qm
