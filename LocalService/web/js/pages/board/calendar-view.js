/** The board's due dates on a month. Tasks can be dragged to another day; the due date of an open task does the same by keys. */
import { html, useMemo, useRef, useState } from '../../view.js';
import { announce } from '../../core/announce.js';
import {
  addDays,
  addMonths,
  clockTime,
  dayNumber,
  longDate,
  monthTitle,
  startOfMonth,
  startOfWeek,
  today,
  weekdayNames,
} from '../../core/dates.js';
import { overlay } from '../../core/overlay.js';
import { taskPath } from '../../core/router.js';
import { changeTask, dueOrder, isOverdue } from '../../core/tasks.js';
import { Icon } from '../../ui/icon.js';
import { Dropdown } from '../../ui/popover.js';
import { toneClass } from '../../core/color.js';
import { dragFrom } from './drag.js';

const MOST = 3;

/** @param {{ board: any, tasks: any[] }} props */
export function CalendarView({ board, tasks }) {
  const now = today();
  const [month, setMonth] = useState(startOfMonth(now));
  const [target, setTarget] = useState('');
  const root = useRef(null);
  const days = useMemo(() => daysOf(month), [month]);
  const byDay = useMemo(() => {
    const map = new Map();
    const dated = tasks.filter((task) => task.due_date).sort((a, b) => (dueOrder(a) < dueOrder(b) ? -1 : 1));
    for (const task of dated) map.set(task.due_date, [...(map.get(task.due_date) ?? []), task]);
    return map;
  }, [tasks]);
  const undated = tasks.filter((task) => !task.due_date && !task.done).length;

  const setDue = (task, date) => {
    if (date === task.due_date) return;
    changeTask(task.key, { due_date: date }, { due_date: date });
    announce(`${task.title} is due ${longDate(date)}.`);
  };

  const press = (event) => {
    const element = event.target.closest('.cal-task');
    const task = element && tasks.find((entry) => entry.key === element.dataset.key);
    if (!task) return;
    let over = '';
    dragFrom(event, {
      element,
      onStart() {},
      onMove(x, y) {
        over = document.elementFromPoint(x, y)?.closest('[data-day]')?.dataset.day ?? '';
        setTarget(over);
      },
      onEnd(dropped) {
        setTarget('');
        if (dropped && over) setDue(task, over);
      },
    });
  };

  /** With the focus on a task: Alt and an arrow moves its due date, as the shortcuts of a calendar do. */
  const onKeyDown = (event) => {
    const step = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -7, ArrowDown: 7 }[event.key];
    const element = event.target.closest('.cal-task');
    if (!step || !event.shiftKey || event.ctrlKey || !element) return;
    event.preventDefault();
    const task = tasks.find((entry) => entry.key === element.dataset.key);
    const date = addDays(task.due_date, step);
    setDue(task, date);
    if (date.slice(0, 7) !== month.slice(0, 7)) setMonth(startOfMonth(date));
    requestAnimationFrame(() => root.current?.querySelector(`.cal-task[data-key="${CSS.escape(task.key)}"]`)?.focus());
  };

  return html`<div class="month" ref=${root} onPointerDown=${press} onKeyDown=${onKeyDown} onDragStart=${(event) => event.preventDefault()}>
    <div class="month-bar">
      <h2 aria-live="polite">${monthTitle(month)}</h2>
      <button type="button" class="icon-button" aria-label="Previous month" onClick=${() => setMonth(addMonths(month, -1))}><${Icon} name="left" /></button>
      <button type="button" class="icon-button" aria-label="Next month" onClick=${() => setMonth(addMonths(month, 1))}><${Icon} name="right" /></button>
      <button type="button" class="button button-small" onClick=${() => setMonth(startOfMonth(now))}>Today</button>
      <span class="grow"></span>
      ${undated > 0 && html`<span class="faint">${undated === 1 ? '1 open task has' : `${undated} open tasks have`} no due date</span>`}
    </div>
    <table class="month-grid" aria-label=${monthTitle(month)}>
      <thead>
        <tr>
          ${[1, 2, 3, 4, 5, 6, 0].map((day) => html`<th key=${day} scope="col" abbr=${weekdayNames[day]}>${weekdayNames[day].slice(0, 3)}</th>`)}
        </tr>
      </thead>
      <tbody>
        ${weeksOf(days).map(
          (week) => html`<tr key=${week[0]}>
            ${week.map(
              (day) => html`<${Day}
                key=${day}
                day=${day}
                now=${now}
                outside=${day.slice(0, 7) !== month.slice(0, 7)}
                tasks=${byDay.get(day) ?? []}
                target=${target === day}
                board=${board}
              />`,
            )}
          </tr>`,
        )}
      </tbody>
    </table>
  </div>`;
}

function Day({ day, now, outside, tasks, target, board }) {
  const shown = tasks.slice(0, tasks.length > MOST ? MOST - 1 : MOST);
  const rest = tasks.slice(shown.length);
  const classes = ['month-day', outside && 'is-outside', day === now && 'is-today', target && 'is-target'].filter(
    Boolean,
  );
  return html`<td class=${classes.join(' ')} data-day=${day}>
    <div class="month-day-head">
      <time class="num" datetime=${day} aria-label=${longDate(day)} aria-current=${day === now ? 'date' : undefined}>${Number(day.slice(8))}</time>
      <button
        type="button"
        class="icon-button month-add"
        aria-label=${`New task due ${longDate(day)}`}
        onClick=${() => overlay.set({ name: 'newTask', board: board.id, date: day })}
      >
        <${Icon} name="plus" size=${15} />
      </button>
    </div>
    ${shown.map((task) => html`<${DayTask} key=${task.key} task=${task} now=${now} />`)}
    ${
      rest.length > 0 &&
      html`<${Dropdown}
      kind="dialog"
      class="month-more"
      panelClass="month-panel"
      label=${`${rest.length} more due ${longDate(day)}`}
      panelLabel=${`Due ${longDate(day)}`}
      face=${`${rest.length} more`}
    >
      ${() => html`<h3>${longDate(day)}</h3>
        ${tasks.map((task) => html`<${DayTask} key=${task.key} task=${task} now=${now} />`)}`}
    <//>`
    }
  </td>`;
}

function DayTask({ task, now }) {
  const tone = task.done ? '' : isOverdue(task, now) ? 'tone-red' : toneClass(task.label_tags?.[0]?.tone);
  return html`<a
    class="cal-task ${tone} ${task.done ? 'is-done' : ''}"
    href=${taskPath(task.key)}
    data-key=${task.key}
    draggable=${false}
    title=${task.title}
  >
    ${task.due_time && html`<span class="cal-task-time num">${clockTime(task.due_time)}</span>`}
    <span class="truncate">${task.title}</span>
  </a>`;
}

/** The weeks that a month touches. */
function daysOf(month) {
  const first = startOfWeek(month);
  const last = addDays(addMonths(month, 1), -1);
  const length = Math.ceil((dayNumber(last) - dayNumber(first) + 1) / 7) * 7;
  return Array.from({ length }, (_, index) => addDays(first, index));
}

const weeksOf = (days) => Array.from({ length: days.length / 7 }, (_, week) => days.slice(week * 7, week * 7 + 7));
