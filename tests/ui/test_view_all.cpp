#include <QAction>
#include <QLabel>
#include <QTableWidget>
#include <QtTest>
#include <filesystem>

#include "core/collection_file.h"
#include "support/test_files.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"
#include "ui/view_all_window.h"

using qm::ui::MainWindow;

class ViewAllTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::TempDir> dir_;

  std::string AppDir() const { return dir_->Path() + "/"; }

 private slots:
  void init() { dir_ = std::make_unique<qm::test::TempDir>(); }

  void summarisesEveryRecordWhateverItsForm() {
    const std::string file = AppDir() + "mixed.fut";
    qm::test::WriteBytes(file, qm::test::CrLf({"#1", "Three", "3 4 0", ".....", ".....", ".....", ".....", ".....",
                                               "#2", "Old one", " 7 ", "x",  // the older 5x5 size line
                                               "#3", "#4", "Cut", "not a size"}));
    const auto records = qm::ReadRecordSummaries(file);
    QCOMPARE(records.size(), std::size_t{4});
    QCOMPARE(records[0].size, 3);
    QCOMPARE(records[0].signs, 4);
    QCOMPARE(records[0].clues, 0);
    QCOMPARE(records[0].comment, std::string("Three"));
    QCOMPARE(records[1].size, 5);
    QCOMPARE(records[1].signs, 7);
    QCOMPARE(records[1].clues, -1);
    QCOMPARE(records[2].comment, std::string());  // a record with nothing after its "#" line
    QCOMPARE(records[3].comment, std::string("Cut"));
    QVERIFY(qm::ReadRecordSummaries(AppDir() + "gone.fut").empty());
  }

  void listsTheCollectionAndOpensADoubleClickedPuzzle() {
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name);
    }
    MainWindow window(AppDir());
    QStringList questions;
    bool answer = false;
    window.SetDialogHandler([&](const QString& text, bool question) {
      if (question) questions << text;
      return answer;
    });
    window.StartUp();
    window.findChild<QAction*>("mnuviewall")->trigger();
    auto* view = window.ViewAllView();
    QVERIFY(view != nullptr && view->isVisible());
    const int count = qm::CountPuzzles(window.Model().CurrentFile);
    QCOMPARE(view->findChild<QLabel*>("Total")->text(), QStringLiteral("Total Puzzles = %1").arg(count));
    QTableWidget* table = view->Table();
    QCOMPARE(table->rowCount(), count);
    QCOMPARE(table->item(0, 1)->text(), QString("4x4"));
    QCOMPARE(table->item(0, 4)->text(), QString("4x4 VeryEasy"));

    // A changed puzzle is only left when the user agrees.
    window.Model().Modified = 1;
    emit table->cellDoubleClicked(2, 0);
    QCOMPARE(questions, QStringList{"Discard all changes?"});
    QCOMPARE(window.Model().CurrentPuzzle, 1);
    answer = true;
    emit table->cellDoubleClicked(2, 4);
    QCOMPARE(window.Model().CurrentPuzzle, 3);
  }

  void gradesArriveAndEveryColumnSorts() {
    for (const char* name : {"puzzles.fut", "all.col", "Quillmere.cfg"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name);
    }
    MainWindow window(AppDir());
    window.StartUp();
    window.findChild<QAction*>("mnuviewall")->trigger();
    auto* view = window.ViewAllView();
    QTableWidget* table = view->Table();
    QTRY_COMPARE_WITH_TIMEOUT(view->GradesPending(), 0, 60000);
    const int grade = qm::ui::ViewAllWindow::kGradeColumn;
    QCOMPARE(table->horizontalHeaderItem(grade)->text(), QString("Grade"));
    for (int row = 0; row < table->rowCount(); ++row) QVERIFY(table->item(row, grade)->text() != QString("\u2026"));

    // Each column sorts by its meaning: numbers as numbers, grades by level and score.
    auto key = [&](int row, int column) { return table->item(row, column)->data(Qt::UserRole).toDouble(); };
    for (int column : {0, 1, 2, 3, grade}) {
      table->sortItems(column, Qt::AscendingOrder);
      for (int row = 1; row < table->rowCount(); ++row) QVERIFY(key(row - 1, column) <= key(row, column));
    }
    table->sortItems(4, Qt::DescendingOrder);
    for (int row = 1; row < table->rowCount(); ++row) {
      QVERIFY(table->item(row - 1, 4)->text() >= table->item(row, 4)->text());
    }
    // A double-click opens the puzzle of the row, wherever sorting put it.
    table->sortItems(0, Qt::DescendingOrder);
    emit table->cellDoubleClicked(0, 0);
    QCOMPARE(window.Model().CurrentPuzzle, table->rowCount());
  }
};

QM_UI_TEST(ViewAllTest);
#include "test_view_all.moc"
