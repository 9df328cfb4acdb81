/** The smallest observable value, and the hook that reads it. */
import { useEffect, useReducer, useRef } from '../view.js';

/**
 * @template T
 * @typedef {{ get(): T, set(value: T): void, update(change: (value: T) => T): void,
 *             subscribe(listener: (value: T) => void): () => void }} Store
 */

/**
 * @template T
 * @param {T} initial
 * @returns {Store<T>}
 */
export function createStore(initial) {
  let value = initial;
  const listeners = new Set();
  const store = {
    get: () => value,
    set(next) {
      if (Object.is(next, value)) return;
      value = next;
      for (const listener of [...listeners]) listener(value);
    },
    update: (change) => store.set(change(value)),
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
  return store;
}

/**
 * Renders again when the selected part of the store changes.
 * @template T, S
 * @param {Store<T>} store
 * @param {(value: T) => S} [select]
 * @returns {S}
 */
export function useStore(store, select = (value) => value) {
  const [, again] = useReducer((count) => count + 1, 0);
  const selected = select(store.get());
  const shown = useRef(selected);
  shown.current = selected;
  useEffect(() => {
    const check = () => {
      if (!Object.is(select(store.get()), shown.current)) again();
    };
    check(); // It may have changed between the render and this effect.
    return store.subscribe(check);
  }, [store]);
  return selected;
}
