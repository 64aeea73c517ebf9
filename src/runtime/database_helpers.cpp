#include "runtime/database_helpers.h"

#include "automation/conversion.h"
#include "database/connection.h"
#include "runtime/component_context.h"
#include "runtime/concat.h"

namespace vellum250 {

namespace {

std::unique_ptr<database::Connection> OpenConnection(TextView connectionString) {
  RememberConnection(connectionString);
  return database::Connection::Open(ComponentContext::Current().connectionString);
}

}  // namespace

void RememberConnection(TextView connectionString) {
  if (!connectionString.empty()) ComponentContext::Current().connectionString = connectionString;
}

Text GetConnectionString() { return ComponentContext::Current().connectionString; }

void ExecuteSql(TextView sql, TextView connectionString) {
  OpenConnection(connectionString)->Execute(sql);
}

Text GetScalarText(TextView sql, TextView connectionString) {
  const database::Recordset rows = OpenConnection(connectionString)->Execute(sql);
  if (rows.Eof()) return {};
  const Variant& value = rows.Field(0);
  if (value.IsNull()) return {};
  if (const Text* text = value.If<Text>()) return Text(TrimBlanks(*text));
  return ToText(value);
}

Variant GetScalar(TextView sql, TextView connectionString) {
  Text text = GetScalarText(sql, connectionString);
  return text.empty() ? Variant(false) : Variant(std::move(text));
}

int32_t GetScalarNumber(TextView sql, TextView connectionString) {
  return ToInt32(GetScalar(sql, connectionString));
}

Variant InsertAndGetIdentity(TextView sql, TextView connectionString) {
  const auto connection = OpenConnection(connectionString);
  try {
    return connection
        ->Execute(Concat(u"SET NOCOUNT ON\r\n", sql, u"\r\nSELECT SCOPE_IDENTITY() as IDENT"))
        .Field(u"IDENT");
  } catch (const Failure&) {
    // Callers rely on the record methods going on with the reference 0.
    return false;
  }
}

Text SqlQuote(TextView text) { return ReplaceAll(text, u"'", u"''"); }

}  // namespace vellum250
