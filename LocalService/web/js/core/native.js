/**
 * The desktop shell around this page, when there is one. The shell defines `window.ParvelaNative` before the page's scripts
 * run and a message handler named "parvela"; it calls back by "parvela-native" events on the window.
 */
import { createStore } from './store.js';

/** @typedef {{ platform: string, version: string, deviceId: string, deviceName: string,
 *              linkedWorkspaceId: string|null, features: string[] }} NativeInfo */

/** @type {NativeInfo|null} */
export const native = window.ParvelaNative ?? null;

/** What the shell said about the window. `buttonsRight` is where its window buttons end, in CSS pixels. */
export const frame = createStore({ inset: false, buttonsRight: 0, fullscreen: false });

/** The workspace this device is linked to. The object from the shell is frozen, so what happens later is kept here. */
export const linkedWorkspace = createStore(native?.linkedWorkspaceId ?? null);

/** @param {Record<string, unknown>} message */
export function postNative(message) {
  if (!native) return;
  window.webkit?.messageHandlers?.parvela?.postMessage(message);
}

/** @type {Map<string, Set<(detail: any) => boolean|void>>} */
const handlers = new Map();

/** Wishes of the user that come before what carries them out is there; each comes once. @type {Map<string, any>} */
const early = new Map();
const mayBeEarly = new Set(['newTask', 'requestLink', 'stopTimer']);
const earlyLifetime = 30000;

/** Without anybody signed in the shell has to do something else about a new task. @param {boolean} may */
export function newTaskMayBeEarly(may) {
  if (may) mayBeEarly.add('newTask');
  else mayBeEarly.delete('newTask');
}

/**
 * @param {string} type of the shell's event
 * @param {(detail: any) => boolean|void} handler true: the page took the action, the shell need not
 * @returns {() => void} stops listening
 */
export function onNative(type, handler) {
  const set = handlers.get(type) ?? new Set();
  handlers.set(type, set);
  set.add(handler);
  if (early.has(type)) {
    handler(early.get(type));
    early.delete(type);
  }
  return () => set.delete(handler);
}

if (native) {
  addEventListener('parvela-native', (event) => {
    const detail = event.detail;
    const listening = handlers.get(detail?.type) ?? new Set();
    for (const handler of listening) {
      if (handler(detail) === true) detail.handled = true;
    }
    if (listening.size === 0 && mayBeEarly.has(detail?.type)) {
      early.set(detail.type, detail);
      detail.handled = true;
      setTimeout(() => early.delete(detail.type), earlyLifetime);
    }
  });

  onNative('titlebar', ({ inset, buttonsRight }) => {
    const right = Number.isFinite(buttonsRight) && buttonsRight > 0 ? Math.min(buttonsRight, 600) : 0;
    frame.update((now) => ({ ...now, inset: inset === true, buttonsRight: inset === true ? right : 0 }));
  });
  onNative('fullscreen', ({ on }) => frame.update((now) => ({ ...now, fullscreen: on === true })));
}

/**
 * Lets the window be dragged by an empty place of the band at its top. The shell sees the press itself; the page only says
 * that the place was meant for it.
 * @param {MouseEvent} event a mousedown
 */
export function dragWindow(event) {
  if (!native || event.button !== 0 || event.ctrlKey) return;
  if (event.target.closest('a, button, input, select, textarea, label, [role="menuitem"], [popover], dialog')) return;
  event.preventDefault();
  postNative({ type: event.detail === 2 ? 'titlebarDoubleClick' : 'windowDrag' });
}
