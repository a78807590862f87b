#include "export/html_export.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "core/headless_port.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using test::CrLf;

class HtmlExport : public ::testing::Test {
 protected:
  void SetUp() override {
    SetSize(model, 3);
    const struct {
      int k;
      const char* shown;
      const char* solution;
    } positions[] = {{0, "2", "2"}, {1, "<", "-"}, {2, "13", ""}, {3, "", "."}, {4, "", " "}, {5, "", ""}, {6, "", "."}};
    for (const auto& p : positions) {
      model.PosText[p.k] = p.shown;
      model.SolutionText[p.k] = p.solution;
    }
    model.GivenValue[0] = 2;
    // Rows may leave positions out; what follows the solution table is never copied.
    const std::vector<std::string> table = {"<p>x</p>", "$11$12$13$14$15@", "$21$22@", "</table>"};
    std::vector<std::string> lines = {"<html>"};
    lines.insert(lines.end(), table.begin(), table.end());
    lines.insert(lines.end(), table.begin(), table.end());
    lines.push_back("never copied");
    test::WriteBytes(dir.File("htmltemplate3x3.txt"), CrLf(lines));
  }
  std::string Page(const std::vector<std::string>& directories) {
    std::string page;
    EXPECT_TRUE(BuildHtmlPage(model, port, "D$@", directories, page));
    return page;
  }

  test::TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
};

TEST_F(HtmlExport, FillsThePuzzleAndTheSolutionTables) {
  const std::string heading = "D</td><td></td></tr><tr></p>";
  EXPECT_EQ(Page({dir.Path()}),
            CrLf({"<html>", "<p>Puz:" + heading,
                  "</td><td><b>2</b></td><td><b><</b></td><td><b>13</b></td><td><b>.&nbsp;</b></td><td><b>_&nbsp;"
                  "</b></td></tr><tr>",
                  "</td><td><b>.&nbsp;</b></td><td><b>.&nbsp;</b></td></tr><tr>", "</table>", "<p>Sol:" + heading,
                  "</td><td><b>2</b></td><td><b>-&nbsp;</b></td><td><b>&nbsp;</b></td><td><b>.</b></td><td><b>&nbsp;"
                  "</b></td></tr><tr>",
                  "</td><td><b>-&nbsp;</b></td><td><b>.</b></td></tr><tr>", "</table>", "</body>", "</html>"}));
  EXPECT_EQ(port.questions, std::vector<std::string>({"Save Solution also?"}));

  port.defaultAnswer = false;
  const std::string page = Page({dir.Path()});
  EXPECT_EQ(page.substr(page.find("<tr>\r\n</table>")), "<tr>\r\n</table>\r\n</table>\r\n</body>\r\n</html>\r\n");
}

TEST_F(HtmlExport, LooksInTheWorkingDirectoryThenTheApplicationDirectory) {
  EXPECT_EQ(DefaultTemplateDirectories(model), std::vector<std::string>({"", ApplicationDirectoryOf(model)}));
  {
    test::WorkingDirectory here(dir.Path());
    EXPECT_EQ(Page({"", QUILLMERE_APP_DIR}).substr(0, 8), "<html>\r\n");
  }
  EXPECT_EQ(Page({dir.File("none"), QUILLMERE_APP_DIR}).substr(0, 17), "<!DOCTYPE html>\r\n");

  port.questions.clear();
  std::string page;
  EXPECT_FALSE(BuildHtmlPage(model, port, "", {dir.File("none")}, page));
  SetSize(model, 6);
  EXPECT_FALSE(BuildHtmlPage(model, port, "", {QUILLMERE_APP_DIR}, page));
  EXPECT_TRUE(port.questions.empty());
}

// The shipped templates: every position of both tables filled.
TEST_F(HtmlExport, ShippedTemplatesHoldEveryPosition) {
  for (int n = 3; n <= 5; ++n) {
    SetSize(model, n);
    const std::string page = Page({QUILLMERE_APP_DIR});
    std::size_t boxes = 0;
    for (std::size_t at = 0; (at = page.find("<b>", at)) != std::string::npos; ++at) ++boxes;
    EXPECT_EQ(boxes, 2u * model.LayoutExtent * model.LayoutExtent) << n;
    EXPECT_EQ(page.find_first_of("$@"), std::string::npos) << n;
    EXPECT_EQ(page.find("<p>Sol:D"), page.rfind("<p>")) << n;
  }

}

// The page as a browser shows it; look at page.png once by hand after a change.
TEST_F(HtmlExport, ChromiumRendersThePage) {
  if (!std::filesystem::exists("/usr/bin/chromium")) GTEST_SKIP() << "chromium is not installed";
  SetSize(model, 5);
  test::WriteBytes(dir.File("page.htm"), Page({QUILLMERE_APP_DIR}));
  const std::string command = "/usr/bin/chromium --headless --no-sandbox --disable-gpu --disable-background-networking"
                              " --no-first-run --user-data-dir=" + dir.File("profile") +
                              " --screenshot=" + dir.File("page.png") + " --window-size=600,900 file://" +
                              dir.File("page.htm") + " >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(test::ReadBytes(dir.File("page.png")).substr(1, 3), "PNG");
}

}  // namespace
}  // namespace qm
