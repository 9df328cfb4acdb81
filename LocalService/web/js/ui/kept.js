/** A text that this browser keeps: half-written words, or how somebody likes to see a page. */
import { useState } from '../view.js';
import { recall, remember } from '../core/local.js';

/**
 * @param {string} name
 * @param {string} [otherwise] the value before it was ever set
 * @returns {[string, (value: string) => void]} as useState gives them
 */
export function useKept(name, otherwise = '') {
  const [value, setValue] = useState(() => recall(name) ?? otherwise);
  const keep = (next) => {
    setValue(next);
    remember(name, next);
  };
  return [value, keep];
}
