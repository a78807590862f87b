#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>
#include <filesystem>

#include "core/collection_file.h"
#include "support/test_files.h"
#include "ui/main_window.h"
#include "ui/sort_dialog.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;
using qm::ui::SortDialog;

class SortDialogTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::TempDir> dir_;
  std::unique_ptr<MainWindow> window_;
  QStringList messages_;
  QStringList chooserTitles_;
  QString chosen_;

  std::string AppDir() const { return dir_->Path() + "/"; }

  static QLineEdit* Field(QWidget& dialog, const char* name) { return dialog.findChild<QLineEdit*>(name); }
  static void Click(QWidget& dialog, const char* name) { dialog.findChild<QPushButton*>(name)->click(); }

  // Opens File -> "Sort" and lets `use` work the dialog; true when it closed accepted.
  bool Sort(const std::function<void(SortDialog&)>& use) {
    bool accepted = false;
    window_->SetModalHandler([&](QDialog& dialog) {
      auto* sort = qobject_cast<SortDialog*>(&dialog);
      QVERIFY(sort != nullptr);
      use(*sort);
      accepted = dialog.result() == QDialog::Accepted;
    });
    window_->findChild<QAction*>("mnusortpuz")->trigger();
    return accepted;
  }

 private slots:
  void init() {
    dir_ = std::make_unique<qm::test::TempDir>();
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name);
    }
    window_ = std::make_unique<MainWindow>(AppDir());
    window_->SetDialogHandler([this](const QString& text, bool) {
      messages_ << text;
      return true;
    });
    window_->SetFileHandler([this](const qm::FileChoice& choice) {
      chooserTitles_ << QString::fromStdString(choice.title);
      return chosen_;
    });
    window_->StartUp();
    messages_.clear();
  }
  void cleanup() { window_.reset(); }

  void refusesWithTheMessagesAndStaysOpen() {
    QVERIFY(!Sort([this](SortDialog& dialog) {
      QCOMPARE(dialog.windowTitle(), QString("Sort Puzzle File"));
      QCOMPARE(Field(dialog, "Source")->text(), QString::fromStdString(window_->Model().CurrentFile));
      QCOMPARE(dialog.findChild<QPushButton*>("cmdsort")->toolTip(), QString("Proceed with sort"));
      QCOMPARE(dialog.findChild<QRadioButton*>("Option2_2")->toolTip(),
               QString("Specify the sort order, random sort will reseqence the puzzle numbers"));
      Click(dialog, "cmdsort");
      QCOMPARE(messages_.last(), QString("Specify output file name"));
      Field(dialog, "Output")->setText(Field(dialog, "Source")->text().toLower());
      Click(dialog, "cmdsort");
      QCOMPARE(messages_.last(), QString("Input and output files cannot be same"));
      Field(dialog, "Source")->setText(QString::fromStdString(AppDir() + "gone.fut"));
      Click(dialog, "cmdsort");
      QCOMPARE(messages_.last(), QString("Input file does not exist"));
      qm::test::WriteBytes(AppDir() + "empty.fut", "no records\r\n");
      Field(dialog, "Source")->setText(QString::fromStdString(AppDir() + "empty.fut"));
      Click(dialog, "cmdsort");
      QCOMPARE(messages_.last(), QString("There are no puzzles in this file"));
      Click(dialog, "cmdcancel");
    }));
    QVERIFY(!std::filesystem::exists(window_->Model().CurrentFile + "x"));
  }

  void sortsDescendingBySizeAndRenumbers() {
    const std::string output = AppDir() + "sorted.fut";
    chosen_ = QString::fromStdString(output);
    QVERIFY(Sort([](SortDialog& dialog) {
      Click(dialog, "OutputChoose");
      dialog.findChild<QRadioButton*>("Option1_3")->setChecked(true);
      dialog.findChild<QRadioButton*>("Option2_1")->setChecked(true);
      dialog.findChild<QCheckBox*>("Resequence")->setChecked(true);
      Field(dialog, "Start")->setText("");
      Click(dialog, "cmdsort");
      QCOMPARE(Field(dialog, "Start")->text(), QString("1"));
      QVERIFY(!dialog.findChild<QLabel*>("Progress")->text().isEmpty());
    }));
    QCOMPARE(chooserTitles_, QStringList{"Select sort output file"});
    const int count = qm::CountPuzzles(output);
    QCOMPARE(messages_.last(), QString::fromStdString(" " + std::to_string(count) + " puzzles sorted to file:\r\n" + output));
    // Largest grids first, numbered from 1.
    const std::string bytes = qm::test::ReadBytes(output);
    QVERIFY(bytes.starts_with("#1\r\n"));
    const auto sizeLine = bytes.find("\r\n", bytes.find("\r\n") + 2) + 2;
    QCOMPARE(bytes[sizeLine], '9');
  }
};

QM_UI_TEST(SortDialogTest);
#include "test_sort_dialog.moc"
