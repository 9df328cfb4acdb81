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
