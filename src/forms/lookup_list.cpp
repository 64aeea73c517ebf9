#include "forms/lookup_list.h"

#include "automation/conversion.h"
#include "database/connection.h"
#include "forms/markup.h"
#include "runtime/concat.h"
#include "runtime/web_text.h"

namespace vellum250::forms {

namespace {

// Both stand in SQL as they are given; what is no list or no code would run as SQL.
void CheckRequest(const LookupListRequest& request) {
  if (request.types.find_first_not_of(u"0123456789, -") != TextView::npos ||
      request.types.find(u"--") != TextView::npos) {
    throw InvalidProcedureCall(u"AddressTypes is no list of lookup references");
  }
  if (request.codePrefix.find(u'\'') != TextView::npos) {
    throw InvalidProcedureCall(u"ContainsLookupType is no prefix of a code");
  }
}

Text ListSql(const LookupListRequest& request) {
  Text filter;
  if (!request.codePrefix.empty()) {
    // Callers rely on the prefix standing here as it is given, and on the blanks.
    filter = Concat(u" AND ", request.keepsPrefix ? u"" : u"NOT ", u" lookup_code LIKE '",
                    request.codePrefix, u"%'");
  }
  return Concat(u"SELECT lookup_ref, lookup_full_desc FROM lookup WHERE lookup_ref IN (",
                request.types, u") ", filter, u" ORDER BY lookup_full_desc");
}

Text ListMarkup(const LookupListRequest& request, database::Recordset rows) {
  Text out = Concat(u"<select class=\"AnswerText\" id=\"", request.id, u"\" name=\"", request.id,
                    u"\">", kLineEnd);
  WebTexts texts;
  for (; !rows.Eof(); rows.MoveNext()) {
    const Text reference = ToText(rows.Field(0));
    const bool isSelected = ToInt32(rows.Field(0)) == request.selected;
    const Variant& description = rows.Field(1);
    Append(out, u"\t", kOptionStart, reference, u"\"", isSelected ? kSelected : TextView(), u">");
    texts.Append(out, kLookupArea, reference, description.IsNull() ? Text() : ToText(description));
    Append(out, kOptionEnd, kLineEnd);
  }
  out.append(u"</select>");
  return out;
}

}  // namespace

Variant AddressDropDownList(CallReport report, const LookupListRequest& request) {
  Variant list;
  const Text sql = ListSql(request);
  const std::optional<Failure> failure = Trap(report, u" of 2", [&](Step& step) {
    CheckRequest(request);
    const auto connection =
        database::Connection::Open(ComponentContext::Current().connectionString);
    step.Next();
    database::Recordset rows = connection->Execute(step.Running(sql));
    if (!rows.Eof()) list = ListMarkup(request, std::move(rows));
  });
  if (ComponentContext::Current().Traces()) {
    // Callers rely on the last two labels standing without their values.
    report.lastError =
        Concat(FailureTrace(failure), u"\r\nQuery:", sql, u"<br>Contains:", u"<br>Contains Bool:");
  }
  return list;
}

}  // namespace vellum250::forms
