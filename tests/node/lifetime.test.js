'use strict';

const assert = require('node:assert/strict');
const { once } = require('node:events');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { collectUntil, probeAddon } = require('./support.js');
const { createObject } = require(probeAddon);

// Runs `body` as a worker's code; resolves with what it posts, rejects with what it throws.
async function inWorker(body, workerData) {
  const worker = new Worker(
    `const { parentPort, workerData } = require('node:worker_threads');
     const { createObject, ref } = require(${JSON.stringify(probeAddon)});
     ${body}`,
    { eval: true, workerData }
  );
  const ended = once(worker, 'exit');
  const [message] = await once(worker, 'message');
  await ended;
  return message;
}

test('an object is released with its last JavaScript reference', async () => {
  // Megabytes that the collector does not see: all of them together would be 4 GB.
  const text = 'x'.repeat(1 << 20);
  const useMany = () => {
    let last;
    for (let i = 0; i < 100; ++i) {
      const probe = createObject('vellum250.probe');
      probe.Text = text;
      last = new WeakRef(probe);
    }
    return last;
  };
  const before = process.memoryUsage().rss;
  for (let round = 0; round < 20; ++round) {
    const last = useMany();
    await collectUntil(() => last.deref() === undefined);
  }
  const grown = process.memoryUsage().rss - before;
  assert.ok(grown < 600 << 20, `${Math.round(grown / 2 ** 20)} MB more than before`);
});

test('a wrapper made anew after a collection is the same object', async () => {
  const probe = createObject('vellum250.probe');
  let held = probe.NewProbe();
  held.Text = 'still here';
  probe.Object = held;
  const wrapper = new WeakRef(held);
  held = undefined;
  await collectUntil(() => wrapper.deref() === undefined);
  assert.equal(probe.Object.Text, 'still here');
  assert.equal(probe.Object, probe.Object);
});

test('a dictionary lives as long as the library holds it, and no longer', async () => {
  const probe = createObject('vellum250.probe');
  let map = new Map([['k0', 'kept']]);
  const held = new WeakRef(map);
  probe.Object = map;
  map = undefined;
  for (let i = 0; i < 3; ++i) await collectUntil(() => true);
  assert.equal(probe.Sum(probe.Object, 'k', 1), 'kept');
  probe.Object = new Map();
  await collectUntil(() => held.deref() === undefined);
});

test('many calls in one turn keep no values', () => {
  const probe = createObject('vellum250.probe');
  const map = new Map(Array.from({ length: 100 }, (_, i) => [`k${i}`, 'x'.repeat(1000)]));
  const before = process.memoryUsage().rss;
  for (let i = 0; i < 3000; ++i) probe.Sum(map, 'k', 100);
  const grown = process.memoryUsage().rss - before;
  assert.ok(grown < 200 << 20, `${Math.round(grown / 2 ** 20)} MB more than before`);
});

test('workers each have their own objects and end cleanly', async () => {
  const answers = await Promise.all(
    Array.from({ length: 8 }, (_, number) =>
      inWorker(
        `const probe = createObject('vellum250.probe');
         probe.Object = new Map([['k0', 'worker ' + workerData]]);
         const count = ref(0);
         let text;
         for (let i = 0; i < 20000; ++i) {
           probe.Increase(count);
           text = probe.Sum(probe.Object, 'k', 1);
         }
         globalThis.kept = probe;
         parentPort.postMessage(text + ' ' + count.value);`,
        number
      )
    )
  );
  assert.deepEqual(answers, Array.from({ length: 8 }, (_, i) => `worker ${i} 20000`));
});

test('a worker ended in the middle of a call takes nothing with it', async () => {
  for (let round = 0; round < 5; ++round) {
    const worker = new Worker(
      `const { parentPort } = require('node:worker_threads');
       const { createObject } = require(${JSON.stringify(probeAddon)});
       const probe = createObject('vellum250.probe');
       const dictionary = { Count: 1, Exists: () => true, Item: () => 'x' };
       parentPort.postMessage('running');
       for (;;) try { probe.Sum(dictionary, 'k', 1000); } catch {}`,
      { eval: true }
    );
    await once(worker, 'message');
    await worker.terminate();
  }
  assert.equal(createObject('vellum250.probe').Echo(1), 1);
});
