#include "automation/locale.h"
#include "database/embedded/parser_class.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostRows = 1000;  // of one VALUES
constexpr size_t kMostParts = 500;  // of one UNION, in SQLite

}  // namespace

QueryPtr Parser::ParseQuery() {
  Level level(*this);
  auto query = std::make_unique<Query>();
  query->cores.push_back(ParseSelectCore());
  for (;;) {
    static constexpr TextView kOperators[] = {u"UNION", u"EXCEPT", u"INTERSECT"};
    const auto* found =
        std::ranges::find_if(kOperators, [&](TextView word) { return Take(ToLower(word)); });
    if (found == std::end(kOperators)) break;
    const bool all = *found == u"UNION" && Take(u"all");
    query->operators.push_back(all ? u"UNION ALL" : *found);
    // INTERSECT binds tighter than the others, but not in SQLite.
    if (std::ranges::count(query->operators, u"INTERSECT") % query->operators.size() != 0)
      throw Refused(u"INTERSECT beside another operator");
    if (At(u"(")) throw Refused(u"a parenthesised part of a UNION");
    if (query->cores.size() == kMostParts) throw Refused(u"a UNION of more than 500 parts");
    query->cores.push_back(ParseSelectCore());
  }
  query->orderBy = ParseOrderBy();
  if (AtAny({u"for", u"option", u"compute"})) throw Refused(ToUpper(TextOf(Current())));
  return query;
}

// Behind its opening parenthesis.
QueryPtr Parser::ParseSubquery() {
  QueryPtr query = ParseQuery();
  RequireTopForOrder(*query);
  Expect(u")");
  return query;
}

// Rows that others read have no order; TOP needs one.
void Parser::RequireTopForOrder(const Query& query) const {
  if (query.orderBy.empty() || (query.cores.size() == 1 && query.cores[0].top)) return;
  throw ServerFailure(1033,
                      u"The ORDER BY clause is invalid in views, inline functions, derived tables, "
                      u"subqueries, and common table expressions, unless TOP, OFFSET or FOR XML is "
                      u"also specified.",
                      query.orderBy[0].value->line);
}

SelectCore Parser::ParseSelectCore() {
  SelectCore core;
  core.line = Current().line;
  Expect(u"select");
  core.distinct = Take(u"distinct");
  if (!core.distinct) Take(u"all");
  if (Take(u"top")) {
    if (Current().kind != TokenKind::Literal && !At(u"(")) throw SyntaxError();
    core.top = ParsePrimary();
    if (At(u"percent")) throw Refused(u"TOP PERCENT");
    if (At(u"with")) throw Refused(u"TOP WITH TIES");
  }
  do {
    core.items.push_back(ParseSelectItem());
  } while (Take(u","));
  if (Take(u"into")) {
    core.into = TakeTableName();
    definesObjects_ = true;
  }
  core.from = ParseFrom();
  if (Take(u"where")) core.where = ParseCondition();
  if (Take(u"group")) {
    Expect(u"by");
    if (At(u"all")) throw Refused(u"GROUP BY ALL");
    do {
      core.groupBy.push_back(ParseSum());
    } while (Take(u","));
    if (At(u"with")) throw Refused(u"GROUP BY WITH");
  }
  if (Take(u"having")) core.having = ParseCondition();
  return core;
}

SelectItem Parser::ParseSelectItem() {
  SelectItem item;
  if (Take(u"*")) return item;
  if (AtName() && Matches(Ahead(1), u".") && Matches(Ahead(2), u"*")) {
    item.qualifier = TakeName();
    at_ += 2;
    return item;
  }
  if (Current().kind == TokenKind::Variable && Matches(Ahead(1), u"=")) {
    item.variable = TakeDeclared();
    ++at_;
    item.value = ParseSum();
    return item;
  }
  if (AtName() && Matches(Ahead(1), u"=")) {  // alias = value
    item.alias = TakeName();
    ++at_;
    item.value = ParseSum();
    return item;
  }
  const auto atText = [&] {
    return Current().kind == TokenKind::Literal && IsText(scanned_.literals[Current().index].type);
  };
  const auto takeText = [&] {
    const int32_t index = Current().index;
    pinned_.push_back(index);
    item.alias = FromUtf8(std::get<std::string>(scanned_.literals[index].value));
    ++at_;
  };
  if (atText() && Matches(Ahead(1), u"=")) {
    takeText();
    ++at_;
    item.value = ParseSum();
    return item;
  }
  item.value = ParseSum();
  const bool explicitAlias = Take(u"as");
  if (atText()) {
    takeText();
  } else if (explicitAlias || AtName()) {
    item.alias = TakeName();
  }
  return item;
}

std::vector<SourcePtr> Parser::ParseFrom() {
  std::vector<SourcePtr> sources;
  if (!Take(u"from")) return sources;
  do {
    sources.push_back(ParseSource());
  } while (Take(u","));
  return sources;
}

std::optional<JoinKind> Parser::TakeJoin() {
  static constexpr std::pair<TextView, JoinKind> kKinds[] = {{u"inner", JoinKind::Inner},
                                                             {u"left", JoinKind::Left},
                                                             {u"right", JoinKind::Right},
                                                             {u"full", JoinKind::Full},
                                                             {u"cross", JoinKind::Cross}};
  if (Take(u"join")) return JoinKind::Inner;
  for (const auto& [word, kind] : kKinds) {
    if (!At(word)) continue;
    ++at_;
    if (At(u"apply")) throw Refused(u"APPLY");
    if (kind != JoinKind::Inner && kind != JoinKind::Cross) Take(u"outer");
    Expect(u"join");
    return kind;
  }
  return std::nullopt;
}

SourcePtr Parser::ParseSource() {
  Level level(*this);
  SourcePtr left = ParseSourcePrimary();
  int32_t joins = 0;
  while (const auto kind = TakeJoin()) {
    if (++joins > kMaxNesting) throw NestedTooDeeply(Current().line);
    left = ParseJoin(*kind, std::move(left));
  }
  return left;
}

SourcePtr Parser::ParseJoin(JoinKind kind, SourcePtr left) {
  Level level(*this);
  auto join = std::make_unique<Source>();
  join->line = Current().line;
  join->join = kind;
  join->left = std::move(left);
  join->right = ParseSourcePrimary();
  if (kind == JoinKind::Cross) return join;
  // a JOIN b JOIN c ON ... ON ...: the inner join comes first.
  while (const auto inner = TakeJoin()) join->right = ParseJoin(*inner, std::move(join->right));
  Expect(u"on");
  join->on = ParseCondition();
  return join;
}

SourcePtr Parser::ParseSourcePrimary() {
  auto source = std::make_unique<Source>();
  source->line = Current().line;
  if (Take(u"(")) {
    if (At(u"values")) throw Refused(u"VALUES in FROM");
    if (!At(u"select")) {
      SourcePtr inner = ParseSource();
      Expect(u")");
      return inner;
    }
    source->query = ParseSubquery();
    TakeAlias(*source);
    if (source->alias.empty()) throw SyntaxError();
    if (At(u"(")) source->columnNames = TakeNameList();
    return source;
  }
  if (Current().kind == TokenKind::Variable) throw Refused(u"a table variable");
  ObjectName name = TakeObjectName();
  source->schema = std::move(name.schema);
  source->name = std::move(name.name);
  if (At(u"(") && !Matches(Ahead(1), u"nolock")) throw Refused(u"a table-valued function");
  SkipHints();
  TakeAlias(*source);
  SkipHints();
  return source;
}

void Parser::TakeAlias(Source& source) {
  if (Take(u"as") || AtName()) source.alias = TakeName();
  if (AtAny({u"pivot", u"unpivot"})) throw Refused(ToUpper(TextOf(Current())));
}

// WITH (NOLOCK) and its kin say how to lock, which SQLite decides by itself.
void Parser::SkipHints() {
  const bool withWord = At(u"with") && Matches(Ahead(1), u"(");
  if (!withWord && !(At(u"(") && Matches(Ahead(1), u"nolock"))) return;
  if (withWord) ++at_;
  TakeNameList();
}

std::vector<OrderItem> Parser::ParseOrderBy() {
  std::vector<OrderItem> items;
  if (!Take(u"order")) return items;
  Expect(u"by");
  do {
    OrderItem item;
    item.value = ParseSum();
    item.descending = Take(u"desc");
    if (!item.descending) Take(u"asc");
    items.push_back(std::move(item));
  } while (Take(u","));
  if (At(u"offset")) throw Refused(u"OFFSET");
  return items;
}

void Parser::RefuseOutput() const {
  if (At(u"output")) throw Refused(u"OUTPUT");
}

InsertStatement Parser::ParseInsert() {
  InsertStatement insert;
  if (At(u"top")) throw Refused(u"INSERT TOP");
  Take(u"into");
  insert.table = TakeTableName();
  SkipHints();
  if (At(u"(")) insert.columns = TakeNameList();
  RefuseOutput();
  if (Take(u"default")) {
    Expect(u"values");
    insert.defaultValues = true;
    return insert;
  }
  if (AtAny({u"exec", u"execute"})) throw Refused(u"INSERT ... EXEC");
  if (!Take(u"values")) {
    if (!At(u"select")) throw SyntaxError();
    insert.query = ParseQuery();
    return insert;
  }
  do {
    if (insert.rows.size() == kMostRows) {
      throw ServerFailure(10738,
                          u"The number of row value expressions in the INSERT statement exceeds "
                          u"the maximum allowed number of 1000 row values.",
                          Current().line);
    }
    Expect(u"(");
    std::vector<ExpressionPtr>& row = insert.rows.emplace_back();
    do {
      row.push_back(ParseOptionalDefault());
    } while (Take(u","));
    Expect(u")");
  } while (Take(u","));
  return insert;
}

UpdateStatement Parser::ParseUpdate() {
  UpdateStatement update;
  if (At(u"top")) throw Refused(u"UPDATE TOP");
  update.table = TakeTableName();
  SkipHints();
  Expect(u"set");
  do {
    if (Current().kind == TokenKind::Variable) throw Refused(u"a variable set by UPDATE");
    Assignment assignment;
    assignment.line = Current().line;
    assignment.column = TakeName();
    if (Take(u".")) assignment.column = TakeName();
    ExpressionPtr before = Node(ExpressionKind::Column);
    before->name = assignment.column;
    assignment.value = ParseAssigned(std::move(before));
    update.assignments.push_back(std::move(assignment));
  } while (Take(u","));
  RefuseOutput();
  update.from = ParseFrom();
  if (Take(u"where")) update.where = ParseCondition();
  return update;
}

DeleteStatement Parser::ParseDelete() {
  DeleteStatement statement;
  if (At(u"top")) throw Refused(u"DELETE TOP");
  Take(u"from");
  statement.table = TakeTableName();
  SkipHints();
  RefuseOutput();
  statement.from = ParseFrom();
  if (Take(u"where")) statement.where = ParseCondition();
  return statement;
}

}  // namespace vellum250::database::embedded
