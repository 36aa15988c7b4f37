// Working in fizzle-studio's page as a compositor would: frame N stays frame
// N through changes and undo, handles at any zoom, files, transport keys,
// lists, fields and accessibility, in a real browser.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { startStudio, stopStudio, launchBrowser, makeWorkDir, emitterMiddle } from './studio_harness.mjs';

const axeSource = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
let studio, browser, work;

before(async () => {
  work = makeWorkDir();
  studio = await startStudio(work, ['--size', '320x180', '--preset', 'Basic']);
  browser = await launchBrowser({ viewport: { width: 1366, height: 768 } });
});

after(async () => {
  await browser?.close();
  await stopStudio(studio);
});

async function openPage(own = studio) {
  const page = await browser.newPage();
  const problems = [];
  page.on('pageerror', (error) => problems.push(error.message));
  await page.goto(own.url);
  await page.waitForSelector('body[data-ready=true]', { timeout: 30000 });
  page.problems = problems;
  return page;
}

const api = (own = studio) => ({
  get: async (address) => (await fetch(`${own.base}${address}${address.includes('?') ? '&' : '?'}token=${own.token}`)),
  post: async (address, body) => (await fetch(`${own.base}${address}?token=${own.token}`,
    { method: 'POST', body: JSON.stringify(body) })).json(),
});

// The frame the studio shows now, as its raw RGB bytes.
async function shownBytes(own = studio) {
  return Buffer.from(await (await api(own).get('/api/frame')).arrayBuffer());
}

async function waitForFrame(page, frame) {
  await page.waitForFunction((n) => Number(document.getElementById('frame-number').value) === n, frame,
    { timeout: 30000 });
}

async function settle(page) {
  await page.waitForTimeout(400);
  await page.waitForFunction(() => !document.getElementById('busy') || document.getElementById('busy').hidden);
}

// The canvas' pixels equal the studio's current frame.
async function canvasMatches(page) {
  const bytes = [...(await shownBytes())];
  return page.evaluate((rgb) => {
    const canvas = document.getElementById('picture');
    const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    for (let i = 0, o = 0; o < rgb.length; i += 4, o += 3)
      if (data[i] !== rgb[o] || data[i + 1] !== rgb[o + 1] || data[i + 2] !== rgb[o + 2]) return false;
    return true;
  }, bytes);
}

test('a change and its undo leave frame N as it was, and the changed frame is the one fizzle-render writes', async () => {
  const page = await openPage();
  await page.locator('#frame-number').fill('6');
  await page.locator('#frame-number').press('Enter');
  await waitForFrame(page, 6);
  await settle(page);
  const original = await shownBytes();

  await page.getByRole('tab', { name: 'Light' }).click();
  const field = page.getByRole('spinbutton', { name: 'Light Inten' });
  const was = await field.inputValue();
  await field.fill('150');
  await field.press('Enter');
  await page.waitForFunction(() => !document.getElementById('undo').disabled);
  await settle(page);
  const changed = await shownBytes();
  assert.notDeepEqual(changed, original);
  assert.equal(await page.locator('#frame-number').inputValue(), '6');

  await page.locator('body').click({ position: { x: 5, y: 5 } });
  await page.keyboard.press('Control+z');
  await page.waitForFunction((v) => document.querySelector('[aria-label="Light Inten"]').value === v, was);
  await settle(page);
  assert.deepEqual(await shownBytes(), original, 'the undo did not give back frame 6');
  assert.ok(await canvasMatches(page), 'the viewer does not show the studio\'s frame');

  await page.keyboard.press('Control+Shift+z');
  await page.waitForFunction(() => document.querySelector('[aria-label="Light Inten"]').value === '150');
  await settle(page);
  assert.deepEqual(await shownBytes(), changed, 'the redo did not give back the changed frame');

  // The hand-off renders exactly the screen; its setup file is new, so nothing is asked.
  await page.locator('#render summary').click();
  await page.locator('#render-output').fill('handoff/f.####.ppm');
  await page.getByRole('button', { name: 'Copy command line' }).click();
  await page.waitForFunction(() => document.getElementById('command').value.length > 0);
  const command = await page.locator('#command').inputValue();
  execFileSync('/bin/sh', ['-c', `${command} --quiet`], { cwd: work, stdio: 'ignore' });
  const file = readFileSync(path.join(work, 'handoff', 'f.0006.ppm'));
  const header = file.subarray(0, 20).toString('latin1').match(/^P6\s+320\s+180\s+255\s/);
  assert.deepEqual(file.subarray(header[0].length), changed);

  // Now that the setup file exists, writing it again asks first; "No" leaves it as it was.
  // An older setup (only setups may be replaced, never other files).
  const setupFile = path.join(work, 'studio-setup.json');
  const older = '{"format": "sparkhost-setup", "kept": true}\n';
  writeFileSync(setupFile, older);
  await page.getByRole('button', { name: 'Save setup' }).click();
  const dialog = page.getByRole('dialog');
  await dialog.waitFor({ state: 'visible' });
  assert.match(await dialog.textContent(), /studio-setup\.json" exists already\. Replace it\?/);
  await dialog.getByRole('button', { name: 'No' }).click();
  await page.waitForTimeout(300);
  assert.equal(readFileSync(setupFile, 'utf8'), older);
  await page.getByRole('button', { name: 'Copy command line' }).click();
  await dialog.waitFor({ state: 'visible' });
  await dialog.getByRole('button', { name: 'Yes' }).click();
  // The first hand-off's notice may still be showing: wait for the file itself.
  for (let tries = 0; tries < 100 && readFileSync(setupFile, 'utf8') === older; ++tries)
    await page.waitForTimeout(50);
  assert.notEqual(readFileSync(setupFile, 'utf8'), older);

  await page.keyboard.press('Control+z');
  await page.waitForFunction((v) => document.querySelector('[aria-label="Light Inten"]').value === v, was);
  assert.deepEqual(page.problems, []);
  await page.close();
});

test('at 1:2 the drawn middle handle is where it is grabbed, and dragging it moves the emitter', async () => {
  const page = await openPage();
  await page.getByRole('button', { name: '1:2' }).click();
  await page.waitForTimeout(400);
  assert.equal(await page.locator('#zoom-shown').textContent(), '50%');
  const middle = () => emitterMiddle(page);
  const from = await middle();
  // A small square of the overlay is drawn centred there.
  const squares = await page.evaluate(() => [...document.querySelectorAll('#overlay polygon, #overlay polyline')]
    .map((shape) => {
      const box = shape.getBoundingClientRect();
      return { x: box.left + box.width / 2, y: box.top + box.height / 2, size: Math.max(box.width, box.height) };
    }).filter((box) => box.size > 1 && box.size < 20));
  assert.ok(squares.some((box) => Math.hypot(box.x - from.x, box.y - from.y) < 2),
    `no handle drawn at ${JSON.stringify(from)}: ${JSON.stringify(squares)}`);
  const leftY = Number(await page.locator('[aria-label="Left Y"]').inputValue());
  const pictureBefore = Number(await page.locator('#picture').getAttribute('data-version'));
  await page.mouse.move(from.x, from.y);
  await page.mouse.down();
  for (let i = 1; i <= 6; ++i) await page.mouse.move(from.x, from.y - 5 * i);
  // The picture follows the drag before the release.
  await page.waitForFunction((v) => Number(document.getElementById('picture').dataset.version) > v, pictureBefore,
    { timeout: 10000 });
  await page.mouse.up();
  await page.waitForFunction((y) => Math.abs(Number(document.querySelector('[aria-label="Left Y"]').value) - y) > 5,
    leftY, { timeout: 15000 });
  await page.waitForTimeout(400);
  const to = await middle();
  assert.ok(Math.abs(to.y - (from.y - 30)) < 4, `emitter at ${to.y}, expected near ${from.y - 30}`);
  // The arrow keys move the handle last dragged, a step each.
  const dragged = Number(await page.locator('[aria-label="Left Y"]').inputValue());
  const frame = await page.locator('#frame-number').inputValue();
  await page.locator('#viewport').focus();
  await page.keyboard.press('Shift+ArrowUp');
  await page.waitForFunction((y) => Number(document.querySelector('[aria-label="Left Y"]').value) > y + 2,
    dragged, { timeout: 15000 });
  assert.equal(await page.locator('#frame-number').inputValue(), frame, 'the arrow stepped the timeline');
  // The drag is one step, the nudge another: two undos put the emitter back.
  await page.keyboard.press('Control+z');
  await page.waitForFunction((y) => Math.abs(Number(document.querySelector('[aria-label="Left Y"]').value) - y) < 0.01,
    dragged, { timeout: 15000 });
  await page.keyboard.press('Control+z');
  await page.waitForFunction((y) => Math.abs(Number(document.querySelector('[aria-label="Left Y"]').value) - y) < 0.01,
    leftY, { timeout: 15000 });
  // Fit follows the window.
  await page.getByRole('button', { name: 'Fit' }).click();
  const fitted = await page.locator('#zoom-shown').textContent();
  await page.setViewportSize({ width: 1920, height: 1080 });
  await page.waitForFunction((old) => document.getElementById('zoom-shown').textContent !== old, fitted);
  await page.close();
});

test('a render with the default output in an empty working directory writes its frames and says so', async () => {
  const fresh = makeWorkDir();
  const own = await startStudio(fresh, ['--size', '160x90', '--preset', 'Basic']);
  const page = await openPage(own);
  try {
    await page.locator('#render summary').click();
    await page.getByLabel('To', { exact: true }).fill('3');
    await page.getByRole('button', { name: 'Render', exact: true }).click();
    await page.waitForFunction(() => /Render finished: 3 of 3 frames/.test(document.getElementById('toasts').textContent),
      null, { timeout: 60000 });
    assert.deepEqual(readdirSync(path.join(fresh, 'out')).sort(),
      ['fizzle-studio-render.json', 'studio.0001.png', 'studio.0002.png', 'studio.0003.png']);
  } finally {
    await page.close();
    await stopStudio(own);
  }
});

test('Space, the arrows, Home and End drive the timeline; arrowing through "Demos" applies nothing until Enter', async () => {
  const page = await openPage();
  await page.locator('body').click({ position: { x: 5, y: 5 } });
  await page.keyboard.press('Home');
  await waitForFrame(page, 1);
  await page.keyboard.press('ArrowRight');
  await waitForFrame(page, 2);
  await page.keyboard.press('End');
  await waitForFrame(page, 100);
  await page.keyboard.press('ArrowLeft');
  await waitForFrame(page, 99);
  await page.keyboard.press('Home');
  await waitForFrame(page, 1);
  await page.keyboard.press('Space');
  await page.waitForFunction(() => Number(document.getElementById('frame-number').value) >= 8);
  await page.keyboard.press('Space');
  await page.waitForFunction(() => document.getElementById('play').getAttribute('aria-label') === 'Play');
  assert.ok(Number(await page.locator('#fps').getAttribute('data-rate')) <= 27, 'played faster than 25 frames/s');
  const numbers = (await page.locator('#ruler .number').allTextContents()).map(Number);
  assert.ok(numbers.length >= 2 && numbers.every((n, i) => i === 0 || n > numbers[i - 1]), `ruler ${numbers}`);

  await page.getByRole('tab', { name: 'Bubbles' }).click();
  const demos = page.getByRole('combobox', { name: 'Demos' });
  const demosValue = async () => (await (await api().get('/api/controls')).json()).controls.find((c) => c.name === 'Demos').value;
  assert.equal(await demosValue(), 0);
  await demos.focus();
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('ArrowDown');
  await page.waitForTimeout(500);
  assert.equal(await demosValue(), 0, 'an arrow applied a preset');
  await page.keyboard.press('Enter');
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.name === 'Demos').value === 2);
  await page.locator('body').click({ position: { x: 5, y: 5 } });
  await page.keyboard.press('Control+z');
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.name === 'Demos').value === 0);
  await page.close();
});

test('a field works out arithmetic, clamps a value out of range and says so, and a double-click resets', async () => {
  const page = await openPage();
  await page.getByRole('tab', { name: 'Bubbles' }).click();
  const size = page.getByRole('spinbutton', { name: 'Bubble Size', exact: true });
  const served = async () => (await (await api().get('/api/controls')).json()).controls.find((c) => c.name === 'Bubble Size').value;
  const was = await served();
  await size.fill('5000');
  await size.press('Enter');
  await page.waitForFunction(() => /"Bubble Size" takes 1 to 40: 5000 was set to 40/.test(document.getElementById('toasts').textContent));
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json()).controls.find((c) => c.name === 'Bubble Size').value === 40);
  await size.fill('3*4+0.5');
  await size.press('Enter');
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json()).controls.find((c) => c.name === 'Bubble Size').value === 12.5);
  await size.fill('twelve');
  await size.press('Enter');
  await page.waitForFunction(() => /"twelve" is not a number/.test(document.getElementById('toasts').textContent));
  assert.equal(await size.inputValue(), '12.5');
  await page.locator('.control label', { hasText: /^Bubble Size$/ }).dblclick();
  await page.waitForFunction(async (v) => (await (await studioFetch('/api/controls')).json()).controls.find((c) => c.name === 'Bubble Size').value === v, 20);
  // Put back as the suite found it.
  await api().post('/api/set', { number: 24, value: was });
  // Dragging a label sideways scrubs its value, a step a pixel.
  const density = async () => (await (await api().get('/api/controls')).json()).controls.find((c) => c.number === 16).value;
  const densityWas = await density();
  const label = await page.locator('.control[data-number="16"] label').boundingBox();
  await page.mouse.move(label.x + 10, label.y + label.height / 2);
  await page.mouse.down();
  for (let i = 1; i <= 6; ++i) await page.mouse.move(label.x + 10 + 5 * i, label.y + label.height / 2);
  await page.mouse.up();
  await page.waitForFunction(async (v) => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.number === 16).value === v, densityWas + 30, { timeout: 15000 });
  await page.keyboard.press('Control+z');
  await page.waitForFunction(async (v) => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.number === 16).value === v, densityWas, { timeout: 15000 });
  // and stays undone: no step of the drag arrives after the undo.
  await page.waitForTimeout(500);
  assert.equal(await density(), densityWas, 'a step of the drag arrived after its undo');
  // The key button keys this frame and shows it.
  const key = page.getByRole('button', { name: 'Key Density' });
  await key.click();
  await page.waitForFunction(() => document.querySelector('[aria-label="Key Density"]').getAttribute('aria-pressed') === 'true');
  assert.equal(await page.locator('#ruler .key').count(), 1);
  await key.click();
  await page.waitForFunction(() => document.querySelector('[aria-label="Key Density"]').getAttribute('aria-pressed') === 'false');
  await page.close();
});

test('axe-core finds nothing serious on the page, any tab, its open panels and its dialogs', async () => {
  const page = await openPage();
  await page.addScriptTag({ content: axeSource });
  const check = async (where) => {
    const result = await page.evaluate(() => window.axe.run(document, { resultTypes: ['violations'] }));
    const serious = result.violations.filter((v) => v.impact === 'serious' || v.impact === 'critical');
    assert.deepEqual(serious.map((v) => `${v.id}: ${v.nodes.map((n) => n.target.join(' ')).slice(0, 3).join(', ')}`), [], where);
  };
  await check('page');
  for (const details of ['animation', 'channels', 'render', 'command-panel', 'log-panel'])
    await page.evaluate((id) => { document.getElementById(id).open = true; }, details);
  await page.waitForTimeout(300);
  for (const tab of ['Bubbles', 'Forces', 'Colour', 'Light']) {
    await page.getByRole('tab', { name: tab }).click();
    await check(`tab ${tab} with every panel open`);
  }
  await page.getByRole('tab', { name: 'Bubbles' }).click();
  await page.locator('.control[data-number="16"] label').click({ button: 'right' });
  await page.getByRole('menu').waitFor();
  await check('control menu');
  await page.keyboard.press('Escape');
  await page.getByRole('button', { name: 'Load setup…' }).click();
  await page.getByRole('dialog').waitFor();
  await check('file dialog');
  await page.keyboard.press('Escape');
  // The rate shown in playback is no live region, and the viewer has a name.
  assert.equal(await page.locator('#fps').getAttribute('aria-live'), null);
  assert.equal(await page.getByRole('img', { name: 'The frame shown' }).count(), 1);
  assert.deepEqual(page.problems, []);
  await page.close();
});
