// Who owns an address. What differs between the three kinds stands here, as data.
#pragma once

#include "automation/text.h"

namespace vellum250::contacts {

struct OwnerKind {
  TextView name;         // as forms post it
  TextView linkTable;    // between the owner and the location
  TextView linkKey;      // its identity column
  TextView ownerColumn;  // its reference to the owner
  // What follows the owner's column in the link's INSERT: pages compare LastSql.
  TextView afterOwnerColumn;
  // What `Main` "N" becomes in an update.
  TextView notMain;
  // Whether it may have a member record, with an invoice and a receipt address.
  bool mayBeMember;
};

inline constexpr OwnerKind kIndividual = {
    u"INDIVIDUAL", u"individual_loc", u"ind_loc_ref", u"individual_ref", u", ", u"Null", true};
inline constexpr OwnerKind kOrganisation = {
    u"ORGANISATION", u"organisation_loc", u"org_loc_ref", u"organisation_ref", u",", u"'N'", true};
inline constexpr OwnerKind kContact = {
    u"CONTACT", u"contact_loc", u"cont_loc_ref", u"contact_ref", u",", u"Null", false};

inline constexpr const OwnerKind* kOwnerKinds[] = {&kIndividual, &kOrganisation, &kContact};

}  // namespace vellum250::contacts
