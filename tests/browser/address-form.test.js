'use strict';

const assert = require('node:assert/strict');
const { test, before, after, afterEach } = require('node:test');
const { withSite } = require('./support.js');

const on = withSite({ before, after, afterEach });
const save = (page) => page.getByRole('button', { name: 'Save' }).click();
const notice = (page) => page.locator('.notice').textContent();

// The links of a person with their locations, newest first.
function links(individual) {
  return on.site.query(
    `SELECT ll.ind_loc_ref, ll.location_ref, ll.main_location, ll.edit_link, ll.type, ll.comments,
       CASE WHEN ll.valid_to IS NULL THEN 0 ELSE 1 END AS ended,
       l.address1, l.town, l.county, l.postcode, l.country, l.display_name
     FROM individual_loc ll JOIN location l ON l.location_ref = ll.location_ref
     WHERE ll.individual_ref = ? ORDER BY ll.ind_loc_ref DESC`,
    [individual]
  );
}
const counts = () =>
  ['location', 'individual_loc', 'organisation_loc', 'contact_loc'].map(
    (table) => on.site.query(`SELECT count(*) AS n FROM ${table}`)[0].n
  );

test('an address is added', async () => {
  const page = await on.page();
  const before = links(1);
  await page.goto('/members/?q=Ashworth');
  await page
    .getByRole('link', { name: /Ashworth/ })
    .first()
    .click();
  await page.getByRole('link', { name: 'Add an address' }).click();
  await page.getByLabel('Address', { exact: true }).fill("5 Smith's Yard");
  await page.getByLabel('Town').fill('Highmoor');
  await page.getByLabel('County').fill('North Yorkshire');
  await page.getByLabel('Postcode').fill('yo99 7ic');
  await page.getByLabel('Type of address').selectOption({ label: 'Work' });
  await page.getByLabel('Comments').fill("Ring twice; it's the green door.\nThen wait.");
  await save(page);
  assert.equal(await notice(page), 'The address was added.');
  assert.match(await page.locator('.cards').textContent(), /5 Smith's Yard/);

  const [added, ...others] = links(1);
  assert.deepEqual(others, before);
  const { ind_loc_ref, location_ref, comments, ...rest } = added;
  assert.deepEqual(rest, {
    main_location: null,
    edit_link: 1,
    type: 12,
    ended: 0,
    address1: "5 Smith's Yard",
    town: 'Highmoor',
    county: 'North Yorkshire',
    postcode: 'YO99 7IC',
    country: 'United Kingdom',
    display_name: "5 Smith's Yard, Highmoor, NORTH YORKSHIRE",
  });
  assert.match(comments, /^Ring twice; it’s the green door\.\r?\nThen wait\.$/);
});

test('an address without its mandatory fields is refused beside the form', async () => {
  const page = await on.page();
  const before = counts();
  await page.goto('/individual-2/add');
  await page.getByLabel('County').fill('Kept as typed');
  await save(page);
  const summary = page.getByRole('alert');
  assert.deepEqual(await summary.locator('li').allTextContents(), [
    'Address is a mandatory field.',
    'Town is a mandatory field.',
  ]);
  assert.equal(await page.getByLabel('County').inputValue(), 'Kept as typed');
  assert.equal(
    await page.locator('#Town ~ .problem-line').textContent(),
    'Town is a mandatory field.'
  );
  await summary.getByRole('link', { name: /Town/ }).click();
  assert.equal(await page.evaluate(() => document.activeElement.id), 'Town');
  // A visitor who says that nothing is mandatory is not believed.
  await page.evaluate(() => {
    document.getElementById('AddValidate').value = '';
    document.getElementById('SysRef').value = '3';
    document.getElementById('LocRef').value = '3';
  });
  await save(page);
  assert.equal(await page.getByRole('alert').locator('li').count(), 2);
  assert.deepEqual(counts(), before);
});

test('an address is amended in place, and saving it again changes nothing', async () => {
  const page = await on.page();
  const before = counts();
  const isOwn = (link) => link.edit_link === 1;
  const [stored] = links(5).filter(isOwn);
  await page.goto(`/individual-5/amend-${stored.ind_loc_ref}`);
  assert.equal(await page.getByLabel('Town').inputValue(), stored.town);
  await save(page);
  assert.equal(await notice(page), 'Nothing was changed, so nothing was saved.');
  assert.deepEqual(links(5).filter(isOwn), [stored]);

  await page.goto(`/individual-5/amend-${stored.ind_loc_ref}`);
  await page.getByLabel('Town').fill('Larkmead');
  await save(page);
  assert.equal(await notice(page), 'The address was amended.');
  const [amended] = links(5).filter(isOwn);
  assert.deepEqual(
    { ...amended, display_name: null },
    { ...stored, town: 'Larkmead', display_name: null }
  );
  assert.deepEqual(counts(), before);
});

test('a shared address that may not be edited is replaced for its owner only', async () => {
  const page = await on.page();
  const [shared] = links(4);
  assert.equal(shared.edit_link, 0);
  await page.goto(`/individual-4/amend-${shared.ind_loc_ref}`);
  assert.match(await page.locator('.hint').textContent(), /Beaupré PhD may edit it/);
  await page.getByLabel('Address', { exact: true }).fill('1 rue Neuve');
  await save(page);
  assert.match(await notice(page), /replaced by a new one/);
  const [fresh, old] = links(4);
  assert.deepEqual(
    [old.ind_loc_ref, old.ended, old.address1],
    [shared.ind_loc_ref, 1, shared.address1]
  );
  assert.deepEqual([fresh.ended, fresh.edit_link, fresh.address1], [0, 1, '1 rue Neuve']);
  assert.notEqual(fresh.location_ref, old.location_ref);
  assert.deepEqual(
    links(3).map((link) => [link.location_ref, link.address1, link.ended]),
    [[shared.location_ref, shared.address1, 0]]
  );
  await page.locator('.ended summary').click();
  assert.match(await page.locator('.ended').textContent(), new RegExp(shared.address1));
});

test('the postcode lookup fills the form', async () => {
  const page = await on.page();
  await page.goto('/individual-6/add');
  await page.getByLabel('Address', { exact: true }).fill('12');
  await page.getByLabel('Postcode').fill('dt904ck');
  await page.getByLabel('Note on the address').fill('Mine');
  const opened = page.waitForEvent('popup');
  await page.getByRole('button', { name: 'Find Address' }).click();
  const lookup = await opened;
  const choices = lookup.locator('.found-addresses button');
  await choices.first().waitFor();
  assert.equal(await choices.count(), 3);
  const closed = lookup.waitForEvent('close');
  await choices.filter({ hasText: 'Flat 2' }).click();
  await closed;
  const value = (name) => page.locator(`[name=${name}]`).inputValue();
  assert.deepEqual(
    await Promise.all(
      ['Differentiator', 'Add1', 'Add2', 'Add3', 'Town', 'County', 'Postcode'].map(value)
    ),
    ['Mine', 'Flat 2', '12 Orchard Road', '', 'Westhaven', 'Dorset', 'DT90 4CK']
  );
  assert.match(await page.locator('.found').textContent(), /filled in/);
  await lookup.close();
});

test('hostile text is stored as it is and shown escaped', async () => {
  const page = await on.page();
  let dialogs = 0;
  page.on('dialog', (dialog) => (dialogs += 1) && dialog.dismiss());
  const text = `<script>alert(1)</script>"><img src=x onerror=alert(2)>`;
  const town = `'); DELETE FROM location --`;
  const comments = `'); UPDATE member SET account_name = 'x' -- \u20AC "<b>"`;
  await page.goto('/individual-7/add');
  await page.locator('#Add1').evaluate((field) => field.removeAttribute('maxlength'));
  await page.locator('#Add1').fill(text);
  await page.getByLabel('Town').fill(town);
  await page.getByLabel('Comments').fill(comments);
  await save(page);
  const [stored] = links(7);
  assert.deepEqual([stored.address1, stored.town], [text, town]);
  assert.equal(stored.comments, comments.replaceAll("'", '’'));
  assert.equal(on.site.query("SELECT count(*) AS n FROM member WHERE account_name = 'x'")[0].n, 0);
  assert.equal(await page.locator('address span', { hasText: text }).count(), 1);
  assert.match(await page.locator('.comments').last().textContent(), /\u20AC "<b>"/u);

  await page.goto(`/individual-7/amend-${stored.ind_loc_ref}`);
  assert.equal(await page.locator('#Add1').inputValue(), text);
  assert.equal(await page.getByLabel('Comments').inputValue(), stored.comments);
  assert.equal(dialogs, 0);
});

test('what cannot be stored is refused in words with the typed values kept', async () => {
  const page = await on.page();
  const before = counts();
  const long = 'ab'.repeat(2500);
  const bad = [
    {
      field: 'Add1',
      value: long,
      message: /Address line 1 may have at most 80 characters; it has 5000/,
    },
    { field: 'Comm', value: long, message: /Comments may have at most 2000 characters/ },
    { field: 'Town', value: 'Bell\u0007', message: /Town holds characters that cannot be stored/ },
    { field: 'Cref', value: '11', option: true, message: /choose a country/ },
    { field: 'LocType', value: '201', option: true, message: /choose a location type/ },
  ];
  for (const { field, value, option, message } of bad) {
    await page.goto('/individual-8/add');
    await page.locator('#Add1').fill('1 Good Street');
    await page.locator('#Town').fill('Highmoor');
    await page.locator(`#${field}`).evaluate(
      (element, { value, option }) => {
        element.removeAttribute('maxlength');
        if (option) element.append(new Option(value, value));
        element.value = value;
      },
      { value, option }
    );
    await save(page);
    assert.match(await page.getByRole('alert').textContent(), message, field);
    assert.equal(await page.locator('#Town').inputValue(), field === 'Town' ? value : 'Highmoor');
  }
  assert.deepEqual(counts(), before);
});
