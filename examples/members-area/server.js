'use strict';
// Starts the members' area: node server.js [database file]. PORT chooses another port.

const path = require('node:path');
const { createApp } = require('./app');

const portText = process.env.PORT || '8250';
const database = process.argv[2] || path.join(__dirname, '..', '..', 'build', 'demo', 'members.db');

function fail(message) {
  process.stderr.write(`members-area: ${message}\n`);
  process.exit(1);
}

const port = Number(portText);
if (!Number.isInteger(port) || port < 0 || port > 65535) {
  fail(`the port must be a number from 0 to 65535, not "${portText}"`);
}

let app;
try {
  // Loaded here, not in app.js, so that a missing addon is said in words.
  const addon = require('../../bindings/node');
  // In braces a file's name may hold anything. All visitors wait while one waits for a locked
  // database, so nobody waits for long.
  const file = path.resolve(database).replaceAll('}', '}}');
  app = createApp(addon, `Driver=Vellum250;Database={${file}};Timeout=3;`);
} catch (failure) {
  fail(`cannot start: ${failure.message}`);
}

// There is no sign-in here: the site is for the person at this machine.
const server = app.listen(port, '127.0.0.1', (failure) => {
  if (failure) fail(`cannot listen on port ${port}: ${failure.message}`);
  process.stdout.write(`Listening on http://127.0.0.1:${server.address().port}/\n`);
});

function stop() {
  server.close(() => process.exit(0));
  server.closeAllConnections();
}
process.on('SIGTERM', stop);
process.on('SIGINT', stop);
