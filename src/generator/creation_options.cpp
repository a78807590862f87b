#include "generator/creation_options.h"

#include "reasoning/ladder.h"

#include "core/puzzle_model.h"
#include "core/text_rules.h"
#include "generator/create_puzzle.h"

namespace qm {

namespace {

// "Must have >" + minimum + " clues for grid size" + N: no blank before either number.
std::string ClueLimitMessage(char relation, int limit, int n) {
  return std::string("Must have ") + relation + std::to_string(limit) + " clues for grid size" + std::to_string(n);
}

// The checks shared by "Exactly" and "Upto". Empty when the count is within the limits.
std::string CountedCluesMessage(bool randomSize, int count, int minimum, int maximum, int n) {
  if (randomSize) return "Cannot fix number of clues in random puzzle size";
  if (count < minimum) return ClueLimitMessage('>', minimum, n);
  if (count > maximum) return ClueLimitMessage('<', maximum, n);
  return {};
}

}  // namespace

int LevelCode(std::string_view text) {
  for (int level = 2; level <= kVeryEasy; ++level) {
    if (text == LevelNames[static_cast<std::size_t>(level)]) return level;
  }
  return kVeryHard;
}

bool DisplayOneTicked(std::string_view countText) { return NumericValue(countText) == 1.0; }

CreationValidation ValidateCreationOptions(const CreationOptions& options) {
  CreationValidation result;
  if (NumericValue(options.count) <= 0) {
    result.message = "Specify number of puzzles to create";
    return result;
  }
  const bool randomSize = options.size == kRandomSize;
  const int n = IntegerValue(options.size);
  // CluesForLevel draws only for the random rule, so a scratch model serves.
  PuzzleModel scratch;
  const int minimum = CluesForLevel(scratch, n, kVeryHard);
  const int maximum = CluesForLevel(scratch, n, kVeryEasy);

  CreationSettings& settings = result.settings;
  settings.level = LevelCode(options.level);
  ClueRule rule{ClueRule::Kind::Random};
  switch (options.clueChoice) {
    case kChoiceNoClues:
      if (!randomSize && n >= 6) result.message = "Must have clues in grid size >5";
      rule = {ClueRule::Kind::None};
      break;
    case kChoiceFixedClue: {
      const int digit = IntegerValue(options.fixedDigit);
      if (!randomSize && n >= 6) {
        result.message = "Must have >1 clues in grid size >5";
      } else if (digit > n && !randomSize) {
        result.message = "Clue number is > grid size";
      } else if (digit <= 9 || !randomSize) {
        rule = {ClueRule::Kind::Fixed, digit};
      } else {
        result.message = "Clue number is > maximum grid size";
      }
      break;
    }
    case kChoiceExactly:
    case kChoiceUpto: {
      const bool exactly = options.clueChoice == kChoiceExactly;
      const int count = IntegerValue(exactly ? options.exactCount : options.uptoCount);
      result.message = CountedCluesMessage(randomSize, count, minimum, maximum, n);
      rule = {exactly ? ClueRule::Kind::Exactly : ClueRule::Kind::Upto, count};
      break;
    }
    case kChoiceByLevel:
      rule = {ClueRule::Kind::ByLevel};
      break;
    default:
      break;
  }
  settings.clueSpec = ClueSpecOf(rule);
  if (!result.Accepted()) return result;

  settings.count = IntegerValue(options.count);
  settings.gridSize = randomSize ? 0 : n;
  settings.displayOne = options.displayOne;
  settings.uniqueSolution = options.uniqueSolution;
  settings.title = options.title;
  settings.outputFile = options.outputFile;
  settings.grade = 0;
  for (int rung = reasoning::kSingles; rung < reasoning::kNeedsSearch; ++rung) {
    if (options.grade == reasoning::RungName(rung)) settings.grade = rung;
  }
  settings.symmetry = SymmetryOf(options.symmetry);
  if (settings.grade > 0) result.message = GradedConflictFor(settings, settings.grade, settings.grade, 20);
  return result;
}

GradedClueRule GradedCluesFor(int clueSpec, int level, int n) {
  using Kind = GradedClueRule::Kind;
  if (clueSpec == kRandomClues) return {Kind::Free, 0};
  if (clueSpec == kNoClues) return {Kind::None, 0};
  if (clueSpec > kFixedClueBase) return {Kind::Fixed, clueSpec - kFixedClueBase};
  if (clueSpec < kRandomClues) return {Kind::Upto, -clueSpec};
  PuzzleModel scratch;  // CluesForLevel draws only for the random rule
  const int count = clueSpec == kCluesByLevel ? CluesForLevel(scratch, n, level) : clueSpec;
  return count == 0 ? GradedClueRule{Kind::None, 0} : GradedClueRule{Kind::Exactly, count};
}

std::string GradedConflictFor(const CreationSettings& settings, int minGrade, int maxGrade, int minSignsPercent) {
  for (int n = kMinGridSize; n <= kMaxGridSize; ++n) {
    if (settings.gridSize != 0 && n != settings.gridSize) continue;
    GradedOptions check;
    check.size = n;
    check.minGrade = minGrade;
    check.maxGrade = maxGrade;
    check.clues = GradedCluesFor(settings.clueSpec, settings.level, n);
    check.symmetry = settings.symmetry;
    check.minSignsPercent = minSignsPercent;
    const std::string conflict = GradedConflict(check);
    if (!conflict.empty()) {
      const std::string range = reasoning::RungName(minGrade) +
                                (maxGrade != minGrade ? " to " + reasoning::RungName(maxGrade) : std::string());
      return "Cannot create " + std::to_string(n) + "x" + std::to_string(n) + " puzzles graded " + range + ": " +
             conflict;
    }
  }
  return "";
}

std::vector<std::string> GradeChoices() {
  std::vector<std::string> choices{std::string(kAnyGrade)};
  for (int rung = reasoning::kSingles; rung < reasoning::kNeedsSearch; ++rung) choices.push_back(reasoning::RungName(rung));
  return choices;
}

GradedSymmetry SymmetryOf(std::string_view text) {
  if (text == kSymmetryChoices[1]) return GradedSymmetry::Rotate;
  if (text == kSymmetryChoices[2]) return GradedSymmetry::Mirror;
  return GradedSymmetry::None;
}

}  // namespace qm
