/** Which page is shown, and to whom. */
import { html, useEffect } from './view.js';
import { isPage, navigate, useRoute } from './core/router.js';
import { loadSession, session } from './core/session.js';
import { useStore } from './core/store.js';
import { frame, native, newTaskMayBeEarly, onNative, postNative } from './core/native.js';
import { HandOffPage } from './pages/handoff.js';
import { SignInPage } from './pages/sign-in.js';
import { UnreachablePage } from './pages/unreachable.js';
import { Workspace } from './shell/workspace.js';
import { goRound } from './ui/focus.js';

export function App() {
  const current = useStore(session);
  const route = useRoute();
  useFrame();

  useEffect(
    () =>
      onNative('navigate', ({ path }) => {
        if (!isPage(path)) return false;
        navigate(path);
        return true;
      }),
    [],
  );

  useEffect(() => {
    if (!native) return;
    const onKey = (event) => goRound(document.body, event);
    document.addEventListener('keydown', onKey);
    return () => document.removeEventListener('keydown', onKey);
  }, []);

  const signedOut = current.state === 'anonymous';
  useEffect(() => {
    newTaskMayBeEarly(!signedOut);
    if (!signedOut) return;
    postNative({ type: 'boards', boards: [] });
    postNative({ type: 'badge', count: 0 });
    postNative({ type: 'timer', state: 'stopped' });
  }, [signedOut]);

  const onSignIn = route.name === 'signIn';
  useEffect(() => {
    if (current.state !== 'signedIn') return;
    if (onSignIn) {
      const next = route.query.get('next');
      navigate(isPage(next) && !next.startsWith('/sign-in') ? next : '/home', 'replace');
    } else if (route.path === '/') navigate('/home', 'replace');
  }, [current.state, onSignIn, route.path]);
  useEffect(() => {
    if (!signedOut || onSignIn || route.name === 'handOff') return;
    const next = route.path === '/' ? '' : `?next=${encodeURIComponent(route.path)}`;
    navigate(`/sign-in${next}`, 'replace');
  }, [signedOut, route.path]);

  if (current.state === 'loading') return html`<div class="splash" role="status" aria-label="Loading"></div>`;
  if (current.state === 'unreachable') return html`<${UnreachablePage} retry=${loadSession} />`;
  if (route.name === 'handOff') return html`<${HandOffPage} route=${route} current=${current} />`;
  if (current.state === 'anonymous') return html`<${SignInPage} facts=${current} />`;
  if (onSignIn) return null;
  return html`<${Workspace} key=${`${current.me.id} ${current.workspace.id}`} current=${current} route=${route} />`;
}

/** Tells the style sheets how much room the window's own buttons need. */
function useFrame() {
  const { inset, buttonsRight, fullscreen } = useStore(frame);
  useEffect(() => {
    const root = document.documentElement;
    const room = inset && !fullscreen ? buttonsRight : 0;
    root.toggleAttribute('data-inset', room > 0);
    root.toggleAttribute('data-fullscreen', fullscreen);
    root.style.setProperty('--buttons-right', `${room}px`);
  }, [inset, buttonsRight, fullscreen]);
}
