#include "commands/batch_creation.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>

#include "commands/record_commands.h"
#include "commands/save_commands.h"
#include "core/collection_file.h"
#include "core/rule_checks.h"
#include "core/text_rules.h"
#include "generator/solution_builder.h"
#include "reasoning/ladder.h"

namespace qm {

namespace {

struct BatchPlan {
  int count = 0;
  int gridSize = 0;  // 0: drawn for every puzzle
  std::string outputLine;
  std::uint64_t base = 0;
  int clueSpec = kCluesByLevel;
  int level = 3;
  std::function<bool(const PuzzleModel&)> accept;
  int shardIndex = 1;
  int shardCount = 1;
  // Creation by grade when it has bands.
  GradedBatch graded;
  GradedSymmetry symmetry = GradedSymmetry::None;
  // The batch's j-th puzzle is puzzle Index(j) of the whole request.
  // Wide: the last shard's index may lie near the top of int.
  long long Index(int j) const { return shardIndex + static_cast<long long>(j - 1) * shardCount; }
  bool Graded() const { return !graded.bands.empty(); }
  // The band of puzzle i of the whole request.
  const GradeBand& BandOf(long long i) const {
    for (const GradeBand& band : graded.bands) {
      if (i <= band.count) return band;
      i -= band.count;
    }
    return graded.bands.back();
  }
};

std::string SizeText(int n) { return std::to_string(n) + "x" + std::to_string(n); }

void ShowPuzzleProgress(WindowPort& port, const BatchPlan& plan, int i, int n) {
  port.SetProgressLine("New" + Str(i) + " of" + Str(plan.count));
  const std::string lineBreak(kLineBreak);
  port.SetProgressArea("Creating puzzle" + Str(i) + " of" + Str(plan.count) + lineBreak + "Size=" + SizeText(n) +
                       lineBreak + plan.outputLine);
}


int CountClues(const PuzzleModel& model) {
  int clues = 0;
  for (int k = 0; k <= model.LastPosition; ++k) clues += NumericValue(model.PosText[k]) > 0 ? 1 : 0;
  return clues;
}

// Makes puzzle i in `model` from its own stream, trying until CreatePuzzle succeeds.
// False when a cancel request stops it.
// `shown` is told the size of each attempt before it starts.
bool MakeBatchPuzzle(PuzzleModel& model, RunHooks& run, Generator& generator, const BatchPlan& plan, int i,
                     const std::function<void(int n)>& shown) {
  SeedRandom(model, PuzzleStreamSeed(plan.base, plan.Index(i)));
  // Each puzzle starts from the cell order of a fresh set-up: the order another
  // puzzle left would tie it to the puzzles made before it on the same model.
  generator.CellOrderSize = 0;
  for (;;) {
    run.Yield();
    const int n = plan.gridSize == 0 ? RandomDraw(model, kMaxGridSize - kMinGridSize + 1) + kMinGridSize - 1
                                     : plan.gridSize;
    SetSize(model, n);
    run.GridChanged();
    if (shown) shown(n);
    if (run.Cancelled()) return false;
    if (CreatePuzzle(model, run, generator) == kSolved && (!plan.accept || plan.accept(model))) return true;
  }
}

// A finished puzzle on its way from a worker's model to the batch's model.
struct FinishedPuzzle {
  int size = 0;
  PerPosition<std::string> texts;
  PerPosition<int> given{};
  PerPosition<std::string> solution;
  int clueCount = 0;
  int signCount = 0;
  int level = 0;
  // Graded creation: the grade, and the puzzle's form up to the grid's symmetries; or
  // why no puzzle came.
  int grade = 0;
  double score = 0;
  std::string key;
  bool failed = false;
  bool cancelled = false;
  std::string reason;
};

// Graded puzzle i of the batch from its own stream; a later attempt (a remake of a
// puzzle that came out the same as an earlier one) from a stream of its own.
FinishedPuzzle MakeGradedPuzzle(const BatchPlan& plan, int i, int attempt, const std::atomic<bool>* cancel) {
  const int whole = plan.Index(i);
  std::uint64_t seed = PuzzleStreamSeed(plan.base, whole);
  if (attempt > 0) seed = PuzzleStreamSeed(seed, attempt);
  const int n = plan.gridSize != 0 ? plan.gridSize
                                   : kMinGridSize + static_cast<int>(PuzzleStreamSeed(seed, 0) %
                                                                     (kMaxGridSize - kMinGridSize + 1));
  const GradeBand& band = plan.BandOf(whole);
  GradedOptions options;
  options.size = n;
  options.minGrade = band.minGrade;
  options.maxGrade = band.maxGrade;
  options.clues = GradedCluesFor(plan.clueSpec, plan.level, n);
  options.symmetry = plan.symmetry;
  options.minimal = plan.graded.minimal;
  options.minSignsPercent = plan.graded.minSignsPercent;
  options.maxTries = plan.graded.maxTries;
  const GradedResult made = CreateGraded(options, seed, cancel);
  FinishedPuzzle puzzle;
  puzzle.size = n;
  if (!made.made) {
    puzzle.failed = true;
    puzzle.cancelled = made.cancelled;
    puzzle.reason = made.reason;
    return puzzle;
  }
  PuzzleModel model;
  LoadGraded(model, made.puzzle);
  puzzle.texts = model.PosText;
  puzzle.given = model.GivenValue;
  puzzle.solution = model.SolutionText;
  // The level reads the clue count as the usual creation counts it: a single fixed
  // clue does not count.
  puzzle.clueCount = options.clues.kind == GradedClueRule::Kind::Fixed ? 0 : made.puzzle.ClueCount();
  puzzle.signCount = made.puzzle.SignCount();
  puzzle.level = LevelForClues(model, n, puzzle.clueCount);
  puzzle.grade = made.grade;
  puzzle.score = made.score;
  puzzle.key = std::to_string(n) + ":" + CanonicalPuzzleKey(made.puzzle);
  return puzzle;
}

// A worker's run: it stops when the batch stops.
class StopHooks : public RunHooks {
 public:
  explicit StopHooks(const std::atomic<bool>& stop) : stop_(stop) {}
  bool Cancelled() const override { return stop_; }

 private:
  const std::atomic<bool>& stop_;
};

// Worker threads that make the batch's puzzles ahead of the writer, each on a model of
// its own; the batch takes them in order.
class PuzzleWorkers {
 public:
  PuzzleWorkers(const BatchPlan& plan, int jobs) : plan_(plan), window_(4 * jobs) {
    try {
      for (int w = 0; w < jobs; ++w) threads_.emplace_back([this] { Work(); });
    } catch (...) {
      StopAndJoin();  // the threads already started must not outlive a failed start
      throw;
    }
  }
  ~PuzzleWorkers() { StopAndJoin(); }
  PuzzleWorkers(const PuzzleWorkers&) = delete;
  PuzzleWorkers& operator=(const PuzzleWorkers&) = delete;

  // Waits for puzzle i, letting the window's events through; nothing when the batch's
  // model receives a cancel request meanwhile.
  std::optional<FinishedPuzzle> Take(int i, RunControl& run) {
    // Once per puzzle even when the workers are ahead, so a Cancel is seen between puzzles.
    run.Yield();
    if (run.Cancelled()) return std::nullopt;
    std::unique_lock lock(mutex_);
    for (;;) {
      if (failure_) std::rethrow_exception(failure_);
      if (auto found = finished_.find(i); found != finished_.end()) {
        FinishedPuzzle puzzle = std::move(found->second);
        finished_.erase(found);
        taken_ = i;
        changed_.notify_all();
        return puzzle;
      }
      changed_.wait_for(lock, std::chrono::milliseconds(20));
      lock.unlock();
      run.Yield();
      lock.lock();
      if (run.Cancelled()) return std::nullopt;
    }
  }

 private:
  void StopAndJoin() {
    {
      std::lock_guard lock(mutex_);
      stop_ = true;
      changed_.notify_all();
    }
    for (std::thread& thread : threads_) thread.join();
  }

  void Work() {
    PuzzleModel model;
    Generator generator;
    generator.ClueSpec = plan_.clueSpec;
    generator.RequestedLevel = plan_.level;
    try {
      for (;;) {
        int i = 0;
        {
          std::unique_lock lock(mutex_);
          // Not too far ahead of the writer: finished puzzles wait in memory.
          changed_.wait(lock, [&] { return stop_ || next_ > plan_.count || next_ <= taken_ + window_; });
          if (stop_ || next_ > plan_.count) return;
          i = next_++;
        }
        FinishedPuzzle puzzle;
        if (plan_.Graded()) {
          puzzle = MakeGradedPuzzle(plan_, i, 0, &stop_);
          if (puzzle.cancelled) return;
        } else {
          StopHooks run(stop_);
          if (!MakeBatchPuzzle(model, run, generator, plan_, i, nullptr)) return;
          puzzle.size = model.GridSize;
          puzzle.texts = model.PosText;
          puzzle.given = model.GivenValue;
          puzzle.solution = model.SolutionText;
          puzzle.clueCount = generator.ClueCount;
          puzzle.signCount = generator.SignCount;
          puzzle.level = generator.LevelCode;
        }
        std::lock_guard lock(mutex_);
        finished_.emplace(i, std::move(puzzle));
        changed_.notify_all();
      }
    } catch (...) {
      std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::current_exception();
      stop_ = true;
      changed_.notify_all();
    }
  }

  const BatchPlan plan_;
  const int window_;
  std::mutex mutex_;
  std::condition_variable changed_;
  int next_ = 1;
  int taken_ = 0;
  std::atomic<bool> stop_ = false;
  std::exception_ptr failure_;
  std::map<int, FinishedPuzzle> finished_;
  std::vector<std::thread> threads_;
};

// Puts a worker's finished puzzle into the batch's model, as if it had been made there.
void LoadFinished(PuzzleModel& model, WindowPort& port, Generator& generator, FinishedPuzzle& puzzle) {
  SetSize(model, puzzle.size);
  model.PosText = std::move(puzzle.texts);
  model.GivenValue = puzzle.given;
  model.SolutionText = std::move(puzzle.solution);
  model.ClueCount = generator.ClueCount = puzzle.clueCount;
  model.ConstraintCount = generator.SignCount = puzzle.signCount;
  generator.LevelCode = puzzle.level;
  generator.GenerationResult = kSolved;
  port.RedrawGrid();
}

}  // namespace

std::string PuzzleFacts(const PuzzleModel& model, const Generator& generator) {
  return ", Size=" + SizeText(model.GridSize) + ", Constraints=" + Str(generator.SignCount) +
         ", Clues= " + std::to_string(generator.ClueCount) +
         ", Level= " + std::string(LevelNames[static_cast<std::size_t>(generator.LevelCode)]);
}

namespace {

// Single Puzzle with a grade: made on a worker thread while the window's events, Cancel
// among them, keep coming.
int CreateSingleGraded(PuzzleModel& model, RunControl& run, Generator& generator, const CreationSettings& settings) {
  WindowPort& port = run.Port();
  run.CancelRequest = false;
  port.SetBusy(true);
  port.SetProgressLine("Creating New Puzzle");
  model.SolverBusy = true;
  const int n = settings.gridSize != 0 ? settings.gridSize
                                       : RandomDraw(model, kMaxGridSize - kMinGridSize + 1) + kMinGridSize - 1;
  GradedOptions options;
  options.size = n;
  options.minGrade = options.maxGrade = settings.grade;
  options.clues = GradedCluesFor(settings.clueSpec, settings.level, n);
  options.symmetry = settings.symmetry;
  const std::uint64_t seed = model.Random();
  std::atomic<bool> stop = false;
  std::atomic<bool> done = false;
  GradedResult made;
  std::thread worker([&] {
    made = CreateGraded(options, seed, &stop);
    done = true;
  });
  while (!done) {
    run.Yield();
    if (run.Cancelled()) stop = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  worker.join();
  model.SolverBusy = false;
  run.CancelRequest = false;
  port.SetProgressLine("");
  port.SetBusy(false);
  if (!made.made) {
    if (!made.cancelled) port.ShowMessage("Could not create a puzzle graded " + reasoning::RungName(settings.grade) + ": " + made.reason);
    port.RefreshPuzzleInfo();
    return kBroken;
  }
  LoadGraded(model, made.puzzle);
  generator.ClueCount = options.clues.kind == GradedClueRule::Kind::Fixed ? 0 : made.puzzle.ClueCount();
  generator.SignCount = made.puzzle.SignCount();
  generator.LevelCode = LevelForClues(model, n, generator.ClueCount);
  generator.GenerationResult = kSolved;
  model.Comment = GradedAutoTitle(made.grade, ClockStamp());
  model.Modified = 1;
  port.SetStatusLine("New Puzzle" + PuzzleFacts(model, generator) + ", Grade= " + made.gradeName);
  port.RedrawGrid();
  port.RefreshPuzzleInfo();
  return kSolved;
}

}  // namespace

int CreateSinglePuzzle(PuzzleModel& model, RunControl& run, Generator& generator, const CreationSettings& settings) {
  WindowPort& port = run.Port();
  if (model.SolverBusy) return kBroken;
  // The new puzzle takes the grid's place: unsaved edits go only with the user's consent.
  if (model.Modified != 0 && !port.AskYesNo("Discard all changes?")) return kBroken;
  if (settings.grade > 0) return CreateSingleGraded(model, run, generator, settings);
  run.CancelRequest = false;
  port.SetBusy(true);
  port.SetProgressLine("Creating New Puzzle");
  model.SolverBusy = true;
  generator.ClueSpec = settings.clueSpec;
  generator.RequestedLevel = settings.level;
  const int n = settings.gridSize != 0 ? settings.gridSize
                                       : RandomDraw(model, kMaxGridSize - kMinGridSize + 1) + kMinGridSize - 1;
  SetSize(model, n);
  model.RecordNumber = 0;  // the grid is no longer a record of the file
  port.SetStatusLine("");
  port.RedrawGrid();
  const int result = CreatePuzzle(model, run, generator);
  model.SolverBusy = false;
  const bool cancelled = run.CancelRequest;
  run.CancelRequest = false;
  port.SetProgressLine("");
  port.SetBusy(false);
  if (result != kSolved) {
    // A cancel blanked the grid already and needs no word; running out of attempts does.
    if (!cancelled) port.ShowMessage("Could not create a unique puzzle");
    port.RefreshPuzzleInfo();
    return result;
  }
  model.Comment = AutoTitle(generator.LevelCode, ClockStamp());
  model.Modified = 1;
  port.SetStatusLine("New Puzzle" + PuzzleFacts(model, generator));
  port.RedrawGrid();
  port.RefreshPuzzleInfo();
  return result;
}

FileChoice OutputFileChoice(const std::string& appDir) {
  return {"Select an output Puzzle file", kCollectionPatterns, kCollectionDescription, appDir, ChooserMode::Save};
}

std::string AutoTitle(int level, std::string_view stamp) {
  return "Auto (" + std::string(LevelNames[static_cast<std::size_t>(level)]) + ") " + std::string(stamp);
}

std::string GradedAutoTitle(int grade, std::string_view stamp) {
  return "Auto (" + reasoning::RungName(grade) + ") " + std::string(stamp);
}

std::string ClockStamp() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

std::uint64_t PuzzleStreamSeed(std::uint64_t base, int i) {
  // splitmix64 of the base stepped i times: neighbouring puzzles get unrelated seeds.
  std::uint64_t z = base + 0x9E3779B97F4A7C15ULL * static_cast<std::uint64_t>(i);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
  return z ^ (z >> 31);
}

BatchResult CreatePuzzles(PuzzleModel& model, RunControl& run, Generator& generator,
                          const CreationSettings& settings, const BatchOptions& options) {
  WindowPort& port = run.Port();
  if (settings.gridSize != 0 && (settings.gridSize < kMinGridSize || settings.gridSize > kMaxGridSize)) {
    throw std::invalid_argument("grid size " + std::to_string(settings.gridSize) + " is neither 0 nor 3..9");
  }
  if (!options.graded.bands.empty() || settings.grade > 0) {
    int banded = 0;
    for (const GradeBand& band : options.graded.bands) {
      if (band.count < 0 || band.minGrade < reasoning::kSingles || band.maxGrade < band.minGrade) {
        throw std::invalid_argument("a grade band is empty");
      }
      banded += band.count;
    }
    if (!options.graded.bands.empty() && banded != settings.count) {
      throw std::invalid_argument("the grade bands hold " + std::to_string(banded) + " puzzles, not " +
                                  std::to_string(settings.count));
    }
  }
  BatchResult result;
  port.SetBusy(true);
  const int remembered = model.CurrentPuzzle;
  const bool sharded = options.shardCount > 1;
  int count = settings.count;
  if (sharded) count = options.shardIndex > count ? 0 : (count - options.shardIndex) / options.shardCount + 1;
  model.ConstraintCount = 0;
  generator.ClueSpec = settings.clueSpec;
  generator.RequestedLevel = settings.level;
  const std::string stamp = options.stamp.empty() ? ClockStamp() : options.stamp;
  BatchPlan plan{count,
                       settings.gridSize,
                       settings.displayOne ? "" : "Output File: " + settings.outputFile,
                       model.Random(),
                       settings.clueSpec,
                       settings.level,
                       options.accept,
                       options.shardIndex,
                       options.shardCount,
                       options.graded,
                       settings.symmetry};
  if (plan.graded.bands.empty() && settings.grade > 0) {
    plan.graded.bands.push_back({settings.grade, settings.grade, settings.count});
  }
  const bool displayOnly = count == 1 && settings.displayOne;

  run.CancelRequest = false;
  port.SetProgressLine("Creating New Puzzle");
  model.SolverBusy = true;
  generator.Queue.clear();

  std::optional<PuzzleWorkers> workers;
  const int jobs = std::min(options.jobs, count);
  // A graded puzzle is made on a worker even for one job: the window's events, Cancel
  // among them, keep coming while it is made.
  if (count > 0 && (plan.Graded() || (jobs > 1 && !displayOnly))) workers.emplace(plan, std::max(jobs, 1));
  std::set<std::string> made;  // graded puzzles of this batch, up to the grid's symmetries
  CreatedPuzzle graded;
  long long number = -1;  // the next record number, counted once before the first append
  for (int i = 1; i <= count; ++i) {
    if (workers) {
      // A graded puzzle of a known size is announced while it is made, as a usual one is.
      if (plan.Graded() && plan.gridSize != 0) ShowPuzzleProgress(port, plan, i, plan.gridSize);
      std::optional<FinishedPuzzle> puzzle = workers->Take(i, run);
      if (!puzzle) {
        count = i - 1;
        break;
      }
      // The same puzzle twice in a run is made again, here and rarely, so that the file
      // does not depend on the number of workers.
      constexpr int kRepeats = 200;
      for (int attempt = 1; plan.Graded() && !puzzle->failed && made.count(puzzle->key) != 0; ++attempt) {
        if (attempt > kRepeats) {
          puzzle->failed = true;
          puzzle->reason = "the last " + std::to_string(kRepeats) + " puzzles made were repeats of earlier ones";
          break;
        }
        const std::atomic<bool> never = false;
        puzzle = MakeGradedPuzzle(plan, i, attempt, &never);
      }
      if (puzzle->failed) {
        result.shortfall = puzzle->reason;
        count = i - 1;
        break;
      }
      made.insert(puzzle->key);
      graded.grade = puzzle->grade;
      graded.score = puzzle->score;
      LoadFinished(model, port, generator, *puzzle);
      if (!plan.Graded() || plan.gridSize == 0) ShowPuzzleProgress(port, plan, i, model.GridSize);
    } else if (!MakeBatchPuzzle(model, run, generator, plan, i,
                                [&](int n) { ShowPuzzleProgress(port, plan, i, n); })) {
      count = i - 1;
      break;
    }
    const std::string gradeFact = plan.Graded() ? ", Grade= " + reasoning::RungName(graded.grade) : "";
    port.SetStatusLine("New Puzzle" + PuzzleFacts(model, generator) + gradeFact);
    std::string title = !Trim(settings.title).empty() ? settings.title
                        : plan.Graded()                  ? GradedAutoTitle(graded.grade, stamp)
                                                         : AutoTitle(generator.LevelCode, stamp);
    if (Trim(settings.title).empty() && !plan.Graded() && options.titleNote) {
      const std::string note = options.titleNote(model);
      if (!note.empty()) title += " " + note;
    }
    CreatedPuzzle created{0,     model.GridSize, generator.SignCount, CountClues(model), generator.LevelCode,
                          title, graded.grade,   graded.score};

    if (displayOnly) {
      model.Comment = title;
      model.RecordNumber = 0;
      port.RefreshPuzzleInfo();
      model.SolverBusy = false;
      port.SetBusy(false);
      result.message = "Done";
      port.ShowMessage(result.message);
      result.puzzles.push_back(std::move(created));
      return result;
    }
    if (sharded) number = plan.Index(i);
    if (number < 0) number = CountPuzzles(settings.outputFile) + 1;
    if (!WritePuzzle(model, port, title, static_cast<int>(number), settings.outputFile)) {
      result.writeFailed = true;
      count = i - 1;
      break;
    }
    created.number = static_cast<int>(number++);
    result.puzzles.push_back(std::move(created));
    port.SetStatusLine("Puzzle#" + std::to_string(i) + PuzzleFacts(model, generator) + gradeFact);
  }
  workers.reset();

  run.CancelRequest = false;
  port.SetProgressLine("");
  // The status line keeps the batch's last puzzle as its report.
  ReadPuzzle(model, port, model.CurrentFile, remembered == -1 ? 1 : remembered, false);
  model.SolverBusy = false;
  port.SetBusy(false);
  result.added = count;
  result.message = Str(count) + " Puzzles added to file: " + settings.outputFile;
  if (!result.shortfall.empty()) {
    // Only puzzles of the asked grade are written: say how many of them came, and why no more.
    result.message = "Made " + std::to_string(count) + " of " + std::to_string(settings.count) +
                     " puzzles: " + result.shortfall + "." + std::string(kLineBreak) + result.message;
  }
  port.ShowMessage(result.message);
  return result;
}

}  // namespace qm
