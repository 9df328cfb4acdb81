/** The labels of a board: their names and tones. */
import { html, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { LABEL_TONES, toneClass } from '../../core/color.js';
import { invalidate } from '../../core/cache.js';
import { LabelChip } from '../../ui/bits.js';
import { Dialog } from '../../ui/dialog.js';
import { useSubmit } from '../../ui/form.js';
import { Icon } from '../../ui/icon.js';

/** @param {{ board: any, onClose: () => void }} props */
export function LabelsDialog({ board, onClose }) {
  const [editing, setEditing] = useState(null);
  const refresh = () =>
    invalidate((key) => key === `board:${board.id}` || key.startsWith('task:') || key === 'home' || key === 'my');
  return html`<${Dialog} title="Labels" class="dialog-small" onClose=${onClose}>
    <ul class="label-rows">
      ${board.labels.map((label) =>
        editing === label.id
          ? html`<${LabelForm}
              key=${label.id}
              label=${label}
              action="Save"
              onSave=${async (values) => {
                await api.updateLabel(label.id, values);
                refresh();
                setEditing(null);
              }}
              onCancel=${() => setEditing(null)}
            />`
          : html`<li key=${label.id} class="row label-row">
              <span class="grow row"><${LabelChip} label=${label} /></span>
              <button type="button" class="icon-button" aria-label=${`Edit ${label.name}`} onClick=${() => setEditing(label.id)}>
                <${Icon} name="edit" size=${17} />
              </button>
              <${DeleteLabel} label=${label} refresh=${refresh} />
            </li>`,
      )}
    </ul>
    ${board.labels.length === 0 && html`<p class="muted">This board has no labels yet.</p>`}
    ${
      editing === 'new'
        ? html`<ul>
          <${LabelForm}
            label=${{ name: '', tone: LABEL_TONES[board.labels.length % LABEL_TONES.length] }}
            action="Add"
            onSave=${async (values) => {
              await api.createLabel(board.id, values);
              refresh();
              setEditing(null);
            }}
            onCancel=${() => setEditing(null)}
          />
        </ul>`
        : html`<button type="button" class="button" autofocus onClick=${() => setEditing('new')}><${Icon} name="plus" size=${17} />New label</button>`
    }
  <//>`;
}

/** Asks a second time in place: a label goes from every task. */
function DeleteLabel({ label, refresh }) {
  const [sure, setSure] = useState(false);
  const { busy, error, submit } = useSubmit(async () => {
    await api.deleteLabel(label.id);
    refresh();
  });
  if (!sure) {
    return html`<button type="button" class="icon-button" aria-label=${`Delete ${label.name}`} onClick=${() => setSure(true)}>
      <${Icon} name="trash" size=${17} />
    </button>`;
  }
  return html`<button type="button" class="button button-small button-danger" disabled=${busy} onClick=${submit} onBlur=${() => setSure(false)}>
    ${error || 'Delete?'}
  </button>`;
}

function LabelForm({ label, action, onSave, onCancel }) {
  const [name, setName] = useState(label.name);
  const [tone, setTone] = useState(label.tone);
  const { busy, error, submit } = useSubmit(() => onSave({ name: name.trim(), tone }));
  return html`<li>
    <form class="form label-form" onSubmit=${submit}>
      <input class="input" aria-label="Label name" required maxlength="50" autofocus value=${name} onInput=${(event) => setName(event.currentTarget.value)} />
      <div class="swatches" role="radiogroup" aria-label="Tone">
        ${LABEL_TONES.map(
          (entry) => html`<label key=${entry} class="swatch swatch-tone ${toneClass(entry)}" title=${entry}>
            <input type="radio" name="tone" aria-label=${entry} checked=${entry === tone} onChange=${() => setTone(entry)} />
          </label>`,
        )}
      </div>
      ${error && html`<p class="form-error" role="alert">${error}</p>`}
      <div class="row">
        <button class="button button-primary button-small" disabled=${busy}>${action}</button>
        <button type="button" class="button button-small" onClick=${onCancel}>Cancel</button>
      </div>
    </form>
  </li>`;
}
