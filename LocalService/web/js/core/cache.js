/**
 * What the pages have loaded, by key. A page shows what is known at once and is refreshed in the background; a change made
 * here is shown before the service confirms it, and taken back when the service refuses.
 */
import { useEffect, useReducer } from '../view.js';

/** @typedef {{ data: any, error: Error|null, load: (() => Promise<any>)|null, running: number, stale: boolean,
 *              round: number, pending: number, listeners: Set<() => void> }} Entry */

/** @type {Map<string, Entry>} */
const entries = new Map();

/** @returns {Entry} */
function entryOf(key) {
  let entry = entries.get(key);
  if (!entry) {
    entry = {
      data: undefined,
      error: null,
      load: null,
      running: 0,
      stale: true,
      round: 0,
      pending: 0,
      listeners: new Set(),
    };
    entries.set(key, entry);
  }
  return entry;
}

function notify(entry) {
  for (const listener of [...entry.listeners]) listener();
}

/** Loads an entry; an answer that a later load or a local change has overtaken is dropped. */
async function refresh(entry) {
  if (!entry.load) return;
  const round = ++entry.round;
  entry.running += 1;
  entry.stale = false;
  notify(entry);
  try {
    const data = await entry.load();
    if (round === entry.round) {
      entry.data = data;
      entry.error = null;
    }
  } catch (error) {
    if (round === entry.round) {
      entry.error = error;
      entry.stale = true;
    }
  } finally {
    entry.running -= 1;
    notify(entry);
  }
}

/**
 * @param {string|null} key null: nothing to load
 * @param {() => Promise<any>} load
 * @returns {{ data: any, error: Error|null, loading: boolean, reload: () => void }}
 */
export function useResource(key, load) {
  const [, again] = useReducer((count) => count + 1, 0);
  useEffect(() => {
    if (key === null) return undefined;
    const entry = entryOf(key);
    entry.load = load;
    entry.listeners.add(again);
    if (entry.stale && entry.running === 0) refresh(entry);
    else again();
    return () => entry.listeners.delete(again);
  }, [key]);
  if (key === null) return { data: undefined, error: null, loading: false, reload() {} };
  const entry = entryOf(key);
  return {
    data: entry.data,
    error: entry.error,
    loading: entry.data === undefined && !entry.error,
    reload: () => refresh(entry),
  };
}

/**
 * Marks entries as out of date: those on screen load again now, the others when they are next shown.
 * @param {(key: string) => boolean} matches
 */
export function invalidate(matches) {
  for (const [key, entry] of entries) {
    if (!matches(key)) continue;
    entry.stale = true;
    if (entry.listeners.size > 0 && entry.pending === 0) refresh(entry);
  }
}

/** @param {string} key @returns {any} what is known of it */
export function peek(key) {
  return entries.get(key)?.data;
}

/**
 * Shows a change at once, then makes it. If the service refuses, what was shown before comes back and the error is thrown.
 * @template T
 * @param {(data: any, key: string) => any} change gives the data itself back where nothing changes
 * @param {() => Promise<T>} commit
 * @returns {Promise<T>}
 */
export async function optimistic(change, commit) {
  const touched = [];
  for (const [key, entry] of entries) {
    if (entry.data === undefined) continue;
    const next = change(entry.data, key);
    if (next === entry.data) continue;
    touched.push({ entry, before: entry.data, after: next });
    entry.data = next;
    entry.round += 1; // An answer under way was asked before this change.
    entry.pending += 1;
    notify(entry);
  }
  try {
    return await commit();
  } catch (error) {
    for (const { entry, before, after } of touched) {
      if (entry.data === after) entry.data = before;
      notify(entry);
    }
    throw error;
  } finally {
    for (const { entry } of touched) {
      entry.pending -= 1;
      entry.stale = true;
      if (entry.pending === 0 && entry.listeners.size > 0) refresh(entry);
    }
  }
}

/** Forgets everything: another person signs in. */
export function clearCache() {
  for (const [key, entry] of entries) {
    entry.round += 1;
    entry.data = undefined;
    entry.error = null;
    entry.stale = true;
    if (entry.listeners.size === 0) entries.delete(key);
  }
}
