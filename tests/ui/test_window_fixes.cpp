#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QSpinBox>
#include <QTimer>
#include <QtTest>

#include "core/collection_file.h"
#include "settings/scheme_contrast.h"
#include "ui/coach_fixture.h"
#include "ui/printing.h"
#include "ui/ui_tests.h"
#include "ui/window_setup.h"

namespace {

qm::Rgb FromQColor(const QColor& c) { return qm::MakeRgb(c.red(), c.green(), c.blue()); }

}  // namespace

class WindowFixesTest : public QObject {
  Q_OBJECT

 private slots:
  void everySchemeReadsWellEverywhere() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    const std::vector<std::string> schemes = qm::SchemeList(f.AppDir());
    QVERIFY(schemes.size() >= 7);
    auto* combo = window.findChild<QComboBox*>("Combo1");
    for (const std::string& scheme : schemes) {
      const int index = combo->findText(QString::fromStdString(scheme));
      combo->setCurrentIndex(index);
      emit combo->activated(index);
      QCOMPARE(window.Model().SchemeFile, scheme + ".col");
      QVERIFY2(f.messages.isEmpty(), scheme.c_str());
      const auto& c = window.Colours().colour;
      for (const qm::TextOnBackground& pair : qm::SchemeTextPairs()) {
        const double ratio = qm::ContrastRatio(c[pair.text], c[pair.background]);
        QVERIFY2(ratio >= qm::kMinimumTextContrast,
                 qPrintable(QString("%1: %2 at %3").arg(scheme.c_str(), pair.what.c_str()).arg(ratio)));
      }
      QVERIFY(qm::ContrastRatio(qm::ReadableTextOn(c[qm::kErrorColour]), c[qm::kErrorColour]) >= 4.5);
      // Dialogs and message boxes take the scheme's palette.
      QMessageBox box(QMessageBox::Information, "Quillmere", "text", QMessageBox::Ok, &window);
      const QPalette p = box.palette();
      const std::pair<QPalette::ColorRole, QPalette::ColorRole> roles[] = {
          {QPalette::WindowText, QPalette::Window}, {QPalette::Text, QPalette::Base},
          {QPalette::ButtonText, QPalette::Button}, {QPalette::HighlightedText, QPalette::Highlight},
          {QPalette::ToolTipText, QPalette::ToolTipBase}};
      for (const auto& [text, background] : roles) {
        const double ratio = qm::ContrastRatio(FromQColor(p.color(text)), FromQColor(p.color(background)));
        QVERIFY2(ratio >= qm::kMinimumTextContrast, qPrintable(QString("%1: role %2").arg(scheme.c_str()).arg(text)));
      }
      QCOMPARE(FromQColor(p.color(QPalette::Window)), c[qm::kGridColour]);
      // So do the window's own lists and bars.
      for (const char* name : {"PathSteps", "CoachToolBar"}) {
        auto* widget = window.findChild<QWidget*>(name);
        QVERIFY2(widget != nullptr, name);
        QCOMPARE(FromQColor(widget->palette().color(QPalette::Base)), c[qm::kCellColour]);
        QCOMPARE(FromQColor(widget->palette().color(QPalette::WindowText)), c[qm::kTextColour]);
      }
      const double disabled = qm::ContrastRatio(FromQColor(p.color(QPalette::Disabled, QPalette::WindowText)),
                                                FromQColor(p.color(QPalette::Disabled, QPalette::Window)));
      QVERIFY2(disabled >= qm::kMinimumTextContrast, scheme.c_str());
    }
  }

  void newGridForgetsThePreviousPuzzle() {
    qm::test::WindowFixture f;
    auto& model = f.Open().Model();
    QVERIFY(!model.Comment.empty());
    QVERIFY(model.RecordNumber > 0);
    f.Trigger("mnunewx2");
    QCOMPARE(model.GridSize, 5);
    QVERIFY(std::all_of(model.SolutionText.begin(), model.SolutionText.end(),
                        [](const std::string& s) { return s.empty(); }));
    QVERIFY(model.Comment.empty());
    QCOMPARE(model.RecordNumber, 0);
  }

  void htmlIsOfferedOnlyWhereATemplateExists() {
    qm::test::WindowFixture f;
    f.Open();
    QAction* html = f.Action("mnusavehtml");
    auto* saveAs = f.Action("mnusave")->menu();
    for (int n = 3; n <= 9; ++n) {
      f.Trigger(qPrintable(QStringLiteral("mnunewx%1").arg(n - 3)));
      emit saveAs->aboutToShow();
      QCOMPARE(html->isVisible(), n <= 5);
    }
  }

  void printRangeTakesOnlyAFullRange() {
    qm::ui::PrintRangeDialog dialog(10, 3, nullptr);
    auto* last = dialog.findChild<QSpinBox*>("Last");
    last->findChild<QLineEdit*>()->clear();
    dialog.accept();
    QVERIFY(dialog.result() != QDialog::Accepted);
    last->setValue(4);
    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(dialog.First() <= dialog.Last());
  }

  void startOnAPuzzleThatIsNotThere() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    QVERIFY(f.messages.isEmpty());  // the shipped settings file: a quiet start
    const std::string file = window.Model().CurrentFile;
    QVERIFY(!window.StartOnPuzzle("999"));
    QCOMPARE(f.messages.last(), QString::fromStdString(qm::ReadErrorMessage(999, file)));
    QCOMPARE(window.Model().CurrentPuzzle, 1);
    QVERIFY(window.Model().ClueCount > 0);
    QVERIFY(!window.StartOnPuzzle("abc"));
    QCOMPARE(f.messages.last(), QString("Not a puzzle number: abc"));
    QVERIFY(window.StartOnPuzzle("2"));
    QCOMPARE(window.Model().CurrentPuzzle, 2);
  }

  void aBrokenSettingsFileIsStillReported() {
    qm::test::WindowFixture f;
    qm::test::WriteBytes(f.AppDir() + "Quillmere.cfg", qm::test::CrLf({"x", "default.col"}));
    f.Open(false);
    QCOMPARE(f.messages.size(), 1);
    QVERIFY(f.messages[0].endsWith("could not be accessed, new file will be created"));
  }

  void messageBoxesNameTheProgramAndMarkErrors() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    window.SetDialogHandler({});
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    auto answer = [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      QVERIFY(box != nullptr);
      title = box->windowTitle();
      icon = box->icon();
      box->accept();
    };
    QTimer::singleShot(0, &window, answer);
    window.ShowMessage("Error writing to file: x.txt");
    QCOMPARE(title, QString("Quillmere"));
    QCOMPARE(icon, QMessageBox::Critical);
    QTimer::singleShot(0, &window, answer);
    window.ShowMessage("Done");
    QCOMPARE(icon, QMessageBox::Information);
    QCOMPARE(qm::ui::MessageIcon("Color Scheme: x.col not found"), QMessageBox::Critical);
    QCOMPARE(qm::ui::MessageIcon("Puzzle saved as text file:"), QMessageBox::Information);
  }

  void bitmapNamesGetTheirExtension() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    window.SetFileHandler([&](const qm::FileChoice&) { return QString::fromStdString(f.AppDir() + "grid"); });
    f.Trigger("mnupuzimage");
    QCOMPARE(f.messages.last(), QString::fromStdString("Puzzle saved as Bitmap File:\r\n" + f.AppDir() + "grid.bmp"));
    QVERIFY(std::filesystem::exists(f.AppDir() + "grid.bmp"));
    QCOMPARE(qm::ui::WithBitmapExtension("a.BMP"), QString("a.BMP"));
  }

  void puzzleNumberTakesDigitsOnly() {
    qm::test::WindowFixture f;
    auto& window = f.Open();
    auto* number = window.findChild<QLineEdit*>("PuzNumNow");
    number->clear();
    QTest::keyClicks(number, "a1b2-");
    QCOMPARE(number->text(), QString("12"));
  }

  void theFirstWindowFitsTheScreen() {
    // QT_SCALE_FACTOR=2 halves the logical screen: a 1280x800 desktop is 640x400.
    const QRect small(0, 0, 640, 400);
    const QSize fitted = qm::ui::FitToScreen(QSize(980, 720), small);
    QVERIFY(fitted.width() <= small.width() && fitted.height() <= small.height());
    QCOMPARE(qm::ui::FitToScreen(QSize(980, 720), QRect(0, 0, 1920, 1080)), QSize(980, 720));
  }
};

QM_UI_TEST(WindowFixesTest);
#include "test_window_fixes.moc"
