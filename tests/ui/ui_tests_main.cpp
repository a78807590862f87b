#include <QApplication>
#include <QtTest>

#include "ui/ui_tests.h"

namespace qm::test {

std::vector<UiTestFactory>& UiTests() {
  static std::vector<UiTestFactory> tests;
  return tests;
}

}  // namespace qm::test

// Runs every registered class. A first argument "Class" or "Class::function" runs only
// that class (or that function of it); the other arguments go to Qt Test as usual.
int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QString onlyClass;
  QStringList args;
  for (int i = 0; i < argc; ++i) args << QString::fromLocal8Bit(argv[i]);
  if (args.size() > 1 && !args[1].startsWith('-')) {
    const QStringList parts = args[1].split("::");
    onlyClass = parts[0];
    if (parts.size() > 1) {
      args[1] = parts[1];
    } else {
      args.removeAt(1);
    }
  }
  int failed = 0;
  for (const auto& make : qm::test::UiTests()) {
    const std::unique_ptr<QObject> test = make();
    if (!onlyClass.isEmpty() && onlyClass != test->metaObject()->className()) continue;
    failed += QTest::qExec(test.get(), args) != 0 ? 1 : 0;
  }
  return failed;
}
