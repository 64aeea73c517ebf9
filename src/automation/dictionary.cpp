#include "automation/dictionary.h"

#include <algorithm>
#include <cstring>

namespace vellum250 {

const ClassTable& Dictionary::Table() {
  static const ClassTable table = Describe<Dictionary>(u"Dictionary")
                                      .Method<&Dictionary::Item>(u"Item", {u"Key"})
                                      .Method<&Dictionary::Add>(u"Add", {u"Key", u"Item"})
                                      .Method<&Dictionary::Exists>(u"Exists", {u"Key"})
                                      .Method<&Dictionary::Remove>(u"Remove", {u"Key"})
                                      .Method<&Dictionary::RemoveAll>(u"RemoveAll")
                                      .ReadOnlyProperty<&Dictionary::Count>(u"Count");
  return table;
}

// Four code units at a time, mixed by multiplication; the top bits are the best ones.
uint32_t Dictionary::HashOf(TextView key) {
  constexpr uint64_t kMultiplier = 0x9E3779B97F4A7C15;
  constexpr size_t kStride = sizeof(uint64_t) / sizeof(char16_t);
  uint64_t hash = key.size() * kMultiplier;
  const auto mix = [&hash](const char16_t* from, size_t count) {
    uint64_t word = 0;
    std::memcpy(&word, from, count * sizeof(char16_t));
    hash = (hash ^ word) * kMultiplier;
    hash ^= hash >> 32;
  };
  size_t i = 0;
  for (; i + kStride <= key.size(); i += kStride) mix(key.data() + i, kStride);
  if (i < key.size()) mix(key.data() + i, key.size() - i);
  return static_cast<uint32_t>(hash * kMultiplier >> 32);
}

size_t Dictionary::SlotOf(TextView key, uint32_t hash) const {
  const size_t mask = slots_.size() - 1;
  size_t at = hash & mask;
  for (; slots_[at] != 0; at = (at + 1) & mask) {
    if (slots_[at] >> 32 != hash) continue;
    if (entries_[(slots_[at] & 0xFFFFFFFF) - 1].first == key) break;
  }
  return at;
}

void Dictionary::Rehash(size_t slotCount) {
  std::vector<uint64_t> slots(slotCount);
  slots_.swap(slots);
  for (size_t i = 0; i < entries_.size(); ++i) {
    const uint32_t hash = HashOf(entries_[i].first);
    slots_[SlotOf(entries_[i].first, hash)] = uint64_t{hash} << 32 | (i + 1);
  }
}

const Variant* Dictionary::Find(TextView key) const {
  if (entries_.empty()) return nullptr;
  const uint64_t slot = slots_[SlotOf(key, HashOf(key))];
  return slot == 0 ? nullptr : &entries_[(slot & 0xFFFFFFFF) - 1].second;
}

Variant Dictionary::Item(const Text& key) const {
  const Variant* value = Find(key);
  return value == nullptr ? Variant() : *value;
}

void Dictionary::Add(const Text& key, const Variant& value) {
  if (Find(key) != nullptr) throw KeyAlreadyAssociated(key);
  Set(key, value);
}

void Dictionary::Set(TextView key, Variant value) {
  if (2 * (entries_.size() + 1) > slots_.size()) Rehash(std::max<size_t>(16, 2 * slots_.size()));
  const uint32_t hash = HashOf(key);
  uint64_t& slot = slots_[SlotOf(key, hash)];
  if (slot != 0) {
    entries_[(slot & 0xFFFFFFFF) - 1].second = std::move(value);
    return;
  }
  entries_.emplace_back(key, std::move(value));
  slot = uint64_t{hash} << 32 | entries_.size();
}

void Dictionary::Remove(const Text& key) {
  const Variant* value = Find(key);
  if (value == nullptr) throw InvalidProcedureCall(u"no such key: " + key);
  const auto entry =
      std::ranges::find_if(entries_, [&](const auto& e) { return &e.second == value; });
  entries_.erase(entry);
  Rehash(slots_.size());
}

void Dictionary::RemoveAll() {
  entries_.clear();
  slots_.clear();
}

}  // namespace vellum250
