#include "collections/collection_commands.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/collection_file.h"
#include "core/headless_port.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::CrLf;
using test::ReadBytes;
using test::Records;
using test::SmallRecord;
using Strings = std::vector<std::string>;

class CollectionCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    lines = Records({SmallRecord("#1", "one", "3 0 1", '1'), SmallRecord("#2", "two", "3 0 1", '2'),
                     SmallRecord("#3", "three", "3 0 1", '3')});
    file = dir.File("c.fut");
    test::WriteBytes(file, CrLf(lines));
    model.AppDir = dir.Path() + "/";
    Load(1);
  }
  void Load(int n) { ASSERT_FALSE(ReadPuzzle(model, port, file, n).notFound); }
  // The puzzle shown, by its comment, and what the port was told.
  std::string Shown() const { return model.Comment + "@" + std::to_string(model.CurrentPuzzle); }

  test::TempDir dir;
  Strings lines;
  std::string file;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(CollectionCommands, ArrowsWrapAtBothEnds) {
  const struct {
    int from;
    Arrow arrow;
    std::string shown;
  } cases[] = {{1, Arrow::Previous, "three@3"}, {2, Arrow::Previous, "one@1"}, {3, Arrow::Next, "one@1"},
               {1, Arrow::Next, "two@2"},       {3, Arrow::First, "one@1"},    {1, Arrow::Last, "three@3"}};
  for (const auto& c : cases) {
    Load(c.from);
    EXPECT_EQ(MoveByArrow(model, port, c.arrow), CommandResult::Done);
    EXPECT_EQ(Shown(), c.shown) << c.from << " " << static_cast<int>(c.arrow);
  }
  EXPECT_TRUE(port.messages.empty());
  EXPECT_TRUE(port.questions.empty());
}

TEST_F(CollectionCommands, ArrowsAskBeforeDiscardingEditsAndWaitForTheSolver) {
  model.Modified = -1;
  port.yesNoAnswers = {false, true};
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), CommandResult::Cancelled);
  EXPECT_EQ(Shown(), "one@1");
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), CommandResult::Done);
  EXPECT_EQ(Shown(), "two@2");
  EXPECT_EQ(port.questions, Strings({"Discard all changes?", "Discard all changes?"}));

  model.SolverBusy = true;
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), CommandResult::Cancelled);
  EXPECT_EQ(Shown(), "two@2");
}

TEST_F(CollectionCommands, RandomArrowUsesTheModelsGenerator) {
  auto visits = [this](std::uint64_t seed) {
    SeedRandom(model, seed);
    std::string order;
    for (int i = 0; i < 30; ++i) {
      MoveByArrow(model, port, Arrow::Random);
      order += std::to_string(model.CurrentPuzzle);
    }
    return order;
  };
  const std::string first = visits(7);
  EXPECT_EQ(visits(7), first);
  for (char n : {'1', '2', '3'}) EXPECT_NE(first.find(n), std::string::npos) << first;

  test::WriteBytes(file, CrLf(SmallRecord("#1", "only")));
  Load(1);
  EXPECT_EQ(visits(3), std::string(30, '1'));
}

TEST_F(CollectionCommands, AFailedReadReturnsToThePreviousPuzzle) {
  // Record 2 cannot be read (its size is 0).
  lines[10] = "0 0 0";
  test::WriteBytes(file, CrLf(lines));
  Load(1);
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), CommandResult::Failed);
  EXPECT_EQ(Shown(), "one@1");
  EXPECT_EQ(model.GivenValue[0], 1);
  EXPECT_EQ(GoToPuzzleNumber(model, port, "7"), CommandResult::Failed);
  EXPECT_EQ(Shown(), "one@1");
  EXPECT_EQ(port.messages, Strings({"Error reading puzzle# 2", "Error reading puzzle# 7"}));
}

TEST_F(CollectionCommands, TypedNumbersOutsideTheFileChangeNothing) {
  const struct {
    const char* typed;
    std::string shown;
  } cases[] = {{"0", "one@1"}, {"4", "one@1"}, {"abc", "one@1"}, {"3.4", "one@1"}, {"0.9", "one@1"},
               {"2", "two@2"}, {"2.5", "two@2"}, {" 3", "three@3"}};
  for (const auto& c : cases) {
    Load(1);
    GoToTypedNumber(model, port, c.typed);
    EXPECT_EQ(Shown(), c.shown) << c.typed;
  }
  EXPECT_TRUE(port.messages.empty());
}

TEST_F(CollectionCommands, ReloadDiscardsEditsAndSaysWhenTheRecordIsGone) {
  Load(2);
  model.PosText[0] = "9";
  model.Modified = -1;
  EXPECT_EQ(mnureload(model, port), CommandResult::Done);
  EXPECT_EQ(model.PosText[0], "2");
  EXPECT_EQ(model.Modified, 0);
  std::filesystem::remove(file);
  EXPECT_EQ(mnureload(model, port), CommandResult::Failed);
  EXPECT_EQ(port.messages, Strings({"Error reading puzzle# 2 in file:\r\n" + file}));
}

TEST_F(CollectionCommands, OpenReadsTheFirstPuzzleOrKeepsTheFileOfBefore) {
  const std::string other = dir.File("other.fut");
  test::WriteBytes(other, CrLf(SmallRecord("#8", "eight")));
  Load(3);
  port.fileAnswers = {"", other, dir.File("missing.fut")};
  EXPECT_EQ(mnuload(model, port), CommandResult::Cancelled);
  EXPECT_EQ(model.CurrentFile, file);

  EXPECT_EQ(mnuload(model, port), CommandResult::Done);
  EXPECT_EQ(model.CurrentFile, other);
  EXPECT_EQ(Shown(), "eight@1");
  EXPECT_EQ(model.PuzzleCount, 1);
  const FileChoice& choice = port.fileChoices.back();
  EXPECT_EQ(choice.title, "Quillmere");
  EXPECT_EQ(choice.patterns, "*.fut;*.txt;*.dat");
  EXPECT_EQ(choice.description, "Quillmere Files");
  EXPECT_EQ(choice.directory, model.AppDir);
  EXPECT_EQ(choice.mode, ChooserMode::Open);

  Load(3);
  EXPECT_EQ(mnuload(model, port), CommandResult::Failed);
  EXPECT_EQ(port.messages, Strings({"Error reading puzzle# 1"}));
  EXPECT_EQ(model.CurrentFile, file);
  EXPECT_EQ(model.CurrentPuzzle, 3);
  EXPECT_EQ(model.PuzzleCount, 3);
}

TEST_F(CollectionCommands, AppendNumbersAfterTheTargetsRecords) {
  const std::string target = dir.File("new.fut");
  Load(2);
  port.fileAnswers = {target, target, file};
  EXPECT_EQ(mnuappend(model, port), CommandResult::Done);
  EXPECT_EQ(mnuappend(model, port), CommandResult::Done);
  EXPECT_EQ(CountPuzzles(target), 2);
  EXPECT_EQ(ReadBytes(target).substr(0, 17), "#1\r\ntwo\r\n3 0 1\r\n2");
  EXPECT_EQ(port.fileChoices[0].title, "Add Puzzle to File");
  EXPECT_EQ(port.fileChoices[0].patterns, "*.fut");
  EXPECT_EQ(Shown(), "two@2");  // another file: the current puzzle is read again

  EXPECT_EQ(mnuappend(model, port), CommandResult::Done);
  EXPECT_EQ(Shown(), "two@4");  // the current file: its new record is shown
  EXPECT_EQ(model.PuzzleCount, 4);
  EXPECT_EQ(port.messages, Strings({"Puzzle# 1 appended to file " + target, "Puzzle# 2 appended to file " + target,
                                    "Puzzle# 4 appended to file " + file}));
  EXPECT_TRUE(port.questions.empty());
}

TEST_F(CollectionCommands, AppendOffersTheFoundSolutions) {
  const std::string target = dir.File("sol.fut");
  model.SolutionList = {std::string(25, '1'), std::string(25, '2')};
  port.fileAnswers = {target};
  port.yesNoAnswers = {true};
  EXPECT_EQ(mnuappend(model, port), CommandResult::Done);
  EXPECT_EQ(port.questions, Strings({"Save all 2 solutions?"}));
  EXPECT_EQ(port.messages, Strings({"Puzzle and its 2 solutions appended to file " + target}));
  EXPECT_EQ(CountPuzzles(target), 2);

  model.SolutionList = {std::string(25, '1')};
  port.fileAnswers = {target};
  port.yesNoAnswers = {false};
  EXPECT_EQ(mnuappend(model, port), CommandResult::Done);
  EXPECT_EQ(port.messages.back(), "Puzzle# 3 appended to file " + target);
}

TEST_F(CollectionCommands, AppendAndSaveRefuseTargetsThatAreNoFiles) {
  for (const std::string& target : {dir.Path(), std::string("/dev/full")}) {
    port.fileAnswers = {target, target};
    EXPECT_EQ(mnuappend(model, port), CommandResult::Failed);
    EXPECT_EQ(mnusaveassli(model, port), CommandResult::Failed);
  }
  EXPECT_EQ(port.messages, Strings({"Error writing to file: " + dir.Path(), "Error writing to file: " + dir.Path(),
                                    "Error writing to file: /dev/full", "Error writing to file: /dev/full"}));
  port.messages.clear();
  port.fileAnswers = {dir.File("no/such/dir.fut")};
  EXPECT_EQ(mnusaveassli(model, port), CommandResult::Failed);
  EXPECT_EQ(port.messages, Strings({"Error writing puzzle# 1 to file: " + dir.File("no/such/dir.fut")}));
}

TEST_F(CollectionCommands, SaveSingleAppendsTheCurrentPuzzle) {
  Load(3);
  port.fileAnswers = {file};
  EXPECT_EQ(mnusaveassli(model, port), CommandResult::Done);
  EXPECT_EQ(port.messages, Strings({"Puzzle# 4 saved in file " + file}));
  EXPECT_EQ(port.fileChoices[0].title, "Quillmere");
  EXPECT_EQ(port.fileChoices[0].patterns, "*.fut");
  EXPECT_EQ(port.fileChoices[0].mode, ChooserMode::Save);
  EXPECT_EQ(CountPuzzles(file), 4);
  EXPECT_EQ(Shown(), "three@3");
}

class DeleteCommand : public CollectionCommands {
 protected:
  // Deletes record n (as PuzNumNow shows it) with the temporary file in `dir`.
  CommandResult Delete(int n) {
    test::WorkingDirectory here(dir.Path());
    Load(n);
    return mnudelete(model, port, std::to_string(n));
  }
  Strings Without(int first, int count) const {
    Strings kept = lines;
    kept.erase(kept.begin() + first, kept.begin() + first + count);
    return kept;
  }
};

TEST_F(DeleteCommand, KeepsEveryOtherRecordLineForLine) {
  ASSERT_EQ(Delete(2), CommandResult::Done);
  EXPECT_EQ(ReadBytes(file), CrLf(Without(8, 8)));
  EXPECT_EQ(ReadBytes(dir.File("Quillmeretemp.tmp")), CrLf(Without(8, 8)));
  EXPECT_EQ(Shown(), "three@2");
  EXPECT_EQ(port.questions, Strings({"Delete current puzzle from file?"}));
  EXPECT_EQ(port.messages, Strings({"Done"}));
}

TEST_F(DeleteCommand, TheLastPuzzleMovesToTheNewLast) {
  ASSERT_EQ(Delete(3), CommandResult::Done);
  EXPECT_EQ(ReadBytes(file), CrLf(Without(16, 8)));
  EXPECT_EQ(Shown(), "two@2");
  EXPECT_EQ(model.PuzzleCount, 2);

  test::WriteBytes(file, CrLf(SmallRecord("#1", "only")));
  ASSERT_EQ(Delete(1), CommandResult::Done);
  EXPECT_EQ(ReadBytes(file), "");
  EXPECT_EQ(model.CurrentPuzzle, 0);
  EXPECT_EQ(model.PuzzleCount, 0);
  EXPECT_EQ(model.PosText[0], "");
}

TEST_F(DeleteCommand, NoOrAFailureLeavesTheCollection) {
  port.yesNoAnswers = {false};
  EXPECT_EQ(Delete(1), CommandResult::Cancelled);
  {
    test::FileSizeLimit full(16);
    EXPECT_EQ(Delete(1), CommandResult::Failed);
  }
  EXPECT_EQ(ReadBytes(file), CrLf(lines));
  model.CurrentFile = dir.File("missing.fut");
  {
    test::WorkingDirectory here(dir.Path());
    EXPECT_EQ(mnudelete(model, port, "1"), CommandResult::Failed);
  }
  EXPECT_EQ(port.messages, Strings({"Error writing to file: Quillmeretemp.tmp",
                                    "Error writing to file: " + dir.File("missing.fut")}));
}

TEST_F(CollectionCommands, CopyAndBackupReportWhereTheFileWent) {
  const std::string copy = dir.File("copy.dat");
  port.fileAnswers = {copy, dir.File("no/such/dir.fut")};
  EXPECT_EQ(mnusaveas(model, port), CommandResult::Done);
  EXPECT_EQ(mnusaveas(model, port), CommandResult::Failed);
  EXPECT_EQ(ReadBytes(copy), ReadBytes(file));
  EXPECT_EQ(model.CurrentFile, file);
  EXPECT_EQ(port.fileChoices[0].patterns, "*.fut;*.txt;*.dat");

  EXPECT_EQ(mnubackup(model, port), CommandResult::Done);
  EXPECT_EQ(ReadBytes(dir.File("c;01.fut")), ReadBytes(file));
  model.CurrentFile = dir.File("gone.fut");
  EXPECT_EQ(mnubackup(model, port), CommandResult::Failed);
  EXPECT_EQ(port.messages, Strings({"Puzzle file saved as:\r\n" + copy,
                                    "Error saving to file:\r\n" + dir.File("no/such/dir.fut"),
                                    "File backed up as:\r\n" + dir.File("c;01.fut"),
                                    "Error backing to file:\r\n" + dir.File("gone;01.fut")}));
  EXPECT_EQ(ViewAllTotal(model), "Total Puzzles = 3");
}

TEST_F(CollectionCommands, BackupNamesTakeTheNextFreeNumberAndWrap) {
  const struct {
    Strings existing;
    std::string path;
    std::string expected;
  } cases[] = {
      {{}, "p.fut", "p;01.fut"},
      {{"p;01.fut", "p;02.fut", "p;04.fut"}, "p.fut", "p;03.fut"},
      {{}, "p;05.fut", "p;06.fut"},
      {{"p;06.fut"}, "p;05.fut", "p;07.fut"},
      {{}, "p;99.fut", "p;01.fut"},
      {{}, "p;x.fut", "p;01.fut"},
      {{}, "a.b.fut", "a.b;01.fut"},
      {{}, "noext", "noext;01"},
      {{}, "d;1.x/p", "d;1.x/p;01"},
  };
  for (const auto& c : cases) {
    test::TempDir here;
    std::filesystem::create_directory(here.File("d;1.x"));
    for (const auto& name : c.existing) test::WriteBytes(here.File(name), "");
    EXPECT_EQ(BackupName(here.File(c.path)), here.File(c.expected)) << c.path;
  }

  for (int m = 1; m <= 99; ++m) test::WriteBytes(dir.File("c;" + std::string(m < 10 ? "0" : "") + std::to_string(m) + ".fut"), "x");
  EXPECT_EQ(mnubackup(model, port), CommandResult::Failed);
  EXPECT_EQ(ReadBytes(dir.File("c;01.fut")), "x");
}

}  // namespace
}  // namespace qm
