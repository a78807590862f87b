#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QtTest>
#include <filesystem>

#include "core/collection_file.h"
#include "reasoning/ladder.h"
#include "support/test_files.h"
#include "ui/creation_dialog.h"
#include "ui/grid_widget.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"

using qm::ui::CreationDialog;
using qm::ui::MainWindow;

// A window that records its progress texts and can press Cancel the moment a caption
// appears, however fast the puzzles are made.
class WatchedWindow : public MainWindow {
 public:
  using MainWindow::MainWindow;
  QString cancelAt;
  std::function<void()> onCancel;
  QStringList areas;

  void SetProgressLine(const std::string& text) override {
    MainWindow::SetProgressLine(text);
    if (!cancelAt.isEmpty() && QString::fromStdString(text) == cancelAt) {
      cancelAt.clear();
      onCancel();
    }
  }
  void SetProgressArea(const std::string& text) override {
    MainWindow::SetProgressArea(text);
    areas << QString::fromStdString(text);
  }
};

class CreationDialogTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::TempDir> dir_;
  std::unique_ptr<MainWindow> window_;
  WatchedWindow* watched_ = nullptr;
  QStringList messages_;
  QStringList questions_;
  bool answer_ = true;
  // What the test does with the dialog once it is shown.
  std::function<void(CreationDialog&)> fill_;

  std::string AppDir() const { return dir_->Path() + "/"; }
  std::string Output() const { return AppDir() + "new.fut"; }

  template <typename T>
  static T* Child(QWidget& dialog, const char* name) {
    T* child = dialog.findChild<T*>(name);
    if (child == nullptr) qFatal("no child %s", name);
    return child;
  }
  static void Click(QWidget& dialog, const char* name) { Child<QPushButton>(dialog, name)->click(); }
  static void Choose(QWidget& dialog, int clueChoice) {
    Child<QRadioButton>(dialog, qPrintable(QStringLiteral("ClueChoice%1").arg(clueChoice)))->setChecked(true);
  }
  static void Type(QWidget& dialog, const char* name, const QString& text) {
    Child<QLineEdit>(dialog, name)->setText(text);
  }
  // The message "Create" shows for these inputs; empty when the dialog accepted them.
  QString CreateWith(const std::function<void(QWidget&)>& set) {
    QString shown;
    fill_ = [&](CreationDialog& dialog) {
      Type(dialog, "Count", "1");  // the dialog keeps the inputs of its last run
      set(dialog);
      const auto before = messages_.size();
      Click(dialog, "cmdcreate");
      if (messages_.size() > before) shown = messages_.last();
      if (dialog.result() != QDialog::Accepted) dialog.reject();
    };
    messages_.clear();
    window_->findChild<QAction*>("mnumultipuzx")->trigger();
    return shown;
  }

 private slots:
  void init() {
    dir_ = std::make_unique<qm::test::TempDir>();
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name);
    }
    questions_.clear();
    answer_ = true;
    auto window = std::make_unique<WatchedWindow>(AppDir());
    watched_ = window.get();
    window_ = std::move(window);
    window_->SetDialogHandler([this](const QString& text, bool question) {
      (question ? questions_ : messages_) << text;
      return answer_;
    });
    window_->SetFileHandler([this](const qm::FileChoice&) { return QString::fromStdString(Output()); });
    window_->SetModalHandler([this](QDialog& dialog) {
      auto* creation = qobject_cast<CreationDialog*>(&dialog);
      QVERIFY(creation != nullptr);
      fill_(*creation);
    });
    window_->show();
    window_->StartUp();
    messages_.clear();
  }
  void cleanup() { window_.reset(); }

  void showsItsCaptionsAndCouplesCountAndCheckBox() {
    fill_ = [this](CreationDialog& dialog) {
      QCOMPARE(dialog.windowTitle(), QString("Create New Puzzles"));
      QCOMPARE(Child<QPushButton>(dialog, "cmdcreate")->toolTip(), QString("Create new puzzle(s)"));
      QCOMPARE(Child<QPushButton>(dialog, "cmdcancel")->toolTip(), QString("Take no action and exit"));
      QCOMPARE(Child<QRadioButton>(dialog, "ClueChoice2")->text(),
               QString("Exactly                    Clues at random locations"));
      // The output file starts as the current collection.
      QCOMPARE(Child<QLabel>(dialog, "OutputFile")->text(), QString::fromStdString(window_->Model().CurrentFile));

      auto* displayOne = Child<QCheckBox>(dialog, "DisplayOne");
      auto* count = Child<QLineEdit>(dialog, "Count");
      count->setText("12");
      QVERIFY(!displayOne->isChecked());
      count->setText("1.0");
      QVERIFY(displayOne->isChecked());
      count->setText("7");
      displayOne->click();
      QCOMPARE(count->text(), QString("1"));
      QVERIFY(displayOne->isChecked());

      // The level list only for "Set Clues by difficulty".
      auto* level = Child<QComboBox>(dialog, "Level");
      Choose(dialog, 2);
      QVERIFY(!level->isEnabled());
      Choose(dialog, 4);
      QVERIFY(level->isEnabled());

      // Uniqueness asked for: puzzles without clues are not offered.
      Choose(dialog, 0);
      Child<QCheckBox>(dialog, "Unique")->setChecked(true);
      QVERIFY(!Child<QRadioButton>(dialog, "ClueChoice0")->isEnabled());
      QVERIFY(Child<QRadioButton>(dialog, "ClueChoice4")->isChecked());
      Child<QCheckBox>(dialog, "Unique")->setChecked(false);
      QVERIFY(Child<QRadioButton>(dialog, "ClueChoice0")->isEnabled());

      Click(dialog, "UniqueHelp");
      QCOMPARE(messages_.last(), QString("Check Yes if you wish to create puzzles that have unique solutions\r\n\r\n"
                                         "In case you select this option, the Number of Contraints are assumed "
                                         "to be random\r\n\r\nIt is faster to create puzzles with unique solutions"
                                         "\r\nwhen program has no restrictions on Number of Constraints"));
      Click(dialog, "ChooseOutput");
      QCOMPARE(Child<QLabel>(dialog, "OutputFile")->text(), QString::fromStdString(Output()));
      Type(dialog, "Title", "kept");
      Click(dialog, "cmdcancel");
    };
    window_->findChild<QAction*>("mnumultipuzx")->trigger();
    QVERIFY(!std::filesystem::exists(Output()));
    // The dialog comes back with the inputs it was closed with.
    fill_ = [](CreationDialog& dialog) {
      QCOMPARE(Child<QLineEdit>(dialog, "Title")->text(), QString("kept"));
      dialog.reject();
    };
    window_->findChild<QAction*>("mnumultipuzx")->trigger();
  }

  void createShowsTheFirstFailedCheck() {
    auto size = [](QWidget& dialog, const QString& text) { Child<QComboBox>(dialog, "GridSize")->setCurrentText(text); };
    QCOMPARE(CreateWith([](QWidget& d) { Type(d, "Count", ""); }), QString("Specify number of puzzles to create"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               Type(d, "Count", "0");
               size(d, "6");
               Choose(d, 0);
             }),
             QString("Specify number of puzzles to create"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "6");
               Choose(d, 0);
             }),
             QString("Must have clues in grid size >5"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "6");
               Choose(d, 2);
               Type(d, "ExactCount", "13");
             }),
             QString("Must have <12 clues for grid size6"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "6");
               Choose(d, 3);
               Type(d, "UptoCount", "2");
             }),
             QString("Must have >3 clues for grid size6"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "Random");
               Choose(d, 2);
             }),
             QString("Cannot fix number of clues in random puzzle size"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "4");
               Choose(d, 1);
               Type(d, "FixedDigit", "5");
             }),
             QString("Clue number is > grid size"));
    QCOMPARE(CreateWith([&](QWidget& d) {
               size(d, "Random");
               Choose(d, 1);
               Type(d, "FixedDigit", "12");
             }),
             QString("Clue number is > maximum grid size"));
  }

  void displaysOnePuzzleWithoutWriting() {
    const int before = qm::CountPuzzles(window_->Model().CurrentFile);
    QCOMPARE(CreateWith([](QWidget& d) {
               Child<QComboBox>(d, "GridSize")->setCurrentText("4");
               Child<QComboBox>(d, "Level")->setCurrentText("Hard");
             }),
             QString());
    QCOMPARE(messages_, QStringList{"Done"});
    QCOMPARE(window_->Model().GridSize, 4);
    QVERIFY(window_->Model().Comment.starts_with("Auto (Hard) "));
    QCOMPARE(window_->findChild<QLineEdit*>("label3")->text(), QString::fromStdString(window_->Model().Comment));
    QCOMPARE(qm::CountPuzzles(window_->Model().CurrentFile), before);

    // The shown puzzle is in no file: it is only replaced with the user's consent.
    QCOMPARE(window_->Model().Modified, std::int16_t{1});
    const std::string shown = window_->Model().Comment;
    answer_ = false;
    window_->findChild<QAction*>("mnunewpuzx")->trigger();
    QCOMPARE(questions_, QStringList{"Discard all changes?"});
    QCOMPARE(window_->Model().Comment, shown);

    // "Single Puzzle" then uses the dialog's settings.
    answer_ = true;
    messages_.clear();
    window_->Model().Comment.clear();
    window_->findChild<QAction*>("mnunewpuzx")->trigger();
    QVERIFY(messages_.isEmpty());
    QCOMPARE(window_->Model().GridSize, 4);
    QVERIFY(window_->Model().Comment.starts_with("Auto (Hard) "));
    QVERIFY(window_->StatusLine().startsWith("New Puzzle, Size=4x4, Constraints="));
  }

  void cancelDuringTheThirdOfFivePuzzlesKeepsTwo() {
    // Cancel is pressed as soon as the third puzzle is under way.
    QElapsedTimer sinceCancel;
    watched_->cancelAt = "New 3 of 5";
    watched_->onCancel = [&] {
      // Only Cancel acts while the batch runs.
      QVERIFY(!window_->menuBar()->isEnabled());
      QVERIFY(!window_->Grid()->isEnabled());
      window_->findChild<QPushButton*>("cmdcancel")->click();
      sinceCancel.start();
    };
    QCOMPARE(CreateWith([this](QWidget& d) {
               Type(d, "Count", "5");
               Child<QComboBox>(d, "GridSize")->setCurrentText("9");
               Child<QComboBox>(d, "Level")->setCurrentText("VeryHard");
               Click(d, "ChooseOutput");
             }),
             QString());
    QCOMPARE(messages_.last(), QString::fromStdString(" 2 Puzzles added to file: " + Output()));
    QVERIFY2(sinceCancel.elapsed() < 100, qPrintable(QString::number(sinceCancel.elapsed())));
    QVERIFY(watched_->areas.contains(QString::fromStdString("Creating puzzle 3 of 5\r\nSize=9x9\r\nOutput File: " + Output())));
    QCOMPARE(qm::CountPuzzles(Output()), 2);
    QVERIFY(window_->StatusLine().startsWith("Puzzle#2, Size=9x9, Constraints="));
    QCOMPARE(window_->ProgressArea(), QString());
    QCOMPARE(window_->Model().CurrentPuzzle, 1);  // back on the puzzle shown before
    QVERIFY(!window_->Run().CancelRequest);
    QVERIFY(window_->menuBar()->isEnabled());
    QVERIFY(window_->Grid()->isEnabled());
  }

  void gradedBatchShowsEachGradeAndSinglePuzzleFollows() {
    const QString tough = QString::fromStdString(qm::reasoning::RungName(qm::reasoning::kSubsets));
    QCOMPARE(CreateWith([&](QWidget& d) {
               Type(d, "Count", "3");
               Child<QComboBox>(d, "GridSize")->setCurrentText("5");
               Choose(d, 4);
               auto* symmetry = Child<QComboBox>(d, "Symmetry");
               QVERIFY(!symmetry->isEnabled());
               Child<QComboBox>(d, "Grade")->setCurrentText(tough);
               // A level's fixed clue count gives way to clues the reduction chooses.
               QVERIFY(Child<QRadioButton>(d, "ClueChoice5")->isChecked());
               QVERIFY(symmetry->isEnabled());
               symmetry->setCurrentText("Mirror");
               Click(d, "ChooseOutput");
             }),
             QString());
    QCOMPARE(messages_.last(), QString::fromStdString(" 3 Puzzles added to file: " + Output()));
    QCOMPARE(qm::CountPuzzles(Output()), 3);
    QVERIFY2(window_->StatusLine().endsWith(", Grade= " + tough), qPrintable(window_->StatusLine()));

    // Single Puzzle makes one of the accepted grade.
    messages_.clear();
    window_->findChild<QAction*>("mnunewpuzx")->trigger();
    QVERIFY2(messages_.isEmpty(), qPrintable(messages_.join("|")));
    QCOMPARE(window_->Model().GridSize, 5);
    QVERIFY(QString::fromStdString(window_->Model().Comment).startsWith("Auto (" + tough + ") "));
    QVERIFY(window_->StatusLine().endsWith(", Grade= " + tough));

    // A rule that cannot meet the grade is named by "Create".
    const QString refused = CreateWith([](QWidget& d) {
      Child<QComboBox>(d, "GridSize")->setCurrentText("5");
      Child<QComboBox>(d, "Grade")->setCurrentIndex(1);
      Choose(d, 0);
    });
    QVERIFY2(refused.startsWith("Cannot create 5x5 puzzles graded "), qPrintable(refused));
  }

  void cancelKeepsTheFinishedGradedPuzzles() {
    watched_->cancelAt = "New 2 of 4";
    watched_->onCancel = [&] { window_->findChild<QPushButton*>("cmdcancel")->click(); };
    QCOMPARE(CreateWith([this](QWidget& d) {
               Type(d, "Count", "4");
               Child<QComboBox>(d, "GridSize")->setCurrentText("9");
               Child<QComboBox>(d, "Grade")->setCurrentText(
                   QString::fromStdString(qm::reasoning::RungName(qm::reasoning::kForcing)));
               Click(d, "ChooseOutput");
             }),
             QString());
    QVERIFY(messages_.last().endsWith(QString::fromStdString(" Puzzles added to file: " + Output())));
    const int kept = qm::CountPuzzles(Output());
    QVERIFY(kept >= 1 && kept < 4);
    QVERIFY(!window_->Run().CancelRequest);
  }
};

QM_UI_TEST(CreationDialogTest);
#include "test_creation_dialog.moc"
