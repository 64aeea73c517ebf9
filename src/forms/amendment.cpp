#include "forms/amendment.h"

#include <algorithm>

#include "automation/conversion.h"
#include "contacts/locations.h"
#include "database/connection.h"
#include "runtime/concat.h"
#include "runtime/config.h"
#include "runtime/database_helpers.h"

namespace vellum250::forms {

namespace {

using contacts::OwnerKind;

constexpr int32_t kUpdate = 1;
constexpr int32_t kReplace = 2;

// The steps as the failure text numbers them.
enum AmendmentStep : int32_t {
  kValidated = 2,
  kConnected = 3,
  kEntityEntered = 4,
  kInserted = 5,
  kReading = 6,
  kCounted = 7,
  kDeciding = 8,
  kWritten = 9,
};

// One amendment from the posted form to the stored rows.
class Amendment {
 public:
  Amendment(CallReport report, PostedAddress& posted, Step& step)
      : report_(report), posted_(posted), step_(step) {}

  int32_t Run() {
    displayAsReadOnly_ = ConfigInteger(u"globalDisplayAsReadOnly");
    // A display name that the form showed read-only is never taken from the post.
    if (displayAsReadOnly_ == 0) posted_.displayName = {};
    Text messages = ValidationMessages();
    if (!messages.empty()) {
      report_.lastError = std::move(messages);
      return kNotAccepted;
    }
    step_.Reach(kValidated);
    if (posted_.checksOnly) return 0;

    const auto connection =
        database::Connection::Open(ComponentContext::Current().connectionString);
    step_.Reach(kConnected);
    const auto kind = std::ranges::find_if(contacts::kOwnerKinds, [&](const OwnerKind* k) {
      return EqualsIgnoreAsciiCase(k->name, posted_.entityType);
    });
    if (kind == std::end(contacts::kOwnerKinds)) return posted_.linkRef;
    kind_ = *kind;
    step_.Reach(kEntityEntered);
    if (MainLinkCount() == 0) posted_.main = u"Y";

    if (posted_.linkRef == 0) {
      Insert();
      posted_.linkRef = GetScalarNumber(
          step_.Running(Concat(u"SELECT ", kind_->linkKey, u" FROM ", kind_->linkTable,
                               u" WHERE location_ref = ", locationRef_)));
      step_.Reach(kInserted);
      LinkToFurtherOwners();
    } else {
      step_.Reach(kReading);
      const int32_t changes = CountChanges(*connection);
      step_.Reach(kCounted);
      if (changes == 0) return 0;
      step_.Reach(kDeciding);
      if (DecideAction(changes) == kUpdate) {
        Update();
      } else {
        Replace();
        LinkToFurtherOwners();
      }
    }
    step_.Reach(kWritten);
    return posted_.linkRef;
  }

 private:
  bool IsMissing(TextView fieldId) const {
    const struct {
      TextView id;
      TextView value;
    } fields[] = {{u"DIFFERENTIATOR", posted_.differentiator},
                  {u"ADD1", posted_.address1},
                  {u"ADD2", posted_.address2},
                  {u"ADD3", posted_.address3},
                  {u"TOWN", posted_.town},
                  {u"COUNTY", posted_.county},
                  {u"POSTCODE", posted_.postcode},
                  {u"COUNTRY", posted_.country},
                  {u"COMM", posted_.comments}};
    for (const auto& field : fields) {
      if (EqualsIgnoreAsciiCase(field.id, fieldId)) return field.value.empty();
    }
    if (EqualsIgnoreAsciiCase(u"DISPLAYNAME", fieldId)) {
      return displayAsReadOnly_ == 1 && posted_.displayName.empty();
    }
    return EqualsIgnoreAsciiCase(u"CREF", fieldId) && posted_.countryRef == 0;
  }

  Text ValidationMessages() const {
    Text messages;
    TextView rest = posted_.validator;
    while (!rest.empty()) {
      const TextView piece = rest.substr(0, rest.find(u'|'));
      rest.remove_prefix(std::min(rest.size(), piece.size() + 1));
      const size_t comma = piece.find(u',');
      const TextView id = piece.substr(0, comma);
      const TextView label = comma == TextView::npos ? piece : piece.substr(comma + 1);
      if (IsMissing(id)) Append(messages, u"|", label, u" is a mandatory field.");
    }
    return messages;
  }

  int32_t MainLinkCount() {
    return GetScalarNumber(step_.Running(Concat(u"SELECT count(*) FROM ", kind_->linkTable,
                                                u" WHERE main_location = 'Y' AND ",
                                                kind_->ownerColumn, u" = ", posted_.ownerRef)));
  }

  int32_t CountChanges(database::Connection& connection) {
    // The contact's statement has one blank before WHERE, those of the others two.
    const Text sql = Concat(
        u"SELECT l.location_ref, isNull(ll.Differentiator, '') AS differentiator, "
        u"isNull(l.display_name, '') AS display_name, isNull(ll.main_location, '') AS "
        u"main_location, isNull(ll.type, '') AS type, isNull(l.address1, '') AS address1, "
        u"isNull(l.address2, '') AS address2, isNull(l.address3, '') AS address3, "
        u"isNull(l.town, '') AS town, isNull(l.county, '') AS county, isNull(l.postcode, '') AS "
        u"postcode, isNull(l.country, '') AS country, isNull(l.country_ref, 0) AS country_ref, "
        u"isNull(ll.comments, '') AS comments FROM ",
        kind_->linkTable, u" ll JOIN location l ON l.location_ref = ll.location_ref",
        kind_->mayBeMember ? u"  WHERE " : u" WHERE ", u"ll.", kind_->linkKey, u" = ",
        posted_.linkRef);
    report_.lastSql = sql;
    const database::Recordset stored = connection.Execute(step_.Running(sql));
    locationRef_ = ToInt32(stored.Field(u"location_ref"));
    const auto text = [&](TextView column) { return ToText(stored.Field(column)); };

    const struct {
      TextView column;
      TextView value;
    } texts[] = {{u"differentiator", posted_.differentiator},
                 {u"address1", posted_.address1},
                 {u"address2", posted_.address2},
                 {u"address3", posted_.address3},
                 {u"town", posted_.town},
                 {u"county", posted_.county},
                 {u"postcode", posted_.postcode},
                 {u"comments", posted_.comments}};
    int32_t changes = 0;
    for (const auto& field : texts) changes += text(field.column) != field.value;
    if (displayAsReadOnly_ == 1) changes += text(u"display_name") != posted_.displayName;
    // Callers rely on a stored NULL and a posted "N" being different texts.
    changes += text(u"main_location") != posted_.main;
    changes += ToInt32(stored.Field(u"type")) != posted_.addressType;
    changes += CountryChanged(text(u"country"));
    changes += ToInt32(stored.Field(u"country_ref")) != posted_.countryRef;
    return changes;
  }

  // A country that was stored as text and posted as a choice from the list did not change. Without
  // a choice the scalar is false: the text of that equals no country, not even an empty one.
  bool CountryChanged(TextView stored) {
    return stored != posted_.country &&
           stored != ToText(GetScalar(step_.Running(
                         Concat(u"SELECT lookup_full_desc FROM lookup WHERE lookup_ref = ",
                                posted_.countryRef))));
  }

  int32_t DecideAction(int32_t changes) {
    int32_t action = 0;
    // Contacts have no setting for each type.
    if (kind_->mayBeMember) {
      action = ConfigInteger(Concat(u"globalLocationUpdate_", posted_.addressType));
    }
    if (posted_.linkRef > 0) {
      const int32_t notEditable = GetScalarNumber(
          step_.Running(Concat(u"SELECT count(*) FROM ", kind_->linkTable, u" WHERE ",
                               kind_->linkKey, u" = ", posted_.linkRef, u" AND edit_link = 0")));
      if (notEditable > 0) action = kReplace;
    }
    if (posted_.overrideAction > 0) action = posted_.overrideAction;
    if (action == kUpdate || action == kReplace) return action;
    return changes >= ConfigInteger(u"globalNewUpdate") ? kReplace : kUpdate;
  }

  contacts::PostalAddress Address(Text& display, Text& country) const {
    display = posted_.displayName;
    country = posted_.country;
    return {.display = display,
            .address1 = posted_.address1,
            .address2 = posted_.address2,
            .address3 = posted_.address3,
            .town = posted_.town,
            .county = posted_.county,
            .postcode = posted_.postcode,
            .country = country,
            .countryRef = posted_.countryRef};
  }
  contacts::AddressLink Link() const {
    return {.differentiator = posted_.differentiator,
            .addressType = posted_.addressType,
            .main = posted_.main,
            .isInvoice = posted_.isInvoice,
            .comments = posted_.comments};
  }

  void Insert() {
    Text display;
    Text country;
    uint8_t editLink = 1;
    locationRef_ = contacts::InsertAddress(*kind_, report_, posted_.ownerRef,
                                           Address(display, country), Link(), editLink);
  }

  void Update() {
    Text display;
    Text country;
    const contacts::PostalAddress address = Address(display, country);
    if (kind_ == &contacts::kContact) {
      contacts::UpdateContactAddress(report_, posted_.linkRef, address, Link(), {});
    } else {
      contacts::UpdateAddress(*kind_, report_, locationRef_, posted_.linkRef, address, Link(), {});
    }
  }

  // The old link ends and keeps its key in the result; callers rely on that.
  void Replace() {
    const auto linkOf = [&](const OwnerKind& kind) { return kind_ == &kind ? posted_.linkRef : 0; };
    contacts::InvalidateLocation(report_, linkOf(contacts::kIndividual),
                                 linkOf(contacts::kOrganisation), linkOf(contacts::kContact));
    Insert();
  }

  void LinkToFurtherOwners() {
    if (locationRef_ < 1) return;
    const auto link = [&](const OwnerKind& kind, int32_t ownerRef, TextView mainText) {
      if (ownerRef <= 0) return;
      Text main(mainText);
      bool isInvoice = false;
      contacts::CreateLink(kind, report_, ownerRef, locationRef_,
                           {.differentiator = posted_.differentiator,
                            .addressType = posted_.addressType,
                            .main = main,
                            .isInvoice = isInvoice,
                            .comments = {}},
                           0);
    };
    link(contacts::kIndividual, posted_.linkToIndividual, u"N");
    link(contacts::kOrganisation, posted_.linkToOrganisation, u"N");
    // Callers rely on a contact's link being its main one, unlike the others.
    link(contacts::kContact, posted_.linkToContact, u"Y");
  }

  CallReport report_;
  PostedAddress& posted_;
  Step& step_;
  const OwnerKind* kind_ = nullptr;
  int16_t displayAsReadOnly_ = 0;
  int32_t locationRef_ = 0;
};

}  // namespace

int32_t AmendLocation(CallReport report, PostedAddress posted) {
  int32_t result = kNotAccepted;
  return Trapped(report, u"", result,
                 [&](Step& step) { result = Amendment(report, posted, step).Run(); });
}

}  // namespace vellum250::forms
