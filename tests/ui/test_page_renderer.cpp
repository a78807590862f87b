#include <QImage>
#include <QPainter>
#include <QtTest>

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
