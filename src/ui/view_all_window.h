// The view of all puzzles of the current collection: one row per record with its size,
// signs, clues and comment, and the total below. A double-click opens that puzzle in
// the main window.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "core/collection_file.h"
#include "ui/background_job.h"

class QLabel;
class QTableWidget;

namespace qm::ui {

class ViewAllWindow : public QDialog {
  Q_OBJECT

 public:
  // `open` is handed the 1-based position of a double-clicked record.
  ViewAllWindow(std::function<void(int)> open, QWidget* parent);

  // Lists the file's records; `total` is the line shown under the list. The grades are
  // filled in as the background works them out; every column sorts.
  void Show(const std::string& path, const std::string& total);
  QTableWidget* Table() const { return table_; }
  // Records still waiting for their grade.
  int GradesPending() const { return pending_; }

  static constexpr int kGradeColumn = 5;

 private:
  void SetGrade(int ordinal, const std::string& name, int level, double score);

  std::function<void(int)> open_;
  QTableWidget* table_ = nullptr;
  QLabel* total_ = nullptr;
  BackgroundJob grading_;
  int generation_ = 0;
  int pending_ = 0;
};

}  // namespace qm::ui
