#include "forms/address_form.h"

#include "support/component_test.h"

namespace vellum250::forms {
namespace {

constexpr int16_t kAllFields = 4 | 8 | 16 | 32 | 64 | 128 | 256 | 512 | 2048;
constexpr int16_t kCountryList = 1024;

class AddressFormMarkup : public support::ComponentTest {
 protected:
  AddressFormMarkup() {
    Dictionary& config = ConfigDictionary();
    config.Set(u"globalShowLabel", u"false");
    config.Set(u"globalEnablePaf", u"false");
    config.Set(u"globalDisplayAsReadOnly", u"0");
  }
  Text Build(const AddressForm& form) { return BuildAddress(report, form, includePafScript); }
  // What stands between two pieces, "(absent)" when the first one is not there.
  static std::string Between(const Text& markup, TextView from, TextView to) {
    const size_t start = markup.find(from);
    if (start == Text::npos) return "(absent)";
    const size_t begin = start + from.size();
    return ToUtf8(TextView(markup).substr(begin, markup.find(to, begin) - begin));
  }
  static std::string Validator(const Text& markup) {
    return Between(markup, u"name=\"AddValidate\" value=\"", u"\">");
  }

  bool includePafScript = true;
};

TEST_F(AddressFormMarkup, WithNoFieldOnHoldsTheRecordAndAddressLine1) {
  EXPECT_EQ(Build({.displayName = u"D \"1\"",
                   .differentiator = u"Home & away",
                   .address1 = u"1 <Road>",
                   .address2 = u"two",
                   .address3 = u"three",
                   .town = u"Leeds",
                   .county = u"York",
                   .postcode = u"LS1",
                   .country = u"UK",
                   .addressType = 12,
                   .entityType = u"INDIVIDUAL",
                   .systemRef = 7,
                   .locationRef = -8,
                   .comments = u"none"}),
            u"<input type=\"hidden\" id=\"DisplayName\" name=\"DisplayName\" "
            u"value=\"D &quot;1&quot;\">"
            u"<input type=\"hidden\" id=\"Differentiator\" name=\"Differentiator\" "
            u"value=\"Home &amp; away\">"
            u"<tr>\r\n"
            u"   <td class=\"Text\">*</td>\r\n"
            u"   <td class=\"Text\">Address:&nbsp;&nbsp;   </td>\r\n"
            u"   <td class=\"Text\"><input class=\"AnswerText\" type=\"text\" id=\"Add1\" "
            u"name=\"Add1\" maxlength=40 size=40 value=\"1 &lt;Road&gt;\">   </td>\r\n"
            u"  </tr>\r\n"
            // Line 2 stands in both.
            u"<input type=\"hidden\" id=\"Add2\" name=\"Add2\" value=\"two\">"
            u"<input type=\"hidden\" id=\"Add3\" name=\"Add3\" value=\"two\">"
            u"<input type=\"hidden\" id=\"LocType\" name=\"LocType\" value=\"12\"> "
            u"<tr>\r\n"
            u"   <td class=\"Text\">            </td>\r\n"
            u"   <td class=\"Text\">Main Location:&nbsp;&nbsp;   </td>\r\n"
            u"   <td class=\"Text\">     <img src=\"../custom/tickbox_on.gif\" border=0>     "
            u"<input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" value=\"Y\">   </td>\r\n"
            u"  </tr>\r\n"
            u"<input type=\"hidden\" id=\"EntityType\" name=\"EntityType\" value=\"INDIVIDUAL\">"
            u"<input type=\"hidden\" id=\"SysRef\" name=\"SysRef\" value=\"7\">"
            u"<input type=\"hidden\" id=\"LocRef\" name=\"LocRef\" value=\"-8\">"
            u"<input type=\"hidden\" id=\"AddValidate\" name=\"AddValidate\" "
            u"value=\"Add1,Address:|\">");
}

TEST_F(AddressFormMarkup, WithEveryFieldOnAndHalfOfThemMandatory) {
  Dictionary& texts = TextDictionary();
  const TextView labels[][2] = {
      {u"Display Name", u"Shown:"}, {u"DisplayName", u"\"Shown\""}, {u"Differentiator", u"Kind:"},
      {u"Address1", u"Line 1:"},    {u"Address2", u"Line 2:"},      {u"Address3", u"Line 3:"},
      {u"Town", u"Town:"},          {u"County", u"County:"},        {u"PostCode", u"Code:"},
      {u"Country", u"Land:"},       {u"MainLocation", u"Main:"},    {u"LocationComments", u"More:"},
  };
  for (const auto& label : labels) texts.Set(u"General" + Text(label[0]) + u"0", label[1]);
  context.connectionString.clear();  // nothing needs it
  const auto row = [](TextView marker, TextView label, TextView input) {
    return u"<tr>\r\n   <td class=\"Text\">" + Text(marker) + u"</td>\r\n   <td class=\"Text\">" +
           Text(label) + u"&nbsp;&nbsp;   </td>\r\n   <td class=\"Text\">" + Text(input) +
           u"   </td>\r\n  </tr>\r\n";
  };
  EXPECT_EQ(
      Build({.shown = kAllFields,
             .mandatory = 4 | 16 | 64 | 512 | 2048,
             .displayName = u"d",
             .differentiator = u"e",
             .address1 = u"1",
             .address2 = u"2",
             .address3 = u"3",
             .town = u"t",
             .county = u"c",
             .postcode = u"p",
             .country = u"l",
             .main = u"N",
             .entityType = u"<O>",
             .comments = u"a\r\n<b>"}),
      row(u"*   ", u"Shown:",
          u"<input class=\"AnswerText\" type=\"text\" id=\"DisplayName\" name=\"DisplayName\" "
          u"maxlength=40 size=40 value=\"d\" ReadOnly>") +
          row(u"&nbsp;   ", u"Kind:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Differentiator\" "
              u"name=\"Differentiator\" maxlength=40 size=40 value=\"e\">") +
          row(u"*", u"Line 1:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Add1\" name=\"Add1\" maxlength=40 "
              u"size=40 value=\"1\">") +
          row(u"*   ", u"Line 2:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Add2\" name=\"Add2\" maxlength=40 "
              u"size=40 value=\"2\">") +
          row(u"&nbsp;   ", u"Line 3:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Add3\" name=\"Add3\" maxlength=40 "
              u"size=40 value=\"3\">") +
          row(u"*   ", u"Town:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Town\" name=\"Town\" maxlength=40 "
              u"size=40 value=\"t\">") +
          row(u"&nbsp;   ", u"County:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"County\" name=\"County\" "
              u"maxlength=40 size=40 value=\"c\">") +
          row(u"*   ", u"Code:",
              u"<input class=\"AnswerMoney\" type=\"text\" id=\"PostCode\" name=\"Postcode\" "
              u"maxlength=15 size=40 value=\"p\">") +
          row(u"&nbsp;   ", u"Land:",
              u"<input class=\"AnswerText\" type=\"text\" id=\"Country\" name=\"Country\" "
              u"maxlength=40 size=40 value=\"l\">") +
          u"<input type=\"hidden\" id=\"LocType\" name=\"LocType\" value=\"0\"> " +
          row(u"            ", u"Main:",
              u"     <input type=\"checkbox\" class=\"AnswerCheckBox\" id=\"main_loc\" "
              u"name=\"main_loc\" value=\"Y\">") +
          u"<tr>\r\n   <td class=\"Text\">*   </td>\r\n   <td class=\"Text\" valign=\"top\">More:"
          u"&nbsp;&nbsp;   </td>\r\n   <td class=\"Text\">       <textarea rows=\"4\" "
          u"class=\"AnswerText\" id=\"Comm\" name=\"Comm\">a&#13;&#10;&lt;b&gt;</textarea>   "
          u"</td>\r\n</tr>"
          u"<input type=\"hidden\" id=\"EntityType\" name=\"EntityType\" value=\"&lt;O&gt;\">"
          u"<input type=\"hidden\" id=\"SysRef\" name=\"SysRef\" value=\"0\">"
          u"<input type=\"hidden\" id=\"LocRef\" name=\"LocRef\" value=\"0\">"
          u"<input type=\"hidden\" id=\"AddValidate\" name=\"AddValidate\" value=\""
          u"DisplayName,&quot;Shown&quot;|Add1,Line 1:|Add2,Line 2:|Town,Town:|Postcode,Code:|"
          u"Comm,More:|\">");
}

TEST_F(AddressFormMarkup, TheDisplayNameIsReadOnlyUnlessTheSiteLetsItBeTyped) {
  const struct {
    TextView setting;
    TextView attribute;
  } cases[] = {{u"0", u" ReadOnly"}, {u"1", u""}, {u"2", u" ReadOnly"}};
  for (const auto& c : cases) {
    ConfigDictionary().Set(u"globalDisplayAsReadOnly", c.setting);
    const Text markup = Build({.shown = kAllFields, .displayName = u"name"});
    EXPECT_EQ(Between(markup, u"value=\"name\"", u">"), ToUtf8(c.attribute));
    EXPECT_EQ(markup.find(u" ReadOnly"), markup.rfind(u" ReadOnly"));
  }
}

TEST_F(AddressFormMarkup, CountriesAreOfferedAsAList) {
  const TextView start =
      u"Country&nbsp;&nbsp;   </td>\r\n   <td class=\"Text\">     <select name=\"Cref\" "
      u"id=\"Cref\" class=\"AnswerText\">";
  const TextView end = u"     </select>   </td>\r\n  </tr>\r\n";
  const std::string countries =
      "<option value=\"202\">Bosnia & Herzegovina</option>\r\n"
      "<option value=\"204\">France</option>\r\n"
      "<option value=\"201\">United Kingdom</option>\r\n";
  const auto select = [](std::string options, const std::string& reference) {
    const size_t at = options.find("\"" + reference + "\"");
    return at == std::string::npos ? options
                                   : options.insert(at + 2 + reference.size(), " selected");
  };
  // The site's own country when there is none, and a choice of none.
  Text markup = Build({.shown = kCountryList});
  EXPECT_EQ(Between(markup, start, end),
            "<option value=\"-1\">[Not Specified]</option>" + select(countries, "201"));
  EXPECT_EQ(Validator(markup), "Add1,Address:|");
  EXPECT_NE(markup.find(u"<tr>\r\n   <td class=\"Text\">&nbsp;   </td>\r\n   <td class=\"Text\">"
                        u"Country"),
            Text::npos);

  markup = Build({.shown = kCountryList, .mandatory = kCountryList, .countryRef = u"204"});
  EXPECT_EQ(Between(markup, start, end), select(countries, "204"));
  EXPECT_EQ(Validator(markup), "Add1,Address:|Cref,Country|");

  // Compared as text; a country that is no longer valid is not there.
  for (TextView reference : {u"0204", u"204 ", u"203", u"x"}) {
    markup = Build({.shown = kCountryList, .mandatory = kCountryList, .countryRef = reference});
    EXPECT_EQ(Between(markup, start, end), countries) << ToUtf8(reference);
  }

  TextDictionary().Set(u"Lookup2040", u"La France");
  markup = Build({.shown = kCountryList});
  EXPECT_NE(markup.find(u"<option value=\"204\">La France</option>\r\n"), Text::npos);

  database.Query(u"DELETE FROM lookup WHERE lookup_type_ref = 1");
  markup = Build({.shown = kCountryList, .mandatory = kCountryList});
  EXPECT_EQ(markup.find(u"Cref"), Text::npos);
  EXPECT_EQ(Validator(markup), "Add1,Address:|");
}

TEST_F(AddressFormMarkup, TypesAreOfferedWhenThereIsAListAndADefault) {
  const TextView row =
      u"<tr>\r\n   <td class=\"Text\">         *   </td>\r\n   <td class=\"Text\">Location Type"
      u"&nbsp;&nbsp;   </td>\r\n   <td class=\"Text\">";
  Text markup = Build({.addressType = 11, .addressTypes = u"11,12"});
  EXPECT_EQ(Between(markup, row, u"   </td>\r\n  </tr>\r\n"),
            "<select class=\"AnswerText\" id=\"LocType\" name=\"LocType\">\r\n"
            "\t<option value=\"11\" selected>Home</option>\r\n"
            "\t<option value=\"12\">Work</option>\r\n</select>");
  EXPECT_EQ(Validator(markup), "Add1,Address:|");
  // No row for the list: an empty cell.
  markup = Build({.addressType = 99, .addressTypes = u"99"});
  EXPECT_EQ(Between(markup, row, u"   </td>\r\n  </tr>\r\n"), "");
  const struct {
    int32_t type;
    TextView types;
  } hidden[] = {{0, u"11,12"}, {-3, u"11"}, {11, u""}};
  for (const auto& c : hidden) {
    markup = Build({.addressType = c.type, .addressTypes = c.types});
    EXPECT_EQ(Between(markup, u"<input type=\"hidden\" id=\"LocType\" name=\"LocType\" value=\"",
                      u"\"> "),
              std::to_string(c.type));
  }
}

TEST_F(AddressFormMarkup, TheMainTickMayStayHidden) {
  const Text markup = Build({.main = u"\"N\"", .showsMain = false});
  EXPECT_EQ(Between(markup,
                    u"     <input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" "
                    u"value=\"",
                    u"<"),
            "&quot;N&quot;\">");
  EXPECT_EQ(markup.find(u"Main Location:"), Text::npos);
}

TEST_F(AddressFormMarkup, ThePostcodeLookupIncludesItsScriptOnce) {
  ConfigDictionary().Set(u"globalEnablePaf", u"true");
  const Text first = Build({.pafPrefix = u"home_"});
  const Text prompt =
      u"<tr>\r\n   <td class=\"Text\" colspan=3>\r\nPlease enter the house number into address "
      u"line 1 and the postcode and click 'find address'.<div align=center><input "
      u"class=\"AnswerButton\" id=\"PafButton\" name=\"PafButton\" value=\"Find Address\" "
      u"type=\"Button\" onclick=\"javascript: openPafWindow(this);\"></div>   </td>\r\n  </tr>\r\n";
  const Text include =
      u"<script src=\"../common/paf.js\" language=\"JavaScript\" type=\"text/javascript\">"
      u"</script>";
  const Text block =
      u"<script onerror=\"null\" language=\"JavaScript\">\r\n"
      u"        prefix = 'home_';\r\n"
      u"       //get the form object\r\n"
      u"        myForm=getFormName(prefix);\r\n"
      u"        //prepare the address information\r\n"
      u"        prepareAddressForPaf('', myForm);\r\n"
      u"       //setAddressValuesForPaf(prefix, myForm, '', '', '13 The Road', '', '', 'Surbiton',"
      u" 'Surrey', 'KT1 2NU', 'Germany');\r\n"
      u"       //clearAddressForPaf(prefix, myForm);\r\n"
      u"</script>\r\n";
  EXPECT_TRUE(first.starts_with(prompt)) << ToUtf8(first);
  EXPECT_TRUE(first.ends_with(u"value=\"Add1,Address:|\">" + include + block)) << ToUtf8(first);
  EXPECT_FALSE(includePafScript);
  const Text second = Build({.pafPrefix = u"home_"});
  EXPECT_EQ(second.find(include), Text::npos);
  EXPECT_TRUE(second.ends_with(u"value=\"Add1,Address:|\">" + block));
}

TEST_F(AddressFormMarkup, ShowsLabels) {
  ConfigDictionary().Set(u"globalShowLabel", u"true");
  const Text markup = Build({});
  EXPECT_NE(markup.find(u">(General/Address1)Address:&nbsp;"), Text::npos) << ToUtf8(markup);
  EXPECT_EQ(Validator(markup), "Add1,(General/Address1)Address:|");
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM web_text"), "2");
  Build({});
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM web_text"), "2");
}

TEST_F(AddressFormMarkup, TakesAnyTextInEveryField) {
  Text every;
  for (char16_t c = 1; c < 256; ++c) every.push_back(c);
  const Text huge(1 << 20, u'<');
  const Text odd(u"\0\xD800\xDC00\xDFFF\u4E2D", 5);
  for (const Text& value : {every, huge, odd}) {
    const Text markup = Build({.shown = kAllFields,
                               .displayName = value,
                               .differentiator = value,
                               .address1 = value,
                               .address2 = value,
                               .address3 = value,
                               .town = value,
                               .county = value,
                               .postcode = value,
                               .country = value,
                               .entityType = value,
                               .comments = value});
    // No value ends its attribute or its text area.
    for (size_t at = markup.find(u"value=\""); at != Text::npos;
         at = markup.find(u"value=\"", at)) {
      at = markup.find(u'"', at + 7);
      const Text after = markup.substr(at + 1, 10);
      ASSERT_TRUE(after.starts_with(u">") || after.starts_with(u" ReadOnly>")) << ToUtf8(after);
    }
    EXPECT_EQ(markup.find(u"</textarea>"), markup.rfind(u"</textarea>"));
  }
}

TEST_F(AddressFormMarkup, FailsWithItsSettingsAndItsDatabase) {
  ConfigDictionary().Set(u"globalDisplayAsReadOnly", u"maybe");
  DebugOn(false);  // traps nothing here
  EXPECT_THROW(Build({}), Failure);
  ConfigDictionary().Set(u"globalDisplayAsReadOnly", u"0");
  context.connectionString = u"Driver=Vellum250;Database=/no/such/file;";
  for (TextView key : {u"Address1", u"MainLocation"}) {
    TextDictionary().Set(u"General" + Text(key) + u"0", u"text");
  }
  EXPECT_NO_THROW(Build({}));
  EXPECT_THROW(Build({.shown = kCountryList}), Failure);
  EXPECT_TRUE(includePafScript);
}

}  // namespace
}  // namespace vellum250::forms
