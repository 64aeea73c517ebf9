#include "database/embedded/parser.h"

#include "automation/locale.h"
#include "database/embedded/messages.h"
#include "database/embedded/parser_class.h"

namespace vellum250::database::embedded {

SyntaxTree ParseBatch(TextView batch, const Scanned& scanned) {
  return Parser(batch, scanned).ParseBatch();
}

ExpressionPtr ParseExpression(TextView text, const Scanned& scanned) {
  return Parser(text, scanned).ParseWholeExpression();
}

void RefuseQuotedTexts(TextView batch, const Scanned& scanned) {
  for (const Token& token : scanned.tokens) {
    if (token.kind == TokenKind::QuotedName && batch[token.offset] == u'"') {
      throw Unsupported(u"a text in double quotes", token.line);
    }
  }
}

const Token& Parser::Ahead(size_t count) const {
  return scanned_.tokens[std::min(at_ + count, scanned_.tokens.size() - 1)];
}

bool Parser::IsWord(const Token& token, TextView lowerWord) const {
  return token.kind == TokenKind::Name && EqualsIgnoreAsciiCase(TextOf(token), lowerWord);
}

bool Parser::Matches(const Token& token, TextView wordOrSymbol) const {
  if (token.kind == TokenKind::Symbol) return TextOf(token) == wordOrSymbol;
  return IsWord(token, wordOrSymbol);
}

bool Parser::AtAny(std::initializer_list<TextView> words) const {
  return std::ranges::any_of(words, [&](TextView word) { return At(word); });
}

bool Parser::Take(TextView wordOrSymbol) {
  if (!At(wordOrSymbol)) return false;
  ++at_;
  return true;
}

void Parser::Expect(TextView wordOrSymbol) {
  if (!Take(wordOrSymbol)) throw SyntaxError();
}

DatabaseFailure Parser::SyntaxError() const {
  // ODBC's escapes, wherever they may stand: {fn now()}, {call usp_a}, {oj ...}.
  if (At(u"{") && Ahead(1).kind == TokenKind::Name) {
    return Refused(u"{" + Text(TextOf(Ahead(1))) + u" ...}");
  }
  // At the end the server names what stands before it.
  const bool atEnd = Current().kind == TokenKind::End && at_ > 0;
  const Token& token = atEnd ? scanned_.tokens[at_ - 1] : Current();
  const TextView text = TextOf(token).substr(0, 128);
  if (!atEnd && token.kind == TokenKind::Name && IsReserved(text)) {
    return AtLine(SyntaxNearKeyword(text), token.line);
  }
  const bool literal = token.kind == TokenKind::Literal && text.starts_with(u'\'');
  return AtLine(SyntaxNear(literal ? text.substr(1, text.size() - 2) : text), token.line);
}

bool Parser::AtName() const {
  const Token& token = Current();
  return token.kind == TokenKind::QuotedName ||
         (token.kind == TokenKind::Name && !IsReserved(TextOf(token)));
}

Text Parser::TakeName() {
  if (!AtName()) throw SyntaxError();
  const Token& token = scanned_.tokens[at_++];
  Text name = token.kind == TokenKind::QuotedName ? Unquoted(TextOf(token)) : Text(TextOf(token));
  if (name.empty()) {
    throw ServerFailure(1038, u"An object or column name is missing or empty.", token.line);
  }
  if (name.find(u'\0') != Text::npos) throw SyntaxError();
  if (name.size() > 128) {
    throw ServerFailure(103,
                        u"The identifier that starts with '" + name.substr(0, 128) +
                            u"' is too long. Maximum length is 128.",
                        token.line);
  }
  return name;
}

Text Parser::TakeVariable() {
  if (Current().kind != TokenKind::Variable) throw SyntaxError();
  return Text(TextOf(scanned_.tokens[at_++]));
}

int32_t Parser::TakeDeclared() {
  const int32_t line = Current().line;
  const Text name = TakeVariable();
  const auto found = std::ranges::find_if(variables_, [&](const VariableInfo& variable) {
    return EqualsIgnoreAsciiCase(variable.name, name);
  });
  if (found == variables_.end() && !undeclared_) {
    undeclared_ = ServerFailure(137, u"Must declare the scalar variable \"" + name + u"\".", line);
  }
  return static_cast<int32_t>(found - variables_.begin());
}

void Parser::Declare(Text name, TypeInfo type, int32_t line) {
  for (const VariableInfo& variable : variables_) {
    if (EqualsIgnoreAsciiCase(variable.name, name)) {
      throw ServerFailure(134,
                          u"The variable name '" + name +
                              u"' has already been declared. Variable names must be unique within "
                              u"a query batch or stored procedure.",
                          line);
    }
  }
  variables_.push_back({std::move(name), type});
}

Parser::ObjectName Parser::TakeObjectName() {
  ObjectName result;
  result.name = TakeName();
  for (int parts = 1; At(u"."); ++parts) {
    if (parts == 3) throw Refused(u"a name of four parts");
    const bool isDatabase = parts == 2 || Matches(Ahead(1), u".");
    if (isDatabase && !EqualsIgnoreAsciiCase(parts == 2 ? result.schema : result.name, u"tempdb"))
      throw Refused(u"another database");
    result.schema = std::exchange(result.name, {});
    ++at_;
    if (At(u".")) continue;  // tempdb..#t
    result.name = TakeName();
  }
  if (result.name.empty()) throw SyntaxError();
  return result;
}

Text Parser::TakeTableName() {
  ObjectName name = TakeObjectName();
  if (!name.schema.empty() && !EqualsIgnoreAsciiCase(name.schema, u"dbo")) {
    throw Refused(u"schema " + name.schema);
  }
  return std::move(name.name);
}

std::vector<Text> Parser::TakeNameList() {
  std::vector<Text> names;
  Expect(u"(");
  do {
    names.push_back(TakeName());
  } while (Take(u","));
  Expect(u")");
  return names;
}

int64_t Parser::TakeSignedNumber() {
  const bool negative = Take(u"-");
  const int64_t number = TakeWholeNumber();
  return negative ? -number : number;
}

int64_t Parser::TakeWholeNumber() {
  const Token& token = Current();
  if (token.kind != TokenKind::Literal ||
      scanned_.literals[token.index].type.type != SqlType::Int) {
    throw SyntaxError();
  }
  ++at_;
  pinned_.push_back(token.index);
  return std::get<int64_t>(scanned_.literals[token.index].value);
}

TypeInfo Parser::TakeType(int32_t unsized) {
  const int32_t line = Current().line;
  const bool quoted = Current().kind == TokenKind::QuotedName;
  Text name = Take(u"national") ? u"national " : u"";
  name += TakeObjectName().name;
  for (TextView word : {u"precision", u"varying"}) {
    if (!quoted && Take(word)) name.append(u" ").append(word);
  }
  int32_t numbers[2] = {0, 0};
  if (Take(u"(")) {
    if (Take(u"max")) {
      numbers[0] = -1;
    } else {
      numbers[0] = static_cast<int32_t>(TakeWholeNumber());
      if (numbers[0] == 0) throw AtLine(InvalidLength(0), line);
      if (Take(u",")) numbers[1] = static_cast<int32_t>(TakeWholeNumber());
    }
    Expect(u")");
  }
  try {
    return ParseType(name, numbers[0], numbers[1], unsized);
  } catch (const DatabaseFailure& failure) {
    throw AtLine(failure, line);
  }
}

Text Parser::TextBetween(size_t firstToken, size_t endToken) const {
  const Token& last = scanned_.tokens[endToken - 1];
  const size_t begin = scanned_.tokens[firstToken].offset;
  return Text(batch_.substr(begin, last.offset + last.length - begin));
}

ExpressionPtr Parser::ParseWholeExpression() {
  ExpressionPtr expression = ParseCondition();
  if (Current().kind != TokenKind::End) throw SyntaxError();
  if (undeclared_) throw *undeclared_;
  return expression;
}

SyntaxTree Parser::ParseBatch() {
  SyntaxTree tree;
  SkipSemicolons();
  // A procedure may be called by its bare name where the batch begins.
  if (AtName()) {
    RefuseByName();
    if (Matches(Ahead(1), u":")) throw Refused(u"a label");
    auto statement = std::make_unique<Statement>();
    statement->line = Current().line;
    statement->index = statementCount_++;
    statement->node = ParseExecute();
    tree.statements.push_back(std::move(statement));
  }
  SkipSemicolons();
  while (Current().kind != TokenKind::End) {
    tree.statements.push_back(ParseStatement());
    SkipSemicolons();
  }
  if (undeclared_) throw *undeclared_;
  tree.variables = std::move(variables_);
  tree.pinned = std::move(pinned_);
  tree.definesObjects = definesObjects_;
  return tree;
}

void Parser::SkipSemicolons() {
  while (Take(u";")) {
  }
}

StatementPtr Parser::ParseStatement() {
  Level level(*this);
  auto statement = std::make_unique<Statement>();
  statement->line = Current().line;
  statement->index = statementCount_++;
  ParseStatementInto(*statement);
  return statement;
}

void Parser::RefuseByName() const {
  static constexpr TextView kRefused[] = {
      u"while",    u"goto",  u"waitfor",    u"use",     u"grant",  u"revoke", u"deny",
      u"truncate", u"merge", u"open",       u"fetch",   u"close",  u"alter",  u"with",
      u"throw",    u"break", u"deallocate", u"save",    u"backup", u"dbcc",   u"restore",
      u"bulk",     u"kill",  u"checkpoint", u"continue"};
  for (TextView word : kRefused) {
    if (At(word)) throw Refused(ToUpper(word));
  }
}

void Parser::ParseStatementInto(Statement& statement) {
  if (At(u"select")) {
    statement.node = SelectStatement{ParseQuery()};
  } else if (Take(u"insert")) {
    statement.node = ParseInsert();
  } else if (Take(u"update")) {
    statement.node = ParseUpdate();
  } else if (Take(u"delete")) {
    statement.node = ParseDelete();
  } else if (Take(u"set")) {
    ParseSet(statement);
  } else if (Take(u"declare")) {
    statement.node = ParseDeclare();
  } else if (Take(u"if")) {
    statement.node = ParseIf();
  } else if (Take(u"begin")) {
    ParseBegin(statement);
  } else if (Take(u"commit")) {
    statement.node = ParseTransaction(TransactionVerb::Commit);
  } else if (Take(u"rollback")) {
    statement.node = ParseTransaction(TransactionVerb::Rollback);
  } else if (Take(u"exec") || Take(u"execute")) {
    statement.node = ParseExecute();
  } else if (Take(u"return")) {
    if (!AtStatementEnd() && !inProcedure_) {
      throw ServerFailure(178,
                          u"A RETURN statement with a return value cannot be used in this context.",
                          statement.line);
    }
    statement.node = ReturnStatement{AtStatementEnd() ? nullptr : ParseSum()};
  } else if (Take(u"print")) {
    statement.node = PrintStatement{ParseSum()};
  } else if (Take(u"raiserror")) {
    statement.node = ParseRaiseError();
  } else if (At(u"create")) {
    definesObjects_ = true;
    ParseCreate(statement);
  } else if (Take(u"drop")) {
    definesObjects_ = true;
    statement.node = ParseDrop();
  } else {
    RefuseByName();
    throw SyntaxError();
  }
}

bool Parser::AtStatementEnd() const {
  const Token& token = Current();
  if (token.kind == TokenKind::End || At(u";")) return true;
  return AtAny({u"select", u"insert",   u"update", u"delete",  u"set",   u"declare",   u"if",
                u"begin",  u"commit",   u"exec",   u"execute", u"print", u"raiserror", u"create",
                u"drop",   u"rollback", u"return", u"else",    u"end",   u"while",     u"alter"});
}

void Parser::ParseSet(Statement& statement) {
  if (Current().kind == TokenKind::Variable) {
    SetVariableStatement set;
    ExpressionPtr before = Node(ExpressionKind::Variable);
    before->index = set.variable = TakeDeclared();
    set.value = ParseAssigned(std::move(before));
    if (!set.value) throw SyntaxError();
    statement.node = std::move(set);
    return;
  }
  if (Take(u"identity_insert")) {
    IdentityInsertStatement identity;
    identity.table = TakeTableName();
    identity.on = At(u"on");
    if (!Take(u"on")) Expect(u"off");
    statement.node = std::move(identity);
    return;
  }
  if (Take(u"transaction")) {  // SQLite isolates as it does
    Expect(u"isolation");
    Expect(u"level");
    at_ += At(u"read") || At(u"repeatable") ? 2 : 1;
    statement.node = SetOptionStatement{};
    return;
  }
  // The ignored ones say how the server plans, or what this database does anyway: those that
  // matter are refused when they are switched off.
  struct Option {
    TextView name;
    SessionOption option;
    bool matters;
  };
  static constexpr Option kOptions[] = {
      {u"nocount", SessionOption::NoCount, false},
      {u"xact_abort", SessionOption::XactAbort, false},
      {u"quoted_identifier", SessionOption::QuotedIdentifier, false},
      {u"ansi_nulls", SessionOption::Ignored, true},
      {u"ansi_warnings", SessionOption::Ignored, true},
      {u"concat_null_yields_null", SessionOption::Ignored, true},
      {u"ansi_padding", SessionOption::Ignored, false},
      {u"ansi_null_dflt_on", SessionOption::Ignored, false},
      {u"arithabort", SessionOption::Ignored, false},
      {u"numeric_roundabort", SessionOption::Ignored, false}};
  SetOptionStatement set;
  const Option* refused = nullptr;
  do {
    const auto* option =
        std::ranges::find_if(kOptions, [&](const Option& known) { return At(known.name); });
    if (Current().kind != TokenKind::Name) throw SyntaxError();
    if (option == std::end(kOptions)) throw Refused(u"SET " + Text(TextOf(Current())));
    if (option->option != SessionOption::Ignored) set.options.push_back(option->option);
    if (option->matters) refused = option;
    ++at_;
  } while (Take(u","));
  set.on = At(u"on");
  if (!set.on && refused) throw Refused(u"SET " + ToUpper(refused->name) + u" OFF");
  if (!Take(u"on")) Expect(u"off");
  if (!set.on && std::ranges::count(set.options, SessionOption::QuotedIdentifier) > 0) {
    RefuseQuotedTexts(batch_, scanned_);
  }
  statement.node = std::move(set);
}

// `=` and a value, or += and its kin with what the target holds before.
ExpressionPtr Parser::ParseAssigned(ExpressionPtr before) {
  static constexpr std::pair<TextView, Operation> kCompound[] = {{u"+=", Operation::Add},
                                                                 {u"-=", Operation::Subtract},
                                                                 {u"*=", Operation::Multiply},
                                                                 {u"/=", Operation::Divide},
                                                                 {u"%=", Operation::Modulo}};
  for (const auto& [symbol, operation] : kCompound) {
    if (!Take(symbol)) continue;
    auto node = Node(ExpressionKind::Binary);
    node->operation = operation;
    Append(*node, std::move(before));
    Append(*node, ParseSum());
    return node;
  }
  Expect(u"=");
  return ParseOptionalDefault();
}

TransactionStatement Parser::ParseTransaction(TransactionVerb verb) {
  TransactionStatement transaction{verb, {}};
  const bool begins = verb == TransactionVerb::Begin;
  if (begins || Take(u"transaction") || Take(u"tran")) {
    if (Current().kind == TokenKind::Variable) throw Refused(u"a transaction named by a variable");
    if (AtName()) transaction.name = TakeName();
  } else {
    Take(u"work");
  }
  return transaction;
}

RaiseErrorStatement Parser::ParseRaiseError() {
  RaiseErrorStatement raise;
  Expect(u"(");
  do {
    raise.arguments.push_back(ParseArgument());
  } while (Take(u","));
  if (raise.arguments.size() < 3) throw SyntaxError();
  Expect(u")");
  return raise;
}

void Parser::ParseBegin(Statement& statement) {
  if (Take(u"transaction") || Take(u"tran")) {
    statement.node = ParseTransaction(TransactionVerb::Begin);
    return;
  }
  if (At(u"try") || At(u"catch")) throw Refused(u"TRY ... CATCH");
  BlockStatement block;
  SkipSemicolons();
  while (!At(u"end")) {
    if (Current().kind == TokenKind::End) throw SyntaxError();
    block.body.push_back(ParseStatement());
    SkipSemicolons();
  }
  ++at_;
  if (block.body.empty()) throw SyntaxError();
  statement.node = std::move(block);
}

IfStatement Parser::ParseIf() {
  IfStatement result;
  result.condition = ParseCondition();
  result.then = ParseStatement();
  while (At(u";") && Matches(Ahead(1), u"else")) ++at_;
  if (Take(u"else")) result.otherwise = ParseStatement();
  return result;
}

// What remains of it when it runs are the variables' first values.
BlockStatement Parser::ParseDeclare() {
  BlockStatement values;
  if (Matches(Ahead(1), u"cursor")) throw Refused(u"a cursor");
  do {
    const int32_t line = Current().line;
    Text name = TakeVariable();
    Take(u"as");
    if (At(u"cursor") || At(u"table"))
      throw Refused(u"a variable of type " + Text(TextOf(Current())));
    Declare(std::move(name), TakeType(1), line);
    if (!Take(u"=")) continue;
    auto value = std::make_unique<Statement>();
    value->line = line;
    value->node = SetVariableStatement{static_cast<int32_t>(variables_.size()) - 1, ParseSum()};
    values.body.push_back(std::move(value));
  } while (Take(u","));
  return values;
}

ExecuteStatement Parser::ParseExecute() {
  ExecuteStatement execute;
  if (At(u"(")) throw Refused(u"EXEC of a text");
  if (At(u"as")) throw Refused(u"EXECUTE AS");
  if (Current().kind == TokenKind::Variable) {
    execute.returnVariable = TakeDeclared();
    if (!Take(u"=")) throw Refused(u"EXEC of a procedure named by a variable");
  }
  execute.procedure = TakeTableName();
  if (AtStatementEnd()) return execute;
  bool named = false;
  do {
    ExecuteStatement::Argument argument;
    if (Current().kind == TokenKind::Variable && Matches(Ahead(1), u"=")) {
      argument.name = TakeVariable();
      ++at_;
      named = true;
    } else if (named) {
      throw ServerFailure(119,
                          u"Must pass parameter number " +
                              NumberText(static_cast<int64_t>(execute.arguments.size() + 1)) +
                              u" and subsequent parameters as '@name = value'. After the form "
                              u"'@name = value' has been used, all subsequent parameters must be "
                              u"passed in the form '@name = value'.",
                          Current().line);
    }
    if (!Take(u"default")) argument.value = ParseArgument();
    argument.output = Take(u"output") || Take(u"out");
    execute.arguments.push_back(std::move(argument));
  } while (Take(u","));
  if (!AtStatementEnd()) throw SyntaxError();
  return execute;
}

// Only constants and variables stand here; a bare word is a text.
ExpressionPtr Parser::ParseArgument() {
  if (AtName()) throw Refused(u"an argument without quotes");
  const bool isSigned = At(u"-") || At(u"+");
  const bool isValue = Current().kind != TokenKind::Symbol || isSigned || At(u"{");
  if (!isValue || AtAny({u"case", u"convert", u"coalesce", u"nullif", u"left", u"right", u"user"}))
    throw SyntaxError();
  return isSigned ? ParseUnary() : ParsePrimary();
}

}  // namespace vellum250::database::embedded
