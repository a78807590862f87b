#include "collections/sort_file.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <filesystem>
#include <vector>

#include "core/file_lock.h"
#include "core/file_replace.h"
#include "core/record_scanner.h"
#include "core/text_file.h"
#include "core/text_rules.h"

namespace qm {

namespace {

constexpr int kRandomKeyRange = 99999;

// Records are sorted where they lie: the file is read once into memory and every entry
// holds only its key and where its lines are, so a sort needs little more than the
// file's own size (not a copy per line).
struct SortEntry {
  std::string key;
  std::size_t begin = 0;  // the record's "#" line in the file's bytes
  std::size_t end = 0;    // just past its last line
  std::string sizeLine;   // the size line rewritten from the older one-field form, or ""
  long long number = 0;   // the new record number when renumbering, else 0
};

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

// The record's lines, with the size line as the output carries it.
template <class F>
void ForEachRecordLine(std::string_view bytes, const SortEntry& entry, F&& f) {
  ByteLines lines(bytes, entry.begin, entry.end);
  std::string_view line;
  for (int i = 0; lines.Next(line); ++i) f(i == 2 && !entry.sizeLine.empty() ? std::string_view(entry.sizeLine) : line);
}

// Entries compare as the key, then every line of the record, each after a CR: equal keys
// fall back on the "#" line and the rest, byte by byte.
bool EntryLess(std::string_view bytes, const SortEntry& a, const SortEntry& b) {
  if (a.key != b.key) {
    // A shorter key is a prefix that is followed by CR in the joined text.
    const std::size_t common = std::min(a.key.size(), b.key.size());
    const int c = a.key.compare(0, common, b.key, 0, common);
    if (c != 0) return c < 0;
    const char nextA = a.key.size() > common ? a.key[common] : '\r';
    const char nextB = b.key.size() > common ? b.key[common] : '\r';
    if (nextA != nextB) return static_cast<unsigned char>(nextA) < static_cast<unsigned char>(nextB);
  }
  if (a.key == b.key) {
    // Line by line: most records part in their "#" line, so nothing is copied.
    ByteLines la(bytes, a.begin, a.end);
    ByteLines lb(bytes, b.begin, b.end);
    std::string_view x;
    std::string_view y;
    for (int i = 0;; ++i) {
      const bool moreA = la.Next(x);
      const bool moreB = lb.Next(y);
      if (!moreA || !moreB) return !moreA && moreB;
      if (i == 2 && !a.sizeLine.empty()) x = a.sizeLine;
      if (i == 2 && !b.sizeLine.empty()) y = b.sizeLine;
      if (x == y) continue;
      const std::size_t common = std::min(x.size(), y.size());
      const int c = x.substr(0, common).compare(y.substr(0, common));
      if (c != 0) return c < 0;
      // One line is a prefix of the other ("#12" and "#123"): the shorter record goes on
      // with a CR when it has another line, else it ends and comes first.
      const bool aShorter = x.size() < y.size();
      const bool shorterGoesOn = aShorter ? la.Position() < a.end : lb.Position() < b.end;
      const char next = aShorter ? y[common] : x[common];
      if (!shorterGoesOn) return aShorter;
      if (next == '\r') break;  // a CR inside a line: settle it on the joined texts below
      const bool shorterFirst = '\r' < static_cast<unsigned char>(next);
      return aShorter == shorterFirst;
    }
  }
  std::string textA = a.key;
  std::string textB = b.key;
  ForEachRecordLine(bytes, a, [&](std::string_view line) { textA.append("\r").append(line); });
  ForEachRecordLine(bytes, b, [&](std::string_view line) { textB.append("\r").append(line); });
  return textA < textB;
}

// The record's key by the criterion; an older one-field size line is rewritten so that
// the output always carries N.
std::string SortKey(PuzzleModel& model, const SortRequest& request, std::string_view bytes, SortEntry& entry) {
  int n = 5;
  double signs = 0;
  std::string_view recordLine;
  std::string_view comment;
  bool hasComment = false;
  ByteLines lines(bytes, entry.begin, entry.end);
  std::string_view line;
  for (int i = 0; i < 3 && lines.Next(line); ++i) {
    if (i == 0) recordLine = line;
    if (i == 1) {
      comment = line;
      hasComment = true;
    }
    if (i == 2) {
      const std::string sizeLine(line);
      const std::string_view trimmed = Trim(sizeLine);
      if (trimmed.find(' ') != std::string_view::npos) {
        n = IntegerValue(std::string_view(sizeLine).substr(0, 1));
        signs = NumericValue(sizeLine.size() > 2 ? std::string_view(sizeLine).substr(2) : std::string_view());
      } else {
        signs = NumericValue(sizeLine);
        entry.sizeLine = "5 " + std::string(trimmed);
      }
    }
  }
  switch (request.Option1) {
    case kSortByHeader:
      return hasComment ? std::string(comment) : std::string();
    case kSortBySigns:
      return ZeroPadded(RoundHalfEven(signs), 2);
    case kSortByNumber:
      if (request.Option2 == kSortRandom) {
        return ZeroPadded(static_cast<long long>(RandomUniform(model) * kRandomKeyRange) - 1, 5);
      }
      return ZeroPadded(IntegerValue(recordLine.substr(1)), 5);
    default:
      return ZeroPadded(n, 1);
  }
}

SortOutcome Report(CommandResult result, const std::string& message, int count = 0) {
  return {result, count, message};
}

}  // namespace

SortOutcome SortCollection(PuzzleModel& model, RunHooks& run, const SortRequest& request) {
  if (Trim(request.output).empty()) return Report(CommandResult::Failed, "Specify output file name");
  if (!FileLength(request.source)) return Report(CommandResult::Failed, "Input file does not exist");
  if (SameFile(request.source, request.output)) {
    return Report(CommandResult::Failed, "Input and output files cannot be same");
  }
  const std::string unable = "Unable to sort file:" + std::string(kLineBreak) + request.output;

  std::string file;
  {
    const FileLock lock(request.source);  // no append is half done while it is read
    if (!lock.Held() || !ReadWholeFile(request.source, file)) return Report(CommandResult::Failed, unable);
  }
  const std::string_view bytes = file;

  // Records: a "#" line, the comment line, the size line and the lines up to the next
  // "#" line (the grid). The comment may itself begin with "#": the two lines after
  // the record line belong to the record whatever they hold. Lines before the first
  // record belong to none and are left out.
  std::vector<SortEntry> entries;
  ByteLines lines(bytes);
  RecordScanner scanner(lines, RecordRules{2});
  while (scanner.NextRecord()) {
    SortEntry entry;
    entry.begin = scanner.RecordBegin();
    scanner.ReadBody([](std::string_view) {});
    entry.end = scanner.End();
    entries.push_back(std::move(entry));
  }
  if (entries.empty()) return Report(CommandResult::Failed, "There are no puzzles in this file");

  // A random order works through the puzzle-number key, and always renumbers.
  const bool resequence =
      request.resequence || (request.Option1 == kSortByNumber && request.Option2 == kSortRandom);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    entries[i].key = SortKey(model, request, bytes, entries[i]);
    if (request.progress) request.progress(static_cast<int>(i + 1));
    run.Yield();
  }
  std::sort(entries.begin(), entries.end(),
            [bytes](const SortEntry& a, const SortEntry& b) { return EntryLess(bytes, a, b); });
  if (request.Option2 == kSortDescending) std::reverse(entries.begin(), entries.end());

  // Wide enough that a start near the top of int cannot wrap to "#0".
  long long number = std::max(1, IntegerValue(request.start));
  const bool written = ReplaceFile(request.output, [&](const std::string& path) {
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (out == nullptr) return false;
    bool ok = true;
    for (const SortEntry& entry : entries) {
      int i = 0;
      ForEachRecordLine(bytes, entry, [&](std::string_view text) {
        const std::string renumbered = resequence && i == 0 ? "#" + std::to_string(number++) : std::string();
        const std::string_view shown = resequence && i == 0 ? std::string_view(renumbered) : text;
        ok = ok && std::fwrite(shown.data(), 1, shown.size(), out) == shown.size() && std::fputs("\r\n", out) >= 0;
        ++i;
      });
    }
    ok = std::fflush(out) == 0 && ok;
    return std::fclose(out) == 0 && ok;
  });
  if (!written) return Report(CommandResult::Failed, unable);
  const int count = static_cast<int>(entries.size());
  return Report(CommandResult::Done,
                Str(count) + " puzzles sorted to file:" + std::string(kLineBreak) + request.output, count);
}

}  // namespace qm
