/** One board: its toolbar and the chosen view. */
import { html, useEffect, useMemo, useState } from '../../view.js';
import { listenForKeys } from '../../core/keys.js';
import { useBoard } from '../../core/data.js';
import { recall, remember } from '../../core/local.js';
import { boardPath, navigate } from '../../core/router.js';
import { Loaded } from '../../ui/bits.js';
import { Icon } from '../../ui/icon.js';
import { toggleStar } from '../boards.js';
import { BoardMenu } from './board-menu.js';
import { CalendarView } from './calendar-view.js';
import { FilterMenu } from './filter-menu.js';
import { KanbanView } from './kanban-view.js';
import { ListView } from './list-view.js';
import { NO_FILTER, passes } from './order.js';
import { TableView } from './table-view.js';
import { TimelineView } from './timeline-view.js';

const VIEWS = [
  { id: 'board', name: 'Board', icon: 'boards', View: KanbanView },
  { id: 'list', name: 'List', icon: 'list', View: ListView },
  { id: 'table', name: 'Table', icon: 'table', View: TableView },
  { id: 'calendar', name: 'Calendar', icon: 'calendar', View: CalendarView },
  { id: 'timeline', name: 'Timeline', icon: 'timeline', View: TimelineView },
];

/** @param {{ route: import('../../core/router.js').Route, current: any }} props */
export function BoardPage({ route, current }) {
  const { id } = route.params;
  const resource = useBoard(id);
  const view = VIEWS.find((entry) => entry.id === route.query.get('view')) ?? VIEWS[0];
  const [filter, setFilter] = useFilter(id);

  useEffect(
    () =>
      listenForKeys(() =>
        VIEWS.map((entry, index) => ({
          keys: [String(index + 1)],
          group: 'On a board',
          text: entry.name,
          run: () => navigate(boardPath(id, entry.id)),
        })),
      ),
    [id],
  );

  return html`<div class="board-page">
    <div class="board-bar">
      <nav class="view-tabs" aria-label="Views">
        ${VIEWS.map(
          (entry) => html`<a
            key=${entry.id}
            class="view-tab"
            href=${boardPath(id, entry.id)}
            aria-current=${entry.id === view.id ? 'page' : undefined}
          >
            <${Icon} name=${entry.icon} size=${17} /><span>${entry.name}</span>
          </a>`,
        )}
      </nav>
      <span class="grow"></span>
      ${
        resource.data &&
        html`<${FilterMenu} board=${resource.data.board} filter=${filter} onChange=${setFilter} />
        <button
          type="button"
          class="icon-button star ${resource.data.board.starred ? 'star-on' : ''}"
          aria-pressed=${String(resource.data.board.starred)}
          aria-label="Star this board"
          title=${resource.data.board.starred ? 'Remove the star' : 'Star this board'}
          onClick=${() => toggleStar(resource.data.board)}
        >
          <${Icon} name=${resource.data.board.starred ? 'starOn' : 'star'} size=${18} />
        </button>
        <${BoardMenu} board=${resource.data.board} />`
      }
    </div>
    <${Loaded} resource=${resource} rows=${6}>
      ${(data) => html`<${Shown} view=${view} data=${data} filter=${filter} clear=${() => setFilter(NO_FILTER)} current=${current} />`}
    <//>
  </div>`;
}

function Shown({ view, data, filter, clear, current }) {
  const tasks = useMemo(() => data.tasks.filter((task) => passes(filter, task)), [data.tasks, filter]);
  const hidden = data.tasks.length - tasks.length;
  return html`${data.more && html`<p class="filter-note" role="status">This board holds more tasks than are shown here. Search finds them all.</p>`}
    ${
      hidden > 0 &&
      html`<p class="filter-note" role="status">
      ${hidden === 1 ? '1 task is' : `${hidden} tasks are`} filtered out.
      <button type="button" class="link-button" onClick=${clear}>Show all</button>
    </p>`
    }
    <${view.View} board=${data.board} tasks=${tasks} current=${current} />`;
}

/** The filter of each board is remembered in this browser. */
function useFilter(id) {
  const [filter, setFilter] = useState(() => readFilter(id));
  const change = (next) => {
    setFilter(next);
    remember(`filter.${id}`, next === NO_FILTER ? null : JSON.stringify(next));
  };
  return [filter, change];
}

function readFilter(id) {
  try {
    const stored = JSON.parse(recall(`filter.${id}`) ?? 'null');
    const lists = ['people', 'labels', 'priorities'];
    return stored && lists.every((name) => Array.isArray(stored[name])) ? { ...NO_FILTER, ...stored } : NO_FILTER;
  } catch {
    return NO_FILTER;
  }
}
