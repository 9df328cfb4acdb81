/** Arrow keys from task to task in any list, and X to finish one. */

/** @param {KeyboardEvent} event a keydown inside a page */
export function walkRows(event) {
  if (event.ctrlKey || event.metaKey || event.altKey || event.shiftKey) return;
  const title = event.target.closest?.('.task-row-title');
  if (!title) return;
  const titles = [...event.currentTarget.querySelectorAll('.task-row-title')].filter((entry) =>
    entry.checkVisibility(),
  );
  const at = titles.indexOf(title);
  if (event.key === 'ArrowDown') titles[at + 1]?.focus();
  else if (event.key === 'ArrowUp') titles[at - 1]?.focus();
  else if (event.key === 'x') title.closest('.task-row').querySelector('.done-check').click();
  else return;
  event.preventDefault();
}
