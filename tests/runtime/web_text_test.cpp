#include "runtime/web_text.h"

#include "automation/conversion.h"
#include "runtime/config.h"
#include "support/component_test.h"

namespace vellum250 {
namespace {

class WebText : public support::ComponentTest {
 protected:
  WebText() {
    context.textId = 3;
    database.Query(
        u"INSERT INTO web_text (web_text_area, web_text_label, text_id, web_text) VALUES "
        u"('General', 'Town', 3, 'Town:'), ('General', 'Town', 1, 'City:'), "
        u"('General', 'Blank', 3, '[/BLANK]'), ('General', 'Empty', 3, ''), "
        u"('General', 'None', 3, NULL), ('A', 'L', 3, 'Dear [/VAR]'), "
        u"('A', 'M', 3, '[/VAR1][/VAR][/VAR2][/VAR1]'), ('A', 'False', 3, 'False')");
  }

  void SetConfig(TextView key, TextView setting) {
    database.Query(u"INSERT INTO web_config (global_config, setting) VALUES ('" + Text(key) +
                   u"', '" + Text(setting) + u"')");
  }
  std::string RowsOf(TextView label) {
    return database.Value(u"SELECT count(*) FROM web_text WHERE web_text_label = '" + Text(label) +
                          u"'");
  }
};

TEST_F(WebText, ComesFromTheTableOrIsTheDefault) {
  const struct {
    TextView area;
    TextView label;
    TextView text;
  } cases[] = {
      {u"General", u"Town", u"Town:"}, {u"General", u"Blank", u""},
      {u"General", u"Empty", u"dft"},  {u"General", u"None", u"dft"},
      {u"General", u"Absent", u"dft"}, {u"Other", u"Town", u"dft"},
      {u"A", u"L", u"Dear [/VAR]"},    {u"A", u"False", u"False"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetWebText(c.area, c.label, u"dft"), c.text) << ToUtf8(c.label);
  }
  EXPECT_EQ(RowsOf(u"Absent"), "0");
  context.textId = 1;
  EXPECT_EQ(GetWebText(u"General", u"Town", u"dft"), u"City:");
  context.textId = -2;
  EXPECT_EQ(GetWebText(u"General", u"Town", u"dft"), u"dft");
}

TEST_F(WebText, ComesFromTheDictionaryWhereItHasTheKey) {
  Dictionary& texts = TextDictionary();
  texts.Set(u"GeneralTown3", u"from the dictionary");
  texts.Set(u"GeneralEmpty3", Null{});
  texts.Set(u"GeneralBlank3", u"[/BLANK]");
  texts.Set(u"GeneralFalse3", false);
  texts.Set(u"GeneralNumber3", 42);
  EXPECT_EQ(GetWebText(u"General", u"Town", u"dft"), u"from the dictionary");
  EXPECT_EQ(GetWebText(u"General", u"Empty", u"dft"), u"dft");
  EXPECT_EQ(GetWebText(u"General", u"False", u"dft"), u"dft");
  EXPECT_EQ(GetWebText(u"General", u"Blank", u"dft"), u"");
  EXPECT_EQ(GetWebText(u"General", u"Number", u"dft"), u"42");
  // What it does not have is still in the table; keys are compared exactly.
  EXPECT_EQ(GetWebText(u"A", u"L", u"dft"), u"Dear [/VAR]");
  EXPECT_EQ(GetWebText(u"General", u"town", u"dft"), u"Town:");
}

TEST_F(WebText, NeedsNoDatabaseWhenTheDictionariesHaveEverything) {
  context.connectionString.clear();
  TextDictionary().Set(u"GeneralTown3", u"T");
  EXPECT_THROW(GetWebText(u"General", u"Town", u""), Failure);
  ConfigDictionary().Set(u"globalShowLabel", u"FALSE");
  EXPECT_EQ(GetWebText(u"General", u"Town", u""), u"T");
}

TEST_F(WebText, ShowsLabelsAndRegistersThoseThatAreMissing) {
  SetConfig(u"globalShowLabel", u"true");
  const struct {
    TextView area;
    TextView label;
    TextView text;
  } cases[] = {
      {u"General", u"Town", u"(General/Town)Town:"},
      {u"General", u"Blank", u"(General/Blank)"},
      {u"General", u"Absent", u"(General/Absent)dft"},
      {u"A", u"L", u"(A/L)Dear <i>(var)</i><u>[/VAR]</u><br><b><i> VAR available</i></b>"},
      {u"A", u"M",
       u"(A/M)<i>(var1)</i><u>[/VAR1]</u><i>(var)</i><u>[/VAR]</u><i>(var2)</i><u>[/VAR2]</u>"
       u"<i>(var1)</i><u>[/VAR1]</u><br><b><i> VAR available</i></b><br><b><i> VAR1 available"
       u"</i></b><br><b><i> VAR2 available</i></b>"},
  };
  for (int round = 0; round < 2; ++round) {
    for (const auto& c : cases) {
      EXPECT_EQ(GetWebText(c.area, c.label, u"dft"), c.text) << ToUtf8(c.label);
    }
  }
  // Once, in the first text set, without a text; not again in another set or letter case.
  EXPECT_EQ(RowsOf(u"Absent"), "1");
  EXPECT_EQ(database.Value(u"SELECT text_id FROM web_text WHERE web_text_label = 'Absent'"), "1");
  EXPECT_EQ(database.Value(u"SELECT web_text FROM web_text WHERE web_text_label = 'Absent'"),
            "NULL");
  GetWebText(u"General", u"TOWN", u"");
  EXPECT_EQ(RowsOf(u"Town"), "2");
}

TEST_F(WebText, ShowsLabelsToOneAddressOnly) {
  const struct {
    TextView address;  // of the setting
    TextView caller;
    bool shows;
  } cases[] = {
      {u"10.0.0.1", u"10.0.0.1", true},
      {u" 10.0.0.1", u"10.0.0.1  ", true},
      {u"10.0.0.1", u"10.0.0.2", false},
      {u"10.0.0.1", u"", false},
      {u"", u"", true},
      {u"", u"10.0.0.1", false},
      {u"::aB", u"::AB", false},
  };
  Dictionary& config = ConfigDictionary();
  config.Set(u"globalShowLabel", u"True");
  config.Set(u"globalLabelsMyIPOnly", u"1");
  for (const auto& c : cases) {
    config.Set(u"globalLablesIPAddress", c.address);
    context.remoteHostIp = c.caller;
    EXPECT_EQ(GetWebText(u"General", u"Town", u"") == u"(General/Town)Town:", c.shows)
        << ToUtf8(c.address) << " for " << ToUtf8(c.caller);
  }
}

TEST_F(WebText, IsReadOnceFromAHostsDictionaryWhateverItThrows) {
  // A dictionary of the host: counts its calls, and throws for one key.
  class HostDictionary final : public Object {
   public:
    Variant Invoke(TextView member, InvokeKind, Arguments arguments) override {
      calls += ToUtf8(member) + ";";
      if (member == u"Count") return 1;
      const Text key = ToText(arguments[0]);
      if (key == u"GeneralBad3") throw Failure(1001, u"host", u"no such luck");
      if (member == u"Exists") return key != u"GeneralAbsent3";
      return Variant(u"host: " + key);
    }
    std::string calls;
  };
  ConfigDictionary().Set(u"globalShowLabel", false);
  const auto host = MakeObject<HostDictionary>();
  context.showText = WebDictionary(host);
  EXPECT_EQ(GetWebText(u"General", u"Town", u""), u"host: GeneralTown3");
  EXPECT_EQ(host->calls, "Count;Exists;Item;");
  EXPECT_EQ(GetWebText(u"General", u"Absent", u"dft"), u"dft");
  try {
    GetWebText(u"General", u"Bad", u"dft");
    ADD_FAILURE() << "nothing was raised";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 1001);
    EXPECT_EQ(failure.Description(), u"no such luck");
  }
}

TEST_F(WebText, SettingsConvertToTheTypeThatIsAskedFor) {
  SetConfig(u"number", u"12");
  SetConfig(u"word", u"word");
  SetConfig(u"date", u"3 Feb 2001");
  SetConfig(u"yes", u"TRUE");
  SetConfig(u"no", u"false");
  SetConfig(u"zero", u"0");
  SetConfig(u"False", u"False");
  SetConfig(u"large", u"40000");
  using enum ConfigValueType;
  const auto setting = [](TextView key, ConfigValueType type) -> Variant {
    try {
      return GetConfigSetting(key, type);
    } catch (const Failure& failure) {
      return u"failure " + NumberText(failure.Number());
    }
  };
  const struct {
    TextView key;
    ConfigValueType type;
    Variant value;
  } cases[] = {
      {u"number", Integer, int16_t{12}},
      {u"number", Boolean, true},
      {u"number", Text, u"12"},
      {u"number", static_cast<ConfigValueType>(9), u"12"},
      {u"word", Integer, u"failure 13"},
      {u"word", Boolean, u"failure 13"},
      {u"word", Date, u"failure 13"},
      {u"large", Integer, u"failure 6"},
      {u"date", Date, vellum250::Date{36925}},
      {u"yes", Boolean, true},
      {u"no", Boolean, false},
      {u"zero", Boolean, false},
      {u"False", Text, u""},
      {u"absent", Integer, int16_t{0}},
      {u"absent", Date, vellum250::Date{0}},
      {u"absent", Text, u""},
      {u"absent", Boolean, false},
      {u"absent", static_cast<ConfigValueType>(0), false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(setting(c.key, c.type), c.value)
        << ToUtf8(c.key) << " as " << static_cast<int>(c.type);
  }
  Dictionary& config = ConfigDictionary();
  config.Set(u"number", 7);
  config.Set(u"null", Null{});
  EXPECT_EQ(ConfigInteger(u"number"), 7);
  EXPECT_EQ(ConfigText(u"null"), u"");
  EXPECT_EQ(setting(u"null", Boolean), Variant(u"failure 13"));
  EXPECT_EQ(ConfigText(u"word"), u"word");
}

}  // namespace
}  // namespace vellum250
