'use strict';

// The settings the administrators' pages know, with the kind of value that each must hold: a value
// of another kind would stop every form. A key ending in "_" stands for one key per address type.
const knownSettings = {
  globalShowLabel: {
    kind: 'switch',
    help: 'Shows the area and label of every text, and registers labels that are missing.',
  },
  globalLabelsMyIPOnly: { kind: 'switch', help: 'Shows the labels to one IP address only.' },
  globalLablesIPAddress: { kind: 'text', help: 'That IP address.' },
  globalEnablePaf: { kind: 'switch', help: 'Offers the postcode lookup on address forms.' },
  globalDisplayAsReadOnly: {
    kind: 'number',
    help: '1: the display name may be typed. 0: it is composed from the address.',
  },
  globalNewUpdate: {
    kind: 'number',
    help: 'From this number of changed fields on, a new address takes the place of an amended one.',
  },
  globalLocationUpdate_: {
    kind: 'number',
    help: 'For one address type: 1 amends in place, 2 replaces, 0 goes by the number of changes.',
  },
};
const unknownSetting = { kind: 'text', help: '' };

// What is known of a setting, without regard to the key's case, as the database compares it.
function knownSetting(key) {
  const plain = key.toLowerCase().replace(/^(globallocationupdate_).*/, '$1');
  const known = Object.keys(knownSettings).find((each) => each.toLowerCase() === plain);
  return known ? knownSettings[known] : unknownSetting;
}

// Why a setting may not hold a value, or null.
function settingProblem(key, value) {
  const { kind } = knownSetting(key);
  if (value.length > 255) return `${key} may have at most 255 characters.`;
  if (kind === 'switch' && !/^(true|false|-?\d{1,5})$/i.test(value))
    return `${key} must be true or false.`;
  if (kind === 'number' && !(/^\d{1,5}$/.test(value) && Number(value) <= 32767)) {
    return `${key} must be a whole number from 0 to 32767.`;
  }
  return null;
}

// Reads and writes what administrators may change; a write rebuilds the dictionaries.
class AdminStore {
  constructor(database, dictionaries) {
    this.database = database;
    this.dictionaries = dictionaries;
  }

  areas() {
    return this.database
      .query(
        `SELECT web_text_area, count(*) AS texts FROM web_text
         GROUP BY web_text_area ORDER BY web_text_area`
      )
      .map((row) => ({ name: row.web_text_area, texts: Number(row.texts) }));
  }

  texts(area) {
    return this.database.query(
      `SELECT web_text_label, text_id, web_text FROM web_text WHERE web_text_area = ?
       ORDER BY web_text_label, text_id`,
      [area]
    );
  }

  // Writes the texts that differ: changed(row) gives the new text, or undefined to leave the row.
  saveTexts(area, changed) {
    for (const row of this.texts(area)) {
      const text = changed(row);
      if (text === undefined || text === (row.web_text || '')) continue;
      this.database.query(
        `UPDATE web_text SET web_text = ?
         WHERE web_text_area = ? AND web_text_label = ? AND text_id = ?`,
        [text, area, row.web_text_label, row.text_id]
      );
    }
    this.dictionaries.reload();
  }

  // False when the text is there already.
  addText(area, label, textId, text) {
    const there = this.texts(area).some(
      (row) => row.web_text_label.toLowerCase() === label.toLowerCase() && row.text_id === textId
    );
    if (there) return false;
    this.database.query(
      `INSERT INTO web_text (web_text_area, web_text_label, text_id, web_text)
       VALUES (?, ?, ?, ?)`,
      [area, label, textId, text]
    );
    this.dictionaries.reload();
    return true;
  }

  settings() {
    return this.database
      .query('SELECT global_config, setting FROM web_config ORDER BY global_config')
      .map((row) => ({
        key: row.global_config,
        value: row.setting || '',
        ...knownSetting(row.global_config),
      }));
  }

  saveSettings(values) {
    const stored = new Map(this.settings().map(({ key, value }) => [key.toLowerCase(), value]));
    for (const [key, value] of Object.entries(values)) {
      const before = stored.get(key.toLowerCase());
      if (before === value) continue;
      const statement =
        before === undefined
          ? 'INSERT INTO web_config (setting, global_config) VALUES (?, ?)'
          : 'UPDATE web_config SET setting = ? WHERE global_config = ?';
      this.database.query(statement, [value, key]);
    }
    this.dictionaries.reload();
  }

  nameTemplates() {
    const rows = this.database.query(
      "SELECT entry, value FROM app_profile WHERE section = 'LabelName'"
    );
    return new Map(rows.map((row) => [row.entry, row.value || '']));
  }

  saveNameTemplate(entry, value) {
    const statement = this.nameTemplates().has(entry)
      ? "UPDATE app_profile SET value = ? WHERE section = 'LabelName' AND entry = ?"
      : "INSERT INTO app_profile (section, value, entry) VALUES ('LabelName', ?, ?)";
    this.database.query(statement, [value, entry]);
  }
}

module.exports = { AdminStore, settingProblem };
