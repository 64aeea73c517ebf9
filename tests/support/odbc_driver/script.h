// What the scripted server answers.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum250::support {

struct ScriptColumn {
  std::u16string name = {};
  SQLSMALLINT type = SQL_INTEGER;
  SQLULEN size = 10;
  SQLSMALLINT digits = 0;
  std::u16string typeName = u"int";
};

// A value as text; converted to what is asked for. nullopt is NULL.
using ScriptValue = std::optional<std::u16string>;

struct ScriptResult {
  std::vector<ScriptColumn> columns = {};
  std::vector<std::vector<ScriptValue>> rows = {};
  SQLLEN rowCount = -1;
  bool failsInRow = false;    // fetching fails behind the last row
  bool withoutTotal = false;  // long values do not tell their length
};

struct ScriptAnswer {
  SQLRETURN executed = SQL_SUCCESS;
  std::u16string state = {};  // of a failure
  SQLINTEGER native = 0;
  std::u16string message = {};
  std::vector<ScriptResult> results = {};
};

// The line of the batch in which a failing statement fails.
inline constexpr SQLINTEGER kFailureLine = 3;

// The text that "long" gives: it holds a zero, and pairs that pieces can cut in two.
inline std::u16string LongText() {
  std::u16string text;
  for (int i = 0; i < 3000; ++i) text += i % 3 == 0 ? u"\U0001F600" : u"é";
  text[700] = u'\0';
  return text;
}

ScriptAnswer Answer(std::u16string_view sql);

}  // namespace vellum250::support
