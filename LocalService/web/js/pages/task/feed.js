/** Comments and what happened, in the order of time, with the field to write the next comment. */
import { html, useMemo, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { ago, moment } from '../../core/dates.js';
import { Avatar } from '../../ui/bits.js';
import { ConfirmDialog } from '../../ui/dialog.js';
import { useSubmit } from '../../ui/form.js';
import { GrowArea } from '../../ui/grow-area.js';
import { Icon } from '../../ui/icon.js';
import { useKept } from '../../ui/kept.js';
import { RichText } from '../../ui/rich-text.js';

/** @param {{ task: any, me: any, reload: () => void }} props */
export function Feed({ task, me, reload }) {
  const [filter, setFilter] = useKept('feed.comments');
  const onlyComments = filter === '1';
  const entries = useMemo(() => {
    const comments = task.comments.map((comment) => ({ at: comment.at, id: `comment ${comment.id}`, comment }));
    const events = onlyComments
      ? []
      : task.activity.map((event, index) => ({ at: event.at, id: `event ${event.at} ${index}`, event }));
    return [...comments, ...events].sort((a, b) => a.at - b.at);
  }, [task.comments, task.activity, onlyComments]);
  return html`<section class="task-section" aria-label="Comments and activity">
    <div class="section-head">
      <h2>Activity</h2>
      <span class="grow"></span>
      <label class="check-label faint">
        <input
          type="checkbox"
          checked=${onlyComments}
          onChange=${(event) => setFilter(event.currentTarget.checked ? '1' : '')}
        />
        <span>Comments only</span>
      </label>
    </div>
    <ol class="feed">
      ${entries.map((entry) =>
        entry.comment
          ? html`<${Comment} key=${entry.id} comment=${entry.comment} reload=${reload} />`
          : html`<li key=${entry.id} class="feed-event">
              <span class="feed-dot" aria-hidden="true"></span>
              <p class="grow"><strong>${entry.event.who}</strong> ${entry.event.text}</p>
              <time class="faint num" datetime=${new Date(entry.at).toISOString()} title=${moment(entry.at)}>${ago(entry.at)}</time>
            </li>`,
      )}
    </ol>
    <${Composer} task=${task} me=${me} reload=${reload} />
  </section>`;
}

function Comment({ comment, reload }) {
  const [editing, setEditing] = useState(false);
  const [text, setText] = useState(comment.body);
  const [deleting, setDeleting] = useState(false);
  const { busy, error, submit } = useSubmit(async () => {
    if (text.trim() === '') return;
    await api.updateComment(comment.id, text.trim());
    setEditing(false);
    reload();
  });
  return html`<li class="feed-comment">
    <${Avatar} person=${comment.author} size=${30} named=${false} />
    <div class="comment grow">
      <div class="comment-head">
        <strong class="truncate">${comment.author.name}</strong>
        <time class="faint num" datetime=${new Date(comment.at).toISOString()} title=${moment(comment.at)}>${ago(comment.at)}</time>
        ${comment.edited && html`<span class="faint">edited</span>`}
        <span class="grow"></span>
        ${
          comment.mine &&
          !editing &&
          html`<button type="button" class="icon-button icon-button-small on-hover" aria-label="Edit comment" onClick=${() => {
            setText(comment.body);
            setEditing(true);
          }}><${Icon} name="edit" size=${15} /></button>
          <button type="button" class="icon-button icon-button-small on-hover" aria-label="Delete comment" onClick=${() => setDeleting(true)}>
            <${Icon} name="trash" size=${15} />
          </button>`
        }
      </div>
      ${
        editing
          ? html`<form class="form" onSubmit=${submit}>
            <${GrowArea}
              class="input"
              aria-label="Comment"
              maxlength="10000"
              focus
              value=${text}
              onInput=${(event) => setText(event.currentTarget.value)}
              onKeyDown=${(event) => {
                if (event.key === 'Enter' && (event.ctrlKey || event.metaKey)) submit(event);
                if (event.key === 'Escape') setEditing(false);
              }}
            />
            ${error && html`<p class="form-error" role="alert">${error}</p>`}
            <div class="row">
              <button class="button button-primary button-small" disabled=${busy}>Save</button>
              <button type="button" class="button button-small" onClick=${() => setEditing(false)}>Cancel</button>
            </div>
          </form>`
          : html`<${RichText} text=${comment.body} />`
      }
    </div>
    ${
      deleting &&
      html`<${ConfirmDialog}
      title="Delete this comment?"
      text="It goes for everyone. This can't be undone."
      action="Delete"
      onClose=${() => setDeleting(false)}
      onConfirm=${async () => {
        await api.deleteComment(comment.id);
        reload();
      }}
    />`
    }
  </li>`;
}

function Composer({ task, me, reload }) {
  const [text, setText] = useKept(`draft.comment.${task.key}`);
  const { busy, error, submit } = useSubmit(async () => {
    if (text.trim() === '') return;
    await api.comment(task.key, text.trim());
    setText('');
    reload();
  });
  return html`<form class="composer" onSubmit=${submit}>
    <${Avatar} person=${me} size=${30} named=${false} />
    <div class="grow composer-body">
      <${GrowArea}
        class="input"
        aria-label="Write a comment"
        placeholder="Write a comment"
        maxlength="10000"
        value=${text}
        onInput=${(event) => setText(event.currentTarget.value)}
        onKeyDown=${(event) => {
          if (event.key === 'Enter' && (event.ctrlKey || event.metaKey)) submit(event);
        }}
      />
      ${error && html`<p class="form-error" role="alert">${error}</p>`}
      ${
        text.trim() !== '' &&
        html`<div class="row">
        <button class="button button-primary button-small" disabled=${busy}>Comment</button>
        <span class="faint hint-keys">Ctrl+Enter sends</span>
      </div>`
      }
    </div>
  </form>`;
}
