'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertFails, probeAddon } = require('./support.js');
const { createObject } = require(probeAddon);

const probe = createObject('vellum250.probe');

// The same entries in every shape a page may bring.
function shapes(entries) {
  const map = new Map(entries);
  class Application {
    get Count() { return map.size; }
    Exists(key) { return map.has(key); }
    Item(key) { return map.get(key); }
  }
  return [
    map,
    new (class extends Map {})(entries),
    new Application(),
    { Count: () => map.size, Exists: (key) => map.has(key), Item: (key) => map.get(key) },
    new Proxy(new Application(), {}),
  ];
}

test('every shape of dictionary answers alike', () => {
  const entries = [['key', 'item'], ['Key', 2], ['', 'empty key'], ['null', null],
    ['nothing', undefined], ['\ud800\0', '\0\ud800'], ['date', new Date(2026, 0, 1)],
    ['truth', false]];
  for (const dictionary of shapes(entries)) {
    assert.equal(probe.Ask(dictionary, 'Count'), entries.length);
    for (const [key, item] of entries) {
      assert.equal(probe.Ask(dictionary, 'Exists', key), true, key);
      assert.deepEqual(probe.Ask(dictionary, 'Item', key), item, key);
    }
    for (const key of ['KEY', 'absent', 'key\0', '__proto__']) {
      assert.equal(probe.Ask(dictionary, 'Exists', key), false, key);
      assert.equal(probe.Ask(dictionary, 'Item', key), undefined, key);
    }
    assert.equal(probe.Ask(dictionary, '', 'key'), 'item');
    assertFails(() => probe.Ask(dictionary, 'Remove', 'key'), 438, /Remove/);
    assert.equal(probe.Echo(dictionary), dictionary);
  }
});

test('entries changed between two calls are seen', () => {
  const map = new Map([['k0', 'first']]);
  assert.equal(probe.Sum(map, 'k', 3), 'first');
  probe.Anything = map;
  const held = probe.Anything;
  held.set('k0', 'second').set('k2', 'third');
  assert.equal(probe.Sum(held, 'k', 3), 'secondthird');
  held.clear();
  assert.equal(probe.Sum(held, 'k', 3), 'none');
});

test('a Map that changes at random is answered as it is at each call', () => {
  let seed = 250;
  const random = (below) => (seed = (seed * 1103515245 + 12345) % 2147483648) % below;
  const values = ['a', '', null, undefined, 0, 1.5, NaN, true, 10n, new Date(2026, 0, 1), '\ud800'];
  // More keys than are remembered, in several runs over all of them.
  for (const [keys, calls] of [[100, 20000], [6000, 20000]]) {
    const map = new Map();
    probe.Object = map;
    for (let i = 0; i < calls; ++i) {
      const key = `k${random(2) ? i % keys : random(keys)}`;
      if (random(4) === 0) map.set(key, values[random(values.length)]);
      if (random(20) === 0) map.delete(`k${random(keys)}`);
      const item = map.get(key);
      assert.equal(probe.Ask(map, 'Count'), map.size);
      assert.equal(probe.Ask(map, 'Exists', key), map.has(key));
      assert.deepEqual(probe.Ask(map, 'Item', key), typeof item === 'bigint' ? String(item) : item);
    }
  }
  const date = new Date(2026, 0, 1);
  const map = new Map([['date', date]]);
  probe.Object = map;
  probe.Ask(map, 'Item', 'date');
  date.setFullYear(2027);
  assert.equal(probe.Ask(map, 'Item', 'date').getFullYear(), 2027);
});

test('entries changed by another dictionary during the call are seen', () => {
  const map = new Map([['k0', 'old'], ['k1', 'x']]);
  const meddling = {
    Count: 2,
    Exists: () => true,
    Item(key) {
      const before = probe.Sum(map, 'k', 1);
      map.set('k0', `${key}!`);
      return before + probe.Sum(map, 'k', 1);
    },
  };
  assert.equal(probe.Sum(meddling, 'key', 2), 'oldkey0!' + 'key0!key1!');
});

test('what a dictionary throws is the failure of the method, in its words', () => {
  const thrower = (value) => ({ Count: 1, Exists: () => true, Item() { throw value; } });
  const cases = [
    [new Error('no such entry: \ud800\0'), 440, 'no such entry: \ud800\0'],
    [new RangeError('out'), 440, 'out'],
    [Object.assign(new Error('mine'), { number: 1001, source: 'the page' }), 1001, 'mine'],
    ['only words', 440, 'only words'],
    [12, 440, '12'],
    [null, 440, 'null'],
  ];
  for (const [value, number, words] of cases) {
    const failure = assertFails(() => probe.Sum(thrower(value), 'k', 1), number);
    assert.equal(failure.description, words);
    if (value instanceof Error) assert.equal(failure.cause, value);
  }
  const wordless = [new Error(''), {}, Object.create(null), Symbol('s'), undefined,
    { get message() { throw new Error('again'); } }, { message: 5, number: 'x' },
    new Proxy({}, { get() { throw new Error('trap'); } })];
  for (const value of wordless) assertFails(() => probe.Sum(thrower(value), 'k', 1), 440);

  const nested = { Count: 1, Exists: () => true, Item: () => probe.EchoInt32('twelve') };
  assertFails(() => probe.Sum(nested, 'k', 1), 13, /value of EchoInt32/);
  const recursive = { Count: 1, Exists: () => true, Item: (key) => probe.Sum(recursive, key, 1) };
  assertFails(() => probe.Sum(recursive, 'k', 1), 440, /call stack/);
  assert.equal(probe.Sum(new Map([['k0', 'fine']]), 'k', 1), 'fine');
});

test('answers and members of the wrong kind are failures', () => {
  const good = { Count: 1, Exists: () => true, Item: () => 'x' };
  const cases = [
    [{ ...good, Item: () => ({}) }, 13, /Item of the page's dictionary/],
    [{ ...good, Item: () => Promise.resolve('later') }, 13, /Item/],
    [{ ...good, Exists: async () => true }, 13, /Exists/],
    [{ ...good, Exists: () => 'perhaps' }, 13],
    [{ ...good, Exists: () => null }, 94],
    [{ ...good, Item: 'text' }, 438, /Item/],
    [{ ...good, Item: undefined }, 438, /Item/],
    [{ ...good, Count: Symbol('s') }, 13, /Count/],
    [{ ...good, get Count() { throw new Error('no count'); } }, 440, /no count/],
    [new Map([['k0', []]]), 13, /Item/],
    [new Map([['k0', null]]), 94],
    [new Proxy(new Map(), {}), 13, /dictionary of Sum/],
  ];
  for (const [dictionary, number, words] of cases) {
    assertFails(() => probe.Sum(dictionary, 'k', 1), number, words);
  }
  const trapped = new Proxy({}, { has() { throw new Error('trap'); } });
  assert.throws(() => probe.Sum(trapped, 'k', 1), /trap/);
});

test('what a page puts in the place of built-in functions is not called', () => {
  const { get } = Map.prototype;
  Map.prototype.get = () => 'patched';
  try {
    assert.equal(probe.Sum(new Map([['k0', 'own']]), 'k', 1), 'own');
  } finally {
    Map.prototype.get = get;
  }
});

test('an absent entry of an object is an empty text', () => {
  const dictionary = { Count: 1, Exists: () => true, Item() {} };
  assert.equal(probe.Sum(dictionary, 'k', 1), '');
});
