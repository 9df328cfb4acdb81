/** Changes to tasks: shown at once wherever the task is on screen, then made, and taken back when the service refuses. */
import { api } from './api.js';
import { invalidate, optimistic } from './cache.js';
import { toast, toastError } from './toasts.js';

/**
 * @typedef {{ id: string, name: string, color?: string, avatar?: string|null }} Person
 * @typedef {{ id: string, name: string, tone: string }} Label
 * @typedef {{ id: string, key: string, title: string, board: string, board_id: string, list: string, list_id: string,
 *   assignees: string[], assignee_people?: Person[], priority: string, label_tags?: Label[], due_date?: string|null,
 *   due_time?: string|null, start_date?: string|null, done: boolean, position?: number, comments?: number, files?: number,
 *   checklist?: { done: number, total: number } }} Card
 */

/**
 * Applies a change to every copy of a task inside loaded data. Copies sit in arrays one level down, or the data is the task.
 * @param {any} data
 * @param {string} key
 * @param {(task: any) => any|null} change null drops the task
 */
export function mapTask(data, key, change) {
  if (data === null || typeof data !== 'object') return data;
  if (data.key === key) return change(data) ?? data;
  let copy = data;
  for (const [name, value] of Object.entries(data)) {
    if (!Array.isArray(value) || !value.some((entry) => entry?.key === key)) continue;
    if (copy === data) copy = { ...data };
    copy[name] = value.flatMap((entry) => (entry?.key === key ? (change(entry) ?? []) : [entry]));
  }
  return copy;
}

/**
 * @param {string} key
 * @param {Record<string, unknown>} shown fields as the pages show them
 * @param {Record<string, unknown>} sent the change as the service takes it
 */
export async function changeTask(key, shown, sent) {
  try {
    return await optimistic(
      (data) => mapTask(data, key, (task) => ({ ...task, ...shown })),
      () => api.updateTask(key, sent),
    );
  } catch (error) {
    toastError(error);
    return null;
  }
}

/** @param {{ key: string, title: string }} task @param {boolean} done */
export async function setDone(task, done) {
  const result = await changeTask(task.key, { done }, { done });
  if (result && done) toast(`Completed “${short(task.title)}”.`, { undo: () => setDone(task, false) });
}

/** @param {{ key: string, title: string }} task */
export async function deleteTask(task) {
  try {
    await optimistic(
      (data, cacheKey) => (cacheKey === `task:${task.key}` ? data : mapTask(data, task.key, () => null)),
      () => api.deleteTask(task.key),
    );
    toast(`Deleted “${short(task.title)}”.`, { undo: () => restoreTask(task) });
    return true;
  } catch (error) {
    toastError(error);
    return false;
  }
}

async function restoreTask(task) {
  try {
    await api.restoreTask(task.key);
    invalidate(() => true);
  } catch (error) {
    toastError(error);
  }
}

/**
 * Puts a card into a list, before or after another one.
 * @param {Card} card
 * @param {{ list: { id: string, name: string }, before?: string, after?: string, position: number }} place `position`
 *   is where the card is shown until the service says
 */
export async function moveCard(card, { list, before, after, position }) {
  try {
    return await optimistic(
      (data) => mapTask(data, card.key, (task) => ({ ...task, list: list.name, list_id: list.id, position })),
      () => api.moveTask(card.key, { list: list.id, before, after }),
    );
  } catch (error) {
    toastError(error);
    return null;
  }
}

/** @param {string} title cut for a notice */
export const short = (title) => (title.length > 48 ? `${title.slice(0, 47).trimEnd()}…` : title);

export const PRIORITIES = [
  { id: 'none', name: 'None' },
  { id: 'low', name: 'Low' },
  { id: 'medium', name: 'Medium' },
  { id: 'high', name: 'High' },
  { id: 'urgent', name: 'Urgent' },
];

export const priorityName = (id) => PRIORITIES.find((entry) => entry.id === id)?.name ?? 'None';
export const priorityRank = (id) =>
  Math.max(
    0,
    PRIORITIES.findIndex((entry) => entry.id === id),
  );

/** Due date and time as one comparable text; without a date last, without a time at the day's end. */
export const dueOrder = (task) => (task.due_date ? `${task.due_date}T${task.due_time ?? '99:99'}` : '9999');

/** @param {Card} task @param {string} day today */
export const isOverdue = (task, day) => !task.done && Boolean(task.due_date) && task.due_date < day;
