// Printing: the page renderer's book pages on a printer or a PDF file, and the page
// layout the person chose last.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "core/puzzle_model.h"
#include "render/page_renderer.h"

class QCheckBox;
class QComboBox;
class QPrinter;
class QSpinBox;

namespace qm::ui {

using render::PrintedPuzzle;
using render::TakePuzzle;

// Prints the planned pages on the printer (or its PDF file) with the page renderer.
// False when the painter could not start on the printer (such as an unwritable PDF).
bool PrintBook(QPrinter& printer, const std::vector<render::Page>& pages, const render::BookOptions& options);

// The page size, orientation and margins last chosen, kept in `file` (an INI file of
// its own, so the settings file keeps its fixed form). False when none is kept.
bool RestorePageLayout(QPrinter& printer, const std::string& file);
void RememberPageLayout(const QPrinter& printer, const std::string& file);

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

  // Only a range from a first to a not earlier last puzzle is taken.
  void accept() override;

 private:
  QSpinBox* first_ = nullptr;
  QSpinBox* last_ = nullptr;
  QComboBox* perPage_ = nullptr;
  QSpinBox* answersPerPage_ = nullptr;
  QCheckBox* answers_ = nullptr;
};

}  // namespace qm::ui
