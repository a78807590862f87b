// The save pattern as every export command follows it.
#include "commands/save_commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "commands/record_commands.h"
#include "core/collection_file.h"
#include "commands/headless_port.h"
#include "export/html_export.h"
#include "export/text_export.h"
#include "export/xls_export.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

// A chooser that wanders off to another directory, as real ones may.
class WanderingPort : public HeadlessPort {
 public:
  std::string ChooseFile(const FileChoice& choice) override {
    std::filesystem::current_path("/");
    return HeadlessPort::ChooseFile(choice);
  }
};

TEST(SaveCommand, EveryExportChoosesConfirmsAndReports) {
  const struct {
    std::string chooser;  // patterns and description
    std::string success;
    std::function<CommandResult(const PuzzleModel&, WindowPort&)> run;
  } commands[] = {
      {"*.txtText Files", "Puzzle saved as text file:", mnusavetxt},
      {"*.xlsExcel Files", "Puzzle saved as XLS File:", mnusavexls},
      {"*.htmHtml Files", "Puzzle saved as Html File:",
       [](const PuzzleModel& m, WindowPort& p) { return SaveHtmlFile(m, p, DefaultTemplateDirectories(m)); }},
  };
  test::TempDir dir;
  const std::string target = dir.File("out");
  const std::string here = std::filesystem::current_path().string();
  PuzzleModel model;
  model.AppDir = QUILLMERE_APP_DIR;
  for (const auto& command : commands) {
    WanderingPort port;
    test::WriteBytes(dir.File("c.fut"), test::CrLf(test::SampleRecord()));
    ASSERT_FALSE(ReadPuzzle(model, port, dir.File("c.fut"), 1).notFound);
    test::WriteBytes(target, "old");
    port.fileAnswers = {"", target, "/dev/full", target, target};
    port.yesNoAnswers = {false};  // then Yes to everything
    EXPECT_EQ(command.run(model, port), CommandResult::Cancelled);
    EXPECT_EQ(command.run(model, port), CommandResult::Cancelled);
    EXPECT_EQ(command.run(model, port), CommandResult::Failed);  // no question for a device
    {
      test::FileSizeLimit full(20);
      EXPECT_EQ(command.run(model, port), CommandResult::Failed);
    }
    EXPECT_EQ(test::ReadBytes(target), "old");
    EXPECT_EQ(command.run(model, port), CommandResult::Done);
    EXPECT_NE(test::ReadBytes(target), "old");
    EXPECT_EQ(port.messages, std::vector<std::string>({"Error writing to file: /dev/full",
                                                       "Error writing to file: " + target,
                                                       command.success + "\r\n" + target}));
    EXPECT_EQ(std::count(port.questions.begin(), port.questions.end(), "OverWrite file: " + target + " ?"), 3);
    EXPECT_EQ(std::filesystem::current_path().string(), here);
    EXPECT_FALSE(port.Busy());
    const FileChoice& choice = port.fileChoices[0];
    EXPECT_EQ(choice.title + choice.patterns + choice.description, "Quillmere" + command.chooser);
    EXPECT_EQ(choice.directory + (choice.mode == ChooserMode::Save ? "SAVE" : ""), QUILLMERE_APP_DIR "SAVE");
  }
}

}  // namespace
}  // namespace qm
