#include "render/page_renderer.h"

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <QBuffer>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <exception>

#include "core/text_rules.h"
#include "reasoning/ladder.h"

namespace qm::render {

namespace {

// The grid, in shares of a cell. The gap of a 9x9 is what six of them on an A4 page can
// spare while keeping cells of 8 mm; smaller grids have room for wider gaps and so for
// more pointed chevrons. A chevron has a stroke close to a digit's, a strip of white on
// either side, and stands 40 % of a cell along its gap.
double GapShare(int size) { return std::clamp(0.21 + (9 - size) * 0.03, 0.21, 0.33); }
constexpr double kBoxLine = 0.015;
constexpr double kSignStroke = 0.068;
constexpr double kSignClearance = 0.02;   // white between the sign's ink and a box's
constexpr double kSignLength = 0.34;      // along the gap (centre line)
constexpr double kDigitSize = 0.62;

// Bands of the page, in millimetres.
constexpr double kHeaderMm = 5.5;
constexpr double kFooterMm = 4.5;
constexpr double kAboveFooterMm = 1.5;
// Puzzles keep cells a pencil can fill; gutters and captions give way to them first.
constexpr double kPencilCellMm = 8.0;
constexpr double kNarrowGutterMm = 3.0;
constexpr double kNarrowCaptionMm = 3.6;

const QColor kSolvedInk(40, 80, 150);
const QColor kGivenFill(228, 228, 228);
const QColor kRuleInk(90, 90, 90);

bool IsSign(char c) { return c == '<' || c == '>' || c == '^' || c == 'v'; }

QFont SizedFont(double pixels, bool bold) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixels))));
  font.setBold(bold);
  return font;
}

// The sign as a chevron whose narrow end points at the smaller cell.
void DrawSign(QPainter& painter, char sign, const QRectF& gap, double depth, double length) {
  const QPointF c = gap.center();
  const double d = depth / 2;
  const double l = length / 2;
  QPainterPath path;
  switch (sign) {
    case '<':
      path.moveTo(c.x() + d, c.y() - l);
      path.lineTo(c.x() - d, c.y());
      path.lineTo(c.x() + d, c.y() + l);
      break;
    case '>':
      path.moveTo(c.x() - d, c.y() - l);
      path.lineTo(c.x() + d, c.y());
      path.lineTo(c.x() - d, c.y() + l);
      break;
    case '^':
      path.moveTo(c.x() - l, c.y() + d);
      path.lineTo(c.x(), c.y() - d);
      path.lineTo(c.x() + l, c.y() + d);
      break;
    default:
      path.moveTo(c.x() - l, c.y() - d);
      path.lineTo(c.x(), c.y() + d);
      path.lineTo(c.x() + l, c.y() - d);
      break;
  }
  painter.drawPath(path);
}

// One arrangement of a page's places: columns and rows, the grids' side, the caption
// above each grid, the gutter, and the white outside the block of grids.
struct Arranged {
  int columns = 1;
  int rows = 1;
  double side = 0;
  double caption = 0;
  double gutter = 0;
  double outsideX = 0;
  double outsideY = 0;
};

// The largest side `columns` x `rows` grids take with this gutter and caption.
double LargestSide(int columns, int rows, double width, double height, double gutter, double caption) {
  return std::min((width - (columns - 1) * gutter) / columns, (height - rows * caption - (rows - 1) * gutter) / rows);
}

// The side at which every space of the page is one gutter: between grids, between
// rows, and above and below the block (or left and right of it, when the height binds).
double EvenSide(int columns, int rows, double width, double height, double caption, double minGutter) {
  const double c = columns;
  const double r = rows;
  const double tall = (height - r * caption - r * width / c) / (1 + r / c);
  if (tall >= minGutter) return (width - (c - 1) * tall) / c;
  const double wide = (width - c * (height - r * caption) / r) / (1 + c / r);
  if (wide >= minGutter) return (height - r * caption - (r - 1) * wide) / r;
  return 0;
}

Arranged Arrange(int columns, int rows, double width, double height, double mm, bool answers, int gridSize) {
  Arranged a;
  a.columns = columns;
  a.rows = rows;
  const double slot = std::min(width / columns, height / rows);
  const double rowHeight = height / rows;
  double gutter = std::max(4.0 * mm, (answers ? 0.14 : 0.09) * slot);
  a.caption = answers ? std::clamp(0.05 * rowHeight, 3.2 * mm, 4.2 * mm) : std::clamp(0.07 * rowHeight, 4.5 * mm, 7.5 * mm);
  const double units = GridUnits(std::max(3, gridSize));
  const double pencil = kPencilCellMm * mm * units;
  double side = LargestSide(columns, rows, width, height, gutter, a.caption);
  const double narrowGutter = std::min(gutter, kNarrowGutterMm * mm);
  const double narrowCaption = std::min(a.caption, kNarrowCaptionMm * mm);
  if (!answers && side < pencil && LargestSide(columns, rows, width, height, narrowGutter, narrowCaption) >= pencil) {
    // Narrower gutters and captions, as far as needed for cells of pencil size.
    double lo = 0;
    double hi = 1;
    for (int i = 0; i < 30; ++i) {
      const double t = (lo + hi) / 2;
      const double s = LargestSide(columns, rows, width, height, gutter + t * (narrowGutter - gutter),
                                   a.caption + t * (narrowCaption - a.caption));
      (s >= pencil ? hi : lo) = t;
    }
    gutter += hi * (narrowGutter - gutter);
    a.caption += hi * (narrowCaption - a.caption);
    side = LargestSide(columns, rows, width, height, gutter, a.caption);
  } else {
    // Even spacing when the grids lose little by it: puzzles never below pencil cells
    // they would have, nor by more than a seventh where pencil cells are out of reach.
    const double floor = answers ? 0.0 : side >= pencil ? pencil : side * 6 / 7;
    const double even = EvenSide(columns, rows, width, height, a.caption, gutter);
    if (even > 0) side = std::min(side, std::max(even, floor));
  }
  a.side = std::max(0.0, side);
  // The room left over: one gutter between grids and between rows, as wide as the even
  // share of the spare room allows but never narrower than the least gutter.
  const double spareX = width - columns * a.side;
  const double spareY = height - rows * (a.side + a.caption);
  double widest = 1e300;
  if (columns > 1) widest = std::min(widest, spareX / (columns - 1));
  if (rows > 1) widest = std::min(widest, spareY / (rows - 1));
  const double share = std::max(spareX / (columns + 1), spareY / (rows + 1));
  a.gutter = widest >= 1e299 ? 0.0 : std::clamp(share, std::min(gutter, widest), widest);
  a.outsideX = std::max(0.0, (spareX - (columns - 1) * a.gutter) / 2);
  a.outsideY = std::max(0.0, (spareY - (rows - 1) * a.gutter) / 2);
  return a;
}

// What the running header says a page holds: "Answers", or its puzzles' numbers as a
// run ("Puzzles 5-8") when they follow on, else one by one (a book ordered by grade).
QString Section(const Page& page) {
  switch (page.kind) {
    case PageKind::Answers: return QStringLiteral("Answers");
    case PageKind::HowToPlay: return QStringLiteral("How to Play");
    case PageKind::Contents: return QStringLiteral("Contents");
    case PageKind::Title: return {};
    case PageKind::Puzzles: break;
  }
  QStringList numbers;
  bool run = true;
  for (std::size_t i = 0; i < page.items.size(); ++i) {
    const int number = page.items[i].puzzle->number;
    if (i > 0 && number != page.items[i - 1].puzzle->number + 1) run = false;
    numbers << QString::number(number);
  }
  if (numbers.isEmpty()) return {};
  if (numbers.size() == 1) return QStringLiteral("Puzzle ") + numbers.front();
  if (run) return QStringLiteral("Puzzles %1-%2").arg(numbers.front(), numbers.back());
  return QStringLiteral("Puzzles ") + numbers.join(QStringLiteral(", "));
}

QString Text(const std::string& cp1252) { return QString::fromStdString(Cp1252ToUtf8(cp1252)); }

}  // namespace

QSizeF PaperSize(const PageSpec& spec) {
  return {spec.trim.width() + 2 * spec.bleed, spec.trim.height() + 2 * spec.bleed};
}

QRectF TrimRect(const PageSpec& spec) { return {spec.bleed, spec.bleed, spec.trim.width(), spec.trim.height()}; }

QRectF ContentRect(const PageSpec& spec, int index) {
  const bool innerOnLeft = !spec.mirror || index % 2 == 0;
  const double left = innerOnLeft ? spec.inner : spec.outer;
  const double right = innerOnLeft ? spec.outer : spec.inner;
  const QRectF trim = TrimRect(spec);
  return trim.adjusted(left, spec.top, -right, -spec.bottom);
}

double GridUnits(int size) { return size + (size - 1) * GapShare(size); }

SignShape SignGeometry(double cell, int size) {
  const double gap = GapShare(size);
  const double depth = gap - kBoxLine - 2 * kSignClearance - kSignStroke;
  return {cell * kSignLength, cell * depth, cell * kSignStroke, cell * gap, cell * kBoxLine};
}

double SignLength(double cell) { return cell * (kSignLength + kSignStroke); }

double SignClearance(double cell, int size) {
  const SignShape s = SignGeometry(cell, size);
  return (s.gap - s.boxLine - s.depth - s.stroke) / 2;
}

int DifficultyDots(int level) {
  if (level <= 0) return 0;
  constexpr int kDots = 7;
  return std::clamp(static_cast<int>(std::ceil(level * static_cast<double>(kDots) / reasoning::kTopRung)), 1, kDots);
}

PageGeometry LayOutPage(const QRectF& area, double mm, const Page& page) {
  PageGeometry geometry;
  geometry.header = QRectF(area.left(), area.top(), area.width(), kHeaderMm * mm);
  geometry.footer = QRectF(area.left(), area.bottom() - kFooterMm * mm, area.width(), kFooterMm * mm);
  // A little white above the page number, so that grids never crowd it.
  const QRectF body(area.left(), geometry.header.bottom(), area.width(),
                    geometry.footer.top() - kAboveFooterMm * mm - geometry.header.bottom());
  geometry.body = body;
  int gridSize = 3;
  for (const PageSlot& slot : page.items) {
    if (slot.puzzle != nullptr) gridSize = std::max(gridSize, slot.puzzle->size);
  }
  const int places = std::max(1, page.places);
  Arranged best;
  for (int columns = 1; columns <= places; ++columns) {
    const int rows = (places + columns - 1) / columns;
    if ((columns - 1) * rows >= places) continue;  // a whole column would stay empty
    const Arranged a = Arrange(columns, rows, body.width(), body.height(), mm, page.answers, gridSize);
    if (a.side > best.side + 1e-9) best = a;
  }
  geometry.gutter = best.gutter;
  for (std::size_t s = 0; s < page.items.size(); ++s) {
    const int column = static_cast<int>(s) % best.columns;
    const int row = static_cast<int>(s) / best.columns;
    const double x = body.left() + best.outsideX + column * (best.side + best.gutter);
    const double y = body.top() + best.outsideY + row * (best.side + best.caption + best.gutter);
    geometry.captions.emplace_back(x, y, best.side, best.caption);
    geometry.grids.emplace_back(x, y + best.caption, best.side, best.side);
  }
  return geometry;
}

PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number) {
  PrintedPuzzle printed;
  printed.number = number;
  printed.comment = model.Comment;
  printed.size = model.GridSize;
  for (int r = 1; r <= model.LayoutExtent; ++r) {
    std::string puzzle;
    std::string solution;
    for (int c = 1; c <= model.LayoutExtent; ++c) {
      const int k = model.PositionOf[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
      const std::string& text = model.PosText[static_cast<std::size_t>(k)];
      const std::string& solved = model.SolutionText[static_cast<std::size_t>(k)];
      if (KindOf(model, k) == PositionKind::Cell) {
        const int given = model.GivenValue[static_cast<std::size_t>(k)];
        puzzle += given > 0 ? static_cast<char>('0' + given) : ' ';
        solution += solved.size() == 1 && solved[0] >= '1' && solved[0] <= '9' ? solved[0] : ' ';
      } else {
        const char sign = text.size() == 1 && IsSign(text[0]) ? text[0] : ' ';
        puzzle += sign;
        solution += sign;
      }
    }
    printed.puzzle.push_back(std::move(puzzle));
    printed.solution.push_back(std::move(solution));
  }
  return printed;
}

bool InRisingGrades(const std::vector<PrintedPuzzle>& puzzles) {
  if (puzzles.empty()) return false;
  for (std::size_t i = 0; i < puzzles.size(); ++i) {
    if (puzzles[i].grade.empty()) return false;
    if (i > 0 && puzzles[i].gradeLevel < puzzles[i - 1].gradeLevel) return false;
  }
  return true;
}

std::vector<Page> PlanBook(const std::vector<PrintedPuzzle>& puzzles, const BookOptions& options) {
  std::vector<Page> pages;
  if (options.titlePage) pages.push_back({false, 1, {}, PageKind::Title});
  if (options.howToPlay) pages.push_back({false, 1, {}, PageKind::HowToPlay});
  if (options.contents && InRisingGrades(puzzles)) pages.push_back({false, 1, {}, PageKind::Contents});
  const int perPage = std::max(1, options.perPage);
  const int answersPerPage = std::max(1, options.answersPerPage);
  std::vector<int> pageOf(puzzles.size(), 0);
  for (std::size_t i = 0; i < puzzles.size(); ++i) {
    if (options.answersOnOwnPage) {
      pages.push_back({false, 1, {{&puzzles[i], false, 0}}});
      pageOf[i] = static_cast<int>(pages.size());
      if (options.answers) pages.push_back({true, 1, {{&puzzles[i], true, pageOf[i]}}, PageKind::Answers});
      continue;
    }
    if (i % static_cast<std::size_t>(perPage) == 0) pages.push_back({false, perPage, {}});
    pages.back().items.push_back({&puzzles[i], false, 0});
    pageOf[i] = static_cast<int>(pages.size());
  }
  if (options.answersOnOwnPage || !options.answers) return pages;
  for (std::size_t i = 0; i < puzzles.size(); ++i) {
    if (i % static_cast<std::size_t>(answersPerPage) == 0) pages.push_back({true, answersPerPage, {}, PageKind::Answers});
    pages.back().items.push_back({&puzzles[i], true, pageOf[i]});
  }
  return pages;
}

void DrawGrid(QPainter& painter, const QRectF& box, const PrintedPuzzle& puzzle, GridStyle style) {
  const int n = puzzle.size;
  if (n < 1) return;
  const double units = GridUnits(n);
  const double cell = std::min(box.width(), box.height()) / units;
  const SignShape shape = SignGeometry(cell, n);
  const double gap = shape.gap;
  const double side = cell * units;
  const QPointF origin(box.center().x() - side / 2, box.center().y() - side / 2);
  const bool answer = style == GridStyle::Answer;
  const std::vector<std::string>& rows = answer ? puzzle.solution : puzzle.puzzle;

  const QPen boxPen(Qt::black, shape.boxLine);
  const QPen signPen(Qt::black, shape.stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  const QFont given = SizedFont(cell * kDigitSize, true);
  const QFont solved = SizedFont(cell * kDigitSize, false);
  auto at = [](const std::vector<std::string>& lines, int r, int c) {
    const auto row = static_cast<std::size_t>(r);
    const auto column = static_cast<std::size_t>(c);
    return row < lines.size() && column < lines[row].size() ? lines[row][column] : ' ';
  };
  auto offset = [&](int index) { return (index / 2) * (cell + gap) + (index % 2 == 1 ? cell : 0.0); };
  const int extent = 2 * n - 1;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  for (int r = 0; r < extent; ++r) {
    for (int c = 0; c < extent; ++c) {
      const char ch = at(rows, r, c);
      const QRectF rect(origin.x() + offset(c), origin.y() + offset(r), c % 2 == 0 ? cell : gap,
                        r % 2 == 0 ? cell : gap);
      if (r % 2 == 0 && c % 2 == 0) {
        const char clue = at(puzzle.puzzle, r, c);
        const bool isGiven = clue >= '1' && clue <= '9';
        painter.setPen(boxPen);
        painter.setBrush(answer && isGiven ? QBrush(kGivenFill) : Qt::NoBrush);
        painter.drawRect(rect);
        if (ch >= '1' && ch <= '9') {
          painter.setFont(isGiven ? given : solved);
          painter.setPen(isGiven ? QColor(Qt::black) : kSolvedInk);
          painter.drawText(rect, Qt::AlignCenter, QString(QChar(ch)));
        }
      } else if (IsSign(ch)) {
        painter.setPen(signPen);
        painter.setBrush(Qt::NoBrush);
        DrawSign(painter, ch, rect, shape.depth, shape.length);
      }
    }
  }
  painter.restore();
}

namespace {

// Seven dots, the first `filled` of them solid, ending at `right` on the baseline band.
double DrawDots(QPainter& painter, const QRectF& band, double right, int filled) {
  const double d = band.height() * 0.42;
  const double step = d * 1.45;
  const double y = band.center().y();
  painter.save();
  painter.setPen(QPen(Qt::black, d * 0.16));
  for (int i = 6; i >= 0; --i) {
    const double x = right - (6 - i) * step - d / 2;
    painter.setBrush(i < filled ? QBrush(Qt::black) : Qt::NoBrush);
    painter.drawEllipse(QPointF(x, y), d / 2 - d * 0.08, d / 2 - d * 0.08);
  }
  painter.restore();
  return 7 * step;
}

void PaintCaption(QPainter& painter, QPaintDevice& device, const QRectF& box, const PageSlot& slot,
                  const Captions& captions) {
  const PrintedPuzzle& puzzle = *slot.puzzle;
  const QString name = QStringLiteral("Puzzle %1").arg(puzzle.number);
  const QRectF band = box.adjusted(0, 0, 0, -box.height() * 0.12);
  painter.setPen(Qt::black);
  if (slot.solution) {
    painter.setFont(SizedFont(band.height() * 0.72, true));
    painter.drawText(band, Qt::AlignLeft | Qt::AlignBottom,
                     slot.puzzlePage > 0 ? QStringLiteral("%1, page %2").arg(name).arg(slot.puzzlePage) : name);
    return;
  }
  // The number large; then, smaller and on the same baseline, what else was asked for.
  const QFont big = SizedFont(band.height() * 0.78, true);
  const QFont small = SizedFont(band.height() * 0.5, false);
  painter.setFont(big);
  painter.drawText(band, Qt::AlignLeft | Qt::AlignBottom, name);
  double left = QFontMetricsF(big, &device).horizontalAdvance(name + QStringLiteral("  "));
  double right = band.width();
  painter.setFont(small);
  const QFontMetricsF metrics(small, &device);
  const QRectF line(band.left(), band.top(), band.width(), band.height() - metrics.descent() * 0.2);
  const bool titled = captions.title && !puzzle.comment.empty();
  if (captions.grade && !puzzle.grade.empty()) {
    const QRectF dotsBand(band.left(), band.bottom() - metrics.ascent(), band.width(), metrics.ascent() * 0.9);
    right -= DrawDots(painter, dotsBand, band.right(), DifficultyDots(puzzle.gradeLevel));
    // The grade's name too, unless it would squeeze the title out (the dots stay).
    const QString grade = QString::fromStdString(puzzle.grade);
    const double gradeWidth = metrics.horizontalAdvance(grade) + 2 * metrics.averageCharWidth();
    if (!titled || right - gradeWidth - left > band.width() * 0.3) {
      painter.drawText(QRectF(band.left(), line.top(), right - metrics.averageCharWidth(), line.height()),
                       Qt::AlignRight | Qt::AlignBottom, grade);
      right -= gradeWidth;
    }
  }
  if (titled) {
    const QRectF room(band.left() + left, line.top(), std::max(0.0, right - left), line.height());
    painter.drawText(room, Qt::AlignLeft | Qt::AlignBottom,
                     metrics.elidedText(Text(puzzle.comment), Qt::ElideRight, room.width()));
  }
}

void PaintTitlePage(QPainter& painter, const QRectF& area, double mm, const BookOptions& options, int puzzles) {
  painter.setPen(Qt::black);
  painter.setFont(SizedFont(std::min(14.0 * mm, area.width() / 12), true));
  const QRectF upper(area.left(), area.top() + area.height() * 0.25, area.width(), area.height() * 0.2);
  painter.drawText(upper, Qt::AlignHCenter | Qt::AlignBottom | Qt::TextWordWrap, options.title);
  painter.setPen(QPen(kRuleInk, 0.3 * mm));
  const double y = upper.bottom() + 6 * mm;
  painter.drawLine(QPointF(area.center().x() - 20 * mm, y), QPointF(area.center().x() + 20 * mm, y));
  painter.setPen(Qt::black);
  painter.setFont(SizedFont(5.0 * mm, false));
  const QString what = puzzles == 1 ? QStringLiteral("One inequality puzzle")
                                    : QStringLiteral("%1 inequality puzzles").arg(puzzles);
  painter.drawText(QRectF(area.left(), y + 4 * mm, area.width(), 8 * mm), Qt::AlignHCenter | Qt::AlignTop,
                   options.answers ? what + QStringLiteral(" with their answers") : what);
}

void PaintHowToPlay(QPainter& painter, QPaintDevice& device, const QRectF& body, double mm,
                    const WorkedExample& example) {
  const QFont heading = SizedFont(6.0 * mm, true);
  const QFont text = SizedFont(3.6 * mm, false);
  double y = body.top() + 4 * mm;
  painter.setPen(Qt::black);
  painter.setFont(heading);
  painter.drawText(QRectF(body.left(), y, body.width(), 9 * mm), Qt::AlignLeft | Qt::AlignTop,
                   QStringLiteral("How to Play"));
  y += 12 * mm;
  painter.setFont(text);
  const QString rules = QStringLiteral(
      "Fill the grid so that every row and every column holds each digit from 1 to the size of the grid "
      "exactly once. Some digits are given. A sign between two neighbouring cells must hold: its open side "
      "faces the larger digit and its point the smaller one, across a row (< and >) or down a column.\n\n"
      "Every puzzle in this book has exactly one solution, and it can be found by reasoning alone. The answers "
      "are at the back of the book.");
  const QRectF rulesBox(body.left(), y, body.width(), body.height());
  const QRectF used = painter.boundingRect(rulesBox, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, rules);
  painter.drawText(rulesBox, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, rules);
  y = used.bottom() + 8 * mm;
  if (example.puzzle.size < 1) return;
  painter.setFont(SizedFont(4.2 * mm, true));
  painter.drawText(QRectF(body.left(), y, body.width(), 7 * mm), Qt::AlignLeft | Qt::AlignTop,
                   QStringLiteral("A worked example"));
  y += 9 * mm;
  // The puzzle and its solution side by side, then the ladder's steps, numbered.
  const double side = std::min(body.width() * 0.36, 55 * mm);
  const QRectF puzzle(body.center().x() - side - 6 * mm, y, side, side);
  const QRectF answer(body.center().x() + 6 * mm, y, side, side);
  DrawGrid(painter, puzzle, example.puzzle, GridStyle::Puzzle);
  DrawGrid(painter, answer, example.puzzle, GridStyle::Answer);
  painter.setFont(SizedFont(3.0 * mm, false));
  painter.drawText(QRectF(puzzle.left(), puzzle.bottom() + 1.5 * mm, side, 4.5 * mm), Qt::AlignHCenter | Qt::AlignTop,
                   QStringLiteral("The puzzle"));
  painter.drawText(QRectF(answer.left(), answer.bottom() + 1.5 * mm, side, 4.5 * mm), Qt::AlignHCenter | Qt::AlignTop,
                   QStringLiteral("Its solution"));
  const QFont stepFont = SizedFont(3.2 * mm, false);
  painter.setFont(stepFont);
  const QFontMetricsF metrics(stepFont, &device);
  double ty = puzzle.bottom() + 10 * mm;
  for (std::size_t i = 0; i < example.steps.size(); ++i) {
    const QString step = QStringLiteral("%1. ").arg(i + 1) + QString::fromStdString(example.steps[i]);
    const QRectF box(body.left(), ty, body.width(), body.bottom() - ty);
    const QRectF need = painter.boundingRect(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, step);
    if (need.bottom() > body.bottom()) break;
    painter.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, step);
    ty = need.bottom() + metrics.lineSpacing() * 0.35;
  }
}

// Each grade's section: its name, the puzzles it holds and the page it begins on.
void PaintContents(QPainter& painter, const QRectF& body, double mm, const std::vector<Page>& pages) {
  painter.setPen(Qt::black);
  painter.setFont(SizedFont(6.0 * mm, true));
  double y = body.top() + 4 * mm;
  painter.drawText(QRectF(body.left(), y, body.width(), 9 * mm), Qt::AlignLeft | Qt::AlignTop,
                   QStringLiteral("Contents"));
  y += 14 * mm;
  struct Section {
    QString name;
    int level = 0;
    int count = 0;
    int page = 0;
  };
  std::vector<Section> sections;
  int answersPage = 0;
  for (std::size_t p = 0; p < pages.size(); ++p) {
    if (pages[p].kind == PageKind::Answers && answersPage == 0) answersPage = static_cast<int>(p) + 1;
    if (pages[p].kind != PageKind::Puzzles) continue;
    for (const PageSlot& slot : pages[p].items) {
      const PrintedPuzzle& puzzle = *slot.puzzle;
      if (sections.empty() || sections.back().level != puzzle.gradeLevel) {
        sections.push_back({QString::fromStdString(puzzle.grade), puzzle.gradeLevel, 0, static_cast<int>(p) + 1});
      }
      ++sections.back().count;
    }
  }
  const QFont entry = SizedFont(4.2 * mm, false);
  painter.setFont(entry);
  const double line = 9 * mm;
  auto row = [&](const QString& left, const QString& middle, int page) {
    const QRectF band(body.left(), y, body.width(), line);
    painter.drawText(band, Qt::AlignLeft | Qt::AlignVCenter, left);
    painter.drawText(band.adjusted(body.width() * 0.42, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, middle);
    painter.drawText(band, Qt::AlignRight | Qt::AlignVCenter, QString::number(page));
    y += line;
  };
  for (const Section& s : sections) {
    const QRectF dots(body.left() + body.width() * 0.25, y + line * 0.3, body.width() * 0.15, line * 0.4);
    row(s.name, s.count == 1 ? QStringLiteral("1 puzzle") : QStringLiteral("%1 puzzles").arg(s.count), s.page);
    DrawDots(painter, dots, dots.right(), DifficultyDots(s.level));
  }
  if (answersPage > 0) {
    y += line * 0.5;
    row(QStringLiteral("Answers"), QString(), answersPage);
  }
}

}  // namespace

bool PaintBook(QPagedPaintDevice& device, const std::vector<Page>& pages, const BookOptions& options) {
  QPainter painter;
  if (!painter.begin(&device)) return false;
  const double mm = device.logicalDpiY() / 25.4;
  const int total = static_cast<int>(pages.size());
  const QPen rule(kRuleInk, 0.15 * mm);
  const QFont titleFont = SizedFont(5.0 * mm, true);
  const QFont furniture = SizedFont(2.8 * mm, false);
  int puzzleCount = 0;
  for (const Page& page : pages) {
    if (page.kind == PageKind::Puzzles) puzzleCount += static_cast<int>(page.items.size());
  }
  bool titled = false;

  for (int p = 0; p < total; ++p) {
    if (p > 0) device.newPage();
    const Page& page = pages[static_cast<std::size_t>(p)];
    const QRectF content = ContentRect(options.page, p);
    const QRectF area(content.left() * mm, content.top() * mm, content.width() * mm, content.height() * mm);
    if (page.kind == PageKind::Title) {
      PaintTitlePage(painter, area, mm, options, puzzleCount);
      titled = true;
      continue;
    }
    const PageGeometry geometry = LayOutPage(area, mm, page);

    // The furniture: the book's title on its first page, a running header after it,
    // the page number at the foot.
    painter.setPen(Qt::black);
    if (!titled) {
      painter.setFont(titleFont);
      painter.drawText(geometry.header, Qt::AlignHCenter | Qt::AlignVCenter, options.title);
      titled = true;
    } else {
      painter.setFont(furniture);
      const QRectF line = geometry.header.adjusted(0, 0, 0, -1.2 * mm);
      const bool mirrored = options.page.mirror && p % 2 == 1;
      painter.drawText(line, (mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, options.title);
      painter.drawText(line, (mirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter, Section(page));
      painter.setPen(rule);
      const double y = geometry.header.bottom() - 0.8 * mm;
      painter.drawLine(QPointF(geometry.header.left(), y), QPointF(geometry.header.right(), y));
      painter.setPen(Qt::black);
    }
    painter.setFont(furniture);
    painter.drawText(geometry.footer, Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Page %1 of %2").arg(p + 1).arg(total));
    const QRectF body(area.left(), geometry.header.bottom(), area.width(),
                      geometry.footer.top() - geometry.header.bottom());
    if (page.kind == PageKind::HowToPlay) {
      PaintHowToPlay(painter, device, body, mm, options.example);
      continue;
    }
    if (page.kind == PageKind::Contents) {
      PaintContents(painter, body, mm, pages);
      continue;
    }
    for (std::size_t s = 0; s < page.items.size(); ++s) {
      const PageSlot& slot = page.items[s];
      if (slot.puzzle == nullptr) continue;
      PaintCaption(painter, device, geometry.captions[s], slot, options.captions);
      DrawGrid(painter, geometry.grids[s], *slot.puzzle, slot.solution ? GridStyle::Answer : GridStyle::Puzzle);
    }
  }
  return painter.end();
}

QByteArray BookPdf(const std::vector<Page>& pages, const BookOptions& options, const QString& documentTitle,
                   const QString& creator) {
  QByteArray bytes;
  {
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly)) return {};
    QPdfWriter writer(&buffer);
    writer.setTitle(documentTitle);
    writer.setCreator(creator);
    writer.setResolution(600);
    const QPageSize paper(PaperSize(options.page), QPageSize::Millimeter, QString(), QPageSize::ExactMatch);
    writer.setPageLayout(QPageLayout(paper, QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter));
    if (!PaintBook(writer, pages, options)) return {};
  }
  return WithTrimBox(bytes, options.page.bleed * 72.0 / 25.4);
}

QByteArray WithTrimBox(const QByteArray& pdf, double bleedPoints) {
  try {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("book", pdf.constData(), static_cast<std::size_t>(pdf.size()));
    for (QPDFPageObjectHelper& page : QPDFPageDocumentHelper(document).getAllPages()) {
      QPDFObjectHandle media = page.getMediaBox();
      const QPDFObjectHandle::Rectangle paper = media.getArrayAsRectangle();
      const QPDFObjectHandle::Rectangle trim(paper.llx + bleedPoints, paper.lly + bleedPoints,
                                             paper.urx - bleedPoints, paper.ury - bleedPoints);
      page.getObjectHandle().replaceKey("/TrimBox", QPDFObjectHandle::newArray(trim));
      page.getObjectHandle().replaceKey("/BleedBox", QPDFObjectHandle::newArray(paper));
    }
    QPDFWriter writer(document);
    writer.setOutputMemory();
    writer.setDeterministicID(true);
    writer.write();
    const std::shared_ptr<Buffer> out = writer.getBufferSharedPointer();
    return QByteArray(reinterpret_cast<const char*>(out->getBuffer()), static_cast<qsizetype>(out->getSize()));
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace qm::render
