/** The signed-in app: header band, sidebar, the page, and what lies over them. */
import { html, useEffect, useRef, useState } from '../view.js';
import { startLive } from '../core/live.js';
import { day, watchDay } from '../core/day.js';
import { listenForKeys } from '../core/keys.js';
import { onNative } from '../core/native.js';
import { recall, remember } from '../core/local.js';
import { overlay } from '../core/overlay.js';
import { useStore } from '../core/store.js';
import { announce } from '../core/announce.js';
import { walkRows } from '../ui/row-keys.js';
import { ToastStack } from '../ui/toast-stack.js';
import { PageView } from '../pages/page.js';
import { Header } from './header.js';
import { LinkPrompt } from './link-prompt.js';
import { NativeSync } from './native-sync.js';
import { NewTaskDialog } from './new-task.js';
import { OfflineBanner } from './offline-banner.js';
import { ShortcutsSheet } from './shortcuts-sheet.js';
import { Sidebar } from './sidebar.js';
import { globalShortcuts } from './shortcuts.js';

const NARROW = '(max-width: 640px)';

/** @param {{ current: any, route: import('../core/router.js').Route }} props */
export function Workspace({ current, route }) {
  const narrow = useMedia(NARROW);
  const [wideOpen, setWideOpen] = useState(() => recall('sidebar') !== 'closed');
  const [drawerOpen, setDrawerOpen] = useState(false);
  const sidebarOpen = narrow ? drawerOpen : wideOpen;
  const main = useRef(null);

  const toggleSidebar = useRef(null);
  toggleSidebar.current = () => {
    if (narrow) setDrawerOpen(!drawerOpen);
    else {
      remember('sidebar', wideOpen ? 'closed' : 'open');
      setWideOpen(!wideOpen);
    }
    announce(sidebarOpen ? 'Sidebar hidden.' : 'Sidebar shown.');
  };

  useStore(day);
  useEffect(() => watchDay(), []);
  useEffect(() => startLive(), []);
  useEffect(() => listenForKeys(() => globalShortcuts(() => toggleSidebar.current())), []);
  useEffect(() => onNative('toggleSidebar', () => (toggleSidebar.current(), true)), []);
  useEffect(
    () =>
      onNative('newTask', () => {
        overlay.set({ name: 'newTask' });
        return true;
      }),
    [],
  );
  useEffect(() => setDrawerOpen(false), [route.path]);

  // A page change is told by moving the focus to its heading, as a document load would do.
  const shownPage = useRef(route.name + JSON.stringify(route.params));
  useEffect(() => {
    const page = route.name + JSON.stringify(route.params);
    if (page === shownPage.current) return;
    shownPage.current = page;
    overlay.set(null);
    if (document.activeElement?.type === 'search') return;
    document.querySelector('h1')?.focus({ preventScroll: true });
  }, [route]);

  const over = useStore(overlay);
  return html`<div class="app ${sidebarOpen ? 'with-sidebar' : ''}">
    <a class="skip-link" href="#main" onClick=${(event) => skipTo(event, main.current)}>Skip to content</a>
    <${Header} current=${current} route=${route} sidebarOpen=${sidebarOpen} toggleSidebar=${() => toggleSidebar.current()} />
    <${Sidebar} route=${route} hidden=${!sidebarOpen} />
    ${narrow && sidebarOpen && html`<div class="drawer-scrim" onClick=${() => setDrawerOpen(false)}></div>`}
    <main ref=${main} id="main" class="sheet" tabindex="-1" onKeyDown=${walkRows}>
      <${OfflineBanner} />
      <${PageView} route=${route} current=${current} />
    </main>
    ${
      over?.name === 'newTask' &&
      html`<${NewTaskDialog} current=${current} route=${route} preset=${over} onClose=${() => overlay.set(null)} />`
    }
    ${over?.name === 'shortcuts' && html`<${ShortcutsSheet} onClose=${() => overlay.set(null)} />`}
    <${LinkPrompt} workspace=${current.workspace} />
    <${NativeSync} workspace=${current.workspace} />
    <${ToastStack} />
  </div>`;
}

function skipTo(event, target) {
  event.preventDefault();
  target.focus();
}

/** @param {string} query */
function useMedia(query) {
  const [matches, setMatches] = useState(() => matchMedia(query).matches);
  useEffect(() => {
    const list = matchMedia(query);
    const onChange = () => setMatches(list.matches);
    list.addEventListener('change', onChange);
    return () => list.removeEventListener('change', onChange);
  }, [query]);
  return matches;
}
