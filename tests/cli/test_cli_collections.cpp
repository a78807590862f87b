// quillmere-cli export, sort, append, delete, backup and copy.
#include <gtest/gtest.h>

#include "support/cli_run.h"
#include "support/records.h"
#include "support/scoped_conditions.h"
#include "support/test_files.h"

namespace qm {
namespace {

using nlohmann::json;
using test::Cli;
using test::CliRun;

class CliCollections : public ::testing::Test {
 protected:
  void SetUp() override {
    file = dir.File("c.fut");
    test::WriteBytes(file, test::CrLf(test::Records(
                               {test::SmallRecord("#7", "seven"), test::SampleRecord(),
                                {"#9", "six", "6 0 0", "...........|", "", "", "", "", "", "", "", "", "", ""}})));
  }
  std::string Out(const std::string& name) const { return dir.File(name); }

  test::TempDir dir;
  std::string file;
};

TEST_F(CliCollections, ExportsEachFormat) {
  for (const std::string format : {"txt", "html", "xls"}) {
    const std::string out = Out("p." + format);
    const CliRun run = Cli({"export", format, file, "-n", "2", "-o", out, "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json()["file"], out);
    EXPECT_EQ(run.Json()["message"].get<std::string>().substr(0, 15), "Puzzle saved as");
  }
  EXPECT_NE(test::ReadBytes(Out("p.txt")).find("   Puzzle#2\r\n   Sample\r\n"), std::string::npos);
  EXPECT_EQ(Cli({"export", "xls", file, "-n", "2", "-o", Out("p.xls")}).out,
            "Puzzle saved as XLS File:\r\n" + Out("p.xls") + "\n");

  ASSERT_EQ(Cli({"export", "html", file, "-n", "2", "-o", Out("p.html"), "--no-solution"}).code, 0);
  const std::string page = test::ReadBytes(Out("p.html"));
  const std::string end = "</tr><tr>\r\n</table>\r\n</table>\r\n</body>\r\n</html>\r\n";
  EXPECT_EQ(page.substr(page.size() - end.size()), end);
  EXPECT_EQ(page.find("<p>Sol:"), std::string::npos);

  test::WriteBytes(Out("htmltemplate4x4.txt"), "<p>x</p>\r\n");
  ASSERT_EQ(Cli({"export", "html", file, "-n", "2", "-o", Out("p.html"), "--template-dir", dir.Path()}).code, 0);
  EXPECT_EQ(test::ReadBytes(Out("p.html")), "<p>Puz:Sample</p>\r\n</table>\r\n</table>\r\n</body>\r\n</html>\r\n");
}

TEST_F(CliCollections, ExportFailuresAndUsage) {
  CliRun run = Cli({"export", "html", file, "-n", "3", "-o", Out("six.htm"), "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.Json(), (json{{"file", Out("six.htm")}, {"error", "Error writing to file: " + Out("six.htm")}}));
  run = Cli({"export", "txt", file, "-n", "9", "-o", Out("x.txt"), "--json"});
  EXPECT_EQ(run.Json()["error"], "Error reading puzzle# 9 in file:\r\n" + file);
  EXPECT_EQ(Cli({"export", "txt", file, "-o", "/dev/full"}).err, "Error writing to file: /dev/full\n");
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"export", "pdf", file, "-o", Out("x")},
           {"export", "txt", file},
           {"export", "txt", file, "-o", ""},
           {"sort", file, Out("s.fut"), "--by", "colour", "--order", "ascending"},
           {"sort", file, Out("s.fut"), "--by", "size"},
           {"delete", file},
           {"copy", file},
       }) {
    EXPECT_EQ(Cli(args).code, 2) << ::testing::PrintToString(args);
  }
}

TEST_F(CliCollections, SortsWithTheDialogsMessages) {
  CliRun run = Cli({"sort", file, Out("s.fut"), "--by", "size", "--order", "descending", "--resequence", "10", "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json(), (json{{"count", 3}, {"message", " 3 puzzles sorted to file:\r\n" + Out("s.fut")}}));
  EXPECT_EQ(test::ReadBytes(Out("s.fut")).substr(0, 13), "#10\r\nsix\r\n6 0");

  for (const char* name : {"r1.fut", "r2.fut"}) {
    Cli({"sort", file, Out(name), "--by", "number", "--order", "random", "--seed", "1"});
  }
  EXPECT_EQ(test::ReadBytes(Out("r1.fut")), test::ReadBytes(Out("r2.fut")));
  EXPECT_EQ(test::ReadBytes(Out("r1.fut")).substr(0, 4), "#1\r\n");
  run = Cli({"sort", file, file, "--by", "header", "--order", "ascending", "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.Json()["error"], "Input and output files cannot be same");
}

TEST_F(CliCollections, AppendDeleteBackupAndCopy) {
  const std::string target = Out("t.fut");
  CliRun run = Cli({"append", file, "-n", "2", target, "--json"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.Json(), (json{{"file", target}, {"message", "Puzzle# 1 appended to file " + target}}));

  run = Cli({"copy", file, Out("copy.fut"), "--json"});
  EXPECT_EQ(run.Json(), (json{{"file", Out("copy.fut")}, {"message", "Puzzle file saved as:\r\n" + Out("copy.fut")}}));
  run = Cli({"backup", file, "--json"});
  EXPECT_EQ(run.Json(), (json{{"file", Out("c;01.fut")}, {"message", "File backed up as:\r\n" + Out("c;01.fut")}}));
  EXPECT_EQ(test::ReadBytes(Out("c;01.fut")), test::ReadBytes(file));

  {
    test::WorkingDirectory here(dir.Path());
    run = Cli({"delete", file, "-n", "1", "--json"});
  }
  EXPECT_EQ(run.Json(), (json{{"message", "Done"}}));
  EXPECT_EQ(test::ReadBytes(file).substr(0, 4), "#3\r\n");
  EXPECT_EQ(test::ReadBytes(Out("Quillmeretemp.tmp")), test::ReadBytes(file));

  run = Cli({"backup", Out("gone.fut"), "--json"});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.Json()["error"], "Error backing to file:\r\n" + Out("gone;01.fut"));
  run = Cli({"append", file, Out("no/such/dir.fut")});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.err, "Error writing puzzle# 1 to file: " + Out("no/such/dir.fut") + "\n");
}

}  // namespace
}  // namespace qm
