/** The person's own menu. */
import { html } from '../view.js';
import { forgetLink } from '../core/link.js';
import { overlay } from '../core/overlay.js';
import { signOut } from '../core/session.js';
import { toastError } from '../core/toasts.js';
import { Avatar } from '../ui/bits.js';
import { Icon } from '../ui/icon.js';
import { Dropdown, MenuItem, MenuLink } from '../ui/popover.js';

/** Signs out in all windows; the desktop app's token goes with the session, but not while the service can't be reached. */
export async function leave() {
  try {
    await signOut();
    forgetLink();
  } catch (error) {
    toastError(error);
  }
}

/** @param {{ current: any }} props */
export function AccountMenu({ current }) {
  const { me, workspace } = current;
  return html`<${Dropdown}
    class="avatar-button"
    label=${`Account: ${me.name}`}
    title=${me.name}
    align="end"
    face=${html`<${Avatar} person=${me} size=${34} named=${false} />`}
  >
    ${(close) => html`<div class="menu-head">
        <strong class="truncate">${me.name}</strong>
        <span class="muted truncate">${me.email}</span>
        <span class="faint truncate">${workspace.name}</span>
      </div>
      <${MenuLink} href="/settings" close=${close} icon=${html`<${Icon} name="sliders" size=${18} />`}>Settings<//>
      <${MenuLink} href="/settings/developers" close=${close} icon=${html`<${Icon} name="key" size=${18} />`}>Developer settings<//>
      <${MenuItem}
        icon=${html`<${Icon} name="keyboard" size=${18} />`}
        hint="?"
        close=${close}
        onSelect=${() => overlay.set({ name: 'shortcuts' })}
        >Keyboard shortcuts<//
      >
      <hr class="menu-line" />
      <${MenuItem} icon=${html`<${Icon} name="signOut" size=${18} />`} close=${close} onSelect=${leave}>Sign out<//>`}
  <//>`;
}
