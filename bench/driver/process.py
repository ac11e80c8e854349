"""Child processes that cannot outlive the run and cannot make it wait for ever."""

import contextlib
import os
import signal
import subprocess
import time

COMMAND_LIMIT = 900  # seconds; far beyond the slowest contender, so only a hang reaches it
READY_LIMIT = 60
EXIT_LIMIT = 15


class Failure(Exception):
    """A contender could not be measured, or showed something wrong. Ends the run."""


def environment():
    return {**os.environ, "LC_ALL": "C"}


def run(argv, cwd=None, stdout=subprocess.PIPE, limit=COMMAND_LIMIT):
    """Runs a command to its end in a group of its own: (seconds, output, error output)."""
    began = time.monotonic()
    child = subprocess.Popen(
        argv,
        cwd=cwd,
        env=environment(),
        stdin=subprocess.DEVNULL,
        stdout=stdout,
        stderr=subprocess.PIPE,
        start_new_session=True,
    )
    try:
        out, err = child.communicate(timeout=limit)
    except BaseException as reason:
        # Not waited for: a reader of a mount that hangs ends only when the mount does.
        os.killpg(child.pid, signal.SIGKILL)
        if isinstance(reason, subprocess.TimeoutExpired):
            raise Failure(f"{shown(argv)}: no end after {limit} s") from None
        raise
    seconds = time.monotonic() - began
    if child.returncode != 0:
        message = err.decode(errors="replace").strip()
        raise Failure(f"{shown(argv)}: status {child.returncode}: {message}")
    return seconds, out, err


def shown(argv):
    return " ".join(str(word) for word in argv)


@contextlib.contextmanager
def daemon(argv, log, stdout=None):
    """A process of ours that is told to end (TERM, then KILL) when the block is left."""
    with open(log, "wb") as errors:
        child = subprocess.Popen(
            argv,
            env=environment(),
            stdin=subprocess.DEVNULL,
            stdout=stdout if stdout is not None else errors,
            stderr=errors,
            start_new_session=True,
        )
    try:
        yield child
    finally:
        end(child)


def end(child):
    if child.poll() is None:
        child.terminate()
        try:
            child.wait(EXIT_LIMIT)
        except subprocess.TimeoutExpired:
            child.kill()
            child.wait()


def wait_for(what, child, ready):
    """Looks until ready() holds; the child's end or the time limit is a failure."""
    deadline = time.monotonic() + READY_LIMIT
    while not ready():
        if child.poll() is not None or time.monotonic() > deadline:
            state = "ended" if child.poll() is not None else "is not ready"
            raise Failure(f"{what} {state}")
        time.sleep(0.01)
