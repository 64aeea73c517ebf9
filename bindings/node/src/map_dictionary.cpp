#include "map_dictionary.h"

#include "automation/conversion.h"
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
  if (EqualsIgnoreAsciiCase(member, u"Count")) return Count();
  const bool exists = EqualsIgnoreAsciiCase(member, u"Exists");
  if (!exists && !member.empty() && !EqualsIgnoreAsciiCase(member, u"Item")) {
    throw NoSuchMember(Text(member) + u" of a Map");
  }
  if (arguments.size() != 1) throw WrongNumberOfArguments(Text(member) + u" of a Map");
  const Variant* found = Find(ToText(arguments[0]));
  if (exists) return found != nullptr;
  return found == nullptr ? Variant() : *found;
}

int32_t MapDictionary::Count() const {
  Environment& environment = Living();
  if (countEpoch_ != environment.Epoch()) Compare(environment, lastBlock_);
  return count_;
}

const Variant* MapDictionary::Find(TextView key) const {
  Environment& environment = Living();
  auto found = entries_.find(key);
  if (found == entries_.end()) return Ask(environment, key);
  lastBlock_ = found->second.position / kBlock;
  if (blockEpochs_[lastBlock_] != environment.Epoch()) {
    Compare(environment, lastBlock_);
    if (entries_.empty()) return Ask(environment, key);
  }
  return &found->second.item;
}

void MapDictionary::Compare(Environment& environment, size_t block) const {
  const napi_env env = environment.Env();
  const Napi::HandleScope scope(env);
  const napi_value arguments[] = {Held(list_), Napi::Number::New(env, block * kBlock),
                                  Napi::Number::New(env, kBlock)};
  const napi_value answer = CallFunction(environment.Functions().compareMap.Value(), arguments);
  Check(env, napi_get_value_int32(env, answer, &count_));
  countEpoch_ = environment.Epoch();
  if (count_ < 0) {
    count_ = ~count_;
    Forget(environment);
  } else if (block < blockEpochs_.size()) {
    blockEpochs_[block] = environment.Epoch();
  }
}

const Variant* MapDictionary::Ask(Environment& environment, TextView key) const {
  const napi_env env = environment.Env();
  const Napi::HandleScope scope(env);
  const BuiltIns& functions = environment.Functions();
  const napi_value name = MakeText(env, key);
  const napi_value value = CallFunction(functions.mapGet.Value(), {&name, 1});
  answer_ = Answer(environment, value, u"Item");
  if (answer_.IsEmpty()) {
    const napi_value has = CallFunction(functions.mapHas.Value(), {&name, 1});
    bool exists = false;
    Check(env, napi_get_value_bool(env, has, &exists));
    return exists ? &answer_ : nullptr;
  }
  if (!IsComparable(answer_)) return &answer_;

  if (entries_.size() == kMostEntries) Forget(environment);
  const size_t position = entries_.size();
  const napi_value list = Held(list_);
  Check(env, napi_set_element(env, list, static_cast<uint32_t>(2 * position), name));
  Check(env, napi_set_element(env, list, static_cast<uint32_t>(2 * position + 1), value));
  // A block that the page may have changed since stays to be compared, for its other entries.
  if (position % kBlock == 0) blockEpochs_.push_back(environment.Epoch());
  return &entries_.insert_or_assign(Text(key), Entry{std::move(answer_), position})
              .first->second.item;
}

void MapDictionary::Forget(Environment& environment) const {
  const napi_env env = environment.Env();
  Check(env, napi_set_named_property(env, Held(list_), "length", Napi::Number::New(env, 0)));
  entries_.clear();
  blockEpochs_.clear();
}

}  // namespace vellum250::node
