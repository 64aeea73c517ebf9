// What arrives in a call, and what comes back.
#include <gtest/gtest.h>

#include "com/allocations.h"
#include "com/probe.h"
#include "server/com/module.h"

// Not in the headers.
extern "C" void WINAPI SetOaNoCache();

namespace vellum250::com {

namespace {

class Calls : public testing::Test {
 protected:
  Ref<Probe> object_ = MakeObject<Probe>();
  ComPtr<IDispatch> probe_ = ToDispatch(object_);
};

VARIANT LeftOut() { return Value(Missing{}); }

TEST_F(Calls, NamesHaveNoCaseAndIdsFollowTheInterface) {
  EXPECT_EQ(IdOf(probe_.get(), L"Note"), 1);
  EXPECT_EQ(IdOf(probe_.get(), L"bOOKS"), 5);
  EXPECT_EQ(IdOf(probe_.get(), L"absent"), DISPID_UNKNOWN);
  const ComPtr<IDispatch> shelf = ToDispatch(object_->Books());
  EXPECT_EQ(IdOf(shelf.get(), L"Item"), DISPID_VALUE);
  EXPECT_EQ(IdOf(shelf.get(), L"newenum"), DISPID_NEWENUM);

  const wchar_t* names[] = {L"options", L"THIRD", L"nowhere", L"first"};
  DISPID ids[4] = {};
  EXPECT_EQ(probe_->GetIDsOfNames(IID_NULL, const_cast<wchar_t**>(names), 4, 0, ids),
            DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[1], 2);
  EXPECT_EQ(ids[2], DISPID_UNKNOWN);
  EXPECT_EQ(ids[3], 0);
}

TEST_F(Calls, ArgumentsByPositionByNameAndLeftOut) {
  const struct {
    std::vector<VARIANT> arguments;
    std::vector<const wchar_t*> names;
    const char16_t* expected;
  } cases[] = {
      {{}, {}, u"absent:,preset,3"},
      {{Value(u"a")}, {}, u"given:a,preset,3"},
      {{Value(u"a"), LeftOut(), Value(7)}, {}, u"given:a,preset,7"},
      {{LeftOut(), Value(u"b"), LeftOut()}, {}, u"absent:,b,3"},
      {{Value(5)}, {L"Third"}, u"absent:,preset,5"},
      {{Value(u"a"), Value(5)}, {L"third"}, u"given:a,preset,5"},
      {{Value(5), Value(u"b")}, {L"third", L"second"}, u"absent:,b,5"},
      // No value is the zero value, not the preset one.
      {{Value({}), Value({}), Value({})}, {}, u"given:,,0"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Call(probe_.get(), L"Options", c.arguments, kCall, c.names);
    EXPECT_EQ(outcome.value, Variant(c.expected)) << ToUtf8(outcome.description);
  }
}

TEST_F(Calls, FailuresHaveTheirNumberAndNameMemberAndParameter) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  VARIANT anArray{};
  anArray.vt = VT_ARRAY | VT_VARIANT;
  anArray.parray = array;
  const struct {
    const wchar_t* member;
    std::vector<VARIANT> arguments;
    std::vector<const wchar_t*> names;
    int32_t number;
    TextView named;
  } cases[] = {
      {L"Needs", {Value(u"x"), Value(u"y")}, {}, 13, u"number of Needs"},
      {L"Needs", {anArray, Value(u"y")}, {}, 13, u"an array: number of Needs"},
      {L"Needs", {Value(1), Value(Null{})}, {}, 94, u"text of Needs"},
      {L"Needs", {Value(70000), Value(u"y")}, {}, 6, u"number of Needs"},
      {L"Needs", {Value(1)}, {}, 449, u"text of Probe.Needs"},
      {L"Needs", {LeftOut(), Value(u"y")}, {}, 449, u"number of Probe.Needs"},
      {L"Needs", {Value(1), Value(u"y"), Value(2)}, {}, 450, u"Probe.Needs"},
      {L"Needs", {Value(1), Value(u"y"), Value(2)}, {L"number"}, 450, u"number of Needs"},
      {L"Trivial", {Value(object_)}, {}, 13, u"number of Trivial"},
      {L"Same", {Value(1), Value(1)}, {}, 424, u"first of Same"},
      {L"Raise", {Value(u"as asked")}, {}, 1234, u"as asked"},
      {L"Raise", {Value(u"memory")}, {}, 7, u"Out of memory"},
      {L"Raise", {Value(u"standard")}, {}, 51, u"out of range"},
      {L"Raise", {Value(u"unknown")}, {}, 51, u"Internal error"},
  };
  for (const auto& c : cases) {
    const Outcome outcome = Call(probe_.get(), c.member, c.arguments, kCall, c.names);
    EXPECT_EQ(outcome.result, DISP_E_EXCEPTION);
    EXPECT_EQ(outcome.number, c.number) << ToUtf8(outcome.description);
    EXPECT_NE(outcome.description.find(c.named), Text::npos) << ToUtf8(outcome.description);
  }
  SafeArrayDestroy(array);

  EXPECT_EQ(Call(probe_.get(), L"Books", {Value(1)}, DISPATCH_PROPERTYPUT).number, 438);
  DISPPARAMS none{};
  EXPECT_EQ(probe_->Invoke(99, IID_NULL, 0, kCall, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(probe_->Invoke(DISPID_VALUE, IID_NULL, 0, kCall, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND)
      << "no default member";
  EXPECT_EQ(probe_->Invoke(1, IID_IDispatch, 0, kCall, &none, nullptr, nullptr, nullptr),
            DISP_E_UNKNOWNINTERFACE);
}

TEST_F(Calls, PropertiesAreReadAndAssigned) {
  for (const int put : {DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF,
                        DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF}) {
    object_->Held = nullptr;
    EXPECT_EQ(Call(probe_.get(), L"Held", {Value(object_)}, static_cast<WORD>(put)).result, S_OK)
        << put;
    EXPECT_EQ(object_->Held, ObjectRef(object_)) << put;
  }
  object_->Held = nullptr;
  Call(probe_.get(), L"Note", {Value(5)}, DISPATCH_PROPERTYPUT);
  for (const int get : {DISPATCH_PROPERTYGET, DISPATCH_METHOD, int{kCall}}) {
    EXPECT_EQ(Call(probe_.get(), L"Note", {}, static_cast<WORD>(get)).value, Variant(u"5")) << get;
  }
  EXPECT_EQ(Call(probe_.get(), L"Books", {Value(2)}).value, Variant(2)) << "through the default";
  EXPECT_EQ(Call(probe_.get(), L"Books", {Value(9)}).number, 9);
}

TEST_F(Calls, EveryKindOfValueArrives) {
  VARIANT decimal = Value(Decimal{u"-1.5"});
  const auto make = [](VARTYPE type, uint64_t bits) {
    VARIANT value{};
    value.vt = type;
    value.ullVal = bits;
    return value;
  };
  const auto real = [&](VARTYPE type, auto number) {
    VARIANT value{};
    value.vt = type;
    std::memcpy(&value.byref, &number, sizeof number);
    return value;
  };
  const struct {
    VARIANT given;
    const char16_t* type;
    const char16_t* text;
  } cases[] = {
      {make(VT_EMPTY, 0), u"Empty", u""},
      {make(VT_BOOL, 0xFFFF), u"Boolean", u"True"},
      {make(VT_BOOL, 1), u"Boolean", u"True"},
      {make(VT_UI1, 200), u"Byte", u"200"},
      {make(VT_I1, 0xFE), u"Int16", u"-2"},
      {make(VT_I2, 0xFFFE), u"Int16", u"-2"},
      {make(VT_UI2, 0xFFFE), u"Int32", u"65534"},
      {make(VT_I4, 0xFFFFFFFE), u"Int32", u"-2"},
      {make(VT_INT, 7), u"Int32", u"7"},
      {make(VT_UI4, 0xFFFFFFFE), u"Decimal", u"4294967294"},
      {make(VT_UINT, 7), u"Int32", u"7"},
      {make(VT_I8, 0x8000000000000000), u"Decimal", u"-9223372036854775808"},
      {make(VT_UI8, 0xFFFFFFFFFFFFFFFF), u"Decimal", u"18446744073709551615"},
      {real(VT_R4, 0.5F), u"Double", u"0.5"},
      {real(VT_R8, -2.25), u"Double", u"-2.25"},
      {make(VT_CY, 12345), u"Currency", u"1.2345"},
      {decimal, u"Decimal", u"-1.5"},
      {make(VT_BSTR, 0), u"Text", u""},
      {Value(u"\u00e9\U0001d54f"), u"Text", u"\u00e9\U0001d54f"},
      {make(VT_DISPATCH, 0), u"Object", nullptr},
      {make(VT_UNKNOWN, 0), u"Object", nullptr},
      {make(VT_NULL, 0), u"Null", nullptr},
      {LeftOut(), u"Missing", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Call(probe_.get(), L"TypeOf", {c.given}).value, Variant(c.type)) << c.given.vt;
    VARIANT inner = c.given;
    VARIANT outer = Reference(VT_VARIANT, inner);
    EXPECT_EQ(Call(probe_.get(), L"TypeOf", {Reference(VT_VARIANT, outer)}).value, Variant(c.type))
        << "through two references " << c.given.vt;
    if (c.text == nullptr) continue;
    EXPECT_EQ(Call(probe_.get(), L"Note", {c.given}, DISPATCH_PROPERTYPUT).result, S_OK);
    EXPECT_EQ(object_->Note, c.text) << c.given.vt;
    // And back, as the same type.
    Call(probe_.get(), L"Anything", {c.given}, DISPATCH_PROPERTYPUT);
    EXPECT_EQ(Call(probe_.get(), L"TypeOf", {Value(object_->Anything)}).value, Variant(c.type));
  }
  for (const VARTYPE type : {VT_ERROR, VT_RECORD, VT_CLSID}) {
    EXPECT_EQ(Call(probe_.get(), L"TypeOf", {make(type, 1)}).number, 13) << type;
  }
  VARIANT nowhere{};
  nowhere.vt = VT_BYREF | VT_VARIANT;
  EXPECT_EQ(Call(probe_.get(), L"TypeOf", {nowhere}).number, 13);
}

template <typename T>
class Variable {
 public:
  Variable(VARTYPE type, T before) : value(before), type_(type) {}
  T value;
  // What `Change` gets for `to`: S_OK, or the failure's number.
  int32_t Change(IDispatch* probe, const Variant& to) {
    return Call(probe, L"Change", {Reference(type_, value), Value(to)}).number;
  }

 private:
  VARTYPE type_;
};

TEST_F(Calls, TypedVariablesTakeTheChangedValueInTheirOwnType) {
  const auto change = [&](VARTYPE type, auto before, const Variant& to) {
    Variable variable(type, before);
    EXPECT_EQ(variable.Change(probe_.get(), to), 0) << type;
    return variable.value;
  };
  EXPECT_EQ(change(VT_I2, int16_t{1}, u"7"), 7);
  EXPECT_EQ(change(VT_I4, 1, int16_t{-7}), -7);
  EXPECT_EQ(change(VT_INT, 1, 8.0), 8);
  EXPECT_EQ(change(VT_UI1, uint8_t{1}, 255), 255);
  EXPECT_EQ(change(VT_I8, int64_t{1}, Decimal{u"9223372036854775807"}), 9223372036854775807LL);
  EXPECT_EQ(change(VT_BOOL, VARIANT_BOOL{VARIANT_FALSE}, -1), VARIANT_TRUE);
  EXPECT_EQ(change(VT_R8, 1.0, u"2.5"), 2.5);
  EXPECT_EQ(change(VT_R4, 1.0F, 2.5), 2.5F);
  EXPECT_EQ(change(VT_CY, int64_t{0}, u"1.5"), 15000);
  EXPECT_EQ(change(VT_DATE, 1.0, u"31/12/2020"), 44196.0) << "in the user's locale";

  Variable text(VT_BSTR, SysAllocString(L"before"));
  EXPECT_EQ(text.Change(probe_.get(), 12), 0);
  EXPECT_EQ(View(text.value), u"12");
  EXPECT_EQ(text.Change(probe_.get(), true), 0);
  EXPECT_EQ(View(text.value), u"True");
  SysFreeString(text.value);
  Variable nullText(VT_BSTR, BSTR{nullptr});
  EXPECT_EQ(nullText.Change(probe_.get(), u"set"), 0);
  EXPECT_EQ(View(nullText.value), u"set");
  SysFreeString(nullText.value);

  Variable object(VT_DISPATCH, static_cast<IDispatch*>(nullptr));
  EXPECT_EQ(object.Change(probe_.get(), object_), 0);
  EXPECT_EQ(object.value, probe_.get());
  EXPECT_EQ(object.Change(probe_.get(), ObjectRef()), 0);
  EXPECT_EQ(object.value, nullptr);

  Variable number(VT_I4, 1);
  EXPECT_EQ(number.Change(probe_.get(), u"no number"), 13);
  EXPECT_EQ(number.Change(probe_.get(), Null{}), 13);
  EXPECT_EQ(number.Change(probe_.get(), 1e10), 6);
  EXPECT_EQ(number.value, 1) << "left as it was";
}

TEST_F(Calls, AVariableThatCannotTakeAChangedTextIsRefusedBeforeTheCall) {
  int16_t number = 5;
  Bstr text(u"before");
  BSTR variable = text.get();
  const VARIANT first = Reference(VT_BSTR, variable);
  VARIANT second = Reference(VT_I2, number);
  for (const VARIANT& argument : {second, Reference(VT_VARIANT, second)}) {
    const Outcome outcome = Call(probe_.get(), L"Exchange", {first, argument});
    EXPECT_EQ(outcome.number, 13);
    EXPECT_EQ(outcome.description,
              u"Type mismatch: a variable that takes no text: second of Exchange");
  }
  EXPECT_EQ(number, 5);
  EXPECT_EQ(View(text.get()), u"before");
}

TEST_F(Calls, VariantVariablesTakeTheChangedValueAsItIs) {
  OwnedVariant text;
  text.vt = VT_BSTR;
  text.bstrVal = SysAllocString(L"before");
  VARIANT outer = Reference(VT_VARIANT, static_cast<VARIANT&>(text));
  Call(probe_.get(), L"Change", {Reference(VT_VARIANT, outer), Value(5)});
  EXPECT_EQ(text.vt, VT_I4);
  EXPECT_EQ(text.lVal, 5);

  // A reference within the variable: a script's argument handed on.
  int16_t number = 1;
  VARIANT typed = Reference(VT_I2, number);
  Call(probe_.get(), L"Change", {Reference(VT_VARIANT, typed), Value(u"6")});
  EXPECT_EQ(number, 6);

  OwnedVariant first, second;
  first.vt = second.vt = VT_BSTR;
  first.bstrVal = SysAllocString(L"one");
  second.bstrVal = SysAllocString(L"two");
  VARIANT byValue = Value(u"by value");
  Call(probe_.get(), L"Exchange",
       {Reference(VT_VARIANT, static_cast<VARIANT&>(first)),
        Reference(VT_VARIANT, static_cast<VARIANT&>(second))});
  EXPECT_EQ(View(first.bstrVal), u"two");
  EXPECT_EQ(View(second.bstrVal), u"one");
  Call(probe_.get(), L"Exchange", {Reference(VT_VARIANT, static_cast<VARIANT&>(first)), byValue},
       kCall, {L"second"});
  EXPECT_EQ(View(first.bstrVal), u"by value");
  EXPECT_EQ(View(byValue.bstrVal), u"by value");

  // What the member did not change keeps also its type, and what it changed comes back when it
  // fails.
  VARIANT kept = Value(int16_t{7});
  Call(probe_.get(), L"Needs", {Reference(VT_VARIANT, kept), Value(u"")});
  EXPECT_EQ(kept.vt, VT_I2);
  EXPECT_EQ(Call(probe_.get(), L"ChangeAndFail",
                 {Reference(VT_VARIANT, static_cast<VARIANT&>(first)), Value(62)})
                .number,
            62);
  EXPECT_EQ(View(first.bstrVal), u"changed");
}

// Counts what automation allocates on its own: texts above all. It lives on a test's stack.
class MallocSpy final : public IMallocSpy {
 public:
  virtual ~MallocSpy() = default;
  int64_t allocations = 0;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IMallocSpy ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return ++allocations, size; }
  void* STDMETHODCALLTYPE PostAlloc(void* memory) override { return memory; }
  void* STDMETHODCALLTYPE PreFree(void* memory, BOOL) override { return memory; }
  void STDMETHODCALLTYPE PostFree(BOOL) override {}
  SIZE_T STDMETHODCALLTYPE PreRealloc(void* memory, SIZE_T size, void** real, BOOL) override {
    *real = memory;
    return ++allocations, size;
  }
  void* STDMETHODCALLTYPE PostRealloc(void* memory, BOOL) override { return memory; }
  void* STDMETHODCALLTYPE PreGetSize(void* memory, BOOL) override { return memory; }
  SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
  void* STDMETHODCALLTYPE PreDidAlloc(void* memory, BOOL) override { return memory; }
  int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int result) override { return result; }
  void STDMETHODCALLTYPE PreHeapMinimize() override {}
  void STDMETHODCALLTYPE PostHeapMinimize() override {}
};

TEST_F(Calls, TakeNoMemoryButTheirTexts) {
  SetOaNoCache();  // or freed texts would be handed out again unseen
  MallocSpy spy;
  ASSERT_EQ(CoRegisterMallocSpy(&spy), S_OK);
  SysFreeString(SysAllocString(L"seen"));
  EXPECT_EQ(spy.allocations, 1);

  VARIANT variable = Value(5);
  VARIANT number = Reference(VT_VARIANT, variable);
  VARIANT to[] = {Value(6), number};  // the last one first
  const std::pair<const wchar_t*, DISPPARAMS> calls[] = {{L"trivial", {&number, nullptr, 1, 0}},
                                                         {L"Change", {to, nullptr, 2, 0}}};
  for (const auto& [name, given] : calls) {
    DISPPARAMS parameters = given;
    VARIANT answer{};
    const int64_t before = Allocations(), textsBefore = spy.allocations;
    const HRESULT result = probe_->Invoke(IdOf(probe_.get(), name), IID_NULL, 0, kCall, &parameters,
                                          &answer, nullptr, nullptr);
    EXPECT_EQ(Allocations(), before);
    EXPECT_EQ(spy.allocations, textsBefore);
    EXPECT_EQ(result, S_OK);
  }
  EXPECT_EQ(CoRevokeMallocSpy(), S_OK);
  EXPECT_EQ(variable.lVal, 6);
}

TEST_F(Calls, ObjectsKeepTheirIdentity) {
  OwnedVariant me;
  DISPPARAMS none{};
  probe_->Invoke(IdOf(probe_.get(), L"Me"), IID_NULL, 0, kCall, &none, &me, nullptr, nullptr);
  EXPECT_EQ(me.pdispVal, probe_.get());
  ComPtr<IUnknown> one, other;
  probe_->QueryInterface(IID_IUnknown, one.OutVoid());
  me.pdispVal->QueryInterface(IID_IUnknown, other.OutVoid());
  EXPECT_EQ(one.get(), other.get());
  EXPECT_EQ(Call(probe_.get(), L"Same", {Value(object_), Value(object_)}).value, Variant(true));

  const int32_t adapters = Live().adapters;
  const ObjectRef books = object_->Books();
  const void* first = ToDispatch(books).get();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(Live().adapters, adapters) << "gone with its last reference";
  EXPECT_EQ(LivingDispatch(books.get()), nullptr);
}

TEST_F(Calls, EnumeratorsWalkSkipAndClone) {
  OwnedVariant answer;
  DISPPARAMS none{};
  const ComPtr<IDispatch> shelf = ToDispatch(object_->Books());
  for (const int flags : {DISPATCH_METHOD, DISPATCH_PROPERTYGET, int{kCall}}) {
    VariantClear(&answer);
    ASSERT_EQ(shelf->Invoke(DISPID_NEWENUM, IID_NULL, 0, static_cast<WORD>(flags), &none, &answer,
                            nullptr, nullptr),
              S_OK);
  }
  ComPtr<IEnumVARIANT> walk;
  ASSERT_EQ(answer.punkVal->QueryInterface(IID_IEnumVARIANT, walk.OutVoid()), S_OK);
  OwnedVariant element;
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(1, &element, nullptr), S_OK);
  EXPECT_EQ(View(element.bstrVal), u"one");
  ComPtr<IEnumVARIANT> clone;
  ASSERT_EQ(walk->Clone(clone.Out()), S_OK);
  EXPECT_EQ(walk->Skip(1), S_OK);
  VARIANT rest[5] = {};
  EXPECT_EQ(walk->Next(5, rest, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1u);
  EXPECT_EQ(rest[0].vt, VT_NULL);
  EXPECT_EQ(walk->Skip(1), S_FALSE);
  EXPECT_EQ(clone->Next(1, rest, &fetched), S_OK);
  EXPECT_EQ(rest[0].lVal, 2) << "where the other one stood";
  EXPECT_EQ(walk->Reset(), S_OK);
  EXPECT_EQ(walk->Skip(3), S_OK);
  EXPECT_EQ(walk->Next(2, rest, nullptr), E_INVALIDARG);
  // The object is the same by both of its interfaces.
  ComPtr<IUnknown> one, other;
  walk->QueryInterface(IID_IUnknown, one.OutVoid());
  answer.punkVal->QueryInterface(IID_IUnknown, other.OutVoid());
  EXPECT_EQ(one.get(), other.get());
}

}  // namespace
}  // namespace vellum250::com
