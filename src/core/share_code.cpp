#include "core/share_code.h"

#include <cctype>

namespace qm {

namespace {

constexpr int kLongestRun = 26;

char SignLetter(char sign) {
  switch (sign) {
    case '<': return 'L';
    case '>': return 'G';
    case '^': return 'U';
    case 'v': return 'D';
    default: return 0;
  }
}

char LetterSign(char letter) {
  switch (letter) {
    case 'L': return '<';
    case 'G': return '>';
    case 'U': return '^';
    case 'D': return 'v';
    default: return 0;
  }
}

// The record character of position k: a clue digit, a sign or a blank.
char LayoutChar(const PuzzleModel& model, int k) {
  switch (KindOf(model, k)) {
    case PositionKind::Cell: {
      const int given = model.GivenValue[k];
      return given >= 1 && given <= model.GridSize ? static_cast<char>('0' + given) : '.';
    }
    case PositionKind::HorizontalSign:
    case PositionKind::VerticalSign: {
      const std::string& t = model.PosText[k];
      return t.size() == 1 && SignLetter(t[0]) != 0 ? t[0] : '.';
    }
    default: return '.';
  }
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  return text;
}

std::string PlaceName(int extent, std::size_t index) {
  const int row = static_cast<int>(index) / extent + 1;
  const int col = static_cast<int>(index) % extent + 1;
  return "line " + std::to_string(row) + ", place " + std::to_string(col);
}

}  // namespace

std::string EncodeShareCode(const PuzzleModel& model) {
  std::string code = std::to_string(model.GridSize) + "-";
  int blanks = 0;
  const auto flush = [&] {
    while (blanks > 0) {
      const int run = blanks < kLongestRun ? blanks : kLongestRun;
      code += static_cast<char>('a' + run - 1);
      blanks -= run;
    }
  };
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l; ++row) {
    for (int col = 1; col <= l; ++col) {
      const char c = LayoutChar(model, model.PositionOf[row][col]);
      if (c == '.') {
        ++blanks;
        continue;
      }
      flush();
      code += c >= '1' && c <= '9' ? c : SignLetter(c);
    }
  }
  flush();
  return code;
}

std::string ShareLink(std::string_view code) { return "#p=" + std::string(code); }

ShareCodeReading ReadShareCode(std::string_view code) {
  ShareCodeReading result;
  code = Trimmed(code);
  // A whole link: what follows "#p=".
  if (const std::size_t link = code.find("#p="); link != std::string_view::npos) code.remove_prefix(link + 3);
  if (code.size() < 2 || code[1] != '-' || code[0] < '0' || code[0] > '9') {
    result.error = "A share code begins with the grid size and \"-\", such as \"5-\"";
    return result;
  }
  const int n = code[0] - '0';
  if (n < kMinGridSize || n > kMaxGridSize) {
    result.error = "The grid size of a share code must be 3 to 9, not " + std::to_string(n);
    return result;
  }
  const int extent = 2 * n - 1;
  const std::size_t expected = static_cast<std::size_t>(extent) * static_cast<std::size_t>(extent);
  std::string layout;
  for (const char c : code.substr(2)) {
    if (c >= 'a' && c <= 'z') {
      layout.append(static_cast<std::size_t>(c - 'a' + 1), '.');
    } else if ((c >= '0' && c <= '9') || LetterSign(c) != 0) {
      layout += c >= '0' && c <= '9' ? c : LetterSign(c);
    } else {
      result.error = std::string("A share code cannot hold \"") + c + "\"";
      return result;
    }
    if (layout.size() > expected) break;
  }
  if (layout.size() != expected) {
    result.error = "A share code of a " + std::to_string(n) + "x" + std::to_string(n) + " grid stands for " +
                   std::to_string(expected) + " places; this one " +
                   (layout.size() > expected ? "has more" : "has " + std::to_string(layout.size()));
    return result;
  }
  for (std::size_t i = 0; i < layout.size(); ++i) {
    const char c = layout[i];
    if (c == '.') continue;
    const bool oddRow = (i / static_cast<std::size_t>(extent)) % 2 == 0;  // layout rows count from 1
    const bool oddCol = (i % static_cast<std::size_t>(extent)) % 2 == 0;
    const bool digit = c >= '0' && c <= '9';
    if (oddRow && oddCol) {
      if (!digit) {
        result.error = std::string("A sign \"") + c + "\" stands in a cell (" + PlaceName(extent, i) + ")";
        return result;
      }
      if (c < '1' || c - '0' > n) {
        result.error = std::string("The digit ") + c + " does not fit a " + std::to_string(n) + "x" +
                       std::to_string(n) + " grid (" + PlaceName(extent, i) + ")";
        return result;
      }
      continue;
    }
    if (digit) {
      result.error = std::string("A digit ") + c + " stands between cells (" + PlaceName(extent, i) + ")";
      return result;
    }
    const bool horizontalSlot = oddRow && !oddCol;
    const bool verticalSlot = !oddRow && oddCol;
    const bool horizontalSign = c == '<' || c == '>';
    if (!(horizontalSlot && horizontalSign) && !(verticalSlot && !horizontalSign)) {
      result.error = std::string("The sign \"") + c + "\" cannot stand at " + PlaceName(extent, i);
      return result;
    }
  }
  result.ok = true;
  result.size = n;
  result.layout = std::move(layout);
  return result;
}

bool LoadShareCode(PuzzleModel& model, std::string_view code, std::string* error) {
  ShareCodeReading reading = ReadShareCode(code);
  if (!reading.ok) {
    if (error != nullptr) *error = reading.error;
    return false;
  }
  SetSize(model, reading.size);
  const int l = model.LayoutExtent;
  int signs = 0;
  int clues = 0;
  for (int row = 1; row <= l; ++row) {
    for (int col = 1; col <= l; ++col) {
      const int k = model.PositionOf[row][col];
      const char c = reading.layout[static_cast<std::size_t>((row - 1) * l + (col - 1))];
      model.SolutionText[k].clear();
      if (c == '.') continue;
      model.PosText[k] = std::string(1, c);
      if (c >= '1' && c <= '9') {
        model.GivenValue[k] = c - '0';
        ++clues;
      } else {
        ++signs;
      }
    }
  }
  model.ConstraintCount = signs;
  model.ClueCount = clues;
  model.Modified = 0;
  model.UndoList.clear();
  model.SolutionList.clear();
  return true;
}

}  // namespace qm
