/** The task's description: text to read, a click to edit. A half-written text is kept until it is saved or dropped. */
import { html, useState } from '../../view.js';
import { recall, remember } from '../../core/local.js';
import { changeTask } from '../../core/tasks.js';
import { GrowArea } from '../../ui/grow-area.js';
import { RichText } from '../../ui/rich-text.js';

/** @param {{ task: any, canEdit: boolean }} props */
export function Description({ task, canEdit }) {
  const draftName = `draft.description.${task.key}`;
  const [draft, setDraft] = useState(() => recall(draftName));
  const [fresh, setFresh] = useState(false);
  const edit = (text) => {
    setDraft(text);
    remember(draftName, text === task.description ? null : text);
  };
  const leave = () => {
    setDraft(null);
    remember(draftName, null);
  };
  const save = async () => {
    const text = draft.trim();
    if (text === (task.description ?? '').trim()) return leave();
    if (await changeTask(task.key, { description: text }, { description: text || null })) leave();
  };
  const start = () => {
    setFresh(true);
    setDraft(task.description ?? '');
  };
  if (draft !== null) {
    return html`<section class="task-section" aria-label="Description">
      <${GrowArea}
        class="input description-field"
        aria-label="Description"
        placeholder="What is this about?"
        maxlength="20000"
        focus=${fresh}
        value=${draft}
        onInput=${(event) => edit(event.currentTarget.value)}
        onKeyDown=${(event) => {
          if (event.key === 'Enter' && (event.ctrlKey || event.metaKey)) save();
          if (event.key === 'Escape' && draft === (task.description ?? '')) leave();
        }}
      />
      <div class="row">
        <button type="button" class="button button-primary button-small" onClick=${save}>Save</button>
        <button type="button" class="button button-small" onClick=${leave}>Cancel</button>
        <span class="faint hint-keys">Ctrl+Enter saves</span>
      </div>
    </section>`;
  }
  const onClick = (event) => {
    if (!canEdit || event.target.closest('a') || String(getSelection()) !== '') return;
    start();
  };
  return html`<section class="task-section" aria-label="Description">
    ${
      task.description
        ? html`<div class="description ${canEdit ? 'can-edit' : ''}" onClick=${onClick}>
          <${RichText} text=${task.description} />
        </div>`
        : null
    }
    ${
      canEdit &&
      html`<button type="button" class="link-button" onClick=${start}>${task.description ? 'Edit description' : 'Add a description'}</button>`
    }
  </section>`;
}
