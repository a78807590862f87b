// Sorting a collection file: copies the records of one collection file into another in
// a new order. The source file is never written.
#pragma once

#include <functional>
#include <string>

#include "core/puzzle_model.h"
#include "core/command_result.h"
#include "core/run_hooks.h"

namespace qm {

// The sort criteria, `Option1`.
inline constexpr int kSortByHeader = 0;       // "Header": the comment line
inline constexpr int kSortBySigns = 1;        // "No of Inequalities"
inline constexpr int kSortByNumber = 2;       // "Puzzle Number"
inline constexpr int kSortBySize = 3;         // "Grid Size"
// The sort orders, `Option2`.
inline constexpr int kSortAscending = 0;
inline constexpr int kSortDescending = 1;
inline constexpr int kSortRandom = 2;

struct SortRequest {
  std::string source;  // "Source Puzzles File"
  std::string output;  // "Output File Name"
  int Option1 = kSortByHeader;
  int Option2 = kSortAscending;
  bool resequence = false;  // "Resequence"
  std::string start;        // the "Start#" box
  // The dialog's progress label, given the number of records taken in so far.
  std::function<void(int)> progress;
};

struct SortOutcome {
  CommandResult result = CommandResult::Failed;
  int count = 0;  // records written
  std::string message;  // what the command reports
};

// Validates the request with the dialog's messages, sorts the records by their key
// (records with equal keys by their "#" line, as text), writes them in ascending or
// descending order, renumbered from "Start#" when asked (always for a random order by
// puzzle number); the message is " N puzzles sorted to file:" and the output name.
// Older records with a one-field size line come out with "5 " in front of it.
SortOutcome SortCollection(PuzzleModel& model, RunHooks& run, const SortRequest& request);

}  // namespace qm
