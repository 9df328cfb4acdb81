/** The resources that more than one page reads. */
import { api } from './api.js';
import { useResource } from './cache.js';
import { useMemo } from '../view.js';

export const useBoards = () => useResource('boards', api.boards);
export const usePeople = () => useResource('people', api.people);
export const useInbox = () => useResource('inbox', api.notifications);
export const useTimer = () => useResource('timer', api.timer);
export const useHome = () => useResource('home', api.home);
/** @param {string} id "" while none is known */
export const useBoard = (id) => useResource(id === '' ? null : `board:${id}`, () => api.board(id));
export const useTask = (key) => useResource(`task:${key}`, () => api.task(key));

/** Colour of each board by its id. @returns {Map<string, string>} */
export function useBoardColors() {
  const { data } = useBoards();
  return useMemo(() => new Map((data?.boards ?? []).map((board) => [board.id, board.color])), [data]);
}

/** People of the workspace by id and by name, since tasks name them either way. @returns {Map<string, any>} */
export function usePeopleMap() {
  const { data } = usePeople();
  return useMemo(() => {
    const people = data?.people ?? [];
    return new Map([...people.map((person) => [person.name, person]), ...people.map((person) => [person.id, person])]);
  }, [data]);
}
