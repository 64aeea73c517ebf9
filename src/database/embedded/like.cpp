#include "database/embedded/like.h"

#include "database/embedded/collation.h"

namespace vellum250::database::embedded {
namespace {

// NotLater: no text that begins further on fits either, because what follows a % was not found.
enum class Fit : uint8_t { Yes, NotHere, NotLater };

class Matcher {
 public:
  Matcher(std::optional<char16_t> escape, bool blanksCount)
      : escape_(escape), blanksCount_(blanksCount) {}

  Fit Try(Units text, Units pattern) const {
    bool afterAny = false;
    Units anyText;     // where the last % may take one unit more
    Units anyPattern;  // what follows that %
    for (;;) {
      if (pattern.AtEnd()) {
        if (IsDone(text)) return Fit::Yes;
      } else if (TakeAny(pattern)) {
        if (pattern.AtEnd()) return Fit::Yes;
        afterAny = true;
        anyText = text;
        anyPattern = pattern;
        continue;
      } else if (!text.AtEnd() && TakeOne(pattern, text.Next())) {
        continue;
      }
      if (!afterAny) return Fit::NotHere;
      if (anyText.AtEnd()) return Fit::NotLater;
      anyText.Next();
      text = anyText;
      pattern = anyPattern;
    }
  }

  // Moves the pattern behind a %, if it stands at one.
  bool TakeAny(Units& pattern) const {
    Units next = pattern;
    if (next.Next() != u'%' || escape_ == u'%') return false;
    pattern = next;
    return true;
  }

 private:
  bool IsDone(Units text) const {
    while (!text.AtEnd()) {
      if (blanksCount_ || text.Next() != u' ') return false;
    }
    return true;
  }

  // Moves the pattern behind its next sign and tells whether `unit` fits that.
  bool TakeOne(Units& pattern, char16_t unit) const {
    const char16_t sign = pattern.Next();
    if (escape_ && sign == *escape_) {
      return !pattern.AtEnd() && Fold(pattern.Next()) == Fold(unit);
    }
    if (sign == u'_') return true;
    if (sign == u'[') return TakeSet(pattern, unit);
    return Fold(sign) == Fold(unit);
  }

  bool TakeSet(Units& pattern, char16_t unit) const {
    const uint32_t weight = Weight(unit);
    bool negated = false;
    bool found = false;
    bool first = true;
    while (!pattern.AtEnd()) {
      char16_t low = pattern.Next();
      if (first && low == u'^') {
        negated = true;
        first = false;
        continue;
      }
      first = false;
      if (low == u']') return found != negated;
      if (escape_ && low == *escape_ && !pattern.AtEnd()) low = pattern.Next();
      char16_t high = low;
      if (Units next = pattern; !next.AtEnd() && next.Next() == u'-') {
        // A hyphen in front of the bracket is a hyphen.
        if (!next.AtEnd()) {
          const char16_t end = next.Next();
          if (end != u']') {
            high = end;
            if (escape_ && end == *escape_ && !next.AtEnd()) high = next.Next();
            pattern = next;
          }
        }
      }
      found = found || (weight >= Weight(low) && weight <= Weight(high));
    }
    return false;
  }

  std::optional<char16_t> escape_;
  bool blanksCount_;
};

}  // namespace

bool Like(std::string_view text, std::string_view pattern, std::optional<char16_t> escape,
          bool blanksCount) {
  return Matcher(escape, blanksCount).Try(Units(text), Units(pattern)) == Fit::Yes;
}

int64_t PatIndex(std::string_view pattern, std::string_view text) {
  const Matcher matcher(std::nullopt, false);
  Units rest(text);
  Units sought(pattern);
  if (sought.AtEnd()) return 0;
  const bool anywhere = matcher.TakeAny(sought);
  if (anywhere && sought.AtEnd()) return 1;
  if (!anywhere) return matcher.Try(rest, sought) == Fit::Yes ? 1 : 0;
  for (int64_t position = 1;; ++position) {
    const Fit fit = matcher.Try(rest, sought);
    if (fit == Fit::Yes) return position;
    if (fit == Fit::NotLater || rest.AtEnd()) return 0;
    rest.Next();
  }
}

}  // namespace vellum250::database::embedded
