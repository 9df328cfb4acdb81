/** Tasks that belong to this one, and those it waits for. */
import { html } from '../../view.js';
import { api } from '../../core/api.js';
import { taskPath } from '../../core/router.js';
import { DoneCheck } from '../../ui/task-bits.js';
import { AddLine } from './checklists.js';

/** @param {{ task: any, canEdit: boolean, reload: () => void }} props */
export function Subtasks({ task, canEdit, reload }) {
  const { subtasks, blocked_by: blockers } = task;
  const done = subtasks.filter((entry) => entry.done).length;
  return html`${
    blockers?.length > 0 &&
    html`<section class="task-section" aria-label="Waits for">
      <div class="section-head"><h2>Waits for</h2></div>
      <ul class="sub-list">${blockers.map((entry) => html`<${Ref} key=${entry.key} entry=${entry} />`)}</ul>
    </section>`
  }
    ${
      (canEdit || subtasks.length > 0) &&
      html`<section class="task-section" aria-label="Subtasks">
      <div class="section-head">
        <h2>Subtasks</h2>
        ${subtasks.length > 0 && html`<span class="faint num">${done}/${subtasks.length}</span>`}
      </div>
      <ul class="sub-list">${subtasks.map((entry) => html`<${Ref} key=${entry.key} entry=${entry} />`)}</ul>
      ${
        canEdit &&
        html`<${AddLine}
        draft=${`draft.subtask.${task.key}`}
        label="Add a subtask"
        placeholder="Add a subtask"
        onAdd=${async (title) => {
          await api.createSubtask(task.key, title);
          reload();
        }}
      />`
      }
    </section>`
    }`;
}

function Ref({ entry }) {
  return html`<li class="check-item ${entry.done ? 'is-done' : ''}">
    <${DoneCheck} task=${{ ...entry, done: entry.done === true }} />
    <a class="check-text grow" href=${taskPath(entry.key)}>${entry.title}</a>
    <span class="faint num">${entry.key}</span>
  </li>`;
}
