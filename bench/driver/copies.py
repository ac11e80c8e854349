"""Copies of the large file and of the tree of small files: `tarnel get` beside its peers, and for
the large file a floor. Source and destination are on one file system; every copy goes to a new
folder and is compared with its source, outside the clock. Copies of many files stay until the end:
some file systems are slow to make files for minutes after many were removed, and whoever came next
would pay for it."""

import contextlib
import os
import shutil
import statistics

from driver import caches, contenders, report
from driver.memory import BASE_KIB, status
from driver.process import Failure, run
from driver.tree import digest

LARGE, SMALL = "large.bin", "small"
FLOOR_SHARE = 0.8  # of the floor's rate, that the large file is to reach


class Copier:
    name = ""
    what = ""
    large_only = False

    def __init__(self, run_state):
        self.state = run_state

    def time(self, source, target):
        """Seconds to copy what is called `source` in the tree to the new path `target`."""
        return run(self.command(source, target))[0]


class Get(Copier):
    name = "tarnel get"
    what = "the host's streams"

    def command(self, source, target):
        return [self.state.tarnel, "get", "--socket", self.state.socket, f"me/bench/{source}", target]

    def time(self, source, target):
        with open(self.state.folder / "get.rusage", "w+", encoding="ascii") as usage:
            measured = ["/usr/bin/env", "python3", "-c", MEASURE, str(usage.name)]
            run([*measured, *self.command(source, target)])
            seconds, kib = usage.read().split()
        self.state.get_peak_kib = max(self.state.get_peak_kib, int(kib))
        return float(seconds)


# Runs a command and writes its seconds and its peak memory to a file.
MEASURE = """
import resource, subprocess, sys, time
began = time.monotonic()
code = subprocess.call(sys.argv[2:])
seconds = time.monotonic() - began
kib = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
open(sys.argv[1], "w").write(f"{seconds} {kib}")
sys.exit(code)
"""


class FromMount(Copier):
    name = "cp -r from the mount"
    what = "the same volume through FUSE"

    def command(self, source, target):
        return ["cp", "-r", self.state.mount / source, target]


class Rsync(Copier):
    name = "rsync -a"
    what = "of the folder itself"

    def command(self, source, target):
        slash = "/" if source == SMALL else ""
        return ["rsync", "-a", f"{self.state.tree / source}{slash}", target]


class Tar(Copier):
    name = "tar into tar"
    what = "of the folder itself"

    def command(self, source, target):
        # The archive's names are renamed, so that the copy is called what all the copies are.
        script = 'tar -C "$1" -cf - "$2" | tar -C "$3" -xf - && mv "$3/$2" "$4"'
        words = [self.state.tree, source, target.parent, target]
        return ["bash", "-c", f"set -o pipefail; {script}", "tar", *words]


class Floor(Copier):
    name = "floor"
    what = "the bytes from memory, over the same kind of socket, 64 KiB a read"
    large_only = True

    def time(self, source, target):
        _, out, _ = run([self.state.binaries / "copyfloor", self.state.tree / source, target])
        return float(out)


class RunState:
    def __init__(self, tree, folder, binaries, target):
        self.tree = tree
        self.folder = folder
        self.binaries = binaries
        self.target = target
        self.tarnel = binaries / "tarnel"
        self.socket = folder / "control.sock"
        self.mount = None
        self.get_peak_kib = 0
        self.host_peak_kib = 0


@contextlib.contextmanager
def host(state):
    """A host that shares the tree; its peak memory is kept at the end."""
    log = state.folder / "host.log"
    with contenders.host(state.tarnel, state.socket, state.tree, log) as server:
        yield
        state.host_peak_kib = status(server.pid)["VmHWM"]


def copiers(options, state):
    kinds = [Get, FromMount, Rsync, Tar, Floor]
    if not os.path.exists("/dev/fuse"):
        kinds.remove(FromMount)
    if not shutil.which("rsync"):
        raise Failure("rsync is not installed (script/bench installs it)")
    for binary in ("tarnel", "copyfloor"):
        if not os.access(options.bin / binary, os.X_OK):
            raise Failure(f"{binary} is not built (script/bench builds it)")
    return [kind(state) for kind in kinds]


def measure(options, state, expected, say):
    """Seconds of every round by (source, copier's name)."""
    results = {}
    fields = copiers(options, state)
    try:
        rounds(options, fields, state, expected, results, say)
    finally:
        shutil.rmtree(state.target, ignore_errors=True)
    return fields, results


def rounds(options, fields, state, expected, results, say):
    for turn in range(options.rounds):
        caches.warm(expected.root)
        for source in (LARGE, SMALL):
            first = turn % len(fields)  # nobody is always first
            for copier in fields[first:] + fields[:first]:
                if copier.large_only and source != LARGE:
                    continue
                folder = state.target / f"{len(results)}-{turn}-{fields.index(copier)}-{source}"
                seconds = once(copier, source, folder, state, expected)
                results.setdefault((source, copier.name), []).append(seconds)
                say(f"  copy {source}: {copier.name} {seconds:.3f} s")


def once(copier, source, folder, state, expected):
    folder.mkdir(parents=True)
    os.sync()  # what others wrote is not this copier's
    caches.touch_free_memory(expected)
    try:
        with contextlib.ExitStack() as stack:
            if isinstance(copier, FromMount):
                server = contenders.Tarnel(state.tree, state.folder, state.binaries)
                state.mount = stack.enter_context(server.mounted()).root
            elif isinstance(copier, Get):
                stack.enter_context(host(state))
            seconds = copier.time(source, folder / "copy")
        check(source, folder / "copy", expected)
        return seconds
    finally:
        if source == LARGE:
            shutil.rmtree(folder, ignore_errors=True)


def check(source, copy, expected):
    if source == LARGE:
        same = digest([copy]) == expected.large_digest
    else:
        names = sorted(expected.small)
        copied = [copy / os.path.relpath(name, SMALL) for name in names]
        same = digest(copied) == expected.small_digest
    if not same:
        raise Failure(f"the copy of {source} has other bytes than its source")


def show(fields, results, state, expected):
    """The tables; whether the copies are as fast and as small as they are to be."""
    medians = {key: statistics.median(seconds) for key, seconds in results.items()}
    rows = [["Copy", "With", "Seconds", "All rounds", "x tarnel get"]]
    titles = {
        LARGE: f"one {expected.large_bytes >> 20} MiB file",
        SMALL: f"a folder of {len(expected.small):,} files",
    }
    for source in (LARGE, SMALL):
        for copier in fields:
            seconds = results.get((source, copier.name))
            if seconds is None:
                continue
            median = medians[source, copier.name]
            rounds = f"{min(seconds):.3f} to {max(seconds):.3f}"
            ratio = median / medians[source, Get.name]
            rows.append([titles[source], copier.name, f"{median:.3f}", rounds, f"{ratio:.2f}"])
    print(f"{report.table(rows)}\n")
    for copier in fields:
        print(f"- {copier.name}: {copier.what}")
    share = medians[LARGE, Floor.name] / medians[LARGE, Get.name]
    ahead = medians[SMALL, Get.name] < medians[SMALL, Rsync.name]
    small = max(state.get_peak_kib, state.host_peak_kib) <= BASE_KIB
    print(f"\nThe large file: {share:.2f} of the floor's rate (to reach: {FLOOR_SHARE}).")
    print(f"The small files: {'ahead of' if ahead else 'BEHIND'} rsync -a.")
    print(
        f"Peak memory: get {state.get_peak_kib:,} KiB, host {state.host_peak_kib:,} KiB "
        f"(bound {BASE_KIB:,}): {'PASS' if small else 'OVER'}"
    )
    return share >= FLOOR_SHARE and ahead and small
