/** The board as a table that can be sorted and edited in place. */
import { html, useMemo, useState } from '../../view.js';
import { recall, remember } from '../../core/local.js';
import { taskPath } from '../../core/router.js';
import { changeTask, dueOrder, priorityRank } from '../../core/tasks.js';
import { Empty } from '../../ui/bits.js';
import { Icon } from '../../ui/icon.js';
import { AssigneePicker, DatePicker, LabelPicker, PriorityPicker } from '../../ui/pickers.js';
import { DoneCheck } from '../../ui/task-bits.js';
import { assigneesOf } from './order.js';

const compareText = (a, b) => a.localeCompare(b, undefined, { sensitivity: 'base', numeric: true });

const COLUMNS = [
  { id: 'title', name: 'Task', compare: (a, b) => compareText(a.title, b.title) },
  { id: 'list', name: 'List', compare: (a, b, order) => order.get(a.list_id) - order.get(b.list_id) },
  { id: 'people', name: 'Assignees', compare: (a, b) => compareText(namesOf(a), namesOf(b)) },
  { id: 'priority', name: 'Priority', compare: (a, b) => priorityRank(b.priority) - priorityRank(a.priority) },
  { id: 'due', name: 'Due', compare: (a, b) => compareText(dueOrder(a), dueOrder(b)) },
  { id: 'labels', name: 'Labels', compare: (a, b) => compareText(labelsOf(a), labelsOf(b)) },
];

/** Those without a value come last. */
const namesOf = (task) => (task.assignee_people ?? []).map((person) => person.name).join() || '\uffff';
const labelsOf = (task) => (task.label_tags ?? []).map((label) => label.name).join() || '\uffff';

/** @param {{ board: any, tasks: any[] }} props */
export function TableView({ board, tasks }) {
  const [sort, setSort] = useState(() => readSort());
  const rows = useMemo(() => {
    const order = new Map(board.lists.map((list, index) => [list.id, index]));
    const column = COLUMNS.find((entry) => entry.id === sort.by);
    const plain = [...tasks].sort(
      (a, b) => order.get(a.list_id) - order.get(b.list_id) || (a.position ?? 0) - (b.position ?? 0),
    );
    return column ? plain.sort((a, b) => (sort.down ? -1 : 1) * column.compare(a, b, order)) : plain;
  }, [board.lists, tasks, sort]);
  const sortBy = (id) => {
    const next =
      sort.by !== id ? { by: id, down: false } : sort.down ? { by: '', down: false } : { by: id, down: true };
    setSort(next);
    remember('table.sort', next.by && `${next.by} ${next.down ? 'down' : 'up'}`);
  };
  if (tasks.length === 0) {
    return html`<${Empty} icon="table" title="No tasks to show"><p>Add one with N, or change the filter.</p><//>`;
  }
  return html`<div class="table-scroll" tabindex="0" role="region" aria-label="Table of tasks">
    <table class="task-table">
      <thead>
        <tr>
          <th class="table-check"><span class="sr-only">Done</span></th>
          ${COLUMNS.map(
            (column) => html`<th
              key=${column.id}
              class="table-${column.id}"
              scope="col"
              aria-sort=${sort.by === column.id ? (sort.down ? 'descending' : 'ascending') : 'none'}
            >
              <button type="button" class="table-sort" onClick=${() => sortBy(column.id)}>
                ${column.name}
                ${sort.by === column.id && html`<${Icon} name=${sort.down ? 'down' : 'up'} size=${14} />`}
              </button>
            </th>`,
          )}
        </tr>
      </thead>
      <tbody>
        ${rows.map((task) => html`<${Row} key=${task.key} board=${board} task=${task} />`)}
      </tbody>
    </table>
  </div>`;
}

function Row({ board, task }) {
  const { key } = task;
  const people = board.people ?? [];
  return html`<tr class=${task.done ? 'is-done' : ''}>
    <td class="table-check"><${DoneCheck} task=${task} /></td>
    <th scope="row" class="table-title">
      <a href=${taskPath(key)} title=${task.title}><span class="truncate">${task.title}</span></a>
    </th>
    <td>
      <select
        class="select select-quiet"
        aria-label="List"
        value=${task.list_id}
        onChange=${(event) => {
          const list = board.lists.find((entry) => entry.id === event.currentTarget.value);
          changeTask(key, { list: list.name, list_id: list.id }, { list: list.id });
        }}
      >
        ${board.lists.map((list) => html`<option key=${list.id} value=${list.id} selected=${list.id === task.list_id}>${list.name}</option>`)}
      </select>
    </td>
    <td>
      <${AssigneePicker}
        class="picker-quiet"
        people=${people}
        value=${assigneesOf(task)}
        onChange=${(ids) =>
          changeTask(
            key,
            { assignees: ids, assignee_people: people.filter((person) => ids.includes(person.id)) },
            { assignees: ids },
          )}
      />
    </td>
    <td>
      <${PriorityPicker}
        class="picker-quiet"
        value=${task.priority}
        onChange=${(priority) => changeTask(key, { priority }, { priority })}
      />
    </td>
    <td>
      <${DatePicker}
        class="picker-quiet"
        withTime
        date=${task.due_date ?? null}
        time=${task.due_time ?? null}
        onChange=${({ date, time }) => changeTask(key, { due_date: date, due_time: time }, { due_date: date, due_time: time })}
      />
    </td>
    <td>
      <${LabelPicker}
        class="picker-quiet"
        labels=${board.labels}
        value=${(task.label_tags ?? []).map((label) => label.id)}
        onChange=${(ids) =>
          changeTask(key, { label_tags: board.labels.filter((label) => ids.includes(label.id)) }, { labels: ids })}
      />
    </td>
  </tr>`;
}

function readSort() {
  const [by = '', way = 'up'] = (recall('table.sort') ?? '').split(' ');
  return { by: COLUMNS.some((column) => column.id === by) ? by : '', down: way === 'down' };
}
