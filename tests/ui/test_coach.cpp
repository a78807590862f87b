#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QtTest>

#include "commands/coach_state.h"
#include "commands/stall_verdict.h"
#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "solver/candidates.h"
#include "ui/coach_controller.h"
#include "ui/coach_fixture.h"
#include "ui/grid_widget.h"
#include "ui/ui_tests.h"

using qm::CoachState;
using qm::MarkBit;

namespace {

// A 5x5 puzzle of the default collection with one sign taken away: the six techniques
// stall on it, yet it has exactly one solution.
std::vector<std::string> StalledUniqueRecord() {
  return {"#11",
          "5x5 stalls",
          "5 5 6",
          "........5|4.1.2.3.5",
          ".........|.........",
          "5.....1..|5.4.3.1.2",
          ".........|.........",
          "2.3......|2.3.4.5.1",
          "........^|........^",
          "3........|3.5.1.2.4",
          "v........|v........",
          "...<.>.>.|1.2<5>4>3"};
}

}  // namespace

class CoachTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::WindowFixture> f_;

  qm::PuzzleModel& Model() { return f_->window->Model(); }
  CoachState& Coach() { return f_->window->Coach()->State(); }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(f_->window.get(), key, modifiers);
  }
  // A fresh empty grid of size n with the cursor on cell (1, 1).
  void EmptyGrid(int n) {
    f_->Trigger(qPrintable(QStringLiteral("mnunewx%1").arg(n - 3)));
    f_->window->Grid()->SetCursorPosition(0);
    f_->window->Grid()->setFocus();
  }
  int Cell(int i, int j) { return qm::CellPosition(Model(), i, j); }
  QString Shown(int k) { return f_->window->Grid()->ShownText(k); }

 private slots:
  void init() {
    f_ = std::make_unique<qm::test::WindowFixture>();
    f_->Open();
  }
  void cleanup() { f_.reset(); }

  void pencilMarksAreThePlayersOwn() {
    EmptyGrid(4);
    Key(Qt::Key_P);
    QVERIFY(Coach().PencilMode);
    QVERIFY(f_->Action("mnupencil")->isChecked());
    Key(Qt::Key_1);
    Key(Qt::Key_3);
    Key(Qt::Key_1);
    QCOMPARE(Coach().Marks[0], MarkBit(3));
    Key(Qt::Key_P);
    QVERIFY(!Coach().PencilMode);
    Key(Qt::Key_2, Qt::ShiftModifier);  // Shift+digit marks outside the mode too
    QCOMPARE(Coach().Marks[0], static_cast<qm::MarkBits>(MarkBit(2) | MarkBit(3)));
    QCOMPARE(Model().PosText[0], std::string());  // marks are not candidate texts
    QCOMPARE(Model().GivenValue[0], 0);

    // Placing a 3 takes it out of the marks of its row and column only.
    for (int k : {Cell(1, 3), Cell(3, 1), Cell(2, 3)}) QVERIFY(qm::ToggleMark(Coach(), Model(), k, 3));
    f_->window->Grid()->SetCursorPosition(Cell(1, 2));
    Key(Qt::Key_3);
    QCOMPARE(Model().PosText[Cell(1, 2)], std::string("3"));
    QCOMPARE(Coach().Marks[Cell(1, 3)], qm::MarkBits{0});
    QCOMPARE(Coach().Marks[0], MarkBit(2));
    QCOMPARE(Coach().Marks[Cell(3, 1)], MarkBit(3));
    QCOMPARE(Coach().Marks[Cell(2, 3)], MarkBit(3));
    QVERIFY(!qm::ToggleMark(Coach(), Model(), Cell(1, 2), 1));  // a cell with a digit takes none

    // Undo brings the digit and the marks back together.
    f_->Trigger("mnuundo");
    QCOMPARE(Model().PosText[Cell(1, 2)], std::string());
    QCOMPARE(Coach().Marks[Cell(1, 3)], MarkBit(3));
    f_->Trigger("mnuredo");
    QCOMPARE(Model().PosText[Cell(1, 2)], std::string("3"));
    QCOMPARE(Coach().Marks[Cell(1, 3)], qm::MarkBits{0});
  }

  void fillAndClearMarks() {
    EmptyGrid(4);
    Key(Qt::Key_2);
    f_->Trigger("mnufillmarks");
    for (int k = 0; k <= Model().LastPosition; ++k) {
      if (!qm::IsCell(Model(), k)) continue;
      qm::MarkBits expected = 0;
      if (Model().PosText[k].empty()) {
        for (char c : qm::CellCandidates(Model(), k)) expected = static_cast<qm::MarkBits>(expected | MarkBit(c - '0'));
      }
      QCOMPARE(Coach().Marks[k], expected);
    }
    QCOMPARE(Coach().Marks[Cell(1, 2)] & MarkBit(2), 0);
    QCOMPARE(Coach().Marks[Cell(2, 2)], static_cast<qm::MarkBits>(MarkBit(1) | MarkBit(2) | MarkBit(3) | MarkBit(4)));
    const auto filled = Coach().Marks;
    f_->Trigger("mnuclearmarks");
    QVERIFY(std::all_of(Coach().Marks.begin(), Coach().Marks.end(), [](qm::MarkBits m) { return m == 0; }));
    f_->Trigger("mnuundo");
    QVERIFY(Coach().Marks == filled);
    f_->Trigger("mnuredo");
    QCOMPARE(Coach().Marks[Cell(2, 2)], qm::MarkBits{0});
    // A new puzzle starts without marks.
    f_->Trigger("mnufillmarks");
    EmptyGrid(5);
    QCOMPARE(Coach().Marks[Cell(2, 2)], qm::MarkBits{0});
  }

  void redoRepeatsWhatUndoReverted() {
    EmptyGrid(3);
    Key(Qt::Key_2);
    Key(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(Model().PosText[0], std::string());
    Key(Qt::Key_Y, Qt::ControlModifier);
    QCOMPARE(Model().PosText[0], std::string("2"));
    QCOMPARE(Model().UndoList.front(), std::string("000"));  // made again as the menu makes it
    QTest::mouseClick(f_->window->findChild<QPushButton*>("UndoMan"), Qt::LeftButton);
    QCOMPARE(Model().PosText[0], std::string());
    Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(Model().PosText[0], std::string("2"));

    // Signs and hints too; a new entry ends what there was to redo.
    f_->window->Grid()->SetCursorPosition(1);
    Key(Qt::Key_Greater);
    QCOMPARE(Model().PosText[1], std::string(">"));
    f_->window->Grid()->SetCursorPosition(Cell(2, 2));
    Key(Qt::Key_H);
    const std::string hint = Model().PosText[Cell(2, 2)];
    QVERIFY(hint.size() > 1);
    f_->Trigger("mnuundo");
    f_->Trigger("mnuundo");
    QCOMPARE(Model().PosText[1], std::string());
    f_->Trigger("mnuredo");
    f_->Trigger("mnuredo");
    QCOMPARE(Model().PosText[1], std::string(">"));
    QCOMPARE(Model().PosText[Cell(2, 2)], hint);
    f_->Trigger("mnuundo");
    f_->window->Grid()->SetCursorPosition(Cell(3, 3));
    Key(Qt::Key_1);
    f_->Trigger("mnuredo");
    QCOMPARE(Model().PosText[Cell(2, 2)], std::string());
    QVERIFY(!qm::CanRedo(Coach()));

    // Entries the history never saw (a load clears both) undo one at a time.
    Model().UndoList.insert(Model().UndoList.begin(), "004");
    Model().PosText[4] = "3";
    f_->Trigger("mnuundo");
    QCOMPARE(Model().PosText[4], std::string());
    f_->Trigger("mnuredo");
    QCOMPARE(Model().PosText[4], std::string("3"));
  }

  void digitsKeepTheColourOfTheirOrigin() {
    auto& model = Model();
    int clue = -1;
    int empty = -1;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (!qm::IsCell(model, k)) continue;
      if (clue < 0 && model.GivenValue[k] > 0) clue = k;
      if (empty < 0 && model.PosText[k].empty()) empty = k;
    }
    QVERIFY(clue >= 0 && empty >= 0);
    QVERIFY(f_->window->Coach()->CellChoice(empty, model.SolutionText[empty]));
    QCOMPARE(qm::OriginOf(Coach(), model, clue, Shown(clue).toStdString()), qm::DigitOrigin::Clue);
    QCOMPARE(qm::OriginOf(Coach(), model, empty, Shown(empty).toStdString()), qm::DigitOrigin::Player);
    f_->Trigger("mnuautosol");
    QCOMPARE(f_->messages.last(), QString("Done"));
    int solved = 0;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (!qm::IsCell(model, k)) continue;
      const qm::DigitOrigin origin = qm::OriginOf(Coach(), model, k, Shown(k).toStdString());
      if (k == clue) QCOMPARE(origin, qm::DigitOrigin::Clue);  // clues keep theirs after Auto-solve
      if (k == empty) QCOMPARE(origin, qm::DigitOrigin::Player);
      if (origin == qm::DigitOrigin::Solver) ++solved;
    }
    QVERIFY(solved > 0);

    // The three origins are painted in three colours.
    const QImage image = f_->window->Grid()->grab().toImage();
    auto hasColour = [&](int k, qm::Rgb rgb) {
      const QRect r = f_->window->Grid()->PositionRect(k).adjusted(4, 4, -4, -4);
      const QColor want(qm::Red(rgb), qm::Green(rgb), qm::Blue(rgb));
      for (int y = r.top(); y <= r.bottom(); ++y) {
        for (int x = r.left(); x <= r.right(); ++x) {
          if (image.pixelColor(x * image.width() / f_->window->Grid()->width(),
                               y * image.height() / f_->window->Grid()->height()) == want) {
            return true;
          }
        }
      }
      return false;
    };
    const auto& colours = f_->window->Colours().colour;
    QVERIFY(hasColour(clue, colours[qm::kClueColour]));
    QVERIFY(hasColour(empty, colours[qm::kTextColour]));
    int solvedCell = -1;
    for (int k = 0; k <= model.LastPosition && solvedCell < 0; ++k) {
      if (qm::IsCell(model, k) && qm::OriginOf(Coach(), model, k, Shown(k).toStdString()) == qm::DigitOrigin::Solver) {
        solvedCell = k;
      }
    }
    QVERIFY(hasColour(solvedCell, colours[qm::kCursorColour]));
    QVERIFY(!hasColour(solvedCell, colours[qm::kClueColour]));

    // A chosen digit lights every cell that holds it.
    const int digit = model.PosText[clue][0] - '0';
    f_->window->Coach()->SetHighlightDigit(digit);
    const QImage lit = f_->window->Grid()->grab().toImage();
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (!qm::IsCell(model, k)) continue;
      const QRect r = f_->window->Grid()->PositionRect(k);
      const QPoint corner = r.topLeft() + QPoint(r.width() / 6, r.height() / 6);
      const QColor background = lit.pixelColor(corner * lit.width() / f_->window->Grid()->width());
      const qm::Rgb h = colours[qm::kHighlightColour];
      QCOMPARE(background == QColor(qm::Red(h), qm::Green(h), qm::Blue(h)),
               Shown(k) == QString::number(digit));
    }
  }

  void conflictsAndTheCheckOfThePlayersDigits() {
    auto& model = Model();
    // Live marking is off until asked for; it finds clashes in lines and across signs.
    QVERIFY(!Coach().LiveConflicts);
    QVERIFY(!f_->Action("mnuconflicts")->isChecked());
    f_->Trigger("mnuconflicts");
    QVERIFY(Coach().LiveConflicts);
    qm::SetSize(model, 3);
    model.PosText[Cell(1, 1)] = "2";
    model.PosText[Cell(1, 3)] = "2";
    model.PosText[Cell(2, 2)] = "3";
    model.PosText[Cell(2, 3)] = "1";
    model.PosText[qm::CellPosition(model, 2, 2) + 1] = ">";  // 3 > 1 holds
    model.PosText[qm::CellPosition(model, 2, 2) - 1] = "<";  // nothing left of it yet
    QCOMPARE(qm::ConflictCells(model), (std::vector<int>{Cell(1, 1), Cell(1, 3)}));
    model.PosText[Cell(2, 1)] = "3";  // 3 < 3 fails, and 3 twice in the row
    QCOMPARE(qm::ConflictCells(model), (std::vector<int>{Cell(1, 1), Cell(1, 3), Cell(2, 1), Cell(2, 2)}));
    model.PosText[Cell(2, 1)] = "1";
    model.PosText[Cell(2, 3)] = "2";
    model.PosText[qm::CellPosition(model, 2, 2) + 1] = "<";  // 3 < 2 fails
    QCOMPARE(qm::ConflictCells(model), (std::vector<int>{Cell(1, 1), Cell(1, 3), Cell(2, 2), Cell(2, 3)}));
  }

  void checkMyDigitsMarksTheWrongOnes() {
    auto& model = Model();
    std::vector<int> open;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (qm::IsCell(model, k) && model.PosText[k].empty()) open.push_back(k);
    }
    // One wrong digit that the rules still allow, and a right one away from its lines.
    int wrong = -1;
    for (int k : open) {
      const std::string candidates = qm::CellCandidates(model, k);
      for (char c : candidates) {
        if (wrong < 0 && std::string(1, c) != model.SolutionText[k]) {
          QVERIFY(f_->window->Coach()->CellChoice(k, std::string(1, c)));
          wrong = k;
        }
      }
    }
    int right = -1;
    for (int k : open) {
      if (right < 0 && wrong >= 0 && model.RowOf[k] != model.RowOf[wrong] && model.ColOf[k] != model.ColOf[wrong]) {
        QVERIFY(f_->window->Coach()->CellChoice(k, model.SolutionText[k]));
        right = k;
      }
    }
    QVERIFY(right >= 0 && wrong >= 0);
    f_->Trigger("mnucheckdigits");
    QCOMPARE(Coach().WrongCells, std::vector<int>{wrong});
    QCOMPARE(f_->window->StatusLine(), QString("1 of your 2 digits is wrong (marked)"));
    // Without a stored solution the search's is used.
    const auto stored = model.SolutionText;
    for (std::string& s : model.SolutionText) s.clear();
    f_->Trigger("mnucheckdigits");
    QCOMPARE(Coach().WrongCells, std::vector<int>{wrong});
    model.SolutionText = stored;
    f_->Trigger("mnuundo");
    f_->Trigger("mnuundo");
    QVERIFY(f_->window->Coach()->CellChoice(right, model.SolutionText[right]));
    f_->Trigger("mnucheckdigits");
    QVERIFY(Coach().WrongCells.empty());
    QCOMPARE(f_->window->StatusLine(), QString("Your digit agrees with the solution"));
  }

  void aStalledSolveGetsTheSearchsVerdict() {
    const std::string file = f_->AppDir() + "stalls.fut";
    qm::test::WriteBytes(file, qm::test::CrLf(StalledUniqueRecord()));
    QVERIFY(!qm::ReadPuzzle(Model(), *f_->window, file, 1).notFound);
    const std::string before = qm::SaveCandidates(Model());
    f_->Trigger("mnuautosol");
    QCOMPARE(f_->messages.last(), QString("This puzzle has multiple solutions"));
    QCOMPARE(f_->window->StatusLine(),
             QString("The six techniques stop here, yet the puzzle has exactly one solution: Next Step (F3) "
                     "explains the rest"));
    QCOMPARE(qm::SaveCandidates(Model()), before);

    EmptyGrid(3);
    f_->Trigger("mnuautosol");
    QCOMPARE(f_->messages.last(), QString("This puzzle has multiple solutions"));
    QCOMPARE(f_->window->StatusLine(), QString("A search finds at least two solutions"));
    // A solved puzzle gets no verdict.
    f_->window->SetStatusLine("");
    QVERIFY(!qm::ReadPuzzle(Model(), *f_->window, f_->AppDir() + "puzzles.fut", 1).notFound);
    f_->Trigger("mnuautosol");
    QCOMPARE(f_->messages.last(), QString("Done"));
    QVERIFY(!f_->window->StatusLine().startsWith("A search"));
  }

  void spaceGoesOnWhereverTheFocusIs() {
    auto* description = f_->window->findChild<QLineEdit*>("label3");
    description->setFocus();
    const QString text = description->text();
    f_->window->Run().StepMode = true;
    f_->window->Run().StepGo = false;
    QTest::keyClick(description, Qt::Key_Space);
    QVERIFY(f_->window->Run().StepGo);
    QCOMPARE(description->text(), text);
    f_->window->Run().StepGo = false;
    QTest::keyClick(f_->window->findChild<QPushButton*>("UndoMan"), Qt::Key_Space);
    QVERIFY(f_->window->Run().StepGo);
    f_->window->Run().StepMode = false;
    QTest::keyClick(description, Qt::Key_Space);  // outside a paced solve a space is a space
    QCOMPARE(description->text(), text + " ");
  }

  void menusHaveMnemonicsShortcutsEllipsesAndChecks() {
    QMenuBar* bar = f_->window->menuBar();
    std::function<void(QMenu*)> check = [&](QMenu* menu) {
      QSet<QChar> used;
      for (QAction* action : menu->actions()) {
        if (action->isSeparator()) continue;
        const QString text = action->text();
        const auto at = text.indexOf('&');
        QVERIFY2(at >= 0 && at + 1 < text.size(), qPrintable(menu->title() + " / " + text));
        QVERIFY2(!used.contains(text[at + 1].toLower()), qPrintable(menu->title() + " / " + text));
        used.insert(text[at + 1].toLower());
        if (action->menu() != nullptr) check(action->menu());
      }
    };
    QSet<QChar> top;
    for (QAction* action : bar->actions()) {
      const QString text = action->text();
      QVERIFY2(text.contains('&'), qPrintable(text));
      const QChar key = text[text.indexOf('&') + 1].toLower();
      QVERIFY2(!top.contains(key), qPrintable(text));
      top.insert(key);
      check(action->menu());
    }
    QCOMPARE(f_->Action("mnuload")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
    QCOMPARE(f_->Action("mnuprintcurrent")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_P));
    QCOMPARE(f_->Action("cmdexit")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    QCOMPARE(f_->Action("mnuhelp")->shortcut(), QKeySequence(Qt::Key_F1));
    QCOMPARE(f_->Action("mnuundo")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Z));
    QVERIFY(f_->Action("mnuredo")->shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_Y)));
    QVERIFY(f_->Action("mnuredo")->shortcuts().contains(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)));
    for (const char* name : {"mnuload", "mnusortpuz", "mnumultipuzx", "mnuprintfile", "mnusavetxt"}) {
      QVERIFY2(f_->Action(name)->text().endsWith(QChar(0x2026)), name);
    }
    for (const char* name : {"mnuverify", "mnuautosol", "mnureload", "cmdexit"}) {
      QVERIFY2(!f_->Action(name)->text().endsWith(QChar(0x2026)), name);
    }
    // Toggles carry a check mark that follows their state when the menu opens.
    QAction* cellColour = f_->Action("mnycellcolor");
    QVERIFY(cellColour->isCheckable());
    f_->Trigger("mnycellcolor");
    QCOMPARE(Model().CellColouring, 1);
    QVERIFY(cellColour->isChecked());
    Model().CellColouring = 0;
    for (QMenu* menu : f_->window->findChildren<QMenu*>()) emit menu->aboutToShow();
    QVERIFY(!cellColour->isChecked());
    QVERIFY(f_->Action("mnuviewsol")->isCheckable());
    f_->Trigger("mnuviewsol");
    QVERIFY(Model().SolutionShown);
    QVERIFY(f_->Action("mnuviewsol")->isChecked());
  }
};

QM_UI_TEST(CoachTest);
#include "test_coach.moc"
