// The parser itself, for the files that share its work: recursive descent, one token ahead.
#pragma once

#include <algorithm>
#include <initializer_list>

#include "database/embedded/failures.h"
#include "database/embedded/parser.h"

namespace vellum250::database::embedded {

class Parser {
 public:
  Parser(TextView batch, const Scanned& scanned) : batch_(batch), scanned_(scanned) {}

  SyntaxTree ParseBatch();
  ExpressionPtr ParseWholeExpression();

 private:
  // Counts the levels of the recursion while it lives.
  class Level {
   public:
    explicit Level(Parser& parser) : parser_(parser) {
      if (++parser_.depth_ > kMaxNesting) throw NestedTooDeeply(parser_.Current().line);
    }
    ~Level() { --parser_.depth_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

   private:
    Parser& parser_;
  };

  // parser.cpp: tokens and names
  const Token& Current() const { return scanned_.tokens[at_]; }
  const Token& Ahead(size_t count) const;
  TextView TextOf(const Token& token) const { return batch_.substr(token.offset, token.length); }
  bool IsWord(const Token& token, TextView lowerWord) const;
  bool At(TextView wordOrSymbol) const { return Matches(Current(), wordOrSymbol); }
  bool AtAny(std::initializer_list<TextView> words) const;
  bool Matches(const Token& token, TextView wordOrSymbol) const;
  bool Take(TextView wordOrSymbol);
  void Expect(TextView wordOrSymbol);
  DatabaseFailure SyntaxError() const;
  DatabaseFailure Refused(TextView construct) const {
    return Unsupported(construct, Current().line);
  }
  bool AtName() const;
  Text TakeName();
  Text TakeVariable();
  void RefuseByName() const;
  int32_t TakeDeclared();                                // a variable's index; 137
  void Declare(Text name, TypeInfo type, int32_t line);  // 134
  struct ObjectName {
    Text schema;
    Text name;
  };
  ObjectName TakeObjectName();
  Text TakeTableName();              // without a schema, or of dbo
  std::vector<Text> TakeNameList();  // (a, b, c)
  int64_t TakeWholeNumber();         // pins the literal
  int64_t TakeSignedNumber();        // the same, a minus sign before it allowed
  TypeInfo TakeType(int32_t unsized);
  Text TextBetween(size_t firstToken, size_t endToken) const;

  // parser_expression.cpp
  ExpressionPtr ParseCondition() { return ParseOr(); }
  ExpressionPtr ParseOr();
  ExpressionPtr ParseAnd();
  ExpressionPtr ParseNot();
  ExpressionPtr ParsePredicate();
  ExpressionPtr ParseIn(ExpressionPtr value);
  ExpressionPtr ParseLike(ExpressionPtr value);
  ExpressionPtr ParseSum();
  ExpressionPtr ParseProduct();
  ExpressionPtr ParseUnary();
  ExpressionPtr ParsePrimary();
  ExpressionPtr ParseNamed();
  ExpressionPtr ParseCall(Text name);
  ExpressionPtr ParseCast();
  ExpressionPtr ParseConvert();
  ExpressionPtr ParseMoment();
  ExpressionPtr ParseCase();
  ExpressionPtr ParseParenthesised();
  ExpressionPtr ParseOptionalDefault();  // nullptr for DEFAULT
  ExpressionPtr Node(ExpressionKind kind) const;
  void Append(Expression& parent, ExpressionPtr child) const;
  // `a AND b AND c` as one node, however many there are.
  ExpressionPtr ParseChain(ExpressionKind kind, TextView word, ExpressionPtr (Parser::*part)());
  ExpressionPtr ParseLeftToRight(std::initializer_list<std::pair<TextView, Operation>> operations,
                                 ExpressionPtr (Parser::*part)());

  // parser_query.cpp
  QueryPtr ParseQuery();
  QueryPtr ParseSubquery();
  void RequireTopForOrder(const Query& query) const;
  void RefuseOutput() const;
  SelectCore ParseSelectCore();
  SelectItem ParseSelectItem();
  SourcePtr ParseSource();
  SourcePtr ParseJoin(JoinKind kind, SourcePtr left);
  SourcePtr ParseSourcePrimary();
  std::optional<JoinKind> TakeJoin();
  void TakeAlias(Source& source);
  void SkipHints();
  std::vector<SourcePtr> ParseFrom();  // empty when there is no FROM
  std::vector<OrderItem> ParseOrderBy();
  InsertStatement ParseInsert();
  UpdateStatement ParseUpdate();
  DeleteStatement ParseDelete();

  // parser_schema.cpp
  void ParseCreate(Statement& statement);
  CreateTableStatement ParseCreateTable();
  ColumnDefinition ParseColumn(CreateTableStatement& table);
  bool ParseColumnOption(ColumnDefinition& column, CreateTableStatement& table);
  ConstraintDefinition ParseConstraint(Text name, TextView column);
  void ParseReferences(ConstraintDefinition& constraint);
  std::vector<Text> TakeKeyColumns(std::vector<bool>* descending = nullptr);
  void SkipStorageOptions();
  Text TakeParenthesisedText();
  Text StoredDefault(size_t first, const Expression& value) const;
  size_t ClosingOf(size_t token) const;
  CreateIndexStatement ParseCreateIndex();
  CreateViewStatement ParseCreateView(size_t firstToken);
  CreateProcedureStatement ParseCreateProcedure(size_t firstToken);
  DropStatement ParseDrop();

  // parser.cpp: statements
  StatementPtr ParseStatement();
  void ParseStatementInto(Statement& statement);
  void ParseSet(Statement& statement);
  void ParseBegin(Statement& statement);
  IfStatement ParseIf();
  BlockStatement ParseDeclare();
  TransactionStatement ParseTransaction(TransactionVerb verb);
  RaiseErrorStatement ParseRaiseError();
  ExecuteStatement ParseExecute();
  ExpressionPtr ParseArgument();
  ExpressionPtr ParseAssigned(ExpressionPtr before);
  bool AtStatementEnd() const;
  void SkipSemicolons();

  TextView batch_;
  const Scanned& scanned_;
  size_t at_ = 0;
  int32_t depth_ = 0;
  size_t statementCount_ = 0;
  std::vector<int32_t> pinned_;
  std::vector<VariableInfo> variables_;
  std::optional<DatabaseFailure> undeclared_;  // told when nothing worse is found
  bool definesObjects_ = false;
  bool inProcedure_ = false;
};

}  // namespace vellum250::database::embedded
