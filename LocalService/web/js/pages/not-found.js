/** An address that leads nowhere. */
import { html } from '../view.js';
import { Empty } from '../ui/bits.js';

export function NotFoundPage() {
  return html`<${Empty} icon="search" title="There is no such page">
    <p>The link may be old, or it may have been typed wrongly.</p>
    <a class="button" href="/home">Go to Home</a>
  <//>`;
}
