/** One list of the board as a column. */
import { html, useMemo, useRef, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { invalidate } from '../../core/cache.js';
import { recall } from '../../core/local.js';
import { taskPath } from '../../core/router.js';
import { toast, toastError } from '../../core/toasts.js';
import { AvatarStack, LabelChip } from '../../ui/bits.js';
import { useFocus } from '../../ui/focus.js';
import { useSubmit } from '../../ui/form.js';
import { Icon } from '../../ui/icon.js';
import { useKept } from '../../ui/kept.js';
import { Dropdown, MenuItem } from '../../ui/popover.js';
import { Counts, DoneCheck, DueChip, PriorityMark } from '../../ui/task-bits.js';

/**
 * @param {{ board: any, list: any, lists: any[], index: number, cards: any[], movingCard: any,
 *           moving: import('./kanban-view.js').Moving|null }} props
 */
export function Column({ board, list, lists, index, cards, moving, movingCard }) {
  const [renaming, setRenaming] = useState(false);
  const here = moving && movingCard && moving.list === list.id;
  // The same node again is skipped by the renderer: moving one card of a thousand draws only what changes.
  const nodes = useMemo(() => cards.map((card) => html`<${Card} key=${card.key} card=${card} />`), [cards]);
  const drawn = moving ? nodes.filter((node) => node.key !== moving.key) : [...nodes];
  if (here) {
    drawn.splice(
      moving.index,
      0,
      moving.by === 'keys'
        ? html`<${Card} key=${movingCard.key} card=${movingCard} picked />`
        : html`<li key="gap" class="card-gap" aria-hidden="true"></li>`,
    );
  }
  const complete = list.id === board.completionListId;
  return html`<section class="column ${here ? 'is-target' : ''}" data-list=${list.id} aria-label=${list.name}>
    <div class="column-head">
      ${complete && html`<span class="column-done" role="img" aria-label="Done list" title="Tasks here are done"><${Icon} name="check" size=${16} /></span>`}
      ${
        renaming
          ? html`<${RenameList} board=${board} list=${list} close=${() => setRenaming(false)} />`
          : html`<h2 class="truncate" title=${list.name}>${list.name}</h2>`
      }
      <span class="column-count num" aria-label=${`${cards.length} tasks`}>${cards.length}</span>
      <${ColumnMenu} board=${board} list=${list} lists=${lists} index=${index} rename=${() => setRenaming(true)} />
    </div>
    <ul class="column-cards">
      ${drawn}
    </ul>
    <${AddCard} board=${board} list=${list} />
  </section>`;
}

/** @param {{ card: any, picked?: boolean }} props */
function Card({ card, picked = false }) {
  const labels = card.label_tags ?? [];
  const hasMeta =
    card.due_date ||
    (card.priority && card.priority !== 'none') ||
    card.comments ||
    card.files ||
    card.checklist?.total;
  const people = card.assignee_people ?? [];
  return html`<li class="card ${card.done ? 'is-done' : ''} ${picked ? 'is-picked' : ''}" data-key=${card.key}>
    ${labels.length > 0 && html`<div class="card-labels">${labels.map((label) => html`<${LabelChip} key=${label.id} label=${label} />`)}</div>`}
    <div class="card-line">
      <${DoneCheck} task=${card} />
      <a class="card-title" href=${taskPath(card.key)} draggable=${false} aria-describedby="card-help">${card.title}</a>
    </div>
    ${
      (hasMeta || people.length > 0) &&
      html`<div class="card-meta">
      <${PriorityMark} priority=${card.priority} />
      <${DueChip} task=${card} />
      <${Counts} task=${card} />
      <span class="grow"></span>
      <${AvatarStack} people=${people} />
    </div>`
    }
  </li>`;
}

function ColumnMenu({ board, list, lists, index, rename }) {
  const change = async (action) => {
    try {
      await action();
      invalidate((key) => key === `board:${board.id}`);
    } catch (error) {
      toastError(error);
    }
  };
  const item = (icon, text, onSelect, extra = {}) =>
    html`<${MenuItem} icon=${html`<${Icon} name=${icon} size=${18} />`} onSelect=${onSelect} ...${extra}>${text}<//>`;
  return html`<${Dropdown} class="icon-button icon-button-small" label=${`Menu of ${list.name}`} align="end" face=${html`<${Icon} name="more" size=${18} />`}>
    ${(close) => [
      item('edit', 'Rename', rename, { close }),
      item('left', 'Move left', () => change(() => api.updateList(list.id, { position: index - 1 })), {
        close,
        disabled: index === 0,
      }),
      item('right', 'Move right', () => change(() => api.updateList(list.id, { position: index + 1 })), {
        close,
        disabled: index === lists.length - 1,
      }),
      item(
        'trash',
        list.total > 0 ? 'Delete (move its tasks first)' : 'Delete',
        () => change(() => api.deleteList(list.id)),
        {
          close,
          danger: true,
          disabled: list.total > 0,
        },
      ),
    ]}
  <//>`;
}

function RenameList({ board, list, close }) {
  const [name, setName] = useState(list.name);
  const saved = useRef(false);
  const field = useFocus('select');
  const save = async () => {
    if (saved.current) return;
    saved.current = true;
    close();
    const text = name.trim();
    if (text === '' || text === list.name) return;
    try {
      await api.updateList(list.id, { name: text });
      invalidate((key) => key === `board:${board.id}`);
    } catch (error) {
      toastError(error);
    }
  };
  return html`<input
    class="input input-small grow"
    aria-label="List name"
    maxlength="100"
    ref=${field}
    value=${name}
    onInput=${(event) => setName(event.currentTarget.value)}
    onBlur=${save}
    onKeyDown=${(event) => {
      if (event.key === 'Enter') save();
      if (event.key === 'Escape') {
        saved.current = true;
        close();
      }
    }}
  />`;
}

/** Types cards into a list one after another. */
function AddCard({ board, list }) {
  const draft = `draft.card.${list.id}`;
  const [open, setOpen] = useState(false);
  if (open) return html`<${AddCardForm} board=${board} list=${list} draft=${draft} close=${() => setOpen(false)} />`;
  return html`<button type="button" class="add-card" onClick=${() => setOpen(true)}>
    <${Icon} name="plus" size=${17} />${recall(draft) === null ? 'Add a task' : 'Go on with your task'}
  </button>`;
}

function AddCardForm({ board, list, draft, close }) {
  const [text, setText] = useKept(draft);
  const field = useFocus();
  const { busy, error, submit } = useSubmit(async () => {
    const title = text.trim().replace(/\s+/g, ' ');
    if (title === '') return;
    await api.createTask({ board: board.id, list: list.id, title });
    setText('');
    invalidate((key) => [`board:${board.id}`, 'boards', 'home'].includes(key));
    field.current?.focus();
  });
  return html`<form class="add-card-form" onSubmit=${submit}>
    <textarea
      ref=${field}
      class="input"
      rows="2"
      aria-label=${`New task in ${list.name}`}
      placeholder="What needs doing?"
      maxlength="500"
      value=${text}
      onInput=${(event) => setText(event.currentTarget.value)}
      onKeyDown=${(event) => {
        if (event.key === 'Enter' && !event.shiftKey && !event.isComposing) submit(event);
        if (event.key === 'Escape') close();
      }}
    ></textarea>
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
    <div class="row">
      <button class="button button-primary button-small" disabled=${busy}>Add</button>
      <button type="button" class="button button-small" onClick=${close}>Close</button>
    </div>
  </form>`;
}

/** @param {{ board: any }} props */
export function AddList({ board }) {
  const [open, setOpen] = useState(false);
  return html`<section class="column column-new" aria-label="New list">
    ${
      open
        ? html`<${AddListForm} board=${board} close=${() => setOpen(false)} />`
        : html`<button type="button" class="add-card" onClick=${() => setOpen(true)}><${Icon} name="plus" size=${17} />Add a list</button>`
    }
    <p id="card-help" class="sr-only">Enter opens, Space picks up to move with the arrow keys, X marks as done.</p>
  </section>`;
}

function AddListForm({ board, close }) {
  const [name, setName] = useState('');
  const field = useFocus();
  const { busy, error, submit } = useSubmit(async () => {
    const text = name.trim();
    if (text === '') return;
    await api.createList(board.id, text);
    close();
    invalidate((key) => key === `board:${board.id}`);
    toast(`Added the list “${text}”.`);
  });
  return html`<form class="form" onSubmit=${submit}>
    <input
      ref=${field}
      class="input"
      aria-label="List name"
      placeholder="List name"
      maxlength="100"
      value=${name}
      onInput=${(event) => setName(event.currentTarget.value)}
      onKeyDown=${(event) => event.key === 'Escape' && close()}
    />
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
    <div class="row">
      <button class="button button-primary button-small" disabled=${busy}>Add list</button>
      <button type="button" class="button button-small" onClick=${close}>Cancel</button>
    </div>
  </form>`;
}
