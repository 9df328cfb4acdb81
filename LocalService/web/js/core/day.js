/** The day on the wall calendar. Pages that say "Today" are drawn again when it changes, after a sleep too. */
import { invalidate } from './cache.js';
import { today } from './dates.js';
import { createStore } from './store.js';

const LOOK_AGAIN = 30_000;

export const day = createStore(today());

/** @returns {() => void} stops watching */
export function watchDay() {
  const look = () => {
    const now = today();
    if (now === day.get()) return;
    day.set(now);
    invalidate(() => true); // What is due today and what is overdue has changed as well.
  };
  const timer = setInterval(look, LOOK_AGAIN);
  document.addEventListener('visibilitychange', look);
  addEventListener('focus', look);
  return () => {
    clearInterval(timer);
    document.removeEventListener('visibilitychange', look);
    removeEventListener('focus', look);
  };
}
