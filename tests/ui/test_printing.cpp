#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTimer>
#include <QStandardPaths>
#include <QtTest>
#include <filesystem>

#include "support/test_files.h"
#include "ui/main_window.h"
#include "ui/printing.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;

class PrintingTest : public QObject {
  Q_OBJECT

 private:
  std::unique_ptr<qm::test::TempDir> dir_;
  std::unique_ptr<MainWindow> window_;
  QStringList messages_;
  QString pdf_;

  std::string AppDir() const { return dir_->Path() + "/"; }

  static int PageCount(const std::string& bytes) {
    int pages = 0;
    for (std::size_t at = bytes.find("/Type /Page"); at != std::string::npos; at = bytes.find("/Type /Page", at + 1)) {
      if (bytes.compare(at, 12, "/Type /Pages") != 0) ++pages;
    }
    return pages;
  }

  // Page setup: accepted as it stands, or first turned to another size and orientation
  // as a person would with its controls.
  QPageSize::PageSizeId setupSize_ = QPageSize::Custom;  // Custom: leave the size
  bool setupLandscape_ = false;
  bool cancelSetup_ = false;
  QPageLayout shownLayout_;
  int setups_ = 0;

  void AnswerPageSetup(QDialog& dialog) {
    auto* setup = qobject_cast<qm::ui::PageSetupDialog*>(&dialog);
    QVERIFY(setup != nullptr);
    ++setups_;
    shownLayout_ = setup->Layout();
    if (cancelSetup_) {
      dialog.reject();
      return;
    }
    if (setupSize_ != QPageSize::Custom) {
      auto* sizes = dialog.findChild<QComboBox*>("PageSize");
      const int index = sizes->findData(static_cast<int>(setupSize_));
      QVERIFY(index >= 0);
      sizes->setCurrentIndex(index);
      dialog.findChild<QCheckBox*>("Landscape")->setChecked(setupLandscape_);
      dialog.findChild<QDoubleSpinBox*>("LeftMargin")->setValue(20);
    }
    dialog.accept();
  }

  static QString PdfInfo(const QString& pdf) {
    const QString tool = QStandardPaths::findExecutable("pdfinfo");
    if (tool.isEmpty()) return {};
    QProcess process;
    process.start(tool, {pdf});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
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
    pdf_ = QString::fromStdString(AppDir() + "print.pdf");
    window_->SetFileHandler([this](const qm::FileChoice& choice) {
      return choice.patterns == "*.pdf" ? pdf_ : QString();
    });
    window_->SetPrintToPdf(true);
    window_->StartUp();
    messages_.clear();
    setupSize_ = QPageSize::Custom;
    setupLandscape_ = false;
    cancelSetup_ = false;
    setups_ = 0;
  }
  void cleanup() { window_.reset(); }

  void printsARangeFourToAPageWithTheAnswersAfterToOneNamedFile() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) != nullptr) {
        dialog.findChild<QSpinBox*>("First")->setValue(1);
        dialog.findChild<QSpinBox*>("Last")->setValue(30);
        QCOMPARE(dialog.findChild<QComboBox*>("PerPage")->currentText(), QString("4"));
        QCOMPARE(dialog.findChild<QSpinBox*>("AnswersPerPage")->value(), 12);
        dialog.accept();
        return;
      }
      AnswerPageSetup(dialog);
    });
    pdf_ = QString::fromStdString(AppDir() + "book");  // named without ".pdf"
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    const QString written = pdf_ + ".pdf";
    QCOMPARE(setups_, 1);
    QCOMPARE(messages_, QStringList{"Pages saved as PDF File:\r\n" + written});
    const std::string bytes = qm::test::ReadBytes(written.toStdString());
    QVERIFY(bytes.starts_with("%PDF"));
    QCOMPARE(PageCount(bytes), 11);  // eight pages of puzzles, three of answers
    QCOMPARE(window_->Model().CurrentPuzzle, 1);  // the shown puzzle stays
    // With nothing chosen before, the page setup offered the book margins.
    QCOMPARE(shownLayout_.margins(QPageLayout::Millimeter).left(), qm::render::kBookMarginMm);

    const QString info = PdfInfo(written);
    if (info.isEmpty()) QSKIP("pdfinfo (poppler-utils) is not installed");
    QVERIFY2(info.contains(QRegularExpression("Title: +puzzles.fut")), qPrintable(info));
  }

  void thePageSetupIsKeptForTheNextPrint() {
    window_->SetDialogHandler([this](const QString& text, bool question) {
      messages_ << text;
      return !question || text.startsWith("Print the solution");  // keep the existing file
    });
    window_->SetModalHandler([this](QDialog& dialog) { AnswerPageSetup(dialog); });
    setupSize_ = QPageSize::Letter;
    setupLandscape_ = true;
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(PageCount(qm::test::ReadBytes(pdf_.toStdString())), 2);  // the puzzle, then its solution

    // The next print starts from Letter, landscape; the answer No to the overwrite
    // question leaves the file as it was.
    setupSize_ = QPageSize::Custom;
    const std::string before = qm::test::ReadBytes(pdf_.toStdString());
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(shownLayout_.pageSize().id(), QPageSize::Letter);
    QCOMPARE(shownLayout_.orientation(), QPageLayout::Landscape);
    QCOMPARE(shownLayout_.margins(QPageLayout::Millimeter).left(), 20.0);
    QCOMPARE(messages_.last(), "OverWrite file: " + pdf_ + " ?");
    QCOMPARE(qm::test::ReadBytes(pdf_.toStdString()), before);

    const QString info = PdfInfo(pdf_);
    if (info.isEmpty()) QSKIP("pdfinfo (poppler-utils) is not installed");
    QVERIFY2(info.contains("792 x 612 pts (letter)"), qPrintable(info));
  }

  void theCurrentPuzzleWithoutItsSolutionCancelAndFailure() {
    window_->SetDialogHandler([this](const QString& text, bool) {
      messages_ << text;
      return !text.startsWith("Print the solution");
    });
    window_->SetModalHandler([this](QDialog& dialog) { AnswerPageSetup(dialog); });
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(messages_.first(), QString("Print the solution on the next page?"));
    QCOMPARE(PageCount(qm::test::ReadBytes(pdf_.toStdString())), 1);

    // Cancelling the page setup or the chooser ends the command with nothing written.
    std::filesystem::remove(pdf_.toStdString());
    messages_.clear();
    cancelSetup_ = true;
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    cancelSetup_ = false;
    pdf_.clear();
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(setups_, 3);
    QCOMPARE(messages_, QStringList({"Print the solution on the next page?", "Print the solution on the next page?"}));
    QVERIFY(!std::filesystem::exists(AppDir() + "print.pdf"));

    // A PDF that cannot be written is reported.
    pdf_ = QString::fromStdString(AppDir() + "no/such/dir/print.pdf");
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(messages_.last(), "Error writing to file: " + pdf_);
  }

  void aReversedRangeOrAPuzzleWithoutOneSolutionPrintsNothing() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) == nullptr) {
        AnswerPageSetup(dialog);
        return;
      }
      dialog.findChild<QSpinBox*>("First")->setValue(5);
      dialog.findChild<QSpinBox*>("Last")->setValue(2);
      dialog.accept();
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(messages_, QStringList{"Nothing to print: From puzzle# 5 comes after To puzzle# 2"});
    QCOMPARE(setups_, 0);
    QVERIFY(!std::filesystem::exists(pdf_.toStdString()));

    // A collection whose second puzzle has the same clue twice in a row: neither print
    // command gets as far as the page setup.
    const std::string clash = AppDir() + "clash.fut";
    qm::test::WriteBytes(clash, qm::test::CrLf({"#1", "Open", "3 0 1", "1....|", ".....|", "2....|", ".....|",
                                                ".....|", "#2", "Clash", "3 0 2", "1...1|", ".....|", ".....|",
                                                ".....|", ".....|"}));
    QVERIFY(window_->OpenFile(QString::fromStdString(clash)));
    messages_.clear();
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(messages_, QStringList{"Puzzle 1 cannot be printed: it has more than one solution"});
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) == nullptr) {
        AnswerPageSetup(dialog);
        return;
      }
      dialog.findChild<QSpinBox*>("First")->setValue(2);
      dialog.accept();
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(messages_.last(), QString("Puzzle 2 cannot be printed: it has no solution"));
    QCOMPARE(setups_, 0);
    QVERIFY(!std::filesystem::exists(pdf_.toStdString()));
  }

  void cancelWhileTheRangeIsReadPrintsNothing() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) == nullptr) {
        AnswerPageSetup(dialog);
        return;
      }
      // Cancel is pressed as soon as the window lets events through.
      QTimer::singleShot(0, window_.get(), [this] { window_->findChild<QPushButton*>("cmdcancel")->click(); });
      dialog.accept();
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(setups_, 0);
    QVERIFY(!std::filesystem::exists(pdf_.toStdString()));
    QVERIFY(!window_->Run().CancelRequest);
  }

  void theAnswersCanBeLeftOut() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) != nullptr) {
        dialog.findChild<QSpinBox*>("First")->setValue(3);
        dialog.findChild<QSpinBox*>("Last")->setValue(11);
        dialog.findChild<QComboBox*>("PerPage")->setCurrentText("9");
        dialog.findChild<QCheckBox*>("Answers")->setChecked(false);
        dialog.findChild<QCheckBox*>("Grades")->setChecked(true);
        QVERIFY(!dialog.findChild<QSpinBox*>("AnswersPerPage")->isEnabled());
        dialog.accept();
        return;
      }
      AnswerPageSetup(dialog);
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(PageCount(qm::test::ReadBytes(pdf_.toStdString())), 1);

    // Each caption names its puzzle's grade (all nine are Moderate; no description says so).
    const QString text = QStandardPaths::findExecutable("pdftotext");
    if (text.isEmpty()) QSKIP("pdftotext (poppler-utils) is not installed");
    QProcess process;
    process.start(text, {"-layout", pdf_, "-"});
    process.waitForFinished();
    const QString page = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(page.count("Moderate") == 9, qPrintable(page));
  }
};

QM_UI_TEST(PrintingTest);
#include "test_printing.moc"
