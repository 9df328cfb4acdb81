/**
 * Dragging by pointer, from press to drop. A press becomes a drag when the pointer has moved a little, so clicks stay clicks.
 * What lies under the pointer is the caller's to know; this module moves the ghost, scrolls at the edges and ends cleanly.
 */

const THRESHOLD = 5;
const EDGE = 56;
const FASTEST = 14;

/**
 * @param {PointerEvent} press
 * @param {{ element: HTMLElement, onStart: () => void, onMove: (x: number, y: number) => void,
 *           onEnd: (dropped: boolean) => void, scrollers?: (x: number, y: number) => (Element|null)[] }} options
 */
export function dragFrom(press, { element, onStart, onMove, onEnd, scrollers = () => [] }) {
  if (press.button !== 0 || press.pointerType === 'touch' || press.ctrlKey) return;
  const box = element.getBoundingClientRect();
  const grip = { x: press.clientX - box.left, y: press.clientY - box.top };
  let ghost = null;
  let frame = 0;
  let last = { x: press.clientX, y: press.clientY };

  const step = () => {
    let scrolled = false;
    for (const scroller of scrollers(last.x, last.y)) {
      if (scroller && scrollAtEdge(scroller, last)) scrolled = true;
    }
    if (scrolled) onMove(last.x, last.y);
    frame = requestAnimationFrame(step);
  };

  const begin = () => {
    ghost = element.cloneNode(true);
    ghost.classList.add('drag-ghost');
    ghost.setAttribute('aria-hidden', 'true');
    ghost.style.width = `${box.width}px`;
    ghost.style.height = `${box.height}px`;
    document.body.append(ghost);
    document.documentElement.classList.add('is-dragging');
    onStart();
    frame = requestAnimationFrame(step);
  };

  const move = (event) => {
    last = { x: event.clientX, y: event.clientY };
    if (!ghost) {
      if (Math.hypot(last.x - press.clientX, last.y - press.clientY) < THRESHOLD) return;
      begin();
    }
    event.preventDefault();
    ghost.style.transform = `translate(${last.x - grip.x}px, ${last.y - grip.y}px) rotate(1.5deg)`;
    onMove(last.x, last.y);
  };

  const finish = (dropped) => {
    removeEventListener('pointermove', move);
    removeEventListener('pointerup', up);
    removeEventListener('pointercancel', cancel);
    removeEventListener('blur', cancel);
    removeEventListener('keydown', escape, true);
    if (!ghost) return;
    cancelAnimationFrame(frame);
    ghost.remove();
    document.documentElement.classList.remove('is-dragging');
    // The click that follows the release belongs to the drag.
    const swallow = (event) => {
      event.preventDefault();
      event.stopPropagation();
    };
    addEventListener('click', swallow, { capture: true, once: true });
    setTimeout(() => removeEventListener('click', swallow, { capture: true }), 0);
    onEnd(dropped);
  };
  const up = () => finish(true);
  const cancel = () => finish(false);
  const escape = (event) => {
    if (event.key !== 'Escape') return;
    event.preventDefault();
    event.stopPropagation();
    finish(false);
  };

  addEventListener('pointermove', move);
  addEventListener('pointerup', up);
  addEventListener('pointercancel', cancel);
  addEventListener('blur', cancel);
  addEventListener('keydown', escape, true);
}

/** @returns {boolean} whether it moved */
function scrollAtEdge(scroller, { x, y }) {
  const box = scroller.getBoundingClientRect();
  const { scrollLeft, scrollTop } = scroller;
  scroller.scrollLeft += push(x, box.left, box.right);
  scroller.scrollTop += push(y, box.top, box.bottom);
  return scroller.scrollLeft !== scrollLeft || scroller.scrollTop !== scrollTop;
}

/** The nearer the edge, the faster. */
function push(at, low, high) {
  if (at < low + EDGE) return -Math.round(FASTEST * Math.min(1, (low + EDGE - at) / EDGE));
  if (at > high - EDGE) return Math.round(FASTEST * Math.min(1, (at - high + EDGE) / EDGE));
  return 0;
}
