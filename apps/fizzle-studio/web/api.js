// The studio's /api calls. Every request of the page goes through send(),
// the one place that decides how a request proves it comes from the page.
import { notify } from './state.js';

// The token from the address the studio printed, kept for this tab by this
// origin alone (a page on another port cannot read it), so that a reload
// still has it. Every call carries it in a header, which a page from
// elsewhere cannot add to its requests.
const TOKEN = (() => {
  const given = new URLSearchParams(location.search).get('token');
  if (given) sessionStorage.setItem('fizzle-studio-token', given);
  return sessionStorage.getItem('fizzle-studio-token') || '';
})();

export function send(path, options = {}) {
  return fetch(path, { ...options, headers: { ...options.headers, 'X-Fizzle-Token': TOKEN } });
}
// For people who script the page from its console.
window.studioFetch = send;

export async function call(path, body) {
  const options = body === undefined ? {} :
    { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body) };
  const response = await send(path, options);
  const answer = await response.json().catch(() => ({}));
  if (!response.ok) {
    const error = new Error(answer.error || `${path}: ${response.status}`);
    error.status = response.status;
    throw error;
  }
  return answer;
}

let afterAction = async () => {};
// What follows every action: the page shows its outcome (set by main.js).
export function onAction(handler) { afterAction = handler; }

// Changes still on their way to the studio (a dragged value whose newest
// step is not yet sent). Another action waits for them, so that Ctrl+Z
// right after a drag undoes the whole drag instead of racing its last step.
const outstanding = new Set();
export function track(work) {
  outstanding.add(work);
  work.finally(() => outstanding.delete(work));
  return work;
}
async function settled() {
  while (outstanding.size) await Promise.allSettled([...outstanding]);
}

// Runs an action, showing its refusal as a notification instead of failing.
// context goes to the handler with the answer. A value being sent (/api/set)
// goes at once; every other action waits until sent values are answered.
export async function act(path, body, context = {}) {
  try {
    if (path !== '/api/set') await settled();
    const answer = await call(path, body);
    await afterAction(answer, context);
    return answer;
  } catch (error) {
    notify(error.message, 'error');
    return null;
  }
}

// Whether a file under the working directory exists already.
export async function exists(name) {
  const response = await send(`/api/file?path=${encodeURIComponent(name)}`).catch(() => null);
  return !!response && response.ok;
}
