/** Shows the page that the address names, and gives the window its title. */
import { html, useEffect } from '../view.js';
import { useBoards } from '../core/data.js';
import { peek } from '../core/cache.js';
import { BoardPage } from './board/board-page.js';
import { BoardsPage } from './boards.js';
import { DevelopersPage } from './developers.js';
import { HomePage } from './home.js';
import { InboxPage } from './inbox.js';
import { MyTasksPage } from './my-tasks.js';
import { NotFoundPage } from './not-found.js';
import { SearchPage } from './search.js';
import { SettingsPage } from './settings.js';
import { TaskPage } from './task/task-page.js';

const PAGES = {
  home: [HomePage, 'Home'],
  my: [MyTasksPage, 'My tasks'],
  inbox: [InboxPage, 'Inbox'],
  boards: [BoardsPage, 'Boards'],
  search: [SearchPage, 'Search'],
  settings: [SettingsPage, 'Settings'],
  developers: [DevelopersPage, 'Developer settings'],
  board: [BoardPage, 'Board'],
  task: [TaskPage, 'Task'],
  notFound: [NotFoundPage, 'Not found'],
};

/** @param {{ route: import('../core/router.js').Route, current: any }} props */
export function PageView({ route, current }) {
  const boards = useBoards().data?.boards;
  const [Page, plainTitle] = PAGES[route.name] ?? PAGES.notFound;
  let title = plainTitle;
  if (route.name === 'board') title = boards?.find((board) => board.id === route.params.id)?.name ?? title;
  if (route.name === 'task') title = peek(`task:${route.params.key}`)?.title ?? route.params.key;
  useEffect(() => {
    // The desktop shell names its window after the page. A task page renews this when the task has loaded.
    document.title = `${title} – Parvela`;
  }, [title, route.path]);
  const param = route.params.id ?? route.params.key ?? '';
  return html`<${Page} key=${`${route.name} ${param}`} route=${route} current=${current} />`;
}
