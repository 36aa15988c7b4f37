// Undo and redo: the studio keeps the steps, for every page on it.
import { act } from './api.js';
import { $ } from './state.js';

export const undo = () => act('/api/undo', {});
export const redo = () => act('/api/redo', {});

export function showUndo(state) {
  $('undo').disabled = !state.undo;
  $('redo').disabled = !state.redo;
  $('undo').title = `Undo (Ctrl+Z): ${state.undo || 0} steps`;
  $('redo').title = `Redo (Ctrl+Shift+Z): ${state.redo || 0} steps`;
}

export function setUpUndo() {
  $('undo').onclick = undo;
  $('redo').onclick = redo;
  document.addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.altKey) return;
    const key = event.key.toLowerCase();
    // A text field keeps Ctrl+Z for its own typing.
    const typing = event.target.matches && event.target.matches('input[type=text]:not(.field), textarea');
    if (typing) return;
    if (key === 'z' && !event.shiftKey) { event.preventDefault(); undo(); }
    else if ((key === 'z' && event.shiftKey) || key === 'y') { event.preventDefault(); redo(); }
  });
}
