'use strict';
// A message for the next page, carried in a cookie as the name of one of these texts, so that a
// forged cookie can show nothing else.

const messages = {
  added: 'The address was added.',
  amended: 'The address was amended.',
  replaced: 'The address was replaced by a new one; the old one is kept among the ended addresses.',
  unchanged: 'Nothing was changed, so nothing was saved.',
  ended: 'The address was ended.',
  editor: 'The right to edit the address was passed on.',
  invoice: 'The invoice address was set.',
  switches: 'The switches were set.',
  labels: 'Label display was set.',
  texts: 'The texts were saved.',
  textAdded: 'The text was added.',
  settings: 'The settings were saved.',
  names: 'The name templates were saved.',
};

const cookieName = 'members_notice';

function flash(request, response, next) {
  const name = request.cookies.get(cookieName);
  if (name !== undefined) response.clearCookie(cookieName, { path: '/' });
  response.locals.notice = Object.hasOwn(messages, name) ? messages[name] : null;
  response.done = (notice, location) => {
    response.cookie(cookieName, notice, { path: '/', httpOnly: true, sameSite: 'lax' });
    response.redirect(303, location);
  };
  next();
}

module.exports = { flash };
