/** Who is signed in, and in which workspace. */
import { api, onSessionExpired } from './api.js';
import { clearCache } from './cache.js';
import { createStore } from './store.js';

/**
 * @typedef {{ id: string, name: string, email: string, color?: string, avatar?: string|null }} Me
 * @typedef {{ id: string, name: string, role?: string }} Workspace
 * @typedef {{ state: 'loading' }
 *   | { state: 'unreachable' }
 *   | { state: 'anonymous', demo: boolean, hasUsers: boolean, canSignUp: boolean, demoEmail: string, apiBase: string }
 *   | { state: 'signedIn', me: Me, workspace: Workspace, demo: boolean, apiBase: string }} Session
 */

/** @type {import('./store.js').Store<Session>} */
export const session = createStore({ state: 'loading' });

function adopt(answer) {
  clearCache();
  session.set({
    state: 'signedIn',
    me: answer.me,
    workspace: answer.workspace,
    demo: answer.demo === true,
    apiBase: answer.api_base ?? '',
  });
  tellTimeZone(answer.me);
}

/** "Today" is the person's own day: the service learns the zone of the clock they look at. */
function tellTimeZone(me) {
  const zone = Intl.DateTimeFormat().resolvedOptions().timeZone;
  // A failure changes nothing now and is mended at the next start.
  if (zone && me.time_zone !== zone) api.updateAccount({ time_zone: zone }).catch(() => {});
}

function becomeAnonymous(facts) {
  clearCache();
  session.set({
    state: 'anonymous',
    demo: facts?.demo === true,
    hasUsers: facts?.has_users !== false,
    canSignUp: facts?.sign_up !== false,
    demoEmail: facts?.demo_email ?? '',
    apiBase: facts?.api_base ?? '',
  });
}

/** Asks the service who is signed in. */
export async function loadSession() {
  try {
    adopt(await api.session());
  } catch (error) {
    if (error.status === 401) becomeAnonymous(error.data);
    else session.set({ state: 'unreachable' });
  }
}

export async function signIn(email, password) {
  adopt(await api.signIn(email, password));
}

export async function signInDemo() {
  adopt(await api.signInDemo());
}

export async function signUp(account) {
  adopt(await api.signUp(account));
}

export async function signOut() {
  await api.signOut();
  await loadSession();
}

onSessionExpired(() => {
  if (session.get().state === 'signedIn') loadSession();
});
