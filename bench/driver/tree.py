"""The tree that is measured, and what every contender must show of it."""

import dataclasses
import hashlib
import json
import os
import random
import shutil
from pathlib import Path

MIB = 1 << 20
SMALLEST, LARGEST = 100, 16 * 1024  # sizes of the small files, in bytes
LISTED_ABOVE = 1024  # `find -size +1k` lists what is larger than this
WORDS = (
    "annual archive budget chapter contract delivery draft estimate figures holiday invoice "
    "letter meeting minutes notes offer outline project receipt report review summary survey"
).split()
ENDINGS = ("txt", "pdf", "docx", "jpg", "md", "xlsx", "html", "json")


@dataclasses.dataclass(frozen=True)
class Scale:
    large_bytes: int
    small_folders: int
    small_files_each: int
    flat_counts: tuple  # files in one folder; the middle one is the measurement, all show growth

    @property
    def small_files(self):
        return self.small_folders * self.small_files_each

    @property
    def flat(self):
        return sorted(self.flat_counts)[len(self.flat_counts) // 2]


FULL = Scale(1024 * MIB, 100, 200, (10_000, 50_000, 100_000))
QUICK = Scale(64 * MIB, 10, 200, (1_000, 5_000, 10_000))


def flat_folder(count):
    return f"flat-{count}"


def make(folder, scale):
    """Makes the tree in `folder`, or keeps the one that an earlier run finished there."""
    marker = folder / "complete.json"
    root = folder / "tree"
    wanted = json.loads(json.dumps(dataclasses.asdict(scale)))
    if marker.exists() and json.loads(marker.read_text()) == wanted:
        return root
    marker.unlink(missing_ok=True)
    if root.exists():
        shutil.rmtree(root)
    root.mkdir(parents=True)
    require_space(root, scale)
    numbers = random.Random(20)  # a fixed seed: every run measures the same bytes
    make_large(root / "large.bin", scale, numbers)
    make_small(root / "small", scale, numbers)
    for count in scale.flat_counts:
        make_flat(root / flat_folder(count), count, numbers)
    marker.write_text(json.dumps(wanted))
    return root


def require_space(root, scale):
    needed = scale.large_bytes + scale.small_files * LARGEST + sum(scale.flat_counts) * 1024
    free = shutil.disk_usage(root).free
    if free < needed:
        raise SystemExit(
            f"bench: {root} has {free // MIB} MiB free, {needed // MIB} are needed (see --work)"
        )


def make_large(path, scale, numbers):
    with path.open("wb") as file:
        for _ in range(scale.large_bytes // MIB):
            file.write(numbers.randbytes(MIB))


def make_small(folder, scale, numbers):
    for number in range(scale.small_folders):
        inner = folder / f"{WORDS[number % len(WORDS)]}-{number:03d}"
        inner.mkdir(parents=True)
        for index in range(scale.small_files_each):
            ending = ENDINGS[index % len(ENDINGS)]
            name = f"{numbers.choice(WORDS)}-{numbers.choice(WORDS)}-{index:04d}.{ending}"
            (inner / name).write_bytes(numbers.randbytes(numbers.randint(SMALLEST, LARGEST)))


def make_flat(folder, count, numbers):
    """Only listed, never read: holes will do. 100,000 such names fit into one answer of a host."""
    folder.mkdir()
    for index in range(count):
        path = folder / f"DSC_20240517_{index:07d}.jpg"
        path.touch()
        os.truncate(path, numbers.randint(SMALLEST, LARGEST))


class Expected:
    """What the source tree holds, read from itself: the answers that a mount is checked against."""

    def __init__(self, root, scale):
        self.root = root
        self.scale = scale
        self.large_bytes = (root / "large.bin").stat().st_size
        self.small = {
            str(path.relative_to(root)): path.stat().st_size
            for path in (root / "small").rglob("*")
            if path.is_file()
        }
        self.small_bytes = sum(self.small.values())
        self.found = sorted(name for name, size in self.small.items() if size > LISTED_ABOVE)
        self.flat = {count: sizes(root / flat_folder(count)) for count in scale.flat_counts}
        self.large_digest = digest([root / "large.bin"])
        self.small_digest = digest(root / name for name in sorted(self.small))

    def paths_seen(self):
        """Paths that a mount of a share learns in all four measurements."""
        above = 3  # the volume's root, "me" and the share
        entered = 3  # the large file, the folder of folders, the flat folder
        return above + entered + self.scale.small_folders + len(self.small) + self.scale.flat


def sizes(folder):
    with os.scandir(folder) as entries:
        return {entry.name: entry.stat().st_size for entry in entries}


def digest(paths):
    """Of all the files' bytes, one after the other."""
    result = hashlib.sha256()
    for path in paths:
        with Path(path).open("rb") as file:
            while block := file.read(MIB):
                result.update(block)
    return result.hexdigest()
