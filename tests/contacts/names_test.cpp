#include "contacts/names.h"

#include "support/component_test.h"

namespace vellum250::contacts {
namespace {

using Names = support::ComponentTest;

TEST_F(Names, OfAddressesAreTheirPartsThatAreNotBlank) {
  const struct {
    TextView address1, town, county, name;
  } cases[] = {
      {u" 12 High Street", u"Leeds", u"west yorks", u"12 High Street, Leeds, WEST YORKS"},
      {u"", u"Leeds", u"", u"Leeds"},
      {u"  ", u" ", u" caf\u00E9 ", u"CAF\u00C9"},
      {u"a", u"", u"b", u"a, B"},
      {u"\t", u"", u"", u"\t"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DisplayAddressName(report, c.address1, c.town, c.county), c.name);
  }
  EXPECT_EQ(lastError, u"");
}

TEST_F(Names, OfNoAddressFail) {
  try {
    DisplayAddressName(report, u"", u" ", u"");
    ADD_FAILURE() << "nothing was raised";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 5);
  }
  DebugOn(true);
  EXPECT_EQ(DisplayAddressName(report, u"", u" ", u""), u"");
  EXPECT_TRUE(lastError.starts_with(u"DisplayAddressName:- 5: Invalid procedure call or argument"))
      << ToUtf8(lastError);
}

TEST_F(Names, InitialsKeepTheirSeparators) {
  const struct {
    TextView forenames, initials;
  } cases[] = {
      {u"", u""},
      {u"john", u"j"},
      {u"John", u"J"},
      {u"john paul", u"J P"},
      {u"mary-jane", u"M-J"},
      {u"j.r.", u"J.R."},
      {u"anne marie", u"A M"},
      {u" anne", u"  A"},
      {u"a  b", u"A   B"},
      {u"-", u"--"},
      {u"jean-luc p.", u"J-L P."},
      {u"\u00E9mile zo\u00EB", u"\u00C9 Z"},
  };
  for (const auto& c : cases) EXPECT_EQ(Initials(c.forenames), c.initials) << ToUtf8(c.forenames);
}

TEST_F(Names, FirstWordEndsAtTheFirstBlank) {
  const struct {
    TextView text, word;
  } cases[] = {{u"", u""},      {u"Mary Jane Ann", u"Mary"}, {u"Mary", u"Mary"},
               {u" Mary", u""}, {u"Mary ", u"Mary"},         {u"Mary\tJane", u"Mary\tJane"}};
  for (const auto& c : cases) EXPECT_EQ(FirstWord(c.text), c.word);
}

TEST_F(Names, FollowTheSitesTemplates) {
  const PersonName mary{u"Dr", u"Smith", u"Mary Jane", u"BSc", u"M J"};
  EXPECT_EQ(FormattedName(NameForm::Salutation, mary), u"Dr Smith");
  EXPECT_EQ(FormattedName(NameForm::KnownAs, mary), u"Mary");
  EXPECT_EQ(FormattedName(NameForm::Label, mary), u"Dr Smith");
  EXPECT_EQ(FormattedName(NameForm::Label, {u"", u"Smith", u"", u"", u""}), u"Smith");
  EXPECT_EQ(FormattedName(NameForm::KnownAs, {}), u"");

  database.Query(
      u"INSERT INTO app_profile (section, entry, value) VALUES "
      u"('LabelName', 'Salutation', ' <Initials>.<Surname>.<Title>.<Honours>.<Forenames> '), "
      u"('LabelName', 'KnownAs', '<Forename1>/<Forename1>/<Title>'), "
      u"('LabelName', 'Label', '<title> <Forename1>')");
  EXPECT_EQ(FormattedName(NameForm::Salutation, mary), u"M J.Smith.Dr.BSc.Mary Jane");
  EXPECT_EQ(FormattedName(NameForm::KnownAs, mary), u"Mary/Mary/Dr");
  // Case counts, and a first name is known to the known-as name alone.
  EXPECT_EQ(FormattedName(NameForm::Label, mary), u"<title> <Forename1>");
  // In this order: what stands in a part is replaced as well.
  EXPECT_EQ(FormattedName(NameForm::Salutation, {u"<Honours>", u"<Title>", u"", u"x", u""}),
            u".<Title>.x.x.");

  for (TextView none : {u"False", u""}) {
    database.Query(u"UPDATE app_profile SET value = '" + Text(none) + u"'");
    EXPECT_EQ(FormattedName(NameForm::Label, mary), u"Dr Smith") << ToUtf8(none);
  }
}

TEST_F(Names, ThatTheDatabaseCannotGiveFail) {
  context.connectionString = u"Driver=Vellum250;Database=/no/such/file;";
  EXPECT_THROW(FormattedName(NameForm::Label, {}), Failure);
}

}  // namespace
}  // namespace vellum250::contacts
