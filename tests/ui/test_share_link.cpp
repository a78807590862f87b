#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QTimer>
#include <QtTest>
#include <filesystem>

#include "core/share_code.h"
#include "support/test_files.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;

class ShareLinkTest : public QObject {
  Q_OBJECT

  // Answers the next input dialog with `text` (or cancels it).
  static void AnswerInput(const QString& text, bool accept) {
    QTimer::singleShot(0, [text, accept] {
      auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
      QVERIFY(dialog != nullptr);
      dialog->setTextValue(text);
      accept ? dialog->accept() : dialog->reject();
    });
  }

 private slots:
  void copiesTheLinkAndOpensCodes() {
    qm::test::TempDir dir;
    const std::string appDir = dir.Path() + "/";
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, appDir + name);
    }
    MainWindow window(appDir);
    QStringList messages;
    window.SetDialogHandler([&](const QString& text, bool) {
      messages << text;
      return true;
    });
    window.show();
    window.StartUp();
    messages.clear();

    const std::string code = qm::EncodeShareCode(window.Model());
    window.findChild<QAction*>("mnucopysharelink")->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromStdString("#p=" + code));

    // A whole link opens the puzzle it holds, as a puzzle in no file yet.
    AnswerInput("http://127.0.0.1:8080/#p=3-1LmUh2", true);
    window.findChild<QAction*>("mnuopensharelink")->trigger();
    QCOMPARE(window.Model().GridSize, 3);
    QCOMPARE(window.Model().PosText[1], std::string("<"));
    QCOMPARE(window.Model().Modified, 1);
    QVERIFY(messages.isEmpty());

    // A bad code says why and leaves the grid alone; a cancelled dialog does nothing.
    AnswerInput("3-9x", true);
    window.findChild<QAction*>("mnuopensharelink")->trigger();
    QVERIFY(messages.last().startsWith("Not a share code: The digit 9 does not fit"));
    QCOMPARE(qm::EncodeShareCode(window.Model()), std::string("3-1LmUh2"));
    AnswerInput("4-zzw", false);
    window.findChild<QAction*>("mnuopensharelink")->trigger();
    QCOMPARE(window.Model().GridSize, 3);
  }
};

QM_UI_TEST(ShareLinkTest);
#include "test_share_link.moc"
