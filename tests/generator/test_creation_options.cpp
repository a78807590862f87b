#include "generator/creation_options.h"

#include <gtest/gtest.h>

namespace qm {
namespace {

CreationOptions Options(std::string size, int choice, std::string field = "", std::string count = "1") {
  CreationOptions options;
  options.count = std::move(count);
  options.size = std::move(size);
  options.clueChoice = choice;
  options.fixedDigit = options.exactCount = options.uptoCount = std::move(field);
  return options;
}

TEST(ValidateCreationOptions, EveryMessageInItsOrder) {
  struct Case {
    CreationOptions options;
    std::string message;
  };
  const std::vector<Case> cases = {
      {Options("5", kChoiceByLevel, "", ""), "Specify number of puzzles to create"},
      {Options("6", kChoiceNoClues, "", "0"), "Specify number of puzzles to create"},
      {Options("5", kChoiceByLevel, "", "-2"), "Specify number of puzzles to create"},
      {Options("6", kChoiceNoClues), "Must have clues in grid size >5"},
      {Options("9", kChoiceNoClues), "Must have clues in grid size >5"},
      {Options("6", kChoiceFixedClue, "2"), "Must have >1 clues in grid size >5"},
      {Options("4", kChoiceFixedClue, "5"), "Clue number is > grid size"},
      {Options("Random", kChoiceFixedClue, "12"), "Clue number is > maximum grid size"},
      {Options("Random", kChoiceExactly, "3"), "Cannot fix number of clues in random puzzle size"},
      {Options("Random", kChoiceUpto, "3"), "Cannot fix number of clues in random puzzle size"},
      {Options("6", kChoiceExactly, "13"), "Must have <12 clues for grid size6"},
      {Options("6", kChoiceExactly, "2"), "Must have >3 clues for grid size6"},
      {Options("3", kChoiceExactly, "1"), "Must have <0 clues for grid size3"},
      {Options("9", kChoiceUpto, "25"), "Must have <24 clues for grid size9"},
      {Options("7", kChoiceUpto, "3"), "Must have >4 clues for grid size7"},
      {Options("4", kChoiceExactly, "-1"), "Must have >0 clues for grid size4"},
  };
  for (const Case& c : cases) {
    const CreationValidation validation = ValidateCreationOptions(c.options);
    EXPECT_EQ(validation.message, c.message) << c.options.size << " " << c.options.clueChoice;
    EXPECT_FALSE(validation.Accepted());
  }
}

TEST(ValidateCreationOptions, AcceptedSettings) {
  struct Case {
    CreationOptions options;
    int gridSize, clueSpec;
  };
  CreationOptions byLevel = Options("7", kChoiceByLevel);
  byLevel.level = "VeryEasy";
  const std::vector<Case> cases = {
      {Options("5", kChoiceNoClues), 5, 0},        {Options("Random", kChoiceNoClues), 0, 0},
      {Options("3", kChoiceExactly, "0"), 3, 0},   {Options("6", kChoiceExactly, "12"), 6, 12},
      {Options("6", kChoiceExactly, "3"), 6, 3},   {Options("6", kChoiceUpto, "5"), 6, -5},
      {Options("4", kChoiceUpto, "1"), 4, -1},     {Options("4", kChoiceFixedClue, "4"), 4, 104},
      {Options("Random", kChoiceFixedClue, "7"), 0, 107}, {Options("Random", kChoiceFixedClue, "9"), 0, 109},
      {Options("9", kChoiceRandom), 9, -1},        {byLevel, 7, 99},
  };
  for (const Case& c : cases) {
    const CreationValidation validation = ValidateCreationOptions(c.options);
    ASSERT_TRUE(validation.Accepted()) << validation.message;
    EXPECT_EQ(validation.settings.gridSize, c.gridSize) << c.options.size;
    EXPECT_EQ(validation.settings.clueSpec, c.clueSpec) << c.options.size << " " << c.options.clueChoice;
  }
  CreationOptions full = byLevel;
  full.count = "12";
  full.displayOne = false;
  full.title = "Book one";
  full.outputFile = "book.fut";
  const CreationSettings settings = ValidateCreationOptions(full).settings;
  EXPECT_EQ(settings.count, 12);
  EXPECT_EQ(settings.level, 4);
  EXPECT_FALSE(settings.displayOne);
  EXPECT_EQ(settings.title, "Book one");
  EXPECT_EQ(settings.outputFile, "book.fut");
}

TEST(CreationDialogRules, LevelCodesAndTheDisplayTick) {
  EXPECT_EQ(LevelCode("VeryHard"), 1);
  EXPECT_EQ(LevelCode("Hard"), 2);
  EXPECT_EQ(LevelCode("Easy"), 3);
  EXPECT_EQ(LevelCode("VeryEasy"), 4);
  EXPECT_EQ(LevelCode("easy"), 1);
  EXPECT_EQ(LevelCode(""), 1);
  EXPECT_TRUE(DisplayOneTicked("1"));
  EXPECT_TRUE(DisplayOneTicked(" 1.0"));
  EXPECT_FALSE(DisplayOneTicked("10"));
  EXPECT_FALSE(DisplayOneTicked(""));
  EXPECT_TRUE(LevelListEnabled(kChoiceByLevel));
  EXPECT_FALSE(LevelListEnabled(kChoiceRandom));
}

}  // namespace
}  // namespace qm
