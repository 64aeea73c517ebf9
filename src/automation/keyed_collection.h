// An ordered collection with optional text keys, as scripts know it: positions count from 1, keys
// are compared without regard to ASCII case.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "automation/failure.h"
#include "automation/text.h"

namespace vellum250 {

template <typename T>
class KeyedCollection {
 public:
  int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

  // Appends; raises 457 when the key is there already.
  void Add(T value, std::optional<Text> key = std::nullopt) {
    if (key && FindKey(*key) != kAbsent) throw KeyAlreadyAssociated(*key);
    entries_.push_back({std::move(value), std::move(key)});
  }

  // Raises 9 for a position outside 1 to Count().
  T& Item(int32_t position) { return entries_[Index(position)].value; }
  // Raises 5 for an absent key.
  T& Item(TextView key) { return entries_[Index(key)].value; }

  // The value or nullptr.
  T* Find(TextView key) {
    const size_t index = FindKey(key);
    return index == kAbsent ? nullptr : &entries_[index].value;
  }

  void Remove(int32_t position) { Erase(Index(position)); }
  void Remove(TextView key) { Erase(Index(key)); }

 private:
  struct Entry {
    T value;
    std::optional<Text> key;
  };
  static constexpr size_t kAbsent = static_cast<size_t>(-1);

  size_t FindKey(TextView key) const {
    for (size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].key && EqualsIgnoreAsciiCase(*entries_[i].key, key)) return i;
    }
    return kAbsent;
  }
  size_t Index(int32_t position) const {
    if (position < 1 || position > Count()) throw SubscriptOutOfRange(NumberText(position));
    return static_cast<size_t>(position - 1);
  }
  size_t Index(TextView key) const {
    const size_t index = FindKey(key);
    if (index == kAbsent) throw InvalidProcedureCall(u"no such key: " + Text(key));
    return index;
  }
  void Erase(size_t index) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
  }

  std::vector<Entry> entries_;
};

}  // namespace vellum250
