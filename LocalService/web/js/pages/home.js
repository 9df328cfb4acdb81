/** What needs doing now, and how the boards stand. */
import { html } from '../view.js';
import { dayTitle, today } from '../core/dates.js';
import { useBoardColors, useHome, usePeopleMap } from '../core/data.js';
import { overlay } from '../core/overlay.js';
import { boardPath } from '../core/router.js';
import { BoardDot, Empty, Loaded, Progress } from '../ui/bits.js';
import { Icon } from '../ui/icon.js';
import { TaskGroup, TaskRow } from '../ui/task-bits.js';

const GROUPS = [
  { field: 'overdue', title: 'Overdue', tone: 'is-overdue' },
  { field: 'due_today', title: 'Today' },
  { field: 'upcoming', title: 'Upcoming' },
  { field: 'later', title: 'Later', folded: true },
];

function greeting(name) {
  const hour = new Date().getHours();
  const part = hour < 5 ? 'Good night' : hour < 12 ? 'Good morning' : hour < 18 ? 'Good afternoon' : 'Good evening';
  return `${part}, ${String(name).trim().split(/\s+/)[0]}`;
}

export function HomePage({ current }) {
  const home = useHome();
  const colors = useBoardColors();
  const people = usePeopleMap();
  return html`<div class="page home">
    <div class="page-head">
      <div>
        <h2 class="page-title">${greeting(current.me.name)}</h2>
        <p class="muted">${dayTitle(today())}</p>
      </div>
      ${home.data && html`<${DayRing} data=${home.data} />`}
    </div>
    <${Loaded} resource=${home} rows=${8}>
      ${(data) => {
        const groups = GROUPS.filter(({ field }) => data[field]?.length > 0);
        return html`<div class="home-columns">
          <div class="home-tasks">
            ${groups.length === 0 && html`<${NothingDue} boards=${data.boards} />`}
            ${groups.map(
              ({ field, title, tone, folded }) => html`<${TaskGroup}
                key=${field}
                title=${title}
                tone=${tone}
                count=${data[field].length}
                open=${!folded || groups.length === 1}
              >
                ${data[field].map((task) => html`<${TaskRow} key=${task.key} task=${task} colors=${colors} people=${people} />`)}
              <//>`,
            )}
          </div>
          <${BoardsGlance} boards=${data.boards} colors=${colors} />
        </div>`;
      }}
    <//>
  </div>`;
}

function NothingDue({ boards }) {
  return html`<${Empty} icon="sun" title="Nothing is due">
    <p>${boards.length > 0 ? 'Tasks assigned to you show up here by their due date.' : 'Start with a board for your first project.'}</p>
    ${
      boards.length > 0
        ? html`<button type="button" class="button" onClick=${() => overlay.set({ name: 'newTask' })}>New task</button>`
        : html`<a class="button button-primary" href="/boards">Make a board</a>`
    }
  <//>`;
}

/** How much of the day is done, as a ring. */
function DayRing({ data }) {
  const done = data.counts.done_today;
  const total = done + data.counts.today + data.counts.overdue;
  if (total === 0) return null;
  const round = 2 * Math.PI * 20;
  return html`<div class="day-ring">
    <svg width="52" height="52" viewBox="0 0 52 52" aria-hidden="true">
      <circle class="day-ring-track" cx="26" cy="26" r="20" />
      <circle
        class="day-ring-share"
        cx="26"
        cy="26"
        r="20"
        stroke-dasharray=${`${(done / total) * round} ${round}`}
        transform="rotate(-90 26 26)"
      />
    </svg>
    <p><strong class="num">${done} of ${total}</strong><span class="muted">done today</span></p>
  </div>`;
}

function BoardsGlance({ boards, colors }) {
  if (boards.length === 0) return null;
  return html`<section class="glance" aria-labelledby="glance-title">
    <h2 id="glance-title" class="section-title">Boards</h2>
    <ul>
      ${boards.map(
        (board) => html`<li key=${board.id}>
          <a class="glance-board" href=${boardPath(board.id)}>
            <span class="row">
              <${BoardDot} color=${board.color ?? colors.get(board.id)} />
              <strong class="grow truncate">${board.name}</strong>
              ${board.starred && html`<span class="star-on" role="img" aria-label="Starred"><${Icon} name="starOn" size=${15} /></span>`}
            </span>
            <${Progress} done=${board.done} total=${board.open + board.done} label=${`${board.name}: share done`} />
            <span class="glance-counts num">
              <span class="muted">${board.open} open</span>
              ${board.overdue > 0 && html`<span class="danger-text">${board.overdue} overdue</span>`}
            </span>
          </a>
        </li>`,
      )}
    </ul>
  </section>`;
}
