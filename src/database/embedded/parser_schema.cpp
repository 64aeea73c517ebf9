#include "automation/locale.h"
#include "database/embedded/parser_class.h"

namespace vellum250::database::embedded {

void Parser::ParseCreate(Statement& statement) {
  const size_t first = at_;
  Expect(u"create");
  const bool unique = Take(u"unique");
  if (!Take(u"clustered")) Take(u"nonclustered");
  if (At(u"index")) {
    statement.node = ParseCreateIndex();
    std::get<CreateIndexStatement>(statement.node).unique = unique;
  } else if (unique) {
    throw SyntaxError();
  } else if (At(u"table")) {
    statement.node = ParseCreateTable();
  } else if (At(u"view") || At(u"procedure") || At(u"proc")) {
    if (statement.index != 0) {
      const Text kind = At(u"view") ? u"VIEW" : u"PROCEDURE";
      throw ServerFailure(111,
                          u"'CREATE " + kind + u"' must be the first statement in a query batch.",
                          statement.line);
    }
    if (At(u"view")) {
      statement.node = ParseCreateView(first);
    } else {
      statement.node = ParseCreateProcedure(first);
    }
  } else {
    if (Current().kind == TokenKind::End) throw SyntaxError();
    throw Refused(u"CREATE " + Text(TextOf(Current())));
  }
}

CreateTableStatement Parser::ParseCreateTable() {
  CreateTableStatement table;
  ++at_;
  table.table = TakeTableName();
  Expect(u"(");
  do {
    if (At(u")")) break;  // a comma after the last column is allowed
    if (Take(u"constraint")) {
      table.constraints.push_back(ParseConstraint(TakeName(), {}));
    } else if (AtAny({u"primary", u"unique", u"check", u"foreign"})) {
      table.constraints.push_back(ParseConstraint({}, {}));
    } else {
      table.columns.push_back(ParseColumn(table));
    }
  } while (Take(u","));
  if (table.columns.empty()) throw SyntaxError();
  Expect(u")");
  SkipStorageOptions();
  return table;
}

// ON [PRIMARY], TEXTIMAGE_ON [PRIMARY], WITH (...): where and how a server keeps it.
void Parser::SkipStorageOptions() {
  for (;;) {
    if (At(u"with") && Matches(Ahead(1), u"(")) {
      ++at_;
      TakeParenthesisedText();
    } else if ((At(u"on") || At(u"textimage_on")) && Ahead(1).kind == TokenKind::QuotedName) {
      at_ += 2;
    } else {
      return;
    }
  }
}

ColumnDefinition Parser::ParseColumn(CreateTableStatement& table) {
  ColumnDefinition column;
  column.line = Current().line;
  column.name = TakeName();
  if (At(u"as")) throw Refused(u"a computed column");
  column.type = TakeType(1);
  while (ParseColumnOption(column, table)) {
  }
  return column;
}

// True when there was one.
bool Parser::ParseColumnOption(ColumnDefinition& column, CreateTableStatement& table) {
  if (Take(u"null")) {
    column.nullable = true;
  } else if (At(u"not") && Matches(Ahead(1), u"null")) {
    at_ += 2;
    column.nullable = false;
  } else if (At(u"not") && Matches(Ahead(1), u"for")) {
    throw Refused(u"NOT FOR REPLICATION");
  } else if (Take(u"identity")) {
    column.identity = true;
    if (Take(u"(")) {
      column.seed = TakeSignedNumber();
      Expect(u",");
      column.increment = TakeSignedNumber();
      Expect(u")");
    }
    if (column.increment < 1) throw Refused(u"an identity that does not count upwards");
  } else if (Take(u"collate")) {
    TakeName();
  } else if (Take(u"default")) {
    const size_t first = at_;
    column.defaultText = StoredDefault(first, *ParseUnary());
  } else if (AtAny({u"constraint", u"primary", u"unique", u"check", u"references", u"foreign"})) {
    Text name;
    if (Take(u"constraint")) name = TakeName();
    if (At(u"default")) return true;  // its name is of no use
    table.constraints.push_back(ParseConstraint(std::move(name), column.name));
  } else if (AtAny({u"rowguidcol", u"sparse", u"filestream", u"persisted"})) {
    throw Refused(u"a column with " + ToUpper(TextOf(Current())));
  } else {
    return false;
  }
  return true;
}

// As the server keeps it: ((5)), (getdate()).
Text Parser::StoredDefault(size_t first, const Expression& value) const {
  size_t end = at_;
  while (Matches(scanned_.tokens[first], u"(") && ClosingOf(first) + 1 == end) {
    ++first;
    --end;
  }
  const Expression& inner = value.kind == ExpressionKind::Unary ? *value.arguments[0] : value;
  const bool isNumber = inner.kind == ExpressionKind::Literal &&
                        !IsText(scanned_.literals[static_cast<size_t>(inner.index)].type);
  const Text text = u"(" + TextBetween(first, end) + u")";
  return isNumber ? u"(" + text + u")" : text;
}

// The parenthesis that closes the one at a token.
size_t Parser::ClosingOf(size_t token) const {
  int32_t depth = 0;
  for (;; ++token) {
    const Token& current = scanned_.tokens[token];
    if (current.kind == TokenKind::End || current.kind == TokenKind::Marker) throw SyntaxError();
    if (Matches(current, u"(")) ++depth;
    if (Matches(current, u")") && --depth == 0) return token;
  }
}

// `column` is the column that the constraint stands at, or empty.
ConstraintDefinition Parser::ParseConstraint(Text name, TextView column) {
  ConstraintDefinition constraint;
  constraint.line = Current().line;
  constraint.name = std::move(name);
  if (Take(u"check")) {
    constraint.kind = ConstraintKind::Check;
    constraint.check = TakeParenthesisedText();
    return constraint;
  }
  const bool foreign = Take(u"foreign");
  if (foreign) {
    Expect(u"key");
  } else if (Take(u"primary")) {
    Expect(u"key");
    constraint.kind = ConstraintKind::PrimaryKey;
  } else if (Take(u"unique")) {
    constraint.kind = ConstraintKind::Unique;
  } else if (!At(u"references")) {
    throw SyntaxError();
  }
  if (!Take(u"clustered")) Take(u"nonclustered");
  if (At(u"(")) {
    constraint.columns = TakeKeyColumns();
  } else if (!column.empty()) {
    constraint.columns.emplace_back(column);
  } else {
    throw SyntaxError();
  }
  if (foreign && !At(u"references")) throw SyntaxError();
  if (At(u"references")) ParseReferences(constraint);
  SkipStorageOptions();
  return constraint;
}

void Parser::ParseReferences(ConstraintDefinition& constraint) {
  ++at_;
  constraint.kind = ConstraintKind::ForeignKey;
  constraint.parent = TakeTableName();
  if (At(u"(")) constraint.parentColumns = TakeNameList();
  while (At(u"on") && (Matches(Ahead(1), u"delete") || Matches(Ahead(1), u"update"))) {
    Text& action = Matches(Ahead(1), u"delete") ? constraint.onDelete : constraint.onUpdate;
    at_ += 2;
    if (Take(u"cascade")) {
      action = u"CASCADE";
    } else if (Take(u"set")) {
      if (!At(u"null")) throw Refused(u"SET DEFAULT in a foreign key");
      ++at_;
      action = u"SET NULL";
    } else {
      Expect(u"no");
      Expect(u"action");
    }
  }
}

std::vector<Text> Parser::TakeKeyColumns(std::vector<bool>* descending) {
  std::vector<Text> columns;
  Expect(u"(");
  do {
    columns.push_back(TakeName());
    const bool down = Take(u"desc");
    if (!down) Take(u"asc");
    if (descending) descending->push_back(down);
  } while (Take(u","));
  Expect(u")");
  return columns;
}

// Skips to the matching parenthesis; gives what stands between, as written.
Text Parser::TakeParenthesisedText() {
  if (!At(u"(")) throw SyntaxError();
  const size_t first = at_ + 1;
  const size_t end = ClosingOf(at_);
  if (first == end) throw SyntaxError();
  at_ = end + 1;
  return TextBetween(first, end);
}

CreateIndexStatement Parser::ParseCreateIndex() {
  CreateIndexStatement index;
  ++at_;
  index.index = TakeName();
  Expect(u"on");
  index.table = TakeTableName();
  index.columns = TakeKeyColumns(&index.descending);
  if (At(u"include") || At(u"where")) throw Refused(u"an index with INCLUDE or WHERE");
  SkipStorageOptions();
  return index;
}

CreateViewStatement Parser::ParseCreateView(size_t firstToken) {
  CreateViewStatement view;
  ++at_;
  view.name = TakeTableName();
  if (At(u"(")) view.columnNames = TakeNameList();
  if (At(u"with")) throw Refused(u"a view WITH an option");
  Expect(u"as");
  view.query = ParseQuery();
  RequireTopForOrder(*view.query);
  if (At(u"with")) throw Refused(u"WITH CHECK OPTION");
  SkipSemicolons();
  if (Current().kind != TokenKind::End) throw SyntaxError();
  view.definition = TextBetween(firstToken, at_);
  return view;
}

CreateProcedureStatement Parser::ParseCreateProcedure(size_t firstToken) {
  CreateProcedureStatement procedure;
  ++at_;
  procedure.name = TakeTableName();
  const bool parenthesised = Take(u"(");
  while (Current().kind == TokenKind::Variable) {
    ParameterDefinition parameter;
    const int32_t line = Current().line;
    parameter.name = TakeVariable();
    Take(u"as");
    parameter.type = TakeType(1);
    Declare(parameter.name, parameter.type, line);
    if (Take(u"=")) parameter.defaultValue = ParseArgument();
    parameter.output = Take(u"output") || Take(u"out");
    procedure.parameters.push_back(std::move(parameter));
    if (!Take(u",")) break;
  }
  if (parenthesised) Expect(u")");
  if (At(u"with")) throw Refused(u"a procedure WITH an option");
  Expect(u"as");
  inProcedure_ = true;
  while (Current().kind != TokenKind::End) {
    if (Take(u";")) continue;
    procedure.body.push_back(ParseStatement());
  }
  if (procedure.body.empty()) throw SyntaxError();
  procedure.definition = TextBetween(firstToken, at_);
  return procedure;
}

DropStatement Parser::ParseDrop() {
  static constexpr std::pair<TextView, ObjectKind> kKinds[] = {
      {u"table", ObjectKind::Table},
      {u"view", ObjectKind::View},
      {u"procedure", ObjectKind::Procedure},
      {u"proc", ObjectKind::Procedure},
      {u"index", ObjectKind::Index}};
  const auto* kind =
      std::ranges::find_if(kKinds, [&](const auto& entry) { return At(entry.first); });
  if (Current().kind == TokenKind::End) throw SyntaxError();
  if (kind == std::end(kKinds)) throw Refused(u"DROP " + Text(TextOf(Current())));
  ++at_;
  DropStatement drop;
  drop.kind = kind->second;
  if (Take(u"if")) {
    Expect(u"exists");
    drop.ifExists = true;
  }
  do {
    if (drop.kind != ObjectKind::Index) {
      drop.names.push_back(TakeTableName());
      continue;
    }
    Text first = TakeName();
    if (Take(u".")) {  // table.index, the old way
      drop.table = std::move(first);
      drop.names.push_back(TakeName());
    } else {
      drop.names.push_back(std::move(first));
      Expect(u"on");
      drop.table = TakeTableName();
    }
  } while (drop.kind != ObjectKind::Index && Take(u","));
  return drop;
}

}  // namespace vellum250::database::embedded
