// Collection files: plain-text files of numbered puzzle records.
//
//   #3                  record line: "#" and the record number
//   Sample              comment line
//   4 4 3               size line: N, signs, clues
//   .<..3..|1<2.3.4     2N-1 grid lines: puzzle characters, "|", solution characters
//   ...
//
// Puzzle #n of a file is its n-th record in file order, whatever number it carries.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/puzzle_model.h"
#include "core/text_file.h"

namespace qm {

// A record's size line in its three forms: "N signs clues", "N signs" (clues counted
// when the grid is read), or the older one-field form "signs" of a 5x5 puzzle.
struct SizeLine {
  int gridSize = 5;
  int signs = 0;
  int clues = -1;  // -1 when the line carries no clue count
};
SizeLine ParseSizeLine(std::string_view line);

// What the list of all puzzles shows of one record, read without loading the puzzle.
struct RecordSummary {
  int size = 0;
  int signs = 0;
  int clues = -1;       // -1: the size line carries no clue count
  std::string comment;  // the whole comment line, as in the file (code page 1252)
};
// The records of a collection file in file order; empty for a missing file.
std::vector<RecordSummary> ReadRecordSummaries(const std::string& path);

// Records in the file: lines that begin with "#" followed by a number above 0.
// 0 for a missing or empty file.
int CountPuzzles(const std::string& path);

// Records in the file as every reader finds them: lines that begin with "#", whatever
// follows. CountPuzzles leaves out those numbered 0 or below; they are read all the same.
int CountRecords(const std::string& path);

struct RecordLocation {
  int number = 0;  // the record number after "#", rounded to an integer
  bool notFound = true;
};

// Reads `file` up to and including the record line of record `index` (0-based; 0 or
// less gives the first). Every line that begins with "#" starts a record here.
RecordLocation FindRecord(LineReader& file, int index);

struct ReadResult {
  std::string title;  // "#" + record number + " " + comment
  bool notFound = false;
};

// Loads puzzle n (1-based) of the file at `path` into the model. n = -1 only clears the
// grid. A missing record, a size outside 3..9 or any read failure leaves the grid empty
// and reports notFound; the file is only ever read. (ReadPuzzle is the command that
// also shows it.)
ReadResult LoadPuzzle(PuzzleModel& model, const std::string& path, int n);

// Reads every record of a file in one pass, each loaded exactly as LoadPuzzle loads
// that ordinal (PuzzleCount aside, which it leaves alone): commands that work through a
// whole collection read it once, in memory the size of one record.
class RecordStream {
 public:
  explicit RecordStream(const std::string& path);
  bool IsOpen() const { return file_.IsOpen(); }
  // Moves to the next record; false at the end of the file. With `load` the record is
  // loaded into the model and `result` says whether it could be read.
  bool Next(PuzzleModel& model, bool load, ReadResult& result);
  // The ordinal of the record Next reached (1 for the first).
  int Ordinal() const { return ordinal_; }
  bool Failed() const { return file_.Failed(); }

 private:
  bool Fill(std::size_t lines);

  std::string path_;
  LineReader file_;
  std::deque<std::string> ahead_;  // the lines read but not yet passed
  int ordinal_ = 0;
};

// Reads puzzles first..last (1-based) of the file in one pass, each loaded as LoadPuzzle
// would into a model of its own that `take` is handed with its ordinal; `take` returns
// false to stop. The ordinal of the first puzzle that cannot be read, or 0.
int ReadPuzzleRange(const std::string& path, int first, int last,
                    const std::function<bool(PuzzleModel&, int)>& take);

// A comment that begins with "#" would read back as a record line and shift every
// record after it: titles and descriptions are refused with this message.
bool CommentLooksLikeRecord(std::string_view comment);
inline constexpr std::string_view kCommentRecordMessage =
    "a title or description may not begin with \"#\": it would read back as the start of a new record";

// The message every command shows when puzzle n cannot be read from `path`.
std::string ReadErrorMessage(int n, const std::string& path);

// The current puzzle as one record numbered `number`, CR LF lines, as AppendPuzzle
// writes it.
std::string RecordTextOf(const PuzzleModel& model, const std::string& comment, int number);

// Appends the current puzzle as one record numbered `number`; false on failure.
bool AppendPuzzle(const PuzzleModel& model, const std::string& comment, int number, const std::string& path);

// Appends the current puzzle once per entry of SolutionList, numbered from
// `firstNumber`. Keeps the older 5x5 format: the size line carries only the signs, and
// layout rows past 9 cannot be written, so puzzles above 5x5 fail after the lines
// already written.
bool AppendPuzzleWithSolutions(const PuzzleModel& model, const std::string& comment, int firstNumber,
                               const std::string& path);

}  // namespace qm
