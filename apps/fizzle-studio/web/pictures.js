// Pictures: the frame shown, fetched whole or as its changed pixels.
import { send } from './api.js';
import { $, view } from './state.js';
import { zoomFit, placeStage } from './viewer.js';

// One picture request at a time: a newer version asked for meanwhile is
// fetched next, so the viewer never falls behind and never fetches twice.
const pictures = { loading: null, wanted: 0 };

export function showPicture(version) {
  pictures.wanted = Math.max(pictures.wanted, version);
  // Only with a picture to fetch: a loader that had nothing to wait for
  // would finish before it was stored, and stay stored, blocking all others.
  if (!pictures.loading && view.pictureVersion < pictures.wanted) {
    pictures.loading = (async () => {
      try {
        while (view.pictureVersion < pictures.wanted) if (!(await fetchPicture())) break;
      } finally {
        pictures.loading = null;
      }
    })();
  }
  return pictures.loading || Promise.resolve();
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
  const response = await send(`/api/frame?base=${base}`).catch(() => null);
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

