// fizzle-studio's file dialog, its renders to files and the controls the
// plug-in hides, in a real browser.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { copyFileSync, mkdirSync, readdirSync, readFileSync, writeFileSync, existsSync } from 'node:fs';
import path from 'node:path';
import { buildDir, startStudio, stopStudio, launchBrowser, makeWorkDir } from './studio_harness.mjs';

const data = path.join(process.env.FIZZLE_SOURCE_DIR || path.resolve(buildDir, '..'), 'tests', 'data');
const shots = process.env.FIZZLE_SCREENSHOT_DIR || path.join(buildDir, 'studio-screenshots');
mkdirSync(shots, { recursive: true });
let studio, browser, work;

before(async () => {
  work = makeWorkDir();
  copyFileSync(path.join(data, 'well_formed.amp'), path.join(work, 'sound.amp'));
  writeFileSync(path.join(work, 'broken.amp'), 'this is no amplitude file\n');
  writeFileSync(path.join(work, 'notes.txt'), 'notes\n');
  mkdirSync(path.join(work, 'takes'));
  mkdirSync(path.join(work, 'renders'));
  studio = await startStudio(work, ['--size', '320x180', '--preset', 'Basic',
    '--colour-config', path.join(data, 'scene_linear.ocio')]);
  browser = await launchBrowser();
});

after(async () => {
  await browser?.close();
  await stopStudio(studio);
});

async function openPage() {
  const page = await browser.newPage();
  const problems = [];
  page.on('pageerror', (error) => problems.push(error.message));
  await page.goto(studio.url);
  await page.waitForSelector('body[data-ready=true]', { timeout: 30000 });
  page.problems = problems;
  return page;
}

// Shows the tab a button sits on.
async function showTabOf(page, title) {
  const tab = await page.evaluate((name) => [...document.querySelectorAll('.control button')]
    .find((button) => button.textContent === name).closest('[role=tabpanel]').id.slice(5), title);
  await page.locator(`#tab-${tab}`).click();
}

const state = async () => (await fetch(`${studio.base}/api/state?token=${studio.token}`)).json();

test('"Import Amplitude File" lists the working directory as the plug-in asks, imports the file chosen, and shows the plug-in\'s error for a malformed one', async () => {
  const page = await openPage();
  const chooseInDialog = async (name) => {
    await page.getByRole('button', { name: 'Import Amplitude File' }).click();
    const dialog = page.getByRole('dialog', { name: 'Import Amplitude File' });
    await dialog.waitFor({ state: 'visible' });
    const listed = await dialog.getByRole('listbox').locator('option').allTextContents();
    await dialog.getByRole('listbox').selectOption(name);
    await dialog.getByRole('button', { name: 'Open' }).click();
    await dialog.waitFor({ state: 'hidden' });
    return listed;
  };
  await showTabOf(page, 'Import Amplitude File');
  // The plug-in asks for no particular extension: every file is offered, folders first.
  const listed = await chooseInDialog('sound.amp');
  assert.deepEqual([...listed].sort(), ['broken.amp', 'notes.txt', 'renders/', 'sound.amp', 'takes/']);
  assert.deepEqual(listed.slice(0, 2).sort(), ['renders/', 'takes/'], 'folders come first');
  // Its keys animate "Light" (control 93), shown one frame later than their key number.
  const deadline = Date.now() + 15000;
  let keys;
  while (Date.now() < deadline && !(keys = (await state()).keys['93'])) await page.waitForTimeout(100);
  assert.deepEqual(keys.map(([frame]) => frame), [2, 3, 4]);
  await page.screenshot({ path: path.join(shots, 'studio-import.png') });

  await chooseInDialog('broken.amp');
  await page.locator('#log li', { hasText: 'Not a valid control file' }).waitFor({ timeout: 15000 });
  assert.deepEqual(page.problems, []);
  await page.close();
});

test('a frame range renders to files with progress, and Cancel leaves only whole frames and no temporaries', async () => {
  const page = await openPage();
  await page.locator('#render summary').click();
  const panel = page.locator('#render');
  await panel.getByLabel('Output').fill('renders/r.####.ppm');
  await panel.getByLabel('From', { exact: true }).fill('1');
  await panel.getByLabel('To', { exact: true }).fill('5000');
  await page.getByRole('button', { name: 'Render', exact: true }).click();
  await page.waitForFunction(() => Number(document.getElementById('render-progress').value) >= 3, null, { timeout: 60000 });
  assert.match(await page.locator('#render-status').textContent(), /of 5000 frames/);
  await page.getByRole('button', { name: 'Cancel render' }).click();
  await page.waitForFunction(() => /cancelled/.test(document.getElementById('render-status').textContent), null,
    { timeout: 30000 });
  assert.equal(await page.getByRole('button', { name: 'Render', exact: true }).isDisabled(), false);

  const names = readdirSync(path.join(work, 'renders')).sort();
  assert.deepEqual(names.filter((name) => name.startsWith('.')), [], 'a temporary file was left behind');
  const frames = names.filter((name) => /^r\.\d{4}\.ppm$/.test(name));
  assert.ok(frames.length >= 3 && frames.length < 5000, `${frames.length} frames`);
  frames.forEach((name, i) => assert.equal(name, `r.${String(i + 1).padStart(4, '0')}.ppm`));
  for (const name of frames) {
    const file = readFileSync(path.join(work, 'renders', name));
    const header = file.subarray(0, 20).toString('latin1').match(/^P6\s+320\s+180\s+255\s/);
    assert.ok(header, `${name} has no whole header`);
    assert.equal(file.length, header[0].length + 320 * 180 * 3, `${name} is cut short`);
  }
  assert.ok(existsSync(path.join(work, 'renders', 'fizzle-studio-render.json')));
  assert.deepEqual(names.filter((name) => !frames.includes(name)), ['fizzle-studio-render.json']);
  await page.close();
});

test('the render panel writes the bubbles layer beside the frames, and its command lines carry the layer and the colour options', async () => {
  const page = await openPage();
  await page.locator('#render summary').click();
  const panel = page.locator('#render');
  await panel.getByLabel('Output').fill('layered/f.####.png');
  await panel.getByLabel('Layer', { exact: true }).fill('layered/b.####.exr');
  await panel.getByLabel('Layer type').selectOption('float');
  await panel.getByLabel('From', { exact: true }).fill('1');
  await panel.getByLabel('To', { exact: true }).fill('2');
  await page.getByRole('button', { name: 'Render', exact: true }).click();
  await page.waitForFunction(() => /finished/.test(document.getElementById('render-status').textContent), null,
    { timeout: 60000 });
  for (const frame of ['0001', '0002']) {
    const info = execFileSync('oiiotool', ['--info', path.join(work, 'layered', `b.${frame}.exr`)]).toString();
    assert.match(info, /320 x\s+180, 4 channel, float/, info);
  }

  await page.getByRole('button', { name: 'Copy command line' }).click();
  await page.waitForFunction(() => document.getElementById('command').value.length > 0);
  const command = await page.locator('#command').inputValue();
  assert.match(command, /--colour-config \S*scene_linear\.ocio /);
  assert.match(command, / --layer 'layered\/b\.####\.exr' --layer-type float /);
  assert.match(command, / -o 'layered\/f\.####\.png'$/);

  // Elsewhere than the frames' folder the render could not reach it: refused at once, in words.
  const refused = await fetch(`${studio.base}/api/render?token=${studio.token}`, {
    method: 'POST', headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify({ output: 'layered/f.####.png', layer: 'takes/b.####.exr', first: 1, last: 1 }),
  });
  assert.equal(refused.status, 400);
  assert.match((await refused.json()).error, /beside the frames/);
  assert.deepEqual(page.problems, []);
  await page.close();
});

test('controls the plug-in hides leave the page and come back when their switch does; shown ones stay usable', async () => {
  const page = await openPage();
  await page.getByRole('tab', { name: 'Forces' }).click();
  const gravity = page.getByRole('checkbox', { name: 'Gravity', exact: true });
  const angle = page.getByRole('slider', { name: 'GravAngle' });
  if (!(await gravity.isChecked())) {
    await gravity.check();
    await angle.waitFor({ state: 'visible' });
  }
  assert.equal(await angle.isEnabled(), true);
  await gravity.uncheck();
  await angle.waitFor({ state: 'hidden', timeout: 15000 });
  assert.equal(await page.getByRole('slider', { name: 'Gravity', exact: true }).count(), 0);
  assert.equal(await page.getByRole('spinbutton', { name: 'GravAngle' }).count(), 0);
  await gravity.check();
  await angle.waitFor({ state: 'visible', timeout: 15000 });
  assert.equal(await angle.isEnabled(), true);

  // Reflections' intensity needs the light as well as its own switch.
  await page.getByRole('tab', { name: 'Light' }).click();
  const light = page.getByRole('checkbox', { name: 'Light', exact: true });
  if (!(await light.isChecked())) await light.check();
  const reflections = page.getByRole('checkbox', { name: 'Reflections' });
  await reflections.waitFor({ state: 'visible', timeout: 15000 });
  if (!(await reflections.isChecked())) await reflections.check();
  const intensity = page.getByRole('slider', { name: 'Ref Intensity' });
  await intensity.waitFor({ state: 'visible', timeout: 15000 });
  await light.uncheck();
  await intensity.waitFor({ state: 'hidden', timeout: 15000 });
  await reflections.waitFor({ state: 'hidden', timeout: 15000 });
  await light.check();
  await intensity.waitFor({ state: 'visible', timeout: 15000 });
  // The plug-in freezes none of its controls here, so nothing shown is greyed.
  assert.equal(await page.locator('.control.disabled').count(), 0);
  await page.screenshot({ path: path.join(shots, 'studio-hidden.png') });
  await page.close();
});

test('the viewer shows the server\'s exact pixels, whether a picture came whole or as its changed pixels', async () => {
  const page = await openPage();
  const matches = () => page.evaluate(async () => {
    const response = await studioFetch('/api/frame');
    const version = Number(response.headers.get('X-Version'));
    const rgb = new Uint8Array(await response.arrayBuffer());
    const canvas = document.getElementById('picture');
    if (Number(canvas.dataset.version) !== version) return { stale: true };
    const shown = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    let differing = 0;
    for (let p = 0; p < canvas.width * canvas.height; ++p)
      if (shown[p * 4] !== rgb[p * 3] || shown[p * 4 + 1] !== rgb[p * 3 + 1] || shown[p * 4 + 2] !== rgb[p * 3 + 2]) ++differing;
    return { differing, pixels: rgb.length / 3 };
  });
  const settle = async () => {
    for (let i = 0; i < 50; ++i) {
      const result = await matches();
      if (!result.stale) return result;
      await page.waitForTimeout(100);
    }
    return { stale: true };
  };
  assert.deepEqual(await settle(), { differing: 0, pixels: 320 * 180 });
  // A slider changes only the bubbles: the page gets just those pixels.
  const sent = [];
  page.on('response', (response) => {
    if (response.url().includes('/api/frame?base=')) sent.push(response.headers()['x-base'] !== undefined);
  });
  await page.getByRole('tab', { name: 'Light' }).click();
  const slider = page.getByRole('slider', { name: 'Light Inten' });
  await slider.focus();
  for (let i = 0; i < 3; ++i) {
    const version = await page.evaluate(() => Number(document.getElementById('picture').dataset.version));
    await page.keyboard.press('PageUp');
    await page.waitForFunction((v) => Number(document.getElementById('picture').dataset.version) > v, version,
      { timeout: 15000 });
    assert.deepEqual(await settle(), { differing: 0, pixels: 320 * 180 });
  }
  assert.ok(sent.includes(true), `no picture came as changes (${JSON.stringify(sent)})`);
  // The next frame comes whole (the scene moves) and is exact too.
  const version = await page.evaluate(() => Number(document.getElementById('picture').dataset.version));
  await page.getByRole('button', { name: 'Next frame' }).click();
  await page.waitForFunction((v) => Number(document.getElementById('picture').dataset.version) > v, version,
    { timeout: 15000 });
  assert.deepEqual(await settle(), { differing: 0, pixels: 320 * 180 });
  await page.close();
});
