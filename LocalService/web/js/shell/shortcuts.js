/** The keys that work on every page. The sheet shows the same table. */
import { undoLatest } from '../core/toasts.js';
import { navigate } from '../core/router.js';
import { overlay } from '../core/overlay.js';

function focusSearch() {
  const field = document.querySelector('header input[type="search"]');
  field?.focus();
  field?.select();
}

/** @param {() => void} toggleSidebar @returns {import('../core/keys.js').Shortcut[]} */
export const globalShortcuts = (toggleSidebar) => [
  { keys: ['n', 'c'], group: 'Anywhere', text: 'New task', run: () => overlay.set({ name: 'newTask' }) },
  { keys: ['/'], group: 'Anywhere', text: 'Search', run: focusSearch },
  { keys: ['z'], group: 'Anywhere', text: 'Undo the last delete or completion', run: () => undoLatest() },
  { keys: ['['], group: 'Anywhere', text: 'Show or hide the sidebar', run: toggleSidebar },
  { keys: ['?'], group: 'Anywhere', text: 'Keyboard shortcuts', run: () => overlay.set({ name: 'shortcuts' }) },
  { keys: ['g h'], group: 'Go to', text: 'Home', run: () => navigate('/home') },
  { keys: ['g m'], group: 'Go to', text: 'My tasks', run: () => navigate('/my') },
  { keys: ['g i'], group: 'Go to', text: 'Inbox', run: () => navigate('/inbox') },
  { keys: ['g b'], group: 'Go to', text: 'Boards', run: () => navigate('/boards') },
  { keys: ['g s'], group: 'Go to', text: 'Settings', run: () => navigate('/settings') },
];
