// A class with a member for every kind of value and failure, in an addon of its own: what a host
// binding has to carry, apart from what the published classes happen to use.

#include <new>
#include <stdexcept>

#include "automation/class_table.h"
#include "automation/enumerator.h"
#include "creation.h"
#include "database/connection.h"
#include "server/factory.h"

namespace vellum250::node {

namespace {

// Counts down from three; fails at the end when it is asked to.
class Countdown final : public ScriptObject<Countdown> {
 public:
  static const ClassTable& Table();
  explicit Countdown(bool fails) : fails_(fails) {}
  ObjectRef NewEnum() { return MakeObject<Walk>(3, fails_); }

 private:
  class Walk final : public Enumerator {
   public:
    Walk(int32_t next, bool fails) : next_(next), fails_(fails) {}
    std::optional<Variant> Next() override {
      if (next_ > 0) return next_--;
      if (fails_) throw SubscriptOutOfRange(u"past the end");
      return std::nullopt;
    }
    void Reset() override { next_ = 3; }
    Ref<Enumerator> Clone() const override { return MakeObject<Walk>(next_, fails_); }

   private:
    int32_t next_;
    bool fails_;
  };
  bool fails_;
};

const ClassTable& Countdown::Table() {
  static const ClassTable table = Describe<Countdown>(u"Countdown")
                                      .ReadOnlyProperty<&Countdown::NewEnum>(u"NewEnum")
                                      .AsEnumerator();
  return table;
}

class Probe final : public ScriptObject<Probe> {
 public:
  static const ClassTable& Table();

  Text text;
  bool flag = false;
  Variant anything;
  ObjectRef object;

  Text ReadOnly() { return u"as made"; }
  Variant Echo(const Variant& value) { return value; }
  bool EchoBoolean(bool value) { return value; }
  uint8_t EchoByte(uint8_t value) { return value; }
  int16_t EchoInt16(int16_t value) { return value; }
  int32_t EchoInt32(int32_t value) { return value; }
  double EchoDouble(double value) { return value; }
  Date EchoDate(Date value) { return value; }
  Text EchoText(const Text& value) { return value; }

  Text TypeName(const Variant& value) {
    static constexpr TextView kNames[] = {u"Empty", u"Null",   u"Boolean",  u"Byte",    u"Int16",
                                          u"Int32", u"Double", u"Currency", u"Decimal", u"Date",
                                          u"Text",  u"Object", u"Missing"};
    return Text(kNames[static_cast<size_t>(value.Type())]);
  }
  bool Given(const std::optional<Text>& value) { return value.has_value(); }
  Text Defaults(const Text& text, int32_t number) { return text + NumberText(number); }

  Variant Produce(const Text& type) {
    if (type == u"Empty") return {};
    if (type == u"Missing") return Missing{};
    if (type == u"Null") return Null{};
    if (type == u"Currency") return Currency{-123456};
    if (type == u"Decimal") return Decimal{u"-79228162514264337593543950335"};
    if (type == u"Nothing") return ObjectRef();
    if (type == u"Huge") return Text((size_t{1} << 29) + 1, u'x');
    throw InvalidProcedureCall(type);
  }

  void Exchange(Text& first, Text& second) { std::swap(first, second); }
  void Increase(int32_t& number, bool fails) {
    ++number;
    if (fails) throw InvalidProcedureCall(u"after the increase");
  }
  void LeaveAlone(const Variant& value, Text copy) { anything = value, text = std::move(copy); }

  void Raise(const Text& what) {
    if (what == u"memory") throw std::bad_alloc();
    if (what == u"standard") throw std::out_of_range("ra\u00efsed");
    if (what == u"unknown") throw 42;
    if (what == u"database") {
      throw database::DatabaseFailure(database::kSyntaxFailure, u"provider", u"wrong near x", 102,
                                      3);
    }
    throw Failure(1234, u"somewhere", what);
  }

  Variant Ask(const ObjectRef& dictionary, const Text& member, const Variant& key) {
    Variant arguments[] = {key};
    return dictionary->Invoke(member, InvokeKind::Method | InvokeKind::Get,
                              Arguments(arguments, key.IsMissing() ? 0 : 1));
  }
  // As the library asks for every label.
  Text Sum(const ObjectRef& dictionary, const Text& key, int32_t times) {
    Text sum;
    for (int32_t i = 0; i < times; ++i) {
      if (ToInt32(dictionary->Invoke(u"Count", InvokeKind::Get, {})) == 0) return u"none";
      Variant name[] = {Variant(key + NumberText(i))};
      if (!ToBoolean(dictionary->Invoke(u"Exists", InvokeKind::Method, name))) continue;
      sum += ToText(dictionary->Invoke(u"Item", InvokeKind::Method, name));
    }
    return sum;
  }

  ObjectRef NewCountdown(bool fails) { return MakeObject<Countdown>(fails); }
  ObjectRef NewProbe() { return MakeObject<Probe>(); }
};

const ClassTable& Probe::Table() {
  static const ClassTable table =
      Describe<Probe>(u"vellum250.probe")
          .Property<&Probe::text>(u"Text")
          .Property<&Probe::flag>(u"Flag")
          .Property<&Probe::anything>(u"Anything")
          .Property<&Probe::object>(u"Object")
          .ReadOnlyProperty<&Probe::ReadOnly>(u"ReadOnly")
          .Method<&Probe::Echo>(u"Echo", {u"value"})
          .Method<&Probe::EchoBoolean>(u"EchoBoolean", {u"value"})
          .Method<&Probe::EchoByte>(u"EchoByte", {u"value"})
          .Method<&Probe::EchoInt16>(u"EchoInt16", {u"value"})
          .Method<&Probe::EchoInt32>(u"EchoInt32", {u"value"})
          .Method<&Probe::EchoDouble>(u"EchoDouble", {u"value"})
          .Method<&Probe::EchoDate>(u"EchoDate", {u"value"})
          .Method<&Probe::EchoText>(u"EchoText", {u"value"})
          .Method<&Probe::TypeName>(u"TypeName", {Opt(u"value", Missing{})})
          .Method<&Probe::Given>(u"Given", {Opt(u"value")})
          .Method<&Probe::Defaults>(u"Defaults", {Opt(u"text", u"none"), Opt(u"number", 7)})
          .Method<&Probe::Produce>(u"Produce", {u"type"})
          .Method<&Probe::Exchange>(u"Exchange", {u"first", u"second"})
          .Method<&Probe::Increase>(u"Increase", {u"number", Opt(u"fails")})
          .Method<&Probe::LeaveAlone>(u"LeaveAlone", {u"value", u"copy"})
          .Method<&Probe::Raise>(u"Raise", {u"what"})
          .Method<&Probe::Ask>(u"Ask", {u"dictionary", u"member", Opt(u"key", Missing{})})
          .Method<&Probe::Sum>(u"Sum", {u"dictionary", u"key", u"times"})
          .Method<&Probe::NewCountdown>(u"NewCountdown", {Opt(u"fails")})
          .Method<&Probe::NewProbe>(u"NewProbe");
  return table;
}

}  // namespace

ObjectRef Create(TextView name) {
  if (EqualsIgnoreAsciiCase(name, Probe::Table().Name())) return MakeObject<Probe>();
  return server::CreateObject(name);
}

}  // namespace vellum250::node
