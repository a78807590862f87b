// book and render: printable pages and single pictures drawn by the page renderer.
// They need the Qt build; the Qt-free build keeps the commands and says so.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/cli_support.h"
#include "cli/commands.h"
#include "core/collection_file.h"
#include "core/file_replace.h"
#include "core/text_rules.h"
#include "commands/print_answers.h"
#include "commands/save_commands.h"
#include "reasoning/ladder.h"

#ifdef QUILLMERE_HAS_RENDER
#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>

#include "render/page_renderer.h"
#endif

namespace qm::cli {

namespace {

struct BookArgs {
  std::string file;
  std::string range;
  bool rangeGiven = false;
  int perPage = 4;
  int answersPerPage = 12;
  bool noAnswers = false;
  std::string title;
  std::string page = "a4";
  bool landscape = false;
  std::string order = "file";
  bool grades = false;
  std::string caption;
  double bleed = 0;
  std::string mirror;
  bool titlePage = false;
  bool howToPlay = false;
  bool contents = false;
  std::string out;
};

struct RenderArgs {
  PuzzleArgs puzzle;
  bool solution = false;
  std::string out;
};

// The page sizes --page takes, named without Qt so the Qt-free build checks them too,
// with their trim sizes in millimetres (portrait).
struct PaperName {
  const char* name;
  double width;
  double height;
};
constexpr std::array<PaperName, 7> kPapers{{{"a3", 297, 420},
                                             {"a4", 210, 297},
                                             {"a5", 148, 210},
                                             {"letter", 215.9, 279.4},
                                             {"legal", 215.9, 355.6},
                                             {"6x9in", 152.4, 228.6},
                                             {"8.5x11in", 215.9, 279.4}}};

std::vector<std::string> PaperNames() {
  std::vector<std::string> names;
  for (const PaperName& paper : kPapers) names.emplace_back(paper.name);
  return names;
}

#ifdef QUILLMERE_HAS_RENDER

// --caption: a comma list of number, title and grade. The number always leads.
render::Captions ParseCaptions(const std::string& text, bool grades) {
  render::Captions captions;
  if (text.empty()) {
    captions.grade = true;
    return captions;
  }
  captions.grade = grades;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::string part = text.substr(start, comma - start);
    if (part == "title") {
      captions.title = true;
    } else if (part == "grade") {
      captions.grade = true;
    } else if (part != "number") {
      throw UsageError{"--caption takes number, title and grade separated by commas, got " + text};
    }
    start = comma + 1;
  }
  return captions;
}

// --mirror-margins INNER,OUTER in millimetres.
std::pair<double, double> ParseMirror(const std::string& text) {
  const std::size_t comma = text.find(',');
  auto number = [&](const std::string& part) {
    std::size_t used = 0;
    double value = -1;
    try {
      value = std::stod(part, &used);
    } catch (const std::exception&) {
      used = 0;
    }
    if (used == 0 || used != part.size() || !std::isfinite(value) || value < 0 || value > 50) {
      throw UsageError{"--mirror-margins must be INNER,OUTER in millimetres from 0 to 50, got " + text};
    }
    return value;
  };
  if (comma == std::string::npos) number("");
  return {number(text.substr(0, comma)), number(text.substr(comma + 1))};
}

bool EndsWith(std::string text, std::string_view tail) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string FileNameOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// A Qt GUI application for the fonts and painting, on the offscreen platform unless
// the caller chose another, so that no display is needed.
class HeadlessGui {
 public:
  HeadlessGui() {
    if (QCoreApplication::instance() != nullptr) return;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt's notes about the session (no runtime directory and the like) are no business
    // of a script reading our output; only its errors get through.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
      if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    app_ = std::make_unique<QGuiApplication>(argc_, argv_);
  }

 private:
  int argc_ = 1;
  char name_[14] = "quillmere-cli";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> app_;
};

// The example on the how-to-play page: a small puzzle of the shipped collection, with
// the first steps the technique ladder takes on it.
constexpr std::array<const char*, 7> kExampleRows{"....1..|3.2.1.4", "..^....|..^....", "..3....|2.3.4.1",
                                                  "v......|v......", ".......|1.4.2.3", ".......|.......",
                                                  ".>....2|4>1.3.2"};
constexpr std::size_t kExampleSteps = 7;

render::WorkedExample Example() {
  PuzzleModel model;
  SetSize(model, 4);
  for (int r = 1; r <= model.LayoutExtent; ++r) {
    const std::string_view row = kExampleRows[static_cast<std::size_t>(r - 1)];
    for (int c = 1; c <= model.LayoutExtent; ++c) {
      const auto k = static_cast<std::size_t>(model.PositionOf[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]);
      const char shown = row[static_cast<std::size_t>(c - 1)];
      const char solved = row[static_cast<std::size_t>(c + model.LayoutExtent)];
      model.PosText[k] = shown == '.' ? std::string() : std::string(1, shown);
      model.GivenValue[k] = shown >= '1' && shown <= '9' ? shown - '0' : 0;
      model.SolutionText[k] = solved == '.' ? std::string() : std::string(1, solved);
    }
  }
  render::WorkedExample example;
  example.puzzle = render::TakePuzzle(model, 1);
  const reasoning::Explanation explanation = reasoning::ExplainModel(model);
  for (const reasoning::Step& step : explanation.steps) {
    if (example.steps.size() == kExampleSteps) {
      example.steps.emplace_back("... and so on, until every cell holds its digit.");
      break;
    }
    example.steps.push_back(step.text);
  }
  return example;
}

int RunBook(Output& output, BookArgs args) {
  if (args.out.empty()) throw UsageError{"-o: the output file name is empty"};
  if (args.rangeGiven && args.range.empty()) throw UsageError{"--range is empty"};
  const render::Captions captions = ParseCaptions(args.caption, args.grades);
  render::PageSpec spec;
  for (const PaperName& paper : kPapers) {
    if (args.page == paper.name) spec.trim = QSizeF(paper.width, paper.height);
  }
  if (args.landscape) spec.trim.transpose();
  spec.bleed = args.bleed;
  spec.top = spec.bottom = spec.inner = spec.outer = render::kBookMarginMm;
  if (!args.mirror.empty()) {
    std::tie(spec.inner, spec.outer) = ParseMirror(args.mirror);
    spec.mirror = true;
    if (spec.inner + spec.outer > spec.trim.width() / 2) {
      throw UsageError{"--mirror-margins " + args.mirror + " leave too little of the page"};
    }
  }
  const int count = CountPuzzles(args.file);
  Range range = ParseRange(args.range);
  if (!args.rangeGiven) range.last = count;
  if (count == 0) return Fail(output, "There are no puzzles in this file", {{"file", args.file}});
  if (range.last > count) {
    throw UsageError{"--range " + args.range + " goes past the file's " + std::to_string(count) + " puzzles"};
  }
  if (!EndsWith(args.out, ".pdf")) args.out += ".pdf";

  // The file is read once; every puzzle gets its answer (refused, before anything is
  // written, when it has none or more than one) and, when asked for, its grade.
  const bool graded = captions.grade || args.order == "grade" || args.contents;
  std::vector<render::PrintedPuzzle> puzzles;
  std::vector<std::pair<int, double>> grades;  // level and score, when ordering by grade
  std::string refusal;
  const int unread = ReadPuzzleRange(args.file, range.first, range.last, [&](PuzzleModel& model, int n) {
    refusal = CompleteSolution(model, n);
    if (!refusal.empty()) return false;
    puzzles.push_back(render::TakePuzzle(model, n));
    if (graded) {
      const reasoning::Grade grade = reasoning::ExplainModel(model).grade;
      puzzles.back().grade = grade.name;
      puzzles.back().gradeLevel = grade.level;
      grades.emplace_back(grade.level, grade.score);
    }
    return true;
  });
  if (unread != 0) return Fail(output, Cp1252ToUtf8(ReadErrorMessage(unread, args.file)), {{"ordinal", unread}});
  if (!refusal.empty()) return Fail(output, refusal, {{"file", args.file}});
  if (args.order == "grade") {
    // Easiest first; puzzles of the same grade keep the file's order.
    std::vector<std::size_t> order(puzzles.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return grades[a] < grades[b]; });
    std::vector<render::PrintedPuzzle> sorted;
    for (std::size_t i : order) sorted.push_back(std::move(puzzles[i]));
    puzzles = std::move(sorted);
  }

  HeadlessGui gui;
  render::BookOptions options;
  options.title = args.title.empty() ? QStringLiteral("Inequality Puzzles") : QString::fromStdString(args.title);
  options.perPage = args.perPage;
  options.answersPerPage = args.answersPerPage;
  options.answers = !args.noAnswers;
  options.captions = captions;
  options.page = spec;
  options.titlePage = args.titlePage;
  options.howToPlay = args.howToPlay;
  options.contents = args.contents;
  if (args.howToPlay) options.example = Example();
  const std::vector<render::Page> pages = render::PlanBook(puzzles, options);

  // The file's properties name the collection when the book was given no title.
  const QString documentTitle = args.title.empty() ? QString::fromStdString(FileNameOf(args.file)) : options.title;
  const QByteArray pdf = render::BookPdf(pages, options, documentTitle, QStringLiteral("Quillmere"));
  if (pdf.isEmpty() || !ReplaceFileWith(args.out, std::string_view(pdf.constData(), static_cast<std::size_t>(pdf.size())))) {
    return Fail(output, Cp1252ToUtf8(WriteErrorMessage(args.out)), {{"file", args.out}});
  }
  const int pageCount = static_cast<int>(pages.size());
  const int puzzleCount = static_cast<int>(puzzles.size());
  if (output.json) {
    PrintJson(output, Json{{"file", args.out}, {"pages", pageCount}, {"puzzles", puzzleCount}});
  } else {
    output.out << "Wrote " << args.out << ": " << pageCount << (pageCount == 1 ? " page, " : " pages, ") << puzzleCount
               << (puzzleCount == 1 ? " puzzle\n" : " puzzles\n");
  }
  return kExitOk;
}

// A picture a little larger than the grid: 10 mm a cell, 2 mm of white around it.
constexpr double kRenderCellMm = 10.0;
constexpr double kRenderMarginMm = 2.0;

int RunRender(Output& output, const RenderArgs& args, PuzzleModel& model) {
  enum class Kind { Svg, Png, Pdf };
  Kind kind = Kind::Svg;
  if (EndsWith(args.out, ".png")) {
    kind = Kind::Png;
  } else if (EndsWith(args.out, ".pdf")) {
    kind = Kind::Pdf;
  } else if (!EndsWith(args.out, ".svg")) {
    throw UsageError{"-o: the file name must end in .svg, .png or .pdf, got " + args.out};
  }
  if (args.solution) {
    const std::string refusal = CompleteSolution(model, args.puzzle.ordinal);
    if (!refusal.empty()) return Fail(output, refusal, {{"file", args.puzzle.file}, {"ordinal", args.puzzle.ordinal}});
  }
  HeadlessGui gui;
  render::PrintedPuzzle puzzle = render::TakePuzzle(model, args.puzzle.ordinal);
  const render::GridStyle style = args.solution ? render::GridStyle::Answer : render::GridStyle::Puzzle;
  const double gridMm = render::GridUnits(model.GridSize) * kRenderCellMm;
  const double sideMm = gridMm + 2 * kRenderMarginMm;
  const QString title =
      QString::fromStdString(FileNameOf(args.puzzle.file)) + QStringLiteral(" #%1").arg(args.puzzle.ordinal);
  // Drawn in memory, then written through the one safe replacement.
  QByteArray bytes;
  bool drawn = false;
  {
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    switch (kind) {
      case Kind::Svg: {
        constexpr double dpi = 96.0;
        const double px = sideMm * dpi / 25.4;
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setResolution(static_cast<int>(dpi));
        svg.setSize(QSize(static_cast<int>(std::ceil(px)), static_cast<int>(std::ceil(px))));
        svg.setViewBox(QRectF(0, 0, px, px));
        svg.setTitle(title);
        QPainter painter;
        if (painter.begin(&svg)) {
          const double margin = kRenderMarginMm * dpi / 25.4;
          render::DrawGrid(painter, QRectF(margin, margin, px - 2 * margin, px - 2 * margin), puzzle, style);
          drawn = painter.end();
        }
        break;
      }
      case Kind::Png: {
        constexpr double dpi = 300.0;
        const int px = static_cast<int>(std::ceil(sideMm * dpi / 25.4));
        QImage image(px, px, QImage::Format_RGB32);
        image.fill(Qt::white);
        image.setDotsPerMeterX(static_cast<int>(dpi / 0.0254));
        image.setDotsPerMeterY(static_cast<int>(dpi / 0.0254));
        QPainter painter(&image);
        const double margin = kRenderMarginMm * dpi / 25.4;
        render::DrawGrid(painter, QRectF(margin, margin, px - 2 * margin, px - 2 * margin), puzzle, style);
        painter.end();
        drawn = image.save(&buffer, "PNG");
        break;
      }
      case Kind::Pdf: {
        QPdfWriter writer(&buffer);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("Quillmere"));
        writer.setPageLayout(QPageLayout(QPageSize(QSizeF(sideMm, sideMm), QPageSize::Millimeter), QPageLayout::Portrait,
                                         QMarginsF(kRenderMarginMm, kRenderMarginMm, kRenderMarginMm, kRenderMarginMm),
                                         QPageLayout::Millimeter));
        QPainter painter;
        if (painter.begin(&writer)) {
          render::DrawGrid(painter, QRectF(0, 0, writer.width(), writer.height()), puzzle, style);
          drawn = painter.end();
        }
        break;
      }
    }
  }
  const bool written =
      drawn && !bytes.isEmpty() &&
      ReplaceFileWith(args.out, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
  if (!written) return Fail(output, Cp1252ToUtf8(WriteErrorMessage(args.out)), {{"file", args.out}});
  if (output.json) {
    PrintJson(output, Json{{"file", args.out}, {"ordinal", args.puzzle.ordinal}, {"solution", args.solution}});
  } else {
    output.out << "Wrote " << args.out << '\n';
  }
  return kExitOk;
}

#else

int NeedsQt(Output& output, const std::string& command) {
  output.err << command << " needs the Qt build of quillmere-cli (this one was built without Qt)\n";
  return kExitUsage;
}

int RunBook(Output& output, const BookArgs&) { return NeedsQt(output, "book"); }
int RunRender(Output& output, const RenderArgs&, PuzzleModel&) { return NeedsQt(output, "render"); }

#endif

}  // namespace

void RegisterBookCommands(CLI::App& app, CommandList& commands, bool& json) {
  auto book = std::make_shared<BookArgs>();
  CLI::App* command = AddCommand(app, commands, "book",
                                 "Make a printable PDF book of the file's puzzles with the answers after them", json,
                                 [book](Output& output) { return RunBook(output, *book); });
  command->add_option("FILE", book->file, "Collection file")->required();
  CLI::Option* range = command->add_option("--range", book->range, "Puzzles A-B (or one number); default all");
  range->each([book](const std::string&) { book->rangeGiven = true; });
  command->add_option("--per-page", book->perPage, "Puzzles a page, 1 to 20 (default 4)")->check(CLI::Range(1, 20));
  command->add_option("--answers-per-page", book->answersPerPage, "Answers a page, 1 to 20 (default 12)")
      ->check(CLI::Range(1, 20));
  command->add_flag("--no-answers", book->noAnswers, "Leave out the answer key");
  command->add_option("--title", book->title,
                      "The title printed on the first page (default \"Inequality Puzzles\"; the PDF's properties "
                      "then name the file)");
  command->add_option("--page", book->page, "a4, letter, a5, 6x9in, 8.5x11in, a3 or legal (default a4)")
      ->check(CLI::IsMember(PaperNames()));
  command->add_flag("--landscape", book->landscape, "Landscape pages");
  command->add_option("--order", book->order, "file or grade (default file)")->check(CLI::IsMember({"file", "grade"}));
  command->add_flag("--grades", book->grades, "Name each puzzle's grade in its caption");
  command->add_option("--caption", book->caption,
                      "What captions show after the number: number, title, grade, comma-separated (default "
                      "number,grade)");
  command->add_option("--bleed", book->bleed, "Millimetres of bleed on each side, 0 to 10 (default 0)")
      ->check(CLI::Range(0.0, 10.0));
  command->add_option("--mirror-margins", book->mirror,
                      "INNER,OUTER margins in millimetres, the inner one on the binding side");
  command->add_flag("--title-page", book->titlePage, "Begin with a title page");
  command->add_flag("--how-to-play", book->howToPlay, "A page with the rules and a worked example");
  command->add_flag("--contents", book->contents, "Contents by grade section (when the puzzles rise in grade)");
  command->add_option("-o,--out", book->out, "Output PDF (\".pdf\" is added when missing)")->required();

  auto picture = std::make_shared<RenderArgs>();
  CLI::App* render = AddPuzzleCommand(
      app, commands, "render", "Draw one puzzle or its solution as the print renderer does, to SVG, PNG or PDF", json,
      false, [picture](Output& output, const PuzzleArgs& args, PuzzleModel& model, HeadlessPort&) {
        picture->puzzle = args;
        return RunRender(output, *picture, model);
      });
  render->add_flag("--solution", picture->solution, "Draw the solution instead of the puzzle");
  render->add_option("-o,--out", picture->out, "Output file: .svg, .png or .pdf")->required();
}

}  // namespace qm::cli
