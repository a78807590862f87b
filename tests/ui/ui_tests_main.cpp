#include <QApplication>
#include <QtTest>

#include "ui/ui_tests.h"

namespace qm::test {

std::vector<UiTestFactory>& UiTests() {
  static std::vector<UiTestFactory> tests;
  return tests;
}

}  // namespace qm::test

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  int failed = 0;
  for (const auto& make : qm::test::UiTests()) {
    const std::unique_ptr<QObject> test = make();
    failed += QTest::qExec(test.get(), argc, argv) != 0 ? 1 : 0;
  }
  return failed;
}
