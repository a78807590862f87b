// Creation commands. Single Puzzle makes one puzzle of the chosen settings in the grid.
// Batch creation: the accepted dialog settings become puzzles, one after another, each
// appended to the output collection file under its title (or, for one puzzle "for
// display", only shown). Captions report progress; a cancel request stops the batch
// between or inside puzzles and keeps what was written.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/puzzle_model.h"
#include "commands/run_control.h"
#include "generator/create_puzzle.h"
#include "generator/creation_options.h"
#include "generator/graded_creation.h"

namespace qm {

// Puzzles of one grade range in a graded batch.
struct GradeBand {
  int minGrade = 0;
  int maxGrade = 0;
  int count = 0;
};

// Creation by grade. Without bands (and without a grade in the settings) the batch is
// the usual one.
struct GradedBatch {
  std::vector<GradeBand> bands;  // made in this order; their counts add up to the batch's
  bool minimal = true;
  int minSignsPercent = 20;
  int maxTries = 0;  // per puzzle; 0: the size's default
};

struct BatchOptions {
  // The date and time that automatic titles carry. Empty: the clock, read once when the
  // batch starts, so that every title of a run carries the same stamp.
  std::string stamp;
  // Worker threads, each with a model of its own. Puzzle i comes from its own random
  // stream whatever the number of workers, and is written in order, so the file does
  // not depend on it.
  int jobs = 1;
  // When set, a finished puzzle it refuses is made again from the same stream, and the
  // creation test of each attempt stays as it is. Called from the worker threads.
  std::function<bool(const PuzzleModel&)> accept;
  // One shard of the request: puzzles i = shardIndex, shardIndex + shardCount, ... of
  // the whole count, each from the same stream as in a single run and written under
  // its final record number i, so that merging the shards gives the single run's file.
  int shardIndex = 1;
  int shardCount = 1;
  // When set, its text (if any) follows the automatic title after a blank.
  std::function<std::string(const PuzzleModel&)> titleNote;
  GradedBatch graded;
};

struct CreatedPuzzle {
  int number = 0;  // its record number in the file; 0 when only shown
  int size = 0;
  int signs = 0;
  int clues = 0;   // as the record's size line counts them
  int level = 0;
  std::string title;
  int grade = 0;  // graded creation: the ladder's grade and score
  double score = 0;
};

struct BatchResult {
  int added = 0;
  bool writeFailed = false;  // an append failed; its message was shown
  std::string message;       // the closing message: "Done" or the summary
  std::vector<CreatedPuzzle> puzzles;
  // Graded creation that ran out of tries: why, and that the batch stopped there.
  std::string shortfall;
};


// Runs the batch from the accepted settings. The base of every puzzle's random stream is
// the next draw of the model's generator, so a seeded model makes a reproducible run.
// A failed append ends the batch as a cancel does, after its message. Throws
// std::invalid_argument for a grid size that is neither 0 nor 3..9.
BatchResult CreatePuzzles(PuzzleModel& model, RunControl& run, Generator& generator,
                          const CreationSettings& settings, const BatchOptions& options = {});

// Create -> "Single Puzzle": after "Discard all changes?" when the grid was edited, makes
// one puzzle of the settings' size (or a random one), level and clue rule in the grid,
// titled automatically. 99 when made; a cancel blanks the grid quietly, running out of
// attempts says "Could not create a unique puzzle".
int CreateSinglePuzzle(PuzzleModel& model, RunControl& run, Generator& generator, const CreationSettings& settings);

// ", Size=5x5, Constraints= 17, Clues= 4, Level= Easy"
std::string PuzzleFacts(const PuzzleModel& model, const Generator& generator);

// The chooser of the output file, starting in the program's folder; save mode, so that
// a new file can be named.
FileChoice OutputFileChoice(const std::string& appDir);

// "Auto (" + level name + ") " + stamp.
std::string AutoTitle(int level, std::string_view stamp);
// A graded puzzle's automatic title names its grade where the level would stand, so a
// title never shows two difficulties: "Auto (Tough) " + stamp.
std::string GradedAutoTitle(int grade, std::string_view stamp);
// The local date and time as "YYYY-MM-DD HH:MM:SS" (no comma: a comma would end the
// record's comment when it is read back).
std::string ClockStamp();
// The seed of puzzle i's stream in a batch whose base is `base`.
std::uint64_t PuzzleStreamSeed(std::uint64_t base, int i);

}  // namespace qm
