#include "settings/colour_schemes.h"

#include <algorithm>

#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

std::string SchemePath(const std::string& appDir) { return appDir + std::string(kSchemeFileName); }

int Component(std::string_view field) { return std::clamp(IntegerValue(field), 0, 255); }

}  // namespace

ColourTable::ColourTable() {
  // The look before any scheme is loaded: the same as "default.col".
  colour = {MakeRgb(0, 0, 0),       MakeRgb(33, 37, 41),    MakeRgb(236, 239, 243), MakeRgb(214, 222, 232),
            MakeRgb(52, 84, 140),   MakeRgb(255, 255, 255), MakeRgb(255, 238, 183), MakeRgb(255, 208, 133),
            MakeRgb(83, 90, 97),    MakeRgb(160, 170, 182), MakeRgb(20, 40, 90),    MakeRgb(60, 70, 80),
            MakeRgb(38, 90, 166),   MakeRgb(150, 50, 50)};
}

std::vector<std::string> SchemeList(const std::string& appDir) {
  std::vector<std::string> list;
  LineReader file(SchemePath(appDir));
  std::string line;
  while (file.ReadLine(line)) {
    const auto at = line.find(".col");
    if (at != std::string::npos) list.push_back(line.substr(0, at));
  }
  return list;
}

bool ReadScheme(const std::string& appDir, ColourTable& table, const std::string& name) {
  LineReader file(SchemePath(appDir));
  std::string line;
  bool found = false;
  while (!found && file.ReadLine(line)) found = line == name;
  for (int i = 1; found && i <= 12; ++i) {
    if (!file.ReadLine(line)) {
      found = false;
      break;
    }
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    for (;;) {
      const auto semicolon = line.find(';', start);
      fields.push_back(std::string_view(line).substr(start, semicolon == std::string::npos ? std::string::npos : semicolon - start));
      if (semicolon == std::string::npos) break;
      start = semicolon + 1;
    }
    if (fields.size() < 3) {
      found = false;
      break;
    }
    table.colour[static_cast<std::size_t>(i)] = MakeRgb(Component(fields[0]), Component(fields[1]), Component(fields[2]));
  }
  return found;
}

Rgb PositionBackground(const PuzzleModel& model, const ColourTable& table, int k) {
  const bool cell = KindOf(model, k) == PositionKind::Cell;
  return table.colour[static_cast<std::size_t>(cell && model.CellColouring == kYes ? kCellColour : kGridColour)];
}

void ToggleCellColouring(PuzzleModel& model) { model.CellColouring = model.CellColouring == kYes ? kNo : kYes; }

}  // namespace qm
