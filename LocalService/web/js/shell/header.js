/** The band at the top. In the desktop app it is also the window's title bar. */
import { html } from '../view.js';
import { clockTime, stopwatch } from '../core/dates.js';
import { useBoards, useTimer } from '../core/data.js';
import { dragWindow } from '../core/native.js';
import { overlay } from '../core/overlay.js';
import { taskPath } from '../core/router.js';
import { stopTimer, useClock } from '../core/timer.js';
import { BoardDot } from '../ui/bits.js';
import { Icon, Mark } from '../ui/icon.js';
import { AccountMenu } from './account-menu.js';
import { SearchField } from './search-field.js';

const TITLES = {
  home: 'Home',
  my: 'My tasks',
  inbox: 'Inbox',
  boards: 'Boards',
  search: 'Search',
  settings: 'Settings',
  developers: 'Developer settings',
  notFound: 'Not found',
};

/**
 * @param {{ current: any, route: import('../core/router.js').Route, sidebarOpen: boolean, toggleSidebar: () => void }} props
 */
export function Header({ current, route, sidebarOpen, toggleSidebar }) {
  const label = sidebarOpen ? 'Hide sidebar' : 'Show sidebar';
  return html`<header class="band" onMouseDown=${dragWindow}>
    <div class="band-lead">
      <span class="band-buttons" aria-hidden="true"></span>
      <a class="wordmark" href="/home" aria-label="Parvela, home"><${Mark} size=${26} /><span>Parvela</span></a>
      <button
        type="button"
        class="icon-button band-toggle"
        aria-label=${label}
        title=${`${label} ( [ )`}
        aria-expanded=${String(sidebarOpen)}
        aria-controls="sidebar"
        onClick=${toggleSidebar}
      >
        <${Icon} name="sidebar" />
      </button>
    </div>
    <div class="band-main">
      <${Title} route=${route} />
      <div class="band-actions">
        <${TimerChip} />
        <${SearchField} route=${route} />
        <button
          type="button"
          class="button button-primary band-new"
          aria-label="New task"
          title="New task (N)"
          onClick=${() => overlay.set(newTaskPlace(route))}
        >
          <${Icon} name="plus" size=${18} /><span class="band-new-text">New task</span>
        </button>
        <${AccountMenu} current=${current} />
      </div>
    </div>
  </header>`;
}

const newTaskPlace = (route) => ({ name: 'newTask', board: route.name === 'board' ? route.params.id : undefined });

function Title({ route }) {
  const { data } = useBoards();
  if (route.name === 'board') {
    const board = data?.boards.find((entry) => entry.id === route.params.id);
    return html`<h1 class="band-title" tabindex="-1" title=${board?.name}>
      ${board && html`<${BoardDot} color=${board.color} />`}<span class="truncate">${board?.name ?? 'Board'}</span>
      ${board?.private && html`<span class="band-lock" role="img" aria-label="Private" title="Private"><${Icon} name="lock" size=${16} /></span>`}
    </h1>`;
  }
  if (route.name === 'task')
    return html`<p class="band-title band-key"><span class="num">${route.params.key}</span></p>`;
  return html`<h1 class="band-title" tabindex="-1"><span class="truncate">${TITLES[route.name]}</span></h1>`;
}

function TimerChip() {
  const timer = useTimer().data?.timer ?? null;
  const now = useClock(timer !== null);
  if (!timer) return null;
  const since = new Date(timer.started_at);
  const started = clockTime(`${since.getHours()}:${since.getMinutes()}`);
  return html`<div class="timer-chip" role="group" aria-label=${`Timer on ${timer.task_title}, running since ${started}`}>
    <a class="timer-chip-task" href=${taskPath(timer.task_key)} title=${timer.task_title}>
      <span class="timer-pulse" aria-hidden="true"></span>
      <span class="num" role="timer">${stopwatch(now - timer.started_at)}</span>
      <span class="timer-chip-title truncate">${timer.task_title}</span>
    </a>
    <button
      type="button"
      class="timer-chip-stop"
      aria-label="Stop timer"
      title="Stop timer"
      onClick=${() => stopTimer(timer.task_key)}
    >
      <${Icon} name="stop" size=${16} />
    </button>
  </div>`;
}
