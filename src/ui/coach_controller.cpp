#include "ui/coach_controller.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QStatusBar>
#include <QTimer>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

#include "commands/solving_commands.h"
#include "commands/stall_verdict.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solve_driver.h"
#include "ui/grid_widget.h"
#include "ui/menu_keys.h"
#include "ui/path_panel.h"

namespace qm::ui {

namespace {

QMenu* MenuTitled(QMenuBar& bar, const QString& title) {
  for (QAction* action : bar.actions()) {
    if (action->menu() != nullptr && QString(action->text()).remove('&') == title) return action->menu();
  }
  return nullptr;
}

QAction* AddEntry(QMenu& menu, QAction* before, const char* name, const QString& caption) {
  auto* action = new QAction(caption, &menu);
  action->setObjectName(name);
  menu.insertAction(before, action);
  return action;
}

// The "Cancel" entry that ends every menu, after its separator.
QAction* CancelEntry(QMenu& menu) {
  const QList<QAction*> actions = menu.actions();
  return actions.size() >= 2 ? actions[actions.size() - 2] : nullptr;
}

}  // namespace

int DigitOfKey(const QKeyEvent& event) {
  const int key = event.key();
  if (key >= Qt::Key_1 && key <= Qt::Key_9) return key - Qt::Key_0;
  // Shift turns the digit keys into these on the common layouts.
  static const QString shifted = QStringLiteral("!@#$%^&*(");
  const QString text = event.text();
  if (text.size() == 1) {
    if (text[0] >= '1' && text[0] <= '9') return text[0].unicode() - '0';
    const auto at = shifted.indexOf(text[0]);
    if (at >= 0) return static_cast<int>(at) + 1;
  }
  // Shift with a digit sends these key codes (US layout), whatever the text.
  static const int shiftedKeys[] = {Qt::Key_Exclam,     Qt::Key_At,        Qt::Key_NumberSign,
                                    Qt::Key_Dollar,     Qt::Key_Percent,   Qt::Key_AsciiCircum,
                                    Qt::Key_Ampersand,  Qt::Key_Asterisk,  Qt::Key_ParenLeft};
  for (int d = 0; d < 9; ++d) {
    if (key == shiftedKeys[d]) return d + 1;
  }
  return 0;
}

CoachController::CoachController(PuzzleModel& model, RunControl& run, GridWidget& grid, QObject* parent)
    : QObject(parent), model_(model), run_(run), grid_(grid) {
  grid_.SetCoach(&state_);
  qApp->installEventFilter(this);
}

void CoachController::Install(QMainWindow& window) {
  panel_ = new PathPanel(&window);
  window.addDockWidget(Qt::RightDockWidgetArea, panel_);
  panel_->hide();
  connect(panel_, &PathPanel::StepSelected, this, [this](int index) { ShowPathStep(index); });
  connect(panel_, &QDockWidget::visibilityChanged, this, [this](bool visible) {
    if (!visible) ShowPathStep(-1);
  });
  AddMenus(*window.menuBar());
  auto* tools = window.addToolBar("Coach");
  tools->setObjectName("CoachToolBar");
  tools->setMovable(false);
  if (QAction* next = window.findChild<QAction*>("mnunextstep")) tools->addAction(next);
  tools->addAction(panel_->toggleViewAction());

  timerLabel_ = new QLabel(&window);
  timerLabel_->setObjectName("SolveTimer");
  timerLabel_->setToolTip("Time spent on this puzzle (paused while the window is in the background)");
  window.statusBar()->addPermanentWidget(timerLabel_);
  tick_ = new QTimer(this);
  tick_->setInterval(1000);
  connect(tick_, &QTimer::timeout, this, [this] { ShowTime(); });
  tick_->start();
  connect(qApp, &QGuiApplication::applicationStateChanged, this,
          [this](Qt::ApplicationState state) { SetInFront(state == Qt::ApplicationActive); });
  SetShowTimer(options_.showTimer);
  ShowTime();
}

void CoachController::AddMenus(QMenuBar& bar) {
  if (QMenu* edit = MenuTitled(bar, "Edit")) {
    QAction* cancel = CancelEntry(*edit);
    edit->insertSeparator(cancel);
    QAction* undo = AddEntry(*edit, cancel, "mnuundo", "Undo");
    connect(undo, &QAction::triggered, this, [this] { Undo(); });
    QAction* redo = AddEntry(*edit, cancel, "mnuredo", "Redo");
    connect(redo, &QAction::triggered, this, [this] { Redo(); });
    edit->insertSeparator(cancel);
    pencil_ = AddEntry(*edit, cancel, "mnupencil", "Pencil Marks");
    pencil_->setCheckable(true);
    connect(pencil_, &QAction::toggled, this, [this](bool on) { SetPencilMode(on); });
    connect(AddEntry(*edit, cancel, "mnufillmarks", "Fill All Candidates"), &QAction::triggered, this, [this] {
      FillAllCandidates(state_, model_);
      Changed();
    });
    connect(AddEntry(*edit, cancel, "mnuclearmarks", "Clear Marks"), &QAction::triggered, this, [this] {
      ClearMarks(state_);
      Changed();
    });
  }
  if (QMenu* solve = MenuTitled(bar, "Solve")) {
    QAction* cancel = CancelEntry(*solve);
    solve->insertSeparator(cancel);
    QAction* next = AddEntry(*solve, cancel, "mnunextstep", "Next Step");
    next->setToolTip("A hint: where to look, then the step, then the step made");
    connect(next, &QAction::triggered, this, [this] { NextStep(); });
    connect(AddEntry(*solve, cancel, "mnucheckdigits", "Check My Digits"), &QAction::triggered, this,
            [this] { CheckMyDigits(); });
    if (panel_ != nullptr) {
      QAction* path = panel_->toggleViewAction();
      path->setObjectName("mnupathpanel");
      path->setText("Solution Path");
      solve->insertAction(cancel, path);
    }
  }
  QMenu* options = nullptr;
  if (QMenu* main = MenuTitled(bar, "Quillmere")) {
    for (QAction* action : main->actions()) {
      if (action->objectName() == "mnuopts") options = action->menu();
    }
  }
  if (options != nullptr) {
    QAction* cancel = CancelEntry(*options);
    highlightMenu_ = new QMenu("Highlight Digit", options);
    highlightMenu_->menuAction()->setObjectName("mnuhighlight");
    options->insertMenu(cancel, highlightMenu_);
    highlightGroup_ = new QActionGroup(highlightMenu_);
    connect(highlightMenu_, &QMenu::aboutToShow, this, [this] { RebuildHighlightMenu(); });
    RebuildHighlightMenu();
    conflicts_ = AddEntry(*options, cancel, "mnuconflicts", "Mark Conflicts");
    conflicts_->setCheckable(true);
    connect(conflicts_, &QAction::toggled, this, [this](bool on) { SetLiveConflicts(on); });
    options_ = ReadWindowOptions(model_.AppDir + std::string(kWindowOptionsFileName));
    state_.AllowAnyDigit = options_.allowAnyDigit;
    anyDigit_ = AddEntry(*options, cancel, "mnuanydigit", "Allow Any Digit");
    anyDigit_->setCheckable(true);
    anyDigit_->setChecked(options_.allowAnyDigit);
    anyDigit_->setToolTip("Digit keys place any digit; digits that clash are ringed");
    connect(anyDigit_, &QAction::toggled, this, [this](bool on) { SetAllowAnyDigit(on); });
    showTimer_ = AddEntry(*options, cancel, "mnushowtimer", "Show Timer");
    showTimer_->setCheckable(true);
    showTimer_->setChecked(options_.showTimer);
    connect(showTimer_, &QAction::toggled, this, [this](bool on) { SetShowTimer(on); });
  }
}

void CoachController::RebuildHighlightMenu() {
  // The entries are made once; opening the menu offers the digits of the grid's size.
  if (highlightEntries_.empty()) {
    for (int d = 0; d <= kMaxGridSize; ++d) {
      auto* action = new QAction(d == 0 ? QString("None") : QString::number(d), highlightMenu_);
      action->setObjectName(QStringLiteral("mnuhighlight%1").arg(d));
      action->setCheckable(true);
      highlightGroup_->addAction(action);
      connect(action, &QAction::triggered, this, [this, d] { SetHighlightDigit(d); });
      highlightEntries_.push_back(action);
    }
  }
  for (QAction* action : highlightMenu_->actions()) highlightMenu_->removeAction(action);
  for (int d = 0; d <= model_.GridSize; ++d) {
    highlightMenu_->addAction(highlightEntries_[static_cast<std::size_t>(d)]);
    highlightEntries_[static_cast<std::size_t>(d)]->setChecked(state_.HighlightDigit == d);
  }
  AddMnemonics(*highlightMenu_);
}

bool CoachController::CellChoice(int p, const std::string& choice) {
  const bool taken = PlayerCellChoice(state_, model_, Port(), p, choice);
  if (taken) state_.WrongCells.clear();
  Changed();
  if (taken) CheckFinished();
  return taken;
}

bool CoachController::KeyDigit(int p, int digit) {
  const bool taken = PlayerKeyDigit(state_, model_, Port(), p, digit);
  if (taken) state_.WrongCells.clear();
  Changed();
  if (taken) CheckFinished();
  return taken;
}

void CoachController::CheckFinished() {
  if (TrackFinish(timer_, model_) != FinishChange::Finished) {
    ShowTime();
    return;
  }
  const std::int64_t ms = timer_.ElapsedMs();
  ShowTime();
  Port().SetStatusLine(FinishedStatusText(ms));
  auto* parent = qobject_cast<QWidget*>(this->parent());
  if (finishNote_ == nullptr) {
    finishNote_ = new QMessageBox(QMessageBox::Information, "Quillmere", QString(), QMessageBox::Ok, parent);
    finishNote_->setObjectName("FinishNote");
    // A word, not a question: the window stays usable while it shows.
    finishNote_->setWindowModality(Qt::NonModal);
    finishNote_->setModal(false);
  }
  finishNote_->setText(QString::fromStdString(FinishedNoteText(ms)));
  finishNote_->show();
  finishNote_->raise();
}

void CoachController::ShowTime() {
  if (timerLabel_ == nullptr) return;
  timerLabel_->setText(QString::fromStdString("Time " + ClockText(timer_.ElapsedMs())));
}

void CoachController::SetInFront(bool inFront) {
  timer_.SetInFront(inFront);
  ShowTime();
}

bool CoachController::SignChoice(int p, const std::string& choice) {
  const bool taken = PlayerSignChoice(state_, model_, Port(), p, choice);
  Changed();
  return taken;
}

void CoachController::Undo() {
  if (model_.SolverBusy) return;
  CoachUndo(state_, model_, Port());
  state_.WrongCells.clear();
  Port().SetStatusLine("");  // it spoke of what was just taken back
  Changed();
  CheckFinished();
}

void CoachController::Redo() {
  if (model_.SolverBusy) return;
  CoachRedo(state_, model_, Port());
  state_.WrongCells.clear();
  Port().SetStatusLine("");
  Changed();
  CheckFinished();
}

bool CoachController::HandleKey(const QKeyEvent& event) {
  // Redo's keys, for when the menu's shortcuts do not reach the window.
  if (event.matches(QKeySequence::Redo) ||
      (event.modifiers() == Qt::ControlModifier && event.key() == Qt::Key_Y) ||
      (event.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier) && event.key() == Qt::Key_Z)) {
    Redo();
    return true;
  }
  if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return false;
  // Page Up and Page Down walk the solution path from anywhere in the window.
  if ((event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown) && panel_ != nullptr &&
      panel_->isVisible() && panel_->HasPath()) {
    QListWidget* steps = panel_->Steps();
    const int last = static_cast<int>(panel_->Path().steps.size()) - 1;
    const int row = event.key() == Qt::Key_PageDown ? std::min(steps->currentRow() + 1, last)
                                                    : std::max(steps->currentRow() - 1, 0);
    steps->setCurrentRow(row);
    return true;
  }
  if (event.key() == Qt::Key_P) {
    SetPencilMode(!state_.PencilMode);
    return true;
  }
  const int digit = DigitOfKey(event);
  const bool shift = (event.modifiers() & Qt::ShiftModifier) != 0 || (digit > 0 && !event.text().isEmpty() &&
                                                                       !event.text()[0].isDigit());
  if (digit == 0 || !(state_.PencilMode || shift)) return false;
  const int k = grid_.CursorPosition();
  if (k < 0 || k > model_.LastPosition || !IsCell(model_, k)) return true;
  if (ToggleMark(state_, model_, k, digit)) Changed();
  return true;
}

void CoachController::PuzzleReplaced() {
  qm::PuzzleReplaced(state_, model_);
  Unlight();
  hintLevel_ = 0;
  hintKey_.clear();
  shownStep_ = -1;
  RecomputePath();
  if (highlightMenu_ != nullptr && state_.HighlightDigit > model_.GridSize) SetHighlightDigit(0);
  if (state_.PencilMode) SetPencilMode(true);  // its reminder outlasts the puzzle
  timer_.Restart(GridFinished(model_));
  if (finishNote_ != nullptr) finishNote_->hide();
  ShowTime();
  grid_.update();
}

void CoachController::AfterAutoSolve(const std::string& outcome) {
  // The solver finished the grid, not the player: the timer stops without a word.
  if (outcome == kOutcomeDone) timer_.SetFinished(true);
  ShowTime();
  if (outcome != kOutcomeMultiple) return;
  Port().SetBusy(true);
  const std::string verdict = StallVerdict(model_);
  Port().SetBusy(false);
  Port().SetStatusLine(verdict);
}

void CoachController::SetPencilMode(bool on) {
  state_.PencilMode = on;
  if (pencil_ != nullptr && pencil_->isChecked() != on) pencil_->setChecked(on);
  Port().SetProgressLine(on ? "Pencil marks: digit keys mark and unmark" : "");
}

void CoachController::SetHighlightDigit(int digit) {
  state_.HighlightDigit = digit >= 0 && digit <= model_.GridSize ? digit : 0;
  if (highlightMenu_ != nullptr) RebuildHighlightMenu();
  grid_.update();
}

void CoachController::SetLiveConflicts(bool on) {
  state_.LiveConflicts = on;
  if (conflicts_ != nullptr && conflicts_->isChecked() != on) conflicts_->setChecked(on);
  grid_.update();
}

void CoachController::SetAllowAnyDigit(bool on) {
  state_.AllowAnyDigit = on;
  if (anyDigit_ != nullptr && anyDigit_->isChecked() != on) anyDigit_->setChecked(on);
  if (options_.allowAnyDigit != on) {
    options_.allowAnyDigit = on;
    KeepOptions();
  }
  grid_.update();
}

void CoachController::SetShowTimer(bool on) {
  if (showTimer_ != nullptr && showTimer_->isChecked() != on) showTimer_->setChecked(on);
  if (timerLabel_ != nullptr) timerLabel_->setVisible(on);
  if (options_.showTimer != on) {
    options_.showTimer = on;
    KeepOptions();
  }
}

void CoachController::KeepOptions() {
  const std::string path = model_.AppDir + std::string(kWindowOptionsFileName);
  if (!WriteWindowOptions(path, options_)) Port().SetStatusLine("Options not kept: cannot write " + path);
}

void CoachController::CheckMyDigits() {
  if (model_.SolverBusy) return;
  Port().SetBusy(true);
  const DigitCheck check = CheckPlayerDigits(state_, model_);
  Port().SetBusy(false);
  state_.WrongCells = check.wrong;
  Port().SetStatusLine(DigitCheckText(check));
  grid_.update();
}

void CoachController::Changed() {
  // The grid moved on: an open hint and a shown step of the path no longer apply.
  Unlight();
  hintLevel_ = 0;
  if (panel_ != nullptr) panel_->ClearSelection();
  if (shownStep_ >= 0) ShowPathStep(-1);
  grid_.update();
}

void CoachController::Light(const std::vector<int>& cells, const std::vector<int>& targets) {
  Unlight();
  for (int k : cells) {
    if (k < 0 || k > model_.LastPosition) continue;
    grid_.SetColour(k, CellColour::Highlight);
    lit_.push_back(k);
  }
  for (int k : targets) {
    if (k < 0 || k > model_.LastPosition) continue;
    grid_.SetColour(k, CellColour::Target);
    lit_.push_back(k);
  }
}

void CoachController::Unlight() {
  for (int k : lit_) grid_.SetColour(k, CellColour::Normal);
  lit_.clear();
}

std::string CoachController::HintKey() const {
  std::string key = SaveCandidates(model_);
  for (int k = 0; k <= model_.LastPosition; ++k) key += std::to_string(state_.Marks[k]) + ",";
  return key;
}

void CoachController::NextStep() {
  if (model_.SolverBusy || run_.StepMode) return;
  const std::string key = HintKey();
  if (hintLevel_ == 0 || key != hintKey_) {
    const SolutionPath path = FindSolutionPath(PathStart(model_, &state_));
    if (path.steps.empty()) {
      Unlight();
      hintLevel_ = 0;
      Port().SetStatusLine(path.solved   ? "Nothing is left to deduce: the grid is complete"
                          : path.broken ? "The grid as entered contradicts itself: check your digits and marks"
                                        : "No step is found from here: the rest needs a search");
      return;
    }
    hintStep_ = path.steps.front();
    hintKey_ = key;
    hintLevel_ = 0;
  }
  ++hintLevel_;
  if (hintLevel_ == 1) {
    Light(hintStep_.cells, {});
    Port().SetStatusLine("Hint: " + VagueHint(model_, hintStep_));
    return;
  }
  if (hintLevel_ == 2) {
    Light(hintStep_.cells, ChangedCells(hintStep_));
    Port().SetStatusLine("Step: " + hintStep_.technique + ": " + Cp1252ToUtf8(hintStep_.text));
    return;
  }
  const PathStep step = hintStep_;
  const bool taken = ApplyStep(state_, model_, Port(), step.placed, step.removed);
  Changed();
  hintKey_.clear();
  Port().SetStatusLine(taken ? "Made: " + step.technique + ": " + Cp1252ToUtf8(step.text)
                            : "The step does not fit the digits entered: check them (Solve \u2192 Check My Digits)");
  if (taken) CheckFinished();
}

void CoachController::ShowPathStep(int index) {
  if (panel_ == nullptr || !panel_->HasPath() || index < 0 ||
      index >= static_cast<int>(panel_->Path().steps.size())) {
    if (shownStep_ >= 0) {
      shownStep_ = -1;
      Unlight();
      Port().RedrawGrid();
    }
    return;
  }
  const PathStep& step = panel_->Path().steps[static_cast<std::size_t>(index)];
  shownStep_ = index;
  for (int k = 0; k <= model_.LastPosition && k < static_cast<int>(step.after.size()); ++k) {
    Port().ShowCellText(k, step.after[static_cast<std::size_t>(k)]);
  }
  Light(step.cells, ChangedCells(step));
}

void CoachController::RecomputePath() {
  if (panel_ == nullptr) return;
  panel_->ShowComputing();
  const int generation = ++pathGeneration_;
  PuzzleModel start = PuzzleStart(model_, state_);
  pathJob_.Run([this, generation, start = std::move(start)](const std::atomic<bool>& cancel) {
    SolutionPath path = FindSolutionPath(start, &cancel);
    if (cancel.load()) return;
    QMetaObject::invokeMethod(
        this,
        [this, generation, path = std::move(path)] {
          if (generation == pathGeneration_) panel_->ShowPath(path);
        },
        Qt::QueuedConnection);
  });
}

bool CoachController::eventFilter(QObject* watched, QEvent* event) {
  if ((event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) && run_.StepMode) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
      if (event->type() == QEvent::KeyPress) run_.Continue();
      event->accept();
      return true;
    }
    // Escape is the Cancel button's key while a paced solve waits.
    if (key->key() == Qt::Key_Escape && key->modifiers() == Qt::NoModifier) {
      if (event->type() == QEvent::KeyPress) CancelCommand(model_, run_);
      event->accept();
      return true;
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace qm::ui
