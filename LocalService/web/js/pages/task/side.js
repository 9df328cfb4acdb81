/** The task's fields beside its text. */
import { html, useEffect, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { invalidate } from '../../core/cache.js';
import { duration, moment, stopwatch } from '../../core/dates.js';
import { useTimer } from '../../core/data.js';
import { LABEL_TONES } from '../../core/color.js';
import { changeTask } from '../../core/tasks.js';
import { startTimer, stopTimer, useClock } from '../../core/timer.js';
import { toastError } from '../../core/toasts.js';
import { Icon } from '../../ui/icon.js';
import { AssigneePicker, DatePicker, LabelPicker, PriorityPicker } from '../../ui/pickers.js';

/** @param {{ task: any, board: any, people: any[], canEdit: boolean }} props */
export function Side({ task, board, people, canEdit }) {
  const disabled = !canEdit;
  const change = (shown, sent = shown) => changeTask(task.key, shown, sent);
  const assigned = idsOf(task, people);
  const labels = board?.labels ?? task.label_tags;
  const createLabel = async (name) => {
    try {
      const label = await api.createLabel(board.id, { name, tone: LABEL_TONES[labels.length % LABEL_TONES.length] });
      invalidate((key) => key === `board:${board.id}`);
      const tags = [...task.label_tags, label];
      await change({ label_tags: tags }, { labels: tags.map((tag) => tag.id) });
    } catch (error) {
      toastError(error);
    }
  };
  return html`<aside class="task-side" aria-label="Details">
    <${TimerButton} task=${task} />
    <dl class="side-fields">
      <${Field} name="List">
        <select
          class="select select-field"
          aria-label="List"
          disabled=${disabled || !board}
          value=${task.list_id}
          onChange=${(event) => {
            const list = board.lists.find((entry) => entry.id === event.currentTarget.value);
            change({ list: list.name, list_id: list.id }, { list: list.id });
          }}
        >
          ${(board?.lists ?? [{ id: task.list_id, name: task.list }]).map(
            (list) =>
              html`<option key=${list.id} value=${list.id} selected=${list.id === task.list_id}>${list.name}</option>`,
          )}
        </select>
      <//>
      <${Field} name="Assignees">
        <${AssigneePicker}
          class="picker-field"
          people=${people}
          value=${assigned}
          disabled=${disabled}
          onChange=${(ids) => change({ assignees: ids, people: people.filter((person) => ids.includes(person.id)) }, { assignees: ids })}
        />
      <//>
      <${Field} name="Due">
        <${DatePicker}
          class="picker-field"
          withTime
          empty="No due date"
          date=${task.due_date ?? null}
          time=${task.due_time ?? null}
          disabled=${disabled}
          onChange=${({ date, time }) => change({ due_date: date, due_time: time })}
        />
      <//>
      <${Field} name="Start">
        <${DatePicker}
          class="picker-field"
          label="Start date"
          empty="No start date"
          date=${task.start_date ?? null}
          disabled=${disabled}
          onChange=${({ date }) => change({ start_date: date })}
        />
      <//>
      <${Field} name="Priority">
        <${PriorityPicker} class="picker-field" value=${task.priority} disabled=${disabled} onChange=${(priority) => change({ priority })} />
      <//>
      <${Field} name="Labels">
        <${LabelPicker}
          class="picker-field"
          labels=${labels}
          value=${task.label_tags.map((label) => label.id)}
          disabled=${disabled}
          onCreate=${board ? createLabel : undefined}
          onChange=${(ids) => change({ label_tags: labels.filter((label) => ids.includes(label.id)) }, { labels: ids })}
        />
      <//>
      <${Field} name="Estimate"><${Estimate} task=${task} disabled=${disabled} /><//>
      <${Field} name="Tracked"><span class="side-text num"><${Tracked} task=${task} /></span><//>
    </dl>
    <p class="side-note faint">
      <span class="num">${task.key}</span>${task.created_by ? ` · by ${task.created_by}` : ''}
      ${Number.isFinite(task.created_at) && html`<br /><time datetime=${new Date(task.created_at).toISOString()}>${moment(task.created_at)}</time>`}
    </p>
  </aside>`;
}

/** Assigned people by id; the service may name them by id or by name. */
const idsOf = (task, people) =>
  people
    .filter((person) => task.assignees.includes(person.id) || task.assignees.includes(person.name))
    .map((person) => person.id);

const Field = ({ name, children }) => html`<div class="side-field"><dt>${name}</dt><dd>${children}</dd></div>`;

function TimerButton({ task }) {
  const timer = useTimer().data?.timer ?? null;
  const mine = timer?.task_key === task.key;
  const now = useClock(mine);
  if (mine) {
    return html`<button type="button" class="button button-large timer-on" onClick=${() => stopTimer(task.key)}>
      <${Icon} name="stop" size=${17} /><span class="num">${stopwatch(now - timer.started_at)}</span><span>Stop timer</span>
    </button>`;
  }
  return html`<button type="button" class="button button-large" onClick=${() => startTimer(task)}><${Icon} name="play" size=${17} />Start timer</button>`;
}

function Tracked({ task }) {
  return task.tracked_minutes > 0 ? duration(task.tracked_minutes) : html`<span class="faint">Nothing yet</span>`;
}

/** Reads "90", "1h 30m", "1.5 h". @param {string} text @returns {number|null|undefined} minutes; undefined: not understood */
function parseMinutes(text) {
  const plain = text.trim().toLowerCase();
  if (plain === '') return null;
  if (/^\d{1,5}$/.test(plain)) return Number(plain);
  const match = /^(?:(\d{1,4}(?:[.,]\d{1,2})?)\s*h(?:ours?)?)?\s*(?:(\d{1,5})\s*m(?:in(?:utes?)?)?)?$/.exec(plain);
  if (!match || (match[1] === undefined && match[2] === undefined)) return undefined;
  return Math.round(Number((match[1] ?? '0').replace(',', '.')) * 60) + Number(match[2] ?? 0);
}

function Estimate({ task, disabled }) {
  const shown =
    Number.isFinite(task.estimate_minutes) && task.estimate_minutes > 0 ? duration(task.estimate_minutes) : '';
  const [text, setText] = useState(shown);
  const [bad, setBad] = useState(false);
  useEffect(() => setText(shown), [shown]);
  const save = () => {
    const minutes = parseMinutes(text);
    setBad(minutes === undefined);
    if (minutes === undefined || minutes === (task.estimate_minutes ?? null)) return;
    changeTask(task.key, { estimate_minutes: minutes }, { estimate_minutes: minutes });
  };
  return html`<input
      class="side-input"
      aria-label="Estimate"
      aria-invalid=${bad ? 'true' : undefined}
      placeholder="Like 1 h 30 min"
      maxlength="20"
      disabled=${disabled}
      value=${text}
      onInput=${(event) => setText(event.currentTarget.value)}
      onBlur=${save}
      onKeyDown=${(event) => event.key === 'Enter' && event.currentTarget.blur()}
    />
    ${bad && html`<p class="form-error" role="alert">Try “45”, “1 h” or “1 h 30 min”.</p>`}`;
}
