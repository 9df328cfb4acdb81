/** The new-task dialog. What is typed survives closing it, a failed call and a reload. */
import { html, useMemo, useRef, useState } from '../view.js';
import { api } from '../core/api.js';
import { invalidate } from '../core/cache.js';
import { useBoard, useBoards, usePeople } from '../core/data.js';
import { recall, remember } from '../core/local.js';
import { toast } from '../core/toasts.js';
import { short } from '../core/tasks.js';
import { Dialog } from '../ui/dialog.js';
import { useSubmit } from '../ui/form.js';
import { GrowArea } from '../ui/grow-area.js';
import { AssigneePicker, DatePicker, LabelPicker, PriorityPicker } from '../ui/pickers.js';

const DRAFT = 'draft.newTask';
const BLANK = { title: '', description: '', priority: 'none', date: null, time: null, assignees: [], labels: [] };

function readDraft() {
  try {
    const draft = JSON.parse(recall(DRAFT) ?? 'null');
    return draft && typeof draft.title === 'string' ? { ...BLANK, ...draft } : null;
  } catch {
    return null;
  }
}

/**
 * @param {{ current: any, preset: { board?: string, list?: string, date?: string }, onClose: () => void }} props
 */
export function NewTaskDialog({ preset, onClose }) {
  const boards = useBoards().data?.boards ?? [];
  const [task, setTask] = useState(() => ({
    ...(readDraft() ?? BLANK),
    ...(preset.date ? { date: preset.date } : {}),
  }));
  const [boardId, setBoardId] = useState(preset.board ?? recall('newTask.board') ?? '');
  const [listId, setListId] = useState(preset.list ?? '');
  const [again, setAgain] = useState(false);
  const title = useRef(null);
  const chosenId = boards.some((board) => board.id === boardId) ? boardId : (boards[0]?.id ?? '');
  const board = useBoard(chosenId).data?.board;
  const people = usePeople().data?.people ?? [];
  const lists = board?.lists ?? [];
  const list = lists.some((entry) => entry.id === listId) ? listId : (firstOpenList(board)?.id ?? '');
  // The draft is written with each key, so that nothing is lost however the dialog goes away.
  const change = (part) =>
    setTask((now) => {
      const next = { ...now, ...part };
      const typed = next.title.trim() !== '' || next.description.trim() !== '';
      remember(DRAFT, typed ? JSON.stringify(next) : null);
      return next;
    });
  const labels = board?.labels ?? [];
  const labelIds = useMemo(
    () => task.labels.filter((id) => labels.some((label) => label.id === id)),
    [labels, task.labels],
  );

  const { busy, error, setError, submit } = useSubmit(async () => {
    const text = task.title.trim().replace(/\s+/g, ' ');
    if (text === '') {
      setError('Give the task a title.');
      title.current.focus();
      return;
    }
    const created = await api.createTask({
      board: chosenId,
      list: list || undefined,
      title: text,
      description: task.description.trim() || undefined,
      assignees: task.assignees.length > 0 ? task.assignees : undefined,
      labels: labelIds.length > 0 ? labelIds : undefined,
      priority: task.priority,
      due_date: task.date ?? undefined,
      due_time: task.time ?? undefined,
    });
    remember(DRAFT, null);
    remember('newTask.board', chosenId);
    invalidate((key) => ['home', 'my', 'boards', `board:${chosenId}`].includes(key) || key.startsWith('search:'));
    toast(`Added ${created.key}: “${short(created.title)}”.`);
    if (again) {
      setTask({ ...BLANK, date: task.date, time: task.time });
      title.current.focus();
    } else onClose();
  });

  return html`<${Dialog} title="New task" class="new-task" onClose=${onClose}>
    <form class="form" onSubmit=${submit}>
      <${GrowArea}
        field=${title}
        class="new-task-title"
        aria-label="Title"
        placeholder="What needs doing?"
        maxlength="500"
        autofocus
        value=${task.title}
        onInput=${(event) => change({ title: event.currentTarget.value })}
        onKeyDown=${(event) => {
          if (event.key === 'Enter' && !event.shiftKey && !event.isComposing) submit(event);
        }}
      />
      <${GrowArea}
        class="new-task-description"
        aria-label="Description"
        placeholder="Add a description"
        value=${task.description}
        onInput=${(event) => change({ description: event.currentTarget.value })}
        onKeyDown=${(event) => {
          if (event.key === 'Enter' && (event.ctrlKey || event.metaKey)) submit(event);
        }}
      />
      <div class="new-task-fields">
        <${DatePicker} withTime date=${task.date} time=${task.time} onChange=${({ date, time }) => change({ date, time })} />
        <${PriorityPicker} value=${task.priority} onChange=${(priority) => change({ priority })} />
        <${AssigneePicker} people=${people} value=${task.assignees} onChange=${(assignees) => change({ assignees })} />
        <${LabelPicker} labels=${labels} value=${labelIds} onChange=${(ids) => change({ labels: ids })} />
      </div>
      ${error && html`<p class="form-error" role="alert">${error}</p>`}
      <div class="new-task-foot">
        <label class="select-wrap">
          <span class="sr-only">Board</span>
          <select
            class="select"
            value=${chosenId}
            onChange=${(event) => {
              setBoardId(event.currentTarget.value);
              setListId('');
            }}
          >
            ${boards.map((entry) => html`<option key=${entry.id} value=${entry.id} selected=${entry.id === chosenId}>${entry.name}</option>`)}
          </select>
        </label>
        <label class="select-wrap">
          <span class="sr-only">List</span>
          <select class="select" value=${list} onChange=${(event) => setListId(event.currentTarget.value)}>
            ${lists.map((entry) => html`<option key=${entry.id} value=${entry.id} selected=${entry.id === list}>${entry.name}</option>`)}
          </select>
        </label>
        <span class="grow"></span>
        <label class="check-label">
          <input type="checkbox" checked=${again} onChange=${(event) => setAgain(event.currentTarget.checked)} />
          <span>Add another</span>
        </label>
        <button class="button button-primary" disabled=${busy || boards.length === 0}>Create task</button>
      </div>
      ${boards.length === 0 && html`<p class="muted">There is no board yet. <a class="text-link" href="/boards">Make one first.</a></p>`}
    </form>
  <//>`;
}

/** New work does not start in the list that holds what is finished. */
function firstOpenList(board) {
  return board?.lists.find((list) => list.id !== board.completionListId) ?? board?.lists[0];
}
