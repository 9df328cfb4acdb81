/** A panel beside the control that opened it, in the browser's top layer: click elsewhere or Escape closes it. */
import { html, useEffect, useLayoutEffect, useRef, useState } from '../view.js';

const MARGIN = 8;

function place(panel, anchor, align) {
  const box = anchor.getBoundingClientRect();
  const { offsetWidth: width, offsetHeight: height } = panel;
  const wantedLeft = align === 'end' ? box.right - width : box.left;
  const left = Math.max(MARGIN, Math.min(wantedLeft, innerWidth - width - MARGIN));
  const below = box.bottom + 6;
  const fitsBelow = below + height + MARGIN <= innerHeight;
  const top = fitsBelow ? below : Math.max(MARGIN, Math.min(box.top - height - 6, innerHeight - height - MARGIN));
  panel.style.left = `${Math.round(left)}px`;
  panel.style.top = `${Math.round(top)}px`;
}

/**
 * @param {{ anchor: HTMLElement, label: string, role?: string, align?: 'start'|'end', class?: string,
 *           onClose: () => void, onKeyDown?: (event: KeyboardEvent) => void, children: any }} props
 */
function Popover({
  anchor,
  label,
  role = 'dialog',
  align = 'start',
  class: className = '',
  onClose,
  onKeyDown,
  children,
}) {
  const panel = useRef(null);
  const close = useRef(onClose);
  close.current = onClose;

  useLayoutEffect(() => {
    const element = panel.current;
    element.showPopover();
    place(element, anchor, align);
    const first =
      element.querySelector('[autofocus]') ??
      element.querySelector('[aria-checked="true"], [tabindex="0"], input, button, a[href], select, textarea');
    (first ?? element).focus({ preventScroll: true });
    const onToggle = (event) => event.newState === 'closed' && close.current();
    const again = () => place(element, anchor, align);
    element.addEventListener('toggle', onToggle);
    addEventListener('resize', again);
    const observer = new ResizeObserver(again);
    observer.observe(element);
    return () => {
      const inside = element.contains(document.activeElement) || document.activeElement === document.body;
      element.removeEventListener('toggle', onToggle);
      removeEventListener('resize', again);
      observer.disconnect();
      if (inside && anchor.isConnected) anchor.focus({ preventScroll: true });
    };
  }, []);

  return html`<div
    ref=${panel}
    class="popover ${className}"
    popover="auto"
    role=${role}
    aria-label=${label}
    tabindex="-1"
    onKeyDown=${onKeyDown}
  >
    ${children}
  </div>`;
}

/**
 * A button and the panel it opens.
 * @param {{ label: string, panelLabel?: string, title?: string, class?: string, panelClass?: string, kind?: 'menu'|'dialog',
 *   align?: 'start'|'end', disabled?: boolean, face: any, id?: string,
 *   children: (close: () => void) => any }} props `label` names the button for screen readers; `face` is what it shows
 */
export function Dropdown(props) {
  const { label, panelLabel, title, class: className, panelClass, kind = 'menu', align, disabled, face, id } = props;
  const [open, setOpen] = useState(false);
  const button = useRef(null);
  const openAtPress = useRef(false);
  useEffect(() => {
    if (disabled) setOpen(false);
  }, [disabled]);
  const close = () => setOpen(false);
  return html`<button
      ref=${button}
      id=${id}
      type="button"
      class=${className}
      aria-label=${label}
      title=${title}
      aria-haspopup=${kind}
      aria-expanded=${String(open)}
      disabled=${disabled}
      onPointerDown=${() => (openAtPress.current = open)}
      onClick=${(event) => {
        event.preventDefault();
        // A press outside the panel has already closed it by the time the click comes.
        setOpen(event.detail === 0 ? !open : !openAtPress.current);
      }}
      onKeyDown=${(event) => {
        if (kind === 'menu' && event.key === 'ArrowDown' && !open) {
          event.preventDefault();
          setOpen(true);
        }
      }}
    >
      ${face}
    </button>
    ${
      open &&
      html`<${Popover}
      anchor=${button.current}
      label=${panelLabel ?? label}
      role=${kind}
      align=${align}
      class=${panelClass}
      onClose=${close}
      onKeyDown=${kind === 'menu' ? moveInMenu : undefined}
    >
      ${props.children(close)}
    <//>`
    }`;
}

/** Arrow keys, Home, End and first letters in a list of menu items. */
function moveInMenu(event) {
  const items = [...event.currentTarget.querySelectorAll('[role^="menuitem"]:not(:disabled)')];
  const at = items.indexOf(document.activeElement);
  let next = null;
  if (event.key === 'ArrowDown') next = items[(at + 1) % items.length];
  else if (event.key === 'ArrowUp') next = items[(at - 1 + items.length) % items.length];
  else if (event.key === 'Home') next = items[0];
  else if (event.key === 'End') next = items.at(-1);
  else if (event.key === 'Tab') event.currentTarget.hidePopover();
  else if (event.key.length === 1 && event.key !== ' ' && !event.ctrlKey && !event.metaKey && !event.altKey) {
    const letter = event.key.toLowerCase();
    const order = [...items.slice(at + 1), ...items.slice(0, at + 1)];
    next = order.find((item) => item.textContent.trim().toLowerCase().startsWith(letter));
  }
  if (!next) return;
  event.preventDefault();
  event.stopPropagation();
  next.focus();
}

/**
 * @param {{ icon?: any, role?: string, checked?: boolean, danger?: boolean, disabled?: boolean, hint?: string,
 *           onSelect: () => void, close?: () => void, children: any }} props `close` closes the menu afterwards
 */
export function MenuItem({ icon, role = 'menuitem', checked, danger, disabled, hint, onSelect, close, children }) {
  return html`<button
    type="button"
    role=${role}
    aria-checked=${checked === undefined ? undefined : String(checked)}
    class="menu-item ${danger ? 'is-danger' : ''}"
    disabled=${disabled}
    onClick=${() => {
      close?.();
      onSelect();
    }}
  >
    ${icon}
    <span class="grow truncate">${children}</span>
    ${hint && html`<kbd>${hint}</kbd>`}
    ${checked !== undefined && html`<span class="menu-tick" aria-hidden="true">${checked ? '✓' : ''}</span>`}
  </button>`;
}

/** A menu item that leads to a page. */
export function MenuLink({ icon, href, close, children }) {
  return html`<a role="menuitem" class="menu-item" href=${href} onClick=${close}>
    ${icon}<span class="grow truncate">${children}</span>
  </a>`;
}
