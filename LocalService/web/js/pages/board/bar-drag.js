/** Moving and stretching the timeline's bars with the pointer. */

/** How far the pointer moves before a press is no click any more, in pixels. */
const THRESHOLD = 4;
/** How much of each end stretches the bar, in pixels. */
const EDGE = 7;

/**
 * @param {PointerEvent} event a press on a bar, whose place is in its --from and --span
 * @param {number} day the width of a day in pixels
 * @param {(start: number, end: number) => void} drop gets the days by which the bar's start and end have moved
 */
export function dragBar(event, day, drop) {
  const bar = /** @type {HTMLElement} */ (event.currentTarget);
  if (event.button !== 0 || !event.isPrimary) return;
  const box = bar.getBoundingClientRect();
  const stretches = box.width > 3 * EDGE;
  const byStart = stretches && event.clientX - box.left < EDGE;
  const byEnd = stretches && box.right - event.clientX < EDGE;
  const from = Number(bar.style.getPropertyValue('--from'));
  const span = Number(bar.style.getPropertyValue('--span'));
  const begin = event.clientX;
  const listening = new AbortController();
  let days = 0;
  let dragged = false;

  const moved = () => {
    if (byStart) return [Math.min(days, span - 1), 0];
    if (byEnd) return [0, Math.max(days, 1 - span)];
    return [days, days];
  };
  const show = (start, end) => {
    bar.style.setProperty('--from', String(from + start));
    bar.style.setProperty('--span', String(span + end - start));
  };
  const finish = () => {
    listening.abort();
    bar.classList.remove('is-dragged');
    show(0, 0);
  };
  const on = (type, handler) => addEventListener(type, handler, { signal: listening.signal, capture: true });

  on('pointermove', (move) => {
    if (!dragged && Math.abs(move.clientX - begin) < THRESHOLD) return;
    dragged = true;
    bar.classList.add('is-dragged');
    days = Math.round((move.clientX - begin) / day);
    show(...moved());
  });
  on('pointerup', () => {
    finish();
    if (!dragged) return;
    // The press was no click on the link.
    const swallow = (click) => click.preventDefault();
    bar.addEventListener('click', swallow, true);
    setTimeout(() => bar.removeEventListener('click', swallow, true));
    const [start, end] = moved();
    if (start !== 0 || end !== 0) drop(start, end);
  });
  on('pointercancel', finish);
  on('keydown', (key) => {
    if (key.key !== 'Escape' || !dragged) return;
    key.preventDefault();
    key.stopPropagation();
    days = 0;
    finish();
  });
}
