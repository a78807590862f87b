#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>
#include <QTimer>

#include "core/collection_file.h"
#include "core/text_file.h"
#include "ui/main_window.h"
#include "ui/window_setup.h"

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
      qWarning("%s", qPrintable(text));
      return true;
    });
  }
  // A large scale factor or a small screen: the window still fits.
  const QScreen* screen = window.screen() != nullptr ? window.screen() : QGuiApplication::primaryScreen();
  window.resize(qm::ui::FitToScreen(QSize(980, 720), screen != nullptr ? screen->availableGeometry() : QRect()));
  window.show();
  window.StartUp();
  bool started = true;
  if (options.isSet(puzzle)) started = window.StartOnPuzzle(options.value(puzzle));
  if (options.isSet(screenshot)) {
    // Let the window settle and paint, then picture it.
    QTimer::singleShot(400, &window, [&window, started, path = options.value(screenshot)] {
      window.grab().save(path);
      QApplication::exit(started ? 0 : 1);
    });
  }
  return QApplication::exec();
}
