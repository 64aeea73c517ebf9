// Runs a script of the common subset in Node.js, with the globals that the script host gives:
//   node in-node.mjs <script.js> [name=value ...]
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import vm from 'node:vm';

const { createObject } = createRequire(import.meta.url)('../../bindings/node');
const [file, ...given] = process.argv.slice(2);
const named = new Map(given.map((argument) => [
  argument.slice(0, argument.indexOf('=')), argument.slice(argument.indexOf('=') + 1)]));
const lines = [];

globalThis.CreateObject = createObject;
globalThis.Print = (...values) => lines.push(`${values.join(' ')}\n`);
globalThis.Argument = (name) => named.get(name.toLowerCase());
vm.runInThisContext(readFileSync(file, 'utf8'), { filename: file });
process.stdout.write(lines.join(''));
