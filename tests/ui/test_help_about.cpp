#include <QAction>
#include <QDialog>
#include <QTextBrowser>
#include <QtTest>
#include <filesystem>

#include "support/test_files.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;

class HelpAboutTest : public QObject {
  Q_OBJECT

 private slots:
  void showsTheHelpPageAndTheAboutBox() {
    qm::test::TempDir dir;
    const std::string appDir = dir.Path() + "/";
    for (const char* name : {"puzzles.fut", "all.col", "Quillmere.htm"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, appDir + name);
    }
    MainWindow window(appDir);
    QStringList messages;
    window.SetDialogHandler([&](const QString& text, bool) {
      messages << text;
      return true;
    });
    window.StartUp();
    messages.clear();

    window.findChild<QAction*>("mnuabout")->trigger();
    QCOMPARE(messages.size(), 1);
    QVERIFY(messages[0].startsWith("Quillmere 2.0\r\n\r\n"));

    window.findChild<QAction*>("mnuhelp")->trigger();
    QVERIFY(window.HelpView() != nullptr && window.HelpView()->isVisible());
    const QString page = window.HelpView()->findChild<QTextBrowser*>("HelpText")->toPlainText();
    for (const char* topic : {"Entering a puzzle", "Stepping through a solution", "Hidden single", "Naked pair",
                              "Creating puzzles", "Sorting a collection", "Bitmap File", "Printing",
                              "The file format"}) {
      QVERIFY2(page.contains(topic), topic);
    }

    // Without its page the command says so instead of showing an empty window.
    std::filesystem::remove(appDir + "Quillmere.htm");
    MainWindow bare(appDir);
    bare.SetDialogHandler([&](const QString& text, bool) {
      messages << text;
      return true;
    });
    bare.findChild<QAction*>("mnuhelp")->trigger();
    QCOMPARE(messages.last(), QString::fromStdString("Help file not found:\r\n" + appDir + "Quillmere.htm"));
    QVERIFY(bare.HelpView() == nullptr);
  }
};

QM_UI_TEST(HelpAboutTest);
#include "test_help_about.moc"
