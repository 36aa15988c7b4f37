// The viewer: zoom and pan, the plug-in's overlay, and the pen on its handles.
import { call } from './api.js';
import { $, view, notify } from './state.js';
import { showPicture } from './pictures.js';
import { loadControls } from './controls.js';

const CURSORS = { 1: 'default', 14: 'grabbing', 20: 'grab' };

// Below 1:1 the plug-in is asked for its overlay at 1:1 and the page scales
// it: the plug-in draws zoomed-out overlays at a gentler scale of its own,
// which would put the handles off the places where they are grabbed.
export function overlayZoom() { return Math.max(1, view.zoom); }

export async function fetchOverlay() {
  const answer = await call(`/api/overlay?zoom=${overlayZoom()}`).catch(() => null);
  if (answer) drawOverlay(answer.overlay);
}

// The plug-in draws in viewer pixels, y up; SVG's y runs down.
export function drawOverlay(primitives) {
  const svg = $('overlay');
  const width = view.width * view.zoom, height = view.height * view.zoom;
  const scale = view.zoom / overlayZoom();
  svg.setAttribute('width', width);
  svg.setAttribute('height', height);
  svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
  const ns = 'http://www.w3.org/2000/svg';
  const parts = [];
  for (const primitive of primitives) {
    const points = [];
    for (let i = 0; i + 1 < primitive.points.length; i += 2)
      points.push([primitive.points[i] * scale, height - primitive.points[i + 1] * scale]);
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

export function placeStage() {
  const canvas = $('picture');
  canvas.style.width = `${view.width * view.zoom}px`;
  canvas.style.height = `${view.height * view.zoom}px`;
  $('stage').style.transform = `translate(${view.panX}px, ${view.panY}px)`;
  $('zoom-shown').textContent = `${Math.round(view.zoom * 100)}%`;
}

export function setZoom(zoom, centreX, centreY) {
  const port = $('viewport').getBoundingClientRect();
  if (centreX === undefined) { centreX = port.width / 2; centreY = port.height / 2; }
  zoom = Math.min(16, Math.max(0.05, zoom));
  // Keep the picture point under the centre where it is.
  const imageX = (centreX - view.panX) / view.zoom, imageY = (centreY - view.panY) / view.zoom;
  view.zoom = zoom;
  view.fitted = false;
  view.panX = centreX - imageX * zoom;
  view.panY = centreY - imageY * zoom;
  placeStage();
  fetchOverlay();
}

export function zoomFit() {
  const port = $('viewport').getBoundingClientRect();
  if (!view.width || !port.width) return;
  view.fitted = true;
  view.zoom = Math.min(port.width / view.width, port.height / view.height);
  view.panX = (port.width - view.width * view.zoom) / 2;
  view.panY = (port.height - view.height * view.zoom) / 2;
  placeStage();
  fetchOverlay();
}

// --- pen --------------------------------------------------------------------------

// Samples go one at a time; moves waiting behind a busy call collapse into the latest.
export const pen = { queue: [], sending: false, down: false, panning: null, controlsDue: null, handle: null };

function imagePoint(event) {
  const rect = $('picture').getBoundingClientRect();
  return { x: (event.clientX - rect.left) / view.zoom, y: view.height - (event.clientY - rect.top) / view.zoom };
}

function sample(point, pressure, move = false) {
  return { x: point.x, y: point.y, pressure, zoom: overlayZoom(), move };
}

function queuePen(next) {
  const last = pen.queue[pen.queue.length - 1];
  if (last && (last.hover || last.move) && (next.hover || next.move)) pen.queue.pop();
  pen.queue.push(next);
  return sendPen();
}

let sending = null;
function sendPen() {
  if (sending) return sending;
  sending = (async () => {
    while (pen.queue.length) {
      const next = pen.queue.shift();
      try {
        const answer = await call('/api/pen', { x: next.x, y: next.y, pressure: next.pressure, zoom: next.zoom });
        drawOverlay(answer.overlay);
        $('viewport').style.cursor = CURSORS[answer.cursor] || 'crosshair';
        if (next.press) pen.handle = answer.cursor === 14 ? { x: next.x, y: next.y } : null;
        if (next.release && pen.handle) pen.handle = { x: next.x, y: next.y };
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
  })().finally(() => { sending = null; });
  return sending;
}

// The handle last dragged, moved by the arrow keys as a short drag.
async function nudgeHandle(dx, dy) {
  if (!pen.handle || pen.down) return;
  const from = pen.handle, to = { x: from.x + dx, y: from.y + dy };
  queuePen({ ...sample(from, 0), hover: false });
  queuePen({ ...sample(from, 0.5), press: true });
  queuePen(sample(to, 0.5));
  await queuePen({ ...sample(to, 0), release: true });
  if (pen.handle) pen.handle = to;
}

export function setUpViewer() {
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
    // A pointer the browser does not track (a scripted one) cannot be captured; the drag goes on without.
    try { port.setPointerCapture(event.pointerId); } catch { /* not captured */ }
    queuePen({ ...sample(imagePoint(event), event.pressure > 0 ? event.pressure : 0.5), press: true });
  });
  port.addEventListener('pointermove', (event) => {
    if (pen.panning) {
      view.panX = event.clientX - pen.panning.x;
      view.panY = event.clientY - pen.panning.y;
      view.fitted = false;
      placeStage();
      return;
    }
    if (!view.width) return;
    const next = sample(imagePoint(event), pen.down ? (event.pressure > 0 ? event.pressure : 0.5) : 0, pen.down);
    next.hover = !pen.down;
    queuePen(next);
  });
  const release = (event) => {
    if (pen.panning) { pen.panning = null; return; }
    if (!pen.down) return;
    pen.down = false;
    queuePen({ ...sample(imagePoint(event), 0), release: true });
  };
  port.addEventListener('pointerup', release);
  port.addEventListener('pointercancel', release);
  port.addEventListener('wheel', (event) => {
    event.preventDefault();
    const rect = port.getBoundingClientRect();
    setZoom(view.zoom * (event.deltaY < 0 ? 1.25 : 0.8), event.clientX - rect.left, event.clientY - rect.top);
  }, { passive: false });
  port.addEventListener('keydown', (event) => {
    const step = event.shiftKey ? 10 : 1;
    const arrows = { ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, step], ArrowDown: [0, -step] };
    if (arrows[event.key] && pen.handle) {
      event.preventDefault();
      event.stopPropagation();
      nudgeHandle(...arrows[event.key]);
    } else if (event.key === '+' || event.key === '=') setZoom(view.zoom * 1.25);
    else if (event.key === '-') setZoom(view.zoom * 0.8);
    else if (event.key === '0') zoomFit();
  });
  $('zoom-fit').onclick = zoomFit;
  $('zoom-half').onclick = () => setZoom(0.5);
  $('zoom-1').onclick = () => setZoom(1);
  $('zoom-2').onclick = () => setZoom(2);
  // A fitted picture stays fitted when the window (or the columns) change size.
  new ResizeObserver(() => { if (view.fitted) zoomFit(); else placeStage(); }).observe(port);
}
