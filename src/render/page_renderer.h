// The page renderer: puzzles and answer keys laid out on book pages, drawn with a
// QPainter so that the printer, the print preview, PDF files, SVG and PNG all show the
// same thing. It needs Qt Gui only, so the command line can draw without a display.
#pragma once

#include <QRectF>
#include <QString>
#include <string>
#include <vector>

#include "core/puzzle_model.h"

class QPagedPaintDevice;
class QPainter;

namespace qm::render {

// What a printed puzzle needs, taken from the model so that the model can move on.
struct PrintedPuzzle {
  int number = 0;
  std::string comment;  // code page 1252, as the model holds it
  int size = 0;
  // Per layout row and column (0-based): the puzzle's character (a clue digit, a sign or
  // blank) and the solution's character (blank when unknown).
  std::vector<std::string> puzzle;
  std::vector<std::string> solution;
  std::string grade;  // the grade's name for the caption; empty for none
};

// The puzzle the model holds: its clues and signs, and its stored solution.
PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number);

// One place on a page: a puzzle or its solution.
struct PageSlot {
  const PrintedPuzzle* puzzle = nullptr;
  bool solution = false;
  int puzzlePage = 0;  // for an answer: the page (1-based) its puzzle is on
};

struct Page {
  bool answers = false;  // an answer-key page
  int places = 1;        // places the page is divided into
  std::vector<PageSlot> items;
};

struct BookOptions {
  QString title;               // on the first page and in the running header
  int perPage = 4;             // puzzles a page
  int answersPerPage = 12;     // answer keys a page
  bool answers = true;         // the answer key after the puzzles
  bool answersOnOwnPage = false;  // each answer on the page after its puzzle instead
};

// The puzzles K a page, then (unless turned off) their answers M a page, starting on a
// page of their own.
std::vector<Page> PlanBook(const std::vector<PrintedPuzzle>& puzzles, const BookOptions& options);

// How a grid is drawn: answers set their givens apart from the solved digits.
enum class GridStyle { Puzzle, Answer };

// One grid scaled to fill `box` and centred in it: boxes for the cells, bold clue
// digits, and signs as chevrons in the gaps that never touch the boxes.
void DrawGrid(QPainter& painter, const QRectF& box, const PrintedPuzzle& puzzle, GridStyle style);

// The side of the square a grid of `size` needs per unit cell: cells plus their gaps.
double GridUnits(int size);

// The extent of a sign along its gap (how tall "<" stands) for cells of side `cell`.
double SignLength(double cell);

// The margins books are made with when nobody chose others, in millimetres.
inline constexpr double kBookMarginMm = 6.0;

// Where everything goes on one page whose printable `area` has `mm` device units to the
// millimetre: the header and footer bands and, per item, its caption and grid square.
struct PageGeometry {
  QRectF header;
  QRectF footer;
  std::vector<QRectF> captions;
  std::vector<QRectF> grids;
};
PageGeometry LayOutPage(const QRectF& area, double mm, const Page& page);

// Paints the pages on the device (a printer or a PDF writer) with the title on the
// first page, a running header and page numbers. False when the painter cannot start
// (an unwritable file).
bool PaintBook(QPagedPaintDevice& device, const std::vector<Page>& pages, const BookOptions& options);

}  // namespace qm::render
