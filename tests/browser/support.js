'use strict';
// The members' area on a fresh database and a browser that looks at it.

const { execFileSync, spawn } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { chromium } = require('playwright-core');

const root = path.join(__dirname, '..', '..');
const startTimeout = 20000; // milliseconds

// Starts the site on a free port: { url, query(sql, parameters), log(), stop() }.
async function startSite() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'members-area-'));
  const file = path.join(folder, 'members.db');
  execFileSync(path.join(root, 'scripts', 'demo-database'), [file]);
  const server = spawn(
    process.execPath,
    [path.join(root, 'examples', 'members-area', 'server.js'), file],
    {
      env: { ...process.env, PORT: '0' },
      stdio: ['ignore', 'pipe', 'pipe'],
    }
  );
  const ended = new Promise((resolve) => server.once('exit', resolve));
  let errors = '';
  server.stderr.on('data', (data) => (errors += data));
  const url = await new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error('the site does not start')), startTimeout);
    let output = '';
    server.stdout.on('data', (data) => {
      output += data;
      const ready = /^Listening on (http:\/\/127\.0\.0\.1:\d+)\/$/m.exec(output);
      if (!ready) return;
      clearTimeout(timer);
      resolve(ready[1]);
    });
    ended.then((code) => reject(new Error(`the site ended with ${code}: ${errors}`)));
  });
  const connection = require('../../bindings/node').open(`Driver=Vellum250;Database=${file};`);
  return {
    url,
    query: (sql, parameters = []) => connection.query(sql, parameters),
    log: () => errors,
    async stop() {
      connection.close();
      server.kill('SIGTERM');
      const code = await ended;
      fs.rmSync(folder, { recursive: true });
      return code;
    },
  };
}

function startBrowser() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
    args: [
      '--no-sandbox',
      '--disable-gpu',
      '--disable-quic',
      '--no-first-run',
      '--disable-background-networking',
      '--disable-component-update',
      '--disable-sync',
    ],
  });
}

// Runs tests with `on.site` and `on.page(options)`; a script's error on a page fails the test.
function withSite({ before, after, afterEach }) {
  const on = {};
  let contexts = [];
  let scriptErrors = [];
  before(async () => {
    [on.site, on.browser] = await Promise.all([startSite(), startBrowser()]);
  });
  after(async () => {
    await on.browser?.close();
    const code = await on.site?.stop();
    if (code !== 0) throw new Error(`the site ended with ${code}`);
  });
  afterEach(async () => {
    await Promise.all(contexts.map((context) => context.close()));
    contexts = [];
    const errors = scriptErrors;
    scriptErrors = [];
    if (errors.length > 0) throw new Error(`errors of page scripts: ${errors.join('; ')}`);
  });
  on.page = async (options = {}) => {
    const context = await on.browser.newContext({ baseURL: on.site.url, ...options });
    contexts.push(context);
    context.on('weberror', (failure) => scriptErrors.push(failure.error().message));
    return context.newPage();
  };
  return on;
}

module.exports = { withSite };
