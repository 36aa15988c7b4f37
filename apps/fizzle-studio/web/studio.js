// Fizzle Studio's page: controls, viewer, timeline and panels over the
// studio's /api calls. Plain script, no build step.
'use strict';

const $ = (id) => document.getElementById(id);
const CURSORS = { 1: 'default', 14: 'grabbing', 20: 'grab' };

const view = {
  width: 0, height: 0, zoom: 1, panX: 0, panY: 0,
  pictureVersion: 0, version: 0, lastMessage: 0,
  frame: 1, first: 1, last: 100, keys: {},
  controls: new Map(), // number -> { info, element, inputs }
  playing: false, question: null,
  edits: 0, editedAt: new Map(), // number -> the count of user changes when it was last changed
};

// --- calls ---------------------------------------------------------------

// The token from the address the studio printed, kept for this tab by this
// origin alone (a page on another port cannot read it), so that a reload
// still has it. Every call carries it in a header, which a page from
// elsewhere cannot add to its requests.
const TOKEN = (() => {
  const given = new URLSearchParams(location.search).get('token');
  if (given) sessionStorage.setItem('fizzle-studio-token', given);
  return sessionStorage.getItem('fizzle-studio-token') || '';
})();

function studioFetch(path, options = {}) {
  return fetch(path, { ...options, headers: { ...options.headers, 'X-Fizzle-Token': TOKEN } });
}

async function call(path, body) {
  const options = body === undefined ? {} :
    { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body) };
  const response = await studioFetch(path, options);
  const answer = await response.json().catch(() => ({}));
  if (!response.ok) {
    const error = new Error(answer.error || `${path}: ${response.status}`);
    error.status = response.status;
    throw error;
  }
  return answer;
}

// Runs an action, showing its refusal as a notification instead of failing.
async function act(path, body) {
  try {
    const answer = await call(path, body);
    await refresh(answer);
    return answer;
  } catch (error) {
    notify(error.message, 'error');
    return null;
  }
}

function notify(text, kind = 'message') {
  const toast = document.createElement('div');
  toast.className = kind;
  toast.textContent = text;
  $('toasts').append(toast);
  setTimeout(() => toast.remove(), 5000);
}

// --- picture and overlay -----------------------------------------------------

// One picture request at a time: a newer version asked for meanwhile is
// fetched next, so the viewer never falls behind and never fetches twice.
const pictures = { loading: null, wanted: 0 };

function showPicture(version) {
  pictures.wanted = Math.max(pictures.wanted, version);
  if (!pictures.loading) {
    pictures.loading = (async () => {
      try {
        while (view.pictureVersion < pictures.wanted) if (!(await fetchPicture())) break;
      } finally {
        pictures.loading = null;
      }
    })();
  }
  return pictures.loading;
}

// Writes the server's RGB bytes, whole or as runs of changed pixels, into
// the RGBA picture the page keeps; false when they do not fit it.
function applyPicture(image, bytes, changes) {
  // One 32-bit store a pixel (bytes R, G, B, A in memory: little-endian words).
  const words32 = new Uint32Array(image.data.buffer, image.data.byteOffset, image.width * image.height);
  const copy = (from, pixel, count) => {
    if (from + count * 3 > bytes.length || pixel + count > words32.length) return false;
    for (let i = from, o = pixel, end = pixel + count; o < end; i += 3, ++o)
      words32[o] = 0xff000000 | (bytes[i + 2] << 16) | (bytes[i + 1] << 8) | bytes[i];
    return true;
  };
  if (!changes) return bytes.length === image.width * image.height * 3 && copy(0, 0, image.width * image.height);
  const words = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  let at = 0, pixel = 0;
  while (at + 8 <= bytes.length) {
    pixel += words.getUint32(at, true);
    const count = words.getUint32(at + 4, true);
    if (!copy(at + 8, pixel, count)) return false;
    at += 8 + count * 3;
    pixel += count;
  }
  return at === bytes.length;
}

// The frame into the canvas, as changes from the one shown when the server
// still has that; false when there was none.
async function fetchPicture() {
  const base = view.image ? view.pictureVersion : 0;
  const response = await studioFetch(`/api/frame?base=${base}`).catch(() => null);
  if (!response || !response.ok) return false;
  const version = Number(response.headers.get('X-Version'));
  if (response.status === 204) return false;
  const width = Number(response.headers.get('X-Width'));
  const height = Number(response.headers.get('X-Height'));
  const changes = response.headers.has('X-Base');
  const bytes = new Uint8Array(await response.arrayBuffer());
  if (!width || !height) return false;
  if (changes && Number(response.headers.get('X-Base')) !== view.pictureVersion) return false;
  if (!view.image || view.image.width !== width || view.image.height !== height) {
    if (changes) return false;
    view.image = new ImageData(width, height);
  }
  if (!applyPicture(view.image, bytes, changes)) {
    if (!changes) return false;
    view.image = null;  // ask for the whole picture instead
    return fetchPicture();
  }
  const canvas = $('picture');
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
    const first = view.width === 0;
    view.width = width;
    view.height = height;
    if (first) zoomFit(); else placeStage();
  }
  if (!view.context) view.context = canvas.getContext('2d', { alpha: false });
  view.context.putImageData(view.image, 0, 0);
  view.pictureVersion = Math.max(view.pictureVersion, version);
  canvas.dataset.version = String(version);
  return true;
}

async function fetchOverlay() {
  const answer = await call(`/api/overlay?zoom=${view.zoom}`).catch(() => null);
  if (answer) drawOverlay(answer.overlay);
}

// The plug-in draws in viewer pixels, y up; SVG's y runs down.
function drawOverlay(primitives) {
  const svg = $('overlay');
  const width = view.width * view.zoom, height = view.height * view.zoom;
  svg.setAttribute('width', width);
  svg.setAttribute('height', height);
  svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
  const ns = 'http://www.w3.org/2000/svg';
  const parts = [];
  for (const primitive of primitives) {
    const points = [];
    for (let i = 0; i + 1 < primitive.points.length; i += 2)
      points.push([primitive.points[i], height - primitive.points[i + 1]]);
    if (primitive.mode === 'points') {
      for (const [x, y] of points) {
        const dot = document.createElementNS(ns, 'rect');
        dot.setAttribute('x', x - 1); dot.setAttribute('y', y - 1);
        dot.setAttribute('width', 2); dot.setAttribute('height', 2);
        dot.setAttribute('fill', primitive.colour);
        parts.push(dot);
      }
      continue;
    }
    let shape;
    if (primitive.mode === 'lines') {
      shape = document.createElementNS(ns, 'path');
      let d = '';
      for (let i = 0; i + 1 < points.length; i += 2)
        d += `M${points[i][0]} ${points[i][1]}L${points[i + 1][0]} ${points[i + 1][1]}`;
      shape.setAttribute('d', d);
    } else {
      shape = document.createElementNS(ns, primitive.mode === 'polygon' ? 'polygon' : 'polyline');
      shape.setAttribute('points', points.map((p) => p.join(',')).join(' '));
    }
    shape.setAttribute('stroke', primitive.colour);
    shape.setAttribute('fill', primitive.mode === 'polygon' ? primitive.colour : 'none');
    if (primitive.mode === 'polygon') shape.setAttribute('fill-opacity', '0.25');
    shape.setAttribute('stroke-width', '1');
    shape.setAttribute('vector-effect', 'non-scaling-stroke');
    parts.push(shape);
  }
  svg.replaceChildren(...parts);
  svg.dataset.primitives = String(primitives.length);
}

// --- zoom and pan ---------------------------------------------------------------

function placeStage() {
  const canvas = $('picture');
  canvas.style.width = `${view.width * view.zoom}px`;
  canvas.style.height = `${view.height * view.zoom}px`;
  $('stage').style.transform = `translate(${view.panX}px, ${view.panY}px)`;
  $('zoom-shown').textContent = `${Math.round(view.zoom * 100)}%`;
}

function setZoom(zoom, centreX, centreY) {
  const port = $('viewport').getBoundingClientRect();
  if (centreX === undefined) { centreX = port.width / 2; centreY = port.height / 2; }
  zoom = Math.min(16, Math.max(0.05, zoom));
  // Keep the picture point under the centre where it is.
  const imageX = (centreX - view.panX) / view.zoom, imageY = (centreY - view.panY) / view.zoom;
  view.zoom = zoom;
  view.panX = centreX - imageX * zoom;
  view.panY = centreY - imageY * zoom;
  placeStage();
  fetchOverlay();
}

function zoomFit() {
  const port = $('viewport').getBoundingClientRect();
  if (!view.width || !port.width) return;
  view.zoom = Math.min(port.width / view.width, port.height / view.height);
  view.panX = (port.width - view.width * view.zoom) / 2;
  view.panY = (port.height - view.height * view.zoom) / 2;
  placeStage();
  fetchOverlay();
}

// --- pen --------------------------------------------------------------------------

// Samples go one at a time; moves waiting behind a busy call collapse into the latest.
const pen = { queue: [], sending: false, down: false, panning: null, controlsDue: null };

function penSample(event, pressure) {
  const rect = $('picture').getBoundingClientRect();
  return {
    x: (event.clientX - rect.left) / view.zoom,
    y: view.height - (event.clientY - rect.top) / view.zoom,
    pressure, zoom: view.zoom, move: pressure > 0 && event.type === 'pointermove',
  };
}

function queuePen(sample) {
  const last = pen.queue[pen.queue.length - 1];
  if (last && (last.hover || last.move) && (sample.hover || sample.move)) pen.queue.pop();
  pen.queue.push(sample);
  sendPen();
}

async function sendPen() {
  if (pen.sending) return;
  pen.sending = true;
  while (pen.queue.length) {
    const sample = pen.queue.shift();
    try {
      const answer = await call('/api/pen', { x: sample.x, y: sample.y, pressure: sample.pressure, zoom: sample.zoom });
      drawOverlay(answer.overlay);
      $('viewport').style.cursor = CURSORS[answer.cursor] || 'crosshair';
      // The overlay goes on with the next sample while the picture comes.
      if (answer.picture > view.pictureVersion) showPicture(answer.picture);
      // A drag moves controls with every sample; their fields follow a few times a second.
      if (answer.updates && answer.updates.length && !pen.controlsDue) {
        pen.controlsDue = setTimeout(() => { pen.controlsDue = null; loadControls(); }, pen.down ? 200 : 0);
      }
      view.version = Math.max(view.version, answer.version);
      $('overlay').dataset.redraws = String(Number($('overlay').dataset.redraws || 0) + 1);
    } catch (error) {
      notify(error.message, 'error');
    }
  }
  pen.sending = false;
}

function setUpPen() {
  const port = $('viewport');
  port.addEventListener('pointerdown', (event) => {
    port.focus();
    if (event.button === 1 || event.altKey) {
      pen.panning = { x: event.clientX - view.panX, y: event.clientY - view.panY };
      port.setPointerCapture(event.pointerId);
      return;
    }
    if (event.button !== 0) return;
    pen.down = true;
    port.setPointerCapture(event.pointerId);
    queuePen(penSample(event, event.pressure > 0 ? event.pressure : 0.5));
  });
  port.addEventListener('pointermove', (event) => {
    if (pen.panning) {
      view.panX = event.clientX - pen.panning.x;
      view.panY = event.clientY - pen.panning.y;
      placeStage();
      return;
    }
    if (!view.width) return;
    const sample = penSample(event, pen.down ? (event.pressure > 0 ? event.pressure : 0.5) : 0);
    sample.hover = !pen.down;
    queuePen(sample);
  });
  const release = (event) => {
    if (pen.panning) { pen.panning = null; return; }
    if (!pen.down) return;
    pen.down = false;
    queuePen(penSample(event, 0));
  };
  port.addEventListener('pointerup', release);
  port.addEventListener('pointercancel', release);
  port.addEventListener('wheel', (event) => {
    event.preventDefault();
    const rect = port.getBoundingClientRect();
    setZoom(view.zoom * (event.deltaY < 0 ? 1.25 : 0.8), event.clientX - rect.left, event.clientY - rect.top);
  }, { passive: false });
  port.addEventListener('keydown', (event) => {
    if (event.key === '+' || event.key === '=') setZoom(view.zoom * 1.25);
    else if (event.key === '-') setZoom(view.zoom * 0.8);
    else if (event.key === '0') zoomFit();
  });
  $('zoom-fit').onclick = zoomFit;
  $('zoom-1').onclick = () => setZoom(1);
  $('zoom-2').onclick = () => setZoom(2);
  window.addEventListener('resize', () => placeStage());
}

// --- controls ------------------------------------------------------------------------

// A widget sends its newest value once the previous one is answered, so a
// dragged slider never queues up stale renders.
function sender(number) {
  let pending = null, busy = false;
  return async function send(value) {
    view.editedAt.set(number, ++view.edits);
    pending = value;
    if (busy) return;
    busy = true;
    while (pending !== null) {
      const next = pending;
      pending = null;
      await act('/api/set', { number, value: next });
    }
    busy = false;
  };
}

function makeControl(info) {
  const box = document.createElement('div');
  box.className = 'control';
  box.dataset.number = info.number;
  box.dataset.kind = info.kind;
  const id = `control-${info.number}`;
  const label = document.createElement('label');
  label.htmlFor = id;
  label.textContent = info.name;
  const send = sender(info.number);
  const inputs = {};
  switch (info.kind) {
    case 'Float':
    case 'Int': {
      const row = document.createElement('div');
      row.className = 'row';
      const slider = document.createElement('input');
      slider.type = 'range';
      slider.id = id;
      const number = document.createElement('input');
      number.type = 'number';
      number.setAttribute('aria-label', info.name);
      for (const input of [slider, number]) {
        input.min = info.min; input.max = info.max;
        input.step = info.kind === 'Int' ? Math.max(1, info.step) : 'any';
      }
      slider.addEventListener('input', () => { number.value = slider.value; send(Number(slider.value)); });
      number.addEventListener('change', () => {
        if (number.value === '' || !Number.isFinite(Number(number.value))) return;
        send(Number(number.value));
      });
      row.append(slider, number);
      box.append(label, row);
      Object.assign(inputs, { slider, number });
      break;
    }
    case 'Boolean': {
      const box2 = document.createElement('input');
      box2.type = 'checkbox';
      box2.id = id;
      box2.addEventListener('change', () => send(box2.checked ? 'on' : 'off'));
      const row = document.createElement('div');
      row.className = 'row';
      row.append(box2, label);
      box.append(row);
      inputs.check = box2;
      break;
    }
    case 'Push': {
      const button = document.createElement('button');
      button.type = 'button';
      button.id = id;
      button.textContent = info.name;
      button.addEventListener('click', () => pressButton(info));
      box.append(button);
      inputs.button = button;
      break;
    }
    case 'Pup': {
      const select = document.createElement('select');
      select.id = id;
      info.entries.forEach((entry, index) => select.add(new Option(entry, String(index))));
      select.addEventListener('change', () => send(String(Number(select.value) + 1)));
      box.append(label, select);
      inputs.select = select;
      break;
    }
    case 'Color': {
      const colour = document.createElement('input');
      colour.type = 'color';
      colour.id = id;
      colour.addEventListener('input', () => send(colour.value.toUpperCase()));
      box.append(label, colour);
      inputs.colour = colour;
      break;
    }
    default: {
      const text = document.createElement('input');
      text.type = 'text';
      text.id = id;
      text.addEventListener('change', () => send(text.value));
      box.append(label, text);
      inputs.text = text;
    }
  }
  return { info, element: box, inputs };
}

function showValue(entry, info, staleValue = false) {
  const { inputs } = entry;
  // Hidden controls leave their slot empty, as in the host; disabled ones stay, greyed.
  entry.element.hidden = !!info.hidden;
  entry.element.classList.toggle('disabled', !info.enabled);
  for (const input of Object.values(inputs)) input.disabled = !info.enabled;
  if (staleValue) return;
  entry.info = info;
  const focused = document.activeElement;
  const skip = (input) => input === focused && input.type !== 'checkbox' && input.tagName !== 'SELECT';
  if (inputs.slider) {
    if (!skip(inputs.slider)) inputs.slider.value = info.value;
    if (!skip(inputs.number)) inputs.number.value = Number(info.value.toFixed(4));
  }
  if (inputs.check) inputs.check.checked = info.value !== 0;
  if (inputs.select && !skip(inputs.select)) inputs.select.value = String(info.value);
  if (inputs.colour && !skip(inputs.colour)) inputs.colour.value = info.value.toLowerCase();
  if (inputs.text && !skip(inputs.text)) inputs.text.value = info.value;
}

async function pressButton(info) {
  if (info.name === 'Help') {
    window.open('/help/bubbles.htm', '_blank', 'noopener');
    return;
  }
  if (info.name === 'Import Amplitude File') {
    const asked = await act('/api/import', {});
    if (!asked) return;
    const file = await chooseFile('Import Amplitude File', asked.extension || '');
    if (file) await act('/api/import', { path: file });
    return;
  }
  await act('/api/press', { number: info.number });
}

function buildControls(answer) {
  const tabs = $('tabs'), pages = $('pages');
  tabs.replaceChildren();
  pages.replaceChildren();
  $('clips').replaceChildren($('clips').querySelector('legend') || document.createElement('legend'));
  $('clips').querySelector('legend').textContent = 'Clips';
  const panels = [];
  for (let page = 0; page < 4; ++page) {
    const title = answer.pages[String(page)] || `Page ${page + 1}`;
    const tab = document.createElement('button');
    tab.type = 'button';
    tab.setAttribute('role', 'tab');
    tab.id = `tab-${page}`;
    tab.setAttribute('aria-controls', `page-${page}`);
    tab.textContent = title;
    const panel = document.createElement('div');
    panel.setAttribute('role', 'tabpanel');
    panel.id = `page-${page}`;
    panel.setAttribute('aria-labelledby', tab.id);
    tab.addEventListener('click', () => selectTab(page));
    tab.addEventListener('keydown', (event) => {
      const step = { ArrowRight: 1, ArrowLeft: 3 }[event.key];
      if (step) { selectTab((page + step) % 4); $(`tab-${(page + step) % 4}`).focus(); }
    });
    tabs.append(tab);
    pages.append(panel);
    panels.push(panel);
  }
  const choices = $('key-control');
  choices.replaceChildren();
  view.controls.clear();
  for (const info of answer.controls) {
    const entry = makeControl(info);
    view.controls.set(info.number, entry);
    if (info.page < 0) {
      $('clips').append(entry.element);
    } else {
      entry.element.style.gridRow = String((info.slot % 5) + 1);
      entry.element.style.gridColumn = String(Math.floor(info.slot / 5) + 1);
      panels[info.page].append(entry.element);
      if (['Float', 'Int', 'Boolean', 'Color', 'Pup'].includes(info.kind))
        choices.add(new Option(`${info.name} (${info.number})`, String(info.number)));
    }
    showValue(entry, info);
  }
  selectTab(Number(sessionStorage.getItem('fizzle-tab') || 0));
}

function selectTab(page) {
  for (let i = 0; i < 4; ++i) {
    const tab = $(`tab-${i}`);
    if (!tab) return;
    tab.setAttribute('aria-selected', String(i === page));
    tab.tabIndex = i === page ? 0 : -1;
    $(`page-${i}`).hidden = i !== page;
  }
  sessionStorage.setItem('fizzle-tab', String(page));
}

async function loadControls() {
  // A listing asked for before the user's latest change of a control shows
  // its old value: putting that back would undo what the user just did.
  const asked = view.edits;
  const answer = await call('/api/controls').catch(() => null);
  if (!answer) return;
  if (view.controls.size !== answer.controls.length) {
    buildControls(answer);
    return;
  }
  for (const info of answer.controls) {
    const entry = view.controls.get(info.number);
    if (entry) showValue(entry, info, (view.editedAt.get(info.number) || 0) > asked);
  }
}

// --- state, messages and questions ---------------------------------------------------------

async function refresh(answer = {}) {
  // The picture first: on a busy machine the other calls would slow it down.
  if (answer.picture > view.pictureVersion) await showPicture(answer.picture);
  await Promise.all([loadControls(), fetchOverlay()]);
  if (answer.version) view.version = Math.max(view.version, answer.version);
}

function showTimeline(state) {
  view.first = state.first;
  view.last = state.last;
  view.frame = state.frame;
  const scrubber = $('scrubber');
  scrubber.min = state.first;
  scrubber.max = state.last;
  if (document.activeElement !== scrubber) scrubber.value = state.frame;
  if (document.activeElement !== $('frame-number')) $('frame-number').value = state.frame;
  if (document.activeElement !== $('range-first')) $('range-first').value = state.first;
  if (document.activeElement !== $('range-last')) $('range-last').value = state.last;
  view.keys = state.keys;
  const marks = [];
  const frames = new Set();
  for (const keys of Object.values(state.keys)) for (const [frame] of keys) frames.add(frame);
  const span = Math.max(1, state.last - state.first);
  for (const frame of frames) {
    if (frame < state.first || frame > state.last) continue;
    const mark = document.createElement('span');
    mark.style.left = `${((frame - state.first) / span) * 100}%`;
    marks.push(mark);
  }
  $('key-marks').replaceChildren(...marks);
  showKeys();
}

function showKeys() {
  const keys = view.keys[$('key-control').value];
  $('key-list').textContent = keys && keys.length ?
    `Keys: ${keys.map(([frame, value]) => `frame ${frame} = ${Number(value.toFixed(3))}`).join(', ')}` : 'No keys';
}

function showMessages(messages) {
  for (const message of messages) {
    view.lastMessage = Math.max(view.lastMessage, message.id);
    const item = document.createElement('li');
    item.className = message.kind;
    item.textContent = message.text;
    $('log').append(item);
    item.scrollIntoView({ block: 'nearest' });
    if (message.kind !== 'confirm') notify(message.text, message.kind);
  }
}

function showQuestion(question) {
  const dialog = $('confirm-dialog');
  if (!question) {
    if (dialog.open) dialog.close('gone');
    view.question = null;
    return;
  }
  if (view.question === question.id) return;
  view.question = question.id;
  $('confirm-text').textContent = question.text;
  dialog.returnValue = '';
  dialog.onclose = () => {
    if (dialog.returnValue === 'gone') return;
    call('/api/confirm', { id: question.id, yes: dialog.returnValue === 'yes' }).catch(() => {});
  };
  dialog.showModal();
  $('confirm-no').focus();
}

function showBusy(busy) {
  $('busy').hidden = !busy;
  if (!busy) return;
  $('busy-label').textContent = busy.what;
  $('busy-progress').max = busy.total;
  $('busy-progress').value = busy.done;
}

function showRender(render) {
  $('render-cancel').disabled = !render.running;
  $('render-start').disabled = !!render.running;
  if (render.total) {
    $('render-progress').max = render.total;
    $('render-progress').value = render.done;
  }
  $('render-status').textContent = render.running ? `${render.done} of ${render.total} frames` :
    render.outcome ? `${render.outcome}: ${render.done} of ${render.total} frames` : '';
}

let polling = false, refreshing = false;
async function poll() {
  if (polling) return;
  polling = true;
  try {
    const state = await call(`/api/state?after=${view.lastMessage}`);
    showMessages(state.messages);
    showQuestion(state.question);
    showBusy(state.busy);
    showRender(state.render);
    showTimeline(state);
    // Not awaited: a refresh waits for the plug-in, which may itself be
    // waiting for the answer to a question this poll has to show.
    if (state.version !== view.version && !view.playing && !pen.down && !refreshing) {
      view.version = state.version;
      refreshing = true;
      refresh(state).finally(() => { refreshing = false; });
    }
  } catch (error) {
    if (error.status === 403) notify('The studio refused the page: open the address it printed', 'error');
  } finally {
    polling = false;
  }
}

// --- timeline --------------------------------------------------------------------------------

async function goTo(frame) {
  const answer = await act('/api/goto', { frame });
  if (answer) {
    view.frame = answer.frame;
    $('frame-number').value = answer.frame;
    $('scrubber').value = answer.frame;
  }
  return answer;
}

async function play() {
  if (view.playing) { view.playing = false; return; }
  view.playing = true;
  $('play').textContent = '❚❚ Pause';
  $('play').setAttribute('aria-label', 'Pause');
  let shown = 0;
  const started = performance.now();
  const advance = () => call('/api/goto', { frame: view.frame >= view.last ? view.first : view.frame + 1 })
    .catch((error) => { notify(error.message, 'error'); return null; });
  // The next frame renders while this one travels to the page and is drawn.
  let next = advance();
  while (view.playing) {
    const answer = await next;
    if (!answer) break;
    view.frame = answer.frame;
    $('frame-number').value = answer.frame;
    $('scrubber').value = answer.frame;
    const shownFrame = showPicture(answer.picture);
    fetchOverlay();
    if (view.playing) next = advance();
    await shownFrame;
    ++shown;
    const seconds = (performance.now() - started) / 1000;
    $('fps').textContent = `${(shown / seconds).toFixed(1)} frames/s`;
    $('fps').dataset.rate = String(shown / seconds);
  }
  const last = await next;
  if (last) {
    view.frame = last.frame;
    $('frame-number').value = last.frame;
    $('scrubber').value = last.frame;
    await showPicture(last.picture);
  }
  view.playing = false;
  $('play').textContent = '▶ Play';
  $('play').setAttribute('aria-label', 'Play');
  loadControls();
}

function setUpTimeline() {
  $('play').onclick = play;
  $('step-forward').onclick = () => goTo(Math.min(view.frame + 1, view.last));
  $('step-back').onclick = () => goTo(Math.max(view.frame - 1, view.first));
  $('frame-number').addEventListener('change', () => goTo(Number($('frame-number').value)));
  $('scrubber').addEventListener('change', () => goTo(Number($('scrubber').value)));
  const range = () => act('/api/range', { first: Number($('range-first').value), last: Number($('range-last').value) });
  $('range-first').addEventListener('change', range);
  $('range-last').addEventListener('change', range);
}

// --- files, setups, hand-off and render ---------------------------------------------------------

// The working directory's files, filtered by extension; resolves to a path or null.
function chooseFile(title, extension) {
  return new Promise((resolve) => {
    const dialog = $('file-dialog');
    const list = $('file-list');
    let folder = '';
    $('file-title').textContent = title;
    async function show(dir) {
      const answer = await call(`/api/files?dir=${encodeURIComponent(dir)}&ext=${encodeURIComponent(extension)}`)
        .catch((error) => { notify(error.message, 'error'); return null; });
      if (!answer) return;
      folder = dir;
      $('file-folder').textContent = dir || '(working directory)';
      list.replaceChildren();
      if (dir) list.add(new Option('.. (up)', '..'));
      for (const entry of answer.entries)
        list.add(new Option(entry.directory ? `${entry.name}/` : entry.name, entry.name));
      list.dataset.folders = JSON.stringify(answer.entries.filter((e) => e.directory).map((e) => e.name));
      if (list.options.length) list.selectedIndex = 0;
    }
    const folders = () => JSON.parse(list.dataset.folders || '[]');
    const open = () => {
      const name = list.value;
      if (name === '..') { show(folder.split('/').slice(0, -1).join('/')); return true; }
      if (folders().includes(name)) { show(folder ? `${folder}/${name}` : name); return true; }
      return false;
    };
    list.ondblclick = () => { if (!open() && list.value) dialog.close('open'); };
    list.onkeydown = (event) => {
      if (event.key === 'Enter') { event.preventDefault(); if (!open() && list.value) dialog.close('open'); }
    };
    $('file-open').onclick = (event) => { if (open()) event.preventDefault(); };
    dialog.onclose = () => {
      const name = list.value;
      resolve(dialog.returnValue === 'open' && name && name !== '..' ? (folder ? `${folder}/${name}` : name) : null);
    };
    dialog.returnValue = '';
    show('').then(() => { dialog.showModal(); list.focus(); });
  });
}

function setUpPanels() {
  $('setup-load').onclick = async () => {
    const file = await chooseFile('Load setup', '.json');
    if (!file) return;
    if (await act('/api/setup/load', { path: file })) {
      $('setup-path').value = file;
      notify(`Loaded ${file}`);
    }
  };
  $('setup-save').onclick = async () => {
    const file = $('setup-path').value.trim();
    if (await act('/api/setup/save', { path: file })) notify(`Saved ${file}`);
  };
  $('copy-command').onclick = async () => {
    const answer = await act('/api/command', {
      setup: $('setup-path').value.trim(), output: $('render-output').value.trim(),
      first: view.first, last: view.frame,
    });
    if (!answer) return;
    $('command').value = answer.command;
    $('command-panel').open = true;
    try {
      await navigator.clipboard.writeText(answer.command);
      notify('Command line copied; the setup was saved beside it');
    } catch (error) {
      notify('Command line shown below (the clipboard refused it)');
    }
  };
  $('render-start').onclick = () => act('/api/render', {
    output: $('render-output').value.trim(),
    first: Number($('render-first').value), last: Number($('render-last').value),
  });
  $('render-cancel').onclick = () => act('/api/render/cancel', {});
  $('key-set').onclick = () => act('/api/key', { number: Number($('key-control').value) });
  $('key-clear').onclick = () => act('/api/unkey', { number: Number($('key-control').value) });
  $('key-control').addEventListener('change', showKeys);
  $('channels').addEventListener('toggle', async () => {
    if (!$('channels').open) return;
    const folders = await call('/api/channels').catch(() => []);
    const tree = document.createElement('ul');
    for (const folder of folders) {
      const item = document.createElement('li');
      item.textContent = folder.folder || '(top)';
      const inner = document.createElement('ul');
      for (const control of folder.controls) {
        const leaf = document.createElement('li');
        leaf.textContent = control.name + (control.animated ? ' (animated)' : '');
        leaf.dataset.number = control.number;
        inner.append(leaf);
      }
      item.append(inner);
      tree.append(item);
    }
    $('channel-tree').replaceChildren(tree);
  });
}

async function start() {
  // The token is kept for this tab: keep it out of the address bar and history.
  if (location.search.includes('token=')) history.replaceState(null, '', '/');
  setUpPen();
  setUpTimeline();
  setUpPanels();
  const answer = await call('/api/controls');
  buildControls(answer);
  await showPicture(1);
  await fetchOverlay();
  await poll();
  setInterval(poll, 250);
  document.body.dataset.ready = 'true';
}

start().catch((error) => notify(error.message, 'error'));
