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

#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

inline constexpr std::string_view kConfigFileName = "Quillmere.cfg";
inline constexpr int kMinPace = 10;
inline constexpr int kMaxPace = 20000;
inline constexpr int kDefaultPaceMs = 4000;

// Reads the settings into the model at start-up. A missing, unreadable or short file
// is reported and written anew with the defaults; what was read before the fault stays
// for the collection path and the pace, the scheme and the cell colouring go back to
// their defaults.
void ReadSettings(PuzzleModel& model, WindowPort& port, std::time_t now = std::time(nullptr));

// Writes the settings at Exit; a failure is reported and the exit goes on.
void WriteSettings(const PuzzleModel& model, WindowPort& port, std::time_t now = std::time(nullptr));

// "month-day-year hours:minutes:seconds" in local time, as line 1 holds it.
std::string SettingsTimeStamp(std::time_t now);

}  // namespace qm
