"""The private session keeps its own promises: other tests rest on them."""

import os

from harness import processes
from harness.case import DesktopTest
from harness.session import Session


class PrivateSession(DesktopTest):
    def test_everything_ends_with_it(self):
        with Session() as session:
            marker = session.env["PARVELA_SESSION"]
            # A program that leaves a grandchild behind, which ignores polite requests.
            session.run("sh", "-c", "setsid sh -c 'trap \"\" TERM; while :; do sleep 1; done' >/dev/null 2>&1 &")
            self.assertTrue(processes.descendants(f"PARVELA_SESSION={marker}"))
        self.assertEqual([], processes.descendants(f"PARVELA_SESSION={marker}"))
        self.assertFalse(os.path.exists(marker))

    def test_nothing_of_the_users_is_within_reach(self):
        for name in ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"):
            self.assertTrue(self.session.env[name].startswith(str(self.session.root)), name)
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SYSTEM_BUS_ADDRESS"):
            self.assertNotIn(name, self.session.env)
