/** One polite live region for what happens without a visible focus change: moves, saves, undo. */

let region = null;

/** @param {string} text spoken by a screen reader when it next pauses */
export function announce(text) {
  if (!region) {
    region = document.createElement('div');
    region.className = 'sr-only';
    region.setAttribute('role', 'status');
    region.setAttribute('aria-live', 'polite');
    region.id = 'announcer';
    document.body.append(region);
  }
  // The same sentence twice is only spoken again when the text node changes.
  region.textContent = region.textContent === text ? `${text}\u00a0` : text;
}
