// The text of an INI file and where things stand in it. What is not changed keeps its place, its
// spelling and its line ends.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "automation/text.h"

namespace vellum250::platform {

class ProfileText {
 public:
  // Bytes of the code page, or UTF-16 (little-endian) after its mark; anything else than text is
  // kept byte by byte.
  explicit ProfileText(std::string_view bytes);
  // In the encoding that it came in.
  std::string Bytes() const;

  // As it stands in the file, without the blanks around it.
  std::optional<Text> Value(TextView section, TextView name) const;

  void Set(TextView section, TextView name, TextView value);
  void Remove(TextView section, TextView name);
  void RemoveSection(TextView section);

 private:
  struct Place;
  Place Find(TextView section, const TextView* name) const;
  void Insert(size_t at, const Text& line);

  bool utf16_;
  Text text_;
};

}  // namespace vellum250::platform
