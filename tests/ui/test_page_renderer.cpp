#include <QImage>
#include <QPainter>
#include <QtTest>

#include <map>
#include <set>

#include "reasoning/ladder.h"
#include "render/page_renderer.h"
#include "ui/ui_tests.h"

using qm::render::GridStyle;
using qm::render::Page;
using qm::render::PrintedPuzzle;

namespace {

// A 9x9 with a sign in every gap (the four kinds in turn) and clues on the diagonal;
// its solution fills every cell.
PrintedPuzzle Crowded(int size) {
  PrintedPuzzle puzzle;
  puzzle.size = size;
  const int extent = 2 * size - 1;
  int sign = 0;
  for (int r = 0; r < extent; ++r) {
    std::string clues;
    std::string solved;
    for (int c = 0; c < extent; ++c) {
      if (r % 2 == 0 && c % 2 == 0) {
        const char digit = static_cast<char>('1' + (r / 2 + c / 2) % size);
        clues += r == c ? digit : ' ';
        solved += digit;
      } else if (r % 2 == 0) {
        clues += (sign++ % 2 == 0) ? '<' : '>';
        solved += clues.back();
      } else if (c % 2 == 0) {
        clues += (sign++ % 2 == 0) ? '^' : 'v';
        solved += clues.back();
      } else {
        clues += ' ';
        solved += ' ';
      }
    }
    puzzle.puzzle.push_back(clues);
    puzzle.solution.push_back(solved);
  }
  return puzzle;
}

// The puzzle with no signs and no digits: the boxes alone.
PrintedPuzzle BoxesOf(const PrintedPuzzle& puzzle) {
  PrintedPuzzle boxes = puzzle;
  for (auto* rows : {&boxes.puzzle, &boxes.solution}) {
    for (std::string& row : *rows) row.assign(row.size(), ' ');
  }
  return boxes;
}

QImage Draw(const PrintedPuzzle& puzzle, int side, GridStyle style) {
  QImage image(side, side, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  qm::render::DrawGrid(painter, QRectF(0, 0, side, side), puzzle, style);
  painter.end();
  return image;
}

bool Inked(const QImage& image, int x, int y) { return qGray(image.pixel(x, y)) < 250; }

}  // namespace

class PageRendererTest : public QObject {
  Q_OBJECT

 private slots:
  void sixNineByNinesOnA4KeepCellsOfEightMillimetres() {
    // A4 less the book margins, in millimetres (one unit a millimetre).
    const double margin = qm::render::kBookMarginMm;
    const QRectF area(0, 0, 210 - 2 * margin, 297 - 2 * margin);
    std::vector<PrintedPuzzle> puzzles(6, Crowded(9));
    const std::vector<Page> pages = qm::render::PlanBook(puzzles, {QString(), 6, 12, false, false});
    QCOMPARE(pages.size(), std::size_t{1});
    const qm::render::PageGeometry geometry = qm::render::LayOutPage(area, 1.0, pages[0]);
    QCOMPARE(geometry.grids.size(), std::size_t{6});
    for (std::size_t i = 0; i < geometry.grids.size(); ++i) {
      const QRectF& grid = geometry.grids[i];
      const double cell = grid.width() / qm::render::GridUnits(9);
      QVERIFY2(cell >= 8.0, qPrintable(QString::number(cell)));
      QVERIFY(qm::render::SignLength(cell) >= 2.5);
      // Each grid under its caption, between the header and the footer, clear of the others.
      QVERIFY(geometry.captions[i].bottom() <= grid.top() + 1e-9);
      QVERIFY(geometry.captions[i].top() >= geometry.header.bottom() - 1e-9);
      QVERIFY(grid.bottom() <= geometry.footer.top() + 1e-9);
      for (std::size_t j = 0; j < i; ++j) {
        QVERIFY(!geometry.grids[j].intersects(grid) && !geometry.grids[j].intersects(geometry.captions[i]));
      }
    }
    // The grids share the page evenly: each centred in its own column.
    QCOMPARE(geometry.grids[0].center().x() + geometry.grids[1].center().x(), area.width());

    // Answer keys twelve a page are smaller than puzzles four a page.
    const std::vector<Page> book = qm::render::PlanBook(puzzles, {QString(), 4, 12, true, false});
    const double puzzleSide = qm::render::LayOutPage(area, 1.0, book.front()).grids[0].width();
    const double answerSide = qm::render::LayOutPage(area, 1.0, book.back()).grids[0].width();
    QVERIFY(book.back().answers);
    QVERIFY(answerSide < puzzleSide * 0.7);
  }

  void everyPaperAndCountHasEqualGuttersAndEvenlySharedSpace() {
    struct Paper {
      const char* name;
      double width;
      double height;
    };
    const Paper papers[] = {{"a4", 210, 297}, {"letter", 215.9, 279.4}, {"a5", 148, 210}, {"6x9in", 152.4, 228.6}};
    const std::vector<PrintedPuzzle> puzzles(20, Crowded(9));
    for (const Paper& paper : papers) {
      qm::render::PageSpec spec;
      spec.trim = QSizeF(paper.width, paper.height);
      const QRectF area = qm::render::ContentRect(spec, 0);
      std::map<std::pair<bool, int>, double> sides;
      for (const bool answers : {false, true}) {
        for (const int count : {1, 2, 4, 6, 9, 12, 20}) {
          Page page{answers, count, {}};
          for (int i = 0; i < count; ++i) page.items.push_back({&puzzles[static_cast<std::size_t>(i)], answers, 1});
          const qm::render::PageGeometry g = qm::render::LayOutPage(area, 1.0, page);
          const QString where = QStringLiteral("%1, %2 %3 a page").arg(paper.name).arg(count).arg(answers ? "answers" : "puzzles");
          const double top = g.body.top();
          const double bottom = g.body.bottom();
          QVERIFY2(top >= g.header.bottom() - 1e-9 && bottom < g.footer.top(), qPrintable(where));
          // Rows and columns of the grids as laid out.
          std::set<double> xs;
          std::set<double> ys;
          for (std::size_t i = 0; i < g.grids.size(); ++i) {
            const QRectF& grid = g.grids[i];
            QVERIFY2(grid.width() > 10, qPrintable(where));
            QVERIFY2(qFuzzyCompare(g.captions[i].bottom(), grid.top()), qPrintable(where));
            QVERIFY2(g.captions[i].top() >= top - 1e-9 && grid.bottom() <= bottom + 1e-9, qPrintable(where));
            QVERIFY2(grid.left() >= area.left() - 1e-9 && grid.right() <= area.right() + 1e-9, qPrintable(where));
            xs.insert(std::round(grid.left() * 1e6) / 1e6);
            ys.insert(std::round(g.captions[i].top() * 1e6) / 1e6);
          }
          const double side = g.grids[0].width();
          const double caption = g.captions[0].height();
          sides[{answers, count}] = side;
          if (xs.size() > 1 || ys.size() > 1) QVERIFY2(g.gutter >= 3.0 - 1e-9, qPrintable(where));
          // One gutter between grids in a row and between rows.
          for (auto it = std::next(xs.begin()); it != xs.end(); ++it) {
            QVERIFY2(std::abs(*it - *std::prev(it) - side - g.gutter) < 1e-6, qPrintable(where));
          }
          for (auto it = std::next(ys.begin()); it != ys.end(); ++it) {
            QVERIFY2(std::abs(*it - *std::prev(it) - side - caption - g.gutter) < 1e-6, qPrintable(where));
          }
          // What is left over lies evenly on either side of the block of grids.
          const double above = *ys.begin() - top;
          const double below = bottom - (*ys.rbegin() + caption + side);
          const double left = *xs.begin() - area.left();
          const double right = area.right() - (*xs.rbegin() + side);
          QVERIFY2(std::abs(above - below) < 1e-6 && above >= -1e-9, qPrintable(where));
          QVERIFY2(std::abs(left - right) < 1e-6 && left >= -1e-9, qPrintable(where));
          // Spare room is shared with the gutters: the white around the block is one gutter
          // wide on one axis at least, unless the grids fill the page on one axis.
          auto near = [](double a, double b) { return std::abs(a - b) < 1e-6; };
          if (xs.size() > 1 || ys.size() > 1) {
            QVERIFY2(near(above, g.gutter) || near(left, g.gutter) || near(above, 0) || near(left, 0),
                     qPrintable(where + QStringLiteral(": %1 %2 %3").arg(above).arg(left).arg(g.gutter)));
          }
          if (!answers && count <= 6 && std::string(paper.name) == "a4") {
            QVERIFY2(side / qm::render::GridUnits(9) >= 8.0 - 1e-9, qPrintable(where));  // cells for a pencil
          }
          if (!answers && count == 4 && std::string(paper.name) == "a4") QVERIFY2(g.gutter >= 8.0, qPrintable(where));
        }
      }
      // The answer key twelve a page is smaller than the puzzles four a page.
      QVERIFY2((sides[{true, 12}] < sides[{false, 4}] * 0.75), paper.name);
    }
  }

  void signsAreBoldChevronsCentredInTheirGapWithWhiteAllRound() {
    for (int size = 3; size <= 9; ++size) {
      for (const double cell : {3.0, 8.0, 30.0}) {
        const qm::render::SignShape s = qm::render::SignGeometry(cell, size);
        QVERIFY(qm::render::SignLength(cell) >= 0.4 * cell);  // at least 40 % of the gap's length
        QVERIFY(qm::render::SignClearance(cell, size) >= 0.018 * cell);
        QVERIFY(s.stroke >= 3 * s.boxLine);
        // Close to a digit's stroke: a bold digit's stem is about an eighth of its height.
        QVERIFY(s.stroke > 0.6 * 0.62 * cell / 12 && s.stroke < 1.4 * 0.62 * cell / 8);
        // A chevron, not a dash: its point stands out at least a quarter of its half-length.
        QVERIFY(s.depth >= 0.25 * s.length);
      }
    }
    // On a drawn grid the ink of the first sign ("<" between the top-left cells) sits in
    // the middle of its gap, with white between it and both boxes.
    const int side = 1200;
    const PrintedPuzzle puzzle = Crowded(3);
    const QImage boxes = Draw(BoxesOf(puzzle), side, GridStyle::Puzzle);
    const QImage all = Draw(puzzle, side, GridStyle::Puzzle);
    const double cell = side / qm::render::GridUnits(3);
    const qm::render::SignShape s = qm::render::SignGeometry(cell, 3);
    int x0 = side;
    int x1 = 0;
    int y0 = side;
    int y1 = 0;
    for (int y = 0; y < static_cast<int>(cell); ++y) {
      for (int x = static_cast<int>(cell); x < static_cast<int>(cell + s.gap); ++x) {
        if (!Inked(all, x, y) || Inked(boxes, x, y)) continue;
        x0 = std::min(x0, x);
        x1 = std::max(x1, x);
        y0 = std::min(y0, y);
        y1 = std::max(y1, y);
      }
    }
    QVERIFY(x1 > x0 && y1 > y0);
    QVERIFY(std::abs((x0 + x1) / 2.0 - (cell + s.gap / 2)) < 2.0);
    QVERIFY(std::abs((y0 + y1) / 2.0 - cell / 2) < 2.0);
    QVERIFY(y1 - y0 >= 0.4 * cell - 2);
    QVERIFY(x0 > cell + s.boxLine && x1 < cell + s.gap - s.boxLine);
  }

  void bleedGrowsThePaperAndMirroredMarginsAlternate() {
    qm::render::PageSpec spec;
    spec.trim = QSizeF(152.4, 228.6);
    spec.bleed = 3;
    spec.top = 10;
    spec.bottom = 12;
    spec.inner = 15;
    spec.outer = 8;
    QCOMPARE(qm::render::PaperSize(spec), QSizeF(158.4, 234.6));
    QCOMPARE(qm::render::TrimRect(spec), QRectF(3, 3, 152.4, 228.6));
    // Not mirrored: the inner margin is on the left of every page.
    QCOMPARE(qm::render::ContentRect(spec, 1), QRectF(18, 13, 152.4 - 23, 228.6 - 22));
    spec.mirror = true;
    const QRectF right = qm::render::ContentRect(spec, 0);  // page 1, a right-hand page
    const QRectF left = qm::render::ContentRect(spec, 1);
    QCOMPARE(right, QRectF(18, 13, 152.4 - 23, 228.6 - 22));
    QCOMPARE(left, QRectF(11, 13, 152.4 - 23, 228.6 - 22));
    QCOMPARE(qm::render::ContentRect(spec, 2), right);
    // The same page design, moved towards the binding.
    const std::vector<PrintedPuzzle> puzzles(4, Crowded(6));
    const std::vector<Page> pages = qm::render::PlanBook(puzzles, {QString(), 2, 12, false, false});
    const qm::render::PageGeometry a = qm::render::LayOutPage(right, 1.0, pages[0]);
    const qm::render::PageGeometry b = qm::render::LayOutPage(left, 1.0, pages[1]);
    QCOMPARE(a.grids[1].translated(-7, 0), b.grids[1]);
  }

  void gradesGetOneToSevenDotsAndFrontMatterComesFirst() {
    QCOMPARE(qm::render::DifficultyDots(0), 0);
    QCOMPARE(qm::render::DifficultyDots(1), 1);
    QCOMPARE(qm::render::DifficultyDots(qm::reasoning::kTopRung), 7);
    for (int rung = 2; rung <= qm::reasoning::kTopRung; ++rung) {
      QVERIFY(qm::render::DifficultyDots(rung) >= qm::render::DifficultyDots(rung - 1));
    }
    std::vector<PrintedPuzzle> puzzles(6);
    for (int i = 0; i < 6; ++i) {
      puzzles[static_cast<std::size_t>(i)].number = i + 1;
      puzzles[static_cast<std::size_t>(i)].gradeLevel = 1 + i / 2;
      puzzles[static_cast<std::size_t>(i)].grade = qm::reasoning::RungName(1 + i / 2);
    }
    qm::render::BookOptions options;
    options.titlePage = options.howToPlay = options.contents = true;
    std::vector<Page> pages = qm::render::PlanBook(puzzles, options);
    QCOMPARE(pages.size(), std::size_t{3 + 2 + 1});
    QVERIFY(pages[0].kind == qm::render::PageKind::Title && pages[2].kind == qm::render::PageKind::Contents);
    QCOMPARE(pages[5].items[4].puzzlePage, 5);  // answers name the page after the front matter
    // A book not in rising grades has no contents by grade.
    std::swap(puzzles[0], puzzles[5]);
    pages = qm::render::PlanBook(puzzles, options);
    QCOMPARE(pages.size(), std::size_t{2 + 2 + 1});
    QVERIFY(pages[1].kind == qm::render::PageKind::HowToPlay && pages[2].kind == qm::render::PageKind::Puzzles);
  }

  void theBookPlansPuzzlesThenAnswersNamingTheirPages() {
    std::vector<PrintedPuzzle> puzzles(30);
    for (int i = 0; i < 30; ++i) puzzles[static_cast<std::size_t>(i)].number = i + 1;
    std::vector<Page> pages = qm::render::PlanBook(puzzles, {QString(), 4, 12, true, false});
    QCOMPARE(pages.size(), std::size_t{11});
    for (int p = 0; p < 8; ++p) QVERIFY(!pages[static_cast<std::size_t>(p)].answers);
    QCOMPARE(pages[7].items.size(), std::size_t{2});
    QVERIFY(pages[8].answers && pages[10].answers);
    QCOMPARE(pages[10].items.size(), std::size_t{6});
    QCOMPARE(pages[8].items[5].puzzle->number, 6);
    QCOMPARE(pages[8].items[5].puzzlePage, 2);
    QCOMPARE(pages[10].items.back().puzzlePage, 8);

    pages = qm::render::PlanBook(puzzles, {QString(), 20, 1, false, false});
    QCOMPARE(pages.size(), std::size_t{2});

    // One puzzle with its solution on the next page, or alone.
    const std::vector<PrintedPuzzle> one(1);
    pages = qm::render::PlanBook(one, {QString(), 4, 12, true, true});
    QCOMPARE(pages.size(), std::size_t{2});
    QVERIFY(!pages[0].answers && pages[1].answers && pages[1].items[0].solution);
    QCOMPARE(pages[1].items[0].puzzlePage, 1);
    QCOMPARE(qm::render::PlanBook(one, {QString(), 4, 12, false, true}).size(), std::size_t{1});
  }

  void signsNeverTouchTheBoxes() {
    // At print resolution (a 9x9 86 mm wide at 600 dpi) and much larger: no pixel of a
    // sign lies next to a pixel of a box.
    for (const auto& [size, side] : {std::pair{9, 2032}, std::pair{3, 900}}) {
      const PrintedPuzzle puzzle = Crowded(size);
      const QImage boxes = Draw(BoxesOf(puzzle), side, GridStyle::Puzzle);
      const QImage all = Draw(puzzle, side, GridStyle::Puzzle);
      int signInk = 0;
      for (int y = 1; y + 1 < side; ++y) {
        for (int x = 1; x + 1 < side; ++x) {
          if (!Inked(all, x, y) || Inked(boxes, x, y)) continue;
          // A sign's (or digit's) ink: no box ink around it.
          ++signInk;
          for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
              if (Inked(boxes, x + dx, y + dy)) {
                QFAIL(qPrintable(QStringLiteral("%1x%1: ink at %2,%3 touches a box").arg(size).arg(x).arg(y)));
              }
            }
          }
        }
      }
      QVERIFY(signInk > 0);
    }
  }

  void answerKeysSetTheGivensApart() {
    const PrintedPuzzle puzzle = Crowded(4);
    const int side = 400;
    const QImage answer = Draw(puzzle, side, GridStyle::Answer);
    const QImage plain = Draw(puzzle, side, GridStyle::Puzzle);
    const double cell = side / qm::render::GridUnits(4);
    // Inside the top-left cell (a given) near its corner, and inside the one beside it
    // (a solved digit): only the given is tinted, and only in the answer key.
    const int inset = static_cast<int>(cell * 0.12);
    const QPoint given(inset, inset);
    const QPoint solved(static_cast<int>(side - cell) + inset, inset);
    QVERIFY(qGray(answer.pixel(given)) < 245);
    QCOMPARE(qGray(answer.pixel(solved)), 255);
    QCOMPARE(qGray(plain.pixel(given)), 255);
  }
};

QM_UI_TEST(PageRendererTest);
#include "test_page_renderer.moc"
