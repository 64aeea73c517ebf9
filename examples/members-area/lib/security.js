'use strict';
// Headers, the visitor's session and the token that every post must carry.

const { createHmac, randomBytes, timingSafeEqual } = require('node:crypto');
const { PageFailure } = require('./failures');

const secret = randomBytes(32);
const cookieName = 'members_session';

const basePolicy = [
  "default-src 'none'",
  "img-src 'self'",
  "style-src 'self'",
  "form-action 'self'",
  "base-uri 'none'",
  "frame-ancestors 'none'",
].join('; ');

function protectPages(request, response, next) {
  response.set({
    'Content-Security-Policy': `${basePolicy}; script-src 'self'`,
    'X-Content-Type-Options': 'nosniff',
    'X-Frame-Options': 'DENY',
    'Referrer-Policy': 'same-origin',
    'Cross-Origin-Opener-Policy': 'same-origin',
    'Cross-Origin-Resource-Policy': 'same-origin',
    'Permissions-Policy': 'camera=(), geolocation=(), microphone=()',
  });
  next();
}

// The component's rows carry an inline script and an onclick, and administrators may reword the
// button that holds the latter, so neither a nonce nor a hash can name them: the pages that show
// these rows, and no others, allow inline script. Values in the rows are encoded by the component.
function allowInlineScript(response) {
  response.set('Content-Security-Policy', `${basePolicy}; script-src 'self' 'unsafe-inline'`);
}

function sign(purpose, id) {
  return createHmac('sha256', secret).update(`${purpose}:${id}`).digest('base64url');
}

function equal(given, expected) {
  const a = Buffer.from(String(given));
  const b = Buffer.from(expected);
  return a.length === b.length && timingSafeEqual(a, b);
}

function readCookies(header = '') {
  const pairs = header.split(';').map((part) => {
    const at = part.indexOf('=');
    return at < 0 ? ['', ''] : [part.slice(0, at).trim(), part.slice(at + 1).trim()];
  });
  return new Map(pairs);
}

function session(request, response, next) {
  request.cookies = readCookies(request.headers.cookie);
  const [id, signature] = (request.cookies.get(cookieName) || '').split('.');
  request.sessionId = id;
  if (!id || !equal(signature, sign('session', id))) {
    request.sessionId = randomBytes(18).toString('base64url');
    response.cookie(cookieName, `${request.sessionId}.${sign('session', request.sessionId)}`, {
      path: '/',
      httpOnly: true,
      sameSite: 'lax',
    });
  }
  response.locals.token = sign('token', request.sessionId);
  next();
}

function checkToken(request, response, next) {
  if (request.method === 'GET' || request.method === 'HEAD') return next();
  if (equal(request.body?.token, response.locals.token)) return next();
  next(
    new PageFailure(
      403,
      'This form can no longer be sent',
      'It was opened too long ago or came from elsewhere. Open the page again and send it there.'
    )
  );
}

module.exports = { protectPages, allowInlineScript, session, checkToken };
