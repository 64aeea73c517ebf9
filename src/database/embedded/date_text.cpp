// Dates as text: the styles of CONVERT, and the forms that a date is typed in.

#include <algorithm>
#include <array>
#include <iterator>

#include "database/embedded/ascii.h"
#include "database/embedded/dates.h"

namespace vellum250::database::embedded {
namespace {

// 00 to 49 are of this century, 50 to 99 of the last.
int32_t FullYear(int32_t year, int32_t digits) {
  if (digits > 2) return year;
  return year < 50 ? 2000 + year : 1900 + year;
}

enum class Order : uint8_t { MonthFirst, DayFirst, YearFirst };

// Date and time as patterns: y two digits of the year, Y four; m, d two digits; e day with a blank
// for its first zero; M short month; h hour of 24; H of 12 with a blank; i, s two digits; f three;
// p AM or PM. The styles up to 14 show the century when 100 is added.
struct Style {
  int32_t number;
  std::string_view date;
  std::string_view time;  // with the sign between
};
constexpr Style kStyles[] = {
    {0, "M e Y", " H:ip"},
    {1, "m/d/y", ""},
    {2, "y.m.d", ""},
    {3, "d/m/y", ""},
    {4, "d.m.y", ""},
    {5, "d-m-y", ""},
    {6, "d M y", ""},
    {7, "M d, y", ""},
    {8, "", "h:i:s"},
    {9, "M e Y", " H:i:s:fp"},
    {10, "m-d-y", ""},
    {11, "y/m/d", ""},
    {12, "ymd", ""},
    {13, "d M Y", " h:i:s:f"},
    {14, "", "h:i:s:f"},
    {20, "Y-m-d", " h:i:s"},
    {21, "Y-m-d", " h:i:s.f"},
    {22, "m/d/y", " H:i:s p"},
    {23, "Y-m-d", ""},
    {24, "", "h:i:s"},
    {25, "Y-m-d", " h:i:s.f"},
    {120, "Y-m-d", " h:i:s"},
    {121, "Y-m-d", " h:i:s.f"},
    {126, "Y-m-d", "Th:i:s.f"},
    {127, "Y-m-d", "Th:i:s.f"},
};

bool ShowsCentury(int32_t style) { return style >= 100 && style <= 114; }

const Style* FindStyle(int32_t number) {
  if (ShowsCentury(number)) number -= 100;
  const auto* found = std::ranges::find(kStyles, number, &Style::number);
  return found == std::end(kStyles) ? nullptr : found;
}

Order OrderOf(std::string_view pattern) {
  if (pattern.starts_with('d')) return Order::DayFirst;
  const bool yearFirst = pattern.starts_with('y') || pattern.starts_with('Y');
  return yearFirst ? Order::YearFirst : Order::MonthFirst;
}

void AppendPattern(std::string& out, std::string_view pattern, Calendar date, Clock clock) {
  struct Field {
    char letter;
    int32_t number;
    size_t digits;
  };
  const Field fields[] = {{'y', date.year % 100, 2},
                          {'Y', date.year, 4},
                          {'m', date.month, 2},
                          {'d', date.day, 2},
                          {'e', date.day, 2},
                          {'h', clock.hour, 2},
                          {'H', (clock.hour + 11) % 12 + 1, 2},
                          {'i', clock.minute, 2},
                          {'s', clock.second, 2},
                          {'f', clock.millisecond, 3}};
  for (const char c : pattern) {
    const auto* field = std::ranges::find(fields, c, &Field::letter);
    if (field != std::end(fields)) {
      size_t at = out.size() + field->digits;
      out.resize(at, c == 'e' || c == 'H' ? ' ' : '0');
      for (int32_t rest = field->number; rest != 0; rest /= 10) {
        out[--at] = static_cast<char>('0' + rest % 10);
      }
    } else if (c == 'M') {
      out.append(MonthName(date.month).substr(0, 3));
    } else if (c == 'p') {
      out.append(clock.hour < 12 ? "AM" : "PM");
    } else {
      out.push_back(c);
    }
  }
}

}  // namespace

bool AppendDate(std::string& out, Moment moment, SqlType type, int32_t style) {
  const bool isDate = type == SqlType::Date;
  // A date has its own default.
  const Style* found = FindStyle(isDate && style == 0 ? 23 : style);
  if (found == nullptr || (isDate && found->date.empty())) return false;
  const Clock clock = ClockOf(moment.tick);
  std::string pattern(found->date);
  if (ShowsCentury(style)) std::ranges::replace(pattern, 'y', 'Y');
  if (!isDate) {
    pattern.append(found->time);
    // The forms with a T leave out milliseconds of 0.
    if (found->time.starts_with('T') && clock.millisecond == 0) pattern.resize(pattern.size() - 2);
  }
  AppendPattern(out, pattern, CalendarOf(moment.day), clock);
  return true;
}

namespace {

enum class Mark : uint8_t { End, Number, Month, Half, T, Z, Sign, Bad };

struct Piece {
  Mark mark = Mark::End;
  int32_t value = 0;   // the number; the month; 0 AM, 12 PM; the sign's character
  int32_t digits = 0;  // of the number
};

Piece WordPiece(std::string_view word) {
  if (EqualsAscii(word, "AM")) return {Mark::Half, 0, 0};
  if (EqualsAscii(word, "PM")) return {Mark::Half, 12, 0};
  if (EqualsAscii(word, "T")) return {Mark::T, 0, 0};
  if (EqualsAscii(word, "Z")) return {Mark::Z, 0, 0};
  for (int32_t month = 1; month <= 12; ++month) {
    const std::string_view name = MonthName(month);
    if (EqualsAscii(word, name) || EqualsAscii(word, name.substr(0, 3))) {
      return {Mark::Month, month, 0};
    }
  }
  return {Mark::Bad, 0, 0};
}

// Reads a date text piece by piece; blanks only part the pieces.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : text_(text) {
    Advance();
    Advance();
  }

  const Piece& Current() const { return current_; }
  const Piece& Following() const { return following_; }
  bool IsSign(char sign) const { return current_.mark == Mark::Sign && current_.value == sign; }

  void Advance() {
    current_ = following_;
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
    const size_t begin = at_;
    if (begin == text_.size()) {
      following_ = {};
    } else if (IsAsciiDigit(text_[begin])) {
      while (at_ < text_.size() && IsAsciiDigit(text_[at_])) ++at_;
      const size_t digits = at_ - begin;
      following_ = digits > 9 ? Piece{Mark::Bad, 0, 0}
                              : Piece{Mark::Number, GetDigits(text_, begin, digits),
                                      static_cast<int32_t>(digits)};
    } else if (IsAsciiLetter(text_[begin])) {
      while (at_ < text_.size() && IsAsciiLetter(text_[at_])) ++at_;
      following_ = WordPiece(text_.substr(begin, at_ - begin));
    } else {
      following_ = {Mark::Sign, text_[at_++], 0};
    }
  }

 private:
  std::string_view text_;
  size_t at_ = 0;
  Piece current_;
  Piece following_;
};

class DateParser {
 public:
  DateParser(std::string_view text, Order order) : reader_(text), order_(order) {}

  ParsedDate Parse() {
    while (reader_.Current().mark != Mark::End) {
      const DateError error = AtTime() ? ReadTime() : ReadDatePiece();
      if (error != DateError::None) return {{}, error};
    }
    int32_t day = 0;
    const DateError error = ResolveDate(day);
    if (error != DateError::None) return {{}, error};
    return {MomentAt(day, milliseconds_), DateError::None};
  }

 private:
  bool AtTime() const {
    if (reader_.Current().mark != Mark::Number) return false;
    const Piece& next = reader_.Following();
    return next.mark == Mark::Half || (next.mark == Mark::Sign && next.value == ':');
  }

  DateError ReadTime() {
    if (hasTime_) return DateError::Syntax;
    hasTime_ = true;
    int32_t fields[3] = {};
    int32_t last = 0;
    for (;; ++last) {
      if (last == 3 || reader_.Current().mark != Mark::Number || reader_.Current().digits > 2) {
        return DateError::Syntax;
      }
      fields[last] = reader_.Current().value;
      reader_.Advance();
      if (!reader_.IsSign(':') || last == 2) break;
      reader_.Advance();
    }
    if (hasT_ && last < 2) return DateError::Syntax;
    int32_t fraction = 0;
    if (reader_.IsSign('.') || reader_.IsSign(':')) {
      const bool isDecimal = reader_.IsSign('.');
      reader_.Advance();
      const Piece& number = reader_.Current();
      if (number.mark != Mark::Number || number.digits > 3) return DateError::Syntax;
      fraction = number.value;
      for (int32_t i = number.digits; isDecimal && i < 3; ++i) fraction *= 10;
      reader_.Advance();
    }
    if (reader_.Current().mark == Mark::Half) {
      const int32_t half = reader_.Current().value;
      // Neither 13 AM nor 0 PM; 13 PM is 13.
      if (half == 0 ? fields[0] > 12 : fields[0] == 0) return DateError::Range;
      if (fields[0] <= 12) fields[0] = fields[0] % 12 + half;
      reader_.Advance();
    }
    if (fields[0] > 23 || fields[1] > 59 || fields[2] > 59) return DateError::Range;
    milliseconds_ = ((fields[0] * 60 + fields[1]) * 60 + fields[2]) * 1000 + fraction;
    return DateError::None;
  }

  DateError ReadDatePiece() {
    const Piece piece = reader_.Current();
    reader_.Advance();
    switch (piece.mark) {
      case Mark::Number:
      case Mark::Month:
        if (count_ == 3) return DateError::Syntax;
        pieces_[count_++] = piece;
        return DateError::None;
      case Mark::Sign:
        // Between two pieces of the date; a comma also behind it.
        if (piece.value == ',' && count_ > 0) return DateError::None;
        if ((piece.value == '/' || piece.value == '-' || piece.value == '.') && count_ > 0 &&
            !AtTime() &&
            (reader_.Current().mark == Mark::Number || reader_.Current().mark == Mark::Month)) {
          ++signs_;
          return DateError::None;
        }
        return DateError::Syntax;
      case Mark::T:
        if (!AtTime() || count_ == 0) return DateError::Syntax;
        // The international form: always year, month, day.
        order_ = Order::YearFirst;
        hasT_ = true;
        return DateError::None;
      case Mark::Z:
        return hasTime_ && reader_.Current().mark == Mark::End ? DateError::None
                                                               : DateError::Syntax;
      default:
        return DateError::Syntax;
    }
  }

  DateError ResolveDate(int32_t& day) {
    Calendar date;
    DateError error = DateError::None;
    const bool named = std::any_of(pieces_.begin(), pieces_.begin() + count_,
                                   [](const Piece& piece) { return piece.mark == Mark::Month; });
    if (count_ == 0) {
      if (!hasTime_) return DateError::Syntax;
    } else if (named) {
      error = ResolveNamed(date);
    } else if (count_ == 1) {
      error = ResolveDigits(date);
    } else {
      error = ResolveNumbers(date);
    }
    if (error != DateError::None) return error;
    if (date.year < 1 || date.month < 1 || date.month > 12 || date.day < 1 ||
        date.day > DaysOfMonth(date.year, date.month)) {
      return DateError::Range;
    }
    day = DayOf(date);
    return DateError::None;
  }

  // 20040229, 040229 or a year alone.
  DateError ResolveDigits(Calendar& date) const {
    const auto [mark, value, digits] = pieces_[0];
    if (digits == 4) {
      date.year = value;
    } else if (digits == 6 || digits == 8) {
      date = {FullYear(value / 10000, digits - 4), value / 100 % 100, value % 100};
    } else {
      return DateError::Syntax;
    }
    return DateError::None;
  }

  // A month by name; of the numbers beside it the one of four digits, or else the last, is the
  // year.
  DateError ResolveNamed(Calendar& date) const {
    Piece numbers[2];
    int32_t count = 0;
    for (int32_t i = 0; i < count_; ++i) {
      if (pieces_[i].mark == Mark::Month) {
        date.month = pieces_[i].value;
      } else if (count < 2) {
        numbers[count++] = pieces_[i];
      } else {
        return DateError::Syntax;
      }
    }
    if (count == 0 || count + 1 != count_) return DateError::Syntax;
    if (count == 2 && numbers[0].digits == 4) std::swap(numbers[0], numbers[1]);
    const Piece& year = numbers[count - 1];
    if (year.digits == 3 || year.digits > 4 || (count == 2 && numbers[0].digits > 2)) {
      return DateError::Syntax;
    }
    date.year = FullYear(year.value, year.digits);
    date.day = count == 2 ? numbers[0].value : 1;
    return DateError::None;
  }

  // Three numbers with signs between them.
  DateError ResolveNumbers(Calendar& date) const {
    if (count_ != 3 || signs_ != 2) return DateError::Syntax;
    const bool yearInFront = pieces_[0].digits == 4;
    const Piece& year = pieces_[yearInFront || order_ == Order::YearFirst ? 0 : 2];
    const Piece& first = pieces_[&year == &pieces_[0] ? 1 : 0];
    const Piece& second = pieces_[&year == &pieces_[0] ? 2 : 1];
    if (year.digits == 3 || year.digits > 4 || first.digits > 2 || second.digits > 2) {
      return DateError::Syntax;
    }
    date.year = FullYear(year.value, year.digits);
    const bool dayFirst = order_ == Order::DayFirst;
    date.month = dayFirst ? second.value : first.value;
    date.day = dayFirst ? first.value : second.value;
    return DateError::None;
  }

  DateReader reader_;
  Order order_;
  std::array<Piece, 3> pieces_;
  int32_t count_ = 0;
  int32_t signs_ = 0;
  bool hasTime_ = false;
  bool hasT_ = false;  // behind which seconds must stand
  int32_t milliseconds_ = 0;
};

}  // namespace

ParsedDate ParseDateText(std::string_view text, int32_t style) {
  if (text.find_first_not_of(' ') == std::string_view::npos) return {};
  const Style* found = FindStyle(style);
  return DateParser(text, OrderOf(found ? found->date : "")).Parse();
}

}  // namespace vellum250::database::embedded
