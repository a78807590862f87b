#include "ui/menu_keys.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <array>

namespace qm::ui {

namespace {

// Entries that ask for more before they act.
constexpr std::array kDialogEntries = {"mnuload",      "mnusaveas",  "mnusortpuz", "mnuappend",
                                       "mnusaveassli", "mnupuzimage", "mnusavetxt", "mnusavexls",
                                       "mnusavehtml",  "mnumultipuzx", "mnuprintcurrent", "mnuprintfile"};

// The toggles, which show a check mark.
constexpr std::array kToggles = {"mnucolx", "mnycellcolor", "mnuviewsol", "mnupencil", "mnuconflicts",
                                 "mnuanydigit", "mnushowtimer", "mnupathpanel"};

struct Shortcut {
  const char* name;
  QList<QKeySequence> keys;
};

QList<Shortcut> Shortcuts() {
  return {{"mnuload", {QKeySequence(Qt::CTRL | Qt::Key_O)}},
          {"mnuprintcurrent", {QKeySequence(Qt::CTRL | Qt::Key_P)}},
          {"cmdexit", {QKeySequence(Qt::CTRL | Qt::Key_Q)}},
          {"mnuhelp", {QKeySequence(Qt::Key_F1)}},
          {"mnuundo", {QKeySequence(Qt::CTRL | Qt::Key_Z)}},
          {"mnuredo", {QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)}},
          {"mnupencil", {QKeySequence(Qt::Key_P)}},
          {"mnunextstep", {QKeySequence(Qt::Key_F3)}}};
}

// Preferred letters where the first free one would break a habit.
QChar Preferred(const QString& caption) {
  if (caption == "Exit") return 'x';
  if (caption == "Save As") return 'A';
  return {};
}

QString WithMnemonic(const QString& caption, QSet<QChar>& taken) {
  if (caption.contains('&')) {
    const auto at = caption.indexOf('&');
    if (at + 1 < caption.size()) taken.insert(caption[at + 1].toLower());
    return caption;
  }
  auto mark = [&](qsizetype at) {
    taken.insert(caption[at].toLower());
    return caption.left(at) + '&' + caption.mid(at);
  };
  const QChar preferred = Preferred(caption);
  if (!preferred.isNull()) {
    const auto at = caption.indexOf(preferred);
    if (at >= 0 && !taken.contains(preferred.toLower())) return mark(at);
  }
  // First letters of words, then any letter or digit.
  for (qsizetype i = 0; i < caption.size(); ++i) {
    const bool wordStart = i == 0 || !caption[i - 1].isLetterOrNumber();
    if (wordStart && caption[i].isLetterOrNumber() && !taken.contains(caption[i].toLower())) return mark(i);
  }
  for (qsizetype i = 0; i < caption.size(); ++i) {
    if (caption[i].isLetterOrNumber() && !taken.contains(caption[i].toLower())) return mark(i);
  }
  return caption;
}

void Decorate(QMenu& menu, const std::function<bool(const QString&)>& isOn) {
  for (QAction* action : menu.actions()) {
    const QString name = action->menu() != nullptr ? action->menu()->menuAction()->objectName() : action->objectName();
    if (std::find(kDialogEntries.begin(), kDialogEntries.end(), name) != kDialogEntries.end() &&
        !action->text().endsWith(QChar(0x2026))) {
      action->setText(action->text() + QChar(0x2026));
    }
    if (std::find(kToggles.begin(), kToggles.end(), name) != kToggles.end()) action->setCheckable(true);
    for (const Shortcut& shortcut : Shortcuts()) {
      if (name == shortcut.name) action->setShortcuts(shortcut.keys);
    }
    if (action->menu() != nullptr) Decorate(*action->menu(), isOn);
  }
  AddMnemonics(menu);
  if (isOn) {
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, isOn] {
      for (QAction* action : menu.actions()) {
        if (action->isCheckable() && std::find(kToggles.begin(), kToggles.end(), action->objectName()) != kToggles.end()) {
          action->setChecked(isOn(action->objectName()));
        }
      }
    });
  }
}

}  // namespace

void AddMnemonics(QMenu& menu) {
  QSet<QChar> taken;
  for (QAction* action : menu.actions()) {
    if (!action->isSeparator() && action->text().contains('&')) taken.insert(action->text()[action->text().indexOf('&') + 1].toLower());
  }
  for (QAction* action : menu.actions()) {
    if (action->isSeparator() || action->text().isEmpty()) continue;
    action->setText(WithMnemonic(action->text(), taken));
  }
}

void DecorateMenus(QMenuBar& bar, std::function<bool(const QString& name)> isOn) {
  QSet<QChar> taken;
  for (QAction* action : bar.actions()) {
    if (action->menu() == nullptr) continue;
    if (action->text() == "Print") {
      action->setText("P&rint");  // "Puzzle" has the P
      taken.insert('r');
    }
  }
  for (QAction* action : bar.actions()) {
    if (action->menu() == nullptr) continue;
    action->setText(WithMnemonic(action->text(), taken));
    Decorate(*action->menu(), isOn);
  }
}

}  // namespace qm::ui
