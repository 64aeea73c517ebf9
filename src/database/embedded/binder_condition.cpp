// Conditions: comparisons, IN, LIKE, EXISTS and what joins them.
#include "database/embedded/binder.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

struct ComparisonWords {
  const char* sql;
  TextView words;
};

const ComparisonWords& WordsOf(Operation operation) {
  static constexpr ComparisonWords kWords[] = {
      {" = ", u"equal to"},     {" <> ", u"not equal to"},
      {" < ", u"less than"},    {" <= ", u"less than or equal to"},
      {" > ", u"greater than"}, {" >= ", u"greater than or equal to"}};
  return kWords[static_cast<size_t>(operation) - static_cast<size_t>(Operation::Equal)];
}

// Whether comparing needs no conversion though the types differ.
bool ComparesAsStored(TypeInfo left, TypeInfo right) {
  const TypeClass leftClass = ClassOf(left.type);
  const TypeClass rightClass = ClassOf(right.type);
  if (leftClass == TypeClass::Decimal && rightClass == TypeClass::Decimal) {
    return left.scale == right.scale;
  }
  if (leftClass == rightClass) {
    return leftClass != TypeClass::DateTime ||
           (left.type == SqlType::Date) == (right.type == SqlType::Date);
  }
  const auto isPlain = [](TypeClass c) { return c == TypeClass::Whole || c == TypeClass::Float; };
  return isPlain(leftClass) && isPlain(rightClass);
}

}  // namespace

std::string Binder::Comparison(Typed left, Operation operation, Typed right) {
  const ComparisonWords& words = WordsOf(operation);
  if (!left.isNull && !right.isNull && !ComparesAsStored(left.type, right.type)) {
    const TypeInfo type = ComparisonType(left.type, right.type, words.words);
    left = Convert(std::move(left), type);
    right = Convert(std::move(right), type);
  } else if (!left.isNull && !right.isNull) {
    ComparisonType(left.type, right.type, words.words);
  }
  // SQLite takes the collation of the left side, or else of the right.
  const bool columnRight = right.form == Typed::Form::Column && IsText(right.type);
  const std::string leftSql = columnRight ? Operand(left) : Collated(left);
  const bool bare = left.form == Typed::Form::Atom || left.form == Typed::Form::Column;
  return (bare || leftSql != left.sql ? leftSql : Operand(left)) + words.sql + Operand(right);
}

std::string Binder::Condition(const Expression& e, Scope& scope) {
  switch (e.kind) {
    case ExpressionKind::And:
    case ExpressionKind::Or: {
      std::string sql;
      for (const ExpressionPtr& part : e.arguments) {
        if (!sql.empty()) sql += e.kind == ExpressionKind::And ? " AND " : " OR ";
        const bool nested = part->kind == ExpressionKind::Or || part->kind == ExpressionKind::And;
        sql += nested ? "(" + Condition(*part, scope) + ")" : Condition(*part, scope);
      }
      return sql;
    }
    case ExpressionKind::Not:
      return "NOT (" + Condition(*e.arguments[0], scope) + ")";
    case ExpressionKind::Compare:
      try {
        return Comparison(Bind(*e.arguments[0], scope), e.operation, Bind(*e.arguments[1], scope));
      } catch (const DatabaseFailure& failure) {
        throw AtLine(failure, e.line);
      }
    case ExpressionKind::IsNull:
      return Operand(Bind(*e.arguments[0], scope)) + (e.negated ? " IS NOT NULL" : " IS NULL");
    case ExpressionKind::Between: {
      const std::string low = Comparison(Bind(*e.arguments[0], scope), Operation::GreaterOrEqual,
                                         Bind(*e.arguments[1], scope));
      const std::string high = Comparison(Bind(*e.arguments[0], scope), Operation::LessOrEqual,
                                          Bind(*e.arguments[2], scope));
      return (e.negated ? "NOT (" : "(") + low + " AND " + high + ")";
    }
    case ExpressionKind::In:
      return In(e, scope);
    case ExpressionKind::Like:
      return LikeCondition(e, scope);
    case ExpressionKind::Exists:
      return "EXISTS (" + BindQuery(*e.query, &scope, false).sql + ")";
    default:
      break;
  }
  throw ServerFailure(4145,
                      u"An expression of non-boolean type specified in a context where a condition "
                      u"is expected.",
                      e.line);
}

std::string Binder::In(const Expression& e, Scope& scope) {
  Typed value = Bind(*e.arguments[0], scope);
  const char* word = e.negated ? " NOT IN (" : " IN (";
  if (e.query) {
    BoundQuery query = BindColumnQuery(e, scope);
    if (!value.isNull && !ComparesAsStored(value.type, query.columns[0].type)) {
      Typed column;
      column.sql = "c1";
      column.type = query.columns[0].type;
      const TypeInfo type = ComparisonType(value.type, column.type, u"equal to");
      value = Convert(std::move(value), type);
      column = Convert(std::move(column), type);
      query.sql = "SELECT " + column.sql + " FROM (" + query.sql + ")";
    }
    return Collated(value) + word + query.sql + ")";
  }
  std::vector<Typed> items;
  TypeInfo type = value.type;
  bool asStored = true;
  for (size_t i = 1; i < e.arguments.size(); ++i) {
    items.push_back(Bind(*e.arguments[i], scope));
    if (items.back().isNull || value.isNull) continue;
    asStored = asStored && ComparesAsStored(value.type, items.back().type);
    type = ComparisonType(type, items.back().type, u"equal to");
  }
  if (!asStored) value = Convert(std::move(value), type);
  std::string sql = Collated(value) + word;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += asStored ? items[i].sql : Convert(std::move(items[i]), type).sql;
  }
  return sql + ")";
}

std::string Binder::LikeCondition(const Expression& e, Scope& scope) {
  std::string sql;
  bool national = false;
  for (const ExpressionPtr& part : e.arguments) {
    Typed argument = Bind(*part, scope);
    national = national || IsNational(argument.type);
    if (!sql.empty()) sql += ", ";
    sql += argument.isNull ? "NULL" : Convert(argument, AsText(argument.type)).sql;
  }
  return std::string(e.negated ? "NOT " : "") + (national ? "v_nlike(" : "v_like(") + sql + ")";
}

}  // namespace vellum250::database::embedded
