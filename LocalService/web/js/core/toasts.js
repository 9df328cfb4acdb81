/** Short notices at the foot of the window, one of which may offer to take something back. */
import { announce } from './announce.js';
import { createStore } from './store.js';

/** @typedef {{ id: number, text: string, tone: 'plain'|'error', undo: (() => void)|null }} Toast */

/** @type {import('./store.js').Store<Toast[]>} */
export const toasts = createStore([]);

const LIFE = 7000;
const MOST = 3;
let nextId = 1;

/**
 * @param {string} text
 * @param {{ tone?: 'plain'|'error', undo?: () => void }} [options]
 */
export function toast(text, { tone = 'plain', undo } = {}) {
  const id = nextId++;
  toasts.update((list) => [...list, { id, text, tone, undo: undo ?? null }].slice(-MOST));
  announce(undo ? `${text} Press Z to undo.` : text);
  setTimeout(() => dismissToast(id), LIFE);
}

export function dismissToast(id) {
  toasts.update((list) => list.filter((entry) => entry.id !== id));
}

/** Takes the newest undoable thing back. @returns {boolean} whether there was one */
export function undoLatest() {
  const latest = toasts.get().findLast((entry) => entry.undo);
  if (!latest) return false;
  dismissToast(latest.id);
  latest.undo();
  return true;
}

/** Shows a failed call. @param {unknown} error */
export function toastError(error) {
  toast(error instanceof Error ? error.message : 'Something went wrong.', { tone: 'error' });
}
