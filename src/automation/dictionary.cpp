#include "automation/dictionary.h"

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

const Variant* Dictionary::Find(TextView key) const {
  auto found = positions_.find(key);
  return found == positions_.end() ? nullptr : &entries_[found->second].second;
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
  auto found = positions_.find(key);
  if (found != positions_.end()) {
    entries_[found->second].second = std::move(value);
    return;
  }
  entries_.emplace_back(key, std::move(value));
  try {
    positions_.emplace(key, entries_.size() - 1);
  } catch (...) {
    entries_.pop_back();
    throw;
  }
}

void Dictionary::Remove(const Text& key) {
  auto found = positions_.find(key);
  if (found == positions_.end()) throw InvalidProcedureCall(u"no such key: " + key);
  const size_t removed = found->second;
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(removed));
  positions_.erase(found);
  for (auto& [name, position] : positions_) {
    if (position > removed) --position;
  }
}

void Dictionary::RemoveAll() {
  entries_.clear();
  positions_.clear();
}

}  // namespace vellum250
