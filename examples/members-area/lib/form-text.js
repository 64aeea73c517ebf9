'use strict';

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

module.exports = { textOf, referenceOf };
