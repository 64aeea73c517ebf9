// Where the scripts run: the script host under Wine, and Node.js. Every run has a folder of its own
// with a copy of the sample database in it, so that one connection string serves them all.
import { spawnSync } from 'node:child_process';
import { copyFileSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync }
  from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

export const here = path.dirname(fileURLToPath(import.meta.url));
const root = path.join(here, '..', '..');
const wine = path.join(root, 'scripts', 'wine-prefix');
export const embedded = 'Driver=Vellum250;Database=members.db;';

export class Engines {
  // `host` and `dll` are the Windows build's, `native` is the folder of the native build.
  constructor(host, dll, native) {
    this.host = host;
    this.dll = dll;
    this.sqlTool = path.join(native, 'tools', 'vellum250-sql', 'vellum250-sql');
    this.addon = path.join(native, 'bindings', 'node', 'vellum250.node');
    this.odbc = `Driver=${path.join(native, 'tests', 'libvellum250_test_odbc_embedded.so')};`;
    this.folder = mkdtempSync(path.join(tmpdir(), 'vellum250-scripts-'));
    this.sample = path.join(this.folder, 'sample.db');
    const database = path.join(root, 'database');
    const scripts = readdirSync(database).filter((name) => name.endsWith('.sql')).sort();
    this.must(this.sqlTool, ['--connection', `Driver=Vellum250;Database={${this.sample}};`, '--create',
      ...scripts.map((name) => path.join(database, name))]);
  }

  register() {
    this.must(wine, ['run', 'regsvr32', '/s', `Z:${this.dll}`]);
  }

  close() {
    this.must(wine, ['run', 'regsvr32', '/s', '/u', `Z:${this.dll}`]);
    rmSync(this.folder, { recursive: true });
  }

  newFolder(name) {
    const folder = path.join(this.folder, name);
    mkdirSync(folder);
    copyFileSync(this.sample, path.join(folder, 'members.db'));
    return folder;
  }

  // Exit code, what it said and what it complained of.
  run(folder, program, args) {
    const ran = spawnSync(program, args, {
      cwd: folder,
      encoding: 'utf8',
      timeout: 60_000,
      maxBuffer: 1 << 26,
      stdio: ['ignore', 'pipe', 'pipe'],
      env: {
        ...process.env,
        VELLUM250_ADDON: this.addon,
        VELLUM250_TEST_ODBC_DATABASE: path.join(folder, 'members.db'),
      },
    });
    if (ran.error) throw ran.error;
    return { code: ran.status, said: ran.stdout, complaint: ran.stderr };
  }

  must(program, args, folder = this.folder) {
    const { code, said, complaint } = this.run(folder, program, args);
    if (code !== 0) throw new Error(`${program} ${args.join(' ')}: ${code} ${said}${complaint}`);
    return said;
  }

  // A script or page, whose text may be another than the file's.
  runUnderWine(folder, name, text, args, options = []) {
    writeFileSync(path.join(folder, name), text);
    return this.run(folder, wine, ['run', this.host, ...options, name, ...args]);
  }

  // A script with expectations; what is wrong with it, or nothing. `unloaded` asks for the DLL's end.
  faultOf(file, unloaded) {
    const name = path.basename(file);
    const support = readFileSync(path.join(here, `support${path.extname(name)}`), 'utf8');
    // Behind the script, so that its lines keep their numbers.
    const { code, said, complaint } = this.runUnderWine(this.newFolder(name), name,
      readFileSync(file, 'utf8') + support, [`database=${embedded}`], unloaded ? ['--unload'] : []);
    const passed = code === 0 && complaint === '' && /^passed [1-9]\d*\n$/.test(said);
    return passed ? '' : `exit code ${code}\n${said}${complaint}`;
  }

  // What a script of the common subset says, which must be all of it.
  common(engine, name, text, database = embedded) {
    const folder = this.newFolder(`${engine}-${name}`);
    const args = [`database=${database}`];
    const file = path.join(folder, name);
    writeFileSync(file, text);
    const { code, said, complaint } = engine === 'node'
      ? this.run(folder, process.execPath, [path.join(here, 'in-node.mjs'), file, ...args])
      : this.runUnderWine(folder, name, text, args);
    if (code !== 0 || complaint !== '' || !said.endsWith('\nend\n')) {
      throw new Error(`${name} in ${engine}: exit code ${code}\n${said.slice(-2000)}${complaint}`);
    }
    return { said, folder };
  }

  // Rows of a folder's database as tab-separated lines, read natively.
  rows(folder, query) {
    const connection = `Driver=Vellum250;Database={${path.join(folder, 'members.db')}};`;
    return this.must(this.sqlTool, ['--connection', connection, '-q', query]);
  }
}
