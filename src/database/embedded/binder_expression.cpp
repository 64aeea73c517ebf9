#include <algorithm>
#include <charconv>

#include "automation/locale.h"
#include "database/embedded/binder.h"
#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

std::string TextConstant(std::string_view text) {
  std::string sql;
  if (text.find('\0') != text.npos) {
    static constexpr char kHex[] = "0123456789abcdef";
    sql = "CAST(x'";
    for (const char c : text) {
      sql += kHex[static_cast<unsigned char>(c) >> 4];
      sql += kHex[static_cast<unsigned char>(c) & 15];
    }
    return sql + "' AS TEXT)";
  }
  sql = "'";
  for (const char c : text) {
    if (c == '\'') sql += c;
    sql += c;
  }
  return sql + "'";
}

std::string Constant(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return TextConstant(*text);
  if (const auto* integer = std::get_if<int64_t>(&value)) return std::to_string(*integer);
  if (const auto* number = std::get_if<double>(&value)) {
    char digits[40];
    const auto end = std::to_chars(digits, digits + 38, *number, std::chars_format::scientific).ptr;
    return std::string(digits, end);
  }
  return "NULL";
}

Typed UntypedNull() {
  Typed value = Called("NULL", TypeInfo());
  value.isNull = true;
  return value;
}

std::string Call(const char* function, std::initializer_list<std::string_view> arguments) {
  std::string sql = function;
  char separator = '(';
  for (const std::string_view argument : arguments) {
    sql += separator;
    sql += argument;
    separator = ',';
  }
  return sql + ")";
}

}  // namespace

std::string Binder::Operand(const Typed& value) {
  const bool alone = value.form == Typed::Form::Atom || value.form == Typed::Form::Column;
  return alone ? value.sql : "(" + value.sql + ")";
}

std::string Binder::Collated(const Typed& value) {
  if (!IsText(value.type) || value.form == Typed::Form::Column || value.isNull) return value.sql;
  return Operand(value) + " COLLATE TSQL";
}

void Binder::Pin(int32_t literal) {
  if (viewLiterals_ == nullptr) input_.pinned.push_back(literal);
}

TypedValue Binder::LiteralOf(const Expression& expression) {
  Pin(expression.index);
  return (viewLiterals_ ? *viewLiterals_ : input_.literals)[expression.index];
}

Typed Binder::SlotValue(Slot slot, TypeInfo type) {
  Typed value;
  value.type = type;
  value.form = Typed::Form::Atom;
  if (constants_) {
    if (slot.kind != Slot::Kind::Constant) throw Unsupported(u"such an expression in CHECK");
    value.sql = Constant(slot.constant);
    return value;
  }
  value.slot = static_cast<int32_t>(slots_.size());
  value.sql = "?" + std::to_string(slots_.size() + 1);
  slots_.push_back(std::move(slot));
  return value;
}

Typed Binder::BindLiteral(const TypedValue& literal, int32_t index) {
  TypeInfo type = literal.type;
  // The text of another run of this shape may be longer, its number have more digits.
  if (exactLengths_) {
    Pin(index);
  } else if (IsText(type)) {
    type.length = LengthClass(type);
  } else {
    if (type.type == SqlType::Int) type.precision = 0;
  }
  if (input_.literals.size() > kMostKeptLiterals) {
    return Called(Constant(literal.value), type);
  }
  Slot slot;
  slot.index = index;
  if (viewLiterals_ != nullptr) {
    slot.kind = Slot::Kind::Constant;
    slot.constant = literal.value;
  }
  return SlotValue(std::move(slot), type);
}

Typed Binder::BindVariable(const Expression& expression) {
  Slot slot;
  slot.kind = Slot::Kind::Variable;
  slot.index = expression.index;
  const TypeInfo type = input_.variables[static_cast<size_t>(slot.index)].type;
  return SlotValue(std::move(slot), type);
}

Typed Binder::BindSystemVariable(const Expression& expression) {
  struct Entry {
    TextView name;
    SystemValue value;
    TypeInfo type;
  };
  static constexpr Entry kEntries[] = {{u"@@rowcount", SystemValue::RowCount, kInt},
                                       {u"@@identity", SystemValue::Identity, DecimalType(38, 0)},
                                       {u"@@trancount", SystemValue::TransactionCount, kInt},
                                       {u"@@error", SystemValue::Error, kInt}};
  for (const Entry& entry : kEntries) {
    if (!EqualsIgnoreAsciiCase(entry.name, expression.name)) continue;
    Slot slot;
    slot.kind = Slot::Kind::System;
    slot.index = static_cast<int32_t>(entry.value);
    return SlotValue(std::move(slot), entry.type);
  }
  throw Unsupported(expression.name, expression.line);
}

Typed BoundColumn::Value() const {
  Typed value = Called(sql, type);
  value.form = Typed::Form::Column;
  value.column = column;
  return value;
}

const BoundColumn* Binder::FindColumn(const Expression& expression, Scope& scope,
                                      bool& qualifierKnown) {
  const BoundColumn* found = nullptr;
  for (size_t i = scope.firstVisible; i < scope.sources.size(); ++i) {
    const BoundSource& source = scope.sources[i];
    if (!expression.qualifier.empty()) {
      if (!EqualsIgnoreAsciiCase(source.alias, expression.qualifier)) continue;
      qualifierKnown = true;
    }
    for (const BoundColumn& column : source.columns) {
      if (!EqualsIgnoreAsciiCase(column.name, expression.name)) continue;
      if (found) throw AtLine(AmbiguousColumn(expression.name), expression.line);
      found = &column;
    }
  }
  return found;
}

Typed Binder::BindColumn(const Expression& expression, Scope& scope) {
  bool qualifierKnown = false;
  for (Scope* at = &scope; at != nullptr; at = at->outer) {
    const BoundColumn* column = FindColumn(expression, *at, qualifierKnown);
    if (column == nullptr) continue;
    if (at->grouping && at->insideAggregate == 0 &&
        std::ranges::count(at->grouping->columns, column) == 0) {
      const auto source = std::ranges::find_if(at->sources, [&](const BoundSource& each) {
        return std::ranges::any_of(each.columns,
                                   [&](const BoundColumn& own) { return &own == column; });
      });
      throw AtLine(NotGrouped(source->alias + u"." + column->name, at->grouping->failure),
                   expression.line);
    }
    ++at->columnsFound;
    ++columnsFound_;
    return column->Value();
  }
  if (!expression.qualifier.empty() && !qualifierKnown) {
    throw ServerFailure(4104,
                        u"The multi-part identifier \"" + expression.qualifier + u"." +
                            expression.name + u"\" could not be bound.",
                        expression.line);
  }
  throw AtLine(InvalidColumn(expression.name), expression.line);
}

Typed Binder::Convert(Typed value, TypeInfo to) {
  if (value.isNull) {
    value.type = to;
    return value;
  }
  if (IsSameValue(value.type, to)) {
    value.type = to;
    return value;
  }
  CheckImplicit(value.type, to);
  if (value.slot >= 0 && slots_[value.slot].conversion == Slot::Conversion::None) {
    Slot& slot = slots_[value.slot];
    slot.conversion = Slot::Conversion::Convert;
    slot.from = value.type;
    slot.to = to;
    value.type = to;
    return value;
  }
  return Called(Call("v_convert", {value.sql, CodeOf(value.type), CodeOf(to)}), to);
}

Typed Binder::ConvertWhenUsed(Typed value, TypeInfo to) {
  if (IsText(value.type) && !IsText(to)) value.slot = -1;
  return Convert(std::move(value), to);
}

Typed Binder::Assign(Typed value, const ColumnInfo& column, TextView table) {
  const TypeInfo to = column.type;
  if (value.isNull || IsSameValue(value.type, to)) return value;
  CheckImplicit(value.type, to);
  if (value.slot >= 0 && slots_[value.slot].conversion == Slot::Conversion::None) {
    Slot& slot = slots_[value.slot];
    slot.conversion = Slot::Conversion::Assign;
    slot.from = value.type;
    slot.to = to;
    slot.column = column.name;
    slot.table = Text(table);
    return value;
  }
  value.sql = Call("v_assign", {value.sql, CodeOf(value.type), CodeOf(to),
                                TextConstant(ToUtf8(column.name)), TextConstant(ToUtf8(table))});
  value.form = Typed::Form::Atom;
  value.slot = -1;
  return value;
}

TypeInfo Binder::Unify(const std::vector<Typed*>& values) {
  std::optional<TypeInfo> common;
  for (const Typed* value : values) {
    if (!value->isNull) common = common ? CommonType(*common, value->type) : value->type;
  }
  // Nothing but NULL is an int.
  const TypeInfo type = common.value_or(kInt);
  for (Typed* value : values) *value = ConvertWhenUsed(std::move(*value), type);
  return type;
}

Typed Binder::Bind(const Expression& e, Scope& scope) {
  if (scope.grouping && scope.insideAggregate == 0 && e.kind != ExpressionKind::Column &&
      e.kind != ExpressionKind::Literal) {
    for (const ExpressionPtr& group : *scope.grouping->expressions) {
      if (group->kind == ExpressionKind::Column || !Same(e, *group)) continue;
      ++scope.insideAggregate;
      Typed value = Bind(e, scope);
      --scope.insideAggregate;
      return value;
    }
  }
  switch (e.kind) {
    case ExpressionKind::Literal:
      return BindLiteral((viewLiterals_ ? *viewLiterals_ : input_.literals)[e.index], e.index);
    case ExpressionKind::Null:
      return UntypedNull();
    case ExpressionKind::Marker: {
      if (static_cast<size_t>(e.index) >= input_.markers.size()) {
        throw ServerFailure(8144, u"There are fewer values than ? markers.", e.line);
      }
      const std::optional<TypeInfo>& type = input_.markers[static_cast<size_t>(e.index)];
      if (!type) return UntypedNull();
      Slot slot;
      slot.kind = Slot::Kind::Marker;
      slot.index = e.index;
      return SlotValue(std::move(slot), *type);
    }
    case ExpressionKind::Variable:
      return BindVariable(e);
    case ExpressionKind::SystemVariable:
      return BindSystemVariable(e);
    case ExpressionKind::Column:
      return BindColumn(e, scope);
    case ExpressionKind::Unary:
      return BindUnary(e, scope);
    case ExpressionKind::Binary:
      return BindBinary(e, scope);
    case ExpressionKind::Call:
      return BindCall(e, scope);
    case ExpressionKind::Cast:
      return BindCast(e, scope);
    case ExpressionKind::Case:
      return BindCase(e, scope);
    case ExpressionKind::Subquery:
      return BindSubquery(e, scope);
    default:
      break;
  }
  throw ServerFailure(102, u"Incorrect syntax: a condition stands where a value is expected.",
                      e.line);
}

Typed Binder::BindUnary(const Expression& e, Scope& scope) {
  Typed operand = Bind(*e.arguments[0], scope);
  if (operand.isNull || e.operation == Operation::Plus) return operand;
  Typed value;
  if (e.operation == Operation::BitNot) {
    if (ClassOf(operand.type.type) != TypeClass::Whole)
      throw Unsupported(u"~ of this type", e.line);
    value.type = operand.type;
    value.sql =
        operand.type.type == SqlType::Bit ? "1 - " + Operand(operand) : "~" + Operand(operand);
    return value;
  }
  const TypeInfo type = NegatedType(operand.type);
  operand = Convert(std::move(operand), type);
  return Called(Call("v_neg", {operand.sql, CodeOf(type)}), type);
}

Typed Binder::BindBinary(const Expression& e, Scope& scope) {
  struct Entry {
    Operator op;
    const char* function;
  };
  static constexpr Entry kEntries[] = {{Operator::Add, "v_add"},
                                       {Operator::Subtract, "v_sub"},
                                       {Operator::Multiply, "v_mul"},
                                       {Operator::Divide, "v_div"},
                                       {Operator::Modulo, "v_mod"}};
  Typed left = Bind(*e.arguments[0], scope);
  Typed right = Bind(*e.arguments[1], scope);
  if (left.isNull) left.type = right.type;
  if (right.isNull) right.type = left.type;
  Typed value;
  if (e.operation >= Operation::BitAnd) {
    if (ClassOf(left.type.type) != TypeClass::Whole ||
        ClassOf(right.type.type) != TypeClass::Whole) {
      throw Unsupported(u"a bit operation on this type", e.line);
    }
    value.type = CommonType(left.type, right.type);
    const std::string both = Operand(left) + " & " + Operand(right);
    const std::string either = Operand(left) + " | " + Operand(right);
    value.sql = e.operation == Operation::BitAnd  ? both
                : e.operation == Operation::BitOr ? either
                                                  : "(" + either + ") & ~(" + both + ")";
    return value;
  }
  const Entry& entry = kEntries[static_cast<size_t>(e.operation)];
  // A whole literal counts its own digits beside a decimal.
  const auto countDigits = [&](Typed& side, const Expression& tree, const Typed& other) {
    if (tree.kind == ExpressionKind::Literal && side.type.type == SqlType::Int &&
        other.type.type == SqlType::Decimal) {
      side.type.precision = LiteralOf(tree).type.precision;
    }
  };
  countDigits(left, *e.arguments[0], right);
  countDigits(right, *e.arguments[1], left);
  try {
    value.type = ResultType(entry.op, left.type, right.type);
  } catch (const DatabaseFailure& failure) {
    throw AtLine(failure, e.line);
  }
  if (IsText(value.type)) {
    // A long chain is cut once, at its end, unless what it is joined to may be longer.
    const bool isMax = value.type.length == -1;
    const auto joined = [&](const Typed& side) {
      if (!side.uncut.empty() && !isMax) return side.uncut;
      return side.form == Typed::Form::Joined ? side.sql : Operand(side);
    };
    value.sql = joined(left) + " || " + joined(right);
    value.form = Typed::Form::Joined;
    if (isMax || left.type.length + right.type.length <= value.type.length) return value;
    return Cut(std::move(value));
  }
  const std::string result = CodeOf(value.type);
  const bool same = IsSameValue(left.type, value.type) && IsSameValue(right.type, value.type);
  return Called(same ? Call(entry.function, {left.sql, right.sql, result})
                     : Call(entry.function,
                            {left.sql, right.sql, result, CodeOf(left.type), CodeOf(right.type)}),
                value.type);
}

Typed Binder::Cut(Typed text) {
  Typed cut = Called(Call("v_cut", {text.sql, std::to_string(text.type.length)}), text.type);
  if (text.form == Typed::Form::Joined) cut.uncut = std::move(text.sql);
  return cut;
}

Typed Binder::BindCast(const Expression& e, Scope& scope) {
  Typed value = Bind(*e.arguments[0], scope);
  if (value.isNull) {
    value.sql = "NULL";
    value.isNull = false;
    value.type = e.type;
    return value;
  }
  CheckExplicit(value.type, e.type);
  value.column = nullptr;
  if (e.arguments.size() == 1 && IsSameValue(value.type, e.type)) {
    value.type = e.type;
    return value;
  }
  Typed style;
  if (e.arguments.size() == 2) style = Convert(Bind(*e.arguments[1], scope), kInt);
  const std::string from = CodeOf(value.type);
  const std::string to = CodeOf(e.type);
  return Called(e.arguments.size() == 2 ? Call("v_convert", {value.sql, from, to, style.sql})
                                        : Call("v_convert", {value.sql, from, to}),
                e.type);
}

Typed Binder::BindCase(const Expression& e, Scope& scope) {
  const size_t first = e.hasOperand ? 1 : 0;
  const size_t pairs = (e.arguments.size() - first) / 2;
  std::vector<std::string> conditions;
  std::vector<Typed> results;
  for (size_t i = 0; i < pairs; ++i) {
    const Expression& when = *e.arguments[first + 2 * i];
    conditions.push_back(
        e.hasOperand ? Comparison(Bind(*e.arguments[0], scope), Operation::Equal, Bind(when, scope))
                     : Condition(when, scope));
    results.push_back(Bind(*e.arguments[first + 2 * i + 1], scope));
  }
  if (e.hasElse) results.push_back(Bind(*e.arguments.back(), scope));
  if (std::ranges::all_of(results, &Typed::isNull)) throw AtLine(CaseOfNulls(), e.line);
  std::vector<Typed*> all;
  all.reserve(results.size());
  for (Typed& result : results) all.push_back(&result);
  const TypeInfo type = Unify(all);
  std::string sql = "CASE";
  for (size_t i = 0; i < pairs; ++i) {
    sql += " WHEN " + conditions[i] + " THEN " + results[i].sql;
  }
  if (e.hasElse) sql += " ELSE " + results.back().sql;
  return Called(sql + " END", type);
}

BoundQuery Binder::BindColumnQuery(const Expression& e, Scope& scope) {
  BoundQuery query = BindQuery(*e.query, &scope, true);
  if (query.columns.size() != 1) {
    throw ServerFailure(116,
                        u"Only one expression can be specified in the select list when the "
                        u"subquery is not introduced with EXISTS.",
                        e.line);
  }
  return query;
}

Typed Binder::BindSubquery(const Expression& e, Scope& scope) {
  const BoundQuery query = BindColumnQuery(e, scope);
  return Called(
      query.singleRow ? "(" + query.sql + ")" : "(SELECT v_single(c1) FROM (" + query.sql + "))",
      query.columns[0].type);
}

bool Binder::Same(const Expression& a, const Expression& b) {
  if (a.kind != b.kind || a.operation != b.operation || a.negated != b.negated ||
      a.distinct != b.distinct || a.hasOperand != b.hasOperand || a.hasElse != b.hasElse ||
      a.type != b.type || a.arguments.size() != b.arguments.size() || a.query || b.query ||
      !EqualsIgnoreAsciiCase(a.name, b.name)) {
    return false;
  }
  // "m.points" and "points" may well be the same column, and are when only one is qualified.
  if (!a.qualifier.empty() && !b.qualifier.empty() &&
      !EqualsIgnoreAsciiCase(a.qualifier, b.qualifier)) {
    return false;
  }
  if (a.kind == ExpressionKind::Literal) return LiteralOf(a).value == LiteralOf(b).value;
  if (a.kind == ExpressionKind::Marker || a.kind == ExpressionKind::Variable) {
    return a.index == b.index;
  }
  for (size_t i = 0; i < a.arguments.size(); ++i) {
    if (!Same(*a.arguments[i], *b.arguments[i])) return false;
  }
  return true;
}

}  // namespace vellum250::database::embedded
