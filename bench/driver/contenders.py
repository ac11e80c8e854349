"""The file systems that are compared. Each mounts the same tree, read-only, in the foreground of a
process of ours, so that its end can be waited for before the next measurement begins."""

import abc
import contextlib
import dataclasses
import os
import select
import shutil
import subprocess
from pathlib import Path

from driver import mounts
from driver.process import Failure, READY_LIMIT, daemon, run, wait_for

SFTP_SERVERS = (
    "/usr/lib/openssh/sftp-server",
    "/usr/libexec/openssh/sftp-server",
    "/usr/lib/ssh/sftp-server",
)


@dataclasses.dataclass
class Mounted:
    root: Path  # where the tree shows
    pid: int  # of the process that serves the mount


class Contender(abc.ABC):
    name = ""
    what = ""
    true_contents = True

    def __init__(self, tree, state, binaries):
        self.tree = tree
        self.state = state
        self.binaries = binaries
        self.mountpoint = state / f"{self.name}-mount"

    def available(self):
        """None, or what is missing."""
        return None

    @abc.abstractmethod
    def command(self):
        """That serves the mount until it is unmounted."""

    def unmount_command(self):
        return ["fusermount3", "-u", self.mountpoint]

    def shown_tree(self):
        return self.mountpoint

    @contextlib.contextmanager
    def mounted(self):
        self.mountpoint.mkdir(exist_ok=True)
        log = self.state / f"{self.name}.log"
        with daemon(self.command(), log) as server:
            try:
                wait_for("the mount", server, lambda: mounts.is_mounted(self.mountpoint))
                run(["stat", self.shown_tree()], limit=READY_LIMIT)
                yield Mounted(self.shown_tree(), server.pid)
                run(self.unmount_command(), limit=READY_LIMIT)
                wait_for_exit("the mount", server)
            except Failure as failure:
                raise Failure(f"{self.name}: {failure}\n{last_lines(log)}".rstrip()) from None
            finally:
                if mounts.is_mounted(self.mountpoint):
                    mounts.unmount_lazily(self.mountpoint)


@contextlib.contextmanager
def host(binary, socket, tree, log):
    """`tarnel host` that shares the tree as "bench", from when it is ready."""
    command = [binary, "host", "--socket", socket, "--share", f"bench={tree}"]
    with daemon(command, log, stdout=subprocess.PIPE) as server:
        told = select.select([server.stdout], [], [], READY_LIMIT)[0]
        if not told or not server.stdout.readline():
            raise Failure(f"the host is not ready: {last_lines(log)}")
        yield server


def last_lines(log):
    return "\n".join(log.read_text(errors="replace").splitlines()[-10:])


def wait_for_exit(name, server):
    try:
        server.wait(READY_LIMIT)
    except subprocess.TimeoutExpired:
        raise Failure(f"{name}: still running {READY_LIMIT} s after it was unmounted") from None


class Tarnel(Contender):
    name = "tarnel"
    what = "the mount over the reference host"

    def __init__(self, *args):
        super().__init__(*args)
        self.binary = self.binaries / "tarnel"
        self.socket = self.state / "control.sock"

    def available(self):
        return None if os.access(self.binary, os.X_OK) else f"{self.binary} is not built"

    def command(self):
        return [self.binary, "mount", "-f", "--socket", self.socket, self.mountpoint]

    def unmount_command(self):
        return [self.binary, "unmount", self.mountpoint]

    def shown_tree(self):
        return self.mountpoint / "me" / "bench"

    @contextlib.contextmanager
    def mounted(self):
        with host(self.binary, self.socket, self.tree, self.state / "host.log") as server:
            with super().mounted() as mount:
                yield mount
            server.terminate()
            wait_for_exit("the host", server)


class Sshfs(Contender):
    name = "sshfs"
    what = "sshfs over a local sftp-server, no encryption"

    def available(self):
        if not shutil.which("sshfs"):
            return "sshfs is not installed"
        return None if sftp_server() else "no sftp-server is installed"

    def command(self):
        # sshfs starts its "ssh" with a host, options and a subsystem: the server needs none of it.
        transport = self.state / "sftp-transport"
        transport.write_text(f"#!/bin/sh\nexec {sftp_server()}\n")
        transport.chmod(0o755)
        source = f"localhost:{self.tree}"
        return ["sshfs", "-f", "-o", f"ro,ssh_command={transport}", source, self.mountpoint]


def sftp_server():
    return next((path for path in SFTP_SERVERS if os.access(path, os.X_OK)), None)


class Bindfs(Contender):
    name = "bindfs"
    what = "bindfs, a mirror of the folder"

    def available(self):
        return None if shutil.which("bindfs") else "bindfs is not installed"

    def command(self):
        return ["bindfs", "-f", "-o", "ro", self.tree, self.mountpoint]


class Nullfs(Contender):
    name = "nullfs"
    what = "the floor: the same tree from memory"
    true_contents = False

    def __init__(self, *args):
        super().__init__(*args)
        self.binary = self.binaries / "nullfs"

    def available(self):
        return None if os.access(self.binary, os.X_OK) else f"{self.binary} is not built"

    def command(self):
        return [self.binary, "-f", self.tree, self.mountpoint]


ALL = (Tarnel, Sshfs, Bindfs, Nullfs)
