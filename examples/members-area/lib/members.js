'use strict';

const pageSize = 12;

// The two lists. Each statement is text of this file; what the visitor typed comes as parameters.
const lists = {
  people: {
    key: 'i.individual_ref',
    columns: `i.individual_ref AS ref, i.label_name AS name, i.surname, i.forenames,
      s.lookup_full_desc AS status, l.town, l.postcode, m.member_ref`,
    source: `individual i
      LEFT JOIN lookup s ON s.lookup_ref = i.individual_status
      LEFT JOIN member m ON m.individual_ref = i.individual_ref
      LEFT JOIN individual_loc ll ON ll.individual_ref = i.individual_ref
        AND ll.main_location = 'Y' AND (ll.valid_to IS NULL OR ll.valid_to > getdate())
      LEFT JOIN location l ON l.location_ref = ll.location_ref`,
    searched: ['i.surname', 'i.forenames', 'i.label_name', 'l.town', 'l.postcode'],
    order: 'i.surname, i.forenames, i.individual_ref',
    path: 'individual',
  },
  organisations: {
    key: 'o.organisation_ref',
    columns: `o.organisation_ref AS ref, o.company_name AS name, o.trading_as,
      s.lookup_full_desc AS status, l.town, l.postcode, m.member_ref`,
    source: `organisation o
      LEFT JOIN lookup s ON s.lookup_ref = o.status
      LEFT JOIN member m ON m.organisation_ref = o.organisation_ref
      LEFT JOIN organisation_loc ll ON ll.organisation_ref = o.organisation_ref
        AND ll.main_location = 'Y' AND (ll.valid_to IS NULL OR ll.valid_to > getdate())
      LEFT JOIN location l ON l.location_ref = ll.location_ref`,
    searched: ['o.company_name', 'o.trading_as', 'l.town', 'l.postcode'],
    order: 'o.company_name, o.organisation_ref',
    path: 'organisation',
  },
};

// Every word typed must be found in one of the searched columns.
function filter(list, search) {
  const words = search.split(/\s+/).filter(Boolean).slice(0, 8);
  if (words.length === 0) return { where: '', parameters: [] };
  const one = `(${list.searched.map((column) => `${column} LIKE ?`).join(' OR ')})`;
  const parameters = words.flatMap((word) => {
    const pattern = `%${word.replace(/[[%_]/g, '[$&]')}%`;
    return list.searched.map(() => pattern);
  });
  return { where: ` WHERE ${words.map(() => one).join(' AND ')}`, parameters };
}

class Members {
  constructor(database) {
    this.database = database;
  }

  // One page of a list: { rows, total, page, pages }; a page past the end is the last one.
  find(show, search, page) {
    const list = lists[show];
    const { where, parameters } = filter(list, search);
    const total = Number(
      this.database.query(
        `SELECT count(DISTINCT ${list.key}) AS total FROM ${list.source}${where}`,
        parameters
      )[0].total
    );
    const pages = Math.max(1, Math.ceil(total / pageSize));
    const shown = Math.min(page, pages);
    const rows = this.database.query(
      `SELECT TOP ${shown * pageSize} ${list.columns} FROM ${list.source}${where}
       ORDER BY ${list.order}`,
      parameters
    );
    return {
      rows: rows
        .slice((shown - 1) * pageSize)
        .map((row) => ({ ...row, path: `${list.path}-${row.ref}` })),
      total,
      page: shown,
      pages,
    };
  }
}

module.exports = { Members, lists };
