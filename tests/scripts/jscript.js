// What is JScript's own: characters beyond the code page, undefined and null, its objects.
var entries = {
  globalEnablePaf: false, globalDisplayAsReadOnly: 1, globalShowLabel: "false",
  GeneralTown1: "Plac\u00e9 \u4e2d\ud83d\ude00", GeneralAddress11: null
};
var page = newPage(entries);
var other = CreateObject("vellum250.address");

// Characters
expect("initials", page.GetInitials("\u00e9lan \u4e2d\u6587"), "\u00c9 \u4e2d");
expect("pairs", page.GetFirstWord("\ud83d\ude00x y"), "\ud83d\ude00x");
expect("zero", page.DisplayAddressName("a\u0000b"), "a\u0000b");
expect("half a pair", page.DisplayAddressName("a\ud83d"), "a\ud83d");
var form = page.BuildAddress(64, 64, "", "", "\u00e9 \u20ac \u4e2d <b> \"q\"");
expect("encoded by the code page", form.indexOf('value="&#233; &#128; \u4e2d &lt;b&gt; &quot;q&quot;">') > 0,
  true);
expect("label", form.indexOf("Plac\u00e9 \u4e2d\ud83d\ude00&nbsp;") > 0, true);
expect("label of null", form.indexOf("Address:&nbsp;") > 0, true);

// Left out at the end, undefined, null
expect("undefined", page.DisplayAddressName(undefined, "Leeds"), "Leeds");
expect("undefined number", page.AddressDropDownList("11", undefined).length > 0, true);
expect("null", failureOf(function () { page.GetInitials(null); }),
  "94 Invalid use of Null: sInput of GetInitials");
expect("Empty comes as undefined", typeof page.AddressDropDownList("4711"), "undefined");

// Types of results and properties
expect("boolean", page.ChangeLocationOwner(14, 4711, "I"), false);
expect("number", page.AmmendLocation("I", 1, 5), 5);
page.LastSql = 12.5;
expect("text", page.LastSql, "12.5");
expect("letter case", page.LASTSQL, "12.5");
expect("number as text", page.AmmendLocation("I", "1", "5"), 5);
expect("whole double", page.AmmendLocation("I", 1, 10 / 2), 5);

// By name, as pages without a host's CreateObject do
expect("created", new ActiveXObject("vellum250.address").GetInitials("anne marie"), "A M");
expect("no such class", failureOf(function () { new ActiveXObject("vellum250.adress"); }).substr(0, 4), "429 ");

// Identity, objects in the wrong place
expect("same", page == page, true);
expect("not the same", page == other, false);
expect("object for a text", failureOf(function () { page.GetInitials(other); }),
  "13 Type mismatch: sInput of GetInitials");

expect("its own text", page.GetInitials(new String("John P")), "J P");
expect("its own number", page.GetFirstWord(new Number(12)), "12");

// Its own objects as dictionaries
expect("asked each time", (entries.GeneralTown1 = "Village", page.BuildAddress(64, 0)).indexOf(
  "Village&nbsp;") > 0, true);
page.appDictShowText({
  Count: function () { return 1; },
  Exists: function () { return true; },
  Item: function (key) { return this.before + key; },
  before: "*"
});
expect("methods", page.BuildAddress(64, 0).indexOf("*GeneralTown1&nbsp;") > 0, true);
page.appDictShowText({ Count: function () { return 1; } });
expect("half a dictionary", failureOf(function () { page.BuildAddress(64, 0); }),
  "438 Object doesn't support this property or method: Exists");
page.appDictShowText({ Count: function () { return 0; } });
expect("an empty one", page.BuildAddress(64, 0).indexOf("Town:&nbsp;") > 0, true);

finish();
