'use strict';

const assert = require('node:assert/strict');
const { test, before, after, afterEach } = require('node:test');
const { withSite } = require('./support.js');

const on = withSite({ before, after, afterEach });
const pages = [
  '/members/',
  '/members/?show=organisations',
  '/members/?q=nobody',
  '/individual-3/',
  '/organisation-1/',
  '/contact-1/',
  '/individual-1/add',
  '/individual-4/amend-4',
  '/individual-3/end-3',
  '/individual-3/edit-right-3',
  '/admin/',
  '/admin/texts',
  '/admin/settings',
  '/admin/names',
  '/admin/calls',
  '/paf/?postcode=M99+2MV',
  '/nothing',
];

test('no page scrolls sideways on a phone, also with debugging and labels on', async () => {
  const page = await on.page({ viewport: { width: 360, height: 720 } });
  for (const round of ['plain', 'decorated']) {
    for (const path of pages) {
      await page.goto(path);
      const excess = await page.evaluate(
        () => document.documentElement.scrollWidth - window.innerWidth
      );
      assert.ok(excess <= 0, `${path} (${round}) is ${excess} pixels too wide`);
    }
    await page.goto('/admin/');
    await page.getByLabel('Show labels').check();
    await page.getByRole('button', { name: 'Save' }).first().click();
    await page.locator('[name=debug]').check();
    await page.getByRole('button', { name: 'Save' }).last().click();
  }
});

test('every page is reached by keyboard and names its fields', async () => {
  const page = await on.page();
  for (const path of pages) {
    await page.goto(path);
    const unnamed = await page.evaluate(() =>
      [...document.querySelectorAll('input:not([type=hidden]), select, textarea:not([hidden])')]
        .filter(
          (field) =>
            !field.labels?.length &&
            !field.ariaLabel &&
            !field.getAttribute('aria-labelledby') &&
            field.type !== 'button'
        )
        .map((field) => field.name)
    );
    assert.deepEqual(unnamed, [], path);
  }
  await page.goto('/members/');
  await page.keyboard.press('Tab');
  assert.equal(
    await page.evaluate(() => document.activeElement.textContent),
    'Skip to the content'
  );
  await page.keyboard.press('Enter');
  assert.equal(await page.evaluate(() => document.activeElement.id), 'main');
});

// A post as a script outside the browser would send it.
async function post(path, fields, headers = {}) {
  return fetch(on.site.url + path, {
    method: 'POST',
    body: new URLSearchParams(fields),
    redirect: 'manual',
    headers,
  });
}

async function visitor() {
  const response = await fetch(`${on.site.url}/individual-9/add`);
  const token = /name="token" value="([^"]+)"/.exec(await response.text())[1];
  return { token, cookie: response.headers.get('set-cookie').split(';')[0] };
}

test('a forged post is refused and changes nothing', async () => {
  const count = () => on.site.query('SELECT count(*) AS n FROM location')[0].n;
  const before = count();
  const [one, other] = [await visitor(), await visitor()];
  const address = { Add1: '1 Forged Street', Town: 'Highmoor', Cref: '201', LocType: '11' };
  const forged = [
    [{}, {}],
    [{ token: one.token }, {}],
    [{ token: '' }, { cookie: one.cookie }],
    [{ token: one.token }, { cookie: other.cookie }],
    [{ token: one.token }, { cookie: `${one.cookie}x` }],
  ];
  for (const [token, headers] of forged) {
    assert.equal((await post('/individual-9/add', { ...address, ...token }, headers)).status, 403);
  }
  assert.equal(count(), before);
  const sent = await post(
    '/individual-9/add',
    { ...address, token: one.token },
    { cookie: one.cookie }
  );
  assert.equal(sent.status, 303);
  assert.equal(count(), before + 1);
});

test("another owner's link is out of reach", async () => {
  const { token, cookie } = await visitor();
  for (const path of [
    'amend-3',
    'end-3',
    'invoice-3',
    'edit-right-3',
    'amend-0',
    'amend-99999999999',
    'end-x',
  ]) {
    assert.equal((await post(`/individual-9/${path}`, { token }, { cookie })).status, 404, path);
  }
  const ended = on.site.query(
    'SELECT count(*) AS n FROM individual_loc WHERE ind_loc_ref = 3 AND valid_to IS NOT NULL'
  );
  assert.equal(ended[0].n, 0);
});

test('odd requests get a plain page', async () => {
  const { token, cookie } = await visitor();
  const cases = [
    ['/individual-99999/', 404],
    ['/individual-1e3/', 404],
    ['/members/?q[x]=1&page[]=2&show=__proto__', 200],
    ['/members/?page=999999999999', 200],
    ['/%E0%A4%A', 400],
  ];
  for (const [path, status] of cases) {
    const response = await fetch(on.site.url + path);
    const text = await response.text();
    assert.equal(response.status, status, path);
    assert.doesNotMatch(text, /node_modules|at \w+ \(|SELECT /, path);
    assert.match(response.headers.get('content-security-policy'), /frame-ancestors 'none'/);
  }
  const large = await post('/individual-9/add', { token, Add1: 'x'.repeat(1e6) }, { cookie });
  assert.equal(large.status, 413);
  assert.match(await large.text(), /too much text/);
});

// The alert of a form that could not be saved, which must still hold what was typed.
async function savingFails(page, typed) {
  await page.getByLabel('Comments').fill(typed);
  await page.getByRole('button', { name: 'Save' }).click();
  const problem = await page.getByRole('alert').innerText();
  assert.match(problem, /could not be saved/);
  assert.match(problem, /Incident number: [0-9A-F]{8}/);
  assert.equal(await page.getByLabel('Comments').inputValue(), typed);
}
const linksOf11 = () =>
  on.site.query('SELECT * FROM individual_loc WHERE individual_ref = 11 ORDER BY ind_loc_ref');

test('a locked database is told in words, and the form can be sent again', async () => {
  const page = await on.page();
  await page.goto('/individual-11/amend-11');
  await page.locator('#Add1').fill('9 Patience Row');
  const before = linksOf11();
  on.site.query('BEGIN TRAN UPDATE member SET account_name = account_name');
  try {
    await savingFails(page, 'Typed with patience');
  } finally {
    on.site.query('ROLLBACK');
  }
  assert.deepEqual(linksOf11(), before);
  await page.getByRole('button', { name: 'Save' }).click();
  assert.match(await page.locator('.notice').textContent(), /replaced/);
  assert.equal(linksOf11()[1].comments, 'Typed with patience');
});

// This test and the next leave the database unfit for others.
test('an amendment that fails half way leaves the links as they were', async () => {
  const page = await on.page();
  on.site.query('CREATE UNIQUE INDEX ux_address ON location (address1, town)');
  const before = on.site.query('SELECT * FROM individual_loc WHERE individual_ref = 4');
  for (const isDebugging of [false, true]) {
    await page.goto('/admin/');
    await page.locator('[name=debug]').setChecked(isDebugging);
    await page.getByRole('button', { name: 'Save' }).last().click();
    await page.goto('/individual-4/amend-4');
    await savingFails(page, 'Typed with care');
    const after = on.site.query('SELECT * FROM individual_loc WHERE individual_ref = 4');
    assert.deepEqual(after, before);
  }
});

test('without its records the site says so, and what was typed can be sent again', async () => {
  const page = await on.page();
  await page.goto('/individual-12/add');
  await page.locator('#Add1').fill('7 Patience Row');
  on.site.query('DROP TABLE individual_loc');
  await page.getByRole('button', { name: 'Save' }).click();
  const text = await page.locator('main').innerText();
  assert.match(text, /7 Patience Row/);
  assert.doesNotMatch(text, /SELECT|individual_loc|node_modules|\.js/);
  const [, incident] = /Incident number: ([0-9A-F]{8})/.exec(text);
  assert.match(on.site.log(), new RegExp(`incident ${incident} POST /individual-12/add`));
  await page.getByRole('button', { name: 'Try again' }).click();
  assert.match(await page.locator('main').innerText(), /7 Patience Row/);
});
