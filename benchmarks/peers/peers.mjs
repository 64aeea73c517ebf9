// The peers, each used as its documentation says: compiled once, called many times.

import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import ejs from 'ejs';
import { escapeUTF8 } from 'entities';
import escapeHtml from 'escape-html';
import { Eta } from 'eta';
import Handlebars from 'handlebars';

const here = path.dirname(fileURLToPath(import.meta.url));

export const encodePeers = { 'escape-html': escapeHtml, entities: escapeUTF8 };

// Nothing where its native part could not be built.
export function openBetterSqlite(file) {
  try {
    const Database = createRequire(import.meta.url)('better-sqlite3');
    return new Database(file);
  } catch (failure) {
    console.log(`Without better-sqlite3: ${failure.message.split('\n')[0]}`);
    return null;
  }
}

// The label texts and the mask tests as a page would hand them to a template.
function viewOf(form) {
  const texts = new Map(
    Object.entries(form.texts).map(([label, text]) => [`General${label}${form.textId}`, text]),
  );
  for (let i = 0; i < form.otherTexts; i += 1) texts.set(`OtherLabel${i}${form.textId}`, 'another text');
  const settings = new Map(Object.entries(form.settings));
  const [display, differentiator, add1, add2, add3, town, county, postcode, country] = form.fields;
  return {
    form, display, differentiator, add1, add2, add3, town, county, postcode, country,
    paf: () => settings.get('globalEnablePaf') === 'true',
    readOnly: () => (Number(settings.get('globalDisplayAsReadOnly')) === 1 ? '' : ' ReadOnly'),
    shown: (bit) => (form.details & bit) !== 0,
    isMain: form.main === 'Y',
    must: (bit) => (form.mandatory & bit) !== 0,
    label: (key, standard) => texts.get(`General${key}${form.textId}`) ?? standard,
  };
}

export function formPeers(form) {
  const view = viewOf(form);
  // The component ends its lines as forms do; the templates are stored with plain line ends.
  const source = (name) => fs.readFileSync(path.join(here, name), 'utf8').replaceAll('\n', '\r\n');

  const ejsRender = ejs.compile(source('form.ejs'), { client: false, strict: true, localsName: 'v', _with: false });

  const eta = new Eta({ varName: 'v', autoTrim: false });
  // The same template: only the tag of raw output differs.
  const etaRender = eta.compile(source('form.ejs').replaceAll('<%-', '<%~'));

  const handlebars = Handlebars.create();
  handlebars.registerHelper('label', (key, standard) => new Handlebars.SafeString(view.label(key, standard)));
  handlebars.registerHelper('shown', function shown(bit, options) {
    return view.shown(bit) ? options.fn(this) : options.inverse(this);
  });
  handlebars.registerHelper('must', function must(bit, options) {
    return view.must(bit) ? options.fn(this) : options.inverse(this);
  });
  const handlebarsRender = handlebars.compile(source('form.hbs'), { knownHelpers: { label: true, shown: true, must: true } });

  return {
    ejs: () => ejsRender(view),
    eta: () => etaRender.call(eta, view),
    handlebars: () => handlebarsRender(view),
  };
}
