// The commands over collection files: moving between puzzles, reload, open, append,
// delete, copy, save one puzzle, backup and the total of the view of all puzzles. Each
// talks to the window only through the port and ends by reading a puzzle with
// ReadPuzzle, which keeps CurrentFile, CurrentPuzzle and PuzzleCount.
#pragma once

#include <string>

#include "core/puzzle_model.h"
#include "core/window_port.h"
#include "commands/save_commands.h"

namespace qm {

// The navigation buttons `arrows`, by index.
enum class Arrow { Previous = 0, First = 1, Next = 2, Last = 3, Random = 4 };

// A navigation button: nothing while the solver runs; "Discard all changes?" when the
// puzzle was modified; then reads the target puzzle, wrapping at both ends. A failed read
// shows "Error reading puzzle# N" and reads the puzzle that was current before.
CommandResult MoveByArrow(PuzzleModel& model, WindowPort& port, Arrow arrow);

// Enter in `PuzNumNow`: reads the puzzle whose number is typed there when it lies in
// 1..PuzzleCount; any other number changes nothing but says "Error reading puzzle# N",
// as the button does.
CommandResult GoToTypedNumber(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow);

// The button beside `PuzNumNow`: reads the puzzle typed there without the range test.
CommandResult GoToPuzzleNumber(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow);

// Puzzle -> "Reload": reads the current puzzle again, discarding the edits.
CommandResult mnureload(PuzzleModel& model, WindowPort& port);

// File -> "Load": chooses a collection file and reads its first puzzle; when that fails
// the file, ordinal and count of before are kept.
CommandResult mnuload(PuzzleModel& model, WindowPort& port);
// Load's work once a file is chosen (also a file named on the window's command line).
CommandResult OpenCollection(PuzzleModel& model, WindowPort& port, const std::string& chosen);
// A collection file named on the window's command line: one that is not there is named
// ("No such file: NAME") and the puzzle shown stays; otherwise as OpenCollection.
CommandResult OpenNamedCollection(PuzzleModel& model, WindowPort& port, const std::string& path);

// Puzzle -> "Append": appends the current puzzle to a chosen file (all its found
// solutions when SolutionList has some and the user says so), then reads back.
CommandResult mnuappend(PuzzleModel& model, WindowPort& port);

// Puzzle -> "Delete": removes record `puzNumNow` from CurrentFile by copying the rest to
// "Quillmeretemp.tmp" in the current directory, which is then put in the collection's
// place; the temporary file is left where it is. The collection is only replaced once
// the copy is complete.
CommandResult mnudelete(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow);

// File -> "Copy": copies CurrentFile to a chosen file; CurrentFile stays.
CommandResult mnusaveas(PuzzleModel& model, WindowPort& port);

// Puzzle -> "Save As" -> "Quillmere File": appends the current puzzle alone to a chosen
// file.
CommandResult mnusaveassli(PuzzleModel& model, WindowPort& port);

// The first free backup name of `path`: puzzles.fut gives puzzles;01.fut (or the next
// free number), puzzles;05.fut gives puzzles;06.fut, and after 99 the numbers start
// again at 01. Empty when all 99 names are taken.
std::string BackupName(const std::string& path);

// File -> "Backup": copies CurrentFile to its backup name.
CommandResult mnubackup(PuzzleModel& model, WindowPort& port);

// File -> "View": the total shown on the view of all puzzles.
std::string ViewAllTotal(const PuzzleModel& model);

// The temporary file of the delete command, in the current directory.
inline constexpr const char* kDeleteTempFile = "Quillmeretemp.tmp";

}  // namespace qm
