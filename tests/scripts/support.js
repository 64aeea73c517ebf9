
// ---- What every script of JScript ends with: see run.mjs. ----

var expectations, disappointments;

function expect(what, got, wanted) {
  expectations = (expectations || 0) + 1;
  if (got === wanted) return;
  disappointments = true;
  Print("failed: " + what + ": " + typeof got + " [" + got + "], not [" + wanted + "]");
}

// The run-time error's own number, or the whole of any other; and its words.
function failureOf(action) {
  try {
    action();
  } catch (e) {
    return ((e.number & 0xFFFF0000) == (0x800A0000 | 0) ? e.number & 0xFFFF : e.number) + " " + e.message;
  }
  return "none";
}

// An address object with the context that a page sets, its texts and settings in `entries`.
function newPage(entries) {
  var page = CreateObject("vellum250.address");
  var dictionary = {
    // A method: Wine's engine calls every member of an object, which a number does not bear.
    Count: function () { return 1; },
    Exists: function (key) { return typeof entries[key] != "undefined"; },
    Item: function (key) { return entries[key]; }
  };
  page.Connection(Argument("database"));
  page.SysDebug(false);
  page.OnErrorOnly(false);
  page.TextID(1);
  page.appDictShowText(dictionary);
  page.appDictWebConfig(dictionary);
  return page;
}

function finish() {
  if (expectations && !disappointments) Print("passed " + expectations);
}
