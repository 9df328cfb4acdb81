/** Puts the focus where one would type next. */
import { useLayoutEffect, useRef } from '../view.js';

/**
 * @param {'focus'|'select'} [how] "select" also selects what the field holds
 * @returns {{ current: HTMLInputElement|HTMLTextAreaElement|null }} the ref of a field that takes the focus when it appears
 */
export function useFocus(how = 'focus') {
  const field = useRef(null);
  useLayoutEffect(() => {
    field.current.focus();
    if (how === 'select') field.current.select();
  }, []);
  return field;
}

const tabStops =
  'a[href], button:not(:disabled), input:not(:disabled):not([type="hidden"]), select:not(:disabled), textarea:not(:disabled), [tabindex]:not([tabindex="-1"])';

/**
 * Lets Tab go round inside a modal dialog. An engine that is embedded in a window of its own would otherwise lose the
 * focus behind the last control and never give it back.
 * @param {HTMLElement} dialog
 * @param {KeyboardEvent} event a keydown in it
 */
export function goRound(dialog, event) {
  if (event.key !== 'Tab' || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
  const stops = [...dialog.querySelectorAll(tabStops)].filter((stop) => stop.tabIndex >= 0 && stop.getClientRects().length > 0);
  if (stops.length === 0) return;
  const [first, last] = event.shiftKey ? [stops.at(-1), stops[0]] : [stops[0], stops.at(-1)];
  if (document.activeElement !== last && dialog.contains(document.activeElement) && document.activeElement !== dialog) return;
  event.preventDefault();
  first.focus();
}
