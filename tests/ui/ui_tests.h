// The window's test classes share one program; each file registers its class here.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <vector>

namespace qm::test {

using UiTestFactory = std::function<std::unique_ptr<QObject>()>;
std::vector<UiTestFactory>& UiTests();

struct UiTestRegistration {
  explicit UiTestRegistration(UiTestFactory factory) { UiTests().push_back(std::move(factory)); }
};

}  // namespace qm::test

#define QM_UI_TEST(Class) \
  static const qm::test::UiTestRegistration registration##Class([] { return std::make_unique<Class>(); })
