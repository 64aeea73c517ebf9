'use strict';

const { Router } = require('express');
const { allowInlineScript } = require('../lib/security');
const { notFoundFailure } = require('../lib/failures');
const { textOf, referenceOf } = require('../lib/form-text');

// A person's, an organisation's or a contact's own pages, under /individual-12/ and the like. The
// owner comes from the path and a link must be that owner's; nothing posted can change either.
module.exports = ({ owners, component, addressForm }) => {
  const router = Router({ mergeParams: true, strict: true });

  router.use((request, response, next) => {
    const owner = owners.find(request.params.owner);
    if (!owner) return next(notFoundFailure());
    request.owner = owner;
    response.locals.owner = owner;
    response.locals.section = 'members';
    next();
  });

  // A current link of the owner: past ones are only shown.
  router.param('link', (request, response, next, text) => {
    const link = owners.link(request.owner, referenceOf(text));
    if (!link || link.ended) return next(notFoundFailure());
    request.link = link;
    response.locals.link = link;
    next();
  });

  router.get('/', (request, response) => {
    // Relative addresses on the page count on the path's closing slash.
    if (!request.originalUrl.split('?')[0].endsWith('/'))
      return response.redirect(301, request.owner.path);
    const { owner } = request;
    const links = owners.links(owner);
    for (const link of links) {
      const sharers = link.ended ? [] : owners.sharers(link.location_ref);
      link.editor = sharers.find((each) => each.mayEdit) || null;
      link.others = sharers.filter((each) => each.path !== owner.path);
    }
    response.render('owner', {
      links: links.filter((link) => !link.ended),
      ended: links.filter((link) => link.ended),
      posts: owners.posts(owner),
      emails: owners.emails(owner),
      telephones: owners.telephones(owner),
    });
  });

  function showForm(request, response, values, refused = { problems: [] }) {
    const { owner, link = null } = request;
    allowInlineScript(response);
    const rows = addressForm.rows(request, owner, link, values);
    const sharers = link === null ? [] : owners.sharers(link.location_ref);
    response.render('address-form', {
      link,
      rows,
      problems: refused.problems,
      incident: refused.incident || null,
      editor: sharers.find((each) => each.mayEdit) || null,
      others: sharers.filter((each) => each.path !== owner.path),
      isFirst: link === null && owners.links(owner).every((each) => each.ended),
      wantsInvoice: textOf(request.body, 'invoice') === 'Y',
    });
  }

  function store(request, response) {
    const { owner, link = null } = request;
    const values = addressForm.postedValues(request.body, link);
    // A new address may be made the invoice address; a replaced one hands that on.
    const isInvoice =
      link === null
        ? owner.member !== null && textOf(request.body, 'invoice') === 'Y'
        : link.isInvoice;
    const saved = addressForm.save(request, owner, link, values, isInvoice);
    if (saved.outcome) return response.done(saved.outcome, owner.path);
    response.status(saved.incident ? 503 : 422);
    showForm(request, response, values, saved);
  }

  const showStored = (request, response) =>
    showForm(request, response, addressForm.storedValues(request.owner, request.link || null));

  router.get('/add', showStored);
  router.post('/add', store);
  router.get('/amend-:link', showStored);
  router.post('/amend-:link', store);

  router.get('/end-:link', (request, response) => {
    const others = owners
      .sharers(request.link.location_ref)
      .filter((each) => each.path !== request.owner.path);
    response.render('end-address', { others });
  });

  router.post('/end-:link', (request, response) => {
    const { owner, link } = request;
    const references = ['individual', 'organisation', 'contact'].map((kindName) =>
      kindName === owner.kindName ? link.link_ref : 0
    );
    component.use(request, 'InvalidateLocation', (address) =>
      address.InvalidateLocation(...references)
    );
    response.done('ended', owner.path);
  });

  router.get('/edit-right-:link', (request, response) => {
    response.render('edit-right', {
      sharers: owners.sharers(request.link.location_ref),
      problem: null,
    });
  });

  router.post('/edit-right-:link', (request, response) => {
    const { owner, link } = request;
    const sharers = owners.sharers(link.location_ref);
    const chosen = textOf(request.body, 'editor');
    const editor = sharers.find((each) => `${each.kindName}-${each.linkRef}` === chosen);
    if (!editor) {
      const problem = 'Choose who may edit the address.';
      return response.status(422).render('edit-right', { sharers, problem });
    }
    component.use(request, 'ChangeLocationOwner', (address) =>
      address.ChangeLocationOwner(link.location_ref, editor.linkRef, editor.kindName)
    );
    response.done('editor', owner.path);
  });

  // The update with the stored values: all it changes is the member's invoice address.
  router.post('/invoice-:link', (request, response, next) => {
    const { owner, link } = request;
    if (owner.member === null) return next(notFoundFailure());
    component.use(request, owner.kind.updateMethod, (address) =>
      address[owner.kind.updateMethod](
        link.location_ref,
        link.link_ref,
        link.display_name || '',
        link.differentiator || '',
        link.address1 || '',
        link.address2 || '',
        link.address3 || '',
        link.town || '',
        link.county || '',
        link.postcode || '',
        link.country || '',
        link.country_ref || 0,
        link.type || 0,
        link.region1 || 0,
        link.region2 || 0,
        '',
        '',
        '',
        true,
        link.comments || ''
      )
    );
    response.done('invoice', owner.path);
  });

  return router;
};
