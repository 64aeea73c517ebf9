// The published class vellum250.address: names, order and by-reference rules of its interface. The
// work is done in contacts/ and forms/.
#pragma once

#include "automation/class_table.h"
#include "runtime/trap.h"

namespace vellum250::server {

// All parameters are by reference; those that come back changed are `T&`. Every method with a
// connectionString remembers one that is not empty for the thread.
class address final : public ScriptObject<address> {
 public:
  static const ClassTable& Table();

  Text LastSql;    // the last statement that a method built
  Text LastError;  // the last failure that was trapped, messages of a validation, or a trace

  // The thread's context, shared by all objects.
  void SysDebug(const bool& bDebug);
  void OnErrorOnly(const bool& bErrOnly);
  void RemoteHostIP(const Text& IPAddress);
  void Connection(const Text& connectionString);
  void TextID(const int32_t& TxtID);
  void appDictShowText(const ObjectRef& dictObjDictShowText);
  void appDictWebConfig(const ObjectRef& dictDictWebConfig);

  // Names (contacts/names.h).
  Text DisplayAddressName(const Text& Address1, const Text& Town, const Text& County);
  Variant GetInitials(const Text& sInput);
  Variant GetSalutationName(const Text& Title, const Text& Surname, const Text& Forenames,
                            const Text& Honour, const Text& Initials, const Text& connectionString);
  Variant GetKnownAsName(const Text& Title, const Text& Surname, const Text& Forenames,
                         const Text& Honour, const Text& Initials, const Text& connectionString);
  Variant GetLabelName(const Text& Title, const Text& Surname, const Text& Forenames,
                       const Text& Honour, const Text& Initials, const Text& connectionString);
  Text GetFirstWord(Variant& sWord);

  // Locations (contacts/locations.h).
  int32_t InsertIndividualAddress(const int32_t& individualRef, Text& Display,
                                  const Text& Differentiator, const Text& Address1,
                                  const Text& Address2, const Text& Address3, const Text& Town,
                                  const Text& County, const Text& Postcode, Text& Country,
                                  const int32_t& CountryRef, const int32_t& AddressType,
                                  const int32_t& Region1, const int16_t& Region2, Text& Main,
                                  uint8_t& EditLink, bool& IsInvoiceAddress, const Text& Comments,
                                  const Text& connectionString);
  int32_t InsertContactAddress(const int32_t& contactRef, Text& Display, const Text& Differentiator,
                               const Text& Address1, const Text& Address2, const Text& Address3,
                               const Text& Town, const Text& County, const Text& Postcode,
                               Text& Country, const int32_t& CountryRef, const int32_t& AddressType,
                               const int32_t& Region1, const int16_t& Region2, Text& Main,
                               uint8_t& EditLink, const Text& Comments,
                               const Text& connectionString);
  int32_t InsertOrganisationAddress(const int32_t& organisationRef, Text& Display,
                                    const Text& Differentiator, const Text& Address1,
                                    const Text& Address2, const Text& Address3, const Text& Town,
                                    const Text& County, const Text& Postcode, Text& Country,
                                    const int32_t& CountryRef, const int32_t& AddressType,
                                    const int32_t& Region1, const int16_t& Region2, Text& Main,
                                    uint8_t& EditLink, bool& IsInvoiceAddress, const Text& Comments,
                                    const Text& connectionString);
  int32_t CreateIndividualLinkAddress(const int32_t& individualRef, const int32_t& LocationRef,
                                      const int32_t& AddressType, Text& Main,
                                      const uint8_t& EditLink, bool& IsInvoiceAddress,
                                      const Text& Differentiator, const Text& connectionString);
  int32_t CreateContactLinkAddress(const int32_t& contactRef, const int32_t& LocationRef,
                                   const int32_t& AddressType, Text& Main, const uint8_t& EditLink,
                                   const Text& Differentiator, const Text& connectionString);
  int32_t CreateOrganisationLinkAddress(const int32_t& organisationRef, const int32_t& LocationRef,
                                        const int32_t& AddressType, Text& Main,
                                        const uint8_t& EditLink, bool& IsInvoiceAddress,
                                        const Text& Differentiator, const Text& connectionString);
  int32_t UpdateIndividualAddress(const int32_t& LocationRef, const int32_t& IndLocRef,
                                  Text& Display, const Text& Differentiator, const Text& Address1,
                                  const Text& Address2, const Text& Address3, const Text& Town,
                                  const Text& County, const Text& Postcode, Text& Country,
                                  const int32_t& CountryRef, const int32_t& AddressType,
                                  const int32_t& Region1, const int16_t& Region2, Text& Main,
                                  const Text& ValidFrom, const Text& ValidTo,
                                  const bool& IsInvoiceAddress, const Text& Comments,
                                  const Text& connectionString);
  int32_t UpdateContactAddress(const int32_t& ContLocRef, Text& Display, const Text& Differentiator,
                               const Text& Address1, const Text& Address2, const Text& Address3,
                               const Text& Town, const Text& County, const Text& Postcode,
                               Text& Country, const int32_t& CountryRef, const int32_t& AddressType,
                               const int32_t& Region1, const int16_t& Region2, Text& Main,
                               const Text& ValidFrom, const Text& ValidTo, const Text& Comments,
                               const Text& connectionString);
  int32_t UpdateOrganisationAddress(const int32_t& LocationRef, const int32_t& OrgLocRef,
                                    Text& Display, const Text& Differentiator, const Text& Address1,
                                    const Text& Address2, const Text& Address3, const Text& Town,
                                    const Text& County, const Text& Postcode, Text& Country,
                                    const int32_t& CountryRef, const int32_t& AddressType,
                                    const int32_t& Region1, const int16_t& Region2, Text& Main,
                                    const Text& ValidFrom, const Text& ValidTo,
                                    const bool& IsInvoiceAddress, const Text& Comments,
                                    const Text& connectionString);
  bool ChangeLocationOwner(const int32_t& LocationRef, const int32_t& NewOwnerRef,
                           const Text& EntityType);
  Variant InvalidateLocation(const int32_t& sfIndLocRef, const int32_t& sfOrgLocRef,
                             const int32_t& sfContLocRef);

  // Forms (forms/lookup_list.h, forms/address_form.h, forms/amendment.h).
  Variant AddressDropDownList(const Text& AddressTypes, const int32_t& DefaultID,
                              const Text& SelectID, const bool& ContainsBoolean,
                              const Text& ContainsLookupType, const Text& connectionString);
  Variant BuildAddress(const int16_t& detailsbitwise, const int16_t& mandatorybitwise,
                       const Text& sfDisplayName, const Text& sfDifferentiator, const Text& sfAdd1,
                       const Text& sfAdd2, const Text& sfAdd3, const Text& sfTown,
                       const Text& sfCounty, const Text& sfPostcode, const Text& sfCountry,
                       const Text& sfCountryRef, const int32_t& sfDefaultAddrssType,
                       const Text& sfAddressTypeList, const Text& sfMain, const bool& sfShowMain,
                       const Text& sfEntityType, const int32_t& sfSysRef, const int32_t& sfLocRef,
                       const Text& sfPafPrefix, const Text& sfComments,
                       const Text& connectionString);
  int32_t AmmendLocation(const Text& sfEntityType, const int32_t& sfSysRef, int32_t& sfEntLocRef,
                         const Text& sfDisplayName, const Text& sfDifferentiator,
                         const Text& sfAddress1, const Text& sfAddress2, const Text& sfAddress3,
                         const Text& sfTown, const Text& sfCounty, const Text& sfPostcode,
                         const Text& sfCountry, const int32_t& sfCRef, Text& sfMain,
                         const int32_t& sfType, const Text& sfValidator, const bool& sfCheckOnly,
                         const bool& sfInvoiceAddress, const int32_t& sfLinkToIndRef,
                         const int32_t& sfLinkToOrgRef, const int32_t& sfLinkToContRef,
                         const int32_t& OverrideAction, const Text& sfComments,
                         const Text& connectionString);

 private:
  CallReport Report() { return {LastSql, LastError}; }

  // Whether BuildAddress still includes the postcode lookup's script file.
  bool includePafScript_ = true;
};

}  // namespace vellum250::server
