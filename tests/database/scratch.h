// An embedded database of a test's own, and answers as short texts.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "automation/conversion.h"
#include "database/connection.h"

namespace vellum250::database {

// One file for each object, removed with it.
class Scratch {
 public:
  Scratch() {
    static int count = 0;
    file_ = std::filesystem::temp_directory_path() /
            ("scratch" + std::to_string(::getpid()) + "-" + std::to_string(++count) + ".db");
    std::filesystem::remove(file_);
    connection_ = Connection::Open(ConnectionText() + u"Create=yes;");
  }
  ~Scratch() {
    connection_.reset();
    // Windows keeps a file as long as the connection rests in the pool.
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(file_.string() + suffix, ignored);
    }
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::filesystem::path& File() const { return file_; }
  Text ConnectionText() const {
    return u"Driver=Vellum250;Database=" + FromUtf8(file_.string()) + u";";
  }
  Connection& Get() { return *connection_; }
  // Another connection to the same file.
  std::unique_ptr<Connection> Another() const { return Connection::Open(ConnectionText()); }

  // Everything that a batch gave: "1|a;2|b" for rows, "(none)" for none, results and a failure
  // ("#207 line 1: ...") parted by " / ".
  std::string Answer(TextView sql, std::span<const Variant> parameters = {}) {
    return AnswerOf(*connection_, sql, parameters);
  }
  static std::string AnswerOf(Connection& connection, TextView sql,
                              std::span<const Variant> parameters = {}) {
    const Batch batch = connection.Run(sql, parameters);
    std::string answer;
    const auto add = [&](const std::string& part) {
      answer += (answer.empty() ? "" : " / ") + part;
    };
    for (const Recordset& result : batch.results) add(RowsOf(result));
    if (batch.failure) add(FailureText(*batch.failure));
    return answer;
  }

  static std::string FailureText(const DatabaseFailure& failure) {
    return "#" + std::to_string(failure.NativeNumber()) + " line " +
           std::to_string(failure.Line()) + ": " + failure.what();
  }

  static std::string RowsOf(const Recordset& result) {
    std::string rows;
    for (size_t row = 0; row < result.RowCount(); ++row) {
      if (row > 0) rows += ";";
      for (size_t column = 0; column < result.Columns().size(); ++column) {
        if (column > 0) rows += "|";
        const Variant& value = result.At(row, column);
        rows += value.IsNull() ? "NULL" : ToUtf8(ToText(value));
      }
    }
    return result.RowCount() == 0 ? "(none)" : rows;
  }

 private:
  std::filesystem::path file_;
  std::unique_ptr<Connection> connection_;
};

// What opening or running raises, as text.
template <typename Action>
std::string FailureOf(Action action) {
  try {
    action();
  } catch (const DatabaseFailure& failure) {
    return failure.what();
  }
  return "no failure";
}

}  // namespace vellum250::database
