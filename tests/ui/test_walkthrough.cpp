// A newcomer's walk through the window: what the grid and the text lines show after a
// cancelled paced solve, a stalled solve, moving between puzzles, a missing file, the
// free entry of digits and a puzzle finished by hand.
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QTableWidget>
#include <QPushButton>
#include <QToolButton>
#include <QTimer>
#include <QtTest>

#include "commands/solving_commands.h"
#include "core/collection_file.h"
#include "core/file_replace.h"
#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "ui/coach_controller.h"
#include "ui/coach_fixture.h"
#include "reasoning/ladder.h"
#include "ui/grid_widget.h"
#include "ui/path_panel.h"
#include "ui/view_all_window.h"
#include "ui/ui_tests.h"
#include "support/test_files.h"

namespace {

// Every position as the grid draws it.
QStringList Shown(qm::ui::MainWindow& window) {
  QStringList shown;
  for (int k = 0; k <= window.Model().LastPosition; ++k) shown << window.Grid()->ShownText(k);
  return shown;
}

// Pixels of the error colour (the conflict ring) drawn inside position k.
int RingPixels(qm::ui::MainWindow& window, int k) {
  const QImage image = window.Grid()->grab().toImage();
  const qm::Rgb error = window.Colours().colour[qm::kErrorColour];
  const QRect r = window.Grid()->PositionRect(k);
  int count = 0;
  for (int y = r.top(); y <= r.bottom(); ++y) {
    for (int x = r.left(); x <= r.right(); ++x) {
      const QColor c = image.pixelColor(x, y);
      if (c.red() == qm::Red(error) && c.green() == qm::Green(error) && c.blue() == qm::Blue(error)) ++count;
    }
  }
  return count;
}

// The first cell that is not a clue, and a digit its row already holds there.
std::pair<int, int> ClashingEntry(const qm::PuzzleModel& model) {
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!qm::IsCell(model, k) || model.PosText[k].size() == 1) continue;
    for (int i = 1; i <= model.LayoutExtent; i += 2) {
      const std::string& other = model.PosText[model.PositionOf[model.RowOf[k]][i]];
      if (other.size() == 1) return {k, other[0] - '0'};
    }
  }
  return {-1, 0};
}

QString Label(qm::ui::MainWindow& window, const char* name) { return window.findChild<QLabel*>(name)->text(); }

QStringList ModelTexts(qm::ui::MainWindow& window) {
  QStringList texts;
  for (int k = 0; k <= window.Model().LastPosition; ++k) {
    texts << QString::fromStdString(qm::Cp1252ToUtf8(window.Model().PosText[k]));
  }
  return texts;
}

}  // namespace

class WalkthroughTest : public QObject {
  Q_OBJECT

 private slots:
  void cancelInAPacedSolveShowsTheModel() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    QVERIFY(window.StartOnPuzzle("30"));
    auto& model = window.Model();
    QVERIFY(model.ClueCount > 0);
    const QStringList before = ModelTexts(window);
    // Three go-ons, then Cancel, each from the event loop the paced solve waits in.
    int presses = 0;
    QTimer pacer;
    pacer.setInterval(30);
    QObject::connect(&pacer, &QTimer::timeout, &window, [&] {
      if (presses++ < 3) {
        window.Run().Continue();
      } else {
        pacer.stop();
        window.findChild<QPushButton*>("cmdcancel")->click();
      }
    });
    pacer.start();
    f.Trigger("mnuautosolpause");
    QCOMPARE(presses, 4);
    QVERIFY(!window.Run().StepMode);
    // The texts are back as they were, and the grid draws them: every clue included.
    QCOMPARE(ModelTexts(window), before);
    QCOMPARE(Shown(window), before);
    QVERIFY(window.ProgressLine().empty());
    QCOMPARE(window.StatusLine(), QString("Interactive solve Cancelled"));
  }

  void everyLineSpeaksOfThePuzzleShown() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto& model = window.Model();
    auto* number = window.findChild<QLineEdit*>("PuzNumNow");
    // A solve's "Solved" and a step's "Made: ..." go with the puzzle they spoke of.
    f.Trigger("mnuautosol");
    QCOMPARE(window.ProgressLine(), std::string("Solved"));
    f.Trigger("mnunextstep");
    QVERIFY(window.StartOnPuzzle("30"));
    QVERIFY(window.ProgressLine().empty());
    QVERIFY(window.StatusLine().isEmpty());
    for (int i = 0; i < 3; ++i) f.Trigger("mnunextstep");
    QVERIFY(window.StatusLine().startsWith("Made: "));
    f.Trigger("mnuundo");
    QVERIFY(window.StatusLine().isEmpty());
    // A check's verdict goes with Reload.
    const auto [cell, digit] = ClashingEntry(model);
    QVERIFY(cell >= 0);
    model.PosText[cell] = std::to_string(digit);
    f.Trigger("mnucheckdigits");
    QVERIFY(!window.StatusLine().isEmpty());
    f.Trigger("mnureload");
    QVERIFY(window.StatusLine().isEmpty());
    // Enter past the end changes nothing, and the box shows the puzzle shown again.
    const auto told = f.messages.size();
    number->setText("999");
    emit number->returnPressed();
    QCOMPARE(f.messages.size(), told);
    QCOMPARE(number->text(), QString("30"));
    QCOMPARE(model.CurrentPuzzle, 30);
    // A new grid is no puzzle of the file.
    window.SetStatusLine("Solution");
    f.Trigger("mnunewx6");
    QCOMPARE(number->text(), QString());
    QVERIFY(window.StatusLine().isEmpty());
    QCOMPARE(Label(window, "PuzInfo2"), QString("0"));
    f.questions.clear();
    f.Trigger("mnudelete");  // nothing shown to delete: not even the question
    QVERIFY(f.questions.isEmpty());
    QCOMPARE(qm::CountPuzzles(model.CurrentFile), model.PuzzleCount);
    f.Trigger("mnureload");
    QCOMPARE(number->text(), QString("30"));
  }

  void aMissingFileIsNamedAndTheCountsMatchTheGrid() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto& model = window.Model();
    const int clues = model.ClueCount;
    const QString missing = QString::fromStdString(f.AppDir() + "nowhere.fut");
    QVERIFY(!window.OpenFile(missing));
    QCOMPARE(f.messages.last(), "No such file: " + missing);
    // The puzzle shown before stays, with its counts.
    QCOMPARE(model.CurrentPuzzle, 1);
    QVERIFY(clues > 0);
    QCOMPARE(Label(window, "PuzInfo2"), QString::number(clues));
    QVERIFY(!model.PosText[0].empty() || clues > 0);
    // A file that is there but holds no puzzle empties the grid, and the counts say so.
    qm::test::WriteBytes(f.AppDir() + "empty.fut", "");
    QVERIFY(!window.OpenFile(QString::fromStdString(f.AppDir() + "empty.fut")));
    QCOMPARE(f.messages.last(), QString("Error reading puzzle# 1"));
    QCOMPARE(Label(window, "PuzInfo1"), QString("0"));
    QCOMPARE(Label(window, "PuzInfo2"), QString("0"));
  }

  void anyDigitGoesInAndClashesAreRinged() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto& model = window.Model();
    auto* coach = window.Coach();
    const auto [cell, digit] = ClashingEntry(model);
    QVERIFY(cell >= 0);
    const QChar key('0' + digit);
    window.Grid()->SetCursorPosition(cell);
    // Off by default: the key is refused as the menu refuses it.
    QVERIFY(!f.Action("mnuanydigit")->isChecked());
    QTest::keyClick(&window, key.toLatin1());
    QVERIFY(model.PosText[cell].size() != 1);
    QCOMPARE(window.ProgressLine(), std::string("Invalid entry"));
    f.Trigger("mnuanydigit");
    QVERIFY(coach->State().AllowAnyDigit);
    QCOMPARE(RingPixels(window, cell), 0);
    QTest::keyClick(&window, key.toLatin1());
    QCOMPARE(model.PosText[cell], std::to_string(digit));
    QVERIFY(RingPixels(window, cell) > 0);
    // With Mark Conflicts as well the ring stays; Undo takes the digit and its ring away.
    f.Trigger("mnuconflicts");
    QVERIFY(RingPixels(window, cell) > 0);
    f.Trigger("mnuundo");
    QVERIFY(model.PosText[cell].size() != 1);
    QCOMPARE(RingPixels(window, cell), 0);
    // The cell menu keeps its check, and a clue takes no key.
    QVERIFY(!coach->CellChoice(cell, std::to_string(digit)));
    int clue = -1;
    for (int k = 0; k <= model.LastPosition && clue < 0; ++k) {
      if (coach->State().ClueCell[k]) clue = k;
    }
    QVERIFY(clue >= 0);
    const std::string given = model.PosText[clue];
    QVERIFY(!coach->KeyDigit(clue, given == "1" ? 2 : 1));
    QCOMPARE(model.PosText[clue], given);
    // The switch is kept for the next run.
    qm::test::WindowFixture again;
    again.dir = std::move(f.dir);
    f.window.reset();
    again.Open();
    QVERIFY(again.window->Coach()->State().AllowAnyDigit);
    QVERIFY(again.Action("mnushowtimer")->isChecked());
  }

  void finishingByHandIsNotedWithTheTime() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto& model = window.Model();
    auto* coach = window.Coach();
    QVERIFY(coach->TimerLabel()->isVisible());
    QVERIFY(coach->Timer().Running());
    // In the background the timer stands still.
    emit qApp->applicationStateChanged(Qt::ApplicationInactive);
    QVERIFY(!coach->Timer().Running());
    const auto paused = coach->Timer().ElapsedMs();
    QTest::qWait(30);
    QCOMPARE(coach->Timer().ElapsedMs(), paused);
    emit qApp->applicationStateChanged(Qt::ApplicationActive);
    QVERIFY(coach->Timer().Running());
    std::vector<int> open;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (qm::IsCell(model, k) && model.PosText[k].size() != 1) open.push_back(k);
    }
    QVERIFY(open.size() >= 2);
    for (std::size_t i = 0; i + 1 < open.size(); ++i) {
      QVERIFY(coach->KeyDigit(open[i], model.SolutionText[open[i]][0] - '0'));
    }
    QVERIFY(coach->FinishNote() == nullptr);
    QVERIFY(coach->Timer().Running());
    QVERIFY(coach->KeyDigit(open.back(), model.SolutionText[open.back()][0] - '0'));
    QVERIFY(!coach->Timer().Running());
    QVERIFY(window.StatusLine().startsWith("Finished: every digit is in place"));
    QMessageBox* note = coach->FinishNote();
    QVERIFY(note != nullptr);
    QVERIFY(note->isVisible());
    QVERIFY(!note->isModal());
    QVERIFY(note->text().startsWith("Well done: puzzle finished in 0:0"));
    QVERIFY(f.messages.isEmpty());  // no modal box on the way
    // Undo makes it unfinished: the timer goes on; the next puzzle starts from zero.
    f.Trigger("mnuundo");
    QVERIFY(coach->Timer().Running());
    f.Trigger("mnuredo");
    QVERIFY(!coach->Timer().Running());
    window.findChild<QToolButton*>("arrows2")->click();
    QVERIFY(!note->isVisible());
    QVERIFY(coach->Timer().Running());
    QVERIFY(coach->Timer().ElapsedMs() < 1000);
    // Show Timer off hides it, and stays off.
    f.Trigger("mnushowtimer");
    QVERIFY(!coach->TimerLabel()->isVisible());
    std::string kept;
    QVERIFY(qm::ReadWholeFile(f.AppDir() + "Quillmere.opt", kept));
    QCOMPARE(kept, std::string("AllowAnyDigit=0\r\nShowTimer=0\r\n"));
    // A solve by the program stops the timer without a word.
    window.findChild<QToolButton*>("arrows2")->click();
    f.Trigger("mnuautosol");
    QVERIFY(!coach->Timer().Running());
    QVERIFY(!note->isVisible());
  }

  void keysListsAndRoomForTheGrid() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto& model = window.Model();
    auto* grid = window.Grid();
    // Arrows go cell to cell; Shift+arrow and Tab reach the gaps.
    f.Trigger("mnunewx1");
    grid->setFocus();
    grid->SetCursorPosition(0);
    const auto at = [&] { return std::pair{model.RowOf[grid->CursorPosition()], model.ColOf[grid->CursorPosition()]}; };
    QTest::keyClick(&window, Qt::Key_Right);
    QCOMPARE(at(), std::pair(1, 3));
    QTest::keyClick(&window, Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(at(), std::pair(1, 4));
    QTest::keyClick(&window, Qt::Key_Down);  // from a gap: the cell line it belongs to
    QCOMPARE(at(), std::pair(3, 3));
    QTest::keyClick(&window, Qt::Key_Down);
    QTest::keyClick(&window, Qt::Key_Down);
    QTest::keyClick(&window, Qt::Key_Down);  // stops at the edge
    QCOMPARE(at(), std::pair(7, 3));
    QTest::keyClick(grid, Qt::Key_Tab);
    QVERIFY(qm::IsSignSlot(model, grid->CursorPosition()));
    const int gap = grid->CursorPosition();
    QTest::keyClick(grid, Qt::Key_Backtab);
    QTest::keyClick(grid, Qt::Key_Tab);
    QCOMPARE(grid->CursorPosition(), gap);

    // The path panel's button takes no letter of the menu bar.
    auto* copy = window.findChild<QPushButton*>("PathCopy");
    const QString caption = copy->text();
    const QChar letter = caption[caption.indexOf('&') + 1].toLower();
    for (QAction* menu : window.menuBar()->actions()) {
      const QString title = menu->text();
      if (title.contains('&')) QVERIFY2(title[title.indexOf('&') + 1].toLower() != letter, qPrintable(title));
    }

    // File -> View: the grade column fits its longest name; Escape closes the list.
    f.Trigger("mnuviewall");
    auto* view = window.ViewAllView();
    QVERIFY(view->isVisible());
    QTableWidget* table = view->Table();
    const int grade = table->columnCount() - 1;
    for (int rung = 0; rung <= qm::reasoning::kTopRung; ++rung) {
      const QString name = QString::fromStdString(qm::reasoning::RungName(rung));
      QVERIFY2(table->columnWidth(grade) > table->fontMetrics().horizontalAdvance(name), qPrintable(name));
    }
    QTest::keyClick(table, Qt::Key_Escape);
    QVERIFY(!view->isVisible());

    // At the first window's size with the path open, a 9x9 grid keeps cells whose
    // candidates can be read.
    window.resize(980, 720);
    window.Coach()->Panel()->show();
    QVERIFY(window.StartOnPuzzle("55"));
    QCOMPARE(model.GridSize, 9);
    QTRY_VERIFY2(grid->PositionRect(0).height() >= 40,
                 qPrintable(QStringLiteral("cell %1, grid %2x%3, window %4x%5")
                                .arg(grid->PositionRect(0).height())
                                .arg(grid->width())
                                .arg(grid->height())
                                .arg(window.width())
                                .arg(window.height())));
  }
};

QM_UI_TEST(WalkthroughTest);
#include "test_walkthrough.moc"
