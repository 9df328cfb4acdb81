/** The icons: strokes on a 20 by 20 grid, drawn for this app. They are decoration; names stand beside them or in labels. */
import { html } from '../view.js';

const PATHS = {
  home: 'M3.5 9.2 10 3.8l6.5 5.4M5.2 8.2v8h9.6v-8M8.4 16.2v-4h3.2v4',
  my: 'M10 17a7 7 0 1 0 0-14 7 7 0 0 0 0 14ZM7 10.2l2.1 2.1 4-4.3',
  inbox: 'M3 11.5 5.2 4.4h9.6L17 11.5v4H3zM3 11.5h3.8c.3 1.7 1.5 2.6 3.2 2.6s2.9-.9 3.2-2.6H17',
  boards: 'M4 3.8h3.4v12.4H4zM12.6 3.8H16v7.4h-3.4zM8.3 3.8h3.4v9.8H8.3z',
  search: 'M9 14.5a5.5 5.5 0 1 0 0-11 5.5 5.5 0 0 0 0 11ZM13 13l3.8 3.8',
  plus: 'M10 4v12M4 10h12',
  sidebar: 'M3 4.5h14v11H3zM8 4.5v11',
  down: 'm5.5 8 4.5 4.5L14.5 8',
  up: 'm5.5 12 4.5-4.5 4.5 4.5',
  right: 'm8 5.5 4.5 4.5L8 14.5',
  left: 'M12 5.5 7.5 10l4.5 4.5',
  back: 'M16 10H4.5M9 5l-5 5 5 5',
  calendar: 'M3.5 5h13v11.5h-13zM3.5 8.6h13M7 3v3.5M13 3v3.5',
  clock: 'M10 17a7 7 0 1 0 0-14 7 7 0 0 0 0 14ZM10 6v4.3l2.8 1.7',
  tag: 'M3.5 4.5v5l7 7 6-6-7-7h-5zM7 7.5h.01',
  user: 'M10 10a3.2 3.2 0 1 0 0-6.4 3.2 3.2 0 0 0 0 6.4ZM4 16.6c.7-2.7 3-4.2 6-4.2s5.3 1.5 6 4.2',
  clip: 'm15.5 9.5-5.7 5.7a3.3 3.3 0 0 1-4.7-4.7l6-6a2.2 2.2 0 0 1 3.1 3.1l-5.9 6a1.1 1.1 0 0 1-1.6-1.6l5.3-5.3',
  comment: 'M3.5 4.5h13v9h-7L6 16.5v-3H3.5z',
  checklist: 'm3.2 6 1.3 1.3L7 4.8M3.2 13.5l1.3 1.3L7 12.3M9.5 6H17M9.5 13.6H17',
  more: 'M4.5 10h.01M10 10h.01M15.5 10h.01',
  star: 'm10 3.3 2 4.3 4.7.6-3.5 3.2.9 4.7L10 13.8l-4.1 2.3.9-4.7-3.5-3.2 4.7-.6z',
  trash: 'M4 5.5h12M8 5.5v-2h4v2M5.5 5.5l.7 11h7.6l.7-11M8.5 8.5v5M11.5 8.5v5',
  edit: 'M4 16l.7-3.2L13 4.5l2.5 2.5-8.3 8.3zM11.5 6l2.5 2.5',
  link: 'M8.5 11.5a3 3 0 0 0 4.3 0l2.9-2.9a3 3 0 0 0-4.3-4.3L10 5.7M11.5 8.5a3 3 0 0 0-4.3 0l-2.9 2.9a3 3 0 0 0 4.3 4.3l1.4-1.4',
  play: 'M7 4.5v11l8.5-5.5z',
  stop: 'M5.8 5.8h8.4v8.4H5.8z',
  close: 'm5 5 10 10M15 5 5 15',
  check: 'm4.5 10.5 3.7 3.7 7.3-8',
  sliders:
    'M3.5 6h6M13.5 6h3M3.5 14h3M10.5 14h6M11.5 8a2 2 0 1 0 0-4 2 2 0 0 0 0 4ZM8.5 16a2 2 0 1 0 0-4 2 2 0 0 0 0 4Z',
  key: 'M6.5 13.5a3 3 0 1 0 0-6 3 3 0 0 0 0 6ZM9.5 10.5H17M14 10.5v3M16.8 10.5v2',
  keyboard: 'M2.8 5.5h14.4v9H2.8zM5.5 8.3h.01M8.5 8.3h.01M11.5 8.3h.01M14.5 8.3h.01M6.5 11.7h7',
  signOut: 'M11.5 4h-7v12h7M8.5 10H17M14 7l3 3-3 3',
  download: 'M10 3.5v9M6.2 9l3.8 3.7L13.8 9M4 16.3h12',
  filter: 'M3.5 5.5h13M6 10h8M8.5 14.5h3',
  list: 'M7.5 5.5H17M7.5 10H17M7.5 14.5H17M3.5 5.5h.01M3.5 10h.01M3.5 14.5h.01',
  table: 'M3.5 4.5h13v11h-13zM3.5 8.2h13M3.5 11.8h13M8 8.2v7.3',
  timeline: 'M3.5 5.5h6M7 10h7.5M11.5 14.5H17',
  lock: 'M5 9h10v7H5zM7 9V6.6a3 3 0 0 1 6 0V9',
  warning: 'M10 3.5 17.3 16H2.7zM10 8v3.8M10 13.8h.01',
  offline: 'M5.5 15h9a3 3 0 0 0 .7-5.9A4.8 4.8 0 0 0 8 6M6 7.5A3.9 3.9 0 0 0 5.5 15M3.5 3.5l13 13',
  desktop: 'M3 4.5h14v9H3zM10 13.5v3M6.8 16.5h6.4',
  copy: 'M7 7h9v9.5H7zM13 7V3.5H4V13h3',
  file: 'M5.5 3h6l3.5 3.5V17h-9.5zM11.3 3v3.7H15',
  upload: 'M10 12.5v-9M6.2 7 10 3.3 13.8 7M4 16.3h12',
  sun: 'M10 13.2a3.2 3.2 0 1 0 0-6.4 3.2 3.2 0 0 0 0 6.4ZM10 2.8v1.4M10 15.8v1.4M2.8 10h1.4M15.8 10h1.4M4.9 4.9l1 1M14.1 14.1l1 1M15.1 4.9l-1 1M5.9 14.1l-1 1',
};

const FILLED = new Set(['starOn', 'play', 'stop']);

/**
 * @param {{ name: string, size?: number }} props
 */
export function Icon({ name, size = 20 }) {
  const filled = FILLED.has(name);
  return html`<svg
    class="icon"
    width=${size}
    height=${size}
    viewBox="0 0 20 20"
    fill=${filled ? 'currentColor' : 'none'}
    stroke="currentColor"
    stroke-width=${name === 'more' || name === 'list' ? 2 : 1.5}
    stroke-linecap="round"
    stroke-linejoin="round"
    aria-hidden="true"
    focusable="false"
  >
    <path d=${PATHS[name === 'starOn' ? 'star' : name]} />
  </svg>`;
}

/** The mark of Parvela: a letter that is also a board's column and the card just done. */
export function Mark({ size = 28 }) {
  return html`<svg class="mark" width=${size} height=${size} viewBox="12 12 104 104" aria-hidden="true" focusable="false">
    <rect class="mark-ground" x="12" y="12" width="104" height="104" rx="26" />
    <path class="mark-ink" d="M42 32h3a7 7 0 0 1 7 7v50a7 7 0 0 1-7 7h-3a7 7 0 0 1-7-7V39a7 7 0 0 1 7-7z" />
    <path class="mark-ink" d="M65 32h8.5a21.5 21.5 0 0 1 0 43H65a7 7 0 0 1-7-7V39a7 7 0 0 1 7-7z" />
    <path class="mark-tick" d="m66.5 54 6.5 6.5 11.5-13" />
  </svg>`;
}

/** Priority as a signal: the more bars, the more urgent. */
export function PriorityIcon({ priority, size = 16 }) {
  const bars = { low: 1, medium: 2, high: 3, urgent: 3 }[priority] ?? 0;
  return html`<svg class="priority priority-${priority}" width=${size} height=${size} viewBox="0 0 16 16" aria-hidden="true">
    ${
      priority === 'urgent'
        ? html`<rect width="16" height="16" rx="4" /><path d="M8 3.8v4.8M8 11.7v.3" />`
        : [0, 1, 2].map(
            (index) =>
              html`<rect
              class=${index < bars ? 'on' : 'off'}
              x=${1.5 + index * 5}
              y=${9 - index * 3.5}
              width="3"
              height=${5 + index * 3.5}
              rx="1"
            />`,
          )
    }
  </svg>`;
}
