// The keyed dictionary of scripts: text keys compared binary, insertion order.
#pragma once

#include <unordered_map>
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
  struct Hash {
    using is_transparent = void;
    size_t operator()(TextView key) const { return std::hash<TextView>()(key); }
  };
  std::vector<std::pair<Text, Variant>> entries_;
  std::unordered_map<Text, size_t, Hash, std::equal_to<>> positions_;
};

}  // namespace vellum250
