#include <array>
#include <vector>

#include "database/odbc/diagnostics.h"
#include "database/odbc/handles.h"
#include "database/provider.h"

namespace vellum250::database::odbc {

namespace {

Handle<SQL_HANDLE_ENV> MakeEnvironment() {
  Handle<SQL_HANDLE_ENV> environment(nullptr);
  if (!environment) Fail(u"The ODBC driver manager gives no environment");
  if (!SQL_SUCCEEDED(SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION,
                                   AttributeValue(SQL_OV_ODBC3), SQL_IS_UINTEGER))) {
    throw FailureOf(SQL_HANDLE_ENV, environment.get(), {});
  }
  return environment;
}

}  // namespace

SQLHANDLE Environment() {
  // A failure is not kept; the next call tries anew.
  static const Handle<SQL_HANDLE_ENV> environment = MakeEnvironment();
  return environment.get();
}

std::vector<Text> InstalledDrivers() {
  std::vector<Text> drivers;
  std::array<char16_t, 512> name;
  SQLUSMALLINT direction = SQL_FETCH_FIRST;
  while (true) {
    SQLSMALLINT length = 0;
    SQLSMALLINT attributesLength = 0;
    const SQLRETURN result =
        SQLDriversW(Environment(), direction, Wide(name.data()), SQLSMALLINT{name.size()}, &length,
                    nullptr, 0, &attributesLength);
    if (result == SQL_NO_DATA) return drivers;
    if (!SQL_SUCCEEDED(result)) throw FailureOf(SQL_HANDLE_ENV, Environment(), {});
    drivers.emplace_back(UpToZero({name.data(), name.size()}));
    direction = SQL_FETCH_NEXT;
  }
}

}  // namespace vellum250::database::odbc
