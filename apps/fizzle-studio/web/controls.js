// The plug-in's controls: one row each (label, slider, field, key), pages
// as tabs, values sent as the user changes them.
import { act, track, call } from './api.js';
import { $, view, notify } from './state.js';
import { chooseFile } from './panels.js';
import { overlayZoom } from './viewer.js';

// Names the plug-in leaves generic, as a person would say them; the
// plug-in's own title stays in the tooltip.
const EXPLAINED = {
  'TimeMaxSize': 'time to reach full size, in frames', 'Vel Dir': 'velocity direction, in degrees',
  'SwirlDens': 'swirl density', 'SwirlAmp': 'swirl amplitude', 'SwlMaxTim': 'swirl maximum time',
  'GravAngle': 'gravity angle, in degrees', 'ColourVar': 'colour variation', 'MonoVar': 'brightness variation',
  'Ref Intensity': 'reflection intensity', 'Light Inten': 'light intensity', 'Min. Bright': 'minimum brightness',
  'Glisten Tight': 'glisten tightness', 'Position Var': 'position variation', 'Velocity Var': 'velocity variation',
  'Bubble Size Var': 'bubble size variation', 'Left X': 'emitter left end, % of the width',
  'Left Y': 'emitter left end, % of the height', 'Right X': 'emitter right end, % of the width',
  'Right Y': 'emitter right end, % of the height',
};
const ANIMATABLE = ['Float', 'Int', 'Boolean', 'Color', 'Pup'];

export function displayName(info) {
  if (info.kind === 'Pup' && /^Pup \d+$/.test(info.name) && (info.entries || [])[0] === 'FULL') return 'Resolution';
  if (info.kind === 'String' && /^String \d+$/.test(info.name)) return `${String(info.value).replace(/^\d+:\s*/, '')} clip`;
  return info.name;
}

function tooltip(info) {
  const parts = [`Plug-in title: ${info.name}`];
  if (EXPLAINED[info.name]) parts.push(EXPLAINED[info.name]);
  if (info.min !== undefined) parts.push(`${info.min} to ${info.max}`);
  if (info.default !== undefined && info.kind !== 'Push') parts.push('double-click to reset');
  return parts.join(' · ');
}

// --- numbers typed by hand ---------------------------------------------------------

// + - * / and brackets over numbers, so "20*1.5" or "90-15" can be typed.
export function evaluate(text) {
  const tokens = String(text).replace(/,/g, '.').match(/\d*\.?\d+(?:e[+-]?\d+)?|[-+*/()]|\S/gi) || [];
  let at = 0;
  const peek = () => tokens[at];
  const number = () => {
    const token = tokens[at++];
    if (token === '-') return -number();
    if (token === '+') return number();
    if (token === '(') { const value = sum(); if (tokens[at++] !== ')') throw new Error('bracket'); return value; }
    const value = Number(token);
    if (token === undefined || !Number.isFinite(value)) throw new Error('number');
    return value;
  };
  const product = () => {
    let value = number();
    while (peek() === '*' || peek() === '/') value = tokens[at++] === '*' ? value * number() : value / number();
    return value;
  };
  const sum = () => {
    let value = product();
    while (peek() === '+' || peek() === '-') value = tokens[at++] === '+' ? value + product() : value - product();
    return value;
  };
  try {
    const value = sum();
    return at === tokens.length && Number.isFinite(value) ? value : null;
  } catch {
    return null;
  }
}

// --- sending ---------------------------------------------------------------------

// A widget sends its newest value once the previous one is answered, so a
// dragged slider never queues up stale renders. The first value of a
// gesture starts an undo step; the rest of the gesture joins it.
function sender(entry) {
  const number = entry.info.number;
  let pending = null, step = false, busy = null;
  entry.gestureOpen = false;
  return async function send(value) {
    view.editedAt.set(number, ++view.edits);
    if (!entry.gestureOpen) { entry.gestureOpen = true; step = true; }
    pending = value;
    if (busy) return busy;
    busy = track((async () => {
      try {
        while (pending !== null) {
          const next = pending, asStep = step;
          pending = null;
          step = false;
          const asked = view.edits;
          await act('/api/set', { number, value: next, step: asStep, zoom: overlayZoom() }, { asked });
        }
      } finally {
        busy = null; // in the same turn as the loop's last check: no value slips between
      }
    })());
    return busy;
  };
}

function endGesture(entry) { entry.gestureOpen = false; }

// A number for a slider control, put into its range; says so when it had to.
function settle(entry, value, typed) {
  const { info } = entry;
  if (value === null) {
    notify(`"${typed}" is not a number for "${displayName(info)}"; it stays ${Number(info.value.toFixed(4))}`, 'error');
    // Put back even while focused: the refused text must not look accepted.
    entry.inputs.number.value = Number(info.value.toFixed(4));
    return null;
  }
  if (info.kind === 'Int') value = Math.round(value);
  if (value < info.min || value > info.max) {
    const clamped = Math.min(info.max, Math.max(info.min, value));
    notify(`"${displayName(info)}" takes ${info.min} to ${info.max}: ${value} was set to ${clamped}`, 'error');
    value = clamped;
  }
  return value;
}

export async function resetControl(entry) {
  const { info } = entry;
  if (info.default === undefined) return;
  endGesture(entry);
  const value = info.kind === 'Pup' ? String(info.default + 1) : info.kind === 'Color' ? colourText(info.default) :
    info.kind === 'Boolean' ? (info.default ? 'on' : 'off') : info.default;
  await entry.send(value);
  endGesture(entry);
}

function colourText(word) {
  const hex = (v) => v.toString(16).padStart(2, '0').toUpperCase();
  return `#${hex(word & 0xff)}${hex((word >> 8) & 0xff)}${hex((word >> 16) & 0xff)}`;
}

// --- keys --------------------------------------------------------------------------

function keysOf(number) { return view.keys[String(number)] || []; }

export function keyHere(number) { return keysOf(number).some(([frame]) => frame === view.frame); }

export function toggleKey(entry) {
  const number = entry.info.number;
  return keyHere(number) ? act('/api/unkey', { number, here: true }) : act('/api/key', { number });
}

export async function jumpToKey(entry, direction) {
  const frames = keysOf(entry.info.number).map(([frame]) => frame).sort((a, b) => a - b);
  const target = direction > 0 ? frames.find((f) => f > view.frame) : frames.reverse().find((f) => f < view.frame);
  if (target === undefined) { notify(`"${displayName(entry.info)}" has no key ${direction > 0 ? 'after' : 'before'} frame ${view.frame}`); return; }
  const { goTo } = await import('./timeline.js');
  await goTo(target);
}

// The key buttons show whether each control has a key at this frame.
export function showKeyStates() {
  for (const entry of view.controls.values()) {
    const button = entry.inputs.key;
    if (!button) continue;
    const here = keyHere(entry.info.number), animated = keysOf(entry.info.number).length > 0;
    button.setAttribute('aria-pressed', String(here));
    button.classList.toggle('animated', animated);
    button.title = here ? `Remove the key at frame ${view.frame}` : `Set a key at frame ${view.frame}` +
      (animated ? ` (${keysOf(entry.info.number).length} keys; right-click for the next or previous)` : '');
  }
}

// --- a row's menu ----------------------------------------------------------------

function openMenu(entry, x, y) {
  closeMenu();
  const menu = document.createElement('div');
  menu.id = 'control-menu';
  menu.setAttribute('role', 'menu');
  menu.setAttribute('aria-label', displayName(entry.info));
  menu.style.left = `${x}px`;
  menu.style.top = `${y}px`;
  const items = [['Reset to default', () => resetControl(entry)]];
  if (entry.inputs.key) {
    items.push([keyHere(entry.info.number) ? 'Remove key at this frame' : 'Set key at this frame', () => toggleKey(entry)]);
    if (keysOf(entry.info.number).length) {
      items.push(['Previous key', () => jumpToKey(entry, -1)], ['Next key', () => jumpToKey(entry, 1)],
        ['Remove all keys', () => act('/api/unkey', { number: entry.info.number })]);
    }
  }
  for (const [text, run] of items) {
    const item = document.createElement('button');
    item.type = 'button';
    item.setAttribute('role', 'menuitem');
    item.textContent = text;
    item.onclick = () => { closeMenu(); run(); };
    menu.append(item);
  }
  menu.addEventListener('keydown', (event) => {
    const buttons = [...menu.querySelectorAll('button')];
    const at = buttons.indexOf(document.activeElement);
    if (event.key === 'Escape') { closeMenu(); entry.element.querySelector('input, select, button')?.focus(); }
    else if (event.key === 'ArrowDown') buttons[(at + 1) % buttons.length].focus();
    else if (event.key === 'ArrowUp') buttons[(at + buttons.length - 1) % buttons.length].focus();
    else return;
    event.preventDefault();
  });
  document.body.append(menu);
  menu.querySelector('button').focus();
  setTimeout(() => document.addEventListener('pointerdown', outside), 0);
}

function outside(event) { if (!event.target.closest('#control-menu')) closeMenu(); }

function closeMenu() {
  document.getElementById('control-menu')?.remove();
  document.removeEventListener('pointerdown', outside);
}

// --- widgets -------------------------------------------------------------------------

// Dragging a label or field sideways scrubs the value: a step a pixel,
// ten with Shift, a tenth with Ctrl.
function scrubbable(element, entry, slider, field) {
  element.addEventListener('pointerdown', (event) => {
    if (event.button !== 0 || !entry.info.enabled) return;
    const start = { x: event.clientX, value: entry.info.value, moved: false };
    const move = (moveEvent) => {
      const pixels = moveEvent.clientX - start.x;
      if (!start.moved && Math.abs(pixels) < 4) return;
      if (!start.moved) element.setPointerCapture(event.pointerId);
      start.moved = true;
      moveEvent.preventDefault();
      const scale = moveEvent.shiftKey ? 10 : moveEvent.ctrlKey ? 0.1 : 1;
      const step = entry.info.step || (entry.info.max - entry.info.min) / 500;
      let value = start.value + pixels * step * scale;
      value = Math.min(entry.info.max, Math.max(entry.info.min, entry.info.kind === 'Int' ? Math.round(value) : value));
      slider.value = value;
      field.value = Number(value.toFixed(4));
      entry.send(value);
    };
    const up = () => {
      element.removeEventListener('pointermove', move);
      element.removeEventListener('pointerup', up);
      element.removeEventListener('pointercancel', up);
      if (start.moved) endGesture(entry);
    };
    element.addEventListener('pointermove', move);
    element.addEventListener('pointerup', up);
    element.addEventListener('pointercancel', up);
  });
}

function makeControl(info) {
  const box = document.createElement('div');
  box.className = 'control';
  box.dataset.number = info.number;
  box.dataset.kind = info.kind;
  const id = `control-${info.number}`;
  const name = displayName(info);
  const label = document.createElement('label');
  label.htmlFor = id;
  label.textContent = name;
  label.title = tooltip(info);
  const entry = { info, element: box, inputs: {} };
  entry.send = sender(entry);
  const { inputs } = entry;
  switch (info.kind) {
    case 'Float':
    case 'Int': {
      const slider = document.createElement('input');
      slider.type = 'range';
      slider.id = id;
      slider.min = info.min; slider.max = info.max;
      slider.step = info.kind === 'Int' ? Math.max(1, info.step) : 'any';
      const field = document.createElement('input');
      field.type = 'text';
      field.className = 'field';
      field.inputMode = 'decimal';
      field.setAttribute('role', 'spinbutton');
      field.setAttribute('aria-label', name);
      field.setAttribute('aria-valuemin', info.min);
      field.setAttribute('aria-valuemax', info.max);
      field.title = `${info.min} to ${info.max}; arithmetic such as 20*1.5 is worked out`;
      slider.addEventListener('input', () => { field.value = slider.value; entry.send(Number(slider.value)); });
      slider.addEventListener('change', () => endGesture(entry));
      const commit = () => {
        const value = settle(entry, evaluate(field.value), field.value);
        if (value === null) return;
        field.value = Number(value.toFixed(4));
        if (value !== entry.info.value) entry.send(value);
        endGesture(entry);
      };
      field.addEventListener('change', commit);
      field.addEventListener('keydown', (event) => {
        if (event.key === 'Enter') { event.preventDefault(); commit(); return; }
        if (event.key === 'Escape') { field.value = Number(entry.info.value.toFixed(4)); return; }
        if (event.key !== 'ArrowUp' && event.key !== 'ArrowDown') return;
        event.preventDefault();
        const scale = event.shiftKey ? 10 : event.ctrlKey ? 0.1 : 1;
        const step = (info.step || 1) * scale * (event.key === 'ArrowUp' ? 1 : -1);
        const value = Math.min(info.max, Math.max(info.min, (evaluate(field.value) ?? entry.info.value) + step));
        field.value = Number(value.toFixed(4));
        slider.value = value;
        entry.send(value);
      });
      field.addEventListener('keyup', (event) => { if (event.key === 'ArrowUp' || event.key === 'ArrowDown') endGesture(entry); });
      scrubbable(label, entry, slider, field);
      box.append(label, slider, field);
      Object.assign(inputs, { slider, number: field });
      break;
    }
    case 'Boolean': {
      const check = document.createElement('input');
      check.type = 'checkbox';
      check.id = id;
      check.addEventListener('change', () => { entry.send(check.checked ? 'on' : 'off'); endGesture(entry); });
      const pair = document.createElement('span');
      pair.className = 'switch';
      pair.append(check, label);
      box.append(pair);
      inputs.check = check;
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
      info.entries.forEach((text, index) => select.add(new Option(text, String(index))));
      // An entry is applied when chosen (click, or Enter after the arrows),
      // not at each arrow: arrowing through "Demos" must not load each preset.
      let arrowed = false;
      const apply = () => {
        arrowed = false;
        if (Number(select.value) !== entry.info.value) { entry.send(String(Number(select.value) + 1)); endGesture(entry); }
      };
      select.addEventListener('keydown', (event) => {
        if (['ArrowUp', 'ArrowDown', 'PageUp', 'PageDown', 'Home', 'End'].includes(event.key)) arrowed = true;
        else if (event.key === 'Enter') { event.preventDefault(); apply(); }
        else if (event.key === 'Escape') { arrowed = false; showValue(entry, entry.info); }
      });
      select.addEventListener('mousedown', () => { arrowed = false; });
      select.addEventListener('change', () => { if (!arrowed) apply(); });
      select.addEventListener('blur', () => { if (arrowed) { arrowed = false; showValue(entry, entry.info); } });
      select.title = tooltip(info);
      box.append(label, select);
      inputs.select = select;
      break;
    }
    case 'Color': {
      const colour = document.createElement('input');
      colour.type = 'color';
      colour.id = id;
      colour.addEventListener('input', () => entry.send(colour.value.toUpperCase()));
      colour.addEventListener('change', () => endGesture(entry));
      box.append(label, colour);
      inputs.colour = colour;
      break;
    }
    default: {
      const text = document.createElement('input');
      text.type = 'text';
      text.id = id;
      text.addEventListener('change', () => { entry.send(text.value); endGesture(entry); });
      box.append(label, text);
      inputs.text = text;
    }
  }
  if (info.page >= 0 && ANIMATABLE.includes(info.kind)) {
    const key = document.createElement('button');
    key.type = 'button';
    key.className = 'key';
    key.textContent = '◆';
    key.setAttribute('aria-label', `Key ${name}`);
    key.setAttribute('aria-pressed', 'false');
    key.addEventListener('click', () => toggleKey(entry));
    box.append(key);
    inputs.key = key;
  }
  label.addEventListener('dblclick', (event) => { event.preventDefault(); resetControl(entry); });
  box.addEventListener('contextmenu', (event) => {
    if (info.kind === 'Push') return;
    event.preventDefault();
    openMenu(entry, event.clientX, event.clientY);
  });
  // The keyboard's way to the same menu.
  box.addEventListener('keydown', (event) => {
    if (event.key === 'ContextMenu' || (event.shiftKey && event.key === 'F10')) {
      event.preventDefault();
      const rect = box.getBoundingClientRect();
      openMenu(entry, rect.left + 20, rect.bottom);
    }
  });
  return entry;
}

export function showValue(entry, info, staleValue = false) {
  const { inputs } = entry;
  // Hidden controls leave the list, as in the host; disabled ones stay, greyed.
  entry.element.hidden = !!info.hidden;
  entry.element.classList.toggle('disabled', !info.enabled);
  for (const [kind, input] of Object.entries(inputs)) if (kind !== 'key') input.disabled = !info.enabled;
  if (staleValue) return;
  entry.info = info;
  const focused = document.activeElement;
  const skip = (input) => input === focused && input.type !== 'checkbox' && input.tagName !== 'SELECT';
  if (inputs.slider) {
    if (!skip(inputs.slider)) inputs.slider.value = info.value;
    if (!skip(inputs.number)) inputs.number.value = Number(info.value.toFixed(4));
    inputs.number.setAttribute('aria-valuenow', info.value);
  }
  if (inputs.check) inputs.check.checked = info.value !== 0;
  if (inputs.select && focused !== inputs.select) inputs.select.value = String(info.value);
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

export function buildControls(answer) {
  const tabs = $('tabs'), pages = $('pages');
  tabs.replaceChildren();
  pages.replaceChildren();
  $('clips').replaceChildren($('clips').querySelector('legend') || document.createElement('legend'));
  $('clips').querySelector('legend').textContent = 'Clips';
  const panels = [], titles = [];
  for (let page = 0; page < 4; ++page) {
    const title = answer.pages[String(page)] || `Page ${page + 1}`;
    titles.push(title);
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
  const offered = new Set();
  view.controls.clear();
  const ordered = [...answer.controls].sort((a, b) => a.page - b.page || a.slot - b.slot);
  for (const info of ordered) {
    const entry = makeControl(info);
    view.controls.set(info.number, entry);
    if (info.page < 0) {
      $('clips').append(entry.element);
    } else {
      panels[info.page].append(entry.element);
      // Each control once in the animation list, named with its page and kind where names repeat.
      const kind = info.kind === 'Boolean' ? 'switch' : info.kind === 'Pup' ? 'list' : info.kind === 'Color' ? 'colour' : 'value';
      const key = `${info.name}/${kind}`;
      if (ANIMATABLE.includes(info.kind) && !offered.has(key)) {
        offered.add(key);
        choices.add(new Option(`${displayName(info)} (${titles[info.page]}, ${kind})`, String(info.number)));
      }
    }
    showValue(entry, info);
  }
  selectTab(Number(sessionStorage.getItem('fizzle-tab') || 0));
  showKeyStates();
}

export function selectTab(page) {
  for (let i = 0; i < 4; ++i) {
    const tab = $(`tab-${i}`);
    if (!tab) return;
    tab.setAttribute('aria-selected', String(i === page));
    tab.tabIndex = i === page ? 0 : -1;
    $(`page-${i}`).hidden = i !== page;
  }
  sessionStorage.setItem('fizzle-tab', String(page));
}

export async function loadControls() {
  const asked = view.edits;
  const answer = await call('/api/controls').catch(() => null);
  if (answer) showControls(answer, asked);
}

// A listing asked for before the user's latest change of a control shows
// its old value: putting that back would undo what the user just did.
export function showControls(answer, asked) {
  if (view.controls.size !== answer.controls.length) {
    buildControls(answer);
    return;
  }
  for (const info of answer.controls) {
    const entry = view.controls.get(info.number);
    if (entry) showValue(entry, info, (view.editedAt.get(info.number) || 0) > asked);
  }
}
