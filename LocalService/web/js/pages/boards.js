/** All boards by section. */
import { html, useState } from '../view.js';
import { api } from '../core/api.js';
import { invalidate, optimistic } from '../core/cache.js';
import { useBoards } from '../core/data.js';
import { boardPath, navigate } from '../core/router.js';
import { safeColor } from '../core/color.js';
import { toastError } from '../core/toasts.js';
import { Empty, Loaded, Progress } from '../ui/bits.js';
import { Icon } from '../ui/icon.js';
import { groupBoards } from '../shell/sidebar.js';
import { BoardForm } from './board/board-form.js';

export function BoardsPage() {
  const boards = useBoards();
  const [creating, setCreating] = useState(false);
  return html`<div class="page">
    <div class="page-head">
      <p class="muted grow">One board for each project. Star the ones you open every day.</p>
      <button type="button" class="button" onClick=${() => setCreating(true)}><${Icon} name="plus" size=${18} />New board</button>
    </div>
    <${Loaded} resource=${boards} rows=${6}>
      ${({ boards: list }) =>
        list.length === 0
          ? html`<${Empty} icon="boards" title="No boards yet">
              <p>A board holds the lists and tasks of one project.</p>
              <button type="button" class="button button-primary" onClick=${() => setCreating(true)}>Make the first board</button>
            <//>`
          : groupBoards(list).map(
              (group) => html`<section key=${group.section} class="board-section">
                <h2 class="section-title">${group.section || 'Boards'}</h2>
                <ul class="board-tiles">
                  ${group.boards.map((board) => html`<${BoardTile} key=${board.id} board=${board} />`)}
                </ul>
              </section>`,
            )}
    <//>
    ${
      creating &&
      html`<${BoardForm}
      title="New board"
      action="Create board"
      onClose=${() => setCreating(false)}
      onSave=${async (values) => {
        const board = await api.createBoard(values);
        invalidate((key) => key === 'boards' || key === 'home');
        navigate(boardPath(board.id ?? board.board?.id));
      }}
    />`
    }
  </div>`;
}

/** Stars or unstars a board. @param {{ id: string, starred: boolean }} board */
export async function toggleStar(board) {
  const starred = !board.starred;
  const flip = (entry) => (entry.id === board.id ? { ...entry, starred } : entry);
  try {
    await optimistic(
      (data, key) =>
        key === 'boards'
          ? { ...data, boards: data.boards.map(flip) }
          : key === `board:${board.id}`
            ? { ...data, board: { ...data.board, starred } }
            : data,
      () => api.updateBoard(board.id, { starred }),
    );
  } catch (error) {
    toastError(error);
  }
}

/** The first letter of a board's name: unlike picture signs, every system has a font for it. */
const markOf = ({ name }) => [...name.trim()][0]?.toUpperCase() ?? '?';

function BoardTile({ board }) {
  const total = board.open + board.done;
  return html`<li class="board-tile" style=${{ '--dot': safeColor(board.color) }}>
    <div class="row">
      <span class="board-tile-mark" aria-hidden="true">${markOf(board)}</span>
      <a class="board-tile-name grow" href=${boardPath(board.id)}>${board.name}</a>
      ${board.private && html`<span class="faint" role="img" aria-label="Private" title="Private"><${Icon} name="lock" size=${16} /></span>`}
      <button
        type="button"
        class="icon-button star ${board.starred ? 'star-on' : ''}"
        aria-pressed=${String(board.starred)}
        aria-label=${`Star ${board.name}`}
        title=${board.starred ? 'Remove the star' : 'Star this board'}
        onClick=${() => toggleStar(board)}
      >
        <${Icon} name=${board.starred ? 'starOn' : 'star'} size=${18} />
      </button>
    </div>
    <${Progress} done=${board.done} total=${total} label=${`${board.name}: share done`} />
    <p class="board-tile-counts num">
      <span class="muted">${board.open} open</span>
      <span class="faint">${board.done} done</span>
      ${board.overdue > 0 && html`<span class="danger-text">${board.overdue} overdue</span>`}
    </p>
  </li>`;
}
