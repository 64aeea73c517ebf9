// Runs the scripts as pages run, in the script engines of Windows:
//   node run.mjs <vellum250-host.exe> <vellum250.dll> <vellum250.idl> <folder of the native build>
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import path from 'node:path';
import { after, before, test } from 'node:test';
import { Engines, embedded, here } from './engines.mjs';

const [host, dll, idl, native] = process.argv.slice(2).map((name) => path.resolve(name));
const engines = new Engines(host, dll, native);
before(() => engines.register());
after(() => engines.close());

const read = (...names) => readFileSync(path.join(here, ...names), 'utf8');
const scriptsIn = (folder) => readdirSync(path.join(here, folder))
  .filter((name) => /\.(vbs|js)$/.test(name) && !name.startsWith('support.')).sort();

// Those after which nobody may need the DLL any more.
const unloaded = new Set(['apartments.vbs', 'by-reference.vbs', 'leaks.vbs']);

for (const name of scriptsIn('.')) {
  test(name, () => assert.equal(engines.faultOf(path.join(here, name), unloaded.has(name)), ''));
}

// The runner itself: whatever is wrong with a script, it is noticed, and in words.
const faults = {
  'ends-early.vbs': /^exit code 0\n$/,
  'expectation.js': /^exit code 0\nfailed: a number: number \[2\], not \[2\]\n$/,
  'expectation.vbs': /^exit code 0\nfailed: one and one: Long \[2\], not Long \[3\]\n$/,
  'expects-nothing.vbs': /^exit code 0\n$/,
  'leaks.vbs': /^exit code 1\n(.*\n)*vellum250\.dll is still needed/,
  'raises.vbs': /^exit code 1\nraises\.vbs:2: error 5 /,
  'syntax.js': /^exit code 1\nsyntax\.js:1: error /,
};
test('no fault of a script goes unnoticed', () => {
  assert.deepEqual(scriptsIn('failing'), Object.keys(faults));
  for (const [name, fault] of Object.entries(faults)) {
    assert.match(engines.faultOf(path.join(here, 'failing', name), unloaded.has(name)), fault, name);
  }
});

test('every published member is called by a script', () => {
  const published = readFileSync(idl, 'utf8').matchAll(/^ *\[id\([^\]]*\] *\w+ (\w+)\(/gm);
  const members = new Set([...published].map((match) => match[1]));
  assert.ok(members.size > 25, [...members].join());
  const scripts = scriptsIn('.').filter((name) => name.endsWith('.vbs')).map((name) => read(name)).join();
  const missing = [...members].filter((member) => !new RegExp(`\\.${member}\\b`).test(scripts));
  assert.deepEqual(missing, []);
});

// What was stored, without the moments.
const stored = (folder) => ['SELECT * FROM location', ...['individual', 'organisation', 'contact'].map(
  (kind) => `SELECT ${kind}_ref, type, location_ref, main_location, differentiator, edit_link, ` +
    `comments, case when valid_to is null then 0 else 1 end AS ended FROM ${kind}_loc`),
  'SELECT * FROM member', 'SELECT * FROM web_text'].map((query) => engines.rows(folder, query)).join('\n');

test('forms are the same, to the byte, in JScript and in Node.js, and through ODBC', () => {
  const script = read('common', 'forms.js');
  const wine = engines.common('wine', 'forms.js', script);
  const node = engines.common('node', 'forms.js', script);
  const odbc = engines.common('wine', 'forms-odbc.js', script, engines.odbc);
  assert.ok(wine.said.length > 100_000);
  assert.equal(node.said, wine.said);
  assert.equal(odbc.said, wine.said);
});

test('records, statements and messages are the same in JScript and in Node.js', () => {
  const script = read('common', 'records.js');
  const wine = engines.common('wine', 'records.js', script);
  const node = engines.common('node', 'records.js', script);
  assert.equal(node.said, wine.said);
  assert.equal(stored(node.folder), stored(wine.folder));

  // Through ODBC but for the words of failures, which are the driver's.
  const odbc = engines.common('wine', 'records-odbc.js', script, engines.odbc);
  const withoutWords = (said) => said.replace(/Description: .*?<br>Source: .*?<br>/gs, '');
  assert.equal(withoutWords(odbc.said), withoutWords(wine.said));
  assert.equal(stored(odbc.folder), stored(wine.folder));
});

test('failures are the same in VBScript, JScript and Node.js', () => {
  const calls = read('common', 'failures.calls').trim().split('\n');
  // An expression that is the same in both languages.
  const vbs = `Dim page, x
Set page = NewPage
On Error Resume Next
${calls.map((call) => `page.Connection Argument("database")
x = ${call}
Tell "${call.replaceAll('"', '""')}"`).join('\n')}
Sub Tell(what)
  Print what
  Print "  " & Err.Number & " " & Err.Description
  Print "  " & Err.Source
  Err.Clear
End Sub
Print "end"
${read('support.vbs')}`;
  const js = `var page = newPage({});
${calls.map((call) => `page.Connection(Argument("database"));
tell(${JSON.stringify(call)}, function () { ${call}; });`).join('\n')}
function tell(what, action) {
  Print(what);
  Print("  " + failureOf(action));
  try { action(); } catch (e) { if (e.source) Print("  " + e.source); }
}
Print("end");
${read('support.js')}`;
  const node = engines.common('node', 'failures.js', js).said;
  assert.doesNotMatch(node, /^  (none|.*secret)/m);
  assert.equal(engines.common('wine', 'failures.vbs', vbs).said, node);
  // JScript's errors have no source.
  const withoutSource = node.replace(/^(  .*\n)  .*\n/gm, '$1');
  assert.equal(engines.common('wine', 'failures.js', js).said, withoutSource);
});

const entities = { '&lt;': '<', '&gt;': '>', '&quot;': '"', '&amp;': '&' };
const decoded = (text) => text.replace(/&\w+;/g, (entity) => entities[entity]);

// A browser's part of the address job: fills the form that the page gave and posts it.
class Visitor {
  constructor(folder, database) {
    this.folder = folder;
    this.database = database;
  }

  post(fields) {
    const args = Object.entries({ database: this.database, ...fields })
      .map(([name, value]) => `${name}=${value}`);
    const { code, said, complaint } =
      engines.runUnderWine(this.folder, 'address.asp', read('address.asp'), args);
    assert.equal(`${complaint}${code}`, '0');
    this.message = said.match(/<p id="message">(.*?)<\/p>/s)[1];
    this.fields = Object.fromEntries([...said.matchAll(/<input[^>]* name="(\w+)"[^>]* value="([^"]*)"/g)]
      .filter((match) => !match[0].includes('type="checkbox"'))
      .map((match) => [match[1], decoded(match[2])]));
    for (const [, name, options] of said.matchAll(/<select name="(\w+)".*?>(.*?)<\/select>/gs)) {
      this.fields[name] = options.match(/value="(-?\d+)" selected/)?.[1] ?? options.match(/"(-?\d+)"/)[1];
    }
    this.fields.LocType = said.match(/name="LocType">.*?value="(\d+)" selected/s)[1];
    return said;
  }

  save(changes) {
    this.post({ ...this.fields, action: 'save', ...changes });
    return this.message;
  }

  // Of one owner's links, in the order they were made.
  links(person) {
    return engines.rows(this.folder, `SELECT ind_loc_ref, address1, town, postcode, country_ref,
      main_location, case when valid_to is null then 'valid' else 'ended' end AS state
      FROM individual_loc i JOIN location l ON l.location_ref = i.location_ref
      WHERE individual_ref = ${person} ORDER BY ind_loc_ref`).trim().split('\n').slice(1)
      .map((line) => line.replaceAll('\t', ' '));
  }
}

for (const [way, database] of [['embedded', embedded], ['ODBC', engines.odbc]]) {
  test(`a page does the address job: ${way}`, () => {
    const visitor = new Visitor(engines.newFolder(`job-${way}`), database);
    const form = visitor.post({ EntityType: 'INDIVIDUAL', SysRef: 60, LocRef: 0 });
    assert.match(form, /<td class="Text">Town:&nbsp;&nbsp;/);
    assert.equal(visitor.fields.Cref, '201');

    // Refused, then stored; the first address is the main one.
    assert.equal(visitor.save({ Add1: '1 O\'Neil <Lane>' }), 'refused|Town: is a mandatory field.');
    assert.deepEqual(visitor.links(60), []);
    assert.equal(visitor.save({ Town: 'Leeds', Postcode: 'ls1 1aa' }), 'stored 75 main \'Y\'');
    const street = '1 O\'Neil <Lane>';
    assert.deepEqual(visitor.links(60), [`75 ${street} Leeds LS1 1AA 201 Y valid`]);

    // Amended: not at all, in place, and by a new one in its place.
    Object.assign(visitor.fields, { main_loc: 'Y', Postcode: 'LS1 1AA' });
    assert.equal(visitor.save(), 'nothing changed');
    assert.equal(visitor.save({ Town: 'York', LocType: 12, main_loc: 'Y' }), 'stored 75 main \'Y\'');
    assert.deepEqual(visitor.links(60), [`75 ${street} York LS1 1AA 201 Y valid`]);
    const moved =
      { Add1: '2 Low Lane', Town: 'Hull', Postcode: 'hu1 1aa', Cref: 203, LocType: 13, main_loc: 'Y' };
    assert.match(visitor.save(moved), /^stored 75 main/);
    assert.deepEqual(visitor.links(60), [`75 ${street} York LS1 1AA 201 NULL ended`,
      '76 2 Low Lane Hull HU1 1AA 203 Y valid']);

    // A failure in words, raised or trapped, and the end of the address.
    assert.match(visitor.save({ LocRef: 0, Comm: 'it\'s' }),
      /^failed 80040E14 .*: .*Unclosed quotation mark/);
    assert.match(visitor.save({ LocRef: 0, Comm: 'it\'s', debug: 'on' }),
      /^trapped Description: .*Unclosed quotation mark.*<br>Source: .*<br>Step: /);
    visitor.post({ ...visitor.fields, LocRef: 76, action: 'end' });
    assert.equal(visitor.message, 'ended');
    assert.match(visitor.links(60)[1], /^76 .* ended$/);
  });
}
