// What the page knows of the studio, shared by its modules.
export const $ = (id) => document.getElementById(id);

export const view = {
  width: 0, height: 0, zoom: 1, panX: 0, panY: 0, fitted: true,
  pictureVersion: 0, version: 0, lastMessage: 0,
  frame: 1, first: 1, last: 100, keys: {},
  controls: new Map(), // number -> { info, element, inputs }
  playing: false, question: null,
  edits: 0, editedAt: new Map(), // number -> the count of user changes when it was last changed
};

// The one live region: each notice is spoken once, however it came.
export function notify(text, kind = 'message') {
  const toast = document.createElement('div');
  toast.className = kind;
  toast.textContent = text;
  $('toasts').append(toast);
  setTimeout(() => toast.remove(), 5000);
}

// A yes/no question of the page's own, in the same dialog as the plug-in's.
export function ask(text) {
  return new Promise((resolve) => {
    const dialog = $('confirm-dialog');
    $('confirm-text').textContent = text;
    dialog.returnValue = '';
    dialog.onclose = () => resolve(dialog.returnValue === 'yes');
    dialog.showModal();
    $('confirm-no').focus();
  });
}
