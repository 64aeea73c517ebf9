// The pieces of markup that all form rows share. Pages and their scripts rely on every blank.
#pragma once

#include <algorithm>
#include <array>

#include "automation/text.h"

namespace vellum250::forms {

inline constexpr TextView kRowStart = u"<tr>\r\n";
inline constexpr TextView kRowEnd = u"  </tr>\r\n";
inline constexpr TextView kCellStart = u"   <td class=\"Text\">";
inline constexpr TextView kTopCellStart = u"   <td class=\"Text\" valign=\"top\">";
inline constexpr TextView kWideCellStart = u"   <td class=\"Text\" colspan=3>";
inline constexpr TextView kCellEnd = u"   </td>\r\n";
inline constexpr TextView kMandatory = u"*";
inline constexpr TextView kOptional = u"&nbsp;";
inline constexpr TextView kAlwaysMandatoryCell = u"   <td class=\"Text\">*</td>\r\n";
inline constexpr TextView kLabelPadding = u"&nbsp;&nbsp;";
inline constexpr TextView kLineEnd = u"\r\n";
inline constexpr TextView kInputEnd = u"\">";
inline constexpr TextView kReadOnlyInputEnd = u"\" ReadOnly>";
inline constexpr TextView kTicked = u"     <img src=\"../custom/tickbox_on.gif\" border=0>";
inline constexpr TextView kSelected = u" selected";
inline constexpr TextView kOptionStart = u"<option value=\"";
inline constexpr TextView kOptionEnd = u"</option>";

template <const TextView&... pieces>
inline constexpr auto kJoinedCharacters = [] {
  std::array<char16_t, (pieces.size() + ...)> characters{};
  auto end = characters.begin();
  ((end = std::ranges::copy(pieces, end).out), ...);
  return characters;
}();

// Constant pieces as one, put together by the compiler.
template <const TextView&... pieces>
inline constexpr TextView kJoined{kJoinedCharacters<pieces...>.data(),
                                  kJoinedCharacters<pieces...>.size()};

// From the start of a field's row to its label, by marker.
inline constexpr TextView kMandatoryRow =
    kJoined<kRowStart, kCellStart, kMandatory, kCellEnd, kCellStart>;
inline constexpr TextView kOptionalRow =
    kJoined<kRowStart, kCellStart, kOptional, kCellEnd, kCellStart>;
inline constexpr TextView kAlwaysMandatoryRow =
    kJoined<kRowStart, kAlwaysMandatoryCell, kCellStart>;
// From behind the label to the input, and from behind the input to the end of the row.
inline constexpr TextView kLabelToInput = kJoined<kLabelPadding, kCellEnd, kCellStart>;
inline constexpr TextView kInputCellEnd = kJoined<kCellEnd, kRowEnd>;

// Where the texts of labels and of lookup rows stand.
inline constexpr TextView kGeneralArea = u"General";
inline constexpr TextView kLookupArea = u"Lookup";

}  // namespace vellum250::forms
