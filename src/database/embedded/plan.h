// What binding makes of one statement: SQLite text and what to bind, before anything runs.
#pragma once

#include <string>
#include <vector>

#include "database/embedded/catalog.h"

namespace vellum250::database::embedded {

enum class SystemValue : uint8_t {
  Now,
  RowCount,
  Identity,
  ScopeIdentity,
  TransactionCount,
  Error
};

// A value that is bound when the statement runs.
struct Slot {
  enum class Kind : uint8_t { Literal, Marker, Variable, System, Constant };
  Kind kind = Kind::Literal;
  int32_t index = 0;  // of the literal, marker or variable; the SystemValue
  Value constant;
  // The conversion on the way: none, CONVERT, or storing in a column.
  enum class Conversion : uint8_t { None, Convert, Assign };
  Conversion conversion = Conversion::None;
  TypeInfo from;
  TypeInfo to;
  Text column;
  Text table;
};

struct ResultColumn {
  Text name;
  TypeInfo type;
  const ColumnInfo* column = nullptr;  // of a table, as it stands; while the statement is bound
  bool nullable = true;
};

// The variable that a column of SELECT @v = ... goes to, by its position in the frame.
struct Target {
  int32_t variable = 0;
  TypeInfo from;
};

struct Plan {
  enum class Kind : uint8_t { Rows, Assign, Insert, Update, Delete };
  Kind kind = Kind::Rows;
  std::string sql;
  std::vector<Slot> slots;              // ?1, ?2 ...
  std::vector<ResultColumn> columns;    // of Rows
  Recordset::ColumnsPtr resultColumns;  // the same, once it has run
  std::vector<Target> targets;          // of Assign
  bool readsTargets = false;            // a column of Assign reads what another row assigns
  ObjectPtr table;                      // that is changed
  // INSERT: whether it gives a value for the identity column.
  bool givesIdentity = false;
  bool makesTable = false;  // SELECT ... INTO
  Prepared prepared;
};

// A batch with more literals than this is not kept for another run, and its literals stand in the
// SQL text: SQLite takes time by the square of the number of parameters.
inline constexpr size_t kMostKeptLiterals = 256;

// What binding needs besides the tree.
struct BindInput {
  const Catalog& catalog;
  const std::vector<TypedValue>& literals;
  const std::vector<std::optional<TypeInfo>>& markers;  // nullopt for NULL, which has no type
  const std::vector<VariableInfo>& variables;
  // Literals whose value the plan depends on are added here.
  std::vector<int32_t>& pinned;
};

// Each raises a DatabaseFailure: 207, 208, 209, 4104 ...
Plan BindSelect(const BindInput& input, const Query& query);
// SELECT ... INTO: the table to make; and, when it is made, its rows.
CreateTableStatement BindSelectInto(const BindInput& input, const Query& query);
Plan BindInsertInto(const BindInput& input, const CreateTableStatement& table, const Query& query);
Plan BindInsert(const BindInput& input, const InsertStatement& insert);
Plan BindUpdate(const BindInput& input, const UpdateStatement& update);
Plan BindDelete(const BindInput& input, const DeleteStatement& statement);
// One row with one column: the value, as `type` where that is given; or 1 when the condition holds.
Plan BindValue(const BindInput& input, const Expression& value, std::optional<TypeInfo> type);
Plan BindCondition(const BindInput& input, const Expression& condition);
// Raises 8158 or 8159 when a list of column names is shorter or longer than there are columns.
void CheckColumnList(const std::vector<Text>& names, size_t columns, TextView object, int32_t line);
// A CHECK of a table as SQLite text without parameters.
std::string BindCheck(const Catalog& catalog, const ObjectInfo& table, TextView check);

}  // namespace vellum250::database::embedded
