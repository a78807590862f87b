#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

#include "core/collection_file.h"
#include "core/text_file.h"
#include "ui/main_window.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Quillmere");
  QApplication::setApplicationVersion("2.0");

  QCommandLineParser options;
  options.setApplicationDescription("Quillmere: a workbench for inequality puzzles");
  options.addHelpOption();
  const QCommandLineOption screenshot("screenshot", "Save a picture of the window to FILE and quit.", "FILE");
  const QCommandLineOption puzzle("puzzle", "Start on puzzle N of the current collection.", "N");
  options.addOption(screenshot);
  options.addOption(puzzle);
  options.process(app);

  qm::ui::MainWindow window(qm::ApplicationDirectory());
  if (options.isSet(screenshot)) {
    // Nobody is there to close a message box: print it instead.
    window.SetDialogHandler([](const QString& text, bool) {
      qInfo("%s", qPrintable(text));
      return true;
    });
  }
  window.resize(980, 720);
  window.show();
  window.StartUp();
  if (options.isSet(puzzle)) {
    qm::PuzzleModel& model = window.Model();
    qm::ReadPuzzle(model, window, model.CurrentFile, options.value(puzzle).toInt());
  }
  if (options.isSet(screenshot)) {
    // Let the window settle and paint, then picture it.
    QTimer::singleShot(400, &window, [&window, path = options.value(screenshot)] {
      window.grab().save(path);
      QApplication::exit(0);
    });
  }
  return QApplication::exec();
}
