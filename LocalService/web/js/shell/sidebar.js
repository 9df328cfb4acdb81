/** The way around: the person's own pages, then the boards by section. */
import { html } from '../view.js';
import { useBoards, useInbox } from '../core/data.js';
import { boardPath } from '../core/router.js';
import { BoardDot, Skeleton } from '../ui/bits.js';
import { Icon } from '../ui/icon.js';

const PAGES = [
  { name: 'home', path: '/home', icon: 'home', text: 'Home' },
  { name: 'my', path: '/my', icon: 'my', text: 'My tasks' },
  { name: 'inbox', path: '/inbox', icon: 'inbox', text: 'Inbox' },
  { name: 'boards', path: '/boards', icon: 'boards', text: 'Boards' },
  { name: 'search', path: '/search', icon: 'search', text: 'Search' },
];

/** Boards in their order, a new group wherever the section changes. @param {any[]} boards */
export function groupBoards(boards) {
  const groups = [];
  for (const board of boards) {
    const section = board.section || '';
    const group = groups.find((entry) => entry.section === section);
    if (group) group.boards.push(board);
    else groups.push({ section, boards: [board] });
  }
  return groups;
}

/** @param {{ route: import('../core/router.js').Route, hidden: boolean }} props */
export function Sidebar({ route, hidden }) {
  const boards = useBoards();
  const unread = useInbox().data?.unread ?? 0;
  const list = boards.data?.boards ?? [];
  const starred = list.filter((board) => board.starred);
  const groups = groupBoards(list.filter((board) => !board.starred));
  const link = (page) => html`<li key=${page.name}>
    <a class="side-link" href=${page.path} aria-current=${route.name === page.name ? 'page' : undefined}>
      <${Icon} name=${page.icon} />
      <span class="grow truncate">${page.text}</span>
      ${
        page.name === 'inbox' &&
        unread > 0 &&
        html`<span class="side-count num" aria-label=${`${unread} unread`}>${unread > 99 ? '99+' : unread}</span>`
      }
    </a>
  </li>`;
  return html`<nav id="sidebar" class="sidebar" aria-label="Main" hidden=${hidden}>
    <ul class="side-list">
      ${PAGES.map(link)}
    </ul>
    ${boards.data === undefined && !boards.error && html`<div class="side-section"><${Skeleton} rows=${4} /></div>`}
    ${starred.length > 0 && html`<${Section} title="Starred" boards=${starred} route=${route} />`}
    ${groups.map(
      (group) =>
        html`<${Section} key=${group.section} title=${group.section || 'Boards'} boards=${group.boards} route=${route} />`,
    )}
  </nav>`;
}

function Section({ title, boards, route }) {
  return html`<section class="side-section" aria-label=${title}>
    <h2 class="side-title truncate">${title}</h2>
    <ul class="side-list">
      ${boards.map(
        (board) => html`<li key=${board.id}>
          <a
            class="side-link side-board"
            href=${boardPath(board.id)}
            title=${board.name}
            aria-current=${route.name === 'board' && route.params.id === board.id ? 'page' : undefined}
          >
            <${BoardDot} color=${board.color} />
            <span class="grow truncate">${board.name}</span>
            ${board.private && html`<span class="side-mark" role="img" aria-label="Private"><${Icon} name="lock" size=${14} /></span>`}
            ${
              board.overdue > 0 &&
              html`<span class="side-overdue num" title=${`${board.overdue} overdue`} aria-label=${`${board.overdue} overdue`}
              >${board.overdue}</span
            >`
            }
          </a>
        </li>`,
      )}
    </ul>
  </section>`;
}
