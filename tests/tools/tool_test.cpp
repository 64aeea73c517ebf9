// The tool as a whole, on the embedded database.
#include "vellum250-sql/tool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vellum250::sqltool {
namespace {

struct Ran {
  int exitCode;
  std::string out;
  std::string errors;
};

std::string Contents(std::FILE* file) {
  std::rewind(file);
  std::string text;
  for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
  std::fclose(file);
  return text;
}

Ran RunWith(const std::vector<std::string>& arguments, std::string_view input = "") {
  std::FILE* in = std::tmpfile();
  std::FILE* out = std::tmpfile();
  std::FILE* errors = std::tmpfile();
  std::fwrite(input.data(), 1, input.size(), in);
  std::rewind(in);
  const int exitCode = RunTool(arguments, in, out, errors);
  std::fclose(in);
  return {exitCode, Contents(out), Contents(errors)};
}

class Tool : public testing::Test {
 protected:
  Tool() { std::filesystem::create_directories(folder_); }
  ~Tool() override { std::filesystem::remove_all(folder_); }

  std::string File(const std::string& name) const { return (folder_ / name).string(); }
  std::string Script(const std::string& name, std::string_view text) const {
    std::ofstream(File(name), std::ios::binary) << text;
    return File(name);
  }
  // Runs on this test's own database, made when there is none.
  Ran On(std::vector<std::string> arguments, std::string_view input = "") const {
    arguments.insert(arguments.begin(), {"--connection", connection_, "--create"});
    return RunWith(arguments, input);
  }

  const std::filesystem::path folder_ =
      std::filesystem::path(testing::TempDir()) /
      (std::string("vellum250-sql-") +
       testing::UnitTest::GetInstance()->current_test_info()->name());
  const std::string connection_ = "Driver=Vellum250;Database=" + File("members.db") + ";";
};

TEST_F(Tool, RefusesWrongCommandLinesWithoutShowingAPassword) {
  const std::string secret = "Driver=Vellum250;Database=none.db;PWD=tiger;";
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } cases[] = {
      {{}, "--connection is missing"},
      {{secret}, "--connection is missing"},
      {{"-q", "SELECT 1"}, "--connection is missing"},
      {{"--connection"}, "--connection needs a value"},
      {{"--connection", secret, "-q"}, "-q needs a value"},
      {{"--connection", secret, "--connection", secret}, "--connection is given twice"},
      {{"--conection=" + secret}, "unknown option --conection"},
      {{"--connection", secret, "-x"}, "unknown option -x"},
  };
  for (const auto& c : cases) {
    const Ran ran = RunWith(c.arguments);
    EXPECT_EQ(ran.exitCode, 2) << c.message;
    EXPECT_EQ(ran.out, "");
    EXPECT_NE(ran.errors.find(c.message), std::string::npos) << ran.errors;
    EXPECT_EQ(ran.errors.find("tiger"), std::string::npos) << ran.errors;
  }
  EXPECT_EQ(RunWith({"--help"}).exitCode, 0);
}

TEST_F(Tool, MakesADatabaseOnlyWhenAskedTo) {
  const std::vector<std::string> arguments = {"--connection", connection_, "-q", "SELECT 1 AS n"};
  const Ran missing = RunWith(arguments);
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.errors, "");
  EXPECT_FALSE(std::filesystem::exists(File("members.db")));

  EXPECT_EQ(On({"-q", "CREATE TABLE t (n int)\nINSERT INTO t VALUES (5)"}).exitCode, 0);
  EXPECT_TRUE(std::filesystem::exists(File("members.db")));
  EXPECT_EQ(RunWith(arguments).out, "n\n1\n");
  // An existing one is kept.
  EXPECT_EQ(On({"-q", "SELECT n FROM t"}).out, "n\n5\n");
}

TEST_F(Tool, ShowsNoPasswordInAnyFailure) {
  const std::string secret = ";Driver=Vellum250;Database=/nowhere/none.db;UID=sa;PWD=tiger";
  for (const auto& arguments :
       {std::vector<std::string>{"--connection", secret, "-q", "SELECT 1"},
        std::vector<std::string>{"--connection", connection_, "--create", secret},
        std::vector<std::string>{"--connection", "PWD=tiger", "-q", "x"}}) {
    const Ran ran = RunWith(arguments);
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_NE(ran.errors, "");
    EXPECT_EQ(ran.errors.find("tiger"), std::string::npos) << ran.errors;
  }
}

TEST_F(Tool, RunsScriptsStatementsAndInputInOrder) {
  const std::string first = Script("first.sql",
                                   "\xEF\xBB\xBF"
                                   "CREATE TABLE t (n int, s varchar(20))\r\nGO\r\n"
                                   "INSERT INTO t VALUES (1, 'caf\xC3\xA9')\r\ngo\r\n");
  const std::string second = Script("second.sql", "INSERT INTO t VALUES (2, NULL)");
  Ran ran = On({first, "-q", "SELECT * FROM t", second, "-", "-q", "SELECT count(*) AS c FROM t"},
               "INSERT INTO t VALUES (3, 'a\tb')\nGO\nSELECT s FROM t WHERE n = 3\n");
  EXPECT_EQ(ran.errors, "");
  EXPECT_EQ(ran.exitCode, 0);
  EXPECT_EQ(ran.out, "n\ts\n1\tcaf\xC3\xA9\n\ns\na\\tb\n\nc\n3\n");
  // Without any, standard input.
  EXPECT_EQ(On({}, "SELECT n FROM t WHERE n = 2").out, "n\n2\n");
  // A number behind GO says how often; a failure ends it.
  EXPECT_EQ(On({"-", "-q", "SELECT count(*) AS c FROM t"},
               "INSERT INTO t VALUES (4, NULL)\nGO 3\nINSERT INTO t VALUES (5, NULL) SELECT 1 / 0\n"
               "GO 2\n")
                .exitCode,
            1);
  EXPECT_EQ(On({"-q", "SELECT count(*) AS c FROM t WHERE n > 3"}).out, "c\n4\n");
  EXPECT_EQ(On({"--timing", "-q", "SELECT 1 AS n"}).errors.substr(0, 6), "-q:1: ");
}

TEST_F(Tool, StopsAtTheFirstFailureAndNamesItsLine) {
  Script("t.sql", "CREATE TABLE t (n int NOT NULL)\nINSERT INTO t VALUES (1)");
  ASSERT_EQ(On({File("t.sql")}).exitCode, 0);
  const struct {
    const char* script;
    const char* where;  // after the file's name
    const char* rows;   // what was printed before
  } cases[] = {
      {"SELECT n FROM t\nGO\n\n\nSELECT x FROM t\nGO\nSELECT n FROM t",
       ":5: message 207: ", "n\n1\n"},
      {"GO\r\nGO\r\nSELECT 1 AS a\r\nSELECT n FROM none\r\n", ":4: message 208: ", "a\n1\n"},
      {"SELECT 1 AS a\nGO\nINSERT INTO t VALUES (NULL)", ":3: message 515: ", "a\n1\n"},
      {"-- one\n-- two\nGO\nSELECT 1 +\n", ": message 102: ", ""},
      {"SELECT 'caf\xE9'", ": line 1 is not UTF-8 text", ""},
  };
  for (const auto& c : cases) {
    const std::string script = Script("fails.sql", c.script);
    const Ran ran = On({script, "-q", "INSERT INTO t VALUES (9)"});
    EXPECT_EQ(ran.exitCode, 1) << c.script;
    EXPECT_EQ(ran.out, c.rows);
    const std::string where = c.where;
    EXPECT_TRUE(ran.errors.starts_with(script)) << ran.errors;
    EXPECT_NE(ran.errors.find(where), std::string::npos) << ran.errors;
  }
  EXPECT_EQ(On({"-q", "SELECT count(*) AS c FROM t"}).out, "c\n1\n");

  for (const std::string& name : {File("none.sql"), folder_.string()}) {
    const Ran ran = On({name});
    EXPECT_EQ(ran.exitCode, 1);
    EXPECT_TRUE(ran.errors.starts_with(name + ": cannot be ")) << ran.errors;
  }
}

TEST_F(Tool, PrintsOneDocumentForEachScriptAndStatement) {
  const std::string script = Script("s.sql",
                                    "CREATE TABLE t (n int)\nGO\nINSERT INTO t VALUES (4)\n"
                                    "SELECT n FROM t\nGO\nSELECT 'x' AS s\nGO\n");
  Ran ran = On({"--json", script, "-q", "SELECT 1 AS a\nSELECT none"});
  EXPECT_EQ(ran.exitCode, 1);
  const size_t lineEnd = ran.out.find('\n');
  EXPECT_EQ(
      ran.out.substr(0, lineEnd),
      "{\"results\": [{\"columns\": [{\"name\": \"n\", \"type\": \"int\"}], \"rows\": [[4]]}, "
      "{\"columns\": [{\"name\": \"s\", \"type\": \"varchar\"}], \"rows\": [[\"x\"]]}], "
      "\"rowcounts\": [1], \"error\": null}");
  EXPECT_NE(ran.out.find("\"error\": {\"number\": 207, \"message\": \"", lineEnd),
            std::string::npos)
      << ran.out;
  EXPECT_NE(ran.out.find("\"line\": 2}}\n", lineEnd), std::string::npos) << ran.out;
  EXPECT_NE(ran.errors.find("-q:2: message 207: "), std::string::npos) << ran.errors;
}

}  // namespace
}  // namespace vellum250::sqltool
