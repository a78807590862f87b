#include "reasoning/explanation_json.h"

namespace qm::reasoning {

using Json = nlohmann::ordered_json;

Json CellJson(int n, int cell) { return Json::array({cell / n + 1, cell % n + 1}); }

std::string DigitText(DigitMask mask) {
  std::string text;
  masks::ForEachDigit(mask, [&](int d) { text += static_cast<char>('0' + d); });
  return text;
}

Json GradeJson(const Grade& grade) { return {{"level", grade.level}, {"name", grade.name}, {"score", grade.score}}; }

Json StepJson(int n, const Step& step) {
  Json cells = Json::array();
  for (int c : step.cells) cells.push_back(CellJson(n, c));
  Json placed = Json::array();
  for (const auto& [c, d] : step.placed) placed.push_back({{"cell", CellJson(n, c)}, {"digit", d}});
  Json removed = Json::array();
  for (const auto& [c, m] : step.removed) removed.push_back({{"cell", CellJson(n, c)}, {"digits", DigitText(m)}});
  return {{"technique", step.technique}, {"level", step.level}, {"text", step.text},
          {"cells", cells},             {"placed", placed},     {"removed", removed}};
}

}  // namespace qm::reasoning
