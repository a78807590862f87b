// The window's coaching side: pencil marks, redo, the colours of digits by origin, digit
// highlights, conflict marks and the check of the player's digits. The main window hands
// it the player's entries and keys; it keeps the history that Undo and Redo walk.
#pragma once

#include <QObject>
#include <string>
#include <vector>

#include "commands/coach_state.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"

class QAction;
class QActionGroup;
class QKeyEvent;
class QMenu;
class QMenuBar;

namespace qm::ui {

class GridWidget;

class CoachController : public QObject {
  Q_OBJECT

 public:
  CoachController(PuzzleModel& model, WindowPort& port, GridWidget& grid, QObject* parent);

  CoachState& State() { return state_; }

  // Adds the coaching entries to the menus "Quillmere", "Edit" and "Solve".
  void AddMenus(QMenuBar& bar);

  // The player's entries; true when the model took them.
  bool CellChoice(int p, const std::string& choice);
  bool SignChoice(int p, const std::string& choice);
  void Undo();
  void Redo();

  // Pencil-mode keys, Shift+digit and P; true when the key was used.
  bool HandleKey(const QKeyEvent& event);

  // A new puzzle is shown.
  void PuzzleReplaced();
  // After Auto-solve: a stalled puzzle gets the search's verdict in the status line.
  void AfterAutoSolve(const std::string& outcome);

  void SetPencilMode(bool on);
  void SetHighlightDigit(int digit);
  void SetLiveConflicts(bool on);
  void CheckMyDigits();

 protected:
  // Space goes on with a paced solve wherever the focus is.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Changed();
  void RebuildHighlightMenu();

  PuzzleModel& model_;
  WindowPort& port_;
  GridWidget& grid_;
  CoachState state_;
  QAction* pencil_ = nullptr;
  QAction* conflicts_ = nullptr;
  QMenu* highlightMenu_ = nullptr;
  QActionGroup* highlightGroup_ = nullptr;
  std::vector<QAction*> highlightEntries_;
};

// Shift with a digit key: the digit (1..9), whatever the keyboard layout sends as text;
// 0 when the key is not a digit.
int DigitOfKey(const QKeyEvent& event);

}  // namespace qm::ui
