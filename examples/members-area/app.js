'use strict';
// Puts the site together: what every request passes, the pages, and what failures answer.

const path = require('node:path');
const ejs = require('ejs');
const express = require('express');
const { AddressComponent } = require('./lib/component');
const { Dictionaries } = require('./lib/dictionaries');
const { SiteSwitches } = require('./lib/site-switches');
const { Members } = require('./lib/members');
const { Owners } = require('./lib/owners');
const { Postcodes } = require('./lib/postcodes');
const { AdminStore } = require('./lib/admin-store');
const { AddressForm } = require('./lib/address-form');
const { protectPages, session, checkToken } = require('./lib/security');
const { flash } = require('./lib/flash');
const { notFound, failed } = require('./lib/failures');

// 100 kB hold the largest form many times over.
const bodyLimit = '100kb';

function createApp(addon, connectionString) {
  const database = addon.open(connectionString);
  const dictionaries = new Dictionaries(database);
  const switches = new SiteSwitches();
  const component = new AddressComponent(addon, connectionString, switches, dictionaries);
  const owners = new Owners(database);
  const services = {
    database,
    dictionaries,
    switches,
    component,
    owners,
    members: new Members(database),
    postcodes: new Postcodes(),
    adminStore: new AdminStore(database, dictionaries),
    addressForm: new AddressForm(component, owners, dictionaries),
  };

  const app = express();
  // Whatever the machine's NODE_ENV: no stack trace to a visitor, templates compiled once.
  app.set('env', 'production');
  app.enable('view cache');
  app.disable('x-powered-by');
  // A flat query: no page expects objects or lists in it.
  app.set('query parser', 'simple');
  app.set('trust proxy', false);
  app.set('views', path.join(__dirname, 'views'));
  app.engine('ejs', ejs.renderFile);
  app.set('view engine', 'ejs');

  app.use(protectPages);
  // The markup of the form rows asks for "../common/" and "../custom/"; every page that shows a
  // form stands one folder deep, so both are found here.
  app.use(express.static(path.join(__dirname, 'public'), { index: false, maxAge: '1h' }));
  app.use((request, response, next) => {
    response.set('Cache-Control', 'no-store');
    response.locals.switches = switches;
    response.locals.section = '';
    next();
  });
  app.use(session);
  app.use(express.urlencoded({ extended: false, limit: bodyLimit, parameterLimit: 2000 }));
  app.use(checkToken);
  app.use(flash);

  app.get('/', (request, response) => response.redirect(302, '/members/'));
  app.use('/members', require('./routes/members')(services));
  app.use('/paf', require('./routes/paf')(services));
  app.use('/admin', require('./routes/admin')(services));
  app.use('/:owner', require('./routes/owner')(services));
  app.use(notFound);
  app.use(failed);
  return app;
}

module.exports = { createApp };
