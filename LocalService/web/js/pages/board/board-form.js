/** Name, description, colour, section and privacy of a board, new or known. */
import { html, useState } from '../../view.js';
import { BOARD_COLORS, safeColor } from '../../core/color.js';
import { useBoards } from '../../core/data.js';
import { Dialog } from '../../ui/dialog.js';
import { useSubmit } from '../../ui/form.js';
import { GrowArea } from '../../ui/grow-area.js';

/**
 * @param {{ title: string, action: string, board?: any, onSave: (values: any) => Promise<void>, onClose: () => void }} props
 */
export function BoardForm({ title, action, board, onSave, onClose }) {
  const [values, setValues] = useState(() => ({
    name: board?.name ?? '',
    description: board?.description ?? '',
    color: safeColor(board?.color ?? BOARD_COLORS[0].hex),
    section: board?.section ?? '',
    private: board?.private ?? false,
  }));
  const sections = [...new Set((useBoards().data?.boards ?? []).map((entry) => entry.section).filter(Boolean))];
  const change = (part) => setValues((now) => ({ ...now, ...part }));
  const { busy, error, submit } = useSubmit(async () => {
    await onSave({
      ...values,
      name: values.name.trim(),
      description: values.description.trim(),
      section: values.section.trim() || null,
    });
    onClose();
  });
  return html`<${Dialog} title=${title} class="dialog-small" onClose=${onClose}>
    <form class="form" onSubmit=${submit}>
      <label class="field">
        <span>Name</span>
        <input class="input" required maxlength="200" autofocus value=${values.name} onInput=${(event) => change({ name: event.currentTarget.value })} />
      </label>
      <label class="field">
        <span>Description <small class="faint">optional</small></span>
        <${GrowArea}
          class="input"
          maxlength="5000"
          value=${values.description}
          onInput=${(event) => change({ description: event.currentTarget.value })}
        />
      </label>
      <fieldset class="field">
        <legend>Colour</legend>
        <div class="swatches">
          ${withCurrent(values.color).map(
            ({ name, hex }) => html`<label key=${hex} class="swatch" title=${name} style=${{ '--dot': hex }}>
              <input
                type="radio"
                name="board-color"
                aria-label=${name}
                checked=${hex.toUpperCase() === values.color.toUpperCase()}
                onChange=${() => change({ color: hex })}
              />
            </label>`,
          )}
        </div>
      </fieldset>
      <label class="field">
        <span>Section <small class="faint">optional</small></span>
        <input
          class="input"
          list="board-sections"
          maxlength="100"
          placeholder="Group boards in the sidebar"
          value=${values.section}
          onInput=${(event) => change({ section: event.currentTarget.value })}
        />
        <datalist id="board-sections">${sections.map((section) => html`<option key=${section} value=${section} />`)}</datalist>
      </label>
      <label class="check-label">
        <input type="checkbox" checked=${values.private} onChange=${(event) => change({ private: event.currentTarget.checked })} />
        <span>Private <small class="faint">only you can see it</small></span>
      </label>
      ${error && html`<p class="form-error" role="alert">${error}</p>`}
      <div class="dialog-actions">
        <button type="button" class="button" onClick=${onClose}>Cancel</button>
        <button class="button button-primary" disabled=${busy}>${action}</button>
      </div>
    </form>
  <//>`;
}

const withCurrent = (color) =>
  BOARD_COLORS.some((entry) => entry.hex.toUpperCase() === color.toUpperCase())
    ? BOARD_COLORS
    : [{ name: 'Current colour', hex: color }, ...BOARD_COLORS];
