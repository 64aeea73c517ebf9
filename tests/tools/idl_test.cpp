// What vellum250-idl writes, of a small class with every kind of member and of the published ones.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "vellum250-idl/library.h"

namespace vellum250::idltool {
namespace {

class Probe final : public ScriptObject<Probe> {
 public:
  static const ClassTable& Table() {
    static const ClassTable table =
        Describe<Probe>(u"sample.Probe")
            .Property<&Probe::Note>(u"Note")
            .ReadOnlyProperty<&Probe::Count>(u"Count")
            .Property<&Probe::Target>(u"Target")
            .Property<&Probe::Value>(u"Value")
            .ReadOnlyProperty<&Probe::NewEnum>(u"NewEnum")
            .AsEnumerator()
            .Method<&Probe::Item>(u"Item", {u"index"})
            .AsDefault()
            .Method<&Probe::Change>(u"Change", {u"text", Opt(u"level", int32_t{7}), Opt(u"count"),
                                                Opt(u"day"), Opt(u"note", u"\"x\"")})
            .Method<&Probe::Take>(u"Take", {u"item", Opt(u"kind", u"\"y\""), Opt(u"on", true),
                                            Opt(u"any"), Opt(u"half", 0.5), Opt(u"Text")});
    return table;
  }
  Text Note;
  ObjectRef Target;
  Variant Value;
  ObjectRef NewEnum() { return {}; }
  Variant Item(const Variant&) { return {}; }
  int16_t Count() const { return 0; }
  void Change(Text&, int32_t, uint8_t&, Date, const Text&) {}
  ObjectRef Take(const ObjectRef&, Text, bool&, const Variant&, double, std::optional<bool>) {
    return {};
  }
};

const Library kLibrary{"sample",
                       "{00000000-0000-0000-0000-000000000001}",
                       "2.1",
                       "2.1.3",
                       {{&Probe::Table(), "{00000000-0000-0000-0000-000000000002}",
                         "{00000000-0000-0000-0000-000000000003}"}}};

TEST(Idl, DescribesEveryKindOfMember) {
  const std::string idl = WriteIdl(kLibrary);
  EXPECT_EQ(idl.substr(0, idl.find("\ntypedef")),
            "// Written by vellum250-idl from the class tables.\n"
            "// value stands as Value.\n"
            "// count stands as Count.\n"
            "// note stands as Note.\n"
            "// item stands as Item.\n"
            "// Text stands as text.\n");
  EXPECT_EQ(idl.substr(idl.find("[uuid(00000000-0000-0000-0000-000000000001)")),
            R"([uuid(00000000-0000-0000-0000-000000000001), version(2.1),
 helpstring("sample 2.1.3")]
library sample {
  dispinterface _Probe;

  [uuid(00000000-0000-0000-0000-000000000003), hidden]
  dispinterface _Probe {
    properties:
    methods:
      [id(1), propget] BSTR Note();
      [id(1), propput] void Note(
          [in] BSTR Value);
      [id(2), propget] short Count();
      [id(3), propget] IDispatch* Target();
      [id(3), propputref] void Target(
          [in] IDispatch* Value);
      [id(4), propget] VARIANT Value();
      [id(4), propput] void Value(
          [in] VARIANT Value);
      [id(4), propputref] void Value(
          [in] VARIANT Value);
      [id(-4), restricted, propget] IUnknown* NewEnum();
      [id(0)] VARIANT Item(
          [in] VARIANT* index);
      [id(7)] void Change(
          [in, out] BSTR* text,
          [in, optional, defaultvalue(7)] long level,
          [in, out, optional] unsigned char* Count,
          [in, optional] DATE day,
          [in, optional] BSTR* Note /* = "\"x\"" */);
      [id(8)] IDispatch* Take(
          [in] IDispatch** Item,
          [in, optional, defaultvalue("\"y\"")] BSTR kind,
          [in, out, optional] VARIANT_BOOL* on /* = -1 */,
          [in, optional] VARIANT* any,
          [in, optional] double half /* = 0.5 */,
          [in, optional] VARIANT_BOOL text);
  };

  [uuid(00000000-0000-0000-0000-000000000002), helpstring("sample.Probe")]
  coclass Probe {
    [default] dispinterface _Probe;
  };
};
)");
}

// Without a word: a warning there means that something is missing in the type library.
TEST(Idl, IsCompiledByWidl) {
  const auto folder = std::filesystem::path(testing::TempDir()) / "vellum250-idl";
  std::filesystem::create_directories(folder);
  for (const Library& library : {kLibrary, PublishedLibrary()}) {
    for (const std::string bits : {"32", "64"}) {
      const std::string base = folder / (library.name + bits);
      std::ofstream(base + ".idl", std::ios::binary) << WriteIdl(library);
      const std::string widl = "x86_64-w64-mingw32-widl --win" + bits + " -t -o " + base + ".tlb " +
                               base + ".idl >" + base + ".log 2>&1";
      EXPECT_EQ(std::system(widl.c_str()), 0);
      std::stringstream said;
      said << std::ifstream(base + ".log").rdbuf();
      EXPECT_EQ(said.str(), "");
      EXPECT_GT(std::filesystem::file_size(base + ".tlb"), 1000U);
    }
  }
  std::filesystem::remove_all(folder);
}

TEST(Idl, ReferenceInTheDocumentsIsUpToDate) {
  std::stringstream kept;
  kept << std::ifstream(VELLUM250_SOURCE_DIR "/docs/interface.md").rdbuf();
  EXPECT_TRUE(kept.str() == WriteReference(PublishedLibrary()))
      << "vellum250-idl --markdown >docs/interface.md brings it up to date";
}

TEST(Idl, ReferenceTellsTypesDefaultsAndChanges) {
  const std::string page = WriteReference(kLibrary);
  EXPECT_EQ(page.substr(page.find("### NewEnum")),
            R"(### NewEnum

What `For Each` walks. Object property, read only.

### Item

The default member. Variant result. `Item(index)`

| Parameter | Type | Given |
|---|---|---|
| `index` | Variant | required |

### Change

`Change(text, [level], [count], [day], [note])`

| Parameter | Type | Given |
|---|---|---|
| `text` | String | required, comes back changed |
| `level` | Long | optional, `7` |
| `count` | Byte | optional, comes back changed |
| `day` | Date | optional |
| `note` | String | optional, `""x""` |

### Take

Object result. `Take(item, [kind], [on], [any], [half], [Text])`

| Parameter | Type | Given |
|---|---|---|
| `item` | Object | required |
| `kind` | String | optional, `""y""` |
| `on` | Boolean | optional, `True`, comes back changed |
| `any` | Variant | optional |
| `half` | Double | optional, `0.5` |
| `Text` | Boolean | optional |
)");
}

}  // namespace
}  // namespace vellum250::idltool
