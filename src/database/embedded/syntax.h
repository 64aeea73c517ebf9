// Second stage: the tree of a batch, as the parser makes it and the binder reads it. It is never
// changed after parsing: one tree serves every run of its shape.
#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "automation/text.h"
#include "database/embedded/value.h"

namespace vellum250::database::embedded {

struct Expression;
struct Query;
struct Statement;
using ExpressionPtr = std::unique_ptr<Expression>;
using QueryPtr = std::unique_ptr<Query>;
using StatementPtr = std::unique_ptr<Statement>;
using Block = std::vector<StatementPtr>;

enum class ExpressionKind : uint8_t {
  Literal,  // index
  Null,
  Marker,          // index
  Variable,        // index
  SystemVariable,  // name, with its @@
  Column,          // qualifier (may be empty), name
  Star,            // the * of count(*)
  Unary,           // operation, one argument
  Binary,          // operation, two arguments
  Call,            // name, arguments; distinct
  Cast,            // type, one argument; style in the second one if given
  Case,            // [operand,] when, then, ... [, else]; flags hasOperand and hasElse
  Subquery,        // query, as a value
  // Conditions:
  Compare,  // operation, two arguments
  And,      // two arguments or more
  Or,       // two arguments or more
  Not,
  IsNull,
  Between,  // value, low, high
  In,       // value, then the list, or query
  Like,     // value, pattern [, escape]
  Exists    // query
};

enum class Operation : uint8_t {
  Add,
  Subtract,
  Multiply,
  Divide,
  Modulo,
  BitAnd,
  BitOr,
  BitXor,
  Negate,
  Plus,
  BitNot,
  Equal,
  NotEqual,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual
};

struct Expression {
  ExpressionKind kind = ExpressionKind::Null;
  Operation operation = Operation::Add;
  bool negated = false;  // IS NOT NULL, NOT IN, NOT LIKE, NOT BETWEEN
  bool distinct = false;
  bool hasOperand = false;
  bool hasElse = false;
  int32_t index = 0;
  int32_t line = 0;
  int32_t height = 1;  // of the tree below and with this node
  TypeInfo type{};
  Text qualifier;
  Text name;
  std::vector<ExpressionPtr> arguments;
  QueryPtr query;
};

inline bool IsCondition(const Expression& e) { return e.kind >= ExpressionKind::Compare; }

// No variable, where one may be named.
inline constexpr int32_t kNoVariable = -1;

struct SelectItem {
  ExpressionPtr value;  // nullptr for *
  Text qualifier;       // of x.*
  Text alias;
  int32_t variable = kNoVariable;  // of @v = value
};

enum class JoinKind : uint8_t { Inner, Left, Right, Full, Cross };

// A table or view by name, a derived table, or a join of two sources.
struct Source {
  int32_t line = 0;
  Text name;
  Text schema;  // "" or "dbo" or "information_schema" or "sys"
  Text alias;
  std::vector<Text> columnNames;  // of a derived table: x (a, b)
  QueryPtr query;
  JoinKind join = JoinKind::Inner;
  std::unique_ptr<Source> left;
  std::unique_ptr<Source> right;
  ExpressionPtr on;
};
using SourcePtr = std::unique_ptr<Source>;

struct SelectCore {
  int32_t line = 0;
  bool distinct = false;
  ExpressionPtr top;
  std::vector<SelectItem> items;
  Text into;
  std::vector<SourcePtr> from;
  ExpressionPtr where;
  std::vector<ExpressionPtr> groupBy;
  ExpressionPtr having;
};

struct OrderItem {
  ExpressionPtr value;
  bool descending = false;
};

struct Query {
  std::vector<SelectCore> cores;
  std::vector<TextView> operators;  // u"UNION" ..., one between two cores, static texts
  std::vector<OrderItem> orderBy;
};

struct Assignment {
  Text column;
  int32_t line = 0;
  ExpressionPtr value;  // nullptr for DEFAULT
};

struct SelectStatement {
  QueryPtr query;
};

struct InsertStatement {
  Text table;
  std::vector<Text> columns;                     // empty when none were listed
  std::vector<std::vector<ExpressionPtr>> rows;  // a nullptr is DEFAULT
  bool defaultValues = false;
  QueryPtr query;
};

// What UPDATE and DELETE change.
struct ChangedRows {
  Text table;  // or the alias of a source
  std::vector<SourcePtr> from;
  ExpressionPtr where;
};

struct UpdateStatement : ChangedRows {
  std::vector<Assignment> assignments;
};

struct DeleteStatement : ChangedRows {};

struct ColumnDefinition {
  Text name;
  TypeInfo type{};
  std::optional<bool> nullable;  // as written
  bool identity = false;
  int64_t seed = 1;
  int64_t increment = 1;
  Text defaultText;  // the expression as written, "" when none
  int32_t line = 0;
};

enum class ConstraintKind : uint8_t { PrimaryKey, Unique, UniqueIndex, Check, ForeignKey };

struct ConstraintDefinition {
  ConstraintKind kind = ConstraintKind::Check;
  Text name;  // "" when the server names it
  std::vector<Text> columns;
  Text check;  // the condition as written
  Text parent;
  std::vector<Text> parentColumns;  // empty for the parent's primary key
  Text onDelete;                    // "" for NO ACTION
  Text onUpdate;
  int32_t line = 0;
};

struct CreateTableStatement {
  Text table;
  std::vector<ColumnDefinition> columns;
  std::vector<ConstraintDefinition> constraints;
};

struct CreateIndexStatement {
  Text index;
  Text table;
  std::vector<Text> columns;
  std::vector<bool> descending;
  bool unique = false;
};

struct ParameterDefinition {
  Text name;
  TypeInfo type{};
  bool output = false;
  ExpressionPtr defaultValue;
};

struct CreateProcedureStatement {
  Text name;
  std::vector<ParameterDefinition> parameters;
  Block body;
  Text definition;  // the batch from CREATE on
};

struct CreateViewStatement {
  Text name;
  std::vector<Text> columnNames;
  QueryPtr query;
  Text definition;
};

enum class ObjectKind : uint8_t { Table, View, Procedure, Index };

struct DropStatement {
  ObjectKind kind = ObjectKind::Table;
  bool ifExists = false;
  std::vector<Text> names;
  Text table;  // of an index
};

struct SetVariableStatement {
  int32_t variable = kNoVariable;
  ExpressionPtr value;
};

enum class SessionOption : uint8_t { Ignored, NoCount, XactAbort, QuotedIdentifier };
struct SetOptionStatement {
  std::vector<SessionOption> options;
  bool on = false;
};

struct IdentityInsertStatement {
  Text table;
  bool on = false;
};

struct IfStatement {
  ExpressionPtr condition;
  StatementPtr then;
  StatementPtr otherwise;
};

struct BlockStatement {
  Block body;
};
struct ReturnStatement {
  ExpressionPtr value;
};
struct PrintStatement {
  ExpressionPtr value;
};
struct RaiseErrorStatement {
  std::vector<ExpressionPtr> arguments;
};

enum class TransactionVerb : uint8_t { Begin, Commit, Rollback };
struct TransactionStatement {
  TransactionVerb verb = TransactionVerb::Begin;
  Text name;  // "" when none was given
};

struct ExecuteStatement {
  struct Argument {
    Text name;            // "" by position
    ExpressionPtr value;  // nullptr for DEFAULT
    bool output = false;
  };
  Text procedure;
  int32_t returnVariable = kNoVariable;
  std::vector<Argument> arguments;
};

struct Statement {
  int32_t line = 0;
  size_t index = 0;  // within the batch, nested ones counted too
  std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement,
               CreateTableStatement, CreateIndexStatement, CreateProcedureStatement,
               CreateViewStatement, DropStatement, SetVariableStatement, SetOptionStatement,
               IdentityInsertStatement, IfStatement, BlockStatement, ReturnStatement,
               PrintStatement, RaiseErrorStatement, TransactionStatement, ExecuteStatement>
      node;
};

struct VariableInfo {
  Text name;
  TypeInfo type;
};

struct SyntaxTree {
  Block statements;
  // Parameters first; a DECLARE counts for everything behind it, whatever block it stands in.
  std::vector<VariableInfo> variables;
  // Literals that went into the tree itself (the 10 of varchar(10)): their values belong to the
  // shape. A batch that defines something keeps its text, and is never reused.
  std::vector<int32_t> pinned;
  bool definesObjects = false;
};

}  // namespace vellum250::database::embedded
