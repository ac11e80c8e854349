#!/usr/bin/env python3
"""Compares the mount with its peers on one machine in one run; script/bench builds and calls this.

Four measurements on every contender: a large file read from start to end, `find -size` over many
folders, `ls -lU` of one large folder, many small files read. Each runs on a fresh mount; the source
files are in the page cache; contenders take turns in every round; the tables show medians. Every
measurement checks what it was given: a wrong count, name, size or byte ends the run.

The floor is nullfs, a FUSE server that answers from memory. Then one mount of tarnel runs all four
in a row, and its resident memory is compared with its bound.

The part "copies" needs no FUSE except for one of its peers: `tarnel get` of the large file and of
the small files beside `cp -r` from the mount, `rsync -a` and `tar` into `tar` of the folder, and for
the large file a floor, the same bytes from memory over the same kind of socket.

Exit status: 0 when tarnel is ahead of sshfs on all four and within its memory, and its copies are
ahead of rsync, at 0.8 of the floor's rate and within their memory; 1 when not, or when something
could not be measured; 2 for wrong use.
"""

import argparse
import contextlib
import os
import shutil
import signal
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True  # no caches beside the sources

from driver import caches, contenders, copies, measurements, memory, mounts, report, tree  # noqa: E402
from driver.process import Failure  # noqa: E402

DEFAULT_BINARIES = Path(__file__).resolve().parent.parent / "build" / "release" / "bin"
GROWTH_NAMES = (report.OURS, report.FLOOR)


def parse(argv):
    parser = argparse.ArgumentParser(
        prog="bench", description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    names = ",".join(kind.name for kind in contenders.ALL)
    parser.add_argument("--rounds", type=int, default=3, help="of every measurement (default 3)")
    parser.add_argument("--only", metavar="NAME,...", default=names, help=f"of {names}")
    parser.add_argument("--part", metavar="NAME,...", default="mount,copies", help="of mount,copies")
    parser.add_argument("--quick", action="store_true", help="a small tree: to try, not to quote")
    parser.add_argument("--work", type=Path, metavar="DIR", help="keep the tree in DIR, reuse it")
    parser.add_argument("--bin", type=Path, default=DEFAULT_BINARIES, help="where the binaries are")
    parser.add_argument("--report-only", action="store_true", help="status 0 whatever the figures")
    options = parser.parse_args(argv)
    options.only = options.only.split(",")
    if unknown := set(options.only) - set(names.split(",")):
        parser.error(f"unknown contender: {', '.join(sorted(unknown))}")
    options.part = options.part.split(",")
    if unknown := set(options.part) - {"mount", "copies"}:
        parser.error(f"unknown part: {', '.join(sorted(unknown))}")
    if options.rounds < 1:
        parser.error("--rounds must be at least 1")
    return options


def stop(number, _frame):
    raise SystemExit(128 + number)


@contextlib.contextmanager
def state_folder():
    """For mounts, socket and logs: short, since a socket's path is; gone when the run ends."""
    folder = Path(tempfile.mkdtemp(prefix="tarnel-bench-"))
    try:
        yield folder
    finally:
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(number, signal.SIG_IGN)
        for point in mounts.mounted_below(folder):
            mounts.unmount_lazily(point)
        if mounts.mounted_below(folder):  # removing would reach through the mount
            say(f"still mounted, left as it is: {folder}")
        else:
            shutil.rmtree(folder, ignore_errors=True)


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


def chosen(options, root, state):
    if not os.path.exists("/dev/fuse"):
        raise Failure("no /dev/fuse: nothing can be mounted here")
    kinds = [kind for kind in contenders.ALL if kind.name in options.only]
    made = [kind(root, state, options.bin.resolve()) for kind in kinds]
    for contender in made:
        if missing := contender.available():
            raise Failure(f"{missing} (script/bench installs and builds; --only leaves it out)")
    return made


def plan(four, grown, fields):
    """Every measurement with those that take part in it. Growth is only asked of two."""
    keys = {measurement.key for measurement in four}
    extra = [m for m in grown if m.key not in keys]
    two = [contender for contender in fields if contender.name in GROWTH_NAMES]
    return [(m, fields) for m in four] + [(m, two) for m in extra]


def measure_rounds(options, steps, expected):
    results = report.Results()
    for turn in range(options.rounds):
        say(f"round {turn + 1} of {options.rounds}")
        caches.warm(expected.root)
        for measurement, fields in steps:
            first = turn % len(fields) if fields else 0  # nobody is always first
            for contender in fields[first:] + fields[:first]:
                with contender.mounted() as mount:
                    caches.touch_free_memory(expected)
                    seconds = measurement.time(mount.root)
                    if turn == 0 and contender.true_contents:
                        measurement.check_contents(mount.root)
                results.add(measurement, contender, seconds)
                say(f"  {measurement.title}: {contender.name} {seconds:.3f} s")
    return results


def compare(options, state):
    scale = tree.QUICK if options.quick else tree.FULL
    folder = state
    if options.work:  # a name of our own below it: an unfinished tree is removed
        folder = options.work.resolve() / f"tarnel-bench-{'quick' if options.quick else 'full'}"
    fields = chosen(options, folder / "tree", state) if "mount" in options.part else []
    say(f"making the tree in {folder}")
    root = tree.make(folder, scale)
    expected = tree.Expected(root, scale)
    passed = True
    if "copies" in options.part:
        passed = compare_copies(options, state, folder, expected)
    if "mount" in options.part:
        passed = compare_mounts(options, fields, expected) and passed
    return 0 if passed or options.report_only else 1


def compare_copies(options, state, folder, expected):
    run_state = copies.RunState(expected.root, state, options.bin.resolve(), folder / "copied")
    shutil.rmtree(run_state.target, ignore_errors=True)  # of a run that was killed
    fields, results = copies.measure(options, run_state, expected, say)
    print(f"Machine: {report.machine()}. Medians of {options.rounds} rounds of copies.\n")
    passed = copies.show(fields, results, run_state, expected)
    print()
    return passed


def compare_mounts(options, fields, expected):
    four, grown = measurements.the_four(expected), measurements.growth(expected)
    results = measure_rounds(options, plan(four, grown, fields), expected)
    ours = next((contender for contender in fields if contender.name == report.OURS), None)
    used = memory.measure(ours, four, expected) if ours else None
    return show(options, fields, four, grown, results, used)


def show(options, fields, four, grown, results, used):
    print(f"Machine: {report.machine()}.")
    print(f"Medians of {options.rounds} rounds, a fresh mount for each measurement, source files")
    print("in the page cache. A ratio below 1 is faster.\n")
    for contender in fields:
        print(f"- {contender.name}: {contender.what}")
    print(f"\n{report.comparison(results, four, fields)}\n")
    two = [contender for contender in fields if contender.name in GROWTH_NAMES]
    if two:
        print(f"{report.growth(results, grown, two)}\n")
    if used:
        print(f"{report.memory(used)}\n")
    ahead, text = report.verdict(results, four)
    print(text)
    return ahead and used is not None and used.within


def main(argv):
    options = parse(argv)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, stop)
    with state_folder() as state:
        try:
            return compare(options, state)
        except (Failure, OSError) as failure:
            say(f"FAILED: {failure}")
            return 1


if __name__ == "__main__":
    os.umask(0o077)  # the socket's folder and the logs are nobody else's
    sys.exit(main(sys.argv[1:]))
