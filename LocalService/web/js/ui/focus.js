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
 * Lets Tab go round inside a modal dialog, or in the whole page. An engine that is embedded in a window of its own would
 * otherwise lose the focus behind the last control and never give it back.
 * @param {HTMLElement} container the dialog or the body
 * @param {KeyboardEvent} event a keydown in it
 */
export function goRound(container, event) {
  if (event.key !== 'Tab' || event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
  const stops = [...container.querySelectorAll(tabStops)].filter(
    (stop) => stop.tabIndex >= 0 && stop.getClientRects().length > 0,
  );
  if (stops.length === 0) return;
  const active = document.activeElement;
  // From the container itself the engine goes on where the user was last; only backwards that may lead out.
  const leaves = event.shiftKey ? active === container || active === stops[0] : active === stops.at(-1);
  if (!leaves) return;
  event.preventDefault();
  (event.shiftKey ? stops.at(-1) : stops[0]).focus();
}
