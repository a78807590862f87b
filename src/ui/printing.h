// Printing: puzzles and their solutions drawn on printer pages, several to a page,
// each with its number and description, the solutions on the pages after the puzzles.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "core/puzzle_model.h"

class QComboBox;
class QPrinter;
class QSpinBox;

namespace qm::ui {

// What a printed puzzle needs, taken from the model so that the model can move on.
struct PrintedPuzzle {
  int number = 0;
  std::string comment;  // code page 1252, as the model holds it
  int size = 0;
  // Per layout row and column (0-based): the puzzle's character (a clue digit, a sign or
  // blank) and the solution's character (blank when unknown).
  std::vector<std::string> puzzle;
  std::vector<std::string> solution;
};

// The puzzle the model holds: its clues and signs, and its stored solution.
PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number);

// One place on a page: a puzzle or its solution, or nothing (an empty place).
struct PrintItem {
  const PrintedPuzzle* puzzle = nullptr;
  bool solution = false;
};

// The puzzles in order, then their solutions starting on a new page.
std::vector<PrintItem> FileLayout(const std::vector<PrintedPuzzle>& puzzles, int perPage);

// Draws the items `perPage` to a page (1, 2, 4, 6 or 9), each with its number and
// description. False when the painter could not start on the printer (such as an
// unwritable PDF file).
bool PrintPuzzles(QPrinter& printer, const std::vector<PrintItem>& items, int perPage);

// Asks which puzzles of the file to print and how many to a page.
class PrintRangeDialog : public QDialog {
  Q_OBJECT

 public:
  PrintRangeDialog(int puzzleCount, int current, QWidget* parent);
  int First() const;
  int Last() const;
  int PerPage() const;

  // Only a range from a first to a not earlier last puzzle is taken.
  void accept() override;

 private:
  QSpinBox* first_ = nullptr;
  QSpinBox* last_ = nullptr;
  QComboBox* perPage_ = nullptr;
};

}  // namespace qm::ui
