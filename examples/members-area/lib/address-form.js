'use strict';
// The address form: its rows come from the component, and so does the decision what becomes of a
// post. This file is what stands between the two and a visitor who may send anything.

const { knownNames, textOf, referenceOf } = require('./form-text');
const { report } = require('./failures');

// Bits of the fields that can be shown or made mandatory.
const bit = {
  displayName: 4,
  differentiator: 8,
  line2: 16,
  line3: 32,
  town: 64,
  county: 128,
  postcode: 512,
  countryList: 1024,
  comments: 2048,
};
const shownFields =
  bit.differentiator |
  bit.line2 |
  bit.line3 |
  bit.town |
  bit.county |
  bit.postcode |
  bit.countryList |
  bit.comments;
const mandatoryFields = bit.town;

// Posted texts and what the database can hold of each.
const textFields = [
  { name: 'DisplayName', longest: 255 },
  { name: 'Differentiator', longest: 80 },
  { name: 'Add1', longest: 80 },
  { name: 'Add2', longest: 80 },
  { name: 'Add3', longest: 80 },
  { name: 'Town', longest: 80 },
  { name: 'County', longest: 80 },
  { name: 'Postcode', longest: 15 },
  { name: 'Comm', longest: 2000, lines: true },
];

// The value of the country list's "not specified" entry.
const noCountry = -1;

class AddressForm {
  constructor(component, owners, dictionaries) {
    this.component = component;
    this.owners = owners;
    this.dictionaries = dictionaries;
  }

  // The values a form begins with: those of a stored link, or those of a new address.
  storedValues(owner, link) {
    const addressTypes = this.owners.choices('ADDT');
    const usual =
      addressTypes.find((type) => type.code === owner.kind.usualType) || addressTypes[0];
    const usualType = usual ? usual.ref : 0;
    if (link === null) {
      return {
        DisplayName: '',
        Differentiator: '',
        Add1: '',
        Add2: '',
        Add3: '',
        Town: '',
        County: '',
        Postcode: '',
        Country: '',
        Cref: '',
        LocType: usualType,
        main_loc: '',
        Comm: '',
      };
    }
    return {
      DisplayName: link.display_name || '',
      Differentiator: link.differentiator || '',
      Add1: link.address1 || '',
      Add2: link.address2 || '',
      Add3: link.address3 || '',
      Town: link.town || '',
      County: link.county || '',
      Postcode: link.postcode || '',
      Country: link.country || '',
      // An empty reference would offer the default country in place of none.
      Cref: String(link.country_ref || noCountry),
      LocType: link.type || usualType,
      main_loc: link.main_location || '',
      Comm: link.comments || '',
    };
  }

  // What was posted, as typed: only the component's own fields, each a text.
  postedValues(body, link) {
    const values = {
      LocType: referenceOf(textOf(body, 'LocType')),
      main_loc: textOf(body, 'main_loc'),
    };
    const country = textOf(body, 'Cref');
    values.Cref = String(referenceOf(country) || noCountry);
    for (const { name, lines } of textFields) {
      const typed = textOf(body, name);
      values[name] = (lines ? typed : typed.replace(/[\r\n\t]+/g, ' ')).trim();
    }
    // The form offers the list of countries only: a country stored as text outside it stays.
    values.Country = (values.Cref === String(noCountry) && link?.country) || '';
    return values;
  }

  // The form's rows. Owner, link and mandatory fields are the server's, never the visitor's.
  rows(request, owner, link, values) {
    const addressTypes = this.owners
      .choices('ADDT')
      .map((type) => type.ref)
      .join(',');
    // A display name that is composed anyway is not worth an empty read-only field.
    const shown =
      link !== null || this.dictionaries.isOn('globalDisplayAsReadOnly')
        ? shownFields | bit.displayName
        : shownFields;
    return this.component.use(request, 'BuildAddress', (address) =>
      address.BuildAddress(
        shown,
        mandatoryFields,
        values.DisplayName,
        values.Differentiator,
        values.Add1,
        values.Add2,
        values.Add3,
        values.Town,
        values.County,
        values.Postcode,
        values.Country,
        values.Cref,
        values.LocType,
        addressTypes,
        values.main_loc,
        true,
        owner.kind.entityType,
        owner.ref,
        link === null ? 0 : link.link_ref,
        '',
        values.Comm
      )
    );
  }

  // Stores what was posted. Returns { outcome } when it is done or { problems } to be shown beside
  // the form: [{ field, message }], field being an element's id or empty; and the incident's number
  // when the database failed.
  save(request, owner, link, values, isInvoiceAddress) {
    const problems = this.check(values, link);
    if (problems.length > 0) return { problems };
    const before = this.owners.linkStates(owner);
    try {
      const validator = validatorOf(this.rows(request, owner, link, values));
      const { result, lastError } = this.ammend(
        request,
        owner,
        link,
        values,
        validator,
        isInvoiceAddress
      );
      if (result === -1) return { problems: mandatoryProblems(lastError, validator) };
      return { outcome: this.outcome(owner, link, result) };
    } catch (failure) {
      const incident = report(failure, request);
      this.owners.restoreLinkStates(owner, before);
      const message =
        'The address could not be saved because the records cannot be reached. ' +
        'What you typed is still here; please try again in a few minutes.';
      return { problems: [{ field: '', message }], incident };
    }
  }

  ammend(request, owner, link, values, validator, isInvoiceAddress) {
    return this.component.use(request, 'AmmendLocation', (address) => {
      const result = address.AmmendLocation(
        owner.kind.entityType,
        owner.ref,
        link === null ? 0 : link.link_ref,
        values.DisplayName,
        values.Differentiator,
        values.Add1,
        values.Add2,
        values.Add3,
        values.Town,
        values.County,
        values.Postcode,
        values.Country,
        referenceOf(values.Cref),
        // An unticked box posts nothing and the form cannot untick a main address: the stored flag
        // stands, so that it is not taken for a change.
        values.main_loc === 'Y' ? 'Y' : (link && link.main_location) || '',
        values.LocType,
        validator,
        false,
        isInvoiceAddress,
        0,
        0,
        0,
        0,
        // A new link's comments are placed into SQL as given; a typographic apostrophe cannot end
        // the text there.
        values.Comm.replaceAll("'", '\u2019')
      );
      return { result, lastError: address.LastError };
    });
  }

  // A replaced link keeps its reference but is ended; the component's result cannot tell.
  outcome(owner, link, result) {
    if (result === 0) return 'unchanged';
    if (link === null) return 'added';
    return this.owners.link(owner, link.link_ref).ended ? 'replaced' : 'amended';
  }

  check(values, link) {
    const problems = [];
    for (const { name, longest } of textFields) {
      const known = knownNames[name];
      if (values[name].length > longest) {
        const { length } = values[name];
        const message = `${known} may have at most ${longest} characters; it has ${length}.`;
        problems.push({ field: idOf(name), message });
      }
      // Control characters, but not the line ends and tabs of several lines.
      if (/[\u0000-\u0008\u000b\u000c\u000e-\u001f\u007f]/.test(values[name])) {
        const message = `${known} holds characters that cannot be stored. Please type it again.`;
        problems.push({ field: idOf(name), message });
      }
    }
    const country = Number(values.Cref);
    if (country !== noCountry && !this.isChoice('CTRY', country, link && link.country_ref)) {
      problems.push({ field: 'Cref', message: 'Please choose a country from the list.' });
    }
    if (!this.isChoice('ADDT', values.LocType, link && link.type)) {
      problems.push({ field: 'LocType', message: 'Please choose a location type from the list.' });
    }
    return problems;
  }

  // A choice that was withdrawn since may stay where it is stored.
  isChoice(typeCode, reference, stored) {
    return (
      reference === stored || this.owners.choices(typeCode).some(({ ref }) => ref === reference)
    );
  }
}

// The one field whose id and name differ.
function idOf(name) {
  return name === 'Postcode' ? 'PostCode' : name;
}

const entities = { quot: '"', amp: '&', lt: '<', gt: '>' };

// The list of mandatory fields as the rows were built, read from the server's own copy of them.
function validatorOf(rows) {
  const [, encoded] = /name="AddValidate" value="([^"]*)"/.exec(rows);
  return encoded.replace(/&(?:#(\d+)|(\w+));/g, (whole, code, name) =>
    code
      ? new TextDecoder('windows-1252').decode(Uint8Array.of(Number(code)))
      : (entities[name] ?? whole)
  );
}

// Joins the component's messages, "|Town: is a mandatory field.|...", to the fields they speak of.
function mandatoryProblems(lastError, validator) {
  const fields = validator
    .split('|')
    .filter(Boolean)
    .map((entry) => {
      const [id, ...label] = entry.split(',');
      return { id, label: label.length > 0 ? label.join(',') : id };
    });
  const suffix = ' is a mandatory field.';
  return lastError
    .split('|')
    .filter(Boolean)
    .map((message) => {
      const label = message.endsWith(suffix) ? message.slice(0, -suffix.length) : message;
      const at = fields.findIndex((field) => field.label === label);
      const [field] = at < 0 ? [null] : fields.splice(at, 1);
      const known = field && knownNames[field.id];
      // A label may hold markup.
      const plain = label.replace(/<[^>]*>|\s*:\s*$/g, '').trim() || known || 'This';
      return {
        field: field ? idOf(field.id) : '',
        message: message.endsWith(suffix) ? plain + suffix : message,
      };
    });
}

module.exports = { AddressForm };
