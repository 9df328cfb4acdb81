/** Search results. The field is in the header. */
import { html } from '../view.js';
import { api } from '../core/api.js';
import { useResource } from '../core/cache.js';
import { useBoardColors, usePeopleMap } from '../core/data.js';
import { Empty, Loaded } from '../ui/bits.js';
import { TaskRow } from '../ui/task-bits.js';

/** @param {{ route: import('../core/router.js').Route }} props */
export function SearchPage({ route }) {
  const text = (route.query.get('q') ?? '').trim();
  return text === ''
    ? html`<${Empty} icon="search" title="Search all boards">
        <p>Type a word from a title or description, a label, or a key like TSK-12.</p>
      <//>`
    : html`<${Results} key=${text} text=${text} />`;
}

function Results({ text }) {
  const resource = useResource(`search:${text}`, () => api.search(text));
  const colors = useBoardColors();
  const people = usePeopleMap();
  return html`<div class="page">
    <${Loaded} resource=${resource} rows=${6}>
      ${({ results }) =>
        results.length === 0
          ? html`<${Empty} icon="search" title="Nothing found"><p>No task matches “${text}”. Try fewer or other words.</p><//>`
          : html`<p class="muted result-count" role="status">${results.length === 1 ? '1 task' : `${results.length} tasks`} for “${text}”</p>
              <ul class="task-list task-list-card">
                ${results.map((task) => html`<${TaskRow} key=${task.key} task=${task} colors=${colors} people=${people} />`)}
              </ul>`}
    <//>
  </div>`;
}
