// The workbench window: the grid, the puzzle panel, the menus. It owns the puzzle model
// for the whole run and is the window port every command talks to.
#pragma once

#include <QMainWindow>
#include <array>
#include <functional>
#include <vector>

#include "commands/run_control.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "generator/create_puzzle.h"
#include "generator/creation_options.h"
#include "settings/colour_schemes.h"

class QAction;
class QComboBox;
class QDialog;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QTimer;
class QToolButton;

namespace qm::render {
struct Page;
struct BookOptions;
}  // namespace qm::render

namespace qm::ui {

class CoachController;
class GridWidget;
class ViewAllWindow;

class MainWindow : public QMainWindow, public WindowPort {
  Q_OBJECT

 public:
  explicit MainWindow(std::string appDir, QWidget* parent = nullptr);
  ~MainWindow() override;

  // Reads the settings and the colour scheme, builds the grid and loads puzzle 1 of
  // the current collection.
  void StartUp();
  // Moves to the puzzle numbered `number` (from the command line). A number that is not
  // there is reported and puzzle 1 is shown again; false then.
  bool StartOnPuzzle(const QString& number);
  // Opens a collection file as Load does after its chooser; false when it cannot be read.
  bool OpenFile(const QString& path);

  // Tests answer the modal boxes and choosers through these instead of a person.
  using DialogHandler = std::function<bool(const QString& text, bool question)>;
  using FileHandler = std::function<QString(const FileChoice& choice)>;
  void SetDialogHandler(DialogHandler handler) { dialogHandler_ = std::move(handler); }
  void SetFileHandler(FileHandler handler) { fileHandler_ = std::move(handler); }
  // Tests fill and close the window's own dialogs through this instead of a person: it
  // is handed each dialog in place of running it, and the dialog's result counts.
  using ModalHandler = std::function<void(QDialog& dialog)>;
  void SetModalHandler(ModalHandler handler) { modalHandler_ = std::move(handler); }
  // Printing goes to a PDF file even when a printer is installed (tests print that way).
  void SetPrintToPdf(bool pdf) { printToPdf_ = pdf; }

  PuzzleModel& Model() { return model_; }
  RunControl& Run() { return run_; }
  const ColourTable& Colours() const { return colours_; }
  GridWidget* Grid() const { return grid_; }
  CoachController* Coach() const { return coach_; }
  ViewAllWindow* ViewAllView() const { return viewAll_; }
  QDialog* HelpView() const { return help_; }
  QString StatusLine() const;
  QString ProgressArea() const;
  QTimer* PacingTimer() const { return timer1_; }

  // WindowPort
  void ShowMessage(const std::string& text) override;
  bool AskYesNo(const std::string& question) override;
  std::string ChooseFile(const FileChoice& choice) override;
  void SetStatusLine(const std::string& text) override;
  void SetProgressLine(const std::string& text) override;
  void SetProgressArea(const std::string& text) override;
  std::string ProgressLine() const override;
  void SetBusy(bool busy) override;
  void ProcessEvents() override;
  bool WaitForEvents() override;
  void SetPacingTimer(bool enabled, int intervalMs) override;
  void ShowPosition(int k) override;
  void ShowCellText(int k, const std::string& text) override;
  void ShowStep(const SolveStep& step) override;
  void EndStep(const SolveStep& step) override;
  void ColourPosition(int k, CellColour colour) override;
  CellColour ColourOf(int k) const override;
  void RedrawGrid() override;
  void RefreshPuzzleInfo() override;
  void ClearPuzzleLines() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void BuildPanel();
  void BuildMenus();
  QAction* AddAction(QMenu* menu, const char* name, const QString& caption, std::function<void()> run);
  void AddCancel(QMenu* menu, const char* name);
  void ApplyScheme();
  void ShowPuzzleInfo();
  bool IsToggleOn(const QString& name) const;
  void ShowPositionMenu(int k, const QPoint& globalPos);
  void ArrowPressed(int index);
  void Continue();
  void Exit();
  void ToggleSchemeList(bool show);
  int RunModal(QDialog& dialog);
  void LockInput(bool locked);
  void CreateSinglePuzzle();
  // File -> "Open Share Link…": a puzzle from a share code or a link that holds one.
  void OpenShareLink();
  void CreateMultiplePuzzles();
  void ViewAll();
  void ShowHelp();
  void PrintCurrent();
  void PrintFromFile();
  void RunPrint(const std::vector<render::Page>& pages, const render::BookOptions& options);
  QString PrintTitle() const;
  void OpenFromView(int n);
  std::vector<int> StepLine(const SolveStep& step) const;

  PuzzleModel model_;
  RunControl run_;
  ColourTable colours_;
  GridWidget* grid_ = nullptr;
  CoachController* coach_ = nullptr;
  std::array<QLabel*, 3> puzInfo_{};
  QLabel* puzNumber_ = nullptr;  // "Puzzle#"
  QLineEdit* puzNumNow_ = nullptr;
  QLabel* label4_ = nullptr;  // " of" and the count
  QLineEdit* label3_ = nullptr;
  std::array<QToolButton*, 5> arrows_{};
  QPushButton* undoMan_ = nullptr;
  QComboBox* combo1_ = nullptr;
  QToolButton* setColx_ = nullptr;
  QPushButton* cmdCancel_ = nullptr;
  QLabel* busyLabel_ = nullptr;
  QLabel* pb_ = nullptr;
  QLabel* progressArea_ = nullptr;
  QLabel* status_ = nullptr;
  QWidget* panel_ = nullptr;
  QTimer* timer1_ = nullptr;
  int busyDepth_ = 0;
  // While puzzles are made, events are let through only every few milliseconds: the
  // generator yields thousands of times a second and repainting each time would cost
  // more than the puzzles.
  bool throttleEvents_ = false;
  qint64 lastEvents_ = 0;
  CreationOptions creationOptions_;
  CreationSettings creationSettings_;
  Generator generator_;
  ViewAllWindow* viewAll_ = nullptr;
  QDialog* help_ = nullptr;
  bool printToPdf_ = false;
  bool exiting_ = false;
  DialogHandler dialogHandler_;
  FileHandler fileHandler_;
  ModalHandler modalHandler_;
};

}  // namespace qm::ui
