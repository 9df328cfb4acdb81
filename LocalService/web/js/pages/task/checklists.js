/** Checklists of a task. */
import { html, useRef, useState } from '../../view.js';
import { api, call } from '../../core/api.js';
import { optimistic } from '../../core/cache.js';
import { toastError } from '../../core/toasts.js';
import { Progress } from '../../ui/bits.js';
import { useFocus } from '../../ui/focus.js';
import { useSubmit } from '../../ui/form.js';
import { Icon } from '../../ui/icon.js';
import { useKept } from '../../ui/kept.js';

/** Changes the checklists shown of one task, then really. */
function changeLists(task, change, commit) {
  return optimistic(
    (data, key) => (key === `task:${task.key}` ? { ...data, checklists: change(data.checklists) } : data),
    commit,
  ).catch(toastError);
}

const mapItem = (lists, id, change) =>
  lists.map((list) => ({ ...list, items: list.items.flatMap((item) => (item.id === id ? change(item) : [item])) }));

/** @param {{ task: any, canEdit: boolean, reload: () => void }} props */
export function Checklists({ task, canEdit, reload }) {
  return html`${task.checklists.map(
    (list) => html`<${Checklist} key=${list.id} task=${task} list=${list} canEdit=${canEdit} reload=${reload} />`,
  )}
    ${canEdit && html`<${AddChecklist} task=${task} reload=${reload} />`}`;
}

function Checklist({ task, list, canEdit, reload }) {
  const done = list.items.filter((item) => item.done).length;
  const remove = () =>
    changeLists(
      task,
      (lists) => lists.filter((entry) => entry.id !== list.id),
      () => api.deleteChecklist(list.id),
    );
  return html`<section class="task-section" aria-label=${list.title}>
    <div class="section-head">
      <h2>${list.title}</h2>
      <span class="faint num">${done}/${list.items.length}</span>
      <span class="grow"></span>
      ${
        canEdit &&
        html`<button type="button" class="icon-button icon-button-small" aria-label=${`Delete checklist ${list.title}`} title="Delete checklist" onClick=${remove}>
        <${Icon} name="trash" size=${16} />
      </button>`
      }
    </div>
    ${list.items.length > 0 && html`<${Progress} done=${done} total=${list.items.length} label=${`${list.title}: items done`} />`}
    <ul class="checklist">
      ${list.items.map((item) => html`<${Item} key=${item.id} task=${task} item=${item} canEdit=${canEdit} />`)}
    </ul>
    ${
      canEdit &&
      html`<${AddLine} draft=${`draft.item.${list.id}`} label=${`Add to ${list.title}`} placeholder="Add an item" onAdd=${async (
        text,
      ) => {
        await api.createItem(list.id, text);
        reload();
      }} />`
    }
  </section>`;
}

function Item({ task, item, canEdit }) {
  const [editing, setEditing] = useState(false);
  const flip = () =>
    changeLists(
      task,
      (lists) => mapItem(lists, item.id, (entry) => [{ ...entry, done: !item.done }]),
      () =>
        call('POST', `/api/v1/tasks/${encodeURIComponent(task.key)}/checklist`, { item: item.id, done: !item.done }),
    );
  const remove = () =>
    changeLists(
      task,
      (lists) => mapItem(lists, item.id, () => []),
      () => api.deleteItem(item.id),
    );
  const save = (text) => {
    const next = text.trim();
    setEditing(false);
    if (next === '' || next === item.text) return;
    changeLists(
      task,
      (lists) => mapItem(lists, item.id, (entry) => [{ ...entry, text: next }]),
      () => api.updateItem(item.id, { text: next }),
    );
  };
  return html`<li class="check-item ${item.done ? 'is-done' : ''}">
    <button type="button" role="checkbox" class="done-check is-square" aria-checked=${String(item.done)} aria-label=${item.text} onClick=${flip}>
      <${Icon} name="check" size=${13} />
    </button>
    ${
      editing
        ? html`<${ItemField} item=${item} save=${save} />`
        : html`<button
          type="button"
          class="check-text grow"
          aria-label=${`Edit: ${item.text}`}
          disabled=${!canEdit}
          onClick=${() => setEditing(true)}
        >
          ${item.text}
        </button>`
    }
    ${
      canEdit &&
      html`<button type="button" class="icon-button icon-button-small on-hover" aria-label=${`Delete: ${item.text}`} onClick=${remove}>
      <${Icon} name="close" size=${15} />
    </button>`
    }
  </li>`;
}

function ItemField({ item, save }) {
  const [text, setText] = useState(item.text);
  const field = useFocus();
  const ended = useRef(false);
  // Going away takes the focus, so the same end is heard twice.
  const end = (result) => {
    if (ended.current) return;
    ended.current = true;
    save(result);
  };
  return html`<input
    ref=${field}
    class="input input-small grow"
    aria-label="Item"
    maxlength="500"
    value=${text}
    onInput=${(event) => setText(event.currentTarget.value)}
    onBlur=${() => end(text)}
    onKeyDown=${(event) => {
      if (event.key === 'Enter') end(text);
      if (event.key === 'Escape') end(item.text);
    }}
  />`;
}

/**
 * One line to add things with, one after another.
 * @param {{ label: string, placeholder: string, draft: string, onAdd: (text: string) => Promise<void> }} props
 */
export function AddLine({ label, placeholder, draft, onAdd }) {
  const [text, setText] = useKept(draft);
  const field = useRef(null);
  const { busy, error, submit } = useSubmit(async () => {
    if (text.trim() === '') return;
    await onAdd(text.trim());
    setText('');
    field.current?.focus();
  });
  return html`<form class="add-line" onSubmit=${submit}>
    <${Icon} name="plus" size=${16} />
    <input
      ref=${field}
      class="add-line-field grow"
      aria-label=${label}
      placeholder=${placeholder}
      maxlength="500"
      value=${text}
      onInput=${(event) => setText(event.currentTarget.value)}
    />
    ${text.trim() !== '' && html`<button class="button button-small" disabled=${busy}>Add</button>`}
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
  </form>`;
}

function AddChecklist({ task, reload }) {
  const [open, setOpen] = useState(false);
  if (open) return html`<${ChecklistForm} task=${task} reload=${reload} close=${() => setOpen(false)} />`;
  return html`<div class="task-section task-section-tight">
    <button type="button" class="button button-small" onClick=${() => setOpen(true)}>
      <${Icon} name="checklist" size=${17} />Add a checklist
    </button>
  </div>`;
}

function ChecklistForm({ task, reload, close }) {
  const [title, setTitle] = useState('Checklist');
  const field = useFocus('select');
  const { busy, error, submit } = useSubmit(async () => {
    if (title.trim() === '') return;
    await api.createChecklist(task.key, title.trim());
    close();
    reload();
  });
  return html`<form class="task-section row" onSubmit=${submit}>
    <input
      ref=${field}
      class="input input-small grow"
      aria-label="Checklist title"
      maxlength="100"
      value=${title}
      onInput=${(event) => setTitle(event.currentTarget.value)}
      onKeyDown=${(event) => event.key === 'Escape' && close()}
    />
    <button class="button button-primary button-small" disabled=${busy}>Add</button>
    <button type="button" class="button button-small" onClick=${close}>Cancel</button>
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
  </form>`;
}
