#include "forms/amendment.h"

#include "contacts/owner_kind.h"
#include "support/component_test.h"

namespace vellum250::forms {
namespace {

// A form as it is posted, with variables for what comes back.
struct Post {
  Text entityType = u"Individual";
  int32_t owner = 1;
  int32_t link = 0;
  Text displayName;
  Text differentiator;
  Text address1 = u"1 Road";
  Text address2;
  Text town = u"Leeds";
  Text postcode = u"LS1 1AA";
  Text country;
  int32_t countryRef = 201;
  Text main = u"N";
  int32_t type = 11;
  Text validator;
  bool checksOnly = false;
  bool isInvoice = false;
  int32_t linkTo[3] = {0, 0, 0};
  int32_t action = 0;
  Text comments;
};

struct Kind {
  const contacts::OwnerKind& kind;
  int32_t owner;
};
constexpr Kind kKinds[] = {
    {contacts::kIndividual, 1}, {contacts::kOrganisation, 5}, {contacts::kContact, 9}};

class Amending : public support::ComponentTest {
 protected:
  Amending() { Configure(u"globalDisplayAsReadOnly", u"0"); }

  void Configure(TextView key, TextView setting) { ConfigDictionary().Set(key, setting); }

  int32_t Amend(Post& p) {
    return AmendLocation(report, {.entityType = p.entityType,
                                  .ownerRef = p.owner,
                                  .linkRef = p.link,
                                  .displayName = p.displayName,
                                  .differentiator = p.differentiator,
                                  .address1 = p.address1,
                                  .address2 = p.address2,
                                  .town = p.town,
                                  .postcode = p.postcode,
                                  .country = p.country,
                                  .countryRef = p.countryRef,
                                  .main = p.main,
                                  .addressType = p.type,
                                  .validator = p.validator,
                                  .checksOnly = p.checksOnly,
                                  .isInvoice = p.isInvoice,
                                  .linkToIndividual = p.linkTo[0],
                                  .linkToOrganisation = p.linkTo[1],
                                  .linkToContact = p.linkTo[2],
                                  .overrideAction = p.action,
                                  .comments = p.comments});
  }
  static Post Of(const Kind& k) {
    Post post;
    post.entityType = k.kind.name;
    post.owner = k.owner;
    return post;
  }
  // Empties the tables of addresses and stores one; gives its link.
  int32_t StoreOne(const Kind& k, const Text& displayName = {}) {
    database.Query(
        u"UPDATE member SET invoice_location = NULL, receipt_location = NULL "
        u"DELETE FROM individual_loc DELETE FROM organisation_loc DELETE FROM contact_loc "
        u"DELETE FROM location");
    Post post = Of(k);
    post.displayName = displayName;
    return Amend(post);
  }
  // Makes every choice between update and replacement come out the same.
  void ConfigureAction(TextView action) {
    Configure(u"globalLocationUpdate_11", action);
    Configure(u"globalNewUpdate", action == u"1" ? u"100" : u"0");
  }
  std::string Count(TextView what) { return database.Value(u"SELECT count(*) FROM " + Text(what)); }
};

TEST_F(Amending, ListsTheMandatoryFieldsThatAreEmpty) {
  Post post;
  post.address1 = post.town = post.postcode = u"";
  post.countryRef = 0;
  const struct {
    TextView validator;
    TextView messages;
  } cases[] = {
      {u"Add1,Address:|Town,Town:|",
       u"|Address: is a mandatory field.|Town: is a mandatory field."},
      // Without a comma the piece is id and label; letter case and order do not matter.
      {u"postcode", u"|postcode is a mandatory field."},
      {u"CREF,Land, please|add3,|ADD2",
       u"|Land, please is a mandatory field.| is a mandatory field.|ADD2 is a mandatory field."},
      {u"Comm,C|Differentiator,D|County,Y|Country,N|",
       u"|C is a mandatory field.|D is a mandatory field.|Y is a mandatory field.|N is a mandatory "
       u"field."},
      // Shown read-only, and therefore never missing.
      {u"Unknown,x|DisplayName,d|,Add1|||Add1 ,z|Town,T", u"|T is a mandatory field."},
  };
  for (const auto& c : cases) {
    lastError.clear();
    post.validator = c.validator;
    EXPECT_EQ(Amend(post), -1) << ToUtf8(c.validator);
    EXPECT_EQ(lastError, c.messages);
  }
  Configure(u"globalDisplayAsReadOnly", u"1");
  post.validator = u"DisplayName,d";
  EXPECT_EQ(Amend(post), -1);
  EXPECT_EQ(lastError, u"|d is a mandatory field.");
  EXPECT_EQ(Count(u"location"), "0");
}

TEST_F(Amending, ChecksWithoutADatabase) {
  context.connectionString.clear();
  Post post;
  post.checksOnly = true;
  post.validator = u"Add1,A|Town,T|Postcode,P|Cref,C|DisplayName,D|";
  EXPECT_EQ(Amend(post), 0);
  post.validator = Text(1 << 20, u'|') + u"Add2,x";
  EXPECT_EQ(Amend(post), -1);
  EXPECT_EQ(lastError, u"|x is a mandatory field.");
  post.checksOnly = false;
  post.validator.clear();
  EXPECT_THROW(Amend(post), Failure);
}

TEST_F(Amending, ANewAddressBecomesTheMainOneAndGivesItsLink) {
  for (const Kind& k : kKinds) {
    Post post = Of(k);
    post.link = 0;
    post.differentiator = u"first";
    EXPECT_EQ(Amend(post), 1);
    EXPECT_EQ(post.link, 1);
    EXPECT_EQ(post.main, u"'Y'");
    post = Of(k);
    EXPECT_EQ(Amend(post), 2);
    EXPECT_EQ(post.main, u"Null");
    const Text table(k.kind.linkTable);
    EXPECT_EQ(
        database.Value(u"SELECT main_location FROM " + table + u" WHERE location_ref % 2 = 1"),
        "Y");
    EXPECT_EQ(Count(table + u" WHERE edit_link = 1 AND type = 11 AND valid_to IS NULL"), "2");
    EXPECT_EQ(Count(table + u" WHERE differentiator = 'first'"), "1");
  }
  EXPECT_EQ(database.Value(u"SELECT country FROM location WHERE location_ref = 1"),
            "United Kingdom");
  EXPECT_EQ(database.Value(u"SELECT display_name FROM location WHERE location_ref = 1"),
            "1 Road, Leeds");
}

TEST_F(Amending, AnUnknownKindWritesNothing) {
  Post post;
  post.entityType = u"PERSON";
  post.link = 77;
  EXPECT_EQ(Amend(post), 77);
  EXPECT_EQ(post.main, u"N");
  EXPECT_EQ(Count(u"location"), "0");
}

TEST_F(Amending, PostingWhatIsStoredChangesNothing) {
  ConfigureAction(u"2");
  for (const Kind& k : kKinds) {
    Post first = Of(k);
    first.differentiator = u"it's";
    first.comments = u"it''s";  // not quoted on its way in
    Amend(first);
    Post second = Of(k);
    second.countryRef = 0;
    second.country = u"Utopia";
    Amend(second);
    const std::string locations = Count(u"location");

    const auto repost = [&](int32_t link, auto change) {
      Post post = Of(k);
      post.link = link;
      if (link == 1) {
        post.main = u"Y";
        post.differentiator = u"it's";
        post.comments = u"it's";
      } else {
        post.countryRef = 0;
        post.country = u"Utopia";
      }
      change(post);
      return Amend(post);
    };
    EXPECT_EQ(repost(1, [](Post&) {}), 0);
    EXPECT_EQ(lastSql,
              u"SELECT l.location_ref, isNull(ll.Differentiator, '') AS differentiator, "
              u"isNull(l.display_name, '') AS display_name, isNull(ll.main_location, '') AS "
              u"main_location, isNull(ll.type, '') AS type, isNull(l.address1, '') AS address1, "
              u"isNull(l.address2, '') AS address2, isNull(l.address3, '') AS address3, "
              u"isNull(l.town, '') AS town, isNull(l.county, '') AS county, isNull(l.postcode, '')"
              u" AS postcode, isNull(l.country, '') AS country, isNull(l.country_ref, 0) AS "
              u"country_ref, isNull(ll.comments, '') AS comments FROM " +
                  Text(k.kind.linkTable) +
                  u" ll JOIN location l ON l.location_ref = ll.location_ref" +
                  (k.owner == 9 ? u" " : u"  ") + u"WHERE ll." + Text(k.kind.linkKey) + u" = 1");
    // A country posted as text beside its choice, and a display name that is not taken from the
    // post.
    EXPECT_EQ(repost(1, [](Post& p) { p.country = u"United Kingdom"; }), 0);
    EXPECT_EQ(repost(1, [](Post& p) { p.displayName = u"Another"; }), 0);
    EXPECT_EQ(repost(2, [](Post& p) { p.main = u""; }), 0);
    EXPECT_EQ(Count(u"location"), locations);
    // Stored NULL and 0 are not what is posted here.
    EXPECT_EQ(repost(2, [](Post& p) { p.main = u"N"; }), 2);
    EXPECT_EQ(repost(2, [](Post& p) { p.countryRef = -1; }), 2);
  }
}

TEST_F(Amending, ACountryTypedForTheFirstTimeIsAChange) {
  ConfigureAction(u"1");
  Post post;
  post.countryRef = 0;
  post.country = u"";
  post.link = Amend(post);
  post.main = u"Y";
  EXPECT_EQ(Amend(post), 0);
  post.country = u"Portugal";
  EXPECT_EQ(Amend(post), post.link);
  EXPECT_EQ(database.Query(u"SELECT country FROM location").Field(0), Variant(u"Portugal"));
}

TEST_F(Amending, EveryFieldCountsAsAChange) {
  Configure(u"globalDisplayAsReadOnly", u"1");
  Configure(u"globalLocationUpdate_11", u"0");
  Configure(u"globalLocationUpdate_12", u"0");
  // The change after which the count reaches the limit makes a new location.
  const std::pair<const char*, void (*)(Post&)> changes[] = {
      {"nothing", [](Post&) {}},
      {"display name", [](Post& p) { p.displayName = u"x"; }},
      {"main", [](Post& p) { p.main = u"N"; }},
      {"differentiator", [](Post& p) { p.differentiator = u"x"; }},
      {"type", [](Post& p) { p.type = 12; }},
      {"address1", [](Post& p) { p.address1 = u"1 ROAD"; }},
      {"address2", [](Post& p) { p.address2 = u"x"; }},
      {"town", [](Post& p) { p.town = u"Leeds "; }},
      {"postcode", [](Post& p) { p.postcode = u"ls1 1aa"; }},
      {"country", [](Post& p) { p.country = u"Utopia", p.countryRef = 201; }},
      {"country ref", [](Post& p) { p.country = u"United Kingdom", p.countryRef = 204; }},
      {"comments", [](Post& p) { p.comments = u"x"; }},
  };
  Configure(u"globalNewUpdate", u"1");
  for (const auto& [name, change] : changes) {
    Post post;
    post.link = StoreOne(kKinds[0], u"1 Road, Leeds");
    const int32_t link = post.link;
    post.main = u"Y";
    post.displayName = u"1 Road, Leeds";
    change(post);
    const bool same = std::string(name) == "nothing" || std::string(name) == "country";
    EXPECT_EQ(Amend(post), same ? 0 : link) << name;
    EXPECT_EQ(Count(u"location"), same ? "1" : "2") << name;
  }
}

TEST_F(Amending, TheSettingOfTheTypeDecidesOrTheNumberOfChanges) {
  const struct {
    TextView ofType;
    TextView newUpdate;
    int32_t action;
    bool replaces;
  } cases[] = {
      {u"1", u"0", 0, false},  {u"2", u"100", 0, true}, {u"0", u"2", 0, true},
      {u"0", u"3", 0, false},  {u"7", u"2", 0, true},   {u"2", u"100", 1, false},
      {u"1", u"100", 2, true}, {u"1", u"2", 9, true},   {u"1", u"3", 9, false},
  };
  for (const auto& c : cases) {
    for (const Kind& k : kKinds) {
      const bool isContact = &k.kind == &contacts::kContact;
      Configure(u"globalLocationUpdate_11", c.ofType);
      Configure(u"globalNewUpdate", c.newUpdate);
      Post post = Of(k);
      const int32_t link = StoreOne(k);
      post.link = link;
      post.main = u"Y";
      post.town = u"Hull";
      post.address2 = u"x";
      post.action = c.action;
      EXPECT_EQ(Amend(post), link);
      EXPECT_EQ(post.link, link);
      // Contacts have no setting of their own.
      const bool byCount = isContact && c.action == 0;
      const bool replaces = byCount ? c.newUpdate != u"100" && c.newUpdate != u"3" : c.replaces;
      EXPECT_EQ(Count(u"location"), replaces ? "2" : "1")
          << ToUtf8(k.kind.name) << " " << ToUtf8(c.ofType) << " " << ToUtf8(c.newUpdate) << " "
          << c.action;
      const Text table(k.kind.linkTable);
      EXPECT_EQ(Count(table + u" WHERE valid_to IS NOT NULL"), replaces ? "1" : "0");
      EXPECT_EQ(
          database.Value(u"SELECT town FROM location l JOIN " + table +
                         u" ll ON l.location_ref = ll.location_ref WHERE ll.main_location = 'Y'"),
          "Hull");
    }
  }
}

TEST_F(Amending, ALinkThatMayNotEditIsReplaced) {
  ConfigureAction(u"1");
  for (const Kind& k : kKinds) {
    Post post = Of(k);
    const int32_t link = StoreOne(k);
    database.Query(u"UPDATE " + Text(k.kind.linkTable) + u" SET edit_link = 0");
    post.link = link;
    post.main = u"Y";
    post.town = u"Hull";
    EXPECT_EQ(Amend(post), link);
    EXPECT_EQ(Count(u"location"), "2");
    // Unless it is forced.
    post.town = u"York";
    post.action = 1;
    EXPECT_EQ(Amend(post), link);
    EXPECT_EQ(Count(u"location"), "2");
    EXPECT_EQ(Count(u"location WHERE town = 'York'"), "1");
  }
}

TEST_F(Amending, ANewLocationIsLinkedToFurtherOwners) {
  Post post;
  post.linkTo[0] = 2;
  post.linkTo[1] = 5;
  post.linkTo[2] = 9;
  post.differentiator = u"shared";
  database.Query(
      u"INSERT INTO location (town) VALUES ('other') "
      u"INSERT INTO contact_loc (contact_ref, location_ref, main_location) VALUES (9, 1, 'Y')");
  EXPECT_EQ(Amend(post), 1);
  EXPECT_EQ(Count(u"individual_loc WHERE location_ref = 2 AND individual_ref = 2 AND edit_link = 0 "
                  u"AND type = 11 AND differentiator = 'shared'"),
            "1");
  EXPECT_EQ(Count(u"organisation_loc WHERE location_ref = 2 AND organisation_ref = 5"), "1");
  // The contact's becomes its main one.
  EXPECT_EQ(database.Value(u"SELECT location_ref FROM contact_loc WHERE main_location = 'Y'"), "2");

  // Not with an update in place, but with a replacement.
  ConfigureAction(u"1");
  Post change;
  change.link = 1;
  change.main = u"Y";
  change.town = u"Hull";
  change.linkTo[0] = 2;
  Amend(change);
  EXPECT_EQ(Count(u"individual_loc"), "2");
  ConfigureAction(u"2");
  change.town = u"York";
  change.main = u"Y";
  Amend(change);
  EXPECT_EQ(Count(u"individual_loc"), "4");
}

TEST_F(Amending, ReportsAFailureAtItsStep) {
  // A broken connection, statements that fail, and a link that is not there.
  ConfigureAction(u"1");
  ASSERT_EQ(StoreOne(kKinds[0]), 1);
  Post missing;
  missing.link = 99;
  EXPECT_THROW(Amend(missing), Failure);
  DebugOn(true);
  EXPECT_EQ(Amend(missing), -1);
  EXPECT_TRUE(lastError.starts_with(u"Description: ")) << ToUtf8(lastError);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 6")) << ToUtf8(lastError);

  Configure(u"globalNewUpdate", u"many");
  Configure(u"globalLocationUpdate_11", u"0");
  Post change;
  change.link = 1;
  EXPECT_EQ(Amend(change), -1);
  EXPECT_EQ(lastError, u"Description: Type mismatch<br>Source: vellum250<br>Step: 8");
  EXPECT_TRUE(lastSql.starts_with(u"SELECT l.location_ref")) << "no statement failed";
  context.sysDebug = false;
  EXPECT_THROW(Amend(change), Failure);

  DebugOn(false);
  Configure(u"globalDisplayAsReadOnly", u"maybe");
  EXPECT_EQ(Amend(change), -1);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 1")) << ToUtf8(lastError);
  Configure(u"globalDisplayAsReadOnly", u"0");

  database.Query(u"DROP TABLE individual_loc");
  EXPECT_EQ(Amend(change), -1);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 4")) << ToUtf8(lastError);
  EXPECT_TRUE(
      lastSql.starts_with(u"SELECT count(*) FROM individual_loc WHERE main_location = 'Y' "
                          u"AND individual_ref = 1"))
      << ToUtf8(lastSql);

  context.connectionString = u"Driver=Vellum250;Database=/no/such/file;PWD=hunter2;";
  EXPECT_EQ(Amend(change), -1);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 2")) << ToUtf8(lastError);
  EXPECT_EQ(lastError.find(u"hunter2"), Text::npos);
}

TEST_F(Amending, AFailedInsertLeavesTheLocationsAlone) {
  Post post;
  post.address1 = Text(1 << 20, u'x');
  EXPECT_THROW(Amend(post), Failure);
  DebugOn(true);
  // The record method reports by itself; no link was written.
  EXPECT_EQ(Amend(post), 0);
  EXPECT_TRUE(lastError.ends_with(u"<br>Step: 4 of 6")) << ToUtf8(lastError);
  EXPECT_EQ(Count(u"location"), "0");
  EXPECT_EQ(Count(u"individual_loc"), "0");
}

}  // namespace
}  // namespace vellum250::forms
