// Share codes: one puzzle as a short text that fits in a link. "N-" and the puzzle half
// of the record's grid lines joined in order, signs as letters (< L, > G, ^ U, v D) and
// each run of 1..26 blanks as one lower-case letter (a = 1 ... z = 26).
#pragma once

#include <string>
#include <string_view>

#include "core/puzzle_model.h"

namespace qm {

// The code of the model's puzzle: its clues (GivenValue) and its signs. Digits the
// player entered that are not clues, candidate lists and the solution are left out.
std::string EncodeShareCode(const PuzzleModel& model);

// The link that opens a code in the web edition, relative to the page: "#p=" + code.
std::string ShareLink(std::string_view code);

struct ShareCodeReading {
  bool ok = false;
  std::string error;   // why the code was refused, for people
  int size = 0;        // N
  std::string layout;  // (2N-1)^2 record characters, row by row: digits, "<>^v", "."
};

// Reads a code, or the code in a link (what follows "#p="); surrounding blanks are
// ignored. Refuses a
// size outside 3..9, a wrong length, a sign in a cell position or in the wrong kind of
// sign slot, a digit in a sign position or a corner, a digit above N, and any other
// character.
ShareCodeReading ReadShareCode(std::string_view code);

// Loads a code into the model as a record without a solution would load: clues become
// givens, signs are shown, counts are set; the file, comment and history are left
// alone apart from what a new grid resets. False (model unchanged) on a bad code.
bool LoadShareCode(PuzzleModel& model, std::string_view code, std::string* error = nullptr);

}  // namespace qm
