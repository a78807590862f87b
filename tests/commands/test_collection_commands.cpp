#include "commands/collection_commands.h"

#include <gtest/gtest.h>

#include <functional>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "commands/headless_port.h"
#include "core/text_rules.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::CrLf;
using test::ReadBytes;
using Strings = std::vector<std::string>;
using Results = std::vector<CommandResult>;
constexpr CommandResult kDone = CommandResult::Done;
constexpr CommandResult kFailed = CommandResult::Failed;
constexpr CommandResult kCancelled = CommandResult::Cancelled;

class CollectionCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    test::WriteBytes(file, CrLf(lines));
    model.AppDir = dir.Path() + "/";
    Load(1);
  }
  void Load(int n) { ASSERT_FALSE(ReadPuzzle(model, port, file, n).notFound); }
  // The puzzle shown: its comment and its ordinal.
  std::string Shown() const { return model.Comment + "@" + std::to_string(model.CurrentPuzzle); }

  test::TempDir dir;
  std::string file = dir.File("c.fut");
  Strings lines = test::Records({test::SmallRecord("#1", "one", "3 0 1", '1'), test::SmallRecord("#2", "two", "3 0 1", '2'),
                                 test::SmallRecord("#3", "three", "3 0 1", '3')});
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(CollectionCommands, MovesBetweenPuzzles) {
  using Run = std::function<CommandResult()>;
  auto arrow = [this](Arrow a) -> Run { return [this, a] { return MoveByArrow(model, port, a); }; };
  auto typed = [this](const char* t) -> Run { return [this, t] { return GoToTypedNumber(model, port, t); }; };
  const struct {
    int from;
    Run run;
    const char* shown;
  } cases[] = {{1, arrow(Arrow::Previous), "three@3"}, {3, arrow(Arrow::Next), "one@1"}, {2, arrow(Arrow::Next), "three@3"},
               {3, arrow(Arrow::First), "one@1"},      {1, arrow(Arrow::Last), "three@3"}, {1, typed("0"), "one@1"},
               {1, typed("3.4"), "one@1"},             {1, typed("2.5"), "two@2"},         {1, typed(" 3"), "three@3"},
               // Without the range test: a failed read goes back to the puzzle of before.
               {2, [this] { return GoToPuzzleNumber(model, port, "7"); }, "two@2"}};
  for (const auto& c : cases) {
    Load(c.from);
    c.run();
    EXPECT_EQ(Shown(), c.shown) << &c - cases;
  }
  EXPECT_EQ(port.messages, Strings({"Error reading puzzle# 7"}));

  model.Modified = -1;
  port.yesNoAnswers = {false};
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), kCancelled);
  model.SolverBusy = true;  // nothing happens, nothing is asked while the solver runs
  EXPECT_EQ(MoveByArrow(model, port, Arrow::Next), kCancelled);
  EXPECT_EQ(Shown() + port.questions.at(0), "two@2Discard all changes?");

  auto visits = [this](std::uint64_t seed) {
    model.SolverBusy = false;
    SeedRandom(model, seed);
    std::string order;
    for (int i = 0; i < 30; ++i, order += std::to_string(model.CurrentPuzzle)) MoveByArrow(model, port, Arrow::Random);
    return order;
  };
  const std::string first = visits(7);
  EXPECT_EQ(visits(7), first);
  EXPECT_TRUE(first.find_first_not_of("123") == std::string::npos && first.find('3') != std::string::npos) << first;
}

TEST_F(CollectionCommands, OpenAndAFailedReload) {
  const std::string other = dir.File("other.fut");
  test::WriteBytes(other, CrLf(test::SmallRecord("#8", "eight")));
  Load(3);
  port.fileAnswers = {dir.File("missing.fut"), other};
  EXPECT_EQ(mnuload(model, port), kFailed);  // the file, ordinal and count of before stay
  EXPECT_EQ(model.CurrentFile + std::to_string(model.CurrentPuzzle) + std::to_string(model.PuzzleCount), file + "33");
  EXPECT_EQ(mnuload(model, port), kDone);
  EXPECT_EQ(model.CurrentFile + Shown(), other + "eight@1");
  EXPECT_EQ(port.fileChoices[0].title + port.fileChoices[0].patterns, "Quillmere*.fut;*.txt;*.dat");
  std::filesystem::remove(other);
  EXPECT_EQ(mnureload(model, port), kFailed);
  EXPECT_EQ(port.messages, Strings({"Error reading puzzle# 1", "Error reading puzzle# 1 in file:\r\n" + other}));
}

TEST_F(CollectionCommands, AppendAndSaveNumberAfterTheTargetsRecords) {
  const std::string target = dir.File("new.fut");
  Load(2);
  port.fileAnswers = {target, file, target, dir.Path(), dir.File("no/dir.fut")};
  EXPECT_EQ(mnuappend(model, port), kDone);
  EXPECT_EQ(Shown(), "two@2");  // another file: the current puzzle is read again
  EXPECT_EQ(mnuappend(model, port), kDone);
  EXPECT_EQ(Shown(), "two@4");  // the current file: its new record is shown
  EXPECT_EQ(Results({mnusaveassli(model, port), mnusaveassli(model, port), mnusaveassli(model, port)}),
            Results({kDone, kFailed, kFailed}));
  EXPECT_EQ(ReadBytes(target).substr(0, 17), "#1\r\ntwo\r\n3 0 1\r\n2");
  EXPECT_EQ(port.fileChoices[0].title + port.fileChoices[2].title + port.fileChoices[2].patterns,
            "Add Puzzle to FileQuillmere*.fut");
  EXPECT_EQ(port.messages,
            Strings({"Puzzle# 1 appended to file " + target, "Puzzle# 4 appended to file " + file,
                     "Puzzle# 2 saved in file " + target, "Error writing to file: " + dir.Path(),
                     "Error writing puzzle# 1 to file: " + dir.File("no/dir.fut")}));

  model.SolutionList = {std::string(25, '1'), std::string(25, '2')};
  port.fileAnswers = {target};
  EXPECT_EQ(mnuappend(model, port), kDone);
  EXPECT_EQ(port.questions, Strings({"Save all 2 solutions?"}));
  EXPECT_EQ(port.messages.back(), "Puzzle and its 2 solutions appended to file " + target);
  EXPECT_EQ(CountPuzzles(target), 4);
}

TEST_F(CollectionCommands, DeleteKeepsEveryOtherRecordLineForLine) {
  auto remove = [this](int n) {
    test::WorkingDirectory here(dir.Path());
    Load(n);
    return mnudelete(model, port, std::to_string(n));
  };
  port.yesNoAnswers = {false};
  EXPECT_EQ(remove(1), kCancelled);
  {
    test::FileSizeLimit full(16);
    EXPECT_EQ(remove(1), kFailed);
  }
  EXPECT_EQ(ReadBytes(file), CrLf(lines));
  ASSERT_EQ(remove(2), kDone);
  lines.erase(lines.begin() + 8, lines.begin() + 16);
  EXPECT_EQ(ReadBytes(file), CrLf(lines));
  EXPECT_EQ(ReadBytes(dir.File("Quillmeretemp.tmp")), CrLf(lines));
  EXPECT_EQ(Shown(), "three@2");  // the puzzle that now has the deleted one's number
  ASSERT_EQ(remove(2), kDone);
  EXPECT_EQ(Shown(), "one@1");  // the last one: the new last
  ASSERT_EQ(remove(1), kDone);
  EXPECT_EQ(ReadBytes(file) + model.PosText[0] + std::to_string(model.CurrentPuzzle), "0");
  EXPECT_EQ(port.questions, Strings(5, "Delete current puzzle from file?"));
  EXPECT_EQ(port.messages, Strings({"Error writing to file: Quillmeretemp.tmp", "Done", "Done", "Done"}));
}

TEST_F(CollectionCommands, CopyAndBackup) {
  port.fileAnswers = {dir.File("copy.dat"), file, dir.File("no/dir.fut")};  // onto itself: nothing lost
  EXPECT_EQ(Results({mnusaveas(model, port), mnusaveas(model, port), mnusaveas(model, port), mnubackup(model, port)}),
            Results({kDone, kDone, kFailed, kDone}));
  EXPECT_EQ(ReadBytes(dir.File("copy.dat")) + ReadBytes(dir.File("c;01.fut")), CrLf(lines) + CrLf(lines));
  model.CurrentFile = dir.File("gone.fut");
  EXPECT_EQ(mnubackup(model, port), kFailed);
  EXPECT_EQ(port.messages, Strings({"Puzzle file saved as:\r\n" + dir.File("copy.dat"), "Puzzle file saved as:\r\n" + file,
                                    "Error saving to file:\r\n" + dir.File("no/dir.fut"),
                                    "File backed up as:\r\n" + dir.File("c;01.fut"),
                                    "Error backing to file:\r\n" + dir.File("gone;01.fut")}));
  EXPECT_EQ(ViewAllTotal(model), "Total Puzzles = 3");

  const struct {
    Strings taken;
    std::string path;
    std::string backup;
  } names[] = {{{"p;01.f", "p;02.f", "p;04.f"}, "p.f", "p;03.f"}, {{"p;06.f"}, "p;05.f", "p;07.f"},
               {{}, "p;99.f", "p;01.f"}, {{}, "d;1.x/a.b", "d;1.x/a;01.b"}, {{}, "d;1.x/p", "d;1.x/p;01"}};
  for (const auto& c : names) {
    test::TempDir here;
    for (const auto& name : c.taken) test::WriteBytes(here.File(name), "");
    EXPECT_EQ(BackupName(here.File(c.path)), here.File(c.backup)) << c.path;
  }
  for (int m = 1; m <= 99; ++m) test::WriteBytes(dir.File("gone;" + ZeroPadded(m, 2) + ".fut"), "x");
  EXPECT_EQ(mnubackup(model, port), kFailed);  // all taken: none is overwritten
  EXPECT_EQ(ReadBytes(dir.File("gone;01.fut")), "x");
}

}  // namespace
}  // namespace qm
