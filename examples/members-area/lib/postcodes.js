'use strict';

const entries = require('../data/postcodes.json');

// A postcode as it is compared: capitals, no blanks.
const plain = (postcode) => postcode.toUpperCase().replace(/\s+/g, '');

// Sample addresses by postcode; all of them are invented.
class Postcodes {
  // The addresses at a postcode with the house number, or all of them when the number is empty or
  // unknown there.
  find(postcode, house) {
    const entry = entries.find((each) => plain(each.postcode) === plain(postcode));
    if (!entry) return [];
    const addresses = entry.addresses.map((each) => ({
      ...each,
      town: entry.town,
      county: entry.county,
      postcode: entry.postcode,
      country: entry.country,
    }));
    const wanted = house.trim().toUpperCase();
    const exact = addresses.filter((each) => wanted !== '' && each.house.toUpperCase() === wanted);
    return exact.length > 0 ? exact : addresses;
  }

  // Some postcodes to try.
  samples() {
    return entries.map((each) => each.postcode);
  }
}

module.exports = { Postcodes };
