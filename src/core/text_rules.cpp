#include "core/text_rules.h"

#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <locale>
#include <sstream>

namespace qm {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Unicode code points of the bytes 0x80..0x9F; the five bytes the code page leaves
// undefined map to the C1 control of the same value, so every byte survives a round trip.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

char CodePageByte(char32_t cp) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<char>(cp);
  for (std::size_t i = 0; i < kHighControls.size(); ++i) {
    if (kHighControls[i] == cp) return static_cast<char>(0x80 + i);
  }
  return '?';
}

}  // namespace

double NumericValue(std::string_view text) {
  // Most texts are a few plain digits (cells, counts): no need for the general parser.
  if (!text.empty() && text.size() <= 9) {
    int value = 0;
    std::size_t digits = 0;
    while (digits < text.size() && IsDigit(text[digits])) value = value * 10 + (text[digits++] - '0');
    if (digits == text.size() || (digits > 0 && text[digits] != '.')) return value;
  }
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  const std::size_t start = i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  const std::size_t digitsStart = i;
  while (i < text.size() && IsDigit(text[i])) ++i;
  bool anyDigit = i > digitsStart;
  if (i < text.size() && text[i] == '.') {
    std::size_t j = i + 1;
    while (j < text.size() && IsDigit(text[j])) ++j;
    if (j > i + 1) {
      anyDigit = true;
      i = j;
    }
  }
  if (!anyDigit) return 0.0;
  // from_chars rejects a leading '+' and ignores the locale, which is what we want.
  std::size_t from = start;
  if (text[from] == '+') ++from;
  double value = 0.0;
#if defined(__cpp_lib_to_chars)
  const bool outOfRange =
      std::from_chars(text.data() + from, text.data() + i, value).ec == std::errc::result_out_of_range;
#else
  // Libraries without from_chars for doubles (the WebAssembly build): a stream in the
  // classic locale reads the same text the same way.
  std::istringstream in(std::string(text.substr(from, i - from)));
  in.imbue(std::locale::classic());
  in >> value;
  const bool outOfRange = in.fail();
#endif
  if (outOfRange) {
    // Overflow or underflow: a non-zero integer part means overflow.
    for (std::size_t j = digitsStart; j < i && text[j] != '.'; ++j) {
      if (text[j] != '0') return text[start] == '-' ? -HUGE_VAL : HUGE_VAL;
    }
    return 0.0;
  }
  return value;
}

int RoundHalfEven(double value) {
  if (std::isnan(value)) return 0;
  if (value >= static_cast<double>(INT_MAX)) return INT_MAX;
  if (value <= static_cast<double>(INT_MIN)) return INT_MIN;
  double rounded = std::round(value);  // halves away from zero
  if (std::fabs(value - std::trunc(value)) == 0.5) rounded = 2.0 * std::round(value / 2.0);
  return static_cast<int>(rounded);
}

int IntegerValue(std::string_view text) { return RoundHalfEven(NumericValue(text)); }

std::string Str(long long value) {
  return value >= 0 ? " " + std::to_string(value) : std::to_string(value);
}

std::string ZeroPadded(long long value, int digits) {
  const bool negative = value < 0;
  const auto magnitude = negative ? 0ULL - static_cast<unsigned long long>(value)
                                  : static_cast<unsigned long long>(value);
  std::string body = std::to_string(magnitude);
  if (static_cast<int>(body.size()) < digits) body.insert(0, digits - body.size(), '0');
  return negative ? "-" + body : body;
}

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

std::string ReadDelimitedField(std::string_view line, std::size_t& pos) {
  std::size_t i = pos;
  while (i < line.size() && line[i] == ' ') ++i;
  std::string field;
  if (i < line.size() && line[i] == '"') {
    const std::size_t close = line.find('"', i + 1);
    if (close == std::string_view::npos) {
      field.assign(line.substr(i + 1));
      pos = std::string_view::npos;
      return field;
    }
    field.assign(line.substr(i + 1, close - i - 1));
    i = close + 1;
    const std::size_t comma = line.find(',', i);
    pos = comma == std::string_view::npos ? std::string_view::npos : comma + 1;
    return field;
  }
  const std::size_t comma = line.find(',', i);
  if (comma == std::string_view::npos) {
    field.assign(line.substr(std::min(i, line.size())));
    pos = std::string_view::npos;
  } else {
    field.assign(line.substr(i, comma - i));
    pos = comma + 1;
  }
  return field;
}

std::string Cp1252ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 0x80 && b <= 0x9F) {
      AppendUtf8(out, kHighControls[b - 0x80]);
    } else {
      AppendUtf8(out, b);
    }
  }
  return out;
}

std::string Utf8ToCp1252(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  std::size_t i = 0;
  while (i < utf8.size()) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    int extra = 0;
    char32_t cp = 0;
    if (lead < 0x80) {
      cp = lead;
    } else if ((lead & 0xE0) == 0xC0) {
      extra = 1;
      cp = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
      extra = 2;
      cp = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
      extra = 3;
      cp = lead & 0x07;
    } else {
      out += '?';  // a stray continuation byte or an invalid lead byte
      ++i;
      continue;
    }
    bool valid = true;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= utf8.size()) {
        valid = false;
        break;
      }
      const auto next = static_cast<unsigned char>(utf8[i + k]);
      if ((next & 0xC0) != 0x80) {
        valid = false;
        break;
      }
      cp = (cp << 6) | (next & 0x3F);
    }
    if (!valid) {
      out += '?';
      ++i;
      continue;
    }
    out += CodePageByte(cp);
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

}  // namespace qm
