'use strict';

const assert = require('node:assert/strict');
const { once } = require('node:events');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { addon, assertFails, collectUntil, failureOf, newDatabase } = require('./support.js');
const { open } = require(addon);

test('values go through parameters and columns', (t) => {
  const connection = open(newDatabase(t));
  connection.batch(
    `CREATE TABLE kinds (ref int IDENTITY PRIMARY KEY, t tinyint, s smallint, i int, b bigint,
       d decimal(18, 2), m money, f float, x bit, w datetime, v varchar(50), n nvarchar(max))`
  );
  const when = new Date(2026, 10, 22, 23, 59, 58);
  const rows = [
    [255, -32768, 2147483647, 9007199254740993n, 1234567890123456n, 12, 0.1, true, when, "O'Neil",
      '漢字 😀'],
    [null, null, null, null, null, null, null, null, null, null, null],
    [0, 0, 0, 0n, 0n, 0, 0, false, new Date(1753, 0, 1), '', 'x'.repeat(100000)],
  ];
  for (const row of rows) {
    connection.query(
      'INSERT INTO kinds (t, s, i, b, d, m, f, x, w, v, n) VALUES (?,?,?,?,?,?,?,?,?,?,?)', row
    );
  }
  const read = connection.query('SELECT t, s, i, b, d, m, f, x, w, v, n FROM kinds ORDER BY ref');
  assert.deepEqual(read.map((row) => Object.keys(row).join('')), Array(3).fill('tsibdmfxwvn'));
  assert.deepEqual(Object.values(read[0]), [255, -32768, 2147483647, '9007199254740993',
    '1234567890123456.00', 12, 0.1, true, when, "O'Neil", '漢字 😀']);
  assert.deepEqual(Object.values(read[1]), rows[1]);
  assert.deepEqual(Object.values(read[2]).slice(7), rows[2].slice(7));
});

test('texts keep every code unit', (t) => {
  const connection = open(newDatabase(t));
  connection.batch('CREATE TABLE texts (ref int IDENTITY, n nvarchar(max))');
  const texts = ['\0', 'a\0b', '\ud800', 'x\udc00\ud800y', "'; DROP TABLE texts --", '?', ' '];
  for (const text of texts) connection.query('INSERT INTO texts (n) VALUES (?)', [text]);
  assert.deepEqual(connection.query('SELECT n FROM texts ORDER BY ref').map(({ n }) => n), texts);
});

test('rows carry their columns by name, by position without one, the first of several', (t) => {
  const connection = open(newDatabase(t));
  const sql = "SELECT 1 AS a, 2, 'x' AS a, 3 AS [__proto__], 4 AS [a b] WHERE 1 = ?";
  const [row] = connection.query(sql, [1]);
  assert.deepEqual(Object.entries(row),
    [['2', 2], ['a', 1], ['__proto__', 3], ['a b', 4]]);
  assert.deepEqual(connection.query(sql, [0]), []);
  assert.deepEqual(connection.query('DECLARE @x int SET @x = 1'), []);
});

test('a batch gives all results and counts in order', (t) => {
  const connection = open(newDatabase(t));
  connection.batch('CREATE TABLE t (a int, b varchar(5))');
  const batch = connection.batch(
    `INSERT INTO t (a, b) VALUES (1, 'one')
     INSERT INTO t (a, b) VALUES (2, NULL)
     SELECT a, b FROM t ORDER BY a
     UPDATE t SET b = 'x'
     SELECT b FROM t WHERE a > 9`
  );
  assert.deepEqual(batch.results, [
    { columns: [{ name: 'a', type: 'int' }, { name: 'b', type: 'varchar' }],
      rows: [[1, 'one'], [2, null]] },
    { columns: [{ name: 'b', type: 'varchar' }], rows: [] },
  ]);
  assert.deepEqual(batch.rowCounts, [1, 1, 2]);
});

test('failures tell number, server number and line', (t) => {
  const connection = open(newDatabase(t));
  connection.batch('CREATE TABLE t (a int PRIMARY KEY, b varchar(5))');
  const cases = [
    ['SELECT a\nFROM t\nWHERE WHERE', -2147217900, 156, 3],
    ['SELECT a FROM nowhere', -2147217900, 208, 1],
    ['SELECT nothing FROM t', -2147217900, 207, 1],
    ["INSERT INTO t (a) VALUES (1)\nINSERT INTO t (a) VALUES (1)", -2147217873, 2627, 2],
    ["SELECT 1 AS a\nSELECT cast('x' AS int) AS b", -2147217900, 245, 2],
  ];
  for (const [sql, number, nativeNumber, line] of cases) {
    for (const run of ['query', 'batch']) {
      if (run === 'batch') connection.query('DELETE FROM t');
      const failure = failureOf(() => connection[run](sql));
      assert.deepEqual([failure.nativeNumber, failure.line], [nativeNumber, line],
        `${sql}: ${failure.stack}`);
      if (number === -2147217873) assert.equal(failure.number, number);
    }
  }
  assert.deepEqual(connection.query('SELECT 1 AS still'), [{ still: 1 }]);
});

test('what is no statement, no parameter or no open connection is told', (t) => {
  const connectionString = newDatabase(t);
  const connection = open(connectionString);
  const cases = [
    [() => connection.query(), 449, /sql/],
    [() => connection.query(null), 13, /sql/],
    [() => connection.batch(1), 13, /sql/],
    [() => connection.query('SELECT ?', 'x'), 13, /parameters/],
    [() => connection.query('SELECT ?', { 0: 'x', length: 1 }), 13, /parameters/],
    [() => connection.query('SELECT ?', [undefined]), 13, /parameter 1/],
    [() => connection.query('SELECT ?, ?', [1, new Map()]), 13, /parameter 2/],
    [() => connection.query('SELECT ?, ?', [1, {}]), 13, /parameter 2/],
    [() => connection.query('SELECT ?', [2n ** 200n]), 6, /parameter 1/],
    [() => open(), 449, /connectionString/],
    [() => open(null), 13, /connectionString/],
    [() => new connection.constructor().query('SELECT 1'), 3704],
  ];
  for (const [action, number, words] of cases) assertFails(action, number, words);
  for (const none of [undefined, []]) failureOf(() => connection.query('SELECT ? AS a', none));
  assert.throws(() => connection.query.call({}, 'SELECT 1'), TypeError);
  assert.deepEqual(connection.query('SELECT ? AS a', [1]), [{ a: 1 }]);
  connection.close();
  connection.close();
  assertFails(() => connection.query('SELECT 1'), 3704, /closed/);
  assertFails(() => connection.batch('SELECT 1'), 3704, /closed/);
});

test('a database that cannot be reached is told without its password', () => {
  for (const connectionString of ['', ';;', 'nonsense', 'Driver=', 'PWD=se{cret',
    'Driver=Vellum250;Database=/no/such/folder/file.db;PWD=secret;',
    'Driver=No such driver;Server=nowhere;UID=sa;PWD=secret;',
    'Driver=Vellum250;Database=' + 'x'.repeat(1e6) + ';Password=secret',
    'Driver=Vellum250;Database=\0;PWD=secret', 'PWD="secret";' + '\ud800'.repeat(10)]) {
    const failure = failureOf(() => open(connectionString));
    assert.doesNotMatch(failure.stack, /secret/, connectionString.slice(0, 80));
  }
});

test('eight workers write to one file and lose nothing', async (t) => {
  const connectionString = newDatabase(t);
  const connection = open(connectionString);
  connection.batch('CREATE TABLE log (ref int IDENTITY PRIMARY KEY, worker int, n int)');
  const code = `
    const { workerData } = require('node:worker_threads');
    const { open } = require(workerData.addon);
    for (let n = 0; n < 50; ++n) {
      const connection = open(workerData.connectionString);
      connection.query('INSERT INTO log (worker, n) VALUES (?, ?)', [workerData.worker, n]);
      connection.close();
    }`;
  const workers = Array.from({ length: 8 }, (_, worker) =>
    new Worker(code, { eval: true, workerData: { addon, connectionString, worker } }));
  const codes = await Promise.all(workers.map((worker) => once(worker, 'exit')));
  assert.deepEqual(codes.flat(), Array(8).fill(0));
  const rows = connection.query('SELECT worker, n, ref FROM log ORDER BY worker, n');
  assert.equal(rows.length, 400);
  assert.equal(new Set(rows.map(({ ref }) => ref)).size, 400);
  rows.forEach(({ worker, n }, i) => assert.deepEqual([worker, n], [Math.floor(i / 50), i % 50]));
  connection.close();
});

test('a forgotten connection is closed by the collector', async (t) => {
  const connectionString = newDatabase(t);
  const forget = () => new WeakRef(open(connectionString));
  const connection = forget();
  await collectUntil(() => connection.deref() === undefined);
  assert.deepEqual(open(connectionString).query('SELECT 1 AS a'), [{ a: 1 }]);
});
