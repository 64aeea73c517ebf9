#include "vellum250-sql/results.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "automation/conversion.h"
#include "automation/locale.h"

namespace vellum250::sqltool {
namespace {

using database::Column;
using database::Recordset;
using database::SqlType;

std::string Formatted(const char* format, auto... values) {
  char buffer[64];
  const int length = std::snprintf(buffer, sizeof buffer, format, values...);
  return std::string(buffer, static_cast<size_t>(length));
}

// The shortest digits that give the same number again.
std::string NumberDigits(double number) {
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
  return std::string(buffer, end);
}

std::string MoneyDigits(Currency money) {
  const auto digits = std::lldiv(money.tenThousandths, 10000);
  return Formatted("%s%lld.%04lld", money.tenThousandths < 0 ? "-" : "", std::llabs(digits.quot),
                   std::llabs(digits.rem));
}

std::string DateDigits(Date date, bool withTime) {
  const CivilTime time = ToCivil(date);
  std::string text = Formatted("%04d-%02d-%02d", time.year, time.month, time.day);
  if (withTime) {
    text +=
        Formatted(" %02d:%02d:%02d.%03d", time.hour, time.minute, time.second, time.millisecond);
  }
  return text;
}

// A value's text in both formats; JSON quotes what is not a number there.
std::string ValueText(const Variant& value, SqlType type) {
  if (const auto* date = value.If<Date>()) return DateDigits(*date, type != SqlType::Date);
  if (const auto* money = value.If<Currency>()) return MoneyDigits(*money);
  if (const auto* number = value.If<double>()) return NumberDigits(*number);
  if (const auto* bit = value.If<bool>()) return *bit ? "1" : "0";
  return ToUtf8(ToText(value));
}

void AppendEscaped(std::string& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\0':
        out += "\\0";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += c;
    }
  }
}

void AppendJsonText(std::string& out, TextView text) {
  out += '"';
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const bool pair =
        (c & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if (pair) {
      AppendUtf8(out, text.substr(i++, 2));
    } else if (c == u'"' || c == u'\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || (c & 0xF800) == 0xD800) {
      out += Formatted("\\u%04x", static_cast<unsigned>(c));
    } else {
      AppendUtf8(out, text.substr(i, 1));
    }
  }
  out += '"';
}

void AppendJsonValue(std::string& out, const Variant& value, SqlType type) {
  switch (type) {
    case SqlType::TinyInt:
    case SqlType::SmallInt:
    case SqlType::Int:
    case SqlType::BigInt:
    case SqlType::Float:
    case SqlType::Real:
      out += value.IsNull() ? "null" : ValueText(value, type);
      return;
    case SqlType::Bit:
      out += value.IsNull() ? "null" : ToBoolean(value) ? "true" : "false";
      return;
    default:
      break;
  }
  if (value.IsNull()) {
    out += "null";
  } else if (const auto* text = value.If<Text>()) {
    AppendJsonText(out, *text);
  } else {
    AppendJsonText(out, FromUtf8(ValueText(value, type)));
  }
}

// Calls `append` for each number below `count`, with ", " between.
void AppendList(std::string& out, size_t count, auto append) {
  out += '[';
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) out += ", ";
    append(i);
  }
  out += ']';
}

void AppendJsonResult(std::string& out, const Recordset& rows) {
  const std::vector<Column>& columns = rows.Columns();
  out += "{\"columns\": ";
  AppendList(out, columns.size(), [&](size_t i) {
    out += "{\"name\": ";
    AppendJsonText(out, columns[i].name);
    out += ", \"type\": ";
    AppendJsonText(out, database::SqlTypeName(columns[i].type));
    out += '}';
  });
  out += ", \"rows\": ";
  AppendList(out, rows.RowCount(), [&](size_t row) {
    AppendList(out, columns.size(),
               [&](size_t i) { AppendJsonValue(out, rows.At(row, i), columns[i].type); });
  });
  out += '}';
}

}  // namespace

void AppendTable(std::string& out, const Recordset& rows) {
  const std::vector<Column>& columns = rows.Columns();
  const auto appendLine = [&](auto appendField) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) out += '\t';
      appendField(i);
    }
    out += '\n';
  };
  appendLine([&](size_t i) { AppendEscaped(out, ToUtf8(columns[i].name)); });
  for (size_t row = 0; row < rows.RowCount(); ++row) {
    appendLine([&](size_t i) {
      const Variant& value = rows.At(row, i);
      AppendEscaped(out, value.IsNull() ? "NULL" : ValueText(value, columns[i].type));
    });
  }
}

void AppendDocument(std::string& out, const Outcome& outcome) {
  out += "{\"results\": ";
  AppendList(out, outcome.results.size(),
             [&](size_t i) { AppendJsonResult(out, outcome.results[i]); });
  out += ", \"rowcounts\": ";
  AppendList(out, outcome.rowCounts.size(),
             [&](size_t i) { out += std::to_string(outcome.rowCounts[i]); });
  out += ", \"error\": ";
  if (outcome.failure) {
    out += "{\"number\": " + std::to_string(outcome.number) + ", \"message\": ";
    AppendJsonText(out, outcome.failure->Description());
    out += ", \"line\": " + std::to_string(outcome.line) + "}";
  } else {
    out += "null";
  }
  out += "}\n";
}

}  // namespace vellum250::sqltool
