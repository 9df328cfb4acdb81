/** Parts of a task as lists and cards show them. */
import { html } from '../view.js';
import { clockTime, longDate, shortDate, today } from '../core/dates.js';
import { taskPath } from '../core/router.js';
import { isOverdue, priorityName, setDone } from '../core/tasks.js';
import { AvatarStack, BoardDot, LabelChip } from './bits.js';
import { Icon, PriorityIcon } from './icon.js';

/** @param {{ task: any }} props */
export function DoneCheck({ task }) {
  return html`<button
    type="button"
    role="checkbox"
    class="done-check"
    aria-checked=${String(task.done)}
    aria-label=${`Done: ${task.title}`}
    title=${task.done ? 'Mark as not done' : 'Mark as done'}
    onClick=${() => setDone(task, !task.done)}
  >
    <${Icon} name="check" size=${14} />
  </button>`;
}

/** @param {{ task: any }} props */
export function DueChip({ task }) {
  if (!task.due_date) return null;
  const now = today();
  const state = task.done ? 'plain' : isOverdue(task, now) ? 'overdue' : task.due_date === now ? 'today' : 'plain';
  const time = task.due_time ? `, ${clockTime(task.due_time)}` : '';
  return html`<span class="due due-${state}" title=${`Due ${longDate(task.due_date)}${time}`}>
    <span class="sr-only">${state === 'overdue' ? 'Overdue, ' : 'Due '}</span>
    ${shortDate(task.due_date, now)}${task.due_time && html` <span class="due-time">${clockTime(task.due_time)}</span>`}
  </span>`;
}

/** @param {{ priority: string }} props */
export function PriorityMark({ priority }) {
  if (!priority || priority === 'none') return null;
  const text = `${priorityName(priority)} priority`;
  return html`<span class="priority-mark" role="img" aria-label=${text} title=${text}>
    <${PriorityIcon} priority=${priority} />
  </span>`;
}

/** Small numbers of a card: checklist, comments, files. @param {{ task: any }} props */
export function Counts({ task }) {
  const { checklist, comments, files } = task;
  return html`${
    checklist?.total > 0 &&
    html`<span class="count num ${checklist.done === checklist.total ? 'is-complete' : ''}" title="Checklist items done">
      <${Icon} name="checklist" size=${15} />${checklist.done}/${checklist.total}
    </span>`
  }
    ${
      comments > 0 &&
      html`<span class="count num" title="Comments"><${Icon} name="comment" size=${15} />${comments}</span>`
    }
    ${files > 0 && html`<span class="count num" title="Files"><${Icon} name="clip" size=${15} />${files}</span>`}`;
}

/**
 * One task on one line. The whole line opens it.
 * @param {{ task: any, people?: Map<string, any>, colors?: Map<string, string>, showBoard?: boolean }} props
 */
export function TaskRow({ task, people, colors, showBoard = true }) {
  const labels = task.label_tags ?? [];
  const faces = task.assignee_people ?? (task.assignees ?? []).map((id) => people?.get(id)).filter(Boolean);
  return html`<li class="task-row ${task.done ? 'is-done' : ''}">
    <${DoneCheck} task=${task} />
    <a class="task-row-title" href=${taskPath(task.key)}>${task.title}</a>
    <span class="task-row-meta">
      ${
        labels.length > 0 &&
        html`<span class="task-row-labels">
        ${labels.slice(0, 2).map((label) => html`<${LabelChip} key=${label.id} label=${label} />`)}
        ${
          labels.length > 2 &&
          html`<span
          class="label tone-gray"
          title=${labels
            .slice(2)
            .map((label) => label.name)
            .join(', ')}
          >+${labels.length - 2}</span
        >`
        }
      </span>`
      }
      ${
        showBoard &&
        html`<span class="task-row-board">
        <${BoardDot} color=${task.color ?? colors?.get(task.board_id)} /><span class="truncate">${task.board}</span>
      </span>`
      }
      <${PriorityMark} priority=${task.priority} />
      <${DueChip} task=${task} />
      <${AvatarStack} people=${faces} most=${2} />
    </span>
  </li>`;
}

/**
 * Tasks under a heading that can be folded.
 * @param {{ title: string, tasks: any[], tone?: string, open?: boolean, children: any }} props
 */
export function TaskGroup({ title, count, tone = '', open = true, children }) {
  return html`<details class="task-group ${tone}" open=${open}>
    <summary>
      <${Icon} name="right" size=${16} />
      <h2>${title}</h2>
      <span class="group-count num">${count}</span>
    </summary>
    <ul class="task-list">
      ${children}
    </ul>
  </details>`;
}
