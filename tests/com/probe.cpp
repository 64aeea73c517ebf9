#include "com/probe.h"

namespace vellum250::com {

namespace {

class ShelfEnumerator final : public Enumerator {
 public:
  ShelfEnumerator(Ref<Shelf> shelf, size_t next) : shelf_(std::move(shelf)), next_(next) {}
  std::optional<Variant> Next() override {
    if (next_ == shelf_->books.size()) return std::nullopt;
    return shelf_->books[next_++];
  }
  void Reset() override { next_ = 0; }
  Ref<Enumerator> Clone() const override { return MakeObject<ShelfEnumerator>(shelf_, next_); }

 private:
  Ref<Shelf> shelf_;
  size_t next_;
};

}  // namespace

ObjectRef Shelf::NewEnum() { return MakeObject<ShelfEnumerator>(Ref<Shelf>(this), size_t{0}); }

Variant Shelf::Item(int32_t position) const {
  if (position < 1 || position > Count()) throw SubscriptOutOfRange();
  return books[static_cast<size_t>(position) - 1];
}

const ClassTable& Shelf::Table() {
  static const ClassTable table = Describe<Shelf>(u"Shelf")
                                      .ReadOnlyProperty<&Shelf::Count>(u"Count")
                                      .ReadOnlyProperty<&Shelf::NewEnum>(u"NewEnum")
                                      .AsEnumerator()
                                      .Method<&Shelf::Item>(u"Item", {u"position"})
                                      .AsDefault();
  return table;
}

Text Probe::TypeOf(const Variant& value) {
  static constexpr TextView kNames[] = {u"Empty", u"Null",   u"Boolean",  u"Byte",    u"Int16",
                                        u"Int32", u"Double", u"Currency", u"Decimal", u"Date",
                                        u"Text",  u"Object", u"Missing"};
  return Text(kNames[static_cast<size_t>(value.Type())]);
}

Text Probe::Options(const std::optional<Text>& first, const Text& second, int32_t third) {
  return (first ? u"given:" + *first : Text(u"absent:")) + u"," + second + u"," + NumberText(third);
}

void Probe::ChangeAndFail(Text& text, int32_t number) {
  text = u"changed";
  throw Failure(number, u"the probe", u"as asked for");
}

void Probe::Raise(const Text& what) {
  if (what == u"memory") throw std::bad_alloc();
  if (what == u"standard") throw std::out_of_range("out of range");
  if (what == u"unknown") throw 42;
  throw Failure(1234, u"somewhere", what);
}

Variant Probe::Ask(const ObjectRef& object, const Text& member, const Variant& key) {
  Variant arguments[] = {key};
  return ToObject(object)->Invoke(member, InvokeKind::Method | InvokeKind::Get,
                                  Arguments(arguments, key.IsMissing() ? 0 : 1));
}

void Probe::Tell(const ObjectRef& object, const Text& member, const Variant& key,
                 const Variant& value) {
  Variant arguments[] = {key, value};
  ToObject(object)->Invoke(member, InvokeKind::Put,
                           key.IsMissing() ? Arguments(arguments).subspan(1) : arguments);
}

const ClassTable& Probe::Table() {
  static const ClassTable table =
      Describe<Probe>(u"Probe")
          .Property<&Probe::Note>(u"Note")
          .Property<&Probe::Anything>(u"Anything")
          .Property<&Probe::Held>(u"Held")
          .Method<&Probe::Say>(u"Say", {u"text"})
          .ReadOnlyProperty<&Probe::Books>(u"Books")
          .Method<&Probe::Me>(u"Me")
          .Method<&Probe::NewProbe>(u"NewProbe")
          .Method<&Probe::Trivial>(u"Trivial", {u"number"})
          .Method<&Probe::TypeOf>(u"TypeOf", {Opt(u"value", Missing{})})
          .Method<&Probe::Options>(u"Options",
                                   {Opt(u"first"), Opt(u"second", u"preset"), Opt(u"third", 3)})
          .Method<&Probe::Needs>(u"Needs", {u"number", u"text"})
          .Method<&Probe::Change>(u"Change", {u"value", u"to"})
          .Method<&Probe::Exchange>(u"Exchange", {u"first", u"second"})
          .Method<&Probe::ChangeAndFail>(u"ChangeAndFail", {u"text", u"number"})
          .Method<&Probe::Raise>(u"Raise", {u"what"})
          .Method<&Probe::Same>(u"Same", {u"first", u"second"})
          .Method<&Probe::Ask>(u"Ask", {u"object", u"member", Opt(u"key", Missing{})})
          .Method<&Probe::Tell>(u"Tell", {u"object", u"member", u"key", u"value"});
  return table;
}

DISPID IdOf(IDispatch* object, const wchar_t* name) {
  auto* asked = const_cast<wchar_t*>(name);
  DISPID id = DISPID_UNKNOWN;
  object->GetIDsOfNames(IID_NULL, &asked, 1, LOCALE_USER_DEFAULT, &id);
  return id;
}

Outcome Call(IDispatch* object, const wchar_t* member, std::vector<VARIANT> arguments, WORD flags,
             std::vector<const wchar_t*> names) {
  Outcome outcome;
  std::vector<wchar_t*> asked = {const_cast<wchar_t*>(member)};
  for (const wchar_t* name : names) asked.push_back(const_cast<wchar_t*>(name));
  std::vector<DISPID> ids(asked.size(), DISPID_UNKNOWN);
  outcome.result = object->GetIDsOfNames(IID_NULL, asked.data(), static_cast<UINT>(asked.size()),
                                         LOCALE_USER_DEFAULT, ids.data());
  if (FAILED(outcome.result)) return outcome;

  // Named ones first, then the positional ones from the last to the first.
  std::vector<VARIANT> given(arguments.end() - static_cast<std::ptrdiff_t>(names.size()),
                             arguments.end());
  given.insert(given.end(), arguments.rbegin() + static_cast<std::ptrdiff_t>(names.size()),
               arguments.rend());
  std::vector<DISPID> named(ids.begin() + 1, ids.end());
  if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
    named.insert(named.begin(), DISPID_PROPERTYPUT);
  }
  DISPPARAMS parameters{given.data(), named.data(), static_cast<UINT>(given.size()),
                        static_cast<UINT>(named.size())};
  OwnedVariant value;
  EXCEPINFO exception{};
  outcome.result = object->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &value,
                                  &exception, nullptr);
  if (outcome.result == DISP_E_EXCEPTION) {
    outcome.number = ToNumber(exception.scode);
    outcome.description = View(exception.bstrDescription);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
  }
  outcome.value = ToVariant(value);
  return outcome;
}

}  // namespace vellum250::com
