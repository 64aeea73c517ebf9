// The keyed dictionary of scripts: text keys compared binary, insertion order.
#pragma once

#include <vector>

#include "automation/class_table.h"
#include "automation/keyed_lookup.h"

namespace vellum250 {

class Dictionary final : public ScriptObject<Dictionary>, public KeyedLookup {
 public:
  static const ClassTable& Table();

  int32_t Count() const override { return static_cast<int32_t>(entries_.size()); }
  bool Exists(const Text& key) const { return Find(key) != nullptr; }
  // The value, or Empty for an absent key (which is not added).
  Variant Item(const Text& key) const;
  // Raises 457 when the key is there.
  void Add(const Text& key, const Variant& value);
  // Adds or replaces.
  void Set(TextView key, Variant value);
  // Raises 5 when the key is absent.
  void Remove(const Text& key);
  void RemoveAll();

  // Does not allocate. Valid until the next change.
  const Variant* Find(TextView key) const override;
  // Keys and values in insertion order.
  const std::vector<std::pair<Text, Variant>>& Entries() const { return entries_; }

 private:
  static uint32_t HashOf(TextView key);
  // The slot of the key, or the free one where it belongs.
  size_t SlotOf(TextView key, uint32_t hash) const;
  void Rehash(size_t slotCount);

  std::vector<std::pair<Text, Variant>> entries_;
  // Open addressing, a power of two and at most half full: 0 is free, otherwise the upper half is
  // the key's hash and the lower half the entry's position counted from 1.
  std::vector<uint64_t> slots_;
};

}  // namespace vellum250
