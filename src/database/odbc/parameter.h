// One `?` of a statement, bound to memory that lives until the statement is done.
#pragma once

#include "database/connection.h"
#include "database/odbc/link.h"
#include "database/odbc/types.h"

namespace vellum250::database::odbc {

class Parameter {
 public:
  // Of the type that the value's own type means. Null and Empty are NULL. Raises 449 for Missing,
  // 13 for an object.
  explicit Parameter(const Variant& value);
  // Of a procedure. Raises 6, 13 and 449, naming the parameter.
  explicit Parameter(const ProcedureParameter& parameter);

  // Must stay where it is until the statement's last result has been read. `number` from 1.
  void Bind(const Statement& statement, SQLUSMALLINT number);

  // What the procedure has put there. Raises a DatabaseFailure when it did not fit.
  Variant Result() const;

 private:
  Parameter(const Variant& value, SqlType type, Direction direction, int32_t size);

  SqlType type_;
  Direction direction_;
  SQLSMALLINT odbcType_;
  SQLULEN size_;
  SQLSMALLINT digits_;
  FixedValue fixed_{};
  Text text_;  // of an output as long as the largest value, with room for the final zero
  SQLLEN indicator_ = SQL_NULL_DATA;
};

}  // namespace vellum250::database::odbc
