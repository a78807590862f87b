// The save pattern as every export command follows it.
#include "export/save_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "core/collection_file.h"
#include "core/headless_port.h"
#include "export/html_export.h"
#include "export/text_export.h"
#include "export/xls_export.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using Strings = std::vector<std::string>;

struct ExportCommand {
  const char* patterns;
  const char* description;
  const char* success;
  std::function<CommandResult(const PuzzleModel&, WindowPort&)> run;
};

const ExportCommand kCommands[] = {
    {"*.txt", "Text Files", "Puzzle saved as text file:", mnusavetxt},
    {"*.xls", "Excel Files", "Puzzle saved as XLS File:", mnusavexls},
    {"*.htm", "Html Files", "Puzzle saved as Html File:",
     [](const PuzzleModel& model, WindowPort& port) {
       return SaveHtmlFile(model, port, DefaultTemplateDirectories(model));
     }},
};

// A chooser that wanders off to another directory, as real ones may.
class WanderingPort : public HeadlessPort {
 public:
  std::string ChooseFile(const FileChoice& choice) override {
    std::filesystem::current_path("/");
    return HeadlessPort::ChooseFile(choice);
  }
};

class SaveCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::WriteBytes(dir.File("c.fut"), test::CrLf(test::SampleRecord()));
    ASSERT_FALSE(ReadPuzzle(model, port, dir.File("c.fut"), 1).notFound);
    model.AppDir = QUILLMERE_APP_DIR;
    target = dir.File("out");
  }
  test::TempDir dir;
  PuzzleModel model;
  WanderingPort port;
  std::string target;
};

TEST_F(SaveCommandTest, EveryExportChoosesConfirmsAndReports) {
  const std::string here = std::filesystem::current_path().string();
  for (const ExportCommand& command : kCommands) {
    test::WriteBytes(target, "old");
    port = WanderingPort();
    port.fileAnswers = {"", target, target};
    port.yesNoAnswers = {false, true};
    EXPECT_EQ(command.run(model, port), CommandResult::Cancelled);
    EXPECT_EQ(command.run(model, port), CommandResult::Cancelled);
    EXPECT_EQ(test::ReadBytes(target), "old");
    EXPECT_EQ(command.run(model, port), CommandResult::Done);
    EXPECT_NE(test::ReadBytes(target).substr(0, 3), "old");
    EXPECT_EQ(port.messages, Strings({command.success + std::string("\r\n") + target}));
    EXPECT_EQ(port.questions[0], "OverWrite file: " + target + " ?");
    EXPECT_EQ(std::filesystem::current_path().string(), here);
    EXPECT_FALSE(port.Busy());
    const FileChoice& choice = port.fileChoices[0];
    EXPECT_EQ(choice.title, "Quillmere");
    EXPECT_EQ(choice.patterns, command.patterns);
    EXPECT_EQ(choice.description, command.description);
    EXPECT_EQ(choice.directory, QUILLMERE_APP_DIR);
    EXPECT_EQ(choice.mode, ChooserMode::Save);
  }
}

TEST_F(SaveCommandTest, AFailedWriteSaysSoAndKeepsTheOldFile) {
  test::WriteBytes(target, "old");
  for (const ExportCommand& command : kCommands) {
    port = WanderingPort();
    port.fileAnswers = {"/dev/full", target};
    EXPECT_EQ(command.run(model, port), CommandResult::Failed);
    {
      test::FileSizeLimit full(20);
      EXPECT_EQ(command.run(model, port), CommandResult::Failed);
    }
    EXPECT_EQ(port.messages, Strings({"Error writing to file: /dev/full", "Error writing to file: " + target}));
    // The device's length cannot be read: no overwrite question for it.
    EXPECT_EQ(std::count(port.questions.begin(), port.questions.end(), "OverWrite file: " + target + " ?"), 1);
    EXPECT_EQ(std::count(port.questions.begin(), port.questions.end(), "OverWrite file: /dev/full ?"), 0);
    EXPECT_EQ(test::ReadBytes(target), "old");
    EXPECT_FALSE(port.Busy());
  }
}

}  // namespace
}  // namespace qm
