#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <sys/resource.h>
#include <filesystem>

#include "core/text_rules.h"
#include "support/test_files.h"
#include "ui/grid_widget.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;

class MainWindowTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::TempDir> dir_;
  std::unique_ptr<MainWindow> window_;
  QStringList messages_;
  QStringList questions_;
  bool answer_ = true;

  std::string AppDir() const { return dir_->Path() + "/"; }
  std::string Config() const { return AppDir() + "Quillmere.cfg"; }

  void Open() {
    window_ = std::make_unique<MainWindow>(AppDir());
    window_->SetDialogHandler([this](const QString& text, bool question) {
      (question ? questions_ : messages_) << text;
      return answer_;
    });
    window_->resize(900, 650);
    window_->show();
    window_->StartUp();
  }
  void Trigger(const char* name) {
    auto* action = window_->findChild<QAction*>(name);
    QVERIFY2(action != nullptr, name);
    QVERIFY2(action->isEnabled(), name);
    action->trigger();
  }
  QString Info(int i) const { return window_->findChild<QLabel*>(QStringLiteral("PuzInfo%1").arg(i))->text(); }

 private slots:
  void init() {
    dir_ = std::make_unique<qm::test::TempDir>();
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name);
    }
    messages_.clear();
    questions_.clear();
    answer_ = true;
  }
  void cleanup() { window_.reset(); }

  void startsWithoutASettingsFile() {
    Open();
    QCOMPARE(window_->windowTitle(), QString("Quillmere 2.0"));
    QCOMPARE(messages_.size(), 1);
    QVERIFY(messages_[0].endsWith("could not be accessed, new file will be created"));
    QVERIFY(std::filesystem::exists(Config()));
    QCOMPARE(window_->Model().CurrentPuzzle, 1);
    QCOMPARE(Info(0), QString::number(window_->Model().GridSize));
    QVERIFY(window_->findChild<QAction*>("mnusortpuz") != nullptr);
    // Every command of the menus is there to be used.
    for (const QAction* action : window_->findChildren<QAction*>()) {
      QVERIFY2(action->isEnabled(), qPrintable(action->objectName() + " " + action->text()));
    }
  }

  void startsFromItsSettingsAndAMissingCollection() {
    qm::test::WriteBytes(Config(), qm::test::CrLf({"x", "slate.col", " 1", AppDir() + "gone.fut", "300"}));
    Open();
    QVERIFY(messages_.isEmpty());
    QCOMPARE(window_->Model().SchemeFile, std::string("slate.col"));
    QCOMPARE(window_->Model().CellColouring, 1);
    QCOMPARE(window_->Model().PacingInterval, 300);
    QCOMPARE(window_->Model().CurrentFile, AppDir() + "puzzles.fut");  // the remembered file is gone

    std::filesystem::remove(AppDir() + "puzzles.fut");
    window_.reset();
    Open();
    QCOMPARE(messages_.last(), QString::fromStdString("Error reading puzzle# 1 in file:\r\n" + AppDir() + "puzzles.fut"));
  }

  void solvesVerifiesAndShowsTheSolution() {
    Open();
    Trigger("mnuverify");
    QCOMPARE(messages_.last(), QString("Puzzle appears valid but solution not completed yet"));
    Trigger("mnuautosol");
    QCOMPARE(messages_.last(), QString("Done"));
    Trigger("mnuverify");
    QCOMPARE(messages_.last(), QString("Puzzle appears to been solved"));
    Trigger("mnuautosol");
    QCOMPARE(messages_.last(), QString("Solved already?"));

    auto* grid = window_->Grid();
    Trigger("mnuviewsol");
    QCOMPARE(window_->StatusLine(), QString("Solution"));
    window_->Model().PosText[0] = "9";
    Trigger("mnuviewsol");
    QVERIFY(!window_->Model().SolutionShown);
    QCOMPARE(grid->ShownText(0), QString::fromStdString(window_->Model().SolutionText[0]));
  }

  void pacedSolveFollowsTheTimerAndTheSpaceBar() {
    Open();
    window_->Model().PacingInterval = 15;
    int steps = 0;
    // The first go-on comes from the space bar; every step after it from the timer.
    QTimer::singleShot(30, window_.get(), [this] { QTest::keyClick(window_.get(), Qt::Key_Space); });
    connect(window_->PacingTimer(), &QTimer::timeout, this, [&steps] { ++steps; });
    Trigger("mnuautosolpause");
    QCOMPARE(messages_.last(), QString("Done"));
    QVERIFY(steps > 5);
    QVERIFY(!window_->Run().StepMode);
  }

  void cancelEndsAPacedSolve() {
    Open();
    window_->Model().PacingInterval = 20000;
    QTimer::singleShot(20, window_.get(), [this] { QTest::keyClick(window_.get(), Qt::Key_Space); });
    QTimer::singleShot(150, window_.get(), [this] {
      QTest::mouseClick(window_->findChild<QPushButton*>("cmdcancel"), Qt::LeftButton);
    });
    QElapsedTimer clock;
    clock.start();
    Trigger("mnuautosolpause");
    QVERIFY(clock.elapsed() < 5000);  // did not wait for the 20 s pace
    QVERIFY(!window_->Run().StepMode);
  }

  // Waiting for the first Space press sleeps on events: a second of waiting costs
  // almost no processor time. Exit meanwhile ends the solve quietly and quits.
  void pacedSolveWaitsQuietlyAndExitEndsIt() {
    Open();
    window_->Model().PacingInterval = 20000;
    double cpuSeconds = -1;
    auto processTime = [] {
      rusage usage{};
      getrusage(RUSAGE_SELF, &usage);
      return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    };
    double start = 0;
    QTimer::singleShot(200, window_.get(), [&] { start = processTime(); });
    QTimer::singleShot(1200, window_.get(), [&] {
      cpuSeconds = processTime() - start;
      window_->findChild<QAction*>("cmdexit")->trigger();
    });
    QElapsedTimer clock;
    clock.start();
    Trigger("mnuautosolpause");
    QVERIFY(clock.elapsed() < 2500);
    qInfo("processor time over one second of waiting: %.3f s", cpuSeconds);
    QVERIFY(cpuSeconds >= 0 && cpuSeconds < 0.2);  // a spinning wait takes most of the second
    QVERIFY(!window_->isVisible());
    QVERIFY(!messages_.contains("This is not a valid puzzle"));
    messages_.clear();
  }

  void keyboardEntryHintAndUndo() {
    Open();
    auto& model = window_->Model();
    qm::SetSize(model, 3);
    window_->RedrawGrid();
    window_->Grid()->SetCursorPosition(0);
    window_->Grid()->setFocus();
    QTest::keyClick(window_.get(), Qt::Key_2);
    QCOMPARE(model.PosText[0], std::string("2"));
    QTest::keyClick(window_.get(), Qt::Key_Right);  // the next cell, over the gap
    QTest::keyClick(window_.get(), Qt::Key_2);
    QCOMPARE(model.PosText[2], std::string(""));  // refused: 2 is in the row
    QTest::keyClick(window_.get(), Qt::Key_H);
    QCOMPARE(model.PosText[2], std::string("13"));
    QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(model.PosText[2], std::string(""));
    QTest::keyClick(window_.get(), Qt::Key_Left, Qt::ShiftModifier);  // the gap
    QTest::keyClick(window_.get(), Qt::Key_Less);
    QCOMPARE(model.PosText[1], std::string(""));  // a "<" after a 2 and before an empty cell
    QTest::mouseClick(window_->findChild<QPushButton*>("UndoMan"), Qt::LeftButton);
    QTest::mouseClick(window_->findChild<QPushButton*>("UndoMan"), Qt::LeftButton);
    QCOMPARE(model.PosText[0], std::string(""));
  }

  void contextMenuEntersADigit() {
    Open();
    auto& model = window_->Model();
    qm::SetSize(model, 3);
    window_->RedrawGrid();
    QTimer::singleShot(50, window_.get(), [] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      QVERIFY(menu != nullptr);
      QCOMPARE(menu->objectName(), QString("mnurightclick"));
      for (QAction* action : menu->actions()) {
        if (action->data().toString() == "3") menu->setActiveAction(action);
      }
      QTest::keyClick(menu, Qt::Key_Return);
    });
    const QPoint cell = window_->Grid()->PositionRect(12).center();
    QTest::mouseClick(window_->Grid(), Qt::RightButton, {}, cell);
    QCOMPARE(model.PosText[12], std::string("3"));
    QCOMPARE(model.UndoList.front(), std::string("012"));
  }

  void schemesAndCellColour() {
    Open();
    const qm::Rgb before = window_->Colours().colour[qm::kGridColour];
    Trigger("mnucolx");
    auto* combo = window_->findChild<QComboBox*>("Combo1");
    QVERIFY(combo->isVisibleTo(window_.get()));
    const int slate = combo->findText("slate");
    QVERIFY(slate >= 0);
    combo->setCurrentIndex(slate);
    emit combo->activated(slate);
    QVERIFY(window_->Colours().colour[qm::kGridColour] != before);
    QCOMPARE(window_->Model().SchemeFile, std::string("slate.col"));
    Trigger("mnycellcolor");
    QCOMPARE(window_->Model().CellColouring, 1);
    Trigger("mnycellcolor");
    QCOMPARE(window_->Model().CellColouring, 0);
  }

  void exitWritesTheSettingsClosingByTheFrameDoesNot() {
    Open();
    std::filesystem::remove(Config());
    window_->close();
    QVERIFY(!std::filesystem::exists(Config()));

    answer_ = false;
    Trigger("cmdexit");
    QCOMPARE(questions_.last(), QString("Exit?"));
    QVERIFY(!std::filesystem::exists(Config()));
    answer_ = true;
    window_->Model().PacingInterval = 1234;
    Trigger("cmdexit");
    QVERIFY(std::filesystem::exists(Config()));
    QVERIFY(qm::test::ReadBytes(Config()).find("\r\n1234\r\n") != std::string::npos);
  }

  void collectionCommandsFromTheMenusAndArrows() {
    Open();
    auto& model = window_->Model();
    const int count = model.PuzzleCount;
    QVERIFY(count > 1);
    QTest::mouseClick(window_->findChild<QToolButton*>("arrows0"), Qt::LeftButton);  // previous wraps
    QCOMPARE(model.CurrentPuzzle, count);
    QTest::mouseClick(window_->findChild<QToolButton*>("arrows2"), Qt::LeftButton);  // next wraps
    QCOMPARE(model.CurrentPuzzle, 1);
    auto* number = window_->findChild<QLineEdit*>("PuzNumNow");
    number->setText("2");
    QTest::keyClick(number, Qt::Key_Return);
    QCOMPARE(model.CurrentPuzzle, 2);

    const std::string text = AppDir() + "out.txt";
    window_->SetFileHandler([&](const qm::FileChoice& choice) {
      return QString::fromStdString(choice.patterns == "*.txt" ? text : std::string());
    });
    Trigger("mnusavetxt");
    QCOMPARE(messages_.last(), QString::fromStdString("Puzzle saved as text file:\r\n" + text));
    QVERIFY(std::filesystem::exists(text));
    const auto before = messages_.size();
    Trigger("mnusavexls");  // the chooser was cancelled: nothing happens
    QCOMPARE(messages_.size(), before);

    // The pace buttons change the pace, not the puzzle, while a paced solve runs.
    window_->Run().StepMode = true;
    QTest::mouseClick(window_->findChild<QToolButton*>("arrows3"), Qt::LeftButton);
    QCOMPARE(model.PacingInterval, 20000);
    QCOMPARE(model.CurrentPuzzle, 2);
    window_->Run().StepMode = false;
  }

  void clearCommandsAskFirst() {
    Open();
    answer_ = false;
    Trigger("mnuclrgrid");
    QCOMPARE(questions_.last(), QString("Clear Entire Grid?"));
    QVERIFY(window_->Model().ConstraintCount > 0);
    answer_ = true;
    Trigger("mnunewx6");
    QCOMPARE(window_->Model().LastPosition, 288);
    QCOMPARE(Info(0), QString("9"));
    QCOMPARE(Info(1), QString("0"));
  }
};

QM_UI_TEST(MainWindowTest);
#include "test_main_window.moc"
