// The postcode lookup of address forms: the form's rows call getFormName and prepareAddressForPaf
// while the page is read, and openPafWindow from their button; the lookup's small window calls
// setAddressValuesForPaf. A prefix stands before every field's name, so that one page can hold
// several forms.
'use strict';

const pafForms = {};
let pafPrefix = '';

// The parts of an address in the order in which setAddressValuesForPaf takes them.
const pafFields = [
  'DisplayName',
  'Differentiator',
  'Add1',
  'Add2',
  'Add3',
  'Town',
  'County',
  'Postcode',
  'Country',
];

// The form that holds the prefix's address fields, or null.
function getFormName(prefix) {
  for (const form of document.forms) {
    if (form.elements.namedItem(prefix + 'Add1')) return form;
  }
  return null;
}

// Remembers the form that the next lookup fills.
function prepareAddressForPaf(prefix, form) {
  pafPrefix = prefix;
  if (form) pafForms[prefix] = form;
}

function pafField(prefix, form, name) {
  const field = form.elements.namedItem(prefix + name);
  return field && 'value' in field ? field : null;
}

// The small window, asked for the postcode and for the house number that begins address line 1.
function openPafWindow(button) {
  const form = (button && button.form) || pafForms[pafPrefix];
  if (!form) return;
  prepareAddressForPaf(pafPrefix, form);
  const typed = (name) => pafField(pafPrefix, form, name)?.value.trim() || '';
  const house = (/^\d+\s?[a-z]?(?![a-z])/i.exec(typed('Add1')) || [''])[0].replace(/\s/g, '');
  const query = new URLSearchParams({ postcode: typed('Postcode'), house });
  window
    .open(`../paf/?${query}`, 'paf', 'width=480,height=620,scrollbars=yes,resizable=yes')
    ?.focus();
}

function setAddressValuesForPaf(prefix, form, ...values) {
  pafFields.forEach((name, at) => {
    const field = pafField(prefix, form, name);
    // The names are the member's own; a lookup knows nothing of them.
    if (field && !(at < 2 && values[at] === '')) field.value = values[at];
  });
  setPafCountry(prefix, form, values[pafFields.indexOf('Country')]);
  form.dispatchEvent(new CustomEvent('paffilled', { bubbles: true, detail: { prefix } }));
}

function setPafCountry(prefix, form, country) {
  const list = pafField(prefix, form, 'Cref');
  if (!list || !list.options) return;
  const wanted = country.toLowerCase();
  const option = [...list.options].find((each) => each.text.toLowerCase().endsWith(wanted));
  if (wanted !== '' && option) list.value = option.value;
}

function clearAddressForPaf(prefix, form) {
  setAddressValuesForPaf(prefix, form, ...pafFields.map(() => ''));
}

// What the small window calls with the address that was chosen.
function takePafAddress(address) {
  const form = pafForms[pafPrefix];
  if (!form) return false;
  setAddressValuesForPaf(
    pafPrefix,
    form,
    '',
    '',
    address.line1,
    address.line2,
    address.line3,
    address.town,
    address.county,
    address.postcode,
    address.country
  );
  return true;
}
