// A test of the component: a thread's context of its own, and a database with a few contacts.
#pragma once

#include <gtest/gtest.h>

#include "automation/dictionary.h"
#include "runtime/component_context.h"
#include "runtime/trap.h"
#include "support/reference_database.h"

namespace vellum250::support {

// Resets the thread's context at both ends.
class ContextTest : public testing::Test {
 protected:
  ContextTest() { context = {}; }
  ~ContextTest() override { context = {}; }

  void DebugOn(bool onErrorOnly) {
    context.sysDebug = true;
    context.onErrorOnly = onErrorOnly;
  }
  // Dictionaries that hold at least one entry, so that they are asked.
  Dictionary& TextDictionary() { return Filled(context.showText, texts_); }
  Dictionary& ConfigDictionary() { return Filled(context.webConfig, config_); }

  ComponentContext& context = ComponentContext::Current();
  Text lastSql;
  Text lastError;
  const CallReport report{lastSql, lastError};

 private:
  static Dictionary& Filled(WebDictionary& slot, Ref<Dictionary>& dictionary) {
    if (!dictionary) {
      dictionary = MakeObject<Dictionary>();
      dictionary->Set(u"an entry", u"of no use");
      slot = WebDictionary(dictionary);
    }
    return *dictionary;
  }

  Ref<Dictionary> texts_;
  Ref<Dictionary> config_;
};

// Individuals 1 and 2, of whom 2 is a member without an invoice address, organisation 5, which is
// a member too, and contact 9. Address types 11 to 13, countries 201 (the site's own) to 204.
inline constexpr TextView kFewContacts =
    uR"(
SET IDENTITY_INSERT lookup_type ON
INSERT INTO lookup_type (lookup_type_ref, lookup_type_code) VALUES (1, 'CTRY'), (2, 'ADDT')
SET IDENTITY_INSERT lookup_type OFF
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (11, 2, 'HOME', 'Home', NULL), (12, 2, 'WORK', 'Work', NULL), (13, 2, 'WORKX', 'Agent', NULL),
  (201, 1, 'UK', 'United Kingdom', NULL), (202, 1, 'BA', 'Bosnia & Herzegovina', NULL),
  (203, 1, 'XA', 'Atlantis', '20010101'), (204, 1, 'FR', 'France', '29990101')
SET IDENTITY_INSERT lookup OFF
SET IDENTITY_INSERT individual ON
INSERT INTO individual (individual_ref, surname) VALUES (1, 'Smith'), (2, 'Jones')
SET IDENTITY_INSERT individual OFF
SET IDENTITY_INSERT organisation ON
INSERT INTO organisation (organisation_ref, company_name) VALUES (5, 'Paper Ltd')
SET IDENTITY_INSERT organisation OFF
SET IDENTITY_INSERT contact ON
INSERT INTO contact (contact_ref, organisation_ref, individual_ref) VALUES (9, 5, 1)
SET IDENTITY_INSERT contact OFF
INSERT INTO member (individual_ref, organisation_ref) VALUES (2, NULL)
INSERT INTO member (individual_ref, organisation_ref) VALUES (NULL, 5))";

class ComponentTest : public ContextTest {
 protected:
  ComponentTest() {
    database.Query(kFewContacts);
    context.connectionString = database.ConnectionString();
  }

  ReferenceDatabase database{Contents::Schema};
};

}  // namespace vellum250::support
