#include "commands/collection_commands.h"

#include <algorithm>
#include <filesystem>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "core/file_lock.h"
#include "core/file_replace.h"
#include "core/record_scanner.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace fs = std::filesystem;

namespace {

// Deleting skips at most this many lines after the record line; the line after them is
// kept whatever it holds.
constexpr int kMaxSkippedLines = 99;
constexpr int kBackupNumbers = 99;

const std::string kLineBreakText(kLineBreak);

bool Exists(const std::string& path) {
  std::error_code ec;
  return fs::exists(fs::symlink_status(path, ec));
}

// Reads puzzle n of CurrentFile; when it is not there, says so and reads the puzzle
// that was current before.
CommandResult ReadOrReturn(PuzzleModel& model, WindowPort& port, int n) {
  const int previous = model.CurrentPuzzle;
  if (!ReadPuzzle(model, port, model.CurrentFile, n).notFound) return CommandResult::Done;
  port.ShowMessage("Error reading puzzle#" + Str(n));
  ReadPuzzle(model, port, model.CurrentFile, previous);
  return CommandResult::Failed;
}

int ArrowTarget(PuzzleModel& model, Arrow arrow) {
  switch (arrow) {
    case Arrow::Previous:
      return model.CurrentPuzzle - 1 < 1 ? model.PuzzleCount : model.CurrentPuzzle - 1;
    case Arrow::First:
      return 1;
    case Arrow::Next:
      return model.CurrentPuzzle + 1 > model.PuzzleCount ? 1 : model.CurrentPuzzle + 1;
    case Arrow::Last:
      return model.PuzzleCount;
    case Arrow::Random:
      break;
  }
  const int n = static_cast<int>(RandomUniform(model) * model.PuzzleCount) + 1;
  return std::min(n, model.PuzzleCount);
}

bool CanAppendTo(const std::string& path) {
  std::error_code ec;
  const fs::file_status status = fs::status(path, ec);
  if (!fs::exists(status)) return true;
  return fs::is_regular_file(status) && LineReader(path).IsOpen();
}

// The number of a record appended to `target`: one past its count of records. A target
// that cannot be read as a file (a directory, a device) is refused before anything is
// written, with "Error writing to file: NAME".
bool NumberForAppend(WindowPort& port, const std::string& target, int& number) {
  if (!CanAppendTo(target)) {
    port.ShowMessage(WriteErrorMessage(target));
    return false;
  }
  number = CountPuzzles(target) + 1;
  return true;
}

// A command's hold on a file from its read to its write. While another command holds
// it, the status line says what the command waits for (under the busy pointer); after
// the timeout the command shows why it did nothing.
class CommandLock {
 public:
  CommandLock(WindowPort& port, const std::string& path)
      : port_(port), path_(path), lock_(path, [this] {
          port_.SetBusy(true);
          port_.SetStatusLine("Waiting for another command to finish with " + path_ + " ...");
        }) {
    if (lock_.Waited()) {
      port_.SetStatusLine("");
      port_.SetBusy(false);
    }
  }
  // False, with the message shown, when the lock stayed taken.
  bool Held() const {
    if (!lock_.Held()) port_.ShowMessage(LockTimeoutMessage(path_));
    return lock_.Held();
  }

 private:
  WindowPort& port_;
  std::string path_;
  FileLock lock_;
};

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code ec;
  return fs::equivalent(a, b, ec);
}

// The collection's lines without record n, as the delete command copies them.
bool CopyWithoutRecord(const std::string& path, int n, std::string& kept) {
  LineReader in(path);
  if (!in.IsOpen()) return false;
  TextBuilder out;
  out.Reserve(static_cast<std::size_t>(FileLength(path).value_or(0)) + 2 * kMaxSkippedLines);
  RecordScanner scanner(in, RecordRules{0, kMaxSkippedLines});
  const auto keep = [&out](std::string_view line) { out.Line(line); };
  const auto skip = [](std::string_view) {};
  for (int counter = 1; scanner.NextRecord(keep); ++counter) {
    const bool deleting = counter == n;
    if (!deleting) out.Line(scanner.RecordLine());
    if (!(deleting ? scanner.ReadBody(skip) : scanner.ReadBody(keep))) break;
  }
  kept = out.Release();
  return !in.Failed();
}

}  // namespace

CommandResult MoveByArrow(PuzzleModel& model, WindowPort& port, Arrow arrow) {
  if (model.SolverBusy) return CommandResult::Cancelled;
  if (model.Modified != 0 && !port.AskYesNo("Discard all changes?")) return CommandResult::Cancelled;
  return ReadOrReturn(model, port, ArrowTarget(model, arrow));
}

CommandResult GoToTypedNumber(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow) {
  if (Trim(puzNumNow).empty()) return CommandResult::Cancelled;
  const double n = NumericValue(puzNumNow);
  // Out of range, Enter changes nothing (Go reads without the range test and reports).
  if (n < 1 || n > model.PuzzleCount) return CommandResult::Cancelled;
  return ReadOrReturn(model, port, RoundHalfEven(n));
}

CommandResult GoToPuzzleNumber(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow) {
  return ReadOrReturn(model, port, IntegerValue(puzNumNow));
}

CommandResult mnureload(PuzzleModel& model, WindowPort& port) {
  if (!ReadPuzzle(model, port, model.CurrentFile, model.CurrentPuzzle).notFound) return CommandResult::Done;
  port.ShowMessage(ReadErrorMessage(model.CurrentPuzzle, model.CurrentFile));
  return CommandResult::Failed;
}

CommandResult mnuload(PuzzleModel& model, WindowPort& port) {
  const std::string chosen =
      ChooseCollectionFile(model, port, "Quillmere", kCollectionPatterns, ChooserMode::Open);
  if (chosen.empty()) return CommandResult::Cancelled;
  return OpenCollection(model, port, chosen);
}

CommandResult OpenCollection(PuzzleModel& model, WindowPort& port, const std::string& chosen) {
  const int puzzle = model.CurrentPuzzle;
  const std::string file = model.CurrentFile;
  const int count = model.PuzzleCount;
  if (!ReadPuzzle(model, port, chosen, 1).notFound) return CommandResult::Done;
  port.ShowMessage("Error reading puzzle#" + Str(1));
  model.CurrentPuzzle = puzzle;
  model.CurrentFile = file;
  model.PuzzleCount = count;
  port.RefreshPuzzleInfo();
  return CommandResult::Failed;
}

CommandResult OpenNamedCollection(PuzzleModel& model, WindowPort& port, const std::string& path) {
  if (!Exists(path)) {
    port.ShowMessage("No such file: " + path);
    return CommandResult::Failed;
  }
  return OpenCollection(model, port, path);
}

CommandResult mnuappend(PuzzleModel& model, WindowPort& port) {
  const std::string target = ChooseCollectionFile(model, port, "Add Puzzle to File", "*.fut", ChooserMode::Save);
  if (target.empty()) return CommandResult::Cancelled;
  int number = 0;
  const auto solutions = static_cast<long long>(model.SolutionList.size());
  // Asked before the lock is taken: no other command waits on an open question.
  const bool allSolutions = solutions > 0 && port.AskYesNo("Save all" + Str(solutions) + " solutions?");
  {
    // From the count to the last byte: two appends cannot take one number.
    const CommandLock lock(port, target);
    if (!lock.Held() || !NumberForAppend(port, target, number)) return CommandResult::Failed;
    if (allSolutions ? !WritePuzzleWithSolutions(model, port, model.Comment, number, target)
                     : !WritePuzzle(model, port, model.Comment, number, target)) {
      return CommandResult::Failed;
    }
  }
  if (allSolutions) {
    port.ShowMessage("Puzzle and its" + Str(solutions) + " solutions appended to file " + target);
  } else {
    port.ShowMessage("Puzzle#" + Str(number) + " appended to file " + target);
  }
  // Appended to the current file: show the new record; else the current puzzle again.
  const int n = SameFile(target, model.CurrentFile) ? number : model.CurrentPuzzle;
  if (ReadPuzzle(model, port, model.CurrentFile, n).notFound) port.ShowMessage("Error reading puzzle#" + Str(n));
  return CommandResult::Done;
}

CommandResult mnudelete(PuzzleModel& model, WindowPort& port, const std::string& puzNumNow) {
  // No puzzle of the file is shown (a new grid): there is nothing to delete.
  if (Trim(puzNumNow).empty()) return CommandResult::Cancelled;
  if (!port.AskYesNo("Delete current puzzle from file?")) return CommandResult::Cancelled;
  int n = IntegerValue(puzNumNow);
  {
    // From the read to the rename: an append in between would be lost.
    const CommandLock lock(port, model.CurrentFile);
    if (!lock.Held()) return CommandResult::Failed;
    std::string kept;
    if (!CopyWithoutRecord(model.CurrentFile, n, kept)) {
      port.ShowMessage(WriteErrorMessage(model.CurrentFile));
      return CommandResult::Failed;
    }
    // The temporary copy is complete before the collection is touched.
    if (!ReplaceFileWith(kDeleteTempFile, kept)) {
      port.ShowMessage(WriteErrorMessage(kDeleteTempFile));
      return CommandResult::Failed;
    }
    if (!ReplaceFileWith(model.CurrentFile, kept)) {
      port.ShowMessage(WriteErrorMessage(model.CurrentFile));
      return CommandResult::Failed;
    }
  }
  if (n == model.PuzzleCount) {
    n = n - 1;
    model.PuzzleCount = n;
  }
  model.CurrentPuzzle = n;  // what PuzNumNow shows, even when nothing is left to read
  ReadPuzzle(model, port, model.CurrentFile, n);
  port.ShowMessage("Done");
  return CommandResult::Done;
}

CommandResult mnusaveas(PuzzleModel& model, WindowPort& port) {
  const std::string target = ChooseCollectionFile(model, port, "Quillmere", kCollectionPatterns, ChooserMode::Save);
  if (target.empty()) return CommandResult::Cancelled;
  if (!CopyFileSafely(model.CurrentFile, target)) {
    port.ShowMessage("Error saving to file:" + kLineBreakText + target);
    return CommandResult::Failed;
  }
  port.ShowMessage("Puzzle file saved as:" + kLineBreakText + target);
  return CommandResult::Done;
}

CommandResult mnusaveassli(PuzzleModel& model, WindowPort& port) {
  const std::string target = ChooseCollectionFile(model, port, "Quillmere", "*.fut", ChooserMode::Save);
  if (target.empty()) return CommandResult::Cancelled;
  int number = 0;
  {
    const CommandLock lock(port, target);
    if (!lock.Held() || !NumberForAppend(port, target, number) ||
        !WritePuzzle(model, port, model.Comment, number, target)) {
      return CommandResult::Failed;
    }
  }  // let go before the message box waits for its OK
  port.ShowMessage("Puzzle#" + Str(number) + " saved in file " + target);
  return CommandResult::Done;
}

std::string BackupName(const std::string& path) {
  // The rule works on the file name: a dot or ";" in a directory name does not count.
  const std::size_t slash = path.rfind('/');
  const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
  std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot < nameStart) dot = path.size();
  const std::size_t semi = dot == 0 ? std::string::npos : path.rfind(';', dot - 1);

  std::string prefix;
  long long m = 0;
  if (semi != std::string::npos && semi >= nameStart) {  // already a backup: count on
    prefix = path.substr(0, semi + 1);
    m = IntegerValue(std::string_view(path).substr(semi + 1, dot - semi - 1));
  } else {
    prefix = path.substr(0, dot) + ";";
  }
  const std::string suffix = path.substr(dot);
  std::string first;
  for (int tries = 0; tries < kBackupNumbers; ++tries) {
    m = m + 1 >= 100 ? 1 : m + 1;
    std::string candidate = prefix + ZeroPadded(m, 2) + suffix;
    if (!Exists(candidate)) return candidate;
    if (first.empty()) first = std::move(candidate);
  }
  return first;  // every number taken
}

CommandResult mnubackup(PuzzleModel& model, WindowPort& port) {
  // Backups of one file take their names from one series: one at a time, or two would
  // pick the same free name.
  std::string name;
  bool copied = false;
  {
    const CommandLock lock(port, model.CurrentFile);
    if (!lock.Held()) return CommandResult::Failed;
    name = BackupName(model.CurrentFile);
    // A backup never overwrites an older one, not even when all 99 names are taken.
    copied = !Exists(name) && CopyFileSafely(model.CurrentFile, name);
  }  // let go before the message box waits for its OK
  if (!copied) {
    port.ShowMessage("Error backing to file:" + kLineBreakText + name);
    return CommandResult::Failed;
  }
  port.ShowMessage("File backed up as:" + kLineBreakText + name);
  return CommandResult::Done;
}

std::string ViewAllTotal(const PuzzleModel& model) { return "Total Puzzles =" + Str(model.PuzzleCount); }

}  // namespace qm
