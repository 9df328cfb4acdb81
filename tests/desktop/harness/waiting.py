"""Waiting for a condition with a time limit: the only way in which tests let time pass."""

import time


class TimedOut(AssertionError):
    """A condition did not come true in time. An assertion error, so that a test reports it as a failure."""


def wait_until(condition, what, timeout=15.0, interval=0.05):
    """Calls condition() until it answers something true and returns that; raises TimedOut naming `what` after `timeout` s.

    Errors of look-ups that race with a changing desktop are kept as the reason and shown when time runs out.
    """
    deadline = time.monotonic() + timeout
    reason = None
    while True:
        try:
            answer = condition()
            if answer:
                return answer
            reason = None
        except AssertionError:
            raise
        except Exception as error:  # a window or an accessible may vanish between two calls
            reason = error
        if time.monotonic() >= deadline:
            because = f" ({type(reason).__name__}: {reason})" if reason else ""
            raise TimedOut(f"waited {timeout:g} s for {what}{because}")
        time.sleep(interval)


def stays_true(condition, what, duration=1.0, interval=0.05):
    """Raises AssertionError as soon as condition() answers something false within `duration` s."""
    deadline = time.monotonic() + duration
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"no longer true: {what}")
        time.sleep(interval)
