#include "map_dictionary.h"

#include "environment.h"
#include "failures.h"
#include "values.h"

namespace vellum250::node {

namespace {

// Keys asked for together are compared together: about the labels of one form.
constexpr size_t kBlock = 32;
// More keys than a web site has labels: whoever makes keys up does not fill the memory.
constexpr size_t kMostEntries = 4096;

napi_value EmptyArray(napi_env env) {
  napi_value array = nullptr;
  Check(env, napi_create_array(env, &array));
  return array;
}

// Not what can change in place.
bool IsComparable(const Variant& item) {
  return !item.IsEmpty() && !item.Is(VariantType::Date) && !item.Is(VariantType::Object);
}

}  // namespace

MapDictionary::MapDictionary(Environment& environment, napi_value map)
    : HostObject(environment, map), list_(Hold(EmptyArray(environment.Env()))) {}

Variant MapDictionary::Invoke(TextView member, InvokeKind, Arguments arguments) {
  Environment& environment = Living();
  if (EqualsIgnoreAsciiCase(member, u"Count")) return Count(environment);
  const bool exists = EqualsIgnoreAsciiCase(member, u"Exists");
  if (!exists && !member.empty() && !EqualsIgnoreAsciiCase(member, u"Item")) {
    throw NoSuchMember(Text(member) + u" of a Map");
  }
  if (arguments.size() != 1) throw WrongNumberOfArguments(Text(member) + u" of a Map");
  return exists ? Exists(environment, arguments[0]) : Item(environment, arguments[0]);
}

int32_t MapDictionary::Count(Environment& environment) {
  if (countEpoch_ != environment.Epoch()) {
    const Napi::HandleScope scope(environment.Env());
    const napi_value size = CallFunction(environment.Functions().mapSize.Value(), {});
    Check(environment.Env(), napi_get_value_int32(environment.Env(), size, &count_));
    countEpoch_ = environment.Epoch();
  }
  return count_;
}

Variant MapDictionary::Exists(Environment& environment, const Variant& key) {
  const Text* text = key.If<Text>();
  if (text != nullptr && Recall(environment, *text) != nullptr) return true;
  const Napi::HandleScope scope(environment.Env());
  if (!Ask(environment, key).IsEmpty()) return true;
  const napi_value name = ToJavaScript(environment, key);
  return ToVariant(environment, CallFunction(environment.Functions().mapHas.Value(), {&name, 1}));
}

Variant MapDictionary::Item(Environment& environment, const Variant& key) {
  if (const Text* text = key.If<Text>()) {
    if (const Entry* entry = Recall(environment, *text)) return entry->item;
  }
  const Napi::HandleScope scope(environment.Env());
  return Ask(environment, key);
}

const MapDictionary::Entry* MapDictionary::Recall(Environment& environment, TextView key) {
  const auto found = entries_.find(key);
  if (found == entries_.end()) return nullptr;
  const size_t block = found->second.position / kBlock;
  if (blockEpochs_[block] != environment.Epoch()) {
    const napi_env env = environment.Env();
    const Napi::HandleScope scope(env);
    const napi_value arguments[] = {Held(list_), Napi::Number::New(env, block * kBlock),
                                    Napi::Number::New(env, kBlock)};
    const napi_value same = CallFunction(environment.Functions().mapStillHolds.Value(), arguments);
    bool holds = false;
    Check(env, napi_get_value_bool(env, same, &holds));
    if (!holds) {
      Forget(environment);
      return nullptr;
    }
    blockEpochs_[block] = environment.Epoch();
  }
  return &found->second;
}

Variant MapDictionary::Ask(Environment& environment, const Variant& key) {
  const napi_env env = environment.Env();
  const napi_value name = ToJavaScript(environment, key);
  const napi_value value = CallFunction(environment.Functions().mapGet.Value(), {&name, 1});
  Variant item = Answer(environment, value, u"Item");
  if (!key.IsText() || !IsComparable(item)) return item;

  if (entries_.size() == kMostEntries) Forget(environment);
  const size_t position = entries_.size();
  const napi_value list = Held(list_);
  Check(env, napi_set_element(env, list, static_cast<uint32_t>(2 * position), name));
  Check(env, napi_set_element(env, list, static_cast<uint32_t>(2 * position + 1), value));
  // A block that was not compared yet since the page ran stays so for its other entries.
  if (position % kBlock == 0) blockEpochs_.push_back(environment.Epoch());
  entries_.insert_or_assign(key.As<Text>(), Entry{item, position});
  return item;
}

void MapDictionary::Forget(Environment& environment) {
  const napi_env env = environment.Env();
  Check(env, napi_set_named_property(env, Held(list_), "length", Napi::Number::New(env, 0)));
  entries_.clear();
  blockEpochs_.clear();
}

}  // namespace vellum250::node
