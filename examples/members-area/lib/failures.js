'use strict';
// What a visitor is told when a page cannot be shown. What really happened goes to the error stream
// under an incident number that the page names.

const { randomBytes } = require('node:crypto');
const { knownNames } = require('./form-text');

// A failure with its own words for the visitor.
class PageFailure extends Error {
  constructor(status, title, explanation) {
    super(title);
    this.status = status;
    this.title = title;
    this.explanation = explanation;
  }
}

// Writes a failure to the error stream and returns the number it got.
function report(failure, request) {
  const incident = randomBytes(4).toString('hex').toUpperCase();
  const number = failure?.number === undefined ? '' : ` number ${failure.number}`;
  const where = `${request.method} ${request.originalUrl.split('?')[0]}`;
  process.stderr.write(
    `${new Date().toISOString()} incident ${incident} ${where}${number}\n` +
      `${failure?.stack || failure}\n`
  );
  return incident;
}

const notFoundFailure = () =>
  new PageFailure(
    404,
    'Nothing is kept here',
    'The address in the browser leads to no page, or the record it names does not exist.'
  );

function notFound(request, response, next) {
  next(notFoundFailure());
}

// The words for failures of the web server's own parts, by status.
const explanations = {
  400: ['This request cannot be read', 'Go back and try again.'],
  413: [
    'That was too much text for one form',
    'Nothing was saved. Go back, shorten the text and send the form again.',
  ],
  415: ['This request cannot be read', 'Go back and try again.'],
};

// What a failed post carried: shown again, and sent again by one button.
function postedFields(request) {
  const fields = request.method === 'POST' ? Object.entries(request.body || {}) : [];
  return fields.filter(([name, value]) => name !== 'token' && typeof value === 'string');
}

// Express tells a failure handler by its four parameters.
function failed(failure, request, response, next) {
  if (response.headersSent) return next(failure);
  if (!(failure instanceof PageFailure) && explanations[failure?.status]) {
    failure = new PageFailure(failure.status, ...explanations[failure.status]);
  }
  const page =
    failure instanceof PageFailure
      ? { status: failure.status, title: failure.title, explanation: failure.explanation }
      : {
          status: 500,
          title: 'This page cannot be shown just now',
          explanation: 'The site could not reach its records. Please try again in a few minutes.',
          incident: report(failure, request),
          posted: postedFields(request),
          postedTo: request.originalUrl,
        };
  const locals = { section: '', notice: null, switches: {}, token: '', ...response.locals };
  response
    .status(page.status)
    .render('failure', { ...locals, incident: null, posted: [], knownNames, ...page });
}

module.exports = { PageFailure, report, notFound, notFoundFailure, failed };
