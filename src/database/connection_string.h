// Connection strings: `key=value;key={value with ; in it};`, keys without regard to case.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "automation/text.h"

namespace vellum250::database {

class ConnectionString {
 public:
  struct Entry {
    Text key;
    Text value;  // without the braces or quotes
  };

  // A value may stand in {braces}, "quotes" or 'quotes', where the closing mark is doubled to mean
  // itself; any other value ends at the next ";". Blanks around keys and values do not count, nor
  // do empty entries. Raises a DatabaseFailure that says what is wrong and in which entry, but
  // never repeats any text, which might be part of a password.
  static ConnectionString Parse(TextView text);

  ConnectionString() = default;
  explicit ConnectionString(std::vector<Entry> entries);

  // The first value of a key, without regard to case and to blanks in the key.
  std::optional<TextView> Find(TextView key) const;
  const std::vector<Entry>& Entries() const { return entries_; }
  // The values of all password keys that are not empty.
  std::vector<Text> Passwords() const;
  // In order, values braced where they need it.
  Text ToText() const;
  // As Parse took it, or as ToText gives it; the key of pools.
  const Text& Source() const { return source_; }

 private:
  std::vector<Entry> entries_;
  Text source_;
};

// Whether two keys are one: without regard to case and to blanks.
bool SameKey(TextView a, TextView b);
// "PWD", "Password", "Secret" and longer keys that hold one of them ("Database Password").
bool IsPasswordKey(TextView key);

// `text` with every value of a password key replaced by "***", and with all replaced that follows
// the point from which it cannot be read: for messages.
Text WithoutPasswords(TextView text);

// A driver's message with "***" in place of every password, whether it stands there as it is, as
// the connection string writes it, or behind a password's key, and without regard to case.
// `alsoParts` hides any four characters in a row of a password as well.
Text WithoutPasswords(TextView message, std::span<const Text> passwords, bool alsoParts);

}  // namespace vellum250::database
