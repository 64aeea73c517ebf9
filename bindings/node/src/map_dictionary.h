// A JavaScript Map as a dictionary of the library.
#pragma once

#include <unordered_map>

#include "host_object.h"

namespace vellum250::node {

// Count, Exists and Item, answered by the built-in functions of Map.
//
// Forms ask for the same labels in every call, three questions for each, while the entries hardly
// ever change. So the answers are remembered on both sides: here as values, beside them in
// JavaScript as a list of key and item. The page cannot change the map before the library returns
// to it; once it may have run, one call into JavaScript compares a block of the list with the map,
// and only a difference makes the library ask again.
class MapDictionary final : public HostObject {
 public:
  MapDictionary(Environment& environment, napi_value map);

  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override;

 private:
  struct Entry {
    Variant item;
    size_t position;  // in the list of keys and items
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(TextView key) const { return std::hash<TextView>()(key); }
  };

  int32_t Count(Environment& environment);
  // The remembered entry when it still holds, otherwise nullptr.
  const Entry* Recall(Environment& environment, TextView key);
  Variant Exists(Environment& environment, const Variant& key);
  Variant Item(Environment& environment, const Variant& key);
  // Asks the map and remembers what it answers, when that can be compared later.
  Variant Ask(Environment& environment, const Variant& key);
  void Forget(Environment& environment);

  napi_ref list_;
  int32_t count_ = 0;
  uint64_t countEpoch_ = 0;  // when it was read
  std::unordered_map<Text, Entry, Hash, std::equal_to<>> entries_;
  std::vector<uint64_t> blockEpochs_;  // when each block of the list was compared last
};

}  // namespace vellum250::node
