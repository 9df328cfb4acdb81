/** Opened in the default browser by the desktop app: the person signs in here and is sent back to the app. */
import { html, useEffect, useState } from '../view.js';
import { api } from '../core/api.js';
import { loadSession, signOut } from '../core/session.js';
import { Avatar } from '../ui/bits.js';
import { useSubmit } from '../ui/form.js';
import { Icon, Mark } from '../ui/icon.js';
import { SignInCard } from './sign-in.js';

const CALLBACK = /^parvela:\/\/auth-callback\?/;

/** @param {{ route: import('../core/router.js').Route, current: any }} props */
export function HandOffPage({ route, current }) {
  const [sent, setSent] = useState('');
  useEffect(() => {
    document.title = 'Sign in to the desktop app – Parvela';
  }, []);
  const go = useSubmit(async () => {
    const { url } = await api.handOff();
    if (!CALLBACK.test(url ?? '')) throw new Error('The service sent an answer that could not be read.');
    setSent(url);
    location.assign(url);
  });
  const other = useSubmit(async () => {
    await signOut();
    await loadSession();
  });

  if (!isSignInAddress(route.query.get('u'))) {
    return html`<${Stage}>
      <h1>This link isn't complete</h1>
      <p class="muted">Go back to Parvela on your desktop and choose “Sign in with your browser” again.</p>
    <//>`;
  }
  if (current.state !== 'signedIn') {
    return html`<div class="stage">
      <main class="stage-main">
        <${SignInCard} facts=${current} note="After this, Parvela on your desktop is signed in too." />
      </main>
    </div>`;
  }
  if (sent) {
    return html`<${Stage}>
      <span class="empty-icon"><${Icon} name="check" size=${28} /></span>
      <h1>Back to Parvela</h1>
      <p class="muted">Parvela on your desktop should be open and signed in. You can close this tab.</p>
      ${go.error && html`<p class="form-error" role="alert">${go.error}</p>`}
      <button type="button" class="button" disabled=${go.busy} onClick=${go.submit}>Nothing happened? Try again</button>
    <//>`;
  }
  const { me, workspace } = current;
  return html`<${Stage}>
    <h1>Sign in to the desktop app?</h1>
    <p class="handoff-person">
      <${Avatar} person=${me} size=${40} named=${false} />
      <span class="grow"><strong class="truncate">${me.name}</strong><span class="muted truncate">${me.email} · ${workspace.name}</span></span>
    </p>
    ${(go.error || other.error) && html`<p class="form-error" role="alert">${go.error || other.error}</p>`}
    <button type="button" class="button button-primary button-large" disabled=${go.busy} onClick=${go.submit}>Open Parvela</button>
    <button type="button" class="link-button" disabled=${other.busy} onClick=${other.submit}>Use another account</button>
  <//>`;
}

const Stage = ({ children }) => html`<div class="stage">
  <main class="stage-main">
    <div class="sign-card handoff"><${Mark} size=${44} />${children}</div>
  </main>
</div>`;

/** The address that the app wanted to open. It is only looked at, never opened. @param {string|null} text */
function isSignInAddress(text) {
  try {
    const url = new URL(text);
    return /^https?:$/.test(url.protocol) && url.pathname.startsWith('/api/auth/signin/');
  } catch {
    return false;
  }
}
