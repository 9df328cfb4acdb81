/** What can be done with a whole board. */
import { html, useState } from '../../view.js';
import { api } from '../../core/api.js';
import { invalidate } from '../../core/cache.js';
import { useBoards } from '../../core/data.js';
import { navigate } from '../../core/router.js';
import { ConfirmDialog } from '../../ui/dialog.js';
import { Icon } from '../../ui/icon.js';
import { Dropdown, MenuItem } from '../../ui/popover.js';
import { BoardForm } from './board-form.js';
import { LabelsDialog } from './labels-dialog.js';

/** @param {{ board: any }} props */
export function BoardMenu({ board }) {
  const [dialog, setDialog] = useState('');
  const known = useBoards().data?.boards.find((entry) => entry.id === board.id);
  const close = () => setDialog('');
  return html`<${Dropdown}
      class="icon-button"
      label="Board menu"
      title="Board menu"
      align="end"
      face=${html`<${Icon} name="more" />`}
    >
      ${(
        closeMenu,
      ) => html`<${MenuItem} close=${closeMenu} icon=${html`<${Icon} name="edit" size=${18} />`} onSelect=${() => setDialog('edit')}>Edit board…<//>
        <${MenuItem} close=${closeMenu} icon=${html`<${Icon} name="tag" size=${18} />`} onSelect=${() => setDialog('labels')}>Labels…<//>
        <hr class="menu-line" />
        <${MenuItem} danger close=${closeMenu} icon=${html`<${Icon} name="trash" size=${18} />`} onSelect=${() => setDialog('delete')}>Delete board…<//>`}
    <//>
    ${
      dialog === 'edit' &&
      html`<${BoardForm}
      title="Edit board"
      action="Save"
      board=${{ ...known, ...board }}
      onClose=${close}
      onSave=${async (values) => {
        await api.updateBoard(board.id, values);
        invalidate((key) => ['boards', 'home', `board:${board.id}`].includes(key));
      }}
    />`
    }
    ${dialog === 'labels' && html`<${LabelsDialog} board=${board} onClose=${close} />`}
    ${
      dialog === 'delete' &&
      html`<${ConfirmDialog}
      title="Delete this board?"
      text=${`“${board.name}” goes with all its lists and tasks. This can't be undone.`}
      action="Delete board"
      onClose=${close}
      onConfirm=${async () => {
        await api.deleteBoard(board.id);
        navigate('/boards', 'replace');
        invalidate((key) => ['boards', 'home', 'my'].includes(key));
      }}
    />`
    }`;
}
