#include "core/collection_file.h"

#include <algorithm>
#include <array>
#include <deque>
#include <stdexcept>
#include <vector>

#include "core/record_scanner.h"
#include "core/text_rules.h"

namespace qm {

namespace {

// A record that cannot be read: the load ends as if the record were not there.
struct RecordError {};

// One character of a grid line as the model keeps it: "" past the end, "V" as "v".
std::string GridChar(const std::string& line, int col) {
  if (col < 1 || static_cast<std::size_t>(col) > line.size()) return {};
  const char c = line[static_cast<std::size_t>(col) - 1];
  return std::string(1, c == 'V' ? 'v' : c);
}

std::vector<std::string_view> SplitAtBlanks(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t blank = line.find(' ', start);
    if (blank == std::string_view::npos) {
      fields.push_back(line.substr(start));
      return fields;
    }
    fields.push_back(line.substr(start, blank - start));
    start = blank + 1;
  }
}

// Reads the record whose "#" line `file` has just passed (a LineReader, or the lines a
// RecordStream holds after the record line). Returns the comment.
template <class Lines>
std::string ParseRecord(PuzzleModel& model, Lines& file) {
  std::string commentLine;
  if (!file.ReadLine(commentLine)) throw RecordError{};
  std::size_t rest = 0;
  std::string comment = ReadDelimitedField(commentLine, rest);

  // A comma in the comment ends the comment field, and the text after it is taken as
  // the size line: such a record reads wrongly, as it always has.
  std::string sizeLine;
  if (rest != std::string_view::npos) {
    sizeLine = commentLine.substr(rest);
  } else if (!file.ReadLine(sizeLine)) {
    throw RecordError{};
  }
  const SizeLine size = ParseSizeLine(sizeLine);
  model.ConstraintCount = size.signs;
  model.ClueCount = size.clues;
  const int n = size.gridSize;
  if (n < kMinGridSize || n > kMaxGridSize) throw RecordError{};
  SetSize(model, n);

  const int l = model.LayoutExtent;
  std::string line;
  for (int row = 1; row <= l; ++row) {
    if (!file.ReadLine(line)) line.clear();  // a record cut short leaves its rows empty
    for (int col = 1; col <= l; ++col) {
      std::string ch = GridChar(line, col);
      if (ch == "." || ch == "?") ch.clear();
      const int k = model.PositionOf[row][col];
      model.GivenValue[k] = IntegerValue(ch);
      model.PosText[k] = std::move(ch);
    }
    for (int col = l + 2; col <= 2 * l + 1; ++col) {
      model.SolutionText[model.PositionOf[row][col - l - 1]] = GridChar(line, col);
    }
  }
  if (file.Failed()) throw RecordError{};
  return comment;
}

// How WritePuzzle writes a position's shown text in the puzzle half of a grid line.
char PuzzleChar(const PuzzleModel& model, int k) {
  const std::string& t = model.PosText[k];
  if (t.size() >= 2) return '?';
  if (t.empty()) return '.';
  if (NumericValue(t) == 0.0) return t[0];  // a sign, or another non-digit
  if (model.GivenValue[k] >= 1) return t[0];
  return model.GivenValue[k] < 0 ? '.' : '?';
}

char SolutionChar(const std::string& s) {
  if (s.empty()) return '.';
  return s.size() == 1 ? s[0] : '?';
}

// Signs: shown texts found inside "<>^v" (so a stray "<>" counts too, as it always has).
int CountSigns(const PuzzleModel& model) {
  constexpr std::string_view kSigns = "<>^v";
  int signs = 0;
  for (int k = 0; k <= model.LastPosition; ++k) {
    const std::string& t = model.PosText[k];
    if (!t.empty() && kSigns.find(t) != std::string_view::npos) ++signs;
  }
  return signs;
}

}  // namespace

bool CommentLooksLikeRecord(std::string_view comment) { return IsRecordLine(comment); }

SizeLine ParseSizeLine(std::string_view line) {
  SizeLine size;
  if (Trim(line).find(' ') == std::string_view::npos) {
    size.signs = IntegerValue(line);
    return size;
  }
  size.gridSize = IntegerValue(line.substr(0, 1));
  const auto fields = SplitAtBlanks(line);
  size.signs = IntegerValue(fields[1]);
  if (fields.size() == 3) size.clues = IntegerValue(fields[2]);
  return size;
}

std::vector<RecordSummary> ReadRecordSummaries(const std::string& path) {
  std::vector<RecordSummary> records;
  LineReader file(path);
  if (!file.IsOpen()) return records;
  RecordScanner scanner(file);
  while (scanner.NextRecord()) {
    RecordSummary& record = records.emplace_back();
    int i = 0;
    scanner.ReadBody([&](std::string_view line) {
      if (i == 0) record.comment = line;
      if (i == 1) {
        const SizeLine size = ParseSizeLine(line);
        record.size = size.gridSize;
        record.signs = size.signs;
        record.clues = size.clues;
      }
      ++i;
    });
  }
  return records;
}

int CountPuzzles(const std::string& path) {
  const auto length = FileLength(path);
  if (!length || *length == 0) return 0;
  LineReader file(path);
  RecordScanner scanner(file);
  int count = 0;
  while (scanner.NextRecord()) {
    // "#0" and a bare "#" start a record for the reader but are not counted.
    if (NumericValue(scanner.RecordLine().substr(1)) > 0) ++count;
  }
  return count;
}

int CountRecords(const std::string& path) {
  LineReader file(path);
  RecordScanner scanner(file);
  int count = 0;
  while (scanner.NextRecord()) ++count;
  return count;
}

RecordLocation FindRecord(LineReader& file, int index) {
  RecordScanner scanner(file);
  for (int counter = 0; scanner.NextRecord(); ++counter) {
    if (counter >= index) return {IntegerValue(scanner.RecordLine().substr(1)), false};
  }
  return {};
}

std::string ReadErrorMessage(int n, const std::string& path) {
  return "Error reading puzzle#" + Str(n) + " in file:" + std::string(kLineBreak) + path;
}

namespace {

// What a load does after the record was parsed (or failed to be).
ReadResult FinishLoad(PuzzleModel& model, const std::string& path, int n, bool loaded, const std::string& comment) {
  if (!loaded) {
    model.Comment.clear();
    ClearPositions(model);
    model.Modified = 0;
    return {"", true};
  }

  model.CurrentPuzzle = n;
  model.CurrentFile = path;
  model.Modified = 0;
  model.Comment = comment;
  if (model.ClueCount == -1) {
    model.ClueCount = 0;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (NumericValue(model.PosText[k]) > 0) ++model.ClueCount;
    }
  }
  model.UndoList.clear();
  model.SolutionList.clear();
  model.SolverBusy = false;
  return {"#" + std::to_string(model.RecordNumber) + " " + comment, false};
}

}  // namespace

ReadResult LoadPuzzle(PuzzleModel& model, const std::string& path, int n) {
  if (n == -1) {
    ClearPositions(model);
    return {};
  }

  model.PuzzleCount = CountPuzzles(path);
  LineReader file(path);
  const RecordLocation where = FindRecord(file, n - 1);
  model.RecordNumber = where.number;

  bool loaded = false;
  std::string comment;
  if (!where.notFound) {
    try {
      comment = ParseRecord(model, file);
      loaded = true;
    } catch (const RecordError&) {
    }
  }
  return FinishLoad(model, path, n, loaded, comment);
}

RecordStream::RecordStream(const std::string& path) : path_(path), file_(path) {}

bool RecordStream::Fill(std::size_t lines) {
  while (ahead_.size() < lines) {
    std::string line;
    if (!file_.ReadLine(line)) return false;
    ahead_.push_back(std::move(line));
  }
  return true;
}

bool RecordStream::Next(PuzzleModel& model, bool load, ReadResult& result) {
  // To the next record line: every line that begins with "#", as LoadPuzzle finds them.
  for (;;) {
    if (!Fill(1)) return false;
    const bool recordLine = IsRecordLine(ahead_.front());
    if (recordLine) break;
    ahead_.pop_front();
  }
  ++ordinal_;
  if (load) {
    model.RecordNumber = IntegerValue(std::string_view(ahead_.front()).substr(1));
    // The record reads on from its "#" line through whatever lines follow, exactly as a
    // load of this one record would (a short record takes lines of the next).
    struct Ahead {
      RecordStream& stream;
      std::size_t next = 1;
      bool ReadLine(std::string& line) {
        if (!stream.Fill(next + 1)) return false;
        line = stream.ahead_[next++];
        return true;
      }
      bool Failed() const { return stream.file_.Failed(); }
    } lines{*this};
    bool loaded = false;
    std::string comment;
    try {
      comment = ParseRecord(model, lines);
      loaded = true;
    } catch (const RecordError&) {
    }
    result = FinishLoad(model, path_, ordinal_, loaded, comment);
  }
  ahead_.pop_front();
  return true;
}

int ReadPuzzleRange(const std::string& path, int first, int last,
                    const std::function<bool(PuzzleModel&, int)>& take) {
  const int count = CountPuzzles(path);
  first = std::max(1, first);
  RecordStream stream(path);
  PuzzleModel skipped;
  ReadResult result;
  for (int n = 1; n <= last; ++n) {
    const bool wanted = n >= first;
    PuzzleModel model;
    if (!stream.Next(wanted ? model : skipped, wanted, result)) return std::max(n, first);
    if (!wanted) continue;
    model.PuzzleCount = count;
    if (result.notFound) return n;
    if (!take(model, n)) break;
  }
  return 0;
}

bool AppendPuzzle(const PuzzleModel& model, const std::string& comment, int number, const std::string& path) {
  return AppendToFile(path, RecordTextOf(model, comment, number));
}

std::string RecordTextOf(const PuzzleModel& model, const std::string& comment, int number) {
  int clues = 0;
  for (int k = 0; k <= model.LastPosition; ++k) {
    if (NumericValue(model.PosText[k]) > 0) ++clues;
  }
  TextBuilder record;
  record.Line("#" + std::to_string(number));
  record.Line(comment);
  record.Line(std::to_string(model.GridSize) + " " + std::to_string(CountSigns(model)) + " " +
              std::to_string(clues));
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l; ++row) {
    std::string line;
    for (int col = 1; col <= l; ++col) line += PuzzleChar(model, model.PositionOf[row][col]);
    line += '|';
    for (int col = 1; col <= l; ++col) {
      line += SolutionChar(model.SolutionText[model.PositionOf[row][col]]);
    }
    record.Line(line);
  }
  return record.Release();
}

bool AppendPuzzleWithSolutions(const PuzzleModel& model, const std::string& comment, int firstNumber,
                               const std::string& path) {
  // The older format's row table: room for layout rows 1..9 only.
  constexpr int kRowTableSize = 10;
  std::array<std::string, kRowTableSize> puzzleLines;
  const int l = model.LayoutExtent;
  for (int row = 1; row <= l && row < kRowTableSize; ++row) {
    std::string& line = puzzleLines[static_cast<std::size_t>(row)];
    for (int col = 1; col <= l; ++col) {
      const int k = model.PositionOf[row][col];
      const std::string& t = model.PosText[k];
      if (t.empty()) {
        line += '.';
      } else if (model.GivenValue[k] != 0 || NumericValue(t) <= 0) {
        line += t;
      } else {
        line += '?';
      }
    }
  }

  TextBuilder records;
  bool ok = true;
  const std::string sizeLine = Str(CountSigns(model)) + " ";
  for (std::size_t i = 0; ok && i < model.SolutionList.size(); ++i) {
    const std::string& solution = model.SolutionList[i];
    records.Line("#" + std::to_string(firstNumber + static_cast<int>(i)));
    records.Line(comment);
    records.Line(sizeLine);
    for (int row = 1; row <= l; ++row) {
      if (row >= kRowTableSize) {  // the row table's limit: the write stops here
        ok = false;
        break;
      }
      const std::size_t from = static_cast<std::size_t>((row - 1) * l);
      const std::string part = from < solution.size() ? solution.substr(from, static_cast<std::size_t>(l)) : "";
      records.Line(puzzleLines[static_cast<std::size_t>(row)] + "|" + part);
    }
  }
  return AppendToFile(path, records.Text()) && ok;
}

}  // namespace qm
