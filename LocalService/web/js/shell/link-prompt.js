/** Asks whether the desktop app on this machine may use the person's account, and links it. */
import { html, useEffect, useState } from '../view.js';
import { linkedWorkspace, native, onNative } from '../core/native.js';
import { declineLink, linkDevice, onLinkDeclined, wasDeclined } from '../core/link.js';
import { useStore } from '../core/store.js';
import { toast } from '../core/toasts.js';
import { Dialog } from '../ui/dialog.js';
import { useSubmit } from '../ui/form.js';
import { Icon } from '../ui/icon.js';

/** @param {{ workspace: { id: string, name: string } }} props */
export function LinkPrompt({ workspace }) {
  const linked = useStore(linkedWorkspace);
  const [open, setOpen] = useState(() => native !== null && linked !== workspace.id && !wasDeclined(workspace.id));
  useEffect(() => onNative('requestLink', () => (setOpen(true), true)), []);
  useEffect(() => onLinkDeclined(workspace.id, () => setOpen(false)), [workspace.id]);
  useEffect(() => {
    // Another window of this app may have asked first.
    if (linked === workspace.id) setOpen(false);
  }, [linked, workspace.id]);

  const { busy, error, submit } = useSubmit(async () => {
    await linkDevice();
    setOpen(false);
    toast('This Mac is linked.');
  });
  if (!open || !native) return null;

  const decline = () => {
    declineLink(workspace.id);
    setOpen(false);
  };
  return html`<${Dialog} title="Link this Mac?" class="dialog-small link-dialog" plain onClose=${decline}>
    <p class="link-device">
      <span class="link-device-icon"><${Icon} name="desktop" size=${22} /></span>
      <span class="grow">
        <strong class="truncate">${native.deviceName}</strong>
        <span class="muted truncate">${workspace.name}</span>
      </span>
    </p>
    <p class="muted">
      Parvela on this Mac will show your tasks in the menu bar, add tasks with quick add and tell you what is due. You can
      unlink it in Settings at any time.
    </p>
    ${error && html`<p class="form-error" role="alert">${error}</p>`}
    <div class="dialog-actions">
      <button type="button" class="button" onClick=${decline}>Not Now</button>
      <button type="button" class="button button-primary" autofocus disabled=${busy} onClick=${submit}>Allow</button>
    </div>
  <//>`;
}
