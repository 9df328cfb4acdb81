/** The first page when the service does not answer at all. It keeps trying. */
import { html, useEffect, useState } from '../view.js';
import { dragWindow } from '../core/native.js';
import { Icon } from '../ui/icon.js';

const AGAIN = 4000;

/** @param {{ retry: () => Promise<void> }} props */
export function UnreachablePage({ retry }) {
  const [busy, setBusy] = useState(false);
  const tryNow = async () => {
    setBusy(true);
    await retry();
    setBusy(false);
  };
  useEffect(() => {
    const timer = setInterval(tryNow, AGAIN);
    return () => clearInterval(timer);
  }, []);
  return html`<div class="stage" onMouseDown=${dragWindow}>
    <main class="stage-main">
      <div class="empty" role="alert">
        <span class="empty-icon"><${Icon} name="offline" size=${28} /></span>
        <h1 class="empty-title">Parvela can't be reached</h1>
        <div class="empty-text">
          <p>Check that the service is running. This page tries again by itself.</p>
          <button type="button" class="button button-primary" disabled=${busy} onClick=${tryNow}>Try again</button>
        </div>
      </div>
    </main>
  </div>`;
}
