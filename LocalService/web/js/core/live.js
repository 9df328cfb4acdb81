/**
 * Live updates between windows: the service names what changed, the pages load it again. After a break everything is
 * loaded again, since changes in between were missed.
 */
import { api, online } from './api.js';
import { invalidate } from './cache.js';

const FIRST_RETRY = 1000;
const LAST_RETRY = 15_000;
const GATHER = 60;

/** @returns {() => void} closes the connection */
export function startLive() {
  let source = null;
  let retry = 0;
  let delay = FIRST_RETRY;
  let interrupted = false;
  let gathered = [];
  let gather = 0;

  const flush = () => {
    gather = 0;
    const changes = gathered;
    gathered = [];
    invalidate((key) => changes.some((change) => touches(change, key)));
  };

  const open = () => {
    retry = 0;
    source = new EventSource('/api/events');
    source.addEventListener('open', () => {
      delay = FIRST_RETRY;
      online.set(true);
      if (interrupted) invalidate(() => true);
      interrupted = false;
    });
    source.addEventListener('changed', (event) => {
      const change = decode(event.data);
      if (!change) return;
      gathered.push(change);
      gather ||= setTimeout(flush, GATHER);
    });
    source.addEventListener('error', () => {
      // The browser's own retry gives up for good after some answers, so the connection is made anew here.
      source.close();
      interrupted = true;
      retry ||= setTimeout(probe, delay);
      delay = Math.min(delay * 2, LAST_RETRY);
    });
  };

  // One plain call tells a dead service from an expired session, which the session store then handles.
  const probe = async () => {
    retry = 0;
    try {
      await api.timer();
      open();
    } catch (error) {
      if (error.status === 401) return;
      retry = setTimeout(probe, delay);
      delay = Math.min(delay * 2, LAST_RETRY);
    }
  };

  const wake = () => {
    if (retry === 0 || document.hidden) return;
    clearTimeout(retry);
    probe();
  };

  open();
  addEventListener('online', wake);
  addEventListener('focus', wake);
  document.addEventListener('visibilitychange', wake);
  return () => {
    source.close();
    clearTimeout(retry);
    clearTimeout(gather);
    removeEventListener('online', wake);
    removeEventListener('focus', wake);
    document.removeEventListener('visibilitychange', wake);
  };
}

function decode(text) {
  try {
    const data = JSON.parse(text);
    return data !== null && typeof data === 'object' ? data : null;
  } catch {
    return null;
  }
}

const LISTS_OF_TASKS = ['home', 'my'];

/**
 * @param {{ boards?: string[], tasks?: string[], scope?: string[] }} change
 * @param {string} key of the cache: "home", "boards", "board:ID", "task:KEY", "search:TEXT", ...
 */
function touches({ boards = [], tasks = [], scope = [] }, key) {
  if (scope.includes(key)) return true;
  if (key === 'home' && scope.includes('inbox')) return true;
  if (boards.length === 0 && tasks.length === 0 && !scope.includes('boards')) return false;
  if (key === 'boards' || LISTS_OF_TASKS.includes(key) || key.startsWith('search:')) return true;
  const [kind, id] = [key.slice(0, key.indexOf(':')), key.slice(key.indexOf(':') + 1)];
  if (kind === 'board') return boards.includes(id);
  // A subtask or a label may have changed with another task or board, so any of them renews an open task.
  return kind === 'task';
}
