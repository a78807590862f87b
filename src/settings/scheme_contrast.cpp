#include "settings/scheme_contrast.h"

#include <algorithm>
#include <cmath>

namespace qm {

namespace {

double Linear(int component) {
  const double v = component / 255.0;
  return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

}  // namespace

double RelativeLuminance(Rgb colour) {
  return 0.2126 * Linear(Red(colour)) + 0.7152 * Linear(Green(colour)) + 0.0722 * Linear(Blue(colour));
}

double ContrastRatio(Rgb a, Rgb b) {
  const double la = RelativeLuminance(a);
  const double lb = RelativeLuminance(b);
  return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

std::vector<TextOnBackground> SchemeTextPairs() {
  std::vector<TextOnBackground> pairs;
  const std::pair<int, const char*> texts[] = {{kTextColour, "player's digits and pencil marks"},
                                               {kClueColour, "clues"},
                                               {kCandidateColour, "candidates"},
                                               {kSolvedDigitColour, "solved digits"}};
  const std::pair<int, const char*> cells[] = {{kGridColour, "the grid"},
                                               {kCellColour, "coloured cells"},
                                               {kHighlightColour, "highlighted cells"},
                                               {kTargetColour, "the changed cell"}};
  for (const auto& [text, textName] : texts) {
    for (const auto& [cell, cellName] : cells) pairs.push_back({text, cell, std::string(textName) + " on " + cellName});
  }
  pairs.push_back({kStatusColour, kGridColour, "the status line"});
  pairs.push_back({kTextColour, kButtonColour, "buttons and the puzzle number"});
  pairs.push_back({kTextColour, kCellColour, "the description and the counts"});
  pairs.push_back({kTextColour, kGridColour, "labels, menus and dialogs"});
  return pairs;
}

Rgb ReadableTextOn(Rgb background) {
  const Rgb black = MakeRgb(0, 0, 0);
  const Rgb white = MakeRgb(255, 255, 255);
  return ContrastRatio(black, background) >= ContrastRatio(white, background) ? black : white;
}

}  // namespace qm
