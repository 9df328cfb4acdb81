/** One month to choose a day from, by pointer or by arrow keys. */
import { html, useEffect, useRef, useState } from '../view.js';
import {
  addDays,
  addMonths,
  longDate,
  monthTitle,
  startOfMonth,
  startOfWeek,
  today,
  weekdayNames,
} from '../core/dates.js';
import { Icon } from './icon.js';

const STEPS = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -7, ArrowDown: 7 };

/** @param {{ value: string|null, onPick: (date: string) => void }} props */
export function CalendarGrid({ value, onPick }) {
  const now = today();
  const [cursor, setCursor] = useState(value ?? now);
  const [moved, setMoved] = useState(false);
  const grid = useRef(null);
  useEffect(() => setCursor(value ?? now), [value]);
  useEffect(() => {
    if (moved) grid.current.querySelector('[tabindex="0"]')?.focus();
  }, [cursor]);

  const first = startOfWeek(startOfMonth(cursor));
  const weeks = Array.from({ length: 6 }, (_, week) =>
    Array.from({ length: 7 }, (_unused, day) => addDays(first, week * 7 + day)),
  );
  const turn = (months) => {
    setMoved(false);
    setCursor(addMonths(cursor, months));
  };
  const onKeyDown = (event) => {
    let next = STEPS[event.key] ? addDays(cursor, STEPS[event.key]) : null;
    if (event.key === 'PageUp') next = addMonths(cursor, -1);
    if (event.key === 'PageDown') next = addMonths(cursor, 1);
    if (event.key === 'Home') next = startOfWeek(cursor);
    if (event.key === 'End') next = addDays(startOfWeek(cursor), 6);
    if (!next) return;
    event.preventDefault();
    setMoved(true);
    setCursor(next);
  };
  return html`<div class="cal">
    <div class="cal-head">
      <button type="button" class="icon-button" aria-label="Previous month" onClick=${() => turn(-1)}><${Icon} name="left" size=${18} /></button>
      <strong aria-live="polite">${monthTitle(cursor)}</strong>
      <button type="button" class="icon-button" aria-label="Next month" onClick=${() => turn(1)}><${Icon} name="right" size=${18} /></button>
    </div>
    <table ref=${grid} class="cal-grid" role="grid" aria-label=${monthTitle(cursor)} onKeyDown=${onKeyDown}>
      <thead>
        <tr>
          ${[1, 2, 3, 4, 5, 6, 0].map(
            (day) => html`<th key=${day} scope="col" abbr=${weekdayNames[day]}>${weekdayNames[day].slice(0, 2)}</th>`,
          )}
        </tr>
      </thead>
      <tbody>
        ${weeks.map(
          (week) => html`<tr key=${week[0]}>
            ${week.map(
              (day) => html`<td key=${day} role="gridcell" aria-selected=${String(day === value)}>
                <button
                  type="button"
                  class="cal-day num ${day.slice(0, 7) === cursor.slice(0, 7) ? '' : 'is-outside'}"
                  aria-label=${longDate(day)}
                  aria-current=${day === now ? 'date' : undefined}
                  aria-pressed=${String(day === value)}
                  tabindex=${day === cursor ? 0 : -1}
                  onClick=${() => onPick(day)}
                >
                  ${Number(day.slice(8))}
                </button>
              </td>`,
            )}
          </tr>`,
        )}
      </tbody>
    </table>
  </div>`;
}
