'use strict';

const { isDeepStrictEqual } = require('node:util');

// The three kinds of owner an address may have; each has its own link table. Table and column names
// in the statements below come from here and from nowhere else.
const kinds = {
  individual: {
    entityType: 'INDIVIDUAL',
    noun: 'person',
    linkTable: 'individual_loc',
    linkKey: 'ind_loc_ref',
    ownerKey: 'individual_ref',
    updateMethod: 'UpdateIndividualAddress',
    usualType: 'HOME',
    record: `SELECT o.label_name AS name, s.lookup_full_desc AS status,
        t.lookup_full_desc AS type
      FROM individual o LEFT JOIN lookup s ON s.lookup_ref = o.individual_status
      LEFT JOIN lookup t ON t.lookup_ref = o.type WHERE o.individual_ref = ?`,
    sharer: `o.label_name AS name, '' AS detail FROM individual_loc ll
      JOIN individual o ON o.individual_ref = ll.individual_ref`,
  },
  organisation: {
    entityType: 'ORGANISATION',
    noun: 'organisation',
    linkTable: 'organisation_loc',
    linkKey: 'org_loc_ref',
    ownerKey: 'organisation_ref',
    updateMethod: 'UpdateOrganisationAddress',
    usualType: 'WORK',
    record: `SELECT o.company_name AS name, s.lookup_full_desc AS status,
        t.lookup_full_desc AS type
      FROM organisation o LEFT JOIN lookup s ON s.lookup_ref = o.status
      LEFT JOIN lookup t ON t.lookup_ref = o.type WHERE o.organisation_ref = ?`,
    sharer: `o.company_name AS name, '' AS detail FROM organisation_loc ll
      JOIN organisation o ON o.organisation_ref = ll.organisation_ref`,
  },
  contact: {
    entityType: 'CONTACT',
    noun: 'contact',
    linkTable: 'contact_loc',
    linkKey: 'cont_loc_ref',
    ownerKey: 'contact_ref',
    usualType: 'WORK',
    record: `SELECT o.display_name AS name, o.job_title, o.individual_ref, o.organisation_ref,
      g.company_name FROM contact o JOIN organisation g ON g.organisation_ref = o.organisation_ref
      WHERE o.contact_ref = ?`,
    sharer: `o.display_name AS name, g.company_name AS detail FROM contact_loc ll
      JOIN contact o ON o.contact_ref = ll.contact_ref
      JOIN organisation g ON g.organisation_ref = o.organisation_ref`,
  },
};

const isCurrent = (table) => `(${table}.valid_to IS NULL OR ${table}.valid_to > getdate())`;
const asDay = (column) => `convert(varchar(11), ${column}, 106)`;

class Owners {
  constructor(database) {
    this.database = database;
  }

  // The owner a path part such as "individual-12" names, or null.
  find(part) {
    const match = /^(individual|organisation|contact)-([1-9]\d{0,8})$/.exec(part);
    if (!match) return null;
    const kind = kinds[match[1]];
    const ref = Number(match[2]);
    const [record] = this.database.query(kind.record, [ref]);
    if (!record) return null;
    return {
      ...record,
      kind,
      kindName: match[1],
      ref,
      path: `/${part}/`,
      name: record.name || `Unnamed ${kind.noun} ${ref}`,
      member: this.memberOf(kind, ref),
    };
  }

  // Contacts have no membership of their own.
  memberOf(kind, ref) {
    if (kind === kinds.contact) return null;
    const [member] = this.database.query(
      `SELECT member_ref, invoice_location FROM member WHERE ${kind.ownerKey} = ?`,
      [ref]
    );
    return member || null;
  }

  // The owner's links with their locations, main first; `ended` tells the past ones.
  links(owner) {
    const { linkTable, linkKey, ownerKey } = owner.kind;
    const rows = this.database.query(
      `SELECT ll.${linkKey} AS link_ref, ll.location_ref, ll.type, ll.main_location,
         ll.differentiator, ll.edit_link, ll.comments, ${asDay('ll.valid_from')} AS valid_from,
         ${asDay('ll.valid_to')} AS valid_to,
         CASE WHEN ${isCurrent('ll')} THEN 0 ELSE 1 END AS ended,
         l.display_name, l.address1, l.address2, l.address3, l.town, l.county, l.postcode,
         l.country, l.country_ref, l.region1, l.region2, t.lookup_full_desc AS type_name
       FROM ${linkTable} ll JOIN location l ON l.location_ref = ll.location_ref
       LEFT JOIN lookup t ON t.lookup_ref = ll.type
       WHERE ll.${ownerKey} = ? ORDER BY ll.main_location DESC, ll.${linkKey}`,
      [owner.ref]
    );
    return rows.map((row) => ({
      ...row,
      ended: row.ended === 1,
      isMain: row.main_location === 'Y',
      isInvoice: owner.member !== null && owner.member.invoice_location === row.location_ref,
      mayEdit: row.edit_link !== 0,
    }));
  }

  // A link of this owner, whatever reference a visitor asks for; null when it is not the owner's.
  link(owner, linkRef) {
    return this.links(owner).find((link) => link.link_ref === linkRef) || null;
  }

  // What an amendment may change of the owner's links before it fails. Its statements are not one
  // transaction, so the page keeps this to put it back.
  linkStates(owner) {
    const { linkTable, linkKey, ownerKey } = owner.kind;
    return this.database.query(
      `SELECT ${linkKey} AS link_ref, valid_to, main_location FROM ${linkTable}
       WHERE ${ownerKey} = ?`,
      [owner.ref]
    );
  }

  restoreLinkStates(owner, before) {
    const { linkTable, linkKey } = owner.kind;
    const after = new Map(this.linkStates(owner).map((state) => [state.link_ref, state]));
    for (const state of before) {
      if (isDeepStrictEqual(state, after.get(state.link_ref))) continue;
      this.database.query(
        `UPDATE ${linkTable} SET valid_to = ?, main_location = ? WHERE ${linkKey} = ?`,
        [state.valid_to, state.main_location, state.link_ref]
      );
    }
  }

  // Who uses a location now, of every kind: { kindName, linkRef, ownerRef, name, detail, mayEdit }.
  sharers(locationRef) {
    return Object.entries(kinds).flatMap(([kindName, kind]) =>
      this.database
        .query(
          `SELECT ll.${kind.linkKey} AS link_ref, ll.${kind.ownerKey} AS owner_ref, ll.edit_link,
             ${kind.sharer}
           WHERE ll.location_ref = ? AND ${isCurrent('ll')} ORDER BY ll.${kind.linkKey}`,
          [locationRef]
        )
        .map((row) => ({
          kindName,
          linkRef: row.link_ref,
          path: `/${kindName}-${row.owner_ref}/`,
          name: row.name || `Unnamed ${kind.noun} ${row.owner_ref}`,
          detail: row.detail,
          mayEdit: row.edit_link !== 0,
        }))
    );
  }

  // The posts of a person, or the contacts of an organisation.
  posts(owner) {
    if (owner.kind === kinds.contact) return [];
    return this.database.query(
      `SELECT c.contact_ref, c.display_name, c.job_title, c.main_contact, o.company_name,
         (SELECT count(*) FROM contact_loc ll
          WHERE ll.contact_ref = c.contact_ref AND ${isCurrent('ll')}) AS addresses
       FROM contact c JOIN organisation o ON o.organisation_ref = c.organisation_ref
       WHERE c.${owner.kind.ownerKey} = ? AND ${isCurrent('c')}
       ORDER BY c.rank, c.contact_ref`,
      [owner.ref]
    );
  }

  emails(owner) {
    return this.database.query(
      `SELECT e.email_address, e.main_email, t.lookup_full_desc AS type_name FROM email e
       LEFT JOIN lookup t ON t.lookup_ref = e.type
       WHERE e.${owner.kind.ownerKey} = ? AND ${isCurrent('e')}
       ORDER BY e.main_email DESC, e.email_ref`,
      [owner.ref]
    );
  }

  telephones(owner) {
    return this.database.query(
      `SELECT p.std_code, p.number, p.extension, p.main_number,
         t.lookup_full_desc AS type_name FROM telephone p
       LEFT JOIN lookup t ON t.lookup_ref = p.type
       WHERE p.${owner.kind.ownerKey} = ? AND ${isCurrent('p')}
       ORDER BY p.main_number DESC, p.telephone_ref`,
      [owner.ref]
    );
  }

  // A list of choices in order of their texts: { ref, code }.
  choices(typeCode) {
    return this.database.query(
      `SELECT l.lookup_ref AS ref, l.lookup_code AS code FROM lookup l
       JOIN lookup_type lt ON lt.lookup_type_ref = l.lookup_type_ref
       WHERE lt.lookup_type_code = ? AND ${isCurrent('l')}
       ORDER BY l.lookup_full_desc`,
      [typeCode]
    );
  }
}

module.exports = { Owners, kinds };
