#include "settings/config_file.h"

#include <algorithm>

#include "core/file_replace.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

std::string ConfigPath(const PuzzleModel& model) { return model.AppDir + std::string(kConfigFileName); }

}  // namespace

std::string SettingsUnreachableMessage(const PuzzleModel& model, std::string_view consequence) {
  return "Configuration file:" + std::string(kLineBreak) + ConfigPath(model) + std::string(kLineBreak) +
         "could not be accessed, " + std::string(consequence);
}

bool ReadSettingsFile(PuzzleModel& model) {
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

std::string SettingsTimeStamp(std::time_t now) {
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%m-%d-%Y %H:%M:%S", &local);
  return text;
}

bool WriteDefaultSettings(PuzzleModel& model, std::time_t now) {
  model.SchemeFile = "default.col";
  model.CellColouring = kNo;
  TextBuilder defaults;
  defaults.Line(SettingsTimeStamp(now))
      .Line(model.SchemeFile)
      .Line(Str(model.CellColouring))
      .Line(model.AppDir + "puzzles.fut")
      .Line(std::to_string(kDefaultPaceMs));
  return ReplaceFileWith(ConfigPath(model), defaults.Text());
}

bool WriteSettingsFile(const PuzzleModel& model, std::time_t now) {
  // Reading clamps an interval out of range; writing replaces it with the default.
  const int pace = model.PacingInterval < kMinPace || model.PacingInterval > kMaxPace ? kDefaultPaceMs
                                                                                      : model.PacingInterval;
  TextBuilder settings;
  settings.Line(SettingsTimeStamp(now))
      .Line(model.SchemeFile)
      .Line(Str(model.CellColouring))
      .Line(model.CurrentFile)
      .Line(std::to_string(pace));
  return ReplaceFileWith(ConfigPath(model), settings.Text());
}

}  // namespace qm
