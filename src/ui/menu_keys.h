// The keyboard side of the menus: a mnemonic on every menu and entry, the standard
// shortcuts, "…" on entries that open a dialog, and check marks on the toggles.
#pragma once

#include <QString>
#include <functional>

class QMenu;
class QMenuBar;

namespace qm::ui {

// Decorates every menu of the bar and the entries below it, found by their names. The
// toggles' check marks are read from `isOn` (by entry name) each time a menu opens.
void DecorateMenus(QMenuBar& bar, std::function<bool(const QString& name)> isOn = {});

// Gives each entry of one menu its own mnemonic (the first free letter of a word, else of
// the caption), keeping the captions otherwise as they are.
void AddMnemonics(QMenu& menu);

}  // namespace qm::ui
