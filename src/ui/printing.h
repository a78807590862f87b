// Printing: the page renderer's book pages on a printer or a PDF file, and the page
// layout the person chose last.
#pragma once

#include <QDialog>
#include <QPageLayout>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "render/page_renderer.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QPrinter;
class QSpinBox;

namespace qm::ui {

using render::PrintedPuzzle;
using render::TakePuzzle;
// The puzzle the model holds, with its grade from the technique ladder when `graded`.
PrintedPuzzle TakePuzzle(const PuzzleModel& model, int number, bool graded);

// The page renderer's paper and margins for a page layout (no bleed, not mirrored).
render::PageSpec PageSpecOf(const QPageLayout& layout);

// Prints the planned pages on the printer (or its PDF file) with the page renderer.
// False when the painter could not start on the printer (such as an unwritable PDF).
bool PrintBook(QPrinter& printer, const std::vector<render::Page>& pages, const render::BookOptions& options);

// The page size, orientation and margins last chosen, kept in `file` (an INI file of
// its own, so the settings file keeps its fixed form). Without one the printer keeps
// its page size and takes the book margins; false then.
bool RestorePageLayout(QPrinter& printer, const std::string& file);
void RememberPageLayout(const QPrinter& printer, const std::string& file);
// Where the window keeps the page layout: beside the settings file.
std::string PageLayoutFile(const PuzzleModel& model);

// Runs a dialog modally the way the window does (tests answer it instead).
using ModalRunner = std::function<int(QDialog& dialog)>;

// The pages to a PDF file: the page setup (size, orientation, margins: kept for next
// time), then the one save chooser, ".pdf" added when missing, the overwrite question,
// the file written through a scratch file and a message naming it.
void PrintToFile(const PuzzleModel& model, WindowPort& port, const ModalRunner& runModal, QWidget* parent,
                 const std::vector<render::Page>& pages, const render::BookOptions& options);

// The pages in the print preview, whose print dialog chooses the printer and the page;
// the page layout is kept when the pages were printed.
void PrintWithPreview(const PuzzleModel& model, WindowPort& port, const ModalRunner& runModal, QWidget* parent,
                      const std::vector<render::Page>& pages, const render::BookOptions& options);

// Asks which puzzles of the file to print and how many to a page.
class PrintRangeDialog : public QDialog {
  Q_OBJECT

 public:
  PrintRangeDialog(int puzzleCount, int current, QWidget* parent);
  int First() const;
  int Last() const;
  int PerPage() const;
  int AnswersPerPage() const;
  bool Answers() const;
  bool Grades() const;

  // Only whole numbers are taken; whether the range holds a puzzle the window says.
  void accept() override;

 private:
  QSpinBox* first_ = nullptr;
  QSpinBox* last_ = nullptr;
  QComboBox* perPage_ = nullptr;
  QSpinBox* answersPerPage_ = nullptr;
  QCheckBox* answers_ = nullptr;
  QCheckBox* grades_ = nullptr;
};

// The page of a PDF file: any paper size Qt knows, the orientation and the four
// margins in millimetres. (Qt's own page setup serves real printers only.)
class PageSetupDialog : public QDialog {
  Q_OBJECT

 public:
  PageSetupDialog(const QPageLayout& layout, QWidget* parent);
  QPageLayout Layout() const;

 private:
  QComboBox* size_ = nullptr;
  QPageSize custom_;  // the size it was opened with, when Qt has no name for it
  QCheckBox* landscape_ = nullptr;
  std::array<QDoubleSpinBox*, 4> margins_{};  // left, top, right, bottom
};

}  // namespace qm::ui
