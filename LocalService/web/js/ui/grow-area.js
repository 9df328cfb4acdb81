/** A text area as high as its text. */
import { html, useLayoutEffect, useRef } from '../view.js';

/**
 * @param {Record<string, any> & { value: string, focus?: boolean, field?: { current: any } }} props
 *   `focus`: takes the focus, behind what it holds; `field`: a ref of the caller's; the rest goes to the text area
 */
export function GrowArea({ focus, field, ...rest }) {
  const own = useRef(null);
  const area = field ?? own;
  useLayoutEffect(() => {
    const element = area.current;
    element.style.height = 'auto';
    element.style.height = `${element.scrollHeight + element.offsetHeight - element.clientHeight}px`;
  }, [rest.value]);
  useLayoutEffect(() => {
    if (!focus) return;
    area.current.focus();
    area.current.setSelectionRange(rest.value.length, rest.value.length);
  }, [focus]);
  return html`<textarea ref=${area} rows="1" ...${rest}></textarea>`;
}
