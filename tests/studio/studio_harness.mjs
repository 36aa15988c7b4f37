// Starts fizzle-studio and Debian's chromium for the browser tests, and
// stops both whatever happens.
import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

export const buildDir = process.env.FIZZLE_BUILD_DIR || path.resolve(import.meta.dirname, '../../build');
export const studioPath = path.join(buildDir, 'fizzle-studio');

// Starts the studio in workDir on a free port; resolves once it prints its address.
export function startStudio(workDir, args = [], timeoutMs = 60000) {
  return new Promise((resolve, reject) => {
    const child = spawn(studioPath, ['--port', '0', '--processors', '2', ...args], {
      cwd: workDir, env: { ...process.env, FIZZLE_NO_PAUSE: '1' }, stdio: ['ignore', 'pipe', 'pipe'],
    });
    let out = '', err = '';
    const timer = setTimeout(() => { child.kill('SIGKILL'); reject(new Error(`studio did not start:\n${err}`)); }, timeoutMs);
    child.stderr.on('data', (data) => { err += data; });
    child.stdout.on('data', (data) => {
      out += data;
      const found = out.match(/Fizzle Studio: (http:\/\/[^\s]+)/);
      if (found) {
        clearTimeout(timer);
        const url = new URL(found[1]);
        resolve({
          child, url: found[1], base: url.origin, token: url.searchParams.get('token'),
          stderr: () => err,
          exited: new Promise((done) => child.on('exit', (code, signal) => done({ code, signal }))),
        });
      }
    });
    child.on('error', (error) => { clearTimeout(timer); reject(error); });
    child.on('exit', (code) => { clearTimeout(timer); reject(new Error(`studio exited with ${code}:\n${err}`)); });
  });
}

export async function stopStudio(studio, timeoutMs = 20000) {
  if (!studio || studio.child.exitCode !== null) return studio && studio.exited;
  studio.child.kill('SIGTERM');
  const timer = setTimeout(() => studio.child.kill('SIGKILL'), timeoutMs);
  const result = await studio.exited;
  clearTimeout(timer);
  return result;
}

// A browser context with a fresh profile of its own; close() removes the profile.
export async function launchBrowser(options = {}) {
  const profile = mkdtempSync(path.join(tmpdir(), 'fizzle-chromium-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env.FIZZLE_CHROMIUM || '/usr/bin/chromium',
    headless: true,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
    viewport: { width: 1600, height: 900 },
    timeout: 60000,
    ...options,
  });
  const close = context.close.bind(context);
  context.close = async () => { await close().catch(() => {}); rmSync(profile, { recursive: true, force: true }); };
  return context;
}

export function makeWorkDir() {
  return mkdtempSync(path.join(tmpdir(), 'fizzle-studio-work-'));
}

// Where the emitter's middle handle is on the screen: halfway along the
// emitter, whose ends the four position controls give in percent of the frame.
export function emitterMiddle(page) {
  return page.evaluate(() => {
    const value = (name) => Number(document.querySelector(`[aria-label="${name}"]`).value);
    const canvas = document.getElementById('picture');
    const box = canvas.getBoundingClientRect();
    const zoom = box.width / canvas.width;
    const x = (canvas.width * (value('Left X') + value('Right X'))) / 200;
    const y = (canvas.height * (value('Left Y') + value('Right Y'))) / 200;
    return { x: box.left + x * zoom, y: box.top + (canvas.height - y) * zoom };
  });
}
