#include "platform/portable/profile_text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "automation/locale.h"
#include "platform/code_page.h"

namespace vellum250::platform {

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

TextView Trim(TextView text) {
  constexpr TextView kBlanks = u" \t\r\x1A";  // the last ends files of old
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == TextView::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The length never changes with the letter case.
bool SameName(TextView a, TextView b) {
  return a.size() == b.size() && (SameText(a, b) || ToLower(a) == ToLower(b));
}

std::optional<TextView> SectionOfLine(TextView line) {
  if (!line.starts_with(u'[')) return std::nullopt;
  const size_t end = line.rfind(u']');
  if (end == TextView::npos) return std::nullopt;
  return Trim(line.substr(1, end - 1));
}

}  // namespace

// Positions in the text; those of a line found run from its first character to behind its end.
struct ProfileText::Place {
  bool hasSection = false;
  size_t sectionBegin = 0;
  size_t sectionEnd = 0;
  // Behind the section's last line that is not blank.
  size_t linesEnd = 0;
  bool hasLine = false;
  size_t lineBegin = 0;
  size_t lineEnd = 0;
  TextView lineName;
  std::optional<TextView> value;
};

ProfileText::ProfileText(std::string_view bytes) : utf16_(bytes.starts_with(kUtf16Mark)) {
  if (!utf16_) {
    text_ = FromCodePage(bytes);
    return;
  }
  bytes.remove_prefix(kUtf16Mark.size());
  text_.resize(bytes.size() / sizeof(char16_t));
  std::memcpy(text_.data(), bytes.data(), text_.size() * sizeof(char16_t));
}

std::string ProfileText::Bytes() const {
  if (!utf16_) return ToCodePage(text_);
  std::string bytes(kUtf16Mark);
  bytes.append(reinterpret_cast<const char*>(text_.data()), text_.size() * sizeof(char16_t));
  return bytes;
}

ProfileText::Place ProfileText::Find(TextView section, const TextView* name) const {
  const TextView wanted = Trim(section);
  Place place;
  place.hasSection = wanted.empty();
  const TextView text = text_;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find(u'\n', begin), text.size() - 1) + 1;
    const size_t newline = text[end - 1] == u'\n' ? 1 : 0;
    const TextView line = Trim(text.substr(begin, end - newline - begin));
    if (const auto header = SectionOfLine(line)) {
      if (place.hasSection) return place;
      place.hasSection = SameName(*header, wanted);
      place.sectionBegin = begin;
      place.linesEnd = end;
    } else if (place.hasSection && !line.empty()) {
      place.linesEnd = end;
      const size_t equals = line.find(u'=');
      const TextView lineName = Trim(line.substr(0, equals));
      if (name != nullptr && !place.hasLine && line.front() != u';' &&
          SameName(lineName, Trim(*name))) {
        place.hasLine = true;
        place.lineBegin = begin;
        place.lineEnd = end;
        place.lineName = lineName;
        if (equals != TextView::npos) place.value = Trim(line.substr(equals + 1));
      }
    }
    place.sectionEnd = begin = end;
  }
  return place;
}

std::optional<Text> ProfileText::Value(TextView section, TextView name) const {
  const Place place = Find(section, &name);
  return place.value ? std::optional<Text>(*place.value) : std::nullopt;
}

// As a line of its own, with the line end that the file uses.
void ProfileText::Insert(size_t at, const Text& line) {
  const size_t newline = text_.find(u'\n');
  const bool bare = newline != Text::npos && (newline == 0 || text_[newline - 1] != u'\r');
  const Text end = bare ? u"\n" : u"\r\n";
  const bool insideLine = at > 0 && text_[at - 1] != u'\n';
  text_.insert(at, (insideLine ? end : Text()) + line + end);
}

void ProfileText::Set(TextView section, TextView name, TextView value) {
  const Place place = Find(section, &name);
  const TextView given = Trim(name);
  Text line(place.hasLine ? place.lineName : given);
  line.append(u"=").append(Trim(value));
  if (place.hasLine) {
    text_.erase(place.lineBegin, place.lineEnd - place.lineBegin);
    Insert(place.lineBegin, line);
    return;
  }
  if (!place.hasSection) {
    Insert(text_.size(), Text(u"[").append(Trim(section)).append(u"]"));
    Insert(text_.size(), line);
    return;
  }
  Insert(place.linesEnd, line);
}

void ProfileText::Remove(TextView section, TextView name) {
  const Place place = Find(section, &name);
  if (place.hasLine) text_.erase(place.lineBegin, place.lineEnd - place.lineBegin);
}

void ProfileText::RemoveSection(TextView section) {
  const Place place = Find(section, nullptr);
  if (place.hasSection) text_.erase(place.sectionBegin, place.sectionEnd - place.sectionBegin);
}

}  // namespace vellum250::platform
