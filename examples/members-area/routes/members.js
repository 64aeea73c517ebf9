'use strict';

const { Router } = require('express');
const { lists } = require('../lib/members');
const { textOf, referenceOf } = require('../lib/form-text');

module.exports = ({ members }) => {
  const router = Router();

  router.get('/', (request, response) => {
    const asked = textOf(request.query, 'show');
    const show = Object.hasOwn(lists, asked) ? asked : 'people';
    const search = textOf(request.query, 'q').trim().slice(0, 100);
    const page = Math.min(referenceOf(textOf(request.query, 'page')) || 1, 10000);
    const found = members.find(show, search, page);
    const linkTo = (changes) => {
      const query = new URLSearchParams({ show, ...(search && { q: search }), ...changes });
      return `/members/?${query}`;
    };
    response.render('members', { section: 'members', show, search, ...found, linkTo });
  });

  return router;
};
