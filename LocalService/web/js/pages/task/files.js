/** Files of a task: chosen, dropped or pasted; one after another, each with its own end. */
import { html, useRef, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { toast, toastError } from '../../core/toasts.js';
import { Icon } from '../../ui/icon.js';

const LARGEST = 25 * 1024 * 1024;
const SHOWN_INLINE = /^image\/(png|jpeg|gif|webp)$/;

/** "512 B", "14 KB", "2.5 MB" @param {number} bytes */
function sizeText(bytes) {
  if (bytes < 1024) return `${bytes} B`;
  if (bytes < 1024 * 1024) return `${Math.round(bytes / 1024)} KB`;
  return `${(bytes / 1024 / 1024).toFixed(1)} MB`;
}

/** Only addresses of this site are followed. */
const fileAddress = (file) =>
  typeof file.url === 'string' && /^\/files\//.test(file.url)
    ? file.url
    : `/files/${encodeURIComponent(file.id)}/${encodeURIComponent(file.name)}`;

/** @param {{ task: any, canEdit: boolean, reload: () => void }} props */
export function Files({ task, canEdit, reload }) {
  const [busy, setBusy] = useState('');
  const [over, setOver] = useState(false);
  const chooser = useRef(null);
  if (!canEdit && task.files.length === 0) return null;

  const upload = async (list) => {
    for (const file of list) {
      if (file.size > LARGEST) {
        toast(`“${file.name}” is larger than 25 MB.`, { tone: 'error' });
        continue;
      }
      setBusy(file.name);
      try {
        await api.uploadFile(task.key, file);
      } catch (error) {
        toastError(error);
      }
    }
    setBusy('');
    reload();
  };
  const onDrop = (event) => {
    event.preventDefault();
    setOver(false);
    if (canEdit) upload([...event.dataTransfer.files]);
  };
  const hasFiles = (event) => canEdit && event.dataTransfer?.types?.includes('Files');
  return html`<section
    class="task-section files ${over ? 'is-over' : ''}"
    aria-label="Files"
    onDragOver=${(event) => {
      if (!hasFiles(event)) return;
      event.preventDefault();
      setOver(true);
    }}
    onDragLeave=${() => setOver(false)}
    onDrop=${onDrop}
  >
    <div class="section-head"><h2>Files</h2></div>
    ${
      task.files.length > 0 &&
      html`<ul class="file-list">
      ${task.files.map((file) => html`<${FileRow} key=${file.id} file=${file} canEdit=${canEdit} reload=${reload} />`)}
    </ul>`
    }
    ${
      canEdit &&
      html`<div class="row">
      <button type="button" class="button button-small" disabled=${busy !== ''} onClick=${() => chooser.current.click()}>
        <${Icon} name="upload" size=${16} />${busy ? `Uploading ${busy}…` : 'Add files'}
      </button>
      <span class="faint file-hint">or drop them here, up to 25 MB each</span>
      <input
        ref=${chooser}
        type="file"
        multiple
        hidden
        aria-label="Files to add"
        onChange=${(event) => {
          const list = [...event.currentTarget.files];
          event.currentTarget.value = '';
          upload(list);
        }}
      />
    </div>`
    }
  </section>`;
}

function FileRow({ file, canEdit, reload }) {
  const address = fileAddress(file);
  const remove = async () => {
    try {
      await api.deleteFile(file.id);
    } catch (error) {
      toastError(error);
    }
    reload();
  };
  return html`<li class="file-row">
    <span class="file-thumb" aria-hidden="true">
      ${
        SHOWN_INLINE.test(file.mime ?? '')
          ? html`<img src=${`${address}?inline=1`} alt="" loading="lazy" />`
          : html`<${Icon} name="file" size=${18} />`
      }
    </span>
    <a class="grow file-name" href=${address} download=${file.name}>
      <span class="truncate">${file.name}</span>
      <span class="faint num">${Number.isFinite(file.size) ? sizeText(file.size) : ''}</span>
    </a>
    <a class="icon-button" href=${address} download=${file.name} aria-label=${`Download ${file.name}`} title="Download"><${Icon} name="download" size=${17} /></a>
    ${
      canEdit &&
      html`<button type="button" class="icon-button" aria-label=${`Delete ${file.name}`} title="Delete" onClick=${remove}>
      <${Icon} name="trash" size=${17} />
    </button>`
    }
  </li>`;
}
