'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const vm = require('node:vm');
const { assertFails, probeAddon } = require('./support.js');
const { createObject } = require(probeAddon);

const probe = createObject('vellum250.probe');

test('values arrive as the type they stand for', () => {
  const cases = [
    [undefined, 'Missing'],
    [null, 'Null'],
    [true, 'Boolean'],
    [0, 'Int32'],
    [-0, 'Int32'],
    [-2147483648, 'Int32'],
    [2147483647, 'Int32'],
    [2147483648, 'Double'],
    [-2147483649, 'Double'],
    [0.5, 'Double'],
    [NaN, 'Double'],
    [-Infinity, 'Double'],
    [1n, 'Decimal'],
    ['', 'Text'],
    [new Date(), 'Date'],
    [new Map(), 'Object'],
    [{ Count: 0, Exists() {}, Item() {} }, 'Object'],
    [createObject('vellum250.probe'), 'Object'],
  ];
  for (const [value, type] of cases) assert.equal(probe.TypeName(value), type, String(value));
});

test('values come back as they went in', () => {
  const cases = [
    null, true, false, 0, -1, 2147483647, -2147483648, 2147483648, 1e300, 0.1, NaN, Infinity,
    '', 'plain', 'é€ 漢字 😀', '\0', 'a\0b\0', '\ud800', '\udc00\ud800', 'x\udfff',
    String.fromCharCode(...Array.from({ length: 65536 }, (_, code) => code)),
    'long '.repeat(250000),
  ];
  for (const value of cases) {
    assert.deepEqual(probe.Echo(value), value);
    if (typeof value === 'string') {
      assert.equal(probe.EchoText(value), value);
      probe.Text = value;
      assert.equal(probe.Text, value);
    }
  }
  for (const value of [0n, 1n, -1n, 9223372036854775807n, 2n ** 96n - 1n, 1n - 2n ** 96n]) {
    assert.equal(probe.Echo(value), String(value));
  }
});

test('a local date keeps its day and its milliseconds in every time zone', () => {
  const zone = process.env.TZ;
  try {
    for (const name of ['UTC', 'Europe/London', 'America/St_Johns', 'Pacific/Apia']) {
      process.env.TZ = name;
      const dates = [
        new Date(2026, 10, 22, 23, 59, 59, 999),
        new Date(2026, 6, 1, 0, 30),
        new Date(1899, 11, 30, 6),
        new Date(1899, 11, 29, 18, 0, 0, 1),
        new Date(1847, 10, 30, 12, 34, 56, 789),
        new Date(9999, 11, 31, 23, 59, 59, 999),
        new Date(new Date(2000, 0, 1).setFullYear(100)),
      ];
      for (const date of dates) assert.deepEqual(probe.Echo(date), date, `${name} ${date}`);
      // Whole days since 30 December 1899, whatever the zone.
      assert.equal(probe.EchoInt32(new Date(1900, 0, 1)), 2, name);
      assert.equal(probe.EchoInt32(new Date(2026, 6, 1)), 46204, name);
    }
  } finally {
    if (zone === undefined) delete process.env.TZ;
    else process.env.TZ = zone;
  }
});

test('what scripts have no type for still comes out', () => {
  assert.equal(probe.Produce('Empty'), undefined);
  assert.equal(probe.Produce('Missing'), undefined);
  assert.equal(probe.Produce('Null'), null);
  assert.equal(probe.Produce('Nothing'), null);
  assert.equal(probe.Produce('Currency'), -12.3456);
  assert.equal(probe.Produce('Decimal'), '-79228162514264337593543950335');
  assertFails(() => probe.Produce('Huge'), 7);
});

test('arguments are converted as the script language converts them', () => {
  const cases = [
    ['EchoBoolean', 'True', true], ['EchoBoolean', -3, true], ['EchoBoolean', 0, false],
    ['EchoByte', 255, 255], ['EchoByte', '7', 7],
    ['EchoInt16', 2.5, 2], ['EchoInt16', 3.5, 4], ['EchoInt16', true, -1],
    ['EchoInt32', 12n, 12], ['EchoDouble', '1.5', 1.5],
    ['EchoText', 12, '12'], ['EchoText', true, 'True'], ['EchoText', 5n, '5'],
  ];
  for (const [member, value, expected] of cases) {
    assert.equal(probe[member](value), expected, `${member}(${String(value)})`);
  }
});

test('values that do not fit are failures that name the parameter', () => {
  const cases = [
    ['Echo', () => {}, 13], ['Echo', Symbol('s'), 13], ['Echo', [], 13], ['Echo', [1], 13],
    ['Echo', {}, 13], ['Echo', { Count: 1, Item() {} }, 13], ['Echo', new Date(NaN), 13],
    ['Echo', new String('boxed'), 13], ['Echo', new Set(), 13], ['Echo', new WeakMap(), 13],
    ['Echo', Buffer.from('bytes'), 13], ['Echo', Promise.resolve(1), 13], ['Echo', /x/, 13],
    ['Echo', 2n ** 96n, 6], ['Echo', -(2n ** 500n), 6], ['Echo', new Date(10000, 0, 1), 6],
    ['Echo', new Date(-1e15), 6], ['Echo', Object.create(probe), 13],
    ['EchoByte', 256, 6], ['EchoByte', -1, 6], ['EchoInt16', 32768, 6], ['EchoInt32', 2 ** 31, 6],
    ['EchoInt32', NaN, 6], ['EchoInt32', 'twelve', 13], ['EchoInt32', null, 94],
    ['EchoDate', 'no date', 13], ['EchoDate', 1e10, 6], ['EchoText', null, 94],
    ['EchoText', new Map(), 13], ['EchoBoolean', 'maybe', 13],
  ];
  for (const [member, value, number] of cases) {
    assertFails(() => probe[member](value), number, new RegExp(`: value of ${member}`));
  }
});

test('a date and a map of another realm are what they are', () => {
  assert.equal(probe.TypeName(vm.runInNewContext('new Date()')), 'Date');
  const map = vm.runInNewContext("new Map([['key', 'item']])");
  assert.equal(probe.Ask(map, 'Item', 'key'), 'item');
});

test('a loop walks the standard enumerator', () => {
  const countdown = probe.NewCountdown();
  assert.deepEqual([...countdown], [3, 2, 1]);
  assert.deepEqual([...countdown], [3, 2, 1], 'anew');
  const [first, ...rest] = countdown.NewEnum;
  assert.deepEqual([first, rest], [3, [2, 1]]);
  const walk = countdown.NewEnum;
  for (const value of walk) if (value === 2) break;
  assert.deepEqual([...walk], [1], 'goes on where it was left');
  assert.deepEqual(walk.next(), { done: true, value: undefined });

  const seen = [];
  const failing = probe.NewCountdown(true);
  assertFails(() => { for (const value of failing) seen.push(value); }, 9, /past the end/);
  assert.deepEqual(seen, [3, 2, 1]);
  assert.throws(() => [...probe], TypeError);
});
