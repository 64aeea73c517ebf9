'use strict';

// The names by which people know the texts of the address form.
const knownNames = {
  DisplayName: 'Display name',
  Differentiator: 'Differentiator',
  Add1: 'Address line 1',
  Add2: 'Address line 2',
  Add3: 'Address line 3',
  Town: 'Town',
  County: 'County',
  Postcode: 'Postcode',
  Comm: 'Comments',
};

// A field that came once, as text; anything else (absent, repeated) is the empty text.
function textOf(body, name) {
  const value = body?.[name];
  return typeof value === 'string' ? value : '';
}

// A whole number from 1 to the largest database key, else 0.
function referenceOf(text) {
  if (!/^[1-9]\d{0,9}$/.test(text || '')) return 0;
  const number = Number(text);
  return number <= 2147483647 ? number : 0;
}

module.exports = { knownNames, textOf, referenceOf };
