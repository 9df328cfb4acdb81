/** Starts the app. */
import { App } from './app.js';
import { interceptLinks } from './core/router.js';
import { loadSession } from './core/session.js';
import { postNative } from './core/native.js';
import { html, render } from './view.js';

const root = document.getElementById('app');
render(html`<${App} />`, root);
interceptLinks(document);
// From here on the page leaves room for the window's buttons, so the shell may take its own title bar away.
postNative({ type: 'shell', version: 1 });
loadSession();
