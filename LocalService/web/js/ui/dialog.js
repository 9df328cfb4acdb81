/** Modal dialogs: the browser keeps the focus inside and gives it back afterwards. */
import { html, useLayoutEffect, useRef, useState } from '../view.js';
import { goRound } from './focus.js';
import { Icon } from './icon.js';

let nextId = 1;

/**
 * @param {{ title: string, class?: string, onClose: () => void, children: any, plain?: boolean }} props
 *   `plain`: no close button, the dialog's own buttons end it
 */
export function Dialog({ title, class: className = '', onClose, children, plain = false }) {
  const element = useRef(null);
  const close = useRef(onClose);
  close.current = onClose;
  const [id] = useState(() => `dialog-${nextId++}`);

  useLayoutEffect(() => {
    const dialog = element.current;
    dialog.showModal();
    const onCancel = (event) => {
      event.preventDefault();
      close.current();
    };
    // Only a press that begins and ends on the backdrop counts, so that selecting text outwards does not close.
    let pressed = false;
    const onDown = (event) => (pressed = event.target === dialog);
    const onUp = (event) => pressed && event.target === dialog && close.current();
    const onKey = (event) => goRound(dialog, event);
    dialog.addEventListener('cancel', onCancel);
    dialog.addEventListener('keydown', onKey);
    dialog.addEventListener('pointerdown', onDown);
    dialog.addEventListener('click', onUp);
    return () => {
      dialog.removeEventListener('cancel', onCancel);
      dialog.removeEventListener('keydown', onKey);
      dialog.removeEventListener('pointerdown', onDown);
      dialog.removeEventListener('click', onUp);
      dialog.close();
    };
  }, []);

  return html`<dialog ref=${element} class="dialog ${className}" aria-labelledby=${id}>
    <div class="dialog-body">
      <div class="dialog-head">
        <h2 id=${id}>${title}</h2>
        ${
          !plain &&
          html`<button type="button" class="icon-button" aria-label="Close" onClick=${onClose}>
          <${Icon} name="close" size=${18} />
        </button>`
        }
      </div>
      ${children}
    </div>
  </dialog>`;
}

/**
 * Asks before something that cannot be taken back.
 * @param {{ title: string, text: string, action: string, onConfirm: () => Promise<void>|void, onClose: () => void }} props
 */
export function ConfirmDialog({ title, text, action, onConfirm, onClose }) {
  const [busy, setBusy] = useState(false);
  const [error, setError] = useState('');
  const confirm = async () => {
    setBusy(true);
    try {
      await onConfirm();
      onClose();
    } catch (failure) {
      setError(failure.message);
      setBusy(false);
    }
  };
  return html`<${Dialog} title=${title} class="dialog-small" plain onClose=${onClose}>
    <p class="muted">${text}</p>
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
    <div class="dialog-actions">
      <button type="button" class="button" autofocus onClick=${onClose}>Cancel</button>
      <button type="button" class="button button-danger" disabled=${busy} onClick=${confirm}>${action}</button>
    </div>
  <//>`;
}
