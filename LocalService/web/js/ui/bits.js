/** Small pieces that many pages share. */
import { html } from '../view.js';
import { inkOn, safeColor, toneClass } from '../core/color.js';
import { Icon } from './icon.js';

/** @param {{ color?: string|null }} props */
export function BoardDot({ color }) {
  return html`<span class="board-dot" style=${{ '--dot': safeColor(color) }} aria-hidden="true"></span>`;
}

/** @param {string} name */
function initials(name) {
  const words = String(name ?? '')
    .trim()
    .split(/\s+/)
    .filter(Boolean);
  const letters = words.length > 1 ? [words[0], words.at(-1)] : words;
  return letters.map((word) => [...word][0].toUpperCase()).join('') || '?';
}

/**
 * @param {{ person: { name: string, color?: string|null, avatar?: string|null }, size?: number, named?: boolean }} props
 *   `named`: the name does not stand beside it, so it is told to screen readers
 */
export function Avatar({ person, size = 24, named = true }) {
  const ground = safeColor(person.color);
  const style = { '--avatar': ground, '--avatar-ink': inkOn(ground), '--avatar-size': `${size}px` };
  const picture = typeof person.avatar === 'string' && /^\/(?!\/)/.test(person.avatar) ? person.avatar : null;
  return html`<span
    class="avatar"
    style=${style}
    title=${named ? person.name : undefined}
    role=${named ? 'img' : undefined}
    aria-label=${named ? person.name : undefined}
    aria-hidden=${named ? undefined : 'true'}
    >${picture ? html`<img src=${picture} alt="" />` : initials(person.name)}</span
  >`;
}

/** Faces side by side, the rest as a number. @param {{ people: any[], most?: number, size?: number }} props */
export function AvatarStack({ people, most = 3, size = 22 }) {
  if (!people?.length) return null;
  const shown = people.slice(0, people.length > most ? most - 1 : most);
  const rest = people.slice(shown.length);
  return html`<span class="avatar-stack">
    ${shown.map((person) => html`<${Avatar} key=${person.id} person=${person} size=${size} />`)}
    ${
      rest.length > 0 &&
      html`<span
      class="avatar avatar-rest"
      style=${{ '--avatar-size': `${size}px` }}
      role="img"
      aria-label=${`and ${rest.map((person) => person.name).join(', ')}`}
      title=${rest.map((person) => person.name).join(', ')}
      >+${rest.length}</span
    >`
    }
  </span>`;
}

/** @param {{ label: { name: string, tone: string } }} props */
export const LabelChip = ({ label }) =>
  html`<span class="label ${toneClass(label.tone)}" title=${label.name}><span class="truncate">${label.name}</span></span>`;

/**
 * One of a few, all in sight.
 * @param {{ label: string, options: { id: string, name: string }[], value: string, onPick: (id: string) => void }} props
 */
export const Segmented = ({ label, options, value, onPick }) =>
  html`<div class="segmented" role="group" aria-label=${label}>
    ${options.map(
      ({ id, name }) =>
        html`<button key=${id} type="button" aria-pressed=${String(id === value)} onClick=${() => onPick(id)}>${name}</button>`,
    )}
  </div>`;

/** What a page shows when there is nothing. @param {{ icon: string, title: string, children?: any, compact?: boolean }} props */
export function Empty({ icon, title, children, compact = false }) {
  return html`<div class="empty ${compact ? 'empty-compact' : ''}">
    <span class="empty-icon"><${Icon} name=${icon} size=${compact ? 22 : 28} /></span>
    <p class="empty-title">${title}</p>
    ${children && html`<div class="empty-text">${children}</div>`}
  </div>`;
}

/** What a page shows when it could not load. @param {{ error: Error, retry: () => void }} props */
function Failure({ error, retry }) {
  return html`<div class="empty" role="alert">
    <span class="empty-icon is-danger"><${Icon} name="warning" size=${28} /></span>
    <p class="empty-title">${error.status === 404 ? "This page isn't here" : "That didn't load"}</p>
    <div class="empty-text">
      <p>${error.message}</p>
      <button type="button" class="button" onClick=${retry}>Try again</button>
    </div>
  </div>`;
}

/** Grey bars while something loads for the first time. @param {{ rows?: number, class?: string }} props */
export function Skeleton({ rows = 5, class: className = '' }) {
  return html`<div class="skeleton ${className}" role="status" aria-label="Loading">
    ${Array.from({ length: rows }, (_, index) => html`<span key=${index} class="skeleton-bar"></span>`)}
  </div>`;
}

/**
 * A resource on the page: its skeleton, its failure, or its content.
 * @param {{ resource: { data: any, error: Error|null, reload: () => void }, rows?: number,
 *           children: (data: any) => any }} props
 */
export function Loaded({ resource, rows, children }) {
  if (resource.data !== undefined) return children(resource.data);
  if (resource.error) return html`<${Failure} error=${resource.error} retry=${resource.reload} />`;
  return html`<${Skeleton} rows=${rows} />`;
}

/** Share of something done, as a thin bar. @param {{ done: number, total: number, label: string }} props */
export function Progress({ done, total, label }) {
  const share = total > 0 ? done / total : 0;
  return html`<span
    class="progress"
    role="progressbar"
    aria-label=${label}
    aria-valuemin="0"
    aria-valuemax=${total}
    aria-valuenow=${done}
    style=${{ '--share': share }}
  ></span>`;
}
