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

bool SignBesideDigit(const Grid& g, Step& step, const Scope& scope) {
  for (const Sign& s : g.SignList()) {
    if (!scope.Touches(s)) continue;
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
      step = {"Sign beside a digit", kSignDigit, {open, placed}, {}, {{open, gone}}, ""};
      step.text = Capital(CellName(g.n, open)) + " must be " + (openIsGreater ? "greater" : "less") + " than the " +
                  std::to_string(d) + " " + Where(g.n, open, placed) + ": it cannot be " + Digits(gone, "or") + ".";
      return true;
    }
  }
  return false;
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
      step = {"Sign chain", kSignBounds, {}, {}, {{c, gone}}, ""};
      std::vector<std::string> names;
      for (int at = c; at >= 0 && static_cast<int>(names.size()) < k; at = chains.next[static_cast<std::size_t>(at)]) {
        step.cells.push_back(at);
        names.push_back(CellName(g.n, at));
      }
      std::string chain;
      for (std::size_t i = 0; i < names.size(); ++i) chain += (i == 0 ? "" : down ? " > " : " < ") + names[i];
      step.text = Capital(CellName(g.n, c)) + " is the " + (down ? "top" : "bottom") + " of a chain of " +
                  std::to_string(k) + " cells (" + chain + "), so it is at " + (down ? "least " : "most ") +
                  std::to_string(down ? k : g.n - k + 1) + ": it cannot be " + Digits(gone, "or") + ".";
      return true;
    });
    if (found) return true;
  }
  return false;
}

bool SignBounds(const Grid& g, Step& step, const Scope& scope) {
  for (const Sign& s : g.SignList()) {
    if (!scope.Touches(s)) continue;
    const auto gi = static_cast<std::size_t>(s.greater);
    const auto si = static_cast<std::size_t>(s.smaller);
    if (g.placed[gi] || g.placed[si] || g.cand[gi] == 0 || g.cand[si] == 0) continue;
    const int lowest = masks::Lowest(g.cand[si]);
    const int highest = masks::Highest(g.cand[gi]);
    const DigitMask goneG = static_cast<DigitMask>(g.cand[gi] & ~masks::Above(lowest));
    const DigitMask goneS = static_cast<DigitMask>(g.cand[si] & ~masks::Below(highest));
    if (goneG == 0 && goneS == 0) continue;
    step = {"Sign bounds", kSignBounds, {s.greater, s.smaller}, {}, {}, ""};
    std::vector<std::string> parts;
    if (goneG != 0) {
      step.removed.emplace_back(s.greater, goneG);
      parts.push_back(CellName(g.n, s.greater) + " is greater than " + CellName(g.n, s.smaller) +
                      ", which is at least " + std::to_string(lowest) + ", so it cannot be " + Digits(goneG, "or"));
    }
    if (goneS != 0) {
      step.removed.emplace_back(s.smaller, goneS);
      parts.push_back(CellName(g.n, s.smaller) + " is less than " + CellName(g.n, s.greater) + ", which is at most " +
                      std::to_string(highest) + ", so it cannot be " + Digits(goneS, "or"));
    }
    step.text = Capital(parts[0]) + (parts.size() > 1 ? "; " + parts[1] : "") + ".";
    return true;
  }
  return false;
}

}  // namespace qm::reasoning::internal
