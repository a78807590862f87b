// Colour schemes: named sections of "all.col" in the application directory. A section
// is a line with the scheme's name ("default.col") followed by twelve colour lines of
// red;green;blue.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/puzzle_model.h"

namespace qm {

inline constexpr std::string_view kSchemeFileName = "all.col";

// 24-bit colours, red in the low byte.
using Rgb = std::uint32_t;
constexpr Rgb MakeRgb(int red, int green, int blue) {
  return static_cast<Rgb>(red) | static_cast<Rgb>(green) << 8 | static_cast<Rgb>(blue) << 16;
}
constexpr int Red(Rgb c) { return static_cast<int>(c & 0xFF); }
constexpr int Green(Rgb c) { return static_cast<int>(c >> 8 & 0xFF); }
constexpr int Blue(Rgb c) { return static_cast<int>(c >> 16 & 0xFF); }

// Colours 1 to 12 come from a scheme; 0 and 13 never do. What the window paints with
// them: 1 entered digits, 2 the grid and the panels, 3 the buttons and the puzzle
// number, 4 the signs, 5 the cells (when cell colouring is on), the description and
// the info labels, 6 the line of an explained step, 7 the cell the step changes,
// 8 candidates, 9 cell borders, 10 given digits, 11 the status and progress lines,
// 12 the keyboard cursor. Colour 13 is the background of a position Verify finds at
// fault.
struct ColourTable {
  ColourTable();
  std::array<Rgb, 14> colour{};
};

inline constexpr int kTextColour = 1;
inline constexpr int kGridColour = 2;
inline constexpr int kButtonColour = 3;
inline constexpr int kSignColour = 4;
inline constexpr int kCellColour = 5;
inline constexpr int kHighlightColour = 6;
inline constexpr int kTargetColour = 7;
inline constexpr int kCandidateColour = 8;
inline constexpr int kBorderColour = 9;
inline constexpr int kClueColour = 10;
inline constexpr int kStatusColour = 11;
inline constexpr int kCursorColour = 12;
inline constexpr int kErrorColour = 13;

// The entries of the scheme list: for every line of "all.col" that contains ".col",
// the part before it.
std::vector<std::string> SchemeList(const std::string& appDir);

// Reads the scheme `name` of the application directory's "all.col" into the table;
// false when it is not there whole (colours read before the fault stay).
bool ReadScheme(const std::string& appDir, ColourTable& table, const std::string& name);

// The background of position k: colour 2, or colour 5 for cells while cell colouring
// is on.
Rgb PositionBackground(const PuzzleModel& model, const ColourTable& table, int k);

// "Set/Clear Cell Color".
void ToggleCellColouring(PuzzleModel& model);

}  // namespace qm
