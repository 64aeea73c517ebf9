// Result rows as text: for people and pipes, or as JSON.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "database/connection.h"

namespace vellum250::sqltool {

// Appends a header line and a line for each row, values separated by tabs. NULL is NULL; a tab, a
// line end, a zero character and a backslash inside a value are \t, \n, \r, \0 and \\.
void AppendTable(std::string& out, const database::Recordset& rows);

// What a script gave up to its end or its first failure.
struct Outcome {
  std::vector<database::Recordset> results;
  std::vector<int64_t> rowCounts;
  std::optional<Failure> failure;
  int32_t number =
      0;             // the server's message number of the failure, 0 for a failure of another kind
  int32_t line = 0;  // the script's line of the failure, from 1; 0 when unknown
};

// Appends one JSON document and a line end:
//   {"results": [{"columns": [{"name", "type"}], "rows": [[...]]}], "rowcounts": [...],
//    "error": null or {"number", "message", "line"}}
// Values are null; numbers for the integer and floating types; true or false for bit; texts for all
// others: decimal and money with all their decimals, datetime "YYYY-MM-DD hh:mm:ss.mmm", date
// "YYYY-MM-DD". A lone surrogate is escaped.
void AppendDocument(std::string& out, const Outcome& outcome);

}  // namespace vellum250::sqltool
