#include <gtest/gtest.h>

#include "commands/solve_timer.h"
#include "core/puzzle_model.h"
#include "settings/window_options.h"
#include "support/test_files.h"

namespace qm {
namespace {

// The timer counts only while the window is in front and the grid unfinished, and
// starts from zero with each puzzle.
TEST(SolveTimer, CountsOnlyInFrontAndUnfinished) {
  std::int64_t now = 1000;
  SolveTimer timer([&now] { return now; });
  timer.Restart(false);
  now += 5000;
  EXPECT_EQ(timer.ElapsedMs(), 5000);
  timer.SetInFront(false);
  now += 60000;
  EXPECT_EQ(timer.ElapsedMs(), 5000);
  timer.SetInFront(false);  // told twice: still nothing counted
  timer.SetInFront(true);
  now += 2000;
  EXPECT_EQ(timer.ElapsedMs(), 7000);
  timer.SetFinished(true);
  now += 9000;
  EXPECT_EQ(timer.ElapsedMs(), 7000);
  EXPECT_FALSE(timer.Running());
  // Unfinished again (an undo): it goes on from where it stood.
  timer.SetFinished(false);
  now += 1000;
  EXPECT_EQ(timer.ElapsedMs(), 8000);
  // Finished while in the background, back in front: still stopped.
  timer.SetInFront(false);
  timer.SetFinished(true);
  timer.SetInFront(true);
  now += 1000;
  EXPECT_EQ(timer.ElapsedMs(), 8000);
  timer.Restart(false);
  EXPECT_EQ(timer.ElapsedMs(), 0);
  // A puzzle shown already finished does not run.
  timer.Restart(true);
  now += 1000;
  EXPECT_EQ(timer.ElapsedMs(), 0);
}

TEST(SolveTimer, ClockTexts) {
  EXPECT_EQ(ClockText(0), "0:00");
  EXPECT_EQ(ClockText(7999), "0:07");
  EXPECT_EQ(ClockText(754000), "12:34");
  EXPECT_EQ(ClockText(3723000), "1:02:03");
  EXPECT_EQ(ClockText(-5), "0:00");
}

// Finished means every cell a digit of the grid and no clash, signs included.
TEST(SolveTimer, FinishedGrids) {
  PuzzleModel model;
  SetSize(model, 3);
  const char* rows[] = {"123", "231", "312"};
  auto fill = [&] {
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) model.PosText[model.PositionOf[2 * r + 1][2 * c + 1]] = std::string(1, rows[r][c]);
    }
  };
  fill();
  EXPECT_TRUE(GridFinished(model));
  SolveTimer timer([] { return 0; });
  timer.Restart(false);
  EXPECT_EQ(TrackFinish(timer, model), FinishChange::Finished);
  EXPECT_EQ(TrackFinish(timer, model), FinishChange::None);
  // A sign the digits break.
  model.PosText[model.PositionOf[1][2]] = ">";
  EXPECT_FALSE(GridFinished(model));
  EXPECT_EQ(TrackFinish(timer, model), FinishChange::Unfinished);
  model.PosText[model.PositionOf[1][2]] = "<";
  EXPECT_TRUE(GridFinished(model));
  // A candidate string, an empty cell, a digit past the size, a repeat.
  for (const std::string text : {"12", "", "4", "2"}) {
    fill();
    model.PosText[model.PositionOf[1][1]] = text;
    EXPECT_FALSE(GridFinished(model)) << text;
  }
}

TEST(WindowOptions, KeptAndReadBack) {
  test::TempDir dir;
  const std::string file = dir.File("Quillmere.opt");
  const WindowOptions defaults = ReadWindowOptions(file);  // missing file
  EXPECT_FALSE(defaults.allowAnyDigit);
  EXPECT_TRUE(defaults.showTimer);
  ASSERT_TRUE(WriteWindowOptions(file, {true, false}));
  EXPECT_EQ(test::ReadBytes(file), "AllowAnyDigit=1\r\nShowTimer=0\r\n");
  const WindowOptions kept = ReadWindowOptions(file);
  EXPECT_TRUE(kept.allowAnyDigit);
  EXPECT_FALSE(kept.showTimer);
  // LF lines and blanks are read; a value that is neither 0 nor 1 keeps the default.
  test::WriteBytes(file, "ShowTimer = 0\nAllowAnyDigit=yes\nnoise\n");
  const WindowOptions odd = ReadWindowOptions(file);
  EXPECT_FALSE(odd.allowAnyDigit);
  EXPECT_FALSE(odd.showTimer);
  EXPECT_FALSE(WriteWindowOptions(dir.Path(), {}));  // a directory cannot be written
}

}  // namespace
}  // namespace qm
