/** The notices at the foot of the window. */
import { html } from '../view.js';
import { useStore } from '../core/store.js';
import { dismissToast, toasts } from '../core/toasts.js';
import { Icon } from './icon.js';

export function ToastStack() {
  const list = useStore(toasts);
  return html`<div class="toasts" role="region" aria-label="Notices">
    ${list.map(
      (entry) => html`<div key=${entry.id} class="toast toast-${entry.tone}">
        ${entry.tone === 'error' && html`<${Icon} name="warning" size=${18} />`}
        <span class="grow">${entry.text}</span>
        ${
          entry.undo &&
          html`<button
          type="button"
          class="toast-action"
          onClick=${() => {
            dismissToast(entry.id);
            entry.undo();
          }}
        >
          Undo
        </button>`
        }
        <button type="button" class="toast-close" aria-label="Dismiss" onClick=${() => dismissToast(entry.id)}>
          <${Icon} name="close" size=${16} />
        </button>
      </div>`,
    )}
  </div>`;
}
