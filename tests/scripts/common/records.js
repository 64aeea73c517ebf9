// What is stored, step by step: results, statements and messages.
var page = CreateObject("vellum250.address");
page.Connection(Argument("database"));
page.OnErrorOnly(false);
page.TextID(1);

var step = 0;
function tell(result) {
  step += 1;
  Print(step + ": " + result);
  Print("  sql: " + page.LastSql);
  Print("  error: " + page.LastError);
  page.LastSql = "";
  page.LastError = "";
}

var names = ["", " ", "john paul", "mary-jane", "j.r.", " anne", "\u00e9milie \u0153uvre", "O'Neil",
  "a" + "\u4e2d" + " \u00df"];
for (var n = 0; n < names.length; ++n) {
  var name = names[n];
  tell([page.GetInitials(name), page.GetFirstWord(name), page.DisplayAddressName("1", name, name),
    page.GetSalutationName("Dr", name, name, "PhD", "X"), page.GetKnownAsName("", "", name),
    page.GetLabelName(name, name, name, name, name)].join("|"));
}

// Values of other types where a text or a number is asked for. None below 0.0001: Wine goes over to
// exponents sooner than Windows.
var values = [0, -1, 12.5, -0.5, 0.1, 1 / 3, 100000, 1e15, 123456789012345680, 1e21,
  1.7976931348623157e308, 2147483648, 4294967296.5, true, false];
for (var v = 0; v < values.length; ++v) {
  tell([page.DisplayAddressName(values[v], "x"), page.GetInitials(values[v]),
    page.GetFirstWord(values[v])].join("|"));
}
var numbers = ["17", " 17 ", "0017", "17.5", "18.5", "1.75e1", "-0", "&H11", "1,7", "17-", "(17)", "-17-", "-\u00a317", true, 17.5];
for (v = 0; v < numbers.length; ++v) {
  var answer;
  try {
    answer = page.AmmendLocation("stranger", 1, numbers[v]);
  } catch (e) {
    answer = e.message;
  }
  tell(answer);
}

for (var debug = 0; debug < 2; ++debug) {
  page.SysDebug(debug == 1);
  for (n = 0; n < names.length; ++n) {
    tell(page.InsertIndividualAddress(49, names[n], names[n], names[n], "", "", "Caf\u00e9", "yorks",
      "yo1 1aa", "", n % 2 ? 201 : 0, 11, n, 0, n % 3 ? "Y" : "", n, n == 4, "c"));
  }
  tell(page.InsertOrganisationAddress(1, "", "it's", "1 Low Lane", "", "", "Hull"));
  tell(page.InsertContactAddress(1, "", "", "1 Low Lane", "", "", "Hull", "", "hu1 1aa", "", 203, 12));
  tell(page.CreateIndividualLinkAddress(60, 72, 11, "N", 2, false, "O'Neil"));
  tell(page.CreateOrganisationLinkAddress(2, 72, 12, "Y", 0, true, "d"));
  tell(page.CreateContactLinkAddress(2, 72, 12));
  tell(page.UpdateIndividualAddress(72, 75, "", "d", "1 High Lane", "", "", "York", "", "", "", 203, 12, 1,
    2, "Y", "20200229", "getdate()", true, "it's"));
  tell(page.UpdateOrganisationAddress(72, 14, "", "", "a", "", "", "", "", "", "", 0, 0, 0, 0, "N"));
  tell(page.UpdateContactAddress(14, "shown", "", "a", "", "", "b"));
  tell(page.ChangeLocationOwner(72, 75, "i"));
  tell(page.ChangeLocationOwner(72, 14, "Organisation"));
  tell(page.ChangeLocationOwner(72, 14, "x"));
  tell(page.InvalidateLocation(75, 14, 14));

  // What is posted from a form: refused, checked, new, unchanged, in place, retired, linked.
  function amend(kind, owner, link, town, more) {
    tell(page.AmmendLocation(kind, owner, link, "", "", "1 Low Lane", "", "", town, "", "ab1 2cd", "", 201,
      more.main || "N", more.type || 11, "Add1,Address:|Town,Town:|POSTCODE|Cref,Country|",
      more.check || false, false, more.person || 0, more.organisation || 0, more.contact || 0,
      more.action || 0, ""));
  }
  amend("individual", 60, 0, "", {});
  amend("individual", 60, 0, "Leeds", { check: true });
  amend("Individual", 60, 0, "Leeds", {});
  amend("INDIVIDUAL", 17, 17, "Leeds", {});
  amend("INDIVIDUAL", 17, 17, "Leeds", { action: 1 });
  amend("INDIVIDUAL", 17, 17, "Leeds", {});
  amend("INDIVIDUAL", 1, 1, "Leeds", { type: 12 });
  amend("INDIVIDUAL", 1, 1, "Leeds", { type: 12, main: "Y" });
  amend("INDIVIDUAL", 2, 2, "\u0141\u00f3d\u017a", { action: 2, person: 5, organisation: 3, contact: 4 });
  amend("organisation", 1, 1, "Leeds", {});
  amend("contact", 3, 3, "Leeds", { main: "Y" });
  amend("stranger", 1, 1, "Leeds", {});
}

// Trapped and in words, with source and step.
tell(page.InsertIndividualAddress(49, "", "", "a", "", "", "", "", "", "", 0, 0, 0, 0, "", 0, false, "it's"));
tell(page.InsertIndividualAddress(49, "", "", "a", "", "", "", "", "", "", 0, 0, 0, 1));
tell(page.DisplayAddressName());
tell(page.UpdateContactAddress(4711));
page.Connection("Driver=Vellum250;Database=missing.db;");
tell(page.InsertIndividualAddress(49, "", "", "a"));
Print("end");
