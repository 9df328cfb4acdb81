/** Sign in, sign up, or look around with the demo. */
import { html, useEffect, useRef, useState } from '../view.js';
import { dragWindow, native } from '../core/native.js';
import { signIn, signInDemo, signUp } from '../core/session.js';
import { useSubmit } from '../ui/form.js';
import { Icon, Mark } from '../ui/icon.js';

/** @param {{ facts: { demo: boolean, hasUsers: boolean, demoEmail: string, apiBase: string } }} props */
export function SignInPage({ facts }) {
  useEffect(() => {
    document.title = 'Sign in – Parvela';
  }, []);
  return html`<div class="stage" onMouseDown=${dragWindow}>
    <main class="stage-main">
      <${SignInCard} facts=${facts} />
    </main>
  </div>`;
}

/** The form alone, also shown on the way to the desktop app. @param {{ facts: any, note?: string }} props */
export function SignInCard({ facts, note }) {
  const [mode, setMode] = useState(facts.hasUsers ? 'signIn' : 'signUp');
  const creating = mode === 'signUp';
  const [values, setValues] = useState({ name: '', email: '', password: '', workspace: '' });
  const first = useRef(null);
  const field = (name) => ({
    name,
    value: values[name],
    onInput: (event) => {
      const { value } = event.currentTarget;
      setValues((now) => ({ ...now, [name]: value }));
    },
  });
  const main = useSubmit(async () => {
    if (!creating) return signIn(values.email.trim(), values.password);
    const workspace = values.workspace.trim();
    return signUp({
      name: values.name.trim(),
      email: values.email.trim(),
      password: values.password,
      ...(workspace ? { workspace } : {}),
    });
  });
  const demo = useSubmit(() => signInDemo());
  useEffect(() => first.current?.focus(), [mode]);

  const title = creating ? (facts.hasUsers ? 'Create your account' : 'Set up Parvela') : 'Sign in to Parvela';
  const swap = () => {
    main.setError('');
    setMode(creating ? 'signIn' : 'signUp');
  };
  return html`<div class="sign-card">
    <div class="sign-head">
      <${Mark} size=${44} />
      <h1 tabindex="-1">${title}</h1>
      <p class="muted">${note ?? (creating ? 'It takes a minute. Everything stays on this machine.' : 'Welcome back.')}</p>
    </div>
    ${
      facts.demo &&
      html`<div class="sign-demo">
      <button type="button" class="button button-primary button-large" disabled=${demo.busy} onClick=${demo.submit}>
        Explore the demo
      </button>
      <p class="faint">Signs you in${facts.demoEmail ? ` as ${facts.demoEmail}` : ''}, with boards and tasks to play with.</p>
      ${demo.error && html`<p class="form-error" role="alert">${demo.error}</p>`}
      <div class="sign-or"><span>or</span></div>
    </div>`
    }
    <form class="form" onSubmit=${main.submit} aria-label=${title}>
      ${
        creating &&
        html`<label class="field">
        <span>Name</span>
        <input ref=${first} class="input" autocomplete="name" required maxlength="100" ...${field('name')} />
      </label>`
      }
      <label class="field">
        <span>Email</span>
        <input
          ref=${creating ? undefined : first}
          class="input"
          type="email"
          autocomplete="username"
          required
          maxlength="254"
          ...${field('email')}
        />
      </label>
      <label class="field">
        <span>Password</span>
        <input
          class="input"
          type="password"
          autocomplete=${creating ? 'new-password' : 'current-password'}
          required
          minlength=${creating ? 8 : undefined}
          maxlength="200"
          ...${field('password')}
        />
        ${creating && html`<small class="faint">At least 8 characters.</small>`}
      </label>
      ${
        creating &&
        !facts.hasUsers &&
        html`<label class="field">
        <span>Workspace <small class="faint">optional</small></span>
        <input class="input" autocomplete="organization" maxlength="100" placeholder="My workspace" ...${field('workspace')} />
      </label>`
      }
      ${main.error && html`<p class="form-error" role="alert">${main.error}</p>`}
      <button class=${`button button-large ${facts.demo ? '' : 'button-primary'}`} disabled=${main.busy}>
        ${creating ? 'Create account' : 'Sign in'}
      </button>
    </form>
    <${BrowserSignIn} apiBase=${facts.apiBase} />
    ${
      facts.canSignUp &&
      html`<p class="sign-swap muted">
      ${creating ? 'Already have an account? ' : 'New here? '}
      <button type="button" class="link-button" onClick=${swap}>${creating ? 'Sign in' : 'Create an account'}</button>
    </p>`
    }
  </div>`;
}

/** In the desktop app: sign in where one may be signed in already. The shell opens this address in the default browser. */
function BrowserSignIn({ apiBase }) {
  if (!native?.features?.includes('oauth') || !/^https?:\/\//.test(apiBase)) return null;
  const open = () => {
    const state = [...crypto.getRandomValues(new Uint8Array(16))].map((byte) => byte.toString(16).padStart(2, '0'));
    location.assign(`${apiBase.replace(/\/+$/, '')}/api/auth/signin/local?state=${state.join('')}`);
  };
  return html`<button type="button" class="button button-large" onClick=${open}>
    <${Icon} name="desktop" size=${18} />Sign in with your browser
  </button>`;
}
