#include "contacts/locations.h"

#include "automation/conversion.h"
#include "automation/locale.h"
#include "contacts/names.h"
#include "runtime/concat.h"
#include "runtime/database_helpers.h"

namespace vellum250::contacts {

namespace {

// Fills the display name and the country where they follow from other parts.
void Complete(CallReport report, Step& step, PostalAddress& address) {
  if (address.display.empty()) {
    address.display = DisplayAddressName(report, address.address1, address.town, address.county);
  }
  if (address.countryRef > 0) {
    address.country = GetScalarText(step.Running(
        Concat(u"SELECT lookup_full_desc FROM lookup WHERE lookup_ref = ", address.countryRef)));
  }
}

Text InsertLocationSql(const PostalAddress& a) {
  Text sql =
      u"INSERT INTO LOCATION (display_name, address1, address2, address3, town, county, "
      u"postcode, country, country_ref, region1, region2) VALUES (";
  const Text postcode = ToUpper(a.postcode);
  const TextView texts[] = {a.display, a.address1, a.address2, a.address3,
                            a.town,    a.county,   postcode,   a.country};
  for (TextView text : texts) {
    if (text.empty()) {
      sql.append(u"null, ");
    } else {
      Append(sql, u"'", SqlQuote(TrimBlanks(text)), u"', ");
    }
  }
  for (int32_t reference : {a.countryRef, a.region1}) {
    if (reference >= 1) {
      Append(sql, reference, u", ");
    } else {
      sql.append(u"null, ");
    }
  }
  // Callers rely on a second region failing: the statement stays open then.
  if (a.region2 >= 1) {
    Append(sql, a.region2, u", ");
  } else {
    sql.append(u"null)");
  }
  return sql;
}

Text UpdateLocationSql(const PostalAddress& a, int32_t locationRef) {
  const struct {
    TextView column;
    TextView value;
  } texts[] = {{u"display_name", a.display}, {u"address1", a.address1}, {u"address2", a.address2},
               {u"address3", a.address3},    {u"town", a.town},         {u"county", a.county},
               {u"postcode", a.postcode},    {u"country", a.country}};
  const struct {
    TextView column;
    int32_t value;
  } references[] = {
      {u"country_ref", a.countryRef}, {u"region1", a.region1}, {u"region2", a.region2}};

  Text sql = u"UPDATE location SET ";
  for (const auto& [column, value] : texts) {
    if (value.empty()) {
      Append(sql, column, u" = null, ");
    } else {
      Append(sql, column, u" = '", SqlQuote(TrimBlanks(value)), u"', ");
    }
  }
  for (const auto& [column, value] : references) {
    if (value >= 1) {
      Append(sql, column, u" = ", value, u", ");
    } else {
      Append(sql, column, u" = null, ");
    }
  }
  sql.resize(sql.size() - 2);
  Append(sql, u" WHERE location_ref = ", locationRef);
  return sql;
}

void AppendValidity(Text& sql, TextView column, TextView value) {
  if (value.empty()) return;
  if (EqualsIgnoreAsciiCase(value, u"getdate()")) {
    Append(sql, column, u" = GetDate(), ");
  } else {
    Append(sql, column, u" = '", SqlQuote(value), u"', ");
  }
}

Text UpdateLinkSql(const OwnerKind& kind, int32_t linkRef, const AddressLink& link,
                   const Validity& validity) {
  Text sql = Concat(u"UPDATE ", kind.linkTable, u" SET ");
  const auto text = [&sql](TextView column, TextView value) {
    if (value.empty()) {
      Append(sql, column, u" = null, ");
    } else {
      Append(sql, column, u" = '", SqlQuote(value), u"', ");
    }
  };
  if (link.addressType > 0) Append(sql, u"type = ", link.addressType, u", ");
  text(u"differentiator", link.differentiator);
  // Callers rely on other values than "Y" and "N" standing here as they are.
  if (!link.main.empty()) Append(sql, u"main_location = ", link.main, u", ");
  AppendValidity(sql, u"valid_from", validity.from);
  AppendValidity(sql, u"valid_to", validity.to);
  text(u"comments", link.comments);
  sql.resize(sql.size() - 2);
  Append(sql, u" WHERE ", kind.linkKey, u" = ", linkRef);
  return sql;
}

Text ClearMainSql(const OwnerKind& kind, int32_t ownerRef) {
  return Concat(u"UPDATE ", kind.linkTable, u" SET main_location = NULL WHERE ", kind.ownerColumn,
                u" = ", ownerRef);
}

// An owner has at most one main address, and its first one is it. `main` becomes SQL.
void ApplyMainRule(const OwnerKind& kind, Step& step, int32_t ownerRef, Text& main) {
  const int32_t mainLinks = GetScalarNumber(step.Running(
      Concat(u"SELECT count(*) FROM ", kind.linkTable, u" WHERE main_location = 'Y' and  ",
             kind.ownerColumn, u" = ", ownerRef)));
  if (mainLinks == 0) main = u"Y";
  if (main == u"Y") {
    ExecuteSql(step.Running(ClearMainSql(kind, ownerRef)));
    main = u"'Y'";
  } else {
    main = u"Null";
  }
}

enum class InvoiceUpdate { InvoiceAddress, InvoiceAndReceiptAddress };

// A member's invoices go to its first address, and to any other that is said to be for them.
void ApplyInvoiceRule(const OwnerKind& kind, Step& step, int32_t ownerRef, int32_t locationRef,
                      bool& isInvoice, InvoiceUpdate update) {
  const int32_t withoutInvoiceAddress =
      GetScalarNumber(step.Running(Concat(u"SELECT count(*) FROM member WHERE ", kind.ownerColumn,
                                          u" = ", ownerRef, u" AND invoice_location IS NULL")));
  if (withoutInvoiceAddress > 0) isInvoice = true;
  if (!isInvoice) return;
  Text sql = u"UPDATE member SET ";
  if (update == InvoiceUpdate::InvoiceAndReceiptAddress) {
    Append(sql, u"receipt_location = ", locationRef, u", ");
  }
  Append(sql, u"invoice_location = ", locationRef, u" WHERE ", kind.ownerColumn, u" = ", ownerRef);
  ExecuteSql(step.Running(std::move(sql)));
}

int32_t OwnerOfLink(const OwnerKind& kind, Step& step, int32_t linkRef) {
  if (linkRef <= 0) return 0;
  return GetScalarNumber(
      step.Running(Concat(u"SELECT ", kind.ownerColumn, u" FROM ", kind.linkTable, u" WHERE ",
                          kind.linkKey, u" = ", linkRef)));
}

// What both updates do once they know the location.
void RunUpdate(const OwnerKind& kind, CallReport report, Step& step, int32_t ownerRef,
               int32_t locationRef, int32_t linkRef, PostalAddress& address, AddressLink& link,
               const Validity& validity) {
  step.Next();
  Complete(report, step, address);
  Text batch = UpdateLocationSql(address, locationRef);
  if (link.main == u"Y") {
    if (ownerRef > 0) Append(batch, u"\r\n", ClearMainSql(kind, ownerRef));
    link.main = u"'Y'";
  } else if (link.main == u"N") {
    link.main = kind.notMain;
  }
  if (linkRef > 0) Append(batch, u"\r\n", UpdateLinkSql(kind, linkRef, link, validity));
  report.lastSql = batch;
  if (kind.mayBeMember && link.isInvoice && ownerRef > 0) {
    Append(batch, u"\r\nUPDATE member SET invoice_location = ", locationRef, u" WHERE ",
           kind.ownerColumn, u" = ", ownerRef);
  }
  step.Next();
  ExecuteSql(step.Running(std::move(batch)));
}

constexpr TextView kUpdateSteps = u" of 3";

}  // namespace

int32_t InsertAddress(const OwnerKind& kind, CallReport report, int32_t ownerRef,
                      PostalAddress address, AddressLink link, uint8_t& editLink) {
  int32_t locationRef = 0;
  return Trapped(report, u" of 6", locationRef, [&](Step& step) {
    Complete(report, step, address);
    if (editLink != 0) editLink = 1;

    step.Next();
    locationRef = ToInt32(InsertAndGetIdentity(step.Running(InsertLocationSql(address))));

    step.Next();
    ApplyMainRule(kind, step, ownerRef, link.main);

    step.Next();
    Text linkSql = Concat(
        u"INSERT INTO ", kind.linkTable, u" (", kind.ownerColumn, kind.afterOwnerColumn,
        u"differentiator, type, location_ref, valid_from, main_location, edit_link, "
        u"comments) VALUES (",
        ownerRef, u", '", SqlQuote(TrimBlanks(link.differentiator)), u"', ", link.addressType,
        u", ", locationRef, u", getdate(), ", link.main, u", ", editLink, u", ");
    // Callers rely on comments not being quoted here.
    if (link.comments.empty()) {
      linkSql.append(u"NULL)");
    } else {
      Append(linkSql, u"'", link.comments, u"')");
    }
    ExecuteSql(step.Running(linkSql));

    step.Next();
    if (kind.mayBeMember) {
      ApplyInvoiceRule(kind, step, ownerRef, locationRef, link.isInvoice,
                       InvoiceUpdate::InvoiceAndReceiptAddress);
    }
    step.Next();
    report.lastSql = std::move(linkSql);
  });
}

int32_t CreateLink(const OwnerKind& kind, CallReport report, int32_t ownerRef, int32_t locationRef,
                   AddressLink link, uint8_t editLink) {
  int32_t linkRef = 0;
  return Trapped(report, u" of 3", linkRef, [&](Step& step) {
    ApplyMainRule(kind, step, ownerRef, link.main);

    step.Next();
    Text sql = Concat(u"INSERT INTO ", kind.linkTable, u" (", kind.ownerColumn,
                      u", type, location_ref, valid_from, main_location, differentiator, "
                      u"edit_link) VALUES (",
                      ownerRef, u", ", link.addressType, u", ", locationRef, u", getdate(), ",
                      link.main, u", '", SqlQuote(link.differentiator), u"', ", editLink, u")");
    linkRef = ToInt32(InsertAndGetIdentity(step.Running(sql)));

    step.Next();
    if (kind.mayBeMember) {
      ApplyInvoiceRule(kind, step, ownerRef, locationRef, link.isInvoice,
                       InvoiceUpdate::InvoiceAddress);
    }
    report.lastSql = std::move(sql);
  });
}

int32_t UpdateAddress(const OwnerKind& kind, CallReport report, int32_t locationRef,
                      int32_t linkRef, PostalAddress address, AddressLink link, Validity validity) {
  int32_t updated = 0;
  return Trapped(report, kUpdateSteps, updated, [&](Step& step) {
    const int32_t ownerRef = OwnerOfLink(kind, step, linkRef);
    RunUpdate(kind, report, step, ownerRef, locationRef, linkRef, address, link, validity);
    updated = locationRef;
  });
}

int32_t UpdateContactAddress(CallReport report, int32_t linkRef, PostalAddress address,
                             AddressLink link, Validity validity) {
  int32_t updated = 0;
  const std::optional<Failure> failure = Trap(report, kUpdateSteps, [&](Step& step) {
    const int32_t ownerRef = OwnerOfLink(kContact, step, linkRef);
    const int32_t locationRef = GetScalarNumber(step.Running(
        Concat(u"SELECT location_ref FROM contact_loc WHERE cont_loc_ref = ", linkRef)));
    RunUpdate(kContact, report, step, ownerRef, locationRef, linkRef, address, link, validity);
    updated = locationRef;
  });
  if (ComponentContext::Current().Traces()) report.lastError = FailureTrace(failure);
  return updated;
}

bool ChangeLocationOwner(CallReport report, int32_t locationRef, int32_t newOwnerRef,
                         TextView entityType) {
  const OwnerKind* owner = nullptr;
  for (const OwnerKind* kind : kOwnerKinds) {
    if (EqualsIgnoreAsciiCase(entityType.substr(0, 1), kind->name.substr(0, 1))) owner = kind;
  }
  bool changed = false;
  if (owner == nullptr) return changed;
  return Trapped(report, u" of 5", changed, [&](Step& step) {
    const int32_t found =
        GetScalarNumber(step.Running(Concat(u"SELECT count(*) FROM ", owner->linkTable, u" WHERE ",
                                            owner->linkKey, u" = ", newOwnerRef)));
    if (found <= 0) return;
    for (const OwnerKind* kind : {&kContact, &kOrganisation, &kIndividual}) {
      step.Next();
      ExecuteSql(step.Running(Concat(u"UPDATE ", kind->linkTable,
                                     u" SET edit_link = 0 WHERE location_ref = ", locationRef)));
    }
    step.Next();
    ExecuteSql(step.Running(Concat(u"UPDATE ", owner->linkTable, u" SET edit_link = 1 WHERE ",
                                   owner->linkKey, u" = ", newOwnerRef)));
    changed = true;
  });
}

void InvalidateLocation(CallReport report, int32_t individualLink, int32_t organisationLink,
                        int32_t contactLink) {
  Trap(report, u" of 3", [&](Step& step) {
    const auto end = [&step](const OwnerKind& kind, int32_t linkRef) {
      if (linkRef <= 0) return;
      ExecuteSql(
          step.Running(Concat(u"UPDATE ", kind.linkTable, u" SET valid_to = getdate() WHERE ",
                              kind.linkKey, u" = ", linkRef)));
    };
    end(kIndividual, individualLink);
    step.Next();
    end(kOrganisation, organisationLink);
    step.Next();
    end(kContact, contactLink);
  });
}

}  // namespace vellum250::contacts
