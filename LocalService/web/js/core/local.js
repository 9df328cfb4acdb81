/** Small values kept in this browser. A browser that keeps nothing makes them last as long as the page. */

const PREFIX = 'parvela.';
const memory = new Map();

/** @param {string} name @returns {string|null} */
export function recall(name) {
  try {
    return localStorage.getItem(PREFIX + name) ?? memory.get(name) ?? null;
  } catch {
    return memory.get(name) ?? null;
  }
}

/** @param {string} name @param {string|null} value null forgets it */
export function remember(name, value) {
  if (value === null || value === '') memory.delete(name);
  else memory.set(name, value);
  try {
    if (value === null || value === '') localStorage.removeItem(PREFIX + name);
    else localStorage.setItem(PREFIX + name, value);
  } catch {
    // Storage is full or switched off: the value lives in `memory` for now.
  }
}
