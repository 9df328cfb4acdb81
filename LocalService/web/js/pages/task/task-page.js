/** One task with everything about it. */
import { html, useEffect, useState } from '../../view.js';
import { useBoard, usePeople, useTask } from '../../core/data.js';
import { boardPath, navigate, taskPath } from '../../core/router.js';
import { changeTask, deleteTask } from '../../core/tasks.js';
import { toast } from '../../core/toasts.js';
import { BoardDot, Loaded } from '../../ui/bits.js';
import { GrowArea } from '../../ui/grow-area.js';
import { Icon } from '../../ui/icon.js';
import { Dropdown, MenuItem } from '../../ui/popover.js';
import { DoneCheck } from '../../ui/task-bits.js';
import { Checklists } from './checklists.js';
import { Description } from './description.js';
import { Feed } from './feed.js';
import { Files } from './files.js';
import { Side } from './side.js';
import { Subtasks } from './subtasks.js';

/** @param {{ route: import('../../core/router.js').Route, current: any }} props */
export function TaskPage({ route, current }) {
  const resource = useTask(route.params.key);
  return html`<${Loaded} resource=${resource} rows=${8}>
    ${(task) => html`<${TaskView} task=${task} reload=${resource.reload} me=${current.me} />`}
  <//>`;
}

function TaskView({ task, reload, me }) {
  const board = useBoard(task.board_id).data?.board;
  const people = usePeople().data?.people ?? [];
  useEffect(() => {
    document.title = `${task.title} – Parvela`;
  }, [task.title]);
  const canEdit = task.can_edit !== false;
  const shared = { task, canEdit, reload };
  return html`<article class="task ${task.done ? 'is-done' : ''}">
    <div class="task-head">
      <nav class="crumbs" aria-label="Where this task is">
        <a href=${boardPath(task.board_id)}><${BoardDot} color=${board?.color} /><span class="truncate">${task.board}</span></a>
        <${Icon} name="right" size=${14} />
        <span class="truncate">${task.list}</span>
        ${
          task.parent &&
          html`<${Icon} name="right" size=${14} />
          <a class="truncate" href=${taskPath(task.parent.key)} title=${task.parent.title}>${task.parent.key}</a>`
        }
        <span class="grow"></span>
        <${TaskMenu} task=${task} canEdit=${canEdit} />
      </nav>
      <div class="task-heading">
        <${DoneCheck} task=${task} />
        <${Title} key=${task.key} task=${task} canEdit=${canEdit} />
      </div>
    </div>
    <${Side} task=${task} board=${board} people=${people} canEdit=${canEdit} />
    <div class="task-main">
      <${Description} ...${shared} />
      <${Checklists} ...${shared} />
      <${Subtasks} ...${shared} />
      <${Files} ...${shared} />
      <${Feed} task=${task} me=${me} reload=${reload} />
    </div>
  </article>`;
}

/** The heading is the field: a click edits it, Enter or leaving saves it. */
function Title({ task, canEdit }) {
  const [text, setText] = useState(task.title);
  const [editing, setEditing] = useState(false);
  useEffect(() => {
    if (!editing) setText(task.title);
  }, [task.title, editing]);
  const save = () => {
    setEditing(false);
    const title = text.trim().replace(/\s+/g, ' ');
    if (title === '' || title === task.title) setText(task.title);
    else changeTask(task.key, { title }, { title });
  };
  return html`<h1 class="task-title" tabindex="-1">
    <span class="sr-only">${task.title}</span>
    <${GrowArea}
      class="task-title-field"
      aria-label="Title"
      maxlength="500"
      readonly=${!canEdit}
      value=${text}
      onFocus=${() => setEditing(true)}
      onInput=${(event) => setText(event.currentTarget.value.replace(/\n/g, ' '))}
      onBlur=${save}
      onKeyDown=${(event) => {
        if (event.key === 'Enter' && !event.isComposing) {
          event.preventDefault();
          event.currentTarget.blur();
        }
        if (event.key === 'Escape') {
          setText(task.title);
          event.currentTarget.value = task.title;
          event.currentTarget.blur();
        }
      }}
    />
  </h1>`;
}

function TaskMenu({ task, canEdit }) {
  const copyLink = async () => {
    try {
      await navigator.clipboard.writeText(new URL(taskPath(task.key), location.origin).href);
      toast('Link copied.');
    } catch {
      toast("The link couldn't be copied here.", { tone: 'error' });
    }
  };
  const remove = async () => {
    navigate(boardPath(task.board_id));
    await deleteTask(task);
  };
  return html`<${Dropdown} class="icon-button" label="Task menu" title="Task menu" align="end" face=${html`<${Icon} name="more" />`}>
    ${(
      close,
    ) => html`<${MenuItem} close=${close} icon=${html`<${Icon} name="link" size=${18} />`} onSelect=${copyLink}>Copy link<//>
      ${
        canEdit &&
        html`<${MenuItem} danger close=${close} icon=${html`<${Icon} name="trash" size=${18} />`} onSelect=${remove}>Delete task<//>`
      }`}
  <//>`;
}
