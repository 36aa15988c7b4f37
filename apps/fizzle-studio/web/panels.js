// Panels and dialogs: files, setups, the hand-off command line, renders,
// keys, the channel editor, messages and the plug-in's questions.
import { act, call, exists } from './api.js';
import { $, view, notify, ask } from './state.js';
import { showKeys } from './timeline.js';

// The working directory's files, filtered by extension; resolves to a path or null.
export function chooseFile(title, extension) {
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

// Before writing a file the user may have wanted kept: asks when it exists.
async function mayReplace(name) {
  if (!name) { notify('Name a setup file first', 'error'); return false; }
  if (!(await exists(name))) return true;
  return ask(`"${name}" exists already. Replace it?`);
}

// The bubbles layer of the render panel, as the render and command line take it.
function layerFields() {
  return { layer: $('render-layer').value.trim(), layer_type: $('render-layer-type').value };
}

export function setUpPanels() {
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
    if (!(await mayReplace(file))) return;
    if (await act('/api/setup/save', { path: file })) notify(`Saved ${file}`);
  };
  $('copy-command').onclick = async () => {
    const setup = $('setup-path').value.trim();
    if (!(await mayReplace(setup))) return;
    const answer = await act('/api/command', {
      setup, output: $('render-output').value.trim(), first: view.first, last: view.frame, ...layerFields(),
    });
    if (!answer) return;
    $('command').value = answer.command;
    $('command-panel').open = true;
    try {
      await navigator.clipboard.writeText(answer.command);
      notify(`Command line copied; the setup was saved as ${setup}`);
    } catch (error) {
      notify(`Command line shown below (the clipboard refused it); the setup was saved as ${setup}`);
    }
  };
  $('render-start').onclick = async () => {
    const answer = await act('/api/render', {
      output: $('render-output').value.trim(),
      first: Number($('render-first').value), last: Number($('render-last').value), ...layerFields(),
    });
    // A render quicker than a poll is announced all the same.
    if (answer) renderWasRunning = true;
  };
  $('render-cancel').onclick = () => act('/api/render/cancel', {});
  $('display-view').addEventListener('change', () => {
    const choice = JSON.parse(displayChoices || '[]')[Number($('display-view').value)];
    if (choice) act('/api/display', { display: choice.display, view: choice.view });
  });
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

export function showMessages(messages) {
  for (const message of messages) {
    view.lastMessage = Math.max(view.lastMessage, message.id);
    const item = document.createElement('li');
    item.className = message.kind;
    item.textContent = message.text;
    $('log').append(item);
    item.scrollIntoView({ block: 'nearest' });
    // The log is not a live region: the notice is what is read out, once.
    if (message.kind !== 'confirm') notify(message.text, message.kind);
  }
}

export function showQuestion(question) {
  const dialog = $('confirm-dialog');
  if (!question) {
    if (dialog.open && view.question) dialog.close('gone');
    view.question = null;
    return;
  }
  if (view.question === question.id) return;
  view.question = question.id;
  $('confirm-text').textContent = question.text;
  if (dialog.open) dialog.close('gone');
  dialog.returnValue = '';
  dialog.onclose = () => {
    if (dialog.returnValue === 'gone') return;
    call('/api/confirm', { id: question.id, yes: dialog.returnValue === 'yes' }).catch(() => {});
  };
  dialog.showModal();
  $('confirm-no').focus();
}

export function showBusy(busy) {
  $('busy').hidden = !busy;
  if (!busy) return;
  $('busy-label').textContent = busy.what;
  $('busy-progress').max = busy.total;
  $('busy-progress').value = busy.done;
}

// A float scene is shown through one of the colour config's displays and
// views; the choice is offered when there is more than one.
let displayChoices = '';
export function showDisplay(display) {
  const choices = display?.choices ?? [];
  $('display-choice').hidden = choices.length < 2;
  const select = $('display-view');
  const listed = JSON.stringify(choices);
  if (listed !== displayChoices) {
    displayChoices = listed;
    select.replaceChildren(...choices.map((choice, i) => new Option(`${choice.display}: ${choice.view}`, String(i))));
  }
  const chosen = choices.findIndex((choice) => choice.display === display.display && choice.view === display.view);
  if (chosen >= 0 && document.activeElement !== select) select.value = String(chosen);
}

let renderWasRunning = false;
export function showRender(render) {
  $('render-cancel').disabled = !render.running;
  $('render-start').disabled = !!render.running;
  if (render.total) {
    $('render-progress').max = render.total;
    $('render-progress').value = render.done;
  }
  $('render-status').textContent = render.running ? `${render.done} of ${render.total} frames` :
    render.outcome ? `${render.outcome}: ${render.done} of ${render.total} frames` : '';
  // The end of a render is announced once, whichever way it ended.
  if (renderWasRunning && !render.running) {
    const ended = ['finished', 'cancelled'].includes(render.outcome);
    notify(ended ? `Render ${render.outcome}: ${render.done} of ${render.total} frames written` :
      `Render failed: ${render.outcome || 'fizzle-render stopped'}`, ended ? 'message' : 'error');
  }
  renderWasRunning = !!render.running;
}
