// The forms of several kinds of owners, with texts and settings of the database and of the page.
var page = CreateObject("vellum250.address");
page.Connection(Argument("database"));
page.SysDebug(false);
page.OnErrorOnly(false);
page.RemoteHostIP("127.0.0.1");
page.TextID(1);

function dictionary(entries) {
  return {
    Count: function () { return 1; },
    Exists: function (key) { return typeof entries[key] != "undefined"; },
    Item: function (key) { return entries[key]; }
  };
}

var texts = ["Home", "a & b <c> \"d\"", "O'Neil", "Caf\u00e9 \u20ac \u4e2d\ud83d\ude00",
  "\u00c2\u00a0x\t\r\n", ""];
var settings = [
  {},
  { globalEnablePaf: "true", globalDisplayAsReadOnly: "0", globalShowLabel: "true" },
  { globalEnablePaf: false, globalDisplayAsReadOnly: 1, globalShowLabel: 0,
    GeneralTown1: "Place <i>[/VAR]</i>", GeneralAddress11: null, "GeneralDisplay Name1": "[/BLANK]",
    GeneralDisplayName2: "\u00e0" }
];

for (var s = 0; s < settings.length; ++s) {
  page.appDictShowText(dictionary(settings[s]));
  page.appDictWebConfig(dictionary(settings[s]));
  for (var t = 0; t < texts.length; ++t) {
    var text = texts[t];
    page.TextID(1 + t % 2);
    Print("== settings " + s + ", text " + t);
    Print(page.BuildAddress(4 + 8 + 16 + 32 + 64 + 128 + 256 + 512 + 2048, [0, 4, 16, 64, 32767, -1][t],
      text, text, text, text, text, text, text, text, text, "", 11, "", t % 2 ? "N" : text, true,
      "INDIVIDUAL", 17, t, text, text));
    Print(page.BuildAddress(1024, t % 2 ? 1024 : 0, text, text, text, text, text, text, text, text, text,
      t > 2 ? "203" : "", 12, "11,12,13", "Y", false, text));
  }
}
Print(page.AddressDropDownList("11,12,13,14", 13, "Kind", true, "H"));
Print(page.AddressDropDownList("11,12,13,14", 13, "Kind", false, "H"));
Print(String(page.AddressDropDownList("4711")));
Print("end");
