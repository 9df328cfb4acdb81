/** The board as columns of cards, moved by pointer or by keys. */
import { html, useEffect, useLayoutEffect, useMemo, useRef, useState } from '../../view.js';
import { announce } from '../../core/announce.js';
import { navigate, taskPath } from '../../core/router.js';
import { moveCard, setDone } from '../../core/tasks.js';
import { AddList, Column } from './column.js';
import { dragFrom } from './drag.js';
import { columnsOf, placeAt } from './order.js';

/** @typedef {{ key: string, list: string, index: number, by: 'pointer'|'keys' }} Moving a card on its way */

/** How far each board was scrolled sideways, so that coming back from a card finds the same place. */
const scrolled = new Map();

/** @param {{ board: any, tasks: any[] }} props */
export function KanbanView({ board, tasks }) {
  const columns = useMemo(() => columnsOf(board, tasks), [board, tasks]);
  const [moving, setMoving] = useState(/** @type {Moving|null} */ (null));
  const root = useRef(null);
  const latest = useRef({});
  latest.current = { columns, tasks, moving };

  useLayoutEffect(() => {
    root.current.scrollLeft = scrolled.get(board.id) ?? 0;
  }, [board.id]);

  // A card on its way by keys is drawn elsewhere at each step; the focus goes with it.
  const [refocus, setRefocus] = useState('');
  useLayoutEffect(() => {
    if (!refocus) return;
    focusCard(root.current, refocus);
    setRefocus('');
  });

  useEffect(() => {
    if (moving && !tasks.some((task) => task.key === moving.key)) setMoving(null);
  }, [tasks]);

  const drop = (target) => {
    // A drag may last longer than what was loaded when it began.
    const column = latest.current.columns.find((entry) => entry.list.id === target.list);
    const card = latest.current.tasks.find((task) => task.key === target.key);
    setMoving(null);
    if (!column || !card) return;
    const others = column.cards.filter((entry) => entry.key !== card.key);
    const unchanged = card.list_id === target.list && column.cards.indexOf(card) === target.index;
    if (unchanged) return;
    moveCard(card, { list: column.list, ...placeAt(others, target.index) }).then((moved) => {
      if (!moved) announce(`${card.title} is back where it was.`);
    });
    announce(`${card.title} moved to ${column.list.name}, position ${target.index + 1} of ${others.length + 1}.`);
  };

  const press = (event) => {
    if (event.target.closest('button, input, textarea, [popover], dialog')) return;
    const element = event.target.closest('.card');
    if (!element || latest.current.moving) return;
    const key = element.dataset.key;
    const card = tasks.find((task) => task.key === key);
    if (!card) return;
    let target = null;
    dragFrom(event, {
      element,
      scrollers: (x, y) => [root.current, document.elementFromPoint(x, y)?.closest('.column-cards') ?? null],
      onStart() {
        document.activeElement?.blur?.();
      },
      onMove(x, y) {
        const found = placeUnder(root.current, x, y, key);
        if (!found || (found.list === target?.list && found.index === target.index)) return;
        target = { key, ...found, by: 'pointer' };
        setMoving(target);
      },
      onEnd(dropped) {
        if (dropped && target) drop(target);
        else setMoving(null);
      },
    });
  };

  const onKeyDown = (event) => {
    const element = event.target.closest?.('.card');
    if (
      !element ||
      event.target !== element.querySelector('.card-title') ||
      event.ctrlKey ||
      event.metaKey ||
      event.altKey
    )
      return;
    const key = element.dataset.key;
    if (moving?.by === 'keys') moveByKey(event);
    else walk(event, key);
  };

  const walk = (event, key) => {
    const task = tasks.find((entry) => entry.key === key);
    const [x, y] = positionOf(columns, key);
    const go = (column, index) => {
      const cards = columns[column]?.cards ?? [];
      const next = cards[Math.max(0, Math.min(index, cards.length - 1))];
      if (next) focusCard(root.current, next.key);
    };
    if (event.key === 'ArrowDown') go(x, y + 1);
    else if (event.key === 'ArrowUp') go(x, y - 1);
    else if (event.key === 'ArrowRight' || event.key === 'ArrowLeft') {
      const step = event.key === 'ArrowRight' ? 1 : -1;
      let column = x + step;
      while (columns[column] && columns[column].cards.length === 0) column += step;
      go(column, y);
    } else if (event.key === ' ') {
      setMoving({ key, list: task.list_id, index: y, by: 'keys' });
      setRefocus(key);
      announce(
        `Picked up ${task.title}, position ${y + 1} of ${columns[x].cards.length} in ${columns[x].list.name}. ` +
          'Arrow keys move it, Space puts it down, Escape puts it back.',
      );
    } else if (event.key === 'x') setDone(task, !task.done);
    else if (event.key === 'Enter') navigate(taskPath(key));
    else return;
    event.preventDefault();
    event.stopPropagation();
  };

  const moveByKey = (event) => {
    const at = columns.findIndex((entry) => entry.list.id === moving.list);
    const size = (column) => columns[column].cards.filter((card) => card.key !== moving.key).length;
    let column = at;
    let { index } = moving;
    if (event.key === 'ArrowDown') index += 1;
    else if (event.key === 'ArrowUp') index -= 1;
    else if (event.key === 'ArrowRight') column += 1;
    else if (event.key === 'ArrowLeft') column -= 1;
    else if (event.key === ' ' || event.key === 'Enter') {
      setRefocus(moving.key);
      drop(moving);
      event.preventDefault();
      return;
    } else if (event.key === 'Escape') {
      setRefocus(moving.key);
      setMoving(null);
      announce('Put back.');
      event.preventDefault();
      return;
    } else {
      if (event.key === 'Tab') event.preventDefault();
      return;
    }
    event.preventDefault();
    event.stopPropagation();
    column = Math.max(0, Math.min(column, columns.length - 1));
    index = Math.max(0, Math.min(index, size(column)));
    const { list } = columns[column];
    setMoving({ ...moving, list: list.id, index });
    setRefocus(moving.key);
    announce(`${list.name}, position ${index + 1} of ${size(column) + 1}.`);
  };

  const movingCard = moving && tasks.find((task) => task.key === moving.key);
  return html`<div
    ref=${root}
    class="kanban"
    onPointerDown=${press}
    onKeyDown=${onKeyDown}
    onScroll=${(event) => scrolled.set(board.id, event.currentTarget.scrollLeft)}
    onDragStart=${(event) => event.preventDefault()}
  >
    ${columns.map(
      ({ list, cards }, index) => html`<${Column}
        key=${list.id}
        board=${board}
        list=${list}
        index=${index}
        lists=${board.lists}
        cards=${cards}
        moving=${moving}
        movingCard=${movingCard}
      />`,
    )}
    <${AddList} board=${board} />
  </div>`;
}

function focusCard(root, key) {
  const title = root.querySelector(`.card[data-key="${CSS.escape(key)}"] .card-title`);
  title?.focus();
  title?.closest('.card').scrollIntoView({ block: 'nearest', inline: 'nearest' });
}

function positionOf(columns, key) {
  const column = columns.findIndex((entry) => entry.cards.some((card) => card.key === key));
  return [column, columns[column]?.cards.findIndex((card) => card.key === key) ?? 0];
}

/** The list and the index among its other cards that lie under the pointer. */
function placeUnder(root, x, y, key) {
  const columns = [...root.querySelectorAll('.column[data-list]')];
  const column = columns.find((entry) => {
    const box = entry.getBoundingClientRect();
    return x >= box.left - 8 && x < box.right + 8;
  });
  if (!column) return null;
  const cards = [...column.querySelectorAll('.card')].filter((card) => card.dataset.key !== key);
  const index = cards.findIndex((card) => {
    const box = card.getBoundingClientRect();
    return y < box.top + box.height / 2;
  });
  return { list: column.dataset.list, index: index === -1 ? cards.length : index };
}
