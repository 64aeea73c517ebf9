// The scripts of database/: that they load, that the sample data is sound, what the keys refuse,
// and that the library's longer queries find what they should in them.
#include <gtest/gtest.h>

#include <map>

#include "automation/conversion.h"
#include "automation/failure.h"
#include "support/reference_database.h"

namespace vellum250::database {
namespace {

using support::Contents;
using support::ReferenceDatabase;

// The rows of a query, for messages: fields with "|" between, rows with ";".
std::string Rows(const Recordset& rows) {
  std::string text;
  for (size_t row = 0; row < rows.RowCount(); ++row) {
    for (size_t i = 0; i < rows.Columns().size(); ++i) {
      const Variant& value = rows.At(row, i);
      text += (i > 0 ? "|" : "") + (value.IsNull() ? "NULL" : ToUtf8(ToText(value)));
    }
    text += ";";
  }
  return text;
}

TEST(SampleData, IsSound) {
  const ReferenceDatabase database;
  // Each finds the rows that break a rule.
  const char16_t* const faults[] = {
      // An owner has at most one main address, and one as soon as an address is current.
      u"SELECT individual_ref FROM individual_loc WHERE main_location = 'Y' "
      u"GROUP BY individual_ref HAVING count(*) > 1",
      u"SELECT organisation_ref FROM organisation_loc WHERE main_location = 'Y' "
      u"GROUP BY organisation_ref HAVING count(*) > 1",
      u"SELECT contact_ref FROM contact_loc WHERE main_location = 'Y' "
      u"GROUP BY contact_ref HAVING count(*) > 1",
      u"SELECT individual_ref FROM individual_loc WHERE valid_to IS NULL AND individual_ref NOT IN "
      u"(SELECT individual_ref FROM individual_loc WHERE main_location = 'Y')",
      u"SELECT organisation_ref FROM organisation_loc WHERE valid_to IS NULL AND organisation_ref "
      u"NOT IN (SELECT organisation_ref FROM organisation_loc WHERE main_location = 'Y')",
      // One link, of whatever owner, may amend a location.
      u"SELECT location_ref FROM location l WHERE "
      u"(SELECT count(*) FROM individual_loc ll WHERE ll.location_ref = l.location_ref AND "
      u"ll.edit_link = 1) + (SELECT count(*) FROM organisation_loc ll WHERE ll.location_ref = "
      u"l.location_ref AND ll.edit_link = 1) + (SELECT count(*) FROM contact_loc ll WHERE "
      u"ll.location_ref = l.location_ref AND ll.edit_link = 1) <> 1",
      // Dates.
      u"SELECT ind_loc_ref FROM individual_loc WHERE valid_to < valid_from OR valid_from > "
      u"getdate()",
      u"SELECT org_loc_ref FROM organisation_loc WHERE valid_to < valid_from",
      u"SELECT cont_loc_ref FROM contact_loc WHERE valid_to < valid_from",
      u"SELECT contact_ref FROM contact WHERE valid_to < valid_from",
      u"SELECT telephone_ref FROM telephone WHERE valid_to < valid_from",
      u"SELECT i.individual_ref FROM individual i JOIN individual_loc ll ON ll.individual_ref = "
      u"i.individual_ref WHERE ll.valid_from < dateadd(year, 16, i.date_of_birth)",
      // References into the right list.
      u"SELECT ind_loc_ref FROM individual_loc WHERE type NOT IN (SELECT lookup_ref FROM lookup "
      u"WHERE lookup_type_ref = 2)",
      u"SELECT org_loc_ref FROM organisation_loc WHERE type NOT IN (SELECT lookup_ref FROM lookup "
      u"WHERE lookup_type_ref = 2)",
      u"SELECT cont_loc_ref FROM contact_loc WHERE type NOT IN (SELECT lookup_ref FROM lookup "
      u"WHERE lookup_type_ref = 2)",
      u"SELECT telephone_ref FROM telephone t JOIN lookup l ON l.lookup_ref = t.type "
      u"WHERE l.lookup_type_ref <> 3",
      u"SELECT email_ref FROM email e JOIN lookup l ON l.lookup_ref = e.type "
      u"WHERE l.lookup_type_ref <> 4",
      u"SELECT individual_ref FROM individual i JOIN lookup s ON s.lookup_ref = "
      u"i.individual_status "
      u"LEFT JOIN lookup t ON t.lookup_ref = i.type "
      u"WHERE s.lookup_type_ref <> 5 OR t.lookup_type_ref <> 6",
      u"SELECT organisation_ref FROM organisation o JOIN lookup s ON s.lookup_ref = o.status "
      u"JOIN lookup t ON t.lookup_ref = o.type WHERE s.lookup_type_ref <> 7 OR t.lookup_type_ref "
      u"<> 8",
      u"SELECT location_ref FROM location l JOIN lookup c ON c.lookup_ref = l.country_ref "
      u"WHERE c.lookup_type_ref <> 1 OR c.lookup_full_desc <> l.country",
      // What the library composes is as it would compose it.
      u"SELECT location_ref FROM location "
      u"WHERE display_name <> address1 + ', ' + town + isNull(', ' + upper(county), '')",
      u"SELECT m.member_ref FROM member m JOIN individual i ON i.individual_ref = m.individual_ref "
      u"WHERE m.account_name <> i.label_name",
      // A member pays from an address of its own, and has one when there is a main one.
      u"SELECT member_ref FROM member WHERE individual_ref > 0 AND invoice_location > 0 AND "
      u"invoice_location NOT IN (SELECT location_ref FROM individual_loc ll "
      u"WHERE ll.individual_ref = member.individual_ref)",
      u"SELECT member_ref FROM member WHERE organisation_ref > 0 AND invoice_location > 0 AND "
      u"invoice_location NOT IN (SELECT location_ref FROM organisation_loc ll "
      u"WHERE ll.organisation_ref = member.organisation_ref)",
      u"SELECT m.member_ref FROM member m JOIN individual_loc ll ON ll.individual_ref = "
      u"m.individual_ref WHERE ll.main_location = 'Y' AND m.invoice_location IS NULL",
      u"SELECT member_ref FROM member WHERE individual_ref IS NULL AND organisation_ref IS NULL",
      // One main number of each kind, one main post.
      u"SELECT t.individual_ref FROM telephone t JOIN lookup l ON l.lookup_ref = t.type WHERE "
      u"t.main_number = 'Y' AND t.individual_ref IS NOT NULL "
      u"GROUP BY t.individual_ref, left(l.lookup_code, 3) HAVING count(*) > 1 AND "
      u"left(l.lookup_code, 3) = 'FAX'",
      u"SELECT individual_ref FROM telephone WHERE main_number = 'Y' AND individual_ref IS NOT "
      u"NULL "
      u"AND type NOT IN (25, 26) GROUP BY individual_ref HAVING count(*) > 1",
      u"SELECT individual_ref FROM contact WHERE main_organisation = 'Y' "
      u"GROUP BY individual_ref HAVING count(*) > 1",
      u"SELECT organisation_ref FROM contact WHERE main_contact = 'Y' "
      u"GROUP BY organisation_ref HAVING count(*) > 1",
      // Addresses that mail can be sent to: the library takes endings of two or three letters.
      u"SELECT email_address FROM email WHERE type NOT IN (34, 35) AND "
      u"email_address NOT LIKE '%_@%_.___' AND email_address NOT LIKE '%_@%_.__'",
  };
  for (const auto* fault : faults) EXPECT_EQ(Rows(database.Query(fault)), "") << ToUtf8(fault);
}

TEST(SampleData, HoldsWhatTheDemoShows) {
  const ReferenceDatabase database;
  const struct {
    const char16_t* sql;
    const char* value;
  } cases[] = {
      {u"SELECT count(*) FROM member", "69"},
      {u"SELECT count(*) FROM member WHERE individual_ref IS NOT NULL", "59"},
      {u"SELECT count(*) FROM organisation", "10"},
      {u"SELECT count(*) FROM lookup WHERE lookup_type_ref = 1", "30"},
      {u"SELECT count(*) FROM lookup WHERE lookup_type_ref = 1 AND valid_to < getdate()", "1"},
      {u"SELECT forenames FROM individual WHERE individual_ref = 13", "José María"},
      {u"SELECT surname FROM individual WHERE individual_ref = 2", "O'Brien"},
      // Two people at one address; a contact at its organisation's.
      {u"SELECT count(*) FROM individual_loc a JOIN individual_loc b ON b.location_ref = "
       u"a.location_ref WHERE a.individual_ref = 3 AND a.edit_link = 1 AND b.individual_ref = 4 "
       u"AND "
       u"b.edit_link = 0",
       "1"},
      {u"SELECT count(*) FROM contact_loc cl JOIN contact c ON c.contact_ref = cl.contact_ref JOIN "
       u"organisation_loc ol ON ol.organisation_ref = c.organisation_ref AND ol.location_ref = "
       u"cl.location_ref",
       "13"},
      {u"SELECT value FROM app_profile WHERE section = 'LabelName' AND entry = 'KnownAs'",
       "<Forename1>"},
      {u"SELECT web_text FROM web_text WHERE web_text_area = 'General' AND web_text_label = "
       u"'Town' AND text_id = 2",
       "Tref:"},
  };
  for (const auto& c : cases) EXPECT_EQ(database.Value(c.sql), c.value) << ToUtf8(c.sql);

  const auto setting = [&](const Text& key) {
    return database.Query(u"SELECT setting FROM web_config WHERE global_config = '" + key + u"'")
        .Field(0);
  };
  for (const char16_t* key : {u"globalShowLabel", u"globalLabelsMyIPOnly", u"globalEnablePaf"}) {
    EXPECT_NO_THROW(ToBoolean(setting(key))) << ToUtf8(key);
  }
  for (const char16_t* key : {u"globalDisplayAsReadOnly", u"globalNewUpdate", u"globalEmailUpd",
                              u"globalTeleUpd", u"globalTelNoDisp", u"globalLocationUpdate_0"}) {
    EXPECT_NO_THROW(ToInt16(setting(key))) << ToUtf8(key);
  }
  Recordset types = database.Query(u"SELECT lookup_ref FROM lookup WHERE lookup_type_ref = 2");
  for (; !types.Eof(); types.MoveNext()) {
    const Text key = u"globalLocationUpdate_" + ToText(types.Field(0));
    EXPECT_NO_THROW(ToInt16(setting(key))) << ToUtf8(key);
  }
}

TEST(SampleData, ServesTheLibrarysLongerQueries) {
  const ReferenceDatabase database;
  const struct {
    const char16_t* sql;
    const char* rows;
  } cases[] = {
      {u"SELECT l.lookup_ref AS lr FROM lookup l, lookup_type lt WHERE l.lookup_type_ref = "
       u"lt.lookup_type_ref AND lt.lookup_type_code = 'CTRY' AND l.lookup_code = 'UK'",
       "201;"},
      {u"SELECT lookup_ref, lookup_full_desc FROM lookup WHERE lookup_ref IN (31,32,34,35)  AND "
       u"NOT "
       u" lookup_code LIKE 'WWW%' ORDER BY lookup_full_desc",
       "31|Personal e-mail;32|Work e-mail;"},
      {u"SELECT l.location_ref, isNull(ll.Differentiator, '') AS differentiator, "
       u"isNull(ll.main_location, '') AS main_location, isNull(ll.type, '') AS type, "
       u"isNull(l.county, '') AS county, isNull(l.country_ref, 0) AS country_ref FROM "
       u"individual_loc ll JOIN location l ON l.location_ref = ll.location_ref  WHERE "
       u"ll.ind_loc_ref = 2",
       "15|Flat above the shop|Y|11|Dorset|201;"},
      {u"SELECT isNull(std_code,'') + '|' + isNull(number,'') + '|' +  isNull(extension,'') + '|' "
       u"+ "
       u" isNull(main_number,'') FROM telephone WHERE telephone_ref = 2",
       "01632|960501|201|N;"},
      {u"SELECT count(*) AS cnt FROM contact WHERE (valid_from IS null OR valid_from < getDate()) "
       u"AND (valid_to IS null OR valid_to >= getDate()) AND  main_contact = 'Y' AND "
       u"organisation_ref = 4",
       "1;"},
      {u"SELECT isNull(o.company_name + ' ','') + isNull(i.forenames + ' ','') + isNull(i.surname "
       u"+ "
       u"' ' ,'') + '(' + e.email_address + ')' From Email E LEFT JOIN individual i ON "
       u"e.individual_ref = i.individual_ref LEFT JOIN organisation o ON e.organisation_ref = "
       u"o.organisation_ref Where e.email_ref IN (2,63) Order By isNull(i.surname, o.company_name)",
       "Larkmead Records Ltd (office@larkmead.example.org);"
       "Mary Jane O'Brien (mary.obrien@example.net);"},
      {u"SELECT member_ref,member.individual_ref FROM member INNER JOIN individual a0 ON "
       u"a0.individual_ref = member.individual_ref INNER JOIN email a1 ON a1.individual_ref = "
       u"member.individual_ref INNER JOIN lookup e ON e.lookup_ref = a1.type AND e.lookup_code not "
       u"like 'WWW%' WHERE 1=1  AND a0.surname = 'NÚÑEZ' AND a1.email_address = "
       u"'jose.nunez@example.com'",
       "1013|13;"},
      {u"SELECT data_type FROM information_schema.columns WHERE table_name = 'individual' AND "
       u"column_name = 'surname'",
       "varchar;"},
      {u"SELECT ip.value AS programmeValue, convert(varchar, ip.start_date, 106) AS "
       u"programmeStart, "
       u"ips.lookup_full_desc AS programmeStatus, cgl.lookup_full_desc AS programmeGrade, "
       u"cp.description AS programmeName, cpu.lookup_full_desc AS programmeUnit FROM cpd_programme "
       u"cp, ind_programme ip LEFT JOIN lookup ips ON ip.status = ips.lookup_ref LEFT JOIN "
       u"cpd_grade "
       u"cg ON ip.grade_ref = cg.grade_ref LEFT JOIN lookup cgl ON cg.grade_lookup_ref = "
       u"cgl.lookup_ref, lookup cpu WHERE cp.programme_ref = ip.programme_ref AND cpu.lookup_ref = "
       u"cp.unit AND ip.ind_prog_ref = 1",
       "30.00|01 Jan 2023|Completed|Merit|Annual CPD|Hours;"},
      {u"SELECT cp.description AS periodDesc, cc.description AS courseDesc, isNull(co.description, "
       u"'') AS obj_desc, convert(varchar, ic.start_date, 106) AS courseStart FROM ind_period ip  "
       u"LEFT JOIN cpd_grade cg ON ip.grade_ref = cg.grade_ref LEFT JOIN lookup cgl ON "
       u"cg.grade_lookup_ref = cgl.lookup_ref, cpd_period cp, ind_cpd ic LEFT JOIN cpd_source cs "
       u"ON "
       u"cs.ind_cpd_ref = ic.ind_CPD_ref LEFT JOIN cpd_object co ON co.object_ref = cs.object_ref, "
       u"cpd_course cc WHERE cp.period_ref = ip.period_ref AND cc.course_ref = ic.course_ref AND "
       u"ip.ind_period_ref = ic.ind_period_ref AND ip.ind_prog_ref = 1 ORDER BY ip.start_date asc, "
       u"ip.end_date asc, ic.start_date asc, ic.end_date asc",
       "First half-year|Paper chemistry|Keep up with materials science|14 Feb 2023;"
       "First half-year|Own reading||01 Mar 2023;"
       "Second half-year|Disaster planning for small archives|Prepare for a post with staff|"
       "11 Sep 2023;"
       "Second half-year|Conference attendance||03 Nov 2023;"},
  };
  for (const auto& c : cases) EXPECT_EQ(Rows(database.Query(c.sql)), c.rows) << ToUtf8(c.sql);

  Recordset fields = database.Query(
      u"SELECT m.merge_field , m.merge_sql FROM web_mailmerge m JOIN web_mailmerge_permission p ON "
      u"p.web_mailmerge_ref = m.web_mailmerge_ref AND web_mailmerge_group_ref = 2 "
      u"ORDER BY m.merge_description");
  std::map<Text, std::string> merged;
  for (; !fields.Eof(); fields.MoveNext()) {
    const Text sql = ReplaceAll(ToText(fields.Field(1)), u"[/MEM]", u"1002");
    merged[ToText(fields.Field(0))] = database.Value(sql);
  }
  EXPECT_EQ(merged.size(), 5u);
  EXPECT_EQ(merged[u"[Name]"], "Mrs M J O'Brien");
  EXPECT_EQ(merged[u"[Dear]"], "Mrs O'Brien");
  EXPECT_EQ(merged[u"[MemberNumber]"], "1002");
  EXPECT_EQ(merged[u"[InvoiceAddress]"], "Flat 3, Westhaven, DORSET");
  EXPECT_EQ(merged[u"[Today]"].size(), 11u);
}

// One person, organisation, contact, location and country.
constexpr char16_t kOneOfEach[] =
    u"INSERT INTO lookup_type (lookup_type_code) VALUES ('CTRY')\r\n"
    u"INSERT INTO lookup (lookup_type_ref, lookup_code, lookup_full_desc) VALUES (1, 'UK', "
    u"'UK')\r\n"
    u"INSERT INTO individual (surname) VALUES ('Smith')\r\n"
    u"INSERT INTO organisation (company_name) VALUES ('Acme')\r\n"
    u"INSERT INTO contact (organisation_ref, individual_ref) VALUES (1, 1)\r\n"
    u"INSERT INTO location (address1) VALUES ('1 High Street')\r\n"
    u"INSERT INTO member (individual_ref) VALUES (1)";

TEST(ReferenceSchema, RefusesWhatCannotBe) {
  const ReferenceDatabase database(Contents::Schema);
  database.Query(kOneOfEach);
  const Text longText(256, u'x');
  const struct {
    Text sql;
    int32_t number;
  } cases[] = {
      // What follows a location insert that failed.
      {u"INSERT INTO individual_loc (individual_ref, differentiator, type, location_ref, "
       u"valid_from, "
       u"main_location, edit_link, comments) VALUES (1, '', 0, 0, getdate(), 'Y', 1, NULL)",
       547},
      {u"INSERT INTO organisation_loc (organisation_ref, location_ref) VALUES (1, 0)", 547},
      {u"INSERT INTO contact_loc (contact_ref, location_ref) VALUES (1, 0)", 547},
      {u"UPDATE member SET invoice_location = 0 WHERE individual_ref = 1", 547},
      // Owners and countries that are not there.
      {u"INSERT INTO individual_loc (individual_ref, location_ref) VALUES (2, 1)", 547},
      {u"INSERT INTO contact (organisation_ref, individual_ref) VALUES (1, 2)", 547},
      {u"INSERT INTO telephone (individual_ref) VALUES (2)", 547},
      {u"UPDATE location SET country_ref = 99", 547},
      {u"DELETE FROM individual", 547},
      // Text is refused, never cut.
      {u"UPDATE location SET display_name = '" + longText + u"'", 2628},
      {u"UPDATE location SET address1 = '" + longText + u"'", 2628},
      {u"UPDATE location SET postcode = 'SW1A 1AASW1A 1AA'", 2628},
      {u"UPDATE individual SET gender = 'Male'", 2628},
      {u"INSERT INTO email (email_address) VALUES ('" + longText + u"')", 2628},
      // Keys.
      {u"INSERT INTO lookup (lookup_type_ref, lookup_code) VALUES (1, 'uk')", 2627},
      {u"INSERT INTO lookup_type (lookup_type_code) VALUES ('CTRY')", 2627},
      {u"INSERT INTO web_config (global_config, setting) VALUES ('a', '1')\r\n"
       u"INSERT INTO web_config (global_config, setting) VALUES ('A', '2')",
       2627},
      {u"INSERT INTO contact_loc (contact_ref) VALUES (1)", 515},
  };
  for (const auto& c : cases) {
    try {
      database.Query(c.sql);
      ADD_FAILURE() << "taken: " << ToUtf8(c.sql);
    } catch (const DatabaseFailure& failure) {
      EXPECT_EQ(failure.NativeNumber(), c.number) << ToUtf8(c.sql) << ": " << failure.what();
    }
  }
}

TEST(ReferenceSchema, TakesWhatTheLibraryWrites) {
  const ReferenceDatabase database(Contents::Schema);
  database.Query(kOneOfEach);
  const Text forty(40, u'x');
  const Text huge(100'000, u'x');
  const Text statements[] = {
      // No type of address was given.
      u"INSERT INTO individual_loc (individual_ref, differentiator, type, location_ref, "
      u"valid_from, "
      u"main_location, edit_link, comments) VALUES (1, '', 0, 1, getdate(), Null, 255, '" +
          huge + u"')",
      u"UPDATE individual_loc SET differentiator = null, type = 0, comments = null",
      u"INSERT INTO organisation_loc (organisation_ref, location_ref, main_location) VALUES (1, 1, "
      u"'N')",
      // All that the forms allow, and the names composed of it.
      u"UPDATE location SET display_name = '" + forty + u", " + forty + u", " + forty +
          u"', address1 = '" + forty + u"', town = '" + forty + u"', county = '" + forty +
          u"', postcode = '" + forty.substr(0, 15) + u"', country = '" + forty + u"'",
      u"UPDATE individual SET title = '" + forty + u"', forenames = '" + forty +
          u"', initials = '" + forty + forty + u"', surname = '" + forty + u"', honours = '" +
          forty + u"', label_name = '" + forty + forty + forty + forty + forty +
          u"', ni_number = '" + forty + u"'",
      u"INSERT INTO email (email_address) VALUES ('" + Text(200, u'x') + u"')",
      u"INSERT INTO organisation (company_name) VALUES (null)",
      // Two pages that register one missing label.
      u"INSERT into web_text (web_text_label, web_text_area, text_id) VALUES ('L', 'A', 1)\r\n"
      u"INSERT into web_text (web_text_label, web_text_area, text_id) VALUES ('L', 'A', 1)",
  };
  for (const Text& sql : statements) {
    EXPECT_NO_THROW(database.Query(sql)) << ToUtf8(sql.substr(0, 100));
  }
  EXPECT_EQ(database.Value(u"SELECT len(display_name) FROM location"), "124");
}

}  // namespace
}  // namespace vellum250::database
