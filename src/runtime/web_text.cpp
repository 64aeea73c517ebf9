#include "runtime/web_text.h"

#include "automation/conversion.h"
#include "automation/locale.h"
#include "runtime/component_context.h"
#include "runtime/concat.h"
#include "runtime/config.h"
#include "runtime/database_helpers.h"

namespace vellum250 {

namespace {

bool LabelsAreOn() {
  if (!ConfigBoolean(u"globalShowLabel")) return false;
  if (!ConfigBoolean(u"globalLabelsMyIPOnly")) return true;
  // Callers rely on the misspelt key.
  const Text address = ConfigText(u"globalLablesIPAddress");
  return TrimBlanks(ComponentContext::Current().remoteHostIp) == TrimBlanks(address);
}

// Text of a Variant without a copy where it holds one; Null and false are the empty text.
TextView ViewOf(const Variant& value, Text& storage) {
  if (const Text* text = value.If<Text>()) return *text;
  if (!value.IsNull() && value != Variant(false)) storage = ToText(value);
  return storage;
}

// Adds a label that no text set has, so that administrators find it in the table.
void RegisterLabel(TextView area, TextView label) {
  const Variant stored =
      GetScalar(Concat(u"SELECT web_text_label FROM web_text WHERE web_text_area = '", area,
                       u"' AND web_text_label = '", label, u"'"));
  const Text* found = stored.If<Text>();
  if (found != nullptr && ToLower(*found) == ToLower(label)) return;
  // Callers rely on the first text set here, whatever the thread's is.
  ExecuteSql(Concat(u"INSERT into web_text (web_text_label, web_text_area, text_id) VALUES ('",
                    label, u"', '", area, u"', 1)"));
}

Text WithLabel(TextView area, TextView label, TextView plain) {
  struct Marker {
    TextView marker;
    TextView note;
    TextView shown;
  };
  static constexpr Marker kMarkers[] = {
      {u"[/VAR]", u"<br><b><i> VAR available</i></b>", u"<i>(var)</i><u>[/VAR]</u>"},
      {u"[/VAR1]", u"<br><b><i> VAR1 available</i></b>", u"<i>(var1)</i><u>[/VAR1]</u>"},
      {u"[/VAR2]", u"<br><b><i> VAR2 available</i></b>", u"<i>(var2)</i><u>[/VAR2]</u>"},
  };
  Text text = Concat(u"(", area, u"/", label, u")", plain);
  for (const Marker& m : kMarkers) {
    if (text.find(m.marker) != Text::npos) text.append(m.note);
  }
  for (const Marker& m : kMarkers) text = ReplaceAll(text, m.marker, m.shown);
  return text;
}

}  // namespace

WebTexts::WebTexts() : textId_(NumberText(ComponentContext::Current().textId)) {}

bool WebTexts::ShowsLabels() {
  if (!showsLabels_) showsLabels_ = LabelsAreOn();
  return *showsLabels_;
}

void WebTexts::Append(Text& out, TextView area, TextView label, TextView defaultText) {
  const ComponentContext& context = ComponentContext::Current();
  const bool showsLabels = ShowsLabels();
  Variant storage;
  const Variant* found = nullptr;
  if (context.showText.HasEntries()) {
    key_.clear();
    vellum250::Append(key_, area, label, textId_);
    found = context.showText.Find(key_, storage);
  }
  if (found == nullptr) {
    storage =
        GetScalarText(Concat(u"SELECT web_text FROM web_text WHERE web_text_area = '", area,
                             u"' AND web_text_label = '", label, u"' AND text_id = ", textId_));
    found = &storage;
  }
  Text converted;
  TextView text = ViewOf(*found, converted);
  if (text == u"[/BLANK]") {
    text = {};
  } else if (text.empty()) {
    text = defaultText;
  }
  if (!showsLabels) {
    out.append(text);
    return;
  }
  const Text shown = WithLabel(area, label, text);
  RegisterLabel(area, label);
  out.append(shown);
}

Text GetWebText(TextView area, TextView label, TextView defaultText) {
  Text text;
  WebTexts().Append(text, area, label, defaultText);
  return text;
}

}  // namespace vellum250
