// The site's configurable texts, from the page's dictionary or the table web_text.
#pragma once

#include <optional>

#include "automation/text.h"

namespace vellum250 {

// The texts for one call of a method. Whether labels are displayed is found out at the first text
// and then holds. Area and label stand in SQL as they are given: they are the library's own.
class WebTexts {
 public:
  WebTexts();

  // Appends the text of an area and label in the thread's text set. A text that is missing or
  // empty is `defaultText`; "[/BLANK]" is empty on purpose. While labels are displayed the text
  // starts with "(area/label)", its markers are shown, and a label that no text set has is added to
  // the table. Raises what the database or the dictionary raises.
  void Append(Text& out, TextView area, TextView label, TextView defaultText);

 private:
  bool ShowsLabels();

  Text key_;     // of the dictionary; kept for its memory
  Text textId_;  // in decimal
  std::optional<bool> showsLabels_;
};

// One text.
Text GetWebText(TextView area, TextView label, TextView defaultText);

}  // namespace vellum250
