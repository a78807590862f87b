#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>

#include "reasoning/ladder.h"
#include "support/cli_run.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm::cli {
namespace {

using test::Cli;

const std::string kCollection = std::string(QUILLMERE_APP_DIR) + "puzzles.fut";

#ifdef QUILLMERE_HAS_RENDER

// The standard output of a shell command (a poppler tool, or nothing when it is missing).
std::string Tool(const std::string& command) {
  std::string text;
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "r"), pclose);
  if (!pipe) return text;
  std::array<char, 4096> buffer{};
  for (std::size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe.get())) > 0;) text.append(buffer.data(), n);
  return text;
}

bool HavePoppler() { return !Tool("command -v pdfinfo").empty() && !Tool("command -v pdftotext").empty(); }

std::string PageText(const std::string& pdf, int page) {
  const std::string n = std::to_string(page);
  return Tool("pdftotext -f " + n + " -l " + n + " -layout '" + pdf + "' -");
}

TEST(BookCommand, ThirtyPuzzlesMakeEightPagesOfPuzzlesAndThreeOfAnswers) {
  test::TempDir dir;
  const std::string out = dir.Path() + "/book";  // ".pdf" is added
  const test::CliRun run = Cli({"book", kCollection, "--range", "1-30", "--per-page", "4", "--answers-per-page", "12",
                                "--title", "Summer Puzzles", "-o", out, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json()["file"], out + ".pdf");
  EXPECT_EQ(run.Json()["pages"], 11);
  EXPECT_EQ(run.Json()["puzzles"], 30);
  ASSERT_TRUE(std::filesystem::exists(out + ".pdf"));
  if (!HavePoppler()) GTEST_SKIP() << "pdfinfo and pdftotext (poppler-utils) are not installed";

  const std::string info = Tool("pdfinfo '" + out + ".pdf'");
  EXPECT_NE(info.find("Pages:           11"), std::string::npos) << info;
  EXPECT_NE(info.find("Title:           Summer Puzzles"), std::string::npos) << info;
  EXPECT_NE(info.find("595 x 842 pts (A4)"), std::string::npos) << info;
  EXPECT_NE(PageText(out + ".pdf", 1).find("Summer Puzzles"), std::string::npos);
  for (int page = 1; page <= 11; ++page) {
    const std::string text = PageText(out + ".pdf", page);
    EXPECT_NE(text.find("Page " + std::to_string(page) + " of 11"), std::string::npos) << "page " << page;
  }
  // Puzzles 1-4 on page 1, and the answer key names each puzzle's page.
  EXPECT_NE(PageText(out + ".pdf", 2).find("Puzzles 5-8"), std::string::npos);
  EXPECT_NE(PageText(out + ".pdf", 9).find("Puzzle 5, page 2"), std::string::npos);
  EXPECT_NE(PageText(out + ".pdf", 11).find("Puzzle 30, page 8"), std::string::npos);
}

TEST(BookCommand, LetterLandscapeNoAnswersAndGradeOrder) {
  test::TempDir dir;
  const std::string out = dir.Path() + "/letter.PDF";
  test::CliRun run = Cli({"book", kCollection, "--range", "1-9", "--page", "letter", "--no-answers", "--per-page",
                          "9", "-o", out, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json()["file"], out);
  EXPECT_EQ(run.Json()["pages"], 1);

  const std::string wide = dir.Path() + "/wide.pdf";
  run = Cli({"book", kCollection, "--range", "1-6", "--landscape", "--order", "grade", "-o", wide, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json()["pages"], 3);  // two of puzzles, one of answers
  if (!HavePoppler()) GTEST_SKIP() << "pdfinfo (poppler-utils) is not installed";
  EXPECT_NE(Tool("pdfinfo '" + out + "'").find("612 x 792 pts (letter)"), std::string::npos);
  const std::string wideInfo = Tool("pdfinfo '" + wide + "'");
  EXPECT_NE(wideInfo.find("842 x 595 pts (A4)"), std::string::npos) << wideInfo;
  // The title defaults to the file's name. Ordered by grade (scores 21, 25, 22, 23, 22,
  // 29), the easiest come first, ties in file order, and each caption names its grade.
  EXPECT_NE(wideInfo.find("Title:           puzzles.fut"), std::string::npos) << wideInfo;
  const std::string first = PageText(wide, 1);
  for (const char* caption : {"Puzzle 1 ", "Puzzle 3 ", "Puzzle 5 ", "Puzzle 4 ", "Moderate"}) {
    EXPECT_NE(first.find(caption), std::string::npos) << caption << " in\n" << first;
  }
  EXPECT_NE(PageText(wide, 2).find("Puzzles 2, 6"), std::string::npos) << PageText(wide, 2);
}

TEST(RenderCommand, DrawsOnePuzzleAsSvgPngOrPdf) {
  test::TempDir dir;
  for (const char* name : {"/one.svg", "/one.png", "/one.pdf"}) {
    const test::CliRun run = Cli({"render", kCollection, "-n", "3", "--solution", "-o", dir.Path() + name});
    ASSERT_EQ(run.code, 0) << name << ": " << run.err;
  }
  const std::string svg = test::ReadBytes(dir.Path() + "/one.svg");
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("<path"), std::string::npos);  // the signs are vector chevrons
  EXPECT_TRUE(test::ReadBytes(dir.Path() + "/one.png").starts_with("\x89PNG"));
  EXPECT_TRUE(test::ReadBytes(dir.Path() + "/one.pdf").starts_with("%PDF"));

  EXPECT_EQ(Cli({"render", kCollection, "-o", dir.Path() + "/one.jpg"}).code, 2);
  const test::CliRun missing = Cli({"render", kCollection, "-n", "999", "-o", dir.Path() + "/x.svg", "--json"});
  EXPECT_EQ(missing.code, 1);
}

// The program itself, with no display and no platform named: it goes offscreen, and
// keeps Qt's own notes out of its output.
TEST(BookCommand, BookAndRenderNeedNoDisplay) {
  test::TempDir dir;
  const std::string cli = std::string("env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM '") + QUILLMERE_CLI + "' ";
  const std::string book = dir.Path() + "/headless.pdf";
  const std::string picture = dir.Path() + "/headless.svg";
  EXPECT_EQ(Tool(cli + "book '" + kCollection + "' --range 1-5 -o '" + book + "' 2>&1; echo $?"),
            "Wrote " + book + ": 3 pages, 5 puzzles\n0\n");
  EXPECT_EQ(Tool(cli + "render '" + kCollection + "' -n 2 -o '" + picture + "' 2>&1; echo $?"),
            "Wrote " + picture + "\n0\n");
  EXPECT_TRUE(test::ReadBytes(book).starts_with("%PDF"));
  EXPECT_NE(test::ReadBytes(picture).find("<svg"), std::string::npos);
}

TEST(BookCommand, UnwritableOutputFails) {
  const test::CliRun run = Cli({"book", kCollection, "--range", "1-2", "-o", "/no/such/dir/book.pdf", "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_TRUE(run.Json().contains("error"));
}

// The shipped collection's first records, one of them without its stored solution and,
// when asked, one whose clues contradict each other.
std::string Collection(bool withUnsolvable) {
  std::vector<std::string> lines;
  std::string line;
  std::istringstream in(test::ReadBytes(kCollection));
  int record = 0;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.starts_with('#') && ++record > 4) break;
    const auto bar = line.find('|');
    if (record == 2 && bar != std::string::npos) line = line.substr(0, bar + 1);
    lines.push_back(line);
  }
  if (withUnsolvable) {
    // Puzzle 5: a 3x3 with the same clue twice in its first row.
    const std::vector<std::string> clash{"#5", "Clash", "3 0 2", "1...1|", ".....|", ".....|", ".....|", ".....|"};
    lines.insert(lines.end(), clash.begin(), clash.end());
  }
  return test::CrLf(lines);
}

TEST(BookCommand, AnswersComeFromTheSearchAndAPuzzleWithoutOneStopsTheBookBeforeAnythingIsWritten) {
  test::TempDir dir;
  std::filesystem::create_directory(dir.Path() + "/full");
  std::filesystem::create_directory(dir.Path() + "/stripped");
  const std::string full = dir.Path() + "/full/set.fut";
  const std::string stripped = dir.Path() + "/stripped/set.fut";
  std::filesystem::copy_file(kCollection, full);
  test::WriteBytes(stripped, Collection(false));
  // The solution the search finds is the one the record would have stored.
  ASSERT_EQ(Cli({"render", full, "-n", "2", "--solution", "-o", dir.Path() + "/full.svg"}).code, 0);
  ASSERT_EQ(Cli({"render", stripped, "-n", "2", "--solution", "-o", dir.Path() + "/stripped.svg"}).code, 0);
  EXPECT_EQ(test::ReadBytes(dir.Path() + "/full.svg"), test::ReadBytes(dir.Path() + "/stripped.svg"));
  EXPECT_EQ(Cli({"book", stripped, "-o", dir.Path() + "/ok.pdf"}).code, 0);

  const std::string bad = dir.Path() + "/bad.fut";
  test::WriteBytes(bad, Collection(true));
  const std::string out = dir.Path() + "/book.pdf";
  test::WriteBytes(out, "the earlier book");
  const test::CliRun run = Cli({"book", bad, "-o", out});
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.err.find("Puzzle 5 cannot be printed: it has no solution"), std::string::npos) << run.err;
  EXPECT_EQ(test::ReadBytes(out), "the earlier book");
  EXPECT_EQ(Cli({"book", bad, "--range", "1-4", "-o", out}).code, 0);
  EXPECT_EQ(Cli({"render", bad, "-n", "5", "--solution", "-o", dir.Path() + "/x.svg"}).code, 1);
}

TEST(BookCommand, BookAndRenderOnAFullDiskFailAndKeepTheEarlierFile) {
  test::TempDir dir;
  const std::vector<std::vector<std::string>> commands{
      {"book", kCollection, "--range", "1-8"}, {"render", kCollection, "-n", "4"}};
  for (const char* name : {"book.pdf", "one.svg", "one.png", "one.pdf"}) {
    const std::string out = dir.Path() + "/" + name;
    test::WriteBytes(out, "kept");
    std::vector<std::string> args = std::string(name).starts_with("book") ? commands[0] : commands[1];
    args.insert(args.end(), {"-o", out});
    test::CliRun run;
    {
      const test::FileSizeLimit full(512);
      run = Cli(args);
    }
    EXPECT_EQ(run.code, 1) << name;
    EXPECT_NE(run.err.find("Error writing to file: " + out), std::string::npos) << name << ": " << run.err;
    EXPECT_EQ(test::ReadBytes(out), "kept") << name;
    EXPECT_EQ(Cli(args).code, 0) << name;  // and with room, it is written
    EXPECT_GT(test::ReadBytes(out).size(), 512u) << name;
  }
}

TEST(BookCommand, PrintOnDemandSizesBleedAndMirroredMargins) {
  test::TempDir dir;
  const std::string out = dir.Path() + "/pod.pdf";
  const test::CliRun run = Cli({"book", kCollection, "--range", "1-12", "--page", "6x9in", "--bleed", "3",
                                "--mirror-margins", "15,8", "--title-page", "--how-to-play", "--order", "grade",
                                "--contents", "--caption", "number,title,grade", "-o", out, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json()["pages"], 3 + 3 + 1);
  if (!HavePoppler()) GTEST_SKIP() << "pdfinfo (poppler-utils) is not installed";
  // 6 x 9 inches and 3 mm more on every side; the trim box is the 6 x 9 inches.
  std::string info = Tool("pdfinfo -box -f 1 -l 7 '" + out + "'");
  info.erase(std::unique(info.begin(), info.end(), [](char a, char b) { return a == ' ' && b == ' '; }), info.end());
  EXPECT_NE(info.find("Page 1 MediaBox: 0.00 0.00 449.00 665.00"), std::string::npos) << info;
  EXPECT_NE(info.find("Page 7 TrimBox: 8.50 8.50 440.50 656.50"), std::string::npos) << info;
  EXPECT_NE(info.find("Page 7 BleedBox: 0.00 0.00 449.00 665.00"), std::string::npos) << info;
  EXPECT_NE(PageText(out, 2).find("How to Play"), std::string::npos);
  EXPECT_NE(PageText(out, 3).find("Contents"), std::string::npos);
  EXPECT_NE(PageText(out, 3).find("Answers"), std::string::npos);

  // Without a title page the first page carries the title, which no longer defaults to
  // the file's name.
  const std::string plain = dir.Path() + "/plain.pdf";
  ASSERT_EQ(Cli({"book", kCollection, "--range", "1-4", "--caption", "number", "-o", plain}).code, 0);
  const std::string first = PageText(plain, 1);
  EXPECT_NE(first.find("Inequality Puzzles"), std::string::npos) << first;
  EXPECT_EQ(first.find("puzzles.fut"), std::string::npos) << first;
  for (int rung = 1; rung <= reasoning::kTopRung; ++rung) {
    EXPECT_EQ(first.find(reasoning::RungName(rung)), std::string::npos) << first;
  }
}

#else

TEST(BookCommand, TheBuildWithoutQtSaysSo) {
  test::TempDir dir;
  for (const std::string command : {"book", "render"}) {
    const test::CliRun run = Cli({command, kCollection, "-o", dir.Path() + "/x.pdf"});
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.err.find(command + " needs the Qt build"), std::string::npos) << run.err;
  }
}

#endif

TEST(BookCommand, UsageErrors) {
  test::TempDir dir;
  const std::string out = dir.Path() + "/x.pdf";
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--range", "5-3"},
           {"--range", ""},
           {"--range", "60-70"},
           {"--per-page", "0"},
           {"--per-page", "21"},
           {"--answers-per-page", "0"},
           {"--answers-per-page", "21"},
           {"--page", "b4"},
           {"--order", "size"},
           {"--caption", "number,size"},
           {"--bleed", "11"},
           {"--mirror-margins", "12"},
           {"--mirror-margins", "12,x"},
           {"--mirror-margins", "70,70"},
       }) {
    std::vector<std::string> command{"book", kCollection, "-o", out};
    command.insert(command.end(), args.begin(), args.end());
    EXPECT_EQ(Cli(command).code, 2) << args[0] << " " << args[1];
  }
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace qm::cli
