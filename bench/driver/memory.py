"""How much memory the mount's process holds once it has served all four measurements."""

import dataclasses

BASE_KIB = 64 * 1024
BYTES_A_PATH = 200


@dataclasses.dataclass
class Memory:
    after: list  # (title, resident KiB) after each measurement
    resident_kib: int
    peak_kib: int
    paths: int

    @property
    def bound_kib(self):
        return BASE_KIB + self.paths * BYTES_A_PATH // 1024

    @property
    def within(self):
        return self.resident_kib <= self.bound_kib


def measure(contender, measurements, expected):
    after = []
    with contender.mounted() as mount:
        for measurement in measurements:
            measurement.time(mount.root)
            after.append((measurement.title, status(mount.pid)["VmRSS"]))
        last = status(mount.pid)
    return Memory(after, last["VmRSS"], last["VmHWM"], expected.paths_seen())


def status(pid):
    """The Vm fields of the process, in KiB."""
    with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as file:
        fields = (line.split() for line in file if line.startswith("Vm"))
        return {words[0].rstrip(":"): int(words[1]) for words in fields}
