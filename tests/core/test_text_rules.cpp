#include "core/text_rules.h"

#include <gtest/gtest.h>

#include <climits>

namespace qm {
namespace {

TEST(NumericValue, ReadsTheLeadingNumberOnly) {
  const struct {
    const char* text;
    double value;
  } cases[] = {
      {"", 0},       {"abc", 0},       {"#2", 0},      {"12", 12},     {"  12abc", 12},
      {"\t4", 4},    {"-3.5x", -3.5},  {"+7", 7},      {"1.2.3", 1.2}, {".5", 0.5},
      {"-", 0},      {"5.", 5},        {"1e5", 1},     {"1 2", 1},     {"007", 7},
      {"2.5", 2.5},  {"- 4", 0},       {"0.000", 0},
  };
  for (const auto& c : cases) EXPECT_DOUBLE_EQ(NumericValue(c.text), c.value) << '"' << c.text << '"';
}

TEST(NumericValue, SurvivesAbsurdNumbers) {
  EXPECT_EQ(IntegerValue("99999999999999999999999"), INT_MAX);
  EXPECT_EQ(IntegerValue("-99999999999999999999999"), INT_MIN);
  EXPECT_EQ(IntegerValue(std::string(400, '9')), INT_MAX);
  EXPECT_EQ(IntegerValue("0." + std::string(400, '0') + "1"), 0);
}

TEST(RoundHalfEven, RoundsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(RoundHalfEven(0.5), 0);
  EXPECT_EQ(RoundHalfEven(1.5), 2);
  EXPECT_EQ(RoundHalfEven(2.5), 2);
  EXPECT_EQ(RoundHalfEven(3.5), 4);
  EXPECT_EQ(RoundHalfEven(-2.5), -2);
  EXPECT_EQ(RoundHalfEven(-1.5), -2);
  EXPECT_EQ(RoundHalfEven(2.6), 3);
  EXPECT_EQ(RoundHalfEven(-2.4), -2);
  EXPECT_EQ(IntegerValue("2.5"), 2);
}

TEST(NumberTexts, StrAndPictures) {
  EXPECT_EQ(Str(0), " 0");
  EXPECT_EQ(Str(12), " 12");
  EXPECT_EQ(Str(-5), "-5");
  EXPECT_EQ(ZeroPadded(12, 3), "012");
  EXPECT_EQ(ZeroPadded(0, 3), "000");
  EXPECT_EQ(ZeroPadded(1234, 3), "1234");
  EXPECT_EQ(ZeroPadded(-1, 3), "-001");
  EXPECT_EQ(ZeroPadded(7, 2), "07");
  EXPECT_EQ(ZeroPadded(LLONG_MIN, 3), "-9223372036854775808");
}

TEST(Trim, RemovesOuterBlanksOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Trim("\tx"), "\tx");
}

TEST(DelimitedField, EndsAtCommaOrLineEnd) {
  std::size_t pos = 0;
  EXPECT_EQ(ReadDelimitedField("  Sample  ", pos), "Sample  ");  // trailing blanks kept
  EXPECT_EQ(pos, std::string_view::npos);

  pos = 0;
  EXPECT_EQ(ReadDelimitedField("Hello, world", pos), "Hello");
  EXPECT_EQ(pos, 6u);

  pos = 0;
  EXPECT_EQ(ReadDelimitedField("\"a,b\" junk, rest", pos), "a,b");
  EXPECT_EQ(std::string_view("\"a,b\" junk, rest").substr(pos), " rest");

  pos = 0;
  EXPECT_EQ(ReadDelimitedField("\"unclosed, still", pos), "unclosed, still");
  EXPECT_EQ(pos, std::string_view::npos);

  pos = 0;
  EXPECT_EQ(ReadDelimitedField("", pos), "");
  EXPECT_EQ(pos, std::string_view::npos);
}

TEST(CodePage, EveryByteSurvivesTheRoundTrip) {
  std::string all;
  for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
  EXPECT_EQ(Utf8ToCp1252(Cp1252ToUtf8(all)), all);
  EXPECT_EQ(Cp1252ToUtf8("\x80"), "\u20AC");
  EXPECT_EQ(Cp1252ToUtf8("caf\xE9"), "caf\u00E9");
  EXPECT_EQ(Utf8ToCp1252("\u201Cq\u201D"), "\x93q\x94");
}

TEST(CodePage, UnmappableAndInvalidUtf8BecomeQuestionMarks) {
  EXPECT_EQ(Utf8ToCp1252("\u4E2D"), "?");
  EXPECT_EQ(Utf8ToCp1252("\xF0\x9F\x98\x80!"), "?!");
  EXPECT_EQ(Utf8ToCp1252("a\xC3"), "a?");      // cut sequence
  EXPECT_EQ(Utf8ToCp1252("\x80z"), "?z");      // stray continuation byte
  EXPECT_EQ(Utf8ToCp1252("\xE2\x28\xA1"), "?(?");  // broken continuation
}

}  // namespace
}  // namespace qm
