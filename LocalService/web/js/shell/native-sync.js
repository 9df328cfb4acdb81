/** Tells the desktop shell what it shows natively: boards for its menu, the badge, the running timer. */
import { useEffect } from '../view.js';
import { safeColor } from '../core/color.js';
import { useBoards, useInbox, useTimer } from '../core/data.js';
import { onNative, postNative } from '../core/native.js';
import { stopTimerOf } from '../core/timer.js';

const MOST_BOARDS = 500;

/** @param {{ workspace: { id: string } }} props */
export function NativeSync({ workspace }) {
  const boards = useBoards().data?.boards;
  const unread = useInbox().data?.unread;
  const timer = useTimer().data?.timer;

  const boardsText = boards && JSON.stringify(boards.slice(0, MOST_BOARDS).map(boardRef));
  useEffect(() => {
    if (boardsText) postNative({ type: 'boards', workspaceId: workspace.id, boards: JSON.parse(boardsText) });
  }, [boardsText, workspace.id]);

  useEffect(() => {
    if (Number.isInteger(unread)) postNative({ type: 'badge', count: unread });
  }, [unread]);

  const timerText = timer === undefined ? undefined : JSON.stringify(timer);
  useEffect(() => {
    if (timerText === undefined) return;
    const running = JSON.parse(timerText);
    if (!running) postNative({ type: 'timer', state: 'stopped' });
    else {
      postNative({
        type: 'timer',
        state: 'started',
        taskKey: running.task_key,
        taskTitle: running.task_title,
        boardName: running.board_name ?? '',
        startedAt: running.started_at,
      });
    }
  }, [timerText]);

  useEffect(() => onNative('stopTimer', ({ taskKey }) => (stopTimerOf(taskKey), true)), []);
  return null;
}

function boardRef({ id, name, color, section }) {
  const ref = { id, name, color: safeColor(color) };
  return section ? { ...ref, section } : ref;
}
