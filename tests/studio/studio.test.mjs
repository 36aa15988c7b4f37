// fizzle-studio's page in a real browser: controls, viewer, dialogs,
// access rules and shutdown.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, writeFileSync, readFileSync, symlinkSync, existsSync } from 'node:fs';
import path from 'node:path';
import { buildDir, startStudio, stopStudio, launchBrowser, makeWorkDir, emitterMiddle } from './studio_harness.mjs';

const shots = process.env.FIZZLE_SCREENSHOT_DIR || path.join(buildDir, 'studio-screenshots');
mkdirSync(shots, { recursive: true });

let studio, browser, work;

before(async () => {
  work = makeWorkDir();
  studio = await startStudio(work, ['--size', '640x360', '--preset', 'Basic']);
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

// A digest of the viewer's pixels and the picture version they came from.
function viewerPixels(page) {
  return page.evaluate(() => {
    const canvas = document.getElementById('picture');
    const data = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
    let hash = 0;
    for (let i = 0; i < data.length; i += 7) hash = (hash * 31 + data[i]) | 0;
    return { hash, version: Number(canvas.dataset.version) };
  });
}

async function waitForNewPicture(page, version) {
  await page.waitForFunction((old) => Number(document.getElementById('picture').dataset.version) > old,
    version, { timeout: 30000 });
}

function controlValues(page) {
  return page.evaluate(() => [...document.querySelectorAll('.control')].map((box) => {
    const input = box.querySelector('input[type=number], input[type=checkbox], select, input[type=color]');
    return input ? (input.type === 'checkbox' ? input.checked : input.value) : null;
  }));
}

test('the page shows the plug-in\'s four pages as tabs and a labelled widget for every listed control', async () => {
  const listing = execFileSync(path.join(buildDir, 'fizzle-render'), ['--list-controls'], { encoding: 'utf8' });
  const listed = listing.split('\n').slice(1).filter(Boolean).map((line) => {
    const [, pageText, number, kind, rest] = line.match(/^(\S+)\s+(\d+)\s+(\S+)\s+(.*)$/);
    return { page: pageText === 'clip' ? -1 : Number(pageText), number: Number(number), kind, rest };
  });
  const page = await openPage();
  assert.deepEqual(await page.getByRole('tab').allTextContents(), ['Bubbles', 'Forces', 'Colour', 'Light']);
  const shown = await page.evaluate(() => [...document.querySelectorAll('.control')].map((box) => {
    const widget = document.getElementById(`control-${box.dataset.number}`);
    const label = widget.labels && widget.labels.length ? widget.labels[0].textContent : widget.textContent;
    const panel = box.closest('[role=tabpanel]');
    return { number: Number(box.dataset.number), kind: box.dataset.kind, label,
      page: panel ? Number(panel.id.slice(5)) : -1, tag: widget.tagName, type: widget.type };
  }));
  assert.equal(shown.length, listed.length);
  for (const control of listed) {
    const widget = shown.find((item) => item.number === control.number);
    assert.ok(widget, `control ${control.number} has no widget`);
    assert.equal(widget.kind, control.kind);
    assert.equal(widget.page, control.page, `control ${control.number} sits on the wrong page`);
    // Generic names are shown as a person would say them; the others as the plug-in titles them.
    const named = /^Pup \d+/.test(control.rest) ? 'Resolution' :
      control.kind === 'String' ? `${control.rest.match(/"\d+: ([^"]+)"/)[1]} clip` : null;
    if (named) assert.equal(widget.label, named, `control ${control.number}`);
    else assert.ok(control.rest.startsWith(widget.label), `control ${control.number}: label "${widget.label}"`);
    const expected = { Float: 'range', Int: 'range', Boolean: 'checkbox', Push: 'submit', Pup: 'select-one',
      Color: 'color', String: 'text' }[control.kind];
    assert.equal(widget.type === 'button' ? 'submit' : widget.type, expected, `control ${control.number}`);
  }
  // Keyboard: arrows move between the tabs.
  await page.getByRole('tab', { name: 'Bubbles' }).focus();
  await page.keyboard.press('ArrowRight');
  assert.equal(await page.getByRole('tab', { name: 'Forces' }).getAttribute('aria-selected'), 'true');
  assert.deepEqual(page.problems, []);
  await page.close();
});

test('moving "Light Inten" with the keyboard renders a new frame with other pixels', async () => {
  const page = await openPage();
  await page.getByRole('button', { name: 'Restart+PreRoll' }).first().click();
  await page.waitForTimeout(300);
  await page.getByRole('tab', { name: 'Light' }).click();
  const slider = page.getByRole('slider', { name: 'Light Inten' });
  const before = await viewerPixels(page);
  await slider.focus();
  for (let i = 0; i < 5; ++i) await page.keyboard.press('PageUp');
  await waitForNewPicture(page, before.version);
  await page.waitForTimeout(500);
  const afterMove = await viewerPixels(page);
  assert.notEqual(afterMove.hash, before.hash);
  assert.notEqual(await page.getByRole('spinbutton', { name: 'Light Inten' }).inputValue(), '50');
  await page.screenshot({ path: path.join(shots, 'studio-light.png') });
  await page.close();
});

test('choosing "Soap" in "Demos" changes the controls and the frame', async () => {
  const page = await openPage();
  const valuesBefore = await controlValues(page);
  const before = await viewerPixels(page);
  await page.getByRole('tab', { name: 'Bubbles' }).click();
  await page.getByRole('combobox', { name: 'Demos' }).selectOption({ label: 'Soap' });
  await waitForNewPicture(page, before.version);
  await page.waitForFunction(() => document.querySelector('#control-29').value === '1');
  await page.waitForTimeout(500);
  const valuesAfter = await controlValues(page);
  const changed = valuesAfter.filter((value, i) => value !== valuesBefore[i]).length;
  assert.ok(changed >= 3, `only ${changed} controls changed`);
  assert.notEqual((await viewerPixels(page)).hash, before.hash);
  await page.getByRole('combobox', { name: 'Demos' }).selectOption({ label: 'Basic' });
  await page.close();
});

test('Reset asks in a dialog and the plug-in gets the answer', async () => {
  const page = await openPage();
  await page.getByRole('tab', { name: 'Bubbles' }).click();
  const density = page.getByRole('spinbutton', { name: 'Density' });
  await density.fill('77');
  await density.press('Enter');
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.number === 16).value === 77);

  await page.getByRole('button', { name: 'Reset' }).first().click();
  const dialog = page.getByRole('dialog');
  await dialog.waitFor({ state: 'visible' });
  assert.match(await dialog.textContent(), /reset the current settings/);
  await page.screenshot({ path: path.join(shots, 'studio-confirm.png') });
  await dialog.getByRole('button', { name: 'No' }).click();
  await dialog.waitFor({ state: 'hidden' });
  await page.waitForTimeout(600);
  assert.equal(await density.inputValue(), '77');

  await page.getByRole('button', { name: 'Reset' }).first().click();
  await dialog.waitFor({ state: 'visible' });
  await dialog.getByRole('button', { name: 'Yes' }).click();
  await page.waitForFunction(() => document.querySelector('[aria-label=Density]').value !== '77', null, { timeout: 15000 });
  await page.close();
});

// Lit pixels of the viewer in the 16 rows around screen height y.
function litPixelsAround(page, y) {
  return page.evaluate((screenY) => {
    const canvas = document.getElementById('picture');
    const box = canvas.getBoundingClientRect();
    const row = Math.round((screenY - box.top) * (canvas.height / box.height));
    const top = Math.max(0, row - 8), bottom = Math.min(canvas.height, row + 8);
    const data = canvas.getContext('2d').getImageData(0, top, canvas.width, bottom - top).data;
    let lit = 0;
    for (let i = 0; i < data.length; i += 4) if (data[i] + data[i + 1] + data[i + 2] > 60) ++lit;
    return lit;
  }, y);
}

test('dragging the emitter\'s middle handle moves the emitter, and new bubbles are born there', async () => {
  // Over a black scene every lit pixel is a bubble.
  const dark = makeWorkDir();
  writeFileSync(path.join(dark, 'black.ppm'), Buffer.concat([Buffer.from('P6\n640 360\n255\n'), Buffer.alloc(640 * 360 * 3)]));
  const own = await startStudio(dark, ['--size', '640x360', '--preset', 'Basic', '--scene', 'black.ppm']);
  const page = await browser.newPage();
  try {
    await page.goto(own.url);
    await page.waitForSelector('body[data-ready=true]', { timeout: 30000 });
    await page.getByRole('button', { name: '1:1' }).click();
    await page.waitForTimeout(300);
    const emitter = () => emitterMiddle(page);
    const from = await emitter();
    const target = from.y - 120;
    const litBefore = { old: await litPixelsAround(page, from.y), fresh: await litPixelsAround(page, target) };
    const leftY = Number(await page.locator('[aria-label="Left Y"]').inputValue());
    await page.mouse.move(from.x, from.y);
    await page.mouse.down();
    for (let i = 1; i <= 8; ++i) await page.mouse.move(from.x, from.y - 15 * i);
    await page.mouse.up();
    await page.waitForFunction((y) => Math.abs(Number(document.querySelector('[aria-label="Left Y"]').value) - y) > 10,
      leftY, { timeout: 15000 });
    await page.waitForTimeout(500);
    const to = await emitter();
    assert.ok(Math.abs(to.y - target) < 12, `emitter at ${to.y}, expected near ${target}`);
    const drawn = await page.evaluate(() => [...document.querySelectorAll('#overlay path')].map((line) =>
      line.getAttribute('d').match(/-?[\d.]+/g).map(Number)));
    const box = await page.locator('#picture').boundingBox();
    assert.ok(drawn.some(([, y1, , y2]) => Math.abs(box.y + y1 - to.y) < 3 && Math.abs(box.y + y2 - to.y) < 3),
      'the overlay shows no line where the emitter went');

    for (let i = 0; i < 3; ++i) {
      const version = (await viewerPixels(page)).version;
      await page.getByRole('button', { name: 'Next frame' }).click();
      await waitForNewPicture(page, version);
    }
    const litAfter = { old: await litPixelsAround(page, from.y), fresh: await litPixelsAround(page, target) };
    const counts = JSON.stringify({ litBefore, litAfter });
    assert.ok(litBefore.fresh < 50 && litAfter.fresh > 300, `births near the new line: ${counts}`);
    assert.ok(litAfter.old < litBefore.old, `births still at the old line: ${counts}`);
  } finally {
    await page.close();
    await stopStudio(own);
  }
});

test('two pages on one studio show the same values and frame', async () => {
  const first = await openPage();
  const second = await openPage();
  await first.getByRole('tab', { name: 'Bubbles' }).click();
  const density = first.getByRole('spinbutton', { name: 'Density' });
  await density.fill('55');
  await density.press('Enter');
  await second.waitForFunction(() => document.querySelector('[aria-label=Density]').value === '55', null,
    { timeout: 10000 });
  const version = (await viewerPixels(first)).version;
  await first.getByRole('button', { name: 'Next frame' }).click();
  await waitForNewPicture(first, version);
  await second.waitForFunction((v) => Number(document.getElementById('picture').dataset.version) > v, version,
    { timeout: 10000 });
  await second.waitForTimeout(400);
  assert.equal((await viewerPixels(first)).hash, (await viewerPixels(second)).hash);
  assert.equal(await second.locator('#frame-number').inputValue(), await first.locator('#frame-number').inputValue());
  await first.close();
  await second.close();
});

test('requests without the token get 403; paths outside the working directory get 404 and change nothing', async () => {
  const get = (address, options) => fetch(`${studio.base}${address}`, options);
  assert.equal((await get('/')).status, 403);
  assert.equal((await get('/?token=0123')).status, 403);
  assert.equal((await get('/api/state', { headers: { Cookie: 'fizzle_studio_token=nope' } })).status, 403);
  assert.equal((await get('/api/press?token=wrong', { method: 'POST', body: '{"number":6}' })).status, 403);

  const t = `token=${studio.token}`;
  mkdirSync(path.join(work, 'inside'), { recursive: true });
  symlinkSync('/etc', path.join(work, 'inside', 'out'));
  const withToken = (address) => `${address}${address.includes('?') ? '&' : '?'}${t}`;
  for (const address of ['/api/files?dir=..', '/api/files?dir=/etc', '/api/files?dir=inside/out',
    '/api/file?path=../../etc/passwd', '/api/file?path=inside/out/passwd', '/static/..%2f..%2fsession.cpp',
    '/help/..%2f..%2fCMakeLists.txt'])
    assert.equal((await get(withToken(address))).status, 404, address);
  const post = (address, body) => get(`${address}?${t}`, { method: 'POST', body: typeof body === 'string' ? body : JSON.stringify(body) });
  for (const target of ['../escape.json', 'inside/out/escape.json', '/tmp/escape.json'])
    assert.equal((await post('/api/setup/save', { path: target })).status, 404, target);
  assert.equal(existsSync(path.join(work, '..', 'escape.json')), false);

  // Malformed or oversized requests are refused with a message and change nothing.
  const before = await (await get(`/api/controls?${t}`)).json();
  const bad = await post('/api/set', '{"number": 16, "value": ');
  assert.equal(bad.status, 400);
  assert.match((await bad.json()).error, /not a JSON object/);
  assert.equal((await post('/api/set', { number: 16, value: 1e9 })).status, 400);
  assert.equal((await post('/api/set', { number: 9999, value: 1 })).status, 400);
  assert.equal((await post('/api/set', { number: 16, value: 'x'.repeat(200000) })).status, 413);
  const afterBad = await (await get(`/api/controls?${t}`)).json();
  assert.deepEqual(afterBad.controls.map((c) => c.value), before.controls.map((c) => c.value));

  // A setup saved inside can be loaded again.
  assert.equal((await post('/api/setup/save', { path: 'inside/kept.json' })).status, 200);
  assert.equal((await post('/api/setup/load', { path: 'inside/kept.json' })).status, 200);
  const missing = await post('/api/setup/load', { path: 'inside/none.json' });
  assert.equal(missing.status, 404);
  assert.match((await missing.json()).error, /inside\/none.json/);
});

test('SIGTERM stops the studio cleanly and promptly, even with a question waiting for its answer', async () => {
  const own = await startStudio(makeWorkDir(), ['--size', '320x180']);
  const page = await browser.newPage();
  await page.goto(own.url);
  await page.waitForSelector('body[data-ready=true]', { timeout: 30000 });
  await page.getByRole('button', { name: 'Reset' }).first().click();
  await page.getByRole('dialog').waitFor({ state: 'visible' });
  const started = Date.now();
  const exit = await stopStudio(own);
  assert.deepEqual(exit, { code: 0, signal: null });
  assert.ok(Date.now() - started < 10000);
  assert.match(own.stderr(), /fizzle-studio: stopped/);
  await assert.rejects(fetch(`${own.base}/api/state?token=${own.token}`));
  await page.close();
});

test('"Copy command line" gives a fizzle-render command that renders exactly the frame on screen', async () => {
  const t = `token=${studio.token}`;
  const post = async (address, body) => {
    const response = await fetch(`${studio.base}${address}?${t}`, { method: 'POST', body: JSON.stringify(body) });
    assert.equal(response.status, 200, `${address}: ${await response.clone().text()}`);
    return response.json();
  };
  await post('/api/set', { number: 16, value: 35 });
  await post('/api/goto', { frame: 1 });
  await post('/api/goto', { frame: 4 });
  const shown = new Uint8Array(await (await fetch(`${studio.base}/api/frame?${t}`)).arrayBuffer());
  mkdirSync(path.join(work, 'hand'), { recursive: true });
  const { command } = await post('/api/command', { setup: 'hand/setup.json', output: 'hand/f.####.ppm', first: 1, last: 4 });
  assert.match(command, /--setup hand\/setup.json (--preroll )?--frames 1-4 -o 'hand\/f.####.ppm'$/);
  execFileSync('/bin/sh', ['-c', `${command} --quiet`], { cwd: work, stdio: 'ignore' });
  const file = readFileSync(path.join(work, 'hand', 'f.0004.ppm'));
  const header = file.subarray(0, 20).toString('latin1').match(/^P6\s+(\d+)\s+(\d+)\s+255\s/);
  const pixels = file.subarray(header[0].length);
  let differing = 0;
  for (let i = 0; i < Number(header[1]) * Number(header[2]); ++i)
    for (let c = 0; c < 3; ++c) if (pixels[i * 3 + c] !== shown[i * 3 + c]) { ++differing; break; }
  assert.equal(differing, 0);
});
