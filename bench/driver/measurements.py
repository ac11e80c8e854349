"""What is measured. Each times ordinary commands on a mount and checks what they gave."""

import abc
import tempfile

from driver.process import Failure, run
from driver.tree import flat_folder


class Measurement(abc.ABC):
    key = ""
    title = ""
    unit = "µs a file"

    def __init__(self, expected):
        self.expected = expected

    @abc.abstractmethod
    def time(self, root):
        """Seconds; Failure when the result is not the source tree's."""

    def check_contents(self, root):
        """After time(), on the same mount, outside the clock: are the bytes the true ones?"""

    def rate(self, seconds):
        return f"{seconds / self.count() * 1e6:.1f} {self.unit}"

    @abc.abstractmethod
    def count(self):
        """Of the files that the measurement meets."""


def require(measurement, what, got, wanted):
    if got != wanted:
        raise Failure(f"{measurement.title}: {what}: {got} instead of {wanted}")


class LargeFile(Measurement):
    key = "read"

    @property
    def title(self):
        return f"read one {self.expected.large_bytes >> 20} MiB file"

    def time(self, root):
        seconds, _, err = run(["dd", "if=large.bin", "of=/dev/null", "bs=128K"], cwd=root)
        copied = int(err.decode().splitlines()[-1].split(" ")[0])
        require(self, "bytes read", copied, self.expected.large_bytes)
        return seconds

    def check_contents(self, root):
        _, out, _ = run(["sha256sum", "large.bin"], cwd=root)
        require(self, "digest", out.decode().split(" ")[0], self.expected.large_digest)

    def rate(self, seconds):
        return f"{self.expected.large_bytes / seconds / (1 << 20):.0f} MiB/s"

    def count(self):
        return 1


class Find(Measurement):
    key = "find"

    @property
    def title(self):
        folders = self.expected.scale.small_folders
        return f"find -size, {self.count():,} files in {folders} folders"

    def time(self, root):
        with tempfile.TemporaryFile() as names:
            argv = ["find", "small", "-type", "f", "-size", "+1k"]
            seconds, _, _ = run(argv, cwd=root, stdout=names)
            names.seek(0)
            found = sorted(names.read().decode().splitlines())
        require(self, "files found", len(found), len(self.expected.found))
        if found != self.expected.found:
            raise Failure(f"{self.title}: other names than the source tree's")
        return seconds

    def count(self):
        return len(self.expected.small)


class List(Measurement):
    def __init__(self, expected, files):
        super().__init__(expected)
        self.files = files
        self.key = f"ls-{files}"
        self.title = f"ls -lU, one folder of {files:,} files"

    def time(self, root):
        with tempfile.TemporaryFile() as lines:
            argv = ["ls", "-lU", flat_folder(self.files)]
            seconds, _, _ = run(argv, cwd=root, stdout=lines)
            lines.seek(0)
            listed = lines.read().decode().splitlines()[1:]  # the first is the total
        require(self, "lines", len(listed), self.files)
        # mode links owner group size month day time name
        fields = (line.split(None, 8) for line in listed)
        if {words[8]: int(words[4]) for words in fields} != self.expected.flat[self.files]:
            raise Failure(f"{self.title}: other names or sizes than the source tree's")
        return seconds

    def count(self):
        return self.files


class SmallFiles(Measurement):
    key = "small"

    @property
    def title(self):
        return f"read {self.count():,} small files"

    def time(self, root):
        # wc takes a moment on the other side of the pipe; every contender pays it.
        script = "set -o pipefail; find small -type f -exec cat {} + | wc -c"
        seconds, out, _ = run(["bash", "-c", script], cwd=root)
        require(self, "bytes read", int(out), self.expected.small_bytes)
        return seconds

    def check_contents(self, root):
        script = "find small -type f -print0 | sort -z | xargs -0 cat | sha256sum"
        _, out, _ = run(["bash", "-c", f"set -o pipefail; {script}"], cwd=root)
        require(self, "digest", out.decode().split(" ")[0], self.expected.small_digest)

    def count(self):
        return len(self.expected.small)


def the_four(expected):
    flat = List(expected, expected.scale.flat)
    return [LargeFile(expected), Find(expected), flat, SmallFiles(expected)]


def growth(expected):
    """ls -lU at every size; the four hold one of them already, under the same key."""
    return [List(expected, count) for count in sorted(expected.scale.flat_counts)]
