#include "database/embedded/parser.h"

#include "database/embedded/messages.h"
#include "database/embedded/parser_class.h"

namespace vellum250::database::embedded {

SyntaxTree ParseBatch(TextView batch, const Scanned& scanned) {
  return Parser(batch, scanned).ParseBatch();
}

ExpressionPtr ParseExpression(TextView text, const Scanned& scanned) {
  return Parser(text, scanned).ParseWholeExpression();
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

Parser::ObjectName Parser::TakeObjectName() {
  ObjectName result;
  result.name = TakeName();
  for (int parts = 1; At(u"."); ++parts) {
    if (parts == 3) throw Refused(u"a name of four parts");
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

int64_t Parser::TakeWholeNumber() {
  const bool negative = Take(u"-");
  const Token& token = Current();
  if (token.kind != TokenKind::Literal ||
      scanned_.literals[token.index].type.type != SqlType::Int) {
    throw SyntaxError();
  }
  ++at_;
  pinned_.push_back(token.index);
  const int64_t number = std::get<int64_t>(scanned_.literals[token.index].value);
  return negative ? -number : number;
}

TypeInfo Parser::TakeType(int32_t unsized) {
  const int32_t line = Current().line;
  const bool quoted = Current().kind == TokenKind::QuotedName;
  Text name = TakeObjectName().name;
  if (!quoted && At(u"precision")) name += u" " + TakeName();
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
  return expression;
}

SyntaxTree Parser::ParseBatch() {
  SyntaxTree tree;
  while (Take(u";")) {
  }
  // A procedure may be called by its bare name where the batch begins.
  if (AtName()) {
    auto statement = std::make_unique<Statement>();
    statement->line = Current().line;
    statement->index = statementCount_++;
    statement->node = ParseExecute();
    tree.statements.push_back(std::move(statement));
  }
  while (Take(u";")) {
  }
  while (Current().kind != TokenKind::End) {
    tree.statements.push_back(ParseStatement());
    while (Take(u";")) {
    }
  }
  tree.statementCount = statementCount_;
  tree.pinned = std::move(pinned_);
  tree.definesObjects = definesObjects_;
  return tree;
}

StatementPtr Parser::ParseStatement() {
  Level level(*this);
  auto statement = std::make_unique<Statement>();
  statement->line = Current().line;
  statement->index = statementCount_++;
  ParseStatementInto(*statement);
  return statement;
}

void Parser::ParseStatementInto(Statement& statement) {
  static constexpr TextView kRefused[] = {u"while", u"cursor", u"goto",  u"waitfor",    u"use",
                                          u"grant", u"revoke", u"deny",  u"truncate",   u"merge",
                                          u"open",  u"fetch",  u"close", u"deallocate", u"alter",
                                          u"with",  u"throw",  u"break", u"continue",   u"save"};
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
  } else if (At(u"commit") || At(u"rollback")) {
    const bool commit = At(u"commit");
    ++at_;
    if (!Take(u"transaction") && !Take(u"tran")) Take(u"work");
    if (AtName() && !AtStatementEnd()) throw Refused(u"a named transaction");
    statement.node =
        TransactionStatement{commit ? TransactionVerb::Commit : TransactionVerb::Rollback};
  } else if (Take(u"exec") || Take(u"execute")) {
    statement.node = ParseExecute();
  } else if (Take(u"return")) {
    statement.node = ReturnStatement{AtStatementEnd() ? nullptr : ParseSum()};
  } else if (Take(u"print")) {
    statement.node = PrintStatement{ParseSum()};
  } else if (Take(u"raiserror")) {
    RaiseErrorStatement raise;
    Expect(u"(");
    do {
      raise.arguments.push_back(ParseSum());
    } while (Take(u","));
    Expect(u")");
    statement.node = std::move(raise);
  } else if (At(u"create")) {
    definesObjects_ = true;
    ParseCreate(statement);
  } else if (Take(u"drop")) {
    definesObjects_ = true;
    statement.node = ParseDrop();
  } else {
    for (TextView word : kRefused) {
      if (At(word)) throw Refused(Text(TextOf(Current())));
    }
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
    set.variable = TakeVariable();
    Expect(u"=");
    set.value = ParseSum();
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
  // These say what this database does anyway, or how the server plans.
  static constexpr TextView kIgnored[] = {
      u"ansi_nulls",        u"ansi_padding", u"ansi_warnings",           u"ansi_null_dflt_on",
      u"quoted_identifier", u"arithabort",   u"concat_null_yields_null", u"numeric_roundabort",
      u"xact_abort"};
  SetOptionStatement option;
  do {
    if (At(u"nocount")) {
      option.option = SessionOption::NoCount;
    } else if (std::ranges::none_of(kIgnored, [&](TextView word) { return At(word); })) {
      throw Refused(u"SET " + Text(TextOf(Current())));
    }
    ++at_;
  } while (Take(u","));
  option.on = At(u"on");
  if (!Take(u"on")) Expect(u"off");
  statement.node = option;
}

void Parser::ParseBegin(Statement& statement) {
  if (Take(u"transaction") || Take(u"tran")) {
    if (AtName() && !AtStatementEnd()) throw Refused(u"a named transaction");
    statement.node = TransactionStatement{TransactionVerb::Begin};
    return;
  }
  if (At(u"try") || At(u"catch")) throw Refused(u"TRY ... CATCH");
  BlockStatement block;
  while (Take(u";")) {
  }
  while (!At(u"end")) {
    if (Current().kind == TokenKind::End) throw SyntaxError();
    block.body.push_back(ParseStatement());
    while (Take(u";")) {
    }
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

DeclareStatement Parser::ParseDeclare() {
  DeclareStatement declare;
  do {
    DeclareStatement::Variable variable;
    variable.name = TakeVariable();
    Take(u"as");
    if (At(u"cursor") || At(u"table"))
      throw Refused(u"a variable of type " + Text(TextOf(Current())));
    variable.type = TakeType(1);
    if (Take(u"=")) variable.value = ParseSum();
    declare.variables.push_back(std::move(variable));
  } while (Take(u","));
  return declare;
}

ExecuteStatement Parser::ParseExecute() {
  ExecuteStatement execute;
  if (At(u"(")) throw Refused(u"EXEC of a text");
  if (Current().kind == TokenKind::Variable) {
    execute.returnVariable = TakeVariable();
    if (!Take(u"=")) throw Refused(u"EXEC of a procedure named by a variable");
  }
  execute.procedure = TakeTableName();
  if (AtStatementEnd()) return execute;
  do {
    ExecuteStatement::Argument argument;
    if (Current().kind == TokenKind::Variable && Matches(Ahead(1), u"=")) {
      argument.name = TakeVariable();
      ++at_;
    }
    if (!Take(u"default")) {
      // Only constants and variables stand here; a bare word is a text.
      if (AtName()) throw Refused(u"an argument without quotes");
      argument.value = At(u"-") || At(u"+") ? ParseUnary() : ParsePrimary();
      switch (argument.value->kind) {
        case ExpressionKind::Literal:
        case ExpressionKind::Null:
        case ExpressionKind::Unary:
        case ExpressionKind::Variable:
        case ExpressionKind::SystemVariable:
        case ExpressionKind::Marker:
          break;
        default:
          throw SyntaxError();
      }
    }
    argument.output = Take(u"output") || Take(u"out");
    execute.arguments.push_back(std::move(argument));
  } while (Take(u","));
  if (!AtStatementEnd()) throw SyntaxError();
  return execute;
}

}  // namespace vellum250::database::embedded
