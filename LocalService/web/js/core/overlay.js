/** Which of the app's own dialogs is open. */
import { createStore } from './store.js';

/** @type {import('./store.js').Store<null | { name: 'newTask', board?: string, list?: string, date?: string }
 *   | { name: 'shortcuts' }>} */
export const overlay = createStore(null);
