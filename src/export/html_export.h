// The puzzle, and on request its stored solution, as a web page filled into a template
// chosen by the grid size (3, 4 and 5 only).
//
// Template lines: "<p>x</p>" is the heading of the table that follows; "</table>" ends
// a table; a line starting with "$" is one layout row, holding the placeholder "rc"
// (layout row and column in decimal, 35 for row 3 column 5) for each position. In every
// copied line "$" becomes "</td><td>" and "@" becomes "</td></tr><tr>".
#pragma once

#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include <functional>

namespace qm {

// "htmltemplate3x3.txt" for N = 3, and so on; empty for sizes without a template.
std::string HtmlTemplateName(int n);

// Where the templates are looked for, in order: the working directory ("") and then
// the application directory.
std::vector<std::string> DefaultTemplateDirectories(const PuzzleModel& model);

// Fills the template of the model's size into a page; `withSolution` is asked once the
// puzzle table is done whether the solution table follows. False when no template
// could be read.
bool BuildHtmlPage(const PuzzleModel& model, const std::function<bool()>& withSolution,
                   const std::string& description, const std::vector<std::string>& templateDirectories,
                   std::string& page);

}  // namespace qm
