/** Linking the desktop app on this machine with the signed-in account, and undoing it. */
import { api } from './api.js';
import { recall, remember } from './local.js';
import { linkedWorkspace, native, postNative } from './native.js';

// All windows of the app show the question at once; the first answer counts for all.
const channel = 'BroadcastChannel' in window ? new BroadcastChannel('parvela.link') : null;
channel?.addEventListener('message', ({ data }) => {
  if (data === null || typeof data === 'string') linkedWorkspace.set(data);
});

const declinedName = (workspaceId) => `link.declined.${workspaceId}`;

/** @param {string} workspaceId */
export const wasDeclined = (workspaceId) => recall(declinedName(workspaceId)) === native?.deviceId;

/**
 * Calls back when the question is declined in another window.
 * @param {string} workspaceId @param {() => void} handler @returns {() => void} stops listening
 */
export function onLinkDeclined(workspaceId, handler) {
  const onStorage = () => wasDeclined(workspaceId) && handler();
  addEventListener('storage', onStorage);
  return () => removeEventListener('storage', onStorage);
}

/** Not asked again on this device until the person asks for it. */
export function declineLink(workspaceId) {
  remember(declinedName(workspaceId), native.deviceId);
}

/** Gets a token for this device and hands it to the shell, which alone keeps it. */
export async function linkDevice() {
  const link = await api.link(native.deviceId, native.deviceName);
  postNative({
    type: 'link',
    token: link.token,
    apiBase: link.api_base,
    workspaceId: link.workspace_id,
    workspaceName: link.workspace_name,
    userName: link.user_name,
  });
  remember(declinedName(link.workspace_id), null);
  tell(link.workspace_id);
}

/** Tells the shell that its token is no longer good. */
export function forgetLink() {
  if (!native || linkedWorkspace.get() === null) return;
  postNative({ type: 'unlinked' });
  tell(null);
}

function tell(workspaceId) {
  linkedWorkspace.set(workspaceId);
  channel?.postMessage(workspaceId);
}
