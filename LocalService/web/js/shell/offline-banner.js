/** Says that the service does not answer; goes away by itself when it does. */
import { html, useEffect, useState } from '../view.js';
import { api, online } from '../core/api.js';
import { invalidate } from '../core/cache.js';
import { useStore } from '../core/store.js';
import { announce } from '../core/announce.js';
import { Icon } from '../ui/icon.js';

export function OfflineBanner() {
  const isOnline = useStore(online);
  const [trying, setTrying] = useState(false);
  const [wasOffline, setWasOffline] = useState(false);
  useEffect(() => {
    if (!isOnline) setWasOffline(true);
    else if (wasOffline) {
      setWasOffline(false);
      announce('Connected again.');
      invalidate(() => true);
    }
  }, [isOnline]);
  if (isOnline) return null;
  const retry = async () => {
    setTrying(true);
    try {
      await api.timer();
    } catch {
      // The banner stays; that is the answer.
    } finally {
      setTrying(false);
    }
  };
  return html`<div class="banner" role="alert">
    <${Icon} name="offline" size=${18} />
    <span class="grow">Parvela can't be reached. You see what was loaded last. It tries again by itself.</span>
    <button type="button" class="button button-small" disabled=${trying} onClick=${retry}>Try now</button>
  </div>`;
}
