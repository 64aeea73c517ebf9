// What becomes of an address form that a user posted.
#pragma once

#include "runtime/trap.h"

namespace vellum250::forms {

struct PostedAddress {
  TextView entityType;  // INDIVIDUAL, ORGANISATION or CONTACT, in any case
  int32_t ownerRef = 0;
  int32_t& linkRef;  // the link being amended, 0 for a new address; becomes the new link's
  TextView displayName = {};
  TextView differentiator = {};
  TextView address1 = {};
  TextView address2 = {};
  TextView address3 = {};
  TextView town = {};
  TextView county = {};
  TextView postcode = {};
  TextView country = {};
  int32_t countryRef = 0;
  Text& main;  // "Y" for the main address; becomes the SQL text that was stored
  int32_t addressType = 0;
  TextView validator = {};  // the list of mandatory fields, as the form carries it
  bool checksOnly = false;
  bool isInvoice = false;
  // Further owners of a new location; 0 is none.
  int32_t linkToIndividual = 0;
  int32_t linkToOrganisation = 0;
  int32_t linkToContact = 0;
  int32_t overrideAction = 0;  // 1 updates in place, 2 replaces; 0 leaves the choice
  TextView comments = {};
};

inline constexpr int32_t kNotAccepted = -1;

// Refuses, stores or replaces the address. Gives kNotAccepted when mandatory fields are empty
// (LastError has a message for each, "|" before it) and, while SysDebug is on, after a failure;
// 0 when nothing changed or only a check was wanted; otherwise the link's key. Without SysDebug
// a failure reaches the caller. What was written before it stays: there is no transaction.
int32_t AmendLocation(CallReport report, PostedAddress posted);

}  // namespace vellum250::forms
