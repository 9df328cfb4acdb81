/** The board's tasks as bars from their start to their due date. */
import { html, useLayoutEffect, useMemo, useRef } from '../../view.js';
import { announce } from '../../core/announce.js';
import { addDays, dayNumber, longDate, monthTitle, shortDate, startOfWeek, today, weekday } from '../../core/dates.js';
import { taskPath } from '../../core/router.js';
import { changeTask } from '../../core/tasks.js';
import { toneClass } from '../../core/color.js';
import { Empty, Segmented } from '../../ui/bits.js';
import { useKept } from '../../ui/kept.js';
import { DoneCheck } from '../../ui/task-bits.js';
import { dragBar } from './bar-drag.js';
import { columnsOf } from './order.js';

const SCALES = [
  { id: 'weeks', name: 'Weeks', day: 34 },
  { id: 'months', name: 'Months', day: 12 },
];
const BEFORE = 14;
const AFTER = 42;
const WIDEST = 730;

/** @param {any} task @returns {{ from: string, to: string }} */
const spanOf = (task) => {
  const to = task.due_date ?? task.start_date;
  const from = task.start_date && task.start_date < to ? task.start_date : to;
  return { from, to };
};

/** @param {{ board: any, tasks: any[] }} props */
export function TimelineView({ board, tasks }) {
  const now = today();
  const [scaleId, setScaleId] = useKept('timeline.scale', 'weeks');
  const scale = SCALES.find((entry) => entry.id === scaleId) ?? SCALES[0];
  const root = useRef(null);
  const dated = useMemo(() => tasks.filter((task) => task.due_date || task.start_date), [tasks]);
  const groups = useMemo(() => columnsOf(board, dated).filter((group) => group.cards.length > 0), [board, dated]);
  const { first, length } = useMemo(() => rangeOf(dated, now), [dated, now]);
  const at = (day) => Math.max(0, Math.min(dayNumber(day) - dayNumber(first), length - 1));

  useLayoutEffect(() => {
    if (root.current) root.current.scrollLeft = Math.max(0, at(now) * scale.day - 180);
  }, [board.id, scale.id, dated.length === 0]);

  if (dated.length === 0) {
    return html`<${Empty} icon="timeline" title="Nothing on the timeline yet">
      <p>Tasks with a start or a due date show up here.</p>
    <//>`;
  }

  /** With the focus on a bar: Shift and an arrow moves it, as in the calendar. */
  const onKeyDown = (event) => {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    const element = event.target.closest('.bar');
    if (!step || !event.shiftKey || event.ctrlKey || !element) return;
    event.preventDefault();
    const task = dated.find((entry) => entry.key === element.dataset.key);
    const change = {};
    if (task.start_date) change.start_date = addDays(task.start_date, step);
    if (task.due_date) change.due_date = addDays(task.due_date, step);
    changeTask(task.key, change, change);
    announce(`${task.title}: ${longDate(addDays(spanOf(task).to, step))}.`);
  };

  const drop = (task, start, end) => {
    const { from, to } = spanOf(task);
    const change = {};
    if (start !== 0 && (start !== end || task.start_date)) change.start_date = addDays(from, start);
    if (end !== 0 && (start !== end || task.due_date)) change.due_date = addDays(to, end);
    changeTask(task.key, change, change);
  };

  return html`<div class="timeline" style=${{ '--day': `${scale.day}px`, '--days': length }} onKeyDown=${onKeyDown}>
    <div class="month-bar">
      <${Segmented} label="Scale" options=${SCALES} value=${scale.id} onPick=${setScaleId} />
      <span class="grow"></span>
      ${
        tasks.length > dated.length &&
        html`<span class="faint">${tasks.length - dated.length === 1 ? '1 task has' : `${tasks.length - dated.length} tasks have`} no dates</span>`
      }
    </div>
    <div ref=${root} class="timeline-scroll" tabindex="0" role="region" aria-label="Timeline">
      <div class="timeline-head">
        <div class="timeline-corner">Task</div>
        <div class="timeline-days">
          ${months(first, length).map(
            (
              month,
            ) => html`<span key=${month.day} class="timeline-month" style=${{ '--from': month.at, '--span': month.length }}
              ><span>${monthTitle(month.day)}</span></span
            >`,
          )}
          ${ticks(first, length, scale).map(
            (day) => html`<span
              key=${day}
              class="timeline-tick num ${day === now ? 'is-today' : ''}"
              style=${{ '--from': at(day), '--span': scale.id === 'weeks' ? 1 : 7 }}
              >${Number(day.slice(8))}</span
            >`,
          )}
        </div>
      </div>
      ${groups.map(
        ({ list, cards }) => html`<section key=${list.id} aria-label=${list.name}>
          <h2 class="timeline-group"><span class="truncate">${list.name}</span></h2>
          <ul>
            ${cards.map((task) => html`<${TimelineRow}
                key=${task.key}
                task=${task}
                at=${at}
                onPress=${(event) => dragBar(event, scale.day, (start, end) => drop(task, start, end))}
              />`)}
          </ul>
        </section>`,
      )}
      <div class="timeline-now" style=${{ '--from': at(now) }} aria-hidden="true"></div>
    </div>
  </div>`;
}

function TimelineRow({ task, at, onPress }) {
  const { from, to } = spanOf(task);
  const text = from === to ? shortDate(to) : `${shortDate(from)} – ${shortDate(to)}`;
  return html`<li class="timeline-row ${task.done ? 'is-done' : ''}">
    <div class="timeline-name">
      <${DoneCheck} task=${task} />
      <span class="truncate" title=${task.title}>${task.title}</span>
    </div>
    <div class="timeline-track">
      <a
        class="bar ${task.done ? 'tone-gray' : toneClass(task.label_tags?.[0]?.tone ?? 'teal')}"
        href=${taskPath(task.key)}
        data-key=${task.key}
        draggable=${false}
        onPointerDown=${onPress}
        style=${{ '--from': at(from), '--span': at(to) - at(from) + 1 }}
        aria-label=${`${task.title}, ${text}`}
        title=${`${task.title}, ${text}`}
        ><span class="truncate">${task.title}</span></a
      >
    </div>
  </li>`;
}

/** From before the first to after the last day, never more than two years: a stray date must not make the page endless. */
function rangeOf(tasks, now) {
  let low = dayNumber(now);
  let high = low;
  for (const task of tasks) {
    const { from, to } = spanOf(task);
    low = Math.min(low, dayNumber(from));
    high = Math.max(high, dayNumber(to));
  }
  low = Math.max(low, dayNumber(now) - WIDEST / 2);
  high = Math.min(high, dayNumber(now) + WIDEST / 2);
  const first = startOfWeek(addDays(now, low - dayNumber(now) - BEFORE));
  return { first, length: high + AFTER - dayNumber(first) };
}

function months(first, length) {
  const result = [];
  for (let index = 0; index < length; index += 1) {
    const day = addDays(first, index);
    if (index === 0 || day.endsWith('-01')) result.push({ day, at: index, length: 0 });
    result.at(-1).length += 1;
  }
  return result;
}

const ticks = (first, length, scale) =>
  Array.from({ length }, (_, index) => addDays(first, index)).filter(
    (day) => scale.id === 'weeks' || weekday(day) === 1,
  );
