/** Everything assigned to the person, grouped as they like. */
import { html, useMemo } from '../view.js';
import { api } from '../core/api.js';
import { useResource } from '../core/cache.js';
import { addDays, startOfWeek, today } from '../core/dates.js';
import { useBoardColors, usePeopleMap } from '../core/data.js';
import { overlay } from '../core/overlay.js';
import { dueOrder, PRIORITIES, priorityRank } from '../core/tasks.js';
import { Empty, Loaded, Segmented } from '../ui/bits.js';
import { useKept } from '../ui/kept.js';
import { TaskGroup, TaskRow } from '../ui/task-bits.js';

const MODES = [
  { id: 'due', name: 'Due date' },
  { id: 'board', name: 'Board' },
  { id: 'priority', name: 'Priority' },
];

/** @param {any[]} tasks open ones @param {string} mode */
function groupsOf(tasks, mode) {
  const sorted = [...tasks].sort((a, b) => (dueOrder(a) < dueOrder(b) ? -1 : dueOrder(a) > dueOrder(b) ? 1 : 0));
  if (mode === 'board') {
    const boards = [...new Set(sorted.map((task) => task.board))].sort((a, b) => a.localeCompare(b));
    return boards.map((board) => ({ title: board, tasks: sorted.filter((task) => task.board === board) }));
  }
  if (mode === 'priority') {
    return [...PRIORITIES].reverse().map(({ id, name }) => ({
      title: id === 'none' ? 'No priority' : name,
      tasks: sorted.filter((task) => priorityRank(task.priority) === priorityRank(id)),
    }));
  }
  const now = today();
  const nextWeek = addDays(startOfWeek(now), 7);
  const within = (low, high) => (task) => task.due_date && task.due_date >= low && task.due_date < high;
  return [
    { title: 'Overdue', tone: 'is-overdue', tasks: sorted.filter(within('0000', now)) },
    { title: 'Today', tasks: sorted.filter((task) => task.due_date === now) },
    { title: 'This week', tasks: sorted.filter(within(addDays(now, 1), nextWeek)) },
    { title: 'Next week', tasks: sorted.filter(within(nextWeek > now ? nextWeek : now, addDays(nextWeek, 7))) },
    { title: 'Later', tasks: sorted.filter((task) => task.due_date && task.due_date >= addDays(nextWeek, 7)) },
    { title: 'No date', tasks: sorted.filter((task) => !task.due_date) },
  ];
}

export function MyTasksPage() {
  const resource = useResource('my', api.myTasks);
  const colors = useBoardColors();
  const people = usePeopleMap();
  const [mode, setMode] = useKept('my.mode', 'due');
  const tasks = resource.data?.tasks;
  const groups = useMemo(
    () =>
      tasks
        ? groupsOf(
            tasks.filter((task) => !task.done),
            mode,
          )
        : [],
    [tasks, mode],
  );
  const done = useMemo(() => (tasks ?? []).filter((task) => task.done), [tasks]);
  const rows = (list) =>
    list.map(
      (task) =>
        html`<${TaskRow} key=${task.key} task=${task} colors=${colors} people=${people} showBoard=${mode !== 'board'} />`,
    );
  return html`<div class="page">
    <div class="page-head">
      <p class="muted grow">${tasks && countText(tasks.length - done.length)}</p>
      <${Segmented} label="Group by" options=${MODES} value=${mode} onPick=${setMode} />
    </div>
    <${Loaded} resource=${resource} rows=${8}>
      ${() =>
        tasks.length === 0
          ? html`<${Empty} icon="my" title="Nothing is assigned to you">
              <p>Tasks that you or others assign to you show up here.</p>
              <button type="button" class="button" onClick=${() => overlay.set({ name: 'newTask' })}>New task</button>
            <//>`
          : html`${groups
              .filter((group) => group.tasks.length > 0)
              .map(
                (
                  group,
                ) => html`<${TaskGroup} key=${group.title} title=${group.title} tone=${group.tone} count=${group.tasks.length}>
                  ${rows(group.tasks)}
                <//>`,
              )}
            ${tasks.length === done.length && html`<${Empty} icon="my" title="All done"><p>Enjoy the quiet.</p><//>`}
            ${
              done.length > 0 &&
              html`<${TaskGroup} key="done" title="Done" count=${done.length} open=${false}>${rows(done)}<//>`
            }`}
    <//>
  </div>`;
}

const countText = (count) => (count === 0 ? 'Nothing open.' : count === 1 ? '1 open task' : `${count} open tasks`);
