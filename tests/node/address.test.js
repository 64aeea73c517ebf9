'use strict';

const assert = require('node:assert/strict');
const { once } = require('node:events');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { addon, assertFails, failureOf, loadReference, newDatabase } = require('./support.js');
const { createObject, open, ref } = require(addon);

const config = new Map([['globalShowLabel', 'False'], ['globalEnablePaf', 'false'],
  ['globalDisplayAsReadOnly', '0']]);
// Any label has a text.
const anyText = { Count: 1, Exists: () => true, Item: (key) => `text of ${key}` };
// Display name to comments without the country list: no database is needed.
const kFields = 4 | 8 | 16 | 32 | 64 | 128 | 256 | 512 | 2048;
const form = (address, ...more) => address.BuildAddress(kFields, 4, ...more);

function newAddress(texts = anyText, settings = config) {
  const address = createObject('vellum250.address');
  address.Connection('');
  address.SysDebug(false);
  address.OnErrorOnly(false);
  address.TextID(1);
  address.appDictShowText(texts);
  address.appDictWebConfig(settings);
  return address;
}

test('a Map and an object give the same form', () => {
  const asked = new Set();
  const settings = { Count: () => config.size, Exists: (key) => config.has(key),
    Item: (key) => config.get(key) };
  const recording = { ...anyText, Item: (key) => (asked.add(key), anyText.Item(key)) };
  const fromObject = form(newAddress(recording, settings), 'Home & "Away"');
  assert.match(fromObject, /value="Home &amp; &quot;Away&quot;"/);
  assert.ok(asked.size > 8);

  const map = new Map([...asked].map((key) => [key, anyText.Item(key)]));
  const address = newAddress(map);
  assert.equal(form(address, 'Home & "Away"'), fromObject);
  // What changes between two calls is seen; null is the default text.
  const [label] = asked;
  map.set(label, 'another text');
  assert.match(form(address), /another text/);
  map.set(label, null);
  assert.doesNotMatch(form(address), /another text|text of GeneralDisplayName1</);
});

test('hostile values are encoded into the form and come to no harm', () => {
  const address = newAddress();
  const latin = String.fromCharCode(...Array.from({ length: 255 }, (_, code) => code + 1));
  for (const value of ['<script>alert(1)</script>', '\0', '\ud800', latin, '<&">'.repeat(250000)]) {
    const markup = form(address, ...Array(9).fill(value));
    assert.doesNotMatch(markup, /<script>alert/);
    assert.ok(markup.length > value.length);
  }
});

test('calls of the wrong shape are refused before anything is written', () => {
  const address = newAddress();
  const cases = [
    [() => address.BuildAddress(), 449, /detailsbitwise of vellum250\.address\.BuildAddress/],
    [() => address.BuildAddress(40000, 4), 6, /detailsbitwise/],
    [() => address.BuildAddress('all', 4), 13, /detailsbitwise/],
    [() => address.BuildAddress(4, 4, []), 13, /sfDisplayName/],
    [() => address.BuildAddress(4, 4, null), 94, /sfDisplayName/],
    [() => address.BuildAddress(...Array(23).fill(1)), 450, /takes 22, not 23/],
    [() => address.appDictShowText('x'), 424, /dictObjDictShowText/],
    [() => address.appDictShowText({ Count: 1 }), 13, /dictObjDictShowText/],
    [() => (address.lastError = ''), 438, /lastError/],
  ];
  for (const [action, number, words] of cases) assertFails(action, number, words);
  assert.throws(() => address.BuildAdress(4, 4), /BuildAdress is not a function/);
});

test('what a dictionary throws in the middle of a form reaches the page', () => {
  const broken = new Error('the application has no texts');
  const address = newAddress({ ...anyText, Item() { throw broken; } });
  const failure = assertFails(() => form(address), 440, /has no texts/);
  assert.equal(failure.cause, broken);
  address.appDictShowText(anyText);
  assert.match(form(address), /text of/);
});

test('the context belongs to the thread, not to the object', async () => {
  newAddress();
  const later = createObject('vellum250.address');
  assert.match(form(later), /text of GeneralTown1/);
  const worker = new Worker(
    `const { parentPort, workerData } = require('node:worker_threads');
     const { createObject } = require(workerData.addon);
     const address = createObject('vellum250.address');
     let first;
     try { address.BuildAddress(4, 4); } catch (failure) { first = failure.number; }
     address.appDictWebConfig(new Map(workerData.config));
     address.appDictShowText({ Count: 1, Exists: () => true, Item: () => 'of the worker' });
     parentPort.postMessage([first, address.BuildAddress(4, 4)]);`,
    { eval: true, workerData: { addon, config: [...config] } }
  );
  const exit = once(worker, 'exit');
  const [[first, markup]] = await once(worker, 'message');
  assert.deepEqual(await exit, [0]);
  assert.equal(typeof first, 'number');
  assert.match(markup, /of the worker/);
  assert.match(form(later), /text of GeneralTown1/);
});

test('an address is stored and changed parameters come back', (t) => {
  const connectionString = newDatabase(t);
  const database = open(connectionString);
  loadReference(database, true);
  const [{ individual_ref: person }] = database.query('SELECT TOP 1 individual_ref FROM individual');

  const address = newAddress();
  address.Connection(connectionString);
  const display = ref(), main = ref('N');
  const location = address.InsertIndividualAddress(
    person, display, undefined, "1 O'Neil Street", undefined, undefined, 'Kingston \u20ac',
    undefined, 'kt1 2nu', undefined, undefined, 1, undefined, undefined, main
  );
  assert.ok(location > 0);
  assert.ok(display.value.length > 0);
  assert.ok(["'Y'", 'Null'].includes(main.value), main.value);
  const [row] = database.query(
    'SELECT display_name, address1, town, postcode FROM location WHERE location_ref = ?', [location]
  );
  assert.equal(row.display_name, display.value);
  assert.equal(row.address1, "1 O'Neil Street");
  assert.equal(row.postcode, 'KT1 2NU');
  assert.match(address.LastSql, /^INSERT INTO individual_loc/);
  database.close();
});

test('a database out of reach is a failure, or with SysDebug words in LastError', () => {
  const address = newAddress();
  address.Connection('Driver=Vellum250;Database=/no/such/file.db;PWD=secret;');
  const failure = failureOf(() => address.InsertIndividualAddress(1, 'Home'));
  assert.equal(typeof failure.nativeNumber, 'number');
  assert.doesNotMatch(failure.stack, /secret/);
  address.SysDebug(true);
  assert.equal(address.InsertIndividualAddress(1, 'Home'), 0);
  assert.match(address.LastError, /^Description: .+<br>Source: .*<br>Step: \d of 6$/s);
  assert.doesNotMatch(address.LastError, /secret/);
  newAddress();
});

test('eight workers add addresses to one file, each with its own context', async (t) => {
  const connectionString = newDatabase(t);
  const database = open(connectionString);
  loadReference(database, true);
  const people = database.query('SELECT TOP 8 individual_ref FROM individual ORDER BY individual_ref');
  const [{ before }] = database.query('SELECT count(*) AS before FROM location');
  const code = `
    const { parentPort, workerData } = require('node:worker_threads');
    const { createObject } = require(workerData.addon);
    const address = createObject('vellum250.address');
    address.Connection(workerData.connectionString);
    const made = [];
    for (let n = 0; n < 5; ++n) {
      made.push(address.InsertIndividualAddress(workerData.person, 'Address ' + n + ' of ' +
        workerData.person, '', 'Line 1', '', '', 'Town', '', '', '', 0, 1));
    }
    parentPort.postMessage(made);`;
  const answers = await Promise.all(people.map(async ({ individual_ref: person }) => {
    const worker = new Worker(code, { eval: true, workerData: { addon, connectionString, person } });
    const exit = once(worker, 'exit');
    const [made] = await once(worker, 'message');
    assert.deepEqual(await exit, [0]);
    return { person, made };
  }));
  assert.equal(new Set(answers.flatMap(({ made }) => made)).size, 40);
  const [{ after }] = database.query('SELECT count(*) AS after FROM location');
  assert.equal(after, before + 40);
  for (const { person, made } of answers) {
    const rows = database.query(
      `SELECT l.display_name FROM location l, individual_loc il WHERE il.location_ref =
         l.location_ref AND il.individual_ref = ? AND l.location_ref >= ? AND l.location_ref <= ?
       ORDER BY l.location_ref`,
      [person, made[0], made[4]]
    );
    assert.deepEqual(rows.map((row) => row.display_name),
      made.map((_, n) => `Address ${n} of ${person}`));
  }
  database.close();
});
