// The "Create New Puzzles" dialog without its window: captions, the small rules between
// its inputs, and the validation of its "Create" command, which turns the inputs into
// the settings batch creation reads or names the one thing that is wrong.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "generator/graded_creation.h"

namespace qm {

inline constexpr std::string_view kCreationDialogTitle = "Create New Puzzles";
inline constexpr std::string_view kPuzzleFrame = "Puzzle";
inline constexpr std::string_view kDisplayOneCaption = "Create 1 puzzle for display";
inline constexpr std::string_view kCountLabel = "No of Puzzles to create";
inline constexpr std::string_view kGridSizeFrame = "Grid Size";
inline constexpr std::string_view kUniqueFrame = "Unique Solution";
inline constexpr std::string_view kCluesFrame = "Clues";
inline constexpr std::string_view kTitleFrame = "Puzzle Title";
inline constexpr std::string_view kOutputFrame = "Output File";
inline constexpr std::string_view kOutputTip = "New Puzzles will be stored in this file";
inline constexpr std::string_view kCreateCaption = "Create";
inline constexpr std::string_view kCreateTip = "Create new puzzle(s)";
inline constexpr std::string_view kCancelCaption = "Cancel";
inline constexpr std::string_view kCancelTip = "Take no action and exit";

// The size list; "Random" draws a size for every puzzle.
inline constexpr std::string_view kRandomSize = "Random";
inline constexpr std::array<std::string_view, 8> kGridSizeChoices = {"3", "4", "5", "6", "7", "8", "9", "Random"};

// The clue choices by index. The runs of blanks leave room for the number field that
// sits inside the caption line.
enum ClueChoice { kChoiceNoClues, kChoiceFixedClue, kChoiceExactly, kChoiceUpto, kChoiceByLevel, kChoiceRandom };
inline constexpr std::array<std::string_view, 6> kClueChoiceCaptions = {
    "No clues (size 3, 4 and 5 only)",
    "Fixed Clue               at random locations",
    "Exactly                    Clues at random locations",
    "Upto                       Clues at random locations",
    "Set Clues by difficulty",
    "Random",
};

// Shown by the help button of "Unique Solution".
inline constexpr std::string_view kUniqueSolutionHelp =
    "Check Yes if you wish to create puzzles that have unique solutions\r\n\r\n"
    "In case you select this option, the Number of Contraints are assumed to be random\r\n\r\n"
    "It is faster to create puzzles with unique solutions\r\n"
    "when program has no restrictions on Number of Constraints";

// The level list's code for a text: "Hard" 2, "Easy" 3, "VeryEasy" 4, anything else 1.
int LevelCode(std::string_view text);

// The level list is enabled only while "Set Clues by difficulty" is selected.
inline bool LevelListEnabled(int clueChoice) { return clueChoice == kChoiceByLevel; }
// Editing the count ticks "Create 1 puzzle for display" exactly when the count is 1;
// ticking it sets the count to this text.
bool DisplayOneTicked(std::string_view countText);
inline constexpr std::string_view kDisplayOneCount = "1";


// The dialog's inputs, as its fields hold them.
struct CreationOptions {
  std::string count = "1";
  bool displayOne = true;
  std::string size = "5";        // "3".."9" or "Random"
  int clueChoice = kChoiceByLevel;
  std::string fixedDigit;        // the number field of "Fixed Clue"
  std::string exactCount;        // of "Exactly"
  std::string uptoCount;         // of "Upto"
  std::string level = "Easy";    // the level list's text
  bool uniqueSolution = false;   // recorded only: every puzzle passes the logic solve
  std::string title;
  std::string outputFile;
  std::string grade = "Any";      // "Any", or a grade name: then creation is by grade
  std::string symmetry = "None";  // of a graded puzzle's givens: "None", "Half-turn", "Mirror"
};

// The grade list: "Any" keeps the usual creation; a grade name makes puzzles of that grade.
inline constexpr std::string_view kAnyGrade = "Any";
std::vector<std::string> GradeChoices();
inline constexpr std::array<std::string_view, 3> kSymmetryChoices = {"None", "Half-turn", "Mirror"};
// A symmetry list text, "None" for any other.
GradedSymmetry SymmetryOf(std::string_view text);

// What an accepted "Create" records for batch creation.
struct CreationSettings {
  int count = 1;
  int gridSize = 5;  // 0 when the size is "Random"
  int clueSpec = 99;
  int level = 3;
  bool displayOne = true;
  bool uniqueSolution = false;
  std::string title;
  std::string outputFile;
  int grade = 0;  // a ladder rung: the grade every puzzle must have; 0 for the usual creation
  GradedSymmetry symmetry = GradedSymmetry::None;
};

struct CreationValidation {
  std::string message;  // the message to show; empty when accepted
  CreationSettings settings;
  bool Accepted() const { return message.empty(); }
};

// The checks of "Create", in their fixed order; the first failure is the message. With a
// grade, a clue rule or symmetry the grade cannot go with is named last.
CreationValidation ValidateCreationOptions(const CreationOptions& options);

// The graded clue rule that a clue code (and level) stands for on an N x N grid: the
// random rule leaves the clues to the reduction; a level means its count of clues.
GradedClueRule GradedCluesFor(int clueSpec, int level, int n);

// "Cannot create 5x5 puzzles graded Gentle: <why>" when the settings' size (every size
// for a random one), clue rule and symmetry cannot make the grade range; else "".
std::string GradedConflictFor(const CreationSettings& settings, int minGrade, int maxGrade, int minSignsPercent);

}  // namespace qm
