'use strict';

const { Router } = require('express');
const { callerAddress } = require('../lib/component');
const { textOf, referenceOf } = require('../lib/form-text');
const { settingProblem } = require('../lib/admin-store');

// The name templates, with the method that shows what each makes of a sample person.
const templates = [
  { entry: 'Salutation', method: 'GetSalutationName', use: 'Opens a letter' },
  { entry: 'KnownAs', method: 'GetKnownAsName', use: 'Greets on a page' },
  { entry: 'Label', method: 'GetLabelName', use: 'Stands on an envelope and in lists' },
];
const samplePerson = ['Dr', 'Okonjo', 'Adaeze Ruth', 'PhD', 'A R'];

const longestText = 4000;

module.exports = ({ switches, component, dictionaries, adminStore }) => {
  const router = Router();
  router.use((request, response, next) => {
    response.locals.section = 'admin';
    next();
  });

  router.get('/', (request, response) => {
    const { settings } = dictionaries;
    response.render('admin/switches', {
      showLabels: dictionaries.isOn('globalShowLabel'),
      oneAddressOnly: dictionaries.isOn('globalLabelsMyIPOnly'),
      labelAddress: settings.get('globalLablesIPAddress') || '',
      callerAddress: callerAddress(request),
    });
  });

  router.post('/switches', (request, response) => {
    switches.debug = textOf(request.body, 'debug') === 'Y';
    switches.errorsOnly = textOf(request.body, 'traces') !== 'Y';
    switches.dictionaries = textOf(request.body, 'dictionaries') === 'Y';
    switches.textId = referenceOf(textOf(request.body, 'textId')) || 1;
    switches.recentCalls = [];
    response.done('switches', '/admin/');
  });

  router.post('/labels', (request, response) => {
    const isOn = (name) => (textOf(request.body, name) === 'Y' ? 'true' : 'false');
    adminStore.saveSettings({
      globalShowLabel: isOn('show'),
      globalLabelsMyIPOnly: isOn('oneAddress'),
      globalLablesIPAddress: textOf(request.body, 'address').trim().slice(0, 45),
    });
    response.done('labels', '/admin/');
  });

  function showTexts(request, response, problem = null, typed = {}) {
    const areas = adminStore.areas();
    const asked = textOf(request.query, 'area');
    const area = areas.find((each) => each.name === asked)?.name || areas[0]?.name || 'General';
    response.render('admin/texts', {
      areas,
      area,
      texts: adminStore.texts(area),
      problem,
      typed,
      longestText,
    });
  }

  const textsPath = (area) => `/admin/texts?${new URLSearchParams({ area })}`;

  router.get('/texts', (request, response) => showTexts(request, response));

  router.post('/texts', (request, response) => {
    const area = textOf(request.query, 'area');
    const values = new Map(Object.entries(request.body));
    // Fields are named by text set and label.
    const changed = (row) => values.get(`text-${row.text_id}-${row.web_text_label}`);
    const tooLong = adminStore.texts(area).find((row) => {
      const text = changed(row);
      return text !== undefined && (typeof text !== 'string' || text.length > longestText);
    });
    if (tooLong) {
      const problem =
        `The text of ${tooLong.web_text_label} may have at most ${longestText} characters; ` +
        'nothing was saved.';
      response.status(422);
      return showTexts(request, response, problem, Object.fromEntries(values));
    }
    adminStore.saveTexts(area, changed);
    response.done('texts', textsPath(area));
  });

  router.post('/texts/add', (request, response) => {
    const area = textOf(request.body, 'area').trim();
    const label = textOf(request.body, 'label').trim();
    const textId = referenceOf(textOf(request.body, 'textId'));
    const text = textOf(request.body, 'text');
    const refuse = (problem) => {
      response.status(422);
      request.query = { area };
      showTexts(request, response, problem, request.body);
    };
    // The component places areas and labels into SQL as they are.
    if (!/^[\w ./-]{1,50}$/.test(area) || !/^[\w ./-]{1,100}$/.test(label) || textId === 0) {
      return refuse(
        'An area (up to 50) and a label (up to 100 letters, digits, blanks, ".", "/", "-") ' +
          'and the number of a text set are needed.'
      );
    }
    if (text.length > longestText)
      return refuse(`The text may have at most ${longestText} characters.`);
    if (!adminStore.addText(area, label, textId, text)) {
      return refuse(`${area}/${label} has a text in set ${textId} already: change it in the list.`);
    }
    response.done('textAdded', textsPath(area));
  });

  const showSettings = (response, problems = [], typed = {}) =>
    response.render('admin/settings', { settings: adminStore.settings(), problems, typed });

  router.get('/settings', (request, response) => showSettings(response));

  router.post('/settings', (request, response) => {
    const values = {};
    for (const { key } of adminStore.settings()) {
      if (typeof request.body[`setting-${key}`] === 'string')
        values[key] = request.body[`setting-${key}`].trim();
    }
    const newKey = textOf(request.body, 'newKey').trim();
    if (newKey !== '') values[newKey] = textOf(request.body, 'newValue').trim();
    const problems = Object.entries(values)
      .map(([key, value]) => settingProblem(key, value))
      .filter(Boolean);
    if (newKey !== '' && !/^\w{1,100}$/.test(newKey)) {
      problems.push('A key has up to 100 letters, digits and underscores.');
    }
    if (problems.length > 0) {
      response.status(422);
      return showSettings(response, problems, request.body);
    }
    adminStore.saveSettings(values);
    response.done('settings', '/admin/settings');
  });

  function showNames(request, response, problem = null, typed = {}) {
    const stored = adminStore.nameTemplates();
    const shown = templates.map(({ entry, method, use }) => ({
      entry,
      use,
      value: typed[entry] ?? stored.get(entry) ?? '',
      sample: component.use(request, method, (address) => address[method](...samplePerson)),
    }));
    response.render('admin/names', { templates: shown, samplePerson, problem });
  }

  router.get('/names', (request, response) => showNames(request, response));

  router.post('/names', (request, response) => {
    const typed = Object.fromEntries(
      templates.map(({ entry }) => [entry, textOf(request.body, entry).trim()])
    );
    const wrong = templates.find(({ entry }) => typed[entry] === '' || typed[entry].length > 255);
    if (wrong) {
      response.status(422);
      return showNames(
        request,
        response,
        `The ${wrong.entry} template must have 1 to 255 characters.`,
        typed
      );
    }
    for (const { entry } of templates) adminStore.saveNameTemplate(entry, typed[entry]);
    response.done('names', '/admin/names');
  });

  router.get('/calls', (request, response) => response.render('admin/calls'));

  return router;
};
