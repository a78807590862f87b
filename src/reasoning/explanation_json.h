// The ladder's steps and grade as JSON, one shape for every front end (the CLI's
// `explain`, the web page), so that the two can be compared answer for answer.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "reasoning/ladder.h"

namespace qm::reasoning {

// [row, column], counted from 1.
nlohmann::ordered_json CellJson(int n, int cell);
// The digits of a mask in ascending order, as text ("57").
std::string DigitText(DigitMask mask);
nlohmann::ordered_json GradeJson(const Grade& grade);
// The step's sentence is the ladder's own UTF-8 text: it holds no file text.
nlohmann::ordered_json StepJson(int n, const Step& step);

}  // namespace qm::reasoning
