#include "contacts/locations.h"

#include "support/component_test.h"

namespace vellum250::contacts {
namespace {

// What a caller's variables hold before and after a call.
struct Variables {
  Text display;
  Text country;
  Text main;
  uint8_t editLink = 0;
  bool isInvoice = false;
};

class Locations : public support::ComponentTest {
 protected:
  // An address at "1 Road, Leeds", of type 11.
  int32_t Insert(const OwnerKind& kind, int32_t ownerRef, TextView main = u"") {
    v = {};
    v.main = main;
    return InsertAddress(kind, report, ownerRef,
                         {.display = v.display,
                          .address1 = u"1 Road",
                          .town = u"Leeds",
                          .postcode = u"ls1 1aa",
                          .country = v.country},
                         Link(), v.editLink);
  }
  AddressLink Link(TextView differentiator = {}, TextView comments = {}) {
    return {.differentiator = differentiator,
            .addressType = 11,
            .main = v.main,
            .isInvoice = v.isInvoice,
            .comments = comments};
  }
  PostalAddress Empty() { return {.display = v.display, .country = v.country}; }
  // One line for each row: the fields with commas between.
  std::string Rows(TextView sql) {
    std::string lines;
    for (auto rows = database.Query(sql); !rows.Eof(); rows.MoveNext()) {
      for (size_t i = 0; i < rows.Columns().size(); ++i) {
        const Variant& field = rows.Field(i);
        lines += (i == 0 ? "" : ",") + (field.IsNull() ? "NULL" : ToUtf8(ToText(field)));
      }
      lines += "\n";
    }
    return lines;
  }
  std::string IndividualLinks() {
    return Rows(
        u"SELECT ind_loc_ref, individual_ref, type, location_ref, main_location, edit_link, "
        u"differentiator, comments FROM individual_loc ORDER BY ind_loc_ref");
  }

  Variables v;
};

TEST_F(Locations, AreInsertedWithEveryColumnAndTheirLink) {
  v.editLink = 7;
  const int32_t location = InsertAddress(kIndividual, report, 1,
                                         {.display = v.display,
                                          .address1 = u" O'Neil House ",
                                          .address2 = u"2",
                                          .address3 = u"  ",
                                          .town = u"Leeds",
                                          .county = u"west yorks",
                                          .postcode = u" ls1 1aa",
                                          .country = v.country,
                                          .countryRef = 202,
                                          .region1 = 70000},
                                         {.differentiator = u" it's home ",
                                          .addressType = 12,
                                          .main = v.main,
                                          .isInvoice = v.isInvoice,
                                          .comments = u"Ring twice"},
                                         v.editLink);
  EXPECT_EQ(location, 1);
  EXPECT_EQ(v.display, u"O'Neil House, Leeds, WEST YORKS");
  EXPECT_EQ(v.country, u"Bosnia & Herzegovina");
  EXPECT_EQ(v.main, u"'Y'");
  EXPECT_EQ(v.editLink, 1);
  EXPECT_FALSE(v.isInvoice);
  EXPECT_EQ(lastSql,
            u"INSERT INTO individual_loc (individual_ref, differentiator, type, location_ref, "
            u"valid_from, main_location, edit_link, comments) VALUES (1, 'it''s home', 12, 1, "
            u"getdate(), 'Y', 1, 'Ring twice')");
  EXPECT_EQ(Rows(u"SELECT display_name, address1, address2, address3, town, county, postcode, "
                 u"country, country_ref, region1, region2 FROM location"),
            "O'Neil House, Leeds, WEST YORKS,O'Neil House,2,,Leeds,west yorks,LS1 1AA,"
            "Bosnia & Herzegovina,202,70000,NULL\n");
  EXPECT_EQ(IndividualLinks(), "1,1,12,1,Y,1,it's home,Ring twice\n");
  EXPECT_EQ(database.Value(u"SELECT datediff(minute, valid_from, getdate()) FROM individual_loc"),
            "0");
  EXPECT_EQ(database.Value(u"SELECT valid_to FROM individual_loc"), "NULL");
}

TEST_F(Locations, OfEveryKindOfOwnerHaveTheirOwnLinkStatement) {
  EXPECT_EQ(Insert(kOrganisation, 5), 1);
  EXPECT_EQ(lastSql,
            u"INSERT INTO organisation_loc (organisation_ref,differentiator, type, location_ref, "
            u"valid_from, main_location, edit_link, comments) VALUES (5, '', 11, 1, getdate(), "
            u"'Y', 0, NULL)");
  // A member without an invoice address gets this one, for receipts too.
  EXPECT_TRUE(v.isInvoice);
  EXPECT_EQ(Rows(u"SELECT invoice_location, receipt_location FROM member WHERE "
                 u"organisation_ref = 5"),
            "1,1\n");
  EXPECT_EQ(Insert(kContact, 9), 2);
  EXPECT_EQ(lastSql,
            u"INSERT INTO contact_loc (contact_ref,differentiator, type, location_ref, "
            u"valid_from, main_location, edit_link, comments) VALUES (9, '', 11, 2, getdate(), "
            u"'Y', 0, NULL)");
  EXPECT_FALSE(v.isInvoice);
  EXPECT_EQ(database.Value(u"SELECT postcode FROM location WHERE location_ref = 2"), "LS1 1AA");
}

TEST_F(Locations, OneIsTheMainOne) {
  const struct {
    TextView main;
    TextView comesBack;
    std::string links;  // main_location in order
  } cases[] = {
      {u"", u"'Y'", "Y\n"},
      {u"", u"Null", "Y\nNULL\n"},
      {u"y", u"Null", "Y\nNULL\nNULL\n"},
      {u"Y", u"'Y'", "NULL\nNULL\nNULL\nY\n"},
      {u"'Y'", u"Null", "NULL\nNULL\nNULL\nY\nNULL\n"},
  };
  for (const OwnerKind* kind : kOwnerKinds) {
    const int32_t owner = kind == &kIndividual ? 1 : kind == &kOrganisation ? 5 : 9;
    for (const auto& c : cases) {
      Insert(*kind, owner, c.main);
      EXPECT_EQ(v.main, c.comesBack) << ToUtf8(c.main);
      EXPECT_EQ(Rows(u"SELECT main_location FROM " + Text(kind->linkTable) + u" ORDER BY " +
                     Text(kind->linkKey)),
                c.links)
          << ToUtf8(c.main);
    }
  }
  // Another owner's stay as they are.
  Insert(kIndividual, 2, u"Y");
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM individual_loc WHERE main_location = 'Y'"), "2");
}

TEST_F(Locations, AreLinkedToMoreOwners) {
  const int32_t location = Insert(kIndividual, 1);
  v = {};
  EXPECT_EQ(CreateLink(kIndividual, report, 2, location, Link(u" o'b "), 3), 2);
  EXPECT_EQ(lastSql,
            u"INSERT INTO individual_loc (individual_ref, type, location_ref, valid_from, "
            u"main_location, differentiator, edit_link) VALUES (2, 11, 1, getdate(), 'Y', "
            u"' o''b ', 3)");
  EXPECT_TRUE(v.isInvoice);
  // Here the receipt address is not touched.
  EXPECT_EQ(Rows(u"SELECT invoice_location, receipt_location FROM member WHERE "
                 u"individual_ref = 2"),
            "1,NULL\n");
  v = {};
  EXPECT_EQ(CreateLink(kOrganisation, report, 5, location, Link(), 0), 1);
  EXPECT_EQ(lastSql,
            u"INSERT INTO organisation_loc (organisation_ref, type, location_ref, valid_from, "
            u"main_location, differentiator, edit_link) VALUES (5, 11, 1, getdate(), 'Y', '', 0)");
  v = {};
  EXPECT_EQ(CreateLink(kContact, report, 9, location, Link(), 1), 1);
  EXPECT_EQ(lastSql,
            u"INSERT INTO contact_loc (contact_ref, type, location_ref, valid_from, "
            u"main_location, differentiator, edit_link) VALUES (9, 11, 1, getdate(), 'Y', '', 1)");
  v = {};
  EXPECT_EQ(CreateLink(kContact, report, 9, location, Link(), 0), 2);
  EXPECT_EQ(v.main, u"Null");
}

TEST_F(Locations, AreUpdatedInOneBatch) {
  Insert(kIndividual, 1);
  Insert(kIndividual, 1);
  v = {};
  v.main = u"Y";
  v.isInvoice = true;
  database.Query(u"UPDATE individual_loc SET individual_ref = 2");
  EXPECT_EQ(UpdateAddress(kIndividual, report, 2, 2,
                          {.display = v.display,
                           .address1 = u" New'",
                           .address3 = u"3",
                           .town = u"Hull",
                           .postcode = u"hu1 ",
                           .country = v.country,
                           .countryRef = 201,
                           .region1 = 4,
                           .region2 = 5},
                          Link(u" d'", u"c'"), {u"GETDATE()", u"20300102"}),
            2);
  EXPECT_EQ(lastSql,
            u"UPDATE location SET display_name = 'New'', Hull', address1 = 'New''', address2 = "
            u"null, address3 = '3', town = 'Hull', county = null, postcode = 'hu1', country = "
            u"'United Kingdom', country_ref = 201, region1 = 4, region2 = 5 WHERE location_ref = 2"
            u"\r\nUPDATE individual_loc SET main_location = NULL WHERE individual_ref = 2"
            u"\r\nUPDATE individual_loc SET type = 11, differentiator = ' d''', main_location = "
            u"'Y', valid_from = GetDate(), valid_to = '20300102', comments = 'c''' WHERE "
            u"ind_loc_ref = 2");
  EXPECT_EQ(v.main, u"'Y'");
  EXPECT_EQ(v.display, u"New', Hull");
  EXPECT_EQ(IndividualLinks(), "1,2,11,1,NULL,0,,NULL\n2,2,11,2,Y,0, d',c'\n");
  EXPECT_EQ(Rows(u"SELECT display_name, county, postcode, country, region1, region2 FROM location "
                 u"ORDER BY location_ref"),
            "1 Road, Leeds,NULL,LS1 1AA,NULL,NULL,NULL\n"
            "New', Hull,NULL,hu1,United Kingdom,4,5\n");
  EXPECT_EQ(database.Value(u"SELECT convert(varchar, valid_to, 112) FROM individual_loc WHERE "
                           u"ind_loc_ref = 2"),
            "20300102");
  EXPECT_EQ(Rows(u"SELECT invoice_location, receipt_location FROM member WHERE "
                 u"individual_ref = 2"),
            "2,NULL\n");
}

TEST_F(Locations, UpdatesClearWhatIsEmptyAndLeaveTheRest) {
  Insert(kOrganisation, 5);
  v = {};
  v.display = u"d";
  AddressLink link = Link();
  link.addressType = 0;
  EXPECT_EQ(UpdateAddress(kOrganisation, report, 1, 1, Empty(), link, {}), 1);
  EXPECT_EQ(lastSql,
            u"UPDATE location SET display_name = 'd', address1 = null, address2 = null, address3 "
            u"= null, town = null, county = null, postcode = null, country = null, country_ref = "
            u"null, region1 = null, region2 = null WHERE location_ref = 1\r\nUPDATE "
            u"organisation_loc SET differentiator = null, comments = null WHERE org_loc_ref = 1");
  EXPECT_EQ(Rows(u"SELECT type, main_location FROM organisation_loc"), "11,Y\n");
  // Without a link only the location is written.
  UpdateAddress(kOrganisation, report, 1, 0, Empty(), link, {});
  EXPECT_EQ(lastSql.find(u"organisation_loc"), Text::npos);
}

TEST_F(Locations, UpdatesSayNotMainInEachKindsWay) {
  for (const OwnerKind* kind : kOwnerKinds) {
    Insert(*kind, kind == &kIndividual ? 1 : kind == &kOrganisation ? 5 : 9);
    v = {};
    v.display = u"d";
    v.main = u"N";
    if (kind == &kContact) {
      EXPECT_EQ(UpdateContactAddress(report, 1, Empty(), Link(), {}), 3);
    } else {
      UpdateAddress(*kind, report, 1, 1, Empty(), Link(), {});
    }
    const TextView stored = kind == &kOrganisation ? u"'N'" : u"Null";
    EXPECT_EQ(v.main, stored);
    EXPECT_NE(lastSql.find(u"main_location = " + Text(stored) + u", "), Text::npos)
        << ToUtf8(lastSql);
  }
}

TEST_F(Locations, AContactsUpdateTraces) {
  Insert(kContact, 9);
  const auto update = [&](TextView from) {
    v = {};
    v.display = u"d";
    lastError = u"before";
    return UpdateContactAddress(report, 1, Empty(), Link(), {from, {}});
  };
  EXPECT_EQ(update({}), 1);
  EXPECT_EQ(lastError, u"before");
  EXPECT_THROW(update(u"no date"), Failure);
  DebugOn(false);
  EXPECT_EQ(update({}), 1);
  EXPECT_EQ(lastError, u"0: ");
  EXPECT_EQ(update(u"no date"), 0);
  EXPECT_TRUE(lastError.starts_with(u"-2147217")) << ToUtf8(lastError);
  DebugOn(true);
  EXPECT_EQ(update({}), 1);
  EXPECT_EQ(lastError, u"before");
  EXPECT_EQ(update(u"no date"), 0);
  EXPECT_TRUE(lastError.starts_with(u"Description: ")) << ToUtf8(lastError);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 3 of 3")) << ToUtf8(lastError);
}

TEST_F(Locations, ASecondRegionLeavesTheInsertOpen) {
  v.display = u"d";
  PostalAddress address = Empty();
  address.region2 = 1;
  EXPECT_THROW(InsertAddress(kIndividual, report, 1, address, Link(), v.editLink), Failure);
  DebugOn(false);
  EXPECT_EQ(InsertAddress(kIndividual, report, 1, address, Link(), v.editLink), 0);
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM location"), "0");
  // The link to location 0 is what the tables refuse.
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 4 of 6")) << ToUtf8(lastError);
  EXPECT_TRUE(lastSql.starts_with(u"INSERT INTO individual_loc ")) << ToUtf8(lastSql);
  EXPECT_EQ(IndividualLinks(), "");
}

TEST_F(Locations, FailInTheMiddleWithWhatTheyHaveSoFar) {
  v.display = u"d";
  // The comments stand in the statement as they are.
  const auto insert = [&] {
    v.main.clear();
    return InsertAddress(kIndividual, report, 1, Empty(), Link({}, u"it's"), v.editLink);
  };
  EXPECT_THROW(insert(), Failure);
  EXPECT_EQ(lastError, u"");
  DebugOn(true);
  EXPECT_EQ(insert(), 2);
  EXPECT_EQ(v.main, u"'Y'");
  EXPECT_TRUE(lastError.starts_with(u"Description: ")) << ToUtf8(lastError);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 4 of 6")) << ToUtf8(lastError);
  EXPECT_EQ(IndividualLinks(), "");
  // The location stays: there is no transaction.
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM location"), "2");

  // Nothing to make a display name of: reported, and stored without one.
  v = {};
  EXPECT_EQ(InsertAddress(kIndividual, report, 1, Empty(), Link(), v.editLink), 3);
  EXPECT_TRUE(lastError.starts_with(u"DisplayAddressName:- 5: ")) << ToUtf8(lastError);
  context.sysDebug = false;
  EXPECT_THROW(InsertAddress(kIndividual, report, 1, Empty(), Link(), v.editLink), Failure);
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM location"), "3");

  DebugOn(true);
  context.connectionString = u"Driver=Vellum250;Database=/no/such/file;";
  EXPECT_EQ(Insert(kIndividual, 1), 0);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 2 of 6")) << ToUtf8(lastError);
}

TEST_F(Locations, TheRightToEditMovesToOneLink) {
  const int32_t location = Insert(kIndividual, 1);
  for (const OwnerKind* kind : {&kIndividual, &kOrganisation, &kContact}) {
    v = {};
    CreateLink(*kind, report,
               kind == &kIndividual     ? 2
               : kind == &kOrganisation ? 5
                                        : 9,
               location, Link(), 1);
  }
  const auto editLinks = [&] {
    return Rows(
        u"SELECT 'I' AS kind, ind_loc_ref AS link FROM individual_loc WHERE edit_link = 1 UNION "
        u"SELECT 'O', org_loc_ref FROM organisation_loc WHERE edit_link = 1 UNION "
        u"SELECT 'C', cont_loc_ref FROM contact_loc WHERE edit_link = 1 ORDER BY 1, 2");
  };
  EXPECT_EQ(editLinks(), "C,1\nI,2\nO,1\n");
  const struct {
    int32_t newOwner;
    TextView entityType;
    bool changed;
    std::string editLinks;
  } cases[] = {
      {99, u"I", false, "C,1\nI,2\nO,1\n"},
      {1, u"X", false, "C,1\nI,2\nO,1\n"},
      {1, u"", false, "C,1\nI,2\nO,1\n"},
      {1, u"INDIVIDUAL", true, "I,1\n"},
      {1, u"organisation", true, "O,1\n"},
      {1, u"c", true, "C,1\n"},
      {0, u"C", false, "C,1\n"},
      {2, u"i", true, "I,2\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ChangeLocationOwner(report, location, c.newOwner, c.entityType), c.changed)
        << ToUtf8(c.entityType);
    EXPECT_EQ(editLinks(), c.editLinks) << ToUtf8(c.entityType);
  }
  // False when it failed midway.
  database.Query(u"DROP TABLE organisation_loc");
  EXPECT_THROW(ChangeLocationOwner(report, location, 1, u"I"), Failure);
  DebugOn(true);
  EXPECT_FALSE(ChangeLocationOwner(report, location, 1, u"I"));
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 3 of 5")) << ToUtf8(lastError);
  EXPECT_EQ(lastSql, u"UPDATE organisation_loc SET edit_link = 0 WHERE location_ref = 1");
}

TEST_F(Locations, LinksEndButAreNotDeleted) {
  Insert(kIndividual, 1);
  Insert(kOrganisation, 5);
  Insert(kContact, 9);
  const auto ended = [&] {
    return Rows(
        u"SELECT count(i.valid_to), count(o.valid_to), count(c.valid_to) FROM individual_loc i, "
        u"organisation_loc o, contact_loc c");
  };
  InvalidateLocation(report, 0, 0, 0);
  InvalidateLocation(report, -1, 99, 0);
  EXPECT_EQ(ended(), "0,0,0\n");
  InvalidateLocation(report, 0, 1, 0);
  EXPECT_EQ(ended(), "0,1,0\n");
  InvalidateLocation(report, 1, 1, 1);
  EXPECT_EQ(ended(), "1,1,1\n");
  database.Query(u"DROP TABLE organisation_loc");
  EXPECT_THROW(InvalidateLocation(report, 0, 1, 1), Failure);
  DebugOn(true);
  InvalidateLocation(report, 0, 1, 1);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 2 of 3")) << ToUtf8(lastError);
}

TEST_F(Locations, KeepHostileTextsApartFromTheSql) {
  const Text hostile[] = {
      u"'); DROP TABLE location --",
      u"\\'",
      Text(u"a\0b", 3),
      u"\u20AC \u00E9 \u0153",
      u"%_[]",
      u"--",
      u"/*",
  };
  for (const Text& text : hostile) {
    v = {};
    const int32_t location = InsertAddress(kIndividual, report, 1,
                                           {.display = v.display,
                                            .address1 = text,
                                            .address2 = text,
                                            .town = u"Leeds",
                                            .country = v.country},
                                           Link(text), v.editLink);
    ASSERT_GT(location, 0) << ToUtf8(text);
    const auto row = database.Query(
        u"SELECT address1, differentiator FROM location l JOIN individual_loc ll ON "
        u"l.location_ref = ll.location_ref WHERE l.location_ref = " +
        NumberText(location));
    EXPECT_EQ(row.Field(0), Variant(text)) << ToUtf8(text);
    EXPECT_EQ(row.Field(1), Variant(text)) << ToUtf8(text);
  }
  // varchar has no characters beyond its code page.
  v = {};
  ASSERT_GT(InsertAddress(kIndividual, report, 1,
                          {.display = v.display,
                           .address1 = u"\xD800 \xDC00 \U0001F600 \u4E2D",
                           .town = u"Leeds",
                           .country = v.country},
                          Link(u"beyond"), v.editLink),
            0);
  EXPECT_EQ(
      database.Query(u"SELECT max(address1) FROM location WHERE address1 LIKE '? %'").Field(0),
      Variant(Text(u"? ? ?? ?")));
  // Too long for its column: nothing is stored, and the failure is clear.
  v = {};
  v.display = u"d";
  PostalAddress address = Empty();
  const Text huge(1 << 20, u'x');
  address.town = huge;
  EXPECT_THROW(InsertAddress(kIndividual, report, 1, address, Link(), v.editLink), Failure);
  EXPECT_EQ(database.Value(u"SELECT count(*) FROM location"),
            std::to_string(std::size(hostile) + 1));
}

}  // namespace
}  // namespace vellum250::contacts
