// The view of all puzzles of the current collection: one row per record with its size,
// signs, clues and comment, and the total below. A double-click opens that puzzle in
// the main window.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "ui/background_job.h"

class QLabel;
class QTableWidget;

namespace qm::ui {

// What the view shows of one record, read from the file without loading the puzzle.
struct RecordSummary {
  int size = 0;
  int signs = 0;
  int clues = -1;  // -1: the older size line carries no clue count
  std::string comment;  // as in the file (code page 1252)
};

// The records of a collection file in file order; empty for a missing file.
std::vector<RecordSummary> ReadRecordSummaries(const std::string& path);

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
