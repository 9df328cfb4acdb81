/** Controls that choose a task's fields. Each shows its value and opens a panel. */
import { html, useEffect, useState } from '../view.js';
import { addDays, clockTime, longDate, parseTime, shortDate, startOfWeek, today } from '../core/dates.js';
import { PRIORITIES, priorityName } from '../core/tasks.js';
import { Avatar, AvatarStack, LabelChip } from './bits.js';
import { CalendarGrid } from './calendar-grid.js';
import { Icon, PriorityIcon } from './icon.js';
import { Dropdown, MenuItem } from './popover.js';

const SEARCH_FROM = 8;

/**
 * @param {{ date: string|null, time?: string|null, withTime?: boolean, label?: string, icon?: string, empty?: string,
 *           class?: string, disabled?: boolean, onChange: (change: { date: string|null, time: string|null }) => void }} props
 */
export function DatePicker(props) {
  const {
    date,
    time = null,
    withTime = false,
    label = 'Due date',
    icon = 'calendar',
    empty = 'Due date',
    disabled,
  } = props;
  const shown = date ? `${shortDate(date)}${time ? `, ${clockTime(time)}` : ''}` : empty;
  return html`<${Dropdown}
    kind="dialog"
    class=${`picker ${props.class ?? ''} ${date ? '' : 'is-empty'}`}
    panelClass="date-panel"
    label=${`${label}: ${date ? `${longDate(date)}${time ? `, ${clockTime(time)}` : ''}` : 'none'}`}
    panelLabel=${label}
    disabled=${disabled}
    face=${html`<${Icon} name=${icon} size=${17} /><span class="truncate">${shown}</span>`}
  >
    ${(close) =>
      html`<${DatePanel} date=${date} time=${time} withTime=${withTime} close=${close} onChange=${props.onChange} />`}
  <//>`;
}

function DatePanel({ date, time, withTime, close, onChange }) {
  const now = today();
  const [timeText, setTimeText] = useState(time ? clockTime(time) : '');
  const [badTime, setBadTime] = useState(false);
  useEffect(() => setTimeText(time ? clockTime(time) : ''), [time]);
  const pick = (day) => {
    onChange({ date: day, time: day ? time : null });
    if (!withTime || !day) close();
  };
  const commitTime = () => {
    const text = timeText.trim();
    const parsed = text === '' ? null : parseTime(text);
    setBadTime(text !== '' && parsed === null);
    if (text !== '' && parsed === null) return false;
    if (parsed !== time) onChange({ date: date ?? now, time: parsed });
    return true;
  };
  const quick = [
    ['Today', now],
    ['Tomorrow', addDays(now, 1)],
    ['Next week', addDays(startOfWeek(now), 7)],
  ];
  return html`<div class="date-quick">
      ${quick.map(
        ([text, day]) =>
          html`<button key=${text} type="button" class="chip-button" aria-pressed=${String(day === date)} onClick=${() => pick(day)}>
            ${text}
          </button>`,
      )}
      ${date && html`<button type="button" class="chip-button" onClick=${() => pick(null)}>Clear</button>`}
    </div>
    <${CalendarGrid} value=${date} onPick=${pick} />
    ${
      withTime &&
      html`<div class="date-time">
      <label class="row">
        <${Icon} name="clock" size=${17} />
        <input
          class="input input-small grow"
          aria-label="Due time"
          aria-invalid=${badTime ? 'true' : undefined}
          placeholder="Time, like 9:30 am"
          maxlength="12"
          value=${timeText}
          onInput=${(event) => setTimeText(event.currentTarget.value)}
          onBlur=${commitTime}
          onKeyDown=${(event) => {
            if (event.key !== 'Enter') return;
            event.preventDefault();
            if (commitTime()) close();
          }}
        />
      </label>
      ${badTime && html`<p class="form-error" role="alert">That isn't a time. Try 9:30 am or 17:00.</p>`}
    </div>`
    }`;
}

/** @param {{ value: string, class?: string, disabled?: boolean, onChange: (priority: string) => void }} props */
export function PriorityPicker({ value, class: className = '', disabled, onChange }) {
  const set = value && value !== 'none';
  return html`<${Dropdown}
    class=${`picker ${className} ${set ? '' : 'is-empty'}`}
    label=${`Priority: ${priorityName(value)}`}
    panelLabel="Priority"
    disabled=${disabled}
    face=${html`<${PriorityIcon} priority=${value || 'none'} /><span>${set ? priorityName(value) : 'Priority'}</span>`}
  >
    ${(close) =>
      [...PRIORITIES].reverse().map(
        (entry) => html`<${MenuItem}
          key=${entry.id}
          role="menuitemradio"
          checked=${entry.id === (value || 'none')}
          close=${close}
          icon=${html`<${PriorityIcon} priority=${entry.id} />`}
          onSelect=${() => onChange(entry.id)}
          >${entry.name}<//
        >`,
      )}
  <//>`;
}

/**
 * @param {{ people: any[], value: string[], class?: string, disabled?: boolean, onChange: (ids: string[]) => void }} props
 */
export function AssigneePicker({ people, value, class: className = '', disabled, onChange }) {
  const chosen = people.filter((person) => value.includes(person.id));
  const names = chosen.map((person) => person.name).join(', ');
  return html`<${Dropdown}
    kind="dialog"
    class=${`picker ${className} ${chosen.length > 0 ? '' : 'is-empty'}`}
    panelClass="choice-panel"
    label=${`Assignees: ${names || 'nobody'}`}
    panelLabel="Assignees"
    disabled=${disabled}
    face=${
      chosen.length > 0
        ? html`<${AvatarStack} people=${chosen} size=${20} /><span class="truncate">${chosen.length === 1 ? chosen[0].name : `${chosen.length} people`}</span>`
        : html`<${Icon} name="user" size=${17} /><span>Assign</span>`
    }
  >
    ${() => html`<${ChoiceList}
      label="Assignees"
      placeholder="Find a person"
      options=${people}
      value=${value}
      onChange=${onChange}
      draw=${(person) => html`<${Avatar} person=${person} size=${22} named=${false} /><span class="truncate">${person.name}</span>`}
      empty="Nobody of that name."
    />`}
  <//>`;
}

/**
 * @param {{ labels: any[], value: string[], class?: string, disabled?: boolean, onChange: (ids: string[]) => void,
 *           onCreate?: (name: string) => Promise<void> }} props
 */
export function LabelPicker({ labels, value, class: className = '', disabled, onChange, onCreate }) {
  const chosen = labels.filter((label) => value.includes(label.id));
  return html`<${Dropdown}
    kind="dialog"
    class=${`picker picker-labels ${className} ${chosen.length > 0 ? '' : 'is-empty'}`}
    panelClass="choice-panel"
    label=${`Labels: ${chosen.map((label) => label.name).join(', ') || 'none'}`}
    panelLabel="Labels"
    disabled=${disabled}
    face=${
      chosen.length > 0
        ? html`<span class="row-wrap">${chosen.map((label) => html`<${LabelChip} key=${label.id} label=${label} />`)}</span>`
        : html`<${Icon} name="tag" size=${17} /><span>Labels</span>`
    }
  >
    ${() => html`<${ChoiceList}
      label="Labels"
      placeholder=${onCreate ? 'Find or create a label' : 'Find a label'}
      options=${labels}
      value=${value}
      onChange=${onChange}
      onCreate=${onCreate}
      draw=${(label) => html`<${LabelChip} label=${label} />`}
      empty="This board has no such label."
    />`}
  <//>`;
}

/** Check boxes under a filter field; the field appears where there is something to filter. */
function ChoiceList({ label, placeholder, options, value, onChange, onCreate, draw, empty }) {
  const [filter, setFilter] = useState('');
  const wanted = filter.trim().toLowerCase();
  const shown = options.filter((option) => option.name.toLowerCase().includes(wanted));
  const exact = options.some((option) => option.name.toLowerCase() === wanted);
  const flip = (id) => onChange(value.includes(id) ? value.filter((entry) => entry !== id) : [...value, id]);
  const create = async () => {
    await onCreate(filter.trim());
    setFilter('');
  };
  return html`${
    (options.length >= SEARCH_FROM || onCreate) &&
    html`<input
      class="input input-small"
      type="text"
      autofocus
      aria-label=${placeholder}
      placeholder=${placeholder}
      maxlength="50"
      value=${filter}
      onInput=${(event) => setFilter(event.currentTarget.value)}
      onKeyDown=${(event) => {
        if (event.key !== 'Enter') return;
        event.preventDefault();
        if (shown.length > 0 && wanted) flip(shown[0].id);
        else if (onCreate && wanted && !exact) create();
      }}
    />`
  }
    <div class="choice-list" role="group" aria-label=${label}>
      ${shown.map(
        (option) => html`<label key=${option.id} class="choice">
          <input type="checkbox" checked=${value.includes(option.id)} onChange=${() => flip(option.id)} />
          ${draw(option)}
        </label>`,
      )}
      ${shown.length === 0 && !onCreate && html`<p class="faint choice-empty">${empty}</p>`}
      ${
        onCreate &&
        wanted &&
        !exact &&
        html`<button type="button" class="menu-item" onClick=${create}>
        <${Icon} name="plus" size=${16} /><span class="truncate">Create “${filter.trim()}”</span>
      </button>`
      }
    </div>`;
}
