#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QStatusBar>
#include <QTextBrowser>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <filesystem>

#include "commands/batch_creation.h"
#include "commands/collection_commands.h"
#include "commands/grid_commands.h"
#include "commands/print_answers.h"
#include "commands/record_commands.h"
#include "commands/save_commands.h"
#include "commands/settings_commands.h"
#include "commands/solving_commands.h"
#include "commands/window_commands.h"
#include "core/collection_file.h"
#include "core/share_code.h"
#include "core/text_file.h"
#include "core/text_rules.h"
#include "export/html_export.h"
#include "solver/techniques.h"
#include "ui/coach_controller.h"
#include "ui/creation_dialog.h"
#include "ui/grid_widget.h"
#include "ui/menu_keys.h"
#include "ui/printing.h"
#include "ui/sort_dialog.h"
#include "ui/view_all_window.h"
#include "ui/window_setup.h"

namespace qm::ui {

namespace {

constexpr const char* kCaption = "Quillmere 2.0";

QString FromModel(const std::string& text) { return QString::fromStdString(Cp1252ToUtf8(text)); }
QString Css(Rgb c) { return QStringLiteral("rgb(%1,%2,%3)").arg(Red(c)).arg(Green(c)).arg(Blue(c)); }

// "*.fut;*.txt;*.dat" described as "Quillmere Files" becomes "Quillmere Files (*.fut *.txt *.dat)".
QString Filter(const FileChoice& choice) {
  QString patterns = QString::fromStdString(choice.patterns);
  patterns.replace(';', ' ');
  return QString::fromStdString(choice.description) + " (" + patterns + ")";
}

}  // namespace

MainWindow::MainWindow(std::string appDir, QWidget* parent) : QMainWindow(parent), run_(model_, *this) {
  if (dynamic_cast<ClearIndicatorStyle*>(QApplication::style()) == nullptr) QApplication::setStyle(new ClearIndicatorStyle);
  model_.AppDir = std::move(appDir);
  setWindowTitle(kCaption);
  timer1_ = new QTimer(this);
  timer1_->setObjectName("Timer1");
  timer1_->setSingleShot(true);  // the pacing timer disables itself on every tick
  connect(timer1_, &QTimer::timeout, this, [this] { run_.StepGo = true; });
  creationOptions_.fixedDigit = "1";
  creationSettings_ = ValidateCreationOptions(creationOptions_).settings;

  grid_ = new GridWidget(model_, colours_, this);
  grid_->setObjectName("Cell");
  coach_ = new CoachController(model_, run_, *grid_, this);
  connect(grid_, &GridWidget::PositionMenuRequested, this, &MainWindow::ShowPositionMenu);
  connect(grid_, &GridWidget::BackgroundClicked, this, &MainWindow::Continue);
  connect(grid_, &GridWidget::PositionHovered, this, [this](int k) {
    const std::string text = MouseStatusText(model_, run_, k);
    if (!text.empty()) SetStatusLine(Cp1252ToUtf8(text));
  });

  BuildPanel();
  BuildMenus();
  auto* central = new QWidget(this);
  auto* layout = new QHBoxLayout(central);
  layout->setContentsMargins(8, 8, 8, 8);
  layout->addWidget(grid_, 1);
  layout->addWidget(panel_, 0);
  setCentralWidget(central);
  status_ = new QLabel(this);
  status_->setObjectName("StatusLine");
  statusBar()->addWidget(status_, 1);
  ApplyScheme();
}

MainWindow::~MainWindow() {
  while (busyDepth_ > 0) SetBusy(false);
  // The coach filters the application's events and works in the background: it goes
  // before the model it reads.
  grid_->SetCoach(nullptr);
  delete coach_;
  coach_ = nullptr;
}

void MainWindow::BuildPanel() {
  panel_ = new QWidget(this);
  panel_->setObjectName("Frame1");
  auto* column = new QVBoxLayout(panel_);

  label3_ = new QLineEdit(panel_);
  label3_->setObjectName("label3");
  label3_->setPlaceholderText("Description");
  // A description that begins with "#" would read back as a record line.
  label3_->setValidator(new QRegularExpressionValidator(QRegularExpression("(?!#).*"), label3_));
  connect(label3_, &QLineEdit::inputRejected, this,
          [this] { SetStatusLine("Refused: " + std::string(kCommentRecordMessage)); });
  connect(label3_, &QLineEdit::textEdited, this, [this](const QString& text) {
    model_.Comment = Utf8ToCp1252(text.toStdString());
  });
  column->addWidget(label3_);

  auto* number = new QHBoxLayout;
  puzNumber_ = new QLabel("Puzzle#", panel_);
  puzNumber_->setObjectName("Label2");
  puzNumNow_ = new QLineEdit(panel_);
  puzNumNow_->setObjectName("PuzNumNow");
  puzNumNow_->setMaximumWidth(70);
  puzNumNow_->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]{0,9}"), puzNumNow_));
  label4_ = new QLabel(panel_);
  label4_->setObjectName("Label4");
  auto* go = new QToolButton(panel_);
  go->setObjectName("cmdgo");
  go->setText("Go");
  go->setToolTip("Read the puzzle with this number");
  connect(puzNumNow_, &QLineEdit::returnPressed, this, [this] {
    // A number that is not read goes back to the one shown.
    if (GoToTypedNumber(model_, *this, puzNumNow_->text().toStdString()) != CommandResult::Done) ShowPuzzleInfo();
  });
  connect(go, &QToolButton::clicked, this,
          [this] { GoToPuzzleNumber(model_, *this, puzNumNow_->text().toStdString()); });
  number->addWidget(puzNumber_);
  number->addWidget(puzNumNow_);
  number->addWidget(label4_);
  number->addWidget(go);
  number->addStretch();
  column->addLayout(number);

  combo1_ = new QComboBox(panel_);
  combo1_->setObjectName("Combo1");
  setColx_ = new QToolButton(panel_);
  setColx_->setObjectName("SetColx");
  setColx_->setText("Set");
  setColx_->setToolTip("Set the selected color scheme and close this option");
  auto* schemes = new QHBoxLayout;
  schemes->addWidget(combo1_, 1);
  schemes->addWidget(setColx_);
  column->addLayout(schemes);
  combo1_->hide();
  setColx_->hide();
  connect(combo1_, &QComboBox::activated, this, [this](int) {
    SelectScheme(model_, colours_, *this, combo1_->currentText().toStdString());
    ApplyScheme();
  });
  connect(setColx_, &QToolButton::clicked, this, [this] { ToggleSchemeList(false); });

  // Index 0 previous, 1 first, 2 next, 3 last, 4 random.
  const std::array<std::pair<const char*, const char*>, 5> arrows = {{{"<", "Previous puzzle"},
                                                                     {"|<", "First puzzle"},
                                                                     {">", "Next puzzle"},
                                                                     {">|", "Last puzzle"},
                                                                     {"><", "Random puzzle"}}};
  auto* arrowRow = new QHBoxLayout;
  for (std::size_t i = 0; i < arrows.size(); ++i) {
    auto* button = new QToolButton(panel_);
    button->setObjectName(QStringLiteral("arrows%1").arg(i));
    button->setText(arrows[i].first);
    button->setToolTip(arrows[i].second);
    button->setMinimumWidth(36);
    connect(button, &QToolButton::clicked, this, [this, i] { ArrowPressed(static_cast<int>(i)); });
    arrows_[i] = button;
  }
  for (int i : {1, 0, 2, 3, 4}) arrowRow->addWidget(arrows_[static_cast<std::size_t>(i)]);
  column->addLayout(arrowRow);

  auto* info = new QGridLayout;
  const std::array<const char*, 3> captions = {"Grid Size", "No of Constraints", "No of Clues"};
  for (std::size_t i = 0; i < 3; ++i) {
    info->addWidget(new QLabel(captions[i], panel_), static_cast<int>(i), 0);
    puzInfo_[i] = new QLabel(panel_);
    puzInfo_[i]->setObjectName(QStringLiteral("PuzInfo%1").arg(i));
    puzInfo_[i]->setAlignment(Qt::AlignCenter);
    puzInfo_[i]->setMinimumWidth(44);
    info->addWidget(puzInfo_[i], static_cast<int>(i), 1);
  }
  column->addLayout(info);

  undoMan_ = new QPushButton("Undo", panel_);
  undoMan_->setObjectName("UndoMan");
  connect(undoMan_, &QPushButton::clicked, this, [this] { coach_->Undo(); });
  cmdCancel_ = new QPushButton("Cancel", panel_);
  cmdCancel_->setObjectName("cmdcancel");
  connect(cmdCancel_, &QPushButton::clicked, this, [this] { CancelCommand(model_, run_); });
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(undoMan_);
  buttons->addWidget(cmdCancel_);
  column->addLayout(buttons);

  busyLabel_ = new QLabel("Busy...", panel_);
  busyLabel_->setObjectName("busylabel");
  busyLabel_->hide();
  pb_ = new QLabel(panel_);
  pb_->setObjectName("pb");
  pb_->setWordWrap(true);
  column->addWidget(busyLabel_);
  column->addWidget(pb_);
  progressArea_ = new QLabel(panel_);
  progressArea_->setObjectName("ProgressArea");
  progressArea_->setWordWrap(true);
  column->addWidget(progressArea_);
  column->addStretch();
  panel_->setMinimumWidth(240);
}

QAction* MainWindow::AddAction(QMenu* menu, const char* name, const QString& caption, std::function<void()> run) {
  QAction* action = menu->addAction(caption);
  action->setObjectName(name);
  if (run) {
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); });
  } else {
    action->setEnabled(false);  // its command arrives with a later version
  }
  return action;
}

void MainWindow::AddCancel(QMenu* menu, const char* name) {
  menu->addSeparator();
  AddAction(menu, name, "Cancel", [] {});
}

void MainWindow::BuildMenus() {
  QMenu* main = menuBar()->addMenu("Quillmere");
  QMenu* options = main->addMenu("Options");
  options->menuAction()->setObjectName("mnuopts");
  AddAction(options, "mnucolx", "Color Scheme", [this] { ToggleSchemeList(combo1_->isHidden()); });
  AddAction(options, "mnycellcolor", "Set/Clear Cell Color", [this] {
    ToggleCellColouring(model_);
    grid_->update();
  });
  AddCancel(options, "mnucan2");
  AddAction(main, "mnuhelp", "Help", [this] { ShowHelp(); });
  AddAction(main, "mnuabout", "About", [this] {
    ShowMessage(std::string(kCaption) +
                "\r\n\r\nA workbench for inequality puzzles: enter, solve and check them, step "
                "through every deduction, create new puzzles in any number, sort and print "
                "collections of them, and export them as text, worksheets, web pages or pictures.");
  });
  AddAction(main, "cmdexit", "Exit", [this] { Exit(); });

  QMenu* file = menuBar()->addMenu("File");
  AddAction(file, "mnuload", "Load", [this] { mnuload(model_, *this); });
  AddAction(file, "mnuviewall", "View", [this] { ViewAll(); });
  AddAction(file, "mnusaveas", "Copy", [this] { mnusaveas(model_, *this); });
  AddAction(file, "mnubackup", "Backup", [this] { mnubackup(model_, *this); });
  AddAction(file, "mnusortpuz", "Sort", [this] {
    SortDialog dialog(model_, *this, this);
    RunModal(dialog);
  });
  AddAction(file, "mnuopensharelink", "Open Share Link\u2026", [this] { OpenShareLink(); });
  AddCancel(file, "can3");

  QMenu* puzzle = menuBar()->addMenu("Puzzle");
  AddAction(puzzle, "mnureload", "Reload", [this] { mnureload(model_, *this); });
  AddAction(puzzle, "mnuappend", "Append", [this] { mnuappend(model_, *this); });
  AddAction(puzzle, "mnudelete", "Delete", [this] { mnudelete(model_, *this, puzNumNow_->text().toStdString()); });
  QMenu* saveAs = puzzle->addMenu("Save As");
  saveAs->menuAction()->setObjectName("mnusave");
  AddAction(saveAs, "mnusaveassli", "Quillmere File", [this] { mnusaveassli(model_, *this); });
  AddAction(saveAs, "mnupuzimage", "Bitmap File", [this] {
    // A picture of the grid as it stands, candidates and colours included.
    RunSaveCommand(model_, *this, {"*.bmp", "Bitmap Files", "Puzzle saved as Bitmap File:"},
                   [this](const std::string& path) {
                     return grid_->grab().toImage().save(QString::fromStdString(path), "BMP");
                   });
  });
  AddAction(saveAs, "mnusavetxt", "Text File", [this] { mnusavetxt(model_, *this); });
  AddAction(saveAs, "mnusavexls", "XLS File", [this] { mnusavexls(model_, *this); });
  QAction* html =
      AddAction(saveAs, "mnusavehtml", "HTML File", [this] { SaveHtmlFile(model_, *this, DefaultTemplateDirectories(model_)); });
  // Templates exist for the sizes 3 to 5 only.
  connect(saveAs, &QMenu::aboutToShow, this, [this, html] { html->setVisible(!HtmlTemplateName(model_.GridSize).empty()); });
  AddAction(puzzle, "mnucopysharelink", "Copy Share Link", [this] {
    const std::string link = ShareLink(EncodeShareCode(model_));
    QGuiApplication::clipboard()->setText(QString::fromStdString(link));
    SetStatusLine("Share link copied: " + link);
  });
  AddCancel(puzzle, "can4");

  QMenu* create = menuBar()->addMenu("Create");
  QMenu* newGrid = create->addMenu("New Grid");
  newGrid->menuAction()->setObjectName("mnunewgrid");
  for (int i = 0; i < 7; ++i) {
    const QString caption = QStringLiteral("%1x%1").arg(i + kMinGridSize);
    QAction* action = AddAction(newGrid, "mnunewx", caption, [this, i] { NewGrid(model_, *this, i); });
    action->setObjectName(QStringLiteral("mnunewx%1").arg(i));
  }
  AddCancel(newGrid, "mnunewx8");
  AddAction(create, "mnunewpuzx", "Single Puzzle", [this] { CreateSinglePuzzle(); });
  AddAction(create, "mnumultipuzx", "Multiple Puzzles", [this] { CreateMultiplePuzzles(); });
  AddCancel(create, "can7");

  QMenu* edit = menuBar()->addMenu("Edit");
  AddAction(edit, "mnuclrgrid", "Clear Grid", [this] { ClearGrid(model_, *this); });
  AddAction(edit, "mnucleargridx", "Clear Constraints", [this] { ClearConstraints(model_, *this); });
  AddAction(edit, "mnuclearallnum", "Clear Numbers", [this] { ClearNumbers(model_, *this); });
  AddCancel(edit, "can1");

  QMenu* solve = menuBar()->addMenu("Solve");
  AddAction(solve, "mnuautosol", "Auto (no pause)", [this] { coach_->AfterAutoSolve(AutoSolve(model_, run_).outcome); });
  AddAction(solve, "mnuautosolpause", "Auto (with pause)", [this] {
    const AutoSolveResult result = PacedAutoSolve(model_, run_);
    // Exit during the wait closed the window inside this nested loop; end the program now.
    if (exiting_) {
      QCoreApplication::quit();
      return;
    }
    coach_->AfterAutoSolve(result.outcome);
  });
  AddAction(solve, "mnuviewsol", "View Solution", [this] { ToggleSolutionView(model_, *this); });
  AddAction(solve, "mnuverify", "Verify", [this] { Verify(model_, *this); });
  AddCancel(solve, "can2");

  QMenu* print = menuBar()->addMenu("Print");
  AddAction(print, "mnuprintcurrent", "Current Puzzle", [this] { PrintCurrent(); });
  AddAction(print, "mnuprintfile", "Puzzles from File", [this] { PrintFromFile(); });
  AddCancel(print, "mnucan");
  coach_->Install(*this);
  DecorateMenus(*menuBar(), [this](const QString& name) { return IsToggleOn(name); });
}

bool MainWindow::IsToggleOn(const QString& name) const {
  if (name == "mnucolx") return !combo1_->isHidden();
  if (name == "mnycellcolor") return model_.CellColouring == kYes;
  if (name == "mnuviewsol") return model_.SolutionShown;
  if (name == "mnupencil") return coach_->State().PencilMode;
  if (name == "mnuconflicts") return coach_->State().LiveConflicts;
  if (name == "mnuanydigit") return coach_->State().AllowAnyDigit;
  if (name == "mnushowtimer") return coach_->ShowTimer();
  return false;
}

void MainWindow::StartUp() {
  qm::StartUp(model_, colours_, *this);
  combo1_->clear();
  for (const std::string& name : SchemeList(model_.AppDir)) combo1_->addItem(QString::fromStdString(name));
  const std::string scheme = model_.SchemeFile.substr(0, model_.SchemeFile.find('.'));
  combo1_->setCurrentText(QString::fromStdString(scheme));
  ApplyScheme();
  RedrawGrid();
  RefreshPuzzleInfo();
}

bool MainWindow::StartOnPuzzle(const QString& number) {
  return qm::StartOnPuzzle(model_, *this, number.toStdString());
}

void MainWindow::ApplyScheme() {
  const auto& c = colours_.colour;
  // Dialogs, message boxes and the window's own bars and panels follow the scheme too.
  // The style sheet takes the palette as it finds it, so the palette comes first.
  const QPalette palette = SchemePalette(colours_);
  QApplication::setPalette(palette);
  setPalette(palette);
  setStyleSheet(QStringLiteral(
                    "QMainWindow, #Frame1, QStatusBar { background: %1; color: %6; }"
                    "QLabel { color: %6; }"
                    "#label3 { background: %2; color: %6; border: 1px solid %5; padding: 4px; }"
                    "#PuzInfo0, #PuzInfo1, #PuzInfo2 { background: %2; border-radius: 3px; padding: 2px; }"
                    "QPushButton, QToolButton { background: %3; color: %6; border: 1px solid %5; "
                    "border-radius: 3px; padding: 4px 8px; }"
                    "QPushButton:pressed, QToolButton:pressed { background: %4; }"
                    "#PuzNumNow { background: %3; color: %6; border: 1px solid %5; padding: 2px; }"
                    "#pb, #StatusLine { color: %7; }")
                    .arg(Css(c[kGridColour]), Css(c[kCellColour]), Css(c[kButtonColour]), Css(c[kHighlightColour]),
                         Css(c[kBorderColour]), Css(c[kTextColour]), Css(c[kStatusColour])));
  grid_->update();
}

void MainWindow::ToggleSchemeList(bool show) {
  combo1_->setVisible(show);
  setColx_->setVisible(show);
  puzNumNow_->setVisible(!show);
  puzNumber_->setVisible(!show);
}

// WindowPort ----------------------------------------------------------------------------

void MainWindow::ShowMessage(const std::string& text) {
  // A solve cut short by Exit has nothing left to say: the window is gone.
  if (exiting_) return;
  const QString message = QString::fromStdString(text);
  if (dialogHandler_) {
    dialogHandler_(message, false);
    return;
  }
  QMessageBox box(MessageIcon(message), kMessageTitle, message, QMessageBox::Ok, this);
  box.exec();
}

bool MainWindow::AskYesNo(const std::string& question) {
  const QString text = QString::fromStdString(question);
  if (dialogHandler_) return dialogHandler_(text, true);
  return QMessageBox::question(this, kMessageTitle, text, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

std::string MainWindow::ChooseFile(const FileChoice& choice) {
  // The process's directory is kept across the chooser.
  std::error_code ec;
  const auto directory = std::filesystem::current_path(ec);
  QString chosen;
  if (fileHandler_) {
    chosen = fileHandler_(choice);
  } else if (choice.mode == ChooserMode::Open) {
    chosen = QFileDialog::getOpenFileName(this, QString::fromStdString(choice.title),
                                          QString::fromStdString(choice.directory), Filter(choice));
  } else {
    // The commands ask their own "OverWrite file:" question.
    chosen = QFileDialog::getSaveFileName(this, QString::fromStdString(choice.title),
                                          QString::fromStdString(choice.directory), Filter(choice), nullptr,
                                          QFileDialog::DontConfirmOverwrite);
  }
  if (!ec) std::filesystem::current_path(directory, ec);
  if (choice.mode == ChooserMode::Save && choice.patterns == "*.bmp") chosen = WithBitmapExtension(chosen);
  return chosen.toStdString();
}

QString MainWindow::StatusLine() const { return status_->text(); }

void MainWindow::SetStatusLine(const std::string& text) {
  status_->setText(QString::fromStdString(text));
  status_->repaint();  // shown at once, also while a command waits for a file
}

void MainWindow::SetProgressLine(const std::string& text) { pb_->setText(QString::fromStdString(text)); }

std::string MainWindow::ProgressLine() const { return pb_->text().toStdString(); }

void MainWindow::SetBusy(bool busy) {
  if (busy) {
    if (busyDepth_++ == 0) QApplication::setOverrideCursor(Qt::WaitCursor);
  } else if (busyDepth_ > 0 && --busyDepth_ == 0) {
    QApplication::restoreOverrideCursor();
  }
  busyLabel_->setVisible(busyDepth_ > 0);
}

void MainWindow::SetProgressArea(const std::string& text) { progressArea_->setText(QString::fromStdString(text)); }

QString MainWindow::ProgressArea() const { return progressArea_->text(); }

void MainWindow::ProcessEvents() {
  if (throttleEvents_) {
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now - lastEvents_ < 15) return;
    lastEvents_ = now;
  }
  QCoreApplication::processEvents();
}

bool MainWindow::WaitForEvents() {
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
  return true;
}

void MainWindow::SetPacingTimer(bool enabled, int intervalMs) {
  timer1_->setInterval(intervalMs);
  if (enabled) {
    timer1_->start();
  } else {
    timer1_->stop();
  }
}

void MainWindow::ShowPosition(int k) { grid_->ClearShownText(k); }

void MainWindow::ShowCellText(int k, const std::string& text) { grid_->SetShownText(k, FromModel(text)); }

// The step's line and its second cell.
std::vector<int> MainWindow::StepLine(const SolveStep& step) const {
  std::vector<int> lit;
  for (int i = 1; i <= model_.LayoutExtent; i += 2) {
    if (step.row > 0) lit.push_back(model_.PositionOf[static_cast<std::size_t>(step.row)][static_cast<std::size_t>(i)]);
    if (step.col > 0) lit.push_back(model_.PositionOf[static_cast<std::size_t>(i)][static_cast<std::size_t>(step.col)]);
  }
  if (step.second >= 0) lit.push_back(step.second);
  return lit;
}

void MainWindow::ShowStep(const SolveStep& step) {
  // Highlight the line, the second cell and the target while the run waits.
  for (int k : StepLine(step)) grid_->SetColour(k, CellColour::Highlight);
  grid_->SetColour(step.target, CellColour::Target);
  SetStatusLine(Cp1252ToUtf8(StepStatusText(step)));
}

void MainWindow::EndStep(const SolveStep& step) {
  SetStatusLine("");
  for (int k : StepLine(step)) grid_->SetColour(k, CellColour::Normal);
  grid_->SetColour(step.target, CellColour::Normal);
  ShowCellText(step.target, step.text);
}

void MainWindow::ColourPosition(int k, CellColour colour) { grid_->SetColour(k, colour); }

CellColour MainWindow::ColourOf(int k) const { return grid_->Colour(k); }

void MainWindow::RedrawGrid() { grid_->ClearShownTexts(); }

void MainWindow::ClearPuzzleLines() {
  SetStatusLine("");
  SetProgressLine("");
}

void MainWindow::RefreshPuzzleInfo() {
  ShowPuzzleInfo();
  coach_->PuzzleReplaced();
}

void MainWindow::ShowPuzzleInfo() {
  puzInfo_[0]->setText(QString::number(model_.GridSize));
  puzInfo_[1]->setText(QString::number(model_.ConstraintCount));
  puzInfo_[2]->setText(QString::number(model_.ClueCount));
  puzNumNow_->setText(QString::fromStdString(PuzzleNumberText(model_)));
  label4_->setText(QString::fromStdString(" of" + Str(model_.PuzzleCount)));
  label3_->setText(FromModel(model_.Comment));
}

// Dialogs and creation ------------------------------------------------------------------

// While a long command lets events through, only Cancel (and the pace keys) may act: the
// menus and the grid would start a second command on the same model.
void MainWindow::LockInput(bool locked) {
  menuBar()->setEnabled(!locked);
  grid_->setEnabled(!locked);
  label3_->setReadOnly(locked);
  puzNumNow_->setEnabled(!locked);
  for (QToolButton* arrow : arrows_) arrow->setEnabled(!locked);
  undoMan_->setEnabled(!locked);
}

int MainWindow::RunModal(QDialog& dialog) {
  if (modalHandler_) {
    modalHandler_(dialog);
    return dialog.result();
  }
  return dialog.exec();
}

void MainWindow::OpenShareLink() {
  if (model_.SolverBusy) return;
  bool ok = false;
  const QString text = QInputDialog::getText(this, "Open Share Link", "Share code or link:", QLineEdit::Normal,
                                             QGuiApplication::clipboard()->text().trimmed(), &ok);
  if (!ok || text.trimmed().isEmpty()) return;
  if (model_.Modified != 0 && !AskYesNo("Discard all changes?")) return;
  std::string error;
  if (!LoadShareCode(model_, text.toStdString(), &error)) {
    ShowMessage("Not a share code: " + error);
    return;
  }
  // Like a puzzle made for display: it is in no file until it is appended to one.
  model_.Comment = EncodeShareCode(model_);
  model_.Modified = 1;
  RedrawGrid();
  RefreshPuzzleInfo();
  SetStatusLine("Opened share code " + model_.Comment);
}

void MainWindow::CreateSinglePuzzle() {
  if (model_.SolverBusy) return;
  throttleEvents_ = true;
  LockInput(true);
  qm::CreateSinglePuzzle(model_, run_, generator_, creationSettings_);
  LockInput(false);
  throttleEvents_ = false;
}

void MainWindow::CreateMultiplePuzzles() {
  if (model_.SolverBusy) return;
  // The batch works on the grid and reads the current puzzle back at its end.
  if (model_.Modified != 0 && !AskYesNo("Discard all changes?")) return;
  CreationOptions start = creationOptions_;
  start.outputFile = model_.CurrentFile;
  CreationDialog dialog(model_, *this, start, this);
  const bool accepted = RunModal(dialog) == QDialog::Accepted;
  creationOptions_ = dialog.Options();
  if (!accepted) return;
  creationSettings_ = dialog.Settings();
  throttleEvents_ = true;
  lastEvents_ = 0;
  LockInput(true);
  try {
    const BatchResult result = CreatePuzzles(model_, run_, generator_, creationSettings_);
    // A puzzle made only for display is in no file yet.
    if (result.added == 0 && !result.puzzles.empty() && result.puzzles.front().number == 0) model_.Modified = 1;
  } catch (const std::exception& error) {
    // Cannot come from an accepted dialog; report rather than end the program.
    model_.SolverBusy = false;
    ShowMessage(error.what());
  }
  LockInput(false);
  throttleEvents_ = false;
  SetProgressArea("");
  RefreshPuzzleInfo();
  if (viewAll_ != nullptr && viewAll_->isVisible()) ViewAll();
}

void MainWindow::ShowHelp() {
  const std::string page = model_.AppDir + "Quillmere.htm";
  if (!FileLength(page)) {
    ShowMessage("Help file not found:\r\n" + page);
    return;
  }
  if (help_ == nullptr) {
    help_ = new QDialog(this);
    help_->setObjectName("frmhelp");
    help_->setWindowTitle("Quillmere Help");
    auto* browser = new QTextBrowser(help_);
    browser->setObjectName("HelpText");
    browser->setSource(QUrl::fromLocalFile(QString::fromStdString(page)));
    auto* layout = new QVBoxLayout(help_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(browser);
    help_->resize(720, 640);
  }
  help_->show();
  help_->raise();
}

void MainWindow::PrintCurrent() {
  if (model_.SolverBusy) return;
  // The puzzle on its page and, when wanted, its solution on the next one; a puzzle
  // without one solution is not printed.
  PuzzleModel scratch = model_;
  const std::string refusal = CompleteSolution(scratch, model_.CurrentPuzzle);
  if (!refusal.empty()) {
    ShowMessage(refusal);
    return;
  }
  const PrintedPuzzle puzzle = TakePuzzle(scratch, model_.CurrentPuzzle, true);
  render::BookOptions options;
  options.title = PrintTitle();
  options.answersOnOwnPage = true;
  options.answers = AskYesNo("Print the solution on the next page?");
  RunPrint(render::PlanBook({puzzle}, options), options);
}

void MainWindow::PrintFromFile() {
  if (model_.SolverBusy) return;
  const int count = CountPuzzles(model_.CurrentFile);
  if (count == 0) {
    ShowMessage("There are no puzzles in this file");
    return;
  }
  PrintRangeDialog range(count, model_.CurrentPuzzle, this);
  if (RunModal(range) != QDialog::Accepted) return;
  if (range.First() > range.Last()) {
    ShowMessage("Nothing to print: From puzzle# " + std::to_string(range.First()) + " comes after To puzzle# " +
                std::to_string(range.Last()));
    return;
  }
  // Reading a long range takes a while: Cancel stops it, and nothing is printed.
  std::vector<PrintedPuzzle> puzzles;
  LockInput(true);
  const bool read = ReadPrintRange(model_, run_, range.First(), range.Last(), [&](PuzzleModel& scratch, int n) {
    std::string refusal = CompleteSolution(scratch, n);
    if (refusal.empty()) puzzles.push_back(TakePuzzle(scratch, n, range.Grades()));
    return refusal;
  });
  LockInput(false);
  if (!read) return;
  render::BookOptions options;
  options.title = PrintTitle();
  options.perPage = range.PerPage();
  options.answersPerPage = range.AnswersPerPage();
  options.answers = range.Answers();
  options.captions.grade = range.Grades();
  RunPrint(render::PlanBook(puzzles, options), options);
}

QString MainWindow::PrintTitle() const {
  const std::string& file = model_.CurrentFile;
  const auto slash = file.find_last_of('/');
  return QString::fromStdString(slash == std::string::npos ? file : file.substr(slash + 1));
}

void MainWindow::RunPrint(const std::vector<render::Page>& pages, const render::BookOptions& options) {
  const ModalRunner modal = [this](QDialog& dialog) { return RunModal(dialog); };
  run_.CancelRequest = false;
  if (printToPdf_ || QPrinterInfo::availablePrinters().isEmpty()) {
    PrintToFile(model_, *this, modal, this, pages, options);
  } else {
    PrintWithPreview(model_, *this, modal, this, pages, options);
  }
  run_.CancelRequest = false;
}

void MainWindow::ViewAll() {
  if (viewAll_ == nullptr) viewAll_ = new ViewAllWindow([this](int n) { OpenFromView(n); }, this);
  model_.PuzzleCount = CountPuzzles(model_.CurrentFile);
  viewAll_->Show(model_.CurrentFile, ViewAllTotal(model_));
  ShowPuzzleInfo();
}

void MainWindow::OpenFromView(int n) {
  if (model_.SolverBusy) return;
  if (model_.Modified != 0 && !AskYesNo("Discard all changes?")) return;
  GoToPuzzleNumber(model_, *this, std::to_string(n));
  activateWindow();
}

// Input ---------------------------------------------------------------------------------

void MainWindow::Continue() { run_.Continue(); }

void MainWindow::ArrowPressed(int index) { PressArrow(model_, run_, index); }

void MainWindow::ShowPositionMenu(int k, const QPoint& globalPos) {
  QMenu menu(this);
  const PositionKind kind = KindOf(model_, k);
  QStringList entries;
  if (kind == PositionKind::Cell) {
    menu.setObjectName("mnurightclick");
    entries << "Clear";
    for (int d = 1; d <= model_.GridSize; ++d) entries << QString::number(d);
    entries << "-" << "Hint" << "-" << "Cancel";
  } else if (kind == PositionKind::HorizontalSign) {
    menu.setObjectName("mnurightclickA");
    entries << "Clear" << ">" << "<" << "-" << "Cancel";
  } else if (kind == PositionKind::VerticalSign) {
    menu.setObjectName("mnurightclickB");
    entries << "Clear" << "^" << "v" << "-" << "Cancel";
  } else {
    return;
  }
  for (const QString& entry : entries) {
    if (entry == "-") {
      menu.addSeparator();
    } else {
      menu.addAction(entry)->setData(entry);
    }
  }
  AddMnemonics(menu);
  const QAction* chosen = menu.exec(globalPos);
  if (chosen == nullptr) return;
  const std::string choice = chosen->data().toString().toStdString();
  if (kind == PositionKind::Cell) {
    coach_->CellChoice(k, choice);
  } else {
    coach_->SignChoice(k, choice);
  }
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
  if (!grid_->isEnabled()) {
    QMainWindow::keyPressEvent(event);
    return;
  }
  const int k = grid_->CursorPosition();
  const QString text = event->text();
  if (event->key() == Qt::Key_Space && run_.StepMode) {
    Continue();
    return;
  }
  if (event->matches(QKeySequence::Undo)) {
    coach_->Undo();
    return;
  }
  if (coach_->HandleKey(*event)) return;
  // Arrows go from cell to cell; with Shift they stop at the gaps between (as Tab does).
  const bool byGap = (event->modifiers() & Qt::ShiftModifier) != 0;
  const auto move = [&](int rows, int cols) {
    if (byGap) {
      grid_->MoveCursor(rows, cols);
    } else {
      grid_->MoveToCell(rows, cols);
    }
  };
  switch (event->key()) {
    case Qt::Key_Left:
      move(0, -1);
      return;
    case Qt::Key_Right:
      move(0, 1);
      return;
    case Qt::Key_Up:
      move(-1, 0);
      return;
    case Qt::Key_Down:
      move(1, 0);
      return;
    default:
      break;
  }
  if (k < 0 || k > model_.LastPosition) {
    QMainWindow::keyPressEvent(event);
    return;
  }
  const PositionKind kind = KindOf(model_, k);
  const bool clear = event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace;
  if (kind == PositionKind::Cell) {
    if (clear) {
      coach_->CellChoice(k, "Clear");
    } else if (text.compare("h", Qt::CaseInsensitive) == 0) {
      coach_->CellChoice(k, "Hint");
    } else if (text.size() == 1 && text[0] >= '1' && text[0] <= QChar('0' + model_.GridSize)) {
      coach_->KeyDigit(k, text[0].unicode() - '0');
    }
    return;
  }
  if (kind == PositionKind::Corner) return;
  const QString signs = kind == PositionKind::HorizontalSign ? "<>" : "^vV";
  if (clear) {
    coach_->SignChoice(k, "Clear");
  } else if (text.size() == 1 && signs.contains(text[0])) {
    coach_->SignChoice(k, text == "V" ? "v" : text.toStdString());
  }
}

void MainWindow::mousePressEvent(QMouseEvent* event) {
  Continue();
  QMainWindow::mousePressEvent(event);
}

bool MainWindow::OpenFile(const QString& path) {
  return OpenNamedCollection(model_, *this, path.toStdString()) == CommandResult::Done;
}

void MainWindow::Exit() {
  if (!ExitCommand(model_, run_)) return;
  exiting_ = true;
  close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // Closing by the frame ends the program at once, without writing the settings.
  run_.StopAll();
  event->accept();
}

}  // namespace qm::ui
