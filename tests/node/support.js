'use strict';

// What the tests of the addon share.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const v8 = require('node:v8');
const vm = require('node:vm');

const folder = process.env.VELLUM250_ADDON
  ? path.dirname(path.resolve(process.env.VELLUM250_ADDON))
  : path.join(__dirname, '..', '..', 'build', 'native', 'bindings', 'node');

/** The addon as pages load it. */
const addon = path.join(__dirname, '..', '..', 'bindings', 'node');

/** The addon with the class vellum250.probe, a member for every kind of value. */
const probeAddon = path.join(folder, 'vellum250_probe.node');

/** The failure that `action` raises, which must be an Error with number, source and description. */
function failureOf(action) {
  try {
    action();
  } catch (error) {
    assert.ok(error instanceof Error, `thrown: ${String(error)}`);
    assert.equal(typeof error.number, 'number', error.stack);
    assert.equal(typeof error.source, 'string');
    assert.ok(error.description.length > 0);
    assert.equal(error.message, error.description);
    return error;
  }
  return assert.fail('nothing was raised');
}

/** Asserts the failure's number and, when given, words in its description. */
function assertFails(action, number, words = /(?:)/) {
  const failure = failureOf(action);
  assert.equal(failure.number, number, failure.stack);
  assert.match(failure.description, words);
  return failure;
}

v8.setFlagsFromString('--expose-gc');
const collect = vm.runInNewContext('gc');

/**
 * Collects garbage until `done()` holds. Finalisers run between the turns of the event loop, and
 * what a WeakRef was asked for lives to the end of its turn.
 */
async function collectUntil(done) {
  for (let turn = 0; turn < 20 && !done(); ++turn) {
    await new Promise(setImmediate);
    collect();
    await new Promise(setImmediate);
  }
  assert.ok(done(), 'still held after 20 collections');
}

/** The connection string of a new, empty embedded database, removed when test `t` ends. */
function newDatabase(t) {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'vellum250-'));
  t.after(() => fs.rmSync(folder, { recursive: true, force: true }));
  return `Driver=Vellum250;Database={${path.join(folder, 'test.db')}};Create=yes;`;
}

/** Runs the reference scripts of the contact tables, with or without the sample data. */
function loadReference(connection, sample) {
  const scripts = path.join(__dirname, '..', '..', 'database');
  for (const name of fs.readdirSync(scripts).sort()) {
    if (!name.endsWith('.sql') || (name.includes('-sample-') && !sample)) continue;
    const text = fs.readFileSync(path.join(scripts, name), 'utf8');
    for (const batch of text.split(/^\s*GO\s*$/im)) {
      if (batch.trim()) connection.batch(batch);
    }
  }
}

module.exports = { addon, assertFails, collectUntil, failureOf, loadReference, newDatabase, probeAddon };
