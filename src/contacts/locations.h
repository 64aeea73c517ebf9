// The addresses of individuals, organisations and contacts: a location, and the links that attach
// it to its owners.
//
// While SysDebug is on a failure is reported and the result is what was obtained so far;
// otherwise it reaches the caller. Statements that ran before stay done: there is no transaction.
#pragma once

#include "contacts/owner_kind.h"
#include "runtime/trap.h"

namespace vellum250::contacts {

// The location's own columns. Empty texts and references below 1 are stored as null.
struct PostalAddress {
  Text& display;  // when empty, becomes DisplayAddressName of the parts
  TextView address1 = {};
  TextView address2 = {};
  TextView address3 = {};
  TextView town = {};
  TextView county = {};
  TextView postcode = {};
  Text& country;  // becomes the country's name when there is a reference
  int32_t countryRef = 0;
  int32_t region1 = 0;
  int16_t region2 = 0;
};

// The link's columns.
struct AddressLink {
  TextView differentiator = {};
  int32_t addressType = 0;
  Text& main;       // "Y" or not; becomes the SQL text that was stored
  bool& isInvoice;  // becomes true when the owner is a member without an invoice address
  TextView comments = {};
};

// Adds a location with its first link; gives its location_ref. An `editLink` other than 0 becomes
// 1. A location that cannot be inserted counts as 0, and the link is written all the same.
int32_t InsertAddress(const OwnerKind& kind, CallReport report, int32_t ownerRef,
                      PostalAddress address, AddressLink link, uint8_t& editLink);

// Links an existing location to an owner; gives the new link's key. The link's comments are not
// stored.
int32_t CreateLink(const OwnerKind& kind, CallReport report, int32_t ownerRef, int32_t locationRef,
                   AddressLink link, uint8_t editLink);

// When a link begins and ends: "getdate()" or a date as the database reads it, "" as it is.
struct Validity {
  TextView from;
  TextView to;
};

// Writes every column of the location and, when `linkRef` is above 0, of the link; gives
// `locationRef`, or 0 after a failure. All statements run as one batch.
int32_t UpdateAddress(const OwnerKind& kind, CallReport report, int32_t locationRef,
                      int32_t linkRef, PostalAddress address, AddressLink link, Validity validity);

// The same for a contact, whose location is that of the link. Traces.
int32_t UpdateContactAddress(CallReport report, int32_t linkRef, PostalAddress address,
                             AddressLink link, Validity validity);

// Gives the right to edit a location to one of its links, and takes it from all others. The first
// letter of `entityType` says whose link it is. False when there is no such link or kind.
bool ChangeLocationOwner(CallReport report, int32_t locationRef, int32_t newOwnerRef,
                         TextView entityType);

// Ends the links that are above 0.
void InvalidateLocation(CallReport report, int32_t individualLink, int32_t organisationLink,
                        int32_t contactLink);

}  // namespace vellum250::contacts
