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
#include "commands/save_commands.h"
#include "reasoning/ladder.h"

#ifdef QUILLMERE_HAS_RENDER
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
  std::string out;
};

struct RenderArgs {
  PuzzleArgs puzzle;
  bool solution = false;
  std::string out;
};

// The page sizes --page takes, named without Qt so the Qt-free build checks them too.
constexpr std::array<const char*, 5> kPageNames{"a3", "a4", "a5", "letter", "legal"};

#ifdef QUILLMERE_HAS_RENDER

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

QPageSize::PageSizeId PageSizeOf(const std::string& name) {
  constexpr std::array<QPageSize::PageSizeId, kPageNames.size()> ids{QPageSize::A3, QPageSize::A4, QPageSize::A5,
                                                                     QPageSize::Letter, QPageSize::Legal};
  for (std::size_t i = 0; i < kPageNames.size(); ++i) {
    if (name == kPageNames[i]) return ids[i];
  }
  return QPageSize::A4;
}

// Writes through a scratch file, so a failed book never cuts an earlier one.
bool WriteSafely(const std::string& path, const std::function<bool(const QString&)>& write) {
  return ReplaceFile(path, [&](const std::string& scratch) { return write(QString::fromStdString(scratch)); });
}

int RunBook(Output& output, BookArgs args) {
  if (args.out.empty()) throw UsageError{"-o: the output file name is empty"};
  if (args.rangeGiven && args.range.empty()) throw UsageError{"--range is empty"};
  const int count = CountPuzzles(args.file);
  Range range = ParseRange(args.range);
  if (!args.rangeGiven) range.last = count;
  if (count == 0) return Fail(output, "There are no puzzles in this file", {{"file", args.file}});
  if (range.last > count) {
    throw UsageError{"--range " + args.range + " goes past the file's " + std::to_string(count) + " puzzles"};
  }
  if (!EndsWith(args.out, ".pdf")) args.out += ".pdf";

  std::vector<render::PrintedPuzzle> puzzles;
  std::vector<std::pair<int, double>> grades;  // level and score, when ordering by grade
  PuzzleModel model;
  for (int n = range.first; n <= range.last; ++n) {
    if (LoadPuzzle(model, args.file, n).notFound) {
      return Fail(output, Cp1252ToUtf8(ReadErrorMessage(n, args.file)), {{"ordinal", n}});
    }
    puzzles.push_back(render::TakePuzzle(model, n));
    if (args.order == "grade" || args.grades) {
      const reasoning::Grade grade = reasoning::ExplainModel(model).grade;
      puzzles.back().grade = grade.name;
      grades.emplace_back(grade.level, grade.score);
    }
  }
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
  options.title = QString::fromStdString(args.title.empty() ? FileNameOf(args.file) : args.title);
  options.perPage = args.perPage;
  options.answersPerPage = args.answersPerPage;
  options.answers = !args.noAnswers;
  const std::vector<render::Page> pages = render::PlanBook(puzzles, options);

  const bool written = WriteSafely(args.out, [&](const QString& file) {
    QPdfWriter writer(file);
    writer.setTitle(options.title);
    writer.setCreator(QStringLiteral("Quillmere"));
    writer.setResolution(600);
    const double margin = render::kBookMarginMm;
    writer.setPageLayout(QPageLayout(QPageSize(PageSizeOf(args.page)),
                                     args.landscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                                     QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter));
    return render::PaintBook(writer, pages, options);
  });
  if (!written) {
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
  HeadlessGui gui;
  render::PrintedPuzzle puzzle = render::TakePuzzle(model, args.puzzle.ordinal);
  const render::GridStyle style = args.solution ? render::GridStyle::Answer : render::GridStyle::Puzzle;
  const double gridMm = render::GridUnits(model.GridSize) * kRenderCellMm;
  const double sideMm = gridMm + 2 * kRenderMarginMm;
  const QString title =
      QString::fromStdString(FileNameOf(args.puzzle.file)) + QStringLiteral(" #%1").arg(args.puzzle.ordinal);
  const bool written = WriteSafely(args.out, [&](const QString& file) {
    bool done = false;
    switch (kind) {
      case Kind::Svg: {
        constexpr double dpi = 96.0;
        const double px = sideMm * dpi / 25.4;
        QSvgGenerator svg;
        svg.setFileName(file);
        svg.setResolution(static_cast<int>(dpi));
        svg.setSize(QSize(static_cast<int>(std::ceil(px)), static_cast<int>(std::ceil(px))));
        svg.setViewBox(QRectF(0, 0, px, px));
        svg.setTitle(title);
        QPainter painter;
        if (painter.begin(&svg)) {
          const double margin = kRenderMarginMm * dpi / 25.4;
          render::DrawGrid(painter, QRectF(margin, margin, px - 2 * margin, px - 2 * margin), puzzle, style);
          done = painter.end();
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
        done = image.save(file, "PNG");
        break;
      }
      case Kind::Pdf: {
        QPdfWriter writer(file);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("Quillmere"));
        writer.setPageLayout(QPageLayout(QPageSize(QSizeF(sideMm, sideMm), QPageSize::Millimeter), QPageLayout::Portrait,
                                         QMarginsF(kRenderMarginMm, kRenderMarginMm, kRenderMarginMm, kRenderMarginMm),
                                         QPageLayout::Millimeter));
        QPainter painter;
        if (painter.begin(&writer)) {
          render::DrawGrid(painter, QRectF(0, 0, writer.width(), writer.height()), puzzle, style);
          done = painter.end();
        }
        break;
      }
    }
    return done;
  });
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
  command->add_option("--title", book->title, "The book's title (default the file's name)");
  command->add_option("--page", book->page, "a4, letter, a3, a5 or legal (default a4)")
      ->check(CLI::IsMember(std::vector<std::string>(kPageNames.begin(), kPageNames.end())));
  command->add_flag("--landscape", book->landscape, "Landscape pages");
  command->add_option("--order", book->order, "file or grade (default file)")->check(CLI::IsMember({"file", "grade"}));
  command->add_flag("--grades", book->grades, "Name each puzzle's grade in its caption");
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
