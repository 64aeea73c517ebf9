#include "contacts/names.h"

#include <algorithm>

#include "automation/conversion.h"
#include "automation/locale.h"
#include "runtime/concat.h"
#include "runtime/database_helpers.h"

namespace vellum250::contacts {

namespace {

struct FormOfName {
  TextView entry;  // of app_profile
  TextView defaultTemplate;
};
constexpr FormOfName kForms[] = {
    {u"Salutation", u"<Title> <Surname>"},
    {u"KnownAs", u"<Forename1>"},
    {u"Label", u"<Title> <Surname>"},
};

}  // namespace

Text DisplayAddressName(CallReport report, TextView address1, TextView town, TextView county) {
  Text name;
  const std::optional<Failure> failure = Trap(report, u"", [&](Step&) {
    Text parts;
    const auto add = [&parts](TextView part) {
      if (!part.empty()) Append(parts, part, u", ");
    };
    add(TrimBlanks(address1));
    add(TrimBlanks(town));
    add(ToUpper(TrimBlanks(county)));
    if (parts.empty()) {
      throw InvalidProcedureCall(u"a display name wants an address line, a town or a county");
    }
    name = parts.substr(0, parts.size() - 2);
  });
  if (failure) report.lastError = u"DisplayAddressName:- " + FailureTrace(failure);
  return name;
}

Text Initials(TextView forenames) {
  Text initials(forenames.substr(0, 1));
  bool separated = false;
  for (size_t i = 0; i < forenames.size(); ++i) {
    const char16_t c = forenames[i];
    if (c != u' ' && c != u'.' && c != u'-') continue;
    initials.append(forenames, i, 2);
    separated = true;
  }
  // Callers rely on a single word's letter keeping its case.
  return separated ? ToUpper(initials) : initials;
}

TextView FirstWord(TextView text) { return text.substr(0, text.find(u' ')); }

Text FormattedName(NameForm form, const PersonName& name) {
  const FormOfName& f = kForms[static_cast<size_t>(form)];
  Text text = ToText(GetScalar(Concat(
      u"SELECT value FROM app_profile WHERE section = 'LabelName' AND entry = '", f.entry, u"'")));
  if (text == u"False") text = f.defaultTemplate;
  text = ReplaceAll(text, u"<Title>", name.title);
  text = ReplaceAll(text, u"<Surname>", name.surname);
  text = ReplaceAll(text, u"<Forenames>", name.forenames);
  text = ReplaceAll(text, u"<Honours>", name.honours);
  text = ReplaceAll(text, u"<Initials>", name.initials);
  if (form == NameForm::KnownAs) {
    text = ReplaceAll(text, u"<Forename1>", FirstWord(name.forenames));
  }
  return Text(TrimBlanks(text));
}

}  // namespace vellum250::contacts
