/** Narrows a board to some people, labels or priorities. */
import { html } from '../../view.js';
import { PRIORITIES } from '../../core/tasks.js';
import { Avatar, LabelChip } from '../../ui/bits.js';
import { Icon, PriorityIcon } from '../../ui/icon.js';
import { Dropdown } from '../../ui/popover.js';
import { filterCount, NO_FILTER } from './order.js';

/** @param {{ board: any, filter: import('./order.js').Filter, onChange: (filter: any) => void }} props */
export function FilterMenu({ board, filter, onChange }) {
  const count = filterCount(filter);
  const flip = (field, id) => {
    const list = filter[field];
    const next = { ...filter, [field]: list.includes(id) ? list.filter((entry) => entry !== id) : [...list, id] };
    onChange(filterCount(next) === 0 ? NO_FILTER : next);
  };
  const setDone = (done) => {
    const next = { ...filter, done };
    onChange(filterCount(next) === 0 ? NO_FILTER : next);
  };
  return html`<${Dropdown}
    kind="dialog"
    align="end"
    class="button button-quiet ${count > 0 ? 'is-on' : ''}"
    panelClass="filter-panel"
    label=${count > 0 ? `Filter, ${count} in use` : 'Filter'}
    panelLabel="Filter"
    face=${html`<${Icon} name="filter" size=${17} /><span>Filter</span>${count > 0 && html`<span class="filter-count num">${count}</span>`}`}
  >
    ${() => html`<label class="choice">
        <input type="checkbox" checked=${filter.done} onChange=${(event) => setDone(event.currentTarget.checked)} />
        <span>Show done tasks</span>
      </label>
      <${Group} title="People" items=${board.people} chosen=${filter.people} flip=${(id) => flip('people', id)}
        draw=${(person) => html`<${Avatar} person=${person} size=${20} named=${false} /><span class="truncate">${person.name}</span>`} />
      <${Group} title="Labels" items=${board.labels} chosen=${filter.labels} flip=${(id) => flip('labels', id)}
        draw=${(label) => html`<${LabelChip} label=${label} />`} />
      <${Group} title="Priority" items=${[...PRIORITIES].reverse()} chosen=${filter.priorities} flip=${(id) => flip('priorities', id)}
        draw=${(entry) => html`<${PriorityIcon} priority=${entry.id} /><span>${entry.name}</span>`} />
      ${count > 0 && html`<button type="button" class="button button-small" onClick=${() => onChange(NO_FILTER)}>Clear the filter</button>`}`}
  <//>`;
}

function Group({ title, items, chosen, flip, draw }) {
  if (items.length === 0) return null;
  return html`<fieldset class="filter-group">
    <legend>${title}</legend>
    ${items.map(
      (item) => html`<label key=${item.id} class="choice">
        <input type="checkbox" checked=${chosen.includes(item.id)} onChange=${() => flip(item.id)} />
        ${draw(item)}
      </label>`,
    )}
  </fieldset>`;
}
