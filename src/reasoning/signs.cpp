// Rungs 2 and 3: a sign beside a placed digit, chains of signs, and signs between open
// cells.
#include <string>
#include <vector>

#include "reasoning/ladder_internal.h"

namespace qm::reasoning::internal {

namespace {

std::string Where(int n, int from, int to) {
  if (to == from - 1) return "to its left";
  if (to == from + 1) return "to its right";
  if (to == from - n) return "above it";
  if (to == from + n) return "below it";
  return "beside it";
}

}  // namespace

bool SignBesideDigit(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  return memo.AnySign(g, scope, [&](const Sign& s) {
    // One side placed, the other open: the open side is above a placed smaller digit,
    // or below a placed greater one.
    for (const bool openIsGreater : {true, false}) {
      const int open = openIsGreater ? s.greater : s.smaller;
      const int placed = openIsGreater ? s.smaller : s.greater;
      if (!g.placed[static_cast<std::size_t>(placed)] || g.placed[static_cast<std::size_t>(open)]) continue;
      const int d = DigitOf(g.cand[static_cast<std::size_t>(placed)]);
      const DigitMask allowed = openIsGreater ? masks::Above(d) : masks::Below(d);
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(open)] & ~allowed);
      if (gone == 0) continue;
      Begin(step, "Sign beside a digit", kSignDigit);
      step.cells = {open, placed};
      step.removed.emplace_back(open, gone);
      std::string& text = step.text;
      text.append(CellName(g.n, open)).append(" must be ").append(openIsGreater ? "greater" : "less");
      text.append(" than the ");
      AppendNumber(text, d);
      text.append(" ").append(Where(g.n, open, placed)).append(": it cannot be ");
      AppendDigits(text, gone, "or");
      text.append(".");
      text[0] = 'R';
      return true;
    }
    return false;
  });
}

Chains LongestChains(const Grid& g, bool down) {
  Chains chains;
  chains.length.fill(1);
  chains.next.fill(-1);
  // Relaxation; a cycle of signs (no solution) stops at the bound instead of looping.
  for (int round = 0; round < Cells(g); ++round) {
    bool changed = false;
    for (const Sign& s : g.SignList()) {
      const int from = down ? s.greater : s.smaller;
      const int to = down ? s.smaller : s.greater;
      const int via = chains.length[static_cast<std::size_t>(to)] + 1;
      if (via > chains.length[static_cast<std::size_t>(from)] && via <= g.n + 1) {
        chains.length[static_cast<std::size_t>(from)] = via;
        chains.next[static_cast<std::size_t>(from)] = to;
        changed = true;
      }
    }
    if (!changed) break;
  }
  return chains;
}

bool SignChain(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  for (const bool down : {true, false}) {
    const Chains& chains = memo.ChainsFor(g, down);
    const bool found = scope.AnyCell(Cells(g), [&](int c) {
      const int k = chains.length[static_cast<std::size_t>(c)];
      if (g.placed[static_cast<std::size_t>(c)] || k < 3) return false;
      const DigitMask allowed = down ? masks::Range(k, g.n) : masks::Range(1, g.n - k + 1);
      const DigitMask gone = static_cast<DigitMask>(g.cand[static_cast<std::size_t>(c)] & ~allowed);
      if (gone == 0) return false;
      Begin(step, "Sign chain", kSignBounds);
      step.removed.emplace_back(c, gone);
      std::string& text = step.text;
      text.append(CellName(g.n, c)).append(" is the ").append(down ? "top" : "bottom").append(" of a chain of ");
      AppendNumber(text, k);
      text.append(" cells (");
      for (int at = c; at >= 0 && static_cast<int>(step.cells.size()) < k; at = chains.next[static_cast<std::size_t>(at)]) {
        if (!step.cells.empty()) text.append(down ? " > " : " < ");
        step.cells.push_back(at);
        text.append(CellName(g.n, at));
      }
      text.append("), so it is at ").append(down ? "least " : "most ");
      AppendNumber(text, down ? k : g.n - k + 1);
      text.append(": it cannot be ");
      AppendDigits(text, gone, "or");
      text.append(".");
      text[0] = 'R';
      return true;
    });
    if (found) return true;
  }
  return false;
}

bool SignBounds(const Grid& g, Step& step, Memo& memo, const Scope& scope) {
  return memo.AnySign(g, scope, [&](const Sign& s) {
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (g.placed[gi] || g.placed[si] || g.cand[gi] == 0 || g.cand[si] == 0) return false;
    const int lowest = masks::Lowest(g.cand[si]);
    const int highest = masks::Highest(g.cand[gi]);
    const DigitMask goneG = static_cast<DigitMask>(g.cand[gi] & ~masks::Above(lowest));
    const DigitMask goneS = static_cast<DigitMask>(g.cand[si] & ~masks::Below(highest));
    if (goneG == 0 && goneS == 0) return false;
    Begin(step, "Sign bounds", kSignBounds);
    step.cells = {s.greater, s.smaller};
    std::string& text = step.text;
    if (goneG != 0) {
      step.removed.emplace_back(s.greater, goneG);
      text.append(CellName(g.n, s.greater)).append(" is greater than ").append(CellName(g.n, s.smaller));
      text.append(", which is at least ");
      AppendNumber(text, lowest);
      text.append(", so it cannot be ");
      AppendDigits(text, goneG, "or");
    }
    if (goneS != 0) {
      step.removed.emplace_back(s.smaller, goneS);
      if (!text.empty()) text.append("; ");
      text.append(CellName(g.n, s.smaller)).append(" is less than ").append(CellName(g.n, s.greater));
      text.append(", which is at most ");
      AppendNumber(text, highest);
      text.append(", so it cannot be ");
      AppendDigits(text, goneS, "or");
    }
    text.append(".");
    text[0] = 'R';
    return true;
  });
}

}  // namespace qm::reasoning::internal
