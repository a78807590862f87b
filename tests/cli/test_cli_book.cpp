#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "support/cli_run.h"
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
       }) {
    std::vector<std::string> command{"book", kCollection, "-o", out};
    command.insert(command.end(), args.begin(), args.end());
    EXPECT_EQ(Cli(command).code, 2) << args[0] << " " << args[1];
  }
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace qm::cli
