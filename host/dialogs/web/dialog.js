// The dialog page: lays the dialog out from the state the host publishes,
// sends every user action to the host (which runs it on the plug-in's
// thread) and shows what the plug-in drew. Endpoints: see BrowserRunner.h.
'use strict';

const token = new URLSearchParams(location.search).get('token') || '';
const elements = new Map();   // control id -> element
const dirty = new Set();      // edit fields typed into but not yet sent
let state = { version: 0 };
let built = false;
let closed = false;

const $ = (id) => document.getElementById(id);

async function request(method, path, body) {
  const response = await fetch(path, {
    method,
    headers: { 'X-Korvane-Token': token, ...(body ? { 'Content-Type': 'application/json' } : {}) },
    body: body ? JSON.stringify(body) : undefined,
    cache: 'no-store',
  });
  if (response.status === 403) throw new Error('refused');
  return response;
}

// Actions go one at a time, in order. A pointer move or a colour still
// waiting is replaced by a newer one of the same kind, so a fast drag sends
// only the points the plug-in can keep up with.
const queue = [];
let sending = false;
function send(action, coalesce) {
  if (closed) return;
  if (coalesce) {
    const waiting = queue.findIndex((a) => a.coalesce === coalesce);
    if (waiting >= 0) { queue[waiting] = { ...action, coalesce }; return; }
  }
  queue.push({ ...action, coalesce });
  if (!sending) pump();
}
async function pump() {
  sending = true;
  while (queue.length && !closed) {
    const { coalesce, ...action } = queue.shift();
    try {
      const response = await request('POST', '/api/event', action);
      const answer = await response.json();
      showError(answer.error || '');
      if (answer.state) apply(answer.state, Boolean(answer.error));
    } catch (e) {
      close('The dialog has closed.');
    }
  }
  sending = false;
}

function showError(text) { $('status').textContent = text; }

function close(text) {
  if (closed) return;
  closed = true;
  for (const element of elements.values()) element.disabled = true;
  $('closed-text').textContent = text;
  $('closed').hidden = false;
}

const hex = (c) => '#' + c.map((v) => v.toString(16).padStart(2, '0')).join('');
const rgb = (text) => [1, 3, 5].map((i) => parseInt(text.substr(i, 2), 16));

// The control's pixel under a pointer event, in the control's own pixels.
function pointOf(canvas, event) {
  const box = canvas.getBoundingClientRect();
  const x = Math.floor((event.clientX - box.left) * canvas.width / box.width);
  const y = Math.floor((event.clientY - box.top) * canvas.height / box.height);
  return { x: Math.min(Math.max(x, 0), canvas.width - 1), y: Math.min(Math.max(y, 0), canvas.height - 1) };
}

function make(control) {
  const [left, top, right, bottom] = control.bounds;
  let element;
  switch (control.kind) {
    case 'group':
      element = document.createElement('div');
      element.className = 'group';
      element.append(Object.assign(document.createElement('span'), { textContent: control.label }));
      break;
    case 'label':
      element = Object.assign(document.createElement('div'), { className: 'label', textContent: control.label });
      break;
    case 'divider':
      element = Object.assign(document.createElement('div'), { className: 'divider' });
      break;
    case 'popup':
      element = document.createElement('select');
      (control.menu || []).forEach((item, i) => element.append(new Option(item, i)));
      element.addEventListener('change', () => send({ kind: 'value', id: control.id, value: Number(element.value) }));
      break;
    case 'edit':
      element = Object.assign(document.createElement('input'), { type: 'text', spellcheck: false });
      element.setAttribute('inputmode', 'decimal');
      element.addEventListener('input', () => dirty.add(control.id));
      element.addEventListener('change', () => {
        dirty.delete(control.id);
        send({ kind: 'text', id: control.id, text: element.value });
      });
      element.addEventListener('keydown', (e) => { if (e.key === 'Enter') element.dispatchEvent(new Event('change')); });
      break;
    case 'check': {
      element = Object.assign(document.createElement('label'), { className: 'check' });
      const box = Object.assign(document.createElement('input'), { type: 'checkbox' });
      box.addEventListener('change', () => send({ kind: 'value', id: control.id, value: box.checked ? 1 : 0 }));
      element.append(box, document.createTextNode(control.label));
      element.input = box;
      break;
    }
    case 'color':
      element = Object.assign(document.createElement('input'), { type: 'color', title: control.label });
      element.addEventListener('input', () => {
        const [red, green, blue] = rgb(element.value);
        send({ kind: 'color', id: control.id, red, green, blue }, 'color' + control.id);
      });
      break;
    case 'button':
      element = Object.assign(document.createElement('button'), { type: 'button', textContent: control.label });
      if (control.role) element.classList.add(control.role);
      element.addEventListener('click', () => send({ kind: control.role || 'click', id: control.id }));
      break;
    case 'user': {
      element = Object.assign(document.createElement('canvas'), { className: 'user', title: control.label });
      element.width = right - left;
      element.height = bottom - top;
      element.addEventListener('pointerdown', (e) => {
        if (e.button !== 0) return;
        element.setPointerCapture(e.pointerId);
        send({ kind: 'press', id: control.id, ...pointOf(element, e) });
      });
      element.addEventListener('pointermove', (e) => {
        if (element.hasPointerCapture(e.pointerId)) send({ kind: 'move', ...pointOf(element, e) }, 'move');
      });
      const release = (e) => {
        if (!element.hasPointerCapture(e.pointerId)) return;
        send({ kind: 'release', ...pointOf(element, e) });
        element.releasePointerCapture(e.pointerId);
      };
      element.addEventListener('pointerup', release);
      element.addEventListener('pointercancel', release);
      break;
    }
    default:
      element = Object.assign(document.createElement('div'), { className: 'label', textContent: control.label });
  }
  element.dataset.id = control.id;
  if (control.kind !== 'label' && control.kind !== 'group') element.setAttribute('aria-label', control.label);
  Object.assign(element.style, { left: left + 'px', top: top + 'px', width: (right - left) + 'px',
                                 height: (bottom - top) + 'px' });
  return element;
}

function build(next) {
  document.title = next.title;
  $('title').textContent = next.title;
  const body = $('body');
  body.style.width = next.width + 'px';
  body.style.height = next.height + 'px';
  for (const control of next.controls) {
    const element = make(control);
    elements.set(control.id, element);
    body.append(element);
  }
  built = true;
  $('dialog').removeAttribute('aria-busy');
}

// Shows the host's values. Fields being typed into keep the typing, unless
// the host refused it (`force`).
function update(next, force) {
  for (const control of next.controls) {
    const element = elements.get(control.id);
    if (!element) continue;
    const input = element.input || element;
    input.disabled = !control.enabled || closed;
    element.hidden = !control.visible;
    switch (control.kind) {
      case 'popup': input.value = String(control.value); break;
      case 'check': input.checked = control.value !== 0; break;
      case 'edit':
        if (force || !dirty.has(control.id)) { input.value = control.text; dirty.delete(control.id); }
        break;
      case 'color': if (document.activeElement !== input) input.value = hex(control.color); break;
    }
  }
}

let drawing = 0;
async function drawImages(next) {
  const turn = ++drawing;
  for (const control of next.controls.filter((c) => c.kind === 'user')) {
    const response = await request('GET', '/api/image?id=' + control.id);
    if (!response.ok) continue;
    const width = Number(response.headers.get('X-Width'));
    const height = Number(response.headers.get('X-Height'));
    const bytes = new Uint8ClampedArray(await response.arrayBuffer());
    if (turn !== drawing || bytes.length !== width * height * 4 || !width) continue;
    const canvas = elements.get(control.id);
    canvas.getContext('2d').putImageData(new ImageData(bytes, width, height), 0, 0);
    canvas.dataset.version = next.version;
  }
}

function apply(next, force) {
  if (!next || !next.version || (next.version < state.version && !force)) return;
  const changed = next.version !== state.version;
  state = next;
  if (!built) build(next);
  update(next, force);
  if (changed) drawImages(next).catch(() => {});
  if (next.ended) close(next.result ? 'Accepted: the project keeps the new settings. You can close this tab.' : 'Cancelled. Nothing was changed.');
}

// Waits for each new state; a request always waiting also tells the host
// that the page is still open.
async function poll() {
  while (!closed) {
    try {
      const response = await request('GET', '/api/state?after=' + state.version);
      apply(await response.json(), false);
    } catch (e) {
      close('The dialog has closed.');
    }
  }
}

poll();
