// The player's solving time on the shown puzzle, and the word when the player finishes
// it. The timer runs from the moment a puzzle is shown, pauses while the window is in the
// background, and stops when the grid is finished; the window only draws what it says.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "commands/coach_state.h"
#include "core/puzzle_model.h"

namespace qm {

class SolveTimer {
 public:
  // Milliseconds of a steady clock; tests hand in their own.
  using Clock = std::function<std::int64_t()>;
  SolveTimer();
  explicit SolveTimer(Clock clock) : clock_(std::move(clock)) {}

  // A new puzzle is shown: from zero; running unless it is finished already.
  void Restart(bool finished);
  // The window came to the front or went to the background.
  void SetInFront(bool inFront);
  // The grid was finished (stop) or is no longer (go on).
  void SetFinished(bool finished);

  std::int64_t ElapsedMs() const;
  bool Running() const { return inFront_ && !finished_; }
  bool Finished() const { return finished_; }

 private:
  void Bank();

  Clock clock_;
  std::int64_t banked_ = 0;  // time counted before the current run
  std::int64_t since_ = 0;   // when the current run started
  bool inFront_ = true;
  bool finished_ = false;
};

// "0:07", "12:34", "1:02:03".
std::string ClockText(std::int64_t ms);

// Every cell holds a digit and no rule is broken.
bool GridFinished(const PuzzleModel& model);

// What a player's action did to the grid's being finished.
enum class FinishChange { None, Finished, Unfinished };
// After an action of the player: compares the grid with what the timer knew and stops
// or restarts it.
FinishChange TrackFinish(SolveTimer& timer, const PuzzleModel& model);

// The status line and the note when the player finished the puzzle.
std::string FinishedStatusText(std::int64_t ms);
std::string FinishedNoteText(std::int64_t ms);

}  // namespace qm
