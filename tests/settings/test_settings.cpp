#include <gtest/gtest.h>

#include <filesystem>

#include "commands/headless_port.h"
#include "commands/settings_commands.h"
#include "settings/colour_schemes.h"
#include "settings/config_file.h"
#include "support/test_files.h"

namespace qm {
namespace {

class Settings : public ::testing::Test {
 protected:
  void SetUp() override { model.AppDir = dir.Path() + "/"; }
  std::string Config() const { return dir.File("Quillmere.cfg"); }
  void WriteConfig(const std::vector<std::string>& lines) { test::WriteBytes(Config(), test::CrLf(lines)); }

  test::TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(Settings, ReadsTheFiveLines) {
  WriteConfig({"01-02-2026 10:00:00", "\"slate.col\", ignored", " 1 ", "/data/my puzzles.fut", "250"});
  ReadSettings(model, port);
  EXPECT_TRUE(port.messages.empty());
  EXPECT_EQ(model.SchemeFile, "slate.col");
  EXPECT_EQ(model.CellColouring, 1);
  EXPECT_EQ(model.CurrentFile, "/data/my puzzles.fut");
  EXPECT_EQ(model.PacingInterval, 250);

  for (const auto& [line, pace] : std::vector<std::pair<std::string, int>>{{"5", 10}, {"99999", 20000}, {"abc", 10}, {"4000.5", 4000}}) {
    WriteConfig({"x", "a,b.col", "0", "p", line});
    ReadSettings(model, port);
    EXPECT_EQ(model.PacingInterval, pace) << line;
    EXPECT_EQ(model.SchemeFile, "a");  // cut at the comma
  }
}

TEST_F(Settings, AShortOrMissingFileIsWrittenAnewWithTheDefaults) {
  WriteConfig({"x", "slate.col", "1", "/kept/collection.fut"});
  model.PacingInterval = 777;
  ReadSettings(model, port, 0);
  ASSERT_EQ(port.messages.size(), 1u);
  EXPECT_EQ(port.messages[0], "Configuration file:\r\n" + Config() + "\r\ncould not be accessed, new file will be created");
  EXPECT_EQ(model.SchemeFile, "default.col");
  EXPECT_EQ(model.CellColouring, 0);
  EXPECT_EQ(model.CurrentFile, "/kept/collection.fut");  // read before the fault: kept
  EXPECT_EQ(model.PacingInterval, 777);
  EXPECT_EQ(test::ReadBytes(Config()),
            test::CrLf({SettingsTimeStamp(0), "default.col", " 0", model.AppDir + "puzzles.fut", "4000"}));

  std::filesystem::remove(Config());
  ReadSettings(model, port);
  EXPECT_EQ(port.messages.size(), 2u);
  EXPECT_TRUE(std::filesystem::exists(Config()));
}

TEST_F(Settings, WritingReplacesAnIntervalOutOfRange) {
  model.SchemeFile = "sand.col";
  model.CellColouring = 1;
  model.CurrentFile = "/c.fut";
  model.PacingInterval = 5;
  WriteSettings(model, port, 0);
  EXPECT_EQ(test::ReadBytes(Config()), test::CrLf({SettingsTimeStamp(0), "sand.col", " 1", "/c.fut", "4000"}));
  EXPECT_EQ(SettingsTimeStamp(0).size(), 19u);

  model.AppDir = dir.File("missing/");
  WriteSettings(model, port);
  ASSERT_EQ(port.messages.size(), 1u);
  EXPECT_NE(port.messages[0].find("could not be accessed, options not saved"), std::string::npos);
}

TEST_F(Settings, ColourSchemes) {
  test::WriteBytes(dir.File("all.col"),
                   test::CrLf({"comment about old.col files", "first.col", "1;2;3", "4;5;6;extra", "7.5;8.5;300",
                               "0;0;0", "0;0;0", "0;0;0", "0;0;0", "0;0;0", "0;0;0", "0;0;0", "0;0;0", "9;9;9",
                               "First.col", "short.col", "1;2;3", "1;2", "first.col"}));
  EXPECT_EQ(SchemeList(model.AppDir), (std::vector<std::string>{"comment about old", "first", "First", "short", "first"}));
  ColourTable table;
  const Rgb error = table.colour[kErrorColour];
  EXPECT_EQ(LoadScheme(model, table, port, "first.col"), 1);
  EXPECT_EQ(table.colour[1], MakeRgb(1, 2, 3));
  EXPECT_EQ(table.colour[2], MakeRgb(4, 5, 6));
  EXPECT_EQ(table.colour[3], MakeRgb(8, 8, 255));  // halves to even, clamped
  EXPECT_EQ(table.colour[12], MakeRgb(9, 9, 9));
  EXPECT_EQ(table.colour[kErrorColour], error);
  EXPECT_EQ(error, MakeRgb(150, 50, 50));

  model.SchemeFile = "short.col";
  EXPECT_EQ(LoadScheme(model, table, port, "short.col"), 0);  // a line with two fields
  EXPECT_EQ(port.messages.back(), "Color Scheme: short.col not found");
  EXPECT_EQ(model.SchemeFile, "default.col");
  EXPECT_EQ(table.colour[1], MakeRgb(1, 2, 3));

  EXPECT_EQ(SelectScheme(model, table, port, "FIRST"), 0);  // names are case-sensitive
  EXPECT_EQ(model.SchemeFile, "FIRST.col");                 // kept even so, for the next run
}

TEST_F(Settings, CellColouringPaintsOnlyTheCells) {
  ColourTable table;
  SetSize(model, 3);
  EXPECT_EQ(PositionBackground(model, table, 0), table.colour[kGridColour]);
  ToggleCellColouring(model);
  EXPECT_EQ(PositionBackground(model, table, 0), table.colour[kCellColour]);
  EXPECT_EQ(PositionBackground(model, table, 1), table.colour[kGridColour]);
  ToggleCellColouring(model);
  EXPECT_EQ(model.CellColouring, 0);
}

}  // namespace
}  // namespace qm
