// fizzle-studio against other pages and misbehaving clients: a page served
// from another port of 127.0.0.1 in the same browser, and requests meant
// to hold the server (slow, oversized, special files, huge ranges, an
// open question).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import http from 'node:http';
import net from 'node:net';
import { closeSync, existsSync, mkdirSync, openSync, readFileSync, ftruncateSync, rmSync, writeFileSync } from 'node:fs';
import { execFileSync } from 'node:child_process';
import path from 'node:path';
import { startStudio, stopStudio, launchBrowser, makeWorkDir } from './studio_harness.mjs';

let studio, browser, work;

before(async () => {
  work = makeWorkDir();
  mkdirSync(path.join(work, 'renders'));
  studio = await startStudio(work, ['--size', '320x180', '--preset', 'Basic']);
  browser = await launchBrowser();
});

after(async () => {
  await browser?.close();
  await stopStudio(studio);
  rmSync(work, { recursive: true, force: true });
});

// Scripts may name the token in the address, as the printed address does.
const withToken = (base, address, token) => `${base}${address}${address.includes('?') ? '&' : '?'}token=${token}`;
const call = (address, options = {}) => fetch(withToken(studio.base, address, studio.token), options);
const post = (address, body) => call(address, { method: 'POST', body: typeof body === 'string' ? body : JSON.stringify(body) });
const controls = async () => (await (await call('/api/controls')).json()).controls;
const controlNumber = async (name) => (await controls()).find((c) => c.name === name).number;

// A raw request on a socket: resolves to the answer's first line, or '' when the server closed without one.
function rawRequest(text, { wait = 10000 } = {}) {
  return new Promise((resolve) => {
    const socket = net.connect(Number(new URL(studio.base).port), '127.0.0.1');
    let answer = '';
    const timer = setTimeout(() => { socket.destroy(); resolve(answer.split('\r\n')[0]); }, wait);
    socket.on('data', (data) => { answer += data; });
    socket.on('close', () => { clearTimeout(timer); resolve(answer.split('\r\n')[0]); });
    socket.on('error', () => {});
    socket.write(text);
  });
}

// --- origin and links --------------------------------------------------------

test('a page on another port of 127.0.0.1 can neither change the studio nor learn its token', async () => {
  const seen = [];
  const foreign = http.createServer((request, response) => {
    seen.push({ url: request.url, cookie: request.headers.cookie || '' });
    if (request.url !== '/') { response.writeHead(204).end(); return; }
    const studioBase = studio.base;
    // What such a page can try: plain requests the browser sends without
    // asking (with the cookies of 127.0.0.1), a form, an image, a call
    // with the token header (which needs the studio's consent first), and
    // the same with the token itself in the address, as if it had leaked.
    response.writeHead(200, { 'Content-Type': 'text/html' }).end(`<!doctype html><title>elsewhere</title>
<iframe name="sink"></iframe>
<form id="form" method="POST" action="${studioBase}/api/setup/save" target="sink" enctype="text/plain">
<input name='{"path":"formed.json","x":"' value='"}'></form>
<script>
(async () => {
  const tries = [];
  const attempt = (p) => tries.push(p.then(() => 'sent', () => 'blocked'));
  attempt(fetch('${studioBase}/api/setup/save', { method: 'POST', mode: 'no-cors', credentials: 'include', body: '{"path":"stolen.json"}' }));
  attempt(fetch('${studioBase}/api/set', { method: 'POST', mode: 'no-cors', credentials: 'include', body: '{"number":16,"value":3}' }));
  attempt(fetch('${studioBase}/api/set?token=${studio.token}', { method: 'POST', mode: 'no-cors', body: '{"number":16,"value":4}' }));
  attempt(fetch('${studioBase}/api/setup/save?token=${studio.token}', { method: 'POST', mode: 'no-cors', body: '{"path":"leaked.json"}' }));
  attempt(fetch('${studioBase}/api/set', { method: 'POST', headers: { 'X-Fizzle-Token': '${studio.token}' }, body: '{"number":16,"value":5}' }));
  attempt(fetch('${studioBase}/api/state', { credentials: 'include' }).then((r) => r.text()));
  document.getElementById('form').submit();
  const image = new Image();
  image.src = '${studioBase}/api/file?path=secret.txt&token=${studio.token}';
  await Promise.all(tries);
  await new Promise((done) => setTimeout(done, 1000));
  await fetch('/done', { credentials: 'include' });
})();
</script>`);
  });
  await new Promise((done) => foreign.listen(0, '127.0.0.1', done));
  writeFileSync(path.join(work, 'secret.txt'), 'private\n');
  const density = await controlNumber('Density');
  const before = (await controls()).find((c) => c.number === density).value;
  try {
    // The studio's own page first, so that its cookies are in the browser.
    const own = await browser.newPage();
    await own.goto(studio.url);
    await own.waitForSelector('body[data-ready=true]', { timeout: 30000 });
    const page = await browser.newPage();
    await page.goto(`http://127.0.0.1:${foreign.address().port}/`);
    for (let i = 0; i < 100 && !seen.some((item) => item.url === '/done'); ++i) await new Promise((done) => setTimeout(done, 100));
    assert.ok(seen.some((item) => item.url === '/done'), 'the foreign page did not finish');
    for (const item of seen) assert.ok(!item.cookie.includes(studio.token), `the foreign server got the token: ${item.cookie}`);
    await page.close();
    // The studio's page still works, in the same browser, after all that,
    // and after a reload; its help pages open in a tab of their own.
    await own.reload();
    await own.waitForSelector('body[data-ready=true]', { timeout: 30000 });
    const [help] = await Promise.all([browser.waitForEvent('page'),
      own.evaluate(() => { window.open('/help/bubbles.htm', '_blank', 'noopener'); })]);
    await help.waitForLoadState();
    assert.doesNotMatch(await help.content(), /forbidden/);
    await help.close();
    await own.close();
  } finally {
    foreign.close();
  }
  for (const name of ['stolen.json', 'leaked.json', 'formed.json'])
    assert.equal(existsSync(path.join(work, name)), false, name);
  assert.equal((await controls()).find((c) => c.number === density).value, before);
});

test('only the studio\'s own address and the token reach it; setups are saved only as setups', async () => {
  const port = new URL(studio.base).port;
  // A name of another site pointed at this address is not the studio.
  const rebound = await rawRequest(`GET /api/state HTTP/1.1\r\nHost: attacker.example:${port}\r\nX-Fizzle-Token: ${studio.token}\r\n\r\n`);
  assert.match(rebound, / 403 /);
  assert.equal((await fetch(`${studio.base}/api/state`, { headers: { Cookie: `fizzle_studio_page_${port}=x` } })).status, 403);
  assert.equal((await fetch(`${studio.base}/api/state?token=${studio.token}`, { headers: { Origin: 'http://127.0.0.1:1' } })).status, 403);
  assert.equal((await call('/api/state')).status, 200);
  assert.equal((await fetch(`${studio.base}/api/state`, { headers: { 'X-Fizzle-Token': studio.token } })).status, 200);

  writeFileSync(path.join(work, 'notes.json'), '["not a setup"]\n');
  writeFileSync(path.join(work, 'notes.txt'), 'notes\n');
  const refused = await post('/api/setup/save', { path: 'notes.json' });
  assert.equal(refused.status, 400);
  assert.match((await refused.json()).error, /not a setup/);
  assert.equal((await post('/api/setup/save', { path: 'notes.txt' })).status, 400);
  assert.equal(readFileSync(path.join(work, 'notes.json'), 'utf8'), '["not a setup"]\n');
  assert.equal(readFileSync(path.join(work, 'notes.txt'), 'utf8'), 'notes\n');
  assert.equal((await post('/api/setup/save', { path: 'mine.json' })).status, 200);
  assert.equal((await post('/api/setup/save', { path: 'mine.json' })).status, 200, 'a setup may be saved again');
  assert.equal((await post('/api/command', { setup: 'notes.json', output: 'renders/f.####.png', first: 1, last: 2 })).status, 400);
});

// --- stalls --------------------------------------------------------------------

test('requests that could hold the studio are refused or bounded, and it answers meanwhile', async () => {
  // A range no render needs is refused at once; so is nonsense for the command line.
  const huge = await post('/api/render', { output: 'renders/f.####.ppm', first: 1, last: 2000000000 });
  assert.equal(huge.status, 400);
  assert.equal((await post('/api/command', { setup: 'a.json', output: 'renders/f.####.png', first: -5, last: -2147483648 })).status, 400);
  assert.equal((await post('/api/set', { number: 16.7, value: 3 })).status, 400);
  assert.equal((await post('/api/set', { number: 4294967312, value: 3 })).status, 400);

  // Bodies: declared too large, or chunked past the limit, are refused before they are read.
  assert.match(await rawRequest(`POST /api/set HTTP/1.1\r\nHost: 127.0.0.1:${new URL(studio.base).port}\r\n` +
    `Cookie: fizzle_studio_token=${studio.token}\r\nX-Fizzle-Token: ${studio.token}\r\nContent-Length: 300000000\r\n\r\n{"number":16,`), / 413 /);
  assert.match(await rawRequest(`POST /api/set HTTP/1.1\r\nHost: 127.0.0.1:${new URL(studio.base).port}\r\n` +
    `Cookie: fizzle_studio_token=${studio.token}\r\nX-Fizzle-Token: ${studio.token}\r\nTransfer-Encoding: chunked\r\n\r\n10000\r\n${'x'.repeat(65536)}\r\n`), / 411 /);

  // Names that are not UTF-8 get a clean refusal, never the exception's text.
  const odd = await call('/api/file?path=%FF%FE.json');
  assert.equal(odd.status, 400);
  assert.equal(odd.headers.get('EXCEPTION_WHAT'), null);
  assert.match((await odd.json()).error, /UTF-8/);
  writeFileSync(Buffer.concat([Buffer.from(`${work}/`), Buffer.from([0x6f, 0xff, 0x2e, 0x6a, 0x73, 0x6f, 0x6e])]), '{}');
  assert.equal((await call('/api/files?dir=&ext=.json')).status, 200);

  // FIFOs are refused without waiting for a writer, and the plug-in stays free.
  execFileSync('mkfifo', [path.join(work, 'pipe.json'), path.join(work, 'pipe.amp')]);
  assert.equal((await post('/api/setup/load', { path: 'pipe.json' })).status, 400);
  assert.equal((await post('/api/import', { path: 'pipe.amp' })).status, 400);
  assert.equal((await call('/api/file?path=pipe.json')).status, 400);
  assert.equal((await call('/api/controls')).status, 200);
});

test('a large file is streamed, not held in memory', async () => {
  const file = path.join(work, 'big.raw');
  const fd = openSync(file, 'w');
  ftruncateSync(fd, 512 * 1024 * 1024);
  closeSync(fd);
  const peak = () => Number(readFileSync(`/proc/${studio.child.pid}/status`, 'utf8').match(/VmHWM:\s+(\d+)/)[1]) * 1024;
  const before = peak();
  const response = await call('/api/file?path=big.raw');
  let bytes = 0;
  for await (const chunk of response.body) bytes += chunk.length;
  assert.equal(bytes, 512 * 1024 * 1024);
  assert.ok(peak() - before < 64 * 1024 * 1024, `peak memory grew by ${(peak() - before) >> 20} MB`);
});

test('slow clients without the token do not starve the page', async () => {
  const port = Number(new URL(studio.base).port);
  const slow = [];
  for (let i = 0; i < 40; ++i) {
    const socket = net.connect(port, '127.0.0.1');
    socket.on('error', () => {});
    slow.push(socket);
  }
  const drip = setInterval(() => { for (const socket of slow) if (!socket.destroyed) socket.write('G'); }, 200);
  try {
    await new Promise((done) => setTimeout(done, 1000));
    const started = Date.now();
    const answer = await call('/api/state', { signal: AbortSignal.timeout(5000) });
    assert.equal(answer.status, 200);
    assert.ok(Date.now() - started < 3000, `answered after ${Date.now() - started} ms`);
  } finally {
    clearInterval(drip);
    for (const socket of slow) socket.destroy();
  }
});

test('a question left open, with many changes waiting behind it, leaves the studio answering', async () => {
  const reset = await controlNumber('Reset');
  const pressed = post('/api/press', { number: reset });
  let question;
  for (let i = 0; i < 100 && !question; ++i) {
    question = (await (await call('/api/state')).json()).question;
    if (!question) await new Promise((done) => setTimeout(done, 50));
  }
  assert.ok(question, 'no question was asked');
  const waiting = [];
  for (let i = 0; i < 12; ++i) waiting.push(post('/api/set', { number: 16, value: 20 + i }));
  await new Promise((done) => setTimeout(done, 300));
  const started = Date.now();
  assert.equal((await call('/api/state', { signal: AbortSignal.timeout(5000) })).status, 200);
  assert.equal((await post('/api/confirm', { id: question.id, yes: false })).status, 200);
  assert.ok(Date.now() - started < 3000);
  assert.equal((await pressed).status, 200);
  const statuses = (await Promise.all(waiting)).map((answer) => answer.status);
  assert.ok(statuses.every((status) => status === 200 || status === 503), statuses.join(' '));
});

test('a render of a long range is followed cheaply, cancelled as cancelled, and SIGTERM stops the studio at once', async () => {
  const ownWork = makeWorkDir();
  const own = await startStudio(ownWork, ['--size', '64x36']);
  const ownCall = (address, body) => fetch(withToken(own.base, address, own.token), {
    method: body ? 'POST' : 'GET', body: body && JSON.stringify(body) });
  try {
    const started = await ownCall('/api/render', { output: 'f.#######.ppm', first: 1, last: 1000000 });
    assert.equal(started.status, 200, await started.clone().text());
    const before = Date.now();
    for (let i = 0; i < 5; ++i) assert.equal((await ownCall('/api/state')).status, 200);
    assert.ok(Date.now() - before < 3000);
    await ownCall('/api/render/cancel', {});
    let render;
    for (let i = 0; i < 100 && (!render || render.running); ++i) {
      render = (await (await ownCall('/api/state')).json()).render;
      await new Promise((done) => setTimeout(done, 50));
    }
    assert.equal(render.outcome, 'cancelled');
    await ownCall('/api/render', { output: 'g.#######.ppm', first: 1, last: 1000000 });
    const stopping = Date.now();
    assert.deepEqual(await stopStudio(own), { code: 0, signal: null });
    assert.ok(Date.now() - stopping < 5000);
  } finally {
    await stopStudio(own);
    rmSync(ownWork, { recursive: true, force: true });
  }
});
