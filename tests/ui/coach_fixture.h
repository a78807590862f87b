// A window on a private copy of the shipped files, with its message boxes, questions
// and choosers answered by the test.
#pragma once

#include <QAction>
#include <QStringList>
#include <QtTest>
#include <filesystem>
#include <memory>
#include <string>

#include "support/test_files.h"
#include "ui/main_window.h"

namespace qm::test {

struct WindowFixture {
  std::unique_ptr<TempDir> dir = std::make_unique<TempDir>();
  std::unique_ptr<ui::MainWindow> window;
  QStringList messages;
  QStringList questions;
  bool answer = true;

  std::string AppDir() const { return dir->Path() + "/"; }

  void Copy(std::initializer_list<const char*> names) {
    for (const char* name : names) {
      std::filesystem::copy_file(std::string(QUILLMERE_APP_DIR) + name, AppDir() + name,
                                 std::filesystem::copy_options::overwrite_existing);
    }
  }

  // Opens the window; the settings file is made first so that start-up is quiet.
  ui::MainWindow& Open(bool withSettings = true) {
    Copy({"puzzles.fut", "all.col"});
    if (withSettings) Copy({"Quillmere.cfg"});
    window = std::make_unique<ui::MainWindow>(AppDir());
    window->SetDialogHandler([this](const QString& text, bool question) {
      (question ? questions : messages) << text;
      return answer;
    });
    window->resize(900, 650);
    window->show();
    window->StartUp();
    return *window;
  }

  QAction* Action(const char* name) const { return window->findChild<QAction*>(name); }
  void Trigger(const char* name) const {
    QAction* action = Action(name);
    QVERIFY2(action != nullptr, name);
    action->trigger();
  }
};

}  // namespace qm::test
