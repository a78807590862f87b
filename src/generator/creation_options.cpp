#include "generator/creation_options.h"

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
  return result;
}

}  // namespace qm
