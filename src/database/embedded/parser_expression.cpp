#include "automation/locale.h"
#include "database/embedded/parser_class.h"

namespace vellum250::database::embedded {

ExpressionPtr Parser::Node(ExpressionKind kind) const {
  auto node = std::make_unique<Expression>();
  node->kind = kind;
  node->line = Current().line;
  return node;
}

void Parser::Append(Expression& parent, ExpressionPtr child) const {
  parent.height = std::max(parent.height, child->height + 1);
  if (parent.height > kMaxNesting) throw NestedTooDeeply(parent.line);
  parent.arguments.push_back(std::move(child));
}

ExpressionPtr Parser::ParseChain(ExpressionKind kind, TextView word,
                                 ExpressionPtr (Parser::*part)()) {
  ExpressionPtr first = (this->*part)();
  if (!At(word)) return first;
  auto chain = Node(kind);
  Append(*chain, std::move(first));
  while (Take(word)) Append(*chain, (this->*part)());
  return chain;
}

ExpressionPtr Parser::ParseLeftToRight(
    std::initializer_list<std::pair<TextView, Operation>> operations,
    ExpressionPtr (Parser::*part)()) {
  ExpressionPtr left = (this->*part)();
  for (;;) {
    const auto* found = std::ranges::find_if(
        operations, [&](const auto& operation) { return At(operation.first); });
    if (found == operations.end()) return left;
    auto node = Node(ExpressionKind::Binary);
    node->operation = found->second;
    ++at_;
    Append(*node, std::move(left));
    Append(*node, (this->*part)());
    left = std::move(node);
  }
}

ExpressionPtr Parser::ParseOr() {
  Level level(*this);
  return ParseChain(ExpressionKind::Or, u"or", &Parser::ParseAnd);
}

ExpressionPtr Parser::ParseAnd() {
  return ParseChain(ExpressionKind::And, u"and", &Parser::ParseNot);
}

ExpressionPtr Parser::ParseNot() {
  if (!At(u"not")) return ParsePredicate();
  Level level(*this);
  auto node = Node(ExpressionKind::Not);
  ++at_;
  Append(*node, ParseNot());
  return node;
}

ExpressionPtr Parser::ParsePredicate() {
  if (At(u"exists")) {
    auto node = Node(ExpressionKind::Exists);
    ++at_;
    Expect(u"(");
    node->query = ParseSubquery();
    return node;
  }
  if (Matches(Ahead(1), u"(") && AtAny({u"contains", u"freetext"})) {
    throw Refused(ToUpper(TextOf(Current())));
  }
  ExpressionPtr left = ParseSum();
  for (;;) {
    static constexpr std::pair<TextView, Operation> kComparisons[] = {
        {u"=", Operation::Equal},          {u"<>", Operation::NotEqual},
        {u"!=", Operation::NotEqual},      {u"<", Operation::Less},
        {u"<=", Operation::LessOrEqual},   {u"!>", Operation::LessOrEqual},
        {u">", Operation::Greater},        {u">=", Operation::GreaterOrEqual},
        {u"!<", Operation::GreaterOrEqual}};
    const auto* comparison = std::ranges::find_if(
        kComparisons, [&](const auto& operation) { return At(operation.first); });
    if (comparison != std::end(kComparisons)) {
      auto node = Node(ExpressionKind::Compare);
      node->operation = comparison->second;
      ++at_;
      if (AtAny({u"all", u"any", u"some"})) throw Refused(u"a comparison with ALL, ANY or SOME");
      Append(*node, std::move(left));
      Append(*node, ParseSum());
      return node;
    }
    if (At(u"is")) {
      auto node = Node(ExpressionKind::IsNull);
      ++at_;
      node->negated = Take(u"not");
      Expect(u"null");
      Append(*node, std::move(left));
      return node;
    }
    const bool negated = At(u"not") && (Matches(Ahead(1), u"in") || Matches(Ahead(1), u"like") ||
                                        Matches(Ahead(1), u"between"));
    if (negated) ++at_;
    ExpressionPtr node;
    if (Take(u"in")) {
      node = ParseIn(std::move(left));
    } else if (Take(u"like")) {
      node = ParseLike(std::move(left));
    } else if (Take(u"between")) {
      node = Node(ExpressionKind::Between);
      Append(*node, std::move(left));
      Append(*node, ParseSum());
      Expect(u"and");
      Append(*node, ParseSum());
    } else {
      return left;
    }
    node->negated = negated;
    return node;
  }
}

ExpressionPtr Parser::ParseIn(ExpressionPtr value) {
  auto node = Node(ExpressionKind::In);
  Append(*node, std::move(value));
  Expect(u"(");
  if (At(u"select")) {
    node->query = ParseSubquery();
    return node;
  }
  do {
    Append(*node, ParseSum());
  } while (Take(u","));
  Expect(u")");
  return node;
}

ExpressionPtr Parser::ParseLike(ExpressionPtr value) {
  auto node = Node(ExpressionKind::Like);
  Append(*node, std::move(value));
  Append(*node, ParseSum());
  if (Take(u"escape")) Append(*node, ParseSum());
  return node;
}

ExpressionPtr Parser::ParseSum() {
  return ParseLeftToRight({{u"+", Operation::Add},
                           {u"-", Operation::Subtract},
                           {u"&", Operation::BitAnd},
                           {u"|", Operation::BitOr},
                           {u"^", Operation::BitXor}},
                          &Parser::ParseProduct);
}

ExpressionPtr Parser::ParseProduct() {
  return ParseLeftToRight(
      {{u"*", Operation::Multiply}, {u"/", Operation::Divide}, {u"%", Operation::Modulo}},
      &Parser::ParseUnary);
}

ExpressionPtr Parser::ParseUnary() {
  static constexpr std::pair<TextView, Operation> kSigns[] = {
      {u"-", Operation::Negate}, {u"+", Operation::Plus}, {u"~", Operation::BitNot}};
  for (const auto& [sign, operation] : kSigns) {
    if (!At(sign)) continue;
    Level level(*this);
    auto node = Node(ExpressionKind::Unary);
    node->operation = operation;
    ++at_;
    Append(*node, ParseUnary());
    return node;
  }
  ExpressionPtr value = ParsePrimary();
  if (At(u"collate")) throw Refused(u"COLLATE");
  return value;
}

ExpressionPtr Parser::ParsePrimary() {
  const Token& token = Current();
  ExpressionPtr node;
  switch (token.kind) {
    case TokenKind::Literal:
      node = Node(ExpressionKind::Literal);
      node->index = token.index;
      break;
    case TokenKind::Marker:
      node = Node(ExpressionKind::Marker);
      node->index = token.index;
      break;
    case TokenKind::Variable:
      node = Node(ExpressionKind::Variable);
      node->index = TakeDeclared();
      return node;
    case TokenKind::SystemVariable:
      node = Node(ExpressionKind::SystemVariable);
      node->name = Text(TextOf(token));
      break;
    case TokenKind::Symbol:
      if (At(u"(")) return ParseParenthesised();
      if (At(u"{")) return ParseMoment();
      throw SyntaxError();
    default:
      return ParseNamed();
  }
  ++at_;
  return node;
}

ExpressionPtr Parser::ParseParenthesised() {
  Level level(*this);
  ++at_;
  ExpressionPtr node;
  if (At(u"select")) {
    node = Node(ExpressionKind::Subquery);
    node->query = ParseSubquery();
    return node;
  }
  node = ParseCondition();
  Expect(u")");
  return node;
}

ExpressionPtr Parser::ParseNamed() {
  if (At(u"null")) {
    auto node = Node(ExpressionKind::Null);
    ++at_;
    return node;
  }
  if (At(u"case")) return ParseCase();
  if (At(u"convert") && Matches(Ahead(1), u"(")) return ParseConvert();
  if (Matches(Ahead(1), u"(")) {
    if (At(u"cast")) return ParseCast();
    // Their arguments are no expressions.
    if (AtAny({u"iif", u"try_cast", u"try_convert", u"parse", u"try_parse"})) {
      throw Refused(u"function " + Text(TextOf(Current())));
    }
    const bool isFunction = AtName() || AtAny({u"left", u"right", u"coalesce", u"nullif"});
    if (!isFunction) throw SyntaxError();
    Text name(Current().kind == TokenKind::QuotedName ? Unquoted(TextOf(Current()))
                                                      : Text(TextOf(Current())));
    ++at_;
    return ParseCall(std::move(name));
  }
  static constexpr TextView kBareFunctions[] = {u"current_timestamp", u"current_user", u"user"};
  for (TextView function : kBareFunctions) {
    if (!At(function)) continue;
    auto node = Node(ExpressionKind::Call);
    node->name = Text(function);
    ++at_;
    return node;
  }
  auto node = Node(ExpressionKind::Column);
  node->name = TakeName();
  for (int parts = 1; Take(u"."); ++parts) {
    if (parts == 3) throw Refused(u"a name of more than three parts");
    node->qualifier = std::move(node->name);
    node->name = TakeName();
  }
  if (At(u"(")) throw Refused(u"a function of one's own");
  return node;
}

ExpressionPtr Parser::ParseCall(Text name) {
  Level level(*this);
  auto node = Node(ExpressionKind::Call);
  node->name = std::move(name);
  Expect(u"(");
  if (Take(u"*")) {
    Append(*node, Node(ExpressionKind::Star));
  } else if (!At(u")")) {
    node->distinct = Take(u"distinct");
    if (!node->distinct) Take(u"all");
    do {
      Append(*node, ParseSum());
    } while (Take(u","));
  }
  Expect(u")");
  if (At(u"over")) throw Refused(u"OVER");
  return node;
}

ExpressionPtr Parser::ParseCast() {
  Level level(*this);
  auto node = Node(ExpressionKind::Cast);
  at_ += 2;
  Append(*node, ParseSum());
  Expect(u"as");
  node->type = TakeType(30);
  Expect(u")");
  return node;
}

ExpressionPtr Parser::ParseConvert() {
  Level level(*this);
  auto node = Node(ExpressionKind::Cast);
  at_ += 2;
  node->type = TakeType(30);
  Expect(u",");
  Append(*node, ParseSum());
  if (Take(u",")) Append(*node, ParseSum());
  Expect(u")");
  return node;
}

// {ts '2004-02-29 13:45:30'} or {d '2004-02-29'}.
ExpressionPtr Parser::ParseMoment() {
  if (!IsWord(Ahead(1), u"ts") && !IsWord(Ahead(1), u"d")) throw SyntaxError();
  auto node = Node(ExpressionKind::Cast);
  at_ += 2;
  const bool literal = Current().kind == TokenKind::Literal;
  if (!literal || !IsText(scanned_.literals[Current().index].type)) throw SyntaxError();
  node->type = kDateTime;
  Append(*node, ParsePrimary());
  Expect(u"}");
  return node;
}

ExpressionPtr Parser::ParseCase() {
  Level level(*this);
  auto node = Node(ExpressionKind::Case);
  ++at_;
  node->hasOperand = !At(u"when");
  if (node->hasOperand) Append(*node, ParseSum());
  if (!At(u"when")) throw SyntaxError();
  while (Take(u"when")) {
    Append(*node, node->hasOperand ? ParseSum() : ParseCondition());
    Expect(u"then");
    Append(*node, ParseSum());
  }
  node->hasElse = Take(u"else");
  if (node->hasElse) Append(*node, ParseSum());
  Expect(u"end");
  return node;
}

ExpressionPtr Parser::ParseOptionalDefault() { return Take(u"default") ? nullptr : ParseSum(); }

}  // namespace vellum250::database::embedded
