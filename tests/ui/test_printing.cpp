#include <QAction>
#include <QComboBox>
#include <QImage>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QSpinBox>
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
  int previews_ = 0;

  std::string AppDir() const { return dir_->Path() + "/"; }

  static int PageCount(const std::string& bytes) {
    int pages = 0;
    for (std::size_t at = bytes.find("/Type /Page"); at != std::string::npos; at = bytes.find("/Type /Page", at + 1)) {
      if (bytes.compare(at, 12, "/Type /Pages") != 0) ++pages;
    }
    return pages;
  }

  // The preview prints at once, as its print button would.
  void PrintFromPreview(QDialog& dialog) {
    auto* preview = qobject_cast<QPrintPreviewDialog*>(&dialog);
    QVERIFY(preview != nullptr);
    ++previews_;
    emit preview->paintRequested(preview->printer());
    preview->accept();
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
    previews_ = 0;
  }
  void cleanup() { window_.reset(); }

  void printsARangeFourToAPageWithTheSolutionsAfter() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) != nullptr) {
        dialog.findChild<QSpinBox*>("First")->setValue(1);
        dialog.findChild<QSpinBox*>("Last")->setValue(12);
        QCOMPARE(dialog.findChild<QComboBox*>("PerPage")->currentText(), QString("4"));
        dialog.accept();
        return;
      }
      PrintFromPreview(dialog);
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(previews_, 1);
    QVERIFY(messages_.isEmpty());
    const std::string bytes = qm::test::ReadBytes(pdf_.toStdString());
    QVERIFY(bytes.starts_with("%PDF"));
    QCOMPARE(PageCount(bytes), 6);  // three pages of puzzles, three of solutions
    QCOMPARE(window_->Model().CurrentPuzzle, 1);  // the shown puzzle stays

    // Page 1 as a picture: there is ink on it, in all four quarters.
    const QString renderer = QStandardPaths::findExecutable("pdftoppm");
    if (renderer.isEmpty()) QSKIP("pdftoppm (poppler-utils) is not installed");
    const QString png = QString::fromStdString(AppDir() + "page");
    QCOMPARE(QProcess::execute(renderer, {"-png", "-r", "40", "-f", "1", "-l", "1", "-singlefile", pdf_, png}), 0);
    const QImage page(png + ".png");
    if (qEnvironmentVariableIsSet("QM_KEEP_PRINT")) page.save(qEnvironmentVariable("QM_KEEP_PRINT"));
    QVERIFY(!page.isNull());
    for (int quarter = 0; quarter < 4; ++quarter) {
      const int x0 = (quarter % 2) * page.width() / 2;
      const int y0 = (quarter / 2) * page.height() / 2;
      int dark = 0;
      for (int y = y0; y < y0 + page.height() / 2; ++y) {
        for (int x = x0; x < x0 + page.width() / 2; ++x) dark += qGray(page.pixel(x, y)) < 128 ? 1 : 0;
      }
      QVERIFY2(dark > 100, qPrintable(QStringLiteral("quarter %1 is empty").arg(quarter)));
    }
  }

  void printsTheCurrentPuzzleAndStopsWhenTheChooserIsCancelled() {
    window_->SetModalHandler([this](QDialog& dialog) { PrintFromPreview(dialog); });
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(PageCount(qm::test::ReadBytes(pdf_.toStdString())), 1);

    pdf_.clear();
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(previews_, 1);

    // A PDF that cannot be written is reported.
    pdf_ = QString::fromStdString(AppDir() + "no/such/dir/print.pdf");
    window_->findChild<QAction*>("mnuprintcurrent")->trigger();
    QCOMPARE(messages_.last(), "Error writing to file: " + pdf_);
  }

  void cancelWhileTheRangeIsReadPrintsNothing() {
    window_->SetModalHandler([this](QDialog& dialog) {
      if (qobject_cast<qm::ui::PrintRangeDialog*>(&dialog) == nullptr) {
        PrintFromPreview(dialog);
        return;
      }
      // Cancel is pressed as soon as the window lets events through.
      QTimer::singleShot(0, window_.get(), [this] { window_->findChild<QPushButton*>("cmdcancel")->click(); });
      dialog.accept();
    });
    window_->findChild<QAction*>("mnuprintfile")->trigger();
    QCOMPARE(previews_, 0);
    QVERIFY(!std::filesystem::exists(pdf_.toStdString()));
    QCOMPARE(window_->Run().CancelRequest, qm::kNo);
  }

  void theFileLayoutStartsTheSolutionsOnANewPage() {
    std::vector<qm::ui::PrintedPuzzle> puzzles(5);
    const auto items = qm::ui::FileLayout(puzzles, 4);
    QCOMPARE(items.size(), std::size_t{13});
    QVERIFY(items[4].puzzle == &puzzles[4] && items[5].puzzle == nullptr && items[7].puzzle == nullptr);
    QVERIFY(items[8].puzzle == &puzzles[0] && items[8].solution);
  }
};

QM_UI_TEST(PrintingTest);
#include "test_printing.moc"
