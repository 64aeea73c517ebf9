// The interface of vellum250.address, in the order that its callers know.
#include "server/address.h"

namespace vellum250::server {

const ClassTable& address::Table() {
  static const ClassTable table =
      Describe<address>(u"vellum250.address")
          .Property<&address::LastSql>(u"LastSql")
          .Property<&address::LastError>(u"LastError")
          .Method<&address::SysDebug>(u"SysDebug", {u"bDebug"})
          .Method<&address::OnErrorOnly>(u"OnErrorOnly", {u"bErrOnly"})
          .Method<&address::RemoteHostIP>(u"RemoteHostIP", {u"IPAddress"})
          .Method<&address::Connection>(u"Connection", {u"connectionString"})
          .Method<&address::TextID>(u"TextID", {u"TxtID"})
          .Method<&address::appDictShowText>(u"appDictShowText", {u"dictObjDictShowText"})
          .Method<&address::appDictWebConfig>(u"appDictWebConfig", {u"dictDictWebConfig"})
          .Method<&address::DisplayAddressName>(u"DisplayAddressName",
                                                {Opt(u"Address1"), Opt(u"Town"), Opt(u"County")})
          .Method<&address::GetInitials>(u"GetInitials", {u"sInput"})
          .Method<&address::GetSalutationName>(
              u"GetSalutationName", {Opt(u"Title"), Opt(u"Surname"), Opt(u"Forenames"),
                                     Opt(u"Honour"), Opt(u"Initials"), Opt(u"connectionString")})
          .Method<&address::GetKnownAsName>(
              u"GetKnownAsName", {Opt(u"Title"), Opt(u"Surname"), Opt(u"Forenames"), Opt(u"Honour"),
                                  Opt(u"Initials"), Opt(u"connectionString")})
          .Method<&address::GetLabelName>(
              u"GetLabelName", {Opt(u"Title"), Opt(u"Surname"), Opt(u"Forenames"), Opt(u"Honour"),
                                Opt(u"Initials"), Opt(u"connectionString")})
          .Method<&address::GetFirstWord>(u"GetFirstWord", {u"sWord"})
          .Method<&address::InsertIndividualAddress>(
              u"InsertIndividualAddress",
              {u"individualRef", Opt(u"Display"), Opt(u"Differentiator"), Opt(u"Address1"),
               Opt(u"Address2"), Opt(u"Address3"), Opt(u"Town"), Opt(u"County"), Opt(u"Postcode"),
               Opt(u"Country"), Opt(u"CountryRef"), Opt(u"AddressType"), Opt(u"Region1"),
               Opt(u"Region2"), Opt(u"Main"), Opt(u"EditLink"), Opt(u"IsInvoiceAddress"),
               Opt(u"Comments"), Opt(u"connectionString")})
          .Method<&address::InsertContactAddress>(
              u"InsertContactAddress",
              {u"contactRef", Opt(u"Display"), Opt(u"Differentiator"), Opt(u"Address1"),
               Opt(u"Address2"), Opt(u"Address3"), Opt(u"Town"), Opt(u"County"), Opt(u"Postcode"),
               Opt(u"Country"), Opt(u"CountryRef"), Opt(u"AddressType"), Opt(u"Region1"),
               Opt(u"Region2"), Opt(u"Main"), Opt(u"EditLink"), Opt(u"Comments"),
               Opt(u"connectionString")})
          .Method<&address::InsertOrganisationAddress>(
              u"InsertOrganisationAddress",
              {u"organisationRef", Opt(u"Display"), Opt(u"Differentiator"), Opt(u"Address1"),
               Opt(u"Address2"), Opt(u"Address3"), Opt(u"Town"), Opt(u"County"), Opt(u"Postcode"),
               Opt(u"Country"), Opt(u"CountryRef"), Opt(u"AddressType"), Opt(u"Region1"),
               Opt(u"Region2"), Opt(u"Main"), Opt(u"EditLink"), Opt(u"IsInvoiceAddress"),
               Opt(u"Comments"), Opt(u"connectionString")})
          .Method<&address::CreateIndividualLinkAddress>(
              u"CreateIndividualLinkAddress",
              {u"individualRef", u"LocationRef", Opt(u"AddressType"), Opt(u"Main"),
               Opt(u"EditLink"), Opt(u"IsInvoiceAddress"), Opt(u"Differentiator"),
               Opt(u"connectionString")})
          .Method<&address::CreateContactLinkAddress>(
              u"CreateContactLinkAddress",
              {u"contactRef", u"LocationRef", Opt(u"AddressType"), Opt(u"Main"), Opt(u"EditLink"),
               Opt(u"Differentiator"), Opt(u"connectionString")})
          .Method<&address::CreateOrganisationLinkAddress>(
              u"CreateOrganisationLinkAddress",
              {u"organisationRef", u"LocationRef", Opt(u"AddressType"), Opt(u"Main"),
               Opt(u"EditLink"), Opt(u"IsInvoiceAddress"), Opt(u"Differentiator"),
               Opt(u"connectionString")})
          .Method<&address::UpdateIndividualAddress>(
              u"UpdateIndividualAddress", {u"LocationRef",           Opt(u"IndLocRef"),
                                           Opt(u"Display"),          Opt(u"Differentiator"),
                                           Opt(u"Address1"),         Opt(u"Address2"),
                                           Opt(u"Address3"),         Opt(u"Town"),
                                           Opt(u"County"),           Opt(u"Postcode"),
                                           Opt(u"Country"),          Opt(u"CountryRef"),
                                           Opt(u"AddressType"),      Opt(u"Region1"),
                                           Opt(u"Region2"),          Opt(u"Main"),
                                           Opt(u"ValidFrom"),        Opt(u"ValidTo"),
                                           Opt(u"IsInvoiceAddress"), Opt(u"Comments"),
                                           Opt(u"connectionString")})
          .Method<&address::UpdateContactAddress>(
              u"UpdateContactAddress",
              {u"ContLocRef", Opt(u"Display"), Opt(u"Differentiator"), Opt(u"Address1"),
               Opt(u"Address2"), Opt(u"Address3"), Opt(u"Town"), Opt(u"County"), Opt(u"Postcode"),
               Opt(u"Country"), Opt(u"CountryRef"), Opt(u"AddressType"), Opt(u"Region1"),
               Opt(u"Region2"), Opt(u"Main"), Opt(u"ValidFrom"), Opt(u"ValidTo"), Opt(u"Comments"),
               Opt(u"connectionString")})
          .Method<&address::UpdateOrganisationAddress>(
              u"UpdateOrganisationAddress", {u"LocationRef",           Opt(u"OrgLocRef"),
                                             Opt(u"Display"),          Opt(u"Differentiator"),
                                             Opt(u"Address1"),         Opt(u"Address2"),
                                             Opt(u"Address3"),         Opt(u"Town"),
                                             Opt(u"County"),           Opt(u"Postcode"),
                                             Opt(u"Country"),          Opt(u"CountryRef"),
                                             Opt(u"AddressType"),      Opt(u"Region1"),
                                             Opt(u"Region2"),          Opt(u"Main"),
                                             Opt(u"ValidFrom"),        Opt(u"ValidTo"),
                                             Opt(u"IsInvoiceAddress"), Opt(u"Comments"),
                                             Opt(u"connectionString")})
          .Method<&address::ChangeLocationOwner>(u"ChangeLocationOwner",
                                                 {u"LocationRef", u"NewOwnerRef", u"EntityType"})
          .Method<&address::InvalidateLocation>(
              u"InvalidateLocation",
              {Opt(u"sfIndLocRef"), Opt(u"sfOrgLocRef"), Opt(u"sfContLocRef")})
          .Method<&address::AddressDropDownList>(
              u"AddressDropDownList",
              {u"AddressTypes", Opt(u"DefaultID"), Opt(u"SelectID", u"LocType"),
               Opt(u"ContainsBoolean"), Opt(u"ContainsLookupType"), Opt(u"connectionString")})
          .Method<&address::BuildAddress>(u"BuildAddress", {u"detailsbitwise",
                                                            u"mandatorybitwise",
                                                            Opt(u"sfDisplayName"),
                                                            Opt(u"sfDifferentiator"),
                                                            Opt(u"sfAdd1"),
                                                            Opt(u"sfAdd2"),
                                                            Opt(u"sfAdd3"),
                                                            Opt(u"sfTown"),
                                                            Opt(u"sfCounty"),
                                                            Opt(u"sfPostcode"),
                                                            Opt(u"sfCountry"),
                                                            Opt(u"sfCountryRef"),
                                                            Opt(u"sfDefaultAddrssType"),
                                                            Opt(u"sfAddressTypeList"),
                                                            Opt(u"sfMain", u"Y"),
                                                            Opt(u"sfShowMain", true),
                                                            Opt(u"sfEntityType"),
                                                            Opt(u"sfSysRef"),
                                                            Opt(u"sfLocRef"),
                                                            Opt(u"sfPafPrefix"),
                                                            Opt(u"sfComments"),
                                                            Opt(u"connectionString")})
          .Method<&address::AmmendLocation>(u"AmmendLocation",
                                            {u"sfEntityType",          u"sfSysRef",
                                             Opt(u"sfEntLocRef"),      Opt(u"sfDisplayName"),
                                             Opt(u"sfDifferentiator"), Opt(u"sfAddress1"),
                                             Opt(u"sfAddress2"),       Opt(u"sfAddress3"),
                                             Opt(u"sfTown"),           Opt(u"sfCounty"),
                                             Opt(u"sfPostcode"),       Opt(u"sfCountry"),
                                             Opt(u"sfCRef"),           Opt(u"sfMain", u"N"),
                                             Opt(u"sfType"),           Opt(u"sfValidator"),
                                             Opt(u"sfCheckOnly"),      Opt(u"sfInvoiceAddress"),
                                             Opt(u"sfLinkToIndRef"),   Opt(u"sfLinkToOrgRef"),
                                             Opt(u"sfLinkToContRef"),  Opt(u"OverrideAction"),
                                             Opt(u"sfComments"),       Opt(u"connectionString")});
  return table;
}

}  // namespace vellum250::server
