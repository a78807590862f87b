#include "render/page_renderer.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <algorithm>
#include <cmath>

#include "core/text_rules.h"

namespace qm::render {

namespace {

// The gap between cells, as a share of a cell: wide enough for a bold chevron, narrow
// enough that six 9x9 grids on an A4 page keep cells of 8 mm.
constexpr double kGapShare = 0.21;
// A sign's shape, in shares of the gap (across it) and of a cell (along it). Depth and
// stroke together leave a white strip on either side, so a sign never meets a box.
constexpr double kSignDepth = 0.48;
constexpr double kSignStroke = 0.22;
constexpr double kSignLength = 0.36;

// Bands of the page, in millimetres.
constexpr double kHeaderMm = 6.0;
constexpr double kFooterMm = 5.0;
constexpr double kPuzzleCaptionMm = 3.6;
constexpr double kAnswerCaptionMm = 3.2;
constexpr double kSlotPaddingMm = 1.4;

const QColor kSolvedInk(40, 80, 150);
const QColor kGivenFill(228, 228, 228);

bool IsSign(char c) { return c == '<' || c == '>' || c == '^' || c == 'v'; }

QFont SizedFont(double pixels, bool bold) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixels))));
  font.setBold(bold);
  return font;
}

// The sign as a chevron whose narrow end points at the smaller cell. It is drawn
// `depth` across the gap and `length` along it, with round joins so the stroke ends
// where the geometry says and never reaches the boxes.
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

// Columns and rows for `places` items on a page of the given shape: the arrangement
// that gives each square grid the largest side.
std::pair<int, int> Arrangement(int places, double width, double height, double caption, double padding) {
  std::pair<int, int> best{1, places};
  double bestSide = -1;
  for (int columns = 1; columns <= places; ++columns) {
    const int rows = (places + columns - 1) / columns;
    if ((columns - 1) * rows >= places) continue;  // a whole column would stay empty
    const double side = std::min(width / columns - 2 * padding, height / rows - caption - padding);
    if (side > bestSide + 1e-9) {
      bestSide = side;
      best = {columns, rows};
    }
  }
  return best;
}

// What the running header says a page holds: "Answers", or its puzzles' numbers as a
// run ("Puzzles 5-8") when they follow on, else one by one (a book ordered by grade).
QString Section(const Page& page) {
  if (page.answers) return QStringLiteral("Answers");
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

double GridUnits(int size) { return size + (size - 1) * kGapShare; }

double SignLength(double cell) { return cell * (kSignLength + kGapShare * kSignStroke); }

PageGeometry LayOutPage(const QRectF& area, double mm, const Page& page) {
  PageGeometry geometry;
  geometry.header = QRectF(area.left(), area.top(), area.width(), kHeaderMm * mm);
  geometry.footer = QRectF(area.left(), area.bottom() - kFooterMm * mm, area.width(), kFooterMm * mm);
  const QRectF body(area.left(), geometry.header.bottom(), area.width(),
                    geometry.footer.top() - geometry.header.bottom());
  const double caption = (page.answers ? kAnswerCaptionMm : kPuzzleCaptionMm) * mm;
  const double padding = kSlotPaddingMm * mm;
  const auto [columns, rows] = Arrangement(std::max(1, page.places), body.width(), body.height(), caption, padding);
  const double slotWidth = body.width() / columns;
  const double slotHeight = body.height() / rows;
  for (std::size_t s = 0; s < page.items.size(); ++s) {
    const int column = static_cast<int>(s) % columns;
    const int row = static_cast<int>(s) / columns;
    const QRectF slot(body.left() + column * slotWidth, body.top() + row * slotHeight, slotWidth, slotHeight);
    // The caption sits just above the grid and is as wide as it; the grid takes the rest
    // of the slot, centred, with a little white towards the next slot.
    const QRectF room = slot.adjusted(padding, caption, -padding, -padding);
    const double side = std::max(0.0, std::min(room.width(), room.height()));
    const QRectF square(room.center().x() - side / 2, room.center().y() - side / 2, side, side);
    geometry.grids.push_back(square);
    geometry.captions.emplace_back(square.left(), square.top() - caption, square.width(), caption);
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

std::vector<Page> PlanBook(const std::vector<PrintedPuzzle>& puzzles, const BookOptions& options) {
  std::vector<Page> pages;
  const int perPage = std::max(1, options.perPage);
  const int answersPerPage = std::max(1, options.answersPerPage);
  std::vector<int> pageOf(puzzles.size(), 0);
  for (std::size_t i = 0; i < puzzles.size(); ++i) {
    if (options.answersOnOwnPage) {
      pages.push_back({false, 1, {{&puzzles[i], false, 0}}});
      pageOf[i] = static_cast<int>(pages.size());
      if (options.answers) pages.push_back({true, 1, {{&puzzles[i], true, pageOf[i]}}});
      continue;
    }
    if (i % static_cast<std::size_t>(perPage) == 0) pages.push_back({false, perPage, {}});
    pages.back().items.push_back({&puzzles[i], false, 0});
    pageOf[i] = static_cast<int>(pages.size());
  }
  if (options.answersOnOwnPage || !options.answers) return pages;
  for (std::size_t i = 0; i < puzzles.size(); ++i) {
    if (i % static_cast<std::size_t>(answersPerPage) == 0) pages.push_back({true, answersPerPage, {}});
    pages.back().items.push_back({&puzzles[i], true, pageOf[i]});
  }
  return pages;
}

void DrawGrid(QPainter& painter, const QRectF& box, const PrintedPuzzle& puzzle, GridStyle style) {
  const int n = puzzle.size;
  if (n < 1) return;
  const double units = GridUnits(n);
  const double cell = std::min(box.width(), box.height()) / units;
  const double gap = cell * kGapShare;
  const double side = cell * units;
  const QPointF origin(box.center().x() - side / 2, box.center().y() - side / 2);
  const bool answer = style == GridStyle::Answer;
  const std::vector<std::string>& rows = answer ? puzzle.solution : puzzle.puzzle;

  const QPen boxPen(Qt::black, cell / 50);
  const QPen signPen(Qt::black, gap * kSignStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
  const QFont given = SizedFont(cell * 0.62, true);
  const QFont solved = SizedFont(cell * 0.62, false);
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
        DrawSign(painter, ch, rect, gap * kSignDepth, cell * kSignLength);
      }
    }
  }
  painter.restore();
}

bool PaintBook(QPagedPaintDevice& device, const std::vector<Page>& pages, const BookOptions& options) {
  QPainter painter;
  if (!painter.begin(&device)) return false;
  const double mm = device.logicalDpiY() / 25.4;
  const QRectF area(0, 0, device.width(), device.height());
  const int total = static_cast<int>(pages.size());
  const QPen rule(Qt::black, 0.15 * mm);
  const QFont titleFont = SizedFont(5.0 * mm, true);
  const QFont furniture = SizedFont(2.8 * mm, false);

  for (int p = 0; p < total; ++p) {
    if (p > 0) device.newPage();
    const Page& page = pages[static_cast<std::size_t>(p)];
    const PageGeometry geometry = LayOutPage(area, mm, page);

    // The furniture: the book's title on the first page, a running header after it,
    // the page number at the foot.
    painter.setPen(Qt::black);
    if (p == 0) {
      painter.setFont(titleFont);
      painter.drawText(geometry.header, Qt::AlignHCenter | Qt::AlignVCenter, options.title);
    } else {
      painter.setFont(furniture);
      const QRectF line = geometry.header.adjusted(0, 0, 0, -1.2 * mm);
      painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, options.title);
      painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, Section(page));
      painter.setPen(rule);
      const double y = geometry.header.bottom() - 0.8 * mm;
      painter.drawLine(QPointF(geometry.header.left(), y), QPointF(geometry.header.right(), y));
      painter.setPen(Qt::black);
    }
    painter.setFont(furniture);
    painter.drawText(geometry.footer, Qt::AlignHCenter | Qt::AlignBottom,
                     QStringLiteral("Page %1 of %2").arg(p + 1).arg(total));

    for (std::size_t s = 0; s < page.items.size(); ++s) {
      const PageSlot& slot = page.items[s];
      if (slot.puzzle == nullptr) continue;
      const PrintedPuzzle& puzzle = *slot.puzzle;
      const QRectF& captionBox = geometry.captions[s];
      const QFont captionFont = SizedFont(captionBox.height() * 0.75, false);
      const QFont captionBold = SizedFont(captionBox.height() * 0.75, true);
      const QFontMetricsF plain(captionFont, &device);
      painter.setPen(Qt::black);
      const QString name = QStringLiteral("Puzzle %1").arg(puzzle.number);
      painter.setFont(captionBold);
      if (slot.solution) {
        painter.drawText(captionBox, Qt::AlignLeft | Qt::AlignVCenter,
                         slot.puzzlePage > 0 ? QStringLiteral("%1, page %2").arg(name).arg(slot.puzzlePage) : name);
      } else {
        painter.drawText(captionBox, Qt::AlignLeft | Qt::AlignVCenter, name);
        const double nameWidth = QFontMetricsF(captionBold, &device).horizontalAdvance(name + QStringLiteral("  "));
        painter.setFont(captionFont);
        const QString grade = QString::fromStdString(puzzle.grade);
        const double gradeWidth = grade.isEmpty() ? 0.0 : plain.horizontalAdvance(grade + QStringLiteral("  "));
        if (!grade.isEmpty()) painter.drawText(captionBox, Qt::AlignRight | Qt::AlignVCenter, grade);
        const QRectF commentBox = captionBox.adjusted(nameWidth, 0, -gradeWidth, 0);
        painter.drawText(commentBox, Qt::AlignLeft | Qt::AlignVCenter,
                         plain.elidedText(Text(puzzle.comment), Qt::ElideRight, std::max(0.0, commentBox.width())));
      }
      DrawGrid(painter, geometry.grids[s], puzzle, slot.solution ? GridStyle::Answer : GridStyle::Puzzle);
    }
  }
  return painter.end();
}

}  // namespace qm::render
