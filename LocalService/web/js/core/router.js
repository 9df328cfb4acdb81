/** Addresses of the pages. The address bar is the only state: history, links and the desktop shell all go through it. */
import { createStore, useStore } from './store.js';

const PAGES = [
  { name: 'signIn', pattern: /^\/sign-in$/ },
  { name: 'home', pattern: /^\/(?:home)?$/ },
  { name: 'my', pattern: /^\/my$/ },
  { name: 'boards', pattern: /^\/boards$/ },
  { name: 'board', pattern: /^\/b\/([^/]+)$/, param: 'id' },
  { name: 'task', pattern: /^\/t\/([^/]+)$/, param: 'key' },
  { name: 'inbox', pattern: /^\/inbox$/ },
  { name: 'search', pattern: /^\/search$/ },
  { name: 'settings', pattern: /^\/settings$/ },
  { name: 'developers', pattern: /^\/settings\/developers$/ },
  { name: 'handOff', pattern: /^\/oauth\/start$/ },
];

/** @typedef {{ name: string, params: Record<string, string>, query: URLSearchParams, path: string }} Route */

/**
 * @param {string} path path with query, as in the address bar
 * @returns {Route}
 */
export function parseRoute(path) {
  const url = new URL(path, location.origin);
  const plain = url.pathname.length > 1 ? url.pathname.replace(/\/+$/, '') : url.pathname;
  for (const { name, pattern, param } of PAGES) {
    const match = pattern.exec(plain);
    if (!match) continue;
    const params = {};
    if (param) {
      try {
        params[param] = decodeURIComponent(match[1]);
      } catch {
        break; // A broken escape names no page.
      }
    }
    return { name, params, query: url.searchParams, path: url.pathname + url.search };
  }
  return { name: 'notFound', params: {}, query: url.searchParams, path: url.pathname + url.search };
}

const here = () => location.pathname + location.search;

export const route = createStore(parseRoute(here()));

addEventListener('popstate', () => route.set(parseRoute(here())));

/**
 * Shows another page of the app without loading the document again.
 * @param {string} path path with query
 * @param {'push'|'replace'} [how]
 */
export function navigate(path, how = 'push') {
  if (path !== here()) {
    if (how === 'replace') history.replaceState(null, '', path);
    else history.pushState(null, '', path);
  }
  route.set(parseRoute(path));
}

export const useRoute = () => useStore(route);

/** Whether the path is a page of this app, so that it can be shown without a load. */
export function isPage(path) {
  return typeof path === 'string' && /^\/(?!\/)/.test(path) && parseRoute(path).name !== 'notFound';
}

/** Turns clicks on ordinary links of this site into page changes; modified clicks stay the browser's. */
export function interceptLinks(root) {
  root.addEventListener('click', (event) => {
    if (event.defaultPrevented || event.button !== 0) return;
    if (event.metaKey || event.ctrlKey || event.shiftKey || event.altKey) return;
    const link = event.target.closest?.('a[href]');
    if (!link || link.target || link.hasAttribute('download')) return;
    const url = new URL(link.href, location.href);
    if (url.origin !== location.origin || url.hash || !isPage(url.pathname + url.search)) return;
    event.preventDefault();
    navigate(url.pathname + url.search);
  });
}

export const boardPath = (id, view = 'board') =>
  `/b/${encodeURIComponent(id)}${view === 'board' ? '' : `?view=${view}`}`;

export const taskPath = (key) => `/t/${encodeURIComponent(key)}`;
