// The published interface of a class, written once and deduced from its member functions.
//
//   const ClassTable& address::Table() {
//     static const ClassTable table = Describe<address>(u"vellum250.address")
//         .Property<&address::LastSql>(u"LastSql")
//         .Method<&address::Connection>(u"Connection", {u"connectionString"})
//         .Method<&address::BuildEmail>(u"BuildEmail", {Opt(u"sfEmail"), Opt(u"sfShow", true)});
//     return table;
//   }
//
// A collection marks its default member and its standard enumerator:
//         .Method<&Report::Item>(u"Item", {u"vIndex"}).AsDefault()
//         .ReadOnlyProperty<&Report::NewEnum>(u"NewEnum").AsEnumerator()
//
// A member function's parameter is by reference and written back when it is `T&`, by reference and
// unchanged when it is `const T&`, by value when it is `T`; `std::optional<T>` tells absence. T is
// bool, uint8_t, int16_t, int32_t, double, Date, Text, Variant or ObjectRef.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "automation/conversion.h"
#include "automation/enumerator.h"
#include "automation/object.h"

namespace vellum250 {

// Declared type of a parameter or a result. None is a method without result.
enum class ScriptType : uint8_t {
  None,
  Boolean,
  Byte,
  Int16,
  Int32,
  Double,
  Date,
  Text,
  Variant,
  Object
};

enum class Passing : uint8_t { ByValue, ByReference, ByReferenceUnchanged };

struct ParameterInfo {
  Text name;
  bool optional = false;
  Variant defaultValue;  // of an optional parameter; Empty is the type's zero value
  ScriptType type = ScriptType::Variant;
  Passing passing = Passing::ByValue;
};

// One parameter in a table: a bare name is required, Opt is optional.
struct Parameter {
  Parameter(const char16_t* parameterName) : info{parameterName, false, {}} {}
  Parameter(ParameterInfo parameterInfo) : info(std::move(parameterInfo)) {}
  ParameterInfo info;
};
inline Parameter Opt(const char16_t* name, Variant defaultValue = {}) {
  return ParameterInfo{name, true, std::move(defaultValue)};
}

enum class MemberKind : uint8_t { Method, Property, ReadOnlyProperty };

// The default member is the one that an empty name calls; the enumerator, an `Enumerator`, is what
// a for-each loop walks, called by "_NewEnum" as well.
enum class MemberRole : uint8_t { Ordinary, Default, Enumerator };

// Dispatch ids by role; any other member has its position in the interface, counted from 1.
inline constexpr int32_t kDefaultMemberId = 0;
inline constexpr int32_t kEnumeratorId = -4;

struct MemberInfo {
  Text name;
  MemberKind kind = MemberKind::Method;
  ScriptType result = ScriptType::None;
  std::vector<ParameterInfo> parameters;
  Variant (*call)(Object& object, const MemberInfo& member, InvokeKind kind, Arguments arguments);
  MemberRole role = MemberRole::Ordinary;
  int32_t dispatchId = 0;  // given by the table
};

class ClassTable {
 public:
  ClassTable(Text name, std::vector<MemberInfo> members);
  ClassTable(const ClassTable&) = delete;
  ClassTable& operator=(const ClassTable&) = delete;

  // The name a script creates the class by.
  const Text& Name() const { return name_; }
  // In the order of the interface.
  std::span<const MemberInfo> Members() const { return members_; }
  // Without regard to case; nullptr when there is none. Does not allocate.
  const MemberInfo* Find(TextView name) const;
  // By its dispatch id; nullptr when there is none.
  const MemberInfo* FindById(int32_t dispatchId) const;

  // Checks kind and number of the arguments and calls. `object` is of this class. Raises 438, 449,
  // 450 and 13/94/6 for an argument, each naming the member and the parameter, and what the member
  // itself raises. By-reference arguments are written back also when the member raises. Arguments
  // of a property that is read go to the default member of the object it holds.
  Variant Call(Object& object, const MemberInfo& member, InvokeKind kind,
               Arguments arguments) const;

 private:
  struct NameHash {
    size_t operator()(TextView name) const;
  };
  struct NameEqual {
    bool operator()(TextView a, TextView b) const { return EqualsIgnoreAsciiCase(a, b); }
  };
  Text name_;
  std::vector<MemberInfo> members_;
  std::unordered_map<TextView, const MemberInfo*, NameHash, NameEqual> byName_;
  const MemberInfo* defaultMember_ = nullptr;
  const MemberInfo* enumerator_ = nullptr;
};

// Base of the published classes: late binding through the class's own table.
template <typename Self>
class ScriptObject : public Object {
 public:
  const ClassTable* Class() const final { return &Self::Table(); }
  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) final {
    const ClassTable& table = Self::Table();
    const MemberInfo* found = table.Find(member);
    if (found == nullptr) throw NoSuchMember(Text(table.Name()) + u"." + Text(member));
    return table.Call(*this, *found, kind, arguments);
  }
};

namespace class_table_detail {

template <typename T>
struct Tag {};
inline bool Convert(Tag<bool>, const Variant& value) { return ToBoolean(value); }
inline uint8_t Convert(Tag<uint8_t>, const Variant& value) { return ToByte(value); }
inline int16_t Convert(Tag<int16_t>, const Variant& value) { return ToInt16(value); }
inline int32_t Convert(Tag<int32_t>, const Variant& value) { return ToInt32(value); }
inline double Convert(Tag<double>, const Variant& value) { return ToDouble(value); }
inline Date Convert(Tag<Date>, const Variant& value) { return ToDate(value); }
inline Text Convert(Tag<Text>, const Variant& value) { return ToText(value); }
// A parameter takes Nothing as well.
inline ObjectRef Convert(Tag<ObjectRef>, const Variant& value) {
  const ObjectRef* object = value.If<ObjectRef>();
  return object != nullptr ? *object : ToObject(value);
}
inline const Variant& Convert(Tag<Variant>, const Variant& value) { return value; }

constexpr ScriptType TypeOf(Tag<void>) { return ScriptType::None; }
constexpr ScriptType TypeOf(Tag<bool>) { return ScriptType::Boolean; }
constexpr ScriptType TypeOf(Tag<uint8_t>) { return ScriptType::Byte; }
constexpr ScriptType TypeOf(Tag<int16_t>) { return ScriptType::Int16; }
constexpr ScriptType TypeOf(Tag<int32_t>) { return ScriptType::Int32; }
constexpr ScriptType TypeOf(Tag<double>) { return ScriptType::Double; }
constexpr ScriptType TypeOf(Tag<Date>) { return ScriptType::Date; }
constexpr ScriptType TypeOf(Tag<Text>) { return ScriptType::Text; }
constexpr ScriptType TypeOf(Tag<Variant>) { return ScriptType::Variant; }
template <std::derived_from<Object> T>
constexpr ScriptType TypeOf(Tag<Ref<T>>) {
  return ScriptType::Object;
}
template <typename T>
constexpr ScriptType TypeOf(Tag<std::optional<T>>) {
  return TypeOf(Tag<T>{});
}

template <typename T>
constexpr bool kIsOptional = false;
template <typename T>
constexpr bool kIsOptional<std::optional<T>> = true;

// Rethrows the failure in flight with the member's and the parameter's name in its description.
[[noreturn]] void RaiseForParameter(const MemberInfo& member, size_t index);

inline bool IsGiven(Arguments arguments, size_t index) {
  return index < arguments.size() && !arguments[index].IsMissing();
}

// The argument at `index`, or the parameter's default when it was left out.
inline const Variant& Given(const MemberInfo& member, Arguments arguments, size_t index) {
  return IsGiven(arguments, index) ? arguments[index] : member.parameters[index].defaultValue;
}

template <typename T>
T Fetch(const MemberInfo& member, Arguments arguments, size_t index) {
  if constexpr (kIsOptional<T>) {
    if (!IsGiven(arguments, index)) return std::nullopt;
    return Fetch<typename T::value_type>(member, arguments, index);
  } else {
    const Variant& value = Given(member, arguments, index);
    // Empty is the zero value of every type, "no object" among them.
    if (value.IsEmpty()) return T{};
    try {
      return Convert(Tag<T>{}, value);
    } catch (const Failure&) {
      RaiseForParameter(member, index);
    }
  }
}

// What a member function's parameter is bound to during the call.
template <typename P>
class Bound {
 public:
  using Value = std::remove_cvref_t<P>;
  void Bind(const MemberInfo& member, Arguments arguments, size_t index) {
    value_ = Fetch<Value>(member, arguments, index);
  }
  Value& Get() { return value_; }

 private:
  Value value_{};
};

// A text that is not changed is the argument's own whenever that holds one: pages pass twenty.
template <>
class Bound<const Text&> {
 public:
  using Value = Text;
  void Bind(const MemberInfo& member, Arguments arguments, size_t index) {
    text_ = Given(member, arguments, index).If<Text>();
    if (text_ != nullptr) return;
    converted_ = Fetch<Text>(member, arguments, index);
    text_ = &converted_;
  }
  const Text& Get() const { return *text_; }

 private:
  Text converted_;
  const Text* text_ = nullptr;
};

template <typename T>
Variant ToVariant(T&& value) {
  using Plain = std::remove_cvref_t<T>;
  if constexpr (kIsOptional<Plain>) {
    return value ? Variant(*std::forward<T>(value)) : Variant(Missing{});
  } else if constexpr (TypeOf(Tag<Plain>{}) == ScriptType::Object) {
    return Variant(ObjectRef(std::forward<T>(value)));
  } else {
    return Variant(std::forward<T>(value));
  }
}

template <typename P>
constexpr Passing PassingOf() {
  if constexpr (!std::is_lvalue_reference_v<P>) return Passing::ByValue;
  return std::is_const_v<std::remove_reference_t<P>> ? Passing::ByReferenceUnchanged
                                                     : Passing::ByReference;
}

template <typename Function>
struct Signature;
template <typename C, typename R, typename... P>
struct Signature<R (C::*)(P...)> {
  using Result = R;
  static constexpr size_t kCount = sizeof...(P);

  static void Complete(std::vector<ParameterInfo>& parameters) {
    size_t index = 0;
    ((parameters[index].type = TypeOf(Tag<std::remove_cvref_t<P>>{}),
      parameters[index].passing = PassingOf<P>(), ++index),
     ...);
  }

  // The parameters of one call. What the caller gave by reference is written back when they go,
  // also when the member raised.
  class Parameters {
   public:
    Parameters(const MemberInfo& member, Arguments arguments) : arguments_(arguments) {
      [&]<size_t... I>(std::index_sequence<I...>) {
        (std::get<I>(bound_).Bind(member, arguments, I), ...);
      }
      (std::index_sequence_for<P...>{});
    }
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;
    ~Parameters() {
      [&]<size_t... I>(std::index_sequence<I...>) { (WriteBack<P>(std::get<I>(bound_), I), ...); }
      (std::index_sequence_for<P...>{});
    }

    template <typename Call>
    decltype(auto) Apply(Call&& call) {
      return std::apply([&](auto&... bound) -> decltype(auto) { return call(bound.Get()...); },
                        bound_);
    }

   private:
    template <typename Q>
    void WriteBack(Bound<Q>& bound, size_t index) {
      if constexpr (PassingOf<Q>() == Passing::ByReference) {
        if (IsGiven(arguments_, index)) arguments_[index] = ToVariant(std::move(bound.Get()));
      }
    }

    Arguments arguments_;
    std::tuple<Bound<P>...> bound_;
  };
};
template <typename C, typename R, typename... P>
struct Signature<R (C::*)(P...) const> : Signature<R (C::*)(P...)> {};

template <typename C, auto Function>
Variant CallMethod(Object& object, const MemberInfo& member, InvokeKind, Arguments arguments) {
  using S = Signature<decltype(Function)>;
  C& self = static_cast<C&>(object);
  typename S::Parameters parameters(member, arguments);
  return parameters.Apply([&](auto&... value) -> Variant {
    if constexpr (std::is_void_v<typename S::Result>) {
      (self.*Function)(value...);
      return {};
    } else {
      return ToVariant((self.*Function)(value...));
    }
  });
}

template <typename C, auto Member>
Variant AccessField(Object& object, const MemberInfo& member, InvokeKind kind,
                    Arguments arguments) {
  auto& field = static_cast<C&>(object).*Member;
  if (Includes(kind, InvokeKind::Put | InvokeKind::PutRef)) {
    field = Fetch<std::remove_cvref_t<decltype(field)>>(member, arguments, 0);
    return {};
  }
  return ToVariant(Variant(field));
}

template <typename C, auto Get, auto Set>
Variant AccessProperty(Object& object, const MemberInfo& member, InvokeKind kind,
                       Arguments arguments) {
  if (Includes(kind, InvokeKind::Put | InvokeKind::PutRef)) {
    return CallMethod<C, Set>(object, member, kind, arguments);
  }
  return ToVariant((static_cast<C&>(object).*Get)());
}

template <typename T>
struct FieldOf;
template <typename C, typename T>
struct FieldOf<T C::*> {
  using Type = T;
};

}  // namespace class_table_detail

// Collects the members of class C in interface order; converts to the table.
template <typename C>
class Describe {
 public:
  explicit Describe(const char16_t* name) : name_(name) {}

  template <auto Function>
  Describe& Method(const char16_t* name, std::initializer_list<Parameter> parameters = {}) {
    using S = class_table_detail::Signature<decltype(Function)>;
    MemberInfo member{name,
                      MemberKind::Method,
                      class_table_detail::TypeOf(
                          class_table_detail::Tag<std::remove_cvref_t<typename S::Result>>{}),
                      {},
                      &class_table_detail::CallMethod<C, Function>};
    for (const Parameter& parameter : parameters) member.parameters.push_back(parameter.info);
    // A table that does not fit its member function is a mistake of this library.
    if (member.parameters.size() != S::kCount) {
      throw WrongNumberOfArguments(Text(u"table entry ") + name);
    }
    S::Complete(member.parameters);
    members_.push_back(std::move(member));
    return *this;
  }

  // A public data member, readable and writable.
  template <auto Field>
  Describe& Property(const char16_t* name) {
    using T = typename class_table_detail::FieldOf<decltype(Field)>::Type;
    return AddProperty<T>(name, MemberKind::Property, &class_table_detail::AccessField<C, Field>);
  }

  // A getter without parameters and a setter with one.
  template <auto Get, auto Set>
  Describe& Property(const char16_t* name) {
    using T = std::remove_cvref_t<typename class_table_detail::Signature<decltype(Get)>::Result>;
    return AddProperty<T>(name, MemberKind::Property,
                          &class_table_detail::AccessProperty<C, Get, Set>);
  }

  template <auto Get>
  Describe& ReadOnlyProperty(const char16_t* name) {
    using T = std::remove_cvref_t<typename class_table_detail::Signature<decltype(Get)>::Result>;
    return AddProperty<T>(name, MemberKind::ReadOnlyProperty,
                          &class_table_detail::CallMethod<C, Get>);
  }

  // What the member just described is to the class.
  Describe& AsDefault() { return As(MemberRole::Default); }
  Describe& AsEnumerator() { return As(MemberRole::Enumerator); }

  operator ClassTable() && { return ClassTable(std::move(name_), std::move(members_)); }
  operator ClassTable() & { return ClassTable(std::move(name_), std::move(members_)); }

 private:
  Describe& As(MemberRole role) {
    members_.back().role = role;
    return *this;
  }

  template <typename T, typename Call>
  Describe& AddProperty(const char16_t* name, MemberKind kind, Call call) {
    const ScriptType type = class_table_detail::TypeOf(class_table_detail::Tag<T>{});
    MemberInfo member{name, kind, type, {}, call};
    // The parameter of the setter; a getter takes none.
    if (kind == MemberKind::Property) {
      member.parameters.push_back({u"value", false, {}, type, Passing::ByValue});
    }
    members_.push_back(std::move(member));
    return *this;
  }

  Text name_;
  std::vector<MemberInfo> members_;
};

}  // namespace vellum250
