#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QListWidget>
#include <QScreen>
#include <QTimer>

#include "core/collection_file.h"
#include "core/text_file.h"
#include "ui/coach_controller.h"
#include "ui/main_window.h"
#include "ui/path_panel.h"
#include "ui/window_setup.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Quillmere");
  QApplication::setApplicationVersion("2.0");

  QCommandLineParser options;
  options.setApplicationDescription("Quillmere: a workbench for inequality puzzles");
  options.addHelpOption();
  options.addVersionOption();
  const QCommandLineOption screenshot("screenshot", "Save a picture of the window to FILE and quit.", "FILE");
  const QCommandLineOption puzzle("puzzle", "Start on puzzle N of the current collection.", "N");
  const QCommandLineOption scheme("scheme", "Use the colour scheme NAME (such as slate) for this run.", "NAME");
  const QCommandLineOption pathStep("path-step", "Open the solution path on its step N.", "N");
  const QCommandLineOption hint("hint", "Ask Solve > Next Step for a hint LEVEL times (1 or 2).", "LEVEL");
  options.addOption(screenshot);
  options.addOption(puzzle);
  options.addOption(scheme);
  options.addOption(pathStep);
  options.addOption(hint);
  options.addPositionalArgument("file", "A collection file (*.fut) to open.", "[file]");
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
  // A collection named on the command line (a double-click on a *.fut file) opens first.
  if (!options.positionalArguments().isEmpty()) {
    started = window.OpenFile(options.positionalArguments().front());
  }
  if (options.isSet(puzzle)) started = window.StartOnPuzzle(options.value(puzzle)) && started;
  if (options.isSet(scheme)) {
    auto* schemes = window.findChild<QComboBox*>("Combo1");
    const int index = schemes->findText(options.value(scheme));
    if (index >= 0) {
      schemes->setCurrentIndex(index);
      emit schemes->activated(index);
    } else {
      qWarning("No colour scheme named %s", qPrintable(options.value(scheme)));
      started = false;
    }
  }
  qm::ui::CoachController& coach = *window.Coach();
  if (options.isSet(pathStep)) coach.Panel()->show();
  for (int i = 0; i < options.value(hint).toInt(); ++i) coach.NextStep();
  // The path is worked out in the background: wait for it before choosing a step and
  // taking the picture.
  auto* settle = new QTimer(&window);
  settle->setInterval(100);
  QObject::connect(settle, &QTimer::timeout, &window, [&, settle, waited = 0]() mutable {
    if (!coach.Panel()->HasPath() && ++waited < 300) return;
    settle->stop();
    if (options.isSet(pathStep)) {
      coach.Panel()->Steps()->setCurrentRow(options.value(pathStep).toInt() - 1);
      coach.Panel()->Steps()->scrollToItem(coach.Panel()->Steps()->currentItem());
    }
    if (options.isSet(screenshot)) {
      // Let the window paint, then picture it.
      QTimer::singleShot(300, &window, [&window, started, path = options.value(screenshot)] {
        window.grab().save(path);
        QApplication::exit(started ? 0 : 1);
      });
    }
  });
  settle->start();
  return QApplication::exec();
}
