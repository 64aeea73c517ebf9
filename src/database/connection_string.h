// Connection strings: `key=value;key={value with ; in it};`, keys without regard to case.
#pragma once

#include <optional>
#include <vector>

#include "automation/text.h"

namespace vellum250::database {

class ConnectionString {
 public:
  struct Entry {
    Text key;
    Text value;  // without the braces or quotes
  };

  // Raises a DatabaseFailure that names what is wrong, never a value.
  static ConnectionString Parse(TextView text);

  // The first value of a key, without regard to case and to blanks in the key.
  std::optional<TextView> Find(TextView key) const;
  const std::vector<Entry>& Entries() const { return entries_; }
  // In order, values braced where they need it.
  Text ToText() const;
  // As Parse took it; the key of pools.
  const Text& Source() const { return source_; }

 private:
  std::vector<Entry> entries_;
  Text source_;
};

// `text` with every value of a password key ("PWD", "Password") replaced by "***": for messages.
Text WithoutPasswords(TextView text);

}  // namespace vellum250::database
