/** The sheet that "?" opens. */
import { html } from '../view.js';
import { Dialog } from '../ui/dialog.js';
import { globalShortcuts } from './shortcuts.js';

// These act on what has the focus, so they live with their pages; here they are only told.
const LOCAL = [
  { keys: ['↑ ↓'], group: 'In a list', text: 'Go from task to task' },
  { keys: ['Enter'], group: 'In a list', text: 'Open the task' },
  { keys: ['x'], group: 'In a list', text: 'Mark the task as done or not done' },
  { keys: ['↑ ↓ ← →'], group: 'On a board', text: 'Go from card to card' },
  { keys: ['Enter'], group: 'On a board', text: 'Open the card' },
  {
    keys: ['Space'],
    group: 'On a board',
    text: 'Pick up the card; arrows move it, Space puts it down, Esc puts it back',
  },
  { keys: ['x'], group: 'On a board', text: 'Mark the card as done or not done' },
  { keys: ['Shift ← →'], group: 'On a board', text: 'Move a task in the calendar or on the timeline' },
  { keys: ['1 to 5'], group: 'On a board', text: 'Board, list, table, calendar, timeline' },
];

/** @param {{ onClose: () => void }} props */
export function ShortcutsSheet({ onClose }) {
  const all = [...globalShortcuts(() => {}), ...LOCAL];
  const groups = [...new Set(all.map((entry) => entry.group))];
  return html`<${Dialog} title="Keyboard shortcuts" class="shortcuts-dialog" onClose=${onClose}>
    <div class="shortcut-groups">
      ${groups.map(
        (group) => html`<section key=${group}>
          <h3>${group}</h3>
          <dl>
            ${all
              .filter((entry) => entry.group === group)
              .map(
                ({ keys, text }) => html`<div key=${text} class="shortcut">
                  <dt>${text}</dt>
                  <dd>${keys[0].split(' ').map(keyCap)}</dd>
                </div>`,
              )}
          </dl>
        </section>`,
      )}
    </div>
  <//>`;
}

const keyCap = (key) => (key === 'to' ? ' to ' : html`<kbd>${key.length === 1 ? key.toUpperCase() : key}</kbd>`);
