#include "commands/settings_commands.h"

#include "settings/config_file.h"

namespace qm {

void ReadSettings(PuzzleModel& model, WindowPort& port, std::time_t now) {
  if (ReadSettingsFile(model)) return;
  port.ShowMessage(SettingsUnreachableMessage(model, "new file will be created"));
  // A file that cannot be created either is reported again at Exit.
  WriteDefaultSettings(model, now);
}

void WriteSettings(const PuzzleModel& model, WindowPort& port, std::time_t now) {
  if (!WriteSettingsFile(model, now)) port.ShowMessage(SettingsUnreachableMessage(model, "options not saved"));
}

int LoadScheme(PuzzleModel& model, ColourTable& table, WindowPort& port, const std::string& name) {
  if (ReadScheme(model.AppDir, table, name)) return 1;
  port.ShowMessage("Color Scheme: " + name + " not found");
  model.SchemeFile = "default.col";
  return 0;
}

int SelectScheme(PuzzleModel& model, ColourTable& table, WindowPort& port, const std::string& listText) {
  const std::string name = listText + ".col";
  const int loaded = LoadScheme(model, table, port, name);
  model.SchemeFile = name;
  return loaded;
}

}  // namespace qm
