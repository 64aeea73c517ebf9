// Classes with a member for everything that a script engine can ask of one, and a caller that asks
// in the engine's own way.
#pragma once

#include <initializer_list>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

#include "automation/class_table.h"
#include "platform/windows/ole_failures.h"
#include "server/com/adapter.h"
#include "server/com/values.h"

namespace vellum250::com {

// A collection with a default member and a standard enumerator.
class Shelf final : public ScriptObject<Shelf> {
 public:
  static const ClassTable& Table();
  std::vector<Variant> books = {u"one", 2, Null{}};

  int32_t Count() const { return static_cast<int32_t>(books.size()); }
  ObjectRef NewEnum();
  Variant Item(int32_t position) const;
};

class Probe final : public ScriptObject<Probe> {
 public:
  static const ClassTable& Table();
  Probe() { ++living; }
  ~Probe() override { --living; }
  static inline int32_t living = 0;

  Text Note;
  Variant Anything;
  ObjectRef Held;
  Text said;

  void Say(const Text& text) { said += text + u"\n"; }
  ObjectRef Books() { return books_; }
  ObjectRef Me() { return ObjectRef(this); }
  ObjectRef NewProbe() { return MakeObject<Probe>(); }
  int32_t Trivial(int32_t number) { return number; }
  Text TypeOf(const Variant& value);
  // "given:" or "absent:" and the value of each.
  Text Options(const std::optional<Text>& first, const Text& second, int32_t third);
  Text Needs(int16_t number, const Text& text) { return NumberText(number) + text; }
  void Change(Variant& value, const Variant& to) { value = to; }
  void Exchange(Text& first, Text& second) { std::swap(first, second); }
  void ChangeAndFail(Text& text, int32_t number);
  void Raise(const Text& what);
  bool Same(const ObjectRef& first, const ObjectRef& second) { return first == second; }
  Variant Ask(const ObjectRef& object, const Text& member, const Variant& key);
  void Tell(const ObjectRef& object, const Text& member, const Variant& key, const Variant& value);

 private:
  ObjectRef books_ = MakeObject<Shelf>();
};

// What one call came to.
struct Outcome {
  HRESULT result = S_OK;
  int32_t number = 0;  // of the failure, as a script's Err has it
  Text description;
  Variant value;
};

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

// Calls by name. `arguments` are in the interface's order; the last ones are named by `names`.
Outcome Call(IDispatch* object, const wchar_t* member, std::vector<VARIANT> arguments,
             WORD flags = kCall, std::vector<const wchar_t*> names = {});

DISPID IdOf(IDispatch* object, const wchar_t* name);

// A variable passed by reference.
template <typename T>
VARIANT Reference(VARTYPE type, T& variable) {
  VARIANT reference{};
  reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
  reference.byref = &variable;
  return reference;
}

// An argument by value; what it owns is left to the process.
inline VARIANT Value(const Variant& value) {
  VARIANT made{};
  ToAutomation(value, made);
  return made;
}

}  // namespace vellum250::com
