// How readable a colour scheme is: the contrast ratio of every text colour the window
// draws against every background it draws that text on.
#pragma once

#include <string>
#include <vector>

#include "settings/colour_schemes.h"

namespace qm {

// Relative luminance of a colour, 0 (black) to 1 (white), with the sRGB curve.
double RelativeLuminance(Rgb colour);
// (lighter + 0.05) / (darker + 0.05): 1 for equal colours, 21 for black on white.
double ContrastRatio(Rgb a, Rgb b);

// The least contrast the window accepts for text.
inline constexpr double kMinimumTextContrast = 4.5;

// Digits placed by a solve are drawn in the cursor's colour; the player's pencil marks
// in the entered digits' colour, small.
inline constexpr int kSolvedDigitColour = kCursorColour;
inline constexpr int kPencilMarkColour = kTextColour;

// A text colour and a background it is drawn on, as colour indices of the scheme.
struct TextOnBackground {
  int text = 0;
  int background = 0;
  std::string what;
};
// Every pair the window draws: digits of all three origins, candidates and pencil
// marks on plain, coloured, highlighted and target cells; the panel's texts.
std::vector<TextOnBackground> SchemeTextPairs();

// Black or white, whichever reads better on `background` (text on a position marked
// in the error colour, which no scheme sets).
Rgb ReadableTextOn(Rgb background);

}  // namespace qm
