"""What the kernel says about mounts, and how one is taken away. Never asks the mount itself."""

import os
import subprocess


def is_mounted(path):
    """From the kernel's table: a look at the folder could hang on a server that does not answer."""
    wanted = os.path.realpath(os.path.dirname(path)) + "/" + os.path.basename(path)
    return any(point == wanted for point in mountpoints())


def mounted_below(folder):
    prefix = os.path.realpath(folder) + "/"
    return [point for point in mountpoints() if point.startswith(prefix)]


def mountpoints():
    with open("/proc/self/mountinfo", encoding="utf-8", errors="surrogateescape") as table:
        return [unescape(line.split(" ")[4]) for line in table]


def unescape(text):
    for code, character in (("\\040", " "), ("\\011", "\t"), ("\\012", "\n"), ("\\134", "\\")):
        text = text.replace(code, character)
    return text


def unmount_lazily(path):
    """The last resort of a clean-up: also takes away a mount that is busy or does not answer."""
    command = ["umount", "-l", path] if os.geteuid() == 0 else ["fusermount3", "-uz", path]
    subprocess.run(command, stderr=subprocess.DEVNULL, check=False)
