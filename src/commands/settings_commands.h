// The settings at start-up and Exit, and the colour scheme in use: the engine reads and
// writes them, these commands report what went wrong.
#pragma once

#include <ctime>
#include <string>

#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "settings/colour_schemes.h"

namespace qm {

// Reads the settings into the model at start-up. A missing, unreadable or short file
// is reported and written anew with the defaults; what was read before the fault stays
// for the collection path and the pace, the scheme and the cell colouring go back to
// their defaults.
void ReadSettings(PuzzleModel& model, WindowPort& port, std::time_t now = std::time(nullptr));

// Writes the settings at Exit; a failure is reported and the exit goes on.
void WriteSettings(const PuzzleModel& model, WindowPort& port, std::time_t now = std::time(nullptr));

// Loads the scheme `name` into the table. On failure shows "Color Scheme: " + name +
// " not found", makes "default.col" the scheme in use and returns 0; colours read
// before the failure stay. 1 when loaded.
int LoadScheme(PuzzleModel& model, ColourTable& table, WindowPort& port, const std::string& name);

// Choosing a scheme from the list: loads `listText` + ".col"; that name becomes the
// scheme in use even when it could not be loaded.
int SelectScheme(PuzzleModel& model, ColourTable& table, WindowPort& port, const std::string& listText);

}  // namespace qm
