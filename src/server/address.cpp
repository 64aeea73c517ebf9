#include "server/address.h"

#include "automation/conversion.h"
#include "contacts/locations.h"
#include "contacts/names.h"
#include "forms/address_form.h"
#include "forms/amendment.h"
#include "forms/lookup_list.h"
#include "runtime/database_helpers.h"

namespace vellum250::server {

void address::SysDebug(const bool& bDebug) { ComponentContext::Current().sysDebug = bDebug; }
void address::OnErrorOnly(const bool& bErrOnly) {
  ComponentContext::Current().onErrorOnly = bErrOnly;
}
void address::RemoteHostIP(const Text& IPAddress) {
  ComponentContext::Current().remoteHostIp = IPAddress;
}
// Also an empty one, unlike the methods' own parameter.
void address::Connection(const Text& connectionString) {
  ComponentContext::Current().connectionString = connectionString;
}
void address::TextID(const int32_t& TxtID) { ComponentContext::Current().textId = TxtID; }
void address::appDictShowText(const ObjectRef& dictObjDictShowText) {
  ComponentContext::Current().showText = WebDictionary(dictObjDictShowText);
}
void address::appDictWebConfig(const ObjectRef& dictDictWebConfig) {
  ComponentContext::Current().webConfig = WebDictionary(dictDictWebConfig);
}

Text address::DisplayAddressName(const Text& Address1, const Text& Town, const Text& County) {
  return contacts::DisplayAddressName(Report(), Address1, Town, County);
}

Variant address::GetInitials(const Text& sInput) { return contacts::Initials(sInput); }

Variant address::GetSalutationName(const Text& Title, const Text& Surname, const Text& Forenames,
                                   const Text& Honour, const Text& Initials,
                                   const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::FormattedName(contacts::NameForm::Salutation,
                                 {Title, Surname, Forenames, Honour, Initials});
}

Variant address::GetKnownAsName(const Text& Title, const Text& Surname, const Text& Forenames,
                                const Text& Honour, const Text& Initials,
                                const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::FormattedName(contacts::NameForm::KnownAs,
                                 {Title, Surname, Forenames, Honour, Initials});
}

Variant address::GetLabelName(const Text& Title, const Text& Surname, const Text& Forenames,
                              const Text& Honour, const Text& Initials,
                              const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::FormattedName(contacts::NameForm::Label,
                                 {Title, Surname, Forenames, Honour, Initials});
}

Text address::GetFirstWord(Variant& sWord) {
  Text word;
  try {
    word = ToText(sWord);
  } catch (const Failure& failure) {
    throw WithDetail(failure, u"sWord of GetFirstWord");
  }
  if (word.find(u' ') != Text::npos) {
    word = contacts::FirstWord(word);
    sWord = word;
  } else if (word.empty()) {
    sWord = Text();
  }
  return word;
}

int32_t address::InsertIndividualAddress(
    const int32_t& individualRef, Text& Display, const Text& Differentiator, const Text& Address1,
    const Text& Address2, const Text& Address3, const Text& Town, const Text& County,
    const Text& Postcode, Text& Country, const int32_t& CountryRef, const int32_t& AddressType,
    const int32_t& Region1, const int16_t& Region2, Text& Main, uint8_t& EditLink,
    bool& IsInvoiceAddress, const Text& Comments, const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::InsertAddress(contacts::kIndividual, Report(), individualRef,
                                 {Display, Address1, Address2, Address3, Town, County, Postcode,
                                  Country, CountryRef, Region1, Region2},
                                 {Differentiator, AddressType, Main, IsInvoiceAddress, Comments},
                                 EditLink);
}

int32_t address::InsertContactAddress(const int32_t& contactRef, Text& Display,
                                      const Text& Differentiator, const Text& Address1,
                                      const Text& Address2, const Text& Address3, const Text& Town,
                                      const Text& County, const Text& Postcode, Text& Country,
                                      const int32_t& CountryRef, const int32_t& AddressType,
                                      const int32_t& Region1, const int16_t& Region2, Text& Main,
                                      uint8_t& EditLink, const Text& Comments,
                                      const Text& connectionString) {
  RememberConnection(connectionString);
  bool isInvoice = false;
  return contacts::InsertAddress(contacts::kContact, Report(), contactRef,
                                 {Display, Address1, Address2, Address3, Town, County, Postcode,
                                  Country, CountryRef, Region1, Region2},
                                 {Differentiator, AddressType, Main, isInvoice, Comments},
                                 EditLink);
}

int32_t address::InsertOrganisationAddress(
    const int32_t& organisationRef, Text& Display, const Text& Differentiator, const Text& Address1,
    const Text& Address2, const Text& Address3, const Text& Town, const Text& County,
    const Text& Postcode, Text& Country, const int32_t& CountryRef, const int32_t& AddressType,
    const int32_t& Region1, const int16_t& Region2, Text& Main, uint8_t& EditLink,
    bool& IsInvoiceAddress, const Text& Comments, const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::InsertAddress(contacts::kOrganisation, Report(), organisationRef,
                                 {Display, Address1, Address2, Address3, Town, County, Postcode,
                                  Country, CountryRef, Region1, Region2},
                                 {Differentiator, AddressType, Main, IsInvoiceAddress, Comments},
                                 EditLink);
}

int32_t address::CreateIndividualLinkAddress(const int32_t& individualRef,
                                             const int32_t& LocationRef, const int32_t& AddressType,
                                             Text& Main, const uint8_t& EditLink,
                                             bool& IsInvoiceAddress, const Text& Differentiator,
                                             const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::CreateLink(contacts::kIndividual, Report(), individualRef, LocationRef,
                              {Differentiator, AddressType, Main, IsInvoiceAddress, {}}, EditLink);
}

int32_t address::CreateContactLinkAddress(const int32_t& contactRef, const int32_t& LocationRef,
                                          const int32_t& AddressType, Text& Main,
                                          const uint8_t& EditLink, const Text& Differentiator,
                                          const Text& connectionString) {
  RememberConnection(connectionString);
  bool isInvoice = false;
  return contacts::CreateLink(contacts::kContact, Report(), contactRef, LocationRef,
                              {Differentiator, AddressType, Main, isInvoice, {}}, EditLink);
}

int32_t address::CreateOrganisationLinkAddress(const int32_t& organisationRef,
                                               const int32_t& LocationRef,
                                               const int32_t& AddressType, Text& Main,
                                               const uint8_t& EditLink, bool& IsInvoiceAddress,
                                               const Text& Differentiator,
                                               const Text& connectionString) {
  RememberConnection(connectionString);
  return contacts::CreateLink(contacts::kOrganisation, Report(), organisationRef, LocationRef,
                              {Differentiator, AddressType, Main, IsInvoiceAddress, {}}, EditLink);
}

int32_t address::UpdateIndividualAddress(
    const int32_t& LocationRef, const int32_t& IndLocRef, Text& Display, const Text& Differentiator,
    const Text& Address1, const Text& Address2, const Text& Address3, const Text& Town,
    const Text& County, const Text& Postcode, Text& Country, const int32_t& CountryRef,
    const int32_t& AddressType, const int32_t& Region1, const int16_t& Region2, Text& Main,
    const Text& ValidFrom, const Text& ValidTo, const bool& IsInvoiceAddress, const Text& Comments,
    const Text& connectionString) {
  RememberConnection(connectionString);
  bool isInvoice = IsInvoiceAddress;
  return contacts::UpdateAddress(contacts::kIndividual, Report(), LocationRef, IndLocRef,
                                 {Display, Address1, Address2, Address3, Town, County, Postcode,
                                  Country, CountryRef, Region1, Region2},
                                 {Differentiator, AddressType, Main, isInvoice, Comments},
                                 {ValidFrom, ValidTo});
}

int32_t address::UpdateContactAddress(const int32_t& ContLocRef, Text& Display,
                                      const Text& Differentiator, const Text& Address1,
                                      const Text& Address2, const Text& Address3, const Text& Town,
                                      const Text& County, const Text& Postcode, Text& Country,
                                      const int32_t& CountryRef, const int32_t& AddressType,
                                      const int32_t& Region1, const int16_t& Region2, Text& Main,
                                      const Text& ValidFrom, const Text& ValidTo,
                                      const Text& Comments, const Text& connectionString) {
  RememberConnection(connectionString);
  bool isInvoice = false;
  return contacts::UpdateContactAddress(Report(), ContLocRef,
                                        {Display, Address1, Address2, Address3, Town, County,
                                         Postcode, Country, CountryRef, Region1, Region2},
                                        {Differentiator, AddressType, Main, isInvoice, Comments},
                                        {ValidFrom, ValidTo});
}

int32_t address::UpdateOrganisationAddress(
    const int32_t& LocationRef, const int32_t& OrgLocRef, Text& Display, const Text& Differentiator,
    const Text& Address1, const Text& Address2, const Text& Address3, const Text& Town,
    const Text& County, const Text& Postcode, Text& Country, const int32_t& CountryRef,
    const int32_t& AddressType, const int32_t& Region1, const int16_t& Region2, Text& Main,
    const Text& ValidFrom, const Text& ValidTo, const bool& IsInvoiceAddress, const Text& Comments,
    const Text& connectionString) {
  RememberConnection(connectionString);
  bool isInvoice = IsInvoiceAddress;
  return contacts::UpdateAddress(contacts::kOrganisation, Report(), LocationRef, OrgLocRef,
                                 {Display, Address1, Address2, Address3, Town, County, Postcode,
                                  Country, CountryRef, Region1, Region2},
                                 {Differentiator, AddressType, Main, isInvoice, Comments},
                                 {ValidFrom, ValidTo});
}

bool address::ChangeLocationOwner(const int32_t& LocationRef, const int32_t& NewOwnerRef,
                                  const Text& EntityType) {
  return contacts::ChangeLocationOwner(Report(), LocationRef, NewOwnerRef, EntityType);
}

Variant address::InvalidateLocation(const int32_t& sfIndLocRef, const int32_t& sfOrgLocRef,
                                    const int32_t& sfContLocRef) {
  contacts::InvalidateLocation(Report(), sfIndLocRef, sfOrgLocRef, sfContLocRef);
  return {};
}

Variant address::AddressDropDownList(const Text& AddressTypes, const int32_t& DefaultID,
                                     const Text& SelectID, const bool& ContainsBoolean,
                                     const Text& ContainsLookupType, const Text& connectionString) {
  RememberConnection(connectionString);
  return forms::AddressDropDownList(
      Report(), {AddressTypes, DefaultID, SelectID, ContainsBoolean, ContainsLookupType});
}

Variant address::BuildAddress(const int16_t& detailsbitwise, const int16_t& mandatorybitwise,
                              const Text& sfDisplayName, const Text& sfDifferentiator,
                              const Text& sfAdd1, const Text& sfAdd2, const Text& sfAdd3,
                              const Text& sfTown, const Text& sfCounty, const Text& sfPostcode,
                              const Text& sfCountry, const Text& sfCountryRef,
                              const int32_t& sfDefaultAddrssType, const Text& sfAddressTypeList,
                              const Text& sfMain, const bool& sfShowMain, const Text& sfEntityType,
                              const int32_t& sfSysRef, const int32_t& sfLocRef,
                              const Text& sfPafPrefix, const Text& sfComments,
                              const Text& connectionString) {
  // Callers rely on this parameter failing: the connection comes through Connection.
  if (!connectionString.empty()) throw ObjectNotSet(u"BuildAddress takes no connectionString");
  return forms::BuildAddress(Report(),
                             {detailsbitwise,
                              mandatorybitwise,
                              sfDisplayName,
                              sfDifferentiator,
                              sfAdd1,
                              sfAdd2,
                              sfAdd3,
                              sfTown,
                              sfCounty,
                              sfPostcode,
                              sfCountry,
                              sfCountryRef,
                              sfDefaultAddrssType,
                              sfAddressTypeList,
                              sfMain,
                              sfShowMain,
                              sfEntityType,
                              sfSysRef,
                              sfLocRef,
                              sfPafPrefix,
                              sfComments},
                             includePafScript_);
}

int32_t address::AmmendLocation(const Text& sfEntityType, const int32_t& sfSysRef,
                                int32_t& sfEntLocRef, const Text& sfDisplayName,
                                const Text& sfDifferentiator, const Text& sfAddress1,
                                const Text& sfAddress2, const Text& sfAddress3, const Text& sfTown,
                                const Text& sfCounty, const Text& sfPostcode, const Text& sfCountry,
                                const int32_t& sfCRef, Text& sfMain, const int32_t& sfType,
                                const Text& sfValidator, const bool& sfCheckOnly,
                                const bool& sfInvoiceAddress, const int32_t& sfLinkToIndRef,
                                const int32_t& sfLinkToOrgRef, const int32_t& sfLinkToContRef,
                                const int32_t& OverrideAction, const Text& sfComments,
                                const Text& connectionString) {
  RememberConnection(connectionString);
  return forms::AmendLocation(
      Report(),
      {sfEntityType,    sfSysRef,       sfEntLocRef,      sfDisplayName,  sfDifferentiator,
       sfAddress1,      sfAddress2,     sfAddress3,       sfTown,         sfCounty,
       sfPostcode,      sfCountry,      sfCRef,           sfMain,         sfType,
       sfValidator,     sfCheckOnly,    sfInvoiceAddress, sfLinkToIndRef, sfLinkToOrgRef,
       sfLinkToContRef, OverrideAction, sfComments});
}

}  // namespace vellum250::server
