#include "settings/config_file.h"

#include <algorithm>

#include "core/file_replace.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

std::string ConfigPath(const PuzzleModel& model) { return model.AppDir + std::string(kConfigFileName); }

std::string Unreachable(const PuzzleModel& model, std::string_view consequence) {
  return "Configuration file:" + std::string(kLineBreak) + ConfigPath(model) + std::string(kLineBreak) +
         "could not be accessed, " + std::string(consequence);
}

// Reads lines 1 to 5 into the model; false at the first line that is missing.
bool ReadLines(PuzzleModel& model) {
  LineReader file(ConfigPath(model));
  std::string line;
  if (!file.IsOpen() || !file.ReadLine(line)) return false;  // the time stamp, ignored
  if (!file.ReadLine(line)) return false;
  std::size_t pos = 0;
  model.SchemeFile = ReadDelimitedField(line, pos);
  if (!file.ReadLine(line)) return false;
  model.CellColouring = IntegerValue(Trim(line));
  if (!file.ReadLine(line)) return false;
  model.CurrentFile = line;
  if (!file.ReadLine(line)) return false;
  model.PacingInterval = std::clamp(IntegerValue(line), kMinPace, kMaxPace);
  return !file.Failed();
}

}  // namespace

std::string SettingsTimeStamp(std::time_t now) {
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%m-%d-%Y %H:%M:%S", &local);
  return text;
}

void ReadSettings(PuzzleModel& model, WindowPort& port, std::time_t now) {
  if (ReadLines(model)) return;
  port.ShowMessage(Unreachable(model, "new file will be created"));
  model.SchemeFile = "default.col";
  model.CellColouring = kNo;
  TextBuilder defaults;
  defaults.Line(SettingsTimeStamp(now))
      .Line(model.SchemeFile)
      .Line(Str(model.CellColouring))
      .Line(model.AppDir + "puzzles.fut")
      .Line(std::to_string(kDefaultPaceMs));
  // A file that cannot be created either is reported again at Exit.
  ReplaceFileWith(ConfigPath(model), defaults.Text());
}

void WriteSettings(const PuzzleModel& model, WindowPort& port, std::time_t now) {
  // Reading clamps an interval out of range; writing replaces it with the default.
  const int pace = model.PacingInterval < kMinPace || model.PacingInterval > kMaxPace ? kDefaultPaceMs
                                                                                      : model.PacingInterval;
  TextBuilder settings;
  settings.Line(SettingsTimeStamp(now))
      .Line(model.SchemeFile)
      .Line(Str(model.CellColouring))
      .Line(model.CurrentFile)
      .Line(std::to_string(pace));
  if (!ReplaceFileWith(ConfigPath(model), settings.Text())) {
    port.ShowMessage(Unreachable(model, "options not saved"));
  }
}

}  // namespace qm
