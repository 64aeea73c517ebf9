'use strict';

const { Router } = require('express');
const { textOf } = require('../lib/form-text');

// The small window of the postcode lookup.
module.exports = ({ postcodes }) => {
  const router = Router();

  router.get('/', (request, response) => {
    const postcode = textOf(request.query, 'postcode').trim().slice(0, 15);
    const house = textOf(request.query, 'house').trim().slice(0, 40);
    const addresses = postcodes.find(postcode, house);
    response.render('paf', { postcode, house, addresses, samples: postcodes.samples() });
  });

  return router;
};
