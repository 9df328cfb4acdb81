/** The one place that names the view library; everything else imports from here. */
export {
  html,
  render,
  createContext,
  useState,
  useReducer,
  useEffect,
  useLayoutEffect,
  useRef,
  useMemo,
  useCallback,
  useContext,
} from '../third_party/htm-preact/standalone.module.js';
