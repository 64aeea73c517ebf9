'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertFails, failureOf, probeAddon } = require('./support.js');
const { createObject, open, ref } = require(probeAddon);

const probe = createObject('vellum250.probe');

test('objects are created by name, without regard to case', () => {
  assert.equal(createObject('VELLUM250.Probe').ReadOnly, 'as made');
  assert.notEqual(createObject('vellum250.probe'), createObject('vellum250.probe'));
  for (const name of ['', 'vellum250', 'vellum250.probe\0', 'vellum250.nothing', 'x'.repeat(1e6)]) {
    assertFails(() => createObject(name), 429);
  }
  assertFails(() => createObject(), 449, /name/);
  for (const name of [null, 1, {}, Symbol('s')]) assertFails(() => createObject(name), 13, /name/);
  assertFails(() => new probe.constructor(), 429, /createObject/);
  assertFails(() => new probe.constructor(1), 429, /createObject/);
  assertFails(() => new (class extends probe.constructor {})(), 429);
});

test('members are methods and properties in published order', () => {
  const members = Object.keys(Object.getPrototypeOf(probe));
  assert.deepEqual(members.slice(0, 6), ['Text', 'Flag', 'Anything', 'Object', 'ReadOnly', 'Echo']);
  assert.equal(probe.constructor.name, 'probe');
  probe.Flag = 'True';
  assert.equal(probe.Flag, true);
  probe.Anything = null;
  assert.equal(probe.Anything, null);
});

test('wrong numbers of arguments and wrong names are told', () => {
  const cases = [
    [() => probe.Echo(), 449, /value of vellum250\.probe\.Echo/],
    [() => probe.Echo(undefined), 449, /value/],
    [() => probe.Exchange('a'), 449, /second/],
    [() => probe.Echo(1, 2), 450, /takes 1, not 2/],
    [() => probe.Echo(1, undefined), 450, /takes 1, not 2/],
    [() => probe.NewProbe(Symbol('s')), 450, /takes 0, not 1/],
    [() => probe.Echo(...Array(1000).fill(0)), 450, /not 1000/],
    [() => (probe.ReadOnly = 1), 438, /ReadOnly/],
    [() => (probe.Text = undefined), 449, /value/],
    [() => (probe.Text = null), 94, /value/],
    [() => (probe.Text = []), 13, /value/],
    [() => probe.echo(1), 438, /probe\.echo; its name here is Echo/],
    [() => probe.TEXT, 438, /its name here is Text/],
    [() => (probe.text = 'x'), 438, /probe\.text/],
    [() => (probe.NoSuchMember = 1), 438, /NoSuchMember/],
    [() => new Function('o', 'o.NoSuchMember = 1')(probe), 438, /NoSuchMember/],
    [() => (probe['\ud800'] = 1), 438],
  ];
  for (const [action, number, words] of cases) assertFails(action, number, words);
  assert.throws(() => probe.NoSuchMember(), /NoSuchMember is not a function/);
  assert.throws(() => (probe.Echo = 1), TypeError);
  assert.equal(probe.Echo(1), 1);
});

test('JavaScript may ask an object what it always asks', async () => {
  assert.equal(await probe, probe);
  assert.equal(JSON.stringify(probe), '{}');
  assert.equal(String(probe), '[object Object]');
  assert.match(require('node:util').inspect(probe, { showHidden: true }), /^probe/);
  const mark = Symbol('mark');
  probe[mark] = 1;
  assert.equal(probe[mark], 1);
});

test('optional arguments may be left out, undefined, or given', () => {
  assert.equal(probe.Defaults(), 'none7');
  assert.equal(probe.Defaults(undefined, 3), 'none3');
  assert.equal(probe.Defaults('x', undefined), 'x7');
  assert.equal(probe.Given(), false);
  assert.equal(probe.Given(''), true);
});

test('a ref holds the changed value, also after a failure', () => {
  const first = ref('a'), second = ref('b');
  probe.Exchange(first, second);
  assert.deepEqual([first.value, second.value], ['b', 'a']);

  const number = ref('41');
  probe.Increase(number);
  assert.equal(number.value, 42);
  assertFails(() => probe.Increase(number, true), 5, /after the increase/);
  assert.equal(number.value, 43);

  const unset = ref();
  probe.Increase(unset);
  assert.equal(unset.value, 1);

  const date = new Date(), kept = ref(date), copied = ref(5);
  probe.LeaveAlone(kept, copied);
  assert.equal(kept.value, date);
  assert.equal(copied.value, 5);

  assert.equal(probe.Increase(1), undefined);
  assertFails(() => probe.Increase(ref(ref(1))), 13, /number of Increase/);
  assertFails(() => probe.Exchange(first, ref(null)), 94, /second/);
  assert.deepEqual(first.value, 'b');
});

test('what the accessors of a hostile ref throw reaches the page as it is', () => {
  const thrown = new RangeError('mine');
  const hostile = ref('x');
  Object.defineProperty(hostile, 'value', { get() { throw thrown; } });
  assert.throws(() => probe.Exchange('a', hostile), (error) => error === thrown);
  const readOnly = ref('x');
  Object.defineProperty(readOnly, 'value', { get: () => 'x', set() { throw thrown; } });
  assert.throws(() => probe.Exchange('a', readOnly), (error) => error === thrown);
  assert.equal(probe.Echo(1), 1);
});

test('failures carry number, source and words; nothing else gets out', () => {
  const words = 'words \ud800 é \0 end';
  const failure = failureOf(() => probe.Raise(words));
  assert.deepEqual([failure.number, failure.source, failure.description],
    [1234, 'somewhere', words]);
  assert.equal('nativeNumber' in failure, false);

  const database = failureOf(() => probe.Raise('database'));
  assert.deepEqual([database.number, database.source, database.nativeNumber, database.line],
    [-2147217900, 'provider', 102, 3]);

  assertFails(() => probe.Raise('memory'), 7, /memory/i);
  assertFails(() => probe.Raise('standard'), 51, /raïsed/);
  assertFails(() => probe.Raise('unknown'), 51);
});

test('objects keep their identity', () => {
  const other = probe.NewProbe();
  assert.notEqual(other, probe);
  probe.Object = other;
  assert.equal(probe.Object, other);
  assert.equal(probe.Echo(other), other);
  other.Text = 'the same';
  assert.equal(probe.Object.Text, 'the same');
  const map = new Map();
  probe.Anything = map;
  assert.equal(probe.Anything, map);
});

test('members refuse to run on anything but their own objects', () => {
  const prototype = Object.getPrototypeOf(probe);
  const { get, set } = Object.getOwnPropertyDescriptor(prototype, 'Text');
  for (const receiver of [undefined, null, 1, {}, prototype, Object.create(probe), ref(1), open,
    new Map(), new Proxy(probe, {}), process.binding]) {
    assert.throws(() => prototype.Echo.call(receiver, 1), /Illegal invocation/);
    assertFails(() => get.call(receiver), 424, /vellum250\.probe/);
    assertFails(() => set.call(receiver, 'x'), 424, /vellum250\.probe/);
  }
});
