/** Personal access tokens and linked devices. A token is shown once, when it is made. */
import { html, useRef, useState } from '../view.js';
import { api } from '../core/api.js';
import { invalidate, useResource } from '../core/cache.js';
import { ago, moment } from '../core/dates.js';
import { forgetLink } from '../core/link.js';
import { native } from '../core/native.js';
import { toast } from '../core/toasts.js';
import { Loaded } from '../ui/bits.js';
import { ConfirmDialog, Dialog } from '../ui/dialog.js';
import { useSubmit } from '../ui/form.js';
import { Icon } from '../ui/icon.js';

const isThisDevice = (token) => native !== null && token.kind === 'device' && token.device_id === native.deviceId;

/** @param {{ current: any }} props */
export function DevelopersPage({ current }) {
  const tokens = useResource('tokens', api.tokens);
  const [creating, setCreating] = useState(false);
  const [revoking, setRevoking] = useState(null);
  const panel = (title, text, list, empty) => html`<section class="panel">
    <h2>${title}</h2>
    <p class="muted">${text}</p>
    ${
      list.length === 0
        ? html`<p class="faint panel-none">${empty}</p>`
        : html`<ul class="token-list">
          ${list.map((token) => html`<${TokenRow} key=${token.id} token=${token} revoke=${() => setRevoking(token)} />`)}
        </ul>`
    }
  </section>`;
  return html`<div class="page page-narrow settings">
    <div class="page-head">
      <a class="back-link" href="/settings"><${Icon} name="back" size=${18} />Settings</a>
      <span class="grow"></span>
      <button type="button" class="button button-primary" onClick=${() => setCreating(true)}><${Icon} name="plus" size=${18} />New token</button>
    </div>
    <${Loaded} resource=${tokens} rows=${4}>
      ${({ tokens: list }) => html`${panel(
        'Personal access tokens',
        'For scripts and other programs that act for you. Keep them as you keep a password.',
        list.filter((token) => token.kind !== 'device'),
        'You have no tokens.',
      )}
      ${panel(
        'Linked devices',
        'Desktops that you allowed to use your account.',
        list.filter((token) => token.kind === 'device'),
        'No device is linked.',
      )}`}
    <//>
    ${
      current.apiBase &&
      html`<section class="panel">
      <h2>API</h2>
      <p class="muted">Requests go to this address with the token as bearer.</p>
      <${CopyField} label="API address" text=${`${current.apiBase.replace(/\/+$/, '')}/api/v1`} />
    </section>`
    }
    ${creating && html`<${NewToken} onClose=${() => setCreating(false)} />`}
    ${
      revoking &&
      html`<${ConfirmDialog}
      title=${isThisDevice(revoking) ? 'Unlink this Mac?' : 'Revoke this token?'}
      text=${`“${revoking.name}” stops working at once. This can't be undone.`}
      action=${isThisDevice(revoking) ? 'Unlink' : 'Revoke'}
      onClose=${() => setRevoking(null)}
      onConfirm=${async () => {
        if (isThisDevice(revoking)) forgetLink();
        try {
          await api.deleteToken(revoking.id);
        } catch (error) {
          // The desktop app revokes its own token when it hears of the unlinking, and may have been first.
          if (error.status !== 404) throw error;
        }
        invalidate((key) => key === 'tokens');
        toast(`Revoked “${revoking.name}”.`);
      }}
    />`
    }
  </div>`;
}

function TokenRow({ token, revoke }) {
  const used = token.last_used_at ? `Last used ${ago(token.last_used_at)}` : 'Never used';
  return html`<li class="row token-row">
    <span class="notice-icon"><${Icon} name=${token.kind === 'device' ? 'desktop' : 'key'} size=${18} /></span>
    <span class="grow token-text">
      <strong class="truncate">${token.name}${isThisDevice(token) && html` <span class="label tone-green">This Mac</span>`}</strong>
      <span class="muted row-wrap"><code>${token.hint}</code><span>${token.write ? 'Read and write' : 'Read only'}</span></span>
    </span>
    <span class="faint token-used" title=${`Made ${moment(token.created_at)}`}>${used}</span>
    <button type="button" class="button button-small" aria-label=${`Revoke ${token.name}`} onClick=${revoke}>Revoke</button>
  </li>`;
}

function NewToken({ onClose }) {
  const [name, setName] = useState('');
  const [write, setWrite] = useState(true);
  const [token, setToken] = useState('');
  const { busy, error, submit } = useSubmit(async () => {
    const made = await api.createToken(name.trim(), write);
    setToken(made.token);
    invalidate((key) => key === 'tokens');
  });
  if (token) {
    return html`<${Dialog} title="Your new token" class="dialog-small" plain onClose=${() => {}}>
      <p class="muted">Copy it now. It is not shown again.</p>
      <${CopyField} label="Token" text=${token} />
      <div class="dialog-actions"><button type="button" class="button button-primary" onClick=${onClose}>Done</button></div>
    <//>`;
  }
  return html`<${Dialog} title="New token" class="dialog-small" onClose=${onClose}>
    <form class="form" onSubmit=${submit}>
      <label class="field">
        <span>Name</span>
        <input class="input" required maxlength="100" autofocus placeholder="What is it for?" value=${name} onInput=${(event) => setName(event.currentTarget.value)} />
      </label>
      <label class="check-label">
        <input type="checkbox" checked=${write} onChange=${(event) => setWrite(event.currentTarget.checked)} />
        <span>May change things <small class="faint">otherwise it can only read</small></span>
      </label>
      ${error && html`<p class="form-error" role="alert">${error}</p>`}
      <div class="dialog-actions">
        <button type="button" class="button" onClick=${onClose}>Cancel</button>
        <button class="button button-primary" disabled=${busy}>Create token</button>
      </div>
    </form>
  <//>`;
}

function CopyField({ label, text }) {
  const [copied, setCopied] = useState(false);
  const field = useRef(null);
  const copy = async () => {
    field.current.select();
    try {
      await navigator.clipboard.writeText(text);
      setCopied(true);
    } catch {
      // The text is selected, so the person can copy it by hand.
      setCopied(false);
    }
  };
  return html`<div class="row copy-field">
    <input ref=${field} class="input grow" readonly aria-label=${label} value=${text} onFocus=${(event) => event.currentTarget.select()} />
    <button type="button" class="button" onClick=${copy}><${Icon} name=${copied ? 'check' : 'copy'} size=${17} />${copied ? 'Copied' : 'Copy'}</button>
  </div>`;
}
