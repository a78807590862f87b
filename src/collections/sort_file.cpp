#include "collections/sort_file.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "core/file_replace.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

constexpr int kRandomKeyRange = 99999;

struct SortEntry {
  std::string sortText;  // key, "\r", then the record's lines joined by "\r"
  std::vector<std::string> lines;
};

bool IsRecordLine(const std::string& line) { return !line.empty() && line[0] == '#'; }

std::string UpperAscii(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

bool SameFile(const std::string& source, const std::string& output) {
  std::error_code ec;
  return UpperAscii(source) == UpperAscii(output) || std::filesystem::equivalent(source, output, ec);
}

std::vector<std::string> ReadLines(const std::string& path, bool& ok) {
  std::vector<std::string> lines;
  LineReader in(path);
  std::string line;
  while (in.ReadLine(line)) lines.push_back(line);
  ok = in.IsOpen() && !in.Failed();
  return lines;
}

// Splits the file into records: a "#" line, the comment line, the size line and the
// lines up to the next "#" line (the grid). Lines before the first record belong to
// none and are left out.
std::vector<std::vector<std::string>> SplitRecords(const std::vector<std::string>& lines) {
  std::vector<std::vector<std::string>> records;
  std::size_t i = 0;
  while (i < lines.size()) {
    if (!IsRecordLine(lines[i])) {
      ++i;
      continue;
    }
    std::vector<std::string> record{lines[i++]};
    // The comment may itself begin with "#": the two lines after the record line are
    // the comment and the size line whatever they hold.
    for (int j = 0; j < 2 && i < lines.size(); ++j) record.push_back(lines[i++]);
    while (i < lines.size() && !IsRecordLine(lines[i])) record.push_back(lines[i++]);
    records.push_back(std::move(record));
  }
  return records;
}

// The record's key by the criterion. Rewrites an older one-field size line so that the
// output always carries N.
std::string SortKey(PuzzleModel& model, const SortRequest& request, std::vector<std::string>& record) {
  int n = 5;
  double signs = 0;
  if (record.size() > 2) {
    std::string& sizeLine = record[2];
    const std::string_view trimmed = Trim(sizeLine);
    if (trimmed.find(' ') != std::string_view::npos) {
      n = IntegerValue(std::string_view(sizeLine).substr(0, 1));
      signs = NumericValue(sizeLine.size() > 2 ? std::string_view(sizeLine).substr(2) : std::string_view());
    } else {
      signs = NumericValue(sizeLine);
      sizeLine = "5 " + std::string(trimmed);
    }
  }
  switch (request.Option1) {
    case kSortByHeader:
      return record.size() > 1 ? record[1] : std::string();
    case kSortBySigns:
      return ZeroPadded(RoundHalfEven(signs), 2);
    case kSortByNumber:
      if (request.Option2 == kSortRandom) {
        return ZeroPadded(static_cast<long long>(RandomUniform(model) * kRandomKeyRange) - 1, 5);
      }
      return ZeroPadded(IntegerValue(std::string_view(record[0]).substr(1)), 5);
    default:
      return ZeroPadded(n, 1);
  }
}

SortOutcome Report(WindowPort& port, CommandResult result, const std::string& message, int count = 0) {
  port.SetBusy(false);
  port.ShowMessage(message);
  return {result, count};
}

}  // namespace

SortOutcome SortPuzzleFile(PuzzleModel& model, WindowPort& port, const SortRequest& request) {
  if (Trim(request.output).empty()) return Report(port, CommandResult::Failed, "Specify output file name");
  if (!FileLength(request.source)) return Report(port, CommandResult::Failed, "Input file does not exist");
  if (SameFile(request.source, request.output)) {
    return Report(port, CommandResult::Failed, "Input and output files cannot be same");
  }
  const std::string unable = "Unable to sort file:" + std::string(kLineBreak) + request.output;

  port.SetBusy(true);
  bool readOk = false;
  const std::vector<std::string> lines = ReadLines(request.source, readOk);
  if (!readOk) return Report(port, CommandResult::Failed, unable);
  if (std::none_of(lines.begin(), lines.end(), IsRecordLine)) {
    return Report(port, CommandResult::Failed, "There are no puzzles in this file");
  }

  // A random order works through the puzzle-number key, and always renumbers.
  const bool resequence =
      request.resequence || (request.Option1 == kSortByNumber && request.Option2 == kSortRandom);
  std::vector<SortEntry> entries;
  for (std::vector<std::string>& record : SplitRecords(lines)) {
    SortEntry entry;
    entry.sortText = SortKey(model, request, record);
    for (const std::string& line : record) entry.sortText += "\r" + line;
    entry.lines = std::move(record);
    entries.push_back(std::move(entry));
    if (request.progress) request.progress(static_cast<int>(entries.size()));
    port.ProcessEvents();
  }
  // Whole entries are compared byte by byte, so equal keys fall back on the "#" line.
  std::sort(entries.begin(), entries.end(),
            [](const SortEntry& a, const SortEntry& b) { return a.sortText < b.sortText; });
  if (request.Option2 == kSortDescending) std::reverse(entries.begin(), entries.end());

  // Wide enough that a start near the top of int cannot wrap to "#0".
  long long number = std::max(1, IntegerValue(request.start));
  TextBuilder out;
  for (SortEntry& entry : entries) {
    if (resequence) entry.lines[0] = "#" + std::to_string(number++);
    for (const std::string& line : entry.lines) out.Line(line);
  }
  if (!ReplaceFileWith(request.output, out.Text())) return Report(port, CommandResult::Failed, unable);
  const int count = static_cast<int>(entries.size());
  return Report(port, CommandResult::Done,
                Str(count) + " puzzles sorted to file:" + std::string(kLineBreak) + request.output, count);
}

std::string ChooseSortInput(const PuzzleModel& model, WindowPort& port) {
  return ChooseFileKeepingDirectory(port, FileChoice{"Select sort input file", kCollectionPatterns,
                                                     kCollectionDescription, ApplicationDirectoryOf(model),
                                                     ChooserMode::Open});
}

std::string ChooseSortOutput(const PuzzleModel& model, WindowPort& port) {
  return ChooseFileKeepingDirectory(port, FileChoice{"Select sort output file", kCollectionPatterns,
                                                     kCollectionDescription, ApplicationDirectoryOf(model),
                                                     ChooserMode::Save});
}

}  // namespace qm
