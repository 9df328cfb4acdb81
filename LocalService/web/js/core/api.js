/** Calls to the web site's own API. Every failure is an ApiError with a sentence that can be shown. */
import { createStore } from './store.js';

const OFFLINE_TEXT = "Parvela can't be reached. What you typed is kept.";

class ApiError extends Error {
  /**
   * @param {string} message shown to the person
   * @param {number} status HTTP status; 0 when no answer came
   * @param {number} [retryAfter] seconds
   */
  constructor(message, status, retryAfter) {
    super(message);
    this.name = 'ApiError';
    this.status = status;
    this.retryAfter = retryAfter;
  }
}

/** Whether the service answered last time. The banner and the live connection watch it. */
export const online = createStore(true);

let expired = () => {};

/** @param {() => void} handler called when the session is no longer valid */
export function onSessionExpired(handler) {
  expired = handler;
}

/**
 * @param {'GET'|'POST'|'PATCH'|'DELETE'} method
 * @param {string} path absolute path on this site, already encoded
 * @param {unknown} [body] sent as JSON, or as it is when it is a Blob
 * @returns {Promise<any>} the decoded answer, null when it is empty
 */
export async function call(method, path, body) {
  const headers = { Accept: 'application/json' };
  if (method !== 'GET') headers['X-Parvela-Web'] = '1';
  const isBlob = body instanceof Blob;
  if (isBlob) headers['Content-Type'] = body.type || 'application/octet-stream';
  else if (body !== undefined) headers['Content-Type'] = 'application/json';

  let response;
  let text;
  try {
    response = await fetch(path, {
      method,
      headers,
      body: isBlob || body === undefined ? body : JSON.stringify(body),
      credentials: 'same-origin',
      cache: 'no-store',
    });
    text = await response.text();
  } catch {
    online.set(false);
    throw new ApiError(OFFLINE_TEXT, 0);
  }
  online.set(true);

  const data = decode(text);
  if (response.ok) {
    if (data === undefined) throw new ApiError('The service sent an answer that could not be read.', response.status);
    return data;
  }
  if (response.status === 401 && !path.startsWith('/api/session')) expired();
  const error = new ApiError(errorText(data, response.status), response.status, retryAfter(response));
  error.data = data ?? null;
  throw error;
}

/** @param {string} text @returns {any} undefined when it is no JSON */
function decode(text) {
  if (text.trim() === '') return null;
  try {
    return JSON.parse(text);
  } catch {
    return undefined;
  }
}

function errorText(data, status) {
  const message = data?.error?.message;
  if (typeof message === 'string' && message !== '') return message;
  if (status === 404) return "That isn't there any more.";
  if (status === 403) return "You can't do that here.";
  if (status === 413) return 'That is too large.';
  if (status === 429) return 'Too many tries. Wait a moment and try again.';
  return `Something went wrong (error ${status}). Try again.`;
}

function retryAfter(response) {
  const seconds = Number(response.headers.get('Retry-After'));
  return Number.isFinite(seconds) && seconds > 0 ? seconds : undefined;
}

const segment = encodeURIComponent;

/** The calls, by what they do. Tasks are named by their key, everything else by its id. */
export const api = {
  session: () => call('GET', '/api/session'),
  signIn: (email, password) => call('POST', '/api/session', { email, password }),
  signInDemo: () => call('POST', '/api/session/demo', {}),
  signUp: (account) => call('POST', '/api/accounts', account),
  signOut: () => call('DELETE', '/api/session'),
  updateAccount: (change) => call('PATCH', '/api/account', change),
  handOff: () => call('POST', '/api/handoff', {}),

  link: (deviceId, deviceName) => call('POST', '/api/v1-link', { device_id: deviceId, device_name: deviceName }),
  tokens: () => call('GET', '/api/tokens'),
  createToken: (name, write) => call('POST', '/api/tokens', { name, write }),
  deleteToken: (id) => call('DELETE', `/api/tokens/${segment(id)}`),

  home: () => call('GET', '/api/v1/home'),
  people: () => call('GET', '/api/v1/people'),
  myTasks: () => call('GET', '/api/v1/tasks?mine=1&include_done=1'),
  search: (text) => call('GET', `/api/v1/tasks?q=${segment(text)}&limit=60`),

  boards: () => call('GET', '/api/boards'),
  board: (id) => call('GET', `/api/boards/${segment(id)}/full`),
  createBoard: (board) => call('POST', '/api/boards', board),
  updateBoard: (id, change) => call('PATCH', `/api/boards/${segment(id)}`, change),
  deleteBoard: (id) => call('DELETE', `/api/boards/${segment(id)}`),
  createList: (board, name) => call('POST', `/api/boards/${segment(board)}/lists`, { name }),
  updateList: (id, change) => call('PATCH', `/api/lists/${segment(id)}`, change),
  deleteList: (id) => call('DELETE', `/api/lists/${segment(id)}`),
  createLabel: (board, label) => call('POST', `/api/boards/${segment(board)}/labels`, label),
  updateLabel: (id, change) => call('PATCH', `/api/labels/${segment(id)}`, change),
  deleteLabel: (id) => call('DELETE', `/api/labels/${segment(id)}`),

  task: (key) => call('GET', `/api/v1/tasks/${segment(key)}/detail`),
  createTask: (task) => call('POST', '/api/v1/tasks', task),
  updateTask: (key, change) => call('PATCH', `/api/v1/tasks/${segment(key)}`, change),
  moveTask: (key, place) => call('POST', `/api/tasks/${segment(key)}/move`, place),
  deleteTask: (key) => call('DELETE', `/api/tasks/${segment(key)}`),
  restoreTask: (key) => call('POST', `/api/tasks/${segment(key)}/restore`, {}),
  createSubtask: (key, title) => call('POST', `/api/tasks/${segment(key)}/subtasks`, { title }),
  createChecklist: (key, title) => call('POST', `/api/tasks/${segment(key)}/checklists`, { title }),
  deleteChecklist: (id) => call('DELETE', `/api/checklists/${segment(id)}`),
  createItem: (checklist, text) => call('POST', `/api/checklists/${segment(checklist)}/items`, { text }),
  updateItem: (id, change) => call('PATCH', `/api/items/${segment(id)}`, change),
  deleteItem: (id) => call('DELETE', `/api/items/${segment(id)}`),
  comment: (key, body) => call('POST', `/api/v1/tasks/${segment(key)}/comments`, { body }),
  updateComment: (id, body) => call('PATCH', `/api/comments/${segment(id)}`, { body }),
  deleteComment: (id) => call('DELETE', `/api/comments/${segment(id)}`),
  uploadFile: (key, file) => call('POST', `/api/tasks/${segment(key)}/files?name=${segment(file.name)}`, file),
  deleteFile: (id) => call('DELETE', `/api/files/${segment(id)}`),

  timer: () => call('GET', '/api/timer'),
  setTimer: (key, state) => call('POST', `/api/tasks/${segment(key)}/timer`, { state }),

  notifications: () => call('GET', '/api/v1/notifications?limit=100'),
  markNotifications: (change) => call('POST', '/api/v1/notifications/read', change),
};
