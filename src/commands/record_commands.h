// Reading and writing one puzzle record as the commands do it: the busy pointer while
// the file is read, the grid and the puzzle panel redrawn after, and the message of a
// failed write.
#pragma once

#include <string>

#include "core/collection_file.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

// Loads puzzle n of `path` (n = -1: clears the grid) and shows it.
// `freshLines`: the status and progress lines are cleared, as they spoke of the puzzle
// shown before (a batch keeps its own report there).
ReadResult ReadPuzzle(PuzzleModel& model, WindowPort& port, const std::string& path, int n,
                      bool freshLines = true);

// Appends the current puzzle as one record numbered `number`. On failure shows
// "Error writing puzzle# N to file: path" and returns false.
bool WritePuzzle(const PuzzleModel& model, WindowPort& port, const std::string& comment, int number,
                 const std::string& path);

// Appends the current puzzle once per found solution; on failure shows
// "Error writing puzzle to file: path".
bool WritePuzzleWithSolutions(const PuzzleModel& model, WindowPort& port, const std::string& comment,
                              int firstNumber, const std::string& path);

}  // namespace qm
