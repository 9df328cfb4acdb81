/** The search field of the band. On the search page it searches while one types. */
import { html, useEffect, useRef, useState } from '../view.js';
import { navigate } from '../core/router.js';
import { Icon } from '../ui/icon.js';

const PAUSE = 220;

const searchPath = (text) => (text.trim() === '' ? '/search' : `/search?q=${encodeURIComponent(text.trim())}`);

/** @param {{ route: import('../core/router.js').Route }} props */
export function SearchField({ route }) {
  const onPage = route.name === 'search';
  const shown = onPage ? (route.query.get('q') ?? '') : '';
  const [text, setText] = useState(shown);
  const field = useRef(null);
  const pause = useRef(0);

  useEffect(() => {
    // What is being typed is newer than the address that follows it.
    if (document.activeElement !== field.current || text.trim() !== shown) setText(shown);
    if (onPage && shown === '') field.current.focus();
  }, [shown, onPage]);
  useEffect(() => () => clearTimeout(pause.current), []);

  const go = (value, how) => {
    clearTimeout(pause.current);
    navigate(searchPath(value), how);
  };
  const onInput = (event) => {
    const value = event.currentTarget.value;
    setText(value);
    clearTimeout(pause.current);
    if (onPage) pause.current = setTimeout(() => go(value, 'replace'), PAUSE);
  };
  const onKeyDown = (event) => {
    if (event.key === 'Escape') {
      if (text) {
        setText('');
        if (onPage) go('', 'replace');
      } else event.currentTarget.blur();
      event.preventDefault();
    } else if (event.key === 'ArrowDown' && onPage) {
      document.querySelector('main .task-row-title')?.focus();
      event.preventDefault();
    }
  };
  return html`<form
    class="search"
    role="search"
    onSubmit=${(event) => {
      event.preventDefault();
      go(text, onPage ? 'replace' : 'push');
    }}
  >
    <${Icon} name="search" size=${18} />
    <input
      ref=${field}
      type="search"
      name="q"
      aria-label="Search tasks"
      placeholder="Search"
      autocomplete="off"
      spellcheck=${false}
      maxlength="200"
      value=${text}
      onInput=${onInput}
      onKeyDown=${onKeyDown}
    />
    <kbd class="search-hint" aria-hidden="true">/</kbd>
  </form>`;
}
