/** Keys that act anywhere on the page, as long as nobody is typing and no dialog is open. */

/** @typedef {{ keys: string[], group: string, text: string, run: (event: KeyboardEvent) => boolean|void }} Shortcut */

const PREFIX_LIFE = 1200;

/** @param {EventTarget|null} target */
function isTyping(target) {
  if (!(target instanceof HTMLElement)) return false;
  if (target.isContentEditable || target.tagName === 'TEXTAREA' || target.tagName === 'SELECT') return true;
  return target.tagName === 'INPUT' && !['checkbox', 'radio', 'button', 'submit', 'file'].includes(target.type);
}

/**
 * Listens for single keys ("n") and two in a row ("g h").
 * @param {() => Shortcut[]} shortcuts read at each press
 * @returns {() => void} stops listening
 */
export function listenForKeys(shortcuts) {
  let prefix = '';
  let prefixAt = 0;
  const onKey = (event) => {
    if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey || event.isComposing) return;
    if (isTyping(event.target) || document.querySelector('dialog[open], [popover]:popover-open')) return;
    const first = event.timeStamp - prefixAt < PREFIX_LIFE ? prefix : '';
    prefix = '';
    const pressed = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    const list = shortcuts();
    const wanted = first ? `${first} ${pressed}` : pressed;
    const found = list.find((entry) => entry.keys.includes(wanted));
    if (found) {
      if (found.run(event) !== false) event.preventDefault();
    } else if (!first && list.some((entry) => entry.keys.some((key) => key.startsWith(`${pressed} `)))) {
      prefix = pressed;
      prefixAt = event.timeStamp;
    }
  };
  addEventListener('keydown', onKey);
  return () => removeEventListener('keydown', onKey);
}
