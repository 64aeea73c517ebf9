// The rows of an address form, for the page's own table and form elements.
#pragma once

#include "runtime/trap.h"

namespace vellum250::forms {

// What the form shows. The masks hold the fields' bits; the texts are shown as they are, encoded.
struct AddressForm {
  int16_t shown = 0;
  int16_t mandatory = 0;
  TextView displayName = {};
  TextView differentiator = {};
  TextView address1 = {};
  TextView address2 = {};
  TextView address3 = {};
  TextView town = {};
  TextView county = {};
  TextView postcode = {};
  TextView country = {};
  TextView countryRef = {};  // lookup_ref as text; empty is the site's own country
  int32_t addressType = 0;
  TextView addressTypes = {};  // lookup references with commas between
  TextView main = u"Y";
  bool showsMain = true;
  TextView entityType = {};
  int32_t systemRef = 0;
  int32_t locationRef = 0;
  TextView pafPrefix = {};
  TextView comments = {};
};

// The markup. `includePafScript` is whether the page still wants the postcode lookup's script file;
// false after it was written. Raises what the database or a dictionary raises, in the midst of
// nothing: no markup comes out then.
Text BuildAddress(CallReport report, const AddressForm& form, bool& includePafScript);

}  // namespace vellum250::forms
