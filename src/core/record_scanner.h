// The one reading of a collection's record structure, shared by the reader, sorting,
// deleting and the list of all puzzles. A record begins at a record line (one that
// begins with "#") and runs to the next record line. The commands differ only in how
// far a record may run, which they pass as rules.
#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

namespace qm {

inline bool IsRecordLine(std::string_view line) { return !line.empty() && line.front() == '#'; }

struct RecordRules {
  // Lines after the record line that belong to the record whatever they hold: sorting
  // keeps a comment that itself begins with "#" with its record.
  int fixedLines = 0;
  // The most lines after the record line that a record holds; the lines past it belong
  // to no record (deleting skips at most this many).
  int maxLines = std::numeric_limits<int>::max();
};

// Lines of bytes in memory as the line reader sees them: each ends at LF, a CR just
// before the LF is dropped, and a last line without LF still counts.
class ByteLines {
 public:
  ByteLines(std::string_view bytes, std::size_t from, std::size_t to) : bytes_(bytes), at_(from), end_(to) {}
  explicit ByteLines(std::string_view bytes) : ByteLines(bytes, 0, bytes.size()) {}
  bool Next(std::string_view& line) {
    if (at_ >= end_) return false;
    const std::size_t newline = bytes_.find('\n', at_);
    const std::size_t stop = newline == std::string_view::npos || newline >= end_ ? end_ : newline;
    line = bytes_.substr(at_, stop - at_);
    if (stop < end_ && !line.empty() && line.back() == '\r') line.remove_suffix(1);
    at_ = stop < end_ ? stop + 1 : end_;
    return true;
  }
  std::size_t Position() const { return at_; }

 private:
  std::string_view bytes_;
  std::size_t at_;
  std::size_t end_;
};

// Walks the records of a line source (anything with `bool Next(std::string_view&)`: the
// line reader of a file, or ByteLines). A line handed out stays valid until the next
// one is read.
template <class Lines>
class RecordScanner {
 public:
  explicit RecordScanner(Lines& lines, RecordRules rules = {}) : lines_(lines), rules_(rules) {}

  // Moves to the next record line, handing every line before it to `outside`. False at
  // the end of the lines.
  template <class Outside>
  bool NextRecord(Outside&& outside) {
    for (;;) {
      if (!pending_) {
        if constexpr (kKnowsPosition) begin_ = lines_.Position();
        if (!lines_.Next(line_)) return false;
      }
      pending_ = false;
      if (IsRecordLine(line_)) return true;
      outside(line_);
    }
  }
  bool NextRecord() {
    return NextRecord([](std::string_view) {});
  }

  // The record line just reached.
  std::string_view RecordLine() const { return line_; }
  // Where the record line begins in the bytes (ByteLines only).
  std::size_t RecordBegin() const { return begin_; }

  // Hands the record's lines after its record line to `inside`, up to the next record
  // line (kept for NextRecord) or the rules' limit; false when the lines ended inside.
  template <class Inside>
  bool ReadBody(Inside&& inside) {
    for (int i = 0; i < rules_.maxLines; ++i) {
      if constexpr (kKnowsPosition) begin_ = lines_.Position();
      if (!lines_.Next(line_)) return false;
      if (i >= rules_.fixedLines && IsRecordLine(line_)) {
        pending_ = true;
        return true;
      }
      inside(line_);
    }
    return true;
  }

  // Where the lines read so far end (ByteLines only): past a record's last line once
  // ReadBody returned.
  std::size_t End() const { return pending_ ? begin_ : lines_.Position(); }

 private:
  static constexpr bool kKnowsPosition = requires(const Lines& l) { l.Position(); };

  Lines& lines_;
  RecordRules rules_;
  std::string_view line_;
  bool pending_ = false;
  std::size_t begin_ = 0;
};

}  // namespace qm
