// A JavaScript Map as a dictionary of the library.
#pragma once

#include <unordered_map>
#include <vector>

#include "automation/keyed_lookup.h"
#include "host_object.h"

namespace vellum250::node {

// Count, Exists and Item, answered by the built-in functions of Map.
//
// Forms ask for the same labels in every call, three questions for each, while the entries hardly
// ever change. So the answers are remembered on both sides: here as values, beside them in
// JavaScript as a list of key and item. The page cannot change the map before the library returns
// to it; once it may have run, one call into JavaScript compares a block of the list with the map,
// and only a difference makes the library ask again.
class MapDictionary final : public HostObject, public KeyedLookup {
 public:
  MapDictionary(Environment& environment, napi_value map);

  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override;
  int32_t Count() const override;
  const Variant* Find(TextView key) const override;

 private:
  struct Entry {
    Variant item;
    size_t position;  // in the list of keys and items
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(TextView key) const { return std::hash<TextView>()(key); }
  };

  // Compares a block of the list and reads the map's size, when the page may have run since.
  void Compare(Environment& environment, size_t block) const;
  // Asks the map and remembers what it answers, when that can be compared later.
  const Variant* Ask(Environment& environment, TextView key) const;
  void Forget(Environment& environment) const;

  // All that follows is memory of what the map holds.
  napi_ref list_;
  mutable int32_t count_ = 0;
  mutable uint64_t countEpoch_ = 0;  // when it was read
  mutable std::unordered_map<Text, Entry, Hash, std::equal_to<>> entries_;
  mutable std::vector<uint64_t> blockEpochs_;  // when each block of the list was compared last
  mutable size_t lastBlock_ = 0;               // the one that was asked for last
  mutable Variant answer_;                     // the last that is not among the entries
};

}  // namespace vellum250::node
