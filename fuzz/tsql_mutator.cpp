// Changes batches by their tokens: what is changed byte by byte seldom gets past the parser.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

using Tokens = std::vector<std::string>;

bool IsWordPart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '@' || c == '#' ||
         static_cast<unsigned char>(c) >= 0x80;
}

size_t TokenEnd(std::string_view text, size_t begin) {
  const char c = text[begin];
  const auto behind = [&](std::string_view end, size_t from) {
    const size_t found = text.find(end, from);
    return found == text.npos ? text.size() : found + end.size();
  };
  if (text.substr(begin, 2) == "--") return behind("\n", begin);
  if (text.substr(begin, 2) == "/*") return behind("*/", begin + 2);
  if (c == '\'' || c == '"') return behind(std::string_view(&c, 1), begin + 1);
  if (c == '[') return behind("]", begin);
  if ((c == 'N' || c == 'n') && text.substr(begin + 1, 1) == "'") return behind("'", begin + 2);
  if (IsWordPart(c)) {
    const bool isNumber = std::isdigit(static_cast<unsigned char>(c)) != 0;
    size_t end = begin;
    while (end < text.size() && (IsWordPart(text[end]) || (isNumber && text[end] == '.'))) ++end;
    return end;
  }
  static constexpr std::string_view kPairs = "<=>=<>!=!<!>";
  for (size_t i = 0; i < kPairs.size(); i += 2) {
    if (text.substr(begin, 2) == kPairs.substr(i, 2)) return begin + 2;
  }
  return begin + 1;
}

Tokens Split(std::string_view text) {
  Tokens tokens;
  for (size_t at = 0; at < text.size();) {
    if (std::isspace(static_cast<unsigned char>(text[at]))) {
      ++at;
      continue;
    }
    const size_t end = TokenEnd(text, at);
    tokens.emplace_back(text.substr(at, end - at));
    at = end;
  }
  return tokens;
}

std::string Join(const Tokens& tokens) {
  std::string text;
  for (const std::string& token : tokens) {
    static constexpr std::string_view kApart = "().,;";
    const bool apart = text.empty() || kApart.find(text.back()) != kApart.npos ||
                       kApart.find(token[0]) != kApart.npos;
    if (!apart) text += ' ';
    text += token;
  }
  return text;
}

// The words of the dictionary by the headings over them.
class Vocabulary {
 public:
  Vocabulary() {
    std::ifstream file(VELLUM250_SOURCE_DIR "/fuzz/tsql.dict");
    std::string group;
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("# ")) group = line.substr(2);
      if (!line.starts_with('"')) continue;
      std::string word = line.substr(1, line.size() - 2);
      std::erase(word, '\\');
      groups_[group].push_back(word);
      groupOf_[word] = group;
      all_.push_back(word);
    }
    if (all_.empty()) std::abort();
  }

  template <typename Random>
  const std::string& Like(const std::string& token, Random& random) const {
    std::string lower = token;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const auto found = groupOf_.find(lower);
    std::string group = found != groupOf_.end() ? found->second : "names";
    if (std::isdigit(static_cast<unsigned char>(token[0]))) group = "numbers";
    if (token.back() == '\'') group = "texts";
    const auto& words = random(16) == 0 ? all_ : groups_.at(group);
    return words[random(words.size())];
  }
  bool IsValue(const std::string& token) const {
    if (std::isdigit(static_cast<unsigned char>(token[0])) || token.back() == '\'') return true;
    const auto found = groupOf_.find(token);
    return token[0] == '@' || (found != groupOf_.end() && found->second == "names");
  }
  template <typename Random>
  const std::string& Any(Random& random) const {
    return all_[random(all_.size())];
  }

 private:
  std::map<std::string, Tokens> groups_;
  std::map<std::string, std::string> groupOf_;
  Tokens all_;
};

// What tsql.grammar says, made into batches.
class Grammar {
 public:
  Grammar() {
    std::ifstream file(VELLUM250_SOURCE_DIR "/fuzz/tsql.grammar");
    Tokens* alternatives = nullptr;
    for (std::string line; std::getline(file, line);) {
      if (line.empty() || line.starts_with("# ")) continue;
      if (line.starts_with("  ")) {
        alternatives->push_back(line.substr(2));
      } else if (line.starts_with("table ")) {
        alternatives = &tables_.emplace_back(line.substr(6), Tokens()).second;
      } else {
        alternatives = &rules_[line];
      }
    }
    if (tables_.empty()) std::abort();
  }

  // Tokens for a rule, where `column` is in reach; none need be.
  template <typename Random>
  Tokens Expand(const std::string& rule, const std::string& column, Random& random) const {
    size_t table = random(tables_.size());
    for (size_t i = 0; i < tables_.size(); ++i) {
      if (std::ranges::count(tables_[i].second, column) > 0) table = i;
    }
    Tokens out;
    Append(out, rule, table, 0, random);
    return out;
  }

 private:
  static constexpr int kDeepest = 5;

  template <typename Random>
  void Append(Tokens& out, const std::string& rule, size_t table, int depth, Random& random) const {
    if (rule == "column")
      return AppendAll(out, Pick(tables_[table].second, random), table, depth, random);
    if (rule == "from" || rule == "table") {
      return AppendAll(out, tables_[table].first, random(tables_.size()), depth, random);
    }
    const Tokens& alternatives = rules_.at(rule);
    // Each query has its own tables.
    const bool opens =
        rule == "query" || rule == "update" || rule == "delete" || (rule == "scalar" && depth > 0);
    const bool isTooDeep = depth > kDeepest || out.size() > 150;
    AppendAll(out, isTooDeep ? alternatives[0] : Pick(alternatives, random),
              opens ? random(tables_.size()) : table, depth + 1, random);
  }

  template <typename Random>
  void AppendAll(Tokens& out, const std::string& text, size_t table, int depth,
                 Random& random) const {
    std::istringstream words(text);
    for (std::string word; words >> word;) {
      if (word.size() > 2 && word.front() == '<' && word.back() == '>') {
        Append(out, word.substr(1, word.size() - 2), table, depth, random);
      } else {
        out.push_back(std::move(word));
      }
    }
  }

  template <typename Random>
  static const std::string& Pick(const Tokens& words, Random& random) {
    return words[random(words.size())];
  }

  std::map<std::string, Tokens> rules_;
  std::vector<std::pair<std::string, Tokens>> tables_;
};

template <typename List>
auto At(List& list, size_t index) {
  return list.begin() + static_cast<ptrdiff_t>(index);
}

// What a token may be put into, at the $.
constexpr std::string_view kWrappers[] = {
    "( $ )",
    "- $",
    "not $",
    "( select $ )",
    "( select max ( $ ) from member )",
    "( select top 1 $ from every_type )",
    "cast ( $ as varchar ( 10 ) )",
    "cast ( $ as int )",
    "convert ( varchar , $ , 103 )",
    "convert ( datetime , $ )",
    "isnull ( $ , '' )",
    "coalesce ( null , $ , 0 )",
    "nullif ( $ , 1 )",
    "case when $ is null then 1 else $ end",
    "case $ when 1 then 'x' end",
    "count ( distinct $ )",
    "sum ( $ )",
    "len ( $ )",
    "left ( $ , 2 )",
    "$ + $",
    "$ % 7",
    "$ as x",
    "$ in ( 1 , $ )",
    "$ between 1 and 2",
    "$ like '%a_[^b-d]%'",
    "exists ( select * from tree where node = $ )",
    "select $ union all select $",
    "select * from ( select $ as x ) y",
    "begin tran $ rollback",
    "if 1 = 1 begin $ end else select 2",
    "declare @q int set @q = $ select @q",
    "insert into tree ( node , name ) values ( $ , 'x' )",
    "update every_type set an_int = $ , a_varchar = $ where id = - 5",
    "exec usp_member $",
};

class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  void Mutate(Tokens& tokens) {
    if (tokens.empty() || Random(8) == 0) tokens = Written("batch");
    for (size_t times = 1 + Random(2); times > 0; --times) {
      if (tokens.empty()) return;
      if (Random(4) == 0) {
        Break(tokens);
      } else {
        Vary(tokens);
      }
    }
  }

  // A part of `other` in the place of a part of `tokens`, between its tokens, or behind it.
  void Cross(Tokens& tokens, const Tokens& other) {
    const Range from = Part(other);
    Range to = Random(4) == 0 ? Range{tokens.size(), tokens.size()} : Part(tokens);
    if (Random(2) == 0) to.begin = to.end;
    tokens.erase(At(tokens, to.begin), At(tokens, to.end));
    tokens.insert(At(tokens, to.begin), At(other, from.begin), At(other, from.end));
  }

  size_t Random(size_t below) { return below == 0 ? 0 : random_() % below; }

 private:
  struct Range {
    size_t begin;
    size_t end;
  };

  static const Vocabulary& Words() {
    static const Vocabulary words;
    return words;
  }

  // A few tokens, something between brackets, or everything.
  Range Part(const Tokens& tokens) {
    if (tokens.empty() || Random(16) == 0) return {0, tokens.size()};
    const size_t begin = Random(tokens.size());
    if (Random(3) > 0) {
      const auto open = std::find(At(tokens, begin), tokens.end(), "(");
      int depth = 0;
      for (auto at = open; at != tokens.end(); ++at) {
        depth += (*at == "(") - (*at == ")");
        if (depth > 0) continue;
        // With the name of the function, or without.
        const size_t first = static_cast<size_t>(open - tokens.begin());
        return {first - (first > 0 ? Random(2) : 0), static_cast<size_t>(at - tokens.begin()) + 1};
      }
    }
    return {begin, std::min(tokens.size(), begin + 1 + Random(6))};
  }

  Tokens Written(const std::string& rule, const std::string& column = {}) {
    static const Grammar grammar;
    const auto random = [this](size_t below) { return Random(below); };
    return grammar.Expand(rule, column, random);
  }

  // A literal or a name, if there is one near.
  size_t Value(const Tokens& tokens) {
    const auto random = [this](size_t below) { return Random(below); };
    size_t at = Random(tokens.size());
    for (int tries = 0; tries < 5 && !Words().IsValue(tokens[at]); ++tries)
      at = random(tokens.size());
    return at;
  }

  // What mostly is still a batch afterwards.
  void Vary(Tokens& tokens) {
    const auto random = [this](size_t below) { return Random(below); };
    const size_t at = Value(tokens);
    switch (Random(6)) {
      case 0:
      case 1: {
        const Tokens value = Written("expression", tokens[at]);
        tokens.erase(At(tokens, at));
        tokens.insert(At(tokens, at), value.begin(), value.end());
        return;
      }
      case 2: {
        const Tokens more = Written("statement");
        if (tokens.size() > 200) tokens.clear();
        tokens.insert(tokens.end(), more.begin(), more.end());
        return;
      }
      case 3:
        return Wrap(tokens, {at, at + 1});
      default:
        tokens[at] = Words().Like(tokens[at], random);
        return;
    }
  }

  void Break(Tokens& tokens) {
    const auto random = [this](size_t below) { return Random(below); };
    const size_t at = Random(tokens.size());
    switch (Random(6)) {
      case 0: {
        const Range part = Part(tokens);
        tokens.erase(At(tokens, part.begin), At(tokens, part.end));
        return;
      }
      case 1: {
        const Tokens copy = tokens;
        return Cross(tokens, copy);
      }
      case 2:
        return std::swap(tokens[at], tokens[Random(tokens.size())]);
      case 3:
        tokens[at] = Words().Like(tokens[at], random);
        return;
      case 4:
        tokens.insert(At(tokens, at), Words().Any(random));
        return;
      default:
        return Wrap(tokens, Part(tokens));
    }
  }

  void Wrap(Tokens& tokens, Range part) {
    const Tokens inner(At(tokens, part.begin), At(tokens, part.end));
    Tokens wrapped;
    for (std::string& token : Split(kWrappers[Random(std::size(kWrappers))])) {
      if (token == "$") {
        wrapped.insert(wrapped.end(), inner.begin(), inner.end());
      } else {
        wrapped.push_back(std::move(token));
      }
    }
    tokens.erase(At(tokens, part.begin), At(tokens, part.end));
    tokens.insert(At(tokens, part.begin), wrapped.begin(), wrapped.end());
  }

  std::minstd_rand random_;
};

size_t Store(const Tokens& tokens, uint8_t* out, size_t maxSize) {
  const std::string text = Join(tokens);
  const size_t size = std::min(text.size(), maxSize);
  std::memcpy(out, text.data(), size);
  return size;
}

Tokens TokensOf(const uint8_t* data, size_t size) {
  return Split({reinterpret_cast<const char*>(data), size});
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed) {
  Mutator mutator(seed);
  if (mutator.Random(10) == 0) return LLVMFuzzerMutate(data, size, maxSize);
  Tokens tokens = TokensOf(data, size);
  mutator.Mutate(tokens);
  return Store(tokens, data, maxSize);
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data, size_t size, const uint8_t* other,
                                            size_t otherSize, uint8_t* out, size_t maxSize,
                                            unsigned seed) {
  Mutator mutator(seed);
  Tokens tokens = TokensOf(data, size);
  mutator.Cross(tokens, TokensOf(other, otherSize));
  return Store(tokens, out, maxSize);
}
