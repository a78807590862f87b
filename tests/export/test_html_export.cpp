#include "export/html_export.h"

#include <gtest/gtest.h>

#include "commands/headless_port.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using Strings = std::vector<std::string>;

class HtmlExport : public ::testing::Test {
 protected:
  void SetUp() override {
    SetSize(model, 3);
    const Strings shown = {"2", "<", "13", "", "", "", ""};
    const Strings solution = {"2", "-", "", ".", " ", "", "."};
    for (int k = 0; k < 7; ++k) {
      model.PosText[k] = shown[k];
      model.SolutionText[k] = solution[k];
    }
    model.GivenValue[0] = 2;
    // Rows may leave positions out; what follows the solution table is never copied.
    const std::string table = "<p>x</p>\r\n$11$12$13$14$15@\r\n$21$22@\r\n</table>\r\n";
    test::WriteBytes(dir.File("htmltemplate3x3.txt"), "<html>\r\n" + table + table + "never copied\r\n");
  }
  std::string Page(const Strings& directories) {
    std::string page;
    EXPECT_TRUE(BuildHtmlPage(model, asked, "D$@", directories, page));
    return page;
  }

  test::TempDir dir;
  PuzzleModel model;
  HeadlessPort port;
  // The question the save command asks between the tables.
  std::function<bool()> asked = [this] { return port.AskYesNo("Save Solution also?"); };
};

TEST_F(HtmlExport, FillsThePuzzleAndTheSolutionTables) {
  const std::string heading = "D</td><td></td></tr><tr></p>";
  EXPECT_EQ(Page({dir.Path()}),
            test::CrLf({"<html>", "<p>Puz:" + heading,
                        "</td><td><b>2</b></td><td><b><</b></td><td><b>13</b></td><td><b>.&nbsp;</b></td><td><b>_&nbsp;"
                        "</b></td></tr><tr>",
                        "</td><td><b>.&nbsp;</b></td><td><b>.&nbsp;</b></td></tr><tr>", "</table>", "<p>Sol:" + heading,
                        "</td><td><b>2</b></td><td><b>-&nbsp;</b></td><td><b>&nbsp;</b></td><td><b>.</b></td><td><b>&nbsp;"
                        "</b></td></tr><tr>",
                        "</td><td><b>-&nbsp;</b></td><td><b>.</b></td></tr><tr>", "</table>", "</body>", "</html>"}));
  EXPECT_EQ(port.questions, Strings({"Save Solution also?"}));
  port.defaultAnswer = false;
  const std::string page = Page({dir.Path()});
  EXPECT_EQ(page.substr(page.find("<tr>\r\n</table>")), "<tr>\r\n</table>\r\n</table>\r\n</body>\r\n</html>\r\n");
}

TEST_F(HtmlExport, FindsTheTemplateHereThenBesideTheProgram) {
  EXPECT_EQ(DefaultTemplateDirectories(model), Strings({"", ApplicationDirectoryOf(model)}));
  {
    test::WorkingDirectory here(dir.Path());
    EXPECT_EQ(Page({"", QUILLMERE_APP_DIR}).substr(0, 6), "<html>");
  }
  port.questions.clear();
  std::string page;
  EXPECT_FALSE(BuildHtmlPage(model, asked, "", {dir.File("none")}, page));
  SetSize(model, 6);
  EXPECT_FALSE(BuildHtmlPage(model, asked, "", {QUILLMERE_APP_DIR}, page));
  EXPECT_TRUE(port.questions.empty());

  // The shipped templates fill every position of both tables.
  for (int n = 3; n <= 5; ++n) {
    SetSize(model, n);
    page = Page({dir.File("none"), QUILLMERE_APP_DIR});
    std::size_t boxes = 0;
    for (std::size_t at = 0; (at = page.find("<b>", at)) != std::string::npos; ++at) ++boxes;
    EXPECT_EQ(boxes, 2u * model.LayoutExtent * model.LayoutExtent) << n;
    EXPECT_EQ(page.find_first_of("$@"), std::string::npos) << n;
  }
}

// The page as a browser shows it; look at page.png once by hand after a change.
TEST_F(HtmlExport, ChromiumRendersThePage) {
  if (!std::filesystem::exists("/usr/bin/chromium")) GTEST_SKIP() << "chromium is not installed";
  SetSize(model, 5);
  test::WriteBytes(dir.File("page.htm"), Page({QUILLMERE_APP_DIR}));
  const std::string command = "/usr/bin/chromium --headless --no-sandbox --disable-gpu --disable-background-networking"
                              " --no-first-run --user-data-dir=" + dir.File("profile") + " --screenshot=" +
                              dir.File("page.png") + " --window-size=600,900 file://" + dir.File("page.htm") +
                              " >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(test::ReadBytes(dir.File("page.png")).substr(1, 3), "PNG");
}

}  // namespace
}  // namespace qm
