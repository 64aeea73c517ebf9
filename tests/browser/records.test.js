'use strict';

const assert = require('node:assert/strict');
const { test, before, after, afterEach } = require('node:test');
const { withSite } = require('./support.js');

const on = withSite({ before, after, afterEach });
const notice = (page) => page.locator('.notice').textContent();

test('the list is searched and paged', async () => {
  const page = await on.page();
  await page.goto('/');
  const first = await page.locator('.list tbody th').allTextContents();
  await page.getByRole('link', { name: 'Next' }).click();
  const second = await page.locator('.list tbody th').allTextContents();
  assert.equal(first.filter((name) => second.includes(name)).length, 0);
  const cases = [
    { search: "o'brien", names: [/Mrs M J O'Brien/] },
    { search: 'CT89 4MK', show: 'organisations', names: [/The Saltgrove Trust/] },
    { search: 'anne-marie glenharrow', names: [/Mrs A-M Delacroix/] },
    { search: '100%_[a]', names: [] },
    { search: "' OR 1=1 --", names: [] },
  ];
  for (const { search, show = 'people', names } of cases) {
    await page.goto(`/members/?show=${show}`);
    await page.getByRole('searchbox').fill(search);
    await page.getByRole('button', { name: 'Search' }).click();
    const found = await page.locator('.list tbody th').allTextContents();
    assert.equal(found.length, names.length, search);
    names.forEach((name, at) => assert.match(found[at], name));
    if (names.length === 0)
      assert.match(await page.locator('.empty').textContent(), /Nothing matches/);
  }
});

test('a link is ended after it was confirmed', async () => {
  const page = await on.page();
  const rows = () =>
    on.site.query(
      `SELECT org_loc_ref, CASE WHEN valid_to IS NULL THEN 0 ELSE 1 END AS ended
       FROM organisation_loc WHERE organisation_ref = 4 ORDER BY org_loc_ref`
    );
  await page.goto('/organisation-4/');
  await page.getByRole('link', { name: /^End Branch Store/ }).click();
  assert.deepEqual(
    rows().map((row) => row.ended),
    [0, 0]
  );
  await page.getByRole('button', { name: 'End the address' }).click();
  assert.equal(await notice(page), 'The address was ended.');
  assert.deepEqual(rows(), [
    { org_loc_ref: 5, ended: 0 },
    { org_loc_ref: 6, ended: 1 },
  ]);
  assert.equal(await page.locator('.cards .card').count(), 1);
  const response = await page.goto('/organisation-4/amend-6');
  assert.equal(response.status(), 404);
});

test('the right to edit a shared address is passed on', async () => {
  const page = await on.page();
  const rights = () =>
    on.site.query(
      `SELECT individual_ref, edit_link FROM individual_loc
       WHERE location_ref = 22 ORDER BY individual_ref`
    );
  assert.deepEqual(rights(), [
    { individual_ref: 10, edit_link: 1 },
    { individual_ref: 11, edit_link: 0 },
  ]);
  await page.goto('/individual-10/');
  await page.getByRole('link', { name: /Change who may edit/ }).click();
  await page.getByLabel(/G Fairweather/).check();
  await page.getByRole('button', { name: 'Save' }).click();
  assert.equal(await notice(page), 'The right to edit the address was passed on.');
  assert.deepEqual(rights(), [
    { individual_ref: 10, edit_link: 0 },
    { individual_ref: 11, edit_link: 1 },
  ]);

  await page.getByRole('link', { name: /Change who may edit/ }).click();
  await page
    .getByRole('radio')
    .first()
    .evaluate((radio) => {
      radio.value = 'individual-1';
      radio.checked = true;
    });
  await page.getByRole('button', { name: 'Save' }).click();
  assert.match(await page.getByRole('alert').textContent(), /Choose who may edit/);
  assert.equal(rights()[1].edit_link, 1);
});

test('the invoice address is chosen', async () => {
  const page = await on.page();
  const invoice = () =>
    on.site.query('SELECT invoice_location FROM member WHERE organisation_ref = 1')[0]
      .invoice_location;
  assert.equal(invoice(), 2);
  const location = () => on.site.query('SELECT * FROM location WHERE location_ref = 1');
  const before = location();
  await page.goto('/organisation-1/');
  await page.getByRole('button', { name: /Send invoices here/ }).click();
  assert.equal(await notice(page), 'The invoice address was set.');
  assert.equal(invoice(), 1);
  assert.deepEqual(location(), before);
});

test('a contact of an organisation has addresses of its own', async () => {
  const page = await on.page();
  const addresses = () =>
    on.site.query('SELECT count(*) AS n FROM contact_loc WHERE contact_ref = 2')[0].n;
  const before = addresses();
  await page.goto('/organisation-1/');
  await page
    .locator('section')
    .filter({ hasText: 'Contacts' })
    .getByRole('link', { name: 'Mrs H Fairweather' })
    .click();
  await page.getByRole('link', { name: 'Add an address' }).click();
  await page.locator('#Add1').fill('Desk 3');
  await page.locator('#Town').fill('Larkmead');
  await page.getByRole('button', { name: 'Save' }).click();
  assert.equal(await notice(page), 'The address was added.');
  assert.equal(addresses(), before + 1);
});
