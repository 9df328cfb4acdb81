/** Text as typed, with addresses and task keys made into links. */
import { html } from '../view.js';
import { taskPath } from '../core/router.js';

const LINK = /(https?:\/\/[^\s<>"]+[^\s<>".,;:!?)\]'])|\b(TSK-\d{1,9})\b/g;

/** @param {{ text: string, class?: string }} props */
export function RichText({ text, class: className = '' }) {
  const parts = [];
  let end = 0;
  for (const match of text.matchAll(LINK)) {
    if (match.index > end) parts.push(text.slice(end, match.index));
    const [all, address, key] = match;
    parts.push(
      address
        ? html`<a class="text-link" href=${address} target="_blank" rel="noopener noreferrer">${all}</a>`
        : html`<a class="text-link" href=${taskPath(key)}>${all}</a>`,
    );
    end = match.index + all.length;
  }
  if (end < text.length) parts.push(text.slice(end));
  return html`<div class="rich-text ${className}">${parts}</div>`;
}
