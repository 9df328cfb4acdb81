/** What others did that concerns the person. */
import { html, useState } from '../view.js';
import { api } from '../core/api.js';
import { optimistic } from '../core/cache.js';
import { ago, moment } from '../core/dates.js';
import { useInbox } from '../core/data.js';
import { taskPath } from '../core/router.js';
import { toastError } from '../core/toasts.js';
import { Avatar, Empty, Loaded, Segmented } from '../ui/bits.js';
import { Icon } from '../ui/icon.js';

async function mark({ ids, all, read }) {
  const wanted = (item) => all || ids.includes(item.id);
  try {
    await optimistic(
      (data, key) => {
        if (key !== 'inbox') return data;
        const items = data.items.map((item) => (wanted(item) ? { ...item, read } : item));
        const changed = items.filter((item, index) => item.read !== data.items[index].read).length;
        return { ...data, items, unread: all && read ? 0 : Math.max(0, data.unread + (read ? -changed : changed)) };
      },
      () => api.markNotifications({ ids, all, read }),
    );
  } catch (error) {
    toastError(error);
  }
}

const SHOWN = [
  { id: 'all', name: 'All' },
  { id: 'unread', name: 'Unread' },
];

export function InboxPage() {
  const inbox = useInbox();
  const [show, setShow] = useState('all');
  const onlyUnread = show === 'unread';
  return html`<div class="page page-narrow">
    <div class="page-head">
      <${Segmented} label="Show" options=${SHOWN} value=${show} onPick=${setShow} />
      <span class="grow"></span>
      <button
        type="button"
        class="button"
        disabled=${!inbox.data?.unread}
        onClick=${() => mark({ ids: [], all: true, read: true })}
      >
        <${Icon} name="check" size=${17} />Mark all as read
      </button>
    </div>
    <${Loaded} resource=${inbox} rows=${6}>
      ${({ items }) => {
        const shown = onlyUnread ? items.filter((item) => !item.read) : items;
        if (shown.length === 0) {
          return html`<${Empty} icon="inbox" title=${onlyUnread ? 'All read' : 'Your inbox is empty'}>
            <p>Comments, assignments and changes to your tasks arrive here.</p>
          <//>`;
        }
        return html`<ul class="inbox">
          ${shown.map((item) => html`<${Notice} key=${item.id} item=${item} />`)}
        </ul>`;
      }}
    <//>
  </div>`;
}

function Notice({ item }) {
  const { actor, task } = item;
  const read = () => !item.read && mark({ ids: [item.id], all: false, read: true });
  return html`<li class="notice ${item.read ? '' : 'is-unread'}">
    <span class="notice-dot" role="img" aria-label=${item.read ? 'Read' : 'Unread'}></span>
    ${
      actor
        ? html`<${Avatar} person=${actor} size=${34} named=${false} />`
        : html`<span class="notice-icon"><${Icon} name="inbox" size=${18} /></span>`
    }
    <div class="grow notice-text">
      ${
        task
          ? html`<a class="notice-link" href=${taskPath(task.key)} onClick=${read}>${item.text}</a>
            <span class="notice-task muted truncate">${task.title} · ${task.board}</span>`
          : html`<span>${item.text}</span>`
      }
    </div>
    <time class="faint num" datetime=${new Date(item.at).toISOString()} title=${moment(item.at)}>${ago(item.at)}</time>
    <button
      type="button"
      class="icon-button notice-flip"
      aria-label=${item.read ? 'Mark as unread' : 'Mark as read'}
      title=${item.read ? 'Mark as unread' : 'Mark as read'}
      onClick=${() => mark({ ids: [item.id], all: false, read: !item.read })}
    >
      <${Icon} name=${item.read ? 'inbox' : 'check'} size=${17} />
    </button>
  </li>`;
}
