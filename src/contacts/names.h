// Display texts made of the parts of a person's name or of an address.
#pragma once

#include "runtime/trap.h"

namespace vellum250::contacts {

// "12 High Street, Leeds, WEST YORKS": the parts that are not blank, the county in upper case.
// Raises 5 when all are blank; while SysDebug is on that is reported and the text is empty.
Text DisplayAddressName(CallReport report, TextView address1, TextView town, TextView county);

// "J P" of "john paul", "M-J" of "mary-jane": the first character and each one after a blank, "."
// or "-", with these. A single word keeps its first letter as it is.
Text Initials(TextView forenames);

// The text up to its first blank.
TextView FirstWord(TextView text);

// The forms that the site configures in app_profile.
enum class NameForm { Salutation, KnownAs, Label };

struct PersonName {
  TextView title;
  TextView surname;
  TextView forenames;
  TextView honours;
  TextView initials;
};

// The person's name in the site's form. Raises what the database raises.
Text FormattedName(NameForm form, const PersonName& name);

}  // namespace vellum250::contacts
