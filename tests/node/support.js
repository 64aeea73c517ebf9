'use strict';

// What the tests of the addon share.

const assert = require('node:assert/strict');
const path = require('node:path');
const v8 = require('node:v8');
const vm = require('node:vm');

const folder = process.env.VELLUM250_ADDON
  ? path.dirname(path.resolve(process.env.VELLUM250_ADDON))
  : path.join(__dirname, '..', '..', 'build', 'native', 'bindings', 'node');

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

module.exports = { assertFails, collectUntil, failureOf, probeAddon };
