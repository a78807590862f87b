#include "export/html_export.h"

#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

constexpr std::string_view kHeadingMark = "<p>x</p>";
constexpr std::string_view kTableEnd = "</table>";

void ReplaceAll(std::string& line, std::string_view from, std::string_view to) {
  for (std::size_t at = line.find(from); at != std::string::npos; at = line.find(from, at + to.size())) {
    line.replace(at, from.size(), to);
  }
}

bool IsSignRow(int r) { return r == 2 || r == 4 || r == 6 || r == 8; }

bool IsSignSlotKind(PositionKind kind) {
  return kind == PositionKind::HorizontalSign || kind == PositionKind::VerticalSign;
}

// What a box of the page shows. An empty box is told apart by where it stands: a blank
// cell in the puzzle, a dot (puzzle) or dash (solution) between cells.
std::string BoxText(const PuzzleModel& model, int r, int c, bool solution) {
  const int k = model.PositionOf[r][c];
  const bool signPlace = IsSignSlotKind(KindOf(model, k)) || IsSignRow(r);
  std::string t = solution ? model.SolutionText[k] : model.PosText[k];
  const std::string_view trimmed = Trim(t);
  if (!solution && trimmed.empty()) {
    t = signPlace ? ".&nbsp;" : "_&nbsp;";
  } else if (solution && (trimmed.empty() || trimmed == "-")) {
    t = signPlace ? "-&nbsp;" : "&nbsp;";
  }
  return "<b>" + t + "</b>";
}

class PageFiller {
 public:
  PageFiller(const PuzzleModel& model, LineReader& source, const std::string& description)
      : model_(model), source_(source), description_(description) {}

  // Copies template lines up to the next "</table>" (which is not copied) or the end,
  // filling the heading and the "$" rows. False on a read error.
  bool CopyTable(bool solution) {
    int r = 0;
    std::string line;
    while (source_.ReadLine(line)) {
      if (line == kTableEnd) return true;
      if (line == kHeadingMark) line = (solution ? "<p>Sol:" : "<p>Puz:") + description_ + "</p>";
      if (!line.empty() && line[0] == '$') {
        ++r;
        for (int c = 1; r <= model_.LayoutExtent && c <= model_.LayoutExtent; ++c) {
          ReplaceAll(line, std::to_string(r) + std::to_string(c), BoxText(model_, r, c, solution));
        }
      }
      ReplaceAll(line, "$", "</td><td>");
      ReplaceAll(line, "@", "</td></tr><tr>");
      page_.Line(line);
    }
    return !source_.Failed();
  }

  void Line(std::string_view line) { page_.Line(line); }
  const std::string& Text() const { return page_.Text(); }

 private:
  const PuzzleModel& model_;
  LineReader& source_;
  const std::string& description_;
  TextBuilder page_;
};

}  // namespace

std::string HtmlTemplateName(int n) {
  if (n < 3 || n > 5) return {};
  const std::string size = std::to_string(n);
  return "htmltemplate" + size + "x" + size + ".txt";
}

std::vector<std::string> DefaultTemplateDirectories(const PuzzleModel& model) {
  return {"", ApplicationDirectoryOf(model)};
}

bool BuildHtmlPage(const PuzzleModel& model, const std::function<bool()>& withSolution,
                   const std::string& description, const std::vector<std::string>& templateDirectories,
                   std::string& page) {
  const std::string name = HtmlTemplateName(model.GridSize);
  if (name.empty()) return false;
  std::string path;
  for (const std::string& directory : templateDirectories) {
    const std::string candidate =
        directory.empty() ? name : directory + (directory.back() == '/' ? "" : "/") + name;
    if (FileLength(candidate)) {
      path = candidate;
      break;
    }
  }
  if (path.empty()) return false;
  LineReader source(path);
  if (!source.IsOpen()) return false;

  PageFiller filler(model, source, description);
  if (!filler.CopyTable(false)) return false;
  filler.Line(kTableEnd);
  if (withSolution() && !filler.CopyTable(true)) return false;
  filler.Line(kTableEnd);
  filler.Line("</body>");
  filler.Line("</html>");
  page = filler.Text();
  return true;
}

}  // namespace qm
