// fizzle-studio's interactive figures at 1280x720, measured in the page:
// slider change to the new frame 90 shown ("Basic"), playback as fast as
// possible ("Basic", then "Soap"), and overlay redraws and pictures a second
// while a handle is dragged. Run after `make test` has
// installed the browser tests' packages:  node bench/studio_bench.mjs [build]
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const buildDir = path.resolve(process.argv[2] || path.join(import.meta.dirname, '..', 'build'));
process.env.FIZZLE_BUILD_DIR = buildDir;
const { startStudio, stopStudio, launchBrowser, makeWorkDir, emitterMiddle } =
  await import(pathToFileURL(path.join(buildDir, 'tests', 'studio', 'studio_harness.mjs')));

const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];

const studio = await startStudio(makeWorkDir(), ['--size', '1280x720', '--preset', 'Basic']);
const browser = await launchBrowser();
try {
  const page = await browser.newPage();
  await page.goto(studio.url);
  await page.waitForSelector('body[data-ready=true]', { timeout: 60000 });
  // Frame 90: a change must show frame 90 of a render with it, not a step on.
  await page.locator('#frame-number').fill('90');
  await page.locator('#frame-number').press('Enter');
  await page.waitForFunction(() => document.getElementById('busy').hidden &&
    document.getElementById('frame-number').value === '90', null, { timeout: 120000 });
  await page.waitForTimeout(500);
  await page.getByRole('tab', { name: 'Light' }).click();

  // From the slider's input event to the new picture drawn on the canvas.
  const latencies = [];
  for (let i = 0; i < 12; ++i) {
    latencies.push(await page.evaluate((value) => new Promise((resolve) => {
      const canvas = document.getElementById('picture');
      const slider = document.querySelector('input[type=range]#control-102');
      const old = canvas.dataset.version;
      const start = performance.now();
      const watch = new MutationObserver(() => {
        if (canvas.dataset.version !== old) { watch.disconnect(); resolve(performance.now() - start); }
      });
      watch.observe(canvas, { attributes: true });
      slider.value = String(value);
      slider.dispatchEvent(new Event('input', { bubbles: true }));
      slider.dispatchEvent(new Event('change', { bubbles: true }));
    }), 40 + i * 10));
    await page.waitForTimeout(150);
  }
  console.log(`slider change -> new frame in the page: median ${median(latencies).toFixed(0)} ms, ` +
    `best ${Math.min(...latencies).toFixed(0)} ms, worst ${Math.max(...latencies).toFixed(0)} ms (${latencies.length} changes)`);

  await page.locator('#play-fast').check();
  await page.getByRole('button', { name: 'Play' }).click();
  await page.waitForTimeout(6000);
  const rate = Number(await page.locator('#fps').getAttribute('data-rate'));
  await page.getByRole('button', { name: 'Pause' }).click();
  await page.waitForTimeout(500);
  console.log(`playback "Basic": ${rate.toFixed(1)} frames/s over 6 s`);

  await page.getByRole('button', { name: 'Fit' }).click();
  await page.waitForTimeout(300);
  const handle = await emitterMiddle(page);
  // Pointer events as a mouse sends them, 100 a second, straight into the
  // page: what is measured is the studio's round trip, not the test driver's.
  const drag = await page.evaluate(({ x, y }) => new Promise((resolve) => {
    const port = document.getElementById('viewport');
    const overlay = document.getElementById('overlay');
    const redraws = () => Number(overlay.dataset.redraws || 0);
    const canvas = document.getElementById('picture');
    let pictures = 0;
    const counter = new MutationObserver(() => ++pictures);
    counter.observe(canvas, { attributes: true, attributeFilter: ['data-version'] });
    const send = (type, px, py, buttons) => port.dispatchEvent(new PointerEvent(type, {
      bubbles: true, clientX: px, clientY: py, button: 0, buttons, pointerId: 1, pointerType: 'mouse',
      pressure: buttons ? 0.5 : 0,
    }));
    send('pointermove', x, y, 0);
    send('pointerdown', x, y, 1);
    const before = redraws();
    const started = performance.now();
    let step = 0;
    const timer = setInterval(() => {
      ++step;
      send('pointermove', x + 40 * Math.sin(step / 10), y - 100 - 60 * Math.sin(step / 15), 1);
      const seconds = (performance.now() - started) / 1000;
      if (seconds >= 4) {
        clearInterval(timer);
        send('pointerup', x, y - 100, 0);
        counter.disconnect();
        resolve({ redraws: redraws() - before, pictures, seconds, moves: step });
      }
    }, 10);
  }), handle);
  console.log(`handle drag: ${(drag.redraws / drag.seconds).toFixed(1)} overlay redraws/s, ` +
    `${(drag.pictures / drag.seconds).toFixed(1)} pictures/s (${drag.moves} pointer moves in ${drag.seconds.toFixed(1)} s)`);

  // "Soap" from its first frame.
  await page.getByRole('tab', { name: 'Bubbles' }).click();
  await page.getByRole('combobox', { name: 'Demos' }).selectOption({ label: 'Soap' });
  await page.waitForFunction(async () => (await (await studioFetch('/api/controls')).json())
    .controls.find((c) => c.name === 'Demos').value === 1);
  await page.locator('#frame-number').fill('1');
  await page.locator('#frame-number').press('Enter');
  await page.waitForTimeout(1500);
  await page.getByRole('button', { name: 'Play' }).click();
  await page.waitForTimeout(6000);
  const soap = Number(await page.locator('#fps').getAttribute('data-rate'));
  await page.getByRole('button', { name: 'Pause' }).click();
  console.log(`playback "Soap": ${soap.toFixed(1)} frames/s over 6 s`);
} finally {
  await browser.close();
  await stopStudio(studio);
}
