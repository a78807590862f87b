#include <gtest/gtest.h>

#include <random>

#include "core/collection_file.h"
#include "core/share_code.h"
#include "support/cli_run.h"
#include "support/test_files.h"

namespace qm {
namespace {

// A grid with random clues and signs in every kind of slot, blanks in long runs too.
PuzzleModel RandomPuzzle(int n, std::mt19937& random) {
  PuzzleModel model;
  SetSize(model, n);
  std::uniform_int_distribution<int> roll(0, 9);
  for (int k = 0; k <= model.LastPosition; ++k) {
    const int r = roll(random);
    switch (KindOf(model, k)) {
      case PositionKind::Cell:
        if (r < 3) {
          model.GivenValue[k] = 1 + r * n / 3 % n;
          model.PosText[k] = std::to_string(model.GivenValue[k]);
        }
        break;
      case PositionKind::HorizontalSign:
        if (r < 2) model.PosText[k] = r == 0 ? "<" : ">";
        break;
      case PositionKind::VerticalSign:
        if (r < 2) model.PosText[k] = r == 0 ? "^" : "v";
        break;
      default: break;
    }
  }
  return model;
}

TEST(ShareCode, ContractExampleEncodesAndLoads) {
  PuzzleModel model;
  ASSERT_TRUE(LoadShareCode(model, "3-1LmUh2"));
  EXPECT_EQ(model.GridSize, 3);
  EXPECT_EQ(model.PosText[0], "1");
  EXPECT_EQ(model.PosText[1], "<");
  EXPECT_EQ(model.PosText[15], "^");
  EXPECT_EQ(model.PosText[24], "2");
  EXPECT_EQ(model.GivenValue[24], 2);
  EXPECT_EQ(model.ClueCount, 2);
  EXPECT_EQ(model.ConstraintCount, 2);
  EXPECT_EQ(EncodeShareCode(model), "3-1LmUh2");
  EXPECT_EQ(ShareLink("3-1LmUh2"), "#p=3-1LmUh2");
}

TEST(ShareCode, RoundTripsEveryGridSize) {
  std::mt19937 random(7);
  for (int n = kMinGridSize; n <= kMaxGridSize; ++n) {
    for (int trial = 0; trial < 40; ++trial) {
      const PuzzleModel original = RandomPuzzle(n, random);
      const std::string code = EncodeShareCode(original);
      PuzzleModel back;
      std::string error;
      ASSERT_TRUE(LoadShareCode(back, code, &error)) << code << ": " << error;
      ASSERT_EQ(back.GridSize, n);
      for (int k = 0; k <= original.LastPosition; ++k) {
        ASSERT_EQ(back.PosText[k], original.PosText[k]) << code << " at " << k;
        ASSERT_EQ(back.GivenValue[k], original.GivenValue[k]) << code << " at " << k;
      }
      EXPECT_EQ(EncodeShareCode(back), code);
    }
    // An empty grid: blank runs longer than 26 take several letters.
    PuzzleModel empty;
    SetSize(empty, n);
    const std::string code = EncodeShareCode(empty);
    PuzzleModel back;
    ASSERT_TRUE(LoadShareCode(back, code)) << code;
    EXPECT_EQ(EncodeShareCode(back), code);
  }
  PuzzleModel empty;
  SetSize(empty, 9);
  EXPECT_EQ(EncodeShareCode(empty), "9-zzzzzzzzzzzc");  // 11 * 26 + 3 = 289
}

TEST(ShareCode, EveryRecordOfTheShippedCollectionRoundTrips) {
  const std::string file = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  const int count = CountPuzzles(file);
  ASSERT_GT(count, 0);
  for (int i = 1; i <= count; ++i) {
    PuzzleModel model;
    if (LoadPuzzle(model, file, i).notFound) continue;
    PuzzleModel back;
    const std::string code = EncodeShareCode(model);
    ASSERT_TRUE(LoadShareCode(back, code)) << i << ": " << code;
    for (int k = 0; k <= model.LastPosition; ++k) {
      if (IsSignSlot(model, k)) {
        ASSERT_EQ(back.PosText[k], model.PosText[k]) << i;
      } else if (IsCell(model, k)) {
        ASSERT_EQ(back.GivenValue[k], model.GivenValue[k]) << i;
      }
    }
  }
}

TEST(ShareCode, RefusesBadCodesAndSaysWhy) {
  struct Bad {
    const char* code;
    const char* reason;
  };
  const Bad bad[] = {
      {"", "begins with the grid size"},
      {"x-a", "begins with the grid size"},
      {"2-i", "must be 3 to 9, not 2"},
      {"0-a", "must be 3 to 9, not 0"},
      {"3-x", "stands for 25 places; this one has 24"},
      {"3-1LmUh23", "has more"},
      {"3-zz", "has more"},
      {"3-Lx", "stands in a cell"},
      {"3-a1w", "stands between cells"},
      {"3-5x", "does not fit a 3x3 grid"},
      {"3-0x", "does not fit a 3x3 grid"},
      {"3-aUw", "cannot stand at line 1, place 2"},
      {"3-eLs", "cannot stand at line 2, place 1"},
      {"3-fLr", "cannot stand at line 2, place 2"},
      {"3-a!w", "cannot hold \"!\""},
  };
  for (const Bad& b : bad) {
    const ShareCodeReading reading = ReadShareCode(b.code);
    EXPECT_FALSE(reading.ok) << b.code;
    EXPECT_NE(reading.error.find(b.reason), std::string::npos) << b.code << ": " << reading.error;
    PuzzleModel model;
    SetSize(model, 4);
    model.PosText[0] = "2";
    EXPECT_FALSE(LoadShareCode(model, b.code)) << b.code;
    EXPECT_EQ(model.GridSize, 4);
    EXPECT_EQ(model.PosText[0], "2") << "a refused code leaves the model alone";
  }
  // A link and blanks around the code are fine.
  EXPECT_TRUE(ReadShareCode("  #p=3-1LmUh2\n").ok);
  EXPECT_EQ(ReadShareCode("http://127.0.0.1:8080/#p=3-1LmUh2").layout, ReadShareCode("3-1LmUh2").layout);
}

TEST(ShareCommands, CodeAndOpenRoundTripThroughACollection) {
  using test::Cli;
  const std::string shipped = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";
  const test::CliRun coded = Cli({"code", shipped, "-n", "2", "--json"});
  ASSERT_EQ(coded.code, 0) << coded.err;
  const std::string code = coded.Json()["code"];
  EXPECT_EQ(coded.Json()["link"], "#p=" + code);
  EXPECT_EQ(Cli({"code", shipped, "-n", "2"}).out, code + "\n");

  test::TempDir dir;
  const std::string file = dir.File("shared.fut");
  for (int number = 1; number <= 2; ++number) {
    const test::CliRun opened = Cli({"open", code, "-o", file, "--json"});
    ASSERT_EQ(opened.code, 0) << opened.err;
    EXPECT_EQ(opened.Json()["number"], number);
  }
  EXPECT_EQ(Cli({"code", file, "-n", "2"}).out, code + "\n");

  const test::CliRun bad = Cli({"open", "4-Lzv", "-o", file});
  EXPECT_EQ(bad.code, 2);
  EXPECT_NE(bad.err.find("stands in a cell"), std::string::npos) << bad.err;
  EXPECT_EQ(CountPuzzles(file), 2) << "a bad code writes nothing";
}

}  // namespace
}  // namespace qm
