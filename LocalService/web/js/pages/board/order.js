/** The order of cards: by list, then by position. */

/** @param {{ position?: number, key: string }} a @param {{ position?: number, key: string }} b */
const byPosition = (a, b) => (a.position ?? 0) - (b.position ?? 0) || (a.key < b.key ? -1 : 1);

/**
 * @param {{ lists: any[] }} board
 * @param {any[]} tasks
 * @returns {{ list: any, cards: any[] }[]}
 */
export function columnsOf(board, tasks) {
  return board.lists.map((list) => ({
    list,
    cards: tasks.filter((task) => task.list_id === list.id).sort(byPosition),
  }));
}

/**
 * Where a card goes when it is put at an index among others.
 * @param {any[]} others the list's cards without the one that moves
 * @param {number} index
 * @returns {{ before?: string, after?: string, position: number }} the neighbour to name to the service, and the position
 *   to show until it answers
 */
export function placeAt(others, index) {
  const previous = others[index - 1];
  const next = others[index];
  if (next) {
    const low = previous?.position ?? (next.position ?? 0) - 2;
    return { before: next.key, position: (low + (next.position ?? 0)) / 2 };
  }
  if (previous) return { after: previous.key, position: (previous.position ?? 0) + 1 };
  return { position: 1 };
}

/** @typedef {{ people: string[], labels: string[], priorities: string[], done: boolean }} Filter */

/** @type {Filter} */
export const NO_FILTER = { people: [], labels: [], priorities: [], done: true };

/** @param {Filter} filter */
export const filterCount = (filter) =>
  filter.people.length + filter.labels.length + filter.priorities.length + (filter.done ? 0 : 1);

/** @param {Filter} filter @param {any} task */
export function passes(filter, task) {
  if (!filter.done && task.done) return false;
  if (filter.priorities.length > 0 && !filter.priorities.includes(task.priority)) return false;
  if (filter.people.length > 0 && !assigneesOf(task).some((id) => filter.people.includes(id))) return false;
  return filter.labels.length === 0 || (task.label_tags ?? []).some((label) => filter.labels.includes(label.id));
}

/** Ids of the people a task is assigned to. @param {any} task @returns {string[]} */
export const assigneesOf = (task) =>
  task.assignee_people ? task.assignee_people.map((person) => person.id) : (task.assignees ?? []);
