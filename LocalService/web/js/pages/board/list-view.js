/** The board as one list after another. */
import { html, useMemo } from '../../view.js';
import { overlay } from '../../core/overlay.js';
import { Empty } from '../../ui/bits.js';
import { Icon } from '../../ui/icon.js';
import { TaskGroup, TaskRow } from '../../ui/task-bits.js';
import { columnsOf } from './order.js';

/** @param {{ board: any, tasks: any[] }} props */
export function ListView({ board, tasks }) {
  const columns = useMemo(() => columnsOf(board, tasks), [board, tasks]);
  if (columns.length === 0) {
    return html`<${Empty} icon="list" title="This board has no lists yet"><p>Add the first one in the board view.</p><//>`;
  }
  return html`<div class="page list-view">
    ${columns.map(
      ({ list, cards }) => html`<${TaskGroup} key=${list.id} title=${list.name} count=${cards.length}>
        ${cards.map((task) => html`<${TaskRow} key=${task.key} task=${task} showBoard=${false} />`)}
        <li class="task-row task-row-add">
          <button
            type="button"
            class="add-card"
            onClick=${() => overlay.set({ name: 'newTask', board: board.id, list: list.id })}
          >
            <${Icon} name="plus" size=${17} />Add a task<span class="sr-only"> to ${list.name}</span>
          </button>
        </li>
      <//>`,
    )}
  </div>`;
}
