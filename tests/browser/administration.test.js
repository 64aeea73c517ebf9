'use strict';

const assert = require('node:assert/strict');
const { test, before, after, afterEach } = require('node:test');
const { withSite } = require('./support.js');

const on = withSite({ before, after, afterEach });
const labelOf = (page, id) =>
  page
    .locator('.rows tr', { has: page.locator(`#${id}`) })
    .locator('td')
    .nth(1)
    .innerText();
const countTexts = (where) =>
  on.site.query(`SELECT count(*) AS n FROM web_text WHERE ${where}`)[0].n;
const settingOf = (key) =>
  on.site.query('SELECT setting FROM web_config WHERE global_config = ?', [key])[0]?.setting;

async function setSwitches(page, switches) {
  await page.goto('/admin/');
  for (const [name, isOn] of Object.entries(switches)) {
    await page.locator(`[name=${name}]`).setChecked(isOn);
  }
  const form = page.locator('form', { has: page.locator(`[name=${Object.keys(switches)[0]}]`) });
  await form.getByRole('button', { name: 'Save' }).click();
  await page.locator('.notice').waitFor();
}

test('an edited text is seen on the form, with the dictionaries and without', async () => {
  const page = await on.page();
  for (const [dictionaries, text] of [
    [true, 'Town or city:'],
    [false, 'Place <b>now</b> & here:'],
  ]) {
    await setSwitches(page, { dictionaries });
    await page.goto('/admin/texts?area=General');
    await page.locator('[name="text-1-Town"]').fill(text);
    await page.getByRole('button', { name: 'Save the texts' }).click();
    await page.goto('/individual-1/add');
    assert.equal((await labelOf(page, 'Town')).trim(), text.replace(/<\/?b>/g, ''));
  }
  const otherSet = "web_text_label = 'Town' AND text_id = 2 AND web_text = 'Tref:'";
  assert.equal(countTexts(otherSet), 1);
  await setSwitches(page, { dictionaries: true });
});

test('label display shows where texts are kept, and registers missing labels', async () => {
  const page = await on.page();
  const registered = () => countTexts("web_text_label = 'PAFButton'");
  assert.equal(registered(), 0);
  await setSwitches(page, { show: true });
  await page.goto('/individual-1/add');
  assert.match(await labelOf(page, 'County'), /^\(General\/County\)County:/);
  assert.equal(registered(), 1);
  await page.getByRole('button', { name: 'Save' }).click();
  assert.match(await page.getByRole('alert').textContent(), /is a mandatory field/);

  await page.goto('/admin/');
  await page.getByLabel('To one IP address only').check();
  await page.getByLabel('That IP address').fill('192.0.2.7');
  await page
    .locator('form', { has: page.getByLabel('Show labels') })
    .getByRole('button')
    .click();
  await page.goto('/individual-1/add');
  assert.equal((await labelOf(page, 'County')).trim(), 'County:');
  await setSwitches(page, { show: false });
  assert.equal(settingOf('globalShowLabel'), 'false');
});

test('debugging shows the last statement and the last error', async () => {
  const page = await on.page();
  await setSwitches(page, { debug: true });
  await page.goto('/individual-2/add');
  await page.locator('#Add1').fill('Debugged Street');
  await page.getByRole('button', { name: 'Save' }).click();
  await page.getByRole('alert').waitFor();
  const refused = page.locator('.call', { hasText: 'AmmendLocation' }).first();
  assert.match(await refused.textContent(), /\|.+ is a mandatory field\./);
  await page.locator('#Town').fill('Highmoor');
  await page.getByRole('button', { name: 'Save' }).click();
  await page.goto('/admin/calls');
  const stored = page.locator('.call', { hasText: 'AmmendLocation' }).first();
  assert.match(await stored.textContent(), /INSERT INTO individual_loc/);
  await setSwitches(page, { debug: false });
  await page.goto('/individual-2/');
  assert.equal(await page.locator('.debug').count(), 0);
});

test('settings and name templates are kept, and wrong ones refused', async () => {
  const page = await on.page();
  await page.goto('/admin/settings');
  await page.locator('[name="setting-globalNewUpdate"]').fill('many');
  await page.getByRole('button', { name: 'Save the settings' }).click();
  assert.match(
    await page.getByRole('alert').textContent(),
    /globalNewUpdate must be a whole number/
  );
  assert.equal(settingOf('globalNewUpdate'), '3');
  await page.locator('[name="setting-globalNewUpdate"]').fill('4');
  await page.locator('[name="setting-globalEnablePaf"]').selectOption('false');
  await page.getByRole('button', { name: 'Save the settings' }).click();
  assert.equal(settingOf('globalNewUpdate'), '4');
  await page.goto('/individual-1/add');
  assert.equal(await page.getByRole('button', { name: 'Find Address' }).count(), 0);

  await page.goto('/admin/names');
  await page.getByLabel('Salutation').fill('My dear <Title> <Surname>');
  await page.getByRole('button', { name: 'Save the templates' }).click();
  assert.match(await page.locator('#Salutation-sample').textContent(), /My dear Dr Okonjo/);
});
