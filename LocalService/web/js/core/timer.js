/** The one running timer of the person. */
import { api } from './api.js';
import { invalidate, optimistic, peek } from './cache.js';
import { toast, toastError } from './toasts.js';
import { useEffect, useState } from '../view.js';

/** @param {{ key: string, title: string, board: string }} task */
export async function startTimer(task) {
  const timer = { task_key: task.key, task_title: task.title, board_name: task.board, started_at: Date.now() };
  await run(timer, () => api.setTimer(task.key, 'started'));
}

/** @param {string} key the task whose timer runs */
export async function stopTimer(key) {
  await run(null, () => api.setTimer(key, 'stopped'));
}

/** Stops whatever runs, if it runs on that task; a timer that is not loaded yet is the service's to decide. */
export function stopTimerOf(key) {
  const running = peek('timer')?.timer;
  if (running === null || (running && running.task_key !== key)) return;
  stopTimer(key).then(() => toast(`Timer stopped on ${key}.`));
}

async function run(timer, commit) {
  try {
    await optimistic((data, key) => (key === 'timer' ? { timer } : data), commit);
    // The timer too: an answer that was on its way may be older than this change.
    invalidate((key) => key === 'timer' || key.startsWith('task:'));
  } catch (error) {
    toastError(error);
  }
}

/** The present moment, each second while `running`. @param {boolean} running */
export function useClock(running) {
  const [now, setNow] = useState(() => Date.now());
  useEffect(() => {
    if (!running) return undefined;
    setNow(Date.now());
    const ticker = setInterval(() => setNow(Date.now()), 1000);
    return () => clearInterval(ticker);
  }, [running]);
  return now;
}
