'use strict';

// The two dictionaries the pages hand to the component, so that most texts and settings cost no
// database access. Rebuilt whenever an administrator changes a row.
class Dictionaries {
  constructor(database) {
    this.database = database;
    this.reload();
  }

  reload() {
    const texts = this.database.query(
      'SELECT web_text_area, web_text_label, text_id, web_text FROM web_text'
    );
    // Keys are area, label and text set joined without separators.
    this.texts = new Map(
      texts.map((row) => [row.web_text_area + row.web_text_label + row.text_id, row.web_text])
    );
    const settings = this.database.query('SELECT global_config, setting FROM web_config');
    this.settings = new Map(settings.map((row) => [row.global_config, row.setting]));
  }

  isOn(key) {
    return /^(true|-?[1-9]\d*)$/i.test((this.settings.get(key) || '').trim());
  }
}

module.exports = { Dictionaries };
