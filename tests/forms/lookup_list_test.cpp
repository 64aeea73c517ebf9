#include "forms/lookup_list.h"

#include "support/component_test.h"

namespace vellum250::forms {
namespace {

class LookupList : public support::ComponentTest {
 protected:
  LookupList() { ConfigDictionary().Set(u"globalShowLabel", u"false"); }
};

TEST_F(LookupList, OffersTheRowsInOrderOfTheirDescription) {
  EXPECT_EQ(AddressDropDownList(report, {.types = u"11, 12,13,99", .selected = 12}),
            Variant(u"<select class=\"AnswerText\" id=\"LocType\" name=\"LocType\">\r\n"
                    u"\t<option value=\"13\">Agent</option>\r\n"
                    u"\t<option value=\"11\">Home</option>\r\n"
                    u"\t<option value=\"12\" selected>Work</option>\r\n"
                    u"</select>"));
  TextDictionary().Set(u"Lookup110", u"<b>My home</b>");
  EXPECT_EQ(AddressDropDownList(report, {.types = u"11", .id = u"Other"}),
            Variant(u"<select class=\"AnswerText\" id=\"Other\" name=\"Other\">\r\n"
                    u"\t<option value=\"11\"><b>My home</b></option>\r\n"
                    u"</select>"));
}

TEST_F(LookupList, IsEmptyWithoutRows) {
  EXPECT_TRUE(AddressDropDownList(report, {.types = u"99"}).IsEmpty());
}

TEST_F(LookupList, KeepsOrDropsCodesWithAPrefix) {
  const struct {
    bool keeps;
    TextView prefix;
    TextView filter;
    TextView references;  // that are offered
  } cases[] = {
      {false, u"", u"", u"13 11 12"},
      {true, u"", u"", u"13 11 12"},
      {true, u"WORK", u" AND  lookup_code LIKE 'WORK%'", u"13 12"},
      {false, u"WORK", u" AND NOT  lookup_code LIKE 'WORK%'", u"11"},
      {true, u"NONE", u" AND  lookup_code LIKE 'NONE%'", u""},
  };
  DebugOn(false);
  for (const auto& c : cases) {
    const Variant list = AddressDropDownList(
        report, {.types = u"11,12,13", .keepsPrefix = c.keeps, .codePrefix = c.prefix});
    Text references;
    if (const Text* markup = list.If<Text>()) {
      for (size_t at = 0; (at = markup->find(u"value=\"", at)) != Text::npos; ++at) {
        references += (references.empty() ? u"" : u" ") + markup->substr(at + 7, 2);
      }
    }
    EXPECT_EQ(references, c.references);
    EXPECT_EQ(lastError,
              u"0: \r\nQuery:SELECT lookup_ref, lookup_full_desc FROM lookup WHERE lookup_ref IN "
              u"(11,12,13) " +
                  Text(c.filter) +
                  u" ORDER BY lookup_full_desc<br>Contains:"
                  u"<br>Contains Bool:");
  }
}

TEST_F(LookupList, RefusesWhatIsNoListOfReferences) {
  const struct {
    TextView types;
    TextView prefix;
  } cases[] = {
      {u"1); DROP TABLE lookup --", u""}, {u"SELECT", u""}, {u"1--", u""},
      {u"1", u"x' OR '1' LIKE '"},        {u"", u""},
  };
  for (const auto& c : cases) {
    EXPECT_THROW(AddressDropDownList(report, {.types = c.types, .codePrefix = c.prefix}), Failure)
        << ToUtf8(c.types);
  }
  EXPECT_EQ(lastError, u"");
  DebugOn(true);
  EXPECT_TRUE(AddressDropDownList(report, {.types = u"x"}).IsEmpty());
  EXPECT_EQ(lastError,
            u"Description: Invalid procedure call or argument: AddressTypes is no list of lookup "
            u"references<br>Source: vellum250<br>Step: 1 of 2");
  DebugOn(false);
  EXPECT_TRUE(AddressDropDownList(report, {.types = u"x"}).IsEmpty());
  EXPECT_TRUE(
      lastError.starts_with(u"5: Invalid procedure call or argument: AddressTypes is no "
                            u"list of lookup references\r\nQuery:SELECT"))
      << ToUtf8(lastError);
}

TEST_F(LookupList, FailsWithoutItsDatabase) {
  context.connectionString = u"Driver=Vellum250;Database=/no/such/file;";
  EXPECT_THROW(AddressDropDownList(report, {.types = u"11"}), Failure);
  DebugOn(true);
  EXPECT_TRUE(AddressDropDownList(report, {.types = u"11"}).IsEmpty());
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 1 of 2")) << ToUtf8(lastError);
}

}  // namespace
}  // namespace vellum250::forms
