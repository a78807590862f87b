// "Sort Puzzle File": names a source and an output collection, the criterion, the order
// and the renumbering, and runs the core's sort. A refused request keeps the dialog
// open with its inputs; a finished sort closes it.
#pragma once

#include <QDialog>
#include <array>

#include "core/puzzle_model.h"
#include "core/window_port.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace qm::ui {

class SortDialog : public QDialog {
  Q_OBJECT

 public:
  SortDialog(PuzzleModel& model, WindowPort& port, QWidget* parent);

  // "Sort".
  void Sort();

 private:
  PuzzleModel& model_;
  WindowPort& port_;
  QLineEdit* source_ = nullptr;
  QLineEdit* output_ = nullptr;
  std::array<QRadioButton*, 4> option1_{};
  std::array<QRadioButton*, 3> option2_{};
  QCheckBox* resequence_ = nullptr;
  QLineEdit* start_ = nullptr;
  QLabel* progress_ = nullptr;
};

}  // namespace qm::ui
