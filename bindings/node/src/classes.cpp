#include "classes.h"

#include <optional>
#include <span>

#include "environment.h"
#include "failures.h"
#include "values.h"

namespace vellum250::node {

namespace {

// Marks the objects that this addon made, so that no other object is taken for one.
constexpr napi_type_tag kWrapperTag = {0x9d2c5680a1f3b7c4, 0x4e85d1c0f6b2937a};

// More than any published member has.
constexpr size_t kMaxParameters = 64;

// A JavaScript call as Node-API hands it over.
struct Call {
  Call(napi_env env, napi_callback_info info) {
    Check(env, napi_get_cb_info(env, info, &count, values, &self, &data));
  }
  // Those that fit; `count` tells how many there were.
  std::span<const napi_value> Given() const { return {values, std::min(count, kMaxParameters)}; }

  napi_value self = nullptr;
  void* data = nullptr;
  size_t count = kMaxParameters;
  napi_value values[kMaxParameters];
};

// The arguments of one call, and the `ref` objects among them.
class CallArguments {
 public:
  CallArguments(const MemberBinding& binding, std::span<const napi_value> given, size_t count)
      : binding_(binding), values_(count, Variant(Missing{})) {
    const auto& parameters = binding.member.parameters;
    for (size_t i = 0; i < std::min(given.size(), parameters.size()); ++i) {
      try {
        values_[i] = Read(given[i], i);
      } catch (const Failure& failure) {
        throw WithDetail(failure, parameters[i].name + u" of " + binding.member.name);
      }
    }
  }

  Arguments Values() { return values_; }
  bool HasRefs() const { return !refs_.empty(); }

  // What the member left as it was stays the page's own value, also in its JavaScript type.
  void WriteBack() {
    const napi_env env = binding_.environment.Env();
    for (const ByReference& argument : refs_) {
      const Variant& after = values_[argument.index];
      if (after == argument.before) continue;
      Check(env, napi_set_named_property(env, argument.ref, "value",
                                         ToJavaScript(binding_.environment, after)));
    }
  }

 private:
  struct ByReference {
    size_t index;
    napi_value ref;
    Variant before;
  };

  Variant Read(napi_value value, size_t index) {
    Environment& environment = binding_.environment;
    const napi_env env = environment.Env();
    const napi_valuetype type = TypeOf(env, value);
    bool isRef = false;
    if (type == napi_object) {
      Check(env, napi_instanceof(env, value, environment.refClass.Value(), &isRef));
    }
    if (!isRef) return ToVariant(environment, value, type);

    napi_value inner = nullptr;
    Check(env, napi_get_named_property(env, value, "value", &inner));
    Variant variable = ToVariant(environment, inner);
    // A variable that was given no value yet is Empty; it is not an argument left out.
    if (variable.IsMissing()) variable = Variant();
    refs_.push_back({index, value, variable});
    return variable;
  }

  const MemberBinding& binding_;
  std::vector<Variant> values_;
  std::vector<ByReference> refs_;
};

Object& Receiver(const MemberBinding& binding, napi_env env, napi_value self) {
  const ObjectRef object = Unwrap(env, self);
  if (!object || object->Class() != &binding.table) {
    throw ObjectRequired(binding.member.name + u" was called on no " + binding.table.Name());
  }
  return *object;  // `self` keeps it alive during the call
}

napi_value CallMember(napi_env env, napi_callback_info info, InvokeKind kind) {
  return Guarded(env, [&]() -> napi_value {
    const Call call(env, info);
    const auto& binding = *static_cast<const MemberBinding*>(call.data);
    binding.environment.PageRan();
    Object& object = Receiver(binding, env, call.self);
    CallArguments arguments(binding, call.Given(), call.count);
    const auto run = [&] {
      return binding.table.Call(object, binding.member, kind, arguments.Values());
    };
    if (!arguments.HasRefs()) return ToJavaScript(binding.environment, run());

    Variant result;
    std::exception_ptr failure;
    try {
      result = run();
    } catch (...) {
      failure = std::current_exception();
    }
    arguments.WriteBack();
    if (failure) std::rethrow_exception(failure);
    return ToJavaScript(binding.environment, result);
  });
}

template <InvokeKind kind>
napi_value CallAs(napi_env env, napi_callback_info info) {
  return CallMember(env, info, kind);
}

void Finalize(napi_env env, void* data, void*) {
  const std::unique_ptr<Wrapper> wrapper(static_cast<Wrapper*>(data));
  if (wrapper->environment != nullptr) {
    wrapper->environment->wrappers.erase(wrapper->object.get());
  }
  napi_delete_reference(env, wrapper->self);
}

// Takes over the wrapper that NewWrapper passes in; pages have no such value.
napi_value Construct(napi_env env, napi_callback_info info) {
  return Guarded(env, [&] {
    const Call call(env, info);
    if (call.count != 1 || TypeOf(env, call.values[0]) != napi_external) {
      throw CannotCreateObject(u"objects are made by createObject, not by new");
    }
    void* data = nullptr;
    Check(env, napi_get_value_external(env, call.values[0], &data));
    auto* wrapper = static_cast<Wrapper*>(data);
    Check(env, napi_type_tag_object(env, call.self, &kWrapperTag));
    Check(env, napi_wrap(env, call.self, wrapper, Finalize, nullptr, &wrapper->self));
    return call.self;
  });
}

// Reading a name that the class does not have: undefined as with any object, so that JavaScript's
// own questions (`then`, `toJSON`) get their answer and calling it is JavaScript's "is not a
// function". Only a name in another letter case is a mistake for certain.
napi_value ReadUnknown(napi_env env, napi_callback_info info) {
  return Guarded(env, [&]() -> napi_value {
    const Call call(env, info);  // target, key, receiver
    const auto& table = *static_cast<const ClassTable*>(call.data);
    napi_value value = nullptr;
    Check(env, napi_get_property(env, call.values[0], call.values[1], &value));
    if (TypeOf(env, value) != napi_undefined || TypeOf(env, call.values[1]) == napi_symbol) {
      return value;
    }
    const Text name = ReadText(env, call.values[1]);
    if (const MemberInfo* meant = table.Find(name)) {
      throw NoSuchMember(table.Name() + u"." + name + u"; its name here is " + meant->name);
    }
    return value;
  });
}

// Assigning to such a name would be lost without a word: 438.
napi_value AssignUnknown(napi_env env, napi_callback_info info) {
  return Guarded(env, [&]() -> napi_value {
    const Call call(env, info);  // target, key, value, receiver
    const auto& table = *static_cast<const ClassTable*>(call.data);
    if (TypeOf(env, call.values[1]) != napi_symbol) {
      throw NoSuchMember(table.Name() + u"." + ReadText(env, call.values[1]));
    }
    const napi_property_descriptor own = {
        nullptr,        call.values[1],          nullptr, nullptr, nullptr,
        call.values[2], napi_default_jsproperty, nullptr};
    Check(env, napi_define_properties(env, call.values[3], 1, &own));
    return Napi::Boolean::New(env, true);
  });
}

// Puts the two functions above at the end of the prototype chain, where only names arrive that
// neither the object nor its class has: members in use never pass it.
void GuardUnknownMembers(Environment& environment, Napi::Object prototype,
                         const ClassTable& table) {
  const Napi::Env env = environment.Env();
  // Node-API wants the data without const; the functions read it as it is.
  auto* data = const_cast<ClassTable*>(&table);
  const Napi::Object handler = Napi::Object::New(env);
  const napi_property_descriptor traps[] = {
      {"get", nullptr, ReadUnknown, nullptr, nullptr, nullptr, napi_default, data},
      {"set", nullptr, AssignUnknown, nullptr, nullptr, nullptr, napi_default, data}};
  Check(env, napi_define_properties(env, handler, std::size(traps), traps));
  environment.Functions().setPrototypeOf.Call(
      {prototype, environment.Functions().proxy.New({Napi::Object::New(env), handler})});
}

// What a loop over an object asks for: the answer of its standard enumerator.
napi_value Iterate(napi_env env, napi_callback_info info) {
  return CallMember(env, info, InvokeKind::Method | InvokeKind::Get);
}

// An iterator as JavaScript's loops want it, over what is left of `enumerator`.
napi_value MakeIterator(Environment& environment, const Ref<Enumerator>& enumerator) {
  Napi::Object iterator = Napi::Object::New(environment.Env());
  const auto next = [enumerator](const Napi::CallbackInfo& info) {
    const Napi::Env env = info.Env();
    return Napi::Value(env, Guarded(env, [&]() -> napi_value {
                         Environment& current = Environment::Of(env);
                         current.PageRan();
                         const std::optional<Variant> element = enumerator->Next();
                         Napi::Object step = Napi::Object::New(env);
                         step.Set("done", !element);
                         step.Set("value", element
                                               ? Napi::Value(env, ToJavaScript(current, *element))
                                               : env.Undefined());
                         return step;
                       }));
  };
  const auto self = [](const Napi::CallbackInfo& info) { return info.This(); };
  iterator.Set("next", Napi::Function::New(environment.Env(), next));
  iterator.Set(Napi::Symbol::WellKnown(environment.Env(), "iterator"),
               Napi::Function::New(environment.Env(), self));
  return iterator;
}

napi_property_descriptor Describe(napi_env env, MemberBinding& binding) {
  napi_property_descriptor property{};
  property.name = MakeText(env, binding.member.name);
  property.data = &binding;
  property.attributes = napi_enumerable;
  if (binding.member.kind == MemberKind::Method) {
    property.method = CallAs<InvokeKind::Method | InvokeKind::Get>;
  } else {
    property.getter = CallAs<InvokeKind::Get>;
    property.setter = CallAs<InvokeKind::Put>;
  }
  return property;
}

}  // namespace

ClassBinding::ClassBinding(Environment& environment, const ClassTable& table)
    : environment_(environment) {
  const Napi::Env env = environment.Env();
  std::vector<napi_property_descriptor> properties;
  members_.reserve(table.Members().size());  // their addresses are handed out
  for (const MemberInfo& member : table.Members()) {
    if (member.parameters.size() > kMaxParameters) {
      throw WrongNumberOfArguments(u"more parameters than a call can have: " + member.name);
    }
    members_.push_back({environment, table, member});
    properties.push_back(Describe(env, members_.back()));
    if (member.role == MemberRole::Enumerator) {
      properties.push_back({nullptr, Napi::Symbol::WellKnown(env, "iterator"), Iterate, nullptr,
                            nullptr, nullptr, napi_default_method, &members_.back()});
    }
  }
  // "vellum250.address" is the class address.
  const std::string name = ToUtf8(TextView(table.Name()).substr(table.Name().rfind(u'.') + 1));
  napi_value defined = nullptr;
  Check(env, napi_define_class(env, name.data(), name.size(), Construct, nullptr, properties.size(),
                               properties.data(), &defined));
  class_ = Napi::Persistent(Napi::Function(env, defined));
  GuardUnknownMembers(environment, class_.Value().Get("prototype").As<Napi::Object>(), table);
}

Napi::Object ClassBinding::NewWrapper(const ObjectRef& object) {
  const Napi::Env env = environment_.Env();
  auto wrapper = std::make_unique<Wrapper>(Wrapper{object, &environment_});
  const Napi::Object self = class_.New({Napi::External<Wrapper>::New(env, wrapper.get())});
  Wrapper*& living = environment_.wrappers[object.get()];
  // The one before is already collected; its finaliser is still to run.
  if (living != nullptr) living->environment = nullptr;
  living = wrapper.release();
  return self;
}

napi_value Wrap(Environment& environment, const ObjectRef& object) {
  const auto found = environment.wrappers.find(object.get());
  if (found != environment.wrappers.end()) {
    napi_value self = nullptr;
    Check(environment.Env(),
          napi_get_reference_value(environment.Env(), found->second->self, &self));
    if (self != nullptr) return self;
  }
  if (auto* enumerator = dynamic_cast<Enumerator*>(object.get())) {
    return MakeIterator(environment, Ref<Enumerator>(enumerator));
  }
  if (object->Class() == nullptr) throw TypeMismatch(u"an object without published members");
  return environment.BindingOf(*object->Class()).NewWrapper(object);
}

ObjectRef Unwrap(napi_env env, napi_value value) {
  bool ours = false;
  if (napi_check_object_type_tag(env, value, &kWrapperTag, &ours) != napi_ok || !ours) return {};
  void* data = nullptr;
  Check(env, napi_unwrap(env, value, &data));
  return static_cast<Wrapper*>(data)->object;
}

Napi::Function DefineRefClass(Napi::Env env) {
  const auto construct = [](napi_env callEnv, napi_callback_info info) {
    return Guarded(callEnv, [&] {
      const Call call(callEnv, info);
      Check(callEnv, napi_set_named_property(callEnv, call.self, "value", call.values[0]));
      return call.self;
    });
  };
  napi_value defined = nullptr;
  Check(env,
        napi_define_class(env, "Ref", NAPI_AUTO_LENGTH, construct, nullptr, 0, nullptr, &defined));
  return Napi::Function(env, defined);
}

}  // namespace vellum250::node
