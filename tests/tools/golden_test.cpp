// The answers of a T-SQL server, case by case, from the program as an administrator runs it. A case
// passes, or is refused by name; a wrong answer is a fault. With VELLUM250_TEST_CONNECTION, a
// connection string without a database, a server answers instead, in a database made for the tests.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace vellum250::sqltool {
namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

const fs::path kCases = fs::path(VELLUM250_SOURCE_DIR) / "tests/database/tsql-cases";

const char* const kServer = std::getenv("VELLUM250_TEST_CONNECTION");

Json ReadJson(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Json::parse(file);
}

// A folder with a database that holds the fixture, copied for every case; on a server, which copies
// none, it is made anew.
class Fixture {
 public:
  Fixture() : folder_(fs::path(testing::TempDir()) / ("golden" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
    if (kServer != nullptr) {
      MakeCopy();
    } else {
      Demand(Run("master.db", {"--create", kCases / "fixture.sql"}));
    }
  }
  ~Fixture() {
    if (kServer != nullptr) Demand(Run("master", {"-q", "DROP DATABASE " + database_}));
    fs::remove_all(folder_);
  }

  void MakeCopy() {
    if (kServer != nullptr) {
      Demand(Run("master", {"-q", "IF DB_ID('" + database_ + "') IS NOT NULL DROP DATABASE " +
                                      database_ + " CREATE DATABASE " + database_}));
      Demand(Run(database_, {kCases / "fixture.sql"}));
      return;
    }
    fs::copy_file(folder_ / "master.db", folder_ / "case.db", fs::copy_options::overwrite_existing);
    for (const char* leftover : {"case.db-wal", "case.db-shm"}) fs::remove(folder_ / leftover);
  }

  // The document that the program prints about the copy for one batch, or for a script.
  Json RunBatch(const std::string& sql) const { return Run(Copy(), {"-q", sql}); }
  Json RunScript(const std::string& sql) const {
    std::ofstream(folder_ / "script.sql", std::ios::binary) << sql;
    return Run(Copy(), {folder_ / "script.sql"});
  }

 private:
  static void Demand(const Json& document) {
    if (!document["error"].is_null()) ADD_FAILURE() << "fixture: " << document["error"];
  }

  std::string Copy() const { return kServer == nullptr ? "case.db" : database_; }

  Json Run(const std::string& database, const std::vector<std::string>& arguments) const {
    std::vector<std::string> words = {
        VELLUM250_SQL_TOOL, "--json", "--connection",
        kServer == nullptr ? "Driver=Vellum250;Database={" + (folder_ / database).string() + "};"
                           : std::string(kServer) + ";Database=" + database + ";"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const std::string out = folder_ / "out.json";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kWrite, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child) {
      throw std::runtime_error("the program cannot be run");
    }
    Json document = ReadJson(out);
    const int expected = document["error"].is_null() ? 0 : 1;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != expected) {
      ADD_FAILURE() << "exit status " << status << " with " << document["error"];
    }
    return document;
  }

  fs::path folder_;
  std::string database_ = "vellum250_golden_" + std::to_string(::getpid());
};

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// {"near": "now"} stands for any local time within a minute of this one.
bool IsNow(const Json& value) {
  std::tm time{};
  if (!value.is_string() ||
      strptime(value.get<std::string>().c_str(), "%Y-%m-%d %H:%M:%S", &time) == nullptr) {
    return false;
  }
  time.tm_isdst = -1;
  return std::abs(std::difftime(std::mktime(&time), std::time(nullptr))) < 60;
}

bool SameValue(const Json& expected, const Json& actual) {
  return expected.is_object() ? IsNow(actual) : expected == actual;
}

// What differs between the expected and the actual result set; "" when nothing does.
std::string Difference(const Json& expected, const Json& actual) {
  const Json& columns = expected["columns"];
  if (columns.size() != actual["columns"].size()) return "another number of columns";
  for (size_t i = 0; i < columns.size(); ++i) {
    const Json& column = actual["columns"][i];
    if (Lower(columns[i]["name"]) != Lower(column["name"])) return "a column " + column.dump();
    const std::string type = columns[i]["type"] == "numeric" ? "decimal" : columns[i]["type"];
    if (column["type"] != type) return "column " + column.dump() + " instead of " + type;
  }
  const Json& rows = expected["rows"];
  if (rows.size() != actual["rows"].size()) {
    return std::to_string(actual["rows"].size()) + " rows instead of " +
           std::to_string(rows.size());
  }
  for (size_t row = 0; row < rows.size(); ++row) {
    if (!std::ranges::equal(rows[row], actual["rows"][row], SameValue)) {
      return actual["rows"][row].dump() + " instead of " + rows[row].dump();
    }
  }
  return "";
}

std::string Difference(const Json& test, const Json& error, const Json& actual) {
  const int32_t number = error.is_null() ? 0 : error["number"].get<int32_t>();
  const int32_t expected = test["error"].is_null() ? 0 : test["error"]["number"].get<int32_t>();
  if (number != expected || error.is_null() != test["error"].is_null()) {
    return "failure " + error.dump() + " instead of " + test["error"].dump();
  }
  if (!error.is_null() && error["line"] < 1) return "a failure without its line";
  if (test["results"].size() != actual["results"].size()) return "another number of results";
  for (size_t i = 0; i < test["results"].size(); ++i) {
    const std::string difference = Difference(test["results"][i], actual["results"][i]);
    if (!difference.empty()) return difference;
  }
  if (test.contains("rowcounts") && test["rowcounts"] != actual["rowcounts"]) {
    return "row counts " + actual["rowcounts"].dump();
  }
  return "";
}

struct Outcome {
  enum { Passed, Refused, Failed } verdict = Passed;
  std::string detail = {};
};

bool IsRefusal(const Json& error) {
  return !error.is_null() && error["message"].get<std::string>().starts_with(
                                 "not supported by the embedded database: ");
}

Outcome RunCase(const Json& test, Fixture& fixture) {
  fixture.MakeCopy();
  for (const Json& step : test.value("setup", Json::array())) {
    const bool fails = step.is_object() && step.value("fails", false);
    const Json error = fixture.RunBatch(step.is_object() ? step["sql"] : step)["error"];
    if (IsRefusal(error)) return {Outcome::Refused, error["message"]};
    if (error.is_null() == fails) return {Outcome::Failed, "the setup gives " + error.dump()};
  }
  const Json actual =
      test.value("script", false) ? fixture.RunScript(test["sql"]) : fixture.RunBatch(test["sql"]);
  const Json& error = actual["error"];
  if (IsRefusal(error)) return {Outcome::Refused, error["message"]};
  const std::string difference = Difference(test, error, actual);
  return {difference.empty() ? Outcome::Passed : Outcome::Failed, difference};
}

TEST(Golden, CasesGiveTheServersAnswer) {
  Fixture fixture;
  if (HasFailure()) return;
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(kCases)) {
    if (entry.path().extension() == ".json") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  int total[3] = {0, 0, 0};
  const auto print = [](const std::string& theme, const int* counts) {
    std::printf("%-12s %3d passed %3d refused %3d failed\n", theme.c_str(), counts[0], counts[1],
                counts[2]);
  };
  for (const fs::path& path : files) {
    int counts[3] = {0, 0, 0};
    for (const Json& test : ReadJson(path)) {
      const Outcome outcome = RunCase(test, fixture);
      ++counts[outcome.verdict];
      ++total[outcome.verdict];
      const std::string name = path.stem().string() + ": " + test["name"].get<std::string>();
      if (outcome.verdict == Outcome::Failed) ADD_FAILURE() << name << "\n  " << outcome.detail;
      if (outcome.verdict == Outcome::Refused) {
        std::printf("  refused: %s (%s)\n", name.c_str(), outcome.detail.c_str());
      }
    }
    print(path.stem(), counts);
  }
  print("all", total);
  EXPECT_GE(total[0] * 10, (total[0] + total[1] + total[2]) * 9);
}

}  // namespace
}  // namespace vellum250::sqltool
