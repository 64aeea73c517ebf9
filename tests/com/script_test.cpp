// Pages: the real script engines against the binding.
#include "com/script.h"

#include <gtest/gtest.h>

#include "com/probe.h"
#include "server/com/module.h"

namespace vellum250::com {
namespace {

// What the page said, and what it failed with.
std::string Page(const wchar_t* engine, const char16_t* source) {
  const Ref<Probe> probe = MakeObject<Probe>();
  const Text failure = RunScript(engine, source, probe);
  return ToUtf8(probe->said + failure);
}

TEST(VbScript, CallsAsPagesDo) {
  const struct {
    const char16_t* source;
    const char* said;
  } cases[] = {
      {u"probe.Say probe.Options", "absent:,preset,3\n"},
      {u"probe.Say probe.Options(\"a\", , 5)", "given:a,preset,5\n"},
      {u"a = \"one\" : b = 2 : probe.Exchange a, b : probe.Say a & b & TypeName(a)",
       "2oneString\n"},
      {u"Sub S(x) : probe.Change x, 7 : End Sub\n"
       u"Dim a : a = \"one\" : S a : probe.Say a & TypeName(a)",
       "7Integer\n"},
      {u"a = Array(1, 2) : probe.Change a(1), \"x\" : probe.Say a(1)", "x\n"},
      {u"For Each b In probe.Books : If IsNull(b) Then b = \"null\"\nprobe.Say b : Next",
       "one\n2\nnull\n"},
      {u"For Each b In probe.Books.NewEnum : probe.Say TypeName(b) : Next", "String\nLong\nNull\n"},
      {u"probe.Say probe.Books(2)", "2\n"},
      {u"Set b = probe.Books : probe.Say b(1) & b.Item(2) & b.Count", "one23\n"},
      {u"Set a = probe.Me : probe.Say \"\" & (a Is probe) & (probe.NewProbe Is probe)",
       "TrueFalse\n"},
      {u"probe.Note = 5 : probe.Say probe.NOTE & probe.note", "55\n"},
      {u"Set probe.Held = probe : probe.Say probe.Held Is probe : Set probe.Held = Nothing\n"
       u"probe.Say probe.Held Is Nothing",
       "True\nTrue\n"},
      {u"On Error Resume Next\nprobe.Absent\nprobe.Say Err.Number\nErr.Clear\n"
       u"probe.Raise \"words\"\nprobe.Say Err.Number & Err.Description & Err.Source",
       "438\n1234wordssomewhere\n"},
      {u"Class T : Public Default Property Get V : V = \"4\" : End Property : End Class\n"
       u"Set t1 = New T : probe.Note = t1 : probe.Say probe.Note & probe.Trivial(t1)",
       "44\n"},
      {u"\nprobe.Trivial \"x\"", "line 2: 13: Type mismatch: number of Trivial"},
      {u"probe.Say probe", "line 1: 13: Type mismatch: text of Say"},
      // Of the page's own objects.
      {u"Set d = CreateObject(\"Scripting.Dictionary\") : d(\"k\") = \"v\"\n"
       u"probe.Say probe.Ask(d, \"Count\") & probe.Ask(d, \"Exists\", \"k\") &"
       u" probe.Ask(d, \"Item\", \"k\") & probe.Ask(d, \"\", \"k\")",
       "1Truevv\n"},
      {u"Set d = CreateObject(\"Scripting.Dictionary\") : probe.Tell d, \"Item\", \"k\", 5\n"
       u"probe.Say d(\"k\") : Set probe.Held = d : Set probe.Anything = d\n"
       u"probe.Say \"\" & (probe.Held Is d) & (probe.Anything Is d)\n"
       u"probe.Say probe.Held.Item(\"k\") & probe.Held(\"k\")",
       "5\nTrueTrue\n55\n"},
      {u"On Error Resume Next\nSet d = CreateObject(\"Scripting.Dictionary\") : d.Add 1, 1\n"
       u"probe.Ask d, \"Remove\", 2\nprobe.Say Err.Number <> 0\nErr.Clear\n"
       u"probe.Ask d, \"Gone\"\nprobe.Say Err.Number & Err.Description",
       "True\n438Object doesn't support this property or method: Gone\n"},
      {u"Class C : Public Default Function F(k) : F = k & \"!\" : End Function\n"
       u"Public Function Self() : Set Self = Me : End Function : End Class\n"
       u"Set o = New C : probe.Say probe.Ask(o, \"\", \"k\")\n"
       u"Set s = probe.Ask(o, \"Self\") : probe.Say s Is o",
       "k!\nTrue\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Page(L"VBScript", c.source), c.said) << ToUtf8(c.source);
  }
}

TEST(JScript, CallsAsPagesDo) {
  const struct {
    const char16_t* source;
    const char* said;
  } cases[] = {
      {u"probe.Say(probe.Options(undefined, 'b'));", "given:,b,3\n"},
      {u"probe.Say(probe.TypeOf(undefined) + probe.TypeOf(null) + probe.TypeOf(true) +"
       u" probe.TypeOf(1.5) + probe.TypeOf('x') + probe.TypeOf(probe));",
       "EmptyNullBooleanDoubleTextObject\n"},
      {u"for (var e = new Enumerator(probe.Books); !e.atEnd(); e.moveNext())"
       u" probe.Say(String(e.item()));",
       "one\n2\nnull\n"},
      {u"probe.Held = probe; probe.Say(String(probe.Held == probe)); probe.Held = undefined;",
       "true\n"},
      {u"try { probe.Raise('words'); } catch (e) { probe.Say((e.number & 0xFFFF) + e.message); }",
       "1234words\n"},
      {u"var o = { Item: function (k) { return k + '!'; } }; probe.Say(probe.Ask(o, 'Item', 'k'));"
       u"probe.Say(probe.TypeOf(probe.Ask({ Count: function () { return 5; } }, 'Count')));",
       "k!\nInt32\n"},
      {u"probe.Say(probe.TypeOf([1]) + probe.TypeOf({}));", "ObjectObject\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Page(L"JScript", c.source), c.said) << ToUtf8(c.source);
  }
}

TEST(Scripts, LeaveNothingBehind) {
  const int32_t adapters = Live().adapters, hosts = Live().hostObjects;
  const int32_t probes = Probe::living;
  Page(L"VBScript",
       u"Set d = CreateObject(\"Scripting.Dictionary\") : d.Add \"probe\", probe.NewProbe\n"
       u"Set n = probe.NewProbe : Set n.Held = d : Set n.Anything = probe\n"
       u"For Each b In probe.Books : Exit For : Next\n"
       u"Set d(\"probe\").Held = probe.Books : Set d = Nothing");
  EXPECT_EQ(Live().adapters, adapters);
  EXPECT_EQ(Live().hostObjects, hosts);
  EXPECT_EQ(Probe::living, probes);
}

}  // namespace
}  // namespace vellum250::com
