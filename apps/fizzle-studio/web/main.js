// Fizzle Studio's page: controls, viewer, timeline and panels over the
// studio's /api calls. ES modules, no build step.
import { call, onAction } from './api.js';
import { $, view, notify } from './state.js';
import { showPicture } from './pictures.js';
import { fetchOverlay, drawOverlay, setUpViewer, pen } from './viewer.js';
import { buildControls, loadControls, showControls } from './controls.js';
import { setUpTimeline, showTimeline } from './timeline.js';
import { setUpPanels, showMessages, showQuestion, showBusy, showRender, showDisplay } from './panels.js';
import { setUpUndo, showUndo } from './undo.js';

async function refresh(answer = {}, context = {}) {
  // The picture first: on a busy machine the other calls would slow it down.
  if (answer.picture > view.pictureVersion) await showPicture(answer.picture);
  // What came with the answer is not asked for again.
  if (answer.listing) showControls(answer.listing, context.asked ?? view.edits);
  if (answer.overlay) drawOverlay(answer.overlay);
  await Promise.all([answer.listing ? null : loadControls(), answer.overlay ? null : fetchOverlay()]);
  if (answer.version) view.version = Math.max(view.version, answer.version);
}
// Any other action (a value, an undo, a preset) may move the handles: the
// arrow keys then wait for the next handle grabbed rather than nudge where
// one used to be.
onAction((answer, context) => {
  pen.handle = null;
  return refresh(answer, context);
});

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
    showDisplay(state.display);
    showTimeline(state);
    showUndo(state);
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

async function start() {
  // The token is kept for this tab: keep it out of the address bar and history.
  if (location.search.includes('token=')) history.replaceState(null, '', '/');
  setUpViewer();
  setUpTimeline();
  setUpPanels();
  setUpUndo();
  const answer = await call('/api/controls');
  buildControls(answer);
  await showPicture(1);
  await fetchOverlay();
  await poll();
  setInterval(poll, 250);
  document.body.dataset.ready = 'true';
}

start().catch((error) => notify(error.message, 'error'));
