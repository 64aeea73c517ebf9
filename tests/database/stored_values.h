// Values and types of the embedded database, written short for tables of cases.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "database/connection.h"
#include "database/embedded/value.h"

namespace vellum250::database::embedded {

// "varchar(20)", "decimal(9,2)", "int" ... A text type without length is max.
inline TypeInfo T(const std::string& written) {
  const size_t bracket = written.find('(');
  const size_t comma = written.find(',');
  const auto number = [&](size_t from) {
    return from == std::string::npos ? 0 : std::stoi(written.substr(from + 1));
  };
  return ParseType(FromUtf8(written.substr(0, bracket)), number(bracket), number(comma), -1);
}

// The stored form; "NULL"; "!245" for a failure with SQL Server's number.
template <typename Function>
std::string Shown(Function function) {
  try {
    const Value value = function();
    if (const auto* integer = std::get_if<int64_t>(&value)) return std::to_string(*integer);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* number = std::get_if<double>(&value)) {
      char digits[40];
      std::snprintf(digits, sizeof digits, "%.15g", *number);
      return digits;
    }
    return "NULL";
  } catch (const DatabaseFailure& failure) {
    return failure.NativeNumber() == 0 ? "!unsupported"
                                       : "!" + std::to_string(failure.NativeNumber());
  }
}

// The words of the failure that `function` raises.
template <typename Function>
std::string Words(Function function) {
  try {
    function();
  } catch (const Failure& failure) {
    return ToUtf8(failure.Description());
  }
  return "no failure";
}

}  // namespace vellum250::database::embedded
