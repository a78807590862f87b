// "Quillmere.cfg" in the application directory: five lines kept between runs.
//
//   11-21-2026 23:05:00     when it was written (ignored on reading)
//   default.col             the colour scheme in use
//    0                      cells drawn in a colour of their own: 1 on, 0 off
//   /path/to/puzzles.fut    the current collection file
//   4000                    milliseconds between the steps of a paced solve
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "core/puzzle_model.h"

namespace qm {

inline constexpr std::string_view kConfigFileName = "Quillmere.cfg";
inline constexpr int kMinPace = 10;
inline constexpr int kMaxPace = 20000;
inline constexpr int kDefaultPaceMs = 4000;

// Reads the settings into the model; false at the first line that is missing (what was
// read before it stays).
bool ReadSettingsFile(PuzzleModel& model);
// Puts the scheme and the cell colouring back to their defaults and writes the file
// anew with them; false when it cannot be written.
bool WriteDefaultSettings(PuzzleModel& model, std::time_t now);
// Writes the settings; false when the file cannot be written.
bool WriteSettingsFile(const PuzzleModel& model, std::time_t now);

// "Configuration file:", the path and "could not be accessed, " + consequence.
std::string SettingsUnreachableMessage(const PuzzleModel& model, std::string_view consequence);

// "month-day-year hours:minutes:seconds" in local time, as line 1 holds it.
std::string SettingsTimeStamp(std::time_t now);

}  // namespace qm
