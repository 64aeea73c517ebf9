// The answers of a T-SQL server, case by case, against the embedded database. A case passes, or is
// refused by name ("not supported by the embedded database: ..."); a wrong answer is a fault.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "automation/locale.h"
#include "database/connection.h"

namespace vellum250::database {
namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

const fs::path kCases = fs::path(VELLUM250_SOURCE_DIR) / "tests/database/tsql-cases";

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

// The parts of a script between lines that hold only GO.
std::vector<std::string> SplitAtGo(const std::string& script) {
  std::vector<std::string> batches(1);
  std::stringstream lines(script);
  for (std::string line; std::getline(lines, line);) {
    std::string word;
    for (const char c : line) {
      if (!std::isspace(static_cast<unsigned char>(c))) word += static_cast<char>(std::tolower(c));
    }
    if (word == "go") {
      batches.emplace_back();
    } else {
      batches.back() += line + "\n";
    }
  }
  return batches;
}

std::unique_ptr<Connection> Open(const fs::path& file, bool create = false) {
  return Connection::Open(u"Driver=Vellum250;Database=" + FromUtf8(file.string()) + u";" +
                          (create ? u"Create=yes;" : u""));
}

// A file with the fixture in it, made once, copied for every case.
class Fixture {
 public:
  Fixture() : folder_(fs::temp_directory_path() / ("golden" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
    const auto connection = Open(Master(), true);
    for (const std::string& batch : SplitAtGo(ReadFile(kCases / "fixture.sql"))) {
      const Batch result = connection->Run(FromUtf8(batch));
      if (result.failure) {
        ADD_FAILURE() << "fixture line " << result.failure->Line() << ": "
                      << result.failure->what();
      }
    }
  }
  ~Fixture() { fs::remove_all(folder_); }

  // Everything of the master is in its file once its last connection has gone, or in its log.
  fs::path FreshCopy() {
    const fs::path copy = folder_ / ("case" + std::to_string(++copies_) + ".db");
    fs::copy_file(Master(), copy);
    if (fs::exists(Master().string() + "-wal")) {
      fs::copy_file(Master().string() + "-wal", copy.string() + "-wal");
    }
    return copy;
  }

 private:
  fs::path Master() const { return folder_ / "master.db"; }
  fs::path folder_;
  int copies_ = 0;
};

std::string Digits(int value, int width) {
  std::string text = std::to_string(value);
  return std::string(static_cast<size_t>(std::max(0, width - static_cast<int>(text.size()))), '0') +
         text;
}

std::string DateTimeText(Date date, SqlType type) {
  const CivilTime time = ToCivil(date);
  std::string text = Digits(time.year, 4) + "-" + Digits(time.month, 2) + "-" + Digits(time.day, 2);
  if (type == SqlType::Date) return text;
  return text + " " + Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" +
         Digits(time.second, 2) + "." + Digits(time.millisecond, 3);
}

Json ToJson(const Variant& value, const Column& column) {
  if (value.IsNull()) return nullptr;
  if (const auto* boolean = value.If<bool>()) return *boolean;
  if (const auto* byte = value.If<uint8_t>()) return *byte;
  if (const auto* small = value.If<int16_t>()) return *small;
  if (const auto* whole = value.If<int32_t>()) return *whole;
  if (const auto* number = value.If<double>()) return *number;
  if (const auto* decimal = value.If<Decimal>()) {
    if (column.type == SqlType::BigInt) return std::stoll(ToUtf8(decimal->digits));
    return ToUtf8(decimal->digits);
  }
  if (const auto* money = value.If<Currency>()) {
    const int64_t units = money->tenThousandths;
    const uint64_t magnitude =
        units < 0 ? 0 - static_cast<uint64_t>(units) : static_cast<uint64_t>(units);
    return (units < 0 ? "-" : "") + std::to_string(magnitude / 10000) + "." +
           Digits(static_cast<int>(magnitude % 10000), 4);
  }
  if (const auto* date = value.If<Date>()) return DateTimeText(*date, column.type);
  return ToUtf8(value.As<Text>());
}

bool SameValue(const Json& expected, const Json& actual) {
  if (expected.is_object() && expected.contains("near")) {
    if (!actual.is_string()) return false;
    const auto stamp = ParseDate(FromUtf8(actual.get<std::string>().substr(0, 19)));
    return stamp && std::abs(stamp->days - Now().days) < 1.0 / 1440;
  }
  if (expected.is_number() && actual.is_number()) {
    return expected.get<double>() == actual.get<double>();
  }
  return expected == actual;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// What differs between the expected and the actual result sets; "" when nothing does.
std::string ResultDifference(const Json& expected, const std::vector<Recordset>& actual) {
  if (expected.size() != actual.size()) {
    return std::to_string(actual.size()) + " result sets instead of " +
           std::to_string(expected.size());
  }
  for (size_t r = 0; r < actual.size(); ++r) {
    const Json& columns = expected[r]["columns"];
    const auto& actualColumns = actual[r].Columns();
    if (columns.size() != actualColumns.size()) return "another number of columns";
    for (size_t c = 0; c < columns.size(); ++c) {
      const std::string name = Lower(columns[c]["name"].get<std::string>());
      std::string type = columns[c]["type"].get<std::string>();
      if (type == "numeric") type = "decimal";
      if (name != Lower(ToUtf8(actualColumns[c].name))) {
        return "column named \"" + ToUtf8(actualColumns[c].name) + "\" instead of \"" + name + "\"";
      }
      if (type != ToUtf8(SqlTypeName(actualColumns[c].type))) {
        return "column " + name + " of type " + ToUtf8(SqlTypeName(actualColumns[c].type)) +
               " instead of " + type;
      }
    }
    const Json& rows = expected[r]["rows"];
    if (rows.size() != actual[r].RowCount()) {
      return std::to_string(actual[r].RowCount()) + " rows instead of " +
             std::to_string(rows.size());
    }
    for (size_t row = 0; row < rows.size(); ++row) {
      for (size_t c = 0; c < columns.size(); ++c) {
        const Json value = ToJson(actual[r].At(row, c), actualColumns[c]);
        if (!SameValue(rows[row][c], value)) {
          return value.dump() + " instead of " + rows[row][c].dump();
        }
      }
    }
  }
  return "";
}

bool IsRefusal(const DatabaseFailure& failure) {
  return failure.Description().starts_with(u"not supported by the embedded database: ");
}

struct Outcome {
  enum { Passed, Refused, Wrong } verdict = Passed;
  std::string detail;
};

// Runs one batch or script into one Batch.
Batch RunAll(Connection& connection, const std::string& sql, bool script) {
  if (!script) return connection.Run(FromUtf8(sql));
  Batch all;
  for (const std::string& part : SplitAtGo(sql)) {
    Batch batch = connection.Run(FromUtf8(part));
    std::ranges::move(batch.results, std::back_inserter(all.results));
    all.rowCounts.insert(all.rowCounts.end(), batch.rowCounts.begin(), batch.rowCounts.end());
    all.failure = batch.failure;
    if (all.failure) break;
  }
  return all;
}

Outcome RunCase(const Json& test, const fs::path& file) {
  for (const Json& step : test.value("setup", Json::array())) {
    const bool fails = step.is_object() && step.value("fails", false);
    const std::string sql =
        step.is_object() ? step["sql"].get<std::string>() : step.get<std::string>();
    const Batch batch = Open(file)->Run(FromUtf8(sql));
    if (batch.failure && IsRefusal(*batch.failure))
      return {Outcome::Refused, batch.failure->what()};
    if (batch.failure.has_value() != fails) {
      return {Outcome::Wrong, batch.failure ? std::string("setup: ") + batch.failure->what()
                                            : "a setup that must fail did not"};
    }
  }
  const auto connection = Open(file);
  const Batch batch =
      RunAll(*connection, test["sql"].get<std::string>(), test.value("script", false));
  if (batch.failure && IsRefusal(*batch.failure)) return {Outcome::Refused, batch.failure->what()};
  const Json& error = test["error"];
  if (error.is_null() && batch.failure) return {Outcome::Wrong, batch.failure->what()};
  if (!error.is_null()) {
    if (!batch.failure) return {Outcome::Wrong, "no failure"};
    if (batch.failure->NativeNumber() != error["number"].get<int>()) {
      return {Outcome::Wrong, "failure " + std::to_string(batch.failure->NativeNumber()) + ": " +
                                  batch.failure->what()};
    }
  }
  std::string difference = ResultDifference(test["results"], batch.results);
  if (difference.empty() && test.contains("rowcounts") &&
      test["rowcounts"] != Json(batch.rowCounts)) {
    difference = "row counts " + Json(batch.rowCounts).dump();
  }
  return {difference.empty() ? Outcome::Passed : Outcome::Wrong, difference};
}

TEST(Golden, CasesGiveTheServersAnswer) {
  Fixture fixture;
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(kCases)) {
    if (entry.path().extension() == ".json") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  int passed = 0;
  int total = 0;
  for (const fs::path& path : files) {
    int counts[3] = {0, 0, 0};
    for (const Json& test : Json::parse(ReadFile(path))) {
      const fs::path file = fixture.FreshCopy();
      const Outcome outcome = RunCase(test, file);
      ++counts[outcome.verdict];
      ++total;
      const std::string name = path.stem().string() + ": " + test["name"].get<std::string>();
      if (outcome.verdict == Outcome::Wrong) ADD_FAILURE() << name << "\n  " << outcome.detail;
      if (outcome.verdict == Outcome::Refused) {
        std::printf("  refused: %s (%s)\n", name.c_str(), outcome.detail.c_str());
      }
    }
    passed += counts[0];
    std::printf("%-12s %3d passed %3d refused %3d wrong\n", path.stem().c_str(), counts[0],
                counts[1], counts[2]);
  }
  std::printf("%d of %d passed\n", passed, total);
  EXPECT_GE(passed * 10, total * 9);
}

}  // namespace
}  // namespace vellum250::database
