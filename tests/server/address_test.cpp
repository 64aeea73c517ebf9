#include "server/address.h"

#include "server/factory.h"
#include "support/component_test.h"

namespace vellum250::server {
namespace {

class Address : public support::ComponentTest {
 protected:
  // Calls as a script does; `arguments` takes what is written back.
  Variant Call(TextView member, std::vector<Variant>& arguments) {
    return object->Invoke(member, InvokeKind::Method, arguments);
  }
  Variant Call(TextView member, std::vector<Variant>&& arguments = {}) {
    return Call(member, arguments);
  }
  Variant Get(TextView member) { return object->Invoke(member, InvokeKind::Get, {}); }
  int32_t FailureOf(TextView member, std::vector<Variant>&& arguments) {
    try {
      Call(member, arguments);
    } catch (const Failure& failure) {
      EXPECT_NE(failure.Description(), u"");
      return failure.Number();
    }
    return 0;
  }

  ObjectRef object = CreateObject(u"Vellum250.Address");
};

TEST_F(Address, HasItsMembersInTheOrderOfItsInterface) {
  std::string members;
  for (const MemberInfo& member : object->Class()->Members()) {
    members += ToUtf8(member.name) + "(";
    for (const ParameterInfo& p : member.parameters) {
      members += (p.optional ? "[" : "") + ToUtf8(p.name) + (p.optional ? "]" : "") +
                 (p.passing == Passing::ByReference ? "&" : "") + " ";
    }
    members += ")\n";
  }
  const std::string address =
      "[Display]& [Differentiator] [Address1] [Address2] [Address3] [Town] [County] [Postcode] "
      "[Country]& [CountryRef] [AddressType] [Region1] [Region2] [Main]& ";
  const std::string name =
      "([Title] [Surname] [Forenames] [Honour] [Initials] [connectionString] )\n";
  EXPECT_EQ(
      members,
      "LastSql(value )\nLastError(value )\nSysDebug(bDebug )\nOnErrorOnly(bErrOnly )\n"
      "RemoteHostIP(IPAddress )\nConnection(connectionString )\nTextID(TxtID )\n"
      "appDictShowText(dictObjDictShowText )\nappDictWebConfig(dictDictWebConfig )\n"
      "DisplayAddressName([Address1] [Town] [County] )\nGetInitials(sInput )\n"
      "GetSalutationName" +
          name + "GetKnownAsName" + name + "GetLabelName" + name +
          "GetFirstWord(sWord& )\n"
          "InsertIndividualAddress(individualRef " +
          address +
          "[EditLink]& [IsInvoiceAddress]& [Comments] [connectionString] )\n"
          "InsertContactAddress(contactRef " +
          address +
          "[EditLink]& [Comments] [connectionString] )\n"
          "InsertOrganisationAddress(organisationRef " +
          address +
          "[EditLink]& [IsInvoiceAddress]& [Comments] [connectionString] )\n"
          "CreateIndividualLinkAddress(individualRef LocationRef [AddressType] [Main]& [EditLink] "
          "[IsInvoiceAddress]& [Differentiator] [connectionString] )\n"
          "CreateContactLinkAddress(contactRef LocationRef [AddressType] [Main]& [EditLink] "
          "[Differentiator] [connectionString] )\n"
          "CreateOrganisationLinkAddress(organisationRef LocationRef [AddressType] [Main]& "
          "[EditLink] "
          "[IsInvoiceAddress]& [Differentiator] [connectionString] )\n"
          "UpdateIndividualAddress(LocationRef [IndLocRef] " +
          address +
          "[ValidFrom] [ValidTo] [IsInvoiceAddress] [Comments] [connectionString] )\n"
          "UpdateContactAddress(ContLocRef " +
          address +
          "[ValidFrom] [ValidTo] [Comments] [connectionString] )\n"
          "UpdateOrganisationAddress(LocationRef [OrgLocRef] " +
          address +
          "[ValidFrom] [ValidTo] [IsInvoiceAddress] [Comments] [connectionString] )\n"
          "ChangeLocationOwner(LocationRef NewOwnerRef EntityType )\n"
          "InvalidateLocation([sfIndLocRef] [sfOrgLocRef] [sfContLocRef] )\n"
          "AddressDropDownList(AddressTypes [DefaultID] [SelectID] [ContainsBoolean] "
          "[ContainsLookupType] [connectionString] )\n"
          "BuildAddress(detailsbitwise mandatorybitwise [sfDisplayName] [sfDifferentiator] "
          "[sfAdd1] "
          "[sfAdd2] [sfAdd3] [sfTown] [sfCounty] [sfPostcode] [sfCountry] [sfCountryRef] "
          "[sfDefaultAddrssType] [sfAddressTypeList] [sfMain] [sfShowMain] [sfEntityType] "
          "[sfSysRef] "
          "[sfLocRef] [sfPafPrefix] [sfComments] [connectionString] )\n"
          "AmmendLocation(sfEntityType sfSysRef [sfEntLocRef]& [sfDisplayName] [sfDifferentiator] "
          "[sfAddress1] [sfAddress2] [sfAddress3] [sfTown] [sfCounty] [sfPostcode] [sfCountry] "
          "[sfCRef] [sfMain]& [sfType] [sfValidator] [sfCheckOnly] [sfInvoiceAddress] "
          "[sfLinkToIndRef] [sfLinkToOrgRef] [sfLinkToContRef] [OverrideAction] [sfComments] "
          "[connectionString] )\n");
}

TEST_F(Address, SharesTheContextOfItsThread) {
  const ObjectRef earlier = CreateObject(u"vellum250.address");
  const auto texts = MakeObject<Dictionary>();
  const auto config = MakeObject<Dictionary>();
  texts->Set(u"GeneralAddress17", u"By the dictionary");
  config->Set(u"globalShowLabel", u"false");
  config->Set(u"globalEnablePaf", u"0");
  Call(u"Connection", {u""});
  Call(u"TextID", {7});
  Call(u"RemoteHostIP", {u"10.1.1.1"});
  Call(u"SysDebug", {true});
  Call(u"OnErrorOnly", {u"True"});
  Call(u"appDictShowText", {ObjectRef(texts)});
  Call(u"appDictWebConfig", {ObjectRef(config)});
  EXPECT_EQ(context.connectionString, u"");
  EXPECT_EQ(context.textId, 7);
  EXPECT_EQ(context.remoteHostIp, u"10.1.1.1");
  EXPECT_TRUE(context.sysDebug);
  EXPECT_TRUE(context.onErrorOnly);

  std::vector<Variant> masks = {0, 0};
  config->Set(u"globalDisplayAsReadOnly", u"1");
  Call(u"Connection", {database.ConnectionString()});
  const Variant markup = earlier->Invoke(u"BuildAddress", InvokeKind::Method, masks);
  EXPECT_NE(markup.As<Text>().find(u"By the dictionary&nbsp;"), Text::npos);
  // A page lets go of its dictionaries.
  Call(u"appDictShowText", {ObjectRef()});
  EXPECT_NE(Call(u"BuildAddress", {0, 0}).As<Text>().find(u">Address:&nbsp;"), Text::npos);
}

TEST_F(Address, RemembersTheConnectionOfAnyMethod) {
  support::ReferenceDatabase other(support::Contents::Schema);
  Call(u"GetLabelName",
       {Missing{}, u"Smith", Missing{}, Missing{}, Missing{}, other.ConnectionString()});
  EXPECT_EQ(context.connectionString, other.ConnectionString());
  Call(u"AddressDropDownList", {u"1", Missing{}, Missing{}, Missing{}, Missing{}, u""});
  EXPECT_EQ(context.connectionString, other.ConnectionString());
}

TEST_F(Address, WritesChangedArgumentsBack) {
  std::vector<Variant> a = {1,   u"",    u"Home", u"1 Road", u"", u"", u"Leeds", u"",   u"",
                            u"", u"201", 11,      0,         0,   u"", 9,        false, u""};
  EXPECT_EQ(Call(u"InsertIndividualAddress", a), Variant(1));
  EXPECT_EQ(a[1], Variant(u"1 Road, Leeds"));
  EXPECT_EQ(a[9], Variant(u"United Kingdom"));
  EXPECT_EQ(a[14], Variant(u"'Y'"));
  EXPECT_EQ(a[15], Variant(uint8_t{1}));
  EXPECT_EQ(Get(u"LastSql").As<Text>().substr(0, 26), u"INSERT INTO individual_loc");

  std::vector<Variant> b = {u"individual", 1, Missing{}, u"", u"", u"2 Road"};
  EXPECT_EQ(Call(u"AmmendLocation", b), Variant(2));
  EXPECT_TRUE(b[2].IsMissing());
  b[2] = 0;
  EXPECT_EQ(Call(u"AmmendLocation", b), Variant(3));
  EXPECT_EQ(b[2], Variant(3));

  const struct {
    Variant word;
    Variant result;
    Variant after;
  } words[] = {{u"Mary Jane", u"Mary", u"Mary"},
               {u"Mary", u"Mary", u"Mary"},
               {Variant(), u"", u""},
               {42, u"42", 42},
               {u" x", u"", u""}};
  for (const auto& c : words) {
    std::vector<Variant> word = {c.word};
    EXPECT_EQ(Call(u"GetFirstWord", word), c.result);
    EXPECT_EQ(word[0], c.after);
  }
}

TEST_F(Address, LeavesOptionalArgumentsTheirDefaults) {
  ConfigDictionary().Set(u"globalShowLabel", false);
  EXPECT_NE(Call(u"BuildAddress", {0, 0}).As<Text>().find(u"tickbox_on"), Text::npos);
  EXPECT_EQ(Call(u"DisplayAddressName", {Missing{}, u"Leeds"}), Variant(u"Leeds"));
  EXPECT_EQ(Call(u"InvalidateLocation"), Variant());
  EXPECT_TRUE(Call(u"AddressDropDownList", {u"11"})
                  .As<Text>()
                  .starts_with(u"<select class=\"AnswerText\" id=\"LocType\" name=\"LocType\">"));
  EXPECT_TRUE(Call(u"AddressDropDownList", {u"11", 0, u""})
                  .As<Text>()
                  .starts_with(u"<select class=\"AnswerText\" id=\"\" name=\"\">"));
}

TEST_F(Address, TakesNoConnectionForItsForm) {
  std::vector<Variant> arguments(22, Missing{});
  arguments[0] = arguments[1] = 0;
  arguments[21] = database.ConnectionString();
  DebugOn(false);
  EXPECT_EQ(FailureOf(u"BuildAddress", std::move(arguments)), 91);
}

TEST_F(Address, RefusesWrongCallsInWords) {
  EXPECT_EQ(FailureOf(u"NoSuchMember", {}), 438);
  EXPECT_EQ(FailureOf(u"GetInitials", {}), 449);
  EXPECT_EQ(FailureOf(u"GetInitials", {u"a", u"b"}), 450);
  EXPECT_EQ(FailureOf(u"GetInitials", {Null{}}), 94);
  EXPECT_EQ(FailureOf(u"TextID", {u"seven"}), 13);
  EXPECT_EQ(FailureOf(u"BuildAddress", {40000, 0}), 6);
  EXPECT_EQ(FailureOf(u"appDictShowText", {u"text"}), 424);
  EXPECT_EQ(FailureOf(u"InsertIndividualAddress", {ObjectRef(object)}), 13);
}

TEST(Factory, KnowsItsClassesByNameInAnyCase) {
  EXPECT_EQ(CreateObject(u"VELLUM250.ADDRESS")->Class()->Name(), u"vellum250.address");
  for (TextView name : {u"address", u"vellum250.addres", u"", u"vellum250.address "}) {
    try {
      CreateObject(name);
      ADD_FAILURE() << ToUtf8(name);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), 429);
      EXPECT_NE(failure.Description().find(name), Text::npos);
    }
  }
}

}  // namespace
}  // namespace vellum250::server
