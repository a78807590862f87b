// The window's coaching side: pencil marks, redo, the colours of digits by origin, digit
// highlights, conflict marks and the check of the player's digits. The main window hands
// it the player's entries and keys; it keeps the history that Undo and Redo walk.
#pragma once

#include <QObject>
#include <string>
#include <vector>

#include "commands/coach_state.h"
#include "commands/run_control.h"
#include "commands/solution_path.h"
#include "commands/solve_timer.h"
#include "settings/window_options.h"
#include "ui/background_job.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"

class QAction;
class QActionGroup;
class QKeyEvent;
class QLabel;
class QMessageBox;
class QTimer;
class QMainWindow;
class QMenu;
class QMenuBar;

namespace qm::ui {

class GridWidget;
class PathPanel;

class CoachController : public QObject {
  Q_OBJECT

 public:
  CoachController(PuzzleModel& model, RunControl& run, GridWidget& grid, QObject* parent);

  CoachState& State() { return state_; }

  // Adds the coaching entries to the menus "Quillmere", "Edit" and "Solve", the Next Step
  // button and the solution-path panel.
  void Install(QMainWindow& window);

  // Solve -> "Next Step": the first press names the technique and where to look, the
  // second gives the step's sentence, the third makes the step (undoable).
  void NextStep();
  int HintLevel() const { return hintLevel_; }
  PathPanel* Panel() const { return panel_; }
  // Shows the grid after step `index` of the panel's path (-1: the grid as it is).
  void ShowPathStep(int index);
  // The shown puzzle's grade and path are worked out again (in the background).
  void RecomputePath();

  // The player's entries; true when the model took them.
  bool CellChoice(int p, const std::string& choice);
  bool SignChoice(int p, const std::string& choice);
  // A digit key on cell p (Options -> "Allow Any Digit" lets it place any digit).
  bool KeyDigit(int p, int digit);
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
  void SetAllowAnyDigit(bool on);
  void SetShowTimer(bool on);
  bool ShowTimer() const { return options_.showTimer; }
  void CheckMyDigits();

  // The solving timer: paused while the window is in the background.
  SolveTimer& Timer() { return timer_; }
  void SetInFront(bool inFront);
  QLabel* TimerLabel() const { return timerLabel_; }
  // The note shown when the player finishes a puzzle (null until then).
  QMessageBox* FinishNote() const { return finishNote_; }

 protected:
  // Space goes on with a paced solve wherever the focus is; Escape cancels it.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void AddMenus(QMenuBar& bar);
  void Changed();
  // After a player's action: stops the timer and says so when the grid is finished.
  void CheckFinished();
  void ShowTime();
  void KeepOptions();
  void RebuildHighlightMenu();
  void Light(const std::vector<int>& cells, const std::vector<int>& targets);
  void Unlight();
  std::string HintKey() const;

  PuzzleModel& model_;
  WindowPort& Port() { return run_.Port(); }

  RunControl& run_;
  GridWidget& grid_;
  CoachState state_;
  QAction* pencil_ = nullptr;
  QAction* conflicts_ = nullptr;
  QAction* anyDigit_ = nullptr;
  QAction* showTimer_ = nullptr;
  WindowOptions options_;
  SolveTimer timer_;
  QLabel* timerLabel_ = nullptr;
  QTimer* tick_ = nullptr;
  QMessageBox* finishNote_ = nullptr;
  QMenu* highlightMenu_ = nullptr;
  QActionGroup* highlightGroup_ = nullptr;
  std::vector<QAction*> highlightEntries_;
  PathPanel* panel_ = nullptr;
  BackgroundJob pathJob_;
  int pathGeneration_ = 0;
  int shownStep_ = -1;
  std::vector<int> lit_;
  int hintLevel_ = 0;
  std::string hintKey_;
  PathStep hintStep_;
};

// Shift with a digit key: the digit (1..9), whatever the keyboard layout sends as text;
// 0 when the key is not a digit.
int DigitOfKey(const QKeyEvent& event);

}  // namespace qm::ui
