// The timeline: frame field, live scrubber, ruler with key ticks, transport
// keys and playback at the shot's rate.
import { act, call } from './api.js';
import { $, view, notify } from './state.js';
import { showPicture } from './pictures.js';
import { fetchOverlay } from './viewer.js';
import { loadControls, showKeyStates } from './controls.js';

function showFrame(frame) {
  view.frame = frame;
  if (document.activeElement !== $('frame-number')) $('frame-number').value = frame;
  if (!scrub.dragging) $('scrubber').value = frame;
  showKeyStates();
}

export async function goTo(frame) {
  frame = Math.min(view.last, Math.max(view.first, frame));
  const answer = await act('/api/goto', { frame });
  if (answer) showFrame(answer.frame);
  return answer;
}

// While the scrubber is dragged, the newest frame asked for is fetched once
// the one before it is shown, so the picture follows without a backlog.
const scrub = { wanted: null, busy: false, dragging: false };
async function scrubTo(frame) {
  scrub.wanted = frame;
  if (scrub.busy) return;
  scrub.busy = true;
  while (scrub.wanted !== null) {
    const next = scrub.wanted;
    scrub.wanted = null;
    if (next !== view.frame) await goTo(next);
  }
  scrub.busy = false;
}

export async function play() {
  if (view.playing) { view.playing = false; return; }
  view.playing = true;
  $('play').textContent = '❚❚ Pause';
  $('play').setAttribute('aria-label', 'Pause');
  let shown = 0, firstShown = 0;
  const advance = () => call('/api/goto', { frame: view.frame >= view.last ? view.first : view.frame + 1 })
    .catch((error) => { notify(error.message, 'error'); return null; });
  // The next frame renders while this one travels to the page and is drawn.
  let next = advance();
  while (view.playing) {
    const answer = await next;
    if (!answer) break;
    // At the shot's rate each frame waits for its time; as fast as possible, not.
    const rate = Number($('play-rate').value) || 25;
    // Each frame is due a frame's time after the one before, counted from the first shown.
    if (!$('play-fast').checked && shown > 0) {
      const due = firstShown + (shown * 1000) / rate;
      const wait = due - performance.now();
      if (wait > 0) await new Promise((resolve) => setTimeout(resolve, wait));
    }
    showFrame(answer.frame);
    const shownFrame = showPicture(answer.picture);
    fetchOverlay();
    if (view.playing) next = advance();
    await shownFrame;
    // Frames shown after the first, over the time since it was shown.
    if (++shown === 1) firstShown = performance.now();
    const seconds = (performance.now() - firstShown) / 1000;
    if (shown > 1) {
      // Not a live region: a rate read out at every frame would drown everything else.
      $('fps').textContent = `${((shown - 1) / seconds).toFixed(1)} frames/s`;
      $('fps').dataset.rate = String((shown - 1) / seconds);
    }
  }
  const last = await next;
  if (last) {
    showFrame(last.frame);
    await showPicture(last.picture);
  }
  view.playing = false;
  $('play').textContent = '▶ Play';
  $('play').setAttribute('aria-label', 'Play');
  loadControls();
}

// Frame numbers under the scrubber at a readable spacing, and a tick for
// every frame with a key.
export function drawRuler() {
  const ruler = $('ruler');
  const span = Math.max(1, view.last - view.first);
  const width = ruler.clientWidth || 400;
  const steps = [1, 2, 5, 10, 20, 25, 50, 100, 200, 250, 500, 1000, 2000, 5000, 10000];
  const every = steps.find((step) => (width * step) / span >= 48) || span;
  const parts = [];
  const at = (frame) => `${((frame - view.first) / span) * 100}%`;
  for (let frame = Math.ceil(view.first / every) * every; frame <= view.last; frame += every) {
    const mark = document.createElement('span');
    mark.className = 'number';
    mark.style.left = at(frame);
    mark.textContent = frame;
    parts.push(mark);
  }
  const keyed = new Set();
  for (const keys of Object.values(view.keys)) for (const [frame] of keys) keyed.add(frame);
  for (const frame of keyed) {
    if (frame < view.first || frame > view.last) continue;
    const tick = document.createElement('span');
    tick.className = 'key';
    tick.style.left = at(frame);
    parts.push(tick);
  }
  const signature = JSON.stringify([view.first, view.last, width, [...keyed].sort()]);
  if (ruler.dataset.signature === signature) return;
  ruler.dataset.signature = signature;
  ruler.replaceChildren(...parts);
}

export function showTimeline(state) {
  view.first = state.first;
  view.last = state.last;
  view.keys = state.keys;
  const scrubber = $('scrubber');
  scrubber.min = state.first;
  scrubber.max = state.last;
  if (!view.playing && !scrub.busy) showFrame(state.frame);
  if (document.activeElement !== $('range-first')) $('range-first').value = state.first;
  if (document.activeElement !== $('range-last')) $('range-last').value = state.last;
  drawRuler();
  showKeys();
  showKeyStates();
}

export function showKeys() {
  const keys = view.keys[$('key-control').value];
  $('key-list').textContent = keys && keys.length ?
    `Keys: ${keys.map(([frame, value]) => `frame ${frame} = ${Number(value.toFixed(3))}`).join(', ')}` : 'No keys';
}

// Space, arrows, Home and End drive the timeline wherever the focus is,
// except in a field or widget that uses those keys itself.
function transportKey(event) {
  if (event.ctrlKey || event.metaKey || event.altKey) return;
  const target = event.target;
  const own = target.closest && target.closest('input, select, textarea, [role=tab], [role=menu], dialog');
  const isButton = target.tagName === 'BUTTON';
  if (own || (isButton && (event.key === ' ' || event.key === 'Enter'))) return;
  const actions = {
    ' ': () => play(),
    ArrowRight: () => goTo(view.frame + (event.shiftKey ? 10 : 1)),
    ArrowLeft: () => goTo(view.frame - (event.shiftKey ? 10 : 1)),
    Home: () => goTo(view.first),
    End: () => goTo(view.last),
  };
  const action = actions[event.key];
  if (!action) return;
  event.preventDefault();
  if (view.playing && event.key !== ' ') view.playing = false;
  action();
}

export function setUpTimeline() {
  $('play').onclick = play;
  $('step-forward').onclick = () => goTo(view.frame + 1);
  $('step-back').onclick = () => goTo(view.frame - 1);
  $('go-first').onclick = () => goTo(view.first);
  $('go-last').onclick = () => goTo(view.last);
  $('frame-number').addEventListener('change', () => goTo(Number($('frame-number').value)));
  const scrubber = $('scrubber');
  scrubber.addEventListener('pointerdown', () => { scrub.dragging = true; });
  scrubber.addEventListener('pointerup', () => { scrub.dragging = false; });
  scrubber.addEventListener('input', () => scrubTo(Number(scrubber.value)));
  scrubber.addEventListener('change', () => { scrub.dragging = false; scrubTo(Number(scrubber.value)); });
  const range = () => act('/api/range', { first: Number($('range-first').value), last: Number($('range-last').value) });
  $('range-first').addEventListener('change', range);
  $('range-last').addEventListener('change', range);
  document.addEventListener('keydown', transportKey);
  new ResizeObserver(drawRuler).observe($('ruler'));
}
