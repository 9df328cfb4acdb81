"""Child processes that never outlive their owner: each in a group of its own, ended by id, output kept in a file."""

import ctypes
import os
import signal
import subprocess
import time

_libc = ctypes.CDLL(None, use_errno=True)
_PR_SET_PDEATHSIG = 1
_PR_SET_CHILD_SUBREAPER = 36


def become_subreaper():
    """Orphans among our descendants become our children instead of init's, so that we can find and end them."""
    _libc.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_with_parent():
    """Asks the kernel to end this process when its parent ends; to be called between fork and exec."""
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


class Process:
    """A started program. `log` is the file that receives its output, None when it shares ours."""

    def __init__(self, arguments, env, log=None, stdin=subprocess.DEVNULL, pass_fds=(), cwd=None):
        self.arguments = [str(argument) for argument in arguments]
        self.log = log
        output = open(log, "ab") if log else None
        try:
            self.popen = subprocess.Popen(
                self.arguments, env=env, stdin=stdin, stdout=output, stderr=subprocess.STDOUT if output else None,
                pass_fds=pass_fds, cwd=cwd, start_new_session=log is not None, preexec_fn=end_with_parent)
        finally:
            if output:
                output.close()

    @property
    def pid(self):
        return self.popen.pid

    @property
    def name(self):
        return os.path.basename(self.arguments[0])

    def running(self):
        return self.popen.poll() is None

    def exit_status(self):
        """The exit status, negative signal number after a signal, None while it runs."""
        return self.popen.poll()

    def output(self):
        """What it has written so far."""
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return file.read()

    def stop(self, grace=3.0):
        """Asks it to end, insists after `grace` s, and reaps it."""
        if not self.running():
            return
        self.popen.terminate()
        try:
            self.popen.wait(grace)
        except subprocess.TimeoutExpired:
            self.popen.kill()
            self.popen.wait()


def _parents():
    """Process id -> parent process id, for everything that runs."""
    parents = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                with open(f"/proc/{entry}/stat", encoding="utf-8", errors="replace") as file:
                    parents[int(entry)] = int(file.read().rpartition(")")[2].split()[1])
            except (OSError, ValueError, IndexError):
                continue  # it ended while we were reading
    return parents


def _carries(pid, marker):
    try:
        with open(f"/proc/{pid}/environ", "rb") as file:
            return marker in file.read().split(b"\0")
    except OSError:
        return False


def descendants(marker):
    """Ids of our running descendants whose environment holds `marker` ("NAME=value")."""
    parents = _parents()
    found = []
    for pid in parents:
        ancestor = parents[pid]
        while ancestor not in (0, 1) and ancestor != os.getpid():
            ancestor = parents.get(ancestor, 0)
        if ancestor == os.getpid() and _carries(pid, marker.encode()):
            found.append(pid)
    return found


def end_descendants(marker, grace=2.0):
    """Ends what the session's programs left behind (bus-activated services, web processes), politely first."""
    for number in (signal.SIGTERM, signal.SIGKILL):
        deadline = time.monotonic() + grace
        signalled = set()
        while True:
            left = descendants(marker)
            for pid in left:
                if pid not in signalled:
                    signalled.add(pid)
                    try:
                        os.kill(pid, number)
                    except ProcessLookupError:
                        continue
            for pid in list(signalled):
                try:
                    os.waitpid(pid, os.WNOHANG)
                except ChildProcessError:
                    continue  # not our own child, or reaped already
            if not left or time.monotonic() >= deadline:
                break
            time.sleep(0.05)
        if not left:
            return
