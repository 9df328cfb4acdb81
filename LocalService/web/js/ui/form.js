/** A form that sends once, says what went wrong, and keeps what was typed. */
import { useRef, useState } from '../view.js';

/**
 * @param {() => Promise<void>} send
 * @returns {{ busy: boolean, error: string, setError: (text: string) => void, submit: (event?: Event) => Promise<void> }}
 */
export function useSubmit(send) {
  const [busy, setBusy] = useState(false);
  const [error, setError] = useState('');
  const running = useRef(false);
  const submit = async (event) => {
    event?.preventDefault();
    if (running.current) return;
    running.current = true;
    setBusy(true);
    setError('');
    try {
      await send();
    } catch (failure) {
      setError(failure.retryAfter ? `${failure.message} Try again in ${failure.retryAfter} seconds.` : failure.message);
    } finally {
      running.current = false;
      setBusy(false);
    }
  };
  return { busy, error, setError, submit };
}
