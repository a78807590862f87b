// Text rules shared by every part of the workbench: how a text is read as a number,
// how numbers are written into messages and files, and the single-byte code page the
// files use.
#pragma once

#include <string>
#include <string_view>

namespace qm {

// The system's line break inside messages and files.
inline constexpr std::string_view kLineBreak = "\r\n";

// The leading number of a text: leading blanks skipped, an optional sign, digits and
// an optional decimal part; anything else ends the number. 0 when there is none.
// "  12abc" -> 12, "-3.5x" -> -3.5, "#2" -> 0, ".5" -> 0.5.
double NumericValue(std::string_view text);

// Rounds to the nearest integer, halves to even (2.5 -> 2, 3.5 -> 4), clamped to the
// 32-bit range so that absurd inputs cannot overflow.
int RoundHalfEven(double value);

// NumericValue rounded to an integer, halves to even: the usual way a text becomes a
// count, a size or a record number.
int IntegerValue(std::string_view text);

// A number as messages show it: a blank before a non-negative number (" 5"), the sign
// before a negative one ("-5").
std::string Str(long long value);

// A number with at least `digits` digits, leading zeros added: ZeroPadded(12, 3) is
// "012" (the "000" picture), ZeroPadded(-1, 3) is "-001".
std::string ZeroPadded(long long value, int digits);

// The text without its leading and trailing blanks (spaces only, like the files' own
// trimming).
std::string_view Trim(std::string_view text);

// Reads one delimited field from `line`, starting at `pos`: leading blanks are skipped,
// the field ends at the first comma or at the end of the line, and a field that begins
// with a double quote runs to the next double quote, which is dropped (the rest up to
// the next comma is then skipped). On return `pos` is the index just past the comma
// that ended the field, or std::string_view::npos when the line was used up.
std::string ReadDelimitedField(std::string_view line, std::size_t& pos);

// Windows-1252 bytes to UTF-8. Every byte maps to one character, so the conversion
// back is lossless for text that came from a file.
std::string Cp1252ToUtf8(std::string_view bytes);

// UTF-8 to Windows-1252 bytes; characters the code page lacks become "?".
std::string Utf8ToCp1252(std::string_view utf8);

}  // namespace qm
