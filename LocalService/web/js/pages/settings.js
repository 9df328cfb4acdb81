/** The person's account, this device, and the way to the developer settings. */
import { html, useState } from '../view.js';
import { forgetLink, linkDevice } from '../core/link.js';
import { linkedWorkspace, native } from '../core/native.js';
import { overlay } from '../core/overlay.js';
import { useStore } from '../core/store.js';
import { toast } from '../core/toasts.js';
import { leave } from '../shell/account-menu.js';
import { Avatar } from '../ui/bits.js';
import { ConfirmDialog } from '../ui/dialog.js';
import { useSubmit } from '../ui/form.js';
import { Icon } from '../ui/icon.js';

/** @param {{ current: any }} props */
export function SettingsPage({ current }) {
  const { me, workspace } = current;
  return html`<div class="page page-narrow settings">
    <section class="panel" aria-labelledby="account">
      <h2 id="account">Account</h2>
      <div class="row settings-person">
        <${Avatar} person=${me} size=${48} named=${false} />
        <span class="grow"><strong class="truncate">${me.name}</strong><span class="muted truncate">${me.email}</span></span>
        <button type="button" class="button" onClick=${leave}>Sign out</button>
      </div>
      <dl class="facts">
        <div><dt>Workspace</dt><dd class="truncate">${workspace.name}</dd></div>
        ${workspace.role && html`<div><dt>Role</dt><dd>${workspace.role}</dd></div>`}
      </dl>
    </section>
    ${native && html`<${DevicePanel} workspace=${workspace} />`}
    <section class="panel" aria-labelledby="help">
      <h2 id="help">Help</h2>
      <button type="button" class="panel-link" onClick=${() => overlay.set({ name: 'shortcuts' })}>
        <${Icon} name="keyboard" /><span class="grow">Keyboard shortcuts</span><kbd>?</kbd>
      </button>
    </section>
    <section class="panel" aria-labelledby="developers">
      <h2 id="developers">Developers</h2>
      <a class="panel-link" href="/settings/developers">
        <${Icon} name="key" /><span class="grow">Access tokens and linked devices</span><${Icon} name="right" size=${18} />
      </a>
    </section>
  </div>`;
}

function DevicePanel({ workspace }) {
  const linked = useStore(linkedWorkspace) === workspace.id;
  const [asking, setAsking] = useState(false);
  const link = useSubmit(async () => {
    await linkDevice();
    toast('This Mac is linked.');
  });
  return html`<section class="panel" aria-labelledby="device">
    <h2 id="device">This Mac</h2>
    <div class="row settings-person">
      <span class="notice-icon"><${Icon} name="desktop" /></span>
      <span class="grow">
        <strong class="truncate">${native.deviceName}</strong>
        <span class="muted">${linked ? `Linked with ${workspace.name}` : 'Not linked. The menu bar and quick add need the link.'}</span>
      </span>
      ${
        linked
          ? html`<button type="button" class="button" onClick=${() => setAsking(true)}>Unlink…</button>`
          : html`<button type="button" class="button button-primary" disabled=${link.busy} onClick=${link.submit}>Link this Mac</button>`
      }
    </div>
    ${link.error && html`<p class="form-error" role="alert">${link.error}</p>`}
    ${
      asking &&
      html`<${ConfirmDialog}
      title="Unlink this Mac?"
      text="The menu bar, quick add and notices stop until you link it again."
      action="Unlink"
      onClose=${() => setAsking(false)}
      onConfirm=${() => {
        forgetLink();
        toast('This Mac is no longer linked.');
      }}
    />`
    }
  </section>`;
}
