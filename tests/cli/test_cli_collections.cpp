// quillmere-cli export, sort, append, delete, backup and copy.
#include <gtest/gtest.h>

#include "support/cli_run.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using nlohmann::json;

TEST(CliCollections, RunsTheCommandsHeadless) {
  test::TempDir dir;
  const std::string file = dir.File("c.fut");
  const std::vector<std::string> six = {"#9", "six", "6 0 0", "...........|"};
  test::WriteBytes(file, test::CrLf(test::Records({test::SmallRecord("#7", "seven"), test::SampleRecord(), six})));
  auto run = [](std::vector<std::string> args, int code = 0) {
    args.push_back("--json");
    const test::CliRun result = test::Cli(args);
    EXPECT_EQ(result.code, code) << result.err;
    return json::parse(result.out, nullptr, false);
  };
  const std::string out = dir.File("out");
  EXPECT_EQ(run({"export", "xls", file, "-n", "2", "-o", out}),
            (json{{"file", out}, {"message", "Puzzle saved as XLS File:\r\n" + out}}));
  test::WriteBytes(dir.File("htmltemplate4x4.txt"), "<p>x</p>\r\n");
  run({"export", "html", file, "-n", "2", "-o", out, "--template-dir", dir.Path(), "--no-solution"});
  EXPECT_EQ(test::ReadBytes(out), "<p>Puz:Sample</p>\r\n</table>\r\n</table>\r\n</body>\r\n</html>\r\n");
  EXPECT_EQ(run({"export", "html", file, "-n", "3", "-o", out}, 1)["error"], "Error writing to file: " + out);
  EXPECT_EQ(run({"sort", file, out, "--by", "size", "--order", "descending", "--resequence", "10"}),
            (json{{"count", 3}, {"message", " 3 puzzles sorted to file:\r\n" + out}}));
  EXPECT_EQ(run({"append", file, "-n", "2", dir.File("t.fut")})["message"], "Puzzle# 1 appended to file " + dir.File("t.fut"));
  EXPECT_EQ(run({"copy", file, out})["file"], out);
  EXPECT_EQ(run({"backup", file})["file"], dir.File("c;01.fut"));
  {
    test::WorkingDirectory here(dir.Path());
    EXPECT_EQ(run({"delete", file, "-n", "1"}), (json{{"message", "Done"}}));
  }
  EXPECT_EQ(test::ReadBytes(dir.File("Quillmeretemp.tmp")).substr(0, 4), "#3\r\n");

  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"export", "pdf", file, "-o", "x"}, {"export", "txt", file}, {"export", "txt", file, "-o", ""},
           {"sort", file, "s", "--by", "colour", "--order", "ascending"}, {"sort", file, "s", "--by", "size"},
           {"delete", file}, {"copy", file}}) {
    EXPECT_EQ(test::Cli(args).code, 2) << ::testing::PrintToString(args);
  }
}

}  // namespace
}  // namespace qm
