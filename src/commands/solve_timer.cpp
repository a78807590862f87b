#include "commands/solve_timer.h"

#include <chrono>


namespace qm {

SolveTimer::SolveTimer()
    : clock_([] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
      }) {}

void SolveTimer::Bank() {
  if (Running()) banked_ += clock_() - since_;
}

void SolveTimer::Restart(bool finished) {
  banked_ = 0;
  finished_ = finished;
  since_ = clock_();
}

void SolveTimer::SetInFront(bool inFront) {
  if (inFront == inFront_) return;
  Bank();
  inFront_ = inFront;
  since_ = clock_();
}

void SolveTimer::SetFinished(bool finished) {
  if (finished == finished_) return;
  Bank();
  finished_ = finished;
  since_ = clock_();
}

std::int64_t SolveTimer::ElapsedMs() const { return banked_ + (Running() ? clock_() - since_ : 0); }

std::string ClockText(std::int64_t ms) {
  const std::int64_t seconds = ms < 0 ? 0 : ms / 1000;
  const std::int64_t h = seconds / 3600;
  const std::int64_t m = seconds / 60 % 60;
  const std::int64_t s = seconds % 60;
  auto two = [](std::int64_t v) { return (v < 10 ? "0" : "") + std::to_string(v); };
  return h > 0 ? std::to_string(h) + ":" + two(m) + ":" + two(s) : std::to_string(m) + ":" + two(s);
}

bool GridFinished(const PuzzleModel& model) {
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (!IsCell(model, k)) continue;
    const std::string& text = model.PosText[k];
    if (text.size() != 1 || text[0] < '1' || text[0] > '0' + model.GridSize) return false;
  }
  return ConflictCells(model).empty();
}

FinishChange TrackFinish(SolveTimer& timer, const PuzzleModel& model) {
  const bool finished = GridFinished(model);
  if (finished == timer.Finished()) return FinishChange::None;
  timer.SetFinished(finished);
  return finished ? FinishChange::Finished : FinishChange::Unfinished;
}

std::string FinishedStatusText(std::int64_t ms) {
  return "Finished: every digit is in place and every rule holds (" + ClockText(ms) + ")";
}

std::string FinishedNoteText(std::int64_t ms) { return "Well done: puzzle finished in " + ClockText(ms) + "."; }

}  // namespace qm
