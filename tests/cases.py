"""What the parts written in Python have in common: choosing test cases by word, running them, and counting."""

import os
import pathlib
import sys
import time
import unittest

# The programs of every part, and what starts them, stand here.
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "desktop"))
# Nothing here talks to another machine; a proxy of the user's must not be asked either.
for _name in ("http_proxy", "https_proxy", "all_proxy"):
    os.environ.pop(_name, None)
    os.environ.pop(_name.upper(), None)

from harness.session import interruptible  # noqa: E402

#: How many tests of a run may fail and be tried once more. A window test waits for a dozen programs that share the processor; where
#: nobody is there to look, a single late one must not hide the other results. More failures than this are no accident.
SECOND_TRIES = int(os.environ.get("PARVELA_SECOND_TRIES", "0"))


class _Result(unittest.TextTestResult):
    """One line a test, with its duration."""

    passed = 0
    _running = False

    def startTest(self, test):
        self._begin = time.monotonic()
        self._running = True
        unittest.TestResult.startTest(self, test)
        module = type(test).__module__.removeprefix("test_")
        self.stream.write(f"{module}: {type(test).__name__}.{test._testMethodName.removeprefix('test_')} ... ")
        self.stream.flush()

    def stopTest(self, test):
        self._running = False
        unittest.TestResult.stopTest(self, test)

    def _say(self, word):
        self.stream.writeln(f"{word} ({time.monotonic() - self._begin:.1f} s)")
        self.stream.flush()

    def addSuccess(self, test):
        unittest.TestResult.addSuccess(self, test)
        self.passed += 1
        self._say("ok")

    def addFailure(self, test, err):
        unittest.TestResult.addFailure(self, test, err)
        self._say("FAILED")

    def addError(self, test, err):
        unittest.TestResult.addError(self, test, err)
        if self._running:
            self._say("ERROR")
        else:  # a class or a module could not be prepared
            self.stream.writeln(f"{test.id()} ... ERROR")

    def addSkip(self, test, reason):
        unittest.TestResult.addSkip(self, test, reason)
        self._say(f"skipped: {reason}")


def _chosen(suite, words):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from _chosen(test, words)
        elif not words or any(word in test.id() for word in words):
            yield test


def run_cases(folder):
    """Runs the cases of a folder's test_*.py whose name contains one of the words on the command line, or all of them. Returns the
    exit status."""
    words = sys.argv[1:]
    tests = unittest.TestSuite(_chosen(unittest.defaultTestLoader.discover(str(folder), pattern="test_*.py"), words))
    if not tests.countTestCases():
        print(f"no test matches {' '.join(words)}", file=sys.stderr)
        return 2
    try:
        with interruptible():
            result = _run(tests)
            passed, broken = result.passed, _broken(result)
            if 0 < len(broken) <= SECOND_TRIES and all(isinstance(test, unittest.TestCase) for test in broken.values()):
                print("\n== second try ==", flush=True)
                second = _run(unittest.TestSuite(type(test)(test._testMethodName) for test in broken.values()))
                passed += second.passed
                print(f"failed once and passed on the second try: {', '.join(sorted(broken.keys() - _broken(second).keys())) or 'none'}")
                broken = _broken(second)
    except KeyboardInterrupt:
        return 130
    skipped = len(result.skipped)
    print(f"{passed} passed, {len(broken)} failed" + (f", {skipped} skipped" if skipped else ""))
    return 1 if broken else 0


def _run(tests):
    return unittest.TextTestRunner(stream=sys.stdout, resultclass=_Result, verbosity=2).run(tests)


def _broken(result):
    return {test.id(): test for test, _ in result.failures + result.errors}
