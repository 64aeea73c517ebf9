// Makes the component's rows easier to use: names every field for assistive technology, tells which
// are mandatory, and repeats the summary's messages beside their fields. The form works without.
'use strict';

const form = document.querySelector('[data-address-form]');

// What browsers may fill in by themselves.
const completions = {
  Add1: 'address-line1',
  Add2: 'address-line2',
  Add3: 'address-line3',
  Town: 'address-level2',
  County: 'address-level1',
  PostCode: 'postal-code',
  Country: 'country-name',
};

const nameOf = (label) => label.textContent.replace(/[\s\u00a0:*]+$/, '').trim();

let lastName = '';
for (const row of form.querySelectorAll('tr')) {
  const [marker, label, cell] = row.cells;
  const field = cell && cell.querySelector('input:not([type=hidden]), select, textarea');
  if (!field) continue;
  // A further address line has no text of its own unless an administrator gave it one.
  const name = nameOf(label) || (lastName ? `${lastName}, continued` : field.name);
  if (nameOf(label)) lastName = name;
  field.setAttribute('aria-label', name);
  if (marker.textContent.trim() === '*') field.setAttribute('aria-required', 'true');
  if (completions[field.id]) field.autocomplete = completions[field.id];
  label.addEventListener('click', () => field.focus());
}

for (const link of document.querySelectorAll('#problems a')) {
  const field = document.getElementById(link.hash.slice(1));
  if (!field || !form.contains(field)) continue;
  field.setAttribute('aria-invalid', 'true');
  const message = document.createElement('p');
  message.className = 'problem-line';
  message.id = `${field.id}-problem`;
  message.textContent = link.textContent;
  field.after(message);
  field.setAttribute('aria-describedby', message.id);
  link.addEventListener('click', (event) => {
    event.preventDefault();
    field.focus();
  });
}
document.getElementById('problems')?.focus();

form.addEventListener('paffilled', () => {
  document.querySelector('[data-found]').textContent =
    'The address found was filled in. Check it, then save.';
  form.elements.namedItem('Add1').focus();
});
