// What the commands that choose a file share: the chooser that keeps the current
// directory, and the one save pattern of every export (chooser titled "Quillmere",
// overwrite question, busy pointer, success and failure messages).
#pragma once

#include <string>
#include <vector>

#include "core/command_result.h"
#include "core/file_replace.h"
#include "core/puzzle_model.h"
#include "core/window_port.h"

namespace qm {

inline constexpr const char* kCollectionPatterns = "*.fut;*.txt;*.dat";
inline constexpr const char* kCollectionDescription = "Quillmere Files";

// The file chooser; the process's current directory is the same afterwards whatever
// the chooser did to it. The empty string when the user cancelled.
std::string ChooseFileKeepingDirectory(WindowPort& port, const FileChoice& choice);

// A chooser of collection files (described as such) starting in the application
// directory.
std::string ChooseCollectionFile(const PuzzleModel& model, WindowPort& port, const std::string& title,
                                 const std::string& patterns, ChooserMode mode);

// The chooser every save command opens: titled "Quillmere", save mode, starting in the
// application directory.
std::string ChooseSaveFile(const PuzzleModel& model, WindowPort& port, const std::string& patterns,
                           const std::string& description);

// Asks "OverWrite file: NAME ?" when a file of that name exists (its length can be
// read); true when there is nothing to ask or the answer was Yes.
bool ConfirmOverwrite(WindowPort& port, const std::string& path);

// "Error writing to file: " + path.
std::string WriteErrorMessage(const std::string& path);

struct SaveCommand {
  std::string patterns;        // such as "*.txt"
  std::string description;     // such as "Text Files"
  std::string successMessage;  // shown with a line break and the file name
};

// The save pattern: choose a file (an empty name ends silently), confirm an existing
// one, then write it through ReplaceFile under the busy pointer and report success or
// "Error writing to file: NAME". A failed write leaves an existing file as it was.
CommandResult RunSaveCommand(const PuzzleModel& model, WindowPort& port, const SaveCommand& command,
                             const FileWriter& write);

// Puzzle -> "Save As" -> "Text File": the drawing of the current puzzle (its ordinal and
// its comment).
CommandResult mnusavetxt(const PuzzleModel& model, WindowPort& port);
// Puzzle -> "Save As" -> "XLS File": the worksheet of the current puzzle.
CommandResult mnusavexls(const PuzzleModel& model, WindowPort& port);
// The web page of the current puzzle (its comment as the description), asking "Save
// Solution also?" once the puzzle table is done; a missing template ends in "Error
// writing to file: NAME".
CommandResult SaveHtmlFile(const PuzzleModel& model, WindowPort& port,
                           const std::vector<std::string>& templateDirectories);

}  // namespace qm
