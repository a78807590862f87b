// The page renderer: puzzles and answer keys laid out on book pages, drawn with a
// QPainter so that the printer, the print preview, PDF files, SVG and PNG all show the
// same thing. It needs Qt Gui only, so the command line can draw without a display.
//
// The geometry (where pages, grids, captions and signs go) is worked out by pure
// functions in millimetres, so that it can be checked without painting anything.
#pragma once

#include <QByteArray>
#include <QRectF>
#include <QSizeF>
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
  std::string grade;   // the grade's name for the caption; empty for none
  int gradeLevel = 0;  // its rung on the ladder, for the difficulty mark
};

// The puzzle the model holds: its clues and signs, and its stored solution.
PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number);

enum class PageKind { Puzzles, Answers, Title, HowToPlay, Contents };

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
  PageKind kind = PageKind::Puzzles;
};

// What a puzzle's caption shows beside its number, which always comes first and large.
struct Captions {
  bool title = false;  // the record's comment, as it stands
  bool grade = true;   // the grade's name and its difficulty mark
};

// The finished page and how the book is cut and bound, in millimetres. The paper is
// the trim size grown by the bleed on every side; margins are measured from the trim.
// Page 1 is a right-hand page: with mirrored margins the inner margin is on the left
// of odd pages and on the right of even ones.
struct PageSpec {
  QSizeF trim{210, 297};
  double bleed = 0;
  double top = 6.0;
  double bottom = 6.0;
  double inner = 6.0;  // the left margin unless mirrored
  double outer = 6.0;
  bool mirror = false;
};

// The paper size: the trim grown by the bleed on each side.
QSizeF PaperSize(const PageSpec& spec);
// Where the page is cut, on the paper.
QRectF TrimRect(const PageSpec& spec);
// What may hold ink on page `index` (0-based), on the paper.
QRectF ContentRect(const PageSpec& spec, int index);

// A worked example for the how-to-play page: a small puzzle, and the first steps the
// technique ladder takes on it (one sentence each).
struct WorkedExample {
  PrintedPuzzle puzzle;
  std::vector<std::string> steps;  // UTF-8
};

struct BookOptions {
  QString title;               // on the first page and in the running header
  int perPage = 4;             // puzzles a page
  int answersPerPage = 12;     // answer keys a page
  bool answers = true;         // the answer key after the puzzles
  bool answersOnOwnPage = false;  // each answer on the page after its puzzle instead
  Captions captions{};
  PageSpec page{};
  bool titlePage = false;  // a page of its own with the title
  bool howToPlay = false;  // the rules and the worked example
  bool contents = false;   // contents by grade section (puzzles in rising grades only)
  WorkedExample example{};
};

// The puzzles K a page, then (unless turned off) their answers M a page, starting on a
// page of their own; before them the front matter asked for.
std::vector<Page> PlanBook(const std::vector<PrintedPuzzle>& puzzles, const BookOptions& options);

// True when the puzzles' grades never fall (a book ordered by grade).
bool InRisingGrades(const std::vector<PrintedPuzzle>& puzzles);

// How a grid is drawn: answers set their givens apart from the solved digits.
enum class GridStyle { Puzzle, Answer };

// One grid scaled to fill `box` and centred in it: boxes for the cells, bold clue
// digits, and signs as chevrons in the gaps that never touch the boxes.
void DrawGrid(QPainter& painter, const QRectF& box, const PrintedPuzzle& puzzle, GridStyle style);

// The side of the square a grid of `size` needs per unit cell: cells plus their gaps.
double GridUnits(int size);

// A sign's chevron for cells of side `cell` in a grid of `size`: its extent along the gap (how tall "<"
// stands), across it (the depth of the point), the stroke, and the gap it sits in.
struct SignShape {
  double length = 0;
  double depth = 0;
  double stroke = 0;
  double gap = 0;
  double boxLine = 0;  // the width of the boxes' outline
};
SignShape SignGeometry(double cell, int size);
// The extent of a sign along its gap, stroke included.
double SignLength(double cell);
// The white between a sign's ink and the ink of the boxes beside it.
double SignClearance(double cell, int size);

// The margins books are made with when nobody chose others, in millimetres.
inline constexpr double kBookMarginMm = 6.0;

// Where everything goes on one page whose printable `area` has `mm` device units to the
// millimetre: the header and footer bands and, per item, its caption and grid square.
// Grids in a row and rows stand the same gutter apart; spare room is shared evenly
// above, between and below. Puzzles keep cells of 8 mm where the page allows it.
struct PageGeometry {
  QRectF header;
  QRectF footer;
  QRectF body;  // between them: what the grids and captions share
  std::vector<QRectF> captions;
  std::vector<QRectF> grids;
  double gutter = 0;  // between grids in a row and between rows
};
PageGeometry LayOutPage(const QRectF& area, double mm, const Page& page);

// One to seven filled dots for a rung of the ladder (none for no grade).
int DifficultyDots(int level);

// Paints the pages on the device (a printer or a PDF writer whose painting starts at the
// paper's corner) with the title, a running header and page numbers, and each page's
// content inside ContentRect. False when the painter cannot start.
bool PaintBook(QPagedPaintDevice& device, const std::vector<Page>& pages, const BookOptions& options);

// The book as PDF bytes on paper of PaperSize, with the trim box of each page set and
// `documentTitle` in the file's properties; empty when painting failed.
QByteArray BookPdf(const std::vector<Page>& pages, const BookOptions& options, const QString& documentTitle,
                   const QString& creator);

// Sets /TrimBox (and /BleedBox, the whole paper) on every page of a PDF: the trim box
// inset by `bleedPoints` on each side. Empty when the bytes are not a PDF it can read.
QByteArray WithTrimBox(const QByteArray& pdf, double bleedPoints);

}  // namespace qm::render
