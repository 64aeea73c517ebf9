// Writes the material, lets the core and the peers work on it in turn, compares what they
// produced, and prints ratios of the medians of several rounds.

import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';
import { encodePeers, formPeers, openBetterSqlite } from './peers/peers.mjs';

const here = path.dirname(fileURLToPath(import.meta.url));
const build = path.join(here, '..', 'build', process.env.VELLUM250_BUILD ?? 'release');
const folder = path.join(build, 'benchmarks', 'material');
// Where a file costs no disk, if the machine has such a place.
const memoryFolder = fs.mkdtempSync(path.join(fs.existsSync('/dev/shm') ? '/dev/shm' : os.tmpdir(), 'vellum250-'));
process.on('exit', () => fs.rmSync(memoryFolder, { recursive: true, force: true }));
const rounds = 5;

const form = JSON.parse(fs.readFileSync(path.join(here, 'form.json'), 'utf8'));

// 1,024 characters, the given share of them in need of encoding.
function makeText(percent) {
  let seed = 250;
  const random = (below) => (seed = (seed * 1103515245 + 12345) % 2147483648) % below;
  const plain = 'abcdefghijklmnopqrstuvwxyz ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789.,';
  let text = '';
  while (text.length < 1024) {
    const special = (text.length * percent) % 100 < percent;
    text += special ? '&<>"'[random(4)] : plain[random(plain.length)];
  }
  return text;
}

function prepare() {
  fs.rmSync(folder, { recursive: true, force: true });
  fs.mkdirSync(folder, { recursive: true });
  for (const percent of [0, 5, 50]) {
    fs.writeFileSync(path.join(folder, `${percent}.txt`), makeText(percent));
  }
  fs.writeFileSync(path.join(folder, 'form.json'), JSON.stringify(form));
  execFileSync(path.join(here, '..', 'scripts', 'demo-database'), [path.join(folder, 'members.db')], {
    env: { ...process.env, VELLUM250_SQL: path.join(build, 'tools', 'vellum250-sql', 'vellum250-sql') },
    stdio: 'inherit',
  });
  fs.copyFileSync(path.join(folder, 'members.db'), path.join(memoryFolder, 'members.db'));
}

// Nanoseconds for one call of each of the core's benchmarks, best of several batches of some 20 ms
// as `measure` has it: other work on the machine only ever adds time.
function measureCore() {
  const output = execFileSync(
    path.join(build, 'benchmarks', 'bench_core'),
    [folder, memoryFolder, '--benchmark_format=json', '--benchmark_min_time=0.02', '--benchmark_repetitions=7'],
    { encoding: 'utf8', stdio: ['ignore', 'pipe', 'inherit'] },
  );
  const best = {};
  for (const run of JSON.parse(output).benchmarks) {
    if (run.run_type !== 'iteration') continue;
    const name = run.name.replace('/real_time', '');
    best[name] = Math.min(best[name] ?? Infinity, run.real_time);
  }
  return best;
}

// Nanoseconds for one call of `body` to a text that can be sent, warmed up, best of several batches
// of some 20 ms. Reading a character joins the pieces that the engine had only strung together.
function measure(body) {
  let calls = 16;
  let sink = 0;
  const batch = () => {
    const start = process.hrtime.bigint();
    for (let i = 0; i < calls; i += 1) sink += body().charCodeAt(7);
    return Number(process.hrtime.bigint() - start);
  };
  while (batch() < 20e6) calls *= 2;
  let best = Infinity;
  for (let i = 0; i < 7; i += 1) best = Math.min(best, batch() / calls);
  if (sink === 0) throw new Error('nothing was rendered');
  return best;
}

function addonForm() {
  const { createObject } = createRequire(import.meta.url)('../bindings/node');
  const address = createObject('vellum250.address');
  const texts = new Map(
    Object.entries(form.texts).map(([label, text]) => [`General${label}${form.textId}`, text]),
  );
  for (let i = 0; i < form.otherTexts; i += 1) texts.set(`OtherLabel${i}${form.textId}`, 'another text');
  address.TextID(form.textId);
  address.appDictShowText(texts);
  address.appDictWebConfig(new Map(Object.entries(form.settings)));
  const [display, differentiator, add1, add2, add3, town, county, postcode, country] = form.fields;
  return () =>
    address.BuildAddress(form.details, form.mandatory, display, differentiator, add1, add2, add3,
      town, county, postcode, country, '', 0, '', form.main, true, form.entityType, form.sysRef,
      form.locRef, form.pafPrefix, form.comments);
}

// A name by its key, as a page asks for it: another key each time.
function databaseBodies() {
  const { open } = createRequire(import.meta.url)('../bindings/node');
  const file = path.join(folder, 'members.db');
  const ours = open(`Driver=Vellum250;Database=${file};`);
  const sql = 'SELECT surname, forenames FROM individual WHERE individual_ref = ';
  let i = 0;
  const key = () => ((i += 1) % 60) + 1;
  const text = (row) => `${row.surname}, ${row.forenames}`;
  const bodies = {
    query: () => text(ours.query(sql + key())[0]),
    'query with ?': () => text(ours.query(`${sql}?`, [key()])[0]),
  };
  const theirs = openBetterSqlite(file);
  if (theirs) {
    const prepared = theirs.prepare(`${sql}?`);
    bodies['better-sqlite3, prepared'] = () => text(prepared.get(key()));
    bodies['better-sqlite3'] = () => text(theirs.prepare(sql + key()).get());
  }
  for (let first; i < 60;) {
    const start = i;
    for (const [name, body] of Object.entries(bodies)) {
      i = start;
      const row = body();
      first = name === 'query' ? row : first;
      demandEqual(name, first, row);
    }
  }
  return bodies;
}

function demandEqual(what, ours, theirs) {
  if (ours === theirs) return;
  let at = 0;
  while (ours[at] === theirs[at]) at += 1;
  throw new Error(`${what} differs at ${at}:\n${ours.slice(at - 40, at + 80)}\n---\n${theirs.slice(at - 40, at + 80)}`);
}

const plainLines = (text) => text.replaceAll('\r\n', '\n');
const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];

function main() {
  prepare();
  const read = (name) => fs.readFileSync(path.join(folder, name), 'utf8');
  measureCore();
  const bodies = new Map();
  for (const percent of [0, 5, 50]) {
    const text = read(`${percent}.txt`);
    for (const [name, encode] of Object.entries(encodePeers)) {
      demandEqual(`${name} at ${percent} %`, read(`${percent}.encoded`), encode(text));
      bodies.set(`${name}/${percent}`, () => encode(text));
    }
  }
  const addon = addonForm();
  addon();
  demandEqual('the addon', read('form.html'), addon());
  bodies.set('addon', addon);
  for (const [name, render] of Object.entries(formPeers(form))) {
    // eta turns every line end into a plain one.
    demandEqual(name, plainLines(read('form.html')), plainLines(render()));
    bodies.set(name, render);
  }

  const database = databaseBodies();
  for (const [name, body] of Object.entries(database)) bodies.set(name, body);

  const times = new Map();
  const note = (name, value) => times.set(name, [...(times.get(name) ?? []), value]);
  for (let round = 0; round < rounds; round += 1) {
    for (const [name, value] of Object.entries(measureCore())) note(name, value);
    for (const [name, body] of bodies) note(name, measure(body));
  }
  const t = (name) => median(times.get(name));
  const line = (what, value, target) =>
    console.log(`${what.padEnd(62)} ${value.toFixed(2).padStart(8)}   ${target}`);

  console.log('What is measured, equal output checked first'.padEnd(62), '   ratio   target');
  for (const percent of [0, 5, 50]) {
    const ours = `HtmlEncode/${percent}`;
    for (const name of Object.keys(encodePeers)) {
      line(`HtmlEncode, ${percent} % specials: ${name} / ours`, t(`${name}/${percent}`) / t(ours),
        percent === 5 && name === 'escape-html' ? 'at least 5' : '');
    }
    line(`HtmlEncode, ${percent} % specials: memcpy's time / ours`, t(`memcpy/${percent}`) / t(ours),
      percent === 0 ? 'at least 0.33' : '');
  }
  const peers = Object.keys(formPeers(form));
  for (const name of peers) line(`BuildAddress: ${name} / core`, t(name) / t('BuildAddress'), '');
  const fastest = Math.min(...peers.map(t));
  line('BuildAddress: fastest template / core', fastest / t('BuildAddress'), 'at least 10');
  line('BuildAddress: fastest template / addon', fastest / t('addon'), 'at least 1');
  line('AmmendLocation that updates: ours / same statements in SQLite', t('AmmendLocation') / t('SQLite'), 'at most 2');
  for (const kind of ['scalar', 'rows', 'insert']) {
    line(`Through ODBC, ${kind}: ours / bare ODBC calls`, t(`Odbc/${kind}`) / t(`BareOdbc/${kind}`), 'at most 1.2');
  }
  const toSqlite = (what, name, target) =>
    line(`${what}: ours / SQLite's own`, t(name) / t(`SQLite/${name}`), target);
  toSqlite('GetScalar of a lookup', 'GetScalar/Lookup', 'at most 1.5');
  toSqlite('GetScalar of a count', 'GetScalar/Count', 'at most 1.5');
  toSqlite('100 rows of five types', 'Rows', '');
  toSqlite('Insert with identity', 'Insert/Disk', '');
  toSqlite('Insert with identity, in memory', 'Insert/Memory', '');
  line("Longest statement, first time: ours / SQLite's prepare", t('Translate') / t('SQLite/Prepare'),
    'at most 5');
  line('Longest statement, first time: microseconds', t('Translate') / 1000, 'below 200');
  for (const peer of Object.keys(database).filter((name) => name.startsWith('better'))) {
    for (const ours of ['query', 'query with ?']) line(`One row, addon's ${ours} / ${peer}`, t(ours) / t(peer), '');
  }
  console.log('\nNanoseconds a call, median of', rounds, 'rounds (for orientation only):');
  for (const [name, values] of times) console.log(' ', name.padEnd(26), median(values).toFixed(0).padStart(10));
}

main();
