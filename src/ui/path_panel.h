// The dockable solution-path panel: the grade at the top, then every step of the path of
// the shown puzzle (number, technique, sentence). Selecting a step asks the window to
// show the grid as it was after it; the list can be copied as text.
#pragma once

#include <QDockWidget>

#include "commands/solution_path.h"

class QLabel;
class QListWidget;
class QPushButton;

namespace qm::ui {

class PathPanel : public QDockWidget {
  Q_OBJECT

 public:
  explicit PathPanel(QWidget* parent);

  // While the path is worked out in the background.
  void ShowComputing();
  void ShowPath(const SolutionPath& path);
  const SolutionPath& Path() const { return path_; }
  bool HasPath() const { return ready_; }

  QListWidget* Steps() const { return steps_; }
  QString GradeText() const;
  // Puts the path on the clipboard as text.
  void Copy() const;
  void ClearSelection();

 signals:
  // The index of the selected step, or -1 when none is selected.
  void StepSelected(int index);

 private:
  QLabel* grade_ = nullptr;
  QListWidget* steps_ = nullptr;
  QPushButton* copy_ = nullptr;
  SolutionPath path_;
  bool ready_ = false;
};

}  // namespace qm::ui
