#include <QAction>
#include <QImage>
#include <QtTest>
#include <filesystem>

#include "support/test_files.h"
#include "ui/grid_widget.h"
#include "ui/main_window.h"
#include "ui/ui_tests.h"

using qm::ui::MainWindow;

class BitmapExportTest : public QObject {
  Q_OBJECT

 private slots:
  void savesTheGridAsAReadableBitmap() {
    qm::test::TempDir dir;
    const std::string appDir = dir.Path() + "/";
    for (const char* name : {"puzzles.fut", "all.col"}) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, appDir + name);
    }
    MainWindow window(appDir);
    QStringList messages;
    QStringList questions;
    bool answer = false;
    window.SetDialogHandler([&](const QString& text, bool question) {
      (question ? questions : messages) << text;
      return answer;
    });
    QString chosen = QString::fromStdString(appDir + "grid.bmp");
    QStringList patterns;
    window.SetFileHandler([&](const qm::FileChoice& choice) {
      patterns << QString::fromStdString(choice.patterns + "|" + choice.description);
      return chosen;
    });
    window.resize(900, 650);
    window.show();
    window.StartUp();
    messages.clear();

    auto* action = window.findChild<QAction*>("mnupuzimage");
    QVERIFY(action->isEnabled());
    action->trigger();
    QCOMPARE(patterns, QStringList{"*.bmp|Bitmap Files"});
    QCOMPARE(messages.last(), "Puzzle saved as Bitmap File:\r\n" + chosen);
    QImage image(chosen, "BMP");
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), window.Grid()->grab().size());

    // An existing file is kept when the user says No to overwriting it.
    const auto before = std::filesystem::file_size(chosen.toStdString());
    qm::test::WriteBytes(chosen.toStdString(), "keep");
    action->trigger();
    QCOMPARE(questions.size(), 1);
    QCOMPARE(qm::test::ReadBytes(chosen.toStdString()), std::string("keep"));
    QVERIFY(before > 4);

    // A folder that cannot be written reports the failure.
    chosen = QString::fromStdString(appDir + "no/such/dir/grid.bmp");
    action->trigger();
    QCOMPARE(messages.last(), "Error writing to file: " + chosen);
  }
};

QM_UI_TEST(BitmapExportTest);
#include "test_bitmap_export.moc"
